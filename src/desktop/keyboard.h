// The handler of category 4 ("Keyboard"): typing, buffered typing, text via
// the clipboard, direct window entry, and blocking of user input.
#pragma once

#include <windows.h>

int ActKeyboard(int tab, int step);
