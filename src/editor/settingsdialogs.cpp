// "Compile Options" and the report's options: one procedure over a table per
// dialog, each row tying a control to its setting.
#include "editor/settingsdialogs.h"
#include "base/text.h"

#include <string.h>

#include <string>

#include "desktop/filedialogs.h"
#include "base/settings.h"
#include "resources/resource.h"
#include "script/step.h"

namespace {

enum { TEXT_FIELD, CHECK_BOX, NUMBER_FIELD };

struct SettingControl {
    int id;
    const char* setting;  // under SOFTWARE\ZantoRunner
    int kind;
    const char* shown;    // what an absent setting shows: a text, or "1" for a ticked box
};

const SettingControl kCompile[] = {
    {IDC_COMPILE_OUTPUT, "Compile\\Output", TEXT_FIELD, nullptr},  // from the script's name
    {IDC_COMPILE_ICON_FILE, "Compile\\IconFile", TEXT_FIELD, ""},
    {IDC_COMPILE_DEF_ICON, "Compile\\Def_Icon", CHECK_BOX, "1"},
    {IDC_COMPILE_VERSION, "Compile\\Version", TEXT_FIELD, "1.0"},
    {IDC_COMPILE_COPYRIGHT, "Compile\\Copyright", TEXT_FIELD, "Made with ZantoRunner"},
    {IDC_COMPILE_DESCRIPTION, "Compile\\Description", TEXT_FIELD, ""},
    {IDC_COMPILE_OPTIMIZE, "Compile\\Optimize", CHECK_BOX, ""},
};

const SettingControl kReport[] = {
    {IDC_REPORT_XML, "Report\\LastXML", TEXT_FIELD, nullptr},  // from the script's name
    {IDC_REPORT_XSL, "Report\\LastXSLT", TEXT_FIELD, ""},
    {IDC_REPORT_DEFAULT, "Report\\UseDefault", CHECK_BOX, "1"},
    {IDC_REPORT_LENGTH, "Report\\MaxTextLen", NUMBER_FIELD, "64"},
    {IDC_REPORT_SHOW1, "Report\\Show1", CHECK_BOX, "1"},
    {IDC_REPORT_SHOW1 + 1, "Report\\Show2", CHECK_BOX, "1"},
    {IDC_REPORT_SHOW1 + 2, "Report\\Show3", CHECK_BOX, "1"},
    {IDC_REPORT_SHOW1 + 3, "Report\\Show4", CHECK_BOX, "1"},
    {IDC_REPORT_SHOW1 + 4, "Report\\Show5", CHECK_BOX, "1"},
    {IDC_REPORT_SHOW1 + 5, "Report\\Show6", CHECK_BOX, "1"},
};

struct Table {
    const SettingControl* rows;
    int count;
};

Table TableOf(int dialog) {
    if (dialog == IDD_COMPILE_OPTIONS) return {kCompile, (int)(sizeof kCompile / sizeof kCompile[0])};
    return {kReport, (int)(sizeof kReport / sizeof kReport[0])};
}

// The script's path without its extension; "" for an unsaved script.
std::string ScriptStem() {
    const char* path = CurrentTab().path;
    if (!path[0] || lstrcmpA(path, "(Untitled)") == 0) return "";
    std::string stem = path;
    const size_t dot = stem.rfind('.'), slash = stem.rfind('\\');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) stem.resize(dot);
    return stem;
}

// An output or report file left over from another script would be a trap:
// for a saved script the field starts from the script's own name.
std::string NamedAfterScript(int id, const std::string& stored) {
    const std::string stem = ScriptStem();
    if (id == IDC_COMPILE_OUTPUT) {
        if (stem.empty()) return stored.empty() ? "Untitled.exe" : stored;
        return stem + ".exe";
    }
    if (stem.empty()) {
        if (!stored.empty()) return stored;
        char folder[MAX_PATH];
        GetCurrentDirectoryA(sizeof folder, folder);
        return std::string(folder) + "\\Report.XML";
    }
    return stem + "_Report.XML";
}

