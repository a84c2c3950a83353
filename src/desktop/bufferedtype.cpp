// The buffered typing hook. A character with Shift plays as Shift down, key
// down, key up, Shift up and one event with no message; without Shift as key
// down, key up and two empty events; a character from 0x80 up as one
// WM_CHAR. The run core holds the next step back while HookRunning is set.
#include "desktop/bufferedtype.h"

#include <string.h>

#include "desktop/keynames.h"
#include "desktop/keypress.h"
#include "desktop/playbackhook.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/translate.h"

int32_t BufferPos;
int32_t BufferSubstate;
uint32_t BufferStartTick;

namespace {

int CharacterBytes = 1;  // of the character in hand

void EndPlayback() {
    if (MainWindow) KillTimer(MainWindow, TIMER_HOOK_WATCH);
    Sleep(300);
    ReleasePlaybackHook();
    HookRunning = 0;
    PlaybackLastTick = 0;
}

void NextEvent(EVENTMSG* event) {
    memset(event, 0, sizeof *event);
    if (!TranslatedText || !TranslatedText[BufferPos]) {
        ReleasePlaybackHook();
        // The run core waits while HookRunning is set; left set, a run with
        // nothing to type would wait for ever.
        HookRunning = 0;
        LogPrintf(OutputEdit, "An internal error ocurred in Buffered Type");
        return;
    }
    event->hwnd = GetFocus();
    event->time = GetTickCount();
    int32_t shift = 0;
    const int vk = KeyNameToVk(TranslatedText + BufferPos, &shift, 0, nullptr) & 0xFF;
    const signed char ch = (signed char)TranslatedText[BufferPos];
    if (ch < 1) {
        // No key for it: the character goes as a character message. A
        // character of several bytes (UTF-8) goes whole, as its code point,
        // which the playback marks apart from a byte of the code page.
        event->message = WM_CHAR;
        event->paramL = (UINT)(int)ch;
        event->paramH = 0x38;
        WCHAR units[2];
        int count = 0;
        const int used = CharacterWithoutKey(TranslatedText + BufferPos, units, &count);
        if (used > 1 && count) {
            event->paramL = count == 2 ? 0x10000u + (((UINT)units[0] - 0xD800u) << 10) + ((UINT)units[1] - 0xDC00u)
                                       : (UINT)units[0];
            event->paramH = WM_CHAR_CODE_POINT;
            CharacterBytes = used;
        }
        BufferSubstate = 4;
        return;
    }
    if (!shift) {
        if (BufferSubstate == 0) BufferSubstate = 1;
        if (BufferSubstate == 3) return;  // the whole event stays zero
    }
    const int key = BufferSubstate == 0 || BufferSubstate == 3 ? VK_SHIFT : vk;
    event->paramL = (UINT)key;
    event->paramH = MapVirtualKeyA((UINT)key, 0);
    if (BufferSubstate <= 1)
        event->message = WM_KEYDOWN;
    else if (BufferSubstate <= 3)
        event->message = WM_KEYUP;
}

void Skip() {
    if (BufferSubstate < 4) {
        BufferSubstate++;
        return;
    }
    BufferPos += CharacterBytes;
    CharacterBytes = 1;
    BufferSubstate = 0;
    // The time limit is tested only here, so the character in hand is
    // finished; a long text is cut silently after about two seconds.
    if (!TranslatedText || !TranslatedText[BufferPos] || GetTickCount() - BufferStartTick > 2000) EndPlayback();
}

}  // namespace

LRESULT CALLBACK BufferedTypeHook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_GETNEXT) {
        NextEvent((EVENTMSG*)lParam);
        return 0;
    }
    if (code == HC_SKIP) {
        Skip();
        return 0;
    }
    return CallNextHookEx(PlaybackHook, code, wParam, lParam);
}

void StartBufferedHook(HWND window) {
    KillTimer(window, TIMER_BUFFERED_TYPING);
    InstallPlaybackHook(window, BufferedTypeHook);
}
