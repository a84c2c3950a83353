// Category 15: what acts on the machine rather than on a window. The action is
// found by keyword, in this order; the first match decides.
#include "system/systemstep.h"

#include <windows.h>
#include <string.h>

#include "editor/settings.h"
#include "editor/ui.h"
#include "run/clipboard.h"
#include "run/log.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "script/words.h"

namespace {

// Step Delay: the run core sleeps this long after each step that passes.
int StepDelay(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    WriteSetting(nullptr, TranslatedText, 0, nullptr, ZR_ROOT "InterStepDelay-%d", tab);
    return 1;
}

// Write to Log: the line goes through the log as any other, and is then
// appended to the log file whatever "Log" says, so that it reaches the file
// with logging off; with logging on it stands there twice, on purpose.
int WriteToLog(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    LogPrintf(OutputEdit, "%s\r\n", TranslatedText);
    char logfile[MAX_PATH];
    SettingText("Logfile", logfile, sizeof logfile);
    AppendToFile(nullptr, logfile, TranslatedText);
    AppendToFile(nullptr, logfile, "\r\n");
    return 1;
}

// Set Clipboard Text: the translated text goes on the clipboard.
int SetClipboard(int tab, int step) {
    int length = TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    SetClipboardText(TranslatedText, length > 0 ? (size_t)length - 1 : 0);
    return 1;
}

int ClearClipboard(int, int) {
    if (OpenClipboard(nullptr)) {
        EmptyClipboard();
        CloseClipboard();
    }
    return 1;
}

const struct {
    const char* keyword;
    StepHandler handler;  // null: not built yet
} kSystemActions[] = {
    {"Variable", VariableStep},     // Create/Set, Increment, Decrement, Environment
    {"Step Delay", StepDelay},
    {"Write to Log", WriteToLog},
    {"Set Clipboard", SetClipboard},
    {"Paste Clipboard", nullptr},
    {"Clear Clipboard", ClearClipboard},
    {"Capture", nullptr},           // Screen and Window Image Capture
    {"Video Display", nullptr},
    {"Screen Saver", nullptr},
    {"Registry", nullptr},
    {"Logoff", nullptr},
    {"Restart", nullptr},
    {"Shutdown", nullptr},
};

}  // namespace

int SystemStep(int tab, int step) {
    const char* action = ScriptStore.tab[tab].steps[step].action;
    for (const auto& a : kSystemActions) {
        if (!ContainsNoCase(action, a.keyword)) continue;
        return a.handler ? a.handler(tab, step) : ReportUnknownAction(tab, step);
    }
    return 1;  // "Comment": nothing to do
}
