// The scored search on pixels in memory: a screen of noise with the image
// set into it, changed here and there, and the image scaled.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <vector>

#include "desktop/imagerank.h"
#include "desktop/imagescale.h"
#include "desktop/imagescore.h"

namespace {

struct Screen {
    int w, h;
    std::vector<DWORD> px;
    PixelArea Area() const {
        PixelArea a;
        a.area = {0, 0, w, h};
        a.stride = w;
        a.bits = px.data();
        return a;
    }
};

DWORD Noise(unsigned& seed) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 8) & 0xFFFFFF;
}

Screen NoiseScreen(int w, int h, unsigned seed) {
    Screen s{w, h, std::vector<DWORD>((size_t)w * h)};
    for (DWORD& p : s.px) p = Noise(seed);
    return s;
}

Needle Cut(const Screen& s, int x0, int y0, int w, int h) {
    Needle n;
    n.width = w;
    n.height = h;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) n.raw.push_back(s.px[(size_t)(y0 + y) * s.w + x0 + x]);
    return n;
}

// Each channel moved by `by` levels at `count` different pixels spread over
// the image.
void Disturb(Needle& n, int count, int by, unsigned seed) {
    const size_t step = n.raw.size() / (size_t)(count > 0 ? count : 1);
    for (int i = 0; i < count; i++) {
        size_t at = (size_t)i * step + (size_t)(Noise(seed) % step);
        DWORD p = n.raw[at];
        int r = (int)((p >> 16) & 0xFF), g = (int)((p >> 8) & 0xFF), b = (int)(p & 0xFF);
        r = r + by > 255 ? r - by : r + by;
        g = g + by > 255 ? g - by : g + by;
        b = b + by > 255 ? b - by : b + by;
        n.raw[at] = ((DWORD)r << 16) | ((DWORD)g << 8) | (DWORD)b;
    }
}

}  // namespace

// Table: how many pixels differ, by how much, the share and variation asked
// for, and whether the place is found.
TEST(ScoredSearch, FindsThePlaceWhenEnoughPixelsMatch) {
    const Screen screen = NoiseScreen(300, 200, 7);
    const RECT all = {0, 0, 299, 199};
    struct Case {
        int changed, by, percent, variation;
        bool found;
    } cases[] = {
        {0, 0, 100, 0, true},    {1, 40, 100, 0, false}, {8, 40, 95, 0, true},  {20, 40, 95, 0, false},
        {30, 40, 90, 0, true},   {45, 40, 90, 0, false}, {60, 5, 100, 5, true}, {60, 5, 100, 4, false},
        {150, 40, 50, 0, true},  {120, 30, 60, 0, true},
    };
    for (const Case& c : cases) {
        Needle n = Cut(screen, 120, 80, 24, 16);  // 384 pixels
        Disturb(n, c.changed, c.by, 99);
        Candidate found, closest;
        EXPECT_EQ(ScoreSearch(screen.Area(), n, all, c.variation, c.percent, &found, &closest), c.found)
            << c.changed << " changed, " << c.percent << " %, variation " << c.variation;
        EXPECT_EQ(closest.x, 120) << c.changed << " changed";
        EXPECT_EQ(closest.y, 80);
        if (c.found) {
            EXPECT_EQ(found.x, 120);
        }
    }
}

// Among equal scores the first place from the top-left wins; a better score
// later wins over a worse one before it.
TEST(ScoredSearch, TheBestScoreWinsAndAmongEqualsTheFirst) {
    Screen screen = NoiseScreen(200, 120, 3);
    Needle n = Cut(screen, 10, 10, 20, 20);
    auto put = [&](int x0, int y0, int spoil) {
        for (int y = 0; y < 20; y++)
            for (int x = 0; x < 20; x++) screen.px[(size_t)(y0 + y) * screen.w + x0 + x] = n.raw[(size_t)y * 20 + x];
        for (int i = 0; i < spoil; i++) screen.px[(size_t)(y0 + 5) * screen.w + x0 + i] ^= 0x808080;
    };
    put(10, 10, 12);   // 97 %
    put(150, 10, 4);   // 99 %, same rows, further right
    put(100, 80, 4);   // 99 %, lower
    const RECT all = {0, 0, 199, 119};
    Candidate found, closest;
    ASSERT_TRUE(ScoreSearch(screen.Area(), n, all, 0, 95, &found, &closest))
        << closest.x << "," << closest.y << " " << closest.matched << "/" << closest.compared;
    EXPECT_EQ(found.x, 150);
    EXPECT_EQ(found.y, 10);
    EXPECT_EQ(ScorePermille(found), 990);
    // A region that holds only the first place finds it.
    const RECT left = {0, 0, 60, 60};
    ASSERT_TRUE(ScoreSearch(screen.Area(), n, left, 0, 95, &found));
    EXPECT_EQ(found.x, 10);
    // A region smaller than the image has no place at all.
    const RECT tiny = {0, 0, 10, 10};
    EXPECT_FALSE(ScoreSearch(screen.Area(), n, tiny, 0, 95, &found, &closest));
    EXPECT_EQ(closest.compared, 0);
}

