// Window matching, control kinds, the window actions and the dump, on real
// windows of this process; and the mouse actions' moves.
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/mouse.h"
#include "desktop/pause.h"
#include "desktop/windowcontrol.h"
#include "desktop/windowmatch.h"
#include "desktop/windowstep.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

std::vector<DWORD> Pauses;
void RecordPause(DWORD ms) { Pauses.push_back(ms); }

HWND Frame(const char* title, DWORD style = WS_OVERLAPPEDWINDOW | WS_VISIBLE, int x = 100, int y = 50) {
    static bool registered = false;
    if (!registered) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = DefWindowProcA;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "ZrTestFrame";
        RegisterClassA(&wc);
        registered = true;
    }
    return CreateWindowExA(0, "ZrTestFrame", title, style, x, y, 300, 200, nullptr, nullptr, nullptr, nullptr);
}

HWND Child(HWND parent, const char* className, const char* text, DWORD style, int id) {
    return CreateWindowExA(0, className, text, WS_CHILD | WS_VISIBLE | style, 10, 10 + id % 100, 120, 20, parent,
                           (HMENU)(INT_PTR)id, nullptr, nullptr);
}

class Windows : public ::testing::Test {
protected:
    std::vector<HWND> made;
    void SetUp() override {
        ResetTestState();
        Pauses.clear();
        DesktopSleep = RecordPause;
        LastWindow = nullptr;
    }
    void TearDown() override {
        for (HWND w : made)
            if (IsWindow(w)) DestroyWindow(w);
    }
    HWND Keep(HWND w) {
        EXPECT_TRUE(w);
        made.push_back(w);
        return w;
    }
    int Run(const char* action, const char* text, const char* options, const char* value1 = "",
            const char* value2 = "") {
        std::string xml = std::string("<ZantoRunner><step><action>") + action + "</action><text>" + text +
                          "</text><options>" + options + "</options><value1>" + value1 + "</value1><value2>" +
                          value2 + "</value2><output value=\"got\">Variable</output>" +
                          "</step></ZantoRunner>";
        EXPECT_EQ(ReplaceSteps(xml), 1);
        StepFailureText[0] = 0;
        return ActWindow(0, 0);
    }
};

TEST_F(Windows, TitlesMatchInPartAndWithoutAmpersands) {
    HWND notepad = Keep(Frame("Untitled - Zr&Notepad"));
    HWND file = Child(notepad, "BUTTON", "&Zr File", BS_PUSHBUTTON, 1001);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "ZrNote", 0), notepad);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "zrnote", 0), notepad);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "Zr File", 0), file);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "&Zr F&ile", 0), file);
    EXPECT_EQ(TopLevelMatches, 0);
    EXPECT_EQ(ChildMatches, 1);
    // Title and class: "title|class"; without the "|" the class is empty.
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE | MATCH_CLASS, "ZrNotepad|zrtestframe", 0), notepad);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE | MATCH_CLASS, "ZrNotepad", 0), nullptr);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE | MATCH_ID, "Zr File|1001", 0), file);
    char handle[32];
    // In decimal, as %HWND gives it: "0x" is read as hexadecimal only when a
    // decimal digit follows, so "0xca00ec" would read as 0.
    snprintf(handle, sizeof handle, "%u", (unsigned)(UINT_PTR)file);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_HANDLE, handle, 0), file);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "", 0), nullptr);
    // A child of our own window is refused; our top-level window is not.
    EXPECT_EQ(FindWindowByCriteria(notepad, MATCH_TITLE, "Zr File", 0), nullptr);
    EXPECT_EQ(FindWindowByCriteria(notepad, MATCH_TITLE, "ZrNote", 0), notepad);
}

TEST_F(Windows, HiddenTopLevelWindowsDoNotCountButTheirChildrenDo) {
    HWND hidden = Keep(Frame("ZrHidden Report", WS_OVERLAPPEDWINDOW));
    HWND label = Child(hidden, "STATIC", "ZrHidden Report label", 0, 7);
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "ZrHidden Rep", 0), label);
    EXPECT_EQ(TopLevelMatches, 0);
    EXPECT_EQ(ChildMatches, 1);
    // Only framed visible windows, as "IF Window Exists" asks.
    EXPECT_EQ(FindWindowByCriteria(nullptr, MATCH_TITLE, "ZrHidden Rep", DUMP_FRAMED), nullptr);
}

