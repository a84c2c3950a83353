// Recording and playback of input events.
#include "desktop/recordings.h"
#include "base/text.h"

#include <string.h>

#include "desktop/keypress.h"
#include "desktop/keynames.h"
#include "desktop/pause.h"
#include "desktop/playbackhook.h"
#include "desktop/windowcontrol.h"
#include "desktop/windowmatch.h"

#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/runstate.h"
#include "script/properties.h"
#include "base/words.h"

RecordedEvent* EventBuffer;
int32_t EventIndex;
int32_t PlaybackDelay;
int32_t PlaybackOverrun;
int32_t PlaybackSpeed;
int32_t SlowRatio = 4;

namespace {

const UINT RECORDING_BOX = 0x12030;  // task-modal, to the foreground, exclamation
const size_t BUFFER_STEP = 5120;     // 256 events

size_t BufferEvents() { return EventBuffer ? HeapBlockSize(EventBuffer) / sizeof(RecordedEvent) : 0; }

void FreeEventBuffer() {
    HeapFreeBlock(EventBuffer);
    EventBuffer = nullptr;
}

int SpeedOf(const char* options) {
    if (ContainsNoCase(options, "Fast")) return SPEED_FAST;
    if (ContainsNoCase(options, "Slow")) return SPEED_SLOW;
    return SPEED_NORMAL;
}

void ReadSlowRatio() {
    SlowRatio = SettingInt("RecordingSlowRatio");
    if (!SlowRatio) SlowRatio = 4;
}

void EndFromHook() { EndPlayback(RunThread ? 1 : 2); }

// A key or a click goes to the window it was recorded on: pressing Play
// brings the editor forward, over that window, and the input would reach the
// editor instead. Pointer moves go where they go.
void BringRecordedWindowForward(const RecordedEvent& r) {
    HWND window = (HWND)(UINT_PTR)r.hwnd;
    if (r.message == WM_MOUSEMOVE || !window || !IsWindow(window)) return;
    HWND top = GetAncestor(window, GA_ROOT);
    if (top && top != GetForegroundWindow() && IsWindowVisible(top)) ForceForeground(top);
}

bool IsSystemKey(uint32_t vk) {
    return vk == 0x5B || vk == 0x5C || vk == 0x5D || vk == 0x14 || vk == 0x90 || vk == 0x91;
}

// A get: the next event, or the wait before it.
LRESULT NextEvent(int code, WPARAM wParam, EVENTMSG* event) {
    memset(event, 0, sizeof *event);
    const bool stopKey = GetAsyncKeyState(StopKey) && EventIndex > 0;
    if (stopKey || !EventBuffer || (size_t)EventIndex >= BufferEvents() || !EventBuffer[EventIndex].message) {
        if (stopKey)
            LogPrintf(OutputEdit, "Stop button pressed during recording playback\r\n");
        else
            LogPrintf(OutputEdit, "Internal playback error [event #%d]\r\n", EventIndex);
        EndFromHook();
        return 0;
    }
    const DWORD now = GetTickCount();
    if (!PlaybackLastTick) PlaybackLastTick = now;
    PlaybackDelay -= (int32_t)(now - PlaybackLastTick);
    if (PlaybackDelay < 0) {
        PlaybackOverrun += -PlaybackDelay;
        PlaybackDelay = 0;
    } else if (PlaybackDelay >= 10) {
        // The system asks again after this many milliseconds; under 10 the
        // event goes at once.
        PlaybackLastTick = now;
        return PlaybackDelay;
    }
    const RecordedEvent& r = EventBuffer[EventIndex];
    BringRecordedWindowForward(r);
    event->hwnd = (HWND)(UINT_PTR)r.hwnd;
    event->message = r.message;
    event->paramL = r.paramL;
    event->paramH = r.paramH;
    event->time = GetTickCount();
    // The wheel always turns one notch down; the recorded delta is not kept.
    if (r.message == WM_MOUSEWHEEL) mouse_event(0x8801, r.paramH, r.paramL, (DWORD)-120, 0);
    // The journal alone does not operate the system keys.
    if (r.message == WM_KEYDOWN && IsSystemKey(r.paramL & 0xFF)) {
        PressKey((int)(r.paramL & 0xFF), 0, KEY_DOWN);
        PressKey((int)(r.paramL & 0xFF), 0, KEY_UP);
    }
    PlaybackLastTick = GetTickCount();
    return 0;
}

// A skip: on to the next event, with the wait before it.
LRESULT SkipEvent(int code, WPARAM wParam, LPARAM lParam) {
    EventIndex++;
    if ((size_t)EventIndex >= BufferEvents() || !EventBuffer[EventIndex].message) {
        EndFromHook();
        return 0;
    }
    int32_t overrun = PlaybackOverrun < 0 ? 0 : PlaybackOverrun;
    int32_t wait = (int32_t)(EventBuffer[EventIndex].time - EventBuffer[EventIndex - 1].time) - overrun;
    if (wait < 0) wait = 0;
    PlaybackOverrun = 0;
    if (PlaybackSpeed < 0) wait *= SlowRatio;
    if (PlaybackSpeed > 0 && SlowRatio / 2) wait /= SlowRatio / 2;
    PlaybackDelay = wait;
    return CallNextHookEx(PlaybackHook, code, wParam, lParam);
}

}  // namespace

