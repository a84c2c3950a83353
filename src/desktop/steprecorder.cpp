// Recording as steps: the hooks, and the turning of what they saw into steps.
#include "desktop/steprecorder.h"

#include <stdio.h>
#include <string.h>

#include <map>
#include <set>

#include "base/text.h"
#include "base/words.h"
#include "desktop/windowcontrol.h"
#include "desktop/keynames.h"
#include "desktop/menuchoice.h"
#include "desktop/windowmatch.h"
#include "run/runstate.h"

namespace {

HANDLE RecorderThread;
DWORD RecorderThreadId;
HANDLE RecorderReady;
// The events are worked out on a thread of their own, so that the hooks'
// thread is always free to answer the next event at once.
HANDLE WorkerThread;
DWORD WorkerThreadId;
HANDLE WorkerReady;
bool RecorderStarted;
HWND Notify;
UINT DoneMessage;
WPARAM DoneParam;
HHOOK KeyHook, MouseHook;
bool HeldShift_, HeldCtrl_, HeldAlt_;
std::vector<StepEvent> Events;  // the worker's, read once both threads have ended
std::set<HWND> WindowsAtStart;
DWORD EditorThreadId;   // the thread of the window told of the stop key: its windows are not the user's work
MenuKeyState KeyMenu;   // the hooks' own: where keyboard work in a menu stands

void WithoutAmpersands(char* text) {
    char* to = text;
    for (const char* from = text; *from; from++)
        if (*from != '&') *to++ = *from;
    *to = 0;
}

// The criteria text must name the control alone: found by the same search a
// step makes, and not one of several.
bool ResolvesTo(HWND own, HWND control, int flags, const char* criteria) {
    HWND found = FindWindowByCriteria(own, flags, criteria, 0);
    return found == control && TopLevelMatches <= 1 && ChildMatches <= 1;
}

bool IsListClass(const char* cls) {
    return lstrcmpiA(cls, "ListBox") == 0 || lstrcmpiA(cls, "ComboLBox") == 0 ||
           lstrcmpiA(cls, "SysListView32") == 0 || lstrcmpiA(cls, "SysTreeView32") == 0;
}

// Titles, read once a window while the recording lasts, so that a window
// that has closed by the time its event is worked out still has its name.
std::map<HWND, std::string> Titles;

void TitleOf(StepEvent& e) {
    if (e.title[0]) {
        Titles.insert_or_assign(e.top, e.title);
        return;
    }
    auto it = Titles.find(e.top);
    if (it == Titles.end() || it->second.empty()) {
        char title[260];
        WindowTextWithin(e.top, title, sizeof title, 1000);
        it = Titles.insert_or_assign(e.top, title).first;
    }
    CopyInto(e.title, it->second.c_str());
}

// In the hook only what costs no message to another thread: the hook holds
// the user's input back while it runs, and under Wine a slow hook loses it.
// The rest is worked out by the worker right after, in order.
void Queue(StepEvent& e) {
    e.newWindow = WindowsAtStart.find(e.top) == WindowsAtStart.end();
    // The title as the system keeps it, without a message: the worker may
    // come to the event only after the window has closed.
    WCHAR title[260];
    if (InternalGetWindowText(e.top, title, 260) > 0)
        WideCharToMultiByte(CP_ACP, 0, title, -1, e.title, sizeof e.title, nullptr, nullptr);
    StepEvent* copy = new StepEvent(e);
    if (!PostThreadMessageA(WorkerThreadId, WM_APP, 0, (LPARAM)copy)) delete copy;
}

// The editor's own windows, and anything while a script runs (its input is
// not the user's work), are left out. Other windows of this process count:
// a window on a thread of its own is as foreign to the editor as another
// program's, and a menu only the process that owns it can read is tried so.
bool LeftOut(HWND w) { return GetWindowThreadProcessId(w, nullptr) == EditorThreadId || RunThread; }

void SeeClick(POINT pt) {
    HWND target = WindowFromPoint(pt);
    if (!target || LeftOut(target)) return;
    KeyMenu.open = nullptr;
    StepEvent e = {};
    e.kind = 1;
    e.target = target;
    e.pt = pt;
    GetClassNameA(target, e.cls, sizeof e.cls);
    // A popup menu is a top-level window of its own: the click belongs to
    // the window in front, whose menu it is.
    e.top = GetAncestor(strcmp(e.cls, "#32768") == 0 ? GetForegroundWindow() : target, GA_ROOT);
    RECT r;
    GetWindowRect(e.top, &r);
    e.inWindow = {pt.x - r.left, pt.y - r.top};
    e.click = CLICK_AT_POINT;
    // A menu is read now, while it shows: the click closes it. A menu that
    // cannot be read (under Wine, any other program's) leaves the click a
    // point, which replays as it was made.
    const bool onPopup = strcmp(e.cls, "#32768") == 0;
    if (onPopup || target == e.top) {
        const int menu = MenuClick(e.top, pt, onPopup, e.menuPath, sizeof e.menuPath);
        if (menu == MENU_CHOSEN) e.click = CLICK_MENU_ITEM;
        if (menu == MENU_MOVE) e.click = CLICK_MENU_OPEN;
    }
    if (target != e.top && !onPopup) {
        e.onControl = true;
        e.id = GetDlgCtrlID(target);
        RECT c;
        GetWindowRect(target, &c);
        e.fromCentre = {pt.x - ((c.right - c.left) / 2 + c.left), pt.y - ((c.bottom - c.top) / 2 + c.top)};
    }
    Queue(e);
}

void ResolveClick(StepEvent& e) {
    if (e.click != CLICK_AT_POINT || !e.onControl) return;
    HWND target = e.target;
    const char* cls = e.cls;
    WindowTextWithin(target, e.text, sizeof e.text, 1000);
    WithoutAmpersands(e.text);
    const bool hasId = e.id != 0 && e.id != -1 && e.id != 0xFFFF;
    ControlCriteria(Notify, target, e.criteria, sizeof e.criteria, e.options, sizeof e.options);
    // A button that closes its window (OK, Cancel) may be gone before the
    // search could be tried on it: its class and ID still name it.
    if (!e.criteria[0] && hasId && !IsWindow(target)) {
        FormatInto(e.criteria, "%s|%d", cls, e.id);
        CopyInto(e.options, "Class, ID");
        e.unchecked = true;
    }
    if (e.criteria[0]) e.click = IsListClass(cls) ? CLICK_LIST_ITEM : CLICK_PRESS;
}

void Resolve(StepEvent& e) {
    TitleOf(e);
    if (e.kind == 1) ResolveClick(e);
}

DWORD WINAPI WorkerMain(void*) {
    MSG msg;
    PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE);  // the thread's queue, before anything is posted
    SetEvent(WorkerReady);
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (msg.message != WM_APP) continue;
        StepEvent* e = (StepEvent*)msg.lParam;
        Resolve(*e);
        Events.push_back(*e);
        delete e;
    }
    return 0;
}

