// What the editor's tests share: the real main window made as the program
// makes it, its messages pumped, and waits on conditions.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <string.h>

#include <string>

#include "base/ui.h"
#include "editor/mainwindow.h"
#include "editor/steplist.h"
#include "run/runstate.h"
#include "script/step.h"

inline void Pump() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

// Pumps until `done` holds or `ms` have passed; whether it held.
template <typename Test>
bool PumpUntil(Test done, DWORD ms = 10000) {
    const DWORD start = GetTickCount();
    while (!done()) {
        if (GetTickCount() - start > ms) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        Pump();
    }
    return true;
}

// A mouse event at a point of the screen, the point carried by the event
// itself: under Xvfb a press right after a move alone can land where the
// pointer was before, though GetCursorPos already says the new place.
inline void MouseAt(POINT at, DWORD buttons) {
    SetCursorPos(at.x, at.y);
    const DWORD x = (DWORD)(at.x * 65535 / (GetSystemMetrics(SM_CXSCREEN) - 1));
    const DWORD y = (DWORD)(at.y * 65535 / (GetSystemMetrics(SM_CYSCREEN) - 1));
    mouse_event(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | buttons, x, y, 0, 0);
}

// The editor's window, made as the program makes it, and destroyed without
// the questions of a close.
struct Editor {
    HWND window = nullptr;
    explicit Editor(int width = 1000, int height = 700) {
        LaunchFlags = 0;
        static bool registered = RegisterMainWindowClass(GetModuleHandleA(nullptr)) != 0;
        (void)registered;
        ResetTab(0);
        window = CreateWindowExA(0, "ZantoRunner", "ZantoRunner", WS_OVERLAPPEDWINDOW, 0, 0, width, height, nullptr,
                                 nullptr, GetModuleHandleA(nullptr), nullptr);
        ShowWindow(window, SW_SHOW);
        RefreshTabStrip();
        ShowTab(0);
        Pump();
    }
    ~Editor() {
        // A run still going is stopped first: the next test's editor is new.
        if (RunThread) {
            SendMessageA(window, WM_COMMAND, (WPARAM)CMD_STOP, 0);
            PumpUntil([] { return RunThread == nullptr; }, 10000);
        }
        if (IsWindow(window)) DestroyWindow(window);
        Pump();
    }
    void Command(int id) {
        SendMessageA(window, WM_COMMAND, (WPARAM)id, 0);
        Pump();
    }
    // A key as the program's message loop takes it: the accelerators first,
    // then the window that has the focus.
    bool Key(UINT vk, bool control = false, bool shift = false);
};

// A key pressed into the editor: the keyboard state holds the modifiers
// while the message goes through the accelerator table and the focused
// window, as in the program's own loop. Whether an accelerator took it.
inline bool Editor::Key(UINT vk, bool control, bool shift) {
    static HACCEL accelerators = LoadAcceleratorsA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(1023));
    BYTE keys[256];
    GetKeyboardState(keys);
    BYTE saved[256];
    memcpy(saved, keys, sizeof saved);
    keys[VK_CONTROL] = control ? 0x80 : 0;
    keys[VK_SHIFT] = shift ? 0x80 : 0;
    SetKeyboardState(keys);
    HWND focus = GetFocus();
    MSG msg = {focus ? focus : window, WM_KEYDOWN, vk, 1, GetTickCount(), {}};
    bool taken = false;
    if (AcceleratorApplies(msg) && TranslateAcceleratorA(window, accelerators, &msg)) {
        taken = true;
    } else if (!IsDialogMessageA(window, &msg)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    MSG up = msg;
    up.message = WM_KEYUP;
    up.lParam = (LPARAM)0xC0000001;
    DispatchMessageA(&up);
    SetKeyboardState(saved);
    Pump();
    return taken;
}

inline std::string WindowText(HWND window) {
    char text[512] = "";
    GetWindowTextA(window, text, sizeof text);
    return text;
}

// The label of an item of the actions tree.
inline std::string TreeItemLabel(HTREEITEM item) {
    char text[128] = "";
    TVITEMA tv = {};
    tv.mask = TVIF_TEXT;
    tv.hItem = item;
    tv.pszText = text;
    tv.cchTextMax = sizeof text;
    SendMessageA(ActionsTree, TVM_GETITEMA, 0, (LPARAM)&tv);
    return text;
}

// The tree item of an action, found depth first by its label.
inline HTREEITEM TreeItem(HTREEITEM from, const char* label) {
    for (HTREEITEM item = from; item; item = TreeView_GetNextSibling(ActionsTree, item)) {
        if (TreeItemLabel(item) == label) return item;
        if (HTREEITEM inner = TreeItem(TreeView_GetChild(ActionsTree, item), label)) return inner;
    }
    return nullptr;
}
