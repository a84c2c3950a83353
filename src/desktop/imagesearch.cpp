// The unique-pixel scan. The screen is captured once per search into memory
// and scanned there: reading it pixel by pixel from the screen device costs
// microseconds a pixel. The capture covers the region grown by the image's
// size, so every pixel a candidate compares is in it; pixels off the screen
// read as the invalid colour, which equals nothing, as the screen device
// gives them. Drawing the scan's progress still goes to the real screen.
#include "desktop/imagesearch.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "desktop/imagefile.h"
#include "desktop/imagematch.h"
#include "desktop/imagescale.h"
#include "desktop/pixelrow.h"
#include "desktop/screencapture.h"
#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "base/handles.h"
#include "base/words.h"
#include "base/text.h"

long long LastSearchCaptureMicroseconds, LastSearchScanMicroseconds;
ImageMatchReport LastImageMatch;

namespace {

const COLORREF kInvalid = 0xFFFFFFFF;

long long Microseconds() {
    LARGE_INTEGER frequency, count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    return count.QuadPart * 1000000 / frequency.QuadPart;
}

// Converts a 32-bit DIB pixel (blue, green, red, unused) to COLORREF.
inline COLORREF FromDib(DWORD bgra) { return ((bgra & 0xFF) << 16) | (bgra & 0xFF00) | ((bgra >> 16) & 0xFF); }

// The screen pixels of a rectangle in memory, as the 32-bit DIB holds them
// (0x??RRGGBB; the top byte is not looked at). Pixels off the screen, or
// outside the captured rectangle, are invalid.
struct ScreenShot {
    RECT area = {};  // the captured part, on the screen
    int stride = 0;  // pixels a row of the store
    const DWORD* bits = nullptr;

    bool Inside(int x, int y) const { return x >= area.left && x < area.right && y >= area.top && y < area.bottom; }
    // 0x00RRGGBB of a pixel that is Inside.
    DWORD Raw(int x, int y) const {
        return bits[(size_t)(y - area.top) * (size_t)stride + (size_t)(x - area.left)] & 0xFFFFFF;
    }
    // The row of y, indexed by screen x (valid for x inside the area).
    const DWORD* Row(int y) const { return bits + (size_t)(y - area.top) * (size_t)stride - area.left; }
    COLORREF At(int x, int y) const { return Inside(x, y) ? FromDib(Raw(x, y)) : kInvalid; }
};

inline DWORD RawOf(COLORREF c) { return ((DWORD)GetRValue(c) << 16) | ((DWORD)GetGValue(c) << 8) | GetBValue(c); }

// One store for the captures of the run thread, kept at the screen's size: a
// fresh section for each search costs more than the copy of the screen. The
// store is one shared memory section seen through two bitmaps, its upper and
// its lower half, so that the two halves of the screen are copied at once,
// each by its own thread: the copy is what a full-screen search waits on.
struct CaptureStore {
    HANDLE section = nullptr;
    DWORD* bits = nullptr;
    int width = 0, height = 0, half = 0;  // rows of the upper bitmap
    HDC dc[2] = {};
    HBITMAP dib[2] = {};
} Store;

void FreeStore() {
    for (int i = 0; i < 2; i++) {
        if (Store.dc[i]) DeleteDC(Store.dc[i]);
        if (Store.dib[i]) DeleteObject(Store.dib[i]);
    }
    if (Store.bits) UnmapViewOfFile(Store.bits);
    if (Store.section) CloseHandle(Store.section);
    Store = CaptureStore{};
}

bool EnsureStore(int width, int height) {
    if (Store.bits && Store.width >= width && Store.height >= height) return true;
    FreeStore();
    size_t bytes = (size_t)width * (size_t)height * 4;
    Store.section = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, (DWORD)bytes, nullptr);
    if (!Store.section) return false;
    Store.bits = (DWORD*)MapViewOfFile(Store.section, FILE_MAP_READ, 0, 0, bytes);
    Store.width = width;
    Store.height = height;
    Store.half = height / 2;
    ScopedGetDC screen(nullptr);
    for (int i = 0; i < 2; i++) {
        int rows = i == 0 ? Store.half : height - Store.half;
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -rows;  // top-down
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        DWORD offset = i == 0 ? 0 : (DWORD)((size_t)Store.half * (size_t)width * 4);
        Store.dib[i] = CreateDIBSection(screen.dc, &info, DIB_RGB_COLORS, &bits, Store.section, offset);
        Store.dc[i] = CreateCompatibleDC(screen.dc);
        if (!Store.dib[i] || !Store.dc[i]) {
            FreeStore();
            return false;
        }
        SelectObject(Store.dc[i], Store.dib[i]);
    }
    return Store.bits != nullptr;
}

