#include "base/text.h"
#include "base/utf8.h"
#include "base/files.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "base/words.h"

int CreateFolderPath(const char* path) {
    if (!path || !*path) return 0;
    DWORD attributes = GetFileAttributesA(path);
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
    DWORD error = GetLastError();
    if (error == ERROR_PATH_NOT_FOUND) {
        char parent[MAX_PATH];
        CopyIntoN(parent, sizeof parent, path);
        char* slash = strrchr(parent, '\\');
        if (!slash) return 0;
        *slash = 0;
        if (!CreateFolderPath(parent)) return 0;
        return CreateDirectoryA(path, nullptr) ? 1 : 0;
    }
    if (error == ERROR_FILE_NOT_FOUND) return CreateDirectoryA(path, nullptr) ? 1 : 0;
    return 0;
}

std::string ReadWholeFile(const char* path) {
    std::string text;
    FILE* f = path ? fopen(path, "rb") : nullptr;
    if (!f) return text;
    char block[65536];
    for (size_t n; (n = fread(block, 1, sizeof block, f)) > 0;) text.append(block, n);
    fclose(f);
    return text;
}

bool NameMatchesPattern(const char* name, const char* pattern) {
    if (!name || !pattern) return false;
    // One pass with a return to the last "*": on a mismatch, that star takes
    // one character more.
    const char* star = nullptr;
    const char* resume = nullptr;
    while (*name) {
        if (*pattern == '*') {
            star = pattern++;
            resume = name;
        } else if (*pattern && (*pattern == '?' || AsciiLower(*pattern) == AsciiLower(*name))) {
            pattern++;
            name++;
        } else if (star) {
            pattern = star + 1;
            name = ++resume;
        } else {
            return false;
        }
    }
    while (*pattern == '*') pattern++;
    if (pattern[0] == '.' && pattern[1] == '*')
        for (pattern += 2; *pattern == '*';) pattern++;
    return *pattern == 0;
}

bool HasWildcards(const char* text) { return text && strpbrk(text, "*?") != nullptr; }

bool PathFits(const char* path) { return path && strlen(path) < MAX_PATH; }

void PathTooLongText(const char* path, char* text, size_t size) {
    snprintf(text, size, "The path is longer than %d characters: '%s'", MAX_PATH - 1, TextCut(path, 1900).c_str());
}

bool WriteAll(void* file, const void* data, size_t length) {
    const char* at = (const char*)data;
    while (length > 0) {
        DWORD part = length > 0x40000000 ? 0x40000000 : (DWORD)length, put = 0;
        if (!WriteFile((HANDLE)file, at, part, &put, nullptr)) return false;
        if (put != part) {
            SetLastError(ERROR_DISK_FULL);
            return false;
        }
        at += part;
        length -= part;
    }
    return true;
}

std::string TemporaryBeside(const char* path, bool makeFolder) {
    std::string folder = path ? path : "";
    size_t slash = folder.rfind('\\');
    folder = slash == std::string::npos ? "." : folder.substr(0, slash);
    if (folder.empty() || folder.back() == ':') folder += "\\";
    else if (makeFolder) CreateFolderPath(folder.c_str());
    char name[MAX_PATH * 2];
    if (folder.size() > MAX_PATH - 14 || !GetTempFileNameA(folder.c_str(), "zr", 0, name)) return std::string();
    return name;
}

bool ReplaceWithFile(const char* temporary, const char* target) {
    return MoveFileExA(temporary, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool WriteFileReplacing(const char* path, const void* data, size_t length, bool makeFolder) {
    std::string temporary = TemporaryBeside(path, makeFolder);
    if (temporary.empty()) return false;
    HANDLE file = CreateFileA(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    bool ok = file != INVALID_HANDLE_VALUE && WriteAll(file, data, length) && FlushFileBuffers(file);
    DWORD error = ok ? 0 : GetLastError();
    if (!ok && !error) error = ERROR_WRITE_FAULT;
    if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
    if (ok && ReplaceWithFile(temporary.c_str(), path)) return true;
    if (ok) error = GetLastError();
    DeleteFileA(temporary.c_str());
    SetLastError(error);
    return false;
}
