// The editor driven as a user drives it: a real main window under the test
// display, its commands sent as the menu sends them, and its grids read back.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "desktop/recordings.h"
#include "editor/commands.h"
#include "editor/mainwindow.h"
#include "editor/metrics.h"
#include "editor/propertygrid.h"
#include "base/settings.h"
#include "editor/steplist.h"
#include "base/ui.h"
#include "resources/resource.h"
#include "run/clipboard.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/properties.h"
#include "script/step.h"
#include "script/undo.h"
#include "editor_support.h"
#include "test_support.h"

namespace {

std::string GridText(HWND list, int row, int column) {
    char text[260] = "";
    ListView_GetItemText(list, row, column, text, sizeof text);
    return text;
}

std::string StatusText() {
    char text[512] = "";
    SendMessageA(StatusBar, SB_GETTEXTA, 0, (LPARAM)text);
    return text;
}

std::string ScriptFile(const char* name, const std::string& steps) {
    const std::string path = TempFolder() + "\\" + name;
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + steps + "</ZantoRunner>\r\n");
    return path;
}

const char kThreeSteps[] =
    "<step><action>Label</action><text>start</text></step>\r\n"
    "<step><action>Comment</action><comment>a note</comment></step>\r\n"
    "<step><action>Delay</action><timeout>2</timeout></step>\r\n";

TEST(Editor, OpensAFileIntoTheGridAndReportsIt) {
    Editor e;
    ASSERT_TRUE(StepList && TabStrip && PropertyGrid);
    const std::string path = ScriptFile("three.zxm", kThreeSteps);
    EXPECT_EQ(OpenFileInTab(path.c_str()), 3);
    Pump();
    EXPECT_EQ(ListView_GetItemCount(StepList), 3);
    EXPECT_EQ(GridText(StepList, 0, 0), "  1");
    EXPECT_EQ(GridText(StepList, 0, 1), "Label");
    EXPECT_EQ(GridText(StepList, 2, 3), "2");
    EXPECT_NE(StatusText().find("\"three.zxm\" successfully opened  ("), std::string::npos) << StatusText();
    EXPECT_NE(StatusText().find(" bytes, 3 steps)"), std::string::npos);
    EXPECT_EQ(WindowText(e.window), "three.zxm - ZantoRunner");
    EXPECT_EQ(TabCtrl_GetItemCount(TabStrip), 1);  // the empty untitled tab was reused
    char recent[MAX_PATH];
    SettingText("RecentFile1", recent, sizeof recent);
    EXPECT_STREQ(recent, path.c_str());

    // Opening it again asks whether to revert; No keeps the tab.
    NextBoxAnswer = IDNO;
    EXPECT_EQ(OpenFileInTab(path.c_str()), 0);
    ASSERT_FALSE(SeenBoxes.empty());
    EXPECT_NE(SeenBoxes.back().text.find("is already open."), std::string::npos);
}

TEST(Editor, TabsStopAtEightAndCloseMovesTheOthersDown) {
    Editor e;
    for (int i = 1; i < MAX_TABS; i++) e.Command(CMD_NEW);
    EXPECT_EQ(TabsInUse(), MAX_TABS);
    EXPECT_EQ(TabCtrl_GetItemCount(TabStrip), MAX_TABS);
    e.Command(CMD_NEW);
    ASSERT_FALSE(SeenBoxes.empty());
    EXPECT_EQ(SeenBoxes.back().text,
              "A maximum of 8 files may be opened in ZantoRunner.\n\nPlease close a file before opening another one.");
    EXPECT_EQ(SeenBoxes.back().title, "ZantoRunner Warning");

    // A tab without changes closes unasked, and the tabs to its right move down.
    const std::string path = ScriptFile("keep.zxm", kThreeSteps);
    lstrcpyA(ScriptStore.tab[3].path, "(Untitled) 3");
    ShowTab(2);
    e.Command(CMD_CLOSE);
    EXPECT_EQ(TabsInUse(), MAX_TABS - 1);
    EXPECT_STREQ(ScriptStore.tab[2].path, "(Untitled) 3");

    // A tab with changes asks first, when PromptSave is on.
    OpenFileInTab(path.c_str());
    const int tab = ScriptStore.currentTab;
    const int open = TabsInUse();
    SelectStepRow(0);
    e.Command(CMD_DELETE);
    EXPECT_EQ(CurrentTab().count, 2);
    EXPECT_EQ(WindowText(e.window), "* keep.zxm - ZantoRunner");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "PromptSave");
    NextBoxAnswer = IDCANCEL;
    const size_t boxes = SeenBoxes.size();
    e.Command(CMD_CLOSE);
    ASSERT_EQ(SeenBoxes.size(), boxes + 1);
    EXPECT_EQ(SeenBoxes.back().text, "Save changes to keep.zxm?");
    EXPECT_EQ(SeenBoxes.back().title, "Confirm Action");
    EXPECT_EQ(TabsInUse(), open);  // cancelled: the tab stays

    // With PromptSave off, Close drops the changes unasked.
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "PromptSave");
    ShowTab(tab);
    e.Command(CMD_CLOSE);
    EXPECT_EQ(TabsInUse(), open - 1);
    EXPECT_EQ(SeenBoxes.size(), boxes + 1);
    for (int i = 0; i < TabsInUse(); i++) EXPECT_STRNE(ScriptStore.tab[i].path, path.c_str());
}

