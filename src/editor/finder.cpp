// The finder and the coordinates picker. While the finder is dragged, the
// window it would pick is outlined and a small label beside the pointer
// names its title, class and ID; on release its criteria go into the open
// editor. The editor's own window state survives the pick: it is brought back
// only when the drag minimised it.
#include "editor/finder.h"

#include <stdio.h>

#include "base/handles.h"
#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "base/words.h"
#include "desktop/windowmatch.h"
#include "run/runstate.h"
#include "script/step.h"

namespace {

const char kWindowPicker[] = "ZantoRunnerFinder";

WNDPROC OriginalPickerProc;
HWND Outlined;   // the window outlined under the finder
HWND Label;      // the label that follows the pointer
bool Minimised;  // whether this drag minimised the editor
HWND* Target;    // where the open editor of the palette is kept

const Step* SelectedStep() {
    TabStore& t = CurrentTab();
    if (!t.steps || t.selected < 0 || t.selected >= t.count) return nullptr;
    return &t.steps[t.selected];
}

bool IsFinder(HWND button) { return GetPropA(button, kWindowPicker) != nullptr; }

bool PickControls() {
    const Step* s = SelectedStep();
    return s && ActsOnControl(s->action);
}

// The outline is four thin windows of its own, on top of everything and
// never hit by the pointer: moving or hiding them lets the windows beneath
// repaint themselves. Drawing on the screen's DC instead (an inverted frame)
// left black bits behind wherever a window repainted under the frame or the
// screen was not read back as it was drawn.
const char kOutlineClass[] = "ZantoRunnerOutline";
HWND Bars[4];

LRESULT CALLBACK OutlineProc(HWND bar, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCHITTEST) return HTTRANSPARENT;
    if (message == WM_MOUSEACTIVATE) return MA_NOACTIVATE;
    return DefWindowProcA(bar, message, wParam, lParam);
}

bool IsOutlineBar(HWND window) {
    for (HWND bar : Bars)
        if (bar && window == bar) return true;
    return false;
}

void ShowOutline(HWND window) {
    RECT r;
    if (!window || !GetWindowRect(window, &r)) {
        for (HWND bar : Bars)
            if (bar) ShowWindow(bar, SW_HIDE);
        return;
    }
    static bool registered = false;
    if (!registered) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = OutlineProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.hbrBackground = CreateSolidBrush(RGB(230, 0, 0));
        wc.lpszClassName = kOutlineClass;
        registered = RegisterClassA(&wc) != 0;
    }
    // Inside the window's edges, so that a maximised window's outline stays
    // on the screen.
    const int w = r.right - r.left, h = r.bottom - r.top, t = 3;
    struct Side {
        int x, y, width, height;
    } const sides[4] = {{r.left, r.top, w, t},
                        {r.left, r.bottom - t, w, t},
                        {r.left, r.top + t, t, h - 2 * t},
                        {r.right - t, r.top + t, t, h - 2 * t}};
    for (int i = 0; i < 4; i++) {
        if (!Bars[i])
            Bars[i] = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_TRANSPARENT | WS_EX_NOACTIVATE,
                                      kOutlineClass, "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                      GetModuleHandleA(nullptr), nullptr);
        const Side& s = sides[i];
        const bool shown = s.width > 0 && s.height > 0;  // a window too small for the sides has none
        SetWindowPos(Bars[i], HWND_TOPMOST, s.x, s.y, shown ? s.width : 0, shown ? s.height : 0,
                     SWP_NOACTIVATE | (shown ? SWP_SHOWWINDOW : SWP_HIDEWINDOW));
    }
}

void EndOutline() {
    for (HWND& bar : Bars) {
        if (bar) DestroyWindow(bar);
        bar = nullptr;
    }
}

void ShowLabel(POINT at, const std::string& text) {
    if (!Label) {
        Label = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, "STATIC", "",
                                WS_POPUP | WS_BORDER | SS_LEFT | SS_NOPREFIX, 0, 0, 10, 10, nullptr, nullptr,
                                GetModuleHandleA(nullptr), nullptr);
        SendMessageA(Label, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), FALSE);
    }
    SetWindowTextA(Label, text.c_str());
    RECT size = {0, 0, 0, 0};
    {
        ScopedGetDC dc(Label);
        HGDIOBJ old = SelectObject(dc.dc, GetStockObject(DEFAULT_GUI_FONT));
        DrawTextA(dc.dc, text.c_str(), -1, &size, DT_CALCRECT | DT_NOPREFIX);
        SelectObject(dc.dc, old);
    }
    // Beside the pointer, never under it: the label is not what is picked.
    SetWindowPos(Label, HWND_TOPMOST, at.x + 16, at.y + 20, size.right + 8, size.bottom + 4,
                 SWP_NOACTIVATE | SWP_SHOWWINDOW);
    InvalidateRect(Label, nullptr, TRUE);
}

void HideLabel() {
    if (Label) DestroyWindow(Label);
    Label = nullptr;
}