// Skipped pixels (mask, transparency) count neither way.
TEST(ScoredSearch, SkippedPixelsAreLeftOut) {
    Screen screen = NoiseScreen(120, 80, 5);
    Needle n = Cut(screen, 30, 20, 16, 16);
    n.skip.assign(n.raw.size(), 0);
    for (int i = 0; i < 128; i++) {
        n.raw[(size_t)i] = 0xFF00FF;
        n.skip[(size_t)i] = 1;
    }
    Candidate found;
    ASSERT_TRUE(ScoreSearch(screen.Area(), n, RECT{0, 0, 119, 79}, 0, 100, &found));
    EXPECT_EQ(found.x, 30);
    EXPECT_EQ(found.compared, 128);
}

// Scaling: flat areas keep their colour at every scale, a shrink averages,
// masks follow the majority.
TEST(ScaleNeedle, AveragesWhenShrinkingAndKeepsFlatColours) {
    Needle n;
    n.width = 4;
    n.height = 2;
    n.raw = {0x000000, 0xFFFFFF, 0x000000, 0xFFFFFF, 0x000000, 0xFFFFFF, 0x000000, 0xFFFFFF};
    Needle half = ScaleNeedle(n, 50);
    ASSERT_EQ(half.width, 2);
    ASSERT_EQ(half.height, 1);
    EXPECT_EQ(half.raw[0], 0x808080u);
    Needle flat;
    flat.width = flat.height = 10;
    flat.raw.assign(100, 0x336699);
    for (int percent : {50, 67, 80, 125, 150, 175, 200}) {
        Needle s = ScaleNeedle(flat, percent);
        EXPECT_EQ(s.width, (10 * percent + 50) / 100) << percent;
        for (DWORD p : s.raw) ASSERT_EQ(p, 0x336699u) << percent;
    }
    Needle masked = flat;
    masked.skip.assign(100, 0);
    for (int i = 0; i < 50; i++) masked.skip[(size_t)i] = 1;  // the upper half
    Needle grown = ScaleNeedle(masked, 200);
    EXPECT_TRUE(grown.skip[0]);
    EXPECT_FALSE(grown.skip[grown.skip.size() - 1]);
}

namespace {

// A grey screen with faint bands, and grey "buttons" on it: a face a few
// levels off the screen's grey, a darker frame and a short dark "label".
Screen GreyScreen(int w, int h) {
    Screen s{w, h, std::vector<DWORD>((size_t)w * h, 0xECECEC)};
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            if ((y / 30) % 2) s.px[(size_t)y * w + x] = 0xE4E8EC + (DWORD)((x / 16) % 4);
    return s;
}

void PutButton(Screen& s, int x0, int y0, int w, int h, int label) {
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            DWORD p = 0xE1E1E1;
            if (x == 0 || y == 0 || x == w - 1 || y == h - 1) p = 0x707070;
            // The label: a few dark strokes whose spacing tells buttons apart.
            if (y >= h / 3 && y < h - h / 3 && x >= 8 && x < w - 8 && (x * label / 7) % 3 == 0) p = 0x202020;
            s.px[(size_t)(y0 + y) * s.w + x0 + x] = p;
        }
}

}  // namespace

