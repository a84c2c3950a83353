#include "base/text.h"
#include "system/filelines.h"

#include <windows.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/handles.h"

unsigned long GetFileSizeByName(const char* path) {
    if (!path || !*path) return 0;
    AutoCloseHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) return 0;
    DWORD size = GetFileSize(file.h, nullptr);
    return size == INVALID_FILE_SIZE ? 0 : size;
}

int ReadFileLine(const char* path, int lineNumber, char* out, int outSize) {
    if (out && outSize > 0) out[0] = 0;
    if (!out || outSize <= 0) return 0;
    AutoCloseHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) return 0;
    DWORD size = GetFileSize(file.h, nullptr);
    size_t bufferSize = (size_t)size + 1 < 1048576 ? (size_t)size + 1 : 1048576;
    std::vector<char> buffer(bufferSize < 256 ? 256 : bufferSize);
    std::string ending;  // the line ending of the chunk: CR LF, CR or LF
    int passed = 0;
    DWORD position = 0;
    // The size is read again before each chunk, so a growing file is followed.
    while (position < (size = GetFileSize(file.h, nullptr)) && size != INVALID_FILE_SIZE) {
        SetFilePointer(file.h, (LONG)position, nullptr, FILE_BEGIN);
        DWORD got = 0;
        if (!ReadFile(file.h, buffer.data(), (DWORD)buffer.size() - 1, &got, nullptr) || got == 0) break;
        position += got;
        buffer[got] = 0;  // a zero byte ends the chunk
        const char* chunk = buffer.data();
        const char* first = strpbrk(chunk, "\r\n");
        if (first) ending = first[0] == '\r' ? (first[1] == '\n' ? "\r\n" : "\r") : "\n";
        for (const char* p = chunk; *p;) {
            if (passed + 1 == lineNumber) {
                std::string line(p);
                size_t cut = line.find('\r');
                if (cut != std::string::npos) line.resize(cut);
                cut = line.find('\n');
                if (cut != std::string::npos) line.resize(cut);
                if (line.size() > 1023) line.resize(1023);
                CopyIntoN(out, outSize, line.c_str());
                return (int)line.size() + 1;
            }
            if (!ending.empty() && strncmp(p, ending.c_str(), ending.size()) == 0) {
                passed++;
                p += ending.size();
            } else {
                p++;
            }
        }
    }
    return 0;
}

long CountFileLines(const char* path) {
    unsigned long size = GetFileSizeByName(path);
    if (!size) return 0;
    AutoCloseHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    std::vector<char> data(size);
    DWORD got = 0;
    if (!file.ok() || !ReadFile(file.h, data.data(), size, &got, nullptr)) return 1;
    long count = 0;
    for (DWORD i = 0; i < got;) {
        if (data[i] == '\r' || data[i] == '\n') {
            count++;
            i += 2;  // so "\r\n" counts once, and so do two "\n" in a row
        } else {
            i++;
        }
    }
    return count + 1;
}