bool PopupMenuShowing() {
    for (HWND w = FindWindowExA(nullptr, nullptr, "#32768", nullptr); w;
         w = FindWindowExA(nullptr, w, "#32768", nullptr)) {
        RECT r;
        // Hidden popup windows are kept around: only a visible one with a
        // size counts.
        if (IsWindowVisible(w) && GetWindowRect(w, &r) && r.right > r.left && !LeftOut(w)) return true;
    }
    return false;
}

void SeeKey(int vk) {
    HWND front = GetForegroundWindow();
    if (!front || LeftOut(front)) return;
    StepEvent e = {};
    e.kind = 2;
    e.top = GetAncestor(front, GA_ROOT);
    e.vk = vk;
    e.shift = HeldShift_;
    e.ctrl = HeldCtrl_;
    e.alt = HeldAlt_;
    e.menuOpen = PopupMenuShowing();
    // As with a click, the menu is read before the key changes it.
    e.menuKey = MenuKey(e.top, vk, e.alt, e.ctrl, &KeyMenu, e.menuPath, sizeof e.menuPath);
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    if (GetGUIThreadInfo(GetWindowThreadProcessId(front, nullptr), &info)) e.focus = info.hwndFocus;
    if (e.focus) {
        GetClassNameA(e.focus, e.focusClass, sizeof e.focusClass);
        e.focusId = GetDlgCtrlID(e.focus);
    }
    Queue(e);
}

