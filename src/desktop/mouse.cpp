// Category 6. Moves glide in small steps so that the target program sees a
// moving mouse; the final SetCursorPos puts the pointer exactly on target.
#include "base/text.h"
#include "desktop/mouse.h"

#include <stdio.h>
#include <string.h>

#include "desktop/pause.h"
#include "desktop/pointer.h"
#include "desktop/searchfields.h"
#include "desktop/windowcontrol.h"
#include "desktop/windowmatch.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "script/step.h"
#include "base/words.h"

namespace {

// One absolute move, in the 0 to 0xFFFF scale across the screen.
void MoveAbsolute(int x, int y) {
    const int width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    mouse_event(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE, (DWORD)(x * 0xFFFF / width), (DWORD)(y * 0xFFFF / height), 0,
                0);
}

// Glides in `moves` moves by `step`, 25 ms apart, then lands on the target.
void GlideTo(POINT from, int dx, int dy, int moves, int x, int y) {
    for (int i = 0; i < moves; i++) {
        from.x += dx;
        from.y += dy;
        MoveAbsolute(from.x, from.y);
        DesktopSleep(25);
    }
    PlacePointer(x, y);
}

// 20 moves, or 8 for a way too short for 20 (500 ms or 200 ms in all).
void Glide(int x, int y) {
    POINT c;
    GetCursorPos(&c);
    int dx = (x - c.x) / 20, dy = (y - c.y) / 20, moves = 20;
    if (!dx && !dy) {
        dx = (x - c.x) / 8;
        dy = (y - c.y) / 8;
        moves = 8;
    }
    GlideTo(c, dx, dy, moves, x, y);
}

// The buttons carry the point where the pointer was placed: under Wine a
// press that comes right after a move can otherwise land where the pointer
// was before it, as the display reports the old place once more.
void Buttons(DWORD first, DWORD second) {
    POINT p;
    GetCursorPos(&p);
    const int width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    const DWORD x = (DWORD)(p.x * 0xFFFF / width), y = (DWORD)(p.y * 0xFFFF / height);
    const DWORD at = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    mouse_event(first | at, x, y, 0, 0);
    mouse_event(second | at, x, y, 0, 0);
}

// "Move to Window" and "Move to Control": no ambiguity test here.
int MoveToWindow(int tab, int step, const char* action) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.text, tab, step);
    char criteria[FIELD_LONG * 4];
    CopyIntoN(criteria, sizeof criteria, TranslatedText);
    HWND window = FindWindowByCriteria(MainWindow, MatchFlagsFromOptions(s.options), criteria, 0);
    if (!window) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to find window '%s'", criteria);
        return 0;
    }
    ForceForeground(window);
    MoveMouseToWindow(window, ContainsNoCase(action, "Move to Control") ? 2 : 1, !ContainsNoCase(s.value[0], "Snap"));
    return 1;
}

// The image actions: the target is the centre of the image found; its
// top-left corner is saved as the step's output. A miss has no words: the
// failure mode reports the step as it stands.
bool ImageTarget(int tab, int step, int* x, int* y) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    char name[MAX_PATH];
    CopyIntoN(name, sizeof name, TranslatedText);
    int left = 0, top = 0, width = 0, height = 0;
    if (!FindImageAndSave(tab, step, name, &left, &top, &width, &height)) return false;
    *x = left + width / 2;
    *y = top + height / 2;
    return true;
}

bool UsableWindow(HWND w) {
    return w && IsWindow(w) && (GetWindowLongA(w, GWL_STYLE) & WS_VISIBLE) && IsWindowVisible(w);
}

}  // namespace

void MoveMouseToWindow(HWND window, int mode, int glide) {
    if (!window || !IsWindow(window)) return;
    RECT r;
    GetWindowRect(window, &r);
    int x = r.left, y = r.top;
    if (mode == 2) {
        x = (r.right - r.left) / 2 + r.left;
        y = (r.bottom - r.top) / 2 + r.top;
    }
    if (!glide) {
        PlacePointer(x, y);
        return;
    }
    POINT c;
    GetCursorPos(&c);
    GlideTo(c, (x - c.x) / 20, (y - c.y) / 20, 20, x, y);
}

int ActMouse(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    CopyIntoN(action, sizeof action, s.action);

    int x = 0, y = 0;
    if (ContainsNoCase(action, "Return to Saved Position")) {
        x = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "UserVariables\\SavedMousePosition_X");
        y = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "UserVariables\\SavedMousePosition_Y");
    } else if (ContainsNoCase(action, "Move to Control") || ContainsNoCase(action, "Move to Window")) {
        return MoveToWindow(tab, step, action);
    } else if (ContainsNoCase(action, "Image")) {
        if (!ImageTarget(tab, step, &x, &y)) return 0;
    } else {
        TranslateText(s.text, tab, step);
        char first[FIELD_LONG * 4];
        CopyIntoN(first, sizeof first, TranslatedText);
        char* comma = strchr(first, ',');
        if (comma) *comma = 0;
        x = ParseInt(first);
        y = comma ? ParseInt(comma + 1) : 0;
    }

    // The move: a point of (0, 0), as a click step usually has, clicks in place.
    if ((x || y) && !ContainsNoCase(action, "Save Current Position") && !ContainsNoCase(action, "Wheel")) {
        if (ContainsNoCase(s.options, "window")) {
            if (!UsableWindow(LastWindow)) {
                DesktopSleep(250);
                LastWindow = GetForegroundWindow();
            }
            RECT r = {};
            GetWindowRect(LastWindow, &r);
            x += r.left;
            y += r.top;
        } else if (ContainsNoCase(s.options, "current")) {
            POINT p;
            GetCursorPos(&p);
            x += p.x;
            y += p.y;
        }
        if (!x && !y && !ContainsNoCase(action, "Move"))
            ShowCursor(TRUE);
        else if (ContainsNoCase(s.value[0], "Snap"))
            PlacePointer(x, y);
        else
            Glide(x, y);
        if (ContainsNoCase(action, "Click on Image") || ContainsNoCase(action, "Click on Masked Image"))
            Buttons(MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP);
    }

    // The buttons and the wheel, wherever the pointer is now.
    if (ContainsNoCase(action, "Left Button Click")) {
        Buttons(MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP);
    } else if (ContainsNoCase(action, "Right Button Click")) {
        Buttons(MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP);
    } else if (ContainsNoCase(action, "Left Button Double-Click")) {
        Buttons(MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP);
        DesktopSleep(GetDoubleClickTime() / 2);
        Buttons(MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP);
    } else if (ContainsNoCase(action, "Left Button Down + Hold")) {
        LeftButtonHeld = 1;
        mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
    } else if (ContainsNoCase(action, "Left Button Up")) {
        LeftButtonHeld = 0;
        mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
    } else if (ContainsNoCase(action, "Mouse Wheel Up")) {
        mouse_event(MOUSEEVENTF_WHEEL, 0, 0, 120, 0);
    } else if (ContainsNoCase(action, "Mouse Wheel Down")) {
        mouse_event(MOUSEEVENTF_WHEEL, 0, 0, (DWORD)-120, 0);
    } else if (ContainsNoCase(action, "Save Current Position")) {
        POINT p;
        GetCursorPos(&p);
        WriteSetting(nullptr, nullptr, p.x, nullptr, ZR_ROOT "UserVariables\\SavedMousePosition_X");
        WriteSetting(nullptr, nullptr, p.y, nullptr, ZR_ROOT "UserVariables\\SavedMousePosition_Y");
    }
    return 1;
}
