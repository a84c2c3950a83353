// The Output palette. Its text is the whole store of the run's lines (the log
// writes it anew with each line), so a failure line cannot carry a colour of
// its own in the text: the lines are tinted as they are painted instead. A
// tint that ANDs each pixel with a light colour keeps the text readable,
// and doing it twice gives the same picture, so parts scrolled or painted
// again in any order never build up a stale mark.
#include "editor/outputpalette.h"

#include <string.h>

#include <commctrl.h>

#include <vector>

#include "base/ui.h"
#include "editor/metrics.h"
#include "editor/palettewindow.h"
#include "editor/panekeys.h"

HWND OutputPalette;

namespace {

HWND Title;
HWND Buttons[2];
const int kButtonIds[2] = {OUTPUT_COPY, OUTPUT_CLEAR};

bool StartsWith(const char* text, const char* start) { return strncmp(text, start, strlen(start)) == 0; }

int HeaderHeight() { return FontUnitsY(12); }

void LayOut(HWND palette) {
    RECT r;
    GetClientRect(palette, &r);
    const int header = HeaderHeight(), width = FontUnitsX(36), gap = 2;
    int right = r.right - gap;
    for (int i = 1; i >= 0; i--) {
        right -= width;
        MoveWindow(Buttons[i], right, 1, width, header - 2, TRUE);
        right -= gap;
    }
    MoveWindow(Title, 4, 0, right - 4 > 0 ? right - 4 : 0, header, TRUE);
    if (OutputEdit) MoveWindow(OutputEdit, 0, header, r.right, r.bottom - header > 0 ? r.bottom - header : 0, TRUE);
}

// Tints the failure lines in view.
void TintFailureLines(HWND edit) {
    const int first = (int)SendMessageA(edit, EM_GETFIRSTVISIBLELINE, 0, 0);
    const int count = (int)SendMessageA(edit, EM_GETLINECOUNT, 0, 0);
    RECT format;
    SendMessageA(edit, EM_GETRECT, 0, (LPARAM)&format);
    HDC dc = GetDC(edit);
    if (!dc) return;
    HGDIOBJ oldFont = SelectObject(dc, (HFONT)SendMessageA(edit, WM_GETFONT, 0, 0));
    TEXTMETRICA tm;
    GetTextMetricsA(dc, &tm);
    SelectObject(dc, oldFont);
    const int height = tm.tmHeight > 0 ? tm.tmHeight : 1;
    IntersectClipRect(dc, format.left, format.top, format.right, format.bottom);
    HBRUSH tint = CreateSolidBrush(kFailureTint);
    HGDIOBJ oldBrush = SelectObject(dc, tint);
    HideCaret(edit);
    std::vector<char> line;
    for (int n = first, y = format.top; n < count && y < format.bottom; n++, y += height) {
        const LRESULT start = SendMessageA(edit, EM_LINEINDEX, (WPARAM)n, 0);
        if (start < 0) break;
        // Three bytes a character at most in the program's code page for the
        // edit's characters, and room for EM_GETLINE's size word.
        const size_t length = (size_t)SendMessageA(edit, EM_LINELENGTH, (WPARAM)start, 0);
        line.assign(length * 3 + 8, 0);
        *(WORD*)line.data() = (WORD)(line.size() - 1 < 0xFFFF ? line.size() - 1 : 0xFFFF);
        const LRESULT got = SendMessageA(edit, EM_GETLINE, (WPARAM)n, (LPARAM)line.data());
        line[got > 0 && (size_t)got < line.size() ? (size_t)got : 0] = 0;
        if (got > 0 && IsFailureLine(line.data()))
            PatBlt(dc, format.left, y, format.right - format.left, height, 0x00A000C9 /* PATAND */);
    }
    ShowCaret(edit);
    SelectObject(dc, oldBrush);
    DeleteObject(tint);
    ReleaseDC(edit, dc);
}

LRESULT CALLBACK OutputEditPaint(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (message == WM_PAINT) {
        const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
        TintFailureLines(edit);
        return result;
    }
    return DefSubclassProc(edit, message, wParam, lParam);
}

LRESULT CALLBACK PaletteProc(HWND palette, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE: {
        HFONT font = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
        Title = CreateWindowExA(0, "STATIC", "Output", WS_CHILD | WS_VISIBLE | SS_LEFT | SS_CENTERIMAGE | SS_NOPREFIX,
                                0, 0, 0, 0, palette, nullptr, nullptr, nullptr);
        const char* captions[2] = {"&Copy", "C&lear"};
        for (int i = 0; i < 2; i++)
            Buttons[i] = CreateWindowExA(0, "BUTTON", captions[i], WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 0, 0, 0, 0,
                                         palette, (HMENU)(INT_PTR)kButtonIds[i], nullptr, nullptr);
        for (HWND w : {Title, Buttons[0], Buttons[1]}) SendMessageA(w, WM_SETFONT, (WPARAM)font, FALSE);
        return 0;
    }
    case WM_SIZE:
        LayOut(palette);
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) == OUTPUT_COPY || LOWORD(wParam) == OUTPUT_CLEAR) {
            if ((HWND)lParam == Buttons[0] || (HWND)lParam == Buttons[1]) {
                OutputCommand(LOWORD(wParam));
                return 0;
            }
        }
        break;
    case WM_DESTROY:
        OutputPalette = Title = Buttons[0] = Buttons[1] = nullptr;
        return 0;
    }
    return DefWindowProcA(palette, message, wParam, lParam);
}

}  // namespace

HWND CreateOutputPalette(HWND parent) {
    OutputPalette = CreatePaletteWindow(parent, "ZantoRunnerOutput", PaletteProc);
    return OutputPalette;
}

void WatchOutputEdit(HWND edit) {
    if (!edit) return;
    SetWindowSubclass(edit, OutputEditPaint, 0x7A4F, 0);
    if (OutputPalette) LayOut(OutputPalette);
}

bool IsFailureLine(const char* line) {
    if (!line) return false;
    while (*line == '\t' || *line == ' ') line++;
    return StartsWith(line, "ERROR while running [STEP") || StartsWith(line, "Failure Mode: ") ||
           StartsWith(line, "RUN FAILED") || StartsWith(line, "Critical internal error in Run Core");
}
