// The "System Variables" menu of the properties palette.
#pragma once

#include <windows.h>

#include <string>

// Shows the grouped menu at (x, y); the chosen text to insert, or "".
std::string ChooseSystemVariable(HWND owner, int x, int y);
