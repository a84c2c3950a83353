// Message boxes, the timed box, the status popup with its progress bar, the
// image popup, and the three dialogs answered by a helper thread.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <string.h>

#include <string>

#include "desktop/popups.h"
#include "desktop/prompts.h"
#include "base/settings.h"
#include "base/ui.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

class Prompts : public ::testing::Test {
public:
    void SetUp() override {
        ResetTestState();
        PromptResult[0] = 0;
    }
    int Run(const char* action, const std::string& text, const char* title = "", const char* timeout = "",
            const char* options = "") {
        ReplaceSteps("<ZantoRunner><step><action>" + std::string(action) + "</action><text>" + text +
                     "</text><value1>" + title + "</value1><timeout>" + timeout + "</timeout><options>" + options +
                     "</options><output value=\"answer\">Variable</output></step></ZantoRunner>");
        ScriptStore.tab[0].steps[0].loops = 1;
        return ActPrompt(0, 0);
    }
    std::string Variable(const char* name) {
        char value[300] = "";
        if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\%s", name) <= 0) return "(none)";
        ReadSetting(nullptr, value, sizeof value, nullptr, ZR_ROOT "UserVariables\\%s", name);
        return value;
    }
};

// Waits (pumping this thread's messages) until `done` says so, for up to 2 s.
template <typename Done>
bool WaitFor(Done done) {
    for (DWORD start = GetTickCount(); GetTickCount() - start < 2000;) {
        if (done()) return true;
        ServeThreadWindows();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
    return done();
}

TEST_F(Prompts, MessageBoxesTakeTheirFlagsAndOnlyTheQuestionSaves) {
    EXPECT_EQ(Run("Display Message", "hello", "Note"), 1);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "hello");
    EXPECT_EQ(SeenBoxes[0].title, "Note");
    EXPECT_EQ(SeenBoxes[0].flags, 0x12040u);
    EXPECT_EQ(Run("Display Warning", "careful", "", "", "top"), 1);
    EXPECT_EQ(SeenBoxes[1].flags, 0x51030u);
    EXPECT_EQ(Variable("answer"), "(none)");
    NextBoxAnswer = IDNO;
    EXPECT_EQ(Run("Ask Yes/No Question", "sure?"), 1);
    EXPECT_EQ(SeenBoxes[2].flags, 0x12024u);
    EXPECT_EQ(Variable("answer"), "0");
    NextBoxAnswer = IDYES;
    EXPECT_EQ(Run("Ask Yes/No Question", "sure?"), 1);
    EXPECT_EQ(Variable("answer"), "1");
}

TEST_F(Prompts, MessagesOverEightKilobytesAreCutWithAMarker) {
    EXPECT_EQ(Run("Display Message", std::string(8192, 'm')), 1);
    EXPECT_EQ(SeenBoxes.back().text, std::string(8192, 'm'));
    EXPECT_EQ(Run("Display Message", std::string(8193, 'm')), 1);
    EXPECT_EQ(SeenBoxes.back().text, std::string(0x1FE0, 'm') + "<<MESSAGE OVER 8K, TRUNCATED BY ZantoRunner>>");
}

TEST_F(Prompts, ATimedBoxClosesByItselfAndCountsAsYes) {
    ShowMessageBox = [](HWND owner, const char* text, const char* title, UINT flags) {
        return MessageBoxA(owner, text, title, flags);
    };
    EXPECT_EQ(TimedMessageBox(nullptr, "closing soon", "ZrTimed", MB_OK, 300), -1);
    MSG msg;
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));  // the quit was taken back
    EXPECT_EQ(Run("Ask Yes/No Question", "nobody answers", "ZrTimed", "0.3"), 1);
    EXPECT_EQ(Variable("answer"), "1");
    InstallTestSeams();
}

TEST_F(Prompts, TheStatusPopupIsReusedAndItsTextSteersTheBar) {
    EXPECT_EQ(Run("Progress Bar Popup", "Copying 45%"), 1);
    HWND popup = PopupWindow;
    ASSERT_TRUE(popup);
    HWND bar = GetDlgItem(popup, 0x3EB);
    ASSERT_TRUE(bar);
    EXPECT_EQ(SendMessageA(bar, PBM_GETPOS, 0, 0), 45);
    EXPECT_EQ(Run("Progress Bar Popup", "Done 100%"), 1);
    EXPECT_EQ(PopupWindow, popup);
    EXPECT_EQ(SendMessageA(bar, PBM_GETPOS, 0, 0), 100);
    EXPECT_EQ(Run("Progress Bar Popup", "no number"), 1);
    EXPECT_EQ(SendMessageA(bar, PBM_GETPOS, 0, 0), 100);
    char text[64];
    GetWindowTextA(popup, text, sizeof text);
    EXPECT_STREQ(text, "no number");
    // A timeout closes it.
    EXPECT_EQ(Run("Status Popup", "50% of %d done", "", "0.2"), 1);
    GetWindowTextA(PopupWindow, text, sizeof text);
    EXPECT_STREQ(text, "50% of %d done");
    EXPECT_TRUE(WaitFor([] { return PopupWindow == nullptr; }));
    EXPECT_EQ(PopupWindows, 0);
}

