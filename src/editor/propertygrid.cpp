// The properties palette. The grid shows the property table of the selected
// step; a click in the value column opens one editor over the cell, and the
// step changes only when that editor is committed, with an undo entry first.
#include "editor/propertygrid.h"
#include "base/text.h"

#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/filedialogs.h"
#include "desktop/popups.h"
#include "desktop/recordings.h"
#include "editor/commands.h"
#include "editor/finder.h"
#include "editor/metrics.h"
#include "editor/programsmenu.h"
#include "base/settings.h"
#include "editor/sysvarsmenu.h"
#include "editor/glyphfont.h"
#include "base/ui.h"
#include "net/database.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "script/catalogue.h"
#include "base/handles.h"
#include "script/properties.h"
#include "script/undo.h"
#include "base/words.h"
#include "system/display.h"
#include "base/programpath.h"
#include "system/services.h"

HWND PropertyPalette;

HWND ActiveEditor;
int ActiveRow = -1;
int PressedRow = -1;

namespace {

// The help band under the grid: its heading and three lines of the help font.
int HelpHeight();
// The width of the buttons beside a cell's editor ("...", the finder).
int ButtonWidth() { return FontUnitsX(13); }

enum {
    ID_EDITOR = 2001,
    ID_INNER_CHECK = 2002,
    ID_CHOOSE_FILE = 2003,
    ID_CHOOSE_FOLDER = 2004,
    ID_PREVIEW = 2005,
    ID_MOUSE_POINT = 2006,
    ID_FIND_WINDOW = 2007,
    ID_RECORD = 2008,
    ID_PLAY = 2009,
    ID_STOP = 2010,
    ID_PROGRAMS = 2011,
    ID_SYSTEM_VARIABLES = 2012,
    CMD_HELP_ON_ROW = 2020,
};

const char kAdministrator[] = "  (open data administrator)";

// The controls that stand beside the editor, destroyed with it.
std::vector<HWND> EditorParts;
HWND InnerCheck;
WNDPROC OriginalGridProc;
WNDPROC OriginalEditProc;
HFONT HelpFont;
HFONT HeaderFont;  // the bold line that names the step
HWND ButtonTips;  // the tool tips of the editor's buttons
int SelectedRow = -1;  // the row whose help is shown
int EditorRowHeight;   // the height of one row of the open editor

Step* SelectedStep() {
    TabStore& t = CurrentTab();
    if (!t.steps || t.selected < 0 || t.selected >= t.count) return nullptr;
    return &t.steps[t.selected];
}

bool HasSelection() { return SelectedStep() != nullptr; }

// The value an inner check box stands for, by the row's extra code.
const char* InnerCheckValue(const PropertyRow& r) {
    switch (r.extra) {
    case 1:
    case 2: return "0";   // "Start of File", "End of File"
    case 3:
    case 4: return "-1";  // "Append", "Wait Forever", "Retrieve All Rows"
    }
    return "";            // "Full Screen"
}

bool InnerChecked(const PropertyRow& r, const char* value) {
    if (r.extra == 1 || r.extra == 2) return !value[0] || lstrcmpA(value, "0") == 0;
    if (r.extra == 3 || r.extra == 4) return lstrcmpA(value, "-1") == 0;
    return !value[0];
}

void CellRect(int row, RECT* cell) {
    ListView_GetSubItemRect(PropertyGrid, row, 1, LVIR_BOUNDS, cell);
}

HWND AddPart(const char* cls, const char* text, DWORD style, int x, int y, int w, int h, int id) {
    HWND part = CreateWindowExA(0, cls, text, WS_CHILD | WS_VISIBLE | style, x, y, w, h, PropertyGrid,
                                (HMENU)(INT_PTR)id, nullptr, nullptr);
    SendMessageA(part, WM_SETFONT, SendMessageA(PropertyGrid, WM_GETFONT, 0, 0), FALSE);
    EditorParts.push_back(part);
    return part;
}

void DestroyParts() {
    for (HWND part : EditorParts) {
        if (ButtonTips) {
            TOOLINFOA info = {};
            info.cbSize = TTTOOLINFOA_V1_SIZE;
            info.hwnd = PropertyGrid;
            info.uId = (UINT_PTR)part;
            SendMessageA(ButtonTips, TTM_DELTOOLA, 0, (LPARAM)&info);
        }
        DestroyWindow(part);
    }
    EditorParts.clear();
    ActiveEditor = InnerCheck = nullptr;
    ActiveRow = -1;
}

void FillList(HWND combo, const PropertyRow& r, const char* current) {
    if (r.extra == LIST_DATA_SOURCES) {
        FillDataSourceList(combo, 1);
    } else if (r.extra == LIST_VIDEO_MODES) {
        for (const std::string& mode : ListDisplayModes()) SendMessageA(combo, CB_ADDSTRING, 0, (LPARAM)mode.c_str());
    } else if (r.extra == LIST_SERVICES) {
        GetServiceChooserList(combo, current);
    } else {
        std::string item;
        for (const char* p = r.choices;; p++) {
            if (*p == ';' || !*p) {
                if (!item.empty()) SendMessageA(combo, CB_ADDSTRING, 0, (LPARAM)item.c_str());
                item.clear();
                if (!*p) break;
            } else {
                item += *p;
            }
        }
    }
    LRESULT at = SendMessageA(combo, CB_FINDSTRINGEXACT, (WPARAM)-1, (LPARAM)current);
    if (at != CB_ERR) SendMessageA(combo, CB_SETCURSEL, (WPARAM)at, 0);
    else SetWindowTextA(combo, current);
}

// Enter commits a one-line editor and Ctrl+Enter a multi-line one; Escape
// drops the change.
LRESULT CALLBACK EditProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETDLGCODE) return DLGC_WANTALLKEYS | CallWindowProcA(OriginalEditProc, edit, message, wParam, lParam);
    if (message == WM_KEYDOWN) {
        const bool multi = (GetWindowLongA(edit, GWL_STYLE) & ES_MULTILINE) != 0;
        if (wParam == VK_RETURN && (!multi || (GetKeyState(VK_CONTROL) & 0x8000))) {
            CommitEditor();
            SetFocus(PropertyGrid);
            return 0;
        }
        if (wParam == VK_ESCAPE) {
            DiscardEditor();
            SetFocus(PropertyGrid);
            return 0;
        }
    }
    if (message == WM_CHAR && (wParam == '\r' || wParam == 27) && !(GetWindowLongA(edit, GWL_STYLE) & ES_MULTILINE))
        return 0;
    return CallWindowProcA(OriginalEditProc, edit, message, wParam, lParam);
}

