// The debug run, driven through the editor's commands as the Run menu and
// the pause bar send them, its state read back from the editor's windows.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "editor/commands.h"
#include "editor/debugcommands.h"
#include "editor/variablespalette.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "run/debugrun.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// Waits until the run is paused and the editor shows that pause.
bool ShownPaused() {
    return PumpUntil([] { return (RunPaused() && PausesShown() == PauseCount()) || RunThread == nullptr; }, 10000) &&
           RunPaused();
}

// Does `act` (a command, a key) and waits until the run has paused again
// (true) or ended.
template <typename Act>
bool PausesAgain(Act act) {
    const long before = PauseCount();
    act();
    return PumpUntil([&] { return PauseCount() > before || RunThread == nullptr; }, 10000) && ShownPaused();
}

std::string Output() {
    const int length = GetWindowTextLengthA(OutputEdit);
    std::string text((size_t)length + 1, '\0');
    GetWindowTextA(OutputEdit, &text[0], length + 1);
    text.resize((size_t)length);
    return text;
}

std::string StatusText() {
    char text[512] = "";
    SendMessageA(StatusBar, SB_GETTEXTA, 0, (LPARAM)text);
    return text;
}

// The visible text of the pause bar (the window of class
// "ZantoRunnerDebugBar" above the step list), or "" while it is hidden.
std::string BarText() {
    HWND bar = FindWindowExA(GetParent(StepList), nullptr, "ZantoRunnerDebugBar", nullptr);
    if (!bar || !IsWindowVisible(bar)) return "";
    HWND text = FindWindowExA(bar, nullptr, "STATIC", nullptr);
    char words[600] = "";
    GetWindowTextA(text, words, sizeof words);
    return words;
}

// The Variables palette's value of a row, or "(no row)".
std::string PaletteValue(const char* name) {
    LVFINDINFOA find = {};
    find.flags = LVFI_STRING;
    find.psz = name;
    const int row = (int)SendMessageA(VariablesList, LVM_FINDITEMA, (WPARAM)-1, (LPARAM)&find);
    if (row < 0) return "(no row)";
    char value[256] = "";
    ListView_GetItemText(VariablesList, row, 1, value, sizeof value);
    return value;
}

std::string Variable(const char* name) {
    char text[256] = "";
    ReadSetting(nullptr, text, sizeof text, nullptr, ZR_ROOT "UserVariables\\%s", name);
    return text;
}

std::string OpenScript(const char* name, const std::string& steps) {
    const std::string path = TempFolder() + "\\" + name;
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + steps + "</ZantoRunner>\r\n");
    OpenFileInTab(path.c_str());
    Pump();
    return path;
}

size_t Count(const std::string& text, const std::string& piece) {
    size_t n = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) n++;
    return n;
}

const char kLoop[] =
    "<step><action>Create/Set Variable</action><text>0</text><output value=\"total\">Variable</output></step>\r\n"
    "<step><action>Start 'For' Loop</action><text>3</text></step>\r\n"
    "<step><action>Increment Variable</action><output value=\"total\">Variable</output></step>\r\n"
    "<step><action>Write to Log</action><text>n %total</text></step>\r\n"
    "<step><action>NEXT LOOP</action></step>\r\n"
    "<step><action>Write to Log</action><text>end %total</text></step>\r\n";

