// The window of a palette that holds a header and a control (Output,
// Variables): a child of the main window, in the dialog face's colour, whose
// controls Tab and the dialog keys reach.
#pragma once

#include <windows.h>

// Registers the class once and makes the (hidden) palette.
HWND CreatePaletteWindow(HWND parent, const char* className, WNDPROC proc);
