// The scored image search over one or several screen scales: the place
// where the largest share of the image's pixels match, at or above the
// share asked for.
#pragma once

#include <windows.h>

#include "desktop/imagescore.h"

struct ImageMatchOptions;

// Searches `region` (already worked out, edges inclusive) for `needle` at
// the options' scales. Logs the search, and the place found with its scale
// and score, or the best candidate when nothing reached the share. Fills
// LastImageMatch. `outWidth` and `outHeight` get the image's size at the
// scale that matched.
bool TolerantImageSearch(const Needle& needle, const RECT& region, int variation, const ImageMatchOptions& options,
                         int* outX, int* outY, int* outWidth, int* outHeight, int showScan, DWORD priorityClass);
