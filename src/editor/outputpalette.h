// The Output palette: a header with its title and the Copy and Clear
// buttons over the run's edit control (OutputEdit, id 1047), whose failure
// lines are tinted so that a user finds them in a long output.
#pragma once

#include <windows.h>

extern HWND OutputPalette;  // the palette: its header and OutputEdit

// Makes the palette, hidden; the edit control is made inside it by the
// main window and handed to WatchOutputEdit.
HWND CreateOutputPalette(HWND parent);
// Lets the palette lay out and tint the edit control.
void WatchOutputEdit(HWND edit);
// Whether a line of the output is one the log writes for a failing step
// (the "ERROR while running", its failure mode, "RUN FAILED").
bool IsFailureLine(const char* line);
// The colour that a failure line's pixels are combined with (an AND of
// each pixel with it): black text stays black, white turns pink.
const COLORREF kFailureTint = RGB(255, 205, 205);
