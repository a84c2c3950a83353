// The scans that pair loops and IF blocks, and the loop handlers' state.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/flow.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// One step per entry: an action name, "~" in front for a skipped step.
void Load(std::initializer_list<const char*> actions) {
    ResetTestState();
    std::string xml = "<ZantoRunner>";
    for (const char* a : actions) {
        std::string action = a, status;
        if (action[0] == '~') status = "<status>1</status>", action = action.substr(1);
        xml += "<step><action>" + action + "</action>" + status + "</step>";
    }
    LoadSteps(xml + "</ZantoRunner>");
}

}  // namespace

TEST(Flow, LoopScansCountDepthAndSkipDisabledPairs) {
    Load({"Start 'For' Loop",        // 0
          "Start 'While' Loop",      // 1
          "Label",                   // 2
          "NEXT LOOP",               // 3
          "~Start Files Loop",       // 4: skipped, does not count
          "NEXT LOOP",               // 5
          "Label"});                 // 6
    EXPECT_EQ(LoopEnd(0, 0), 5);
    EXPECT_EQ(LoopEnd(0, 1), 3);
    EXPECT_EQ(LoopEnd(0, 2), 3);
    EXPECT_EQ(LoopStart(0, 3), 1);
    EXPECT_EQ(LoopStart(0, 5), 0);
    EXPECT_EQ(LoopStart(0, 2), 1);
    EXPECT_EQ(LoopEnd(0, 6), 7);  // no end below: the step after
    Load({"NEXT LOOP"});
    EXPECT_EQ(LoopStart(0, 0), 0);  // no start: back to step 0
}

TEST(Flow, IfJumpFindsTheMatchingElseOrEndIf) {
    Load({"IF Expression",   // 0
          "IF File Exists",  // 1: nested
          "ELSE",            // 2: the nested ELSE is passed over
          "END IF",          // 3
          "~ELSE",           // 4: skipped, not counted
          "ELSE",            // 5: the match of 0
          "END IF"});        // 6
    EXPECT_EQ(IfJump(0, 0), 6);  // into the ELSE block
    EXPECT_EQ(IfJump(0, 1), 3);  // into the nested ELSE block
    EXPECT_EQ(IfJump(0, 5), 6);  // an ELSE reached from its true block goes to its END IF
    Load({"IF Expression", "Label"});
    EXPECT_EQ(IfJump(0, 0), 1);  // no partner: the last step
}

TEST(Flow, OnlyANameBeginningWithIfAddsDepth) {
    Load({"IF Expression", "Verify IF Window", "END IF", "END IF"});
    EXPECT_EQ(IfJump(0, 0), 2);
}

TEST(Flow, LoopStackPushesAndPopsSixteenEntries) {
    int32_t stack[LOOP_STACK_DEPTH] = {};
    for (int i = 1; i <= 17; i++) PushLoop(stack, i);
    EXPECT_EQ(stack[0], 17);
    EXPECT_EQ(stack[15], 2);  // the first push is lost
    EXPECT_EQ(PopLoop(stack), 17);
    EXPECT_EQ(stack[15], 0);
}

TEST(Flow, ForLoopOfZeroRunsNoPassAndLogsIt) {
    std::string dir = LogIntoNewFolder("log.txt");
    LoadSteps("<ZantoRunner><step><action>Start 'For' Loop</action><text>0</text></step>"
              "<step><action>Label</action></step><step><action>NEXT LOOP</action></step></ZantoRunner>");
    EXPECT_EQ(FlowStep(0, 0), 4);  // the step after NEXT LOOP, plus one
    EXPECT_NE(ReadWholeFile(dir + "\\log.txt").find("(0 total loops done)"), std::string::npos);
    EXPECT_EQ(LoopStack[0][0], 0);
}

TEST(Flow, GotoWithoutNameOrMatchFails) {
    LoadSteps("<ZantoRunner><step><action>Goto Label</action></step>"
              "<step><action>Goto Label</action><text>x</text></step>"
              "<step><action>Label</action><text>X</text></step></ZantoRunner>");
    EXPECT_EQ(FlowStep(0, 0), 0);
    EXPECT_STREQ(StepFailureText, "No label name provided");
    EXPECT_EQ(FlowStep(0, 1), 3);  // case-insensitive: the label step runs next
    lstrcpyA(CurrentTab().steps[2].text, "other");
    EXPECT_EQ(FlowStep(0, 1), 0);
    EXPECT_STREQ(StepFailureText, "Label \"x\" not found");
}

TEST(Flow, RunRepeatsArmOnceAndExitSetsTheCode) {
    LoadSteps("<ZantoRunner><step><action>Set Run Repeats</action><text>1</text></step>"
              "<step><action>Set Run Repeats</action><text>-1</text></step>"
              "<step><action>Exit Run</action><text>12</text></step></ZantoRunner>");
    FlowStep(0, 0);
    EXPECT_EQ(RunRepeats[0], 0);  // "1" stores 0: nothing repeats
    FlowStep(0, 1);
    EXPECT_EQ(RunRepeats[0], REPEAT_FOREVER);
    EXPECT_EQ(FlowStep(0, 2), -1);
    EXPECT_EQ(ExitCode, 12);
}

TEST(Flow, RunRepeatsHoldForNumbersPastThe32BitRange) {
    struct Case {
        const char* text;
        int left;
    } cases[] = {
        {"-2147483649", -1}, {"-2147483648", -1}, {"0", -1},  {"2147483648", REPEAT_FOREVER - 1},
        {"99999999999999999999", REPEAT_FOREVER - 1},          {"3", 2},
    };
    for (const Case& c : cases) {
        ReplaceSteps(std::string("<ZantoRunner><step><action>Set Run Repeats</action><text>") + c.text +
                     "</text></step></ZantoRunner>");
        RunRepeats[0] = 0;
        FlowStep(0, 0);
        EXPECT_EQ(RunRepeats[0], c.left) << c.text;
    }
    RunRepeats[0] = 0;
}

TEST(Flow, WindowsLoopStoresTheHandleAsANumber) {
    HWND w = CreateWindowExA(0, "STATIC", "Loop Target", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100, nullptr,
                             nullptr, nullptr, nullptr);
    SetForegroundWindow(w);
    LoadSteps("<ZantoRunner><step><action>Start Windows Loop</action></step>"
              "<step><action>NEXT LOOP</action></step></ZantoRunner>");
    EXPECT_EQ(FlowStep(0, 0), 2);
    EXPECT_EQ(LastWindow, GetForegroundWindow());
    HKEY key;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\ZantoRunner\\UserVariables", 0, KEY_READ, &key),
              ERROR_SUCCESS);
    DWORD type = 0;
    RegQueryValueExA(key, "hwnd_loop", nullptr, &type, nullptr, nullptr);
    RegCloseKey(key);
    EXPECT_EQ(type, (DWORD)REG_DWORD);
    char title[64];
    SettingText("UserVariables\\window_loop", title, sizeof title);
    EXPECT_STREQ(title, "Loop Target");
    DestroyWindow(w);
    LastWindow = nullptr;
}
