// The handler of category 6 ("Mouse"): pointer moves to points, windows,
// controls and images, buttons, the wheel, and a saved position.
#pragma once

#include <windows.h>

int ActMouse(int tab, int step);
// Moves the pointer to the window's centre (mode 2) or top-left corner (any
// other mode), gliding in 20 moves when `glide` is set. A null or dead window
// does nothing.
void MoveMouseToWindow(HWND window, int mode, int glide);
