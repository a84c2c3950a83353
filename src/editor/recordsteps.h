// Record as Steps (Run menu, Ctrl+Shift+R): the first use starts watching
// the user's work in other programs; the stop key, or the command again,
// ends it and puts the steps after the selected one, undone as one change.
#pragma once

#include <windows.h>

int CommandRecordSteps(HWND window);
// The steps the last recording inserted, and how many of its clicks on
// controls with windows of their own came out as control steps.
struct RecordStepsResult {
    int inserted;
    int controlClicks;
    int controlSteps;
};
extern RecordStepsResult LastRecordSteps;
