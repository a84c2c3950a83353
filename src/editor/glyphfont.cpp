#include "editor/glyphfont.h"

#include <string.h>

#include <vector>

#include "base/handles.h"

namespace {

// Δ, Ж, 東, あ, 한.
const wchar_t kSamples[] = {0x0394, 0x0416, 0x6771, 0x3042, 0xD55C};
// A code point that no font has: it is drawn as the missing-glyph box.
const wchar_t kNoGlyph = 0x0378;

// Faces that draw those scripts, the system's own first, then those of
// common free font packages.
const wchar_t* const kCandidates[] = {
    L"Microsoft YaHei UI", L"Yu Gothic UI",        L"Meiryo UI",          L"Malgun Gothic",
    L"Microsoft JhengHei UI", L"MS UI Gothic",     L"SimSun",             L"Arial Unicode MS",
    L"Noto Sans CJK JP",   L"Noto Sans CJK SC",    L"Source Han Sans",    L"WenQuanYi Micro Hei",
    L"WenQuanYi Zen Hei",  L"Droid Sans Fallback",
    // Fixed-pitch faces, for a fixed-pitch font such as the output's.
    L"MS Gothic",          L"NSimSun",             L"WenQuanYi Micro Hei Mono", L"Noto Sans Mono CJK JP",
    L"Noto Sans Mono CJK SC",
};

// Whether the font's letters all have one width. A face that would turn the
// output's columns ragged is no better, however many letters it draws. The
// widths are measured: the pitch flag of a face is not to be trusted (a CJK
// face whose Latin letters are all one width but its ideographs two says it
// is variable).
bool FixedPitch(HFONT font) {
    AutoDeleteDC dc(CreateCompatibleDC(nullptr));
    HGDIOBJ old = SelectObject(dc.dc, font);
    SIZE narrow = {}, wide = {};
    GetTextExtentPoint32W(dc.dc, L"iiii", 4, &narrow);
    GetTextExtentPoint32W(dc.dc, L"WWWW", 4, &wide);
    SelectObject(dc.dc, old);
    return narrow.cx > 0 && narrow.cx == wide.cx;
}

const int kCell = 48;

// The picture of one character drawn in the font, black on white.
std::vector<unsigned> Picture(HDC dc, void* bits, wchar_t c) {
    RECT r = {0, 0, kCell, kCell};
    FillRect(dc, &r, (HBRUSH)GetStockObject(WHITE_BRUSH));
    ExtTextOutW(dc, 2, 2, 0, nullptr, &c, 1, nullptr);
    GdiFlush();
    const unsigned* p = (const unsigned*)bits;
    return std::vector<unsigned>(p, p + kCell * kCell);
}

struct Made {
    LOGFONTW look;
    HFONT font;  // null: none does better
};
std::vector<Made> Cache;

}  // namespace

int GlyphSampleCount() { return (int)(sizeof kSamples / sizeof kSamples[0]); }

int GlyphsDrawn(HFONT font) {
    AutoDeleteDC dc(CreateCompatibleDC(nullptr));
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = kCell;
    info.bmiHeader.biHeight = kCell;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    AutoDeleteObject bitmap(CreateDIBSection(dc.dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dc.dc || !bitmap.obj || !bits) return 0;
    HGDIOBJ oldBitmap = SelectObject(dc.dc, bitmap.obj);
    HGDIOBJ oldFont = SelectObject(dc.dc, font);
    SetBkMode(dc.dc, TRANSPARENT);
    const std::vector<unsigned> missing = Picture(dc.dc, bits, kNoGlyph);
    int drawn = 0;
    for (wchar_t c : kSamples)
        if (Picture(dc.dc, bits, c) != missing) drawn++;
    SelectObject(dc.dc, oldFont);
    SelectObject(dc.dc, oldBitmap);
    return drawn;
}

HFONT FontWithGlyphs(HFONT base) {
    LOGFONTW look = {};
    if (!GetObjectW(base ? (HGDIOBJ)base : GetStockObject(DEFAULT_GUI_FONT), sizeof look, &look)) return nullptr;
    for (const Made& m : Cache)
        if (memcmp(&m.look, &look, sizeof look) == 0) return m.font;
    Made made = {look, nullptr};
    HFONT given = base ? base : (HFONT)GetStockObject(DEFAULT_GUI_FONT);
    int best = GlyphsDrawn(given);
    const bool fixed = FixedPitch(given);
    if (best < GlyphSampleCount()) {
        for (const wchar_t* face : kCandidates) {
            LOGFONTW other = look;
            lstrcpynW(other.lfFaceName, face, LF_FACESIZE);
            other.lfCharSet = DEFAULT_CHARSET;
            HFONT font = CreateFontIndirectW(&other);
            if (!font) continue;
            // A face that is not installed comes back as another one.
            wchar_t got[LF_FACESIZE] = L"";
            {
                AutoDeleteDC dc(CreateCompatibleDC(nullptr));
                HGDIOBJ old = SelectObject(dc.dc, font);
                GetTextFaceW(dc.dc, LF_FACESIZE, got);
                SelectObject(dc.dc, old);
            }
            const int drawn = lstrcmpiW(got, face) == 0 && FixedPitch(font) == fixed ? GlyphsDrawn(font) : 0;
            if (drawn > best) {
                if (made.font) DeleteObject(made.font);
                made.font = font;
                best = drawn;
                if (drawn == GlyphSampleCount()) break;
            } else {
                DeleteObject(font);
            }
        }
    }
    Cache.push_back(made);
    return made.font;
}

void GiveGlyphFont(HWND control) {
    if (HFONT font = FontWithGlyphs((HFONT)SendMessageW(control, WM_GETFONT, 0, 0)))
        SendMessageW(control, WM_SETFONT, (WPARAM)font, TRUE);
}
