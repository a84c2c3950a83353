#include "desktop/failurescreen.h"

#include <windows.h>

#include <vector>

#include "base/handles.h"
#include "base/log.h"
#include "base/text.h"
#include "base/ui.h"
#include "desktop/imagefile.h"
#include "desktop/imagesearch.h"
#include "desktop/screencapture.h"

namespace {

// A colour that no pixel of the screen has: the first of a few loud ones
// that is free, else the first free colour of all.
DWORD UnusedColour(const std::vector<DWORD>& pixels) {
    std::vector<unsigned char> used((size_t)1 << 21, 0);  // one bit a colour
    for (DWORD p : pixels) {
        const DWORD c = p & 0xFFFFFF;
        used[c >> 3] |= (unsigned char)(1u << (c & 7));
    }
    auto free = [&](DWORD c) { return !(used[c >> 3] & (1u << (c & 7))); };
    static const DWORD kLoud[] = {0xFF00FF, 0x00FF00, 0x00FFFF, 0xFF0000, 0xFFFF00, 0x0000FF, 0xFF8000, 0x8000FF};
    for (DWORD c : kLoud)
        if (free(c)) return c;
    for (DWORD c = 0; c <= 0xFFFFFF; c++)
        if (free(c)) return c;
    return 0xFF00FF;
}

// A frame of `thickness` pixels whose outer edge is `box` (inclusive),
// drawn where it is on the picture.
void Frame(std::vector<DWORD>& pixels, int width, int height, RECT box, int thickness, DWORD colour) {
    for (int t = 0; t < thickness; t++) {
        const int left = box.left + t, top = box.top + t, right = box.right - t, bottom = box.bottom - t;
        for (int y = top; y <= bottom; y++)
            for (int x = left; x <= right; x++) {
                if (x != left && x != right && y != top && y != bottom) {
                    x = right - 1;  // on to the right edge
                    continue;
                }
                if (x >= 0 && y >= 0 && x < width && y < height) pixels[(size_t)y * width + x] = colour;
            }
    }
}

}  // namespace

int SaveFramedScreen(const char* file) {
    const ImageMatchReport& m = LastImageMatch;
    const int width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    if (width <= 0 || height <= 0) return 0;
    std::vector<DWORD> pixels((size_t)width * height);
    {
        ScopedGetDC screen(nullptr);
        AutoDeleteDC memory(CreateCompatibleDC(screen.dc));
        AutoDeleteObject bitmap(CreateCompatibleBitmap(screen.dc, width, height));
        if (!memory.dc || !bitmap.obj) return 0;
        HGDIOBJ old = SelectObject(memory.dc, bitmap.obj);
        BitBlt(memory.dc, 0, 0, width, height, screen.dc, 0, 0, SRCCOPY | CAPTUREBLT);
        SelectObject(memory.dc, old);
        BITMAPINFO info = {};
        info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB};
        if (!GetDIBits(memory.dc, (HBITMAP)bitmap.obj, 0, (UINT)height, pixels.data(), &info, DIB_RGB_COLORS))
            return 0;
    }
    const DWORD colour = UnusedColour(pixels);
    // The region's own edge pixels (held on the screen), one pixel wide; the
    // candidate framed just outside its pixels, two wide, so that what it
    // holds stays to be seen.
    RECT region = m.region;
    if (region.left < 0) region.left = 0;
    if (region.top < 0) region.top = 0;
    if (region.right > width - 1) region.right = width - 1;
    if (region.bottom > height - 1) region.bottom = height - 1;
    Frame(pixels, width, height, region, 1, colour);
    if (m.best.compared > 0)
        Frame(pixels, width, height, RECT{m.best.x - 2, m.best.y - 2, m.best.x + m.width + 1, m.best.y + m.height + 1},
              2, colour);
    if (!WritePngFile(file, pixels.data(), width, height)) return 0;
    LogPrintf(OutputEdit, "\t*Screen image with the search region and the best candidate framed in #%06X: %s\r\n",
              (unsigned)colour, file);
    return 1;
}

int SaveFailureScreen(const char* base, int tab, int step, char* saved, size_t size) {
    const ImageMatchReport& m = LastImageMatch;
    const bool framed = m.tab == tab && m.step == step && m.compared && !m.found;
    FormatIntoN(saved, size, framed ? "%s.png" : "%s.bmp", base);
    return framed ? SaveFramedScreen(saved) : CaptureScreenToFile(nullptr, nullptr, saved, 0);
}
