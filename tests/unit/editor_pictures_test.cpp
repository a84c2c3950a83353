// The help's pictures of the editor (docs/help/*.png), taken from the
// real windows on the test display. Not part of a test run: run it by hand
// with --gtest_also_run_disabled_tests --gtest_filter='HelpPictures.*' and
// ZR_SHOTS set to a folder, then turn the bitmaps into PNG files.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "editor/actionstree.h"
#include "editor/commands.h"
#include "editor/debugcommands.h"
#include "editor/optionssheet.h"
#include "editor/variablespalette.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "run/debugrun.h"
#include "test_support.h"

namespace {

std::string ShotFolder;

// The folder ZR_SHOTS names, for Save; false when it names none.
bool UseShotFolder() {
    const char* folder = getenv("ZR_SHOTS");
    ShotFolder = folder ? folder : "";
    return folder != nullptr;
}

void SaveRect(const RECT& r, const char* name) {
    const int w = r.right - r.left, h = r.bottom - r.top;
    HDC screen = GetDC(nullptr);
    std::vector<COLORREF> pixels;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) pixels.push_back(GetPixel(screen, r.left + x, r.top + y));
    ReleaseDC(nullptr, screen);
    SaveBmp(ShotFolder + "\\" + name, w, h, pixels);
}

void Save(HWND window, const char* name) {
    RECT r;
    GetWindowRect(window, &r);
    SaveRect(r, name);
}

void Settle() {
    for (int i = 0; i < 10; i++) {
        Pump();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 30, QS_ALLINPUT);
    }
}

void CALLBACK ShootSheet(HWND, UINT, UINT_PTR timer, DWORD) {
    if (!OptionsSheet || !IsWindowVisible(OptionsSheet)) return;
    KillTimer(nullptr, timer);
    PropSheet_SetCurSel(OptionsSheet, nullptr, 1);
    Settle();
    Save(OptionsSheet, "options.bmp");
    PropSheet_PressButton(OptionsSheet, PSBTN_CANCEL);
}

TEST(HelpPictures, DISABLED_TheEditorTheOptionsSheetAndTheVariablesPalette) {
    ASSERT_TRUE(UseShotFolder()) << "set ZR_SHOTS to the folder for the pictures";
    Editor e(900, 640);
    WriteSetting(nullptr, "Ann Smith", 0, nullptr, ZR_ROOT "UserVariables\\customer");
    WriteSetting(nullptr, "12", 0, nullptr, ZR_ROOT "UserVariables\\quantity");
    e.Command(CMD_SHOW_TOOLBAR);
    e.Command(CMD_SHOW_VARIABLES);
    SetFavorite("Type", true);
    SetFavorite("Activate", true);
    // What a run that failed at the order window leaves in the Output palette.
    SetWindowTextA(OutputEdit,
                   "----------------------------------------\r\n"
                   "Starting Run at 9:41:07 for csv_form.zxm\r\n"
                   "[STEP 1]: Comment \r\n"
                   "[STEP 2]: Start orderform.exe\r\n"
                   "[STEP 3]: Wait for Window to Appear Order Entry\r\n"
                   "\tERROR while running [STEP 3] Wait for Window to Appear: No window matches the search "
                   "criteria\r\n"
                   "\tFailure Mode: Display Error and Stop\r\n"
                   "RUN FAILED\r\n");
    // The checkout, as the harness maps it.
    const std::string examples = "S:\\examples\\";
    ASSERT_GT(OpenFileInTab((examples + "csv_form.zxm").c_str()), 0);
    SelectStepRow(5);
    SetForegroundWindow(e.window);
    SetFocus(StepList);
    Settle();
    Save(e.window, "editor.bmp");
    Save(VariablesPalette, "variables.bmp");
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, ShootSheet);
    e.Key(VK_F11);
    KillTimer(nullptr, timer);
}

// The actions tree narrowed by its search box (docs/help/actions.png).
TEST(HelpPictures, DISABLED_TheActionsTreeNarrowedBySearch) {
    ASSERT_TRUE(UseShotFolder()) << "set ZR_SHOTS to the folder for the pictures";
    Editor e(900, 640);
    SetFavorite("Type", true);
    SetWindowTextA(ActionsFilter, "wait");
    ActionsFilterChanged();
    SetForegroundWindow(e.window);
    SetFocus(ActionsFilter);
    SendMessageA(ActionsFilter, EM_SETSEL, 4, 4);
    Settle();
    RECT box, tree, both;
    GetWindowRect(ActionsFilter, &box);
    GetWindowRect(ActionsTree, &tree);
    UnionRect(&both, &box, &tree);
    // The part of the tree that holds the actions found.
    both.bottom = both.top + (both.bottom - both.top) * 3 / 5;
    SaveRect(both, "actions.bmp");
}

// A debug run paused at a breakpoint inside a loop, the Variables palette
// beside it (docs/help/debugging.png).
TEST(HelpPictures, DISABLED_ADebugRunPausedAtABreakpoint) {
    ASSERT_TRUE(UseShotFolder()) << "set ZR_SHOTS to the folder for the pictures";
    Editor e(900, 640);
    e.Command(CMD_SHOW_VARIABLES);
    const std::string path = TempFolder() + "\\orders.zxm";
    WriteWholeFile(path,
                   "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                   "<step><action>Create/Set Variable</action><text>0</text><output value=\"total\">Variable</output></step>\r\n"
                   "<step><action>Start 'For' Loop</action><text>3</text></step>\r\n"
                   "<step><action>Increment Variable</action><output value=\"total\">Variable</output></step>\r\n"
                   "<step><action>Write to Log</action><text>order %total</text></step>\r\n"
                   "<step><action>NEXT LOOP</action></step>\r\n"
                   "<step><action>Write to Log</action><text>%total orders</text></step>\r\n"
                   "</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 6);
    CurrentTab().steps[3].status |= STEP_BREAKPOINT;
    e.Command(CMD_DEBUG);
    ASSERT_TRUE(PumpUntil([] { return RunPaused() && PausesShown() == PauseCount(); }, 10000));
    SetForegroundWindow(e.window);
    Settle();
    Save(e.window, "debugging.bmp");
}

}  // namespace