// Every button beside an editor says what it does when the pointer rests on it.
void AddTip(HWND button, const char* tip) {
    if (!ButtonTips) return;
    TOOLINFOA info = {};
    info.cbSize = TTTOOLINFOA_V1_SIZE;
    info.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    info.hwnd = PropertyGrid;
    info.uId = (UINT_PTR)button;
    info.lpszText = (char*)tip;
    SendMessageA(ButtonTips, TTM_ADDTOOLA, 0, (LPARAM)&info);
}

// The small buttons at the right edge of the cell, each with its tip.
void AddButtons(const PropertyRow& r, const RECT& cell, int* right) {
    struct Tool {
        bool shown;
        int id;
        const char* label;
        const char* tip;
    };
    const Tool tools[] = {
        {(r.flags & ROWF_CHOOSE_FILE) != 0, ID_CHOOSE_FILE, "...", "Choose File"},
        {(r.flags & ROWF_CHOOSE_FOLDER) != 0, ID_CHOOSE_FOLDER, "...", "Choose Folder"},
        {(r.flags & ROWF_PROGRAMS) != 0, ID_PROGRAMS, "P", "Programs"},
        {(r.flags & ROWF_PREVIEW) != 0, ID_PREVIEW, "?", "Preview the image file"},
        {(r.flags & ROWF_FIND_WINDOW) != 0, ID_FIND_WINDOW, "@", "Find Window\n(press and hold to choose window)"},
        {(r.flags & ROWF_MOUSE_POINT) != 0, ID_MOUSE_POINT, "+",
         "Mouse Coordinates\n(press and hold to choose coordinates)"},
        // Beside every text editor.
        {r.rowType == ROW_LINE || r.rowType == ROW_LINES, ID_SYSTEM_VARIABLES, "%", "System Variables"},
    };
    for (const Tool& tool : tools) {
        if (!tool.shown) continue;
        *right -= ButtonWidth();
        HWND button = AddPart("BUTTON", tool.label, BS_PUSHBUTTON, *right, cell.top, ButtonWidth(),
                              cell.bottom - cell.top, tool.id);
        if (tool.id == ID_MOUSE_POINT || tool.id == ID_FIND_WINDOW) MakePicker(button, tool.id == ID_FIND_WINDOW, &ActiveEditor);
        AddTip(button, tool.tip);
    }
}

// A multi-line editor grows with its text, as wrapped, up to MaxFieldSize
// rows, keeping one blank row to type into.
void FitEditor(HWND edit) {
    if (!(GetWindowLongA(edit, GWL_STYLE) & ES_MULTILINE) || EditorRowHeight <= 0) return;
    int most = SettingInt("Palettes\\Properties\\MaxFieldSize");
    if (most <= 0) most = 15;
    int lines = (int)SendMessageA(edit, EM_GETLINECOUNT, 0, 0) + 1;
    if (lines > most) lines = most;
    RECT r;
    GetWindowRect(edit, &r);
    MapWindowPoints(nullptr, PropertyGrid, (POINT*)&r, 2);
    if (r.bottom - r.top != EditorRowHeight * lines)
        MoveWindow(edit, r.left, r.top, r.right - r.left, EditorRowHeight * lines, TRUE);
}

