// The handler of category 5 ("Menu"): items of another program's menus,
// its system menu, and a popup menu of the script's own.
#pragma once

#include <windows.h>

int ActMenu(int tab, int step);
// The command id of the item that `path` ("File;Save As", ampersands and a
// trailing "..." optional, a beginning is enough) names in the menu tree of
// `window` (or `menu`); `position` above 0 picks the item by running count.
// 0 for none.
UINT FindMenuCommand(HWND window, HMENU menu, int position, const char* path);
// The text of an item by position; empty for a separator.
void MenuItemText(HMENU menu, int position, char* out, int size);
// Opens the menu with Alt and the item's letter, then the letter of each
// further level. True once keys were sent.
bool SelectMenuByKeys(HWND window, const char* path);
// Maximize, minimize, restore, move, close, size; or an "&" letter. False
// when nothing could be done.
bool SelectSystemMenu(HWND window, const char* name);
// Shows the lines of `text` as a popup menu at the pointer; the number of
// the chosen line, or 0.
int ShowPopupMenu(const char* text);
