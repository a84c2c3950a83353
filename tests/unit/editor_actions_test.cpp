// The actions tree as a newcomer uses it: a right click keeps an action under
// Favorites (and takes it away), which a restart keeps; the filter box over
// the tree narrows it to the actions whose names hold the typed text, and
// the keyboard goes from the box into the tree and back.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <ctype.h>

#include <set>
#include <string>
#include <vector>

#include "base/settings.h"
#include "editor/actionstree.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "script/catalogue.h"
#include "test_support.h"

namespace {

std::vector<std::string> Children(HTREEITEM heading) {
    std::vector<std::string> names;
    for (HTREEITEM i = TreeView_GetChild(ActionsTree, heading); i; i = TreeView_GetNextSibling(ActionsTree, i))
        names.push_back(TreeItemLabel(i));
    return names;
}

std::vector<std::string> Headings() {
    std::vector<std::string> names;
    for (HTREEITEM h = TreeView_GetRoot(ActionsTree); h; h = TreeView_GetNextSibling(ActionsTree, h))
        names.push_back(TreeItemLabel(h));
    return names;
}

std::set<std::string> OpenHeadings() {
    std::set<std::string> open;
    for (HTREEITEM h = TreeView_GetRoot(ActionsTree); h; h = TreeView_GetNextSibling(ActionsTree, h))
        if (TreeView_GetItemState(ActionsTree, h, TVIS_EXPANDED) & TVIS_EXPANDED) open.insert(TreeItemLabel(h));
    return open;
}

// What the menu of the last right click offered, and the choice made.
std::string MenuOffered;

void CALLBACK ChooseFirstItem(HWND, UINT, UINT_PTR timer, DWORD) {
    for (HWND w = FindWindowExA(nullptr, nullptr, "#32768", nullptr); w; w = FindWindowExA(nullptr, w, "#32768", nullptr)) {
        if (!IsWindowVisible(w) || GetWindowThreadProcessId(w, nullptr) != GetCurrentThreadId()) continue;
        HMENU menu = (HMENU)SendMessageA(w, 0x01E1 /* MN_GETHMENU */, 0, 0);
        char text[100] = "";
        GetMenuStringA(menu, 0, text, sizeof text, MF_BYPOSITION);
        MenuOffered = text;
        KillTimer(nullptr, timer);
        PostMessageA(w, WM_KEYDOWN, VK_DOWN, 0);
        PostMessageA(w, WM_KEYDOWN, VK_RETURN, 0);
        return;
    }
}

// A right click on the item, as the mouse gives it, with the first item of
// the menu chosen; what the menu offered ("no menu" when none came within
// `wait` milliseconds).
std::string RightClickAndChoose(HTREEITEM item, DWORD wait = 5000) {
    TreeView_EnsureVisible(ActionsTree, item);
    Pump();
    RECT r;
    if (!TreeView_GetItemRect(ActionsTree, item, &r, TRUE)) return "item not shown";
    POINT at = {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
    ClientToScreen(ActionsTree, &at);
    MenuOffered.clear();
    const UINT_PTR timer = SetTimer(nullptr, 0, 30, ChooseFirstItem);
    MouseAt(at, 0);
    Pump();
    MouseAt(at, MOUSEEVENTF_RIGHTDOWN);
    MouseAt(at, MOUSEEVENTF_RIGHTUP);
    PumpUntil([] { return !MenuOffered.empty(); }, wait);
    KillTimer(nullptr, timer);
    Pump();
    return MenuOffered.empty() ? "no menu" : MenuOffered;
}

HTREEITEM Favorites() { return TreeView_GetRoot(ActionsTree); }

TEST(ActionsTree, FavoritesAreAddedAndRemovedByARightClickAndKept) {
    {
        Editor e;
        SetForegroundWindow(e.window);
        ASSERT_EQ(TreeItemLabel(Favorites()), "Favorites");
        EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"(right-click any action to add)"});
        // A heading has no menu.
        EXPECT_EQ(RightClickAndChoose(TreeItem(TreeView_GetRoot(ActionsTree), "Wait"), 1000), "no menu");

        EXPECT_EQ(RightClickAndChoose(TreeItem(TreeView_GetRoot(ActionsTree), "Delay")), "&Add to Favorites");
        EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"Delay"});
        EXPECT_TRUE(TreeView_GetItemState(ActionsTree, Favorites(), TVIS_EXPANDED) & TVIS_EXPANDED);
        // The second from its own heading, below the first.
        HTREEITEM keyboard = TreeItem(TreeView_GetNextSibling(ActionsTree, Favorites()), "Type");
        EXPECT_EQ(RightClickAndChoose(keyboard), "&Add to Favorites");
        const std::vector<std::string> two = Children(Favorites());
        const std::set<std::string> both(two.begin(), two.end());
        EXPECT_EQ(both, (std::set<std::string>{"Delay", "Type"}));
        // A favourite offers to go, under Favorites and under its heading.
        HTREEITEM delay = TreeItem(TreeView_GetChild(ActionsTree, Favorites()), "Delay");
        EXPECT_EQ(RightClickAndChoose(delay), "&Remove from Favorites");
        EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"Type"});
        // The added action is a step like any other.
        int category = 0, image = 0;
        EXPECT_TRUE(LookupAction(ActionsTree, "Type", &category, &image));
        EXPECT_EQ(category, 4);
    }
    // A new window reads them back from the settings.
    Editor again;
    EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"Type"});
    SetFavorite("Type", false);
    EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"(right-click any action to add)"});
    EXPECT_FALSE(IsFavoriteAction("Type"));
}

