#include "run/runwait.h"

#include "run/runstate.h"

namespace {

// Manual-reset: set while a stop is asked for. Made on first use from
// either thread; a losing racer closes its own copy.
HANDLE StopEvent() {
    static HANDLE event;
    if (!event) {
        HANDLE made = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        if (InterlockedCompareExchangePointer(&event, made, nullptr) != nullptr && made) CloseHandle(made);
    }
    return event;
}

// The ids of the run threads let go; a thread is let go at most once, and a
// process that lets more go than this keeps the first ones.
volatile DWORD LetGo[64];
volatile LONG LetGoCount;

bool StopKeyDown() { return StopKey && (GetAsyncKeyState(StopKey) & 0x8000); }

// How often a wait looks at the stop key, which no event reports.
const DWORD KeyLookMilliseconds = 100;

}  // namespace

void RequestStop() {
    StopRequested = 1;
    if (HANDLE event = StopEvent()) SetEvent(event);
}

void ClearStopRequest() {
    StopRequested = 0;
    if (HANDLE event = StopEvent()) ResetEvent(event);
}

void LetRunThreadGo() {
    const DWORD id = RunThread ? GetThreadId(RunThread) : 0;
    const LONG slot = InterlockedIncrement(&LetGoCount) - 1;
    if (id && slot < (LONG)(sizeof LetGo / sizeof *LetGo)) LetGo[slot] = id;
    RequestStop();  // its waits end at once
}
bool AnyRunThreadLetGo() { return LetGoCount != 0; }
void ForgetLetGoThread() {
    const DWORD self = GetCurrentThreadId();
    for (LONG i = 0; i < LetGoCount && i < (LONG)(sizeof LetGo / sizeof *LetGo); i++)
        if (LetGo[i] == self) LetGo[i] = 0;
}
bool RunThreadLetGo() {
    if (!LetGoCount) return false;
    const DWORD self = GetCurrentThreadId();
    for (LONG i = 0; i < LetGoCount && i < (LONG)(sizeof LetGo / sizeof *LetGo); i++)
        if (LetGo[i] == self) return true;
    return false;
}

// Only while a run is on: a request left over from the last run must not
// cut short a pause of the editor's own (a compile, the palette's Play).
bool RunStopping() {
    if (RunThreadLetGo()) return true;
    if (!RunThread) return false;
    if (StopRequested) return true;
    if (!StopKeyDown()) return false;
    RequestStop();
    return true;
}

bool StopAsked() { return RunThreadLetGo() || (RunThread && StopRequested); }

int RunWait(HANDLE object, DWORD milliseconds, bool keyStops) {
    HANDLE stop = StopEvent();
    const DWORD start = GetTickCount();
    for (;;) {
        if (keyStops ? RunStopping() : StopAsked()) return RUNWAIT_STOPPED;
        const DWORD passed = GetTickCount() - start;
        if (milliseconds != INFINITE && passed >= milliseconds) return RUNWAIT_TIMEOUT;
        DWORD slice = milliseconds == INFINITE || milliseconds - passed > KeyLookMilliseconds
                          ? KeyLookMilliseconds
                          : milliseconds - passed;
        HANDLE handles[2];
        DWORD count = 0;
        if (object) handles[count++] = object;
        if (stop && RunThread) handles[count++] = stop;
        DWORD got = count ? WaitForMultipleObjects(count, handles, FALSE, slice) : (Sleep(slice), WAIT_TIMEOUT);
        if (object && (got == WAIT_OBJECT_0 || got == WAIT_ABANDONED_0)) return RUNWAIT_DONE;
        if (got == WAIT_FAILED) Sleep(slice);  // a handle that cannot be waited on: keep time
    }
}
