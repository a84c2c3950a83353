// The one wait of a run. Every pause and every wait of a step goes through
// RunWait, which also wakes when the run is asked to stop, so that no step
// can keep a stopped run waiting: not a "{Delay=-1}", not a recording's
// day-long gap, not a child that never ends.
#pragma once

#include <windows.h>

enum {
    RUNWAIT_DONE = 1,      // the object was signalled
    RUNWAIT_TIMEOUT = 0,   // the time passed
    RUNWAIT_STOPPED = -1,  // the run was asked to stop first
};

// Asks the run to stop (StopRequested) and wakes every RunWait.
void RequestStop();
// Takes a request back: a new run, or a stop the user cancelled.
void ClearStopRequest();
// True once the run is asked to stop. The stop key held down counts too
// (and is then made a request, so that the run core stops after the step).
bool RunStopping();

// True while a run is on and has been asked to stop: the request only, not
// the key (a step that types the stop key's own name must not stop itself).
bool StopAsked();

// Waits up to `milliseconds` (INFINITE allowed) for `object`, or, with a
// null object, simply for the time; either ends early with a stop. Without
// `keyStops` only a request ends it, not the stop key ("Freeze").
int RunWait(HANDLE object, DWORD milliseconds, bool keyStops = true);

// A run thread that does not come back from a platform call is never killed
// (a thread killed inside the heap or the loader leaves their locks held):
// a forced stop lets it go. A thread let go sees a stop in every wait and,
// back in the run core, ends without touching the run that may follow.
void LetRunThreadGo();
// True on a run thread that was let go.
bool RunThreadLetGo();
// Said by a thread let go as it ends: its id may be given to a new thread.
void ForgetLetGoThread();
// True once any run thread of this process was let go: the process then
// ends with TerminateProcess rather than by returning from WinMain, whose
// clean-up of globals could pull them from under that thread.
bool AnyRunThreadLetGo();
