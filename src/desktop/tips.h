// Tool tips and tray balloons.
#pragma once

#include <windows.h>

enum {
    TIP_TRAY_BALLOON = 1,
    TIP_BALLOON = 2,
    TIP_PLAIN = 3,
    TIP_WINDOW = 4,  // tied to a window, for the program's lifetime
};

extern HWND TipWindow;      // the one tip of the tool tip and balloon modes
extern HWND StepTipWindow;  // the tip of mode 4

// Shows `text` as a tip; an empty text does nothing. A position inside the
// screen is used as it is; any other follows the pointer.
void ShowTip(HWND window, int mode, const char* text, const char* title, int timeoutMs, int x, int y,
             HFONT font = nullptr);
// iconId 0 removes the tray icon, -1 adds the information icon, any other
// value adds that icon resource.
void TrayIcon(HWND window, int iconId, const char* tip);
