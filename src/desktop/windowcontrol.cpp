// Activation, pressing and closing of windows of other programs.
#include "desktop/windowcontrol.h"

#include "desktop/keypress.h"
#include "desktop/pointer.h"
#include "desktop/pause.h"
#include "base/handles.h"

namespace {

// The system's own measure of a program that is not responding: five
// seconds without taking a message.
const UINT kHungMs = 5000;

struct QuestionSearch {
    HWND window;
    DWORD thread;
    HWND found;
};

// A question holds its window: the window is disabled while an enabled,
// visible window that it owns, or one of its thread, waits for an answer. A
// modeless window it owns (a palette, a details window) asks nothing.
BOOL CALLBACK FindQuestion(HWND candidate, LPARAM param) {
    QuestionSearch* s = (QuestionSearch*)param;
    if (candidate == s->window || !IsWindowVisible(candidate) || !IsWindowEnabled(candidate)) return TRUE;
    const HWND owner = GetWindow(candidate, GW_OWNER);
    const bool owned = owner && (owner == s->window || GetAncestor(owner, GA_ROOTOWNER) == s->window);
    if (!owned && GetWindowThreadProcessId(candidate, nullptr) != s->thread) return TRUE;
    s->found = candidate;
    return FALSE;
}

void EndProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    AutoCloseHandle handle(OpenProcess(0x1F0FFF, FALSE, process));
    if (handle.ok()) TerminateProcess(handle.h, 0);
}

// AttachThreadInput in one order, or else in the other.
void AttachInput(DWORD a, DWORD b, BOOL attach) {
    if (!AttachThreadInput(a, b, attach)) AttachThreadInput(b, a, attach);
}

}  // namespace

bool SendWithin(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT limitMs, DWORD_PTR* result) {
    DWORD_PTR answer = 0;
    bool answered;
    if (message == WM_GETTEXTLENGTH) {
        // Wine's SendMessageTimeoutA waits for this one without any limit,
        // hung window or not; the wide form keeps the limit. It counts UTF-16
        // units, each at most three bytes of ANSI (UTF-8) text.
        answered = SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, limitMs, &answer);
        answer *= 3;
    } else {
        answered = SendMessageTimeoutA(window, message, wParam, lParam, SMTO_ABORTIFHUNG, limitMs, &answer);
    }
    if (result) *result = answered ? answer : 0;
    return answered;
}

void WindowTextWithin(HWND window, char* out, size_t size, UINT limitMs) {
    if (!out || !size) return;
    out[0] = 0;
    if (!SendWithin(window, WM_GETTEXT, size, (LPARAM)out, limitMs)) out[0] = 0;
    out[size - 1] = 0;
}

bool InThisProcess(HWND window) {
    DWORD pid = 0;
    GetWindowThreadProcessId(window, &pid);
    return pid == GetCurrentProcessId();
}

bool WindowAnswers(HWND window, UINT limitMs) { return window && SendWithin(window, WM_NULL, 0, 0, limitMs); }

int ControlKind(HWND window) {
    if (!window || !IsWindow(window)) return KIND_OTHER;
    char className[64] = "";
    GetClassNameA(window, className, sizeof className);
    const LONG style = GetWindowLongA(window, GWL_STYLE);
    const bool button = lstrcmpiA(className, "Button") == 0;
    if (button && (style & 9) == 9) return KIND_AUTORADIO;
    if (lstrcmpiA(className, "Static") == 0 || (button && (style & 7) == 7)) return KIND_LABEL;
    if (button && (style & 3) == 3) return KIND_AUTOCHECK;
    if (button) return KIND_BUTTON;
    if (lstrcmpiA(className, "Edit") == 0) return (style & ES_MULTILINE) ? KIND_MULTILINE_EDIT : KIND_EDIT;
    if (lstrcmpiA(className, "ComboBox") == 0) return KIND_COMBOBOX;
    if (lstrcmpiA(className, "ListBox") == 0) return KIND_LISTBOX;
    if (lstrcmpiA(className, "ScrollBar") == 0) return KIND_SCROLLBAR;
    return KIND_OTHER;
}

HWND SkipStaticControl(HWND window) {
    if (ControlKind(window) != KIND_LABEL) return window;
    HWND w = window;
    for (int i = 0; i < 1024; i++) {
        w = GetNextDlgTabItem(GetParent(w), w, FALSE);
        if (ControlKind(w) != KIND_LABEL) return w;
    }
    return window;
}