TEST_F(Prompts, AnImageThatCannotBeShownFailsTheStep) {
    EXPECT_EQ(Run("Display Image", "C:\\no\\such.bmp"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to display image \"C:\\no\\such.bmp\" [C:\\no\\such.bmp]");
    std::string file = TempFolder() + "\\dot.bmp";
    SaveBmp(file, 4, 3, std::vector<COLORREF>(12, RGB(1, 2, 3)));
    EXPECT_EQ(Run("Display Image", file, "", "0.2"), 1);
    HWND image = FindWindowA("ZantoPopupImage", file.c_str());
    ASSERT_TRUE(image);
    RECT r;
    GetWindowRect(image, &r);
    EXPECT_EQ(r.right - r.left, 4);
    EXPECT_EQ(r.bottom - r.top, 3);
    EXPECT_TRUE(WaitFor([&] { return !IsWindow(image); }));
}

// Answers the dialog titled `title` from another thread, as a user would.
struct DialogAnswer {
    const char* title;
    const char* edit;
    const char* password;
    int listIndex;
};

DWORD WINAPI Answer(LPVOID parameter) {
    const DialogAnswer* a = (const DialogAnswer*)parameter;
    HWND dialog = nullptr;
    for (int i = 0; i < 200 && !dialog; i++) {
        dialog = FindWindowA("#32770", a->title);
        if (!dialog) Sleep(10);
    }
    if (!dialog) return 1;
    if (a->edit) SetDlgItemTextA(dialog, IDC_PROMPT_EDIT, a->edit);
    if (a->password) SetDlgItemTextA(dialog, IDC_PROMPT_PASSWORD, a->password);
    if (a->listIndex >= 0) SendDlgItemMessageA(dialog, IDC_PROMPT_LIST, LB_SETCURSEL, (WPARAM)a->listIndex, 0);
    PostMessageA(dialog, WM_COMMAND, IDOK, 0);
    return 0;
}

int AnsweredRun(Prompts* t, const char* action, const std::string& text, DialogAnswer answer, const char* timeout = "") {
    HANDLE thread = CreateThread(nullptr, 0, Answer, &answer, 0, nullptr);
    int r = t->Run(action, text, answer.title, timeout);
    WaitForSingleObject(thread, 5000);
    DWORD code = 9;
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    EXPECT_EQ(code, 0u) << "the dialog " << answer.title << " did not appear";
    return r;
}

TEST_F(Prompts, DialogsSaveWhatTheUserEntered) {
    WriteSetting(nullptr, "the default", 0, nullptr, ZR_ROOT "UserVariables\\answer");
    EXPECT_EQ(AnsweredRun(this, "Input Value", "Your name?", {"ZrInput", nullptr, nullptr, -1}), 1);
    EXPECT_EQ(Variable("answer"), "the default");  // OK with the default left in place
    EXPECT_EQ(AnsweredRun(this, "Input Value", "Your name?", {"ZrInput", "Ada", nullptr, -1}), 1);
    EXPECT_EQ(Variable("answer"), "Ada");
    EXPECT_EQ(AnsweredRun(this, "Choose from a List", "Pick one;alpha;beta;gamma", {"ZrList", nullptr, nullptr, 1}),
              1);
    EXPECT_EQ(Variable("answer"), "beta");

    std::string folder = LogIntoNewFolder("log.txt");
    WriteSetting(nullptr, "old secret", 0, nullptr, ZR_ROOT "UserVariables\\password");
    EXPECT_EQ(AnsweredRun(this, "Login Prompt", "", {"ZrLogin", "ada", "s3cret", -1}), 1);
    EXPECT_EQ(Variable("username"), "ada");
    EXPECT_EQ(Variable("login_username"), "ada");
    EXPECT_EQ(Variable("password"), "s3cret");
    EXPECT_EQ(Variable("login_password"), "s3cret");
    EXPECT_NE(ReadWholeFile(folder + "\\log.txt").find("\tSaving result to %username and %password: \"ada\", \"s3cret\"\r\n"),
              std::string::npos);
}

TEST_F(Prompts, AListWithATimeoutClosesItselfAndSavesNothing) {
    WriteSetting(nullptr, "before", 0, nullptr, ZR_ROOT "UserVariables\\answer");
    DWORD start = GetTickCount();
    EXPECT_EQ(Run("Choose from a List", "Pick;a;b", "ZrTimedList", "0.3"), 1);
    EXPECT_GE(GetTickCount() - start, 250u);
    EXPECT_EQ(Variable("answer"), "(none)");  // an empty result clears the variable
}

}  // namespace
