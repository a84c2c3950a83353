// The main window. In a hidden run it holds only the hidden actions tree that
// the script reader needs. Otherwise it builds the editor: the actions tree
// on the left, the step list in the middle, the properties palette on the
// right and the Output palette along the bottom, over the status bar. It owns
// no logic beyond that: every command calls the procedure that does the work.
#include "editor/mainwindow.h"
#include "base/text.h"

#include <commctrl.h>
#include <string.h>

#include "desktop/bufferedtype.h"
#include "desktop/playbackhook.h"
#include "desktop/recordings.h"
#include "desktop/windowmatch.h"
#include "desktop/windowstep.h"
#include "editor/actionstree.h"
#include "editor/commands.h"
#include "editor/debugcommands.h"
#include "editor/images.h"
#include "editor/metrics.h"
#include "editor/outputpalette.h"
#include "editor/panekeys.h"
#include "editor/propertygrid.h"
#include "editor/recordsteps.h"
#include "base/settings.h"
#include "editor/settingsdialogs.h"
#include "editor/steplist.h"
#include "editor/toolbar.h"
#include "editor/palettesplitter.h"
#include "editor/variablespalette.h"
#include "editor/windowspy.h"
#include "base/ui.h"
#include "editor/frame.h"
#include "editor/glyphfont.h"
#include "products/compile.h"
#include "products/report.h"
#include "resources/resource.h"
#include "run/debugrun.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "run/variables.h"
#include "script/catalogue.h"
#include "script/newstep.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "script/undo.h"
#include "system/fileassoc.h"

namespace {

HFONT OutputFont;
// Whether each palette is shown; kept in "Palettes\<name>\visible".
bool PaletteShown[PALETTE_COUNT] = {true, true, true, false};
const char* const kPaletteNames[PALETTE_COUNT] = {"Actions", "Properties", "Output", "Variables"};

void CreateTree(HWND window, bool visible) {
    ActionsTree = CreateWindowExA(visible ? WS_EX_CLIENTEDGE : 0, WC_TREEVIEWA, "",
                                  WS_CHILD | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_INFOTIP |
                                      (visible ? WS_VISIBLE : 0),
                                  0, 0, 10, 10, window, (HMENU)(INT_PTR)IDC_ACTIONS_TREE, nullptr, nullptr);
    if (visible && SharedImageList) TreeView_SetImageList(ActionsTree, SharedImageList, TVSIL_NORMAL);
    FillActionsTree(ActionsTree);
    CreateActionsFilter(window, visible);
}

// The open state of the 18 headings, as the user left them.
void TreeState(bool save) {
    int n = 0;
    for (HTREEITEM item = TreeView_GetRoot(ActionsTree); item && n < 18;
         item = TreeView_GetNextSibling(ActionsTree, item), n++) {
        if (save) {
            const bool open = TreeView_GetItemState(ActionsTree, item, TVIS_EXPANDED) & TVIS_EXPANDED;
            WriteSetting(nullptr, nullptr, open ? 1 : 0, nullptr, ZR_ROOT "Palettes\\Actions\\tree_%d", n);
        } else if (ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Actions\\tree_%d", n)) {
            TreeView_Expand(ActionsTree, item, TVE_EXPAND);
        }
    }
}

void MakeOutputFont(HWND window);

void CreateFrame(HWND window) {
    StatusBar = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | SBARS_SIZEGRIP, 0, 0, 0, 0, window, nullptr,
                                nullptr, nullptr);
    // -1 (or no setting) means shown.
    if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Palettes\\Statusbar\\visible") <= 0 ||
        SettingInt("Palettes\\Statusbar\\visible"))
        ShowWindow(StatusBar, SW_SHOW);
    ProgressBar = CreateWindowExA(0, PROGRESS_CLASSA, "", WS_CHILD, 0, 0, 0, 0, StatusBar, nullptr, nullptr,
                                  nullptr);
    SendMessageA(ProgressBar, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    // The edit control is always shown inside its palette: the palette's
    // visibility is the one the log's writes test.
    CreateOutputPalette(window);
    OutputEdit = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                                 WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_AUTOVSCROLL |
                                     ES_AUTOHSCROLL | ES_READONLY,
                                 0, 0, 0, 0, OutputPalette, (HMENU)(INT_PTR)IDC_OUTPUT_EDIT, nullptr, nullptr);
    SendMessageA(OutputEdit, EM_SETLIMITTEXT, 0, 0);
    WatchFindingClicks(OutputEdit);
    WatchOutputEdit(OutputEdit);
    MakeOutputFont(window);
}

