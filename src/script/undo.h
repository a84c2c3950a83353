// Undo: per tab, an array of whole copies of steps, each stamped with the
// group of the user action that saved it, so that one action over many steps
// comes back in one go.
#pragma once

#include <stdint.h>

enum {
    UNDO_ADDED = 1,     // undone by deleting the step
    UNDO_MODIFIED = 2,  // undone by putting the copy back
    UNDO_DELETED = 3,   // undone by inserting the copy
    UNDO_PASTED = 4,    // saved ahead of a paste: the list is freed first
};

// Appends an entry to the current tab's list; kinds but UNDO_ADDED need a
// step at `index`. Returns 1 when saved.
int SaveUndo(int32_t stamp, int index, int kind);
// Undoes the newest group; the number of steps it touched, 0 for none.
// What it takes back can be redone until the next change.
int Undo();
// Does again the group the last Undo took back; the steps it touched.
int Redo();
// "Undo Add Step\tCtrl+Z" and the like, after the newest entry.
const char* UndoMenuText();
// Entries in the current tab's list.
int UndoCount();
// Entries that Redo can do again, and the menu text after the newest.
int RedoCount();
const char* RedoMenuText();
