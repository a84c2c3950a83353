// The display mode: setting it, and listing the machine's modes.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

enum {
    DISPLAY_RESTORE = 0,  // back to the mode the registry holds
    DISPLAY_TEST = 1,
    DISPLAY_SESSION = 2,  // for this session only
    DISPLAY_KEEP = 3,     // and kept in the registry
};

// 1 for success, -1 when the system asks for a restart, 0 otherwise.
int SetDisplayMode(int kind, int width, int height, int depth, int frequency);
// "<width>x<height>, <depth> Bit, <frequency> Hz" per distinct mode, at most 256.
std::vector<std::string> ListDisplayModes();
// "Video Display Mode": the step's text names the mode.
int VideoDisplayStep(int tab, int step);
