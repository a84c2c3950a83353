// Saving what is on the screen as a bitmap file.
#pragma once

#include <windows.h>

// Orders a rectangle's edges so that left <= right and top <= bottom.
void NormalizeRect(RECT* rect);
// Saves a window, a rectangle or, with both 0, the whole screen as a 24-bit
// BMP file, which takes the place of what is there only when it is whole.
// 1 on success; on failure the old file stays as it was.
int CaptureScreenToFile(HWND window, const RECT* rect, const char* file, int refreshFirst);

// The screen image of a failed step, beside the log: `base` is its name
// without the extension. When the step's last image search missed, a PNG
// with the search region and the best candidate boxed, in a colour the
// screen does not show, and a log line naming it; otherwise a BMP. 1 on
// success, with the file's whole name in `saved` (size bytes).
int SaveFailureScreen(const char* base, int tab, int step, char* saved, size_t size);
// The screen as a PNG with the region and the place (found or closest) of
// the last image search framed, as SaveFailureScreen frames them. 1 on success.
int SaveFramedScreen(const char* file);