// A menu under a button whose choice goes into the editor.
void InsertChoice(int id) {
    if (!ActiveEditor) return;
    RECT button;
    GetWindowRect(GetDlgItem(PropertyGrid, id), &button);
    const std::string chosen = id == ID_PROGRAMS ? ChooseProgram(PropertyPalette, button.left, button.bottom)
                                                 : ChooseSystemVariable(PropertyPalette, button.left, button.bottom);
    if (chosen.empty()) return;
    if (id == ID_PROGRAMS) {
        SetWindowTextA(ActiveEditor, chosen.c_str());
    } else {
        SendMessageA(ActiveEditor, EM_REPLACESEL, TRUE, (LPARAM)chosen.c_str());
    }
    SetFocus(ActiveEditor);
}

void ChooseFile(bool folder) {
    if (!ActiveEditor) return;
    char path[MAX_PATH] = "";
    if (folder) {
        if (!ChooseFolderName(MainWindow, "Choose Folder", path, BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE)) return;
    } else {
        const Step* s = SelectedStep();
        const char* filter = s && ContainsNoCase(s->action, "Call Script")
                                 ? "ZantoRunner File (*.zxm, *.xml)\0*.zxm;*.xml\0All Files (*.*)\0*.*\0"
                                 : "All Files (*.*)\0*.*\0";
        if (!ChooseFileName(MainWindow, filter, nullptr, path, sizeof path, false)) return;
    }
    SetWindowTextA(ActiveEditor, path);
}

void Preview() {
    char file[MAX_PATH] = "";
    if (ActiveEditor) GetWindowTextA(ActiveEditor, file, sizeof file);
    if (!file[0]) {
        ShowMessageBox(MainWindow, "No image selected\n\nChoose an image with the \"Open File\" button",
                       "Image Preview", MB_ICONINFORMATION);
        return;
    }
    // The picture in a window of its own, closed by a click; a bare name is
    // looked for as a run looks for it, beside the script first.
    char path[MAX_PATH * 2];
    ResolveProgramPath(file, path, CurrentTab().path);
    if (!ShowImagePopup(path, 0, 0, WS_CAPTION | WS_SYSMENU, "")) {
        char text[MAX_PATH * 2 + 40];
        FormatInto(text, "Unable to open file \"%s\"", path);
        ShowMessageBox(MainWindow, text, "Image Preview", MB_ICONWARNING);
    }
}

void EditorCommand(WPARAM wParam) {
    switch (LOWORD(wParam)) {
    // The inner box stands for a value of its own: the editor gives way.
    case ID_INNER_CHECK:
        if (ActiveEditor && InnerCheck)
            EnableWindow(ActiveEditor, SendMessageA(InnerCheck, BM_GETCHECK, 0, 0) != BST_CHECKED);
        break;
    case ID_EDITOR:
        if (ActiveEditor && HIWORD(wParam) == EN_CHANGE) FitEditor(ActiveEditor);
        // A list's choice is committed once the combo box has finished with it.
        if (HIWORD(wParam) == CBN_SELENDOK) PostMessageA(PropertyPalette, WM_APP, 0, 0);
        break;
    case ID_CHOOSE_FILE: ChooseFile(false); break;
    case ID_CHOOSE_FOLDER: ChooseFile(true); break;
    case ID_PREVIEW: Preview(); break;
    case ID_PROGRAMS:
    case ID_SYSTEM_VARIABLES: InsertChoice(LOWORD(wParam)); break;
    case ID_RECORD: StartRecording(MainWindow); break;
    case ID_STOP:
        StopRecording();
        RefreshPropertyGrid();
        break;
    case ID_PLAY: PlayRecordingFromPalette(MainWindow); break;
    }
}

// A click in the value column: check rows toggle, other rows open an editor.
void GridClicked(NMITEMACTIVATE* click) {
    LVHITTESTINFO hit = {};
    hit.pt = click->ptAction;
    ListView_SubItemHitTest(PropertyGrid, &hit);
    const int row = hit.iItem;
    if (ActiveEditor && row != ActiveRow) CommitEditor();
    if (row < 0 || row >= PropertyRowCount) return;
    PressedRow = SelectedRow = row;
    InvalidateRect(PropertyPalette, nullptr, TRUE);
    const PropertyRow& r = PropertyTable[row];
    if (hit.iSubItem != 1 || r.locked || r.rowType == ROW_END) return;
    RECT cell;
    CellRect(row, &cell);
    const int into = hit.pt.x - cell.left;
    if (r.rowType == ROW_CHECK) {
        if (into >= 4 && into <= 20) ToggleCheckRow(row);
        return;
    }
    if (r.rowType == ROW_RECORDING && (into < 4 || into > 40)) return;
    OpenEditor(row);
}

void RowMenu(NMITEMACTIVATE* click) {
    const Step* s = SelectedStep();
    if (!s || click->iItem < 0 || click->iItem >= PropertyRowCount) return;
    char text[128], topic[160];
    if (PropertyTable[click->iItem].field == FIELD_OUTPUT || PropertyTable[click->iItem].field == FIELD_OUTPUT_VALUE) {
        CopyInto(text, "&Help on \"Save Result\" options");
        CopyInto(topic, "saveresult.htm");
    } else {
        FormatInto(text, "&Help on the \"%s\" action", CategoryName(s->category));
        HelpTopicOfAction(s->category, s->action, topic, sizeof topic);
    }
    HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_STRING, CMD_HELP_ON_ROW, text);
    POINT at;
    GetCursorPos(&at);
    if (TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, PropertyPalette, nullptr) ==
        CMD_HELP_ON_ROW)
        OpenHelpTopic(MainWindow, topic);
    DestroyMenu(menu);
}

