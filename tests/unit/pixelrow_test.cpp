// The row scans of the searches: the SSE2 paths give the plain scans' answers
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

// Mostly near misses of the colour, with random top bytes, and now and then
// the colour itself.
std::vector<DWORD> NearMisses(DWORD& seed, size_t length, int round) {
    std::vector<DWORD> row(length);
    for (DWORD& p : row) {
        const int r = 200 + (int)(Next(seed) % 40) - 20, g = 100 + (int)(Next(seed) % 40) - 20,
                  b = 50 + (int)(Next(seed) % 40) - 20;
        p = (Next(seed) << 24) | ((DWORD)r << 16) | ((DWORD)g << 8) | (DWORD)b;
    }
    if (round % 3 == 0) row[Next(seed) % row.size()] = (Next(seed) << 24) | 0xC86432;
    return row;
}

}  // namespace

TEST(PixelRow, TheFastScanFindsWhatThePlainScanFinds) {
    DWORD seed = 7;
    const COLORREF color = RGB(200, 100, 50);
    for (int variation : {0, 1, 10, -3, 255}) {
        const PixelTest test = MakePixelTest(color, variation);
        for (int round = 0; round < 400; round++) {
            const std::vector<DWORD> row = NearMisses(seed, 70, round);
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

// The image search's pair scan: both pixels must pass, each its own test.
TEST(PixelRow, ThePairScanFindsWhatThePlainPairScanFinds) {
    DWORD seed = 11;
    const COLORREF color = RGB(200, 100, 50);
    for (int variation : {0, 1, 10, -3, 255}) {
        const PixelTest test = MakePixelTest(color, variation);
        const PixelTest secondTest = MakePixelTest(color, variation > 0 ? variation / 2 : 0);
        for (int round = 0; round < 400; round++) {
            const std::vector<DWORD> row = NearMisses(seed, 70, round), second = NearMisses(seed, 70, round + 1);
            const int from = (int)(Next(seed) % 20), to = from + (int)(Next(seed) % 50);
            EXPECT_EQ(FindPixelPairInRow(row.data(), second.data(), from, to, test, secondTest),
                      FindPixelPairInRowPlain(row.data(), second.data(), from, to, test, secondTest))
                << "variation " << variation << " round " << round;
        }
    }
    // A hit in one row alone is no hit; the first place both hold is.
    std::vector<DWORD> row(30, 0), second(30, 0);
    row[3] = row[9] = row[21] = 0x00C86432;
    second[4] = second[21] = 0x00C86432;
    const PixelTest exact = MakePixelTest(color, 0);
    EXPECT_EQ(FindPixelPairInRow(row.data(), second.data(), 0, 29, exact, exact), 21);
    EXPECT_EQ(FindPixelPairInRow(row.data(), second.data(), 0, 20, exact, exact), -1);
}
