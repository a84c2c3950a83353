// Saving what is on the screen as a bitmap file.
#pragma once

#include <windows.h>

// Orders a rectangle's edges so that left <= right and top <= bottom.
void NormalizeRect(RECT* rect);
// Saves a window, a rectangle or, with both 0, the whole screen as a 24-bit
// BMP file, which takes the place of what is there only when it is whole.
// 1 on success; on failure the old file stays as it was.
int CaptureScreenToFile(HWND window, const RECT* rect, const char* file, int refreshFirst);