LRESULT CustomDraw(NMLVCUSTOMDRAW* draw) {
    switch (draw->nmcd.dwDrawStage) {
    case CDDS_PREPAINT: return CDRF_NOTIFYITEMDRAW;
    case CDDS_ITEMPREPAINT: return CDRF_NOTIFYSUBITEMDRAW;
    case CDDS_ITEMPREPAINT | CDDS_SUBITEM: {
        const int row = (int)draw->nmcd.dwItemSpec;
        if (row < 0 || row >= PropertyRowCount) return CDRF_DODEFAULT;
        const PropertyRow& r = PropertyTable[row];
        draw->clrText = GetSysColor(COLOR_WINDOWTEXT);
        if (r.rowType == ROW_END) draw->clrText = RGB(0, 0, 255);
        else if (draw->iSubItem == 0 && strstr(r.label, "On Failure"))
            draw->clrText = (COLORREF)SettingInt("Colors\\OnFailureLables");
        else if (draw->iSubItem == 0 && strstr(r.label, "Comment"))
            draw->clrText = (COLORREF)SettingInt("Colors\\CommentText");
        const bool box = r.rowType == ROW_CHECK || (r.flags & 0x500);
        return CDRF_NEWFONT | (draw->iSubItem == 1 && box ? CDRF_NOTIFYPOSTPAINT : 0);
    }
    // A check row's box, drawn 4 pixels into the cell.
    case CDDS_ITEMPOSTPAINT | CDDS_SUBITEM: {
        const int row = (int)draw->nmcd.dwItemSpec;
        RECT cell;
        CellRect(row, &cell);
        const int size = cell.bottom - cell.top - 2 < 16 ? cell.bottom - cell.top - 2 : 16;
        RECT box = {cell.left + 4, cell.top + 1, cell.left + 4 + size, cell.top + 1 + size};
        DrawFrameControl(draw->nmcd.hdc, &box, DFC_BUTTON,
                         DFCS_BUTTONCHECK | (PropertyTable[row].checked ? DFCS_CHECKED : 0));
        return CDRF_DODEFAULT;
    }
    }
    return CDRF_DODEFAULT;
}

LRESULT CALLBACK GridProc(HWND grid, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT: {
        LRESULT r = CallWindowProcA(OriginalGridProc, grid, message, wParam, lParam);
        if (!HasSelection()) {
            ScopedGetDC dc(grid);
            RECT area;
            GetClientRect(grid, &area);
            area.top += 30;
            SetBkMode(dc.dc, TRANSPARENT);
            SetTextColor(dc.dc, GetSysColor(COLOR_GRAYTEXT));
            HGDIOBJ old = SelectObject(dc.dc, (HGDIOBJ)SendMessageA(grid, WM_GETFONT, 0, 0));
            DrawTextA(dc.dc, "No Properties Available", -1, &area, DT_CENTER | DT_TOP | DT_SINGLELINE);
            SelectObject(dc.dc, old);
        }
        return r;
    }
    // Enter, F2 and Space open the value of the focused row (or switch a
    // check row), as a click in its value does.
    case WM_GETDLGCODE:
        if (lParam && ((const MSG*)lParam)->message == WM_KEYDOWN && ((const MSG*)lParam)->wParam == VK_RETURN)
            return DLGC_WANTMESSAGE | CallWindowProcA(OriginalGridProc, grid, message, wParam, lParam);
        break;
    case WM_KEYDOWN:
        if ((wParam == VK_RETURN || wParam == VK_F2 || wParam == VK_SPACE) && !(GetKeyState(VK_CONTROL) & 0x8000)) {
            int row = ListView_GetNextItem(grid, -1, LVNI_FOCUSED);
            if (row < 0) row = ListView_GetNextItem(grid, -1, LVNI_SELECTED);
            if (row < 0 || row >= PropertyRowCount) return 0;
            if (PropertyTable[row].rowType == ROW_CHECK) ToggleCheckRow(row);
            else OpenEditor(row);
            return 0;
        }
        break;
    case WM_CHAR:
        if (wParam == ' ' || wParam == '\r') return 0;
        break;
    // The editor's own buttons report here; the palette acts on them.
    case WM_COMMAND:
        EditorCommand(wParam);
        return 0;
    case WM_VSCROLL:
    case WM_MOUSEWHEEL:
        if (ActiveEditor) CommitEditor();
        break;
    }
    return CallWindowProcA(OriginalGridProc, grid, message, wParam, lParam);
}

// A line of the help font, measured when the font is made.
int HelpLine = 13;

int HelpHeight() { return 4 * HelpLine + 12; }

// The band over the grid that names the step shown.
int HeaderHeight() { return FontLineHeight(HeaderFont) + 8; }

