// The debug run in the editor: the Run menu's Debug commands, the bar above
// the step list while a debug run is paused, and "Try This Step".
#pragma once

#include <windows.h>

// The Run menu's debug commands and the bar's buttons (CMD_DEBUG ... in
// resources/resource.h). 0, or -1 when the command did not apply.
int CommandDebug(HWND window, int id);
// Run, Run From Here and Run Single Step while a debug run is paused:
// Continue, Run to Here and Step. False when no run is paused.
bool ResumePausedRun(int id);
// The run thread's WM_RUN_PAUSED: the bar, the status bar, the step marked.
void ShowRunPause(HWND window, WPARAM step, LPARAM reason);
// How many pauses the editor has shown (a run's PauseCount, once the editor
// has caught up with it).
long PausesShown();
// The bar's height in the step list's pane (0 while hidden), placed at `top`
// across `width`; the pane lays out the tab strip, the bar and the list.
int LayOutDebugBar(HWND pane, int top, int width);
// The timer that sees a "Try This Step" run end.
enum { TIMER_TRY_STEP = 0x8070 };
void TryStepTimer(HWND window);
