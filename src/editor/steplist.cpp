// The step list: a report-view list with data on demand, so that a script of
// any length costs the list nothing. Every cell is formed when it is drawn.
#include "editor/steplist.h"
#include "base/text.h"

#include <commctrl.h>
#include <string.h>

#include "editor/commands.h"
#include "editor/debugcommands.h"
#include "editor/images.h"
#include "editor/propertygrid.h"
#include "base/settings.h"
#include "base/ui.h"
#include "editor/palettes.h"
#include "editor/glyphfont.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "base/handles.h"
#include "base/words.h"

CommentRow CommentRows[MAX_COMMENT_ROWS];
int CommentRowCount;
StepListLook ListLook;
char IndentText[32];
HWND StepListDialog;
HWND TabStrip;

namespace {

struct Column {
    const char* heading;
    int width;
};
const Column kColumns[STEP_COLUMNS] = {
    {"Step", 50}, {"Action", 120}, {"Command Text", 240}, {"Timeout", 60}, {"Options", 100}, {"Comment", 200},
};

WNDPROC OriginalListProc;
WNDPROC OriginalTabProc;
HFONT HintFont;
HFONT ItalicFont;
// What the property grid was last built for.
int ShownStep = -2;
int ShownCount = -2;

int IndentLevels(const Step& s) { return s.indents < 0 ? 0 : s.indents > 64 ? 64 : s.indents; }

// Appends `text` to `out` (of `size`), keeping the cut at `size` - 1.
void Append(char* out, int size, const char* text) {
    const int used = (int)strlen(out);
    if (used < size - 1) CopyIntoN(out + used, (size_t)(size - used), text);
}

void AppendPrefix(char* out, int size, const Step& s) {
    for (int level = IndentLevels(s); level > 0; level--) Append(out, size, IndentText);
}

// Column 2: the command text, by category.
void CommandText(const Step& s, char* out, int size) {
    out[0] = 0;
    if (s.category == CAT_FILES) CopyIntoN(out, (size_t)size, s.value[0]);
    if (s.category == CAT_SYSTEM && s.output_value[0]) {
        CopyIntoN(out, (size_t)(size < 64 ? size : 64), s.output_value);
        if (ContainsNoCase(s.action, "Set Var")) {
            const int limit = size < 127 ? size : 127;
            Append(out, limit, " = ");
            Append(out, limit, TextOf(s.text));
        } else if (ContainsNoCase(s.action, "Increm")) {
            Append(out, size, "++");
        } else if (ContainsNoCase(s.action, "Decrem")) {
            Append(out, size, "--");
        }
    } else if (TextOf(s.text)[0]) {
        CopyIntoN(out, (size_t)size, s.text);
    }
    for (char* p = out; *p; p++)
        if ((unsigned char)*p < ' ') *p = ' ';
}

void SelectTabRelative(int delta) {
    const int count = TabsInUse();
    if (count < 2) return;
    ShowTab((ScriptStore.currentTab + delta + count) % count);
}

// Ctrl+Page Up and Page Down (and Ctrl+Tab in the grid) move between tabs.
bool TabKey(WPARAM key) {
    if (!(GetKeyState(VK_CONTROL) & 0x8000)) return false;
    if (key == VK_PRIOR) SelectTabRelative(-1);
    else if (key == VK_NEXT) SelectTabRelative(1);
    else return false;
    return true;
}

void PaintHint(HWND list) {
    RECT area;
    GetClientRect(list, &area);
    ScopedGetDC dc(list);
    InflateRect(&area, -20, -40);
    if (area.bottom - area.top > 60) area.bottom = area.top + 60;
    AutoDeleteObject frame(CreatePen(PS_DOT, 1, RGB(0, 0, 255)));
    HGDIOBJ oldPen = SelectObject(dc.dc, frame.obj);
    HGDIOBJ oldBrush = SelectObject(dc.dc, GetStockObject(NULL_BRUSH));
    Rectangle(dc.dc, area.left, area.top, area.right, area.bottom);
    SelectObject(dc.dc, oldBrush);
    SelectObject(dc.dc, oldPen);
    HGDIOBJ oldFont = SelectObject(dc.dc, HintFont ? HintFont : GetStockObject(DEFAULT_GUI_FONT));
    SetTextColor(dc.dc, RGB(0, 0, 255));
    SetBkMode(dc.dc, TRANSPARENT);
    DrawTextA(dc.dc, "To add new commands, drag and drop from the Actions List", -1, &area,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
    SelectObject(dc.dc, oldFont);
}

// Comment rows are one band from the second column to the grid's right edge.
void PaintCommentBands(HWND list) {
    ScopedGetDC dc(list);
    HGDIOBJ oldFont = SelectObject(dc.dc, ListLook.commentItalic && ItalicFont ? ItalicFont
                                                                                : (HGDIOBJ)SendMessageA(list, WM_GETFONT, 0, 0));
    SetBkMode(dc.dc, TRANSPARENT);
    TabStore& t = CurrentTab();
    for (int i = 0; i < CommentRowCount; i++) {
        RECT band = CommentRows[i].rect;
        band.left = 20;
        const int height = band.bottom - band.top;
        if (band.right <= 19 || height <= 0 || height >= 40) continue;
        const int index = CommentRows[i].index;
        if (index < 0 || index >= t.count) continue;
        const bool selected = ListView_GetItemState(list, index, LVIS_SELECTED) & LVIS_SELECTED;
        COLORREF fill = ListLook.commentFill ? ListLook.commentFill : 0xC0FFFF;
        AutoDeleteObject brush(CreateSolidBrush(selected ? GetSysColor(COLOR_HIGHLIGHT) : fill));
        FillRect(dc.dc, &band, (HBRUSH)brush.obj);
        SetTextColor(dc.dc, selected ? GetSysColor(COLOR_HIGHLIGHTTEXT) : ListLook.commentText);
        char text[CELL_TEXT] = "";
        AppendPrefix(text, sizeof text, t.steps[index]);
        Append(text, sizeof text, TextOf(t.steps[index].comment));
        for (char* p = text; *p; p++)
            if (*p == '\r' || *p == '\n') *p = ' ';
        band.left += 7;
        DrawTextA(dc.dc, text, -1, &band, DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    SelectObject(dc.dc, oldFont);
    CommentRowCount = 0;
}

LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    // Paint the control, then the hint or the comment bands over it.
    case WM_PAINT: {
        LRESULT r = CallWindowProcA(OriginalListProc, list, message, wParam, lParam);
        if (CurrentTab().count == 0) {
            if (SettingInt("ShowTips")) PaintHint(list);
            CommentRowCount = 0;
        } else {
            PaintCommentBands(list);
        }
        return r;
    }
    case WM_GETDLGCODE:
        if (lParam && ((MSG*)lParam)->message == WM_KEYDOWN &&
            (((MSG*)lParam)->wParam == VK_RETURN || ((MSG*)lParam)->wParam == VK_TAB))
            return DLGC_WANTMESSAGE;
        break;
    // Enter edits the step; Ctrl moves between tabs or scrolls by 10 pixels.
    case WM_KEYDOWN:
        if (wParam == VK_RETURN) {
            SendMessageA(MainWindow, WM_COMMAND, CMD_EDIT_PROPERTIES, 0);
            return 0;
        }
        if (TabKey(wParam)) return 0;
        if (GetKeyState(VK_CONTROL) & 0x8000) {
            if (wParam == VK_TAB) {
                SelectTabRelative(GetKeyState(VK_SHIFT) & 0x8000 ? -1 : 1);
                return 0;
            }
            if (wParam == VK_UP || wParam == VK_DOWN) {
                ListView_Scroll(list, 0, wParam == VK_UP ? -10 : 10);
                return 0;
            }
        }
        break;
    }
    return CallWindowProcA(OriginalListProc, list, message, wParam, lParam);
}

LRESULT CALLBACK TabProc(HWND tabs, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN && TabKey(wParam)) return 0;
    return CallWindowProcA(OriginalTabProc, tabs, message, wParam, lParam);
}

void AddColumns(HWND list) {
    int order[STEP_COLUMNS];
    bool ordered = false;
    for (int i = 0; i < STEP_COLUMNS; i++) {
        int width = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\MainList\\Column%d", i + 1);
        LVCOLUMNA c = {};
        c.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        c.pszText = (char*)kColumns[i].heading;
        c.cx = width > 0 ? width : kColumns[i].width;
        c.iSubItem = i;
        SendMessageA(list, LVM_INSERTCOLUMNA, (WPARAM)i, (LPARAM)&c);
        order[i] = i;
    }
    // An absent order setting leaves a column in its own place.
    for (int i = 0; i < STEP_COLUMNS; i++) {
        if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Palettes\\MainList\\Column%d_order", i + 1) <= 0)
            continue;
        int at = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\MainList\\Column%d_order", i + 1);
        if (at < 0 || at >= STEP_COLUMNS) continue;
        for (int j = 0; j < STEP_COLUMNS; j++)
            if (order[j] == i) order[j] = order[at];
        order[at] = i;
        ordered = true;
    }
    if (ordered) ListView_SetColumnOrderArray(list, STEP_COLUMNS, order);
}

void SaveColumns(HWND list) {
    int order[STEP_COLUMNS];
    if (!ListView_GetColumnOrderArray(list, STEP_COLUMNS, order)) return;
    for (int position = 0; position < STEP_COLUMNS; position++) {
        const int column = order[position];
        WriteSetting(nullptr, nullptr, ListView_GetColumnWidth(list, column), nullptr,
                     ZR_ROOT "Palettes\\MainList\\Column%d", column + 1);
        WriteSetting(nullptr, nullptr, position, nullptr, ZR_ROOT "Palettes\\MainList\\Column%d_order", column + 1);
    }
}

void MakeFonts(HWND list) {
    GiveGlyphFont(list);
    LOGFONTA face = {};
    HFONT listFont = (HFONT)SendMessageA(list, WM_GETFONT, 0, 0);
    GetObjectA(listFont ? (HGDIOBJ)listFont : GetStockObject(DEFAULT_GUI_FONT), sizeof face, &face);
    face.lfItalic = TRUE;
    ItalicFont = CreateFontIndirectA(&face);
    face.lfItalic = FALSE;
    face.lfWeight = FW_BOLD;
    CopyInto(face.lfFaceName, "Verdana");
    HintFont = CreateFontIndirectA(&face);
}

// The row's colours, asked for before each cell is painted.
LRESULT CustomDraw(NMLVCUSTOMDRAW* draw) {
    switch (draw->nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
        return CDRF_NOTIFYITEMDRAW;
    // A comment row is stored for the band once per row, with the rectangle
    // of its comment cell (one pixel shorter), even when that column is
    // scrolled out of view and never painted.
    case CDDS_ITEMPREPAINT: {
        const int row = (int)draw->nmcd.dwItemSpec;
        TabStore& t = CurrentTab();
        if (row >= 0 && row < t.count && lstrcmpA(t.steps[row].action, "Comment") == 0 &&
            CommentRowCount < MAX_COMMENT_ROWS) {
            RECT cell;
            ListView_GetSubItemRect(draw->nmcd.hdr.hwndFrom, row, 5, LVIR_BOUNDS, &cell);
            cell.bottom -= 1;
            CommentRows[CommentRowCount].rect = cell;
            CommentRows[CommentRowCount].index = row;
            CommentRowCount++;
        }
        return CDRF_NOTIFYSUBITEMDRAW;
    }
    case CDDS_ITEMPREPAINT | CDDS_SUBITEM: {
        const int row = (int)draw->nmcd.dwItemSpec;
        TabStore& t = CurrentTab();
        if (row < 0 || row >= t.count) return CDRF_DODEFAULT;
        const Step& s = t.steps[row];
        if (lstrcmpA(s.action, "Comment") == 0) {  // drawn plainly; the band covers it
            draw->clrText = GetSysColor(COLOR_WINDOWTEXT);
            draw->clrTextBk = GetSysColor(COLOR_WINDOW);
            return CDRF_NEWFONT;
        }
        COLORREF text = draw->clrText, fill = draw->clrTextBk;
        StepRowColors(s, row, &text, &fill);
        draw->clrText = text;
        draw->clrTextBk = fill;
        return CDRF_NEWFONT;
    }
    }
    return CDRF_DODEFAULT;
}

void GetDisplayInfo(NMLVDISPINFOA* info) {
    LVITEMA& item = info->item;
    TabStore& t = CurrentTab();
    if (item.iItem < 0 || item.iItem >= t.count) return;
    if ((item.mask & LVIF_TEXT) && item.pszText && item.cchTextMax > 0) {
        char cell[CELL_TEXT];
        StepCellText(item.iItem, item.iSubItem, cell, sizeof cell);
        CopyIntoN(item.pszText, (size_t)item.cchTextMax, cell);
    }
    if (item.mask & LVIF_IMAGE) item.iImage = StepRowImage(t.steps[item.iItem]);
    if (item.mask & LVIF_INDENT) item.iIndent = 0;  // indents are drawn by the text
}

// A click or a change of selection, unless a capture is in progress.
void SelectionChanged(HWND list) {
    if (GetCapture()) return;
    DiscardEditor();
    TabStore& t = CurrentTab();
    const int selected = ListView_GetSelectedCount(list) == 1 ? ListView_GetNextItem(list, -1, LVNI_SELECTED) : -1;
    t.selected = selected;
    if (selected != ShownStep || t.count != ShownCount || selected < 0) {
        ShownStep = selected;
        ShownCount = t.count;
        RefreshPropertyGrid();
    }
}

void DoubleClick(HWND list, NMITEMACTIVATE* hit) {
    if (hit->iItem >= 0 && ListView_GetSelectedCount(list) == 1) {
        ShowPalette(PALETTE_PROPERTIES, true);
        SelectStepRow(hit->iItem);
        FocusPropertyGrid();
    } else {
        ShowPalette(PALETTE_ACTIONS, true);
    }
}

void ListMenu(HWND list) {
    POINT at;
    GetCursorPos(&at);
    LVHITTESTINFO hit = {};
    hit.pt = at;
    ScreenToClient(list, &hit.pt);
    const int row = ListView_HitTest(list, &hit);
    HMENU menu = CreatePopupMenu();
    if (row < 0 || row >= CurrentTab().count) {
        AppendMenuA(menu, MF_STRING, CMD_RUN, "Run");
        AppendMenuA(menu, MF_STRING, CMD_NEW_STEP, "New Step");
        AppendMenuA(menu, MF_STRING, CMD_PASTE, "Paste");
        AppendMenuA(menu, MF_STRING, CMD_ADD_COMMENT, "Add Comment");
    } else {
        const int32_t status = CurrentTab().steps[row].status;
        AppendMenuA(menu, MF_STRING, CMD_RUN_SINGLE_STEP, "Run Single Step");
        AppendMenuA(menu, MF_STRING, CMD_RUN_FROM_HERE, "Run From Here");
        AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(menu, MF_STRING, CMD_CUT, "Cut");
        AppendMenuA(menu, MF_STRING, CMD_COPY, "Copy");
        AppendMenuA(menu, MF_STRING, CMD_PASTE, "Paste");
        AppendMenuA(menu, MF_STRING, CMD_DELETE, "Delete");
        AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(menu, MF_STRING, CMD_UNINDENT, "Decrease Indent");
        AppendMenuA(menu, MF_STRING, CMD_INDENT, "Increase Indent");
        AppendMenuA(menu, MF_STRING, CMD_SKIP, status & STEP_SKIP ? "Remove Skip" : "Add Skip");
        AppendMenuA(menu, MF_STRING, CMD_BREAKPOINT, status & STEP_BREAKPOINT ? "Remove Breakpoint" : "Add Breakpoint");
        AppendMenuA(menu, MF_STRING, CMD_ADD_COMMENT, "Add Comment");
        AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(menu, MF_STRING, CMD_VIEW_XML, "View XML");
        AppendMenuA(menu, MF_STRING, CMD_EDIT_PROPERTIES, "Properties");
    }
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, at.x, at.y, 0, MainWindow, nullptr);
    DestroyMenu(menu);
}