int TextWidth(const char* text) {
    ScopedGetDC dc(nullptr);
    HGDIOBJ old = SelectObject(dc.dc, GetStockObject(DEFAULT_GUI_FONT));
    SIZE size = {};
    GetTextExtentPoint32A(dc.dc, text, lstrlenA(text), &size);
    SelectObject(dc.dc, old);
    return size.cx;
}

// What the label column needs besides its text: the row's 1-pixel image and
// the list's margins on both sides.
int LabelMargin() { return FontUnitsX(8) + 12; }

// The label column grows to the longest label of the table, leaving the
// values at least 15 characters; the values take what remains.
void FitLabelColumn() {
    if (!PropertyGrid || !HasSelection()) return;
    RECT client;
    GetClientRect(PropertyGrid, &client);
    int want = PropertyLabelsWidth() + LabelMargin();
    const int most = client.right - FontUnitsX(60);
    if (want > most) want = most;
    if (want > ListView_GetColumnWidth(PropertyGrid, 0)) ListView_SetColumnWidth(PropertyGrid, 0, want);
    ListView_SetColumnWidth(PropertyGrid, 1, LVSCW_AUTOSIZE_USEHEADER);
}

// The full label of a cut one, in the grid's tool tip.
void LabelTip(NMLVGETINFOTIPA* tip) {
    if (!tip->pszText || tip->cchTextMax <= 0) return;
    if (tip->iSubItem == 0 && PropertyLabelCut(tip->iItem)) lstrcpynA(tip->pszText, PropertyTable[tip->iItem].label,
                                                                       tip->cchTextMax);
}

void PaintHelp(HWND palette) {
    PAINTSTRUCT paint;
    HDC dc = BeginPaint(palette, &paint);
    RECT client;
    GetClientRect(palette, &client);
    RECT band = {4, client.bottom - HelpHeight() + 2, client.right - 4, client.bottom - 2};
    FillRect(dc, &client, GetSysColorBrush(COLOR_BTNFACE));
    char header[200];
    GetWindowTextA(palette, header, sizeof header);
    RECT top = {6, 0, client.right - 4, HeaderHeight()};
    HGDIOBJ old = SelectObject(dc, HeaderFont ? HeaderFont : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
    DrawTextA(dc, header, -1, &top, DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, HelpFont ? HelpFont : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, RGB(0, 0, 160));
    if (SelectedRow >= 0 && SelectedRow < PropertyRowCount && HasSelection()) {
        char heading[96];
        FormatInto(heading, "Help: %s", PropertyTable[SelectedRow].label);
        DrawTextA(dc, heading, -1, &band, DT_LEFT | DT_TOP | DT_SINGLELINE | DT_NOPREFIX);
        band.top += HelpLine + 2;
        DrawTextA(dc, PropertyTable[SelectedRow].help, -1, &band, DT_LEFT | DT_TOP | DT_WORDBREAK | DT_NOPREFIX);
    }
    SelectObject(dc, old);
    EndPaint(palette, &paint);
}

void CreateGrid(HWND palette) {
    PropertyGrid = CreateWindowExA(WS_EX_CLIENTEDGE, WC_LISTVIEWA, "",
                                   WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | LVS_REPORT | LVS_OWNERDATA |
                                       LVS_SINGLESEL | LVS_SHOWSELALWAYS,
                                   0, 0, 10, 10, palette, (HMENU)(INT_PTR)IDC_PROPERTY_GRID, nullptr, nullptr);
    SendMessageA(PropertyGrid, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), FALSE);
    GiveGlyphFont(PropertyGrid);
    ListView_SetExtendedListViewStyle(PropertyGrid, LVS_EX_FULLROWSELECT | LVS_EX_HEADERDRAGDROP | LVS_EX_INFOTIP | LVS_EX_LABELTIP |
                                                        LVS_EX_DOUBLEBUFFER);
    // A one-pixel-wide image list sets the row height.
    TEXTMETRICA metrics = {};
    {
        ScopedGetDC dc(PropertyGrid);
        HGDIOBJ old = SelectObject(dc.dc, GetStockObject(DEFAULT_GUI_FONT));
        GetTextMetricsA(dc.dc, &metrics);
        SelectObject(dc.dc, old);
    }
    int height = SettingInt("Palettes\\Properties\\RowHeight");
    if (height < metrics.tmHeight + 4) height = metrics.tmHeight + 4;
    ListView_SetImageList(PropertyGrid, ImageList_Create(1, height, ILC_COLOR, 1, 0), LVSIL_SMALL);
    const char* headings[2] = {"Property", "Value"};
    int order[2] = {0, 1};
    for (int i = 0; i < 2; i++) {
        int width = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\Column%d", i + 1);
        LVCOLUMNA c = {};
        c.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        c.pszText = (char*)headings[i];
        c.cx = width > 0 ? width : FontUnitsX(i ? 133 : 87);  // about 33 and 22 characters
        c.iSubItem = i;
        SendMessageA(PropertyGrid, LVM_INSERTCOLUMNA, (WPARAM)i, (LPARAM)&c);
    }
    if (ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\Column1_order") == 1) {
        order[0] = 1;
        order[1] = 0;
        ListView_SetColumnOrderArray(PropertyGrid, 2, order);
    }
    OriginalGridProc = (WNDPROC)SetWindowLongPtrA(PropertyGrid, GWLP_WNDPROC, (LONG_PTR)GridProc);
    ButtonTips = CreateWindowExA(0, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0, 0, 0, palette, nullptr,
                                 nullptr, nullptr);
    SendMessageA(ButtonTips, TTM_SETMAXTIPWIDTH, 0, 300);
    LOGFONTA face = {};
    GetObjectA(GetStockObject(DEFAULT_GUI_FONT), sizeof face, &face);
    CopyInto(face.lfFaceName, "Verdana");
    HelpFont = CreateFontIndirectA(&face);
    HelpLine = FontLineHeight(HelpFont);
    GetObjectA(GetStockObject(DEFAULT_GUI_FONT), sizeof face, &face);
    face.lfWeight = FW_BOLD;
    HeaderFont = CreateFontIndirectA(&face);
}

