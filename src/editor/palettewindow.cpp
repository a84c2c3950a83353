#include "editor/palettewindow.h"

HWND CreatePaletteWindow(HWND parent, const char* className, WNDPROC proc) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(INT_PTR)(COLOR_BTNFACE + 1);
    wc.lpszClassName = className;
    // A second call finds the class there: the editor's window may be made
    // again (the tests make one each).
    RegisterClassA(&wc);
    return CreateWindowExA(WS_EX_CONTROLPARENT, className, "", WS_CHILD | WS_CLIPCHILDREN, 0, 0, 10, 10, parent,
                           nullptr, nullptr, nullptr);
}
