// The View, Tools and Help menus.
#include <windows.h>
#include "base/text.h"
#include <commctrl.h>
#include <shellapi.h>
#include <string.h>

#include "editor/commands.h"
#include "editor/mainwindow.h"
#include "editor/optionssheet.h"
#include "editor/toolbar.h"
#include "base/settings.h"
#include "base/ui.h"
#include "editor/frame.h"
#include "net/fetch.h"
#include "resources/resource.h"
#include "run/commandline.h"
#include "script/catalogue.h"
#include "script/step.h"

namespace {

// The maker's version text: one line such as "1.0".
const char kVersionAddress[] = "http://www.zantorunner.com/version.txt";

const char kShortcuts[] =
    "Ctrl+N\tNew file\nCtrl+O\tOpen file\nCtrl+S\tSave file\nCtrl+1..8\tGo to tab\n\n"
    "Ctrl+Z, Ctrl+Y\tUndo, redo\nCtrl+X, C, V\tCut, copy, paste steps\nDel\tDelete steps\nCtrl+A\tSelect all steps\n"
    "Ctrl+F, F3, Shift+F3\tFind, find next, find previous\nCtrl+G\tGo to step\n"
    "F2, Ctrl+F2\tNext bookmark, toggle bookmark\n\n"
    "Alt+Up, Alt+Down\tMove step\nAlt+Right, Alt+Left\tIndent, un-indent\nF8, F9\tSkip, breakpoint\n"
    "Shift+F8, Shift+F9\tRemove all skips, breakpoints\nInsert\tAdd comment\nEnter\tEdit the step's properties\n\n"
    "F5\tRun\nF6\tRun from here\nF7\tRun single step\n\nAlt+1..4\tShow a palette\n"
    "Tab, Shift+Tab\tNext, previous pane (the actions' search box first)\nEsc\tEmpty the actions' search box\n"
    "F11\tOptions\nF1\tHelp";

int PaletteOf(int id) {
    switch (id) {
    case CMD_SHOW_ACTIONS: return PALETTE_ACTIONS;
    case CMD_SHOW_PROPERTIES: return PALETTE_PROPERTIES;
    case CMD_SHOW_OUTPUT: return PALETTE_OUTPUT;
    case CMD_SHOW_VARIABLES: return PALETTE_VARIABLES;
    }
    return -1;
}

void HelpFile(char* path) {
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    char* dot = strrchr(path, '.');
    if (dot) CopyIntoN(dot, MAX_PATH - (size_t)(dot - path), ".chm");
}

}  // namespace

