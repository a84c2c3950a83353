// The Window Spy palette. A timer reads the window under the pointer; windows
// of this program are passed over, so that the pointer can go to the
// palette's buttons without losing what it showed. A global hot key
// (Ctrl+Shift+F) freezes the reading, as the pointer is usually over another
// program when the user wants to keep it.
#include "editor/windowspy.h"

#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/handles.h"
#include "base/heap.h"
#include "base/text.h"
#include "base/ui.h"
#include "desktop/windowcontrol.h"
#include "desktop/imagefile.h"
#include "desktop/steprecorder.h"
#include "desktop/windowmatch.h"
#include "editor/propertygrid.h"
#include "run/clipboard.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "script/properties.h"
#include "script/step.h"
#include "script/undo.h"

HWND SpyPalette;
SpyReading SpyNow;
bool SpyFrozen;

namespace {

enum {
    ID_SPY_FIELDS = 1,
    ID_SPY_STATUS = 2,
    ID_SPY_COPY = 10,
    ID_SPY_USE = 11,
    ID_SPY_CAPTURE = 12,
    SPY_TIMER = 1,
    SPY_HOTKEY = 1,
};

HWND Fields, Status;

void ProgramOf(DWORD pid, char* out, size_t size) {
    out[0] = 0;
    AutoCloseHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
    if (!process.h) return;
    DWORD length = (DWORD)size;
    if (!QueryFullProcessImageNameA(process.h, 0, out, &length)) out[0] = 0;
}

// A top-level window is named by its title, or its title and class when the
// title alone is shared; a control by what the recorder would write.
void FindCriteria(SpyReading& r) {
    r.criteria[0] = r.options[0] = 0;
    // The window search keeps its state in shared variables: a run or a
    // recording searching on a thread of its own must not be disturbed.
    if (RunThread || StepRecorderRunning()) return;
    if (r.window != r.top) {
        ControlCriteria(MainWindow, r.window, r.criteria, sizeof r.criteria, r.options, sizeof r.options);
        return;
    }
    if (!r.title[0]) return;
    char tried[330];
    FormatInto(tried, "%s", r.title);
    TopLevelMatches = 0;  // a lone title found whole leaves the counters as they were
    if (FindWindowByCriteria(MainWindow, MATCH_TITLE, tried, 0) == r.window && TopLevelMatches <= 1) {
        CopyInto(r.criteria, tried);
        CopyInto(r.options, "Title");
        return;
    }
    FormatInto(tried, "%s|%s", r.title, r.cls);
    TopLevelMatches = 0;
    if (FindWindowByCriteria(MainWindow, MATCH_TITLE | MATCH_CLASS, tried, 0) == r.window && TopLevelMatches <= 1) {
        CopyInto(r.criteria, tried);
        CopyInto(r.options, "Title, Class");
    }
}

void Read(SpyReading& r, POINT at, HWND window) {
    r = {};
    r.window = window;
    r.top = GetAncestor(window, GA_ROOT);
    r.screen = at;
    WindowTextWithin(r.top, r.title, sizeof r.title, 500);
    GetClassNameA(window, r.cls, sizeof r.cls);
    r.id = window != r.top ? GetDlgCtrlID(window) : 0;
    r.user = (long long)GetWindowLongPtrA(window, GWLP_USERDATA);
    GetWindowThreadProcessId(window, &r.pid);
    ProgramOf(r.pid, r.program, sizeof r.program);
    WindowTextWithin(window, r.text, sizeof r.text, 500);
    GetWindowRect(window, &r.windowRect);
    GetClientRect(window, &r.clientRect);
    MapWindowPoints(window, nullptr, (POINT*)&r.clientRect, 2);
    RECT top;
    GetWindowRect(r.top, &top);
    r.inWindow = {at.x - top.left, at.y - top.top};
    r.inClient = {at.x - r.clientRect.left, at.y - r.clientRect.top};
    {
        ScopedGetDC screen(nullptr);
        r.colour = GetPixel(screen.dc, at.x, at.y);
    }
    FindCriteria(r);
}

void Show() {
    if (Fields) {
        const std::string text = SpyFieldsText(SpyNow);
        SetWindowTextA(Fields, text.c_str());
    }
    if (Status)
        SetWindowTextA(Status, SpyFrozen ? "Frozen: Ctrl+Shift+F follows the pointer again"
                                         : "Ctrl+Shift+F freezes what is shown");
}

void Say(const char* text) {
    if (Status) SetWindowTextA(Status, text);
}

// The match words of the options text are the step's own check rows; the
// ones the criteria need take their place.
void SetMatchWords(Step& s, const char* words) {
    std::string options = s.options;
    for (int i = 0; i < PropertyRowCount; i++) {
        const PropertyRow& row = PropertyTable[i];
        if (row.rowType != ROW_CHECK || row.field != FIELD_OPTIONS) continue;
        if (!MatchFlagsFromOptions(row.choices)) continue;
        ReplaceInString(options, row.choices, "", 0, 0);
    }
    while (options.find(", ,") != std::string::npos) ReplaceInString(options, ", ,", ",", 0, 0);
    while (!options.empty() && (options[0] == ',' || options[0] == ' ')) options.erase(0, 1);
    while (!options.empty() && (options.back() == ',' || options.back() == ' ')) options.pop_back();
    if (!options.empty()) options += ", ";
    options += words;
    CopyInto(s.options, options.c_str());
}

// The row of the selected step that a flag marks, when it is the step's text:
// a menu step's text is its path, not the criteria its match row suggests.
bool TextRowWithFlag(int flag) {
    BuildPropertyTable(1);
    for (int i = 0; i < PropertyRowCount; i++) {
        if (PropertyTable[i].field != FIELD_TEXT) continue;
        return (PropertyTable[i].flags & flag) != 0;
    }
    return false;
}

void SetStepText(Step& s, const char* text) {
    s.text = EnsureCapacity(s.text, strlen(text));
    if (s.text) CopyIntoN(s.text, HeapBlockSize(s.text), text);
}

void StepChanged() {
    BuildPropertyTable(1);
    RefreshPropertyGrid();
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
}

LRESULT CALLBACK SpyProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE: {
        HINSTANCE self = GetModuleHandleA(nullptr);
        HFONT font = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
        Fields = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                                 WS_CHILD | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, 0,
                                 0, 0, 0, window, (HMENU)ID_SPY_FIELDS, self, nullptr);
        Status = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_LEFT, 0, 0, 0, 0, window,
                                 (HMENU)ID_SPY_STATUS, self, nullptr);
        const struct {
            int id;
            const char* caption;
        } buttons[] = {{ID_SPY_COPY, "Copy criteria"}, {ID_SPY_USE, "Use in step"}, {ID_SPY_CAPTURE, "Capture picture"}};
        for (const auto& b : buttons)
            SendMessageA(CreateWindowExA(0, "BUTTON", b.caption, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 0,
                                         0, 0, 0, window, (HMENU)(INT_PTR)b.id, self, nullptr),
                         WM_SETFONT, (WPARAM)font, 0);
        SendMessageA(Fields, WM_SETFONT, (WPARAM)font, 0);
        SendMessageA(Status, WM_SETFONT, (WPARAM)font, 0);
        RegisterHotKey(window, SPY_HOTKEY, MOD_CONTROL | MOD_SHIFT, 'F');
        SetTimer(window, SPY_TIMER, 150, nullptr);
        return 0;
    }
    case WM_SIZE: {
        const int w = LOWORD(lParam), h = HIWORD(lParam), pad = 6, bh = 24, bw = (w - 4 * pad) / 3;
        MoveWindow(Fields, pad, pad, w - 2 * pad, h - 4 * pad - bh - 16, TRUE);
        MoveWindow(Status, pad, h - 2 * pad - bh - 16, w - 2 * pad, 16, TRUE);
        for (int i = 0; i < 3; i++)
            MoveWindow(GetDlgItem(window, ID_SPY_COPY + i), pad + i * (bw + pad), h - pad - bh, bw, bh, TRUE);
        return 0;
    }
    case WM_TIMER:
        if (wParam == SPY_TIMER) RefreshWindowSpy();
        return 0;
    case WM_HOTKEY:
        if (wParam == SPY_HOTKEY) ToggleSpyFreeze();
        return 0;
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case ID_SPY_COPY:
            Say(SpyCopyCriteria() ? "Criteria copied" : "Nothing finds this window alone");
            return 0;
        case ID_SPY_USE:
            Say(SpyUseInStep() ? "Criteria written into the selected step"
                               : "Select a step that finds a window by its criteria first");
            return 0;
        case ID_SPY_CAPTURE: {
            char saved[MAX_PATH], said[MAX_PATH + 16];
            if (SpyCapturePicture(saved, sizeof saved)) FormatInto(said, "Saved %s", saved);
            else CopyInto(said, "Save the script first: the picture goes beside it");
            Say(said);
            return 0;
        }
        }
        break;
    case WM_DESTROY:
        KillTimer(window, SPY_TIMER);
        UnregisterHotKey(window, SPY_HOTKEY);
        SpyPalette = Fields = Status = nullptr;
        SpyFrozen = false;
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

