// The status popup and the image popup.
#include "base/text.h"
#include "desktop/popups.h"

#include <commctrl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "desktop/picture.h"
#include "base/handles.h"

HWND PopupWindow;
char ImageCaption[64];
volatile LONG PopupWindows;

namespace {

enum {
    TIMER_POPUP_CLOSE = 0x3EA,
    IDC_POPUP_PROGRESS = 0x3EB,
};

// The progress bar follows the number among the five characters after the
// text's "%"-sign: 'Copying 45%' puts it at 45.
void SteerProgress(HWND window, const char* text) {
    HWND bar = GetDlgItem(window, IDC_POPUP_PROGRESS);
    if (!bar) {
        RECT r;
        GetClientRect(window, &r);
        bar = CreateWindowExA(0, PROGRESS_CLASSA, "", WS_CHILD | WS_VISIBLE, 10, r.bottom - 22, r.right - 20, 14,
                              window, (HMENU)(INT_PTR)IDC_POPUP_PROGRESS, nullptr, nullptr);
        SendMessageA(bar, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    }
    const char* percent = strchr(text, '%');
    if (!percent) return;
    const char* from = percent - 5 < text ? text : percent - 5;
    char number[8] = "";
    int n = 0;
    for (const char* p = from; p < percent && n < 7; p++)
        if (*p >= '0' && *p <= '9') number[n++] = *p;
    number[n] = 0;
    if (n) SendMessageA(bar, PBM_SETPOS, (WPARAM)atoi(number), 0);
}

LRESULT CALLBACK PopupProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(window, &ps);
        char text[1024] = "";
        GetWindowTextA(window, text, sizeof text);
        const bool progress = GetWindowLongPtrA(window, GWLP_USERDATA) != 0;
        if (progress) SteerProgress(window, text);
        RECT r;
        GetClientRect(window, &r);
        InflateRect(&r, -10, -5);
        if (progress) r.bottom -= 20;
        SetBkMode(dc, TRANSPARENT);
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        HGDIOBJ old = SelectObject(dc, GetStockObject(DEFAULT_GUI_FONT));
        DrawTextA(dc, text, -1, &r, DT_CENTER | DT_VCENTER | DT_WORDBREAK);
        SelectObject(dc, old);
        EndPaint(window, &ps);
        return 0;
    }
    case WM_TIMER:
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_KEYDOWN:
    case WM_CHAR:
        DestroyWindow(window);
        return 0;
    case WM_NCDESTROY:
        if (window == PopupWindow) PopupWindow = nullptr;
        InterlockedDecrement(&PopupWindows);
        break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

LRESULT CALLBACK ImageProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(window, &ps);
        char file[MAX_PATH] = "";
        GetWindowTextA(window, file, sizeof file);
        DrawPicture(dc, file, (int)GetWindowLongPtrA(window, GWLP_USERDATA), nullptr, 0, nullptr, 0, 0, 0, 0,
                    nullptr, nullptr, 0, nullptr);
        if (ImageCaption[0] == '>') {
            // ">x,y": a spot circled by an ellipse of 5 pixels' radius.
            int x = atoi(ImageCaption + 1);
            const char* comma = strchr(ImageCaption, ',');
            int y = comma ? atoi(comma + 1) : 0;
            HGDIOBJ oldBrush = SelectObject(dc, GetStockObject(HOLLOW_BRUSH));
            Ellipse(dc, x - 5, y - 5, x + 5, y + 5);
            SelectObject(dc, oldBrush);
        } else if (ImageCaption[0]) {
            SetBkMode(dc, TRANSPARENT);
            SetTextColor(dc, 0x996633);
            TextOutA(dc, 17, 45, ImageCaption, (int)strlen(ImageCaption));
        }
        EndPaint(window, &ps);
        return 0;
    }
    case WM_TIMER:
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
        DestroyWindow(window);
        return 0;
    case WM_NCDESTROY:
        InterlockedDecrement(&PopupWindows);
        break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