// A breakpoint inside a loop pauses the run with everything in place; three
// Steps walk on through the loop's own jumps; a value changed while paused
// is what the next step reads; Continue pauses at the breakpoint again and,
// without it, runs to the end.
TEST(DebugRun, PausesAtABreakpointInALoopStepsAndContinues) {
    Editor e;
    OpenScript("debugloop.zxm", kLoop);
    ASSERT_EQ(CurrentTab().count, 6);
    CurrentTab().steps[3].status |= STEP_BREAKPOINT;
    SetWindowTextA(OutputEdit, "");

    EXPECT_TRUE(e.Key(VK_F5, false, true));  // Shift+F5: Debug
    ASSERT_TRUE(ShownPaused()) << Output();
    EXPECT_EQ(PausedStep(), 3);
    EXPECT_EQ(StatusText(), "Paused at step 4");
    EXPECT_EQ(BarText(), "Paused at step 4 (Write to Log)");
    EXPECT_EQ(SelectedStepRow(), 3);
    EXPECT_EQ(Variable("total"), "1");
    // The Variables palette shows the variables and the run's own values.
    EXPECT_EQ(PaletteValue("total"), "1");
    EXPECT_EQ(PaletteValue("(loop at step 2)"), "pass 1");
    HMENU menu = GetMenu(e.window);
    EXPECT_FALSE(GetMenuState(menu, CMD_DEBUG_CONTINUE, MF_BYCOMMAND) & MF_GRAYED);
    EXPECT_TRUE(GetMenuState(menu, CMD_DEBUG, MF_BYCOMMAND) & MF_GRAYED);

    // Step (F7 while paused): step 4 runs, then NEXT LOOP, then the loop's head.
    ASSERT_TRUE(PausesAgain([&] { e.Key(VK_F7); }));
    EXPECT_EQ(PausedStep(), 4);
    ASSERT_TRUE(PausesAgain([&] { e.Command(CMD_DEBUG_STEP); }));
    EXPECT_EQ(PausedStep(), 1);
    ASSERT_TRUE(PausesAgain([&] { e.Command(CMD_DEBUG_STEP); }));
    EXPECT_EQ(PausedStep(), 2);
    EXPECT_EQ(Count(Output(), "\r\nn 1\r\n"), 1u);
    EXPECT_EQ(PaletteValue("(loop at step 2)"), "pass 2");

    // A value set while paused is what the step reads.
    WriteSetting(nullptr, "40", 0, nullptr, ZR_ROOT "UserVariables\\total");
    ASSERT_TRUE(PausesAgain([&] { e.Key(VK_F5); }));  // Continue, to the breakpoint
    EXPECT_EQ(PausedStep(), 3);
    EXPECT_EQ(Variable("total"), "41");
    CurrentTab().steps[3].status &= ~STEP_BREAKPOINT;
    e.Command(CMD_DEBUG_CONTINUE);
    ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
    const std::string log = Output();
    EXPECT_NE(log.find("Paused at [STEP 4]\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\r\nn 41\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\r\nend 42\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("Run Completed at"), std::string::npos) << log;
    EXPECT_EQ(BarText(), "");
    EXPECT_EQ(PaletteValue("(loop at step 2)"), "(no row)");  // only while paused
    // The run's commands are the editor's again; Continue waits for a pause.
    EXPECT_TRUE(PumpUntil([&] { return !(GetMenuState(menu, CMD_RUN, MF_BYCOMMAND) & MF_GRAYED); }, 10000));
    EXPECT_TRUE(GetMenuState(menu, CMD_DEBUG_CONTINUE, MF_BYCOMMAND) & MF_GRAYED);
    EXPECT_FALSE(GetMenuState(menu, CMD_DEBUG, MF_BYCOMMAND) & MF_GRAYED);
}

// A file read that fails (the file is missing) between two log lines; its
// failure mode goes on.
std::string FailingScript(const std::string& file) {
    return "<step><action>Write to Log</action><text>before</text></step>\r\n"
           "<step><action>Read File</action><value1>" + file +
           "</value1><output value=\"read\">Variable</output><onfail>Ignore/Continue</onfail></step>\r\n"
           "<step><action>Write to Log</action><text>after [%read]</text></step>\r\n";
}

// A failing step pauses before its failure mode: its text fixed in the
// script, Retry runs it again as it now stands and the run completes.
TEST(DebugRun, AFailurePausesAndRetryRunsTheFixedStep) {
    Editor e;
    const std::string there = TempFolder() + "\\debug-there.txt";
    WriteWholeFile(there, "found");
    OpenScript("debugfail.zxm", FailingScript(TempFolder() + "\\debug-missing.txt"));
    SetWindowTextA(OutputEdit, "");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Debug\\PauseOnFailure");

    e.Command(CMD_DEBUG);
    ASSERT_TRUE(ShownPaused());
    EXPECT_EQ(PausedStep(), 1);
    EXPECT_EQ(PausedReason(), PAUSE_FAILURE);
    EXPECT_EQ(BarText().rfind("Step 2 (Read File) failed: ", 0), 0u) << BarText();

    // The fix, as the properties palette makes it.
    Step& s = CurrentTab().steps[1];
    lstrcpynA(s.value[0], there.c_str(), sizeof s.value[0]);
    e.Command(CMD_DEBUG_RETRY);
    ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
    const std::string log = Output();
    EXPECT_NE(log.find("Retrying [STEP 2]\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("after [found]"), std::string::npos) << log;
    EXPECT_EQ(CurrentTab().steps[1].last_run, LASTRUN_PASS);
}

// Skip goes on with the next step without the failure mode; Apply does what
// the failure mode says (here: goes on, with its own line).
TEST(DebugRun, SkipAndApplyAtAFailure) {
    for (int id : {CMD_DEBUG_SKIP, CMD_DEBUG_APPLY}) {
        Editor e;
        OpenScript("debugskip.zxm", FailingScript(TempFolder() + "\\debug-missing.txt"));
        SetWindowTextA(OutputEdit, "");
        e.Command(CMD_DEBUG);
        ASSERT_TRUE(ShownPaused());
        e.Command(id);
        ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
        const std::string log = Output();
        EXPECT_NE(log.find("Paused at [STEP 2] after a failure: "), std::string::npos) << log;
        EXPECT_NE(log.find("after ["), std::string::npos) << log;
        if (id == CMD_DEBUG_SKIP) {
            EXPECT_NE(log.find("Skipping [STEP 2] after its failure\r\n"), std::string::npos) << log;
            EXPECT_EQ(log.find("Failure Mode:"), std::string::npos) << log;
        } else {
            EXPECT_EQ(log.find("Skipping [STEP 2]"), std::string::npos) << log;
            EXPECT_NE(log.find("Failure Mode: Ignore/Continue"), std::string::npos) << log;
        }
    }
}

// A plain run never pauses: a breakpoint ends it as before, and a failure
// goes straight to its failure mode.
TEST(DebugRun, APlainRunNeverPauses) {
    Editor e;
    OpenScript("debugplain.zxm", FailingScript(TempFolder() + "\\debug-missing.txt"));
    CurrentTab().steps[2].status |= STEP_BREAKPOINT;
    SetWindowTextA(OutputEdit, "");
    e.Command(CMD_RUN);
    ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
    const std::string log = Output();
    EXPECT_EQ(log.find("Paused at"), std::string::npos) << log;
    EXPECT_NE(log.find("Failure Mode: Ignore/Continue"), std::string::npos) << log;
    EXPECT_NE(log.find("Breakpoint on [STEP 3]"), std::string::npos) << log;
    EXPECT_EQ(log.find("after ["), std::string::npos) << log;
    EXPECT_FALSE(DebugRun);
}

// "Try This Step" runs the selected step alone and shows its lines and its
// result in a small window of its own.
TEST(DebugRun, TryThisStepShowsTheStepsLinesAndResult) {
    Editor e;
    OpenScript("debugtry.zxm", kLoop);
    SelectStepRow(3);
    WriteSetting(nullptr, "7", 0, nullptr, ZR_ROOT "UserVariables\\total");
    e.Command(CMD_TRY_STEP);
    HWND tried = nullptr;
    ASSERT_TRUE(PumpUntil([&] { return (tried = FindWindowA("ZantoRunnerDebugBar", "Try This Step")) != nullptr; },
                          10000));
    char text[2000] = "";
    GetWindowTextA(FindWindowExA(tried, nullptr, "EDIT", nullptr), text, sizeof text);
    const std::string shown = text;
    EXPECT_NE(shown.find("[STEP 4]: Write to Log"), std::string::npos) << shown;
    EXPECT_NE(shown.find("n 7"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Step 4 passed."), std::string::npos) << shown;
    DestroyWindow(tried);
}

}  // namespace
