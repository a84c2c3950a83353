// Ranking the places of an image on the screen cheaply, for the tolerant
// search when its quick per-pixel test does not tell places apart (grey
// controls on a grey screen with a colour variation pass it nearly
// everywhere): the image is cut into a grid of cells, and each place is
// ranked by how far the mean colours of those cells lie from the screen's
// mean colours under them. Only the best-ranked places are then compared
// pixel by pixel.
#pragma once

#include <windows.h>

#include <vector>

#include "desktop/imagearea.h"

// SSE2 code: on i686 compiled for SSE2 alone and used only when the
// processor has it; x86_64 always has it.
#if defined(__i386__)
#define IMAGE_SSE2 __attribute__((target("sse2")))
#else
#define IMAGE_SSE2
#endif
bool ImageSse2();

// Up to `keep` places whose corner lies in `corners` (inclusive; every
// place's whole image inside `screen`), best-ranked first, the earlier place
// (by rows from the top) first among equal ranks. Empty when the image is too
// small or too much of it is skipped to rank on.
std::vector<POINT> RankPlaces(const PixelArea& screen, const Needle& needle, const RECT& corners, int keep);
