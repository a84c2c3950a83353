// Process listing by the tool-help snapshot, or by the process-status
// interface where that is missing.
#include "system/processes.h"
#include "base/text.h"

#include <tlhelp32.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/windowmatch.h"
#include "base/handles.h"

namespace {

// The file name of a path.
std::string BaseName(const char* path) {
    const char* slash = strrchr(path, '\\');
    const char* name = slash ? slash + 1 : path;
    const char* colon = strrchr(name, ':');
    return colon ? colon + 1 : name;
}

struct Walk {
    std::string wanted;
    int mode;
    char* list;
    int listSize;
    HWND* outWindow;
    int count = 0;
};

// One listed process; true ends the walk (a kill).
bool Visit(Walk& w, const char* processName, DWORD id) {
    w.count++;
    const bool match = !w.wanted.empty() && lstrcmpiA(BaseName(processName).c_str(), w.wanted.c_str()) == 0;
    if (w.mode == 2 && match) {
        EnableDebugPrivilege();
        AutoCloseHandle process(OpenProcess(0x1F0FFF, FALSE, id));
        if (process.ok()) TerminateProcess(process.h, 0);
        return true;
    }
    if (w.list) {
        size_t length = strlen(w.list);
        if ((int)(length + strlen(processName)) < w.listSize - 8)
            FormatIntoN(w.list + length, (size_t)w.listSize - length, "%s - %lu\r\n", processName, (unsigned long)id);
    }
    if (w.outWindow && match) *w.outWindow = FindProcessWindow(id);
    return false;
}

bool WalkSnapshot(Walk& w) {
    HANDLE snapshot = (HANDLE)DynamicSystemCall("KERNEL32.DLL", "CreateToolhelp32Snapshot", TH32CS_SNAPPROCESS, 0, 0,
                                                0, 0);
    if (!snapshot || snapshot == INVALID_HANDLE_VALUE) return false;
    AutoCloseHandle owner(snapshot);
    PROCESSENTRY32 entry;
    entry.dwSize = sizeof entry;
    for (intptr_t more = DynamicSystemCall("KERNEL32.DLL", "Process32First", (uintptr_t)snapshot,
                                           (uintptr_t)&entry, 0, 0, 0);
         more; more = DynamicSystemCall("KERNEL32.DLL", "Process32Next", (uintptr_t)snapshot, (uintptr_t)&entry, 0,
                                        0, 0))
        if (Visit(w, entry.szExeFile, entry.th32ProcessID)) return true;
    return false;
}

bool WalkPsapi(Walk& w, bool* available) {
    HMODULE psapi = LoadLibraryA("PSAPI.DLL");
    typedef BOOL(WINAPI * EnumProcessesProc)(DWORD*, DWORD, DWORD*);
    typedef BOOL(WINAPI * EnumModulesProc)(HANDLE, HMODULE*, DWORD, DWORD*);
    typedef DWORD(WINAPI * BaseNameProc)(HANDLE, HMODULE, LPSTR, DWORD);
    auto enumProcesses = psapi ? (EnumProcessesProc)(void*)GetProcAddress(psapi, "EnumProcesses") : nullptr;
    auto enumModules = psapi ? (EnumModulesProc)(void*)GetProcAddress(psapi, "EnumProcessModules") : nullptr;
    auto baseName = psapi ? (BaseNameProc)(void*)GetProcAddress(psapi, "GetModuleBaseNameA") : nullptr;
    *available = enumProcesses && enumModules && baseName;
    if (!*available) return false;  // the library stays loaded, as it always did
    std::vector<DWORD> ids(256);
    DWORD got = 0;
    for (;;) {
        if (!enumProcesses(ids.data(), (DWORD)(ids.size() * sizeof(DWORD)), &got)) break;
        if (got < ids.size() * sizeof(DWORD)) break;
        ids.resize(ids.size() * 2);
    }
    bool killed = false;
    for (DWORD i = 0; i < got / sizeof(DWORD) && !killed; i++) {
        AutoCloseHandle process(OpenProcess(0x410, FALSE, ids[i]));
        if (!process.ok()) continue;
        HMODULE module;
        DWORD needed;
        char name[261];
        if (!enumModules(process.h, &module, sizeof module, &needed) ||
            !baseName(process.h, module, name, sizeof name - 1))
            continue;
        killed = Visit(w, name, ids[i]);
    }
    FreeLibrary(psapi);
    return killed;
}

}  // namespace

