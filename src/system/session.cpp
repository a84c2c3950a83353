#include "system/session.h"

#include "base/handles.h"
#include "system/processes.h"

namespace {

// Ends the program of a window, the forced exit of the older family.
BOOL CALLBACK EndProgramOf(HWND window, LPARAM) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process && process != GetCurrentProcessId()) {
        AutoCloseHandle handle(OpenProcess(PROCESS_TERMINATE, FALSE, process));
        if (handle.ok()) TerminateProcess(handle.h, 0);
    }
    return TRUE;
}

}  // namespace

bool ExitSession(UINT flags) {
    if (GetWindowsVersionMask(nullptr) & 0x8000) {
        HANDLE token;
        if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token)) return false;
        AutoCloseHandle owner(token);
        TOKEN_PRIVILEGES privileges = {};
        privileges.PrivilegeCount = 1;
        privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
        if (LookupPrivilegeValueA(nullptr, "SeShutdownPrivilege", &privileges.Privileges[0].Luid))
            AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr);
    } else if (flags & EWX_FORCE) {
        // The older family has no forced exit: each program is ended here.
        flags &= ~(UINT)EWX_FORCE;
        EnumWindows(EndProgramOf, 0);
    }
    return ExitWindowsEx(flags, 0) != 0;
}
