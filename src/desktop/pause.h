// Every fixed pause of the desktop actions (between key events, mouse moves,
// window closing attempts) goes through one seam, so tests can record them.
#pragma once

#include <windows.h>

extern void (*DesktopSleep)(DWORD milliseconds);
