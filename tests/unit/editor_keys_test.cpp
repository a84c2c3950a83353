// The editor from the keyboard alone: Tab goes round the panes, Enter adds
// the action chosen in the tree, the properties grid opens a value on Enter,
// F2 or Space, and the list has the focus after a Find.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "base/settings.h"
#include "editor/commands.h"
#include "editor/panekeys.h"
#include "editor/propertygrid.h"
#include "run/clipboard.h"
#include "editor/actionstree.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "script/properties.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::string Script(const std::string& steps) {
    const std::string path = TempFolder() + "\\keys.zxm";
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + steps + "</ZantoRunner>\r\n");
    return path;
}

const char* PaneName(HWND focus) {
    if (focus == ActionsFilter) return "filter";
    if (focus == ActionsTree) return "tree";
    if (focus == StepList) return "list";
    if (focus == PropertyGrid) return "properties";
    if (focus == OutputEdit) return "output";
    return "elsewhere";
}

TEST(Keys, TabAndShiftTabGoRoundEveryPane) {
    Editor e;
    OpenFileInTab(Script("<step><action>Delay</action></step>").c_str());
    SetForegroundWindow(e.window);
    SetFocus(StepList);
    std::string order;
    for (int i = 0; i < 5; i++) {
        e.Key(VK_TAB);
        order += PaneName(GetFocus());
        order += " ";
    }
    EXPECT_EQ(order, "properties output filter tree list ");
    e.Key(VK_TAB, false, true);
    EXPECT_STREQ(PaneName(GetFocus()), "tree");
    // A hidden pane is passed over.
    e.Command(CMD_SHOW_OUTPUT);
    SetFocus(PropertyGrid);
    e.Key(VK_TAB);
    EXPECT_STREQ(PaneName(GetFocus()), "filter");
}

TEST(Keys, EnterOnAnActionInTheTreeAddsItAfterTheSelection) {
    Editor e;
    OpenFileInTab(Script("<step><action>Label</action></step><step><action>Label</action></step>").c_str());
    SelectStepRow(0);
    HTREEITEM delay = TreeItem(TreeView_GetRoot(ActionsTree), "Delay");
    ASSERT_TRUE(delay);
    TreeView_SelectItem(ActionsTree, delay);
    SetForegroundWindow(e.window);
    SetFocus(ActionsTree);
    e.Key(VK_RETURN);
    ASSERT_EQ(CurrentTab().count, 3);
    EXPECT_STREQ(CurrentTab().steps[1].action, "Delay");
}

TEST(Keys, ThePropertiesGridOpensAValueFromTheKeyboard) {
    Editor e;
    OpenFileInTab(Script("<step><action>Type</action><text>old</text></step>").c_str());
    SelectStepRow(0);
    Pump();
    RefreshPropertyGrid();
    const int text = FindProperty("Text", 0);
    ASSERT_GE(text, 0);
    SetForegroundWindow(e.window);
    SetFocus(PropertyGrid);
    ListView_SetItemState(PropertyGrid, text, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
    for (UINT key : {(UINT)VK_F2, (UINT)VK_SPACE, (UINT)VK_RETURN}) {
        e.Key(key);
        ASSERT_TRUE(ActiveEditor) << key;
        EXPECT_EQ(GetFocus(), ActiveEditor);
        SetWindowTextA(ActiveEditor, "typed");
        e.Key(VK_ESCAPE);  // cancels: nothing stored, the grid has the focus again
        EXPECT_FALSE(ActiveEditor);
        EXPECT_EQ(GetFocus(), PropertyGrid);
        EXPECT_STREQ(CurrentTab().steps[0].text, "old");
    }
    // F2 is the grid's here, not the next bookmark's.
    e.Key(VK_F2);
    ASSERT_TRUE(ActiveEditor);
    SetWindowTextA(ActiveEditor, "new {Enter}");
    if (GetWindowLongA(ActiveEditor, GWL_STYLE) & ES_MULTILINE) {
        e.Key(VK_RETURN, true);  // a multi-line row closes with Ctrl+Enter
    } else {
        e.Key(VK_RETURN);
    }
    EXPECT_FALSE(ActiveEditor);
    EXPECT_STREQ(CurrentTab().steps[0].text, "new {Enter}");
}

TEST(Keys, TheListHasTheFocusAfterFindAndARunOfOneStep) {
    Editor e;
    OpenFileInTab(Script("<step><action>Label</action><text>a</text></step>"
                         "<step><action>Label</action><text>target</text></step>")
                      .c_str());
    SelectStepRow(0);
    WriteSetting(nullptr, "target", 0, nullptr, ZR_ROOT "Find");
    SetForegroundWindow(e.window);
    SetFocus(ActionsTree);
    e.Key(VK_F3);
    EXPECT_EQ(SelectedStepRow(), 1);
    EXPECT_EQ(GetFocus(), StepList);

    SetFocus(PropertyGrid);
    SelectStepRow(0);
    e.Key(VK_F7);  // a single step
    EXPECT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 10000));
    EXPECT_EQ(GetFocus(), StepList);
}

}  // namespace

namespace {

// The Output palette's right-click commands.
TEST(OutputPalette, CopiesSelectsAllAndClears) {
    Editor e;
    SetWindowTextA(OutputEdit, "[STEP 1]: Delay\r\nRun Completed\r\n");
    OutputCommand(OUTPUT_COPY);  // nothing selected: all of it
    EXPECT_EQ(GetClipboardText(), "[STEP 1]: Delay\r\nRun Completed\r\n");
    OutputCommand(OUTPUT_SELECT_ALL);
    DWORD from = 1, to = 0;
    SendMessageA(OutputEdit, EM_GETSEL, (WPARAM)&from, (LPARAM)&to);
    EXPECT_EQ(from, 0u);
    EXPECT_EQ(to, (DWORD)GetWindowTextLengthA(OutputEdit));
    OutputCommand(OUTPUT_CLEAR);
    EXPECT_EQ(GetWindowTextLengthA(OutputEdit), 0);
}

}  // namespace
