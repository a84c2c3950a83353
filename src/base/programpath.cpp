#include "base/programpath.h"
#include "base/text.h"

#include <windows.h>
#include <shellapi.h>
#include <string.h>

#include "base/settings.h"

namespace {

bool Exists(const char* path) { return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES; }

bool TryIn(const char* folder, const char* name, char* out) {
    if (!folder || !*folder) return false;
    char path[MAX_PATH * 2];
    CopyIntoN(path, MAX_PATH, folder);
    size_t n = strlen(path);
    if (n && path[n - 1] != '\\') AppendInto(path, "\\");
    strncat(path, name, MAX_PATH);
    if (strlen(path) >= MAX_PATH || !Exists(path)) return false;
    CopyIntoN(out, MAX_PATH, path);
    return true;
}

void FolderOf(const char* path, char* folder) {
    CopyIntoN(folder, MAX_PATH, path ? path : "");
    char* slash = strrchr(folder, '\\');
    if (slash) *slash = 0;
    else folder[0] = 0;
}

}  // namespace

int ResolveProgramPath(const char* name, char* out, const char* scriptPath) {
    if (!name || !*name || !out) return 0;
    if (strlen(name) >= MAX_PATH) {
        CopyIntoN(out, MAX_PATH, name);
        return 1;
    }
    if (strchr(name, '\\') && Exists(name)) {
        CopyIntoN(out, MAX_PATH, name);
        return 1;
    }
    out[0] = 0;
    // The registered path; kept as the answer when nothing later is found.
    char registered[MAX_PATH] = "";
    ReadSetting(HKEY_LOCAL_MACHINE, registered, sizeof registered, nullptr,
                "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\%s\\Path", name);
    if (registered[0]) {
        if (char* semicolon = strchr(registered, ';')) *semicolon = 0;
        if (Exists(registered)) {
            size_t n = strlen(registered);
            if (n && registered[n - 1] != '\\' && n + 1 < MAX_PATH) AppendInto(registered, "\\");
            if (strlen(registered) + strlen(name) < MAX_PATH) {
                CopyIntoN(out, MAX_PATH, registered);
                AppendIntoN(out, MAX_PATH, name);
                return 1;
            }
        }
        CopyIntoN(out, MAX_PATH, registered);
    }
    char folder[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, folder);
    if (TryIn(folder, name, out)) return 1;
    FolderOf(scriptPath, folder);
    if (TryIn(folder, name, out)) return 1;
    GetModuleFileNameA(nullptr, folder, MAX_PATH);
    FolderOf(folder, folder);
    if (TryIn(folder, name, out)) return 1;
    GetWindowsDirectoryA(folder, MAX_PATH);
    if (TryIn(folder, name, out)) return 1;
    GetSystemDirectoryA(folder, MAX_PATH);
    if (TryIn(folder, name, out)) return 1;
    if (TryIn("C:\\", name, out)) return 1;
    char found[MAX_PATH];
    if (SearchPathA(nullptr, name, nullptr, MAX_PATH, found, nullptr)) {
        CopyIntoN(out, MAX_PATH, found);
        return 1;
    }
    if (out[0]) return 1;
    CopyIntoN(out, MAX_PATH, name);
    return 0;
}

int AssociatedProgram(const char* key, char* out, const char* document) {
    if (!key || !out) return 0;
    out[0] = 0;
    char name[MAX_PATH] = "";
    if (lstrcmpiA(key, "MAIL") == 0) {
        ReadSetting(HKEY_LOCAL_MACHINE, name, sizeof name, nullptr, "SOFTWARE\\Clients\\Mail\\");
        if (!name[0]) return 0;
        ReadSetting(HKEY_LOCAL_MACHINE, out, MAX_PATH, nullptr, "SOFTWARE\\Clients\\Mail\\%s\\shell\\open\\command\\",
                    name);
        if (!out[0]) return 0;
    } else {
        ReadSetting(HKEY_CLASSES_ROOT, name, sizeof name, nullptr, "%s\\", key);
        if (!name[0]) return 0;
        ReadSetting(HKEY_CLASSES_ROOT, out, MAX_PATH, nullptr, "%s\\shell\\open\\command\\", name);
        if (!out[0] && document) FindExecutableA(document, "C:\\", out);
        if (!out[0]) return 0;
    }
    // Expanded, without quotes, cut before the first argument placeholder.
    char expanded[MAX_PATH * 2] = "";
    ExpandEnvironmentStringsA(out, expanded, sizeof expanded);
    char* w = out;
    for (const char* r = expanded; *r && w - out < MAX_PATH - 1; r++)
        if (*r != '"') *w++ = *r;
    *w = 0;
    if (char* percent = strchr(out, '%')) *percent = 0;
    for (size_t n = strlen(out); n && out[n - 1] == ' '; n--) out[n - 1] = 0;
    return 1;
}
