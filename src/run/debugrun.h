// A debug run: the same run, started from the editor's Debug command, that
// pauses instead of ending. It pauses at a breakpoint, after a Step, at the
// step Run to Here names, and (when the setting asks) at a failing step
// before its failure mode acts. While it is paused the run thread waits with
// its whole state in place (step, loop counters and datasets, the current
// window, variables, call depth), and the editor may change the steps ahead.
// A plain run, a hidden run and a compiled EXE never pause.
#pragma once

#include <windows.h>

// Why a debug run is paused.
enum {
    PAUSE_NONE = 0,
    PAUSE_BEFORE_STEP = 1,  // a breakpoint, a Step, Run to Here
    PAUSE_FAILURE = 2,      // the step failed; its failure mode waits
};

// What the editor tells a paused run to do.
enum {
    DEBUG_CONTINUE = 1,  // on to the next breakpoint (at a failure: the failure mode acts)
    DEBUG_STEP,          // the next step, then pause again (at a failure: the failure mode acts)
    DEBUG_RUN_TO,        // on to the step named, then pause
    DEBUG_RETRY,         // at a failure: the step again, as it now stands
    DEBUG_SKIP,          // at a failure: on with the next step
    DEBUG_APPLY,         // at a failure: what its failure mode would have done
    DEBUG_STOP,          // end the run as a stop does
};

// The message a paused run posts to the main window: wParam the step,
// lParam the reason; and with wParam -1 when it goes on again.
enum { WM_RUN_PAUSED = WM_APP + 0x31 };

// Whether a failing step pauses a debug run: the setting
// "Debug\PauseOnFailure", on until the user turns it off.
bool PauseOnFailure();
void SetPauseOnFailure(bool on);

// True while the current run is a debug run.
extern volatile bool DebugRun;

// The editor's Debug and Debug From Here: a run as Run or Run From Here
// starts it, with pausing on. 0 when no run could start.
int StartDebugRun(int tab, HWND window, bool fromHere);
// Said by the run core as a run ends: the next run is a plain one unless
// started as a debug run.
void EndDebugRun();

// Run thread, before a step: whether the debug run pauses here (a
// breakpoint, a Step asked for, the step Run to Here named).
bool DebugPausesBefore(int step, bool breakpoint);
// Run thread: pauses until the editor answers (or the run is stopped, which
// answers DEBUG_STOP). `words` is the failure's text at a failure.
int PauseRun(int step, int reason, const char* words);

// Editor thread.
bool RunPaused();
int PausedStep();         // -1 when not paused
int PausedReason();       // PAUSE_NONE when not paused
const char* PausedWords();  // the failure's words at a failure pause
long PauseCount();          // pauses since the program started
// The run's own values at the pause, a "name\tvalue" line each: the pass of
// every loop the run is in, the window the last window step found.
const char* PausedRunValues();
// Wakes the paused run with `command`; `target` is the step for Run to Here.
// False when no run is paused or the command does not fit the pause.
bool ResumeRun(int command, int target);