void FollowPointer(bool dragging) {
    POINT at;
    GetCursorPos(&at);
    HWND under = dragging ? PickedWindow(at, PickControls()) : nullptr;
    if (under && (GetAncestor(under, GA_ROOT) == Label || IsOutlineBar(GetAncestor(under, GA_ROOT)))) under = nullptr;
    if (dragging) {
        const char* refused = under ? RefusedPick(under) : "";
        ShowLabel(at, refused[0] ? std::string(refused) : DescribePickedWindow(under));
    } else {
        HideLabel();
        EndOutline();
        Outlined = nullptr;
        return;
    }
    if (under == Outlined) return;
    Outlined = under;
    ShowOutline(Outlined);
}

void Released(HWND picker) {
    POINT at;
    GetCursorPos(&at);
    // Only a drag that minimised the editor brings it back; a restore of a
    // maximised editor would un-maximise it.
    if (Minimised && IsIconic(MainWindow)) ShowWindow(MainWindow, SW_RESTORE);
    Minimised = false;
    HWND editor = Target ? *Target : nullptr;
    if (!editor) return;
    if (!IsFinder(picker)) {
        char text[40];
        FormatInto(text, "%d, %d", (int)at.x, (int)at.y);
        SetWindowTextA(editor, text);
        return;
    }
    HWND window = PickedWindow(at, PickControls());
    if (!window) return;
    const char* refused = RefusedPick(window);
    if (refused[0]) {
        ShowMessageBox(MainWindow, refused, "Find Window", MB_ICONINFORMATION);
        return;
    }
    const Step* s = SelectedStep();
    int flags = s ? MatchFlagsFromOptions(s->options) : MATCH_TITLE;
    if (!flags) flags = MATCH_TITLE;
    SetWindowTextA(editor, CriteriaOfWindow(window, flags).c_str());
}

LRESULT CALLBACK PickerProc(HWND picker, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    // A press soon after the last pick comes as a double click: a drag all
    // the same.
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetCapture(picker);
        SetCursor(LoadCursorA(nullptr, (LPCSTR)IDC_CROSS));
        Minimised = false;
        if (IsFinder(picker) && SettingInt("MinimizeFindWin") && !IsIconic(MainWindow)) {
            ShowWindow(MainWindow, SW_MINIMIZE);
            Minimised = true;
        }
        return 0;
    case WM_MOUSEMOVE:
        if (GetCapture() == picker && IsFinder(picker)) FollowPointer(true);
        return 0;
    case WM_LBUTTONUP:
        if (GetCapture() == picker) {
            FollowPointer(false);
            ReleaseCapture();
            Released(picker);
        }
        return 0;
    case WM_CAPTURECHANGED:
        FollowPointer(false);
        break;
    case WM_NCDESTROY:
        RemovePropA(picker, kWindowPicker);
        break;
    }
    return CallWindowProcA(OriginalPickerProc, picker, message, wParam, lParam);
}

}  // namespace

void MakePicker(HWND button, bool window, HWND* editor) {
    Target = editor;
    if (window) SetPropA(button, kWindowPicker, (HANDLE)1);
    OriginalPickerProc = (WNDPROC)SetWindowLongPtrA(button, GWLP_WNDPROC, (LONG_PTR)PickerProc);
}

bool ActsOnControl(const char* action) {
    return ContainsNoCase(action, "Control") || ContainsNoCase(action, "Button") ||
           ContainsNoCase(action, "Direct Window Entry");
}

HWND PickedWindow(POINT at, bool control) {
    HWND under = WindowFromPoint(at);
    if (!under) return nullptr;
    if (control) return under;
    HWND top = GetAncestor(under, GA_ROOT);
    return top ? top : under;
}

std::string DescribePickedWindow(HWND window) {
    if (!window) return "No window under the pointer";
    char title[200] = "", cls[200] = "", text[520];
    GetWindowTextA(window, title, sizeof title);
    GetClassNameA(window, cls, sizeof cls);
    FormatInto(text, "Title: %s\nClass: %s\nID: %ld", title, cls, (long)GetDlgCtrlID(window));
    return text;
}

const char* RefusedPick(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId()) return "";
    return "This is a window of ZantoRunner itself. Drag the finder over the window that the step should work "
           "on.";
}

std::string CriteriaOfWindow(HWND window, int flags) {
    std::string criteria;
    auto add = [&](const char* piece) {
        if (!criteria.empty()) criteria += ", ";
        criteria += piece;
    };
    char piece[300];
    if (flags & MATCH_TITLE) {
        GetWindowTextA(window, piece, sizeof piece);
        add(piece);
    }
    if (flags & MATCH_CLASS) {
        GetClassNameA(window, piece, sizeof piece);
        add(piece);
    }
    if (flags & MATCH_ID) {
        FormatInto(piece, "%ld", (long)GetDlgCtrlID(window));
        add(piece);
    }
    if (flags & MATCH_USER) {
        FormatInto(piece, "%lld", (long long)GetWindowLongPtrA(window, GWLP_USERDATA));
        add(piece);
    }
    if (flags & MATCH_HANDLE) {
        FormatInto(piece, "%ld", (long)(INT_PTR)window);
        add(piece);
    }
    return criteria;
}

HWND FinderLabel() { return Label; }

bool FinderOutlineShown() {
    for (HWND bar : Bars)
        if (bar && IsWindowVisible(bar)) return true;
    return false;
}
