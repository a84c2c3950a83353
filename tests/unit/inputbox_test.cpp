// The input window: OK returns what was typed, Cancel keeps the text.
#include <gtest/gtest.h>

#include <string>

#include "desktop/inputbox.h"

namespace {

struct Answer {
    const char* typed;
    int button;
};

DWORD WINAPI Press(LPVOID parameter) {
    const Answer* a = (const Answer*)parameter;
    for (int i = 0; i < 200; i++) {
        HWND window = FindWindowA("ZantoRunnerInput", "ZrInput");
        if (window && IsWindowVisible(window)) {
            if (a->typed) SetDlgItemTextA(window, 100, a->typed);
            PostMessageA(window, WM_COMMAND, (WPARAM)a->button, 0);
            return 0;
        }
        Sleep(10);
    }
    return 1;
}

int Ask(Answer answer, std::string& text, bool closeOnly = false) {
    HANDLE thread = CreateThread(nullptr, 0, Press, &answer, 0, nullptr);
    int r = InputBox(nullptr, "ZrInput", "Name:", text, closeOnly);
    WaitForSingleObject(thread, 5000);
    DWORD code = 9;
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    EXPECT_EQ(code, 0u);
    return r;
}

TEST(InputBox, OkReturnsTheTextAndCancelKeepsTheOld) {
    std::string text = "old";
    EXPECT_EQ(Ask({"new name", IDOK}, text), 1);
    EXPECT_EQ(text, "new name");
    EXPECT_EQ(Ask({"ignored", IDCANCEL}, text), 0);
    EXPECT_EQ(text, "new name");
    EXPECT_EQ(Ask({nullptr, IDCANCEL}, text, true), 0);  // "&Close" alone
}

}  // namespace
