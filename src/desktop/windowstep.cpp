// Category 3: find the window the step describes, test that the description
// was not ambiguous, and act on it by the action's name.
#include "desktop/windowstep.h"
#include "base/text.h"

#include <shellapi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/imagesearch.h"
#include "desktop/mouse.h"
#include "desktop/searchfields.h"
#include "desktop/windowcontrol.h"
#include "desktop/windowmatch.h"
#include "base/log.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/failure.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

// The window under the image that the text names, searched with the step's
// similarity and screen scale (values 4 and 5; empty in a script written
// before them: the whole image, as captured). The match counters keep what
// the last search left in them.
int WindowByImage(int tab, int step, const char* name) {
    char file[MAX_PATH];
    ResolveProgramPath(name, file, ScriptStore.tab[tab].path);
    if (GetFileAttributesA(file) == INVALID_FILE_ATTRIBUTES) return FailStep("The file '%s' does not exist", file);
    int x = 0, y = 0;
    ImageMatchOptions options;
    ReadMatchSettings(tab, step, &options.percent, &options.scale);
    if (!ImageSearchWith(file, nullptr, 0, NO_MASK, options, &x, &y, nullptr, nullptr, 0, 0x40))
        return StepFailureText[0] ? 0 : FailStep("Unable to find image '%s' on the screen", file);  // kept: a file that is no picture
    LastWindow = SmallestWindowAtPoint(POINT{x, y});
    return 1;
}

struct StyleChange {
    const char* name;
    LONG clear, set;
};

// "Set Window Style", by value 1 as it stands. There is no value that takes
// the caption away.
void SetStyle(HWND w, const char* value) {
    if (lstrcmpiA(value, "Always on Top") == 0) {
        SetWindowPos(w, HWND_TOPMOST, 0, 0, 10, 10, 0x13);
    } else if (lstrcmpiA(value, "Not Always on Top") == 0) {
        SetWindowPos(w, HWND_NOTOPMOST, 0, 0, 10, 10, 0x13);
    } else if (lstrcmpiA(value, "Visible") == 0) {
        ShowWindow(w, SW_SHOW);
    } else if (lstrcmpiA(value, "Hidden") == 0) {
        ShowWindow(w, SW_HIDE);
    } else if (lstrcmpiA(value, "Disabled") == 0) {
        EnableWindow(w, FALSE);
    } else if (lstrcmpiA(value, "Enabled") == 0) {
        EnableWindow(w, TRUE);
    } else {
        static const StyleChange changes[] = {
            {"Caption", 0, 0xC00000},
            {"Not Resizable", 0x40000, 0x400000},
            {"Resizable", 0, 0x40000},
            {"Without Maximize Button", 0x10000, 0},
            {"Maximize Button", 0, 0x10000},
            {"Without Minimize Button", 0x20000, 0},
            {"Minimize Button", 0, 0x20000},
        };
        for (const StyleChange& c : changes) {
            if (lstrcmpiA(value, c.name) == 0) {
                SetWindowLongA(w, GWL_STYLE, (GetWindowLongA(w, GWL_STYLE) & ~c.clear) | c.set);
                break;
            }
        }
    }
    InvalidateRect(w, nullptr, TRUE);
    UpdateWindow(w);
    SendWithin(w, WM_PAINT, 0, 0);
    SendWithin(w, WM_NCPAINT, 0, 0);
    SetFocus(w);
}

int GetText(int tab, int step, HWND w, const char* criteria) {
    DWORD_PTR n = 0;
    if (!SendWithin(w, WM_GETTEXTLENGTH, 0, 0, kAnswerMs, &n))
        return FailStep("Window '%s' does not answer: its program is hung or busy, and its text was not read",
                        criteria);
    if (n < 0x3FE) n = 0x3FE;
    std::vector<char> text((size_t)n + 2 < 256 ? 256 : (size_t)n + 2, 0);
    SendWithin(w, WM_GETTEXT, (WPARAM)n + 1, (LPARAM)text.data(), 2 * kAnswerMs);
    text.back() = 0;
    SaveOutput(tab, step, text.data(), (long)strlen(text.data()), nullptr);
    return 1;
}

// Values 1 and 2, translated and read as numbers, minus 1: scripts count
// pixels from 1.
void ReadPair(int tab, int step, int* first, int* second) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.value[0], tab, step);
    *first = ParseInt(TranslatedText) - 1;
    TranslateText(s.value[1], tab, step);
    *second = ParseInt(TranslatedText) - 1;
}

// The timeout text in whole seconds: its digits and point, truncated.
int TimeoutMilliseconds(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].timeout, tab, step);
    std::string number;
    for (const char* p = TranslatedText; *p; p++)
        if ((*p >= '0' && *p <= '9') || *p == '.') number += *p;
    return (int)atof(number.c_str()) * 1000;
}