LRESULT CALLBACK PlaybackHookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_GETNEXT) return NextEvent(code, wParam, (EVENTMSG*)lParam);
    if (code == HC_SKIP) return SkipEvent(code, wParam, lParam);
    return CallNextHookEx(PlaybackHook, code, wParam, lParam);
}

void EndPlayback(int mode) {
    if (MainWindow) KillTimer(MainWindow, TIMER_HOOK_WATCH);
    DesktopSleep(300);
    ReleasePlaybackHook();
    HookRunning = 0;
    PlaybackLastTick = 0;
    if (mode == 1) LogPrintf(OutputEdit, "Recording playback ended (%d events played)\r\n", EventIndex);
}

// A private copy of the step's slot in EventBuffer, so that the slot
// survives the playback; an empty slot gives 256 zero bytes.
bool LoadRecording(const Step& s) {
    FreeEventBuffer();
    const int slot = ParseInt(s.value[1]);
    const RecordedEvent* source = slot >= 0 && slot < MAX_RECORDINGS ? RecordingTable.slot[slot] : nullptr;
    const size_t size = source ? HeapBlockSize(source) : 0;
    EventBuffer = (RecordedEvent*)HeapAllocZero(size < 256 ? 256 : size);
    if (!EventBuffer) return false;
    if (source) memcpy(EventBuffer, source, size);
    return true;
}

// The recording row of the properties palette: idle 0, recording 1,
// recorded 2, repainted on each change.
void SetRecordingRowState(int state) {
    const int row = FindProperty("Record Actions", 0);
    if (PropertyTable[row].rowType != ROW_RECORDING) return;
    PropertyTable[row].state = state;
    if (PropertyGrid) InvalidateRect(PropertyGrid, nullptr, TRUE);
}

int ActRecording(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (PlaybackHook) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Another recording is currently playing");
        return 0;
    }
    if (ParseInt(s.value[0]) < 1) return 1;
    if (!LoadRecording(s)) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Insufficient Memory Available");
        return 0;
    }
    EventIndex = PlaybackDelay = PlaybackOverrun = 0;
    PlaybackSpeed = SpeedOf(s.options);
    ReadSlowRatio();
    LogPrintf(OutputEdit, "\t%s events at %s speed\r\n", s.value[0],
              PlaybackSpeed > 0 ? "fast" : PlaybackSpeed < 0 ? "slow" : "normal");
    return RequestPlaybackHook(TIMER_PLAYBACK);
}

void StartRecordingPlayback(HWND window) {
    KillTimer(window, TIMER_PLAYBACK);
    InstallPlaybackHook(window, PlaybackHookProc);
}

LRESULT CALLBACK RecordHookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code < 0) return CallNextHookEx(PlaybackHook, code, wParam, lParam);
    const EVENTMSG* event = (const EVENTMSG*)lParam;
    // The stop key ends the recording; it is not recorded, and the event
    // before it is dropped as well.
    if (event->message == WM_KEYDOWN && (int)(event->paramL & 0xFF) == StopKey) {
        EventIndex--;
        StopRecording();
        return 0;
    }
    if (code != HC_ACTION) return 0;
    if (!EventBuffer) {
        StopRecording();
        return 0;
    }
    // Clicks and keys meant for the editor itself are not recorded.
    if (event->message != WM_MOUSEMOVE && MainWindow &&
        (event->hwnd == MainWindow || IsChild(MainWindow, event->hwnd) ||
         (StepList && IsOwnWindow(GetParent(StepList), event->hwnd))))
        return 0;
    // 40 events stay spare, so that a burst of mouse moves never fails.
    if ((size_t)EventIndex + 40 >= BufferEvents()) {
        RecordedEvent* grown = (RecordedEvent*)GrowBlock(EventBuffer, HeapBlockSize(EventBuffer) + BUFFER_STEP);
        if (!grown) return 0;
        EventBuffer = grown;
    }
    RecordedEvent& r = EventBuffer[EventIndex];
    r.hwnd = (uint32_t)(UINT_PTR)event->hwnd;
    r.message = event->message;
    r.paramL = event->paramL;
    r.paramH = event->paramH;
    r.time = GetTickCount();
    EventBuffer[EventIndex + 1].time = 0;
    EventIndex++;
    return 0;
}

