// The harness's other program that holds files: opens each file or folder
// given, with no sharing at all (as an editor that locks its document
// does), prints READY, and closes them when the stop file exists.
//
//   holdfile.exe STOPFILE PATH...
//   holdfile.exe /short PATH      prints the path's 8.3 short form
#include <windows.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    if (argc == 3 && strcmp(argv[1], "/short") == 0) {
        char shortPath[MAX_PATH * 2] = "";
        if (!GetShortPathNameA(argv[2], shortPath, sizeof shortPath)) return 1;
        printf("%s\n", shortPath);
        return 0;
    }
    if (argc < 3) return 2;
    HANDLE held[64];
    int count = 0;
    for (int i = 2; i < argc && count < 64; i++) {
        held[count] = CreateFileA(argv[i], GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (held[count] == INVALID_HANDLE_VALUE) {
            printf("CANNOT %s %lu\n", argv[i], GetLastError());
            return 1;
        }
        count++;
    }
    printf("READY\n");
    fflush(stdout);
    // The harness writes the stop file after the run; a run is at most a
    // few minutes, so a missing stop file does not keep this forever.
    for (DWORD start = GetTickCount(); GetFileAttributesA(argv[1]) == INVALID_FILE_ATTRIBUTES;) {
        if (GetTickCount() - start > 300000) break;
        Sleep(20);
    }
    for (int i = 0; i < count; i++) CloseHandle(held[i]);
    return 0;
}
