// The handler of category 7 ("Wait"). Delays and the waits for input loop
// here until their event or their time; the waits for a pixel, an image, a
// window or a file test once, and the run core calls them again until they
// succeed or the step's time limit runs out.
#pragma once

#include <windows.h>

int ActWait(int tab, int step);
// Reads every key's state once, which clears its "pressed since the last
// call" bit, so that earlier presses do not count.
void FlushKeyStates();
