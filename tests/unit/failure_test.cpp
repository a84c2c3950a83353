// Failure modes, in process: each mode's words, boxes, result and the run's end.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/failure.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// Steps act on their text: "fail" fails with a reason, "quiet" fails with
// none, "once" fails on its first run only; anything else passes. Flow steps go on with the next step.
volatile LONG Runs;

int Handler(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (s.category == CAT_SYSTEM) InterlockedIncrement(&Runs);
    std::string text = TextOf(s.text);
    if (text == "fail") {
        lstrcpyA(StepFailureText, "the window was not found");
        return 0;
    }
    if (text == "quiet") return 0;
    if (text == "once" && Runs == 1) return 0;
    return s.category == CAT_FLOW ? step + 2 : 1;
}

class FailureTest : public testing::Test {
protected:
    void SetUp() override {
        StepHandlers[CAT_SYSTEM] = Handler;
        StepHandlers[CAT_FLOW] = Handler;
        Runs = 0;
        dir = LogIntoNewFolder("run.log");
    }
    // Loads a failing "Write Registry" step (category 15) with the given failure
    // mode between two passing steps, and runs the tab.
    void RunWith(const char* onfail, const char* value = "", const char* extraSteps = "", const char* text = "fail",
                 const char* timeout = "") {
        std::string xml = "<ZantoRunner><step><action>Label</action><text>start</text></step>"
                          "<step><action>Write Registry</action><text>" + std::string(text) + "</text><timeout>" + timeout +
                          "</timeout><onfail value=\"" + value + "\">" + onfail + "</onfail></step>"
                          "<step><action>Write Registry</action><text>after</text></step>" + extraSteps + "</ZantoRunner>";
        LoadSteps(xml);
        RunCore((LPVOID)(UINT_PTR)MakeRunArgument(0, 0, 0));
    }
    std::string Log() { return ReadWholeFile(dir + "\\run.log"); }
    bool Logged(const std::string& line) { return Log().find(line) != std::string::npos; }
    int LastRun(int i) { return CurrentTab().steps[i].last_run; }
    std::string dir;
};

}  // namespace

TEST_F(FailureTest, EachModeEndsTheRunAsItSays) {
    struct Case {
        const char* onfail;
        const char* value;
        int answer;
        int lastRun;         // of the failing step
        bool runFailed;      // "RUN FAILED" logged and the rest not run
        const char* box;     // expected box text, "" for none
        UINT icon;
    } cases[] = {
        {"Ignore/Continue", "", IDOK, LASTRUN_FAIL_CONTINUE, false, "", 0},
        {"Display Error and Stop", "", IDOK, LASTRUN_FAIL, true, "the window was not found", MB_ICONSTOP},
        {"Display Error and Continue", "", IDOK, LASTRUN_FAIL_CONTINUE, false, "the window was not found",
         MB_ICONWARNING},
        {"Stop Silently", "", IDOK, LASTRUN_FAIL, true, "", 0},
        {"Ask to Continue", "", IDYES, LASTRUN_FAIL_CONTINUE, false, "the window was not found\n\nContinue?",
         MB_ICONQUESTION},
        {"Ask to Continue", "", IDNO, LASTRUN_FAIL, true, "the window was not found\n\nContinue?", MB_ICONQUESTION},
        {"Increment Variable", "", IDOK, LASTRUN_FAIL_CONTINUE, false, "", 0},
        {"Something Else", "", IDOK, LASTRUN_FAIL, true, "", 0},
    };
    for (const Case& c : cases) {
        ResetTestState();
        SetUp();
        NextBoxAnswer = c.answer;
        RunWith(c.onfail, c.value);
        SCOPED_TRACE(std::string(c.onfail) + " / answer " + std::to_string(c.answer));
        EXPECT_EQ(LastRun(1), c.lastRun);
        EXPECT_TRUE(Logged("\tERROR while running [STEP 2] Write Registry: the window was not found\r\n"));
        EXPECT_TRUE(Logged("\tFailure Mode: " + std::string(c.onfail) + "\r\n"));
        EXPECT_EQ(Logged("RUN FAILED\r\n"), c.runFailed);
        EXPECT_EQ(Logged("Run Completed"), !c.runFailed);
        EXPECT_EQ(LastRun(2), c.runFailed ? LASTRUN_NOT_RUN : LASTRUN_PASS);
        if (c.box[0]) {
            ASSERT_EQ(SeenBoxes.size(), 1u);
            EXPECT_EQ(SeenBoxes[0].title, "Run Failure");
            EXPECT_EQ(SeenBoxes[0].text, c.box);
            EXPECT_EQ(SeenBoxes[0].flags & MB_ICONMASK, c.icon);
            EXPECT_TRUE(SeenBoxes[0].flags & MB_TASKMODAL);
            EXPECT_TRUE(SeenBoxes[0].flags & MB_SETFOREGROUND);
        } else {
            EXPECT_TRUE(SeenBoxes.empty());
        }
        EXPECT_EQ(StepFailureText[0], 0);  // cleared after each real failure
    }
}

TEST_F(FailureTest, AStepWithoutReasonGetsThePlainWords) {
    RunWith("Display Error and Stop", "", "", "quiet");
    EXPECT_TRUE(Logged("\tERROR while running [STEP 2] Write Registry\r\n"));
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Error while running [STEP 2]:  Write Registry");
}

