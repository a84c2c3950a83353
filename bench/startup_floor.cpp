// The start-up benchmark's second yardstick: the least any program does that
// starts as ours must (COM, the common controls, one hidden top-level
// window of its own class, torn down again) and then returns. Under Wine the
// first window loads the display driver and opens the X connection, which
// costs more than all of an empty program: this shows how much of a hidden
// run's start is that floor and how much is ours.
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    CoInitialize(nullptr);
    InitCommonControls();
    INITCOMMONCONTROLSEX controls = {sizeof controls, 0x5AF};
    InitCommonControlsEx(&controls);
    WNDCLASSEXA wc = {};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.lpszClassName = "ZantoStartupFloor";
    RegisterClassExA(&wc);
    HWND window = CreateWindowExA(0, wc.lpszClassName, "", 0x02CF0000, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                  CW_USEDEFAULT, nullptr, nullptr, instance, nullptr);
    DestroyWindow(window);
    CoUninitialize();
    return 0;
}
