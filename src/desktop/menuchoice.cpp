// What a click or a key does to a window's menu, read from the menu's own
// state: the items highlighted from the menu bar down tell which popups are
// open and which item Enter would choose.
#include "desktop/menuchoice.h"

#include <string.h>

#include "base/text.h"
#include "desktop/menus.h"

namespace {

struct Level {
    HMENU menu;
    int hilite;  // the highlighted item's position, -1 for none
};

int Hilited(HMENU menu) {
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; i++) {
        const UINT state = GetMenuState(menu, (UINT)i, MF_BYPOSITION);
        if (state != (UINT)-1 && (state & MF_HILITE)) return i;
    }
    return -1;
}

// A popup has a place on the screen only while it shows.
bool Shown(HMENU menu) {
    RECT r;
    return GetMenuItemCount(menu) > 0 && GetMenuItemRect(nullptr, menu, 0, &r) && r.right > r.left;
}

// The bar, and each popup that shows below it, following the highlighted
// items: the last level is the menu that has the keyboard.
int OpenLevels(HMENU bar, Level* levels, int max) {
    int n = 0;
    for (HMENU menu = bar; menu && n < max;) {
        levels[n] = {menu, Hilited(menu)};
        if (levels[n].hilite < 0) return n + 1;
        HMENU sub = GetSubMenu(menu, levels[n].hilite);
        n++;
        if (!sub || !Shown(sub)) return n;
        menu = sub;
    }
    return n;
}

// An item's text as a path names it: up to a tab (its shortcut), without a
// "...", with or without its ampersands.
void Label(HMENU menu, int position, bool ampersands, char* out, size_t size) {
    char text[260];
    MenuItemText(menu, position, text, sizeof text);
    if (char* tab = strchr(text, '\t')) *tab = 0;
    if (char* dots = strstr(text, "...")) *dots = 0;
    size_t n = 0;
    for (const char* p = text; *p && n + 1 < size; p++)
        if (ampersands || *p != '&') out[n++] = *p;
    out[n] = 0;
}

void PathTo(const Level* levels, int count, bool ampersands, char* out, size_t size) {
    out[0] = 0;
    for (int i = 0; i < count; i++) {
        char label[128];
        Label(levels[i].menu, levels[i].hilite, ampersands, label, sizeof label);
        if (i) AppendIntoN(out, size, ";");
        AppendIntoN(out, size, label);
    }
}

// The first item the letter `vk` chooses, -1 for none; `others` tells
// whether more items have that letter (the keys then only move among them).
int ByMnemonic(HMENU menu, int vk, bool* others = nullptr) {
    const int count = GetMenuItemCount(menu);
    int first = -1;
    if (others) *others = false;
    for (int i = 0; i < count; i++) {
        char text[260];
        MenuItemText(menu, i, text, sizeof text);
        if (!text[0] || MenuMnemonic(text) != (char)vk) continue;
        if (first >= 0) {
            if (others) *others = true;
            break;
        }
        first = i;
    }
    return first;
}

// The item at `position` of `menu`, below the levels `above`, was taken: a
// submenu opens (and is where the next key goes), a plain item is chosen.
// The path is checked with the menu walk "Select Menu Item" makes.
int Take(HWND top, HMENU menu, int position, const Level* above, int count, MenuKeyState* state, char* path,
         size_t size) {
    HMENU sub = GetSubMenu(menu, position);
    const UINT flags = GetMenuState(menu, (UINT)position, MF_BYPOSITION);
    char label[128];
    Label(menu, position, false, label, sizeof label);
    if (sub || flags == (UINT)-1 || (flags & (MF_SEPARATOR | MF_GRAYED | MF_DISABLED))) {
        if (sub && state) {
            state->open = sub;
            PathTo(above, count, false, state->path, sizeof state->path);
            if (count) AppendInto(state->path, ";");
            AppendInto(state->path, label);
        }
        return MENU_MOVE;
    }
    PathTo(above, count, false, path, size);
    if (count) AppendIntoN(path, size, ";");
    AppendIntoN(path, size, label);
    const UINT id = GetMenuItemID(menu, position);
    if (FindMenuCommand(top, nullptr, 0, path) == id) return MENU_CHOSEN;
    // The walk takes the first item whose text begins with what the step
    // names, so an item named by the start of an earlier one ("Save" after
    // "Save As") has no path of its own. Its letters choose it, where each
    // is its menu's only one: the step presses them when its walk finds
    // nothing, as the user did.
    char letters[64] = "";
    for (int i = 0; i <= count; i++) {
        HMENU level = i < count ? above[i].menu : menu;
        const int at = i < count ? above[i].hilite : position;
        char text[260];
        MenuItemText(level, at, text, sizeof text);
        const char letter = MenuMnemonic(text);
        bool others = false;
        if (!letter || ByMnemonic(level, letter, &others) != at || others) return MENU_CHOSEN;  // the path, the nearest there is
        const char field[3] = {letter, i < count ? ';' : '\0', 0};
        AppendInto(letters, field);
    }
    if (FindMenuCommand(top, nullptr, 0, letters) == 0) CopyIntoN(path, size, letters);
    return MENU_CHOSEN;
}

