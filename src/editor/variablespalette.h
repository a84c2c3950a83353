// The Variables palette (View > Show Variables, Alt+4): every user variable
// with a preview of its value, kept up to date while a run saves values,
// with Edit, Delete and Clear All.
#pragma once

#include <windows.h>

extern HWND VariablesPalette;  // the palette: a title, the list and its buttons
extern HWND VariablesList;     // the list, id 1246: "Variable" and "Value"

HWND CreateVariablesPalette(HWND parent);
// Fills the list anew from the registry.
void RefillVariablesList();
// A paused run's own values ("name\tvalue" lines, names in parentheses) at
// the top of the list; null takes them away again.
void ShowRunValues(const char* lines);
// The palette's buttons, as clicks on them.
enum { VARIABLE_EDIT = 2501, VARIABLE_DELETE, VARIABLE_CLEAR_ALL };