// Grey controls on a grey screen, with a variation: nearly every place
// passes the quick tests on a few pixels, and the places are ranked by
// their cells' mean colours instead. The right button is found, not one
// with another label, and the first of two copies from the top-left.
TEST(ScoredSearch, GreyControlsOnAGreyScreenAreRankedAndTheFirstCopyWins) {
    Screen screen = GreyScreen(400, 300);
    const int labels[5] = {2, 3, 4, 5, 6};
    const POINT at[5] = {{13, 21}, {150, 22}, {270, 37}, {41, 150}, {222, 181}};
    for (int i = 0; i < 5; i++) PutButton(screen, at[i].x, at[i].y, 60, 22, labels[i]);
    const RECT all = {0, 0, 399, 299};
    for (int i = 0; i < 5; i++) {
        Needle n = Cut(screen, at[i].x, at[i].y, 60, 22);
        Disturb(n, 40, 60, 7);  // fringes drawn otherwise: 3 % of the pixels
        Candidate found, closest;
        ASSERT_TRUE(ScoreSearch(screen.Area(), n, all, 32, 90, &found, &closest)) << i;
        EXPECT_EQ(found.x, at[i].x) << i;
        EXPECT_EQ(found.y, at[i].y) << i;
        EXPECT_EQ(ScorePermille(found), 969) << i;
        // Ranked places first: the button itself.
        const RECT corners = {0, 0, 399 - 59, 299 - 21};
        const std::vector<POINT> ranked = RankPlaces(screen.Area(), n, corners, 8);
        ASSERT_FALSE(ranked.empty());
        EXPECT_EQ(ranked[0].x, at[i].x) << i;
        EXPECT_EQ(ranked[0].y, at[i].y) << i;
        // Asked for more than it has, it misses, and names the button as the
        // place that came closest.
        EXPECT_FALSE(ScoreSearch(screen.Area(), n, all, 32, 99, &found, &closest)) << i;
        EXPECT_EQ(closest.x, at[i].x) << i;
        EXPECT_EQ(closest.y, at[i].y) << i;
    }
    // A copy of the fourth button higher up (at another phase of the cells
    // against the screen): the higher one wins.
    PutButton(screen, 303, 140, 60, 22, labels[3]);
    Needle n = Cut(screen, at[3].x, at[3].y, 60, 22);
    Disturb(n, 40, 60, 7);
    Candidate found;
    ASSERT_TRUE(ScoreSearch(screen.Area(), n, all, 32, 90, &found));
    EXPECT_EQ(found.x, 303);
    EXPECT_EQ(found.y, 140);
    // A third on the same row, further left: the left one wins.
    PutButton(screen, 5, 140, 60, 22, labels[3]);
    ASSERT_TRUE(ScoreSearch(screen.Area(), n, all, 32, 90, &found));
    EXPECT_EQ(found.x, 5);
    EXPECT_EQ(found.y, 140);
}

// The ranges around each pixel that a grown image is compared with: the
// least and greatest of each channel in the 3 x 3 pixels around it, fewer
// at the area's edges.
TEST(NeighbourRanges, EachChannelsLeastAndGreatestAroundEachPixel) {
    // 4 x 3 pixels in a store 5 wide; the fifth column is not the area's.
    std::vector<DWORD> px = {
        0x101010, 0x202020, 0x303030, 0x404040, 0xFFFFFF,  //
        0x500000, 0x006000, 0x000070, 0x808080, 0xFFFFFF,  //
        0x010203, 0x040506, 0x070809, 0x0A0B0C, 0xFFFFFF,
    };
    PixelArea a;
    a.area = {10, 20, 14, 23};
    a.stride = 5;
    a.bits = px.data();
    std::vector<DWORD> low, high;
    NeighbourRanges(a, low, high);
    ASSERT_EQ(low.size(), px.size());
    struct Case {
        int x, y;
        DWORD low, high;
    } cases[] = {
        {0, 0, 0x000000, 0x506020},  // the corner: four pixels
        {1, 1, 0x000000, 0x506070},  // inside: nine
        {3, 0, 0x000030, 0x808080},  // the right edge leaves the fifth column out
        {3, 2, 0x000009, 0x808080},
        {0, 2, 0x000000, 0x506006},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(low[(size_t)c.y * 5 + c.x] & 0xFFFFFF, c.low) << c.x << "," << c.y;
        EXPECT_EQ(high[(size_t)c.y * 5 + c.x] & 0xFFFFFF, c.high) << c.x << "," << c.y;
    }
}
