// The toolbar: shown from the View menu, its buttons clicked as a user
// clicks them run their commands, and each is enabled exactly when its menu
// item is.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "base/settings.h"
#include "desktop/steprecorder.h"
#include "editor/commands.h"
#include "editor/toolbar.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "script/step.h"
#include "test_support.h"

namespace {

bool Enabled(int command) { return SendMessageA(Toolbar, TB_ISBUTTONENABLED, (WPARAM)command, 0) != 0; }
bool Pressed(int command) { return SendMessageA(Toolbar, TB_ISBUTTONCHECKED, (WPARAM)command, 0) != 0; }

bool MenuEnabled(HWND window, int command) {
    return !(GetMenuState(GetMenu(window), (UINT)command, MF_BYCOMMAND) & (MF_GRAYED | MF_DISABLED));
}

// A click on the button, with the pointer, as the user clicks.
void ClickButton(int command) {
    RECT r;
    ASSERT_TRUE(SendMessageA(Toolbar, TB_GETRECT, (WPARAM)command, (LPARAM)&r));
    POINT at = {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
    ClientToScreen(Toolbar, &at);
    MouseAt(at, 0);
    Pump();
    MouseAt(at, MOUSEEVENTF_LEFTDOWN);
    MouseAt(at, MOUSEEVENTF_LEFTUP);
    PumpUntil([] { return GetAsyncKeyState(VK_LBUTTON) == 0; }, 1000);
    Pump();
}

TEST(Toolbar, ShowToolbarShowsItAndItsButtonsRunTheirCommands) {
    Editor e;
    ASSERT_TRUE(Toolbar);
    EXPECT_FALSE(IsWindowVisible(Toolbar));
    e.Command(CMD_SHOW_TOOLBAR);
    ASSERT_TRUE(IsWindowVisible(Toolbar));
    EXPECT_EQ(SettingInt("Palettes\\Toolbar\\visible"), 1);
    EXPECT_TRUE(GetMenuState(GetMenu(e.window), CMD_SHOW_TOOLBAR, MF_BYCOMMAND) & MF_CHECKED);
    // The step list starts under it.
    RECT bar, list;
    GetWindowRect(Toolbar, &bar);
    GetWindowRect(StepList, &list);
    EXPECT_GE(list.top, bar.bottom);
    EXPECT_EQ(std::string(ToolbarTip(CMD_REDO)), "Redo (Ctrl+Y)");
    EXPECT_EQ(std::string(ToolbarTip(CMD_RECORD_STEPS)), "Record as Steps (Ctrl+Shift+R)");

    const std::string path = TempFolder() + "\\bar.zxm";
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                         "<step><action>Label</action><text>one</text></step>\r\n"
                         "<step><action>Label</action><text>two</text></step>\r\n</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 2);
    SetForegroundWindow(e.window);
    Pump();
    // Nothing to undo or redo yet: greyed as the menu's items are.
    EXPECT_FALSE(Enabled(CMD_UNDO));
    EXPECT_FALSE(Enabled(CMD_REDO));
    EXPECT_FALSE(Enabled(CMD_STOP));
    EXPECT_TRUE(Enabled(CMD_RUN));

    SelectStepRow(0);
    ClickButton(CMD_CUT);
    EXPECT_EQ(CurrentTab().count, 1);
    EXPECT_TRUE(Enabled(CMD_UNDO));
    ClickButton(CMD_UNDO);
    EXPECT_EQ(CurrentTab().count, 2);
    EXPECT_TRUE(Enabled(CMD_REDO));
    ClickButton(CMD_REDO);
    EXPECT_EQ(CurrentTab().count, 1);
    ClickButton(CMD_PASTE);
    EXPECT_EQ(CurrentTab().count, 2);
    ClickButton(CMD_NEW);
    EXPECT_EQ(TabsInUse(), 2);
    for (int command : {CMD_NEW, CMD_UNDO, CMD_REDO, (int)CMD_RUN, (int)CMD_STOP, CMD_CUT, CMD_RECORD_STEPS})
        EXPECT_EQ(Enabled(command), MenuEnabled(e.window, command)) << command;

    // While a run goes on, Run is off and Stop on, as in the menu.
    ShowTab(0);
    const std::string slow = TempFolder() + "\\slow.zxm";
    WriteWholeFile(slow, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                         "<step><action>Delay</action><timeout>5</timeout></step>\r\n</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(slow.c_str()), 1);
    ClickButton(CMD_RUN);
    ASSERT_TRUE(PumpUntil([] { return RunThread != nullptr; }, 5000));
    EXPECT_FALSE(Enabled(CMD_RUN));
    EXPECT_TRUE(Enabled(CMD_STOP));
    // A run's own input is not recorded: Record as Steps waits for its end.
    EXPECT_FALSE(Enabled(CMD_RECORD_STEPS));
    EXPECT_FALSE(MenuEnabled(e.window, CMD_RECORD_STEPS));
    ClickButton(CMD_STOP);
    EXPECT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
    // The run thread brings the buttons up to date one after the other;
    // Record as Steps comes after Run and Stop.
    EXPECT_TRUE(PumpUntil([] { return Enabled(CMD_RECORD_STEPS); }, 5000));
    EXPECT_TRUE(Enabled(CMD_RUN));
    EXPECT_FALSE(Enabled(CMD_STOP));

    // The recording button starts a recording and shows pressed, as the
    // menu item shows a check, until it is clicked again.
    ClickButton(CMD_RECORD_STEPS);
    EXPECT_TRUE(StepRecorderRunning());
    EXPECT_TRUE(Pressed(CMD_RECORD_STEPS));
    EXPECT_TRUE(GetMenuState(GetMenu(e.window), CMD_RECORD_STEPS, MF_BYCOMMAND) & MF_CHECKED);
    ClickButton(CMD_RECORD_STEPS);
    EXPECT_FALSE(StepRecorderRunning());
    EXPECT_FALSE(Pressed(CMD_RECORD_STEPS));
    EXPECT_FALSE(GetMenuState(GetMenu(e.window), CMD_RECORD_STEPS, MF_BYCOMMAND) & MF_CHECKED);
}

}  // namespace