void Load(HWND dialog, int id) {
    const Table t = TableOf(id);
    for (int i = 0; i < t.count; i++) {
        const SettingControl& c = t.rows[i];
        const bool present = ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "%s", c.setting) > 0;
        if (c.kind == CHECK_BOX) {
            const bool on = present ? SettingInt(c.setting) != 0 : c.shown && c.shown[0] == '1';
            CheckDlgButton(dialog, c.id, on ? BST_CHECKED : BST_UNCHECKED);
            continue;
        }
        char text[MAX_PATH] = "";
        if (c.kind == NUMBER_FIELD && present) FormatInto(text, "%d", SettingInt(c.setting));
        else if (present) SettingText(c.setting, text, sizeof text);
        else if (c.shown) CopyIntoN(text, sizeof text, c.shown);
        if (!c.shown) CopyIntoN(text, sizeof text, NamedAfterScript(c.id, text).c_str());
        SetDlgItemTextA(dialog, c.id, text);
    }
    if (id == IDD_COMPILE_OPTIONS)
        EnableWindow(GetDlgItem(dialog, IDC_COMPILE_ICON_FILE), !IsDlgButtonChecked(dialog, IDC_COMPILE_DEF_ICON));
}

void Store(HWND dialog, int id) {
    const Table t = TableOf(id);
    for (int i = 0; i < t.count; i++) {
        const SettingControl& c = t.rows[i];
        char path[300];
        FormatInto(path, ZR_ROOT "%s", c.setting);
        if (c.kind == CHECK_BOX) {
            WriteSetting(nullptr, nullptr, IsDlgButtonChecked(dialog, c.id) == BST_CHECKED ? 1 : 0, nullptr, "%s", path);
        } else if (c.kind == NUMBER_FIELD) {
            WriteSetting(nullptr, nullptr, (int)GetDlgItemInt(dialog, c.id, nullptr, TRUE), nullptr, "%s", path);
        } else {
            char text[MAX_PATH] = "";
            GetDlgItemTextA(dialog, c.id, text, sizeof text);
            WriteSetting(nullptr, text, 0, nullptr, "%s", path);
        }
    }
    // The icon actually used: none of its own while the default box is ticked.
    if (id == IDD_COMPILE_OPTIONS) {
        char icon[MAX_PATH] = "";
        if (!IsDlgButtonChecked(dialog, IDC_COMPILE_DEF_ICON)) GetDlgItemTextA(dialog, IDC_COMPILE_ICON_FILE, icon, sizeof icon);
        WriteSetting(nullptr, icon, 0, nullptr, ZR_ROOT "Compile\\Icon");
    }
}

void Browse(HWND dialog, int field) {
    char path[MAX_PATH] = "";
    GetDlgItemTextA(dialog, field, path, sizeof path);
    // The icon is read; every other file is one that the command writes.
    const char* filter = field == IDC_COMPILE_ICON_FILE
                             ? "Icons and programs (*.ico, *.exe, *.dll)\0*.ico;*.exe;*.dll\0All Files (*.*)\0*.*\0"
                         : field == IDC_COMPILE_OUTPUT ? "Programs (*.exe)\0*.exe\0"
                         : field == IDC_REPORT_XSL     ? "XSL Files (*.xsl)\0*.xsl\0All Files (*.*)\0*.*\0"
                                                       : "XML Files (*.xml)\0*.xml\0All Files (*.*)\0*.*\0";
    if (ChooseFileName(dialog, filter, nullptr, path, sizeof path, field != IDC_COMPILE_ICON_FILE))
        SetDlgItemTextA(dialog, field, path);
}

INT_PTR DefaultShowSettingsDialog(HWND owner, int id) {
    return DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(id), owner, SettingsDialogProc, id);
}

}  // namespace

INT_PTR (*ShowSettingsDialog)(HWND owner, int id) = DefaultShowSettingsDialog;

INT_PTR CALLBACK SettingsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const int id = (int)GetWindowLongPtrA(dialog, GWLP_USERDATA);
    switch (message) {
    case WM_INITDIALOG:
        SetWindowLongPtrA(dialog, GWLP_USERDATA, lParam);
        Load(dialog, (int)lParam);
        return TRUE;
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case IDOK:
            Store(dialog, id);
            EndDialog(dialog, IDOK);
            return TRUE;
        case IDCANCEL:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        case IDC_COMPILE_DEF_ICON:
            EnableWindow(GetDlgItem(dialog, IDC_COMPILE_ICON_FILE), !IsDlgButtonChecked(dialog, IDC_COMPILE_DEF_ICON));
            return TRUE;
        case IDC_BROWSE_OUTPUT:
        case IDC_BROWSE_ICON:
        case IDC_BROWSE_XML:
        case IDC_BROWSE_XSL:
            Browse(dialog, LOWORD(wParam) - 10);
            return TRUE;
        }
        break;
    }
    return FALSE;
}