TEST(Editor, EditCommandsWorkOnTheSelectionAndUndoInOneGo) {
    Editor e;
    OpenFileInTab(ScriptFile("edit.zxm", kThreeSteps).c_str());
    e.Command(CMD_UNDO);
    ASSERT_FALSE(SeenBoxes.empty());
    EXPECT_EQ(SeenBoxes.back().text, "Undo not available");
    EXPECT_EQ(SeenBoxes.back().title, "System Message");

    // Copy two rows, paste them in front of the first.
    SelectStepRow(0);
    ListView_SetItemState(StepList, 2, LVIS_SELECTED, LVIS_SELECTED);
    e.Command(CMD_COPY);
    EXPECT_EQ(StatusText(), "Copied 2 XML records to the clipboard");
    EXPECT_NE(GetClipboardText().find("<action>Delay</action>"), std::string::npos);
    SelectStepRow(0);
    e.Command(CMD_PASTE);
    EXPECT_EQ(StatusText(), "Pasted 2 XML records from the clipboard");
    ASSERT_EQ(CurrentTab().count, 5);
    EXPECT_STREQ(CurrentTab().steps[1].action, "Delay");
    EXPECT_EQ(ListView_GetItemCount(StepList), 5);

    // Moving needs exactly one row.
    ListView_SetItemState(StepList, -1, LVIS_SELECTED, LVIS_SELECTED);
    e.Command(CMD_MOVE_DOWN);
    EXPECT_NE(SeenBoxes.back().text.find("Only single rows can be moved."), std::string::npos);
    SelectStepRow(0);
    e.Command(CMD_MOVE_DOWN);
    EXPECT_STREQ(CurrentTab().steps[1].action, "Label");
    EXPECT_EQ(SelectedStepRow(), 1);

    e.Command(CMD_INDENT);
    e.Command(CMD_SKIP);
    EXPECT_EQ(CurrentTab().steps[1].indents, 1);
    EXPECT_EQ(CurrentTab().steps[1].status, STEP_SKIP);
    EXPECT_EQ(GridText(StepList, 1, 1), std::string(IndentText) + "Label");

    // The Edit menu names what Undo will do.
    HMENU edit = GetSubMenu(GetMenu(e.window), 1);
    SendMessageA(e.window, WM_INITMENUPOPUP, (WPARAM)edit, 1);
    char item[64];
    GetMenuStringA(edit, CMD_UNDO, item, sizeof item, MF_BYCOMMAND);
    EXPECT_STREQ(item, "Undo Modify Step\tCtrl+Z");

    while (CurrentTab().undo) e.Command(CMD_UNDO);
    ASSERT_EQ(CurrentTab().count, 3);
    EXPECT_STREQ(CurrentTab().steps[0].action, "Label");
    EXPECT_EQ(CurrentTab().steps[0].indents, 0);
    EXPECT_EQ(WindowText(e.window), "edit.zxm - ZantoRunner");  // nothing left to undo: unchanged
}

TEST(Editor, FindAndGotoSelectSteps) {
    Editor e;
    e.Command(CMD_FIND_NEXT);
    EXPECT_EQ(SeenBoxes.back().text, "The file is empty.\n\nPlease add commands before using this feature.");
    OpenFileInTab(ScriptFile("find.zxm", kThreeSteps).c_str());
    EXPECT_EQ(FindStep("NOTE", -1, true), 1);  // the comment column counts, in any case
    EXPECT_EQ(FindStep("delay", 2, true), -1);
    EXPECT_EQ(FindStep("label", 2, false), 0);
    WriteSetting(nullptr, "delay", 0, nullptr, ZR_ROOT "Find");
    SelectStepRow(0);
    e.Command(CMD_FIND_NEXT);
    EXPECT_EQ(SelectedStepRow(), 2);
    e.Command(CMD_FIND_NEXT);
    EXPECT_EQ(SeenBoxes.back().text, "Cannot find \"delay\" while searching down");
    e.Command(CMD_FIND_PREVIOUS);
    EXPECT_EQ(SeenBoxes.back().text, "Cannot find \"delay\" while searching up");

    SelectStepRow(1);
    e.Command(CMD_TOGGLE_BOOKMARK);
    SelectStepRow(2);
    e.Command(CMD_NEXT_BOOKMARK);
    EXPECT_EQ(SelectedStepRow(), 1);  // wraps to the top
    e.Command(CMD_REMOVE_BOOKMARKS);
    EXPECT_EQ(CurrentTab().steps[1].status, 0);
}

TEST(Editor, RecentFilesMenuFollowsTheSettings) {
    Editor e;
    HMENU file = GetSubMenu(GetMenu(e.window), 0);
    HMENU recent = GetSubMenu(file, 12);
    ASSERT_TRUE(recent);
    SendMessageA(e.window, WM_INITMENUPOPUP, (WPARAM)recent, 12);
    char item[MAX_PATH];
    GetMenuStringA(recent, 0, item, sizeof item, MF_BYPOSITION);
    EXPECT_STREQ(item, "(no recent files)");
    EXPECT_TRUE(GetMenuState(recent, 0, MF_BYPOSITION) & MF_GRAYED);
    AddRecentFile("C:\\one.zxm");
    AddRecentFile("C:\\two.zxm");
    AddRecentFile("C:\\one.zxm");  // back to the top, once
    SendMessageA(e.window, WM_INITMENUPOPUP, (WPARAM)recent, 12);
    EXPECT_EQ(GetMenuItemCount(recent), 2);
    GetMenuStringA(recent, 0, item, sizeof item, MF_BYPOSITION);
    EXPECT_STREQ(item, "&1 C:\\one.zxm");

    HMENU tabs = GetSubMenu(GetMenu(e.window), 6);
    e.Command(CMD_NEW);
    SendMessageA(e.window, WM_INITMENUPOPUP, (WPARAM)tabs, 6);
    EXPECT_EQ(GetMenuItemCount(tabs), 2);
    GetMenuStringA(tabs, 1, item, sizeof item, MF_BYPOSITION);
    EXPECT_STREQ(item, "&2 (Untitled)\tCtrl+2");
}