void StartRecording(HWND mainWindow) {
    const int row = FindProperty("Record Actions", 0);
    if (PropertyTable[row].rowType == ROW_RECORDING && PropertyTable[row].state == 1) {
        StopRecording();
        return;
    }
    if (PlaybackHook) return;
    if (RecordingTable.used + 1 >= MAX_RECORDINGS) {
        char text[256];
        FormatInto(text,
                  "A maximum of %d recordings per script can be recorded.\n\nIf you recorded many test recordings, "
                  "close and restart ZantoRunner to create more recordings.",
                  MAX_RECORDINGS);
        RunMessageBox(text, "Recording Error", RECORDING_BOX);
        return;
    }
    FreeEventBuffer();
    EventIndex = 0;
    EventBuffer = (RecordedEvent*)HeapAllocZero(BUFFER_STEP);
    if (!EventBuffer) {
        RunMessageBox("Insufficient Memory Available", "Recording Error", RECORDING_BOX);
        return;
    }
    SetRecordingRowState(1);
    if (SettingInt("MinimizeRecord")) {
        char key[32], text[128];
        VkToKeyName(StopKey, key);
        FormatInto(text, "Press the \"%s\" key to finish recording and return to ZantoRunner.", key);
        RunMessageBox(text, "Recording Error", 0x12040);
        if (mainWindow) ShowWindow(mainWindow, SW_MINIMIZE);
    }
    EventIndex = 0;
    if (!InstallRecordHook(RecordHookProc)) RunMessageBox("Start Recording Failed", "Recording Error", RECORDING_BOX);
}

void StopRecording() {
    ReleasePlaybackHook();
    TabStore& t = ScriptStore.tab[ScriptStore.currentTab];
    const int step = t.selected;
    if (!t.steps || step < 0 || step >= t.count) return;
    // The stop key as the very first key leaves -1: an empty recording.
    const int count = EventIndex < 0 ? 0 : EventIndex;
    const size_t size = ((size_t)count + 2) * sizeof(RecordedEvent);
    RecordedEvent* block = (RecordedEvent*)HeapAllocZero(size < 256 ? 256 : size);
    if (!block) {
        RunMessageBox("Insufficient Memory Available", "Recording Error", RECORDING_BOX);
        return;
    }
    if (count && EventBuffer) memcpy(block, EventBuffer, (size_t)count * sizeof(RecordedEvent));
    RecordingTable.slot[RecordingTable.used] = block;
    FormatInto(t.steps[step].value[0], "%d", count);
    FormatInto(t.steps[step].value[1], "%d", RecordingTable.used);
    RecordingTable.used++;
    SetRecordingRowState(2);
    if (StepList) InvalidateRect(StepList, nullptr, TRUE);
}

void PlayRecordingFromPalette(HWND mainWindow) {
    TabStore& t = CurrentTab();
    if (PlaybackHook || !t.steps || t.selected < 0 || t.selected >= t.count) return;
    const Step& s = t.steps[t.selected];
    if (ParseInt(s.value[0]) < 1) {
        RunMessageBox("Nothing recorded.\n\nPress the \"Start Recording\" button to record events.", "ZantoRunner",
                      RECORDING_BOX);
        return;
    }
    if (!LoadRecording(s)) {
        RunMessageBox("Insufficient Memory Available", "Recording Error", RECORDING_BOX);
        return;
    }
    if (SettingInt("MinimizeRecord") && mainWindow) ShowWindow(mainWindow, SW_MINIMIZE);
    ReadSlowRatio();
    EventIndex = PlaybackDelay = PlaybackOverrun = 0;
    PlaybackSpeed = SpeedOf(s.options);
    InstallPlaybackHook(mainWindow, PlaybackHookProc);
    if (!PlaybackHook) RunMessageBox("Unable to start playback", "Recording Error", RECORDING_BOX);
}
