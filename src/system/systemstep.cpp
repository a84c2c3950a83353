// Category 15: what acts on the machine rather than on a window. The action is
// found by keyword, in this order; the first match decides.
#include "system/systemstep.h"
#include "base/text.h"

#include <windows.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "desktop/keynames.h"
#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "desktop/screencapture.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/clipboard.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "system/display.h"
#include "system/registrystep.h"
#include "system/session.h"

namespace {

// Step Delay: the run core sleeps this long after each step that passes.
// The number is read as the run core reads it back (its leading digits), and
// kept within what a wait can be: a number past the 32-bit range must not
// wrap into a delay of weeks.
int StepDelay(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    long long ms = strtoll(TranslatedText, nullptr, 10);
    if (ms < 0) ms = 0;
    if (ms > 2147483647LL) ms = 2147483647LL;
    char text[16];
    FormatInto(text, "%d", (int)ms);
    WriteSetting(nullptr, text, 0, nullptr, ZR_ROOT "InterStepDelay-%d", tab);
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
    AppendLineToFile(nullptr, logfile, TranslatedText);  // one write: no other process's line between
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

// Paste Clipboard: Ctrl+V, and a moment for the target to take it.
int PasteClipboard(int, int) {
    PressWithCtrl(KeyNameToVk("v", nullptr, 0, nullptr) & 0xFF);
    DesktopSleep(500);
    return 1;
}

// Screen or Window Image Capture: the text names the bitmap file. A failed
// capture passes the step.
int Capture(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.text, tab, step);
    std::string file = TranslatedText;
    if (ContainsNoCase(s.action, "Screen")) {
        CaptureScreenToFile(nullptr, nullptr, file.c_str(), 0);
        return 1;
    }
    if (!LastWindow || !IsWindow(LastWindow) || !IsWindowVisible(LastWindow)) {
        DesktopSleep(250);
        LastWindow = GetForegroundWindow();
    }
    CaptureScreenToFile(LastWindow, nullptr, file.c_str(), 0);
    return 1;
}

// The screen saver's values under "Control Panel\Desktop"; the program's
// name is kept aside in a ".BAK" value while it is off.
int ScreenSaver(int tab, int step) {
    const bool enable = ContainsNoCase(ScriptStore.tab[tab].steps[step].action, "Enable");
    const char* from = enable ? "Control Panel\\Desktop\\SCRNSAVE.EXE.BAK" : "Control Panel\\Desktop\\SCRNSAVE.EXE";
    const char* to = enable ? "Control Panel\\Desktop\\SCRNSAVE.EXE" : "Control Panel\\Desktop\\SCRNSAVE.EXE.BAK";
    WriteSetting(nullptr, enable ? "1" : "0", 0, nullptr, "Control Panel\\Desktop\\ScreenSaveActive");
    char program[MAX_PATH] = "";
    ReadSetting(nullptr, program, sizeof program, nullptr, "%s", from);
    WriteSetting(nullptr, program, 0, nullptr, "%s", to);
    DeleteSetting(nullptr, "%s", from);
    return 1;
}

// Logoff, Restart, Shutdown: the log line, then the end of the session.
int EndSession(int tab, int step) {
    const char* action = ScriptStore.tab[tab].steps[step].action;
    const bool logoff = ContainsNoCase(action, "Logoff"), restart = ContainsNoCase(action, "Restart");
    LogPrintf(OutputEdit, logoff ? "Logoff at [Step %d]..." : restart ? "Rebooting at [Step %d]..." : "Shutdown at [Step %d]...",
              step + 1);
    ExitSession(logoff ? EWX_LOGOFF : restart ? EWX_REBOOT | EWX_FORCE : EWX_SHUTDOWN | EWX_FORCE);
    return 1;
}

const struct {
    const char* keyword;
    StepHandler handler;
} kSystemActions[] = {
    {"Variable", VariableStep},     // Create/Set, Increment, Decrement, Environment
    {"Step Delay", StepDelay},
    {"Write to Log", WriteToLog},
    {"Set Clipboard", SetClipboard},
    {"Paste Clipboard", PasteClipboard},
    {"Clear Clipboard", ClearClipboard},
    {"Capture", Capture},           // Screen and Window Image Capture
    {"Video Display", VideoDisplayStep},
    {"Screen Saver", ScreenSaver},
    {"Registry", RegistryStep},     // Read, Write, Copy, Delete
    {"Logoff", EndSession},
    {"Restart", EndSession},
    {"Shutdown", EndSession},
};

}  // namespace

int SystemStep(int tab, int step) {
    const char* action = ScriptStore.tab[tab].steps[step].action;
    for (const auto& a : kSystemActions) {
        if (!ContainsNoCase(action, a.keyword)) continue;
        return a.handler(tab, step);
    }
    return 1;  // "Comment": nothing to do
}