// Selects a step as a click in the grid does, and returns its property row.
int SelectRow(int step, const char* label) {
    SelectStepRow(step);
    Pump();
    RefreshPropertyGrid();
    return FindProperty(label, 0);
}

TEST(Editor, PropertiesPaletteEditsTheStepThroughItsEditor) {
    Editor e;
    const std::string longText(80, 'x');
    OpenFileInTab(ScriptFile("props.zxm",
                             "<step><action>Type</action><text>" + longText +
                                 "</text></step><step><action>Check Email: POP3</action></step>")
                      .c_str());
    const int text = SelectRow(0, "Text");
    ASSERT_EQ(ListView_GetItemCount(PropertyGrid), PropertyRowCount);
    EXPECT_EQ(GridText(PropertyGrid, text, 0), "Text");
    EXPECT_EQ(GridText(PropertyGrid, text, 1), longText.substr(0, 61));  // cut in the grid

    OpenEditor(text);
    ASSERT_TRUE(ActiveEditor);
    EXPECT_EQ(WindowText(ActiveEditor), longText);  // whole in the editor
    SetWindowTextA(ActiveEditor, "typed {Enter}");
    CommitEditor();
    EXPECT_FALSE(ActiveEditor);
    EXPECT_STREQ(CurrentTab().steps[0].text, "typed {Enter}");
    EXPECT_EQ(UndoCount(), 1);
    EXPECT_EQ(GridText(StepList, 0, 2), "typed {Enter}");

    // A password reaches the step shifted, and shows as stars.
    const int password = SelectRow(1, "Password");
    OpenEditor(password);
    SetWindowTextA(ActiveEditor, "abc");
    CommitEditor();
    EXPECT_STREQ(CurrentTab().steps[1].value[1], "def");
    EXPECT_EQ(GridText(PropertyGrid, password, 1), "***");
    // Opening it and leaving shifts the stored text once more; that is kept.
    OpenEditor(password);
    EXPECT_EQ(WindowText(ActiveEditor), "def");
    CommitEditor();
    EXPECT_STREQ(CurrentTab().steps[1].value[1], "ghi");

    // A choice of "On Failure" relabels the row after it.
    const int onfail = FindProperty("On Failure", 0);
    OpenEditor(onfail);
    const LRESULT jump = SendMessageA(ActiveEditor, CB_FINDSTRINGEXACT, (WPARAM)-1, (LPARAM) "Jump to Label");
    ASSERT_NE(jump, CB_ERR);
    SendMessageA(ActiveEditor, CB_SETCURSEL, (WPARAM)jump, 0);
    CommitEditor();
    EXPECT_STREQ(CurrentTab().steps[1].onfail, "Jump to Label");
    EXPECT_EQ(GridText(PropertyGrid, onfail + 1, 0), "On Failure: Label Name");

    // A locked row opens nothing; a check row toggles its switch.
    PropertyTable[0].locked = 1;
    OpenEditor(0);
    EXPECT_FALSE(ActiveEditor);
    const int log = FindProperty("On Failure: Write to Log", 0);
    ToggleCheckRow(log);
    EXPECT_EQ(CurrentTab().steps[1].onfail_log, 1);
    EXPECT_EQ(PropertyTable[log].checked, 1);
}

TEST(Editor, CheckRowsAddAndRemoveTheirWord) {
    Editor e;
    OpenFileInTab(ScriptFile("check.zxm", "<step><action>Activate</action><options>Title</options></step>").c_str());
    SelectRow(0, "");
    ToggleCheckRow(FindProperty("Match Class", 0));
    EXPECT_STREQ(CurrentTab().steps[0].options, "Title, Class");
    ToggleCheckRow(FindProperty("Match Title", 0));
    EXPECT_STREQ(CurrentTab().steps[0].options, "Class");
}

TEST(Editor, ClosingCommitsAnOpenEditorAndKeepsTheLayout) {
    WriteSetting(nullptr, nullptr, 3, nullptr, ZR_ROOT "Palettes\\MainList\\Column2_order");
    {
        Editor e;
        int order[STEP_COLUMNS] = {};
        ListView_GetColumnOrderArray(StepList, STEP_COLUMNS, order);
        EXPECT_EQ(order[3], 1);  // the "Action" column at the place its setting gives
        const std::string path = ScriptFile("close.zxm", kThreeSteps);
        OpenFileInTab(path.c_str());
        const int comment = SelectRow(0, "Comment");
        OpenEditor(comment);
        SetWindowTextA(ActiveEditor, "kept at close");
        // The commit at WM_CLOSE comes before the tabs close, so the tab has
        // a change to ask about.
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "PromptSave");
        NextBoxAnswer = IDNO;
        SendMessageA(e.window, WM_CLOSE, 0, 0);
        Pump();
        ASSERT_FALSE(SeenBoxes.empty());
        EXPECT_EQ(SeenBoxes.back().text, "Save changes to close.zxm?");
        EXPECT_FALSE(IsWindow(e.window));
        EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\visible"), 1);
        EXPECT_GT(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Right"), 0);
    }
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\MainList\\Column2_order"), 3);
}

TEST(Editor, CommentRowsArePaintedAsOneBand) {
    WriteSetting(nullptr, nullptr, 0x00FF00, nullptr, ZR_ROOT "Colors\\CommentFill");
    Editor e;
    OpenFileInTab(ScriptFile("bands.zxm", kThreeSteps).c_str());
    SelectStepRow(-1);
    RedrawWindow(StepList, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(CommentRowCount, 0);  // the table is cleared after each paint
    RECT row;
    ListView_GetItemRect(StepList, 1, &row, LVIR_BOUNDS);
    HDC dc = GetDC(StepList);
    const COLORREF inBand = GetPixel(dc, 250, (row.top + row.bottom) / 2);
    const COLORREF plain = GetPixel(dc, 250, (row.bottom + row.bottom + 16) / 2);
    ReleaseDC(StepList, dc);
    EXPECT_EQ(inBand, RGB(0, 255, 0));
    EXPECT_NE(plain, RGB(0, 255, 0));
}

}  // namespace

