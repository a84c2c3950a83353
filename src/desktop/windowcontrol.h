// Acting on a found window: activating it against the foreground rules,
// pressing a control, closing by rising force.
#pragma once

#include <windows.h>

enum {
    KIND_OTHER = 0,
    KIND_LABEL = 1,      // "Static", or a group box
    KIND_EDIT = 2,
    KIND_COMBOBOX = 3,
    KIND_AUTORADIO = 4,  // a button with (style & 9) == 9
    KIND_AUTOCHECK = 5,  // a button with (style & 3) == 3
    KIND_BUTTON = 6,
    KIND_LISTBOX = 7,
    KIND_SCROLLBAR = 8,
    KIND_MULTILINE_EDIT = 9,
};

int ControlKind(HWND window);
// The next tab stop after a label, or the window itself.
HWND SkipStaticControl(HWND window);
// Activates a window even when the system's foreground rules would refuse.
void ForceForeground(HWND window);
// Moves the pointer to a control and presses it; returns the control pressed.
HWND PressControl(HWND window);
// The smallest visible sibling under a screen point (finds a control inside a
// group box).
HWND SmallestWindowAtPoint(POINT point);
// WM_CLOSE, then the process's end, a posted close, DestroyWindow and Alt+F4,
// each only while the window is still there. Always true.
int CloseWindowForcibly(HWND window, int timeoutMs);
