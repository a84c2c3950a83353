// The toolbar (View > Show Toolbar): the commonest commands as pictures
// drawn in the style of the action icons, each with its tool tip, enabled
// exactly when its menu item is.
#pragma once

#include <windows.h>

extern HWND Toolbar;

// Made hidden or shown as "Palettes\Toolbar\visible" says.
HWND CreateToolbar(HWND parent);
// Each button takes the state of its menu item.
void UpdateToolbar();
// The tool tip of a command's button ("" for none).
const char* ToolbarTip(int command);
