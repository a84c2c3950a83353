// Category 2. The action name decides: "KILL", then "Service", and anything
// else starts a program ("Call Script" a child run of this program).
#include "system/runprogram.h"
#include "base/text.h"
#include "base/utf8.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "desktop/windowcontrol.h"
#include "base/ui.h"
#include "base/unattended.h"
#include "run/expressions.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "run/childruns.h"
#include "system/launch.h"
#include "system/processes.h"
#include "base/programpath.h"
#include "system/services.h"

namespace {

int KillProcess(const std::string& name) {
    int result = FindProcess(name.c_str(), 2, nullptr, 0, nullptr, 0);
    if (!result) result = FindProcess(name.c_str(), 2, nullptr, 0, nullptr, 1);
    if (!result) snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to find process '%s'", name.c_str());
    return result;
}

// The step's time limit in whole seconds, as milliseconds; none means for
// ever (-1 second).
int32_t WaitMilliseconds(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].timeout, tab, step);
    std::string formula = TranslatedText;
    formula.push_back('\0');
    double seconds = CalcFormula(&formula[0], nullptr);
    if (seconds == 0) seconds = -1.0;
    // Whole seconds, held where the milliseconds fit: a huge or hugely
    // negative limit must not wrap round to 0 (no wait at all) or to
    // another number. Negative stays "for ever".
    if (seconds < 0) return -1000;
    if (seconds > 2000000) seconds = 2000000;
    return (int32_t)seconds * 1000;
}

int StartProgram(int tab, int step, const std::string& text) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char resolved[MAX_PATH * 2];
    ResolveProgramPath(text.c_str(), resolved, ScriptStore.tab[tab].path);
    std::string command = resolved;
    const bool callScript = ContainsNoCase(s.action, "Call Script");
    if (callScript) {
        // A script that calls itself would start a process at every level,
        // without end: the depth each child run is told stops it.
        if (CallDepth() >= MAX_CALL_DEPTH) {
            FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                        "Call Script: more than %d nested runs - does %s call itself?", MAX_CALL_DEPTH,
                        TextCut(ScriptStore.tab[tab].path, 1024).c_str());
            return 0;
        }
        if (command.empty() || command.front() != '"') command = "\"" + command;
        if (command.size() < 2 || command.back() != '"') command += "\"";
        char self[MAX_PATH];
        GetModuleFileNameA(nullptr, self, sizeof self);
        // A child of an unattended run must not wait for a person either.
        std::string line = "\"";
        line += self;
        line += UnattendedRun ? "\" /r /unattended " : "\" /r ";
        command = line + command;
    }
    if (s.loops == 1) LogPrintf(OutputEdit, "\tTranslated run buffer: [%s]\r\n", command.c_str());
    if (ContainsNoCase(s.options, "Single") && !callScript) {
        // Already running with a window: bring it forward instead.
        HWND window = nullptr;
        if (!FindProcess(command.c_str(), 1, nullptr, 0, &window, 0)) FindProcess(command.c_str(), 1, nullptr, 0, &window, 1);
        if (window) {
            ForceForeground(window);
            return 1;
        }
    }
    const bool visible = !ContainsNoCase(s.options, "hidden");
    int32_t result;
    if (ContainsNoCase(s.options, "Wait") || callScript) {
        int32_t wait = WaitMilliseconds(tab, step);
        // A child run is always waited for (a limit under a second is no
        // limit): a script that calls itself without waiting would start
        // runs faster than any stop could end them.
        if (callScript && wait == 0) wait = -1000;
        if (callScript) EnterChildRunEnvironment();
        result = LaunchProgram(command.c_str(), visible, wait, callScript);
        if (callScript) LeaveChildRunEnvironment();
        if (result == LAUNCH_STOPPED) return 0;  // the run core stops the run
        if (result == LAUNCH_TIMEOUT) {
            snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Program still running after timeout limit of %s seconds",
                     s.timeout);
            return 0;
        }
    } else {
        result = LaunchProgram(command.c_str(), visible, 0);
    }
    if (result == LAUNCH_FAILED) return 0;
    char code[16];
    FormatInto(code, "%d", result);
    SaveOutput(tab, step, code, (long)strlen(code), nullptr);
    return 1;
}

}  // namespace

int RunProgramAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.text, tab, step);
    std::string text = TranslatedText;
    if (text.empty()) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No program name or command line provided");
        return 0;
    }
    if (ContainsNoCase(s.action, "KILL")) return KillProcess(text);
    if (ContainsNoCase(s.action, "Service")) return ServiceStep(tab, step, text.c_str());
    return StartProgram(tab, step, text);
}
