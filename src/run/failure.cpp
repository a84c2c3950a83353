// Failure handling: the step's own failure mode decides what the run does
// next. A failing step is also re-run silently until its time limit has
// passed, which is how most waits are built: a test that fails, and this.
// A failing step may leave a screen image beside the log, taken through
// RunWorld (run/worldseams.h).
#include "run/failure.h"
#include "base/text.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "run/flow.h"
#include "base/log.h"
#include "run/numbers.h"
#include "run/runrecord.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "run/worldseams.h"
#include "script/step.h"
#include "base/words.h"

namespace {

enum { FAILURE_BOX_SIZE = 300 };  // the failure box's text

int FailureBox(const char* text, UINT flags) { return RunMessageBox(text, "Run Failure", flags); }

// The screen as it was at the failure, beside the log and named after it,
// or in the run's own folder of artefacts; one that only the run report
// asked for goes to the report's scratch folder. A PNG with the image
// search's best miss boxed when the step's search missed, else a BMP. Its
// name, or "" when none was saved.
std::string SaveFailureImage(int tab, int step, bool forReportOnly) {
    char logfile[MAX_PATH];
    SettingText("Logfile", logfile, sizeof logfile);
    if (char* dot = strrchr(logfile, '.')) *dot = 0;
    const std::string& folder = forReportOnly && RunRecord.imageFolder.empty() ? RunRecord.scratchFolder
                                                                                : RunRecord.imageFolder;
    if (!folder.empty()) FormatInto(logfile, "%s\\failure", folder.c_str());
    SYSTEMTIME now;
    GetLocalTime(&now);
    char name[MAX_PATH + 64];
    snprintf(name, sizeof name, "%s [Step %d] FAILURE %04d-%02d-%02d_%02d%02d%02d", logfile, step + 1, now.wYear,
             now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
    char saved[MAX_PATH + 80];
    if (!RunWorld.saveFailureScreen || !RunWorld.saveFailureScreen(name, tab, step, saved, sizeof saved)) return "";
    return saved;
}

int JumpToLabel(int tab, const Step& failed) {
    const TabStore& t = ScriptStore.tab[tab];
    // The label's raw text is compared with the raw value: no translation.
    for (int i = 0; i < t.count; i++) {
        if (lstrcmpiA(t.steps[i].action, "Label") == 0 && lstrcmpiA(TextOf(t.steps[i].text), failed.onfail_value) == 0) {
            LogPrintf(OutputEdit, "\tJumping to label \"%s\" [Step %d]\r\n", failed.onfail_value, i + 1);
            return i;
        }
    }
    LogPrintf(OutputEdit, "\tLabel \"%s\" not found\r\n", failed.onfail_value);
    char text[400];
    snprintf(text, sizeof text, "Label \"%s\" not found\r\n", failed.onfail_value);
    FailureBox(text, MB_OK | MB_ICONWARNING);
    return -1;
}

int IncrementOnFailure(int tab, int step, const Step& s) {
    if (!s.onfail_value[0]) return step + 1;
    char value[260];
    int number = ReadVariable(s.onfail_value, tab, step, value, sizeof value) + 1;
    char text[16];
    FormatInto(text, "%d", number);
    SaveOutput(tab, step, text, (long)strlen(text), s.onfail_value);
    LogPrintf(OutputEdit, "\tIncrementing variable '%s' = %d\r\n", s.onfail_value, number);
    return step + 1;
}

// The failure modes, tested in this order by keyword; the first match decides.
int ApplyMode(int tab, int step, const Step& s, char* boxText) {
    const char* mode = s.onfail;
    if (ContainsNoCase(mode, "IGNORE")) return step + 1;
    if (ContainsNoCase(mode, "RETRY")) {
        if (++RetryCount > ParseInt(s.onfail_value)) return -1;
        LogPrintf(OutputEdit, "\tRetrying step (retry %d of %s)\r\n", RetryCount, s.onfail_value);
        BeginStep(tab, step);  // logs the step again and restarts its clock
        return step;
    }
    if (ContainsNoCase(mode, "ERROR") || !mode[0]) {
        if (ContainsNoCase(mode, "ERROR AND CONTINUE")) {
            FailureBox(boxText, MB_OK | MB_ICONWARNING);
            return step + 1;
        }
        FailureBox(boxText, MB_OK | MB_ICONSTOP);
        return -1;
    }
    if (ContainsNoCase(mode, "SILENT")) return -1;
    if (ContainsNoCase(mode, "ASK")) {
        AppendIntoN(boxText, FAILURE_BOX_SIZE, "\n\nContinue?");
        if (FailureBox(boxText, MB_YESNO | MB_ICONQUESTION) == IDYES) {
            LogPrintf(OutputEdit, "\tUser chose to CONTINUE\r\n");
            return step + 1;
        }
        LogPrintf(OutputEdit, "\tUser chose to STOP\r\n");
        return -1;
    }
    if (ContainsNoCase(mode, "JUMP")) return JumpToLabel(tab, s);
    if (ContainsNoCase(mode, "VARIABLE")) return IncrementOnFailure(tab, step, s);
    if (ContainsNoCase(mode, "RESTART")) {
        LogPrintf(OutputEdit, "\tRestarting Run at at [Step 1]\r\n");
        BeginStep(tab, step);  // the failed step's line, not step 0's
        RetryCount = 0;
        return 0;
    }
    return -1;
}

}  // namespace

int HandleFailure(int tab, int step) {
    if (tab < 0 || tab >= MAX_TABS || step < 0 || !ScriptStore.tab[tab].steps) return -1;
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (ContainsNoCase(s.action, "Delay") || ContainsNoCase(s.action, "Freeze")) return -1;
    if (s.category == CAT_IF) return IfJump(tab, step);  // 0 means false here, not a failure

    // Within the step's time limit the step simply runs again, with no word.
    TranslateText(s.timeout, tab, step);
    double seconds = ParseFloat(TranslatedText);
    unsigned elapsed = GetTickCount() - StepStartTick;
    if ((double)elapsed < seconds * 1000) return step;

    int logTurnedOn = 0;
    if (s.onfail_log && !SettingInt("Log")) {
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
        logTurnedOn = 1;
    }
    char report[STEP_FAILURE_TEXT_SIZE + 200];
    if (StepFailureText[0])
        snprintf(report, sizeof report, "ERROR while running [STEP %d] %s: %s\r\n", step + 1, s.action, StepFailureText);
    else
        snprintf(report, sizeof report, "ERROR while running [STEP %d] %s\r\n", step + 1, s.action);
    LogPrintf(OutputEdit, "\t%s", report);
    StatusPrintf(StatusBar, 0, "%s", report);
    if (logTurnedOn) WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");

    const std::string words = StepFailureText[0] ? StepFailureText : "";
    char boxText[FAILURE_BOX_SIZE];
    if (StepFailureText[0])
        CopyIntoN(boxText, 254, StepFailureText);
    else
        snprintf(boxText, sizeof boxText, "Error while running [STEP %d]:  %s", step + 1, s.action);
    StepFailureText[0] = 0;

    char modeLine[128];
    snprintf(modeLine, sizeof modeLine, "\tFailure Mode: %s\r\n", s.onfail);
    LogPrintf(OutputEdit, "%s", modeLine);
    StatusPrintf(StatusBar, 0, "%s", modeLine);
    std::string image;
    if (s.onfail_image || RunRecord.captureFailures) image = SaveFailureImage(tab, step, !s.onfail_image);
    RecordFailure(step, s.action, words.empty() ? boxText : words.c_str(), image.c_str());

    int next = ApplyMode(tab, step, s, boxText);
    if (next < 0) {
        LogPrintf(OutputEdit, "RUN FAILED\r\n");
        if (!RunOutcome) RunOutcome = EXIT_RUN_FAILED;
    }
    return next;
}

int FailStep(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsnprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, format, args);
    va_end(args);
    return 0;
}
