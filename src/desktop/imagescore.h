// The tolerant image search: the place where the largest share of an
// image's pixels match the screen, at or above a share asked for. Works on
// pixels in memory (a capture of the screen), so that it can be tested and
// timed without one.
#pragma once

#include <windows.h>

#include <vector>

#include "desktop/imagearea.h"

// Fills `low` and `high` (resized) with the ranges of `screen` around each
// pixel, as PixelArea takes them; pixels past the area's edges are left out.
void NeighbourRanges(const PixelArea& screen, std::vector<DWORD>& low, std::vector<DWORD>& high);

// One place of the image: its top-left corner on the screen, and how many
// of the compared pixels matched.
struct Candidate {
    int x = 0, y = 0;
    int matched = 0, compared = 0;  // compared 0: no place was scored
};

// The share of matched pixels in tenths of a percent, rounded down (1000 is all).
int ScorePermille(const Candidate& c);
// True when `a` is a better place than `b` (a larger share; an unscored `b` loses).
bool BetterCandidate(const Candidate& a, const Candidate& b);

// Searches the places whose whole image lies inside `within` (inclusive
// edges) and inside `screen`, by rows from the top. A place counts when at
// least `percent` (50-100) of its pixels match, each channel within
// `variation` (0 or less: equal). Returns true with the best place in
// `found`, the first from the top-left among equals. Places are ranked
// first on a few well-chosen pixels, and only those that pass are compared
// whole. `closest`, when given, receives the place found or, on a miss, the
// place that came closest: ranked on even grids of the image's pixels, the
// best few compared whole (`compared` 0 when no place fits). `stop`, when
// given, is asked every sixteen rows; true ends the search with nothing.
// Where the sample passes nearly every place (an image mostly of the
// screen's own colours, with a variation), the places are ranked by their
// cells' mean colours instead and only the best-ranked are compared whole
// (desktop/imagerank.h): the place found is then the best of those, which
// is the best on the screen unless more than a few dozen places rank above
// it (many near copies of the image). `beat`, when given, is a place found before (at
// another scale): only a place with a larger share counts, and none is
// searched for when no place can have one.
bool ScoreSearch(const PixelArea& screen, const Needle& needle, const RECT& within, int variation, int percent,
                 Candidate* found, Candidate* closest = nullptr, bool (*stop)() = nullptr,
                 const Candidate* beat = nullptr);
