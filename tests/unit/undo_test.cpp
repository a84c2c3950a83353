// Undo by groups of whole step copies, pasting steps as text, the toggles
// and the auto-indent with its pair check.
#include <gtest/gtest.h>

#include <string>

#include "script/editing.h"
#include "script/step.h"
#include "script/undo.h"
#include "test_support.h"

namespace {

std::string Actions() {
    std::string out;
    for (int i = 0; i < CurrentTab().count; i++) out += std::string(i ? "," : "") + CurrentTab().steps[i].action;
    return out;
}

void Load(const char* actions) {
    ResetTestState();
    std::string xml = "<ZantoRunner>";
    std::string all = actions;
    size_t start = 0;
    while (start <= all.size()) {
        size_t end = all.find(',', start);
        std::string a = all.substr(start, end == std::string::npos ? std::string::npos : end - start);
        xml += "<step><action>" + a + "</action><text>" + a + " text</text></step>";
        if (end == std::string::npos) break;
        start = end + 1;
    }
    ReplaceSteps(xml + "</ZantoRunner>");
}

TEST(Undo, GroupsComeBackInOneGoNewestFirst) {
    Load("Label,Comment,Beep");
    EXPECT_STREQ(UndoMenuText(), "Undo\tCtrl+Z");
    ASSERT_EQ(SaveUndo(1, 1, UNDO_MODIFIED), 1);
    lstrcpyA(CurrentTab().steps[1].text, "changed");
    EXPECT_STREQ(UndoMenuText(), "Undo Modify Step\tCtrl+Z");
    // One action over two steps: both deleted, both come back.
    SaveUndo(2, 0, UNDO_DELETED);
    DeleteStep(0);
    SaveUndo(2, 0, UNDO_DELETED);
    DeleteStep(0);
    EXPECT_EQ(Actions(), "Beep");
    EXPECT_STREQ(UndoMenuText(), "Undo Delete Step\tCtrl+Z");
    EXPECT_EQ(Undo(), 2);
    EXPECT_EQ(Actions(), "Label,Comment,Beep");
    EXPECT_STREQ(CurrentTab().steps[1].text, "changed");
    EXPECT_EQ(Undo(), 1);
    EXPECT_STREQ(CurrentTab().steps[1].text, "Comment text");
    EXPECT_EQ(UndoCount(), 0);
    EXPECT_EQ(Undo(), 0);  // nothing left
    EXPECT_EQ(SaveUndo(3, 7, UNDO_MODIFIED), 0);  // no such step
}

TEST(Undo, PastedStepsAreAddedAndUndoneTogether) {
    Load("Label,Beep");
    std::string copied = CopyStepsText(1, 1);
    EXPECT_NE(copied.find("<action>Beep</action>"), std::string::npos);
    EXPECT_EQ(copied.find("Label"), std::string::npos);
    EXPECT_EQ(PasteStepsText((copied + copied).c_str(), 1, 9), 2);
    EXPECT_EQ(Actions(), "Label,Beep,Beep,Beep");
    EXPECT_STREQ(UndoMenuText(), "Undo Add Step\tCtrl+Z");
    EXPECT_EQ(Undo(), 2);
    EXPECT_EQ(Actions(), "Label,Beep");
    EXPECT_EQ(PasteStepsText("no steps here", 0, 10), 0);
}

TEST(Undo, SkipAndBreakpointExcludeEachOther) {
    Load("Label");
    ToggleStepStatus(0, STEP_SKIP, 1);
    EXPECT_EQ(CurrentTab().steps[0].status, STEP_SKIP);
    ToggleStepStatus(0, STEP_BREAKPOINT, 2);
    EXPECT_EQ(CurrentTab().steps[0].status, STEP_BREAKPOINT);
    ToggleBookmark(0);
    EXPECT_EQ(UndoCount(), 2);  // bookmarks save no entry
    EXPECT_EQ(NextBookmark(0), 0);
    Undo();
    EXPECT_EQ(CurrentTab().steps[0].status, STEP_SKIP);
}

TEST(Undo, AutoIndentFollowsThePairsAndReportsTheUnmatched) {
    Load("IF Expression,Start 'For' Loop,Beep,NEXT LOOP,ELSE,Beep,END IF,NEXT LOOP,IF File Exists");
    std::string warnings = AutoIndent(4);
    int expected[] = {0, 1, 2, 1, 0, 1, 0, 0, 0};
    for (int i = 0; i < 9; i++) EXPECT_EQ(CurrentTab().steps[i].indents, expected[i]) << i;
    EXPECT_EQ(warnings,
              "There is 1 'IF' without a matching 'END IF'\n"
              "There is 1 'NEXT LOOP' without a matching 'START LOOP'\n");
    EXPECT_GT(Undo(), 0);  // the whole indent is one group
    for (int i = 0; i < 9; i++) EXPECT_EQ(CurrentTab().steps[i].indents, 0) << i;
}

TEST(Undo, AnActionTooBigForTheBufferAsksFirst) {
    ResetTestState();
    EXPECT_TRUE(ConfirmUndoSpace(499));
    EXPECT_TRUE(SeenBoxes.empty());
    NextBoxAnswer = IDNO;
    EXPECT_FALSE(ConfirmUndoSpace(500));
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text.rfind("Insufficient space in the Undo buffer", 0), 0u);
}

}  // namespace
