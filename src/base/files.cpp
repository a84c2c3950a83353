#include "base/files.h"

#include <windows.h>
#include <string.h>

int CreateFolderPath(const char* path) {
    if (!path || !*path) return 0;
    DWORD attributes = GetFileAttributesA(path);
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
    DWORD error = GetLastError();
    if (error == ERROR_PATH_NOT_FOUND) {
        char parent[MAX_PATH];
        lstrcpynA(parent, path, sizeof parent);
        char* slash = strrchr(parent, '\\');
        if (!slash) return 0;
        *slash = 0;
        if (!CreateFolderPath(parent)) return 0;
        return CreateDirectoryA(path, nullptr) ? 1 : 0;
    }
    if (error == ERROR_FILE_NOT_FOUND) return CreateDirectoryA(path, nullptr) ? 1 : 0;
    return 0;
}
