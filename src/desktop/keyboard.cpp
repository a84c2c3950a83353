// Category 4. Every mode but blocking types the step's text after the same
// preparation: a line break in the text is one Enter, an explicit "%r%n" two.
#include "desktop/keyboard.h"
#include "base/text.h"

#include <string.h>

#include <string>

#include "desktop/bufferedtype.h"
#include "desktop/keynames.h"
#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "desktop/playbackhook.h"
#include "desktop/windowcontrol.h"
#include "base/ui.h"
#include "run/clipboard.h"
#include "run/failure.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "run/textops.h"
#include "run/translate.h"
#include "script/step.h"
#include "base/words.h"

namespace {


// Stands in for an explicit "%r%n" while the text's own line breaks become
// single line feeds.
const char LineBreakMarker[] = "%\xA6\xA6\xA6";


bool NoFormatting(const Step& s) { return ContainsNoCase(s.options, "Format"); }

// Leaves the text to type in TranslatedText.
void PrepareText(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    std::string work = TextOf(s.text);
    ReplaceInString(work, "%r%n", LineBreakMarker, 0, 1);
    if (NoFormatting(s))
        SetTranslatedText(work.c_str());
    else
        TranslateText(work.c_str(), tab, step);
    std::string text = TranslatedText;
    ReplaceInString(text, "\r\n", "\n", 0, 1);
    ReplaceInString(text, LineBreakMarker, "\r\n", 0, 1);
    SetTranslatedText(text.c_str());
}

bool StartsWithAny(const char* text, const char* const* names) {
    for (; *names; names++)
        if (_strnicmp(text, *names, strlen(*names)) == 0) return true;
    return false;
}

const char* const KeyUpOnly[] = {"{shiftup}", "{altup}", "{controlup}", "{ctrlup}", nullptr};
const char* const KeyDownOnly[] = {"{shiftdown}", "{altdown}", "{controldown}", "{ctrldown}", nullptr};

void NoteModifier(int vk) {
    // Nothing clears these during the run: the run's end releases every
    // modifier that was pressed in it.
    if (vk == VK_CONTROL) HeldCtrl = VK_CONTROL;
    if (vk == VK_SHIFT) HeldShift = VK_SHIFT;
    if (vk == VK_MENU) HeldAlt = VK_MENU;
}

// "Type": one key at a time, then time for the target's keyboard buffer.
void SimulateKeys(bool allowNames) {
    const char* text = TranslatedText;
    if (!text || !*text) return;
    int released = 0;
    for (size_t i = 0; text[i] && !StopAsked(); ) {
        const char* here = text + i;
        // A character that no key of the layout produces goes as itself.
        WCHAR units[2];
        int unitCount = 0;
        if (const int used = CharacterWithoutKey(here, units, &unitCount)) {
            for (int u = 0; u < unitCount; u++) TypeUnicodeCharacter(units[u]);
            released++;
            i += (size_t)used;
            continue;
        }
        int32_t shift = 0, isName = 0;
        const int vk = KeyNameToVk(here, &shift, allowNames, &isName) & 0xFF;
        if (!vk) {
            if (_strnicmp(here, "{Delay", 6) == 0) {
                char copy[32];
                CopyIntoN(copy, sizeof copy, here);
                if (char* close = strchr(copy, '}')) *close = 0;
                DesktopSleep((DWORD)ParseInt(copy));  // "{Delay=-1}" is a very long wait
            }
        } else {
            if (!StartsWithAny(here, KeyUpOnly)) {
                PressKey(vk, shift, KEY_DOWN);
                NoteModifier(vk);
            }
            if (!StartsWithAny(here, KeyDownOnly)) {
                PressKey(vk, shift, KEY_UP);
                released++;
            }
        }
        const char* close = isName ? FindNoCase(here, "}") : nullptr;
        i = close ? (size_t)(close - text) + 1 : i + 1;
    }
    if (released < 20) return;
    int wait = released / 120 * 1000;
    if (wait < 100) wait = 100;
    if (wait > 2500) wait = 2500;
    DesktopSleep((DWORD)wait);
    if (wait > 100)
        LogPrintf(OutputEdit, "\t'Simulate Keypress' extra duration for keyboard buffer: %d second(s)\r\n",
                  wait / 1000);
}

// "Buffered Virtual Keys": the main window installs the playback hook on its
// own thread; the run core waits for it to end.
int BufferedKeys() {
    if (PlaybackHook) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to start buffer hook");
        return 0;
    }
    BufferSubstate = 0;
    BufferPos = 0;
    BufferStartTick = GetTickCount();
    return RequestPlaybackHook(TIMER_BUFFERED_TYPING);
}

// "Text via Clipboard": paste with Ctrl+V, then put the old text back. Only
// plain text survives; other formats on the clipboard are lost.
int ClipboardText() {
    std::string old = GetClipboardText();
    SetClipboardText(TranslatedText, strlen(TranslatedText));
    PressWithCtrl(KeyNameToVk("v", nullptr, 0, nullptr) & 0xFF);
    DesktopSleep(500);
    SetClipboardText(old.c_str(), old.size());
    return 1;
}

// "Direct Window Entry": the text replaces the window's text in one message.
int DirectEntry() {
    if (!LastWindow) {
        DesktopSleep(250);
        LastWindow = GetForegroundWindow();
    }
    // A window whose program is hung would hold the run for ever.
    if (!SendWithin(LastWindow, WM_SETTEXT, 0, (LPARAM)TranslatedText))
        return FailStep("The window does not answer: its program is hung or busy, and the text was not entered");
    return 1;
}

// "Block Input" and "Unblock Input". The block outlives the step; a system
// without BlockInput simply has nothing to block.
int BlockUserInput(const char* action) {
    HMODULE user32 = LoadLibraryA("USER32.DLL");
    if (!user32) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to load USER32.DLL");
        return 0;
    }
    typedef BOOL(WINAPI * BlockInputProc)(BOOL);
    if (auto block = (BlockInputProc)(void*)GetProcAddress(user32, "BlockInput"))
        block(ContainsNoCase(action, "Unblock") ? FALSE : TRUE);
    FreeLibrary(user32);
    return 1;
}

}  // namespace

int ActKeyboard(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    CopyIntoN(action, sizeof action, s.action);
    const bool allowNames = !NoFormatting(s);

    if (ContainsNoCase(action, "Block Input") || ContainsNoCase(action, "Unblock Input"))
        return BlockUserInput(action);
    PrepareText(tab, step);
    if (lstrcmpiA(action, "Type") == 0 || ContainsNoCase(action, "Simulate Keypress") ||
        ContainsNoCase(action, "Text + System Keys")) {
        SimulateKeys(allowNames);
        return 1;
    }
    if (ContainsNoCase(action, "Buffered Virtual Keys")) return BufferedKeys();
    if (ContainsNoCase(action, "Text via Clipboard")) return ClipboardText();
    if (ContainsNoCase(action, "Direct Window Entry")) return DirectEntry();
    return 1;  // a name none of the branches knows passes
}
