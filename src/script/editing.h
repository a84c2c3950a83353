// Edit commands on the current tab's steps, each saving its undo entries
// first: the clipboard form of steps, the skip, breakpoint and bookmark
// toggles, and the auto-indent that also checks the IF and loop pairs.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "script/step.h"

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

// The walk over IF blocks and loops that Auto-Indent and the script checker
// share. Skipped steps are passed over and keep their indent (-1 here).
struct BlockWalk {
    std::vector<int> indent;       // each step's indent
    std::vector<int> lonelyEndIf;  // "END IF" with no open IF
    std::vector<int> lonelyNext;   // "NEXT LOOP" with no open loop
    std::vector<int> lonelyElse;   // "ELSE" with no open IF
    std::vector<int> openIfs;      // IF steps never closed
    std::vector<int> openLoops;    // loop Start steps never closed
    int deepestLoops = 0;          // the most loops open at once
    int deepestAt = -1;            // the Start step that first opened that many
};
BlockWalk WalkBlocks(const TabStore& t);
// The most steps one action may save undo entries for (MaxUndo, 500 unset).
int UndoLimit();
// Whether an action over `count` steps fits the undo buffer (MaxUndo); if it
// does not, the user is asked whether to go on without undo.
bool ConfirmUndoSpace(int count);
