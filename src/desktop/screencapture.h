// Saving what is on the screen as a bitmap file.
#pragma once

#include <windows.h>

// Orders a rectangle's edges so that left <= right and top <= bottom.
void NormalizeRect(RECT* rect);
// Saves a window, a rectangle or, with both 0, the whole screen as a 24-bit
// BMP file, replacing what is there. 1 on success.
int CaptureScreenToFile(HWND window, const RECT* rect, const char* file, int refreshFirst);