struct CopyJob {
    int part;  // 0 upper, 1 lower
    int width, rows, left, top;
};

DWORD WINAPI CopyPart(LPVOID argument) {
    const CopyJob& job = *(const CopyJob*)argument;
    if (job.rows <= 0) return 0;
    HDC screen = GetDC(nullptr);
    BitBlt(Store.dc[job.part], 0, 0, job.width, job.rows, screen, job.left, job.top, SRCCOPY);
    GdiFlush();
    ReleaseDC(nullptr, screen);
    return 0;
}

// The thread that copies the lower half: started with the first capture and
// then parked on an event, since starting a thread costs (under Wine) about
// as much as a sixth of the copy it would share.
struct CaptureHelper {
    HANDLE thread = nullptr, go = nullptr, done = nullptr;
    CopyJob job = {};
} Helper;

DWORD WINAPI HelperLoop(LPVOID) {
    for (;;) {
        if (WaitForSingleObject(Helper.go, INFINITE) != WAIT_OBJECT_0) return 0;
        CopyPart(&Helper.job);
        SetEvent(Helper.done);
    }
}

bool HelperReady() {
    if (Helper.thread) return true;
    if (!Helper.go) Helper.go = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (!Helper.done) Helper.done = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (Helper.go && Helper.done) Helper.thread = CreateThread(nullptr, 0, HelperLoop, nullptr, 0, nullptr);
    return Helper.thread != nullptr;
}

// Captures the part of `wanted` that is on the screen.
void Capture(const RECT& wanted, ScreenShot& shot) {
    RECT screen = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    shot.bits = nullptr;
    if (!IntersectRect(&shot.area, &wanted, &screen) || !EnsureStore(screen.right, screen.bottom)) {
        shot.area = RECT{};
        return;
    }
    int width = shot.area.right - shot.area.left, height = shot.area.bottom - shot.area.top;
    int upper = height < Store.half ? height : Store.half;
    CopyJob jobs[2] = {{0, width, upper, shot.area.left, shot.area.top},
                       {1, width, height - upper, shot.area.left, shot.area.top + upper}};
    const bool shared = jobs[1].rows > 0 && HelperReady();
    if (shared) {
        Helper.job = jobs[1];
        SetEvent(Helper.go);
    } else {
        CopyPart(&jobs[1]);
    }
    CopyPart(&jobs[0]);
    if (shared) WaitForSingleObject(Helper.done, INFINITE);
    shot.stride = Store.width;
    shot.bits = Store.bits;
}

LONG Clamp(LONG value, LONG low, LONG high) { return value < low ? low : value > high ? high : value; }

}  // namespace

RECT RegionOf(const RECT* region) {
    RECT r = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (!region) return r;
    r = *region;
    NormalizeRect(&r);
    if (r.left == r.right) r.right = GetSystemMetrics(SM_CXSCREEN);
    if (r.top == r.bottom) r.bottom = GetSystemMetrics(SM_CYSCREEN);
    // Every edge within the screens (the virtual screen), so that no row of a
    // scan runs on past them: a region of 2147483647 once never finished its
    // first row. An edge before the screens stays one pixel before them, as
    // a negative edge still ends the scan at once.
    const LONG left = GetSystemMetrics(SM_XVIRTUALSCREEN), top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    const LONG right = left + GetSystemMetrics(SM_CXVIRTUALSCREEN), bottom = top + GetSystemMetrics(SM_CYVIRTUALSCREEN);
    const LONG before = left < 0 ? left : -1, above = top < 0 ? top : -1;
    r.left = Clamp(r.left, before, right);
    r.right = Clamp(r.right, before, right);
    r.top = Clamp(r.top, above, bottom);
    r.bottom = Clamp(r.bottom, above, bottom);
    return r;
}

namespace {

// The screen as it was before the scan drew on it, put back at the end.
struct Shadow {
    HDC memory = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;

    void Take() {
        ScopedGetDC dc(nullptr);
        int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
        memory = CreateCompatibleDC(dc.dc);
        bitmap = CreateCompatibleBitmap(dc.dc, w, h);
        old = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, w, h, dc.dc, 0, 0, SRCCOPY);
    }
    void Restore() {
        if (!memory) return;
        ScopedGetDC dc(nullptr);
        BitBlt(dc.dc, 0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), memory, 0, 0, SRCCOPY);
        SelectObject(memory, old);
        DeleteObject(bitmap);
        DeleteDC(memory);
        memory = nullptr;
        InvalidateRect(nullptr, nullptr, TRUE);
    }
};

