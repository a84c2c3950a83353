// The scored image search over one or several screen scales, on pixels in
// memory: the place where the largest share of the image's pixels match, at
// or above the share asked for.
#pragma once

#include <windows.h>

#include "desktop/imagescore.h"

// The search over several scales on pixels in memory: the image resampled
// once a scale and scored against the same screen. The best place over all
// scales in `found` (its scale in `foundScale`), or false with the place
// that came closest in `closest` and its scale. `stop`, when given, is asked
// between scales.
bool SearchAtScales(const PixelArea& screen, const Needle& needle, const RECT& region, int variation, int percent,
                    const int* scales, int count, Candidate* found, int* foundScale, Candidate* closest,
                    int* closestScale, int* width = nullptr, int* height = nullptr, bool (*stop)() = nullptr);
