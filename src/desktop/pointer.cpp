#include "desktop/pointer.h"

#include <windows.h>

namespace {

// Wine answers GetCursorPos from its own record for 100 ms after a change,
// and only then from the display: a move that the display refused (while
// another program holds the pointer) shows only after that time.
bool PointerReportLags() {
    static const bool lags = GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
    return lags;
}

}  // namespace

// Puts the pointer on a point and makes sure that it is there, so that the
// next step does not read the old place. A refused move is asked again, for
// at most about a second.
void PlacePointer(int x, int y) {
    SetCursorPos(x, y);
    const int settle = PointerReportLags() ? 120 : 10;
    for (int attempt = 0; attempt < 8; attempt++) {
        POINT p;
        GetCursorPos(&p);
        if (p.x == x && p.y == y && (attempt > 0 || !PointerReportLags())) return;
        Sleep((DWORD)settle);
        GetCursorPos(&p);
        if (p.x == x && p.y == y) return;
        SetCursorPos(x, y);
    }
}
