// Processes: finding and killing them by name, the debug privilege, the
// Windows version, and calls into interfaces that a Windows may lack.
#pragma once

#include <windows.h>
#include <stdint.h>

// Counts the processes it visits. `name` may hold a path: only its file name
// is compared. Mode 2 kills the first match and returns the count up to it
// (0 if none matched); any other mode returns the count of all processes.
// `outWindow` gets a window of the last matching process. `forcePsapi` 1
// lists by the process-status interface instead of the snapshot.
int FindProcess(const char* name, int mode, char* listBuffer, int listSize, HWND* outWindow, int forcePsapi);
int EnableDebugPrivilege();
// Loads `module`, calls one of the few functions it knows by name with the
// arguments that function takes, frees the module; 0 if anything is missing.
intptr_t DynamicSystemCall(const char* module, const char* function, uintptr_t a, uintptr_t b, uintptr_t c,
                           uintptr_t d, uintptr_t e);
// The version bit set; `name` (optional) gets the product name.
enum { WINDOWS_NAME_SIZE = 64 };  // the size of GetWindowsVersionMask's `name`
int32_t GetWindowsVersionMask(char* name);
// The system's text for an error, at most 2047 characters.
void SystemErrorText(DWORD error, char* text, int size);
