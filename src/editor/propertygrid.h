// The properties palette: a two-column grid over the property table of the
// selected step, with one in-place editor at a time. A change reaches the
// step only when the editor is committed.
#pragma once

#include <windows.h>

#include "base/ui.h"

extern HWND PropertyPalette;  // the palette window: its header (its window text), the grid, the help
// PropertyGrid, the grid (id 1249), is one of the seam's handles (base/ui.h).
extern HWND ActiveEditor;     // the open editor control, or null
extern int ActiveRow;         // its row, or -1
extern int PressedRow;        // the row last clicked

HWND CreatePropertyPalette(HWND parent);
// Rebuilds the table for the current selection and redraws the grid.
void RefreshPropertyGrid();
void FocusPropertyGrid();
// Creates the editor for a row (committing an open one first).
void OpenEditor(int row);
// Writes the open editor's content to the step and closes it.
void CommitEditor();
// Closes the open editor without storing (a change of step selection).
void DiscardEditor();
// Toggles a check row: its word in the options, or a failure switch.
void ToggleCheckRow(int row);
// The text that the grid shows in the value column of a row.
void PropertyCellText(int row, char* out, int size);
// The width of the longest label of the table shown, in the grid's font.
int PropertyLabelsWidth();
// Whether a row's label is wider than its column (its tool tip shows it all).
bool PropertyLabelCut(int row);
