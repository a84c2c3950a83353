// The run's three channels: the log file, the Output palette and the status
// bar. Actions write to them only through these calls.
#pragma once

#include <windows.h>

// Appends a formatted line (wvsprintf rules) to the log file when `Log` is on,
// and to the Output palette when it is visible. `window` is OutputEdit.
void LogPrintf(HWND window, const char* format, ...);
// Writes one line into one part of the status bar.
void StatusPrintf(HWND statusBar, int part, const char* format, ...);
// Writes an elapsed time into `buffer`, which is written only if it already
// holds text.
void FormatElapsed(unsigned milliseconds, char* buffer);
// Appends a text to a file, opening and closing it when `handle` is null.
int AppendToFile(HANDLE handle, const char* path, const char* text);
int AppendPrintf(HANDLE handle, const char* path, const char* format, ...);
// Files opened by AppendToFile since the program started (for the benchmarks).
extern unsigned long FileAppends;

// Opens a file for appending, creating it and its missing folders.
HANDLE OpenFileForWrite(const char* path);
