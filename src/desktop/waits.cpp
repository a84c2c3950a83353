// Category 7. Every wait that loops goes through PollUntil: a Sleep(0) to
// give way, a piece of sleep, one test, until the test answers or the time
// is over.
#include "desktop/waits.h"

#include <stdio.h>
#include <string.h>

#include "desktop/imagesearch.h"
#include "desktop/keynames.h"
#include "desktop/pause.h"
#include "desktop/popups.h"
#include "desktop/searchfields.h"
#include "desktop/windowmatch.h"
#include "base/ui.h"
#include "base/utf8.h"
#include "base/log.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/text.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

// Polls `test` until it answers non-zero (its answer is returned) or
// `timeout` milliseconds have passed since `start`, or the run is asked to
// stop (0 is returned: the run core then stops the run).
template <typename Test>
int PollUntil(DWORD start, DWORD timeout, DWORD piece, Test test) {
    while (GetTickCount() - start < timeout) {
        Sleep(0);
        DesktopSleep(piece);
        if (StopAsked()) return 0;
        if (PopupWindows) ServeThreadWindows();  // popups of earlier steps close on time
        if (int answer = test()) return answer;
    }
    return 0;
}

bool StopKeyDown() { return GetAsyncKeyState(StopKey) || StopRequested; }

// "Delay": at idle priority, in pieces of at most 250 ms, each followed by a
// look at the stop key. A stop leaves the priority at idle.
int Delay(DWORD start, DWORD timeout) {
    HANDLE process = GetCurrentProcess();
    const DWORD priority = GetPriorityClass(process);
    SetPriorityClass(process, IDLE_PRIORITY_CLASS);
    if (PollUntil(start, timeout, timeout < 250 ? timeout : 250, [] { return StopKeyDown() ? -1 : 0; }) < 0)
        return -1;
    SetPriorityClass(process, priority);
    return 1;
}

// "Wait for Keypress" and "Wait for Mouse Click".
int KeyWait(int tab, int step, const char* action, DWORD start, DWORD timeout) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    int single = 0, low = 0, high = 0;
    if (ContainsNoCase(action, "Mouse Click")) {
        low = 1;
        high = 4;
    } else if (!TextOf(s.text)[0]) {
        low = 8;
        high = 0x9F;
    } else {
        single = KeyNameToVk(TextOf(s.text), nullptr, 1, nullptr) & 0xFF;
        if (s.loops == 1) LogPrintf(OutputEdit, "\tWaiting for keypress %s (%d)\r\n", TextOf(s.text), single);
    }
    DesktopSleep(250);
    FlushKeyStates();
    if (GetTickCount() - start >= timeout) return 0;
    return PollUntil(start, timeout, 250, [&] {
        if (single) return GetAsyncKeyState(single) || GetAsyncKeyState(StopKey) ? 1 : 0;
        for (int key = low; key <= high; key++) {
            if (low == 1 && key == 3) continue;  // the buttons are 1, 2 and 4
            if (GetAsyncKeyState(key)) return 1;
        }
        return 0;
    });
}

int MouseMoveWait(DWORD start, DWORD timeout) {
    POINT noted;
    GetCursorPos(&noted);
    return PollUntil(start, timeout, 250, [&] {
        POINT now;
        GetCursorPos(&now);
        return now.x != noted.x || now.y != noted.y ? 1 : 0;
    });
}

int PixelWait(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    SearchFields f = ReadSearchFields(tab, step);
    TranslateText(s.text, tab, step);
    char color[FIELD_LONG];
    CopyIntoN(color, sizeof color, TranslatedText);
    if (s.loops == 1) LogPrintf(OutputEdit, "\tSearching for pixel color %s\r\n", color);
    int x = 0, y = 0;
    return PixelSearch(ParseColor(color), &f.region, f.variation, 0, 0, &x, &y, f.showScan, 0, 0) ? 1 : 0;
}

int ImageWait(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    char name[MAX_PATH];
    CopyIntoN(name, sizeof name, TranslatedText);
    return FindImageAndSave(tab, step, name) ? 1 : 0;
}

// A window of this program never counts as there.
int WindowWait(int tab, int step, bool appear) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    char title[FIELD_LONG * 4];
    CopyIntoN(title, sizeof title, TranslatedText);
    LastWindow = FindWindowByCriteria(MainWindow, MATCH_TITLE, title, 0);
    const bool there = LastWindow && !IsOwnWindow(MainWindow, LastWindow);
    return there == appear ? 1 : 0;
}

int FileWait(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    char file[MAX_PATH];
    ResolveProgramPath(TranslatedText, file, ScriptStore.tab[tab].path);
    return GetFileAttributesA(file) != INVALID_FILE_ATTRIBUTES ? 1 : 0;
}

}  // namespace

void FlushKeyStates() {
    for (int key = 0; key <= 254; key++) GetAsyncKeyState(key);
}

int ActWait(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    CopyIntoN(action, sizeof action, s.action);
    TranslateText(s.timeout, tab, step);
    char timeoutText[FIELD_LONG];
    CopyIntoN(timeoutText, sizeof timeoutText, TranslatedText);
    const DWORD timeout = SecondsToMilliseconds(ParseFloat(timeoutText));
    const DWORD start = GetTickCount();

    if (ContainsNoCase(action, "Freeze")) {
        // In one piece: the stop key has no effect, a stop request does.
        LogPrintf(OutputEdit, "\tDuration: %s second(s)\r\n", timeoutText);
        RunWait(nullptr, timeout, false);
        return 1;
    }
    if (ContainsNoCase(action, "Delay")) {
        LogPrintf(OutputEdit, "\tDuration: %s second(s)\r\n", timeoutText);
        return Delay(start, timeout);
    }
    // Each wait that fails says what it waited for and how long; the words
    // are reported when the step's time is over (a one-shot wait is tried
    // again until then).
    const char* seconds = timeoutText[0] ? timeoutText : "0";
    if (ContainsNoCase(action, "Keypress") || ContainsNoCase(action, "Mouse Click")) {
        if (KeyWait(tab, step, action, start, timeout)) return 1;
        if (ContainsNoCase(action, "Mouse Click"))
            FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No mouse click within %s seconds", seconds);
        else if (TextOf(s.text)[0])
            FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Key %s was not pressed within %s seconds",
                        TextCut(TextOf(s.text), 200).c_str(), seconds);
        else
            FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No key was pressed within %s seconds", seconds);
        return 0;
    }
    if (ContainsNoCase(action, "Mouse Move")) {
        if (MouseMoveWait(start, timeout)) return 1;
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "The mouse did not move within %s seconds", seconds);
        return 0;
    }
    int result = 1;
    const char* what = nullptr;
    const char* verb = "appear";
    if (ContainsNoCase(action, "Pixel")) {
        result = PixelWait(tab, step);
        what = "Pixel color";
    } else if (ContainsNoCase(action, "Image")) {
        result = ImageWait(tab, step);
        what = "Image";
    } else if (ContainsNoCase(action, "Wait for Window to Appear")) {
        result = WindowWait(tab, step, true);
        what = "Window";
    } else if (ContainsNoCase(action, "Wait for Window to Disappear")) {
        result = WindowWait(tab, step, false);
        what = "Window";
        verb = "disappear";
    } else if (ContainsNoCase(action, "Wait for File")) {
        result = FileWait(tab, step);
        what = "File";
    }
    if (result || !what || StepFailureText[0]) return result;
    TranslateText(s.text, tab, step);
    FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "%s '%s' did not %s within %s seconds", what,
                TextCut(TranslatedText, 900).c_str(), verb, seconds);
    return 0;
}
