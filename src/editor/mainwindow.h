// The main window of class "ZantoRunner".
#pragma once

#include <windows.h>

#define ZR_VERSION "1.0"

// Registers the window class; returns 0 on failure.
int RegisterMainWindowClass(HINSTANCE instance);
LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Places the status bar, the palettes and the step list in the client area.
void LayOutMainWindow(HWND window);
// Carries the settings that the editor holds in its windows (the step
// list's look, the indent, the Output font, Keep on Top) into them, after
// the Options sheet stored them.
void ReapplySettings(HWND window);
// False for the keys that a focused text field keeps for itself (Delete,
// arrows, Ctrl+C and the like), which must not become editor commands.
bool AcceleratorApplies(const MSG& msg);
