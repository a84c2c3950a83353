// Edit commands on the current tab's steps, each saving its undo entries
// first: the clipboard form of steps, the skip, breakpoint and bookmark
// toggles, and the auto-indent that also checks the IF and loop pairs.
#pragma once

#include <stdint.h>

#include <string>

// Puts `text` (the XML of steps) into the current tab at `index` (negative
// appends); the number of steps pasted, 0 when the text holds none. Each
// pasted step gets an "added" undo entry of `stamp`.
int PasteStepsText(const char* text, int index, int32_t stamp);
// The steps [first, last] as the clipboard carries them.
std::string CopyStepsText(int first, int last);
// Toggles skip (clearing breakpoint) or breakpoint (clearing skip) on one
// step, saving a "modified" entry first.
void ToggleStepStatus(int index, int32_t bit, int32_t stamp);
// The bookmark toggles without an undo entry.
void ToggleBookmark(int index);
// The next bookmarked step after `from`, wrapping to the top; -1 for none.
int NextBookmark(int from);
// Sets each step's indent from the IF and loop depths; returns the warnings
// about unmatched pairs, one a line, empty when all match.
std::string AutoIndent(int32_t stamp);
// The most steps one action may save undo entries for (MaxUndo, 500 unset).
int UndoLimit();
// Whether an action over `count` steps fits the undo buffer (MaxUndo); if it
// does not, the user is asked whether to go on without undo.
bool ConfirmUndoSpace(int count);
