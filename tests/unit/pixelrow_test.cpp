// The row scan of the searches: the SSE2 path gives the plain scan's answer
// for every start, end, hit place, colour test and top byte.
#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

#include "desktop/pixelrow.h"

namespace {

DWORD Next(DWORD& seed) {
    seed = seed * 1103515245u + 12345u;
    return seed >> 8;
}

}  // namespace

TEST(PixelRow, TheFastScanFindsWhatThePlainScanFinds) {
    DWORD seed = 7;
    const COLORREF color = RGB(200, 100, 50);
    for (int variation : {0, 1, 10, -3, 255}) {
        const PixelTest test = MakePixelTest(color, variation);
        for (int round = 0; round < 400; round++) {
            std::vector<DWORD> row(70);
            // Mostly near misses of the colour, with random top bytes.
            for (DWORD& p : row) {
                const int r = 200 + (int)(Next(seed) % 40) - 20, g = 100 + (int)(Next(seed) % 40) - 20,
                          b = 50 + (int)(Next(seed) % 40) - 20;
                p = (Next(seed) << 24) | ((DWORD)r << 16) | ((DWORD)g << 8) | (DWORD)b;
            }
            if (round % 3 == 0) row[Next(seed) % row.size()] = (Next(seed) << 24) | 0xC86432;  // the colour itself
            const int from = (int)(Next(seed) % 20), to = from + (int)(Next(seed) % 50);
            EXPECT_EQ(FindPixelInRow(row.data(), from, to, test), FindPixelInRowPlain(row.data(), from, to, test))
                << "variation " << variation << " round " << round;
        }
    }
}

TEST(PixelRow, ExactTestsIgnoreTheTopByteAndBoundsHoldAtTheEdges) {
    std::vector<DWORD> row(40, 0x00FFFFFF);
    row[37] = 0xAB102030;
    EXPECT_EQ(FindPixelInRow(row.data(), 0, 39, MakePixelTest(RGB(0x10, 0x20, 0x30), 0)), 37);
    EXPECT_EQ(FindPixelInRow(row.data(), 0, 36, MakePixelTest(RGB(0x10, 0x20, 0x30), 0)), -1);
    EXPECT_EQ(FindPixelInRow(row.data(), 38, 37, MakePixelTest(RGB(0x10, 0x20, 0x30), 0)), -1);
    // 0x10 + 5 and 0x30 - 5 are inside a variation of 5; 6 away is not.
    row[20] = 0x00152B2B;
    EXPECT_EQ(FindPixelInRow(row.data(), 0, 39, MakePixelTest(RGB(0x10, 0x26, 0x30), 5)), 20);
    row[20] = 0x00162B2B;
    EXPECT_EQ(FindPixelInRow(row.data(), 0, 36, MakePixelTest(RGB(0x10, 0x26, 0x30), 5)), -1);
    // A negative variation leaves bounds of 0: only black passes.
    row[5] = 0x00000000;
    EXPECT_EQ(FindPixelInRow(row.data(), 0, 39, MakePixelTest(RGB(9, 9, 9), -1)), 5);
}