void TabMenu() {
    POINT at;
    GetCursorPos(&at);
    TCHITTESTINFO hit = {};
    hit.pt = at;
    ScreenToClient(TabStrip, &hit.pt);
    const int tab = TabCtrl_HitTest(TabStrip, &hit);
    if (tab < 0) return;
    ShowTab(tab);
    HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_STRING, CMD_SAVE, "&Save File");
    AppendMenuA(menu, MF_STRING, CMD_CLOSE, "&Close Tab");
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, at.x, at.y, 0, MainWindow, nullptr);
    DestroyMenu(menu);
}

LRESULT Notify(HWND dialog, NMHDR* header) {
    if (header->idFrom == IDC_STEP_GRID) {
        switch (header->code) {
        case LVN_GETDISPINFOA:
            GetDisplayInfo((NMLVDISPINFOA*)header);
            return 0;
        case NM_CUSTOMDRAW:
            return CustomDraw((NMLVCUSTOMDRAW*)header);
        case LVN_ITEMCHANGED:
        case NM_CLICK:
            SelectionChanged(header->hwndFrom);
            return 0;
        case NM_DBLCLK:
            DoubleClick(header->hwndFrom, (NMITEMACTIVATE*)header);
            return 0;
        case NM_RCLICK:
            ListMenu(header->hwndFrom);
            return 0;
        }
        return 0;
    }
    if (header->hwndFrom == TabStrip) {
        if (header->code == TCN_SELCHANGE) ShowTab(TabCtrl_GetCurSel(TabStrip));
        if (header->code == NM_RCLICK) TabMenu();
        return 0;
    }
    // The tool tip of a tab is its file path.
    if (header->code == TTN_GETDISPINFOA) {
        NMTTDISPINFOA* tip = (NMTTDISPINFOA*)header;
        const UINT_PTR tab = header->idFrom;
        if (tab < MAX_TABS) tip->lpszText = ScriptStore.tab[tab].path;
    }
    (void)dialog;
    return 0;
}

