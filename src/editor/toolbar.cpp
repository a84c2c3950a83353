// The toolbar. Its buttons send the menu's own commands, so they do what the
// menu does; their state is read from the menu after the Edit menu's items
// (Undo, Redo) were brought up to date, so both always agree.
#include "editor/toolbar.h"

#include <commctrl.h>

#include "base/settings.h"
#include "base/ui.h"
#include "resources/resource.h"
#include "run/runstate.h"

HWND Toolbar;

namespace {

struct Button {
    int command;  // 0: a separator
    int image;    // the tile of toolbar.bmp
    const char* tip;
};

const Button kButtons[] = {
    {CMD_NEW, 0, "New (Ctrl+N)"},
    {CMD_OPEN, 1, "Open (Ctrl+O)"},
    {CMD_SAVE, 2, "Save (Ctrl+S)"},
    {0, 0, nullptr},
    {CMD_CUT, 3, "Cut (Ctrl+X)"},
    {CMD_COPY, 4, "Copy (Ctrl+C)"},
    {CMD_PASTE, 5, "Paste (Ctrl+V)"},
    {0, 0, nullptr},
    {CMD_UNDO, 6, "Undo (Ctrl+Z)"},
    {CMD_REDO, 7, "Redo (Ctrl+Y)"},
    {0, 0, nullptr},
    {CMD_RUN, 8, "Run (F5)"},
    {CMD_RUN_FROM_HERE, 9, "Run From Here (F6)"},
    {CMD_STOP, 10, "Stop"},
    {CMD_RECORD_STEPS, 13, "Record as Steps (Ctrl+Shift+R)"},
    {0, 0, nullptr},
    {CMD_CHECK_SCRIPT, 11, "Check Script (Ctrl+F7)"},
    {CMD_OPTIONS, 12, "Options (F11)"},
};

HIMAGELIST Images;

}  // namespace

const char* ToolbarTip(int command) {
    for (const Button& b : kButtons)
        if (b.command == command && b.tip) return b.tip;
    return "";
}

HWND CreateToolbar(HWND parent) {
    Toolbar = CreateWindowExA(0, TOOLBARCLASSNAMEA, "",
                              WS_CHILD | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS | CCS_TOP | CCS_NODIVIDER, 0, 0, 0, 0,
                              parent, nullptr, GetModuleHandleA(nullptr), nullptr);
    if (!Toolbar) return nullptr;
    SendMessageA(Toolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    if (!Images) {
        Images = ImageList_Create(16, 16, ILC_COLOR24 | ILC_MASK, 14, 0);
        HBITMAP strip = (HBITMAP)LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDB_TOOLBAR), IMAGE_BITMAP, 0,
                                            0, LR_CREATEDIBSECTION);
        if (strip) {
            ImageList_AddMasked(Images, strip, RGB(255, 0, 255));
            DeleteObject(strip);
        }
    }
    SendMessageA(Toolbar, TB_SETIMAGELIST, 0, (LPARAM)Images);
    for (const Button& b : kButtons) {
        TBBUTTON button = {};
        button.iBitmap = b.command ? b.image : 0;
        button.idCommand = b.command;
        button.fsState = TBSTATE_ENABLED;
        button.fsStyle = b.command ? BTNS_BUTTON : BTNS_SEP;
        SendMessageA(Toolbar, TB_ADDBUTTONSA, 1, (LPARAM)&button);
    }
    SendMessageA(Toolbar, TB_AUTOSIZE, 0, 0);
    if (SettingInt("Palettes\\Toolbar\\visible")) ShowWindow(Toolbar, SW_SHOW);
    UpdateToolbar();
    return Toolbar;
}

void UpdateToolbar() {
    if (!Toolbar || !MainWindow) return;
    HMENU menu = GetMenu(MainWindow);
    // The Edit menu's Undo and Redo follow the tab only when it opens: bring
    // them up to date first.
    SendMessageA(MainWindow, WM_INITMENUPOPUP, (WPARAM)GetSubMenu(menu, 1), 1);
    for (const Button& b : kButtons) {
        if (!b.command) continue;
        const UINT state = GetMenuState(menu, (UINT)b.command, MF_BYCOMMAND);
        const bool enabled = state != (UINT)-1 && !(state & (MF_GRAYED | MF_DISABLED));
        SendMessageA(Toolbar, TB_ENABLEBUTTON, (WPARAM)b.command, MAKELPARAM(enabled ? TRUE : FALSE, 0));
        // A command that goes on until it is given again (a recording) shows
        // pressed while it does, as its menu item shows a check.
        const bool checked = state != (UINT)-1 && (state & MF_CHECKED);
        SendMessageA(Toolbar, TB_CHECKBUTTON, (WPARAM)b.command, MAKELPARAM(checked ? TRUE : FALSE, 0));
    }
}
