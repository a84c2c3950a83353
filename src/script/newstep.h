// A new step of an action as the editor inserts it: its category and icon
// from the catalogue, the default failure mode, and the defaults of its
// action.
#pragma once

// Inserts a step of action `name` at `position` (-1 appends); a heading or
// an unknown name changes nothing. The step's index, or -1.
int NewStep(const char* name, int position);