void RegisterOnce(const char* name, WNDPROC proc) {
    WNDCLASSA wc;
    if (GetClassInfoA(GetModuleHandleA(nullptr), name, &wc)) return;
    memset(&wc, 0, sizeof wc);
    wc.lpfnWndProc = proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
    wc.lpszClassName = name;
    RegisterClassA(&wc);
}

}  // namespace

void ShowPopup(int topMost, int progress, int timeoutMs, int x, int y, int width, int height, const char* format,
               ...) {
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN), screenHeight = GetSystemMetrics(SM_CYSCREEN);
    if (width < 1) width = screenWidth / 3 > 400 ? 400 : screenWidth / 3;
    if (height < 1) height = screenHeight / 10 > 150 ? 150 : screenHeight / 10;
    std::string text(format && strlen(format) >= 1024 ? strlen(format) + 1024 : 1024, '\0');
    va_list args;
    va_start(args, format);
    if (format) vsnprintf(&text[0], text.size(), format, args);
    va_end(args);
    text.resize(strlen(text.c_str()));
    if (text.size() > 1023) text.resize(1023);

    if (PopupWindow && topMost && !(GetWindowLongA(PopupWindow, GWL_EXSTYLE) & WS_EX_TOPMOST)) PopupWindow = nullptr;
    if (!PopupWindow || !IsWindow(PopupWindow)) {
        RegisterOnce("ZantoPopup", PopupProc);
        if (x < 1) x = (screenWidth - width) / 2;
        if (y < 1) y = (screenHeight - height) / 2;
        PopupWindow = CreateWindowExA(topMost ? WS_EX_TOPMOST : 0, "ZantoPopup", "", 0x90400000, x, y, width, height,
                                      nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
        if (!PopupWindow) return;
        InterlockedIncrement(&PopupWindows);
        SetWindowLongPtrA(PopupWindow, GWLP_USERDATA, progress);
        ShowWindow(PopupWindow, SW_SHOWNOACTIVATE);
    }
    SetWindowTextA(PopupWindow, text.c_str());
    InvalidateRect(PopupWindow, nullptr, TRUE);
    UpdateWindow(PopupWindow);
    BringWindowToTop(PopupWindow);
    if (timeoutMs > 0) SetTimer(PopupWindow, TIMER_POPUP_CLOSE, (UINT)timeoutMs, nullptr);
}

int ShowImagePopup(const char* file, int resourceId, int timeoutMs, DWORD style, const char* caption) {
    const bool named = file && *file;
    if (named && GetFileAttributesA(file) == INVALID_FILE_ATTRIBUTES && lstrcmpiA(file, "JPG") != 0 &&
        lstrcmpiA(file, "JPEG") != 0)
        return 0;
    if (!named && !resourceId) return 0;
    RegisterOnce("ZantoPopupImage", ImageProc);
    RECT size = {};
    if (!DrawPicture(nullptr, named ? file : nullptr, resourceId, nullptr, 0, nullptr, 0, 0, 0, 0, nullptr, nullptr,
                     0, &size))
        return 0;
    int width = size.right - size.left, height = size.bottom - size.top;
    if (style & WS_BORDER) {
        width += 2;
        height += 2;
    }
    if (style & WS_DLGFRAME) {
        width += 2 * GetSystemMetrics(SM_CXDLGFRAME);
        height += 2 * GetSystemMetrics(SM_CYDLGFRAME);
    }
    CopyIntoN(ImageCaption, sizeof ImageCaption, caption ? caption : "");
    HWND window = CreateWindowExA(WS_EX_TOPMOST, "ZantoPopupImage", named ? file : "", style | 0x90000000,
                                  (GetSystemMetrics(SM_CXSCREEN) - width) / 2,
                                  (GetSystemMetrics(SM_CYSCREEN) - height) / 2, width, height, nullptr, nullptr,
                                  GetModuleHandleA(nullptr), nullptr);
    if (!window) return 0;
    InterlockedIncrement(&PopupWindows);
    SetWindowLongPtrA(window, GWLP_USERDATA, resourceId);
    if (timeoutMs > 0) SetTimer(window, 1, (UINT)timeoutMs, nullptr);
    UpdateWindow(window);
    return 1;
}

void ServeThreadWindows() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {  // Unicode, as the main loop
        if (msg.message == WM_QUIT) break;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}
