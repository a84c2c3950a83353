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

// Types "é東😀" as the keyboard would (Unicode key events), waits until
// the edit holds it, and presses OK.
DWORD WINAPI TypeAndPress(LPVOID) {
    for (int i = 0; i < 200; i++) {
        HWND window = FindWindowA("ZantoRunnerInput", "ZrInput");
        if (window && IsWindowVisible(window) && GetForegroundWindow() == window) {
            const wchar_t units[] = L"\u00E9\u6771\U0001F600";
            for (const wchar_t* u = units; *u; u++) {
                INPUT input[2] = {};
                for (INPUT& k : input) {
                    k.type = INPUT_KEYBOARD;
                    k.ki.wScan = *u;
                    k.ki.dwFlags = KEYEVENTF_UNICODE;
                }
                input[1].ki.dwFlags |= KEYEVENTF_KEYUP;
                SendInput(2, input, sizeof *input);
            }
            wchar_t got[16] = {};
            for (int k = 0; k < 200 && lstrlenW(got) < 4; k++) {
                GetDlgItemTextW(window, 100, got, 16);
                Sleep(10);
            }
            PostMessageA(window, WM_COMMAND, IDOK, 0);
            return 0;
        }
        Sleep(10);
    }
    return 1;
}

}  // namespace

// A user types characters of any language into the input window: its
// message loop takes them as Unicode, so none turns into "?".
TEST(InputBox, TypedCharactersOfAnyLanguageComeBackWhole) {
    std::string text;
    HANDLE thread = CreateThread(nullptr, 0, TypeAndPress, nullptr, 0, nullptr);
    EXPECT_EQ(InputBox(nullptr, "ZrInput", "Name:", text, false), 1);
    WaitForSingleObject(thread, 5000);
    CloseHandle(thread);
    EXPECT_EQ(text, "\xC3\xA9\xE6\x9D\xB1\xF0\x9F\x98\x80");
}
