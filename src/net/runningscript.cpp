#include "net/runningscript.h"

#include "base/fileidentity.h"
#include "base/utf8.h"
#include "base/text.h"
#include "run/runstate.h"
#include "script/step.h"

bool RefuseRunningScript(int tab, const char* target) {
    if (tab < 0 || tab >= MAX_TABS || !SameDiskObject(target, ScriptStore.tab[tab].path)) return false;
    FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                "Refused: '%s' is the script that is running; a download there would replace its steps",
                TextCut(target, 1000).c_str());
    return true;
}
