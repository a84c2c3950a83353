// Buffered typing: the text of the step played into the input queue by the
// playback hook, one character in five events.
#pragma once

#include <windows.h>
#include <stdint.h>

extern int32_t BufferPos;        // the next character of TranslatedText
extern int32_t BufferSubstate;   // 0 to 4: the place inside that character
extern uint32_t BufferStartTick; // when the step began

// The playback procedure (journal protocol: HC_GETNEXT fills an EVENTMSG,
// HC_SKIP moves on). It ends the playback at the end of the text or once two
// seconds have passed.
LRESULT CALLBACK BufferedTypeHook(int code, WPARAM wParam, LPARAM lParam);

// The main window's work on TIMER_BUFFERED_TYPING: install the hook.
void StartBufferedHook(HWND window);