bool StopAsked() {
    if ((StopKey > 0 && GetAsyncKeyState(StopKey)) || StopRequested) {
        LogPrintf(OutputEdit, "\tStop key pressed, aborting image search\r\n");
        StopRequested = 1;
        return true;
    }
    return false;
}

// Between rows the scan yields and looks at the stop key and the stop flag.
// A row read from memory takes about a microsecond and the key's state is a
// round trip to the window server (several), so the look is taken at the
// first row and then once a quarter of a millisecond has passed: a stop
// still ends the scan at once to a person, and the scan costs what reading
// the pixels costs.
struct StopPoll {
    long long next = 0;
    bool Stopped() {
        const long long now = Microseconds();
        if (now < next) return false;
        next = now + 250;
        Sleep(0);
        return StopAsked();
    }
};

// The scan of PixelSearch over a screen in memory. A start of 0 or out of
// the region leaves the scan at that edge.
bool Scan(const ScreenShot& shot, COLORREF color, const RECT& r, int variation, int startX, int startY, int* outX,
          int* outY, int showScan, int offsetX, int offsetY) {
    if (r.left < 0 || r.top < 0) return false;
    int interval = showScan < 0 ? -showScan : showScan, shade = 1;
    HDC screen = showScan ? GetDC(nullptr) : nullptr;  // only a shown scan draws
    struct Release {
        HDC dc;
        ~Release() {
            if (dc) ReleaseDC(nullptr, dc);
        }
    } release{screen};
    int x0 = startX && startX >= r.left && startX <= r.right ? startX : r.left;
    int y0 = startY && startY >= r.top && startY <= r.bottom ? startY : r.top;
    const PixelTest test = MakePixelTest(color, variation);
    StopPoll poll;
    for (int y = y0; y <= r.bottom; y++) {
        if (poll.Stopped()) return false;
        bool rowInside = y >= shot.area.top && y < shot.area.bottom;
        const DWORD* row = rowInside ? shot.Row(y) : nullptr;
        if (!showScan) {
            if (!rowInside) continue;
            const int first = y == y0 ? x0 : (int)r.left;
            const int from = first > shot.area.left ? first : (int)shot.area.left;
            const int to = r.right < shot.area.right - 1 ? (int)r.right : (int)shot.area.right - 1;
            const int x = FindPixelInRow(row, from, to, test);
            if (x < 0) continue;
            if (outX) *outX = x;
            if (outY) *outY = y;
            return true;
        }
        for (int x = y == y0 ? x0 : r.left; x <= r.right; x++) {
            bool match = false;
            if (rowInside && x >= shot.area.left && x < shot.area.right) match = PixelPasses(row[x], test);
            if (match) {
                if (outX) *outX = x;
                if (outY) *outY = y;
                return true;
            }
            if (showScan) {
                if (shade == 1) {
                    COLORREF under = shot.At(x - offsetX, y - offsetY);
                    if (under != kInvalid) SetPixel(screen, x - offsetX, y - offsetY, DarkenColor(under, 0.3));
                }
                if (++shade > interval) shade = 1;
            }
        }
    }
    return false;
}

// Marker state: the last mark and the count of marks.
int MarkerX, MarkerY, MarkerCount;

void BlinkArrow(int x, int y) {
    ScopedGetDC dc(nullptr);
    for (int i = 0; i < 11; i++) {
        AutoDeleteObject pen(CreatePen(PS_SOLID, 2, i % 2 == 0 ? RGB(0, 255, 0) : RGB(255, 0, 255)));
        HGDIOBJ old = SelectObject(dc.dc, pen.obj);
        MoveToEx(dc.dc, x - 1, y - 1, nullptr);
        LineTo(dc.dc, x - 1, y - 10);
        MoveToEx(dc.dc, x - 1, y - 1, nullptr);
        LineTo(dc.dc, x - 10, y - 1);
        MoveToEx(dc.dc, x - 1, y - 1, nullptr);
        LineTo(dc.dc, x - 20, y - 20);
        SelectObject(dc.dc, old);
        Sleep(250);
    }
}

}  // namespace

