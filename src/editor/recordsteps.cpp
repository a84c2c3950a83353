// Record as Steps: starts and stops the step recorder, and inserts what it
// made as ordinary steps.
#include "editor/recordsteps.h"

#include <string.h>

#include <string>
#include <vector>

#include "base/heap.h"
#include "base/log.h"
#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "desktop/keynames.h"
#include "desktop/steprecorder.h"
#include "editor/propertygrid.h"
#include "editor/toolbar.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "script/newstep.h"
#include "script/step.h"
#include "script/undo.h"

RecordStepsResult LastRecordSteps;

namespace {

void SetHeapText(char*& field, const std::string& text) {
    field = EnsureCapacity(field, text.size());
    if (field) CopyIntoN(field, HeapBlockSize(field), text.c_str());
}

// Every step of one recording carries the same undo stamp, so that one Undo
// takes the whole recording back.
int InsertSteps(const std::vector<RecordedStep>& steps, int at) {
    const int32_t stamp = (int32_t)GetTickCount();
    int inserted = 0;
    for (const RecordedStep& r : steps) {
        const int index = NewStep(r.action, at);
        if (index < 0) continue;
        TabStore& t = CurrentTab();
        if (t.undo && UndoCount() > 0) t.undo[UndoCount() - 1].stamp = stamp;
        Step& s = t.steps[index];
        SetHeapText(s.text, r.text);
        SetHeapText(s.comment, r.comment);
        CopyInto(s.options, r.options);
        if (r.value1[0]) CopyInto(s.value[0], r.value1);
        if (r.timeout[0]) CopyInto(s.timeout, r.timeout);
        at = index + 1;
        inserted++;
    }
    return inserted;
}

// The menu item carries a check, and the toolbar button shows pressed, while
// a recording goes on: the same command ends it.
void ShowRecording(HWND window, bool on) {
    CheckMenuItem(GetMenu(window), CMD_RECORD_STEPS, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
    UpdateToolbar();
}

void Finish(HWND window) {
    const std::vector<StepEvent> events = StopStepRecorder();
    ShowRecording(window, false);
    const std::vector<RecordedStep> steps = StepsFromEvents(events);
    const int selected = SelectedStepRow();
    LastRecordSteps.inserted = InsertSteps(steps, selected >= 0 ? selected + 1 : -1);
    CountControlClicks(events, &LastRecordSteps.controlClicks, &LastRecordSteps.controlSteps);
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(window);
    if (LastRecordSteps.inserted > 0) SelectStepRow((selected >= 0 ? selected + 1 : CurrentTab().count - LastRecordSteps.inserted));
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
    RefreshPropertyGrid();
    StatusPrintf(StatusBar, 0, "Recorded %d step%s; %d of %d clicks on controls became control steps",
                 LastRecordSteps.inserted, LastRecordSteps.inserted == 1 ? "" : "s", LastRecordSteps.controlSteps,
                 LastRecordSteps.controlClicks);
}

}  // namespace

int CommandRecordSteps(HWND window) {
    if (StepRecorderRunning()) {
        Finish(window);
        return 0;
    }
    if (RunThread) return 0;  // a running script's own input is not the user's work
    LastRecordSteps = {};
    if (!StartStepRecorder(window, WM_COMMAND, CMD_RECORD_STEPS)) {
        ShowMessageBox(window, "Start Recording Failed", "Recording Error", MB_OK | MB_ICONEXCLAMATION);
        return -1;
    }
    ShowRecording(window, true);
    char key[KEY_NAME_SIZE];
    VkToKeyName(StopKey & 0xFF, key);
    StatusPrintf(StatusBar, 0, "Recording as steps: press the \"%s\" key to finish", key);
    if (SettingInt("MinimizeRecord")) ShowWindow(window, SW_MINIMIZE);
    return 0;
}