// "Close Window": the window is asked; a program that answers is never
// forced, so that one asking to save keeps its work and the script can
// answer the question. The option "Force" closes by rising force.
int CloseWindowStep(int tab, int step, HWND w, const char* criteria) {
    const int limit = TimeoutMilliseconds(tab, step);
    if (ContainsNoCase(ScriptStore.tab[tab].steps[step].options, "Force")) return CloseWindowForcibly(w, limit);
    char title[260] = "", asking[260] = "";
    // The window's own title, or what the step named for a window that
    // does not answer.
    if (!SendWithin(w, WM_GETTEXT, sizeof title, (LPARAM)title, 100) || !title[0]) CopyInto(title, criteria);
    title[sizeof title - 1] = 0;
    HWND question = nullptr;
    switch (CloseWindowPolitely(w, limit, &question)) {
    case CLOSE_DONE: return 1;
    case CLOSE_ENDED:
        LogPrintf(OutputEdit, "\tWindow '%s' does not answer: its program was ended\r\n", title);
        return 1;
    case CLOSE_ASKING:
        SendWithin(question, WM_GETTEXT, sizeof asking, (LPARAM)asking, 100);
        asking[sizeof asking - 1] = 0;
        return FailStep("Closing '%s' was answered by the window '%s', which is waiting for an answer: nothing was "
                        "forced",
                        title, asking);
    case CLOSE_REFUSED: break;
    }
    return FailStep("Window '%s' is still open after it was asked to close, and its program answers: nothing was "
                    "forced (the option \"Force\" ends it)",
                    title);
}

}  // namespace

int ActWindow(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    CopyIntoN(action, sizeof action, s.action);
    LastWindow = nullptr;
    const bool all = ContainsNoCase(action, "all Windows");
    if (!TextOf(s.text)[0] && !all) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Missing window information");
        return 0;
    }
    TranslateText(s.text, tab, step);
    std::string criteria = TranslatedText;

    if (ContainsNoCase(s.options, "image")) {
        if (!WindowByImage(tab, step, criteria.c_str())) return 0;
    } else if (all) {
        // The whole desktop: no found or ambiguity test.
        if (ContainsNoCase(action, "Minimize"))
            FindWindowByCriteria(MainWindow, MATCH_MINIMIZE_ALL, nullptr, DUMP_FRAMED);
        else if (ContainsNoCase(action, "Close")) {
            CloseAllByForce = ContainsNoCase(s.options, "Force");
            FindWindowByCriteria(MainWindow, MATCH_CLOSE_ALL, nullptr, DUMP_FRAMED);
        }
        return 1;
    } else {
        LastWindow = FindWindowByCriteria(MainWindow, MatchFlagsFromOptions(s.options), criteria.c_str(), 0);
    }
    if (!LastWindow) return FailStep("Unable to find window '%s'", criteria.c_str());
    if (SettingInt("MultipleWindowError")) {
        if (TopLevelMatches > 1) return FailStep("There are %d top-level windows that match the search criteria", TopLevelMatches);
        if (TopLevelMatches == 0 && ChildMatches > 1)
            return FailStep("There are %d child windows that match the search criteria", ChildMatches);
    }

    HWND w = LastWindow;
    // Closing looks after a hung window itself; every other action here
    // would wait for the window's thread to answer, for ever if it is hung.
    if (!ContainsNoCase(action, "Get Text") && !ContainsNoCase(action, "Close") && !WindowAnswers(w))
        return FailStep("Window '%s' does not answer: its program is hung or busy, and nothing was done to it",
                        criteria.c_str());
    if (ContainsNoCase(action, "Set Window Style")) {
        SetStyle(w, s.value[0]);
        return 1;
    }
    if (ContainsNoCase(action, "Get Text")) return GetText(tab, step, w, criteria.c_str());
    if (ContainsNoCase(action, "Activate")) {
        ForceForeground(w);
        WindowActivated = 1;
        return 1;
    }
    if (ContainsNoCase(action, "Press")) {
        ForceForeground(GetParent(w));
        MoveMouseToWindow(w, 2, 1);
        LastWindow = PressControl(w);
        return LastWindow ? 1 : 0;
    }
    if (ContainsNoCase(action, "Move")) {
        int x, y;
        ReadPair(tab, step, &x, &y);
        SetWindowPos(w, nullptr, x, y, 0, 0, 0x15);
        return 1;
    }
    if (ContainsNoCase(action, "Resize")) {
        int width, height;
        ReadPair(tab, step, &width, &height);
        SetWindowPos(w, nullptr, 0, 0, width, height, 0x16);
        return 1;
    }
    if (ContainsNoCase(action, "Maximize")) {
        ShowWindow(w, SW_MAXIMIZE);
        if (IsWindowVisible(w) && GetForegroundWindow() != w && GetTopWindow(nullptr) != w && GetFocus() != w)
            ForceForeground(w);
        WindowActivated = 1;
        return 1;
    }
    if (ContainsNoCase(action, "Minimize")) {
        if (IsIconic(w)) {
            ShowWindow(w, SW_RESTORE);
            ForceForeground(w);
        } else {
            ShowWindow(w, SW_MINIMIZE);
        }
        return 1;
    }
    if (ContainsNoCase(action, "Close")) return CloseWindowStep(tab, step, w, criteria.c_str());
    return FailStep("Window '%s'found, but invalid action specified", criteria.c_str());
}

void ShowWindowDump(HWND mainWindow, int dumpFlags) {
    char path[MAX_PATH];
    DumpFilePath(path);
    DeleteFileA(path);
    FindWindowByCriteria(mainWindow, MATCH_DUMP, nullptr, dumpFlags);
    if ((INT_PTR)ShellExecuteA(mainWindow, "open", path, nullptr, nullptr, SW_SHOWNORMAL) <= 32) {
        char text[MAX_PATH + 40];
        FormatInto(text, "Unable to open file \"%s\"", path);
        RunMessageBox(text, "ZantoRunner", MB_ICONEXCLAMATION);
    }
}
