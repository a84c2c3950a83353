#include "editor/debugcommands.h"

#include <commctrl.h>
#include <string.h>

#include <string>

#include "base/log.h"
#include "base/utf8.h"
#include "base/text.h"
#include "base/ui.h"
#include "editor/metrics.h"
#include "editor/variablespalette.h"
#include "resources/resource.h"
#include "run/debugrun.h"
#include "run/runstate.h"
#include "script/step.h"

namespace {

// The bar above the step list while a debug run is paused: what it paused
// for, and the answers that fit (a failure has its own four).
HWND Bar;
HWND BarText;
HFONT BarFont;
struct BarButton {
    int id;
    const char* label;
    bool atFailure;  // shown at a failure pause (else at a pause before a step)
    HWND window;
};
BarButton Buttons[] = {
    {CMD_DEBUG_CONTINUE, "&Continue", false, nullptr},
    {CMD_DEBUG_STEP, "S&tep", false, nullptr},
    {CMD_DEBUG_RETRY, "&Retry", true, nullptr},
    {CMD_DEBUG_SKIP, "S&kip", true, nullptr},
    {CMD_DEBUG_APPLY, "&Apply failure mode", true, nullptr},
    {CMD_STOP, "Sto&p", false, nullptr},
};

// "Try This Step": the step tried, the output's length before it, and the
// small window that shows what it did.
long Shown;  // pauses shown
int TryTab = -1, TryStep = -1;
int TryOutputStart;
HWND TryWindow, TryText;

// The bar's buttons are commands of the main window, as the menu's are.
LRESULT CALLBACK BarProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && lParam && HIWORD(wParam) == BN_CLICKED) {
        if (MainWindow) PostMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(LOWORD(wParam), 0), 0);
        return 0;
    }
    if (message == WM_CTLCOLORSTATIC) {
        // The words of a failure in the failure colour of the step list.
        HDC dc = (HDC)wParam;
        SetBkMode(dc, TRANSPARENT);
        SetTextColor(dc, PausedReason() == PAUSE_FAILURE ? RGB(0xA0, 0, 0) : GetSysColor(COLOR_WINDOWTEXT));
        return (LRESULT)GetSysColorBrush(COLOR_INFOBK);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

// The class of the bar and of the "Try This Step" window.
bool RegisterBarClass() {
    static bool registered = false;
    if (!registered) {
        WNDCLASSA c = {};
        c.lpfnWndProc = BarProc;
        c.hInstance = GetModuleHandleA(nullptr);
        c.hbrBackground = GetSysColorBrush(COLOR_INFOBK);
        c.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
        c.lpszClassName = "ZantoRunnerDebugBar";
        registered = RegisterClassA(&c) != 0;
    }
    return registered;
}

void MakeBar(HWND pane) {
    if (Bar || !pane || !RegisterBarClass()) return;
    Bar = CreateWindowExA(0, "ZantoRunnerDebugBar", "", WS_CHILD | WS_CLIPCHILDREN, 0, 0, 0, 0, pane, nullptr,
                          GetModuleHandleA(nullptr), nullptr);
    if (!Bar) return;
    NONCLIENTMETRICSA metrics = {};
    metrics.cbSize = sizeof metrics;
    if (!BarFont && SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0))
        BarFont = CreateFontIndirectA(&metrics.lfMessageFont);
    HFONT font = BarFont ? BarFont : (HFONT)GetStockObject(DEFAULT_GUI_FONT);
    BarText = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_LEFTNOWORDWRAP | SS_NOPREFIX, 0, 0, 0, 0,
                              Bar, nullptr, GetModuleHandleA(nullptr), nullptr);
    SendMessageA(BarText, WM_SETFONT, (WPARAM)font, FALSE);
    for (BarButton& b : Buttons) {
        b.window = CreateWindowExA(0, "BUTTON", b.label, WS_CHILD | BS_PUSHBUTTON, 0, 0, 0, 0, Bar,
                                   (HMENU)(INT_PTR)b.id, GetModuleHandleA(nullptr), nullptr);
        SendMessageA(b.window, WM_SETFONT, (WPARAM)font, FALSE);
    }
}

// The pane of the step list: its tab strip, the bar, the list.
HWND Pane() { return StepList ? GetParent(StepList) : nullptr; }

void RelayPane() {
    if (HWND pane = Pane()) {
        RECT r;
        GetClientRect(pane, &r);
        SendMessageA(pane, WM_SIZE, SIZE_RESTORED, MAKELPARAM(r.right, r.bottom));
    }
}

