// The Edit and Step menus: every change saves its undo entries first, all
// with the tick count of the one user action.
#include <windows.h>
#include "base/text.h"
#include <string.h>

#include <string>
#include <vector>

#include "desktop/inputbox.h"
#include "desktop/tips.h"
#include "editor/commands.h"
#include "editor/propertygrid.h"
#include "base/settings.h"
#include "editor/steplist.h"
#include "base/ui.h"
#include "editor/frame.h"
#include "run/clipboard.h"
#include "base/log.h"
#include "script/editing.h"
#include "script/newstep.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "script/undo.h"
#include "resources/resource.h"
#include "base/words.h"

namespace {

std::vector<int> SelectedSteps() {
    std::vector<int> rows;
    for (int i = 0; i < CurrentTab().count; i++)
        if (StepRowSelected(i)) rows.push_back(i);
    return rows;
}

int32_t Stamp() { return (int32_t)GetTickCount(); }

// After any change to the steps: the grid, the caption and the palette.
void Changed() {
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
    RefreshPropertyGrid();
}

bool EmptyScript(HWND window) {
    if (CurrentTab().count > 0) return false;
    ShowMessageBox(window, "The file is empty.\n\nPlease add commands before using this feature.", "System Message",
                   MB_ICONINFORMATION);
    return true;
}

void DeleteSelected(const std::vector<int>& rows) {
    // An action too big for the undo buffer goes on without undo, if the
    // user agrees.
    const bool undo = (int)rows.size() < UndoLimit();
    if (!ConfirmUndoSpace((int)rows.size())) return;
    const int32_t stamp = Stamp();
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
        if (undo) SaveUndo(stamp, *it, UNDO_DELETED);
        DeleteStep(*it);
    }
    SelectStepRow(-1);
    SelectStepRow(rows.front() < CurrentTab().count ? rows.front() : CurrentTab().count - 1);
    Changed();
}

}  // namespace

int FindStep(const char* text, int from, bool down) {
    const int count = CurrentTab().count;
    for (int i = down ? from + 1 : from - 1; i >= 0 && i < count; i += down ? 1 : -1) {
        for (int column = 1; column < STEP_COLUMNS; column++) {
            char cell[CELL_TEXT];
            StepCellText(i, column, cell, sizeof cell);
            if (ContainsNoCase(cell, text)) return i;
        }
    }
    return -1;
}

int CommandUndo(HWND window) {
    if (ActiveEditor) CommitEditor();
    if (!CurrentTab().undo) {
        ShowMessageBox(window, "Undo not available", "System Message", MB_ICONINFORMATION);
        return 0;
    }
    const int steps = Undo();
    StatusPrintf(StatusBar, 0, "Undo performed for %d step(s)", steps);
    Changed();
    return 0;
}

int CommandRedo(HWND window) {
    if (ActiveEditor) CommitEditor();
    if (!CurrentTab().redo) {
        ShowMessageBox(window, "Redo not available", "System Message", MB_ICONINFORMATION);
        return 0;
    }
    const int steps = Redo();
    StatusPrintf(StatusBar, 0, "Redo performed for %d step(s)", steps);
    Changed();
    return 0;
}

int CommandCopy(HWND) {
    const std::vector<int> rows = SelectedSteps();
    if (rows.empty()) return 0;
    const char* text = WriteSteps(1, 0, 0);
    SetClipboardText(text, strlen(text));
    StatusPrintf(StatusBar, 0, "Copied %li XML record%s to the clipboard", (long)rows.size(),
                 rows.size() == 1 ? "" : "s");
    return 0;
}

int CommandCut(HWND window) {
    const std::vector<int> rows = SelectedSteps();
    if (rows.empty()) return 0;
    CommandCopy(window);
    DeleteSelected(rows);
    return 0;
}

int CommandPaste(HWND) {
    const std::string text = GetClipboardText();
    if (text.find("<step>") == std::string::npos) {
        StatusPrintf(StatusBar, 0, "No compatible XML record are in the clipboard");
        return 0;
    }
    StatusPrintf(StatusBar, 0, "Pasting records from XML format...");
    const int at = SelectedStepRow();
    const int pasted = PasteStepsText(text.c_str(), at, Stamp());
    StatusPrintf(StatusBar, 0, "Pasted %d XML record%s from the clipboard", pasted, pasted == 1 ? "" : "s");
    Changed();
    return 0;
}

int CommandDelete(HWND) {
    const std::vector<int> rows = SelectedSteps();
    if (!rows.empty()) DeleteSelected(rows);
    return 0;
}

int CommandSelectAll(HWND) {
    if (StepList) ListView_SetItemState(StepList, -1, LVIS_SELECTED, LVIS_SELECTED);
    return 0;
}

