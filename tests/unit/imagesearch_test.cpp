// Image and pixel search on a real screen: a window paints known pixels, the
// search finds bitmaps and colours in it.
#include <gtest/gtest.h>

#include <stdio.h>

#include <string>
#include <vector>

#include "desktop/imagesearch.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

const int kLeft = 120, kTop = 90, kWidth = 480, kHeight = 360;  // the painted window on the screen
std::vector<COLORREF> Canvas;                                    // its pixels

COLORREF Background(int x, int y) { return RGB((x * 7 + y * 3) % 251, (x * 13 + 5) % 253, (y * 11 + x) % 241); }

LRESULT CALLBACK Paint(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_PAINT) {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(w, &ps);
        std::vector<DWORD> bits(Canvas.size());
        for (size_t i = 0; i < Canvas.size(); i++)
            bits[i] = (GetRValue(Canvas[i]) << 16) | (GetGValue(Canvas[i]) << 8) | GetBValue(Canvas[i]);
        BITMAPINFO bi = {};
        bi.bmiHeader = {sizeof bi.bmiHeader, kWidth, -kHeight, 1, 32, BI_RGB};
        SetDIBitsToDevice(dc, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight, bits.data(), &bi, DIB_RGB_COLORS);
        EndPaint(w, &ps);
        return 0;
    }
    if (m == WM_ERASEBKGND) return 1;
    return DefWindowProcA(w, m, wp, lp);
}

// A block of colours that stands nowhere else on the canvas.
COLORREF Block(int i, int j) { return RGB(255 - i * 3, 17 + j * 5, 200 + (i * j) % 50); }

class ImageSearchTest : public testing::Test {
protected:
    void SetUp() override {
        dir = LogIntoNewFolder("log.txt");
        Canvas.assign((size_t)kWidth * kHeight, 0);
        for (int y = 0; y < kHeight; y++)
            for (int x = 0; x < kWidth; x++) Canvas[(size_t)y * kWidth + x] = Background(x, y);
    }
    void TearDown() override {
        if (window) DestroyWindow(window);
    }
    void PaintBlock(int x0, int y0, int w, int h, COLORREF (*color)(int, int)) {
        for (int j = 0; j < h; j++)
            for (int i = 0; i < w; i++) Canvas[(size_t)(y0 + j) * kWidth + x0 + i] = color(i, j);
    }
    void Show() {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = Paint;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "ZantoSearchCanvas";
        RegisterClassA(&wc);
        window = CreateWindowExA(WS_EX_TOPMOST, "ZantoSearchCanvas", "", WS_POPUP | WS_VISIBLE, kLeft, kTop, kWidth,
                                 kHeight, nullptr, nullptr, wc.hInstance, nullptr);
        UpdateWindow(window);
        // Wait until the screen shows the canvas.
        for (int i = 0; i < 200; i++) {
            MSG msg;
            while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
            HDC dc = GetDC(nullptr);
            COLORREF c = GetPixel(dc, kLeft + 7, kTop + 9);
            ReleaseDC(nullptr, dc);
            if (c == Canvas[9 * kWidth + 7]) break;
            Sleep(10);
        }
    }
    // A needle cut from the canvas.
    std::string Needle(const char* name, int x0, int y0, int w, int h, void (*edit)(std::vector<COLORREF>&) = nullptr) {
        std::vector<COLORREF> px;
        for (int j = 0; j < h; j++)
            for (int i = 0; i < w; i++) px.push_back(Canvas[(size_t)(y0 + j) * kWidth + x0 + i]);
        if (edit) edit(px);
        std::string path = dir + "\\" + name + ".bmp";
        SaveBmp(path, w, h, px);
        return path;
    }
    std::string Log() { return ReadWholeFile(dir + "\\log.txt"); }
    HWND window = nullptr;
    std::string dir;
};

}  // namespace

