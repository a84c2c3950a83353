// Journal playback, and the replay that stands in for it.
#include "desktop/playbackhook.h"
#include "base/text.h"

#include <string.h>

#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "base/utf8.h"

namespace {

HOOKPROC CurrentProc;
volatile LONG HookCalls;  // calls by the system since the hook was installed
HHOOK JournalHook;        // the real hook, while one is installed
volatile LONG ReplayGeneration;  // a replay thread plays only while its own is current

// The hook value that stands for a running replay: non-zero, never a handle
// the system gave out, and never handed to UnhookWindowsHookEx.
HHOOK const ReplayHook = (HHOOK)(INT_PTR)-2;

LRESULT CALLBACK CountingProc(int code, WPARAM wParam, LPARAM lParam) {
    InterlockedIncrement(&HookCalls);
    return CurrentProc(code, wParam, lParam);
}

// Plays the procedure's events until it releases the hook: get an event,
// wait as long as the procedure asked, send it, skip to the next.
DWORD WINAPI Replay(LPVOID argument) {
    const LONG generation = (LONG)(INT_PTR)argument;
    while (PlaybackHook == ReplayHook && ReplayGeneration == generation) {
        EVENTMSG event;
        memset(&event, 0, sizeof event);
        LRESULT wait = CurrentProc(HC_GETNEXT, 0, (LPARAM)&event);
        if (PlaybackHook != ReplayHook) break;
        if (wait > 0) {
            // As the system does: wait, then ask for the event again. A
            // recording's gap can be days long: a stop of the run ends it.
            if (RunWait(nullptr, (DWORD)wait) == RUNWAIT_STOPPED) break;
            continue;
        }
        SendPlaybackEvent(event);
        CurrentProc(HC_SKIP, 0, 0);
        Sleep(0);
    }
    return 0;
}

void StartReplay() {
    PlaybackHook = ReplayHook;
    HookRunning = 1;
    LONG generation = InterlockedIncrement(&ReplayGeneration);
    HANDLE thread = CreateThread(nullptr, 0, Replay, (LPVOID)(INT_PTR)generation, 0, nullptr);
    if (thread) {
        CloseHandle(thread);
    } else {
        PlaybackHook = nullptr;
        HookRunning = 0;
    }
}

HOOKPROC RecordProc;
HHOOK RecordMouseHook;  // the keyboard half is PlaybackHook

LRESULT CALLBACK RecordKeys(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && RecordProc) {
        const KBDLLHOOKSTRUCT* k = (const KBDLLHOOKSTRUCT*)lParam;
        EVENTMSG event = {};
        event.message = (UINT)wParam;
        event.paramL = (k->vkCode & 0xFF) | ((k->scanCode & 0xFF) << 8);
        event.paramH = (k->scanCode & 0xFF) | ((k->flags & LLKHF_EXTENDED) ? 0x8000 : 0);
        event.time = k->time;
        event.hwnd = GetForegroundWindow();
        RecordProc(HC_ACTION, 0, (LPARAM)&event);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

LRESULT CALLBACK RecordMouse(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && RecordProc) {
        const MSLLHOOKSTRUCT* m = (const MSLLHOOKSTRUCT*)lParam;
        EVENTMSG event = {};
        event.message = (UINT)wParam;
        event.paramL = (UINT)m->pt.x;
        event.paramH = (UINT)m->pt.y;
        event.time = m->time;
        event.hwnd = WindowFromPoint(m->pt);
        RecordProc(HC_ACTION, 0, (LPARAM)&event);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace

bool InstallRecordHook(HOOKPROC proc) {
    RecordProc = proc;
    HINSTANCE instance = GetModuleHandleA(nullptr);
    PlaybackHook = SetWindowsHookExA(WH_KEYBOARD_LL, RecordKeys, instance, 0);
    RecordMouseHook = PlaybackHook ? SetWindowsHookExA(WH_MOUSE_LL, RecordMouse, instance, 0) : nullptr;
    if (PlaybackHook && RecordMouseHook) return true;
    ReleasePlaybackHook();
    return false;
}

int RequestPlaybackHook(UINT startTimer) {
    if (MainWindow) {
        SetTimer(MainWindow, TIMER_HOOK_WATCH, 3000, nullptr);
        SetTimer(MainWindow, startTimer, 100, nullptr);
    }
    DesktopSleep(300);
    if (!HookRunning) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to start Windows hook procedure");
        return 0;
    }
    return 1;
}

void InstallPlaybackHook(HWND window, HOOKPROC proc) {
    CurrentProc = proc;
    HookCalls = 0;
    JournalHook = SetWindowsHookExA(WH_JOURNALPLAYBACK, CountingProc, GetModuleHandleA(nullptr), 0);
    if (!JournalHook) {
        StartReplay();
        return;
    }
    PlaybackHook = JournalHook;
    HookRunning = 1;
    SetTimer(window, TIMER_HOOK_CHECK, 100, nullptr);
}

void CheckPlaybackHook(HWND window) {
    KillTimer(window, TIMER_HOOK_CHECK);
    if (!JournalHook || PlaybackHook != JournalHook || HookCalls) return;
    UnhookWindowsHookEx(JournalHook);
    JournalHook = nullptr;
    StartReplay();
}

void ReleasePlaybackHook() {
    HHOOK hook = PlaybackHook;
    PlaybackHook = nullptr;
    RecordProc = nullptr;
    if (RecordMouseHook) {
        UnhookWindowsHookEx(RecordMouseHook);
        RecordMouseHook = nullptr;
    }
    if (hook && hook != ReplayHook) UnhookWindowsHookEx(hook);
    if (hook == JournalHook) JournalHook = nullptr;
}

void SendPlaybackEvent(const EVENTMSG& event) {
    INPUT input;
    memset(&input, 0, sizeof input);
    switch (event.message) {
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYDOWN:
    case WM_SYSKEYUP: {
        // The Windows keys, the application key and the lock keys are pressed
        // by the playback procedure itself, as the journal does not.
        const BYTE vk = (BYTE)event.paramL;
        if (vk == 0x5B || vk == 0x5C || vk == 0x5D || vk == 0x14 || vk == 0x90 || vk == 0x91) return;
        DWORD flags = (event.paramH & 0x8000) ? KEYEVENTF_EXTENDEDKEY : 0;
        if (event.message == WM_KEYUP || event.message == WM_SYSKEYUP) flags |= KEYEVENTF_KEYUP;
        keybd_event(vk, (BYTE)event.paramH, flags, 0);
        return;
    }
    case WM_CHAR: {
        // A character with no key of its own: typed as the Unicode character
        // that its byte stands for in the code page, or, from buffered
        // typing of a UTF-8 text, as the code point it carries.
        if (event.paramH == WM_CHAR_CODE_POINT) {
            const UINT code = event.paramL;
            if (code >= 0x10000) {
                TypeUnicodeCharacter((WCHAR)(0xD800 + ((code - 0x10000) >> 10)));
                TypeUnicodeCharacter((WCHAR)(0xDC00 + ((code - 0x10000) & 0x3FF)));
            } else {
                TypeUnicodeCharacter((WCHAR)code);
            }
            return;
        }
        char byte = (char)event.paramL;
        WCHAR wide = 0;
        if (!MultiByteToWideChar(ProgramIsUtf8() ? LegacyCodePage() : CP_ACP, 0, &byte, 1, &wide, 1)) return;
        TypeUnicodeCharacter(wide);
        return;
    }
    case WM_MOUSEMOVE:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP: {
        SetCursorPos((int)event.paramL, (int)event.paramH);
        DWORD flags = event.message == WM_LBUTTONDOWN   ? MOUSEEVENTF_LEFTDOWN
                      : event.message == WM_LBUTTONUP   ? MOUSEEVENTF_LEFTUP
                      : event.message == WM_RBUTTONDOWN ? MOUSEEVENTF_RIGHTDOWN
                      : event.message == WM_RBUTTONUP   ? MOUSEEVENTF_RIGHTUP
                      : event.message == WM_MBUTTONDOWN ? MOUSEEVENTF_MIDDLEDOWN
                      : event.message == WM_MBUTTONUP   ? MOUSEEVENTF_MIDDLEUP
                                                        : 0;
        if (flags) mouse_event(flags, 0, 0, 0, 0);
        return;
    }
    default:
        return;  // an empty event, or one with nothing to send
    }
}