COLORREF ParseColor(const char* text) {
    if (!text || !*text) return 0;
    static const struct {
        const char* name;
        COLORREF color;
    } kNames[] = {
        {"BLACK", 0x000000},      {"GRAY", 0x808080},     {"LIGHT GRAY", 0xC0C0C0}, {"LT GRAY", 0xC0C0C0},
        {"DARK GRAY", 0x404040},  {"DK GRAY", 0x404040},  {"WHITE", 0xFFFFFF},      {"RED", 0x0000FF},
        {"GREEN", 0x00FF00},      {"BLUE", 0xFF0000},     {"YELLOW", 0x00FFFF},     {"BROWN", 0x008080},
        {"CYAN", 0xFFFF00},       {"TEAL", 0x808000},     {"PINK", 0xFF00FF},       {"PURPLE", 0x800080},
    };
    for (const auto& n : kNames)
        if (lstrcmpiA(text, n.name) == 0) return n.color;
    char hex[64];
    int n = 0;
    for (const char* p = text; *p && p - text < 62; p++)
        if (*p != '"' && *p != ' ') hex[n++] = *p;
    hex[n] = 0;
    for (char* at; (at = FindNoCase(hex, "0x")) != nullptr;) memmove(at, at + 2, strlen(at + 2) + 1);
    const char* digits = hex[0] == '#' ? hex + 1 : hex;
    if (strlen(digits) != 6 || strspn(digits, "0123456789abcdefABCDEF") != 6) return 0;
    unsigned value = (unsigned)strtoul(digits, nullptr, 16);
    return RGB((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF);
}

COLORREF DarkenColor(COLORREF color, double factor) {
    if (factor <= 0 || factor > 1) return color;
    auto d = [&](int c) { return (int)(c - c * factor); };
    return RGB(d(GetRValue(color)), d(GetGValue(color)), d(GetBValue(color)));
}

COLORREF LightenColor(COLORREF color, double factor) {
    if (factor <= 0 || factor > 1) return color;
    auto l = [&](int c) { return (int)(c + (255 - c) * factor); };
    return RGB(l(GetRValue(color)), l(GetGValue(color)), l(GetBValue(color)));
}

void DrawScanMarker(HDC dc, int x, int y, int kind, COLORREF color, int force) {
    if (!dc) {
        MarkerX = MarkerY = MarkerCount = 0;
        return;
    }
    int dx = x > MarkerX ? x - MarkerX : MarkerX - x, dy = y > MarkerY ? y - MarkerY : MarkerY - y;
    if (!force && (MarkerCount >= 10 || (dx <= 5 && dy <= 5))) return;
    if (kind == 2 && dx <= 4 && dy <= 4 && MarkerCount) return;
    AutoDeleteObject pen(CreatePen(PS_SOLID, kind == 1 ? 2 : 1, color));
    HGDIOBJ old = SelectObject(dc, pen.obj);
    MarkerX = x;
    MarkerY = y;
    if (kind == 2) {
        // A pin stuck into the candidate.
        MoveToEx(dc, x - 1, y - 1, nullptr);
        LineTo(dc, x - 10, y - 10);
        HGDIOBJ brush = SelectObject(dc, GetStockObject(WHITE_BRUSH));
        Ellipse(dc, x - 12, y - 12, x - 8, y - 8);
        SelectObject(dc, brush);
    } else {
        MoveToEx(dc, x - 1, y - 1, nullptr);
        LineTo(dc, x - 1, y - 10);
        MoveToEx(dc, x - 1, y - 1, nullptr);
        LineTo(dc, x - 10, y - 1);
        MoveToEx(dc, x - 1, y - 1, nullptr);
        LineTo(dc, x - 20, y - 20);
    }
    SelectObject(dc, old);
    MarkerCount++;
}

bool PixelSearch(COLORREF color, const RECT* region, int variation, int startX, int startY, int* outX, int* outY,
                 int showScan, int offsetX, int offsetY) {
    RECT r = RegionOf(region);
    ScreenShot shot;
    RECT area = {r.left, r.top, r.right + 1, r.bottom + 1};  // both edges are in the scan
    Capture(area, shot);
    Shadow shadow;
    if (showScan > 0) shadow.Take();
    bool found = Scan(shot, color, r, variation, startX, startY, outX, outY, showScan, offsetX, offsetY);
    shadow.Restore();
    return found;
}

bool ImageSearch(const char* file, const RECT* region, int variation, COLORREF maskColor, int* outX, int* outY,
                 int* outWidth, int* outHeight, int showScan, DWORD priorityClass) {
    return ImageSearchWith(file, region, variation, maskColor, ImageMatchOptions{}, outX, outY, outWidth, outHeight,
                           showScan, priorityClass);
}

PixelArea CaptureArea(const RECT& wanted) {
    ScreenShot shot;
    Capture(wanted, shot);
    PixelArea a;
    a.area = shot.area;
    a.stride = shot.stride;
    a.bits = shot.bits;
    return a;
}

void ShowScanOutcome(bool found, int x, int y) {
    Shadow shadow;
    shadow.Take();
    if (!StopRequested && found)
        BlinkArrow(x, y);
    else
        Sleep(1000);
    shadow.Restore();
}

void LogBestCandidate() {
    const ImageMatchReport& m = LastImageMatch;
    if (!m.compared || m.found) return;
    if (m.best.compared <= 0) {
        LogPrintf(OutputEdit, "\t*Not found: no place in the region fits the image\r\n");
        return;
    }
    const int score = ScorePermille(m.best);
    LogPrintf(OutputEdit, "\t*Not found: best candidate at (%d, %d)  Scale: %d%%  Score: %d.%d%%\r\n", m.best.x,
              m.best.y, m.scale, score / 10, score % 10);
}

bool ImageSearchWith(const char* file, const RECT* region, int variation, COLORREF maskColor,
                     const ImageMatchOptions& options, int* outX, int* outY, int* outWidth, int* outHeight,
                     int showScan, DWORD priorityClass) {
    LastImageMatch = ImageMatchReport{};
    if (!file || !*file) return false;
    ImagePixels picture;
    const int read = ReadImageFile(file, MAX_IMAGE_WIDTH, MAX_IMAGE_HEIGHT, picture);
    if (read == IMAGE_READ_MISSING) return false;
    if (read == IMAGE_READ_UNDECODABLE) {
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                    "The image '%s' could not be read: it is not a BMP, PNG, JPEG or GIF picture, or it is damaged",
                    file);
        return false;
    }
    const int width = picture.width, height = picture.height;
    const std::vector<COLORREF>& image = picture.pixels;
    if (outWidth) *outWidth = width;
    if (outHeight) *outHeight = height;
    if (outX) *outX = 0;
    if (outY) *outY = 0;
    if (read == IMAGE_READ_TOO_LARGE) {
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                    "The image '%s' is %d x %d pixels; images up to %d x %d pixels can be searched", file, width, height,
                    MAX_IMAGE_WIDTH, MAX_IMAGE_HEIGHT);
        return false;
    }
    RECT r = RegionOf(region);
    // A pixel is left out of the comparison where it is transparent in the
    // file, or has the mask colour.
    auto masked = [&](size_t i) {
        return (!picture.clear.empty() && picture.clear[i]) || (maskColor != NO_MASK && image[i] == maskColor);
    };
    if (options.percent < 100 || options.scale != 100) {
        Needle needle;
        needle.width = width;
        needle.height = height;
        needle.raw.resize(image.size());
        needle.skip.resize(image.size());
        for (size_t i = 0; i < image.size(); i++) {
            needle.raw[i] = RawOf(image[i]);
            needle.skip[i] = masked(i) ? 1 : 0;
        }
        return TolerantImageSearch(needle, r, variation, options, outX, outY, outWidth, outHeight, showScan,
                                   priorityClass);
    }
    if (r.right - r.left < width || r.bottom - r.top < height) return false;

    // The primary pixel: the first, by rows, whose colour differs from the
    // corner's, since a plain corner colour matches everywhere on a screen.
    // Transparent pixels of a file have no colour to look for: the first
    // pixel that is not transparent stands for the corner.
    int primaryX = 0, primaryY = 0;
    size_t corner = 0;
    while (!picture.clear.empty() && corner + 1 < image.size() && picture.clear[corner]) corner++;
    primaryX = (int)(corner % (size_t)width);
    primaryY = (int)(corner / (size_t)width);
    for (size_t i = corner + 1; i < image.size(); i++) {
        if (!picture.clear.empty() && picture.clear[i]) continue;
        if (image[i] != image[corner]) {
            primaryX = (int)(i % (size_t)width);
            primaryY = (int)(i / (size_t)width);
            break;
        }
    }
    const char* method = "Optimized Unique Pixel Scan";
    if (SettingInt("SlowPixelScan")) {
        primaryX = primaryY = 0;
        method = "Non-Optimized Pixel Scan";
    }
    COLORREF primary = image[(size_t)primaryY * (size_t)width + (size_t)primaryX];

    HANDLE process = GetCurrentProcess();
    DWORD oldPriority = 0;
    if (priorityClass == 0x80 || priorityClass == 0x20 || priorityClass == 0x40) {
        oldPriority = GetPriorityClass(process);
        SetPriorityClass(process, priorityClass);
    }
    LogPrintf(OutputEdit,
              "\t*Find Image Size=[%d x %d]  Search Region=(%d,%d)->(%d,%d)\r\n\t*Scan Method: [%s]  Primary image "
              "pixel (%d, %d) [R=%d G=%d B=%d]\r\n",
              width, height, (int)r.left, (int)r.top, (int)r.right, (int)r.bottom, method, primaryX, primaryY, GetRValue(primary),
              GetGValue(primary), GetBValue(primary));

    // One capture holds every pixel a candidate can compare.
    ScreenShot shot;
    RECT area = {r.left - width, r.top - height, r.right + width + 1, r.bottom + height + 1};
    const long long captureStart = Microseconds();
    Capture(area, shot);
    const long long scanStart = Microseconds();
    LastSearchCaptureMicroseconds = scanStart - captureStart;
    Shadow shadow;
    ScopedGetDC screen(nullptr);
    if (showScan > 0) {
        DrawScanMarker(nullptr, 0, 0, 0, 0, 0);
        shadow.Take();
        if (SettingInt("SlowPixelScan")) {
            HGDIOBJ brush = SelectObject(screen.dc, GetStockObject(HOLLOW_BRUSH));
            Rectangle(screen.dc, r.left - 1, r.top - 1, r.right + 1, r.bottom + 1);
            SelectObject(screen.dc, brush);
            Sleep(250);
        }
    }

    // The pixels that must match, by rows: masked pixels match anything. Once
    // the five potential matches are logged, which need the first failing
    // pixel by rows, a candidate is first tried at a few pixels spread over
    // the image, so that most fail at once; the outcome is the same.
    std::vector<int> byRows, fast;
    for (int i = 0; i < (int)image.size(); i++)
        if (!masked((size_t)i)) byRows.push_back(i);
    for (int k = 1; k <= 16 && !byRows.empty(); k++) fast.push_back(byRows[byRows.size() * (size_t)k / 17]);
    fast.insert(fast.end(), byRows.begin(), byRows.end());

    std::vector<DWORD> wantRaw(image.size());
    for (size_t i = 0; i < image.size(); i++) wantRaw[i] = RawOf(image[i]);
    auto sameColour = [&](DWORD want, DWORD have) {
        if (variation <= 0) return want == have;
        return abs((int)(want >> 16) - (int)(have >> 16)) <= variation &&
               abs((int)((want >> 8) & 0xFF) - (int)((have >> 8) & 0xFF)) <= variation &&
               abs((int)(want & 0xFF) - (int)(have & 0xFF)) <= variation;
    };
    auto pixelMatches = [&](int index, int originX, int originY) {
        int x = originX + index % width, y = originY + index / width;
        if (!shot.Inside(x, y)) return false;  // off the screen: the invalid colour equals nothing
        return sameColour(wantRaw[(size_t)index], shot.Raw(x, y));
    };
    // Where each pixel of an order lies in the capture from a candidate's
    // corner: a candidate wholly inside the capture (all but those at the
    // screen's edges) is compared without a division or a bounds test a pixel.
    auto offsetsOf = [&](const std::vector<int>& order) {
        std::vector<ptrdiff_t> at(order.size());
        for (size_t k = 0; k < order.size(); k++)
            at[k] = (ptrdiff_t)(order[k] / width) * shot.stride + order[k] % width;
        return at;
    };
    const std::vector<ptrdiff_t> byRowsAt = offsetsOf(byRows), fastAt = offsetsOf(fast);
    // The place in `order` of the first pixel that differs (its size when
    // none does).
    auto firstDifference = [&](const std::vector<int>& order, const std::vector<ptrdiff_t>& at, int originX,
                               int originY) {
        size_t k = 0;
        if (shot.bits && originX >= shot.area.left && originY >= shot.area.top &&
            originX + width <= shot.area.right && originY + height <= shot.area.bottom) {
            const DWORD* corner = shot.Row(originY) + originX;
            while (k < order.size() && sameColour(wantRaw[(size_t)order[k]], corner[at[k]] & 0xFFFFFF)) k++;
            return k;
        }
        while (k < order.size() && pixelMatches(order[k], originX, originY)) k++;
        return k;
    };
    bool found = false;
    int logged = 0, originX = 0, originY = 0, shade = 1;
    const int interval = showScan < 0 ? -showScan : showScan;
    // The primary pixel's test is that of the pixel search: exact with no
    // variation, else within the bounds around it (all 0 for a negative one).
    const PixelTest primaryTest = MakePixelTest(primary, variation);
    // A candidate at (x, y): the whole image compared at the origin it
    // gives. Returns 1 found, 0 not here, -1 no fit on the rest of this row.
    auto tryCandidate = [&](int x, int y) {
        originX = x - primaryX;
        originY = y - primaryY;
        // Both edges are inside the region: an image that passes the
        // right edge cannot fit on this row; on with the row below.
        if (originX + width - 1 > r.right) return -1;
        if (showScan) DrawScanMarker(screen.dc, originX, originY, 2, MASK_COLOR, 1);
        const std::vector<int>& order = logged < 5 ? byRows : fast;
        const size_t k = firstDifference(order, logged < 5 ? byRowsAt : fastAt, originX, originY);
        if (k == order.size()) return 1;
        if (logged < 5) {
            int i = order[k], ix = i % width, iy = i / width;
            COLORREF want = image[(size_t)i], have = shot.At(originX + ix, originY + iy);
            logged++;
            LogPrintf(OutputEdit,
                      "\tPotential at screen (%d, %d), but image pixel (%d, %d) [R=%d G=%d B=%d] doesn't match "
                      "screen pixel (%d, %d) [R=%d G=%d B=%d] %s\r\n",
                      originX, originY, ix, iy, GetRValue(want), GetGValue(want), GetBValue(want), originX + ix,
                      originY + iy, GetRValue(have), GetGValue(have), GetBValue(have),
                      logged == 5 ? "\r\n\t(No more potential matches will be logged during this scan)" : "");
        }
        return 0;
    };
    // Once the potential matches are logged, a candidate counts only if it
    // also passes at the first pixel of the fast order, which is where
    // tryCandidate would fail it at once: the row scan tests both together,
    // four candidates at a time, where the whole image lies inside the
    // capture and fits in the region. On a screen full of the primary
    // pixel's colour this is most of a search.
    const bool pairs = !fast.empty();
    const int secondIndex = pairs ? fast[0] : 0;
    const int secondX = secondIndex % width - primaryX, secondY = secondIndex / width - primaryY;
    const PixelTest secondTest = MakePixelTest(image[(size_t)secondIndex], variation > 0 ? variation : 0);
    StopPoll poll;
    for (int y = r.top; y <= r.bottom && !found && r.left >= 0 && r.top >= 0; y++) {
        if (poll.Stopped()) break;
        bool rowInside = y >= shot.area.top && y < shot.area.bottom;
        const DWORD* row = rowInside ? shot.Row(y) : nullptr;
        if (!showScan) {
            // Candidates only where the primary pixel's colour is: the row
            // scan jumps from one to the next.
            if (!rowInside) continue;
            const int last = r.right < shot.area.right - 1 ? (int)r.right : (int)shot.area.right - 1;
            // The candidates whose image lies wholly inside the capture and
            // inside the region's right edge.
            int pairFrom = 1, pairTo = 0;
            const DWORD* second = nullptr;
            if (pairs && y - primaryY >= shot.area.top && y - primaryY + height <= shot.area.bottom) {
                pairFrom = (int)shot.area.left + primaryX;
                pairTo = (int)shot.area.right - width + primaryX;
                if (pairTo > (int)r.right - (width - 1) + primaryX) pairTo = (int)r.right - (width - 1) + primaryX;
                if (pairTo > last) pairTo = last;
                second = shot.Row(y + secondY) + secondX;
            }
            for (int x = r.left > shot.area.left ? (int)r.left : (int)shot.area.left; x <= last; x++) {
                const bool paired = logged >= 5 && x >= pairFrom && x <= pairTo;
                if (paired) {
                    x = FindPixelPairInRow(row, second, x, pairTo, primaryTest, secondTest);
                    if (x < 0) {
                        x = pairTo;  // on after the paired part
                        continue;
                    }
                } else {
                    const int to = logged >= 5 && x < pairFrom && pairFrom <= pairTo ? pairFrom - 1 : last;
                    x = FindPixelInRow(row, x, to, primaryTest);
                    if (x < 0 && to < last) {
                        x = to;  // on with the paired part
                        continue;
                    }
                    if (x < 0) break;
                }
                const int outcome = tryCandidate(x, y);
                if (outcome == 1) found = true;
                if (outcome != 0) break;
            }
            continue;
        }
        for (int x = r.left; x <= r.right; x++) {
            bool candidate = rowInside && x >= shot.area.left && x < shot.area.right &&
                             PixelPasses(row[x], primaryTest);
            if (!candidate) {
                if (shade == 1) {
                    COLORREF under = shot.At(x - primaryX - 1, y - primaryY - 1);
                    if (under != kInvalid)
                        SetPixel(screen.dc, x - primaryX - 1, y - primaryY - 1, DarkenColor(under, 0.3));
                }
                if (++shade > interval) shade = 1;
                continue;
            }
            shade = 1;
            const int outcome = tryCandidate(x, y);
            if (outcome == 1) found = true;
            if (outcome != 0) break;
        }
    }
    LastSearchScanMicroseconds = Microseconds() - scanStart;
    LastImageMatch.compared = !StopRequested;
    LastImageMatch.found = found;
    LastImageMatch.region = r;
    LastImageMatch.width = width;
    LastImageMatch.height = height;
    if (found) {
        LastImageMatch.best.x = originX;
        LastImageMatch.best.y = originY;
        LastImageMatch.best.matched = LastImageMatch.best.compared = (int)byRows.size();
    } else if (!StopRequested && options.closest) {
        // Why it missed: the place that came closest, by the share of its
        // pixels that match, for the failure's screen image; only when it is
        // wanted, since it costs more than the scan. The whole-image
        // search logs no more than it always did: a script written before
        // the scored search reads the same log.
        Needle needle;
        needle.width = width;
        needle.height = height;
        needle.raw = wantRaw;
        needle.skip.resize(image.size());
        for (size_t i = 0; i < image.size(); i++) needle.skip[i] = masked(i) ? 1 : 0;
        PixelArea a;
        a.area = shot.area;
        a.stride = shot.stride;
        a.bits = shot.bits;
        ScoreSearch(a, needle, r, variation, 100, nullptr, &LastImageMatch.best);
    }
    if (found) {
        if (outX) *outX = originX;
        if (outY) *outY = originY;
    }
    if (oldPriority) SetPriorityClass(process, oldPriority);
    if (showScan && shadow.memory) {
        if (!StopRequested && found)
            BlinkArrow(originX, originY);
        else
            Sleep(1000);
        shadow.Restore();
    }
    return found;
}


