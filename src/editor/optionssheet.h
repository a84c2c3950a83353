// The Options sheet (Tools > Options, F11): six pages over the settings,
// each control bound to one registry value. The sheet keeps nothing of its
// own: it shows what the registry holds when a page opens, and writes a
// page's values on OK or Apply, once they are valid.
#pragma once

#include <windows.h>

enum { OPTIONS_PAGES = 6 };

// Opens the sheet at the page `LastTab` names and returns when it closes;
// true when the user stored with OK.
bool ShowOptionsSheet(HWND owner);
// The sheet while it is open, or null.
extern HWND OptionsSheet;
// The id of the control that shows `setting` ("Log", "Colors\\SkipFill",
// "Reset" for the reset button), and the page it stands on; 0 for none.
int OptionControlId(const char* setting, int* page);
