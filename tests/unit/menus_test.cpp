// Menu items found by path in a real menu bar, posted as commands; the
// system menu; a popup menu chosen by keys.
#include <gtest/gtest.h>

#include <string>

#include "desktop/menus.h"
#include "desktop/pause.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

UINT LastCommand;

LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_COMMAND) LastCommand = LOWORD(wp);
    return DefWindowProcA(w, m, wp, lp);
}

void NoPause(DWORD) {}

class Menus : public ::testing::Test {
protected:
    HWND window = nullptr;
    void SetUp() override {
        ResetTestState();
        DesktopSleep = NoPause;
        WNDCLASSA wc = {};
        wc.lpfnWndProc = Proc;
        wc.lpszClassName = "ZrMenuTest";
        RegisterClassA(&wc);
        HMENU bar = CreateMenu(), file = CreatePopupMenu(), edit = CreatePopupMenu(), recent = CreatePopupMenu();
        AppendMenuA(file, MF_STRING, 101, "&Open...\tCtrl+O");
        AppendMenuA(file, MF_STRING, 102, "Save &As");
        AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(recent, MF_STRING, 111, "&Report");
        AppendMenuA(file, MF_POPUP, (UINT_PTR)recent, "&Recent");
        AppendMenuA(edit, MF_STRING, 201, "&Copy");
        AppendMenuA(bar, MF_POPUP, (UINT_PTR)file, "&File");
        AppendMenuA(bar, MF_POPUP, (UINT_PTR)edit, "&Edit");
        window = CreateWindowExA(0, "ZrMenuTest", "ZrMenus", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 300, 200,
                                 nullptr, bar, nullptr, nullptr);
        LastWindow = window;
        LastCommand = 0;
    }
    void TearDown() override { DestroyWindow(window); }
    int Run(const char* action, const char* text) {
        ReplaceSteps(std::string("<ZantoRunner><step><action>") + action + "</action><text>" + text +
                     "</text><output value=\"picked\">Variable</output></step></ZantoRunner>");
        return ActMenu(0, 0);
    }
    void Pump() {
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
    }
};

TEST_F(Menus, PathsFindItemsWithOrWithoutAmpersandsAndByTheirBeginning) {
    struct {
        const char* path;
        UINT id;
    } cases[] = {
        {"&File;&Open...", 101}, {"File;Open", 101}, {"Open", 101},       {"Save", 102},
        {"Sav", 102},            {"file;save as", 102}, {"Edit;Copy", 201}, {"File;Recent;Report", 111},
        {"Report", 111},         {"Paste", 0},        {"Edit;Open", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(FindMenuCommand(window, nullptr, 0, c.path), c.id) << c.path;
    EXPECT_EQ(FindMenuCommand(nullptr, nullptr, 0, "Open"), 0u);  // no menu at all
}

TEST_F(Menus, ASelectedItemIsPostedAsACommand) {
    EXPECT_EQ(Run("Select Menu Item", "File, Save As"), 1);
    Pump();
    EXPECT_EQ(LastCommand, 102u);
    EXPECT_EQ(Run("Select System Menu", "Mi&nimize"), 1);
    EXPECT_TRUE(IsIconic(window));
    EXPECT_EQ(Run("Select System Menu", "whatever"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to find system menu 'whatever'");
}

DWORD WINAPI ChooseSecondItem(LPVOID) {
    for (int i = 0; i < 200; i++) {
        HWND menu = FindWindowA("#32768", nullptr);
        if (menu && IsWindowVisible(menu)) {
            for (BYTE key : {VK_DOWN, VK_DOWN, VK_RETURN}) {
                keybd_event(key, 0, 0, 0);
                keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
                Sleep(30);
            }
            return 0;
        }
        Sleep(10);
    }
    return 1;
}

TEST_F(Menus, APopupMenuSavesTheChosenLine) {
    HANDLE thread = CreateThread(nullptr, 0, ChooseSecondItem, nullptr, 0, nullptr);
    EXPECT_EQ(Run("Show Popup Menu", "Red\r\n-\r\n Blue"), 1);
    WaitForSingleObject(thread, 5000);
    CloseHandle(thread);
    char picked[64] = "";
    ReadSetting(nullptr, picked, sizeof picked, nullptr, ZR_ROOT "UserVariables\\picked");
    EXPECT_STREQ(picked, " Blue");  // the line as the text holds it
}

}  // namespace
