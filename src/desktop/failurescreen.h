// The screen as a failed step leaves it: a plain picture, or, after an
// image search that missed, one with the search and its best candidate
// framed, so that the user sees where the search looked and how near it came.
#pragma once

#include <stddef.h>

// The screen image of a failed step, beside the log: `base` is its name
// without the extension. When the step's last image search missed, a PNG
// with the search region and the best candidate boxed, in a colour the
// screen does not show, and a log line naming it; otherwise a BMP. 1 on
// success, with the file's whole name in `saved` (size bytes).
int SaveFailureScreen(const char* base, int tab, int step, char* saved, size_t size);
// The screen as a PNG with the region and the place (found or closest) of
// the last image search framed, as SaveFailureScreen frames them. 1 on success.
int SaveFramedScreen(const char* file);
