// Failure handling. For now every real failure reports and stops the run, as
// the default mode "Display Error and Stop" does, without its message box;
// the other modes, time limits and screen images come with the failure modes.
#include "run/failure.h"

#include "editor/ui.h"
#include "run/log.h"
#include "run/runstate.h"
#include "script/step.h"
#include "script/words.h"

int HandleFailure(int tab, int step) {
    if (tab < 0 || tab >= MAX_TABS || step < 0 || !ScriptStore.tab[tab].steps) return -1;
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (ContainsNoCase(s.action, "Delay") || ContainsNoCase(s.action, "Freeze")) return -1;
    char report[STEP_FAILURE_TEXT_SIZE + 200];
    if (StepFailureText[0])
        wsprintfA(report, "ERROR while running [STEP %d] %s: %s\r\n", step + 1, s.action, StepFailureText);
    else
        wsprintfA(report, "ERROR while running [STEP %d] %s\r\n", step + 1, s.action);
    LogPrintf(OutputEdit, "\t%s", report);
    StatusPrintf(StatusBar, 0, "%s", report);
    StepFailureText[0] = 0;
    return -1;
}
