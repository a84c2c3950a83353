// The Variables palette. The registry is the only store: the list is filled
// by walking the values of the UserVariables key, and a run tells each value
// it saves through the variable store's listener, on the run thread, which
// reaches the list only by sending it messages.
#include "editor/variablespalette.h"

#include <commctrl.h>
#include <string.h>

#include <string>

#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "base/uservariables.h"
#include "desktop/inputbox.h"
#include "editor/metrics.h"
#include "editor/palettewindow.h"

HWND VariablesPalette;
HWND VariablesList;

namespace {

enum { IDC_VARIABLES_LIST = 1246, PREVIEW = 194 };  // a preview of up to 193 characters

HWND Title;
HWND Buttons[3];

// The row of a name, or -1.
int RowOf(const char* name) {
    LVFINDINFOA find = {};
    find.flags = LVFI_STRING;
    find.psz = name;
    return (int)SendMessageA(VariablesList, LVM_FINDITEMA, (WPARAM)-1, (LPARAM)&find);
}

void SetValue(int row, const char* value) {
    LVITEMA cell = {};
    cell.iSubItem = 1;
    cell.pszText = (char*)value;
    SendMessageA(VariablesList, LVM_SETITEMTEXTA, (WPARAM)row, (LPARAM)&cell);
}

// A new row at `at`, with its value.
void InsertRow(int at, const char* name, const char* value) {
    LVITEMA item = {};
    item.mask = LVIF_TEXT;
    item.iItem = at;
    item.pszText = (char*)name;
    SetValue((int)SendMessageA(VariablesList, LVM_INSERTITEMA, 0, (LPARAM)&item), value);
}

void SetRow(const char* name, const char* value) {
    const int row = RowOf(name);
    if (row < 0)
        InsertRow((int)SendMessageA(VariablesList, LVM_GETITEMCOUNT, 0, 0), name, value);
    else
        SetValue(row, value);
}

// The variable store's listener: runs on whichever thread saved.
void VariableChanged(const char* name, const char* value, bool deleted) {
    if (!VariablesList || !IsWindowVisible(VariablesPalette)) return;
    if (!name) {
        SendMessageA(VariablesList, LVM_DELETEALLITEMS, 0, 0);
    } else if (deleted) {
        const int row = RowOf(name);
        if (row >= 0) SendMessageA(VariablesList, LVM_DELETEITEM, (WPARAM)row, 0);
    } else {
        SetRow(name, value ? value : "");
    }
    RedrawWindow(VariablesList, nullptr, nullptr, RDW_INVALIDATE);
}

std::string SelectedName() {
    const int row = ListView_GetNextItem(VariablesList, -1, LVNI_SELECTED);
    if (row < 0) return "";
    char name[260] = "";
    ListView_GetItemText(VariablesList, row, 0, name, sizeof name);
    return name;
}

void EditSelected(HWND palette) {
    const std::string name = SelectedName();
    if (name.empty()) return;
    char value[1024] = "";
    ReadSetting(nullptr, value, sizeof value, nullptr, ZR_ROOT "UserVariables\\%s", name.c_str());
    std::string typed = value;
    char prompt[300];
    FormatInto(prompt, "Value of %s:", name.c_str());
    if (!InputBox(palette, "Edit Variable", prompt, typed)) return;
    if (typed.empty()) DeleteSetting(nullptr, ZR_ROOT "UserVariables\\%s", name.c_str());
    else WriteSetting(nullptr, typed.c_str(), 0, nullptr, ZR_ROOT "UserVariables\\%s", name.c_str());
    RefillVariablesList();
}

void DeleteSelected() {
    const std::string name = SelectedName();
    if (name.empty()) return;
    DeleteSetting(nullptr, ZR_ROOT "UserVariables\\%s", name.c_str());
    DeleteVariableFile(name.c_str());
    const int row = RowOf(name.c_str());
    if (row >= 0) ListView_DeleteItem(VariablesList, row);
}

void ClearAll(HWND palette) {
    if (ShowMessageBox(palette, "Are you sure that you want to delete all variables?", "Confirm Action",
                       MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    ResetAllUserVariables();
    if (VariablesList) ListView_DeleteAllItems(VariablesList);
}

void LayOut(HWND palette) {
    RECT r;
    GetClientRect(palette, &r);
    const int line = FontUnitsY(8) + 4, button = FontUnitsY(14), gap = 2;
    MoveWindow(Title, 2, 1, r.right - 4, line - 2, TRUE);
    MoveWindow(VariablesList, 0, line, r.right, r.bottom - line - button - 2 * gap, TRUE);
    const int width = FontUnitsX(48);
    for (int i = 0; i < 3; i++)
        MoveWindow(Buttons[i], gap + i * (width + gap), r.bottom - button - gap, width, button, TRUE);
    ListView_SetColumnWidth(VariablesList, 0, r.right / 3);
    ListView_SetColumnWidth(VariablesList, 1, LVSCW_AUTOSIZE_USEHEADER);
}

LRESULT CALLBACK PaletteProc(HWND palette, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE: {
        HFONT font = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
        Title = CreateWindowExA(0, "STATIC", "Variables", WS_CHILD | WS_VISIBLE | SS_LEFT, 0, 0, 0, 0, palette,
                                nullptr, nullptr, nullptr);
        VariablesList = CreateWindowExA(WS_EX_CLIENTEDGE, WC_LISTVIEWA, "",
                                        WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_SHOWSELALWAYS |
                                            LVS_SINGLESEL | LVS_SORTASCENDING,
                                        0, 0, 0, 0, palette, (HMENU)(INT_PTR)IDC_VARIABLES_LIST, nullptr, nullptr);
        ListView_SetExtendedListViewStyle(VariablesList, LVS_EX_FULLROWSELECT | LVS_EX_INFOTIP);
        const char* headings[2] = {"Variable", "Value"};
        for (int i = 0; i < 2; i++) {
            LVCOLUMNA column = {};
            column.mask = LVCF_TEXT | LVCF_WIDTH;
            column.pszText = (char*)headings[i];
            column.cx = 100;
            SendMessageA(VariablesList, LVM_INSERTCOLUMNA, (WPARAM)i, (LPARAM)&column);
        }
        const char* captions[3] = {"&Edit...", "&Delete", "C&lear All"};
        for (int i = 0; i < 3; i++)
            Buttons[i] = CreateWindowExA(0, "BUTTON", captions[i], WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON,
                                         0, 0, 0, 0, palette, (HMENU)(INT_PTR)(VARIABLE_EDIT + i), nullptr, nullptr);
        for (HWND w : {Title, VariablesList, Buttons[0], Buttons[1], Buttons[2]})
            SendMessageA(w, WM_SETFONT, (WPARAM)font, FALSE);
        UserVariableChanged = VariableChanged;
        return 0;
    }
    case WM_SIZE:
        LayOut(palette);
        return 0;
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case VARIABLE_EDIT: EditSelected(palette); return 0;
        case VARIABLE_DELETE: DeleteSelected(); return 0;
        case VARIABLE_CLEAR_ALL: ClearAll(palette); return 0;
        }
        break;
    case WM_NOTIFY: {
        const NMHDR* header = (const NMHDR*)lParam;
        if (header->hwndFrom != VariablesList) break;
        if (header->code == NM_DBLCLK || header->code == NM_RETURN) EditSelected(palette);
        if (header->code == LVN_KEYDOWN && ((const NMLVKEYDOWN*)lParam)->wVKey == VK_DELETE) DeleteSelected();
        return 0;
    }
    case WM_DESTROY:
        if (UserVariableChanged == VariableChanged) UserVariableChanged = nullptr;
        VariablesPalette = VariablesList = Title = nullptr;
        return 0;
    }
    return DefWindowProcA(palette, message, wParam, lParam);
}

}  // namespace

