// The Options sheet, opened with F11 as the user opens it: its pages show
// the registry, store on OK, refuse values out of range, and reset.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>

#include <functional>
#include <string>

#include "base/settings.h"
#include "editor/optionssheet.h"
#include "editor_support.h"
#include "test_support.h"

namespace {

// The sheet is modal: what the test does in it runs from a timer inside the
// sheet's own message loop, once the sheet is there.
std::function<void(HWND)> InSheet;

void CALLBACK DriveSheet(HWND, UINT, UINT_PTR timer, DWORD) {
    if (!OptionsSheet || !IsWindowVisible(OptionsSheet)) return;
    KillTimer(nullptr, timer);
    HWND sheet = OptionsSheet;
    InSheet(sheet);
    // Whatever the steps left, the sheet closes.
    if (IsWindow(sheet) && OptionsSheet) PropSheet_PressButton(sheet, PSBTN_CANCEL);
}

void WithSheet(Editor& editor, std::function<void(HWND)> steps) {
    InSheet = std::move(steps);
    const UINT_PTR timer = SetTimer(nullptr, 0, 30, DriveSheet);
    SetForegroundWindow(editor.window);
    SetFocus(StepList);
    editor.Key(VK_F11);  // returns when the sheet has closed
    KillTimer(nullptr, timer);
    EXPECT_EQ(OptionsSheet, nullptr);
}

// The control of a setting, on its page made current.
HWND Control(HWND sheet, const char* setting) {
    int page = -1;
    const int id = OptionControlId(setting, &page);
    EXPECT_NE(id, 0) << setting;
    // Leaving a page checks it: only another page is chosen.
    if (PropSheet_HwndToIndex(sheet, PropSheet_GetCurrentPageHwnd(sheet)) != page)
        PropSheet_SetCurSel(sheet, nullptr, page);
    HWND current = PropSheet_GetCurrentPageHwnd(sheet);
    HWND control = GetDlgItem(current, id);
    EXPECT_TRUE(control) << setting;
    return control;
}

// The sheet takes a button's press as a posted command: pumped here.
void Press(HWND sheet, int button) {
    PropSheet_PressButton(sheet, button);
    Pump();
}

void Type(HWND field, const char* text) {
    SetWindowTextA(field, text);  // the page hears EN_CHANGE
}

void Choose(HWND list, const char* item) {
    const LRESULT at = SendMessageA(list, CB_FINDSTRINGEXACT, (WPARAM)-1, (LPARAM)item);
    ASSERT_NE(at, CB_ERR) << item;
    SendMessageA(list, CB_SETCURSEL, (WPARAM)at, 0);
    SendMessageA(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_SELCHANGE), (LPARAM)list);
}

std::string Text(HWND control) {
    char text[MAX_PATH] = "";
    GetWindowTextA(control, text, sizeof text);
    return text;
}

TEST(Options, F11OpensTheSheetAndOkStoresSettingsOfSeveralPages) {
    Editor editor;
    const std::string folder = TempFolder();
    const std::string log = folder + "\\run.log";
    bool opened = false;
    WithSheet(editor, [&](HWND sheet) {
        opened = true;
        char title[64] = "";
        GetWindowTextA(sheet, title, sizeof title);
        EXPECT_STREQ(title, "Options");
        // The registry's values are what the pages show.
        EXPECT_EQ(Text(Control(sheet, "MaxUndo")), "500");
        EXPECT_EQ(Text(Control(sheet, "StopKey")), "Pause");
        // Logging page: on, into a file of an existing folder.
        SendMessageA(Control(sheet, "Log"), BM_CLICK, 0, 0);
        Type(Control(sheet, "Logfile"), log.c_str());
        // Run Options: the default failure mode, and the stop key by
        // pressing F12 in its field.
        Choose(Control(sheet, "DefaultFailureMode"), "Stop Silently");
        HWND key = Control(sheet, "StopKey");
        SendMessageA(key, WM_KEYDOWN, VK_F12, 0);
        EXPECT_EQ(Text(key), "F12");
        // General: the undo buffer.
        Type(Control(sheet, "MaxUndo"), "250");
        // UI Style: the list's indent.
        Type(Control(sheet, "Palettes\\MainList\\IndentSize"), "3");
        PropSheet_PressButton(sheet, PSBTN_OK);
    });
    ASSERT_TRUE(opened) << "F11 opened no sheet";
    EXPECT_TRUE(SeenBoxes.empty()) << SeenBoxes[0].text;
    EXPECT_EQ(SettingInt("Log"), 1);
    char text[MAX_PATH];
    SettingText("Logfile", text, sizeof text);
    EXPECT_EQ(std::string(text), log);
    SettingText("DefaultFailureMode", text, sizeof text);
    EXPECT_STREQ(text, "Stop Silently");
    EXPECT_EQ(SettingInt("StopKey"), VK_F12);
    EXPECT_EQ(SettingInt("MaxUndo"), 250);
    EXPECT_EQ(SettingInt("Palettes\\MainList\\IndentSize"), 3);
    EXPECT_STREQ(IndentText, "   ");  // the editor took the new indent at once
    // The sheet opens next time where the user left it.
    EXPECT_EQ(SettingInt("LastTab"), 4);
}

