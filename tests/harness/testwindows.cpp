// The harness's window maker: opens one framed, visible top-level window per
// title given, each filled by a multi-line edit control, the last one in front
// with the keyboard focus in its edit; prints READY; when the stop file
// exists, prints "TEXT\ttitle\ttext" for each window (text with \r, \n, \t
// and \\ escaped) and closes them. A title given as "hung:TITLE" opens a
// framed window of that title on a thread of its own that then stops taking
// messages (it sleeps until the stop file exists): a hung program. It runs
// in UTF-8 (utf8.manifest): titles and texts are UTF-8 both ways.
//
//   testwindows.exe STOPFILE TITLE...
#include <windows.h>
#include <stdio.h>
#include <string.h>

namespace {

const char* StopFile;

HANDLE HungReady;

bool Stopped() { return GetFileAttributesA(StopFile) != INVALID_FILE_ATTRIBUTES; }

// As in Notepad, the frame hands the keyboard focus on to its edit.
LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_SETFOCUS) {
        if (HWND edit = GetWindow(w, GW_CHILD)) SetFocus(edit);
        return 0;
    }
    return DefWindowProcA(w, m, wp, lp);
}

// A window whose thread takes its first messages, then never again.
DWORD WINAPI HungWindow(LPVOID title) {
    HWND w = CreateWindowExA(0, "ZantoTestWindow", (const char*)title, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 300,
                             200, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    MSG msg;
    DWORD until = GetTickCount() + 300;
    while (GetTickCount() < until) {
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
        Sleep(10);
    }
    SetEvent(HungReady);
    while (!Stopped()) Sleep(50);
    DestroyWindow(w);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    StopFile = argv[1];
    WNDCLASSA wc = {};
    wc.lpfnWndProc = Proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZantoTestWindow";
    wc.hbrBackground = (HBRUSH)(COLOR_WINDOW + 1);
    RegisterClassA(&wc);
    HWND last = nullptr, lastEdit = nullptr;
    HWND edits[64] = {};
    HANDLE hung[64] = {};
    int hungCount = 0;
    HungReady = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    for (int i = 2; i < argc && i < 66; i++) {
        if (strncmp(argv[i], "hung:", 5) == 0) {
            hung[hungCount++] = CreateThread(nullptr, 0, HungWindow, argv[i] + 5, 0, nullptr);
            WaitForSingleObject(HungReady, 10000);
            continue;
        }
        last = CreateWindowExA(0, "ZantoTestWindow", argv[i], WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40 * i, 40 * i, 300,
                               200, nullptr, nullptr, wc.hInstance, nullptr);
        RECT client;
        GetClientRect(last, &client);
        lastEdit = edits[i - 2] =
            // A Unicode edit: typed characters reach it whole (an ANSI one
            // would get them in the keyboard's legacy code page).
            CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN, 0, 0,
                            client.right, client.bottom, last, nullptr, wc.hInstance, nullptr);
        UpdateWindow(last);
    }
    SetForegroundWindow(last);
    SetFocus(lastEdit);
    MSG msg;
    // Let the windows settle before saying so.
    DWORD until = GetTickCount() + 300;
    while (GetTickCount() < until) {
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        Sleep(10);
    }
    printf("READY\n");
    fflush(stdout);
    // The windows may be closed by the script under test: the stop file,
    // not any window, ends the loop.
    while (!Stopped()) {
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
    }
    WaitForMultipleObjects((DWORD)hungCount, hung, TRUE, 10000);
    for (int i = 2; i < argc && i < 66; i++) {
        if (!edits[i - 2]) continue;
        static wchar_t wide[65536];
        static char text[65536 * 3];
        GetWindowTextW(edits[i - 2], wide, 65536);
        WideCharToMultiByte(CP_UTF8, 0, wide, -1, text, sizeof text, nullptr, nullptr);
        printf("TEXT\t%s\t", argv[i]);
        for (const char* p = text; *p; p++) {
            if (*p == '\r') printf("\\r");
            else if (*p == '\n') printf("\\n");
            else if (*p == '\t') printf("\\t");
            else if (*p == '\\') printf("\\\\");
            else putchar(*p);
        }
        printf("\n");
    }
    fflush(stdout);
    return 0;
}
