// Finding a bitmap or a colour on the screen by the unique-pixel scan.
#pragma once

#include <windows.h>

#include "desktop/imagescore.h"
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

// How closely and at what scales a search compares. The defaults are the
// whole-image search above: every pixel, the image as it is.
struct ImageMatchOptions {
    int percent = 100;  // the share of pixels that must match, 50-100
    int scale = 100;    // the image at this percent of its size; 0 tries the common screen scales
    int scaleCount = 0; // with scale 0: only the first so many common scales (0: all of them)
    bool closest = false;  // on a miss of the whole-image search, find the closest place (it costs a pass)
};

// What the last search found, or came closest to: for the failure's log
// line and its screen image. `tab` and `step` name the step that searched
// (-1 when it was not a step's search).
struct ImageMatchReport {
    bool compared = false;  // places were compared; `best` is the closest (when best.compared)
    bool found = false;
    RECT region = {};
    Candidate best;
    int scale = 100;
    int width = 0, height = 0;  // of the image at that scale
    int tab = -1, step = -1;
};
extern ImageMatchReport LastImageMatch;

// ImageSearch with a share of pixels and screen scales. A file that is not a
// picture, or is too large, fails with words in StepFailureText.
bool ImageSearchWith(const char* file, const RECT* region, int variation, COLORREF maskColor,
                     const ImageMatchOptions& options, int* outX, int* outY, int* outWidth, int* outHeight,
                     int showScan, DWORD priorityClass);

// Searches `region` (already worked out, edges inclusive) for `needle` at
// the options' scales. Logs the search, and the place found with its scale
// and score, or the best candidate when nothing reached the share. Fills
// LastImageMatch. `outWidth` and `outHeight` get the image's size at the
// scale that matched.
bool TolerantImageSearch(const Needle& needle, const RECT& region, int variation, const ImageMatchOptions& options,
                         int* outX, int* outY, int* outWidth, int* outHeight, int showScan, DWORD priorityClass);

// The screen pixels of `wanted` (the part on the screen), in the run
// thread's capture store, valid until the next capture.
PixelArea CaptureArea(const RECT& wanted);
// After a shown scan: blinks the arrow at a place found, or waits a moment,
// then puts the screen back as it was.
void ShowScanOutcome(bool found, int x, int y);
// Writes the failure's log line naming the best candidate of LastImageMatch.
void LogBestCandidate();
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