// The Output font from its four settings; the default GUI font when they
// make none.
void MakeOutputFont(HWND window) {
    char face[64];
    SettingText("Palettes\\Output\\Font", face, sizeof face);
    int size = SettingInt("Palettes\\Output\\FontSize");
    HDC dc = GetDC(window);
    int height = -MulDiv(size > 0 ? size : 8, GetDeviceCaps(dc, LOGPIXELSY), 72);
    ReleaseDC(window, dc);
    HFONT made = CreateFontA(height, 0, 0, 0, SettingInt("Palettes\\Output\\Font_Weight"),
                             SettingInt("Palettes\\Output\\Font_Italic"), 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0,
                             face[0] ? face : "Courier New");
    SendMessageA(OutputEdit, WM_SETFONT, (WPARAM)(made ? made : GetStockObject(DEFAULT_GUI_FONT)), TRUE);
    GiveGlyphFont(OutputEdit);
    if (OutputFont) DeleteObject(OutputFont);
    OutputFont = made;
}

void ReadPaletteVisibility() {
    for (int p = 0; p < PALETTE_COUNT; p++) {
        if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Palettes\\%s\\visible", kPaletteNames[p]) > 0)
            PaletteShown[p] = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\%s\\visible",
                                          kPaletteNames[p]) != 0;
    }
}

HWND PaletteWindow(int palette) {
    switch (palette) {
    case PALETTE_ACTIONS: return ActionsTree;
    case PALETTE_PROPERTIES: return PropertyPalette;
    case PALETTE_OUTPUT: return OutputPalette;
    case PALETTE_VARIABLES: return VariablesPalette;
    }
    return nullptr;
}

void CheckMenus(HWND window) {
    HMENU menu = GetMenu(window);
    const UINT ids[PALETTE_COUNT] = {CMD_SHOW_ACTIONS, CMD_SHOW_PROPERTIES, CMD_SHOW_OUTPUT, CMD_SHOW_VARIABLES};
    for (int p = 0; p < PALETTE_COUNT; p++) CheckMenuItem(menu, ids[p], PaletteShown[p] ? MF_CHECKED : MF_UNCHECKED);
    CheckMenuItem(menu, CMD_KEEP_ON_TOP, SettingInt("OnTop") ? MF_CHECKED : MF_UNCHECKED);
    CheckMenuItem(menu, CMD_SHOW_STATUSBAR, StatusBarShown() ? MF_CHECKED : MF_UNCHECKED);
    CheckMenuItem(menu, CMD_SHOW_TOOLBAR, Toolbar && IsWindowVisible(Toolbar) ? MF_CHECKED : MF_UNCHECKED);
}

char DraggedAction[128];  // the action being dragged from the tree, or ""

bool TreeItemText(HTREEITEM item, char* name, int size) {
    TVITEMA tv = {};
    tv.mask = TVIF_TEXT;
    tv.hItem = item;
    tv.pszText = name;
    tv.cchTextMax = size;
    return item && SendMessageA(ActionsTree, TVM_GETITEMA, 0, (LPARAM)&tv);
}

void AddStepAt(const char* name, int position) {
    const int at = NewStep(name, position);
    if (at < 0) return;  // a heading
    SelectStepRow(at);
    UpdateTabTitle(ScriptStore.currentTab);
    RefreshPropertyGrid();
}

// A double click on an action in the tree adds a step after the selection.
void TreeActivated() {
    char name[128];
    if (!TreeItemText(TreeView_GetSelection(ActionsTree), name, sizeof name)) return;
    const int selected = SelectedStepRow();
    AddStepAt(name, selected >= 0 ? selected + 1 : -1);
}

// An action dropped on the step list goes in front of the row under the
// pointer, or at the end below the last row.
void DropAction(HWND window, LPARAM where) {
    char name[128];
    CopyIntoN(name, sizeof name, DraggedAction);
    DraggedAction[0] = 0;
    ReleaseCapture();
    SetCursor(LoadCursorA(nullptr, (LPCSTR)IDC_ARROW));
    // The button's place comes with the message, in this window's terms,
    // since the window holds the capture.
    POINT at = {(short)LOWORD(where), (short)HIWORD(where)};
    ClientToScreen(window, &at);
    if (!StepList || WindowFromPoint(at) != StepList) return;
    LVHITTESTINFO hit = {};
    hit.pt = at;
    ScreenToClient(StepList, &hit.pt);
    const int row = ListView_HitTest(StepList, &hit);
    AddStepAt(name, row >= 0 && row < CurrentTab().count ? row : -1);
}

