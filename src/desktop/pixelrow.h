// The first pixel of a screen row that passes a colour test: the inner loop
// of the pixel and image searches, done four pixels at a time with SSE2
// where the processor has it. Pixels are as a 32-bit DIB holds them
// (0x??RRGGBB; the top byte is not looked at).
#pragma once

#include <windows.h>

struct PixelTest {
    bool exact;      // the whole colour, else each channel within its bounds
    DWORD raw;       // 0x00RRGGBB for an exact test
    BYTE low[4];     // bounds in the pixel's byte order: blue, green, red, unused
    BYTE high[4];
};

// Whether one pixel passes: what the searches ask of a pixel where they do
// not scan a row (a shown scan, which draws as it goes).
inline bool PixelPasses(DWORD pixel, const PixelTest& t) {
    if (t.exact) return (pixel & 0xFFFFFF) == t.raw;
    const BYTE b = (BYTE)pixel, g = (BYTE)(pixel >> 8), r = (BYTE)(pixel >> 16);
    return b >= t.low[0] && b <= t.high[0] && g >= t.low[1] && g <= t.high[1] && r >= t.low[2] && r <= t.high[2];
}

// The bounds of each channel that a colour with a variation allows (0 and 0
// when the variation is 0 or less); a null pointer skips its channel.
void ColorRange(COLORREF color, int variation, int* redMin, int* redMax, int* greenMin, int* greenMax, int* blueMin,
                int* blueMax);
// The test the searches make of a colour: exact with no variation, else each
// channel within the variation (a negative variation gives bounds of 0).
PixelTest MakePixelTest(COLORREF color, int variation);
// The first x in from..to (both inside the row) whose pixel passes, or -1.
int FindPixelInRow(const DWORD* row, int from, int to, const PixelTest& test);
// The same, one pixel at a time: what the fast path must equal.
int FindPixelInRowPlain(const DWORD* row, int from, int to, const PixelTest& test);
// The first x in from..to whose pixel passes `test` and whose pixel in
// `second` (second[x], a row of the same screen seen from another place)
// passes `secondTest`, or -1: the image search's candidates together with
// one more pixel of the image, which most candidates fail.
int FindPixelPairInRow(const DWORD* row, const DWORD* second, int from, int to, const PixelTest& test,
                       const PixelTest& secondTest);
int FindPixelPairInRowPlain(const DWORD* row, const DWORD* second, int from, int to, const PixelTest& test,
                            const PixelTest& secondTest);
