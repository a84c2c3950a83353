// The finder and the coordinates picker beside a cell's editor: press the
// button, drag over the screen, release. The finder puts the criteria of the
// window under the pointer into the editor; the picker puts the pointer's
// coordinates there.
#pragma once

#include <windows.h>

#include <string>

// Makes a button of the palette a finder (`window`) or a coordinates picker
// whose pick goes into the editor that `*editor` holds when it is released.
void MakePicker(HWND button, bool window, HWND* editor);
// Which window a pick at `at` stands for: the top-level window for a window
// action, the control itself for a control action (`control`).
HWND PickedWindow(POINT at, bool control);
// Whether the action named works on a control rather than a top-level window.
bool ActsOnControl(const char* action);
// The title, class and ID of a window as the finder shows them while dragging.
std::string DescribePickedWindow(HWND window);
// The words with which the finder refuses a window, or "" when it takes it:
// the program's own windows are refused (a script that drives its own editor
// would fight the user for it).
const char* RefusedPick(HWND window);
// The criteria text of a window under the step's match flags.
std::string CriteriaOfWindow(HWND window, int flags);
// The label beside the pointer while the finder is dragged (null otherwise).
HWND FinderLabel();
// Whether the outline round the window under the dragged finder is shown.
bool FinderOutlineShown();