TEST_F(ImageSearchTest, FindsExactVariedAndMaskedImages) {
    PaintBlock(200, 150, 24, 16, Block);
    Show();
    std::string exact = Needle("exact", 200, 150, 24, 16);
    std::string off10 = Needle("off10", 200, 150, 24, 16, [](std::vector<COLORREF>& p) {
        p[40] = RGB(GetRValue(p[40]), GetGValue(p[40]) + 10, GetBValue(p[40]));
    });
    std::string off11 = Needle("off11", 200, 150, 24, 16, [](std::vector<COLORREF>& p) {
        p[40] = RGB(GetRValue(p[40]), GetGValue(p[40]) + 11, GetBValue(p[40]));
    });
    std::string masked = Needle("masked", 200, 150, 24, 16, [](std::vector<COLORREF>& p) {
        for (int i = 30; i < 60; i++) p[i] = MASK_COLOR;
    });
    struct Case {
        const std::string& file;
        int variation;
        COLORREF mask;
        bool found;
    } cases[] = {
        {exact, 0, NO_MASK, true},   {off10, 10, NO_MASK, true},  {off11, 10, NO_MASK, false},
        {off10, 0, NO_MASK, false},  {masked, 0, MASK_COLOR, true}, {masked, 0, NO_MASK, false},
    };
    RECT region = {kLeft, kTop, kLeft + kWidth - 1, kTop + kHeight - 1};
    for (const Case& c : cases) {
        int x = -1, y = -1, w = 0, h = 0;
        EXPECT_EQ(ImageSearch(c.file.c_str(), &region, c.variation, c.mask, &x, &y, &w, &h, 0, 0x40), c.found)
            << c.file << " variation " << c.variation;
        EXPECT_EQ(w, 24);
        EXPECT_EQ(h, 16);
        if (c.found) {
            EXPECT_EQ(x, kLeft + 200);
            EXPECT_EQ(y, kTop + 150);
        }
    }
    std::string log = Log();
    EXPECT_NE(log.find("\t*Find Image Size=[24 x 16]  Search Region=(120,90)->(599,449)\r\n\t*Scan Method: "
                       "[Optimized Unique Pixel Scan]  Primary image pixel (1, 0)"),
              std::string::npos);
    EXPECT_NE(log.find("\tPotential at screen (320, 240), but image pixel (16, 1)"), std::string::npos);
}

