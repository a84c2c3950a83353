#include "base/fileidentity.h"

#include <windows.h>

#include "base/handles.h"

namespace {

struct DiskIdentity {
    DWORD volume = 0, high = 0, low = 0;
    bool known = false;
};

// Opened with no access at all and backup semantics, so that folders open
// too and a file held open by another program without sharing still answers.
DiskIdentity IdentityOf(const char* path) {
    DiskIdentity id;
    if (!path || !*path) return id;
    AutoCloseHandle file(CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION info;
    if (!file.ok() || !GetFileInformationByHandle(file.h, &info)) return id;
    id.volume = info.dwVolumeSerialNumber;
    id.high = info.nFileIndexHigh;
    id.low = info.nFileIndexLow;
    id.known = true;
    return id;
}

bool Same(const DiskIdentity& a, const DiskIdentity& b) {
    return a.known && b.known && a.volume == b.volume && a.high == b.high && a.low == b.low;
}

// The parent of a resolved path ("C:\a\b" -> "C:\a", "C:\a" -> "C:\"); ""
// at a root.
std::string ParentOf(const std::string& path) {
    size_t slash = path.find_last_of('\\');
    if (slash == std::string::npos || slash + 1 == path.size()) return std::string();
    if (slash == 2 && path[1] == ':') return path.substr(0, 3);
    if (slash < 2 && path.compare(0, 2, "\\\\") == 0) return std::string();
    return path.substr(0, slash);
}

}  // namespace

std::string ResolvedPath(const char* path) {
    if (!path || !*path) return std::string();
    char full[MAX_PATH * 2];
    DWORD n = GetFullPathNameA(path, sizeof full, full, nullptr);
    if (n == 0 || n >= sizeof full) return std::string();
    std::string out(full, n);
    while (out.size() > 3 && out.back() == '\\') out.pop_back();
    return out;
}

bool SameDiskObject(const char* a, const char* b) { return Same(IdentityOf(a), IdentityOf(b)); }

bool PathWithinFolder(const char* inner, const char* outer) {
    DiskIdentity folder = IdentityOf(outer);
    if (!folder.known) return false;
    for (std::string at = ResolvedPath(inner); !at.empty(); at = ParentOf(at)) {
        DiskIdentity id = IdentityOf(at.c_str());
        if (!id.known) continue;  // not made yet: look at what holds it
        if (Same(id, folder)) return true;
    }
    return false;
}

std::string StoredName(const char* path) {
    std::string full = ResolvedPath(path);
    if (full.empty() || full.back() == '\\' || full.find_first_of("*?") != std::string::npos) return std::string();
    WIN32_FIND_DATAA found;
    AutoFindHandle find;
    find.h = FindFirstFileA(full.c_str(), &found);
    if (find.h == INVALID_HANDLE_VALUE) return std::string();
    return found.cFileName;
}