HWND CreateVariablesPalette(HWND parent) {
    VariablesPalette = CreatePaletteWindow(parent, "ZantoRunnerVariables", PaletteProc);
    return VariablesPalette;
}

void RefillVariablesList() {
    if (!VariablesList) return;
    SendMessageA(VariablesList, WM_SETREDRAW, FALSE, 0);
    ListView_DeleteAllItems(VariablesList);
    for (int index = 0;; index++) {
        char name[260] = "";
        if (!EnumRegValue(nullptr, ZR_ROOT "UserVariables", index, name) || !name[0]) break;
        char value[PREVIEW] = "";
        ReadSetting(nullptr, value, sizeof value, nullptr, ZR_ROOT "UserVariables\\%s", name);
        SetRow(name, value);
    }
    SendMessageA(VariablesList, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(VariablesList, nullptr, TRUE);
}

void ShowRunValues(const char* lines) {
    if (!VariablesList) return;
    // A user variable's name never starts with "(": those rows are the run's.
    for (int row = ListView_GetItemCount(VariablesList) - 1; row >= 0; row--) {
        char name[8] = "";
        ListView_GetItemText(VariablesList, row, 0, name, sizeof name);
        if (name[0] == '(') ListView_DeleteItem(VariablesList, row);
    }
    int row = 0;
    for (const char* line = lines; line && *line;) {
        const char* end = strchr(line, '\n');
        const std::string whole(line, end ? (size_t)(end - line) : strlen(line));
        line = end ? end + 1 : line + whole.size();
        const size_t tab = whole.find('\t');
        if (tab == std::string::npos) continue;
        InsertRow(row++, whole.substr(0, tab).c_str(), whole.substr(tab + 1).c_str());
    }
}