// Find asks for the text first; Find Next and Previous take it from "Find".
int CommandFind(HWND window, int id) {
    if (EmptyScript(window)) return 0;
    char text[260];
    SettingText("Find", text, sizeof text);
    if (id == CMD_FIND) {
        std::string typed = text;
        if (!InputBox(window, "Find", "Find what:", typed) || typed.empty()) return 0;
        WriteSetting(nullptr, typed.c_str(), 0, nullptr, ZR_ROOT "Find");
        CopyIntoN(text, sizeof text, typed.c_str());
    }
    if (!text[0]) return CommandFind(window, CMD_FIND);
    const bool down = id != CMD_FIND_PREVIOUS;
    const int found = FindStep(text, SelectedStepRow(), down);
    if (found < 0) {
        char message[400];
        FormatInto(message, "Cannot find \"%s\" while searching %s", text, down ? "down" : "up");
        ShowMessageBox(window, message, "Find", MB_ICONINFORMATION);
        return 0;
    }
    SelectStepRow(found);
    if (StepList) SetFocus(StepList);  // the found step in the list's own colours
    return 0;
}

int CommandGotoStep(HWND window) {
    char seed[16];
    FormatInto(seed, "%d", SelectedStepRow() + 1);
    std::string typed = SelectedStepRow() >= 0 ? seed : "";
    if (!InputBox(window, "Go to Step Number", "Enter Step Number:", typed)) return 0;
    const int number = ParseInt(typed.c_str());
    if (number >= 1 && number <= CurrentTab().count) SelectStepRow(number - 1);
    if (StepList) SetFocus(StepList);
    return 0;
}

int CommandBookmark(HWND, int id) {
    TabStore& t = CurrentTab();
    if (id == CMD_NEXT_BOOKMARK) {
        const int next = NextBookmark(SelectedStepRow());
        if (next < 0) MessageBeep(MB_OK);
        else SelectStepRow(next);
        return 0;
    }
    if (id == CMD_TOGGLE_BOOKMARK) {
        for (int row : SelectedSteps()) ToggleBookmark(row);
    } else {
        for (int i = 0; i < t.count; i++) t.steps[i].status &= ~STEP_BOOKMARK;
    }
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);  // the file keeps bookmarks too
    return 0;
}

int CommandNewStep(HWND) {
    RECT tree = {};
    if (ActionsTree) GetWindowRect(ActionsTree, &tree);
    ShowTip(MainWindow, 0, "\n    To add a new step, drag or double-click    \n    an action in the Actions tree", "",
            4000, tree.left + 20, tree.top + 40, 0);
    return 0;
}

int CommandEditProperties(HWND) {
    ShowPalette(PALETTE_PROPERTIES, true);
    FocusPropertyGrid();
    return 0;
}

int CommandViewXml(HWND window) {
    const std::vector<int> rows = SelectedSteps();
    if (rows.empty()) return 0;
    std::string text = WriteSteps(1, 0, 0);
    char title[64];
    if (rows.size() == 1) FormatInto(title, "View XML: Step #%d", rows[0] + 1);
    else FormatInto(title, "View XML: %li steps", (long)rows.size());
    InputBox(window, title, "", text, true);
    return 0;
}

int CommandMove(HWND window, int direction) {
    const std::vector<int> rows = SelectedSteps();
    if (rows.size() != 1) {
        ShowMessageBox(window,
                       "Only single rows can be moved.\n\nTo move multiple rows, first \"Cut\" them and then \"Paste\" "
                       "them in the new location.",
                       "System Message", MB_ICONINFORMATION);
        return 0;
    }
    const int from = rows[0], to = from + direction;
    TabStore& t = CurrentTab();
    if (to < 0 || to >= t.count) return 0;
    const int32_t stamp = Stamp();
    SaveUndo(stamp, from, UNDO_MODIFIED);
    SaveUndo(stamp, to, UNDO_MODIFIED);
    Step kept = t.steps[from];
    t.steps[from] = t.steps[to];
    t.steps[to] = kept;
    SelectStepRow(to);
    Changed();
    return 0;
}

int CommandIndent(HWND, int by) {
    const int32_t stamp = Stamp();
    for (int row : SelectedSteps()) {
        Step& s = CurrentTab().steps[row];
        if (s.indents + by < 0) continue;
        SaveUndo(stamp, row, UNDO_MODIFIED);
        s.indents += by;
    }
    Changed();
    return 0;
}

int CommandAutoIndent(HWND window) {
    if (EmptyScript(window)) return 0;
    const std::string warnings = AutoIndent(Stamp());
    Changed();
    if (!warnings.empty()) ShowMessageBox(window, warnings.c_str(), "Auto-Indent and Validate", MB_ICONWARNING);
    else StatusPrintf(StatusBar, 0, "Auto-Indent and Validate: no errors found");
    return 0;
}

int CommandToggle(HWND, int bit) {
    const int32_t stamp = Stamp();
    for (int row : SelectedSteps()) ToggleStepStatus(row, bit, stamp);
    Changed();
    return 0;
}

int CommandRemoveAll(HWND, int bit) {
    const int32_t stamp = Stamp();
    TabStore& t = CurrentTab();
    for (int i = 0; i < t.count; i++) {
        if (!(t.steps[i].status & bit)) continue;
        SaveUndo(stamp, i, UNDO_MODIFIED);
        t.steps[i].status &= ~bit;
    }
    Changed();
    return 0;
}

int CommandAddComment(HWND) {
    const int at = NewStep("Comment", SelectedStepRow());
    if (at >= 0) SelectStepRow(at);
    Changed();
    return 0;
}
