// Category 8. Only "Display Image" can fail; a cancelled dialog leaves the
// result as it stood, and the step still passes.
#include "desktop/prompts.h"
#include "base/text.h"

#include <shlobj.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/filedialogs.h"
#include "desktop/popups.h"
#include "desktop/tips.h"
#include "desktop/windowcontrol.h"
#include "desktop/windowmatch.h"
#include "base/settings.h"
#include "base/unattended.h"
#include "base/ui.h"
#include "resources/resource.h"
#include "base/log.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/programpath.h"

char PromptTitle[259];
char PromptText[259];
char PromptResult[259];
char PromptPassword[259];

namespace {

enum { TIMER_DIALOG_CLOSE = 1000 };

volatile LONG TimedOut;
HWND TimedOwner;

void CALLBACK TimedBoxExpired(HWND, UINT, UINT_PTR, DWORD) {
    TimedOut = 1;
    if (TimedOwner) EnableWindow(TimedOwner, TRUE);
    PostQuitMessage(0);
}

// The dialog in hand: its template and, for the list, its items.
int DialogId;
int DialogTimeout;
std::vector<std::string> ListItems;

void InitDialog(HWND dialog) {
    SendDlgItemMessageA(dialog, IDC_PROMPT_EDIT, EM_LIMITTEXT, 259, 0);
    SetDlgItemTextA(dialog, IDC_PROMPT_EDIT, PromptResult);
    if (PromptText[0]) SetDlgItemTextA(dialog, IDC_PROMPT_TEXT, PromptText);
    SetWindowTextA(dialog, PromptTitle[0] ? PromptTitle : " ");
    for (const std::string& item : ListItems)
        SendDlgItemMessageA(dialog, IDC_PROMPT_LIST, LB_ADDSTRING, 0, (LPARAM)item.c_str());
    ForceForeground(dialog);
    if (DialogTimeout > 0) SetTimer(dialog, TIMER_DIALOG_CLOSE, (UINT)DialogTimeout, nullptr);
}

void ReadDialog(HWND dialog) {
    if (DialogId == IDD_CHOOSE_LIST) {
        LRESULT selected = SendDlgItemMessageA(dialog, IDC_PROMPT_LIST, LB_GETCURSEL, 0, 0);
        if (selected != LB_ERR && selected < (LRESULT)ListItems.size())
            CopyIntoN(PromptResult, sizeof PromptResult, ListItems[(size_t)selected].c_str());
        return;
    }
    GetDlgItemTextA(dialog, IDC_PROMPT_EDIT, PromptResult, sizeof PromptResult);
    if (DialogId == IDD_LOGIN) GetDlgItemTextA(dialog, IDC_PROMPT_PASSWORD, PromptPassword, sizeof PromptPassword);
}

// Opens one of the three dialogs; `timeoutMs` over 0 cancels it by itself.
void RunDialog(int id, int timeoutMs) {
    if (UnattendedRun) {
        // Cancel, as its time running out would.
        ReportUnshownBox(PromptTitle[0] ? PromptTitle : " ", PromptText[0] ? PromptText : "input cancelled");
        ListItems.clear();
        return;
    }
    DialogId = id;
    DialogTimeout = timeoutMs;
    DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(id), MainWindow, PromptDialogProc, 0);
    ListItems.clear();
    // Focus goes back to the window that the script had activated.
    if (WindowActivated && LastWindow) ForceForeground(LastWindow);
}

// "timeout;prompt;item;item...": the list dialog's parameter.
void SplitListParameter(const std::string& parameter) {
    ListItems.clear();
    size_t start = 0;
    for (int field = 0;; field++) {
        size_t end = parameter.find(';', start);
        std::string value = parameter.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (field == 1) CopyIntoN(PromptText, sizeof PromptText, value.c_str());
        if (field >= 2) ListItems.push_back(value);
        if (end == std::string::npos) break;
        start = end + 1;
    }
}

