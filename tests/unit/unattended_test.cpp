// Unattended runs: the message-box seam that answers for a person who is not
// there, and a run that fails where a box nobody read would have stopped it.
#include <gtest/gtest.h>

#include "base/unattended.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

struct UnattendedTest : testing::Test {
    void SetUp() override {
        dir = LogIntoNewFolder("log.txt");
        UnattendedBoxFailed = 0;
    }
    void TearDown() override { UnattendedBoxFailed = 0; }
    std::string dir;
};

}  // namespace

TEST_F(UnattendedTest, EachBoxGetsTheAnswerThatStopsOrCancels) {
    struct Case {
        const char* title;
        UINT flags;
        int answer;
        LONG fails;  // whether the run fails after the step
    } cases[] = {
        {"ZantoRunner Error", MB_OK | MB_ICONERROR, IDOK, 1},
        {"Recording Error", MB_OK | MB_ICONWARNING, IDOK, 1},
        {"Run Failure", MB_OK | MB_ICONSTOP, IDOK, 0},          // the failure mode says what follows
        {"System Message", MB_OK | MB_ICONINFORMATION, IDOK, 0},
        {"Run Failure", MB_YESNO | MB_ICONQUESTION, IDNO, 0},   // "Ask to Continue": stop
        {"Confirm Action", MB_YESNO, IDNO, 0},
        {"Question", MB_OKCANCEL, IDCANCEL, 0},
        {"Stop Process", MB_OKCANCEL | MB_ICONQUESTION, IDOK, 0},  // OK is the stop here
        {"Save", MB_YESNOCANCEL, IDCANCEL, 0},
        {"Retry", MB_RETRYCANCEL, IDCANCEL, 0},
        {"Abort", MB_ABORTRETRYIGNORE, IDABORT, 0},
    };
    for (const Case& c : cases) {
        UnattendedBoxFailed = 0;
        EXPECT_EQ(UnattendedMessageBox(nullptr, "text", c.title, c.flags), c.answer) << c.title;
        EXPECT_EQ(UnattendedBoxFailed, c.fails) << c.title;
    }
}

TEST_F(UnattendedTest, TheBoxIsOneLineOfTheLog) {
    UnattendedMessageBox(nullptr, "First line\r\nsecond\nthird", "Title", MB_OK);
    EXPECT_EQ(ReadWholeFile(dir + "\\log.txt"), "\tUnattended: Title: First line  second third\r\n");
}

TEST(ExitCodeMeaning, NamesEveryOutcome) {
    EXPECT_STREQ(ExitCodeMeaning(EXIT_LOAD_FAILED), "the script could not be loaded");
    EXPECT_STREQ(ExitCodeMeaning(EXIT_RUN_FAILED), "the run failed");
    EXPECT_STREQ(ExitCodeMeaning(EXIT_TIME_LIMIT), "the run time limit ran out");
    EXPECT_STREQ(ExitCodeMeaning(EXIT_NO_WINDOW), "no window could be created");
    EXPECT_STREQ(ExitCodeMeaning(5), "the run ended");
}

TEST(ProcessExitCode, AnOutcomeCountsOnlyInAnUnattendedRun) {
    ExitCode = 5;
    RunOutcome = EXIT_RUN_FAILED;
    UnattendedRun = false;
    EXPECT_EQ(ProcessExitCode(), 5);
    UnattendedRun = true;
    EXPECT_EQ(ProcessExitCode(), EXIT_RUN_FAILED);
    RunOutcome = 0;
    EXPECT_EQ(ProcessExitCode(), 5);
    UnattendedRun = false;
}
