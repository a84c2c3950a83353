// The main window. In a hidden run it holds only the hidden actions tree that
// the script reader needs; otherwise it shows the Output palette and the
// status bar around the area that the step list will take.
#include "editor/mainwindow.h"

#include <commctrl.h>

#include "desktop/bufferedtype.h"
#include "desktop/playbackhook.h"
#include "desktop/recordings.h"
#include "desktop/windowmatch.h"
#include "desktop/windowstep.h"
#include "editor/settings.h"
#include "products/compile.h"
#include "products/report.h"
#include "editor/ui.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "run/variables.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

HFONT OutputFont;

void CreateHiddenTree(HWND window) {
    ActionsTree = CreateWindowExA(0, WC_TREEVIEWA, "", WS_CHILD | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT,
                                  0, 0, 10, 10, window, (HMENU)(INT_PTR)IDC_ACTIONS_TREE, nullptr, nullptr);
    FillActionsTree(ActionsTree);
}

void CreateFrame(HWND window) {
    StatusBar = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, window,
                                nullptr, nullptr, nullptr);
    ProgressBar = CreateWindowExA(0, PROGRESS_CLASSA, "", WS_CHILD, 0, 0, 0, 0, StatusBar, nullptr, nullptr,
                                  nullptr);
    SendMessageA(ProgressBar, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    OutputEdit = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                                 WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_AUTOVSCROLL |
                                     ES_AUTOHSCROLL | ES_READONLY,
                                 0, 0, 0, 0, window, (HMENU)(INT_PTR)IDC_OUTPUT_EDIT, nullptr, nullptr);
    SendMessageA(OutputEdit, EM_SETLIMITTEXT, 0, 0);
    char face[64];
    SettingText("Palettes\\Output\\Font", face, sizeof face);
    int size = SettingInt("Palettes\\Output\\FontSize");
    HDC dc = GetDC(window);
    int height = -MulDiv(size > 0 ? size : 8, GetDeviceCaps(dc, LOGPIXELSY), 72);
    ReleaseDC(window, dc);
    OutputFont = CreateFontA(height, 0, 0, 0, SettingInt("Palettes\\Output\\Font_Weight"),
                             SettingInt("Palettes\\Output\\Font_Italic"), 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0,
                             face[0] ? face : "Courier New");
    SendMessageA(OutputEdit, WM_SETFONT, (WPARAM)OutputFont, TRUE);
}

void LayOut(HWND window) {
    RECT client;
    GetClientRect(window, &client);
    if (StatusBar) {
        SendMessageA(StatusBar, WM_SIZE, 0, 0);
        RECT bar;
        GetWindowRect(StatusBar, &bar);
        int width = client.right;
        int parts[3] = {width / 2, width * 3 / 4, -1};
        SendMessageA(StatusBar, SB_SETPARTS, 3, (LPARAM)parts);
        RECT last;
        SendMessageA(StatusBar, SB_GETRECT, 2, (LPARAM)&last);
        MoveWindow(ProgressBar, last.left + 2, last.top + 2, last.right - last.left - 4, last.bottom - last.top - 4,
                   TRUE);
        client.bottom -= bar.bottom - bar.top;
    }
    // The Output palette docks along the bottom; the step list takes the rest.
    if (OutputEdit) {
        int height = (client.bottom - client.top) / 3;
        MoveWindow(OutputEdit, 0, client.bottom - height, client.right, height, TRUE);
    }
}

}  // namespace

int RegisterMainWindowClass(HINSTANCE instance) {
    WNDCLASSEXA wc = {};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = MainWindowProc;
    wc.hInstance = instance;
    wc.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(IDI_MAIN));
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(INT_PTR)(13 + 1);
    wc.lpszMenuName = MAKEINTRESOURCEA(IDR_MAINMENU);
    wc.lpszClassName = "ZantoRunner";
    return RegisterClassExA(&wc) ? 1 : 0;
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    // Creation: a hidden run builds only the actions tree.
    case WM_CREATE:
        MainWindow = window;
        if (LaunchFlags & LAUNCH_HIDDEN) {
            CreateHiddenTree(window);
            return 0;
        }
        LoadSettings(0);
        CreateHiddenTree(window);
        CreateFrame(window);
        return 0;

    case WM_SIZE:
        LayOut(window);
        return 0;

    // The run commands and the few others of this frame.
    case WM_COMMAND:
        switch (LOWORD(wParam)) {
        case CMD_RUN:
        case CMD_RUN_FROM_HERE:
        case CMD_RUN_SINGLE_STEP:
            StartRun(ScriptStore.currentTab, window, LOWORD(wParam), 1);
            return 0;
        case CMD_STOP:
            StopRun(RunningTab, window, wParam);
            return 0;
        case CMD_OPEN_RECENT1: {
            char recent[MAX_PATH];
            SettingText("RecentFile1", recent, sizeof recent);
            OpenScript(recent, ScriptStore.currentTab);
            return 0;
        }
        case CMD_EXIT:
            SendMessageA(window, WM_CLOSE, 0, 0);
            return 0;
        case CMD_COMPILE_EXE:
            CompileCommand(window);
            return 0;
        case CMD_XML_REPORT:
            MakeReport();
            return 0;
        case CMD_DUMP_MAIN_WINDOWS:
            ShowWindowDump(window, DUMP_MAIN);
            return 0;
        case CMD_DUMP_POPUP_WINDOWS:
            ShowWindowDump(window, DUMP_FRAMED);
            return 0;
        case CMD_DUMP_ALL_WINDOWS:
            ShowWindowDump(window, 0);
            return 0;
        }
        break;

    // The run thread's timers: the forced stop asks whether to end a step
    // that does not return; the hooks must be installed on this thread.
    case WM_TIMER:
        switch (wParam) {
        case TIMER_FORCE_STOP:
            KillTimer(window, TIMER_FORCE_STOP);
            SendMessageA(window, WM_COMMAND, MAKEWPARAM(CMD_STOP, 1), 0);
            return 0;
        case TIMER_BUFFERED_TYPING:
            StartBufferedHook(window);
            return 0;
        case TIMER_PLAYBACK:
            StartRecordingPlayback(window);
            return 0;
        case TIMER_HOOK_CHECK:
            CheckPlaybackHook(window);
            return 0;
        case TIMER_HOOK_WATCH:
            return 0;  // repeats while a hook plays; the playback's end kills it
        }
        break;

    case WM_DESTROY:
        if (RunThread) {
            TerminateThread(RunThread, 0);
            CloseHandle(RunThread);
            RunThread = nullptr;
        }
        ReleasePlaybackHook();
        FreeRecordings();
        if (SettingInt("ResetUserVariables") && OnlyInstance()) ResetAllUserVariables();
        for (int tab = 0; tab < MAX_TABS; tab++) {
            ScriptStore.currentTab = tab;
            FreeUndo(tab);
            FreeSteps(tab);
        }
        if (OutputFont) DeleteObject(OutputFont);
        MainWindow = OutputEdit = StatusBar = ProgressBar = ActionsTree = nullptr;
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}
