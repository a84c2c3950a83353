// The run core over a loaded tab, in process: each step's last_run and loops
// after skips, breakpoints, failures, stops, single steps and repeats.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "base/settings.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// Test handlers act on their step's text: "pass", "fail", "stop",
// "jump N" (flow: go on at step N), "ask stop" (asks the run to stop and passes),
// "note" (leaves words in StepFailureText and passes, as a try that failed
// before it passed does).
volatile LONG Started;
HANDLE Release;  // a step "block" waits on it

int TestHandler(int tab, int step) {
    InterlockedIncrement(&Started);
    std::string text = TextOf(ScriptStore.tab[tab].steps[step].text);
    if (text == "fail") return 0;
    if (text == "stop") return -1;
    if (text == "ask stop") StopRequested = 1;
    if (text == "note") lstrcpyA(StepFailureText, "Unable to find window 'Open'");
    if (text.rfind("jump ", 0) == 0) return atoi(text.c_str() + 5) + 1;
    if (text == "block") WaitForSingleObject(Release, 10000);
    if (text == "no memory") throw std::bad_alloc();
    if (text == "bad size") (void)std::string().substr(5);  // std::out_of_range
    return step + 2;  // flow steps name the next step; others pass
}

std::string Steps(std::initializer_list<const char*> texts) {
    std::string xml = "<ZantoRunner>";
    for (const char* t : texts) {
        std::string text = t;
        std::string status;
        if (text.rfind("skip:", 0) == 0) status = "<status>1</status>", text = text.substr(5);
        if (text.rfind("break:", 0) == 0) status = "<status>2</status>", text = text.substr(6);
        xml += "<step><action>Label</action><text>" + text + "</text>" + status + "</step>";
    }
    return xml + "</ZantoRunner>";
}

class RunCoreTest : public testing::Test {
protected:
    void SetUp() override {
        StepHandlers[CAT_FLOW] = TestHandler;
        Started = 0;
        dir = LogIntoNewFolder("log.txt");
    }
    void Run(int first = 0, int single = 0) { RunCore((LPVOID)(UINT_PTR)MakeRunArgument(0, single, first)); }
    int LastRun(int i) { return CurrentTab().steps[i].last_run; }
    int Loops(int i) { return CurrentTab().steps[i].loops; }
    std::string Log() { return ReadWholeFile(dir + "\\log.txt"); }
    std::string dir;
};

}  // namespace

TEST_F(RunCoreTest, PassingStepsRunInOrder) {
    LoadSteps(Steps({"pass", "pass"}));
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_PASS);
    EXPECT_EQ(LastRun(1), LASTRUN_PASS);
    EXPECT_EQ(Loops(0), 1);
    EXPECT_NE(Log().find("Run Completed at "), std::string::npos);
    EXPECT_NE(Log().find("(Elapsed Time: less than 1 second)"), std::string::npos);
}

TEST_F(RunCoreTest, SkipIsTestedBeforeBreakpoint) {
    // status 3: both bits, as a file may have it
    LoadSteps("<ZantoRunner><step><action>Label</action><text>pass</text><status>3</status></step>"
              "<step><action>Label</action><text>pass</text></step></ZantoRunner>");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "LogLevel");
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_SKIPPED);
    EXPECT_EQ(Loops(0), 0);
    EXPECT_EQ(LastRun(1), LASTRUN_PASS);
    EXPECT_NE(Log().find("Skipping [STEP 1]\r\n"), std::string::npos);
}

TEST_F(RunCoreTest, BreakpointEndsTheRunAndAnnouncesIt) {
    LoadSteps(Steps({"pass", "break:pass", "pass"}));
    Run();
    EXPECT_EQ(LastRun(1), LASTRUN_BREAKPOINT);
    EXPECT_EQ(LastRun(2), LASTRUN_NOT_RUN);
    std::string log = Log();
    EXPECT_NE(log.find("Breakpoint on [STEP 2]\r\nRun Completed at "), std::string::npos);
    // Run From Here on the breakpoint itself stops on it again at once.
    Run(1);
    EXPECT_EQ(Loops(1), 0);
}

TEST_F(RunCoreTest, FailureStopsTheRunWithFail) {
    LoadSteps(Steps({"pass", "fail", "pass"}));
    Run();
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL);
    EXPECT_EQ(LastRun(2), LASTRUN_NOT_RUN);
    EXPECT_NE(Log().find("\tERROR while running [STEP 2] Label\r\n"), std::string::npos);
    EXPECT_EQ(Log().find("Run Completed"), std::string::npos);
}

