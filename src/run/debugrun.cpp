#include "run/debugrun.h"

#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "run/runwait.h"

volatile bool DebugRun;

namespace {

// The pause: the run thread writes it before it posts, and the editor reads
// it after the post and before it answers; the event hands the answer over.
HANDLE ResumeEvent;
volatile LONG Paused;  // 1 while the run thread waits in PauseRun
volatile LONG Pauses;
int PauseStep = -1;
int PauseReason = PAUSE_NONE;
char PauseWords[STEP_FAILURE_TEXT_SIZE];
char PauseValues[2048];
volatile int Answer;
volatile int AnswerTarget = -1;

// What the last answer asked of the steps ahead.
bool StepMode;
int RunToStep = -1;

}  // namespace

bool PauseOnFailure() {
    char text[16] = "";
    SettingText("Debug\\PauseOnFailure", text, sizeof text);
    return !text[0] || text[0] != '0';
}

void SetPauseOnFailure(bool on) {
    WriteSetting(nullptr, nullptr, on ? 1 : 0, nullptr, ZR_ROOT "Debug\\PauseOnFailure");
}

int StartDebugRun(int tab, HWND window, bool fromHere) {
    if (RunThread) return 0;
    if (!ResumeEvent) ResumeEvent = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (!ResumeEvent) return 0;
    DebugRun = true;
    StepMode = false;
    RunToStep = -1;
    const int started = StartRun(tab, window, fromHere ? CMD_RUN_FROM_HERE : CMD_RUN, 1);
    if (!started) DebugRun = false;
    return started;
}

void EndDebugRun() {
    DebugRun = false;
    StepMode = false;
    RunToStep = -1;
}

bool DebugPausesBefore(int step, bool breakpoint) {
    return DebugRun && (breakpoint || StepMode || step == RunToStep);
}

// Written on the run thread before the pause is posted, so that the editor
// reads them while the run stands still.
void NoteRunValues() {
    PauseValues[0] = 0;
    const int tab = RunningTab >= 0 && RunningTab < 8 ? RunningTab : 0;
    for (int i = LOOP_STACK_DEPTH - 1; i >= 0; i--) {
        if (LoopStack[tab][i] <= 0) continue;
        char line[80];
        FormatInto(line, "(loop at step %d)\tpass %d\n", LoopStack[tab][i], LoopCounters[tab][i] + 1);
        AppendInto(PauseValues, line);
    }
    char title[256] = "";
    if (LastWindow && IsWindow(LastWindow)) GetWindowTextA(LastWindow, title, sizeof title);
    char line[300];
    FormatInto(line, "(window)\t%s\n", LastWindow ? title : "(none)");
    AppendInto(PauseValues, line);
}

int PauseRun(int step, int reason, const char* words) {
    if (!DebugRun || !ResumeEvent) return DEBUG_CONTINUE;
    NoteRunValues();
    PauseStep = step;
    PauseReason = reason;
    CopyInto(PauseWords, words ? words : "");
    Answer = 0;
    ResetEvent(ResumeEvent);
    InterlockedExchange(&Paused, 1);
    InterlockedIncrement(&Pauses);
    if (MainWindow) PostMessageA(MainWindow, WM_RUN_PAUSED, (WPARAM)step, (LPARAM)reason);
    // Only an answer or a stop ends the pause: a pause has no time limit.
    const int waited = RunWait(ResumeEvent, INFINITE);
    InterlockedExchange(&Paused, 0);
    int answer = waited == RUNWAIT_DONE ? Answer : DEBUG_STOP;
    PauseReason = PAUSE_NONE;
    if (MainWindow) PostMessageA(MainWindow, WM_RUN_PAUSED, (WPARAM)-1, 0);
    StepMode = answer == DEBUG_STEP;
    RunToStep = answer == DEBUG_RUN_TO ? AnswerTarget : -1;
    // Continue, Step and Run to Here at a failure let its failure mode act.
    if (reason == PAUSE_FAILURE && (answer == DEBUG_CONTINUE || answer == DEBUG_STEP || answer == DEBUG_RUN_TO))
        answer = DEBUG_APPLY;
    return answer;
}

bool RunPaused() { return Paused != 0; }

long PauseCount() { return Pauses; }

int PausedStep() { return Paused ? PauseStep : -1; }

int PausedReason() { return Paused ? PauseReason : PAUSE_NONE; }

const char* PausedWords() { return Paused ? PauseWords : ""; }

const char* PausedRunValues() { return Paused ? PauseValues : ""; }

bool ResumeRun(int command, int target) {
    if (!Paused) return false;
    const bool atFailure = PauseReason == PAUSE_FAILURE;
    if (!atFailure && (command == DEBUG_RETRY || command == DEBUG_SKIP || command == DEBUG_APPLY)) return false;
    AnswerTarget = target;
    Answer = command;
    SetEvent(ResumeEvent);
    return true;
}