void SaveGridColumns() {
    int order[2] = {0, 1};
    ListView_GetColumnOrderArray(PropertyGrid, 2, order);
    for (int position = 0; position < 2; position++) {
        WriteSetting(nullptr, nullptr, ListView_GetColumnWidth(PropertyGrid, order[position]), nullptr,
                     ZR_ROOT "Palettes\\Properties\\Column%d", order[position] + 1);
        WriteSetting(nullptr, nullptr, position, nullptr, ZR_ROOT "Palettes\\Properties\\Column%d_order",
                     order[position] + 1);
    }
}

LRESULT CALLBACK PaletteProc(HWND palette, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        PropertyPalette = palette;
        CreateGrid(palette);
        return 0;
    case WM_SIZE: {
        if (ActiveEditor) CommitEditor();
        const int bands = HeaderHeight() + HelpHeight();
        MoveWindow(PropertyGrid, 0, HeaderHeight(), LOWORD(lParam),
                   HIWORD(lParam) > bands ? HIWORD(lParam) - bands : 0, TRUE);
        ListView_SetColumnWidth(PropertyGrid, 1, LVSCW_AUTOSIZE_USEHEADER);  // the values take the rest
        FitLabelColumn();
        InvalidateRect(palette, nullptr, TRUE);
        return 0;
    }
    case WM_PAINT:
        PaintHelp(palette);
        return 0;
    // A list choice is stored once the combo box has finished with it.
    case WM_APP:
        CommitEditor();
        return 0;
    case WM_NOTIFY: {
        NMHDR* header = (NMHDR*)lParam;
        if (header->hwndFrom != PropertyGrid) break;
        switch (header->code) {
        case LVN_GETDISPINFOA: {
            LVITEMA& item = ((NMLVDISPINFOA*)lParam)->item;
            if ((item.mask & LVIF_TEXT) && item.pszText && item.iItem >= 0 && item.iItem < PropertyRowCount) {
                if (item.iSubItem == 0) lstrcpynA(item.pszText, PropertyTable[item.iItem].label, item.cchTextMax);
                else PropertyCellText(item.iItem, item.pszText, item.cchTextMax);
            }
            return 0;
        }
        case NM_CUSTOMDRAW: return CustomDraw((NMLVCUSTOMDRAW*)lParam);
        case LVN_GETINFOTIPA: LabelTip((NMLVGETINFOTIPA*)lParam); return 0;
        case NM_CLICK: GridClicked((NMITEMACTIVATE*)lParam); return 0;
        case NM_RCLICK: RowMenu((NMITEMACTIVATE*)lParam); return 0;
        }
        break;
    }
    case WM_DESTROY:
        SaveGridColumns();
        DestroyParts();
        if (HelpFont) DeleteObject(HelpFont);
        if (HeaderFont) DeleteObject(HeaderFont);
        HelpFont = HeaderFont = nullptr;
        PropertyGrid = PropertyPalette = nullptr;
        return 0;
    }
    return DefWindowProcA(palette, message, wParam, lParam);
}

}  // namespace

HWND CreatePropertyPalette(HWND parent) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = PaletteProc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.lpszClassName = "ZantoRunnerProperties";
    RegisterClassA(&wc);
    return CreateWindowExA(0, wc.lpszClassName, "", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 10, 10, parent,
                           nullptr, wc.hInstance, nullptr);
}

void PropertyCellText(int row, char* out, int size) {
    out[0] = 0;
    Step* s = SelectedStep();
    if (!s || row < 0 || row >= PropertyRowCount || size <= 0) return;
    const PropertyRow& r = PropertyTable[row];
    if (r.rowType == ROW_RECORDING) {
        const int events = ParseInt(s->value[0]);
        char text[96];
        // The number, not the field: a file may make the field 259 letters long.
        if (events > 0) FormatInto(text, "              %d Events Recorded", events);
        else CopyInto(text, "              Nothing Recorded");
        lstrcpynA(out, text, size);
        return;
    }
    if (r.rowType == ROW_CHECK || (r.flags & 0x500) || r.rowType == ROW_END) return;
    const char* value = StepFieldText(*s, r.field, nullptr);
    if (!value) return;
    if (r.rowType == ROW_MASKED) {
        int stars = (int)strlen(value);
        if (stars > 31) stars = 31;
        if (stars + 1 > size) stars = size - 1;
        memset(out, '*', (size_t)stars);
        out[stars] = 0;
        return;
    }
    lstrcpynA(out, value, size < 62 ? size : 62);  // cut to 61 characters
}

