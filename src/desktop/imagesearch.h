// Finding a bitmap or a colour on the screen by the unique-pixel scan.
#pragma once

#include <windows.h>

#include "desktop/pixelrow.h"  // ColorRange

enum {
    NO_MASK = 0x100,           // mask colour meaning "no mask"
    MASK_COLOR = 0xFF00FF,     // the mask colour of the masked actions: magenta
    MAX_IMAGE_WIDTH = 1600,    // the largest image a search takes
    MAX_IMAGE_HEIGHT = 1632,
};

// Where the last ImageSearch spent its time, in microseconds: copying the
// screen, and scanning the copy (for the benchmark's split).
extern long long LastSearchCaptureMicroseconds, LastSearchScanMicroseconds;

// The region a search covers: null is the whole screen; reversed edges are
// swapped, an empty width or height runs to the screen's edge, and every edge
// is held within the screens (one before them at most).
RECT RegionOf(const RECT* region);
// True if the whole image in the bitmap `file` was found in `region` (null:
// the whole screen). Outputs are optional. `showScan` above 0 shades the scan
// on the screen every so many pixels; `priorityClass` 0x40, 0x20 or 0x80 is set
// for the search and put back after it.
bool ImageSearch(const char* file, const RECT* region, int variation, COLORREF maskColor, int* outX, int* outY,
                 int* outWidth, int* outHeight, int showScan, DWORD priorityClass);
// The first pixel of `color` (within `variation`) in the region, scanned by
// rows from the start position.
bool PixelSearch(COLORREF color, const RECT* region, int variation, int startX, int startY, int* outX, int* outY,
                 int showScan, int offsetX, int offsetY);
// A colour name or six hexadecimal digits as red, green, blue; 0 otherwise.
COLORREF ParseColor(const char* text);
COLORREF DarkenColor(COLORREF color, double factor);
COLORREF LightenColor(COLORREF color, double factor);
// Draws a mark of the scan on the screen; a `dc` of 0 resets the marks.
void DrawScanMarker(HDC dc, int x, int y, int kind, COLORREF color, int force);