// The Edit menu's Undo, the Window menu's tabs and the recent files follow
// the state of the moment.
void InitMenuPopup(HMENU popup, int place) {
    CheckMenuItem(popup, CMD_PAUSE_ON_FAILURE, PauseOnFailure() ? MF_CHECKED : MF_UNCHECKED);
    if (place == 1) {
        ModifyMenuA(popup, CMD_UNDO, MF_BYCOMMAND | MF_STRING, CMD_UNDO, UndoMenuText());
        EnableMenuItem(popup, CMD_UNDO, CurrentTab().undo ? MF_ENABLED : MF_GRAYED);
        ModifyMenuA(popup, CMD_REDO, MF_BYCOMMAND | MF_STRING, CMD_REDO, RedoMenuText());
        EnableMenuItem(popup, CMD_REDO, CurrentTab().redo ? MF_ENABLED : MF_GRAYED);
    } else if (place == 6) {
        while (GetMenuItemCount(popup) > 0) DeleteMenu(popup, 0, MF_BYPOSITION);
        for (int tab = 0; tab < TabsInUse(); tab++) {
            char name[MAX_PATH], item[MAX_PATH + 32];
            DisplayName(ScriptStore.tab[tab].path, name, sizeof name);
            FormatInto(item, "&%d %s\tCtrl+%d", tab + 1, name, tab + 1);
            AppendMenuA(popup, MF_STRING | (tab == ScriptStore.currentTab ? MF_CHECKED : 0), CMD_TAB1 + tab, item);
        }
    } else if (place == 12) {
        while (GetMenuItemCount(popup) > 0) DeleteMenu(popup, 0, MF_BYPOSITION);
        for (int n = 1; n <= 8; n++) {
            char path[MAX_PATH], item[MAX_PATH + 8];
            ReadSetting(nullptr, path, sizeof path, nullptr, ZR_ROOT "RecentFile%d", n);
            if (!path[0]) continue;
            FormatInto(item, "&%d %s", n, path);
            AppendMenuA(popup, MF_STRING, CMD_OPEN_RECENT1 + n - 1, item);
        }
        if (GetMenuItemCount(popup) == 0) AppendMenuA(popup, MF_STRING | MF_GRAYED, CMD_OPEN_RECENT1, "(no recent files)");
    }
}