bool TolerantImageSearch(const Needle& needle, const RECT& region, int variation, const ImageMatchOptions& options,
                         int* outX, int* outY, int* outWidth, int* outHeight, int showScan, DWORD priorityClass) {
    const int percent = options.percent < 50 ? 50 : options.percent > 100 ? 100 : options.percent;
    int one[1] = {options.scale};
    const int* scales = options.scale == 0 ? CommonScales : one;
    const int common = (int)(sizeof CommonScales / sizeof CommonScales[0]);
    const int count = options.scale != 0                                         ? 1
                      : options.scaleCount > 0 && options.scaleCount < common ? options.scaleCount
                                                                               : common;
    char scaleList[128] = "";
    for (int i = 0; i < count; i++) {
        char item[16];
        FormatInto(item, i ? ", %d%%" : "%d%%", scales[i]);
        AppendInto(scaleList, item);
    }
    LogPrintf(OutputEdit,
              "\t*Find Image Size=[%d x %d]  Search Region=(%d,%d)->(%d,%d)\r\n\t*Scan Method: [Scored Scan]  "
              "Similarity: %d%%  Scales: %s\r\n",
              needle.width, needle.height, (int)region.left, (int)region.top, (int)region.right, (int)region.bottom,
              percent, scaleList);

    HANDLE process = GetCurrentProcess();
    DWORD oldPriority = 0;
    if (priorityClass == 0x80 || priorityClass == 0x20 || priorityClass == 0x40) {
        oldPriority = GetPriorityClass(process);
        SetPriorityClass(process, priorityClass);
    }
    const RECT wanted = {region.left, region.top, region.right + 1, region.bottom + 1};
    const long long captureStart = Microseconds();
    const PixelArea screen = CaptureArea(wanted);
    const long long scanStart = Microseconds();
    LastSearchCaptureMicroseconds = scanStart - captureStart;
    ImageMatchReport& report = LastImageMatch;
    report.region = region;
    Candidate best;
    int bestScale = 100, width = needle.width, height = needle.height;
    report.found = SearchAtScales(screen, needle, region, variation, percent, scales, count, &best, &bestScale, &best,
                                  &bestScale, &width, &height, RunStopping);
    const bool stopped = StopRequested != 0;
    report.compared = !stopped;
    if (stopped) report.found = false;
    report.scale = bestScale;
    report.width = width;
    report.height = height;
    LastSearchScanMicroseconds = Microseconds() - scanStart;
    report.best = best;
    if (oldPriority) SetPriorityClass(process, oldPriority);
    if (report.found) {
        const int score = ScorePermille(best);
        LogPrintf(OutputEdit, "\t*Found at (%d, %d)  Scale: %d%%  Score: %d.%d%%\r\n", best.x, best.y, report.scale,
                  score / 10, score % 10);
        if (outX) *outX = best.x;
        if (outY) *outY = best.y;
        if (outWidth) *outWidth = report.width;
        if (outHeight) *outHeight = report.height;
    } else if (!stopped) {
        LogBestCandidate();
    }
    if (showScan) ShowScanOutcome(report.found, best.x, best.y);
    return report.found;
}
