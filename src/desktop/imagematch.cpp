// One capture of the screen serves every scale: the image is resampled once
// for each scale and scored against the same pixels. The best score over all
// scales wins; among equal scores the earlier scale in the order, which puts
// the image as captured first. So once a scale has found a place, a later
// scale is searched only for a place with a larger share, which lets its
// quick tests drop more; an image grown to a larger scale than captured is
// compared with the range of colours the screen shows around each pixel
// (its resampling cannot say where within a pixel an edge falls, nor how
// the screen smooths text drawn at that size); a place where every pixel
// matches ends the cascade; and the place that came closest is worked out
// only while no scale has found one.
#include "desktop/imagematch.h"

#include "desktop/imagescale.h"


bool SearchAtScales(const PixelArea& screen, const Needle& needle, const RECT& region, int variation, int percent,
                    const int* scales, int count, Candidate* found, int* foundScale, Candidate* closest,
                    int* closestScale, int* width, int* height, bool (*stop)()) {
    Candidate best, nearestAll;
    int bestAt = -1, nearestAt = -1;
    std::vector<Needle> scaled((size_t)count);
    // The ranges' store, kept for the next cascade on this thread: filling
    // a fresh one costs about as much as working the ranges out.
    static thread_local std::vector<DWORD> low, high;
    bool ranged = false;
    PixelArea around = screen;
    for (int i = 0; i < count; i++) {
        // A scale at which the image cannot fit the region is not made at all.
        const long long w = (long long)needle.width * scales[i] / 100, h = (long long)needle.height * scales[i] / 100;
        if (w > region.right - region.left + 1 || h > region.bottom - region.top + 1) continue;
        scaled[(size_t)i] = ScaleNeedle(needle, scales[i]);
        // A grown image is compared with the range the screen shows around
        // each pixel: made once, for the first scale that needs it. A shrunk
        // one is compared pixel by pixel: its few pixels, each a mean of
        // many, would pass in the ranges of too many places.
        if (scales[i] > 100 && !ranged) {
            ranged = true;
            NeighbourRanges(screen, low, high);
            around.low = low.data();
            around.high = high.data();
        }
        Candidate c, nearest;
        const bool before = bestAt >= 0;
        if (ScoreSearch(scales[i] > 100 ? around : screen, scaled[(size_t)i], region, variation, percent, &c, before ? nullptr : &nearest, stop,
                        before ? &best : nullptr) &&
            BetterCandidate(c, best)) {
            best = c;
            bestAt = i;
        }
        if (!before && BetterCandidate(nearest, nearestAll)) {
            nearestAll = nearest;
            nearestAt = i;
        }
        if (stop && stop()) return false;
        if (bestAt >= 0 && best.matched == best.compared) break;  // no scale can do better
    }
    const int at = bestAt >= 0 ? bestAt : nearestAt;
    if (bestAt >= 0) {
        if (found) *found = best;
        if (foundScale) *foundScale = scales[bestAt];
    } else {
        if (closest) *closest = nearestAll;
        if (closestScale && nearestAt >= 0) *closestScale = scales[nearestAt];
    }
    if (at >= 0) {
        if (width) *width = scaled[(size_t)at].width;
        if (height) *height = scaled[(size_t)at].height;
    }
    return bestAt >= 0;
}