// One command. Ids 1002 to 1247 are the table's; the others are tested in
// turn by the same switch.
LRESULT Command(HWND window, int id) {
    if (id >= CMD_OPEN_RECENT1 && id <= CMD_OPEN_RECENT8) return CommandOpenRecent(window, id - CMD_OPEN_RECENT1 + 1);
    if (id >= CMD_TAB1 && id <= CMD_TAB8) {
        ShowTab(id - CMD_TAB1);
        return 0;
    }
    switch (id) {
    // File
    case CMD_NEW: return CommandNew(window);
    case CMD_OPEN: return CommandOpen(window);
    case CMD_CLOSE: return CommandClose(window);
    case CMD_CLOSE_ALL: return CommandCloseAll(window);
    case CMD_SAVE: return CommandSave(window);
    case CMD_SAVE_AS: return CommandSaveAs(window);
    case CMD_SAVE_ALL: return CommandSaveAll(window);
    case CMD_XML_REPORT:
        if (ShowSettingsDialog(window, IDD_REPORT_OPTIONS) == IDOK) MakeReport();
        return 0;
    case CMD_CUSTOM_TAGS: return CommandCustomTags(window);
    case CMD_FILE_PROPERTIES: return CommandFileProperties(window);
    case CMD_EXIT: SendMessageA(window, WM_CLOSE, 0, 0); return 0;
    // Edit
    case CMD_UNDO: return CommandUndo(window);
    case CMD_REDO: return CommandRedo(window);
    case CMD_CUT: return CommandCut(window);
    case CMD_COPY: return CommandCopy(window);
    case CMD_PASTE: return CommandPaste(window);
    case CMD_DELETE: return CommandDelete(window);
    case CMD_SELECT_ALL: return CommandSelectAll(window);
    case CMD_FIND:
    case CMD_FIND_NEXT:
    case CMD_FIND_PREVIOUS: return CommandFind(window, id);
    case CMD_GOTO_STEP: return CommandGotoStep(window);
    case CMD_NEXT_BOOKMARK:
    case CMD_TOGGLE_BOOKMARK:
    case CMD_REMOVE_BOOKMARKS: return CommandBookmark(window, id);
    // View
    case CMD_KEEP_ON_TOP: return CommandKeepOnTop(window);
    case CMD_SHOW_TOOLBAR:
    case CMD_SHOW_STATUSBAR:
    case CMD_SHOW_ACTIONS:
    case CMD_SHOW_PROPERTIES:
    case CMD_SHOW_OUTPUT:
    case CMD_SHOW_VARIABLES: return CommandTogglePalette(window, id);
    case CMD_COLLAPSE_TREE: return CommandTree(window, false);
    case CMD_EXPAND_TREE: return CommandTree(window, true);
    case CMD_RESET_UI: return CommandResetLayout(window);
    // Step
    case CMD_NEW_STEP: return CommandNewStep(window);
    case CMD_EDIT_PROPERTIES: return CommandEditProperties(window);
    case CMD_VIEW_XML: return CommandViewXml(window);
    case CMD_MOVE_UP: return CommandMove(window, -1);
    case CMD_MOVE_DOWN: return CommandMove(window, 1);
    case CMD_INDENT: return CommandIndent(window, 1);
    case CMD_UNINDENT: return CommandIndent(window, -1);
    case CMD_AUTO_INDENT: return CommandAutoIndent(window);
    case CMD_SKIP: return CommandToggle(window, STEP_SKIP);
    case CMD_BREAKPOINT: return CommandToggle(window, STEP_BREAKPOINT);
    case CMD_REMOVE_SKIPS: return CommandRemoveAll(window, STEP_SKIP);
    case CMD_REMOVE_BREAKPOINTS: return CommandRemoveAll(window, STEP_BREAKPOINT);
    case CMD_ADD_COMMENT: return CommandAddComment(window);
    // Run
    case CMD_RUN:
    case CMD_RUN_FROM_HERE:
    case CMD_RUN_SINGLE_STEP:
        if (ActiveEditor) CommitEditor();
        // While a debug run is paused these are Continue, Run to Here and Step.
        if (ResumePausedRun(id)) return 0;
        // The step that runs (and the one after it) show in the list's
        // own colours, not the faint grey of a list without the focus.
        if (id != CMD_RUN && StepList && IsWindowVisible(StepList)) SetFocus(StepList);
        StartRun(ScriptStore.currentTab, window, id, 1);
        return 0;
    case CMD_DEBUG:
    case CMD_DEBUG_FROM_HERE:
    case CMD_DEBUG_CONTINUE:
    case CMD_DEBUG_STEP:
    case CMD_DEBUG_RUN_TO_HERE:
    case CMD_DEBUG_RETRY:
    case CMD_DEBUG_SKIP:
    case CMD_DEBUG_APPLY:
    case CMD_PAUSE_ON_FAILURE:
    case CMD_TRY_STEP:
        if (ActiveEditor) CommitEditor();
        return CommandDebug(window, id);
    case CMD_RECORD_STEPS: return CommandRecordSteps(window);
    // Tools
    case CMD_COMPILE_EXE:
        if (CompileAllowed() && ShowSettingsDialog(window, IDD_COMPILE_OPTIONS) == IDOK) CompileFromOptions();
        return 0;
    case CMD_OPEN_LOGFILE: return CommandOpenLogfile(window);
    case CMD_CHECK_SCRIPT: return CommandCheckScript(window);
    case CMD_TEST_IMAGE_STEP: return CommandTestImageStep(window);
    case CMD_WINDOW_SPY: return CommandWindowSpy(window);
    case CMD_DUMP_MAIN_WINDOWS: ShowWindowDump(window, DUMP_MAIN); return 0;
    case CMD_DUMP_POPUP_WINDOWS: ShowWindowDump(window, DUMP_FRAMED); return 0;
    case CMD_DUMP_ALL_WINDOWS: ShowWindowDump(window, 0); return 0;
    case CMD_OPTIONS: return CommandOptions(window);
    // Help
    case CMD_HELP:
    case CMD_SHORTCUTS:
    case CMD_STARTUP_OPTIONS:
    case CMD_ABOUT: return CommandHelp(window, id);
    case CMD_CHECK_UPDATES: return CommandCheckUpdates(window);
    }
    return 0;
}