LRESULT CALLBACK KeyProc(int code, WPARAM wp, LPARAM lp) {
    if (code == HC_ACTION) {
        const KBDLLHOOKSTRUCT* k = (const KBDLLHOOKSTRUCT*)lp;
        const bool down = wp == WM_KEYDOWN || wp == WM_SYSKEYDOWN;
        const int vk = (int)k->vkCode;
        if (vk == (StopKey & 0xFF)) {
            // The stop key ends the recording and reaches nobody.
            if (down) PostMessageA(Notify, DoneMessage, DoneParam, 0);
            return 1;
        }
        switch (vk) {
        case VK_SHIFT: case VK_LSHIFT: case VK_RSHIFT: HeldShift_ = down; break;
        case VK_CONTROL: case VK_LCONTROL: case VK_RCONTROL: HeldCtrl_ = down; break;
        case VK_MENU: case VK_LMENU: case VK_RMENU: HeldAlt_ = down; break;
        default:
            if (down) SeeKey(vk);
        }
    }
    return CallNextHookEx(KeyHook, code, wp, lp);
}

LRESULT CALLBACK MouseProc(int code, WPARAM wp, LPARAM lp) {
    if (code == HC_ACTION && wp == WM_LBUTTONDOWN) SeeClick(((const MSLLHOOKSTRUCT*)lp)->pt);
    return CallNextHookEx(MouseHook, code, wp, lp);
}

BOOL CALLBACK NoteWindow(HWND w, LPARAM) {
    WindowsAtStart.insert(w);
    return TRUE;
}

DWORD WINAPI RecorderMain(void*) {
    HINSTANCE self = GetModuleHandleA(nullptr);
    KeyHook = SetWindowsHookExA(WH_KEYBOARD_LL, KeyProc, self, 0);
    MouseHook = SetWindowsHookExA(WH_MOUSE_LL, MouseProc, self, 0);
    RecorderStarted = KeyHook && MouseHook;
    MSG msg;
    PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE);  // the thread's queue, for WM_QUIT
    SetEvent(RecorderReady);
    if (RecorderStarted) {
        while (GetMessageA(&msg, nullptr, 0, 0) > 0) DispatchMessageA(&msg);
    }
    if (KeyHook) UnhookWindowsHookEx(KeyHook);
    if (MouseHook) UnhookWindowsHookEx(MouseHook);
    KeyHook = MouseHook = nullptr;
    return 0;
}

// The title a step names a window by: the whole title where that finds it,
// else the part after the last " - " (where programs put their own name).
void StableTitle(const StepEvent& e, char* out, size_t size) {
    CopyIntoN(out, size, e.title);
    const char* dash = nullptr;
    for (const char* p = strstr(e.title, " - "); p; p = strstr(p + 1, " - ")) dash = p;
    if (dash && dash[3] && FindWindowByCriteria(Notify, MATCH_TITLE, dash + 3, 0) == e.top) CopyIntoN(out, size, dash + 3);
}

RecordedStep Step(const char* action, const std::string& text, const char* options, const std::string& comment) {
    RecordedStep s = {};
    CopyInto(s.action, action);
    s.text = text;
    CopyInto(s.options, options);
    s.comment = comment;
    return s;
}

std::string Describe(const char* cls, int id, const char* text) {
    char out[300];
    if (text[0])
        FormatInto(out, "the %s '%s'", cls, text);
    else
        FormatInto(out, "the %s", cls);
    std::string s = out;
    if (id != 0 && id != -1 && id != 0xFFFF) {
        FormatInto(out, " (ID %d)", id);
        s += out;
    }
    return s;
}

}  // namespace

