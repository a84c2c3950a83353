// Starts a program with a raw command line taken from the environment
// variable ZR_COMMAND_LINE, waits for it and returns its exit code. Wine
// re-quotes the arguments it is given, so a command line with its own quotes
// (%foo="New Value") can only reach a program this way.
#include <windows.h>
#include <stdio.h>

int main() {
    static char line[32768];
    if (!GetEnvironmentVariableA("ZR_COMMAND_LINE", line, sizeof line)) return 250;
    STARTUPINFOA si = {sizeof si};
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) {
        fprintf(stderr, "launch: cannot start (%lu)\n", GetLastError());
        return 251;
    }
    WaitForSingleObject(pi.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return (int)code;
}
