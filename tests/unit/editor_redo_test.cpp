// Redo over the undo records, and the "* " of a tab that follows whether
// its steps are what its file holds.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "base/settings.h"
#include "editor/commands.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "script/step.h"
#include "script/undo.h"
#include "test_support.h"

namespace {

std::string Script(const char* name) {
    const std::string path = TempFolder() + "\\" + name;
    WriteWholeFile(path,
                   "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                   "<step><action>Label</action><text>one</text></step>\r\n"
                   "<step><action>Label</action><text>two</text></step>\r\n"
                   "<step><action>Label</action><text>three</text></step>\r\n"
                   "</ZantoRunner>\r\n");
    return path;
}

std::string Texts() {
    std::string all;
    for (int i = 0; i < CurrentTab().count; i++) all += std::string(CurrentTab().steps[i].text) + " ";
    return all;
}

std::string MenuText(HWND window, int id) {
    HMENU edit = GetSubMenu(GetMenu(window), 1);
    SendMessageA(window, WM_INITMENUPOPUP, (WPARAM)edit, 1);
    char item[64] = "";
    GetMenuStringA(edit, (UINT)id, item, sizeof item, MF_BYCOMMAND);
    return item;
}

TEST(Redo, CtrlYDoesAgainWhatUndoTookBackUntilTheNextChange) {
    Editor e;
    ASSERT_EQ(OpenFileInTab(Script("redo.zxm").c_str()), 3);
    SetForegroundWindow(e.window);
    SetFocus(StepList);
    // With nothing to redo the item is greyed, and the key does nothing.
    e.Key('Y', true);
    EXPECT_TRUE(SeenBoxes.empty());
    e.Command(CMD_REDO);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Redo not available");

    // A delete, undone and redone with the keys.
    SelectStepRow(0);
    e.Command(CMD_DELETE);
    EXPECT_EQ(Texts(), "two three ");
    EXPECT_TRUE(e.Key('Z', true));
    EXPECT_EQ(Texts(), "one two three ");
    EXPECT_EQ(MenuText(e.window, CMD_REDO), "Redo Delete Step\tCtrl+Y");
    EXPECT_TRUE(e.Key('Y', true));
    EXPECT_EQ(Texts(), "two three ");
    EXPECT_EQ(RedoCount(), 0);
    EXPECT_EQ(UndoCount(), 1);

    // A move (two entries in one group) comes back whole, and so does an
    // added step.
    SelectStepRow(0);
    e.Command(CMD_MOVE_DOWN);
    EXPECT_EQ(Texts(), "three two ");
    e.Command(CMD_UNDO);
    EXPECT_EQ(Texts(), "two three ");
    e.Command(CMD_REDO);
    EXPECT_EQ(Texts(), "three two ");
    e.Command(CMD_UNDO);
    e.Command(CMD_UNDO);
    EXPECT_EQ(Texts(), "one two three ");
    e.Command(CMD_REDO);
    e.Command(CMD_REDO);
    EXPECT_EQ(Texts(), "three two ");

    // A new change ends what can be redone.
    e.Command(CMD_UNDO);
    SelectStepRow(1);
    e.Command(CMD_INDENT);
    EXPECT_EQ(RedoCount(), 0);
    EXPECT_EQ(MenuText(e.window, CMD_REDO), "Redo\tCtrl+Y");
    EXPECT_TRUE(GetMenuState(GetSubMenu(GetMenu(e.window), 1), CMD_REDO, MF_BYCOMMAND) & MF_GRAYED);
}

TEST(Redo, TheStarFollowsWhetherTheStepsAreWhatTheFileHolds) {
    Editor e;
    const std::string path = Script("saved.zxm");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 3);
    EXPECT_EQ(WindowText(e.window), "saved.zxm - ZantoRunner");
    SelectStepRow(1);
    e.Command(CMD_INDENT);
    EXPECT_EQ(WindowText(e.window), "* saved.zxm - ZantoRunner");
    e.Command(CMD_SAVE);
    EXPECT_EQ(WindowText(e.window), "saved.zxm - ZantoRunner");
    // Undo after a save: the steps differ from the file again.
    e.Command(CMD_UNDO);
    EXPECT_EQ(WindowText(e.window), "* saved.zxm - ZantoRunner");
    // Redo back to what was saved: unchanged.
    e.Command(CMD_REDO);
    EXPECT_EQ(WindowText(e.window), "saved.zxm - ZantoRunner");

    // A breakpoint is kept in the file, so it is a change; toggled off
    // again the steps are what the file holds.
    e.Command(CMD_BREAKPOINT);
    EXPECT_EQ(WindowText(e.window), "* saved.zxm - ZantoRunner");
    e.Command(CMD_BREAKPOINT);
    EXPECT_EQ(WindowText(e.window), "saved.zxm - ZantoRunner");
    e.Command(CMD_TOGGLE_BOOKMARK);
    e.Command(CMD_TOGGLE_BOOKMARK);
    EXPECT_EQ(WindowText(e.window), "saved.zxm - ZantoRunner");
    // Closing an unchanged tab asks nothing.
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "PromptSave");
    SeenBoxes.clear();
    e.Command(CMD_CLOSE);
    EXPECT_TRUE(SeenBoxes.empty());
}

}  // namespace
