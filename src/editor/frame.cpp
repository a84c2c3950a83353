// The editor's side of the user-interface seam: the notifications that the
// layers below send, carried out on the frame's windows. Each tolerates a
// null window.
#include "editor/frame.h"
#include "base/text.h"

#include <string.h>

#include "base/settings.h"
#include "editor/steplist.h"
#include "editor/toolbar.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "script/step.h"

namespace {

void FrameTabTitle(int tab) {
    if (!MainWindow || tab < 0 || tab >= MAX_TABS) return;
    char name[MAX_PATH], title[MAX_PATH + 32];
    DisplayName(ScriptStore.tab[tab].path, name, sizeof name);
    // The star means "modified": the steps differ from what the file holds.
    const bool modified = TabModified(tab);
    // A script loaded outside the File menu (from the command line, say)
    // brings its tab into the strip here.
    if (TabStrip && tab >= TabCtrl_GetItemCount(TabStrip) && ScriptStore.tab[tab].path[0]) RefreshTabStrip();
    if (TabStrip && tab < TabCtrl_GetItemCount(TabStrip)) {
        char caption[MAX_PATH + 4];
        FormatInto(caption, modified ? "* %s" : "%s", name);
        TCITEMA item = {};
        item.mask = TCIF_TEXT;
        item.pszText = caption;
        SendMessageA(TabStrip, TCM_SETITEMA, (WPARAM)tab, (LPARAM)&item);
    }
    if (tab != ScriptStore.currentTab) return;
    UpdateToolbar();  // Undo and Redo follow the tab's lists
    FormatInto(title, modified ? "* %s - ZantoRunner" : "%s - ZantoRunner", name);
    SetWindowTextA(MainWindow, title);
}

void FrameStepList() {
    if (!StepList) return;
    if (ListView_GetItemCount(StepList) != CurrentTab().count) ReloadStepCount();
    InvalidateRect(StepList, nullptr, TRUE);
}

void FrameSelectRow(int row) {
    if (!StepList) return;
    ListView_SetItemState(StepList, -1, 0, LVIS_SELECTED);
    if (row >= 0) {
        ListView_SetItemState(StepList, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        ListView_EnsureVisible(StepList, row, FALSE);
    }
    UpdateWindow(StepList);
}

int FrameSelectedRow() {
    if (!StepList) return CurrentTab().selected;
    return (int)SendMessageA(StepList, LVM_GETNEXTITEM, (WPARAM)-1, LVNI_SELECTED);
}

bool FrameRowSelected(int row) {
    if (!StepList) return row == CurrentTab().selected;
    return (ListView_GetItemState(StepList, row, LVIS_SELECTED) & LVIS_SELECTED) != 0;
}

void FrameRunCommands(bool running) {
    HMENU menu = MainWindow ? GetMenu(MainWindow) : nullptr;
    if (!menu) return;
    // While a run is on, nothing may change the script under it; the run
    // thread writes only the steps' last-run state.
    static const UINT kChanging[] = {CMD_RUN, CMD_RUN_FROM_HERE, CMD_RUN_SINGLE_STEP, CMD_NEW, CMD_OPEN, CMD_CLOSE,
                                     CMD_UNDO, CMD_REDO, CMD_CUT, CMD_PASTE, CMD_DELETE, CMD_MOVE_UP, CMD_MOVE_DOWN,
                                     CMD_INDENT, CMD_UNINDENT, CMD_AUTO_INDENT, CMD_ADD_COMMENT, CMD_COMPILE_EXE,
                                     CMD_DEBUG, CMD_DEBUG_FROM_HERE, CMD_TRY_STEP, CMD_RECORD_STEPS};
    const UINT idle = running ? MF_GRAYED : MF_ENABLED;
    for (UINT id : kChanging) EnableMenuItem(menu, id, idle);
    EnableMenuItem(menu, CMD_STOP, running ? MF_ENABLED : MF_GRAYED);
    DrawMenuBar(MainWindow);
    UpdateToolbar();
}

}  // namespace

bool StatusBarShown() { return StatusBar && (GetWindowLongA(StatusBar, GWL_STYLE) & WS_VISIBLE); }

void InstallEditorSeam() {
    UpdateTabTitle = FrameTabTitle;
    RefreshStepList = FrameStepList;
    EnableRunCommands = FrameRunCommands;
    ShowSelectedRow = FrameSelectRow;
    ListSelectedRow = FrameSelectedRow;
    ListRowSelected = FrameRowSelected;
}