void RefreshPropertyGrid() {
    DestroyParts();
    if (HasSelection()) BuildPropertyTable(1);
    if (SelectedRow >= PropertyRowCount) SelectedRow = -1;
    if (!PropertyGrid) return;
    ListView_SetItemCountEx(PropertyGrid, HasSelection() ? PropertyRowCount : 0, LVSICF_NOSCROLL);
    // The header names the step: its number in the list and its action.
    char header[200] = "";
    if (const Step* s = SelectedStep()) FormatInto(header, "Step %d: %s", CurrentTab().selected + 1, s->action);
    SetWindowTextA(PropertyPalette, header);
    FitLabelColumn();
    InvalidateRect(PropertyGrid, nullptr, TRUE);
    InvalidateRect(PropertyPalette, nullptr, TRUE);
}

void FocusPropertyGrid() {
    if (PropertyGrid) SetFocus(PropertyGrid);
}

void OpenEditor(int row) {
    if (ActiveEditor) CommitEditor();
    Step* s = SelectedStep();
    if (!s || !PropertyGrid || row < 0 || row >= PropertyRowCount) return;
    const PropertyRow& r = PropertyTable[row];
    if (r.locked || r.rowType == ROW_END || r.rowType == ROW_CHECK) return;
    ActiveRow = row;
    RECT cell;
    CellRect(row, &cell);
    int right = cell.right;
    if (r.rowType == ROW_RECORDING) {
        const int x = cell.left + 4;
        AddTip(AddPart("BUTTON", "Record", BS_PUSHBUTTON, x, cell.top, 56, cell.bottom - cell.top, ID_RECORD),
               "Record the mouse and the keyboard until Stop");
        AddTip(AddPart("BUTTON", "Play", BS_PUSHBUTTON, x + 58, cell.top, 44, cell.bottom - cell.top, ID_PLAY),
               "Play the recording back");
        AddTip(AddPart("BUTTON", "Stop", BS_PUSHBUTTON, x + 104, cell.top, 44, cell.bottom - cell.top, ID_STOP),
               "Stop recording");
        ActiveEditor = EditorParts.front();
        return;
    }
    AddButtons(r, cell, &right);
    const char* value = StepFieldText(*s, r.field, nullptr);
    if (!value) value = "";
    int left = cell.left;
    if (r.flags & ROWF_INNER_CHECK) {
        const int width = 16 + 7 * (int)strlen(r.choices);
        right -= width;
        InnerCheck = AddPart("BUTTON", r.choices, BS_AUTOCHECKBOX, right, cell.top, width, cell.bottom - cell.top,
                             ID_INNER_CHECK);
        if (InnerChecked(r, value)) SendMessageA(InnerCheck, BM_SETCHECK, BST_CHECKED, 0);
    }
    if (r.rowType == ROW_LIST) {
        HWND combo = AddPart("COMBOBOX", "", CBS_DROPDOWN | CBS_AUTOHSCROLL | WS_VSCROLL, left, cell.top - 1,
                             right - left, 200, ID_EDITOR);
        FillList(combo, r, value);
        ActiveEditor = combo;
        SetFocus(combo);
        return;
    }
    DWORD style = ES_AUTOHSCROLL | WS_BORDER;
    const int rowHeight = cell.bottom - cell.top;
    if (r.rowType == ROW_LINES) style = ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN | WS_BORDER | WS_VSCROLL;
    if (r.rowType == ROW_MASKED) style |= ES_PASSWORD;
    HWND edit = AddPart("EDIT", value, style, left, cell.top, right - left, rowHeight, ID_EDITOR);
    OriginalEditProc = (WNDPROC)SetWindowLongPtrA(edit, GWLP_WNDPROC, (LONG_PTR)EditProc);
    EditorRowHeight = rowHeight;
    if (r.rowType == ROW_LINES) FitEditor(edit);
    if (InnerCheck && SendMessageA(InnerCheck, BM_GETCHECK, 0, 0) == BST_CHECKED) EnableWindow(edit, FALSE);
    SendMessageA(edit, EM_SETSEL, 0, -1);
    SendMessageA(edit, WM_VSCROLL, SB_TOP, 0);  // the text from its start, all of it selected
    ActiveEditor = edit;
    SetFocus(edit);
}

