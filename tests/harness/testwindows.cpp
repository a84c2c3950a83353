// The harness's window maker: opens one framed, visible top-level window per
// title given, the last one in front, prints READY, and closes them when the
// stop file exists.
//
//   testwindows.exe STOPFILE TITLE...
#include <windows.h>
#include <stdio.h>

namespace {

const char* StopFile;

LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_TIMER && GetFileAttributesA(StopFile) != INVALID_FILE_ATTRIBUTES) PostQuitMessage(0);
    return DefWindowProcA(w, m, wp, lp);
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
    HWND last = nullptr;
    for (int i = 2; i < argc; i++) {
        last = CreateWindowExA(0, "ZantoTestWindow", argv[i], WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40 * i, 40 * i, 300,
                               200, nullptr, nullptr, wc.hInstance, nullptr);
        UpdateWindow(last);
    }
    SetForegroundWindow(last);
    SetTimer(last, 1, 50, nullptr);
    MSG msg;
    // Let the windows settle before saying so.
    DWORD until = GetTickCount() + 300;
    while (GetTickCount() < until) {
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
        Sleep(10);
    }
    printf("READY\n");
    fflush(stdout);
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) DispatchMessageA(&msg);
    return 0;
}
