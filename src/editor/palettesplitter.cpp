// The splitter between the step list and the properties palette. It is the
// main window's own client area showing between the two panes, so the main
// window sees the pointer there: it sets the sizing cursor, and a drag
// moves the palette's left edge.
#include "editor/palettesplitter.h"

#include "base/settings.h"
#include "base/ui.h"
#include "editor/metrics.h"
#include "editor/propertygrid.h"

namespace {

bool Dragging;
int DraggedWidth;  // the width of this drag, before it is saved

// The gap, in the main window's client coordinates, with a pixel of slack on
// each side so that it is easy to catch.
bool OverSplitter(HWND window, POINT at) {
    if (!PropertyPalette || !IsWindowVisible(PropertyPalette)) return false;
    RECT palette;
    GetWindowRect(PropertyPalette, &palette);
    MapWindowPoints(nullptr, window, (POINT*)&palette, 2);
    return at.y >= palette.top && at.y < palette.bottom && at.x >= palette.left - 4 && at.x <= palette.left + 1;
}

int SavedWidth() { return ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\Width"); }

int Clamp(int width, int across) {
    const int least = FontUnitsX(80), most = across / 2;
    if (width > most) width = most;
    if (width < least) width = least;
    return width;
}

}  // namespace

int PropertyPaletteWidth(int across) {
    int width = Dragging && DraggedWidth > 0 ? DraggedWidth : SavedWidth();
    if (width <= 0) {
        int labels = PropertyLabelsWidth();
        if (labels < FontUnitsX(100)) labels = FontUnitsX(100);  // about 25 characters
        width = labels + FontUnitsX(8) + 12 + FontUnitsX(120) + GetSystemMetrics(SM_CXVSCROLL) + 8;
    }
    return Clamp(width, across);
}

bool SplitterMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result,
                     void (*layOut)(HWND)) {
    POINT at = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
    switch (message) {
    case WM_SETCURSOR: {
        if ((HWND)wParam != window || LOWORD(lParam) != HTCLIENT) return false;
        GetCursorPos(&at);
        ScreenToClient(window, &at);
        if (!Dragging && !OverSplitter(window, at)) return false;
        SetCursor(LoadCursorA(nullptr, (LPCSTR)IDC_SIZEWE));
        *result = TRUE;
        return true;
    }
    case WM_LBUTTONDOWN:
        if (!OverSplitter(window, at)) return false;
        Dragging = true;
        DraggedWidth = 0;
        SetCapture(window);
        *result = 0;
        return true;
    case WM_MOUSEMOVE: {
        if (!Dragging) return false;
        RECT client;
        GetClientRect(window, &client);
        DraggedWidth = Clamp(client.right - at.x - 1, client.right);
        layOut(window);
        *result = 0;
        return true;
    }
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
        if (!Dragging) return false;
        Dragging = false;
        if (message == WM_LBUTTONUP) ReleaseCapture();
        if (DraggedWidth > 0)
            WriteSetting(nullptr, nullptr, DraggedWidth, nullptr, ZR_ROOT "Palettes\\Properties\\Width");
        layOut(window);
        *result = 0;
        return true;
    }
    return false;
}