TEST_F(ImageSearchTest, TheHigherWinsAndOnOneRowTheLeft) {
    PaintBlock(300, 60, 12, 12, Block);
    PaintBlock(40, 200, 12, 12, Block);
    PaintBlock(400, 200, 12, 12, Block);
    Show();
    std::string needle = Needle("block", 40, 200, 12, 12);
    int x, y;
    ASSERT_TRUE(ImageSearch(needle.c_str(), nullptr, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(x, kLeft + 300);
    EXPECT_EQ(y, kTop + 60);
    RECT lower = {kLeft, kTop + 150, kLeft + kWidth, kTop + kHeight};
    ASSERT_TRUE(ImageSearch(needle.c_str(), &lower, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(x, kLeft + 40);
    RECT reversed = {kLeft + kWidth, kTop + kHeight, kLeft, kTop + 150};
    ASSERT_TRUE(ImageSearch(needle.c_str(), &reversed, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(x, kLeft + 40);
}

TEST_F(ImageSearchTest, CornerOneColourAndTooLarge) {
    PaintBlock(100, 100, 10, 10, [](int, int) { return RGB(1, 2, 3); });
    PaintBlock(300, 200, 20, 20, Block);
    Show();
    // The image's bottom right pixel is the region's corner: both edges count.
    std::string corner = Needle("corner", 300, 200, 20, 20);
    RECT region = {kLeft + 250, kTop + 150, kLeft + 319, kTop + 219};
    int x, y;
    EXPECT_TRUE(ImageSearch(corner.c_str(), &region, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(x, kLeft + 300);
    // One colour: the primary pixel is (0, 0).
    std::string plain = Needle("plain", 100, 100, 10, 10);
    EXPECT_TRUE(ImageSearch(plain.c_str(), nullptr, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(x, kLeft + 100);
    EXPECT_EQ(y, kTop + 100);
    EXPECT_NE(Log().find("Primary image pixel (0, 0) [R=1 G=2 B=3]"), std::string::npos);
    // An image larger than the region: false, with no line in the log.
    DeleteFileA((dir + "\\log.txt").c_str());
    RECT small = {kLeft, kTop, kLeft + 5, kTop + 5};
    EXPECT_FALSE(ImageSearch(corner.c_str(), &small, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
    EXPECT_EQ(Log(), "");
    EXPECT_FALSE(ImageSearch((dir + "\\missing.bmp").c_str(), nullptr, 0, NO_MASK, &x, &y, nullptr, nullptr, 0, 0));
}

// A screen of one colour with the primary pixel in that colour: a candidate
// at almost every pixel, and copies of the image that differ in one pixel
// above the true one, which stands at the right edge of the window.
TEST_F(ImageSearchTest, AmongCandidatesEverywhereTheFirstWholeMatchIsFound) {
    PaintBlock(0, 0, kWidth, kHeight, [](int, int) { return RGB(236, 236, 236); });
    const int w = 20, h = 14;
    auto paintCopy = [&](int x0, int y0, int changedX, int changedY) {
        PaintBlock(x0, y0, 1, 1, [](int, int) { return RGB(9, 9, 9); });
        PaintBlock(x0 + 4, y0, 16, 8, Block);  // holds the pixel the fast order tries first
        if (changedX >= 0) Canvas[(size_t)(y0 + changedY) * kWidth + x0 + changedX] = RGB(0, 200, 0);
    };
    paintCopy(30, 20, 4, 0);    // differs in the pattern's first pixel
    paintCopy(200, 100, 19, 7); // differs in its last
    paintCopy(kWidth - w, 300, -1, -1);
    Show();
    std::string needle = Needle("face", kWidth - w, 300, w, h);
    std::string masked = Needle("facemasked", kWidth - w, 300, w, h, [](std::vector<COLORREF>& p) {
        p[7 * 20 + 19] = MASK_COLOR;  // the pixel the second copy differs in
    });
    std::string varied = Needle("facevaried", kWidth - w, 300, w, h, [](std::vector<COLORREF>& p) {
        for (COLORREF& c : p)
            if (c != RGB(236, 236, 236) && c != RGB(9, 9, 9)) c = RGB(GetRValue(c), GetGValue(c), GetBValue(c) - 4);
    });
    const int right = kLeft + kWidth - 1, bottom = kTop + kHeight - 1;
    struct Case {
        const std::string& file;
        int variation;
        COLORREF mask;
        int regionRight;
        bool found;
        int x, y;
    } cases[] = {
        {needle, 0, NO_MASK, right, true, kWidth - w, 300},
        {needle, 0, NO_MASK, right - 1, false, 0, 0},  // the true copy no longer fits
        {masked, 0, MASK_COLOR, right, true, 200, 100},
        {varied, 5, NO_MASK, right, true, kWidth - w, 300},
        {varied, 3, NO_MASK, right, false, 0, 0},
    };
    for (const Case& c : cases) {
        RECT region = {kLeft, kTop, c.regionRight, bottom};
        int x = -1, y = -1;
        EXPECT_EQ(ImageSearch(c.file.c_str(), &region, c.variation, c.mask, &x, &y, nullptr, nullptr, 0, 0), c.found)
            << c.file << " variation " << c.variation << " right " << c.regionRight;
        if (c.found) {
            EXPECT_EQ(x, kLeft + c.x) << c.file;
            EXPECT_EQ(y, kTop + c.y) << c.file;
        }
    }
    EXPECT_NE(Log().find("(No more potential matches will be logged during this scan)"), std::string::npos);
}

TEST_F(ImageSearchTest, PixelSearchFindsTheFirstByRows) {
    PaintBlock(50, 40, 1, 1, [](int, int) { return RGB(250, 0, 250); });
    PaintBlock(10, 80, 1, 1, [](int, int) { return RGB(250, 0, 250); });
    Show();
    int x, y;
    RECT region = {kLeft, kTop, kLeft + kWidth - 1, kTop + kHeight - 1};
    ASSERT_TRUE(PixelSearch(RGB(250, 0, 250), &region, 0, 0, 0, &x, &y, 0, 0, 0));
    EXPECT_EQ(x, kLeft + 50);
    EXPECT_EQ(y, kTop + 40);
    ASSERT_TRUE(PixelSearch(RGB(245, 5, 255), &region, 5, 0, 0, &x, &y, 0, 0, 0));
    EXPECT_EQ(x, kLeft + 50);
    EXPECT_FALSE(PixelSearch(RGB(244, 0, 250), &region, 5, 0, 0, &x, &y, 0, 0, 0) && x == kLeft + 50);
    StopRequested = 1;
    EXPECT_FALSE(PixelSearch(RGB(250, 0, 250), &region, 0, 0, 0, &x, &y, 0, 0, 0));
    EXPECT_EQ(StopRequested, 1);  // left set
    StopRequested = 0;
}

TEST(Colors, ParseColorRangeDarkenLighten) {
    struct {
        const char* text;
        COLORREF color;
    } cases[] = {{"red", 0x0000FF},       {"Lt Gray", 0xC0C0C0}, {"#ff0000", 0x0000FF}, {"0xFF0000", 0x0000FF},
                 {"#FF8000", 0x0080FF},   {"FF00", 0},           {"", 0},              {"\"00 80 FF\"", 0xFF8000},
                 {"mauve", 0}};
    for (const auto& c : cases) EXPECT_EQ(ParseColor(c.text), c.color) << c.text;
    int r0, r1, g0, g1, b0, b1;
    ColorRange(RGB(5, 250, 100), 10, &r0, &r1, &g0, &g1, &b0, &b1);
    EXPECT_EQ(r0, 0);
    EXPECT_EQ(r1, 15);
    EXPECT_EQ(g1, 255);
    EXPECT_EQ(b0, 90);
    ColorRange(RGB(5, 250, 100), 0, &r0, &r1, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(r1, 0);
    EXPECT_EQ(DarkenColor(RGB(100, 200, 10), 0.3), RGB(70, 140, 7));
    EXPECT_EQ(LightenColor(RGB(100, 200, 10), 0.5), RGB(177, 227, 132));
    EXPECT_EQ(DarkenColor(RGB(100, 200, 10), 1.5), RGB(100, 200, 10));
}

TEST_F(ImageSearchTest, AShownScanPutsTheScreenBack) {
    PaintBlock(20, 20, 12, 12, Block);
    Show();
    std::string needle = Needle("shown", 20, 20, 12, 12, [](std::vector<COLORREF>& p) { p[5] = RGB(1, 1, 1); });
    RECT region = {kLeft, kTop, kLeft + 60, kTop + 60};
    HDC dc = GetDC(nullptr);
    COLORREF before = GetPixel(dc, kLeft + 30, kTop + 30);
    int x, y;
    EXPECT_FALSE(ImageSearch(needle.c_str(), &region, 0, NO_MASK, &x, &y, nullptr, nullptr, 1, 0x40));
    EXPECT_EQ(GetPixel(dc, kLeft + 30, kTop + 30), before);  // the shading is undone
    ReleaseDC(nullptr, dc);
    EXPECT_EQ(GetPriorityClass(GetCurrentProcess()), (DWORD)NORMAL_PRIORITY_CLASS);  // put back
}

TEST(SearchRegion, EveryEdgeIsHeldWithinTheScreens) {
    const LONG right = GetSystemMetrics(SM_XVIRTUALSCREEN) + GetSystemMetrics(SM_CXVIRTUALSCREEN);
    const LONG bottom = GetSystemMetrics(SM_YVIRTUALSCREEN) + GetSystemMetrics(SM_CYVIRTUALSCREEN);
    const LONG huge = 2147483647;
    const struct {
        RECT given, expected;
    } cases[] = {
        {{0, 0, huge, huge}, {0, 0, right, bottom}},
        {{huge, huge, 10, 20}, {10, 20, right, bottom}},  // swapped first
        {{5000, 30, 6000, 40}, {right, 30, right, 40}},   // wholly past the right edge
        {{-huge - 1, -5, 100, 200}, {-1, -1, 100, 200}},  // before the screens: ends the scan at once
        {{10, 20, 110, 220}, {10, 20, 110, 220}},         // inside: as it was
    };
    for (const auto& c : cases) {
        RECT got = RegionOf(&c.given);
        EXPECT_TRUE(EqualRect(&got, &c.expected)) << c.given.left << "," << c.given.top << " -> " << got.left << ","
                                                  << got.top << "," << got.right << "," << got.bottom;
    }
    // A huge region is searched to its end, shown or not.
    RECT region = {right - 20, bottom - 10, huge, huge};
    int x = 0, y = 0;
    EXPECT_FALSE(PixelSearch(RGB(1, 2, 3), &region, 0, 0, 0, &x, &y, 1, 0, 0) && (x < right - 20 || y < bottom - 10));
}
