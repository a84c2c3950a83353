// The panes take Tab themselves: the main window's dialog navigation would
// walk every control inside them (the tab strip, the palette's buttons), and
// the step list used to keep Tab for itself, so the keyboard never left it.
#include "editor/panekeys.h"

#include <commctrl.h>

#include "base/ui.h"
#include "editor/actionstree.h"
#include "editor/frame.h"
#include "editor/propertygrid.h"
#include "editor/variablespalette.h"

namespace {

bool Plain(UINT vk) { return !(GetKeyState(VK_CONTROL) & 0x8000) && !(GetKeyState(VK_MENU) & 0x8000) && vk; }

LRESULT CALLBACK PaneKeysProc(HWND pane, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_GETDLGCODE:
        if (lParam) {
            const MSG* m = (const MSG*)lParam;
            if (m->message == WM_KEYDOWN && m->wParam == VK_TAB && Plain(VK_TAB))
                return DLGC_WANTTAB | DefSubclassProc(pane, message, wParam, lParam);
            // The tree adds the action under Enter (it tells its parent).
            if (m->message == WM_KEYDOWN && m->wParam == VK_RETURN && pane == ActionsTree)
                return DLGC_WANTMESSAGE | DefSubclassProc(pane, message, wParam, lParam);
        }
        break;
    case WM_KEYDOWN:
        if (wParam == VK_TAB && Plain(VK_TAB)) {
            CycleFocus(pane, (GetKeyState(VK_SHIFT) & 0x8000) != 0);
            return 0;
        }
        break;
    case WM_CHAR:
        if (wParam == '\t') return 0;
        break;
    case WM_CONTEXTMENU:
        if (pane == OutputEdit) {
            HMENU menu = CreatePopupMenu();
            AppendMenuA(menu, MF_STRING, OUTPUT_COPY, "&Copy");
            AppendMenuA(menu, MF_STRING, OUTPUT_SELECT_ALL, "Select &All");
            AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
            AppendMenuA(menu, MF_STRING, OUTPUT_CLEAR, "C&lear");
            POINT at = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
            if (lParam == (LPARAM)-1) GetCursorPos(&at);
            const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, pane, nullptr);
            DestroyMenu(menu);
            if (chosen) OutputCommand(chosen);
            return 0;
        }
        break;
    // The Output palette scrolled far (Ctrl+Home, a page, the wheel) paints
    // all of itself: a scroll by a large amount left a strip unpainted.
    case WM_KEYUP:
    case WM_VSCROLL:
    case WM_HSCROLL:
    case WM_MOUSEWHEEL:
        if (pane == OutputEdit) {
            const LRESULT result = DefSubclassProc(pane, message, wParam, lParam);
            InvalidateRect(pane, nullptr, TRUE);
            return result;
        }
        break;
    }
    return DefSubclassProc(pane, message, wParam, lParam);
}

}  // namespace

void WatchPaneKeys(HWND pane) {
    if (pane) SetWindowSubclass(pane, PaneKeysProc, 0x7A4B, 0);
}

void OutputCommand(int id) {
    if (!OutputEdit) return;
    switch (id) {
    case OUTPUT_CLEAR: SetWindowTextA(OutputEdit, ""); break;
    case OUTPUT_SELECT_ALL: SendMessageA(OutputEdit, EM_SETSEL, 0, -1); break;
    case OUTPUT_COPY: {
        // With nothing selected, all of it.
        DWORD from = 0, to = 0;
        SendMessageA(OutputEdit, EM_GETSEL, (WPARAM)&from, (LPARAM)&to);
        if (from == to) SendMessageA(OutputEdit, EM_SETSEL, 0, -1);
        SendMessageA(OutputEdit, WM_COPY, 0, 0);
        if (from == to) SendMessageA(OutputEdit, EM_SETSEL, from, to);
        break;
    }
    }
}

void CycleFocus(HWND from, bool back) {
    HWND panes[] = {ActionsFilter, ActionsTree, StepList, PropertyGrid, OutputEdit, VariablesList};
    const int count = (int)(sizeof panes / sizeof panes[0]);
    int at = -1;
    for (int i = 0; i < count && at < 0; i++)
        if (panes[i] && (panes[i] == from || IsChild(panes[i], from))) at = i;
    for (int step = 1; step <= count; step++) {
        const int next = ((at < 0 ? 0 : at) + (back ? count - step : step)) % count;
        if (panes[next] && IsWindowVisible(panes[next])) {
            SetFocus(panes[next]);
            return;
        }
    }
}
