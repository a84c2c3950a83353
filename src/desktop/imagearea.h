// The pixels an image search compares: the image, and the screen's pixels
// in memory.
#pragma once

#include <windows.h>

#include <vector>

// The image searched for, as the search compares it.
struct Needle {
    int width = 0, height = 0;
    std::vector<DWORD> raw;            // 0x00RRGGBB by rows from the top
    std::vector<unsigned char> skip;   // 1 where any screen pixel matches (mask, transparency); may be empty
};

// Pixels of the screen in memory: `bits` holds the rectangle `area` (screen
// coordinates), `stride` pixels a row, as a 32-bit DIB (0x??RRGGBB).
struct PixelArea {
    RECT area = {};
    int stride = 0;
    const DWORD* bits = nullptr;
    // Optional, laid out as `bits`: each channel's least and greatest value
    // in the 3 x 3 pixels around each pixel. When given, a pixel of the
    // image matches where each channel lies within that range, give or take
    // a few levels: the test for an image grown to a larger scale.
    const DWORD* low = nullptr;
    const DWORD* high = nullptr;
};
