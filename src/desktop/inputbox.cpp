// The input window runs its own message loop, with IsDialogMessage so that
// Tab moves between the controls and Enter and Escape press the buttons.
#include "desktop/inputbox.h"

#include <vector>

namespace {

enum { ID_EDIT = 100 };

struct InputState {
    bool done = false;
    int result = 0;
    std::string text;
};

LRESULT CALLBACK InputProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    InputState* state = (InputState*)GetWindowLongPtrA(window, GWLP_USERDATA);
    if (message == WM_COMMAND && state && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
        if (LOWORD(wParam) == IDOK) {
            HWND edit = GetDlgItem(window, ID_EDIT);
            std::vector<char> text((size_t)GetWindowTextLengthA(edit) + 1);
            GetWindowTextA(edit, text.data(), (int)text.size());
            state->text = text.data();
            state->result = 1;
        }
        state->done = true;
        return 0;
    }
    if (message == WM_CLOSE && state) {
        state->done = true;
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

int InputBox(HWND owner, const char* title, const char* prompt, std::string& text, bool closeOnly) {
    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA wc;
    if (!GetClassInfoA(instance, "ZantoRunnerInput", &wc)) {
        ZeroMemory(&wc, sizeof wc);
        wc.lpfnWndProc = InputProc;
        wc.hInstance = instance;
        wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
        wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
        wc.lpszClassName = "ZantoRunnerInput";
        RegisterClassA(&wc);
    }
    const int width = 360, height = 150;
    HWND window = CreateWindowExA(WS_EX_DLGMODALFRAME, "ZantoRunnerInput", title ? title : "",
                                  WS_POPUP | WS_CAPTION | WS_SYSMENU,
                                  (GetSystemMetrics(SM_CXSCREEN) - width) / 2,
                                  (GetSystemMetrics(SM_CYSCREEN) - height) / 2, width, height, owner, nullptr,
                                  instance, nullptr);
    if (!window) return 0;
    InputState state;
    SetWindowLongPtrA(window, GWLP_USERDATA, (LONG_PTR)&state);
    HFONT font = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
    HWND controls[] = {
        CreateWindowExA(0, "STATIC", prompt ? prompt : "", WS_CHILD | WS_VISIBLE, 10, 10, 330, 20, window, nullptr,
                        instance, nullptr),
        CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", text.c_str(), WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL,
                        10, 35, 330, 22, window, (HMENU)(INT_PTR)ID_EDIT, instance, nullptr),
        CreateWindowExA(0, "BUTTON", closeOnly ? "&Close" : "&OK", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON,
                        closeOnly ? 260 : 180, 75, 80, 25, window, (HMENU)(INT_PTR)(closeOnly ? IDCANCEL : IDOK),
                        instance, nullptr),
        closeOnly ? nullptr
                  : CreateWindowExA(0, "BUTTON", "&Cancel", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 260, 75, 80, 25,
                                    window, (HMENU)(INT_PTR)IDCANCEL, instance, nullptr),
    };
    for (HWND c : controls)
        if (c) SendMessageA(c, WM_SETFONT, (WPARAM)font, TRUE);
    if (owner) EnableWindow(owner, FALSE);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    SetFocus(controls[1]);
    SendMessageA(controls[1], EM_SETSEL, 0, -1);
    MSG msg;
    // A Unicode loop: an ANSI one would take typed characters through the
    // keyboard's legacy code page, and "東" would arrive as "?".
    while (!state.done && GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (IsDialogMessageW(window, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    if (owner) EnableWindow(owner, TRUE);
    DestroyWindow(window);
    if (state.result) text = state.text;
    return state.result;
}
