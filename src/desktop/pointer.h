// The pointer put on a point, for the mouse actions and for a control that
// is pressed as a person would.
#pragma once

// Puts the pointer on a point and makes sure it is there before returning.
void PlacePointer(int x, int y);
