// The main window of class "ZantoRunner".
#pragma once

#include <windows.h>

#define ZR_VERSION "1.0"

// Registers the window class; returns 0 on failure.
int RegisterMainWindowClass(HINSTANCE instance);
LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