bool ControlCriteria(HWND own, HWND control, char* criteria, size_t size, char* options, size_t optionsSize) {
    criteria[0] = options[0] = 0;
    char cls[64] = "", text[128];
    GetClassNameA(control, cls, sizeof cls);
    WindowTextWithin(control, text, sizeof text, 1000);
    WithoutAmpersands(text);
    const int id = GetDlgCtrlID(control);
    const bool hasId = id != 0 && id != -1 && id != 0xFFFF;
    // By class and ID first, as a form's IDs do not change; then the
    // control's text where the ID alone is shared or missing.
    char tried[300];
    if (hasId) {
        FormatInto(tried, "%s|%d", cls, id);
        if (ResolvesTo(own, control, MATCH_CLASS | MATCH_ID, tried)) {
            CopyIntoN(criteria, size, tried);
            CopyIntoN(options, optionsSize, "Class, ID");
            return true;
        }
    }
    if (!text[0]) return false;
    FormatInto(tried, "%s|%s", text, cls);
    if (ResolvesTo(own, control, MATCH_TITLE | MATCH_CLASS, tried)) {
        CopyIntoN(criteria, size, tried);
        CopyIntoN(options, optionsSize, "Title, Class");
        return true;
    }
    if (!hasId) return false;
    FormatInto(tried, "%s|%s|%d", text, cls, id);
    if (!ResolvesTo(own, control, MATCH_TITLE | MATCH_CLASS | MATCH_ID, tried)) return false;
    CopyIntoN(criteria, size, tried);
    CopyIntoN(options, optionsSize, "Title, Class, ID");
    return true;
}

bool StartStepRecorder(HWND notify, UINT doneMessage, WPARAM doneParam) {
    if (RecorderThread) return false;
    Notify = notify;
    DoneMessage = doneMessage;
    DoneParam = doneParam;
    Events.clear();
    Titles.clear();
    WindowsAtStart.clear();
    EnumWindows(NoteWindow, 0);
    HeldShift_ = HeldCtrl_ = HeldAlt_ = false;
    KeyMenu = {};
    EditorThreadId = GetWindowThreadProcessId(notify, nullptr);
    WorkerReady = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    WorkerThread = CreateThread(nullptr, 0, WorkerMain, nullptr, 0, &WorkerThreadId);
    if (!WorkerThread) {
        CloseHandle(WorkerReady);
        return false;
    }
    WaitForSingleObject(WorkerReady, 5000);
    CloseHandle(WorkerReady);
    RecorderReady = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    RecorderThread = CreateThread(nullptr, 0, RecorderMain, nullptr, 0, &RecorderThreadId);
    if (!RecorderThread) {
        CloseHandle(RecorderReady);
        StopStepRecorder();
        return false;
    }
    WaitForSingleObject(RecorderReady, 5000);
    CloseHandle(RecorderReady);
    if (!RecorderStarted) {
        WaitForSingleObject(RecorderThread, 5000);
        CloseHandle(RecorderThread);
        RecorderThread = nullptr;
        StopStepRecorder();
        return false;
    }
    return true;
}

bool StepRecorderRunning() { return RecorderThread != nullptr; }

std::vector<StepEvent> StopStepRecorder() {
    if (RecorderThread) {
        PostThreadMessageA(RecorderThreadId, WM_QUIT, 0, 0);
        WaitForSingleObject(RecorderThread, 5000);
        CloseHandle(RecorderThread);
        RecorderThread = nullptr;
    }
    // The worker ends after the events the hooks posted before it.
    if (WorkerThread) {
        PostThreadMessageA(WorkerThreadId, WM_QUIT, 0, 0);
        WaitForSingleObject(WorkerThread, 10000);
        CloseHandle(WorkerThread);
        WorkerThread = nullptr;
    }
    std::vector<StepEvent> seen;
    seen.swap(Events);
    return seen;
}

