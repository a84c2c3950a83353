// The time limit of an unattended run: the setting UnattendedTimeLimit
// (seconds; 0 or missing for none) bounds the whole process's run.
#pragma once

#include <windows.h>

// Starts the watch when the setting asks for one. When the time runs out the
// run is stopped as the stop command stops it (the step in progress gets the
// forced stop's grace), no repeat follows, and RunOutcome says why.
void StartRunTimeLimit(HWND window);
// The limit that ran out, in seconds, for the log's last line; 0 if none did.
int TimeLimitReached();
