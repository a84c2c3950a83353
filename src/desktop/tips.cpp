// Tips: a tray balloon where the shell has balloons (version 5 on), else a
// tracking tool tip window of our own.
#include "base/text.h"
#include "desktop/tips.h"

#include <commctrl.h>
#include <shellapi.h>
#include <shlwapi.h>
#include <string.h>

#include "desktop/popups.h"

HWND TipWindow;
HWND StepTipWindow;

namespace {

enum {
    TRAY_ICON_ID = 0x812C,
    TRAY_CALLBACK = 0x83EA,
    TIMER_TIP_CLOSE = 0x812D,
    TIP_TOOL_ID = 0x8001,
};

// The shell's major version times 100 plus its minor version.
int ShellVersion() {
    HMODULE shell = GetModuleHandleA("shell32.dll");
    if (!shell) shell = LoadLibraryA("shell32.dll");
    typedef HRESULT(CALLBACK * GetVersionProc)(DLLVERSIONINFO*);
    auto get = shell ? (GetVersionProc)(void*)GetProcAddress(shell, "DllGetVersion") : nullptr;
    DLLVERSIONINFO info = {sizeof info};
    if (!get || FAILED(get(&info))) return 400;
    return (int)(info.dwMajorVersion * 100 + info.dwMinorVersion);
}

WNDPROC TipDefaultProc;

LRESULT CALLBACK TipProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == TIMER_TIP_CLOSE) {
        DestroyWindow(window);
        return 0;
    }
    if (message == WM_NCDESTROY) {
        if (window == TipWindow) TipWindow = nullptr;
        InterlockedDecrement(&PopupWindows);
    }
    return CallWindowProcA(TipDefaultProc, window, message, wParam, lParam);
}

bool OwnProcessWindow(HWND window) {
    DWORD process = 0;
    return window && GetWindowThreadProcessId(window, &process) && process == GetCurrentProcessId();
}

}  // namespace

void TrayIcon(HWND window, int iconId, const char* tip) {
    NOTIFYICONDATAA data = {};
    data.cbSize = sizeof data;
    data.hWnd = window;
    data.uID = TRAY_ICON_ID;
    if (!iconId) {
        Shell_NotifyIconA(NIM_DELETE, &data);
        return;
    }
    data.uFlags = NIF_ICON | NIF_TIP | NIF_MESSAGE;
    data.uCallbackMessage = TRAY_CALLBACK;
    data.hIcon = iconId == -1 ? LoadIconA(nullptr, (LPCSTR)IDI_INFORMATION)
                              : LoadIconA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(iconId));
    CopyIntoN(data.szTip, sizeof data.szTip, tip ? tip : "");
    if (!Shell_NotifyIconA(NIM_MODIFY, &data)) Shell_NotifyIconA(NIM_ADD, &data);
}

void ShowTip(HWND window, int mode, const char* text, const char* title, int timeoutMs, int x, int y, HFONT font) {
    if (!text || !*text) return;
    HWND owner = window ? window : GetDesktopWindow();
    const bool balloons = ShellVersion() >= 500;
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN), screenHeight = GetSystemMetrics(SM_CYSCREEN);

    if (mode == TIP_TRAY_BALLOON && balloons) {
        NOTIFYICONDATAA data = {};
        data.cbSize = sizeof data;
        data.hWnd = window;
        data.uID = TRAY_ICON_ID;
        data.uFlags = NIF_INFO | NIF_MESSAGE;
        data.uCallbackMessage = TRAY_CALLBACK;
        data.dwInfoFlags = NIIF_INFO;
        data.uTimeout = (UINT)(timeoutMs < 10000 ? 10000 : timeoutMs > 30000 ? 30000 : timeoutMs);
        CopyIntoN(data.szInfoTitle, sizeof data.szInfoTitle, title ? title : "");
        CopyIntoN(data.szInfo, sizeof data.szInfo, text);
        Shell_NotifyIconA(NIM_MODIFY, &data);
        return;
    }
    if (mode == TIP_WINDOW && (!window || StepTipWindow)) return;
    DWORD style = mode == TIP_BALLOON && balloons ? 0x80000043 : 0x80000003;
    if (mode != TIP_WINDOW && TipWindow) DestroyWindow(TipWindow);
    HWND tip = CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, style, CW_USEDEFAULT, CW_USEDEFAULT,
                               CW_USEDEFAULT, CW_USEDEFAULT, owner, nullptr, GetModuleHandleA(nullptr), nullptr);
    if (!tip) return;
    if (mode == TIP_WINDOW) {
        StepTipWindow = tip;
    } else {
        TipWindow = tip;
        InterlockedIncrement(&PopupWindows);
        TipDefaultProc = (WNDPROC)SetWindowLongPtrA(tip, GWLP_WNDPROC, (LONG_PTR)TipProc);
    }
    SetWindowPos(tip, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    SendMessageA(tip, TTM_SETMAXTIPWIDTH, 0, 400);
    SendMessageA(tip, WM_SETFONT, (WPARAM)(font ? font : GetStockObject(DEFAULT_GUI_FONT)), TRUE);
    if (title && *title) SendMessageA(tip, TTM_SETTITLEA, TTI_INFO, (LPARAM)title);

    const bool onScreen = x >= 0 && y >= 0 && x < screenWidth && y < screenHeight;
    TOOLINFOA tool = {};
    tool.cbSize = TTTOOLINFOA_V2_SIZE;
    tool.hwnd = owner;
    tool.lpszText = (LPSTR)text;
    if (mode == TIP_WINDOW) {
        // The tip follows the pointer over the window by watching its
        // messages, which only a window of this process can lend: one of
        // another process (the desktop is one) gets a tip that is never
        // shown, rather than a window procedure it cannot call.
        tool.uFlags = TTF_IDISHWND | (OwnProcessWindow(window) ? TTF_SUBCLASS : 0);
        tool.uId = (UINT_PTR)window;
    } else {
        // A tracking tool is placed by us and needs no window to watch; the
        // owner here is often the desktop, a window of another process.
        tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
        tool.uId = TIP_TOOL_ID;
    }
    SendMessageA(tip, TTM_ADDTOOLA, 0, (LPARAM)&tool);
    if (mode != TIP_WINDOW && timeoutMs > 0) SetTimer(tip, TIMER_TIP_CLOSE, (UINT)timeoutMs, nullptr);

    POINT at = {x, y};
    if (mode == TIP_TRAY_BALLOON) {
        at = {screenWidth - 10, screenHeight - 10};
    } else if (!onScreen) {
        GetCursorPos(&at);
    }
    SendMessageA(tip, TTM_TRACKPOSITION, 0, MAKELPARAM(at.x, at.y));
    SendMessageA(tip, TTM_TRACKACTIVATE, TRUE, (LPARAM)&tool);
}