int MessageBoxStep(const char* action, const Step& s, const std::string& text, int timeout) {
    UINT flags = ContainsNoCase(action, "Display Warning") ? 0x30 : ContainsNoCase(action, "Ask") ? 0x24 : 0x40;
    flags |= ContainsNoCase(s.options, "top") ? 0x41000 : 0x2000;
    flags |= 0x10000;
    int answer;
    if (UnattendedRun) {
        // A prompt tells or asks; nobody reads it: it times out if it can,
        // else it is answered the way that goes no further.
        ReportUnshownBox(PromptTitle, text.c_str());
        answer = timeout ? -1 : StoppingAnswer(PromptTitle, flags);
    } else {
        answer = timeout ? TimedMessageBox(nullptr, text.c_str(), PromptTitle, flags, timeout)
                         : ShowMessageBox(nullptr, text.c_str(), PromptTitle, flags);
    }
    // A question that timed out counts as Yes.
    if (ContainsNoCase(action, "Ask")) CopyInto(PromptResult, answer == IDNO ? "0" : "1");
    return answer;
}

void ChooseFile(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    ReadVariable(s.output_value, tab, step, PromptResult, sizeof PromptResult);
    char file[MAX_PATH];
    CopyIntoN(file, sizeof file, PromptResult);
    if (ChooseFileName(GetForegroundWindow(), "All Files (*.*)\0*.*\0", PromptTitle, file, sizeof file, false))
        CopyIntoN(PromptResult, sizeof PromptResult, file);
}

void ChooseFolder() {
    PromptResult[0] = 0;
    char path[MAX_PATH];
    if (ChooseFolderName(GetForegroundWindow(), PromptTitle, path, BIF_RETURNONLYFSDIRS))
        CopyIntoN(PromptResult, sizeof PromptResult, path);
}

void SaveLogin(int tab, int step) {
    LogPrintf(OutputEdit, "\tSaving result to %%username and %%password: \"%s\", \"%s\"\r\n", PromptResult,
              PromptPassword);
    const long user = (long)strlen(PromptResult), password = (long)strlen(PromptPassword);
    SaveOutput(tab, step, PromptResult, user, "username");
    SaveOutput(tab, step, PromptResult, user, "login_username");
    SaveOutput(tab, step, PromptPassword, password, "password");
    SaveOutput(tab, step, PromptPassword, password, "login_password");
}

}  // namespace

int TimedMessageBox(HWND owner, const char* text, const char* title, UINT flags, int timeoutMs) {
    TimedOut = 0;
    TimedOwner = owner && IsWindowEnabled(owner) ? owner : nullptr;
    UINT_PTR timer = SetTimer(nullptr, 0, (UINT)timeoutMs, TimedBoxExpired);
    int answer = ShowMessageBox(owner, text, title, flags);
    KillTimer(nullptr, timer);
    if (!TimedOut) return answer;
    // The quit message ended the box; it must not end this thread's loop too.
    MSG msg;
    PeekMessageA(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    return -1;
}

INT_PTR CALLBACK PromptDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
    case WM_INITDIALOG:
        InitDialog(dialog);
        return TRUE;
    case WM_TIMER:
        if (wParam == TIMER_DIALOG_CLOSE) EndDialog(dialog, IDCANCEL);
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDOK || (LOWORD(wParam) == IDC_PROMPT_LIST && HIWORD(wParam) == LBN_DBLCLK)) {
            ReadDialog(dialog);
            EndDialog(dialog, IDOK);
            return TRUE;
        }
        if (LOWORD(wParam) == IDCANCEL) {
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        }
        break;
    }
    return FALSE;
}

