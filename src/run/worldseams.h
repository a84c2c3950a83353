// What the run engine's own rules need of the categories above it.
//
// The run core and flow control call no category directly: a handful of
// their rules are about the desktop, the disk or a query (a key a step left
// held is released at the run's end, the popups of earlier steps are served
// between steps, an IF row tests a window or the screen, a loop walks a
// file's lines or a query's rows, a failure leaves a picture of the screen).
// They reach those through this table, which the app fills with the step
// handlers (InstallStepHandlers). An entry left empty does nothing, and a
// test of it is false: a run without the categories still runs.
#pragma once

#include <windows.h>
#include <stdint.h>

#include <string>

struct RunWorldSeams {
    // The run core.
    void (*beginRun)();                     // a new run: the last prompt's answer is forgotten
    void (*serveStepWindows)();             // popups of earlier steps live on the run thread
    void (*releaseKey)(int32_t key);        // a key a step left held down
    void (*endPlayback)();                  // a recording's playback hook, at the run's end
    // Flow control's IF rows and loops.
    bool (*windowExists)(const char* title, bool framedOnly);
    bool (*controlChecked)(const char* title);
    bool (*pixelVisible)(int tab, int step, const char* color);
    bool (*imageVisible)(int tab, int step, const char* file);
    bool (*fileLine)(const char* path, int line, std::string* out);  // line from 1
    bool (*datasetRow)(int row, std::string* out);  // the last query's row, its cells joined by ", "
    // Failure handling: the screen at a step's failure, saved at `base` and
    // an extension of the picture's own kind (whole name in `saved`).
    bool (*saveFailureScreen)(const char* base, int tab, int step, char* saved, size_t size);
};

extern RunWorldSeams RunWorld;
