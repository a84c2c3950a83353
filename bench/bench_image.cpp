// Full-screen image search on a screen of UI-like content: a 50 x 50 needle
// near the bottom right, present and absent, exact, with a variation of 10
// and with a mask. Writes the screen and the needles as BMP files and the
// times to times.txt in the given folder, for the comparison with OpenCV.
//
//   bench_image.exe FOLDER
#include <windows.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "desktop/imagesearch.h"
#include "desktop/screencapture.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "script/step.h"

namespace {

int ScreenW, ScreenH;

// Buttons, labels and bands, as a desktop of applications shows them.
void PaintUiContent(HDC dc) {
    RECT all = {0, 0, ScreenW, ScreenH};
    HBRUSH face = CreateSolidBrush(RGB(236, 236, 236));
    FillRect(dc, &all, face);
    DeleteObject(face);
    srand(11);
    SetBkMode(dc, TRANSPARENT);
    for (int band = 0; band < ScreenH; band += 90) {
        RECT bar = {0, band, ScreenW, band + 22};
        HBRUSH b = CreateSolidBrush(RGB(40 + band % 60, 90, 160 + band % 80));
        FillRect(dc, &bar, b);
        DeleteObject(b);
    }
    for (int i = 0; i < 600; i++) {
        int x = rand() % (ScreenW - 90), y = rand() % (ScreenH - 30);
        RECT button = {x, y, x + 60 + rand() % 30, y + 20 + rand() % 8};
        HBRUSH b = CreateSolidBrush(RGB(200 + rand() % 40, 200 + rand() % 40, 200 + rand() % 40));
        FillRect(dc, &button, b);
        DeleteObject(b);
        FrameRect(dc, &button, (HBRUSH)GetStockObject(GRAY_BRUSH));
        char label[16];
        snprintf(label, sizeof label, "Item %d", i);
        DrawTextA(dc, label, -1, &button, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    }
}

LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_PAINT) {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(w, &ps);
        PaintUiContent(dc);
        EndPaint(w, &ps);
        return 0;
    }
    if (m == WM_ERASEBKGND) return 1;
    return DefWindowProcA(w, m, wp, lp);
}

void SaveNeedle(const std::string& path, int x0, int y0, int size, int kind) {
    int stride = (size * 3 + 3) & ~3;
    std::vector<unsigned char> bytes((size_t)stride * size);
    HDC dc = GetDC(nullptr);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++) {
            COLORREF c = GetPixel(dc, x0 + x, y0 + y);
            if ((kind & 1) && x >= 20 && x < 30 && y >= 20 && y < 30) c = RGB(1, 2, 3);  // absent: a block nowhere
            if ((kind & 2) && (x + y) % 7 == 0) c = MASK_COLOR;                         // masked pixels
            unsigned char* p = &bytes[(size_t)(size - 1 - y) * stride + (size_t)x * 3];
            p[0] = GetBValue(c), p[1] = GetGValue(c), p[2] = GetRValue(c);
        }
    ReleaseDC(nullptr, dc);
    BITMAPFILEHEADER fh = {0x4D42, (DWORD)(54 + bytes.size()), 0, 0, 54};
    BITMAPINFOHEADER ih = {sizeof ih, size, size, 1, 24, BI_RGB};
    FILE* f = fopen(path.c_str(), "wb");
    fwrite(&fh, sizeof fh, 1, f);
    fwrite(&ih, sizeof ih, 1, f);
    fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// A plain capture to set the search's own beside: one copy of the whole
// screen into a bitmap in one piece, as most programs take a screenshot.
// Under Wine the pixels come from the X server; the search copies the two
// halves of the screen at once into one shared section, which measures
// several times faster here (and far steadier).
double BareCaptureMs() {
    HDC screen = GetDC(nullptr);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = ScreenW;
    info.bmiHeader.biHeight = -ScreenH;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    HBITMAP dib = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC memory = CreateCompatibleDC(screen);
    HGDIOBJ old = SelectObject(memory, dib);
    std::vector<double> runs;
    for (int i = 0; i < 7; i++) {
        double start = Now();
        BitBlt(memory, 0, 0, ScreenW, ScreenH, screen, 0, 0, SRCCOPY);
        GdiFlush();
        runs.push_back((Now() - start) * 1000);
    }
    SelectObject(memory, old);
    DeleteDC(memory);
    DeleteObject(dib);
    ReleaseDC(nullptr, screen);
    return Median(runs);
}

}  // namespace

