// The editor's sizes from the system's message font.
#include "editor/metrics.h"

#include "base/handles.h"

namespace {

// What a 96-dpi screen with the usual 8-point font gives, until read.
int CharWidth = 6;
int LineHeight = 13;

}  // namespace

void ReadEditorMetrics(HFONT font) {
    HFONT made = nullptr;
    if (!font) {
        NONCLIENTMETRICSA metrics = {};
        metrics.cbSize = sizeof metrics;
        if (SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0))
            made = CreateFontIndirectA(&metrics.lfMessageFont);
        font = made ? made : (HFONT)GetStockObject(DEFAULT_GUI_FONT);
    }
    ScopedGetDC screen(nullptr);
    HGDIOBJ old = SelectObject(screen.dc, font);
    TEXTMETRICA text = {};
    GetTextMetricsA(screen.dc, &text);
    // The average width as the system measures dialog units: the letters of
    // the alphabet, in both cases, over their count.
    SIZE letters = {};
    GetTextExtentPoint32A(screen.dc, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", 52, &letters);
    SelectObject(screen.dc, old);
    if (made) DeleteObject(made);
    if (letters.cx > 0) CharWidth = (letters.cx / 26 + 1) / 2;
    if (text.tmHeight > 0) LineHeight = text.tmHeight;
}

int FontUnitsX(int quarters) { return MulDiv(quarters, CharWidth, 4); }

int FontUnitsY(int eighths) { return MulDiv(eighths, LineHeight, 8); }

int FontLineHeight(HFONT font) {
    ScopedGetDC screen(nullptr);
    HGDIOBJ old = SelectObject(screen.dc, font ? font : GetStockObject(DEFAULT_GUI_FONT));
    TEXTMETRICA text = {};
    GetTextMetricsA(screen.dc, &text);
    SelectObject(screen.dc, old);
    return text.tmHeight > 0 ? text.tmHeight : 13;
}