// The catalogue's actions whose names hold `text`, folded to lower case.
std::set<std::string> ActionsHolding(std::string text) {
    for (char& c : text) c = (char)tolower((unsigned char)c);
    std::set<std::string> names;
    for (int i = 0; i < ActionCatalogueCount; i++) {
        if (ActionCatalogue[i].category > 99999) continue;
        std::string name = ActionCatalogue[i].name;
        for (char& c : name) c = (char)tolower((unsigned char)c);
        if (name.find(text) != std::string::npos) names.insert(ActionCatalogue[i].name);
    }
    return names;
}

std::set<std::string> ShownActions() {
    std::set<std::string> names;
    for (HTREEITEM h = TreeView_GetRoot(ActionsTree); h; h = TreeView_GetNextSibling(ActionsTree, h))
        for (const std::string& n : Children(h)) names.insert(n);
    return names;
}

TEST(ActionsTree, TheFilterBoxNarrowsTheTreeAndEscGivesItBack) {
    Editor e;
    ASSERT_TRUE(ActionsFilter);
    ASSERT_TRUE(IsWindowVisible(ActionsFilter));
    // The box sits over the tree.
    RECT box, tree;
    GetWindowRect(ActionsFilter, &box);
    GetWindowRect(ActionsTree, &tree);
    EXPECT_LE(box.bottom, tree.top);
    const std::vector<std::string> allHeadings = Headings();
    TreeView_Expand(ActionsTree, TreeItem(TreeView_GetRoot(ActionsTree), "Mouse"), TVE_EXPAND);
    const std::set<std::string> openBefore = OpenHeadings();

    // Typed as the user types it.
    SetForegroundWindow(e.window);
    SetFocus(ActionsFilter);
    for (char c : std::string("WAIT")) e.Key((UINT)c);
    EXPECT_EQ(WindowText(ActionsFilter), "wait");
    const std::set<std::string> wanted = ActionsHolding("wait");
    ASSERT_GT(wanted.size(), 5u);
    EXPECT_EQ(ShownActions(), wanted);
    // Only the headings that keep an action, each open.
    EXPECT_EQ(Headings(), (std::vector<std::string>{"Run Program", "Wait"}));
    EXPECT_EQ(OpenHeadings(), (std::set<std::string>{"Run Program", "Wait"}));

    // Case does not matter; a text that no name holds leaves no heading,
    // also when it holds characters of several bytes.
    struct Case {
        const char* text;
        std::set<std::string> shown;
    } cases[] = {
        {"MOUSE WHEEL", ActionsHolding("mouse wheel")},
        {"file", ActionsHolding("file")},
        {"wait\xC3\xA9", {}},
        {"\xE2\x82\xAC", {}},
        {"zzz", {}},
    };
    for (const Case& c : cases) {
        SetWindowTextA(ActionsFilter, c.text);
        ActionsFilterChanged();
        EXPECT_EQ(ShownActions(), c.shown) << c.text;
        if (c.shown.empty()) {
            EXPECT_TRUE(Headings().empty()) << c.text;
        }
    }
    EXPECT_EQ(ActionsHolding("mouse wheel").size(), 2u);

    // Enter moves into the tree, on the first action; Enter there adds it.
    SetWindowTextA(ActionsFilter, "keypress");
    ActionsFilterChanged();
    SetFocus(ActionsFilter);
    e.Key(VK_RETURN);
    EXPECT_EQ(GetFocus(), ActionsTree);
    EXPECT_EQ(TreeItemLabel(TreeView_GetSelection(ActionsTree)), "Wait for Keypress");
    e.Key(VK_RETURN);
    ASSERT_EQ(CurrentTab().count, 1);
    EXPECT_STREQ(CurrentTab().steps[0].action, "Wait for Keypress");

    // Shift+Tab goes back to the box, Esc there gives back the whole tree
    // with its headings open as they were.
    e.Key(VK_TAB, false, true);
    EXPECT_EQ(GetFocus(), ActionsFilter);
    e.Key(VK_ESCAPE);
    EXPECT_EQ(WindowText(ActionsFilter), "");
    EXPECT_EQ(Headings(), allHeadings);
    EXPECT_EQ(OpenHeadings(), openBefore);
    EXPECT_EQ(Children(Favorites()), std::vector<std::string>{"(right-click any action to add)"});
    // Down in the box goes into the tree too; Tab from the box as well.
    SetFocus(ActionsFilter);
    e.Key(VK_DOWN);
    EXPECT_EQ(GetFocus(), ActionsTree);
    SetFocus(ActionsFilter);
    e.Key(VK_TAB);
    EXPECT_EQ(GetFocus(), ActionsTree);
}

}  // namespace
