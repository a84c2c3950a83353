// The step store: allocation, insertion, deletion and the recording table.
#include <gtest/gtest.h>

#include <string.h>

#include "script/step.h"
#include "test_support.h"

namespace {

void Name(int index, const char* action) { lstrcpyA(CurrentTab().steps[index].action, action); }

}  // namespace

TEST(Store, AddStepsAppendsBeyondTheListAndTakesAtLeastOne) {
    EXPECT_EQ(AddSteps(5, 0, 1), 0);  // null list: one record at the end
    CurrentTab().count = 1;
    Name(0, "A");
    EXPECT_EQ(StepCapacity(0), 1);
    ASSERT_NE(CurrentTab().steps[0].text, nullptr);
    EXPECT_EQ(HeapBlockSize(CurrentTab().steps[0].text), 260u);

    EXPECT_EQ(AddSteps(99, 2, 0), 1);  // beyond the list: appended
    EXPECT_EQ(CurrentTab().steps[1].text, nullptr);
    EXPECT_EQ(StepCapacity(0), 3);
}

TEST(Store, AddStepsInsertsAndMovesLaterRecordsUp) {
    AddSteps(-1, 3, 1);
    CurrentTab().count = 3;
    Name(0, "A");
    Name(1, "B");
    Name(2, "C");
    EXPECT_EQ(AddSteps(1, 1, 0), 1);
    CurrentTab().count++;
    EXPECT_STREQ(CurrentTab().steps[0].action, "A");
    EXPECT_STREQ(CurrentTab().steps[1].action, "");
    EXPECT_STREQ(CurrentTab().steps[2].action, "B");
    EXPECT_STREQ(CurrentTab().steps[3].action, "C");
}

TEST(Store, DeletingTheOnlyStepLeavesANullList) {
    AddSteps(-1, 1, 1);
    CurrentTab().count = 1;
    DeleteStep(0);
    EXPECT_EQ(CurrentTab().steps, nullptr);
    EXPECT_EQ(CurrentTab().count, 0);
}

TEST(Store, DeleteStepMovesLaterRecordsDown) {
    AddSteps(-1, 3, 1);
    CurrentTab().count = 3;
    Name(0, "A");
    Name(1, "B");
    Name(2, "C");
    DeleteStep(1);
    EXPECT_EQ(CurrentTab().count, 2);
    EXPECT_EQ(StepCapacity(0), 2);
    EXPECT_STREQ(CurrentTab().steps[1].action, "C");
    DeleteStep(7);  // outside: nothing happens
    EXPECT_EQ(CurrentTab().count, 2);
}

TEST(Store, FreeStepsClearsTheCurrentTabsCount) {
    ScriptStore.currentTab = 1;
    AddSteps(-1, 2, 1);
    CurrentTab().count = 2;
    ScriptStore.currentTab = 0;
    CurrentTab().count = 5;
    FreeSteps(1);
    EXPECT_EQ(ScriptStore.tab[1].steps, nullptr);
    EXPECT_EQ(ScriptStore.tab[1].count, 2);  // the argument's count stays
    EXPECT_EQ(ScriptStore.tab[0].count, 0);  // the current tab's is cleared
}

TEST(Store, ResetTabNamesTheTabUntitledAndMakesItCurrent) {
    ResetTab(3);
    EXPECT_EQ(ScriptStore.currentTab, 3);
    EXPECT_STREQ(ScriptStore.tab[3].path, "(Untitled)");
}

TEST(Store, EnsureCapacityGrowsOnlyWhenNeeded) {
    char* text = EnsureCapacity(nullptr, 10);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(HeapBlockSize(text), 256u);
    lstrcpyA(text, "keep");
    EXPECT_EQ(EnsureCapacity(text, 254), text);
    text = EnsureCapacity(text, 1000);
    EXPECT_GE(HeapBlockSize(text), 1002u);
    EXPECT_STREQ(text, "keep");
    HeapFreeBlock(text);
}

TEST(Store, GrowBlockKeepsContentAndZeroFillsLargeBlocksInPlace) {
    // A large block grows in place and reads as zero beyond the old content,
    // also after it was shrunk and grown again.
    char* block = (char*)GrowBlock(nullptr, 2 << 20);
    ASSERT_NE(block, nullptr);
    memset(block, 'x', 2 << 20);
    char* grown = (char*)GrowBlock(block, 3 << 20);
    ASSERT_EQ(grown, block);
    EXPECT_EQ(grown[(2 << 20) - 1], 'x');
    EXPECT_EQ(grown[2 << 20], 0);
    grown = (char*)GrowBlock(grown, (1 << 20) + 5);
    grown = (char*)GrowBlock(grown, 3 << 20);
    EXPECT_EQ(grown[(1 << 20) + 4], 'x');
    EXPECT_EQ(grown[(1 << 20) + 5], 0);
    EXPECT_EQ(grown[(2 << 20) + 100], 0);
    EXPECT_EQ(HeapBlockSize(grown), size_t(3) << 20);
    HeapFreeBlock(grown);
    EXPECT_EQ(HeapBlockSize(GrowBlock(nullptr, 3)), 256u);  // floor
}
