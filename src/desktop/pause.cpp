#include "desktop/pause.h"

#include "run/runwait.h"

namespace {

// A pause of a step is cut short by a stop: a "{Delay=-1}" or any other long
// pause never keeps a stopped run waiting.
void SleepFor(DWORD milliseconds) { RunWait(nullptr, milliseconds); }

}  // namespace

void (*DesktopSleep)(DWORD milliseconds) = SleepFor;
