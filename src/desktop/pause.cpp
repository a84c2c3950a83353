#include "desktop/pause.h"

namespace {

void SleepFor(DWORD milliseconds) { Sleep(milliseconds); }

}  // namespace

void (*DesktopSleep)(DWORD milliseconds) = SleepFor;