TEST_F(Windows, AmbiguousTitlesFailUnlessTheSettingIsOff) {
    HWND a = Keep(Frame("ZrReport A"));
    Keep(Frame("ZrReport B"));
    EXPECT_EQ(Run("Activate", "ZrReport", "Title"), 1);  // setting absent: the last match, silently
    EXPECT_EQ(LastWindow, a);  // the last in enumeration order: the bottom of the Z order
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "MultipleWindowError");
    EXPECT_EQ(Run("Activate", "ZrReport", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "There are 2 top-level windows that match the search criteria");
    // An exact title takes the fast path, which leaves the old counts behind.
    EXPECT_EQ(Run("Activate", "ZrReport A", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "There are 2 top-level windows that match the search criteria");
    EXPECT_EQ(Run("Activate", "", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "Missing window information");
    EXPECT_EQ(Run("Activate", "ZrNo Such Window", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to find window 'ZrNo Such Window'");
    EXPECT_EQ(Run("Tickle Window", "ZrReport B", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "Window 'ZrReport B'found, but invalid action specified");
}

TEST_F(Windows, ControlKindsAndLabelsSkippedToTheNextTabStop) {
    HWND dialog = Keep(Frame("ZrKinds"));
    struct {
        const char* className;
        DWORD style;
        int kind;
    } cases[] = {
        {"STATIC", 0, KIND_LABEL},         {"BUTTON", BS_GROUPBOX, KIND_LABEL},
        {"BUTTON", BS_AUTORADIOBUTTON, KIND_AUTORADIO}, {"BUTTON", BS_AUTOCHECKBOX, KIND_AUTOCHECK},
        {"BUTTON", BS_PUSHBUTTON, KIND_BUTTON}, {"EDIT", 0, KIND_EDIT},
        {"EDIT", ES_MULTILINE, KIND_MULTILINE_EDIT}, {"COMBOBOX", 0, KIND_COMBOBOX},
        {"LISTBOX", 0, KIND_LISTBOX},     {"SCROLLBAR", 0, KIND_SCROLLBAR},
    };
    int id = 100;
    for (const auto& c : cases) EXPECT_EQ(ControlKind(Child(dialog, c.className, "", c.style, id++)), c.kind) << id;
    EXPECT_EQ(ControlKind(nullptr), KIND_OTHER);

    HWND form = Keep(Frame("ZrForm"));
    HWND label = Child(form, "STATIC", "Name:", 0, 1);
    HWND edit = Child(form, "EDIT", "", WS_TABSTOP, 2);
    EXPECT_EQ(SkipStaticControl(label), edit);
    EXPECT_EQ(SkipStaticControl(edit), edit);
}

TEST_F(Windows, ActionsMoveResizeRestyleAndReadText) {
    HWND w = Keep(Frame("ZrTarget"));
    HWND edit = Child(w, "EDIT", "ZrEdit text 100%", 0, 5);
    EXPECT_EQ(Run("Move Window", "ZrTarget", "Title", "101", "51"), 1);
    RECT r;
    GetWindowRect(w, &r);
    EXPECT_EQ(r.left, 100);  // scripts count pixels from 1
    EXPECT_EQ(r.top, 50);
    EXPECT_EQ(Run("Resize", "ZrTarget", "Title", "221", "181"), 1);
    GetWindowRect(w, &r);
    EXPECT_EQ(r.right - r.left, 220);
    EXPECT_EQ(r.bottom - r.top, 180);
    EXPECT_EQ(Run("Set Window Style", "ZrTarget", "Title", "without maximize button"), 1);
    EXPECT_FALSE(GetWindowLongA(w, GWL_STYLE) & WS_MAXIMIZEBOX);
    EXPECT_EQ(Run("Set Window Style", "ZrTarget", "Title", "Disabled"), 1);
    EXPECT_FALSE(IsWindowEnabled(w));
    EXPECT_EQ(Run("Set Window Style", "ZrTarget", "Title", "Sideways"), 1);  // unknown: nothing changes
    EXPECT_EQ(Run("Get Text", "5", "ID"), 1);
    char got[64];
    ReadSetting(nullptr, got, sizeof got, nullptr, ZR_ROOT "UserVariables\\got");
    EXPECT_STREQ(got, "ZrEdit text 100%");
    EXPECT_EQ(LastWindow, edit);
    EXPECT_EQ(Run("Minimize/Restore", "ZrTarget", "Title"), 1);
    EXPECT_TRUE(IsIconic(w));
    EXPECT_EQ(Run("Close Window", "ZrTarget", "Title"), 1);
    EXPECT_FALSE(IsWindow(w));
    EXPECT_TRUE(Pauses.empty());  // closed by the first message, with no waiting
}

// A program that asks before it closes: on WM_CLOSE it puts up a question
// that it owns, and stays open; one that refuses stays open with none.
int CloseRequests;
LRESULT CALLBACK AskingProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_CLOSE) {
        CloseRequests++;
        char title[64];
        GetWindowTextA(w, title, sizeof title);
        if (strcmp(title, "ZrAsking") == 0) {
            // A modal question: its owner is disabled while it is up.
            CreateWindowExA(0, "ZrTestFrame", "ZrSave changes?", WS_POPUP | WS_CAPTION | WS_VISIBLE, 0, 0, 100, 80,
                            w, nullptr, nullptr, nullptr);
            EnableWindow(w, FALSE);
        } else if (strcmp(title, "ZrRefusing") == 0) {
            // A modeless window of its own asks nothing.
            CreateWindowExA(0, "ZrTestFrame", "ZrPalette", WS_POPUP | WS_CAPTION | WS_VISIBLE, 0, 0, 100, 80, w,
                            nullptr, nullptr, nullptr);
        }
        return 0;
    }
    return DefWindowProcA(w, m, wp, lp);
}

TEST_F(Windows, CloseLeavesAProgramThatAnswersAndForceEndsIt) {
    Frame("ZrClass registered");  // the frame class exists from here on
    HWND asking = Keep(Frame("ZrAsking"));
    HWND refusing = Keep(Frame("ZrRefusing"));
    for (HWND w : {asking, refusing}) SetWindowLongPtrA(w, GWLP_WNDPROC, (LONG_PTR)AskingProc);
    CloseRequests = 0;
    EXPECT_EQ(Run("Close Window", "ZrAsking", "Title"), 0);
    EXPECT_STREQ(StepFailureText,
                 "Closing 'ZrAsking' was answered by the window 'ZrSave changes?', which is waiting for an answer: "
                 "nothing was forced");
    EXPECT_TRUE(IsWindow(asking));
    HWND question = QuestionOf(asking);
    ASSERT_TRUE(question);
    Keep(question);
    // Asked again while the question is up: the same words, and no second question.
    EXPECT_EQ(Run("Close Window", "ZrAsking", "Title"), 0);
    EXPECT_NE(strstr(StepFailureText, "'ZrSave changes?'"), nullptr);
    EXPECT_EQ(CloseRequests, 1);

    EXPECT_EQ(Run("Close Window", "ZrRefusing", "Title"), 0);
    EXPECT_NE(strstr(StepFailureText, "Window 'ZrRefusing' is still open"), nullptr);
    EXPECT_TRUE(IsWindow(refusing));
    EXPECT_EQ(QuestionOf(refusing), nullptr);

    // "Force" keeps the rising force: the posted close, then DestroyWindow.
    EXPECT_EQ(Run("Close Window", "ZrRefusing", "Title Force"), 1);
    EXPECT_FALSE(IsWindow(refusing));
}

TEST_F(Windows, MinimizeAllTouchesOnlyVisibleFramedTopLevelWindows) {
    HWND a = Keep(Frame("ZrAll A"));
    HWND popup = Keep(Frame("ZrAll popup", WS_POPUP | WS_VISIBLE));
    EXPECT_EQ(Run("Minimize all Windows", "", ""), 1);
    EXPECT_TRUE(IsIconic(a));
    EXPECT_FALSE(IsIconic(popup));
}

TEST_F(Windows, DumpListsWindowsInLongAndShortForms) {
    HWND w = Keep(Frame("ZrDump 50%"));
    HWND button = Child(w, "BUTTON", "ZrDump OK", BS_PUSHBUTTON, 77);
    char path[MAX_PATH];
    DumpFilePath(path);
    DeleteFileA(path);
    FindWindowByCriteria(nullptr, MATCH_DUMP, nullptr, DUMP_MAIN);
    std::string shortForm = ReadWholeFile(path);
    EXPECT_NE(shortForm.find("ZrDump 50%\r\n"), std::string::npos) << shortForm;
    EXPECT_EQ(shortForm.find("ZrDump OK"), std::string::npos);
    DeleteFileA(path);
    FindWindowByCriteria(nullptr, MATCH_DUMP, nullptr, 0);
    std::string longForm = ReadWholeFile(path);
    char line[200];
    snprintf(line, sizeof line,
             "\r\n======================================================================\r\n"
             "\"ZrDump 50%%\"\t\t\t(Class: ZrTestFrame  ID: 0  HWND: 0x%x)\r\n"
             "      \"ZrDump OK\"\t\t\t(Class: Button  ID: 77  HWND: 0x%x)\r\n",
             (unsigned)(UINT_PTR)w, (unsigned)(UINT_PTR)button);
    EXPECT_NE(longForm.find(line), std::string::npos) << longForm;
    DeleteFileA(path);
}

TEST_F(Windows, MouseMovesGlideSnapAndCountFromTheirOrigin) {
    auto Mouse = [&](const char* action, const char* text, const char* options, const char* value1 = "") {
        ReplaceSteps(std::string("<ZantoRunner><step><action>") + action + "</action><text>" + text +
                  "</text><options>" + options + "</options><value1>" + value1 + "</value1></step></ZantoRunner>");
        return ActMouse(0, 0);
    };
    // After an activation Wine may report the pointer's old place for a
    // moment, until the display's events are in: wait for the new one.
    auto At = [](int x, int y) {
        POINT p = {};
        for (DWORD start = GetTickCount(); GetTickCount() - start < 2000;) {
            GetCursorPos(&p);
            if (p.x == x && p.y == y) return true;
            MSG msg;
            while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
        printf("pointer at %ld, %ld\n", p.x, p.y);
        return false;
    };
    SetCursorPos(10, 10);
    EXPECT_EQ(Mouse("Move", "300, 200", ""), 1);
    EXPECT_TRUE(At(300, 200));
    EXPECT_EQ(Pauses, std::vector<DWORD>(20, 25));  // 20 moves, 25 ms apart
    Pauses.clear();
    EXPECT_EQ(Mouse("Move", "310, 205", ""), 1);
    EXPECT_TRUE(At(310, 205));
    EXPECT_EQ(Pauses.size(), 8u);  // a short way: 8 moves
    Pauses.clear();
    EXPECT_EQ(Mouse("Move", "0, 0", ""), 1);  // (0, 0) never moves
    EXPECT_TRUE(At(310, 205));
    EXPECT_EQ(Mouse("Move Relative", "10, -5", "current", "Snap"), 1);
    EXPECT_TRUE(At(320, 200));
    EXPECT_TRUE(Pauses.empty());
    EXPECT_EQ(Mouse("Save Current Position", "", ""), 1);
    SetCursorPos(5, 5);
    EXPECT_EQ(Mouse("Return to Saved Position", "", "", "Snap"), 1);
    EXPECT_TRUE(At(320, 200));
    LastWindow = Keep(Frame("ZrOrigin", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 200, 150));
    EXPECT_EQ(Mouse("Move", "5, 6", "window", "Snap"), 1);
    EXPECT_TRUE(At(205, 156));
    SetCursorPos(0, 0);
    EXPECT_EQ(Mouse("Move to Window", "ZrOrigin", "Title", "Snap"), 1);
    EXPECT_TRUE(At(200, 150));
    EXPECT_EQ(Mouse("Move to Control", "ZrOrigin", "Title", "Snap"), 1);
    EXPECT_TRUE(At(350, 250));  // the centre
    EXPECT_EQ(Mouse("Move to Window", "ZrNowhere", "Title"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to find window 'ZrNowhere'");
}

}  // namespace