void ShowBar(int step, int reason) {
    MakeBar(Pane());
    if (!Bar) return;
    const TabStore& t = ScriptStore.tab[RunningTab];
    const char* action = step >= 0 && step < t.count && t.steps ? t.steps[step].action : "";
    char text[600];
    if (reason == PAUSE_FAILURE)
        FormatInto(text, "Step %d (%s) failed: %s", step + 1, TextCut(action, 60).c_str(),
                   TextCut(PausedWords(), 480).c_str());
    else
        FormatInto(text, "Paused at step %d (%s)", step + 1, TextCut(action, 60).c_str());
    SetWindowTextA(BarText, text);
    for (BarButton& b : Buttons)
        ShowWindow(b.window, b.id == CMD_STOP || b.atFailure == (reason == PAUSE_FAILURE) ? SW_SHOW : SW_HIDE);
    ShowWindow(Bar, SW_SHOW);
    RelayPane();
}

void HideBar() {
    if (!Bar || !IsWindowVisible(Bar)) return;
    ShowWindow(Bar, SW_HIDE);
    RelayPane();
}

// While a run is paused, F5 and F7 are Continue and Step: their menu items
// come alive, and go grey again with the run going on.
void EnablePausedCommands(bool paused) {
    HMENU menu = MainWindow ? GetMenu(MainWindow) : nullptr;
    if (!menu) return;
    const bool idle = !RunThread;
    for (UINT id : {(UINT)CMD_RUN, (UINT)CMD_RUN_SINGLE_STEP, (UINT)CMD_RUN_FROM_HERE})
        EnableMenuItem(menu, id, paused || idle ? MF_ENABLED : MF_GRAYED);
    for (UINT id : {(UINT)CMD_DEBUG_CONTINUE, (UINT)CMD_DEBUG_STEP, (UINT)CMD_DEBUG_RUN_TO_HERE})
        EnableMenuItem(menu, id, paused ? MF_ENABLED : MF_GRAYED);
    for (UINT id : {(UINT)CMD_DEBUG, (UINT)CMD_DEBUG_FROM_HERE, (UINT)CMD_TRY_STEP})
        EnableMenuItem(menu, id, idle ? MF_ENABLED : MF_GRAYED);
}

void ShowTryWindow(HWND owner, const std::string& text) {
    if (!TryWindow || !IsWindow(TryWindow)) {
        if (!RegisterBarClass()) return;
        TryWindow = CreateWindowExA(WS_EX_TOOLWINDOW, "ZantoRunnerDebugBar", "Try This Step",
                                    WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME, CW_USEDEFAULT, CW_USEDEFAULT,
                                    FontUnitsX(320), FontUnitsY(8 * 12), owner, nullptr, GetModuleHandleA(nullptr),
                                    nullptr);
        if (!TryWindow) return;
        RECT r;
        GetClientRect(TryWindow, &r);
        TryText = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                                  WS_CHILD | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, 0,
                                  0, r.right, r.bottom, TryWindow, nullptr, GetModuleHandleA(nullptr), nullptr);
        SendMessageA(TryText, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), FALSE);
    }
    SetWindowTextA(TryText, text.c_str());
    ShowWindow(TryWindow, SW_SHOWNOACTIVATE);
}

int StartTry(HWND window) {
    if (RunThread) return -1;
    const int step = SelectedStepRow();
    if (step < 0 || step >= CurrentTab().count) return -1;
    TryTab = ScriptStore.currentTab;
    TryStep = step;
    TryOutputStart = OutputEdit ? GetWindowTextLengthA(OutputEdit) : 0;
    if (!StartRun(TryTab, window, CMD_RUN_SINGLE_STEP, 1)) {
        TryStep = -1;
        return -1;
    }
    SetTimer(window, TIMER_TRY_STEP, 100, nullptr);
    return 0;
}

}  // namespace

bool ResumePausedRun(int id) {
    if (!RunPaused()) return false;
    switch (id) {
    case CMD_RUN: return ResumeRun(DEBUG_CONTINUE, -1);
    case CMD_RUN_SINGLE_STEP: return ResumeRun(DEBUG_STEP, -1);
    case CMD_RUN_FROM_HERE: return ResumeRun(DEBUG_RUN_TO, SelectedStepRow());
    }
    return false;
}

