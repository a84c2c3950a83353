// Every fixed pause of the desktop actions (between key events, mouse moves,
// window closing attempts) goes through one seam, so tests can record them.
// By default it is the run's one wait (run/runwait.h): a stop cuts it short.
#pragma once

#include <windows.h>

extern void (*DesktopSleep)(DWORD milliseconds);
