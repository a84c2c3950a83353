// The Variables palette: what the registry holds when it opens, each value a
// run saves as it saves it, and the user's Delete and Clear All.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "base/settings.h"
#include "editor/commands.h"
#include "editor/frame.h"
#include "editor/variablespalette.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "test_support.h"

namespace {

// The value shown for `name`, or "(none)".
std::string Shown(const char* name) {
    const int rows = ListView_GetItemCount(VariablesList);
    for (int row = 0; row < rows; row++) {
        char cell[260] = "";
        ListView_GetItemText(VariablesList, row, 0, cell, sizeof cell);
        if (lstrcmpA(cell, name) != 0) continue;
        ListView_GetItemText(VariablesList, row, 1, cell, sizeof cell);
        return cell;
    }
    return "(none)";
}

void Click(int button) {
    SendMessageA(GetDlgItem(VariablesPalette, button), BM_CLICK, 0, 0);
    Pump();
}

TEST(VariablesPalette, ThePaletteShowsWhatARunSetsAndTheUserDeletes) {
    Editor e;  // a first start: no variables yet
    WriteSetting(nullptr, "before", 0, nullptr, ZR_ROOT "UserVariables\\kept");
    ASSERT_TRUE(VariablesPalette && VariablesList);
    EXPECT_FALSE(IsWindowVisible(VariablesPalette));  // hidden until asked for
    e.Command(CMD_SHOW_VARIABLES);
    EXPECT_TRUE(IsWindowVisible(VariablesPalette));
    EXPECT_TRUE(GetMenuState(GetMenu(e.window), CMD_SHOW_VARIABLES, MF_BYCOMMAND) & MF_CHECKED);
    EXPECT_EQ(Shown("kept"), "before");

    const std::string path = TempFolder() + "\\vars.zxm";
    WriteWholeFile(path,
                   "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                   "<step><action>Create/Set Variable</action><text>hello world</text>"
                   "<output value=\"greeting\">Variable</output></step>\r\n"
                   "<step><action>Create/Set Variable</action><text></text>"
                   "<output value=\"kept\">Variable</output></step>\r\n"
                   "</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 2);
    SetForegroundWindow(e.window);
    SetFocus(StepList);
    e.Key(VK_F5);
    ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 20000));
    EXPECT_EQ(Shown("greeting"), "hello world");
    EXPECT_EQ(Shown("kept"), "(none)");  // an empty result deletes it, and its row

    // Delete removes the chosen variable; Clear All, after asking, all.
    WriteSetting(nullptr, "2", 0, nullptr, ZR_ROOT "UserVariables\\other");
    RefillVariablesList();
    ListView_SetItemState(VariablesList, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    char first[64] = "";
    ListView_GetItemText(VariablesList, 0, 0, first, sizeof first);
    EXPECT_STREQ(first, "greeting");  // in order of name
    Click(VARIABLE_DELETE);
    EXPECT_EQ(Shown("greeting"), "(none)");
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\greeting"), 0);
    EXPECT_EQ(Shown("other"), "2");
    NextBoxAnswer = IDYES;
    Click(VARIABLE_CLEAR_ALL);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Are you sure that you want to delete all variables?");
    EXPECT_EQ(ListView_GetItemCount(VariablesList), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\other"), 0);
}

}  // namespace