TEST_F(FailureTest, RetryRunsTheStepOnceThenThreeRetries) {
    RunWith("Retry the Step x Times", "3");
    EXPECT_EQ(Runs, 4);
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL);
    std::string log = Log();
    EXPECT_NE(log.find("\tRetrying step (retry 1 of 3)\r\n[STEP 2]: Write Registry \"fail\"\r\n"), std::string::npos);
    EXPECT_NE(log.find("\tRetrying step (retry 3 of 3)\r\n"), std::string::npos);
    EXPECT_EQ(log.find("retry 4 of 3"), std::string::npos);
    EXPECT_NE(log.find("RUN FAILED\r\n"), std::string::npos);
}

TEST_F(FailureTest, JumpToLabelUsesTheRawText) {
    RunWith("Jump to Label", "%Here", "<step><action>Label</action><text>%here</text></step>"
                                      "<step><action>Write Registry</action><text>end</text></step>");
    EXPECT_TRUE(Logged("\tJumping to label \"%Here\" [Step 4]\r\n"));
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL_CONTINUE);
    EXPECT_EQ(LastRun(2), LASTRUN_NOT_RUN);  // jumped over
    EXPECT_EQ(LastRun(4), LASTRUN_PASS);
}

TEST_F(FailureTest, JumpToAMissingLabelFailsTheRunWithItsBox) {
    RunWith("Jump to Label", "nowhere");
    EXPECT_TRUE(Logged("\tLabel \"nowhere\" not found\r\nRUN FAILED\r\n"));
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Label \"nowhere\" not found\r\n");
    EXPECT_EQ(SeenBoxes[0].flags & MB_ICONMASK, (UINT)MB_ICONWARNING);
    EXPECT_EQ(LastRun(1), LASTRUN_FAIL);
}

TEST_F(FailureTest, IncrementVariableCountsFailures) {
    WriteSetting(nullptr, "41", 0, nullptr, ZR_ROOT "UserVariables\\errors");
    RunWith("Increment Variable", "%errors");
    EXPECT_TRUE(Logged("\tIncrementing variable '%errors' = 42\r\n"));
    char value[16];
    SettingText("UserVariables\\errors", value, sizeof value);
    EXPECT_STREQ(value, "42");
}

TEST_F(FailureTest, RestartRunGoesBackToTheFirstStep) {
    RunWith("Restart Run", "", "", "once");
    EXPECT_TRUE(Logged("\tRestarting Run at at [Step 1]\r\n[STEP 2]: Write Registry \"once\"\r\n[STEP 1]: Label"));
    EXPECT_EQ(CurrentTab().steps[0].loops, 2);  // no reset: a jump within the same run
    EXPECT_EQ(LastRun(1), LASTRUN_PASS);
    EXPECT_TRUE(Logged("Run Completed"));
}

TEST_F(FailureTest, TimeLimitReRunsSilentlyAndReportsOnce) {
    DWORD start = GetTickCount();
    RunWith("Ignore/Continue", "", "", "fail", "0.3");
    DWORD took = GetTickCount() - start;
    EXPECT_GE(took, 290u);
    EXPECT_GT(Runs, 1);
    std::string log = Log();
    size_t first = log.find("ERROR while running");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(log.find("ERROR while running", first + 1), std::string::npos);
    EXPECT_EQ(log.find("[STEP 2]", log.find("[STEP 2]") + 1), log.find("[STEP 2]", first));  // logged once before
}

TEST_F(FailureTest, OnfailLogReachesTheFileWithLoggingOffButOnlyTheReport) {
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");
    LoadSteps("<ZantoRunner><step><action>Write Registry</action><text>fail</text>"
              "<onfail value=\"\" image=\"0\" log=\"1\">Ignore/Continue</onfail></step></ZantoRunner>");
    RunCore((LPVOID)(UINT_PTR)MakeRunArgument(0, 0, 0));
    EXPECT_EQ(Log(), "\tERROR while running [STEP 1] Write Registry: the window was not found\r\n");
    EXPECT_EQ(SettingInt("Log"), 0);
}

TEST_F(FailureTest, DelayHasNoFailureMode) {
    LoadSteps("<ZantoRunner><step><action>Delay</action></step></ZantoRunner>");
    EXPECT_EQ(HandleFailure(0, 0), -1);
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(HandleFailure(0, -1), -1);
    EXPECT_EQ(HandleFailure(8, 0), -1);
}

TEST_F(FailureTest, FailureImageIsAScreenBitmapBesideTheLog) {
    LoadSteps("<ZantoRunner><step><action>Write Registry</action><text>fail</text>"
              "<onfail value=\"\" image=\"1\" log=\"0\">Ignore/Continue</onfail></step></ZantoRunner>");
    RunCore((LPVOID)(UINT_PTR)MakeRunArgument(0, 0, 0));
    WIN32_FIND_DATAA found;
    HANDLE find = FindFirstFileA((dir + "\\run [Step 1] FAILURE *.bmp").c_str(), &found);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    FindClose(find);
    std::string bmp = ReadWholeFile(dir + "\\" + found.cFileName);
    ASSERT_GT(bmp.size(), 54u);
    EXPECT_EQ(bmp.substr(0, 2), "BM");
    const BITMAPINFOHEADER* info = (const BITMAPINFOHEADER*)(bmp.data() + 14);
    EXPECT_EQ(info->biWidth, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(info->biHeight, GetSystemMetrics(SM_CYSCREEN));
    EXPECT_EQ(*(const DWORD*)(bmp.data() + 2), bmp.size());
}