std::string SpyFieldsText(const SpyReading& r) {
    auto rect = [](const RECT& c) {
        char text[96];
        FormatInto(text, "%ld, %ld - %ld, %ld (%ld x %ld)", c.left, c.top, c.right, c.bottom, c.right - c.left,
                   c.bottom - c.top);
        return std::string(text);
    };
    char line[400];
    std::string all;
    auto add = [&](const char* label, const std::string& value) {
        all += label;
        all += value;
        all += "\r\n";
    };
    add("Title: ", r.title);
    add("Class: ", r.cls);
    FormatInto(line, "%d", r.id);
    add("ID: ", line);
    // As the finder writes them into a step.
    FormatInto(line, "%li", (long)(INT_PTR)r.window);
    add("Handle: ", line);
    FormatInto(line, "%li", (long)r.user);
    add("User data: ", line);
    FormatInto(line, "%lu %s", (unsigned long)r.pid, r.program);
    add("Process: ", line);
    add("Text: ", r.text);
    add("Window: ", rect(r.windowRect));
    add("Client: ", rect(r.clientRect));
    FormatInto(line, "%ld, %ld screen; %ld, %ld window; %ld, %ld client", r.screen.x, r.screen.y, r.inWindow.x,
               r.inWindow.y, r.inClient.x, r.inClient.y);
    add("Pointer: ", line);
    FormatInto(line, "#%02X%02X%02X", GetRValue(r.colour), GetGValue(r.colour), GetBValue(r.colour));
    add("Colour: ", line);
    if (r.criteria[0]) FormatInto(line, "%s (%s)", r.criteria, r.options);
    else if (RunThread || StepRecorderRunning()) CopyInto(line, "(worked out when no run or recording is going on)");
    else CopyInto(line, "(nothing finds this window alone)");
    add("Criteria: ", line);
    return all;
}

