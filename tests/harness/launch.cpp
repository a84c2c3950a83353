// Starts a program with a raw command line taken from the environment
// variable ZR_COMMAND_LINE, waits for it and returns its exit code. Wine
// re-quotes the arguments it is given, so a command line with its own quotes
// (%foo="New Value") can only reach a program this way. The program gets this
// process's standard handles, and the whole exit code is printed as
// "EXIT <code>" on standard output, since Wine's own exit keeps 8 bits.
// It runs in UTF-8 (its manifest), so that the line reaches the program
// whole (through the legacy code page a "東" would arrive as "?"); the line
// is read as Unicode, since Wine's GetEnvironmentVariableA gives a UTF-8
// text only as many bytes as it has UTF-16 units.
#include <windows.h>
#include <stdio.h>

int main() {
    static wchar_t wide[32768];
    static char line[4 * 32768];
    if (!GetEnvironmentVariableW(L"ZR_COMMAND_LINE", wide, 32768)) return 250;
    if (!WideCharToMultiByte(CP_UTF8, 0, wide, -1, line, sizeof line, nullptr, nullptr)) return 250;
    STARTUPINFOA si = {sizeof si};
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    si.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(nullptr, line, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        fprintf(stderr, "launch: cannot start (%lu)\n", GetLastError());
        return 251;
    }
    WaitForSingleObject(pi.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    printf("EXIT %lu\n", code);
    fflush(stdout);
    return (int)code;
}