int ActPrompt(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    CopyIntoN(action, sizeof action, s.action);

    TranslateText(s.timeout, tab, step);
    std::string timeoutText = TranslatedText;
    const int timeout = (int)(ParseFloat(timeoutText.c_str()) * 1000);
    if (s.loops == 1 && !timeoutText.empty())
        LogPrintf(OutputEdit, "\t%s seconds allowed for message to close\r\n", timeoutText.c_str());
    TranslateText(s.value[0], tab, step);
    CopyIntoN(PromptTitle, sizeof PromptTitle, TranslatedText);
    TranslateText(s.text, tab, step);
    std::string text = TranslatedText;
    if (text.size() > 0x2000) text = text.substr(0, 0x1FE0) + "<<MESSAGE OVER 8K, TRUNCATED BY ZantoRunner>>";

    // Message boxes: only the question saves its answer.
    if (ContainsNoCase(action, "Display Message") || ContainsNoCase(action, "Display Warning") ||
        ContainsNoCase(action, "Ask")) {
        MessageBoxStep(action, s, text, timeout);
        if (ContainsNoCase(action, "Ask")) SaveOutput(tab, step, PromptResult, (long)strlen(PromptResult), nullptr);
        return 1;
    }
    if (ContainsNoCase(action, "Status Popup") || ContainsNoCase(action, "Progress")) {
        const bool progress = ContainsNoCase(action, "Progress");
        // The text is handed over as it stands, never as a format.
        ShowPopup(ContainsNoCase(s.options, "top"), progress, timeout, 0, 0, 350, 100, "%s", text.c_str());
    } else if (ContainsNoCase(action, "Tool Tip Popup") || ContainsNoCase(action, "Balloon Popup")) {
        int time = timeout;
        if (time < 1 && s.loops == 1) LogPrintf(OutputEdit, "\tWarning: No time limit set for tool tip\r\n");
        if (time < 3000) time = 3000;
        if (ContainsNoCase(action, "Balloon Popup")) {
            TrayIcon(MainWindow, -1, PromptTitle);
            ShowTip(MainWindow, TIP_TRAY_BALLOON, text.empty() ? " " : text.c_str(),
                    PromptTitle[0] ? PromptTitle : " ", time, 0, 0);
        } else {
            ShowTip(nullptr, TIP_PLAIN, text.c_str(), nullptr, time, 0, 0);
        }
    } else if (ContainsNoCase(action, "Display Image")) {
        char file[MAX_PATH];
        ResolveProgramPath(text.c_str(), file, ScriptStore.tab[tab].path);
        if (!ShowImagePopup(file, 0, timeout, 0, nullptr)) {
            snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to display image \"%s\" [%s]", text.c_str(),
                     file);
            return 0;
        }
    } else if (ContainsNoCase(action, "Input Value")) {
        ReadVariable(s.output_value, tab, step, PromptResult, sizeof PromptResult);
        CopyIntoN(PromptText, sizeof PromptText, text.c_str());
        RunDialog(IDD_INPUT_VALUE, timeout);
    } else if (ContainsNoCase(action, "Login")) {
        PromptResult[0] = 0;
        ReadVariable("login_username", tab, step, PromptResult, sizeof PromptResult);
        if (!PromptResult[0]) ReadVariable("username", tab, step, PromptResult, sizeof PromptResult);
        DeleteSetting(nullptr, ZR_ROOT "UserVariables\\password");
        DeleteSetting(nullptr, ZR_ROOT "UserVariables\\login_password");
        PromptPassword[0] = 0;
        CopyIntoN(PromptText, sizeof PromptText, text.c_str());
        RunDialog(IDD_LOGIN, timeout);
    } else if (ContainsNoCase(action, "List")) {
        PromptResult[0] = 0;
        PromptText[0] = 0;
        char head[32];
        FormatInto(head, "%li;", (long)timeout);
        SplitListParameter(head + text);
        RunDialog(IDD_CHOOSE_LIST, timeout);
    } else if (ContainsNoCase(action, "File")) {
        ChooseFile(tab, step);
    } else if (ContainsNoCase(action, "Folder")) {
        ChooseFolder();
    }

    if (ContainsNoCase(action, "Login"))
        SaveLogin(tab, step);
    else
        SaveOutput(tab, step, PromptResult, (long)strlen(PromptResult), nullptr);
    return 1;
}
