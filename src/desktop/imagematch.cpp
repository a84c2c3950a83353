// One capture of the screen serves every scale: the image is resampled once
// for each scale and scored against the same pixels. The best score over all
// scales wins; among equal scores the earlier scale in the order, which puts
// the image as captured first.
#include "desktop/imagematch.h"

#include "base/log.h"
#include "base/text.h"
#include "base/ui.h"
#include "desktop/imagescale.h"
#include "desktop/imagesearch.h"
#include "run/runstate.h"
#include "run/runwait.h"

namespace {

long long Microseconds() {
    LARGE_INTEGER frequency, count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    return count.QuadPart * 1000000 / frequency.QuadPart;
}

}  // namespace

bool SearchAtScales(const PixelArea& screen, const Needle& needle, const RECT& region, int variation, int percent,
                    const int* scales, int count, Candidate* found, int* foundScale, Candidate* closest,
                    int* closestScale, int* width, int* height, bool (*stop)()) {
    Candidate best, nearestAll;
    int bestAt = -1, nearestAt = -1;
    std::vector<Needle> scaled((size_t)count);
    for (int i = 0; i < count; i++) {
        // A scale at which the image cannot fit the region is not made at all.
        const long long w = (long long)needle.width * scales[i] / 100, h = (long long)needle.height * scales[i] / 100;
        if (w > region.right - region.left + 1 || h > region.bottom - region.top + 1) continue;
        scaled[(size_t)i] = ScaleNeedle(needle, scales[i]);
        Candidate c, nearest;
        if (ScoreSearch(screen, scaled[(size_t)i], region, variation, percent, &c, &nearest, stop) &&
            BetterCandidate(c, best)) {
            best = c;
            bestAt = i;
        }
        if (BetterCandidate(nearest, nearestAll)) {
            nearestAll = nearest;
            nearestAt = i;
        }
        if (stop && stop()) return false;
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

bool TolerantImageSearch(const Needle& needle, const RECT& region, int variation, const ImageMatchOptions& options,
                         int* outX, int* outY, int* outWidth, int* outHeight, int showScan, DWORD priorityClass) {
    const int percent = options.percent < 50 ? 50 : options.percent > 100 ? 100 : options.percent;
    int one[1] = {options.scale};
    const int* scales = options.scale == 0 ? CommonScales : one;
    const int common = (int)(sizeof CommonScales / sizeof CommonScales[0]);
    const int count = options.scale != 0                                         ? 1
                      : options.scaleCount > 0 && options.scaleCount < common ? options.scaleCount
                                                                               : common;
    char scaleList[128] = "";
    for (int i = 0; i < count; i++) {
        char item[16];
        FormatInto(item, i ? ", %d%%" : "%d%%", scales[i]);
        AppendInto(scaleList, item);
    }
    LogPrintf(OutputEdit,
              "\t*Find Image Size=[%d x %d]  Search Region=(%d,%d)->(%d,%d)\r\n\t*Scan Method: [Scored Scan]  "
              "Similarity: %d%%  Scales: %s\r\n",
              needle.width, needle.height, (int)region.left, (int)region.top, (int)region.right, (int)region.bottom,
              percent, scaleList);

    HANDLE process = GetCurrentProcess();
    DWORD oldPriority = 0;
    if (priorityClass == 0x80 || priorityClass == 0x20 || priorityClass == 0x40) {
        oldPriority = GetPriorityClass(process);
        SetPriorityClass(process, priorityClass);
    }
    const RECT wanted = {region.left, region.top, region.right + 1, region.bottom + 1};
    const long long captureStart = Microseconds();
    const PixelArea screen = CaptureArea(wanted);
    const long long scanStart = Microseconds();
    LastSearchCaptureMicroseconds = scanStart - captureStart;
    ImageMatchReport& report = LastImageMatch;
    report.region = region;
    Candidate best;
    int bestScale = 100, width = needle.width, height = needle.height;
    report.found = SearchAtScales(screen, needle, region, variation, percent, scales, count, &best, &bestScale, &best,
                                  &bestScale, &width, &height, RunStopping);
    const bool stopped = StopRequested != 0;
    report.compared = !stopped;
    if (stopped) report.found = false;
    report.scale = bestScale;
    report.width = width;
    report.height = height;
    LastSearchScanMicroseconds = Microseconds() - scanStart;
    report.best = best;
    if (oldPriority) SetPriorityClass(process, oldPriority);
    if (report.found) {
        const int score = ScorePermille(best);
        LogPrintf(OutputEdit, "\t*Found at (%d, %d)  Scale: %d%%  Score: %d.%d%%\r\n", best.x, best.y, report.scale,
                  score / 10, score % 10);
        if (outX) *outX = best.x;
        if (outY) *outY = best.y;
        if (outWidth) *outWidth = report.width;
        if (outHeight) *outHeight = report.height;
    } else if (!stopped) {
        LogBestCandidate();
    }
    if (showScan) ShowScanOutcome(report.found, best.x, best.y);
    return report.found;
}
