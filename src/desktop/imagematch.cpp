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
    std::vector<Needle> scaled((size_t)count);
    Candidate best, closest;
    int bestAt = -1, closestAt = -1;
    bool stopped = false;
    for (int i = 0; i < count && !stopped; i++) {
        scaled[(size_t)i] = ScaleNeedle(needle, scales[i]);
        Candidate c, nearest;
        if (ScoreSearch(screen, scaled[(size_t)i], region, variation, percent, &c, &nearest) && BetterCandidate(c, best)) {
            best = c;
            bestAt = i;
        }
        if (BetterCandidate(nearest, closest)) {
            closest = nearest;
            closestAt = i;
        }
        stopped = RunStopping();
    }
    report.compared = !stopped;
    report.found = bestAt >= 0 && !stopped;
    if (!report.found) {
        // Nothing reached the share: the place that came closest, at any scale.
        best = closest;
        bestAt = closestAt;
    }
    LastSearchScanMicroseconds = Microseconds() - scanStart;
    report.best = best;
    if (bestAt >= 0) {
        report.scale = scales[bestAt];
        report.width = scaled[(size_t)bestAt].width;
        report.height = scaled[(size_t)bestAt].height;
    }
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
