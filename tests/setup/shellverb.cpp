// Opens a document through the shell with a named verb, as Explorer's
// context menu does, waits for the program the association starts and
// returns its exit code (also printed as "EXIT <code>", since Wine's own exit
// keeps 8 bits).
//
//   shellverb VERB DOCUMENT
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>
#include <stdio.h>

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: shellverb VERB DOCUMENT\n");
        return 250;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    SHELLEXECUTEINFOA info = {sizeof info};
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    info.lpVerb = argv[1];
    info.lpFile = argv[2];
    info.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExA(&info)) {
        fprintf(stderr, "shellverb: the shell did not open it (%lu)\n", GetLastError());
        return 251;
    }
    if (!info.hProcess) {
        fprintf(stderr, "shellverb: the shell started no process\n");
        return 252;
    }
    WaitForSingleObject(info.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(info.hProcess, &code);
    CloseHandle(info.hProcess);
    printf("EXIT %lu\n", code);
    fflush(stdout);
    return (int)code;
}