namespace {

bool HasButton(const char* caption) { return FindWindowExA(PropertyGrid, nullptr, "BUTTON", caption) != nullptr; }

TEST(Editor, EditorsCarryTheButtonsOfTheirRow) {
    Editor e;
    OpenFileInTab(ScriptFile("buttons.zxm", "<step><action>Start</action></step>").c_str());
    OpenEditor(SelectRow(0, "Program/Document"));
    ASSERT_TRUE(ActiveEditor);
    EXPECT_TRUE(HasButton("..."));  // Choose File
    EXPECT_TRUE(HasButton("P"));    // Programs
    EXPECT_TRUE(HasButton("%"));    // System Variables, beside any text editor
    OpenEditor(FindProperty("Timeout", 0));
    EXPECT_FALSE(HasButton("P"));  // the old editor's buttons went with it
    EXPECT_TRUE(HasButton("Wait Forever"));
    DiscardEditor();
    EXPECT_FALSE(HasButton("Wait Forever"));
}

TEST(Editor, InnerCheckBoxStoresItsValue) {
    Editor e;
    OpenFileInTab(ScriptFile("inner.zxm", "<step><action>Start</action><timeout>5</timeout></step>").c_str());
    OpenEditor(SelectRow(0, "Timeout"));
    HWND box = FindWindowExA(PropertyGrid, nullptr, "BUTTON", "Wait Forever");
    ASSERT_TRUE(box);
    EXPECT_EQ(SendMessageA(box, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    SendMessageA(box, BM_SETCHECK, BST_CHECKED, 0);
    CommitEditor();
    EXPECT_STREQ(CurrentTab().steps[0].timeout, "-1");
    OpenEditor(FindProperty("Timeout", 0));
    box = FindWindowExA(PropertyGrid, nullptr, "BUTTON", "Wait Forever");
    EXPECT_EQ(SendMessageA(box, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_FALSE(IsWindowEnabled(ActiveEditor));  // the box stands for the value
}

}  // namespace

namespace {

TEST(Editor, RecordingRowFollowsTheRecorder) {
    Editor e;
    OpenFileInTab(ScriptFile("rec.zxm", "<step><action>Recording</action></step>").c_str());
    const int row = SelectRow(0, "Record Actions");
    ASSERT_EQ(PropertyTable[row].rowType, ROW_RECORDING);
    EXPECT_EQ(GridText(PropertyGrid, row, 1), "              Nothing Recorded");
    PlayRecordingFromPalette(e.window);
    ASSERT_FALSE(SeenBoxes.empty());
    EXPECT_EQ(SeenBoxes.back().text, "Nothing recorded.\n\nPress the \"Start Recording\" button to record events.");

    StartRecording(e.window);
    EXPECT_EQ(PropertyTable[row].state, 1);
    StartRecording(e.window);  // pressed again while recording: it stops
    EXPECT_EQ(PropertyTable[row].state, 2);
    EXPECT_FALSE(PlaybackHook);
    EXPECT_STREQ(CurrentTab().steps[0].value[1], "0");  // the first slot
}

// Save As onto a file that another tab has open would leave two tabs on one
// file, each overwriting the other's saves: refused with words, by any
// spelling of that file, and the file keeps its bytes. Opening it again by
// another spelling finds its tab.
TEST(Editor, SaveAsOverAnotherTabsFileIsRefused) {
    Editor e;
    const std::string first = ScriptFile("first.zxm", kThreeSteps);
    const std::string folder = first.substr(0, first.rfind('\\'));
    const std::string second = folder + "\\second.zxm";
    WriteWholeFile(second, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner><step><action>Label</action><text>two</text></step></ZantoRunner>");
    const std::string before = ReadWholeFile(first);
    ASSERT_EQ(OpenFileInTab(first.c_str()), 3);
    ASSERT_EQ(OpenFileInTab(second.c_str()), 1);
    const int tab = ScriptStore.currentTab;
    std::string upper = first;
    for (char& c : upper) c = (char)toupper((unsigned char)c);
    char shortName[MAX_PATH] = "";
    GetShortPathNameA(first.c_str(), shortName, sizeof shortName);
    const std::string spellings[] = {
        first, upper, folder + "\\.\\first.zxm", folder + "\\sub\\..\\first.zxm", folder + "\\\\first.zxm",
        folder + "/first.zxm", folder + "\\first", folder + "\\first.zxm.", shortName,
    };
    for (const std::string& spelling : spellings) {
        SeenBoxes.clear();
        EXPECT_EQ(SaveCurrentTabAs(e.window, spelling.c_str()), -1) << spelling;
        ASSERT_EQ(SeenBoxes.size(), 1u) << spelling;
        EXPECT_EQ(SeenBoxes[0].title, "ZantoRunner Error");
        EXPECT_NE(SeenBoxes[0].text.find("That file is open in another tab (first.zxm)."), std::string::npos)
            << SeenBoxes[0].text;
        EXPECT_EQ(ReadWholeFile(first), before) << spelling;
        EXPECT_STREQ(ScriptStore.tab[tab].path, second.c_str());
    }

    // Its own file, by another spelling, is saved after the usual question.
    SeenBoxes.clear();
    NextBoxAnswer = IDYES;
    EXPECT_EQ(SaveCurrentTabAs(e.window, (folder + "\\.\\second.zxm").c_str()), 0);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_NE(SeenBoxes[0].text.find("already exists"), std::string::npos);
    EXPECT_NE(ReadWholeFile(second).find("<text>two</text>"), std::string::npos);

    // The first file by another spelling is the tab it is open in.
    const int tabs = TabsInUse();
    NextBoxAnswer = IDNO;
    SeenBoxes.clear();
    EXPECT_EQ(OpenFileInTab((folder + "\\.\\FIRST.zxm").c_str()), 0);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_NE(SeenBoxes[0].text.find("is already open."), std::string::npos);
    EXPECT_EQ(TabsInUse(), tabs);
}

// A click as the user makes it: the pointer on the middle of the window, the
// left button down and up.
void ClickOn(HWND window) {
    RECT r;
    GetWindowRect(window, &r);
    const POINT at = {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
    MouseAt(at, 0);
    Pump();
    MouseAt(at, MOUSEEVENTF_LEFTDOWN);
    MouseAt(at, MOUSEEVENTF_LEFTUP);
    Pump();
}

void Press(BYTE vk) {
    keybd_event(vk, (BYTE)MapVirtualKeyA(vk, 0), 0, 0);
    keybd_event(vk, (BYTE)MapVirtualKeyA(vk, 0), KEYEVENTF_KEYUP, 0);
    Pump();
}

// Record in the palette: a click into another window's edit box and two
// keys, ended by the stop key. Pressing Play brings the editor forward over
// that window; the playback still types into the box it was recorded on.
TEST(Editor, ThePalettesPlayReplaysTheRecordingIntoItsWindow) {
    Editor e;
    // Over the step list, clear of the palette on the right.
    HWND target = CreateWindowExA(0, "STATIC", "Target", WS_POPUP | WS_CAPTION | WS_VISIBLE, 300, 250, 250, 120,
                                  nullptr, nullptr, nullptr, nullptr);
    HWND box = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "", WS_CHILD | WS_VISIBLE, 10, 10, 200, 30, target, nullptr,
                               nullptr, nullptr);
    ASSERT_TRUE(target && box);
    OpenFileInTab(ScriptFile("replay.zxm", "<step><action>Recording</action></step>").c_str());
    const int row = SelectRow(0, "Record Actions");
    ASSERT_EQ(PropertyTable[row].rowType, ROW_RECORDING);
    OpenEditor(row);
    HWND record = FindWindowExA(PropertyGrid, nullptr, "Button", "Record");
    HWND play = FindWindowExA(PropertyGrid, nullptr, "Button", "Play");
    ASSERT_TRUE(record && play);

    ClickOn(record);
    ASSERT_EQ(PropertyTable[row].state, 1);
    SetForegroundWindow(target);
    Pump();
    ClickOn(box);
    Press('H');
    Press('I');
    Press((BYTE)StopKey);
    ASSERT_TRUE(PumpUntil([&] { return PropertyTable[row].state == 2; }, 3000));
    EXPECT_EQ(WindowText(box), "hi");
    EXPECT_GE(atoi(CurrentTab().steps[0].value[0]), 5);  // a click and two keys, down and up

    // The stop key's "pressed since the last look" stays set for whoever
    // looks next: a run of a later test would take it for a stop.
    GetAsyncKeyState((BYTE)StopKey);
    SetWindowTextA(box, "");
    play = FindWindowExA(PropertyGrid, nullptr, "Button", "Play");
    ASSERT_TRUE(play);
    // The editor covers the box when Play is pressed, as it does for a user.
    SetForegroundWindow(e.window);
    ASSERT_TRUE(PumpUntil([&] { return GetForegroundWindow() == e.window; }, 3000));
    ClickOn(play);
    EXPECT_TRUE(PumpUntil([&] { return WindowText(box) == "hi"; }, 10000)) << "the box holds \"" << WindowText(box) << "\"";
    EXPECT_TRUE(PumpUntil([&] { return !HookRunning && !PlaybackHook; }, 5000));
    DestroyWindow(target);
}

TEST(Editor, ActionsFromTheTreeBecomeSteps) {
    Editor e;
    OpenFileInTab(ScriptFile("tree.zxm", kThreeSteps).c_str());
    HTREEITEM delay = TreeItem(TreeView_GetRoot(ActionsTree), "Delay");
    ASSERT_TRUE(delay);

    // A double click adds after the selection.
    SelectStepRow(0);
    TreeView_SelectItem(ActionsTree, delay);
    NMHDR click = {ActionsTree, IDC_ACTIONS_TREE, (UINT)NM_DBLCLK};
    SendMessageA(e.window, WM_NOTIFY, IDC_ACTIONS_TREE, (LPARAM)&click);
    ASSERT_EQ(CurrentTab().count, 4);
    EXPECT_STREQ(CurrentTab().steps[1].action, "Delay");
    EXPECT_EQ(SelectedStepRow(), 1);

    // A drop goes in front of the row under the pointer.
    HTREEITEM label = TreeItem(TreeView_GetRoot(ActionsTree), "Label");
    NMTREEVIEWA drag = {};
    drag.hdr = {ActionsTree, IDC_ACTIONS_TREE, (UINT)TVN_BEGINDRAGA};
    drag.itemNew.hItem = label;
    SendMessageA(e.window, WM_NOTIFY, IDC_ACTIONS_TREE, (LPARAM)&drag);
    RECT row;
    ListView_GetItemRect(StepList, 3, &row, LVIR_BOUNDS);
    // Near the row's left end: its columns may reach past the list's edge.
    POINT at = {row.left + 20, (row.top + row.bottom) / 2};
    MapWindowPoints(StepList, e.window, &at, 1);
    SendMessageA(e.window, WM_LBUTTONUP, 0, MAKELPARAM(at.x, at.y));
    Pump();
    ASSERT_EQ(CurrentTab().count, 5);
    EXPECT_STREQ(CurrentTab().steps[3].action, "Label");
    EXPECT_STREQ(CurrentTab().steps[4].action, "Delay");
    EXPECT_NE(GetCapture(), e.window);
}

}  // namespace

// The step whose text the properties palette shows, from its rows.
bool PaletteShows(const char* text) {
    for (int row = 0; row < PropertyRowCount; row++) {
        char cell[300] = "";
        PropertyCellText(row, cell, sizeof cell);
        if (strcmp(cell, text) == 0) return true;
    }
    return false;
}

TEST(Editor, AfterUndoingAPasteTheListAndThePaletteNameTheSameStep) {
    Editor e;
    const std::string path = ScriptFile("five.zxm",
                                        "<step><action>Label</action><text>one</text></step>\r\n"
                                        "<step><action>Label</action><text>two</text></step>\r\n"
                                        "<step><action>Label</action><text>three</text></step>\r\n"
                                        "<step><action>Label</action><text>four</text></step>\r\n"
                                        "<step><action>Label</action><text>five</text></step>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 5);
    Pump();
    SelectStepRow(2);
    for (int row = 3; row <= 4; row++) ListView_SetItemState(StepList, row, LVIS_SELECTED, LVIS_SELECTED);
    Pump();
    e.Command(CMD_COPY);
    SelectStepRow(4);
    Pump();
    e.Command(CMD_PASTE);
    ASSERT_EQ(CurrentTab().count, 8);
    e.Command(CMD_UNDO);
    ASSERT_EQ(CurrentTab().count, 5);
    // One row highlighted, the same the tab holds as selected, and the
    // palette shows that step.
    ASSERT_EQ(ListView_GetSelectedCount(StepList), 1u);
    const int shown = ListView_GetNextItem(StepList, -1, LVNI_SELECTED);
    EXPECT_EQ(shown, CurrentTab().selected);
    ASSERT_GE(shown, 0);
    EXPECT_TRUE(PaletteShows(CurrentTab().steps[shown].text)) << shown;
}

TEST(Editor, ShowStatusbarIsCheckedWhileTheBarIsShownAndItsChoiceIsKept) {
    Editor e;
    HMENU menu = GetMenu(e.window);
    ASSERT_TRUE(IsWindowVisible(StatusBar));
    EXPECT_TRUE(GetMenuState(menu, CMD_SHOW_STATUSBAR, MF_BYCOMMAND) & MF_CHECKED);
    e.Command(CMD_SHOW_STATUSBAR);
    EXPECT_FALSE(IsWindowVisible(StatusBar));
    EXPECT_FALSE(GetMenuState(menu, CMD_SHOW_STATUSBAR, MF_BYCOMMAND) & MF_CHECKED);
    EXPECT_EQ(SettingInt("Palettes\\Statusbar\\visible"), 0);
    e.Command(CMD_SHOW_STATUSBAR);
    EXPECT_TRUE(IsWindowVisible(StatusBar));
    // Closing keeps what the user sees, whatever was written before.
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Statusbar\\visible");
    SendMessageA(e.window, WM_CLOSE, 0, 0);
    Pump();
    EXPECT_EQ(SettingInt("Palettes\\Statusbar\\visible"), -1);
}

TEST(Editor, ARecordingRowShowsTheNumberNotTheField) {
    Editor e;
    // A field of 251 characters that reads as 1: formatting the field itself
    // would overrun the row's text.
    const std::string path = ScriptFile("recorded.zxm", "<step><action>Recording</action><value1>1" +
                                                            std::string(250, 'A') + "</value1></step>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 1);
    SelectStepRow(0);
    Pump();
    RefreshPropertyGrid();
    const int row = FindProperty("Record Actions", 0);
    ASSERT_EQ(PropertyTable[row].rowType, ROW_RECORDING);
    char cell[300] = "";
    PropertyCellText(row, cell, sizeof cell);
    EXPECT_STREQ(cell, "              1 Events Recorded");
}

TEST(Editor, CheckScriptListsFindingsAndADoubleClickSelectsTheStep) {
    Editor e;
    const std::string path = ScriptFile("broken.zxm",
                                        "<step><action>Label</action><text>top</text></step>\r\n"
                                        "<step><action>Comment</action></step>\r\n"
                                        "<step><action>NEXT LOOP</action></step>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 3);
    SelectStepRow(0);
    e.Command(CMD_CHECK_SCRIPT);
    const std::string output = WindowText(OutputEdit);
    const std::string finding =
        "broken.zxm(3): problem: 'NEXT LOOP' with no loop Start before it: the run jumps back to step 1 for ever";
    const size_t at = output.find(finding);
    ASSERT_NE(at, std::string::npos) << output;
    EXPECT_NE(output.find("1 problem(s), 0 warning(s)"), std::string::npos);
    // A double-click on the finding's line selects step 3.
    const LRESULT point = SendMessageA(OutputEdit, EM_POSFROMCHAR, (WPARAM)(at + 2), 0);
    SendMessageA(OutputEdit, WM_LBUTTONDBLCLK, MK_LBUTTON, point);
    Pump();
    EXPECT_EQ(SelectedStepRow(), 2) << point << " visible " << IsWindowVisible(OutputEdit);
    EXPECT_EQ(CurrentTab().selected, 2);
}

TEST(FindingStep, ReadsTheStepOfACheckerLine) {
    struct Case {
        const char* line;
        int step;
    } cases[] = {
        {"C:\\a(b)\\job.zxm(12): problem: x", 12}, {"job.zxm(3): warning: '%x%' reads", 3},
        {"job.zxm(0): problem: cannot load", 0},   {"[STEP 4]: Write to Log", 0},
        {"job.zxm(): problem: x", 0},               {"", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(FindingStep(c.line), c.step) << c.line;
}

namespace {

// The help viewer's frame showing the program's help file, or null.
HWND HelpViewer() { return FindWindowA("HH Parent", "ZantoRunner Help"); }

void CloseHelpViewers() {
    while (HWND viewer = HelpViewer()) {
        DWORD process = 0;
        GetWindowThreadProcessId(viewer, &process);
        HANDLE handle = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, process);
        if (!handle) break;
        TerminateProcess(handle, 0);
        WaitForSingleObject(handle, 5000);
        CloseHandle(handle);
    }
}

}  // namespace

TEST(HelpTopic, NamesTheCategoryPageAndTheAction) {
    struct Case {
        int category;
        const char* action;
        const char* topic;
    } cases[] = {
        {CAT_MOUSE, "Move", "mouse.htm#move"},
        {CAT_WINDOWS, "Press Button/Control", "windowscontrols.htm#pressbuttoncontrol"},
        {CAT_INTERNET, "Send Email: \"mailto\"", "internet.htm#sendemailmailto"},
        {CAT_RUN_PROGRAM, "Start Browser", "runprogram.htm#startbrowser"},  // in the Internet heading, category 2
        {CAT_FLOW, "Start 'For' Loop", "loopsflow.htm#startforloop"},
        {0, "Unknown", "index.htm"},
    };
    for (const Case& c : cases) {
        char topic[160];
        HelpTopicOfAction(c.category, c.action, topic, sizeof topic);
        EXPECT_STREQ(topic, c.topic) << c.action;
    }
}

TEST(Editor, HelpOpensTheHelpFileBesideTheProgramOrSaysItIsMissing) {
    // The test program's help file is "zr_unit_tests.chm" beside it: the
    // build's ZantoRunner.chm, one folder up.
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, sizeof exe);
    std::string folder(exe, strrchr(exe, '\\'));
    const std::string help = folder + "\\zr_unit_tests.chm";
    DeleteFileA(help.c_str());
    CloseHelpViewers();
    Editor editor;
    editor.Command(CMD_HELP);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Unable to find the help file.\n\nPlease reinstall to correct this problem.");

    ASSERT_TRUE(CopyFileA((folder + "\\..\\ZantoRunner.chm").c_str(), help.c_str(), FALSE));
    editor.Command(CMD_HELP);
    HWND viewer = nullptr;
    for (DWORD start = GetTickCount(); !viewer && GetTickCount() - start < 20000;) {
        viewer = HelpViewer();
        if (!viewer) MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
    }
    EXPECT_NE(viewer, nullptr) << "no help viewer showed the help file";
    EXPECT_EQ(SeenBoxes.size(), 1u);
    CloseHelpViewers();
    DeleteFileA(help.c_str());
}

// A screenshot of the actions tree: every heading shows a picture of its own,
// drawn on the tree's background where the picture is transparent.
TEST(Editor, TheTreeShowsAPictureForEachCategory) {
    Editor editor;
    ASSERT_NE(ActionsTree, nullptr);
    CommandTree(editor.window, false);  // headings only, one a row
    SetForegroundWindow(editor.window);
    RedrawWindow(ActionsTree, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    Pump();
    RECT client;
    GetClientRect(ActionsTree, &client);
    const int w = client.right, h = client.bottom;
    ASSERT_GT(w, 40);
    HDC window = GetDC(ActionsTree);
    HDC memory = CreateCompatibleDC(window);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = -h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    HBITMAP shot = CreateDIBSection(window, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, shot);
    BitBlt(memory, 0, 0, w, h, window, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    const DWORD* pixel = (const DWORD*)bits;
    auto at = [&](int x, int y) { return RGB((pixel[y * w + x] >> 16) & 255, (pixel[y * w + x] >> 8) & 255, pixel[y * w + x] & 255); };
    // Kept for a person to look at.
    std::vector<COLORREF> all;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) all.push_back(at(x, y));
    SaveBmp(TempFolder() + "\\actions-tree.bmp", w, h, all);

    const COLORREF background = (COLORREF)SendMessageA(ActionsTree, TVM_GETBKCOLOR, 0, 0) == (COLORREF)-1
                                    ? GetSysColor(COLOR_WINDOW)
                                    : (COLORREF)SendMessageA(ActionsTree, TVM_GETBKCOLOR, 0, 0);
    std::vector<std::string> pictures;
    int headings = 0;
    for (HTREEITEM item = TreeView_GetRoot(ActionsTree); item; item = TreeView_GetNextSibling(ActionsTree, item)) {
        headings++;
        RECT text;
        ASSERT_TRUE(TreeView_GetItemRect(ActionsTree, item, &text, TRUE));
        // The picture stands left of the label: what is not background there.
        std::string picture;
        int drawn = 0, clear = 0;
        for (int y = text.top; y < text.bottom && y < h; y++)
            for (int x = text.left - 20 > 0 ? text.left - 20 : 0; x < text.left; x++) {
                const COLORREF c = at(x, y);
                if (c == background) {
                    clear++;
                    picture += '.';
                } else {
                    drawn++;
                    picture += std::to_string(c) + ",";
                }
            }
        EXPECT_GT(drawn, 30) << "heading " << headings << " shows no picture";
        EXPECT_GT(clear, 20) << "heading " << headings << " has no transparent background";
        pictures.push_back(picture);
    }
    EXPECT_EQ(headings, 17);  // Favorites and the sixteen categories
    for (size_t i = 0; i < pictures.size(); i++)
        for (size_t j = i + 1; j < pictures.size(); j++)
            EXPECT_TRUE(pictures[i] != pictures[j]) << "headings " << i + 1 << " and " << j + 1 << " look alike";
    DeleteObject(shot);
    DeleteDC(memory);
    ReleaseDC(ActionsTree, window);
}

// Hovering an item of the tree tells what the action is for.
TEST(Editor, TheTreeTellsWhatAnActionDoes) {
    Editor editor;
    HTREEITEM item = TreeItem(TreeView_GetRoot(ActionsTree), "Type");
    ASSERT_TRUE(item);
    char tip[40] = "";
    NMTVGETINFOTIPA info = {};
    info.hdr.hwndFrom = ActionsTree;
    info.hdr.idFrom = GetDlgCtrlID(ActionsTree);
    info.hdr.code = TVN_GETINFOTIPA;
    info.pszText = tip;
    info.cchTextMax = sizeof tip;  // shorter than the summary: cut, never overrun
    info.hItem = item;
    SendMessageA(editor.window, WM_NOTIFY, info.hdr.idFrom, (LPARAM)&info);
    EXPECT_EQ(std::string(tip), std::string(ActionSummary("Type")).substr(0, sizeof tip - 1));
    EXPECT_GT(strlen(ActionSummary("Type")), sizeof tip);
    EXPECT_STREQ(ActionSummary("no such action"), "");
}

// The palettes' widths come from the system font: a larger font gives a
// wider tree and properties palette on the same window, up to a fifth and a
// half of it.
TEST(Editor, ThePalettesAreSizedByTheSystemFont) {
    Editor editor;
    SetWindowPos(editor.window, nullptr, 0, 0, 1270, 700, SWP_NOZORDER | SWP_NOMOVE);
    std::vector<std::pair<int, int>> seen;
    for (int pixels : {-8, -12}) {
        HFONT font = CreateFontA(pixels, 0, 0, 0, FW_NORMAL, 0, 0, 0, ANSI_CHARSET, 0, 0, 0, 0, "Tahoma");
        ReadEditorMetrics(font);
        LayOutMainWindow(editor.window);
        RECT client, tree, palette;
        GetClientRect(editor.window, &client);
        GetWindowRect(ActionsTree, &tree);
        GetWindowRect(PropertyPalette, &palette);
        const int width = client.right;
        EXPECT_EQ(tree.right - tree.left, std::min(width / 5, FontUnitsX(146))) << pixels;
        // The properties palette: room for its labels and about 30 characters
        // of value, up to half the window.
        EXPECT_GE(palette.right - palette.left, std::min(width / 2, FontUnitsX(220))) << pixels;
        EXPECT_LE(palette.right - palette.left, width / 2) << pixels;
        seen.push_back({tree.right - tree.left, palette.right - palette.left});
        DeleteObject(font);
    }
    ReadEditorMetrics();
    EXPECT_GT(seen[1].first, seen[0].first);
    EXPECT_GT(seen[1].second, seen[0].second);
}

// Tools > "Test Image Step" runs the selected step's search on the screen
// as it is: a block painted on a window of the test is found, and a block
// on no screen names its closest place; the screen comes back framed in a
// picture window.
TEST(Editor, TestImageStepSearchesTheScreenAndShowsItFramed) {
    Editor e;
    const int left = 300, top = 200, size = 12;
    auto colour = [](int i, int j) { return RGB(250 - i * 7, 13 + j * 9, 90 + i * j); };
    WNDCLASSA wc = {};
    wc.lpfnWndProc = [](HWND w, UINT m, WPARAM wp, LPARAM lp) -> LRESULT {
        if (m == WM_PAINT) {
            PAINTSTRUCT ps;
            HDC dc = BeginPaint(w, &ps);
            for (int j = 0; j < 12; j++)
                for (int i = 0; i < 12; i++) SetPixel(dc, i, j, RGB(250 - i * 7, 13 + j * 9, 90 + i * j));
            EndPaint(w, &ps);
            return 0;
        }
        return DefWindowProcA(w, m, wp, lp);
    };
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZantoTestImageBlock";
    RegisterClassA(&wc);
    HWND block = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, wc.lpszClassName, "", WS_POPUP | WS_VISIBLE, left,
                                 top, size, size, nullptr, nullptr, wc.hInstance, nullptr);
    UpdateWindow(block);
    std::vector<COLORREF> present, absent;
    for (int j = 0; j < size; j++)
        for (int i = 0; i < size; i++) {
            present.push_back(colour(i, j));
            absent.push_back(i < 6 ? RGB(1, 2, 3) : colour(i, j));  // half of it on no screen
        }
    const std::string dir = LogIntoNewFolder("log.txt");
    SaveBmp(dir + "\\present.bmp", size, size, present);
    SaveBmp(dir + "\\absent.bmp", size, size, absent);
    const std::string path = ScriptFile("images.zxm",
                                        "<step><action>Move to Image</action><text>" + dir +
                                            "\\present.bmp</text></step>\r\n"
                                            "<step><action>IF Image is Visible</action><text>" + dir +
                                            "\\absent.bmp</text><value4>90</value4></step>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 2);
    struct Case {
        int step;
        const char* line;
    } cases[] = {
        {0, "\t*Found at (300, 200)  Scale: 100%  Score: 100.0%"},
        {1, "\t*Not found: best candidate at (300, 200)  Scale: 100%  Score: 50.0%"},
    };
    for (const Case& c : cases) {
        SetWindowTextA(OutputEdit, "");
        SelectStepRow(c.step);
        Pump();
        e.Command(CMD_TEST_IMAGE_STEP);
        Pump();
        const std::string output = WindowText(OutputEdit);
        EXPECT_NE(output.find("Test Image Step [Step " + std::to_string(c.step + 1) + "]"), std::string::npos) << output;
        EXPECT_NE(output.find(c.line), std::string::npos) << output;
        HWND shown = FindWindowA("ZantoPopupImage", nullptr);
        EXPECT_TRUE(shown && IsWindowVisible(shown)) << "no framed screen shown";
        if (shown) DestroyWindow(shown);
    }
    DestroyWindow(block);
}
