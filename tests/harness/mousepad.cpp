// A window for the mouse and image scenarios: "Mouse Pad", always on top at
// a fixed place (screen 300,300, 400 x 300), counting what reaches it and
// showing the counts in its first static control, so that a scenario reads
// them with "Get Text" or after the run (window-text):
//
//   "down 1 up 1 dbl 0 right 0 wheel +0 -0 drag 0 cmd 0 A 0 B 0"
//
// "drag" counts left-button releases more than 20 pixels from their press;
// "cmd" counts WM_COMMAND 4242 (a posted command); "A" and "B" count left
// presses on the two marks it paints: at client 40,100 and 140,100, each
// 20 x 20, a ring of blue with a yellow pixel in its top row, filled green
// (A) or red (B). tests/scenario/images holds their pictures: the red one
// as it is, and one whose inside is the mask colour (magenta), which finds A
// first. Below them, check box 201 "Ticked" is checked, 202 "Blank" is not.
#include <windows.h>
#include <stdio.h>

namespace {

HWND Counts;
int Down, Up, Double, Right, WheelUp, WheelDown, Drags, Commands, HitA, HitB;
POINT Pressed;

const int kMarkY = 100, kMarkAX = 40, kMarkBX = 140, kMark = 20;

void Show() {
    char text[160];
    snprintf(text, sizeof text, "down %d up %d dbl %d right %d wheel +%d -%d drag %d cmd %d A %d B %d", Down, Up,
             Double, Right, WheelUp, WheelDown, Drags, Commands, HitA, HitB);
    SetWindowTextA(Counts, text);
}

void PaintMark(HDC dc, int left, COLORREF inside) {
    for (int y = 0; y < kMark; y++)
        for (int x = 0; x < kMark; x++) {
            bool ring = x < 3 || y < 3 || x >= kMark - 3 || y >= kMark - 3;
            COLORREF c = ring ? RGB(0, 0, 255) : inside;
            if (y == 0 && x == 1) c = RGB(255, 255, 0);
            SetPixel(dc, left + x, kMarkY + y, c);
        }
}

bool Inside(int x, int y, int left) { return x >= left && x < left + kMark && y >= kMarkY && y < kMarkY + kMark; }

LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    const int x = (short)LOWORD(lp), y = (short)HIWORD(lp);
    switch (m) {
    case WM_PAINT: {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(w, &ps);
        PaintMark(dc, kMarkAX, RGB(0, 160, 0));
        PaintMark(dc, kMarkBX, RGB(255, 0, 0));
        EndPaint(w, &ps);
        return 0;
    }
    case WM_LBUTTONDOWN:
        Down++;
        Pressed = {x, y};
        if (Inside(x, y, kMarkAX)) HitA++;
        if (Inside(x, y, kMarkBX)) HitB++;
        Show();
        return 0;
    case WM_LBUTTONUP:
        Up++;
        if (abs(x - Pressed.x) > 20 || abs(y - Pressed.y) > 20) Drags++;
        Show();
        return 0;
    case WM_LBUTTONDBLCLK:
        Double++;
        Show();
        return 0;
    case WM_RBUTTONUP:
        Right++;
        Show();
        return 0;
    case WM_MOUSEWHEEL:
        if ((short)HIWORD(wp) > 0) WheelUp++;
        else WheelDown++;
        Show();
        return 0;
    case WM_COMMAND:
        if (LOWORD(wp) == 4242) {
            Commands++;
            Show();
        }
        return 0;
    case WM_DESTROY: PostQuitMessage(0); return 0;
    }
    return DefWindowProcA(w, m, wp, lp);
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    WNDCLASSA wc = {};
    wc.style = CS_DBLCLKS;
    wc.lpfnWndProc = Proc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
    wc.lpszClassName = "ZantoMousePad";
    RegisterClassA(&wc);
    HWND pad = CreateWindowExA(WS_EX_TOPMOST, "ZantoMousePad", "Mouse Pad", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 300,
                               400, 300, nullptr, nullptr, instance, nullptr);
    Counts = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 10, 10, 380, 20, pad, (HMENU)200, instance,
                             nullptr);
    HWND ticked = CreateWindowExA(0, "BUTTON", "Ticked", WS_CHILD | WS_VISIBLE | BS_AUTOCHECKBOX, 10, 40, 100, 20,
                                  pad, (HMENU)201, instance, nullptr);
    CreateWindowExA(0, "BUTTON", "Blank", WS_CHILD | WS_VISIBLE | BS_AUTOCHECKBOX, 120, 40, 100, 20, pad, (HMENU)202,
                    instance, nullptr);
    SendMessageA(ticked, BM_SETCHECK, BST_CHECKED, 0);
    Show();
    SetForegroundWindow(pad);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return 0;
}