int CommandKeepOnTop(HWND window) {
    const int on = !SettingInt("OnTop");
    WriteSetting(nullptr, nullptr, on, nullptr, ZR_ROOT "OnTop");
    SetWindowPos(window, on ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    CheckMenuItem(GetMenu(window), CMD_KEEP_ON_TOP, on ? MF_CHECKED : MF_UNCHECKED);
    return 0;
}

int CommandTogglePalette(HWND window, int id) {
    const int palette = PaletteOf(id);
    bool shown;
    if (palette >= 0) {
        shown = !PaletteVisible(palette);
        ShowPalette(palette, shown);
    } else if (id == CMD_SHOW_STATUSBAR) {
        shown = !StatusBarShown();
        WriteSetting(nullptr, nullptr, shown ? -1 : 0, nullptr, ZR_ROOT "Palettes\\Statusbar\\visible");
        if (StatusBar) ShowWindow(StatusBar, shown ? SW_SHOW : SW_HIDE);
        LayOutMainWindow(window);
    } else {  // the toolbar, kept as a setting for the next start
        shown = !(Toolbar && IsWindowVisible(Toolbar));
        WriteSetting(nullptr, nullptr, shown ? 1 : 0, nullptr, ZR_ROOT "Palettes\\Toolbar\\visible");
        if (Toolbar) ShowWindow(Toolbar, shown ? SW_SHOW : SW_HIDE);
        UpdateToolbar();
        LayOutMainWindow(window);
    }
    CheckMenuItem(GetMenu(window), (UINT)id, shown ? MF_CHECKED : MF_UNCHECKED);
    return 0;
}

int CommandTree(HWND, bool expand) {
    if (!ActionsTree) return 0;
    for (HTREEITEM item = TreeView_GetRoot(ActionsTree); item; item = TreeView_GetNextSibling(ActionsTree, item))
        TreeView_Expand(ActionsTree, item, expand ? TVE_EXPAND : TVE_COLLAPSE);
    return 0;
}

int CommandResetLayout(HWND window) {
    if (ShowMessageBox(window, "Are you sure that you want to reset all toolbars and palettes to their original locations?",
                       "Confirm Action", MB_YESNO | MB_ICONQUESTION) != IDYES)
        return 0;
    for (int palette = 0; palette < PALETTE_COUNT; palette++) ShowPalette(palette, palette != PALETTE_VARIABLES);
    WriteSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Palettes\\Statusbar\\visible");
    // The splitter's width is forgotten: the palette is sized by its labels again.
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\Width");
    if (StatusBar) ShowWindow(StatusBar, SW_SHOW);
    LayOutMainWindow(window);
    return 0;
}

int CommandOpenLogfile(HWND window) {
    char logfile[MAX_PATH];
    SettingText("Logfile", logfile, sizeof logfile);
    WIN32_FILE_ATTRIBUTE_DATA info = {};
    const bool empty = !logfile[0] || !GetFileAttributesExA(logfile, GetFileExInfoStandard, &info) ||
                       (info.nFileSizeLow == 0 && info.nFileSizeHigh == 0);
    if (empty && !SettingInt("Log")) {
        if (ShowMessageBox(window,
                           "The logfile is empty, and logging is currently disabled.\n\nGo to \"Tools - Options\" to "
                           "adjust the logfile settings.\n\nDo you want to go there now?",
                           "ZantoRunner", MB_YESNO | MB_ICONQUESTION) == IDYES)
            CommandOptions(window);
        return 0;
    }
    if ((INT_PTR)ShellExecuteA(window, "open", logfile, nullptr, nullptr, SW_SHOWNORMAL) <= 32) {
        char text[MAX_PATH + 40];
        FormatInto(text, "Unable to open file \"%s\"", logfile);
        ShowMessageBox(window, text, "ZantoRunner Error", MB_ICONERROR);
    }
    return 0;
}

int CommandOptions(HWND window) {
    ShowOptionsSheet(window);
    return 0;
}

int CommandHelp(HWND window, int id) {
    switch (id) {
    case CMD_SHORTCUTS:
        ShowMessageBox(window, kShortcuts, "Keyboard Shortcuts", MB_ICONINFORMATION);
        return 0;
    case CMD_STARTUP_OPTIONS:  // the same text as "/?" shows
        ShowMessageBox(window, ZR_USAGE_TEXT, "Startup Options", MB_ICONINFORMATION);
        return 0;
    case CMD_ABOUT:
        ShowMessageBox(window, "ZantoRunner " ZR_VERSION "\n\nDesktop automation for Windows.", "About ZantoRunner",
                       MB_ICONINFORMATION);
        return 0;
    }
    OpenHelpTopic(window, "");
    return 0;
}

void OpenHelpTopic(HWND window, const char* topic) {
    char help[MAX_PATH];
    HelpFile(help);
    // The viewer takes its whole command line as the address, so a path with
    // blanks needs no quotes: "C:\Program Files\ZantoRunner.chm::/mouse.htm".
    char address[MAX_PATH + 128];
    if (topic && topic[0])
        FormatInto(address, "%s::/%s", help, topic);
    else
        CopyInto(address, help);
    if (GetFileAttributesA(help) == INVALID_FILE_ATTRIBUTES ||
        (INT_PTR)ShellExecuteA(window, "open", "hh.exe", address, nullptr, SW_SHOWNORMAL) <= 32)
        ShowMessageBox(window, "Unable to find the help file.\n\nPlease reinstall to correct this problem.",
                       "ZantoRunner Error", MB_ICONERROR);
}

void HelpSlug(const char* title, char* slug, size_t size) {
    size_t n = 0;
    for (const char* p = title; *p && n + 1 < size; p++) {
        const char c = *p;
        if (c >= 'A' && c <= 'Z') slug[n++] = (char)(c - 'A' + 'a');
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) slug[n++] = c;
    }
    if (size) slug[n] = 0;
}

void HelpTopicOfAction(int category, const char* action, char* topic, size_t size) {
    char page[64], anchor[FIELD_SHORT];
    HelpSlug(CategoryName(category), page, sizeof page);
    HelpSlug(action, anchor, sizeof anchor);
    if (!page[0]) CopyInto(page, "index");
    if (anchor[0] && CategoryName(category)[0])
        FormatIntoN(topic, size, "%s.htm#%s", page, anchor);
    else
        FormatIntoN(topic, size, "%s.htm", page);
}

int CommandCheckUpdates(HWND window) {
    char version[64] = "";
    if (FetchUrl(kVersionAddress, nullptr, version, sizeof version - 1, nullptr) <= 0 || !version[0]) {
        ShowMessageBox(window,
                       "Unable to access the web server to check for the latest version.\n\nPlease try again later, "
                       "or contact technical support with this issue.",
                       "ZantoRunner", MB_ICONWARNING);
        return 0;
    }
    for (char* p = version; *p; p++)
        if (*p == '\r' || *p == '\n' || *p == ' ') *p = 0;
    if (lstrcmpA(version, ZR_VERSION) <= 0) {
        ShowMessageBox(window,
                       "Your computer is running the latest version.\n\nYou do not need to upgrade at this time.  "
                       "Check back again soon for a new release.",
                       "ZantoRunner", MB_ICONINFORMATION);
    } else if (ShowMessageBox(window, "An new version is available!\n\nDo you want to go to the main download site now?",
                              "ZantoRunner", MB_YESNO | MB_ICONQUESTION) == IDYES) {
        ShellExecuteA(window, "open", "http://www.zantorunner.com/", nullptr, nullptr, SW_SHOWNORMAL);
    }
    return 0;
}