void RefreshWindowSpy() {
    if (SpyFrozen) return;
    POINT at;
    if (!GetCursorPos(&at)) return;
    HWND window = WindowFromPoint(at);
    if (!window || InThisProcess(window)) return;
    Read(SpyNow, at, window);
    Show();
}

void ToggleSpyFreeze() {
    SpyFrozen = !SpyFrozen;
    Show();
}

int CommandWindowSpy(HWND owner) {
    if (SpyPalette) {
        ShowWindow(SpyPalette, SW_SHOWNORMAL);
        SetForegroundWindow(SpyPalette);
        return 0;
    }
    static bool registered = false;
    if (!registered) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = SpyProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
        wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
        wc.lpszClassName = "ZantoWindowSpy";
        registered = RegisterClassA(&wc) != 0;
    }
    RECT r;
    GetWindowRect(owner, &r);
    SpyPalette = CreateWindowExA(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, "ZantoWindowSpy", "Window Spy",
                                 WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME, r.right - 410, r.top + 40, 400,
                                 340, owner, nullptr, GetModuleHandleA(nullptr), nullptr);
    if (!SpyPalette) return 0;
    Show();
    ShowWindow(SpyPalette, SW_SHOWNOACTIVATE);
    return 0;
}

bool SpyCopyCriteria() {
    if (!SpyNow.criteria[0]) return false;
    SetClipboardText(SpyNow.criteria, strlen(SpyNow.criteria));
    return true;
}

