// The wait actions: delays in pieces and their stop, key waits, and the
// one-shot waits for windows and files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "desktop/pause.h"
#include "desktop/waits.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::vector<DWORD> Pieces;
// Records each piece and sleeps it for real: the waits measure their time
// by the clock.
void RecordAndSleep(DWORD ms) {
    Pieces.push_back(ms);
    Sleep(ms);
}

class Waits : public ::testing::Test {
protected:
    void SetUp() override {
        ResetTestState();
        Pieces.clear();
        DesktopSleep = RecordAndSleep;
        StopKey = VK_PAUSE;
    }
    void TearDown() override {
        SetPriorityClass(GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
        MainWindow = nullptr;
        StopRequested = 0;
    }
    int Run(const char* action, const std::string& text, const char* timeout) {
        ReplaceSteps("<ZantoRunner><step><action>" + std::string(action) + "</action><text>" + text +
                     "</text><timeout>" + timeout + "</timeout></step></ZantoRunner>");
        ScriptStore.tab[0].steps[0].loops = 1;
        return ActWait(0, 0);
    }
};

TEST_F(Waits, DelaySleepsInPiecesOfAtMostAQuarterSecond) {
    std::string folder = LogIntoNewFolder("log.txt");
    EXPECT_EQ(Run("Delay", "", "0.1"), 1);
    EXPECT_EQ(Pieces, (std::vector<DWORD>{100}));
    Pieces.clear();
    EXPECT_EQ(Run("Delay", "", "1"), 1);
    EXPECT_EQ(Pieces, (std::vector<DWORD>{250, 250, 250, 250}));
    EXPECT_EQ(GetPriorityClass(GetCurrentProcess()), (DWORD)NORMAL_PRIORITY_CLASS);
    EXPECT_EQ(ReadWholeFile(folder + "\\log.txt"), "\tDuration: 0.1 second(s)\r\n\tDuration: 1 second(s)\r\n");
}

TEST_F(Waits, AStoppedDelayEndsTheRunAndStaysIdle) {
    StopRequested = 1;
    EXPECT_EQ(Run("Delay", "", "5"), -1);
    EXPECT_EQ(Pieces.size(), 1u);
    EXPECT_EQ(GetPriorityClass(GetCurrentProcess()), (DWORD)IDLE_PRIORITY_CLASS);
}

TEST_F(Waits, KeyWaitsSeeHeldKeysAndTheStopKeyButNotOldPresses) {
    // Pressed and released before the step: the flush clears it.
    keybd_event(VK_F5, 0, 0, 0);
    keybd_event(VK_F5, 0, KEYEVENTF_KEYUP, 0);
    EXPECT_EQ(Run("Wait for Keypress", "{F5}", "0.6"), 0);
    // Held through the flush: it counts.
    keybd_event(VK_F5, 0, 0, 0);
    EXPECT_EQ(Run("Wait for Keypress", "{F5}", "2"), 1);
    keybd_event(VK_F5, 0, KEYEVENTF_KEYUP, 0);
    // The stop key answers a wait for one key.
    keybd_event(VK_PAUSE, 0, 0, 0);
    EXPECT_EQ(Run("Wait for Keypress", "{F6}", "2"), 1);
    keybd_event(VK_PAUSE, 0, KEYEVENTF_KEYUP, 0);
    // No time at all: failed after the flush.
    EXPECT_EQ(Run("Wait for Mouse Click", "", "0"), 0);
}

TEST_F(Waits, MouseMovementWithNoTimeFailsAtOnce) {
    EXPECT_EQ(Run("Wait for Mouse Movement", "", ""), 0);
    EXPECT_TRUE(Pieces.empty());
}

TEST_F(Waits, WindowWaitsRefuseThisProgramsOwnWindows) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = DefWindowProcA;
    wc.lpszClassName = "ZrWaitFrame";
    RegisterClassA(&wc);
    HWND own = CreateWindowExA(0, "ZrWaitFrame", "ZrOwn window", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100,
                               nullptr, nullptr, nullptr, nullptr);
    HWND other = CreateWindowExA(0, "STATIC", "ZrOther window", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100,
                                 nullptr, nullptr, nullptr, nullptr);
    MainWindow = own;
    EXPECT_EQ(Run("Wait for Window to Appear", "ZrOwn", ""), 0);
    EXPECT_EQ(Run("Wait for Window to Disappear", "ZrOwn", ""), 1);
    EXPECT_EQ(Run("Wait for Window to Appear", "ZrOther", ""), 1);
    EXPECT_EQ(LastWindow, other);
    EXPECT_EQ(Run("Wait for Window to Disappear", "ZrOther", ""), 0);
    DestroyWindow(other);
    EXPECT_EQ(Run("Wait for Window to Disappear", "ZrOther", ""), 1);
    DestroyWindow(own);
}

TEST_F(Waits, FileWaitsTestOnce) {
    std::string folder = TempFolder();
    EXPECT_EQ(Run("Wait for File to Exist", folder + "\\later.txt", "5"), 0);
    WriteWholeFile(folder + "\\later.txt", "here");
    EXPECT_EQ(Run("Wait for File to Exist", folder + "\\later.txt", "5"), 1);
    EXPECT_TRUE(Pieces.empty());
    EXPECT_EQ(Run("Wait for Image to Appear", folder + "\\none.bmp", ""), 0);
    EXPECT_EQ(std::string(StepFailureText), "The file '" + folder + "\\none.bmp' does not exist");
}

}  // namespace
