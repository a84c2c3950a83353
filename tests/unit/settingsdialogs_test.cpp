// The Compile Options and report dialogs show their settings, with defaults
// from the script's name, and store them on OK.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "editor/settingsdialogs.h"
#include "resources/resource.h"
#include "script/step.h"
#include "test_support.h"

namespace {

HWND Open(int id) {
    HWND dialog = CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(id), nullptr, SettingsDialogProc, id);
    EXPECT_TRUE(dialog);
    return dialog;
}

std::string Field(HWND dialog, int id) {
    char text[MAX_PATH] = "";
    GetDlgItemTextA(dialog, id, text, sizeof text);
    return text;
}

std::string Setting(const char* name) {
    char text[MAX_PATH];
    SettingText(name, text, sizeof text);
    return text;
}

TEST(SettingsDialogs, CompileOptionsStartFromTheScriptAndStoreTheIconUsed) {
    lstrcpyA(CurrentTab().path, "C:\\jobs\\daily.zxm");
    HWND dialog = Open(IDD_COMPILE_OPTIONS);
    EXPECT_EQ(Field(dialog, IDC_COMPILE_OUTPUT), "C:\\jobs\\daily.exe");
    EXPECT_EQ(Field(dialog, IDC_COMPILE_VERSION), "1.0");
    EXPECT_EQ(IsDlgButtonChecked(dialog, IDC_COMPILE_DEF_ICON), BST_CHECKED);
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(dialog, IDC_COMPILE_ICON_FILE)));

    CheckDlgButton(dialog, IDC_COMPILE_DEF_ICON, BST_UNCHECKED);
    SendMessageA(dialog, WM_COMMAND, IDC_COMPILE_DEF_ICON, 0);
    EXPECT_TRUE(IsWindowEnabled(GetDlgItem(dialog, IDC_COMPILE_ICON_FILE)));
    SetDlgItemTextA(dialog, IDC_COMPILE_ICON_FILE, "C:\\icons\\job.ico");
    SetDlgItemTextA(dialog, IDC_COMPILE_VERSION, "2.5");
    SendMessageA(dialog, WM_COMMAND, IDOK, 0);
    DestroyWindow(dialog);
    EXPECT_EQ(Setting("Compile\\Output"), "C:\\jobs\\daily.exe");
    EXPECT_EQ(Setting("Compile\\Icon"), "C:\\icons\\job.ico");
    EXPECT_EQ(Setting("Compile\\IconFile"), "C:\\icons\\job.ico");
    EXPECT_EQ(SettingInt("Compile\\Def_Icon"), 0);
    EXPECT_EQ(Setting("Compile\\Version"), "2.5");

    // Ticking the default icon again clears the icon used, but keeps the file typed.
    dialog = Open(IDD_COMPILE_OPTIONS);
    EXPECT_EQ(Field(dialog, IDC_COMPILE_VERSION), "2.5");
    CheckDlgButton(dialog, IDC_COMPILE_DEF_ICON, BST_CHECKED);
    SendMessageA(dialog, WM_COMMAND, IDOK, 0);
    DestroyWindow(dialog);
    EXPECT_EQ(Setting("Compile\\Icon"), "");
    EXPECT_EQ(Setting("Compile\\IconFile"), "C:\\icons\\job.ico");
}

TEST(SettingsDialogs, ReportOptionsShowEveryColumnAtFirst) {
    lstrcpyA(CurrentTab().path, "C:\\jobs\\daily.zxm");
    HWND dialog = Open(IDD_REPORT_OPTIONS);
    EXPECT_EQ(Field(dialog, IDC_REPORT_XML), "C:\\jobs\\daily_Report.XML");
    EXPECT_EQ(Field(dialog, IDC_REPORT_LENGTH), "64");
    for (int column = 0; column < 6; column++)
        EXPECT_EQ(IsDlgButtonChecked(dialog, IDC_REPORT_SHOW1 + column), BST_CHECKED) << column;
    CheckDlgButton(dialog, IDC_REPORT_SHOW1 + 2, BST_UNCHECKED);
    SetDlgItemTextA(dialog, IDC_REPORT_LENGTH, "100");
    SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);  // nothing stored
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Report\\Show3"), 0);
    DestroyWindow(dialog);

    dialog = Open(IDD_REPORT_OPTIONS);
    CheckDlgButton(dialog, IDC_REPORT_SHOW1 + 2, BST_UNCHECKED);
    SetDlgItemTextA(dialog, IDC_REPORT_LENGTH, "100");
    SendMessageA(dialog, WM_COMMAND, IDOK, 0);
    DestroyWindow(dialog);
    EXPECT_EQ(SettingInt("Report\\Show3"), 0);
    EXPECT_EQ(SettingInt("Report\\Show1"), 1);
    EXPECT_EQ(SettingInt("Report\\MaxTextLen"), 100);
    EXPECT_EQ(Setting("Report\\LastXML"), "C:\\jobs\\daily_Report.XML");
}

}  // namespace
