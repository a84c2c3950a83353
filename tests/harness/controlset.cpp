// The picture set of the scaled search: twenty small controls (buttons,
// icons, labels with smoothed text, check boxes) drawn once at 100 % as a
// user captures them, and drawn again on a screen at 100, 125, 150 and 200 %
// with fonts and sizes scaled (not a resampled bitmap) and their text
// smoothed differently (ClearType-like coloured fringes in the capture, grey
// smoothing on the screen); and twenty controls that are on no screen. Each
// picture is searched over the common scales with a similarity of 90 %.
// Prints the table; exits 0 when every scale finds at least 19 of the 20 at
// the right place and none of the absent ones is found.
//
//   controlset.exe [variation]
//
// With ZR_CONTROLSET_DETAIL set it also prints, for each control, its best
// score near its true place at the screen's scale and what the cascade
// found, and each false find.
#include <windows.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <vector>

#include "desktop/imagematch.h"
#include "desktop/imagescale.h"
#include "desktop/imagescore.h"

namespace {

const int kSimilarity = 90;

struct Control {
    int kind;          // 0 button, 1 icon, 2 label, 3 check box
    const char* text;  // label or button text; the icon's shape for icons
    COLORREF face, ink;
    int width, height;  // at 100 %
};

// Present and absent controls: the absent ones are of the same kinds, in
// colours and words of their own.
const Control kPresent[20] = {
    {0, "OK", RGB(225, 225, 225), RGB(0, 0, 0), 75, 23},         {0, "Cancel", RGB(225, 225, 225), RGB(0, 0, 0), 75, 23},
    {0, "Apply", RGB(0, 120, 215), RGB(255, 255, 255), 75, 23},  {0, "Save As...", RGB(240, 240, 240), RGB(30, 30, 30), 90, 25},
    {0, "Print", RGB(76, 175, 80), RGB(255, 255, 255), 70, 24},   {1, "circle", RGB(220, 50, 47), RGB(255, 255, 255), 24, 24},
    {1, "triangle", RGB(255, 193, 7), RGB(0, 0, 0), 24, 24},      {1, "square", RGB(33, 150, 243), RGB(255, 255, 255), 24, 24},
    {1, "cross", RGB(120, 120, 120), RGB(255, 255, 255), 20, 20}, {1, "diamond", RGB(156, 39, 176), RGB(255, 255, 255), 24, 24},
    {2, "File name:", RGB(255, 255, 255), RGB(0, 0, 0), 80, 18},  {2, "Password", RGB(250, 250, 250), RGB(40, 40, 40), 72, 18},
    {2, "Search results", RGB(255, 255, 255), RGB(0, 90, 160), 110, 18},
    {2, "Total: 42", RGB(255, 248, 220), RGB(120, 60, 0), 76, 18},
    {2, "Warning", RGB(255, 235, 238), RGB(183, 28, 28), 64, 18}, {3, "Remember me", RGB(255, 255, 255), RGB(0, 0, 0), 110, 18},
    {3, "Enable logging", RGB(245, 245, 245), RGB(0, 0, 0), 120, 18},
    {3, "Dark mode", RGB(255, 255, 255), RGB(0, 80, 0), 96, 18},  {0, "Next >", RGB(225, 225, 225), RGB(0, 0, 0), 75, 23},
    {1, "ring", RGB(0, 150, 136), RGB(255, 255, 255), 24, 24},
};
const Control kAbsent[20] = {
    {0, "Retry", RGB(255, 87, 34), RGB(255, 255, 255), 75, 23},  {0, "Ignore", RGB(121, 85, 72), RGB(255, 255, 255), 75, 23},
    {0, "Delete", RGB(183, 28, 28), RGB(255, 255, 255), 75, 23}, {0, "Upload", RGB(0, 188, 212), RGB(0, 0, 0), 80, 25},
    {0, "Back", RGB(63, 81, 181), RGB(255, 255, 0), 70, 24},     {1, "circle", RGB(0, 200, 83), RGB(0, 0, 0), 24, 24},
    {1, "triangle", RGB(0, 0, 128), RGB(255, 255, 255), 24, 24}, {1, "square", RGB(255, 128, 171), RGB(0, 0, 0), 24, 24},
    {1, "cross", RGB(128, 0, 64), RGB(0, 255, 255), 20, 20},        {1, "diamond", RGB(0, 96, 100), RGB(255, 255, 255), 24, 24},
    {2, "Address:", RGB(40, 40, 40), RGB(255, 255, 255), 70, 18}, {2, "Username", RGB(224, 247, 250), RGB(0, 60, 60), 72, 18},
    {2, "No results", RGB(30, 30, 60), RGB(255, 200, 0), 90, 18},
    {2, "Sum: 17", RGB(232, 245, 233), RGB(27, 94, 32), 64, 18},
    {2, "Error", RGB(33, 33, 33), RGB(255, 82, 82), 56, 18},     {3, "Keep signed in", RGB(20, 20, 20), RGB(255, 255, 255), 120, 18},
    {3, "Auto update", RGB(255, 243, 224), RGB(230, 81, 0), 104, 18},
    {3, "Large icons", RGB(237, 231, 246), RGB(74, 20, 140), 100, 18},
    {0, "Finish", RGB(46, 125, 50), RGB(255, 255, 255), 75, 23}, {1, "ring", RGB(255, 112, 67), RGB(0, 0, 0), 24, 24},
};

int S(int v, int percent) { return (int)lround(v * percent / 100.0); }

void DrawControl(HDC dc, const Control& c, int x, int y, int percent, DWORD quality) {
    const int w = S(c.width, percent), h = S(c.height, percent);
    RECT r = {x, y, x + w, y + h};
    HBRUSH face = CreateSolidBrush(c.face);
    HPEN inkPen = CreatePen(PS_SOLID, S(1, percent) > 0 ? S(1, percent) : 1, c.ink);
    HBRUSH inkBrush = CreateSolidBrush(c.ink);
    HFONT font = CreateFontA(-S(12, percent), 0, 0, 0, FW_NORMAL, 0, 0, 0, ANSI_CHARSET, 0, 0, quality, 0, "Tahoma");
    HGDIOBJ oldFont = SelectObject(dc, font), oldPen = SelectObject(dc, inkPen);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, c.ink);
    FillRect(dc, &r, face);
    if (c.kind == 0) {
        HBRUSH edge = CreateSolidBrush(RGB(GetRValue(c.face) / 2, GetGValue(c.face) / 2, GetBValue(c.face) / 2));
        FrameRect(dc, &r, edge);
        DeleteObject(edge);
        DrawTextA(dc, c.text, -1, &r, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    } else if (c.kind == 1) {
        const int m = S(3, percent);
        HGDIOBJ oldBrush = SelectObject(dc, inkBrush);
        const char* shape = c.text;
        if (shape[0] == 'c' && shape[1] == 'i') {
            Ellipse(dc, x + m, y + m, x + w - m, y + h - m);
        } else if (shape[0] == 't') {
            POINT p[3] = {{x + w / 2, y + m}, {x + w - m, y + h - m}, {x + m, y + h - m}};
            Polygon(dc, p, 3);
        } else if (shape[0] == 's') {
            Rectangle(dc, x + m, y + m, x + w - m, y + h - m);
        } else if (shape[0] == 'c') {
            MoveToEx(dc, x + m, y + m, nullptr);
            LineTo(dc, x + w - m, y + h - m);
            MoveToEx(dc, x + w - m, y + m, nullptr);
            LineTo(dc, x + m, y + h - m);
        } else if (shape[0] == 'd') {
            POINT p[4] = {{x + w / 2, y + m}, {x + w - m, y + h / 2}, {x + w / 2, y + h - m}, {x + m, y + h / 2}};
            Polygon(dc, p, 4);
        } else {
            SelectObject(dc, GetStockObject(NULL_BRUSH));
            HPEN thick = CreatePen(PS_SOLID, S(3, percent), c.ink);
            HGDIOBJ old = SelectObject(dc, thick);
            Ellipse(dc, x + m, y + m, x + w - m, y + h - m);
            SelectObject(dc, old);
            DeleteObject(thick);
        }
        SelectObject(dc, oldBrush);
    } else if (c.kind == 2) {
        RECT t = r;
        t.left += S(2, percent);
        DrawTextA(dc, c.text, -1, &t, DT_LEFT | DT_VCENTER | DT_SINGLELINE);
    } else {
        const int b = S(13, percent), top = y + (h - b) / 2;
        RECT box = {x + S(1, percent), top, x + S(1, percent) + b, top + b};
        FrameRect(dc, &box, inkBrush);
        MoveToEx(dc, box.left + b / 4, top + b / 2, nullptr);
        LineTo(dc, box.left + b / 2 - 1, top + b * 3 / 4);
        LineTo(dc, box.right - b / 5, top + b / 4);
        RECT t = r;
        t.left = box.right + S(4, percent);
        DrawTextA(dc, c.text, -1, &t, DT_LEFT | DT_VCENTER | DT_SINGLELINE);
    }
    SelectObject(dc, oldFont);
    SelectObject(dc, oldPen);
    DeleteObject(font);
    DeleteObject(inkPen);
    DeleteObject(inkBrush);
    DeleteObject(face);
}

// A 32-bit top-down canvas.
struct Canvas {
    int w = 0, h = 0;
    DWORD* bits = nullptr;
    HBITMAP bitmap = nullptr;
    HDC dc = nullptr;
    Canvas(int width, int height, COLORREF fill) : w(width), h(height) {
        BITMAPINFO bi = {};
        bi.bmiHeader = {sizeof bi.bmiHeader, w, -h, 1, 32, BI_RGB};
        bitmap = CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, (void**)&bits, nullptr, 0);
        dc = CreateCompatibleDC(nullptr);
        SelectObject(dc, bitmap);
        RECT all = {0, 0, w, h};
        HBRUSH b = CreateSolidBrush(fill);
        FillRect(dc, &all, b);
        DeleteObject(b);
    }
    ~Canvas() {
        DeleteDC(dc);
        DeleteObject(bitmap);
    }
};

