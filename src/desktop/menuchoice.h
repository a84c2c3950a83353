// What a click or a key does to a window's menu, read from the menu itself
// while it is open: for the recorder, which writes a chosen item as the path
// "Select Menu Item" takes ("File;Save As") instead of a point or letters.
//
// Everything here reads menu state only (GetMenu, GetMenuState,
// MenuItemFromPoint, GetMenuItemRect) and sends no message, so the low-level
// hooks may call it while they hold the user's input back.
#pragma once

#include <windows.h>

#include <stddef.h>

enum {
    MENU_UNREAD = 0,   // no readable menu took it (another process's menu under Wine, a context menu, no menu)
    MENU_MOVE = 1,     // a readable menu took it without choosing: opened a level, moved, closed
    MENU_CHOSEN = 2,   // an item was chosen; its path is in the out text
};

// Where keyboard navigation of one window's menu stands between two keys:
// the level a letter opened, in case its popup is not on the screen yet
// when the next key comes.
struct MenuKeyState {
    HWND top;
    HMENU open;       // the menu the next letter chooses in; null when none is known open
    char path[260];   // the path to `open`, levels joined by ";"
};

// A key `vk` pressed in `top`, with Alt or Ctrl held or not: what it does to
// the menu of `top`. `state` carries the level the previous key opened.
int MenuKey(HWND top, int vk, bool alt, bool ctrl, MenuKeyState* state, char* path, size_t size);

// A left button press at the screen point `pt` on the menu bar of `top`
// (`onPopup` false) or on an open popup menu (`onPopup` true).
int MenuClick(HWND top, POINT pt, bool onPopup, char* path, size_t size);

// The letter that chooses an item by keys: the one after its "&" (not
// "&&"), else its first character, in upper case; 0 for none.
char MenuMnemonic(const char* text);
