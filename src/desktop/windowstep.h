// The handler of category 3 ("Windows/Controls").
#pragma once

#include <windows.h>

int ActWindow(int tab, int step);
// The editor's dump commands: write "windows.txt" afresh and open it.
void ShowWindowDump(HWND mainWindow, int dumpFlags);
