#include "run/timelimit.h"

#include "base/settings.h"
#include "run/runstate.h"
#include "run/runwait.h"

namespace {

int LimitSeconds;

// How long after the limit the process may take to end by the ordinary
// stop (the step's grace of a second, the forced pass, the window's close)
// before this watch ends it itself.
const DWORD EndGraceMilliseconds = 3000;

// A timer, not a synchronisation: it sleeps out the limit on its own thread
// and dies with the process when the run ends first.
DWORD WINAPI WatchTimeLimit(LPVOID window) {
    Sleep((DWORD)LimitSeconds * 1000);
    if (!RunThread) return 0;
    RunOutcome = EXIT_TIME_LIMIT;
    for (int32_t& repeats : RunRepeats) repeats = 0;
    RequestStop();  // the step's waits end now, whatever the main thread is doing
    PostMessageA((HWND)window, WM_COMMAND, MAKEWPARAM(CMD_STOP, 0), 0);
    // The run still ends on time when the main thread itself is held (a
    // message to a hung window, a box nobody answers).
    Sleep(EndGraceMilliseconds);
    EndProcessNow();
    return 0;
}

}  // namespace

void StartRunTimeLimit(HWND window) {
    const int seconds = SettingInt("UnattendedTimeLimit");
    if (seconds <= 0 || !window) return;
    // At most about 24 days, the longest a Sleep can be asked for in ms.
    LimitSeconds = seconds > 2000000 ? 2000000 : seconds;
    HANDLE watch = CreateThread(nullptr, 0, WatchTimeLimit, window, 0, nullptr);
    if (watch) CloseHandle(watch);
}

int TimeLimitReached() { return RunOutcome == EXIT_TIME_LIMIT ? LimitSeconds : 0; }