// The capture: the control alone at 100 %, as a user's cut of it.
Needle Capture(const Control& c) {
    Canvas canvas(c.width, c.height, RGB(200, 200, 200));
    DrawControl(canvas.dc, c, 0, 0, 100, CLEARTYPE_QUALITY);
    GdiFlush();
    Needle n;
    n.width = c.width;
    n.height = c.height;
    n.raw.assign(canvas.bits, canvas.bits + (size_t)c.width * c.height);
    for (DWORD& p : n.raw) p &= 0xFFFFFF;
    return n;
}

// Where control i stands on the screen at a scale: a grid of cells.
POINT PlaceOf(int i, int percent) {
    return POINT{S(20 + (i % 4) * 200, percent) + 7 * (i % 3), S(20 + (i / 4) * 60, percent) + 5 * (i % 2)};
}

}  // namespace

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IONBF, 0);
    const int variation = argc > 1 ? atoi(argv[1]) : 32;
    const int screens[4] = {100, 125, 150, 200};
    bool ok = true;
    printf("== picture set: 20 controls captured at 100 %% (ClearType-like text), searched on screens drawn at each "
           "scale (grey-smoothed text), similarity %d %%, variation %d, all common scales; 20 controls on no screen\n",
           kSimilarity, variation);
    printf("%-8s %8s %8s %12s %10s\n", "screen", "found", "misplaced", "false finds", "ms/search");
    std::vector<Needle> present, absent;
    for (const Control& c : kPresent) present.push_back(Capture(c));
    for (const Control& c : kAbsent) absent.push_back(Capture(c));
    for (int percent : screens) {
        // A desktop behind the controls: bands and a soft gradient.
        // The screen holds the grid of controls at its scale, with a margin.
        const int screenW = S(800, percent) + 40, screenH = S(320, percent) + 40;
        Canvas screen(screenW, screenH, RGB(236, 236, 236));
        for (int y = 0; y < screenH; y += 2)
            for (int x = 0; x < screenW; x++)
                if ((y / 90) % 2) screen.bits[(size_t)y * screenW + x] = 0xE4E8EC + (DWORD)((x / 64) % 4);
        for (int i = 0; i < 20; i++) {
            POINT at = PlaceOf(i, percent);
            DrawControl(screen.dc, kPresent[i], at.x, at.y, percent, ANTIALIASED_QUALITY);
        }
        GdiFlush();
        PixelArea area;
        area.area = {0, 0, screenW, screenH};
        area.stride = screenW;
        area.bits = screen.bits;
        const RECT region = {0, 0, screenW - 1, screenH - 1};
        int found = 0, misplaced = 0, falseFinds = 0;
        LARGE_INTEGER f, t0, t1;
        QueryPerformanceFrequency(&f);
        QueryPerformanceCounter(&t0);
        for (int i = 0; i < 20; i++) {
            Candidate c, closest;
            int scale = 0, closestScale = 0;
            POINT want = PlaceOf(i, percent);
            if (getenv("ZR_CONTROLSET_DETAIL")) {
                Needle sc = ScaleNeedle(present[(size_t)i], percent);
                RECT around = {want.x - 3, want.y - 3, want.x + sc.width + 3, want.y + sc.height + 3};
                Candidate t, tc;
                ScoreSearch(area, sc, around, variation, 50, &t, &tc);
                printf("  %-16s true place best %d,%d %d/%d (%.1f%%)\n", kPresent[i].text, (int)(t.x - want.x), (int)(t.y - want.y),
                       t.matched, t.compared, t.compared ? 100.0 * t.matched / t.compared : 0.0);
            }
            if (!SearchAtScales(area, present[(size_t)i], region, variation, kSimilarity, CommonScales, 9, &c, &scale,
                                &closest, &closestScale)) {
                if (getenv("ZR_CONTROLSET_DETAIL"))
                    printf("    missed: closest %d,%d scale %d %d/%d\n", (int)(closest.x - want.x), (int)(closest.y - want.y),
                           closestScale, closest.matched, closest.compared);
                continue;
            }
            if (getenv("ZR_CONTROLSET_DETAIL"))
                printf("    found %d,%d scale %d %d/%d\n", (int)(c.x - want.x), (int)(c.y - want.y), scale, c.matched, c.compared);
            const int slack = 1 + percent / 100;
            if (abs((int)(c.x - want.x)) <= slack && abs((int)(c.y - want.y)) <= slack)
                found++;
            else
                misplaced++;
        }
        for (int i = 0; i < 20; i++) {
            Candidate c, closest;
            int scale = 0, closestScale = 0;
            if (SearchAtScales(area, absent[(size_t)i], region, variation, kSimilarity, CommonScales, 9, &c, &scale,
                               &closest, &closestScale)) {
                falseFinds++;
                if (getenv("ZR_CONTROLSET_DETAIL"))
                    printf("  absent %-16s found at %d,%d scale %d %d/%d\n", kAbsent[i].text, c.x, c.y, scale, c.matched,
                           c.compared);
            }
        }
        QueryPerformanceCounter(&t1);
        const double ms = (double)(t1.QuadPart - t0.QuadPart) * 1000.0 / (double)f.QuadPart / 40;
        printf("%6d %% %5d/20 %8d %12d %10.1f\n", percent, found, misplaced, falseFinds, ms);
        if (found < 19 || falseFinds > 0) ok = false;
    }
    printf("picture set: %s (target: at least 19 of 20 found at the right place at each scale, no false finds)\n",
           ok ? "met" : "missed");
    return ok ? 0 : 1;
}
