// Keyboard access to the editor's panes: Tab and Shift+Tab go round the
// actions tree's filter box, the tree, the step list, the properties grid,
// the Output palette and the Variables list, whichever are shown.
#pragma once

#include <windows.h>

// Gives `pane` the Tab keys (and the tree its Enter).
void WatchPaneKeys(HWND pane);
// The Output palette's own commands, offered on a right click.
enum { OUTPUT_CLEAR = 2601, OUTPUT_COPY, OUTPUT_SELECT_ALL };
void OutputCommand(int id);
// Moves the focus from `from` (a pane, or a window inside one) to the next
// shown pane, or to the one before with `back`.
void CycleFocus(HWND from, bool back);