int CommandDebug(HWND window, int id) {
    switch (id) {
    case CMD_DEBUG:
    case CMD_DEBUG_FROM_HERE:
        return StartDebugRun(ScriptStore.currentTab, window, id == CMD_DEBUG_FROM_HERE) ? 0 : -1;
    case CMD_DEBUG_CONTINUE: return ResumeRun(DEBUG_CONTINUE, -1) ? 0 : -1;
    case CMD_DEBUG_STEP: return ResumeRun(DEBUG_STEP, -1) ? 0 : -1;
    case CMD_DEBUG_RUN_TO_HERE: return ResumeRun(DEBUG_RUN_TO, SelectedStepRow()) ? 0 : -1;
    case CMD_DEBUG_RETRY: return ResumeRun(DEBUG_RETRY, -1) ? 0 : -1;
    case CMD_DEBUG_SKIP: return ResumeRun(DEBUG_SKIP, -1) ? 0 : -1;
    case CMD_DEBUG_APPLY: return ResumeRun(DEBUG_APPLY, -1) ? 0 : -1;
    case CMD_PAUSE_ON_FAILURE: {
        const bool on = !PauseOnFailure();
        SetPauseOnFailure(on);
        if (HMENU menu = GetMenu(window)) CheckMenuItem(menu, CMD_PAUSE_ON_FAILURE, on ? MF_CHECKED : MF_UNCHECKED);
        return 0;
    }
    case CMD_TRY_STEP: return StartTry(window);
    }
    return -1;
}

void ShowRunPause(HWND window, WPARAM step, LPARAM reason) {
    (void)window;
    const int paused = PausedStep();
    if ((int)step < 0 || paused < 0) {
        // Going on: the bar goes, F5 and F7 are the run's again.
        HideBar();
        ShowRunValues(nullptr);
        EnablePausedCommands(false);
        return;
    }
    if (RunningTab == ScriptStore.currentTab) {
        SelectStepRow(paused);
        if (StepList) {
            ListView_EnsureVisible(StepList, paused, FALSE);
            SetFocus(StepList);
        }
    }
    ShowBar(paused, (int)reason);
    // The variables as the run left them, and the run's own values on top.
    RefillVariablesList();
    ShowRunValues(PausedRunValues());
    StatusPrintf(StatusBar, 0, "Paused at step %d", paused + 1);
    EnablePausedCommands(true);
    Shown = PauseCount();
}

long PausesShown() { return Shown; }

int LayOutDebugBar(HWND pane, int top, int width) {
    if (!Bar || GetParent(Bar) != pane || !IsWindowVisible(Bar)) return 0;
    const int height = FontUnitsY(8 * 2);
    const int gap = FontUnitsX(2);
    MoveWindow(Bar, 0, top, width, height, TRUE);
    int right = width - gap;
    const int buttonHeight = FontUnitsY(14);
    for (int i = (int)(sizeof Buttons / sizeof Buttons[0]) - 1; i >= 0; i--) {
        if (!IsWindowVisible(Buttons[i].window)) continue;
        const int w = FontUnitsX(Buttons[i].id == CMD_DEBUG_APPLY ? 84 : 44);
        MoveWindow(Buttons[i].window, right - w, (height - buttonHeight) / 2, w, buttonHeight, TRUE);
        right -= w + gap;
    }
    MoveWindow(BarText, gap, (height - FontUnitsY(8)) / 2, right - 2 * gap > 0 ? right - 2 * gap : 0, FontUnitsY(8),
               TRUE);
    return height;
}

void TryStepTimer(HWND window) {
    if (RunThread) return;
    KillTimer(window, TIMER_TRY_STEP);
    if (TryStep < 0 || TryTab < 0) return;
    const TabStore& t = ScriptStore.tab[TryTab];
    std::string text;
    if (OutputEdit) {
        const int length = GetWindowTextLengthA(OutputEdit);
        std::string all((size_t)length + 1, '\0');
        GetWindowTextA(OutputEdit, &all[0], length + 1);
        all.resize((size_t)length);
        if (TryOutputStart <= length) text = all.substr((size_t)TryOutputStart);
    }
    const bool passed = TryStep < t.count && t.steps && t.steps[TryStep].last_run == LASTRUN_PASS;
    char result[64];
    FormatInto(result, "\r\nStep %d %s.", TryStep + 1, passed ? "passed" : "did not pass");
    text += result;
    TryStep = -1;
    ShowTryWindow(window, text);
}