std::string KeyAsTypeText(int vk, bool shift, bool ctrl, bool alt) {
    char key[16] = "";
    if (vk >= 'A' && vk <= 'Z') {
        key[0] = (char)(shift && !ctrl && !alt ? vk : vk - 'A' + 'a');
    } else if (vk >= '0' && vk <= '9') {
        key[0] = shift ? ShiftedChar((char)vk, 1) : (char)vk;
    } else if (vk == VK_SPACE) {
        key[0] = ' ';
    } else if (vk >= VK_NUMPAD0 && vk <= VK_NUMPAD9) {
        key[0] = (char)('0' + vk - VK_NUMPAD0);
    } else if (vk >= VK_F1 && vk <= VK_F24) {
        FormatInto(key, "{F%d}", vk - VK_F1 + 1);
    } else {
        static const struct { int vk; const char* plain; const char* shifted; } kKeys[] = {
            {VK_TAB, "{TAB}", nullptr},        {VK_RETURN, "{ENTER}", nullptr},  {VK_BACK, "{BACKSPACE}", nullptr},
            {VK_ESCAPE, "{ESC}", nullptr},     {VK_DELETE, "{DEL}", nullptr},    {VK_INSERT, "{INSERT}", nullptr},
            {VK_HOME, "{HOME}", nullptr},      {VK_END, "{END}", nullptr},       {VK_PRIOR, "{PGUP}", nullptr},
            {VK_NEXT, "{PGDN}", nullptr},      {VK_LEFT, "{LEFT}", nullptr},     {VK_RIGHT, "{RIGHT}", nullptr},
            {VK_UP, "{UP}", nullptr},          {VK_DOWN, "{DOWN}", nullptr},     {0xBA, ";", ":"},
            {0xBB, "=", "+"},                  {0xBC, ",", "<"},                 {0xBD, "-", "_"},
            {0xBE, ".", ">"},                  {0xBF, "/", "?"},                 {0xC0, "`", "~"},
            {0xDB, "[", "{"},                  {0xDC, "\\", "|"},                {0xDD, "]", "}"},
            {0xDE, "'", "\""},                 {VK_MULTIPLY, "*", nullptr},      {VK_ADD, "+", nullptr},
            {VK_SUBTRACT, "-", nullptr},       {VK_DECIMAL, ".", nullptr},       {VK_DIVIDE, "/", nullptr},
        };
        for (const auto& k : kKeys) {
            if (k.vk != vk) continue;
            if (shift && k.shifted) {
                CopyInto(key, k.shifted);
                shift = false;
            } else {
                CopyInto(key, k.plain);
            }
            break;
        }
        if (!key[0]) return "";
        // A named key pressed with Shift needs Shift held around it.
        if (shift && key[0] == '{') {
            std::string s = "{SHIFTDOWN}";
            s += key;
            key[0] = 0;
            return (ctrl ? "{CTRLDOWN}" : "") + s + "{SHIFTUP}" + (ctrl ? "{CTRLUP}" : "");
        }
    }
    std::string s = key;
    if (alt) s = "{ALTDOWN}" + s + "{ALTUP}";
    if (ctrl) s = "{CTRLDOWN}" + s + "{CTRLUP}";
    return s;
}

