// The splitter between the step list and the properties palette: the gap
// between them, dragged with the mouse; the width chosen is kept in the
// settings ("Palettes\Properties\Width").
#pragma once

#include <windows.h>

// The palette's width in a main window whose panes share `across` pixels:
// the width the user dragged it to, else room for the longest label and
// about 30 characters of value in the system font, never more than half.
int PropertyPaletteWidth(int across);
// Handles the main window's mouse messages over the splitter; whether it
// took the message (its result in `result`). A drag lays the window out
// again with `layOut`.
bool SplitterMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result,
                     void (*layOut)(HWND));
