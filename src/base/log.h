// The run's three channels: the log file, the Output palette and the status
// bar. Actions write to them only through these calls.
#pragma once

#include <windows.h>

#include "base/printf.h"

// Appends a formatted line (wvsprintf rules) to the log file when `Log` is on,
// and to the Output palette when it is visible. `window` is OutputEdit.
void LogPrintf(HWND window, const char* format, ...) ZR_PRINTF(2, 3);
// Sees every line LogPrintf writes, whatever `Log` says: the run's record
// for its result files keeps them. Null when nobody listens.
extern void (*LogLineTap)(const char* line);
// Writes one line into one part of the status bar.
void StatusPrintf(HWND statusBar, int part, const char* format, ...) ZR_PRINTF(3, 4);
// Writes an elapsed time into `buffer` (at least ELAPSED_TEXT_SIZE bytes),
// which is written only if it already holds text.
enum { ELAPSED_TEXT_SIZE = 32 };
void FormatElapsed(unsigned milliseconds, char* buffer);
// Appends a text to a file, opening and closing it when `handle` is null.
int AppendToFile(HANDLE handle, const char* path, const char* text);
int AppendPrintf(HANDLE handle, const char* path, const char* format, ...) ZR_PRINTF(3, 4);
// Appends a text and its line end ("\r\n") as one write, so that another
// process appending to the same file can never land between the two.
int AppendLineToFile(HANDLE handle, const char* path, const char* text);
// Files opened by AppendToFile since the program started (for the benchmarks).
extern unsigned long FileAppends;

// Opens a file for appending, creating it and its missing folders.
HANDLE OpenFileForWrite(const char* path);
