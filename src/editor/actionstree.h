// The actions tree as a user works with it: a filter box over it that
// narrows it to the actions whose names hold the typed text, and a right
// click that keeps an action under "Favorites" or takes it away. The tree is
// always filled by the catalogue's one routine (FillActionsTree); the filter
// only takes items out of what it filled.
#pragma once

#include <windows.h>

// The filter box over the tree (null until made, and in a hidden run).
extern HWND ActionsFilter;
HWND CreateActionsFilter(HWND parent, bool visible);
// The box's height in the main window's layout.
int ActionsFilterHeight();
// The box's text changed: fills the tree again, narrowed to the text, with
// the headings open as the user left them (all open under a filter).
void ActionsFilterChanged();
// The menu of the action under `at` (screen coordinates), or of the selected
// item when `at` is null (the menu key). Headings have none.
void ShowActionsTreeMenu(const POINT* at);
// Keeps the action under Favorites (or takes it away) and shows the tree
// with the change.
void SetFavorite(const char* name, bool favorite);