std::vector<RecordedStep> StepsFromEvents(const std::vector<StepEvent>& input) {
    // A window busy when its first event was worked out may have given no
    // title then: any later event in it names it.
    std::vector<StepEvent> events = input;
    std::map<HWND, std::string> named;
    for (const StepEvent& e : events)
        if (e.title[0] && !named.count(e.top)) named[e.top] = e.title;
    for (StepEvent& e : events)
        if (!e.title[0] && named.count(e.top)) CopyInto(e.title, named[e.top].c_str());
    std::vector<RecordedStep> steps;
    HWND active = nullptr;
    std::set<HWND> waited;
    char title[260] = "";
    // The typing in progress: one step while the focus stays in one control.
    std::string typed;
    std::string typedWhere;
    int menuStep = -1;  // the "Select Menu Item" that menu keys are adding to
    auto flush = [&]() {
        if (!typed.empty())
            steps.push_back(Step("Type", typed, "", "Recorded: keys typed into " + typedWhere));
        typed.clear();
    };
    auto bringForward = [&](const StepEvent& e) {
        if (e.top == active) return;
        flush();
        StableTitle(e, title, sizeof title);
        if (e.newWindow && !waited.count(e.top)) {
            waited.insert(e.top);
            RecordedStep w = Step("Wait for Window to Appear", title, "Title",
                                  std::string("Recorded: the window '") + e.title + "' opened");
            CopyInto(w.timeout, "10");
            steps.push_back(w);
        }
        steps.push_back(Step("Activate", title, "Title",
                             std::string("Recorded: work went on in the window '") + e.title + "'"));
        active = e.top;
    };
    for (const StepEvent& e : events) {
        if (e.kind == 2 && e.menuKey == MENU_MOVE) continue;  // the way to an item, not an item
        if (e.kind == 2 && e.menuKey == MENU_CHOSEN) {
            menuStep = -1;
            bringForward(e);
            flush();
            steps.push_back(Step("Select Menu Item", e.menuPath, "",
                                 std::string("Recorded: the menu item '") + e.menuPath +
                                     "' chosen with the keys in '" + e.title + "'"));
            continue;
        }
        if (e.kind == 2) {
            // A menu that could not be read (another program's, under Wine):
            // its letters, which the keyboard method of the step presses again.
            const bool letter = (e.vk >= 'A' && e.vk <= 'Z') || (e.vk >= '0' && e.vk <= '9');
            if (letter && e.alt && !e.ctrl) {
                // Alt and a letter open a menu; the letters that follow while it
                // shows choose in it.
                bringForward(e);
                flush();
                char path[8] = {(char)e.vk, 0};
                steps.push_back(Step("Select Menu Item", path, "",
                                     std::string("Recorded: menu keys in the window '") + e.title + "'"));
                menuStep = (int)steps.size() - 1;
                continue;
            }
            if (letter && e.menuOpen && menuStep == (int)steps.size() - 1 && menuStep >= 0) {
                char more[8] = {';', (char)e.vk, 0};
                steps[menuStep].text += more;
                continue;
            }
            menuStep = -1;
            const std::string key = KeyAsTypeText(e.vk, e.shift, e.ctrl, e.alt);
            if (key.empty()) continue;
            bringForward(e);
            // Keys merge while they go to one window: a {TAB} moves the focus
            // on, as the user meant, within the same typing.
            if (typed.empty()) {
                typedWhere = Describe(e.focusClass, e.focusId, "") + " of '" + e.title + "'";
            }
            typed += key;
            continue;
        }
        menuStep = -1;
        if (e.click == CLICK_MENU_OPEN) continue;
        bringForward(e);
        flush();
        char point[64];
        const std::string where = std::string(" in '") + e.title + "'";
        switch (e.click) {
        case CLICK_MENU_ITEM:
            steps.push_back(Step("Select Menu Item", e.menuPath, "",
                                 std::string("Recorded: the menu item '") + e.menuPath + "' chosen with the mouse" + where));
            break;
        case CLICK_PRESS:
            steps.push_back(Step("Press Button/Control", e.criteria, e.options,
                                 "Recorded: a click on " + Describe(e.cls, e.id, e.text) + where +
                                     (e.unchecked ? " (it closed before the search could be tried on it)" : "")));
            break;
        case CLICK_LIST_ITEM:
            steps.push_back(Step("Move to Control", e.criteria, e.options,
                                 "Recorded: a click on an item of " + Describe(e.cls, e.id, "") + where));
            FormatInto(point, "%ld, %ld", e.fromCentre.x, e.fromCentre.y);
            steps.push_back(Step("Left Button Click", point, "Current Position",
                                 std::string("Recorded: the item lies ") + point + " from the centre of the list"));
            break;
        default: {
            FormatInto(point, "%ld, %ld", e.inWindow.x, e.inWindow.y);
            steps.push_back(Step("Comment",
                                 std::string("The click below hit nothing with a window of its own, so it goes to ") +
                                     point + " from the upper left corner of '" + e.title +
                                     "': it follows the window when it moves, not a change of its layout.",
                                 "", ""));
            steps.push_back(Step("Left Button Click", point, "Window",
                                 std::string("Recorded: a click at ") + point + " of the window '" + e.title + "'"));
        }
        }
    }
    flush();
    return steps;
}

void CountControlClicks(const std::vector<StepEvent>& events, int* onControls, int* asControlSteps) {
    *onControls = *asControlSteps = 0;
    for (const StepEvent& e : events) {
        if (e.kind != 1 || !e.onControl) continue;
        ++*onControls;
        if (e.click == CLICK_PRESS || e.click == CLICK_LIST_ITEM) ++*asControlSteps;
    }
}
