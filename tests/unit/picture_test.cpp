// Drawing pictures: measuring, scaling, transparency and gray.
#include <gtest/gtest.h>

#include <stdio.h>

#include <string>
#include <vector>

#include "desktop/picture.h"
#include "test_support.h"

namespace {

// A 10 x 10 bitmap: red corner colour with a green 4 x 4 block at (3, 3).
std::string TestBitmap() {
    std::string path = TempFolder() + "\\pic.bmp";
    std::vector<COLORREF> px;
    for (int y = 0; y < 10; y++)
        for (int x = 0; x < 10; x++) px.push_back(x >= 3 && x < 7 && y >= 3 && y < 7 ? RGB(0, 200, 0) : RGB(255, 0, 0));
    SaveBmp(path, 10, 10, px);
    return path;
}

struct Canvas {
    HDC dc;
    HBITMAP bitmap;
    HGDIOBJ old;
    Canvas() {
        HDC screen = GetDC(nullptr);
        dc = CreateCompatibleDC(screen);
        bitmap = CreateCompatibleBitmap(screen, 64, 64);
        ReleaseDC(nullptr, screen);
        old = SelectObject(dc, bitmap);
        RECT all = {0, 0, 64, 64};
        HBRUSH blue = CreateSolidBrush(RGB(0, 0, 255));
        FillRect(dc, &all, blue);
        DeleteObject(blue);
    }
    ~Canvas() {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
};

}  // namespace

TEST(Picture, MeasuresScalesAndFits) {
    std::string file = TestBitmap();
    RECT r;
    EXPECT_EQ(DrawPicture(nullptr, file.c_str(), 0, nullptr, -1, nullptr, 4, 6, 0, 0, nullptr, nullptr, 0, &r), 1);
    EXPECT_EQ(r.left, 4);
    EXPECT_EQ(r.right - r.left, 10);
    DrawPicture(nullptr, file.c_str(), 0, nullptr, -1, nullptr, 0, 0, 0, 50, nullptr, nullptr, 0, &r);
    EXPECT_EQ(r.right, 5);
    HWND window = CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 200, 100, nullptr, nullptr, nullptr, nullptr);
    DrawPicture(nullptr, file.c_str(), 0, nullptr, -1, nullptr, 0, 0, 0, 0, window, window, 0, &r);
    EXPECT_EQ(r.right - r.left, 100);  // the smaller ratio of the 200 x 100 client to 10 x 10: 1000%
    EXPECT_EQ(r.left, 50);             // centred
    DestroyWindow(window);
    EXPECT_EQ(DrawPicture(nullptr, "missing.bmp", 0, nullptr, -1, nullptr, 0, 0, 0, 0, nullptr, nullptr, 0, &r), 0);
}

TEST(Picture, DrawsWithTransparencyAndGray) {
    std::string file = TestBitmap();
    {
        Canvas c;
        DrawPicture(c.dc, file.c_str(), 0, nullptr, -1, nullptr, 5, 5, 0, 0, nullptr, nullptr, 0, nullptr);
        EXPECT_EQ(GetPixel(c.dc, 5, 5), RGB(255, 0, 0));
        EXPECT_EQ(GetPixel(c.dc, 9, 9), RGB(0, 200, 0));
        EXPECT_EQ(GetPixel(c.dc, 4, 4), RGB(0, 0, 255));
    }
    {
        Canvas c;
        DrawPicture(c.dc, file.c_str(), 0, nullptr, -1, nullptr, 5, 5, 1, 0, nullptr, nullptr, 0, nullptr);
        EXPECT_EQ(GetPixel(c.dc, 5, 5), RGB(0, 0, 255));  // the corner colour shows the background
        EXPECT_EQ(GetPixel(c.dc, 9, 9), RGB(0, 200, 0));
    }
    {
        Canvas c;
        DrawPicture(c.dc, file.c_str(), 0, nullptr, -1, nullptr, 0, 0, 0, 200, nullptr, nullptr, 1, nullptr);
        COLORREF p = GetPixel(c.dc, 19, 19);  // scaled twice, then gray
        EXPECT_EQ(GetRValue(p), GetGValue(p));
        EXPECT_EQ(GetGValue(p), GetBValue(p));
        EXPECT_EQ(GetPixel(c.dc, 21, 21), RGB(0, 0, 255));
    }
}
