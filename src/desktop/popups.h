// Windows that outlive their step: the status popup (with an optional
// progress bar steered by its own text) and the image popup. They close by
// their own timers or by a click.
#pragma once

#include <windows.h>

#include "base/log.h"  // ZR_PRINTF
#include <stdint.h>

extern HWND PopupWindow;        // the one status popup, class "ZantoPopup"
extern char ImageCaption[64];   // drawn on the image popup; ">x,y" circles a spot
// Windows of these kinds that live on the thread that made them; that thread
// serves them between its steps while there are any.
extern volatile LONG PopupWindows;

// Creates or reuses PopupWindow with a formatted text. A width or height
// below 1 takes a share of the screen; a position below 1 centres.
void ShowPopup(int topMost, int progress, int timeoutMs, int x, int y, int width, int height, const char* format,
               ...) ZR_PRINTF(8, 9);
// A topmost picture window, centred; nonzero if it stands.
int ShowImagePopup(const char* file, int resourceId, int timeoutMs, DWORD style, const char* caption);
// Dispatches the messages waiting for this thread's windows.
void ServeThreadWindows();