// AutoUpdate 1 looks daily and 2 weekly; AutoUpdateLastCheck holds the
// time of the last look in seconds since 1970.
void CheckForUpdatesWhenDue(HWND window) {
    const int mode = SettingInt("AutoUpdate");
    if (mode != 1 && mode != 2) return;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const ULONGLONG seconds = ((((ULONGLONG)now.dwHighDateTime) << 32) | now.dwLowDateTime) / 10000000ULL -
                              11644473600ULL;
    const DWORD last = (DWORD)SettingInt("AutoUpdateLastCheck");
    const DWORD wait = mode == 1 ? 24 * 3600 : 7 * 24 * 3600;
    if ((DWORD)seconds - last < wait) return;
    WriteSetting(nullptr, nullptr, (int)(DWORD)seconds, nullptr, ZR_ROOT "AutoUpdateLastCheck");
    PostMessageA(window, WM_COMMAND, CMD_CHECK_UPDATES, 0);
}

void SaveLayout(HWND window) {
    for (int p = 0; p < PALETTE_COUNT; p++)
        WriteSetting(nullptr, nullptr, PaletteShown[p] ? 1 : 0, nullptr, ZR_ROOT "Palettes\\%s\\visible",
                     kPaletteNames[p]);
    if (StatusBar)  // -1 means shown
        WriteSetting(nullptr, nullptr, StatusBarShown() ? -1 : 0, nullptr, ZR_ROOT "Palettes\\Statusbar\\visible");
    // The headings' places are those of the whole tree, not of a filter's.
    if (ActionsFilter && GetWindowTextLengthA(ActionsFilter) > 0) {
        SetWindowTextA(ActionsFilter, "");
        ActionsFilterChanged();
    }
    TreeState(true);
    // The rectangle only of a window the user sees: a "/r" run keeps the one
    // saved before.
    if (!IsWindowVisible(window) || IsIconic(window)) return;
    RECT r;
    GetWindowRect(window, &r);
    WriteSetting(nullptr, nullptr, r.left, nullptr, ZR_ROOT "Left");
    WriteSetting(nullptr, nullptr, r.top, nullptr, ZR_ROOT "Top");
    WriteSetting(nullptr, nullptr, r.right, nullptr, ZR_ROOT "Right");
    WriteSetting(nullptr, nullptr, r.bottom, nullptr, ZR_ROOT "Bottom");
}

}  // namespace

void ShowPalette(int palette, bool show) {
    if (palette < 0 || palette >= PALETTE_COUNT) return;
    PaletteShown[palette] = show;
    if (HWND w = PaletteWindow(palette)) ShowWindow(w, show ? SW_SHOW : SW_HIDE);
    if (palette == PALETTE_ACTIONS && ActionsFilter) ShowWindow(ActionsFilter, show ? SW_SHOW : SW_HIDE);
    if (palette == PALETTE_VARIABLES && show) RefillVariablesList();
    if (MainWindow) {
        LayOutMainWindow(MainWindow);
        CheckMenus(MainWindow);
    }
}

bool PaletteVisible(int palette) { return palette >= 0 && palette < PALETTE_COUNT && PaletteShown[palette]; }

