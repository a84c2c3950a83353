#include "net/runningscript.h"

#include "base/fileidentity.h"
#include "base/text.h"
#include "run/runstate.h"
#include "script/step.h"

bool RefuseRunningScript(int tab, const char* target) {
    if (tab < 0 || tab >= MAX_TABS || !SameDiskObject(target, ScriptStore.tab[tab].path)) return false;
    FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                "Refused: '%.1000s' is the script that is running; a download there would replace its steps",
                target);
    return true;
}