TEST(Options, ValuesOutOfRangeOrAMissingFolderAreRefusedWithWords) {
    Editor editor;
    WithSheet(editor, [&](HWND sheet) {
        Type(Control(sheet, "MaxUndo"), "0");
        Press(sheet, PSBTN_OK);
        ASSERT_EQ(SeenBoxes.size(), 1u);
        EXPECT_EQ(SeenBoxes[0].text, "\"Maximum Undo Steps\" takes a whole number from 1 to 1000000.");
        EXPECT_TRUE(IsWindow(sheet));  // still open, the value not stored
        Type(Control(sheet, "MaxUndo"), "20");
        Type(Control(sheet, "Logfile"), "Z:\\no\\such\\folder\\log.txt");
        Press(sheet, PSBTN_OK);
        ASSERT_EQ(SeenBoxes.size(), 2u);
        EXPECT_EQ(SeenBoxes[1].text, "The folder of the log file does not exist:\n\nZ:\\no\\such\\folder\\log.txt");
    });
    EXPECT_EQ(SettingInt("MaxUndo"), 500);
    char text[MAX_PATH];
    SettingText("Logfile", text, sizeof text);
    EXPECT_STREQ(text, "C:\\ZantoRunnerLog.txt");
}

TEST(Options, ResetPutsEveryDefaultBackAfterTheQuestion) {
    WriteSetting(nullptr, nullptr, 7, nullptr, ZR_ROOT "MaxUndo");
    WriteSetting(nullptr, nullptr, 0x123456, nullptr, ZR_ROOT "Colors\\SkipFill");
    WriteSetting(nullptr, "Stop Silently", 0, nullptr, ZR_ROOT "DefaultFailureMode");
    Editor editor;
    WithSheet(editor, [&](HWND sheet) {
        EXPECT_EQ(Text(Control(sheet, "MaxUndo")), "7");
        NextBoxAnswer = IDNO;
        SendMessageA(Control(sheet, "Reset"), BM_CLICK, 0, 0);
        ASSERT_EQ(SeenBoxes.size(), 1u);
        EXPECT_EQ(SeenBoxes[0].text, "Are you sure that you want to reset all configurations to their original values?");
        EXPECT_EQ(SettingInt("MaxUndo"), 7);
        NextBoxAnswer = IDYES;
        SendMessageA(Control(sheet, "Reset"), BM_CLICK, 0, 0);
        EXPECT_EQ(Text(Control(sheet, "MaxUndo")), "500");  // the open pages show the defaults
        HWND mode = Control(sheet, "DefaultFailureMode");
        char chosen[64] = "";
        SendMessageA(mode, CB_GETLBTEXT, (WPARAM)SendMessageA(mode, CB_GETCURSEL, 0, 0), (LPARAM)chosen);
        EXPECT_STREQ(chosen, "Display Error and Stop");
    });
    EXPECT_EQ(SettingInt("MaxUndo"), 500);
    EXPECT_EQ(SettingInt("Colors\\SkipFill"), 0xF0F0F0);
    EXPECT_EQ(ListLook.skipFill, (COLORREF)0xF0F0F0);
}

}  // namespace
