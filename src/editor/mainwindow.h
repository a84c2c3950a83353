// The main window of class "ZantoRunner".
#pragma once

#include <windows.h>

#define ZR_VERSION "1.0"

// Registers the window class; returns 0 on failure.
int RegisterMainWindowClass(HINSTANCE instance);
LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Places the status bar, the palettes and the step list in the client area.
void LayOutMainWindow(HWND window);
// False for the keys that a focused text field keeps for itself (Delete,
// arrows, Ctrl+C and the like), which must not become editor commands.
bool AcceleratorApplies(const MSG& msg);
