// The process's one playback hook, shared by buffered typing and recording
// playback. Where the system calls journal playback hooks, the procedure is
// installed as one. Where it does not (it may refuse the hook, or accept it
// and never call it), a replay thread asks the same procedure for its events,
// with the same codes, and sends each one as input, so the procedures need
// not know which of the two drives them.
#pragma once

#include <windows.h>

// Main thread: installs `proc` and sets PlaybackHook and HookRunning. If the
// system has not called the hook TIMER_HOOK_CHECK later, the replay takes
// over.
void InstallPlaybackHook(HWND window, HOOKPROC proc);
// Main thread, on TIMER_HOOK_CHECK.
void CheckPlaybackHook(HWND window);
// Any thread: removes the hook or stops the replay, and clears PlaybackHook.
// HookRunning is left to the caller.
void ReleasePlaybackHook();

// Sends one event of the EVENTMSG kind as input (keys, characters, mouse).
void SendPlaybackEvent(const EVENTMSG& event);