void LayOutDialog(HWND dialog) {
    RECT client;
    GetClientRect(dialog, &client);
    RECT inner = client;
    TabCtrl_AdjustRect(TabStrip, FALSE, &inner);
    const int stripHeight = inner.top - client.top;
    MoveWindow(TabStrip, 0, 0, client.right, stripHeight, TRUE);
    // A paused debug run's bar sits between the strip and the list.
    const int top = stripHeight + LayOutDebugBar(dialog, stripHeight, client.right);
    MoveWindow(StepList, 0, top, client.right, client.bottom - top, TRUE);
}

INT_PTR CALLBACK StepListProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    // Styles, images, columns, and the two replaced procedures.
    case WM_INITDIALOG: {
        StepListDialog = dialog;
        TabStrip = GetDlgItem(dialog, IDC_TABS);
        StepList = GetDlgItem(dialog, IDC_STEP_GRID);
        ReadListLook();
        DWORD styles = LVS_EX_FULLROWSELECT | LVS_EX_HEADERDRAGDROP | LVS_EX_INFOTIP | LVS_EX_DOUBLEBUFFER;
        if (ListLook.gridStyle == 2) styles |= LVS_EX_GRIDLINES;
        ListView_SetExtendedListViewStyle(StepList, styles);
        if (SharedImageList) ListView_SetImageList(StepList, SharedImageList, LVSIL_SMALL);
        AddColumns(StepList);
        MakeFonts(StepList);
        OriginalListProc = (WNDPROC)SetWindowLongPtrA(StepList, GWLP_WNDPROC, (LONG_PTR)ListProc);
        OriginalTabProc = (WNDPROC)SetWindowLongPtrA(TabStrip, GWLP_WNDPROC, (LONG_PTR)TabProc);
        RefreshTabStrip();
        ReloadStepCount();
        return FALSE;
    }
    case WM_SIZE:
        LayOutDialog(dialog);
        return TRUE;
    case WM_NOTIFY:
        SetWindowLongPtrA(dialog, DWLP_MSGRESULT, Notify(dialog, (NMHDR*)lParam));
        return TRUE;
    // Colours may have changed under Tools - Options.
    case WM_SETTINGCHANGE:
        ReadListLook();
        InvalidateRect(StepList, nullptr, TRUE);
        return TRUE;
    case WM_COMMAND:
        SendMessageA(MainWindow, WM_COMMAND, wParam, lParam);
        return TRUE;
    case WM_DESTROY:
        SaveColumns(StepList);
        if (HintFont) DeleteObject(HintFont);
        if (ItalicFont) DeleteObject(ItalicFont);
        HintFont = ItalicFont = nullptr;
        StepList = TabStrip = StepListDialog = nullptr;
        return TRUE;
    }
    return FALSE;
}

}  // namespace