void LayOutMainWindow(HWND window) {
    RECT client;
    GetClientRect(window, &client);
    if (StatusBar && IsWindowVisible(StatusBar)) {
        SendMessageA(StatusBar, WM_SIZE, 0, 0);
        RECT bar;
        GetWindowRect(StatusBar, &bar);
        int width = client.right;
        int parts[3] = {width / 2, width * 3 / 4, -1};
        SendMessageA(StatusBar, SB_SETPARTS, 3, (LPARAM)parts);
        RECT last;
        SendMessageA(StatusBar, SB_GETRECT, 2, (LPARAM)&last);
        MoveWindow(ProgressBar, last.left + 2, last.top + 2, last.right - last.left - 4, last.bottom - last.top - 4,
                   TRUE);
        client.bottom -= bar.bottom - bar.top;
    }
    if (Toolbar && IsWindowVisible(Toolbar)) {
        SendMessageA(Toolbar, TB_AUTOSIZE, 0, 0);
        RECT bar;
        GetWindowRect(Toolbar, &bar);
        client.top += bar.bottom - bar.top;
    }
    // The palettes take their sides in one deferred pass; the step list
    // gets the rest.
    const int width = client.right - client.left, height = client.bottom - client.top;
    HDWP pass = BeginDeferWindowPos(6);
    // Along the bottom: the Output palette, with the Variables palette on
    // its right when both are shown.
    const bool output = OutputPalette && PaletteShown[PALETTE_OUTPUT];
    const bool variables = VariablesPalette && PaletteShown[PALETTE_VARIABLES];
    if (output || variables) {
        const int strip = height / 4;
        const int side = output ? width / 3 : width;
        if (variables)
            pass = DeferWindowPos(pass, VariablesPalette, nullptr, width - side, client.bottom - strip, side, strip,
                                  SWP_NOZORDER);
        if (output)
            pass = DeferWindowPos(pass, OutputPalette, nullptr, 0, client.bottom - strip, variables ? width - side - 2 : width,
                                  strip, SWP_NOZORDER);
        client.bottom -= strip + 2;
    }
    if (ActionsTree && PaletteShown[PALETTE_ACTIONS]) {
        // A fifth of the width, up to about 36 characters of the system font.
        const int most = FontUnitsX(146);
        const int tree = width / 5 < most ? width / 5 : most;
        // The filter box over the tree.
        const int box = ActionsFilter ? ActionsFilterHeight() : 0;
        if (ActionsFilter) pass = DeferWindowPos(pass, ActionsFilter, nullptr, 0, client.top, tree, box, SWP_NOZORDER);
        const int top = client.top + (box ? box + 2 : 0);
        pass = DeferWindowPos(pass, ActionsTree, nullptr, 0, top, tree, client.bottom - top, SWP_NOZORDER);
        client.left += tree + 2;
    }
    if (PropertyPalette && PaletteShown[PALETTE_PROPERTIES]) {
        const int palette = PropertyPaletteWidth(width);
        pass = DeferWindowPos(pass, PropertyPalette, nullptr, client.right - palette, client.top, palette,
                              client.bottom - client.top, SWP_NOZORDER);
        client.right -= palette + 2;
    }
    if (StepListDialog)
        pass = DeferWindowPos(pass, StepListDialog, nullptr, client.left, client.top, client.right - client.left,
                              client.bottom - client.top, SWP_NOZORDER);
    EndDeferWindowPos(pass);
}