void ForceForeground(HWND window) {
    if (!window || !IsWindow(window)) return;
    if (GetForegroundWindow() == window && !IsIconic(window)) return;
    if (!SendWithin(window, WM_SYSCOMMAND, SC_HOTKEY, (LPARAM)window)) return;
    if (ControlKind(window) == KIND_LABEL) {
        HWND next = SkipStaticControl(window);
        if (ControlKind(next) == KIND_EDIT) SendWithin(next, EM_SETSEL, 0, -1);
    }
    const DWORD foregroundThread = GetWindowThreadProcessId(GetForegroundWindow(), nullptr);
    const DWORD currentThread = GetCurrentThreadId();
    AttachInput(foregroundThread, currentThread, TRUE);
    SetForegroundWindow(window);
    BringWindowToTop(window);
    SetFocus(window);
    AttachInput(foregroundThread, currentThread, FALSE);
    // Some systems (Wine among them) drop the foreground when the input
    // queues part again; take it once more, now as the foreground's owner.
    if (GetForegroundWindow() != GetAncestor(window, GA_ROOT)) SetForegroundWindow(window);
    HWND parent = GetParent(window);
    if (parent && IsIconic(parent)) ShowWindow(parent, SW_RESTORE);
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    ShowWindow(window, SW_SHOW);
}

HWND PressControl(HWND window) {
    if (!window || !IsWindow(window)) return nullptr;
    const int kind = ControlKind(window);
    ForceForeground(GetParent(window));
    HWND control = SkipStaticControl(window);
    RECT r;
    GetWindowRect(control, &r);
    PlacePointer((r.right - r.left) / 2 + r.left, (r.bottom - r.top) / 2 + r.top);
    if (kind == KIND_EDIT) {
        SetFocus(control);
        SendWithin(control, EM_SETSEL, 0, -1);
        UpdateWindow(control);
        SetFocus(control);
    } else {
        SetFocus(control);
        mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
        DesktopSleep(50);
        mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
        DesktopSleep(50);
        UpdateWindow(control);
        SetFocus(control);
    }
    return control;
}

HWND SmallestWindowAtPoint(POINT point) {
    HWND window = WindowFromPoint(point);
    if (!window) return nullptr;
    HWND parent = GetParent(window);
    if (!parent) return window;
    HWND best = window;
    RECT r;
    GetWindowRect(window, &r);
    long long bestArea = (long long)(r.right - r.left) * (r.bottom - r.top);
    for (HWND w = GetWindow(window, GW_HWNDNEXT); w; w = GetWindow(w, GW_HWNDNEXT)) {
        GetWindowRect(w, &r);
        const long long area = (long long)(r.right - r.left) * (r.bottom - r.top);
        if (PtInRect(&r, point) && GetParent(w) == parent && IsWindowVisible(w) && area < bestArea) {
            best = w;
            bestArea = area;
        }
    }
    return best;
}

int CloseWindowForcibly(HWND window, int timeoutMs) {
    if (timeoutMs < 250) timeoutMs = 250;
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutA(window, WM_CLOSE, 0, 0, SMTO_ABORTIFHUNG, (UINT)timeoutMs, &result))
        EndProcessOf(window);
    DesktopSleep(250);
    if (!IsWindow(window)) return 1;
    PostMessageA(window, WM_CLOSE, 0, 0);
    DesktopSleep(250);
    if (!IsWindow(window)) return 1;
    DestroyWindow(window);
    DesktopSleep(250);
    if (!IsWindow(window)) return 1;
    ForceForeground(window);
    PressKey(VK_MENU, 0, KEY_DOWN);
    PressKey(VK_F4, 0, KEY_DOWN);
    PressKey(VK_F4, 0, KEY_UP);
    PressKey(VK_MENU, 0, KEY_UP);
    return 1;
}

HWND QuestionOf(HWND window) {
    if (!window || !IsWindow(window) || IsWindowEnabled(window)) return nullptr;
    QuestionSearch search = {window, GetWindowThreadProcessId(window, nullptr), nullptr};
    EnumWindows(FindQuestion, (LPARAM)&search);
    return search.found;
}

CloseOutcome CloseWindowPolitely(HWND window, int timeoutMs, HWND* question) {
    if (timeoutMs < 250) timeoutMs = 250;
    *question = QuestionOf(window);
    // A question already up is the program's answer to an earlier close:
    // asking again would stack a second one on it.
    if (*question) return CLOSE_ASKING;
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutA(window, WM_CLOSE, 0, 0, SMTO_ABORTIFHUNG, (UINT)timeoutMs, &result) &&
        !WindowAnswers(window, kHungMs)) {
        // The send gave up, and the program takes no message at all (a
        // program asking its question still does): it is hung.
        EndProcessOf(window);
        for (int i = 0; i < 40 && IsWindow(window); i++) DesktopSleep(50);
        return CLOSE_ENDED;
    }
    // The close was taken; a program that asks goes on taking messages
    // while its question is up, and one that saves may take a moment.
    const int polls = timeoutMs / 50 > 10 ? timeoutMs / 50 : 10;
    for (int i = 0;; i++) {
        if (!IsWindow(window)) return CLOSE_DONE;
        if ((*question = QuestionOf(window)) != nullptr) return CLOSE_ASKING;
        if (i == polls) return CLOSE_REFUSED;
        DesktopSleep(50);
    }
}