void ReadListLook() {
    ListLook.indentAllColumns = SettingInt("Palettes\\MainList\\IndentAllColumns");
    ListLook.commentText = (COLORREF)SettingInt("Colors\\CommentText");
    ListLook.commentFill = (COLORREF)SettingInt("Colors\\CommentFill");
    ListLook.commentItalic = SettingInt("Colors\\CommentItalic");
    ListLook.skipText = (COLORREF)SettingInt("Colors\\SkipText");
    ListLook.skipFill = (COLORREF)SettingInt("Colors\\SkipFill");
    ListLook.breakText = (COLORREF)SettingInt("Colors\\BreakText");
    ListLook.breakFill = (COLORREF)SettingInt("Colors\\BreakFill");
    ListLook.scheduleText = (COLORREF)SettingInt("Colors\\ScheduleText");
    ListLook.scheduleFill = (COLORREF)SettingInt("Colors\\ScheduleFill");
    ListLook.gridStyle = SettingInt("Palettes\\MainList\\GridStyle");
    ListLook.altColor = (COLORREF)SettingInt("Palettes\\MainList\\GridStyle_AltColor");
}

void BuildIndentText() {
    int size = SettingInt("Palettes\\MainList\\IndentSize");
    if (size < 0) size = 0;
    if (size > 31) size = 31;
    memset(IndentText, ' ', (size_t)size);
    IndentText[size] = 0;
}