int main(int argc, char** argv) {
    std::string folder = argc > 1 ? argv[1] : ".";
    StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);
    ScreenW = GetSystemMetrics(SM_CXSCREEN);
    ScreenH = GetSystemMetrics(SM_CYSCREEN);
    WNDCLASSA wc = {};
    wc.lpfnWndProc = Proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZantoBenchDesktop";
    RegisterClassA(&wc);
    HWND w = CreateWindowExA(WS_EX_TOPMOST, wc.lpszClassName, "", WS_POPUP | WS_VISIBLE, 0, 0, ScreenW, ScreenH, nullptr,
                             nullptr, wc.hInstance, nullptr);
    UpdateWindow(w);
    MSG msg;
    DWORD until = GetTickCount() + 500;
    while (GetTickCount() < until) {
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
        Sleep(10);
    }
    CaptureScreenToFile(nullptr, nullptr, (folder + "\\screen.bmp").c_str(), 0);
    int nx = ScreenW - 130, ny = ScreenH - 110;
    const char* names[] = {"present", "absent", "masked", "absent_masked"};
    for (int k = 0; k < 4; k++) SaveNeedle(folder + "\\needle_" + names[k] + ".bmp", nx, ny, 50, k);

    // kind: what OpenCV is asked to do beside it: 0 one TM_SQDIFF pass (the
    // whole-image search), 1 one TM_SQDIFF_NORMED pass (the scored search),
    // 5 a TM_SQDIFF_NORMED pass at each of the five scales 100-200 %.
    struct Case {
        const char* needle;
        int variation;
        COLORREF mask;
        const char* label;
        int percent, scales, kind;
    } cases[] = {
        {"present", 0, NO_MASK, "present, exact", 100, 1, 0},
        {"present", 10, NO_MASK, "present, variation 10", 100, 1, 0},
        {"masked", 0, MASK_COLOR, "present, masked", 100, 1, 0},
        {"absent", 0, NO_MASK, "absent, exact", 100, 1, 0},
        {"absent", 10, NO_MASK, "absent, variation 10", 100, 1, 0},
        {"absent_masked", 0, MASK_COLOR, "absent, masked", 100, 1, 0},
        {"present", 0, NO_MASK, "present, 95 %", 95, 1, 1},
        {"present", 10, NO_MASK, "present, 95 %, var. 10", 95, 1, 1},
        {"absent", 0, NO_MASK, "absent, 95 %", 95, 1, 1},
        {"present", 0, NO_MASK, "present, 95 %, 5 scales", 95, 5, 5},
        {"absent", 0, NO_MASK, "absent, 95 %, 5 scales", 95, 5, 5},
    };
    FILE* times = fopen((folder + "\\times.txt").c_str(), "w");
    printf("== image search on a %d x %d screen of UI-like content, 50 x 50 needle near the bottom right\n", ScreenW,
           ScreenH);
    for (const Case& c : cases) {
        std::string file = folder + "\\needle_" + c.needle + ".bmp";
        std::vector<double> runs, captures, scans;
        bool found = false;
        int x = 0, y = 0;
        for (int i = 0; i < 7; i++) {
            double start = Now();
            ImageMatchOptions options;
            options.percent = c.percent;
            options.scale = c.scales > 1 ? 0 : 100;
            options.scaleCount = c.scales;
            found = ImageSearchWith(file.c_str(), nullptr, c.variation, c.mask, options, &x, &y, nullptr, nullptr, 0,
                                    0);
            runs.push_back((Now() - start) * 1000);
            captures.push_back(LastSearchCaptureMicroseconds / 1000.0);
            scans.push_back(LastSearchScanMicroseconds / 1000.0);
        }
        double ms = Median(runs), capture = Median(captures), scan = Median(scans);
        printf("%-26s %7.2f ms  (capture %.2f ms, scan %.2f ms)  %s\n", c.label, ms, capture, scan,
               found ? "found" : "not found");
        fprintf(times, "%s\t%d\t%s\t%.3f\t%d\t%.3f\t%.3f\t%d\n", c.needle, c.variation, c.label, ms, found ? 1 : 0,
                capture, scan, c.kind);
    }
    fclose(times);
    printf("%-24s %7.2f ms  (one BitBlt of the whole screen into a bitmap, beside the captures above)\n", "a plain capture",
           BareCaptureMs());
    DestroyWindow(w);
    return 0;
}