int FindProcess(const char* name, int mode, char* listBuffer, int listSize, HWND* outWindow, int forcePsapi) {
    if ((!name || !*name) && !listBuffer) return 0;
    Walk w;
    w.wanted = name ? BaseName(name) : "";
    w.mode = mode;
    w.list = listBuffer;
    w.listSize = listSize;
    w.outWindow = outWindow;
    if (listBuffer && listSize > 0) listBuffer[0] = 0;
    if (outWindow) *outWindow = nullptr;
    bool killed;
    if (forcePsapi == 1) {
        bool available = true;
        killed = WalkPsapi(w, &available);
        if (!available) return 0;
    } else {
        killed = WalkSnapshot(w);
    }
    if (killed) return w.count;
    return mode == 2 ? 0 : w.count;
}

int EnableDebugPrivilege() {
    HANDLE token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token)) return 0;
    AutoCloseHandle owner(token);
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!LookupPrivilegeValueA(nullptr, "SeDebugPrivilege", &privileges.Privileges[0].Luid)) return 0;
    return AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr) ? 1 : 0;
}

intptr_t DynamicSystemCall(const char* module, const char* function, uintptr_t a, uintptr_t b, uintptr_t c,
                           uintptr_t d, uintptr_t e) {
    const bool addConnection = lstrcmpA(function, "WNetAddConnection2") == 0;
    HMODULE library = LoadLibraryA(module);
    if (!library) return 0;
    FARPROC proc = GetProcAddress(library, addConnection ? "WNetAddConnection2A" : function);
    intptr_t result = 0;
    if (proc) {
        if (addConnection) {
            result = ((DWORD(WINAPI*)(void*, const char*, const char*, DWORD))(void*)proc)((void*)a, (const char*)b,
                                                                                         (const char*)c, (DWORD)d);
        } else if (lstrcmpA(function, "WNetConnectionDialog") == 0) {
            result = ((DWORD(WINAPI*)(HWND, DWORD))(void*)proc)((HWND)a, (DWORD)b);
        } else if (lstrcmpA(function, "CreateToolhelp32Snapshot") == 0) {
            result = (intptr_t)((HANDLE(WINAPI*)(DWORD, DWORD))(void*)proc)((DWORD)a, (DWORD)b);
        } else if (lstrcmpA(function, "Process32First") == 0 || lstrcmpA(function, "Process32Next") == 0) {
            result = ((BOOL(WINAPI*)(HANDLE, void*))(void*)proc)((HANDLE)a, (void*)b);
        }
        // "sndPlaySoundA" and "PlaySound" are known and always give 0.
    }
    (void)e;
    FreeLibrary(library);
    return result;
}

int32_t GetWindowsVersionMask(char* name) {
    OSVERSIONINFOA v = {};
    v.dwOSVersionInfoSize = sizeof v;
    GetVersionExA(&v);
    int32_t mask = 0;
    if (v.dwPlatformId == 1) {
        mask = v.dwMinorVersion == 0 ? 0x1001 : v.dwMinorVersion == 10 ? 0x3002 : v.dwMinorVersion == 90 ? 0x7004 : 0x1000;
    } else if (v.dwMajorVersion == 4) {
        mask = 0x18010;
    } else if (v.dwMajorVersion == 5) {
        mask = v.dwMinorVersion == 0 ? 0x28020 : v.dwMinorVersion == 1 ? 0x68040 : 0xE8080;
    } else if (v.dwMajorVersion == 6) {
        mask = 0x1C8100;
    } else {
        mask = 0x8000;
    }
    if (name) {
        static const struct {
            int32_t bit;
            const char* text;
        } names[] = {{0x100, "Windows Vista"}, {0x80, "Windows 2003 Server"}, {0x40, "Windows XP"},
                     {0x20, "Windows 2000"},   {0x10, "Windows NT 4"},        {0x8, "Windows NT"},
                     {0x4, "Windows ME"},      {0x2, "Windows 98"},           {0x1, "Windows 95"}};
        name[0] = 0;
        for (const auto& n : names) {
            if (mask & n.bit) {
                CopyIntoN(name, WINDOWS_NAME_SIZE, n.text);
                break;
            }
        }
    }
    return mask;
}

void SystemErrorText(DWORD error, char* text, int size) {
    text[0] = 0;
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0x400, text,
                   (DWORD)(size < 2048 ? size : 2048) - 1, nullptr);
}