void ReapplySettings(HWND window) {
    BuildIndentText();
    ReadListLook();
    if (StepList) {
        const DWORD styles = ListView_GetExtendedListViewStyle(StepList);
        ListView_SetExtendedListViewStyle(StepList, ListLook.gridStyle == 2 ? styles | LVS_EX_GRIDLINES
                                                                             : styles & ~LVS_EX_GRIDLINES);
        InvalidateRect(StepList, nullptr, TRUE);
    }
    if (OutputEdit) MakeOutputFont(window);
    SetWindowPos(window, SettingInt("OnTop") ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    CheckMenus(window);
    if (PropertyGrid) InvalidateRect(PropertyGrid, nullptr, TRUE);
}

bool AcceleratorApplies(const MSG& msg) {
    if (msg.message != WM_KEYDOWN && msg.message != WM_SYSKEYDOWN) return true;
    // The Variables list deletes a variable under Delete, not steps.
    if (msg.hwnd == VariablesList && msg.wParam == VK_DELETE) return false;
    // In the properties grid F2 opens the value, as in other grids.
    if (msg.hwnd == PropertyGrid && msg.wParam == VK_F2 && !(GetKeyState(VK_CONTROL) & 0x8000)) return false;
    char cls[16] = "";
    GetClassNameA(msg.hwnd, cls, sizeof cls);
    const bool typing = lstrcmpiA(cls, "Edit") == 0 || lstrcmpiA(cls, "ComboBox") == 0;
    if (!typing) return true;
    // In a text field the keys of editing text stay with the field.
    const bool control = (GetKeyState(VK_CONTROL) & 0x8000) != 0;
    switch (msg.wParam) {
    case VK_DELETE:
    case VK_INSERT:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_UP:
    case VK_DOWN: return false;
    case 'Z':
    case 'Y':
    case 'X':
    case 'C':
    case 'V':
    case 'A': return !control;
    }
    return true;
}

int RegisterMainWindowClass(HINSTANCE instance) {
    WNDCLASSEXA wc = {};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = MainWindowProc;
    wc.hInstance = instance;
    wc.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(IDI_MAIN));
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(INT_PTR)(COLOR_BTNFACE + 1);
    wc.lpszMenuName = MAKEINTRESOURCEA(IDR_MAINMENU);
    wc.lpszClassName = "ZantoRunner";
    return RegisterClassExA(&wc) ? 1 : 0;
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    // Creation: a hidden run builds only the actions tree.
    case WM_CREATE:
        MainWindow = window;
        if (LaunchFlags & LAUNCH_HIDDEN) {
            // The reader turns names into categories through the catalogue's
            // own index, which needs no tree window: a hidden run builds none.
            FillActionsTree(nullptr);
            return 0;
        }
        InstallEditorSeam();
        LoadSettings(0);
        if (!SettingInt("RunAtLeastOnce")) {
            char program[MAX_PATH];
            GetModuleFileNameA(nullptr, program, sizeof program);
            RegisterFileType(".zxm", program, "ZantoRunner", 0, VERB_OPEN | VERB_EDIT | VERB_RUN | VERB_RUN_VISIBLE);
            WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "RunAtLeastOnce");
        }
        BuildIndentText();
        ReadEditorMetrics();
        if (!SharedImageList) SharedImageList = CreateSharedImages();
        if (!SharedImageList)
            ShowMessageBox(window, "Unable to load the images", "ZantoRunner Error", MB_ICONERROR);
        ReadPaletteVisibility();
        CreateFrame(window);
        CreateTree(window, PaletteShown[PALETTE_ACTIONS]);
        TreeState(false);
        CreatePropertyPalette(window);
        if (!PaletteShown[PALETTE_PROPERTIES]) ShowWindow(PropertyPalette, SW_HIDE);
        if (PaletteShown[PALETTE_OUTPUT]) ShowWindow(OutputPalette, SW_SHOW);
        CreateToolbar(window);
        CreateVariablesPalette(window);
        if (PaletteShown[PALETTE_VARIABLES]) {
            ShowWindow(VariablesPalette, SW_SHOW);
            RefillVariablesList();
        }
        CreateStepListDialog(window);
        for (HWND pane : {ActionsFilter, ActionsTree, StepList, PropertyGrid, OutputEdit, VariablesList}) WatchPaneKeys(pane);
        if (SettingInt("OnTop")) SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
        CheckMenus(window);
        // A run from the command line is no moment to look for updates.
        if (!(LaunchFlags & LAUNCH_RUN)) CheckForUpdatesWhenDue(window);
        PostMessageA(window, WM_SIZE, 0, 0);
        return 0;

    // After a maximise, a restore or any resize every pane paints anew, with
    // its header and frame: a pane moved in the deferred pass may otherwise
    // keep parts of its old picture (blank columns, a header cut short).
    case WM_SIZE:
        LayOutMainWindow(window);
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
        return 0;

    // A new system font or scaling: the palettes take their sizes anew.
    case WM_SETTINGCHANGE:
        ReadEditorMetrics();
        LayOutMainWindow(window);
        break;

    // The gap between the step list and the properties palette is a splitter.
    case WM_SETCURSOR:
    case WM_LBUTTONDOWN:
    case WM_MOUSEMOVE: {
        LRESULT result = 0;
        if (SplitterMessage(window, message, wParam, lParam, &result, LayOutMainWindow)) return result;
        break;
    }

    case WM_INITMENUPOPUP:
        if (!HIWORD(lParam)) InitMenuPopup((HMENU)wParam, LOWORD(lParam));
        return 0;

    case WM_NOTIFY: {
        NMHDR* header = (NMHDR*)lParam;
        if (header->hwndFrom == ActionsTree && (header->code == NM_DBLCLK || header->code == NM_RETURN)) {
            TreeActivated();
            return 1;
        }
        // A right click on an action: the Favorites menu.
        if (header->hwndFrom == ActionsTree && header->code == NM_RCLICK) {
            const DWORD at = GetMessagePos();
            const POINT where = {(short)LOWORD(at), (short)HIWORD(at)};
            ShowActionsTreeMenu(&where);
            return 1;
        }
        if (header->code == TTN_GETDISPINFOA && header->hwndFrom == (HWND)SendMessageA(Toolbar, TB_GETTOOLTIPS, 0, 0)) {
            ((NMTTDISPINFOA*)lParam)->lpszText = (char*)ToolbarTip((int)header->idFrom);
            return 0;
        }
        // The tooltip of an item: what the action (or the category) is for.
        if (header->hwndFrom == ActionsTree && header->code == TVN_GETINFOTIPA) {
            NMTVGETINFOTIPA* tip = (NMTVGETINFOTIPA*)lParam;
            char name[FIELD_SHORT];
            if (tip->pszText && tip->cchTextMax > 0 && TreeItemText(tip->hItem, name, sizeof name))
                CopyIntoN(tip->pszText, (size_t)tip->cchTextMax, ActionSummary(name));
            return 0;
        }
        if (header->hwndFrom == ActionsTree && header->code == TVN_BEGINDRAGA &&
            TreeItemText(((NMTREEVIEWA*)lParam)->itemNew.hItem, DraggedAction, sizeof DraggedAction)) {
            SetCapture(window);
            SetCursor(LoadCursorA(nullptr, (LPCSTR)IDC_CROSS));
        }
        break;
    }

    case WM_LBUTTONUP: {
        LRESULT result = 0;
        if (SplitterMessage(window, message, wParam, lParam, &result, LayOutMainWindow)) return result;
        if (DraggedAction[0] && GetCapture() == window) DropAction(window, lParam);
        return 0;
    }

    case WM_CAPTURECHANGED: {
        LRESULT result = 0;
        SplitterMessage(window, message, wParam, lParam, &result, LayOutMainWindow);
        DraggedAction[0] = 0;
        return 0;
    }

    // The menu key (or Shift+F10) in the tree.
    case WM_CONTEXTMENU:
        if ((HWND)wParam == ActionsTree) {
            const POINT where = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
            ShowActionsTreeMenu(lParam == (LPARAM)-1 ? nullptr : &where);
            return 0;
        }
        break;

    case WM_COMMAND:
        if (ActionsFilter && (HWND)lParam == ActionsFilter) {
            if (HIWORD(wParam) == EN_CHANGE) ActionsFilterChanged();
            return 0;
        }
        if (LOWORD(wParam) == CMD_STOP) {
            StopRun(RunningTab, window, wParam);
            return 0;
        }
        if (lParam && (HWND)lParam != Toolbar) break;  // a control's notification, not a command
        {
            const LRESULT result = Command(window, LOWORD(wParam));
            UpdateToolbar();
            return result;
        }

    // The run thread's timers: the forced stop asks whether to end a step
    // that does not return; the hooks must be installed on this thread.
    case WM_TIMER:
        switch (wParam) {
        case TIMER_FORCE_STOP:
            KillTimer(window, TIMER_FORCE_STOP);
            SendMessageA(window, WM_COMMAND, MAKEWPARAM(CMD_STOP, 1), 0);
            return 0;
        case TIMER_BUFFERED_TYPING:
            StartBufferedHook(window);
            return 0;
        case TIMER_PLAYBACK:
            StartRecordingPlayback(window);
            return 0;
        case TIMER_HOOK_CHECK:
            CheckPlaybackHook(window);
            return 0;
        case TIMER_HOOK_WATCH:
            return 0;  // repeats while a hook plays; the playback's end kills it
        case TIMER_TRY_STEP:
            TryStepTimer(window);
            return 0;
        }
        break;

    case WM_RUN_PAUSED:
        ShowRunPause(window, wParam, lParam);
        return 0;

    // Commit an open editor, offer to save each changed tab, keep the layout.
    case WM_CLOSE:
        if (ActiveEditor) CommitEditor();
        if (!(LaunchFlags & LAUNCH_HIDDEN)) {
            if (Command(window, CMD_CLOSE_ALL) == -1) return 0;
            SaveLayout(window);
        }
        break;

    case WM_DESTROY:
        if (RunThread) {
            // Never killed (see StopRun): let go, and the process ends
            // without waiting for it.
            LetRunThreadGo();
            CloseHandle(RunThread);
            RunThread = nullptr;
        }
        ReleasePlaybackHook();
        FreeRecordings();
        if (SettingInt("ResetUserVariables") && OnlyInstance()) ResetAllUserVariables();
        // A run thread let go may still read its steps on its way out (an
        // "Exit ZantoRunner" closes this window under it): the process ends
        // without freeing them, as it ends without waiting for that thread.
        for (int tab = 0; tab < MAX_TABS && !AnyRunThreadLetGo(); tab++) {
            ScriptStore.currentTab = tab;
            FreeUndo(tab);
            FreeSteps(tab);
        }
        ScriptStore.currentTab = 0;
        if (OutputFont) DeleteObject(OutputFont);
        OutputFont = nullptr;
        MainWindow = OutputEdit = StatusBar = ProgressBar = ActionsTree = ActionsFilter = nullptr;
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}