TEST_F(RunCoreTest, StopResultAndStopRequestLeaveTheStepIncomplete) {
    LoadSteps(Steps({"pass", "stop", "pass"}));
    Run();
    EXPECT_EQ(LastRun(1), LASTRUN_INCOMPLETE);
    EXPECT_NE(Log().find("Stop request: aborting run at [STEP 2]\r\n\r\n"), std::string::npos);
    EXPECT_EQ(Log().find("Run Completed"), std::string::npos);

    ResetTestState();
    SetUp();
    LoadSteps(Steps({"ask stop", "pass"}));
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_INCOMPLETE);  // it passed, but the stop came first
    EXPECT_EQ(Loops(1), 0);
}

TEST_F(RunCoreTest, JumpsAndLoopsCountStarts) {
    LoadSteps(Steps({"pass", "jump 3", "pass", "pass"}));
    Run();
    EXPECT_EQ(LastRun(2), LASTRUN_NOT_RUN);
    EXPECT_EQ(LastRun(3), LASTRUN_PASS);
}

TEST_F(RunCoreTest, SingleStepStopsAtTheJumpTarget) {
    LoadSteps(Steps({"jump 2", "pass", "pass"}));
    Run(0, 1);
    EXPECT_EQ(Loops(0), 1);
    EXPECT_EQ(Loops(2), 0);
    EXPECT_EQ(CurrentTab().selected, 2);  // the target row is selected
    EXPECT_EQ(Log().find("Run Completed"), std::string::npos);
}

TEST_F(RunCoreTest, APercentInAStepTextReachesTheLogOnce) {
    LoadSteps(Steps({"50% done"}));
    Run();
    EXPECT_NE(Log().find("[STEP 1]: Label \"50% done\"\r\n"), std::string::npos);
}

TEST_F(RunCoreTest, StartRunRefusesAnEmptyTabAndASecondRun) {
    EXPECT_EQ(StartRun(0, nullptr, CMD_RUN, 1), 0);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "The file is empty.\n\nPlease add commands before using this feature.");
    EXPECT_EQ(SeenBoxes[0].title, "System Message");
    LoadSteps(Steps({"pass"}));
    RunThread = (HANDLE)1;  // a run in progress: silently ignored
    EXPECT_EQ(StartRun(0, nullptr, CMD_RUN, 1), 0);
    RunThread = nullptr;
    EXPECT_EQ(SeenBoxes.size(), 1u);
}

TEST_F(RunCoreTest, RepeatsRunAWholeNewRunEachTime) {
    LoadSteps(Steps({"pass"}));
    RunRepeats[0] = 2;  // as "Set Run Repeats" with 3 leaves it on the first pass
    Run();
    // The repeats run on their own threads; wait for the last to finish.
    for (int i = 0; i < 500 && (Started < 3 || RunThread); i++) Sleep(10);
    EXPECT_EQ(Started, 3);
    EXPECT_EQ(RunRepeats[0], -1);
    std::string log = Log();
    size_t starts = 0;
    for (size_t at = log.find("Starting Run"); at != std::string::npos; at = log.find("Starting Run", at + 1)) starts++;
    EXPECT_EQ(starts, 2u);  // the first run was started directly, the repeats by StartRun
}

TEST_F(RunCoreTest, AFailureNeverSaysTheWordsOfAnEarlierStep) {
    LoadSteps(Steps({"note", "fail"}));
    Run();
    std::string log = Log();
    EXPECT_NE(log.find("\tERROR while running [STEP 2] Label\r\n"), std::string::npos) << log;
    EXPECT_EQ(log.find("Open"), std::string::npos) << log;
}

TEST_F(RunCoreTest, ForcedStopAsksAndLetsTheStepGo) {
    Release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    LoadSteps(Steps({"block", "pass"}));
    ASSERT_EQ(StartRun(0, nullptr, CMD_RUN, 1), 1);
    for (int i = 0; i < 500 && Started < 1; i++) Sleep(10);
    HANDLE thread = nullptr;
    DuplicateHandle(GetCurrentProcess(), RunThread, GetCurrentProcess(), &thread, SYNCHRONIZE, FALSE, 0);
    StopRun(0, nullptr, CMD_STOP);
    EXPECT_EQ(StopRequested, 1);
    NextBoxAnswer = IDCANCEL;
    StopRun(0, nullptr, MAKEWPARAM(CMD_STOP, 1));
    EXPECT_EQ(StopRequested, 0);
    EXPECT_NE(RunThread, nullptr);
    NextBoxAnswer = IDOK;
    StopRun(0, nullptr, MAKEWPARAM(CMD_STOP, 1));
    EXPECT_EQ(RunThread, nullptr);
    ASSERT_EQ(SeenBoxes.size(), 2u);
    EXPECT_EQ(SeenBoxes[1].title, "Stop Process");
    EXPECT_EQ(SeenBoxes[1].text, "The script is still running the current step.\n\nDo you want to force it to stop?");
    std::string log = Log();
    EXPECT_NE(log.find("\r\nAttempting to stop script...\r\n"), std::string::npos);
    EXPECT_NE(log.find("\r\nCancelling stop request - continuing script execution\r\n"), std::string::npos);
    EXPECT_NE(log.find("\r\nRun forcibly terminated\r\n\r\n"), std::string::npos);
    EXPECT_EQ(CurrentTab().steps[0].last_run, LASTRUN_INCOMPLETE);
    // The step comes back later: the thread that was let go ends there,
    // without a word or a step of the run it no longer belongs to.
    const LONG started = Started;
    SetEvent(Release);
    ASSERT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
    CloseHandle(thread);
    EXPECT_EQ(Started, started);
    EXPECT_EQ(Log().find("Stop request"), std::string::npos);
    CloseHandle(Release);
}