void StepCellText(int index, int column, char* out, int size) {
    out[0] = 0;
    TabStore& t = CurrentTab();
    if (size <= 0 || index < 0 || index >= t.count) return;
    if (size > CELL_TEXT) size = CELL_TEXT;
    const Step& s = t.steps[index];
    char cell[CELL_TEXT] = "";
    const bool all = ListLook.indentAllColumns != 0;
    if (all || column == 1) AppendPrefix(cell, sizeof cell, s);
    switch (column) {
    case 0: {
        char number[16];
        FormatInto(number, "%d", index + 1);
        char prefixed[CELL_TEXT] = "  ";
        Append(prefixed, sizeof prefixed, cell);
        Append(prefixed, sizeof prefixed, number);
        CopyIntoN(cell, sizeof cell, prefixed);
        break;
    }
    case 1: Append(cell, sizeof cell, s.action); break;
    case 2: {
        char command[CELL_TEXT];
        CommandText(s, command, sizeof command);
        Append(cell, sizeof cell, command);
        break;
    }
    case 3: Append(cell, sizeof cell, s.timeout); break;
    case 4: CopyIntoN(cell, sizeof cell, s.options); break;
    case 5:
        Append(cell, sizeof cell, TextOf(s.comment));
        for (char* p = cell; *p; p++)
            if (*p == '\r' || *p == '\n') *p = ' ';
        break;
    default: CopyInto(cell, "???"); break;
    }
    CopyIntoN(out, (size_t)size, cell);
}

