#include "system/folders.h"

#include <windows.h>
#include <shellapi.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/handles.h"
#include "system/filelines.h"

namespace {

bool IsFolder(const char* path) {
    DWORD a = GetFileAttributesA(path);
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

// The full path without one trailing backslash.
std::string FullPath(const char* path) {
    char full[MAX_PATH * 2] = "";
    GetFullPathNameA(path, sizeof full, full, nullptr);
    std::string out = full;
    if (!out.empty() && out.back() == '\\') out.pop_back();
    return out;
}

// Both files exist and hold as many bytes.
bool SameSize(const char* a, const char* b) {
    WIN32_FILE_ATTRIBUTE_DATA x, y;
    return GetFileAttributesExA(a, GetFileExInfoStandard, &x) && GetFileAttributesExA(b, GetFileExInfoStandard, &y) &&
           x.nFileSizeHigh == y.nFileSizeHigh && x.nFileSizeLow == y.nFileSizeLow;
}

// The shell's silent operation on double-zero-ended paths.
int ShellOperation(UINT operation, const std::string& from, const std::string& to) {
    std::string source = from + std::string(2, '\0'), target = to + std::string(2, '\0');
    SHFILEOPSTRUCTA op = {};
    op.wFunc = operation;
    op.pFrom = source.c_str();
    op.pTo = to.empty() ? nullptr : target.c_str();
    op.fFlags = 0x614;  // silent, no confirmations, no error interface
    return SHFileOperationA(&op) == 0 ? 1 : 0;
}

}  // namespace

int CopyFileEnsuringFolder(const char* source, const char* destination, bool whole) {
    std::string folder = destination;
    size_t cut = folder.find_last_of("\\:");
    if (cut != std::string::npos) {
        folder.resize(cut);
        CreateFolderPath(folder.c_str());
    }
    // Into a file beside the destination first: a copy that fails midway (a
    // full disk on another drive) leaves the destination as it was and no
    // empty file behind.
    std::string temporary = TemporaryBeside(destination, false);
    const std::string copy = temporary.empty() ? std::string(destination) : temporary;
    bool copied = CopyFileA(source, copy.c_str(), FALSE) != 0;
    // For a move, which deletes the source next, the copy must be as long as
    // the source is now (a source that grew meanwhile is not whole in it).
    if (copied && whole && !SameSize(source, copy.c_str())) {
        copied = false;
        SetLastError(ERROR_WRITE_FAULT);
    }
    if (temporary.empty()) return copied ? 1 : 0;
    if (copied && ReplaceWithFile(temporary.c_str(), destination)) return 1;
    DWORD error = GetLastError();
    DeleteFileA(temporary.c_str());
    SetLastError(error);
    return 0;
}

int DeleteFilesByPattern(const char* path) {
    // Forward slashes as the system reads them: the folder part below is cut
    // at the last "\", and a file found must be deleted in the folder it was
    // found in, not in one above it.
    std::string pattern = path;
    for (char& c : pattern)
        if (c == '/') c = '\\';
    if (IsFolder(path) && !pattern.empty() && pattern.back() == '\\') pattern += "\\*.*";
    std::string folder;
    size_t slash = pattern.rfind('\\');
    if (slash != std::string::npos) {
        folder = pattern.substr(0, slash);
        if (folder.size() == 2 && folder[1] == ':') folder += "\\";
        if (folder.back() != '\\') folder += "\\";
    }
    WIN32_FIND_DATAA found;
    AutoFindHandle find;
    find.h = FindFirstFileA(pattern.c_str(), &found);
    if (find.h == INVALID_HANDLE_VALUE) return 0;
    // The system's search matches 8.3 short names too ("*.doc" finds
    // "a.docx" by "A~1.DOC"): a file is deleted only when its long name
    // matches the pattern the user wrote. A name without wildcards names one
    // file, by whatever spelling, and is taken as found.
    const std::string wanted = pattern.substr(slash == std::string::npos ? 0 : slash + 1);
    const bool matchNames = HasWildcards(wanted.c_str());
    int count = 0;
    do {
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
        if (matchNames && !NameMatchesPattern(found.cFileName, wanted.c_str())) continue;
        count++;
        if (!DeleteFileA((folder + found.cFileName).c_str())) return 0;  // earlier files are gone
    } while (FindNextFileA(find.h, &found));
    return count;
}

int RemoveFolder(const char* path, int force) {
    std::string full = FullPath(path);
    if (!IsFolder(full.c_str())) return 2;  // not a folder: read as success
    if (RemoveDirectoryA(full.c_str())) return 1;
    return force ? ShellOperation(FO_DELETE, full, "") : 0;
}

int CopyFolder(const char* source, const char* destination) {
    std::string from = FullPath(source), to = FullPath(destination);
    if (!IsFolder(from.c_str())) return 0;
    if (!CreateFolderPath(to.c_str())) return 0;
    return ShellOperation(FO_COPY, from + "\\*.*", to);
}

int SetFileLength(const char* path, unsigned long size, int fillWithZeros) {
    const unsigned long oldSize = GetFileSizeByName(path);
    HANDLE file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 0;
    AutoCloseHandle owner(file);
    if (SetFilePointer(file, (LONG)size, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
        owner.h = INVALID_HANDLE_VALUE;  // left open on this path, as it always was
        return 0;
    }
    SetEndOfFile(file);
    if (fillWithZeros && size > oldSize) {
        const DWORD block = 33554432;
        std::vector<char> zeros(block);
        SetFilePointer(file, (LONG)oldSize, nullptr, FILE_BEGIN);
        for (unsigned long at = oldSize; at < size;) {
            DWORD n = size - at < block ? size - at : block;
            if (!WriteAll(file, zeros.data(), n)) return 0;
            at += n;
        }
        Sleep(500);
    }
    return 1;
}