void CommitEditor() {
    Step* s = SelectedStep();
    if (!ActiveEditor || !s || ActiveRow < 0 || ActiveRow >= MAX_PROPERTY_ROWS) return;
    const PropertyRow& r = PropertyTable[ActiveRow];
    if (r.rowType == ROW_RECORDING) {
        DestroyParts();
        return;
    }
    int length = GetWindowTextLengthA(ActiveEditor);
    const LRESULT item = r.rowType == ROW_LIST ? SendMessageA(ActiveEditor, CB_GETCURSEL, 0, 0) : CB_ERR;
    if (item != CB_ERR) {
        const int itemLength = (int)SendMessageA(ActiveEditor, CB_GETLBTEXTLEN, (WPARAM)item, 0);
        if (itemLength > length) length = itemLength;
    }
    AutoHeapBlock block(HeapAllocZero(length + 2 < 260 ? 260 : (size_t)length + 2));
    if (!block.p) return;  // the editor stays open and nothing is stored
    char* text = block.p;
    const bool inner = InnerCheck && SendMessageA(InnerCheck, BM_GETCHECK, 0, 0) == BST_CHECKED;
    if (r.rowType == ROW_LIST) {
        if (item != CB_ERR)
            SendMessageA(ActiveEditor, CB_GETLBTEXT, (WPARAM)item, (LPARAM)text);
        else
            GetWindowTextA(ActiveEditor, text, length + 1);
        if (r.flags & ROWF_INNER_CHECK)
            if (char* cut = strrchr(text, ';')) *cut = 0;
    } else {
        GetWindowTextA(ActiveEditor, text, length + 1);
    }
    if (inner) CopyIntoN(text, HeapBlockSize(text), InnerCheckValue(r));
    // The data administrator is an item to start, not a value to keep.
    if (r.extra == LIST_DATA_SOURCES && lstrcmpA(text, kAdministrator) == 0) {
        char program[MAX_PATH];
        GetSystemDirectoryA(program, sizeof program);
        AppendInto(program, "\\odbcad32.exe");
        ShellExecuteA(MainWindow, nullptr, program, nullptr, nullptr, SW_SHOWNORMAL);
        DestroyParts();
        return;
    }
    SaveUndo((int32_t)GetTickCount(), CurrentTab().selected, UNDO_MODIFIED);
    if (r.rowType == ROW_MASKED) {
        std::string shifted = text;
        ShiftLetters(shifted, 3);
        CopyIntoN(text, HeapBlockSize(text), shifted.c_str());
    }
    int width = 0;
    char* field = StepFieldText(*s, r.field, &width);
    if (r.field == FIELD_TEXT || r.field == FIELD_COMMENT) {
        char*& heap = r.field == FIELD_TEXT ? s->text : s->comment;
        heap = EnsureCapacity(heap, strlen(text));
        if (heap) CopyIntoN(heap, HeapBlockSize(heap), text);
    } else if (field && width > 0) {
        lstrcpynA(field, text, width);
    }
    const bool relabel = r.field == FIELD_OUTPUT || r.field == FIELD_ONFAIL;
    DestroyParts();
    if (relabel) BuildPropertyTable(1);
    if (PropertyGrid) InvalidateRect(PropertyGrid, nullptr, TRUE);
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
}

void DiscardEditor() { DestroyParts(); }

void ToggleCheckRow(int row) {
    Step* s = SelectedStep();
    if (!s || row < 0 || row >= PropertyRowCount || PropertyTable[row].rowType != ROW_CHECK) return;
    PropertyRow& r = PropertyTable[row];
    SaveUndo((int32_t)GetTickCount(), CurrentTab().selected, UNDO_MODIFIED);
    if (r.field == FIELD_ONFAIL_IMAGE) {
        s->onfail_image = !s->onfail_image;
    } else if (r.field == FIELD_ONFAIL_LOG) {
        s->onfail_log = !s->onfail_log;
    } else {
        int width = 0;
        char* field = StepFieldText(*s, r.field, &width);
        if (!field || width <= 0) return;
        std::string words = field;
        if (PropertyChecked(*s, r)) {
            ReplaceInString(words, r.choices, "", 0, 0);
        } else {
            if (!words.empty()) words += ", ";
            words += r.choices;
        }
        // Tidy the separators that a removed word leaves.
        while (words.find(", ,") != std::string::npos) ReplaceInString(words, ", ,", ",", 0, 0);
        while (!words.empty() && (words[0] == ',' || words[0] == ' ')) words.erase(0, 1);
        while (!words.empty() && (words.back() == ',' || words.back() == ' ')) words.pop_back();
        lstrcpynA(field, words.c_str(), width);
    }
    r.checked = PropertyChecked(*s, r);
    if (PropertyGrid) InvalidateRect(PropertyGrid, nullptr, TRUE);
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
}

int PropertyLabelsWidth() {
    int widest = 0;
    if (HasSelection())
        for (int row = 0; row < PropertyRowCount; row++) {
            const int w = TextWidth(PropertyTable[row].label);
            if (w > widest) widest = w;
        }
    return widest;
}

bool PropertyLabelCut(int row) {
    if (!PropertyGrid || !HasSelection() || row < 0 || row >= PropertyRowCount) return false;
    return TextWidth(PropertyTable[row].label) + LabelMargin() > ListView_GetColumnWidth(PropertyGrid, 0);
}
