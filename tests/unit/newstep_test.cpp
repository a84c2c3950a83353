// New steps get their category, failure mode and the defaults of their
// action; headings never become steps.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "script/newstep.h"
#include "script/step.h"
#include "script/undo.h"
#include "test_support.h"

namespace {

const Step& Added(const char* name) {
    int at = NewStep(name, -1);
    EXPECT_GE(at, 0) << name;
    return CurrentTab().steps[at < 0 ? 0 : at];
}

TEST(NewStep, DefaultsFollowTheAction) {
    ResetTestState();
    WriteSetting(nullptr, "Ignore/Continue", 0, nullptr, ZR_ROOT "DefaultFailureMode");
    EXPECT_EQ(NewStep("Run Program", -1), -1);  // a heading
    EXPECT_EQ(CurrentTab().count, 0);
    const Step& wait = Added("Start and Wait for Program to Exit");
    EXPECT_STREQ(wait.action, "Start");
    EXPECT_STREQ(wait.options, "Wait For Exit");
    EXPECT_STREQ(wait.onfail, "Ignore/Continue");  // copied from the setting
    EXPECT_STREQ(Added("Type").onfail, "");
    const Step& all = Added("Minimize all Windows");
    EXPECT_STREQ(all.options, "Title");
    EXPECT_STREQ(all.timeout, "");
    EXPECT_STREQ(Added("Activate").timeout, "3");
    EXPECT_STREQ(Added("Wait for Keypress").text, "{Esc}");
    EXPECT_STREQ(Added("Status Popup").timeout, "2");
    EXPECT_STREQ(Added("Input Value").timeout, "30");
    const Step& custom = Added("Custom Message Box");
    EXPECT_STREQ(custom.action, "Win32 API");
    EXPECT_EQ(custom.category, CAT_EXTERNAL);
    const Step& variable = Added("Increment Variable");
    EXPECT_STREQ(variable.output, "Variable");
    EXPECT_EQ(variable.category, CAT_SYSTEM);
    const Step& map = Added("Map Drive");
    EXPECT_STREQ(map.value[0], "\\\\server\\share");
    EXPECT_STREQ(map.text, "H:");
    const int count = CurrentTab().count;
    EXPECT_EQ(UndoCount(), count);  // one "added" entry each
    const int undone = Undo();       // the steps of the newest tick go together
    EXPECT_GT(undone, 0);
    EXPECT_EQ(CurrentTab().count, count - undone);
}

TEST(NewStep, APositionInsertsBeforeTheStepThere) {
    ResetTestState();
    NewStep("Label", -1);
    NewStep("Comment", -1);
    EXPECT_EQ(NewStep("Beep", 1), -1);  // not an action
    EXPECT_EQ(NewStep("Delay", 1), 1);
    EXPECT_STREQ(CurrentTab().steps[0].action, "Label");
    EXPECT_STREQ(CurrentTab().steps[1].action, "Delay");
    EXPECT_STREQ(CurrentTab().steps[1].timeout, "2");
    EXPECT_STREQ(CurrentTab().steps[2].action, "Comment");
}

}  // namespace