int StepRowImage(const Step& s) {
    if (s.status & STEP_SKIP) return IMAGE_SKIP;
    if (s.status & STEP_BREAKPOINT) return IMAGE_BREAKPOINT;
    if (s.status & STEP_BOOKMARK) return IMAGE_BOOKMARK;
    return s.icon < 0 ? 0 : s.icon > 511 ? 511 : s.icon;
}

// A breakpoint outranks a skip here, while the image tests the skip first.
bool StepRowColors(const Step& s, int row, COLORREF* text, COLORREF* fill) {
    if (s.status & STEP_BREAKPOINT) {
        *text = ListLook.breakText;
        *fill = ListLook.breakFill;
    } else if (s.status & STEP_SKIP) {
        *text = ListLook.skipText;
        *fill = ListLook.skipFill;
    } else if (s.status & STEP_BOOKMARK) {
        *fill = 0xF9D2BF;
    } else {
        *text = GetSysColor(COLOR_WINDOWTEXT);
        if (ListLook.gridStyle != 1) return false;
        *fill = row % 2 ? ListLook.altColor : GetSysColor(COLOR_WINDOW);
    }
    return true;
}

HWND CreateStepListDialog(HWND parent) {
    BuildIndentText();
    return CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDD_STEPLIST), parent, StepListProc, 0);
}

void ReloadStepCount() {
    if (!StepList) return;
    ListView_SetItemCountEx(StepList, CurrentTab().count, LVSICF_NOSCROLL);
    InvalidateRect(StepList, nullptr, TRUE);
}

void RefreshTabStrip() {
    if (!TabStrip) return;
    TabCtrl_DeleteAllItems(TabStrip);
    for (int tab = 0; tab < TabsInUse(); tab++) {
        char name[MAX_PATH], caption[MAX_PATH + 4];
        DisplayName(ScriptStore.tab[tab].path, name, sizeof name);
        FormatInto(caption, TabModified(tab) ? "* %s" : "%s", name);
        TCITEMA item = {};
        item.mask = TCIF_TEXT;
        item.pszText = caption;
        SendMessageA(TabStrip, TCM_INSERTITEMA, (WPARAM)tab, (LPARAM)&item);
    }
    TabCtrl_SetCurSel(TabStrip, ScriptStore.currentTab);
    LayOutDialog(StepListDialog);  // the strip's height follows its rows
}

void ShowTab(int tab) {
    if (tab < 0 || tab >= MAX_TABS || !ScriptStore.tab[tab].path[0]) return;
    DiscardEditor();
    ScriptStore.currentTab = tab;
    if (TabStrip) TabCtrl_SetCurSel(TabStrip, tab);
    UpdateTabTitle(tab);
    ShownStep = ShownCount = -2;
    ReloadStepCount();
    SelectStepRow(CurrentTab().selected);
    RefreshPropertyGrid();
}
