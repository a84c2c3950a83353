// Unattended runs (/unattended with /r, or a compiled EXE started with it):
// no box waits for a person. The entry puts UnattendedMessageBox in the
// message-box seam; dialogs that are no message box (inputs, choosers) ask
// UnattendedRun themselves and cancel.
#pragma once

#include <windows.h>

#include "base/console.h"  // WriteStandardError

extern bool UnattendedRun;
// Set when a box that nobody can read said the run cannot go on (an error or
// warning with OK only, other than the failure mode's own box): the run core
// fails the run after the step.
extern volatile LONG UnattendedBoxFailed;

// Says what a box not shown would have said: "\tUnattended: <title>: <text>"
// in the log, and the same without the tab on standard error.
void ReportUnshownBox(const char* title, const char* text);
// The seam's box in unattended mode: reported, and answered the way that
// stops or cancels.
int UnattendedMessageBox(HWND owner, const char* text, const char* title, UINT flags);
// The answer a person who wants nothing to go on would give a box of these
// flags (IDOK for OK only).
int StoppingAnswer(const char* title, UINT flags);
