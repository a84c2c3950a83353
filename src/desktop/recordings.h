// Recorded keyboard and mouse input: the record hook that captures it, and
// the playback hook that plays it back at the recorded pace, faster or slower
// by the step's speed. The blocks live in RecordingTable.
#pragma once

#include <windows.h>
#include <stdint.h>

#include "script/step.h"

enum { SPEED_SLOW = -1, SPEED_NORMAL = 0, SPEED_FAST = 1 };

extern RecordedEvent* EventBuffer;  // the working buffer of the hook in progress
extern int32_t EventIndex;          // events recorded so far, or the event being played
extern int32_t PlaybackDelay;       // milliseconds still to wait before the current event
extern int32_t PlaybackOverrun;     // milliseconds by which the last wait overshot
extern int32_t PlaybackSpeed;
extern int32_t SlowRatio;

// The handler of category 9 ("Recordings"): plays the step's recording and
// lets the run core wait for its end.
int ActRecording(int tab, int step);
// The journal record hook: stores each event in EventBuffer.
LRESULT CALLBACK RecordHookProc(int code, WPARAM wParam, LPARAM lParam);
// The journal playback hook over EventBuffer.
LRESULT CALLBACK PlaybackHookProc(int code, WPARAM wParam, LPARAM lParam);
// Ends a playback; mode 1 logs the count (a run), mode 2 is the editor's.
void EndPlayback(int mode);
// Starts recording into EventBuffer (the properties palette's button). A
// message box says why it cannot.
void StartRecording(HWND mainWindow);
// Ends a recording and keeps it in a new slot for the selected step.
void StopRecording();
// The palette's Play button: plays the selected step's recording at once on
// the editor's thread. A message box says why it cannot.
void PlayRecordingFromPalette(HWND mainWindow);
// The main window's work on TIMER_PLAYBACK: install the playback hook.
void StartRecordingPlayback(HWND window);