TEST_F(RunCoreTest, RunFromHereKeepsLoopsAndVariables) {
    LoadSteps(Steps({"pass", "pass"}));
    Run();
    CurrentTab().selected = 1;
    ASSERT_EQ(StartRun(0, nullptr, CMD_RUN_FROM_HERE, 1), 1);
    for (int i = 0; i < 500 && RunThread; i++) Sleep(10);
    EXPECT_EQ(Loops(0), 1);
    EXPECT_EQ(Loops(1), 2);
    EXPECT_EQ(Log().find("Starting Run"), std::string::npos);  // only a whole run says so
}

TEST_F(RunCoreTest, UnknownActionsSayHonestlyThatTheyAreNotBuilt) {
    StepHandlers[CAT_FLOW] = nullptr;
    LoadSteps("<ZantoRunner><step><action>Label</action></step><step><action>Nope</action></step></ZantoRunner>");
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_PASS);
    EXPECT_EQ(LastRun(1), LASTRUN_PASS);
    std::string log = Log();
    EXPECT_NE(log.find("\tUnknown Action (13) \"Label\"\r\n"), std::string::npos);
    EXPECT_NE(log.find("\tUnknown Action (0) \"Nope\"\r\n"), std::string::npos);
}

TEST(ExitCode, DefaultReturnCodeStandsInForTheMarker) {
    EXPECT_EQ(ProcessExitCode(), 0);
    WriteSetting(nullptr, nullptr, 17, nullptr, ZR_ROOT "DefaultReturnCode");
    EXPECT_EQ(ProcessExitCode(), 17);
    ExitCode = 7;
    EXPECT_EQ(ProcessExitCode(), 7);
    ExitCode = EXIT_CODE_NOT_SET;
}

TEST_F(RunCoreTest, AnExceptionInAHandlerIsAFailureOfItsStep) {
    // Failure mode "Ignore/Continue" on both, so the run goes on past them.
    LoadSteps("<ZantoRunner><step><action>Label</action><text>no memory</text><onfail>Ignore/Continue</onfail></step>"
              "<step><action>Label</action><text>bad size</text><onfail>Ignore/Continue</onfail></step>"
              "<step><action>Label</action><text>pass</text></step></ZantoRunner>");
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(2), LASTRUN_PASS);
    EXPECT_NE(Log().find("Insufficient memory available"), std::string::npos);
    EXPECT_NE(Log().find("Internal error in this step: "), std::string::npos);
    EXPECT_NE(Log().find("Run Completed at "), std::string::npos);
}

TEST_F(RunCoreTest, ATextPastTheCeilingFailsItsStepAndWritesNothing) {
    WriteSetting(nullptr, "before", 0, nullptr, ZR_ROOT "UserVariables\\out");
    LoadSteps("<ZantoRunner>"
              "<step><action>Insert Text</action><text>abc</text><value1>2000000000</value1><value2>x</value2>"
              "<output value=\"out\">Variable</output><onfail>Ignore/Continue</onfail></step>"
              "<step><action>Pad String</action><text>abc</text><value1>2000000000</value1><value2>y</value2>"
              "<output value=\"out\">Variable</output><onfail>Ignore/Continue</onfail></step>"
              "<step><action>Write to Log</action><text>InsertText(abc, 2000000000, x)</text>"
              "<onfail>Ignore/Continue</onfail></step>"
              "<step><action>Insert Text</action><text>abc</text><value1>2</value1><value2>x</value2>"
              "<output value=\"fine\">Variable</output></step></ZantoRunner>");
    Run();
    EXPECT_EQ(LastRun(0), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(2), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(3), LASTRUN_PASS);
    char value[64] = "";
    ReadSetting(nullptr, value, 64, nullptr, ZR_ROOT "UserVariables\\out");
    EXPECT_STREQ(value, "before");
    ReadSetting(nullptr, value, 64, nullptr, ZR_ROOT "UserVariables\\fine");
    EXPECT_STREQ(value, "axbc");
    std::string log = Log();
    size_t first = log.find("longer than 64 MiB");
    EXPECT_NE(first, std::string::npos);
    EXPECT_LT(log.size(), 100000u);  // nothing of gigabytes reached the log
}