// The levels the text `path` ("File;Recent") names, for a menu a key opened
// whose popup the screen does not show yet: its items' positions as the
// highlighted ones.
int LevelsOfPath(HMENU bar, const char* path, HMENU open, Level* levels, int max) {
    int n = 0;
    HMENU menu = bar;
    const char* rest = path;
    while (menu && menu != open && n < max && *rest) {
        const char* end = strchr(rest, ';');
        const size_t length = end ? (size_t)(end - rest) : strlen(rest);
        const int count = GetMenuItemCount(menu);
        int found = -1;
        for (int i = 0; i < count && found < 0; i++) {
            char label[128];
            Label(menu, i, false, label, sizeof label);
            if (strlen(label) == length && strncmp(label, rest, length) == 0) found = i;
        }
        if (found < 0) return -1;
        levels[n++] = {menu, found};
        menu = GetSubMenu(menu, found);
        rest = end ? end + 1 : rest + length;
    }
    return menu == open ? n : -1;
}

}  // namespace

namespace {

char Upper(char c) { return (char)(UINT_PTR)CharUpperA((LPSTR)(UINT_PTR)(BYTE)c); }

}  // namespace

char MenuMnemonic(const char* text) {
    for (const char* p = text; *p; p++) {
        if (*p != '&') continue;
        if (p[1] == '&') {
            p++;
            continue;
        }
        if (p[1]) return Upper(p[1]);
    }
    return text[0] ? Upper(text[0]) : 0;
}

int MenuKey(HWND top, int vk, bool alt, bool ctrl, MenuKeyState* state, char* path, size_t size) {
    path[0] = 0;
    // A level the previous key opened counts for this key alone: by the next
    // one the screen shows where the menu stands.
    HMENU pending = state->top == top ? state->open : nullptr;
    char pendingPath[260];
    CopyInto(pendingPath, state->path);
    state->top = top;
    state->open = nullptr;
    state->path[0] = 0;
    HMENU bar = GetMenu(top);
    if (!bar || !IsMenu(bar)) return MENU_UNREAD;
    Level levels[16];
    int count = 0;
    HMENU open = nullptr;
    if (pending) {
        count = LevelsOfPath(bar, pendingPath, pending, levels, 16);
        if (count >= 0) open = pending;
    }
    if (!open) {
        count = OpenLevels(bar, levels, 16);
        if (count >= 2) {
            open = levels[count - 1].menu;
            count--;
        }
    }
    const bool letter = (vk >= 'A' && vk <= 'Z') || (vk >= '0' && vk <= '9');
    if (!open) {
        if (!alt || ctrl || !letter) return MENU_UNREAD;
        const int position = ByMnemonic(bar, vk);
        if (position < 0) return MENU_UNREAD;
        return Take(top, bar, position, levels, 0, state, path, size);
    }
    if (vk == VK_RETURN) {
        const int position = Hilited(open);
        return position < 0 ? MENU_MOVE : Take(top, open, position, levels, count, state, path, size);
    }
    if (letter && !ctrl) {
        const int position = ByMnemonic(open, vk);
        return position < 0 ? MENU_MOVE : Take(top, open, position, levels, count, state, path, size);
    }
    return MENU_MOVE;
}

int MenuClick(HWND top, POINT pt, bool onPopup, char* path, size_t size) {
    path[0] = 0;
    HMENU bar = GetMenu(top);
    if (!bar || !IsMenu(bar)) return MENU_UNREAD;
    if (!onPopup) {
        const int position = MenuItemFromPoint(top, bar, pt);
        return position < 0 ? MENU_UNREAD : Take(top, bar, position, nullptr, 0, nullptr, path, size);
    }
    Level levels[16];
    const int count = OpenLevels(bar, levels, 16);
    // The deepest popup first: a submenu may lie over its parent.
    for (int i = count - 1; i >= 1; i--) {
        const int position = MenuItemFromPoint(nullptr, levels[i].menu, pt);
        if (position >= 0) return Take(top, levels[i].menu, position, levels, i, nullptr, path, size);
    }
    return MENU_UNREAD;
}
