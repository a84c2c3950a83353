// The process's one playback hook, shared by buffered typing and recording
// playback. Where the system calls journal playback hooks, the procedure is
// installed as one. Where it does not (it may refuse the hook, or accept it
// and never call it), a replay thread asks the same procedure for its events,
// with the same codes, and sends each one as input, so the procedures need
// not know which of the two drives them.
#pragma once

#include <windows.h>

// The `paramH` of a WM_CHAR event whose `paramL` is a Unicode code point
// (buffered typing of a character of several bytes); otherwise `paramL` is
// a byte of the code page.
enum { WM_CHAR_CODE_POINT = 0x39 };

// Run thread: asks the main window to install its playback hook (its timer
// `startTimer` does that, TIMER_HOOK_WATCH repeats while it plays), gives it
// 300 ms, and says whether it runs; if not, the step's words say so.
int RequestPlaybackHook(UINT startTimer);

// Main thread: installs `proc` and sets PlaybackHook and HookRunning. If the
// system has not called the hook TIMER_HOOK_CHECK later, the replay takes
// over.
void InstallPlaybackHook(HWND window, HOOKPROC proc);
// Main thread, on TIMER_HOOK_CHECK.
void CheckPlaybackHook(HWND window);
// Any thread: removes the hook (playback or record) or stops the replay, and
// clears PlaybackHook. HookRunning is left to the caller.
void ReleasePlaybackHook();

// Main thread: sends every key and mouse event of the whole desktop to `proc`
// as a journal record hook would (code HC_ACTION, an EVENTMSG). Journal record
// hooks see only their own program on some systems and are refused on others,
// so the system-wide low-level hooks are the source. Sets PlaybackHook.
bool InstallRecordHook(HOOKPROC proc);

// Sends one event of the EVENTMSG kind as input (keys, characters, mouse).
void SendPlaybackEvent(const EVENTMSG& event);