bool SpyUseInStep() {
    TabStore& t = CurrentTab();
    if (!SpyNow.criteria[0] || !t.steps || t.selected < 0 || t.selected >= t.count) return false;
    if (ActiveEditor) CommitEditor();
    if (!TextRowWithFlag(ROWF_FIND_WINDOW)) return false;
    SaveUndo((int32_t)GetTickCount(), t.selected, UNDO_MODIFIED);
    Step& s = t.steps[t.selected];
    SetStepText(s, SpyNow.criteria);
    SetMatchWords(s, SpyNow.options);
    StepChanged();
    return true;
}

bool SpyCapturePicture(char* saved, size_t size) {
    saved[0] = 0;
    const TabStore& t = CurrentTab();
    const char* slash = strrchr(t.path, '\\');
    if (!slash || !SpyNow.window) return false;
    const RECT& r = SpyNow.windowRect;
    const int width = r.right - r.left, height = r.bottom - r.top;
    if (width <= 0 || height <= 0) return false;
    std::vector<DWORD> pixels((size_t)width * height);
    {
        ScopedGetDC screen(nullptr);
        AutoDeleteDC memory(CreateCompatibleDC(screen.dc));
        AutoDeleteObject bitmap(CreateCompatibleBitmap(screen.dc, width, height));
        if (!memory.dc || !bitmap.obj) return false;
        HGDIOBJ old = SelectObject(memory.dc, bitmap.obj);
        BitBlt(memory.dc, 0, 0, width, height, screen.dc, r.left, r.top, SRCCOPY | CAPTUREBLT);
        SelectObject(memory.dc, old);
        BITMAPINFO info = {};
        info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB};
        if (!GetDIBits(memory.dc, (HBITMAP)bitmap.obj, 0, (UINT)height, pixels.data(), &info, DIB_RGB_COLORS))
            return false;
    }
    // A new name each time: an earlier picture, perhaps used by a step, stays.
    char folder[MAX_PATH], name[MAX_PATH], file[MAX_PATH];
    CopyInto(folder, t.path);
    folder[slash - t.path] = 0;
    char base[80];
    FormatInto(base, "%s-%d", SpyNow.cls, SpyNow.id);
    for (char* c = base; *c; c++)
        if (strchr("\\/:*?\"<>|#", *c)) *c = '_';
    for (int n = 1; n < 1000; n++) {
        if (n == 1) FormatInto(name, "%s.png", base);
        else FormatInto(name, "%s-%d.png", base, n);
        FormatInto(file, "%s\\%s", folder, name);
        if (GetFileAttributesA(file) == INVALID_FILE_ATTRIBUTES) break;
        file[0] = 0;
    }
    if (!file[0] || !WritePngFile(file, pixels.data(), width, height)) return false;
    CopyIntoN(saved, size, file);
    // An image step selected takes the picture; its name is found beside the script.
    if (t.steps && t.selected >= 0 && t.selected < t.count) {
        if (ActiveEditor) CommitEditor();
        if (TextRowWithFlag(ROWF_CAPTURE)) {
            SaveUndo((int32_t)GetTickCount(), t.selected, UNDO_MODIFIED);
            SetStepText(t.steps[t.selected], name);
            StepChanged();
        }
    }
    return true;
}
