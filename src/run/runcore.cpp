// The Run Core: starting a run, the step loop on the run thread, and stopping.
//
// It calls each category through the table it is handed (StepHandlers) and
// includes none: the rules of the run that touch the desktop (the keys a run
// holds are released at its end, a playback hook is ended with it, the popups
// of earlier steps live on the run thread and are served between steps, a
// new run clears the last prompt's answer) go through RunWorld.
#include <windows.h>
#include "base/text.h"
#include <stdio.h>
#include <string.h>

#include <exception>
#include <new>

#include "base/registrykeys.h"
#include "base/console.h"
#include "base/settings.h"
#include "base/unattended.h"
#include "base/ui.h"
#include "run/failure.h"
#include "run/flow.h"
#include "run/loopstack.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/runrecord.h"
#include "run/runwait.h"
#include "run/childruns.h"
#include "run/debugrun.h"
#include "run/tempfiles.h"
#include "run/textops.h"
#include "run/timelimit.h"
#include "run/variables.h"
#include "run/worldseams.h"
#include "script/step.h"
#include "base/words.h"

int32_t LaunchFlags;
HANDLE RunThread;
volatile int32_t StopRequested;
int32_t ExitCode = EXIT_CODE_NOT_SET;
int32_t StopKey = VK_PAUSE;
char* StepFailureText;
HHOOK PlaybackHook;
uint32_t PlaybackLastTick;
volatile int32_t HookRunning;
int32_t RetryCount;
uint32_t StepStartTick;
int32_t RunRepeats[8];
int32_t HeldCtrl, HeldShift, HeldAlt;
int32_t LeftButtonHeld;
HWND LastWindow;
char InternetScratch[260];
int32_t RunningTab;
int32_t RunOutcome;

// The table the step loop calls, one handler per category. The program's
// entry fills it (InstallStepHandlers); an empty entry is an action whose
// subsystem is not built, which the run core reports as an unknown action.
StepHandler StepHandlers[18];

namespace {

TabStore* RunTabStore(int tab) {
    return tab >= 0 && tab < MAX_TABS ? &ScriptStore.tab[tab] : nullptr;
}

// A line of the run that goes to the log and to status bar part 0.
void AnnounceLine(const char* line) {
    LogPrintf(OutputEdit, "%s", line);
    StatusPrintf(StatusBar, 0, "%s", line);
}

void ReleaseKey(int32_t& held) {
    if (!held) return;
    if (RunWorld.releaseKey) RunWorld.releaseKey(held);
    held = 0;
}

// The one place where the standard library's exceptions stop: a handler
// whose memory ran out, or whose library call refused its arguments, fails
// its step with words that say so, and the step's failure mode decides.
int Dispatch(int tab, const Step& s, int step) {
    StepHandler handler = s.category >= 0 && s.category <= CAT_LAST ? StepHandlers[s.category] : nullptr;
    if (!handler) return ReportUnknownAction(tab, step);
    try {
        TextCeilingHit = false;
        TranslationCut = false;
        const int result = handler(tab, step);
        if (!TextCeilingHit) return result;
        TextCeilingHit = false;
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, TextCeilingText);
    } catch (const std::bad_alloc&) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Insufficient memory available");
    } catch (const std::exception& e) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Internal error in this step: %s", e.what());
    }
    return 0;
}

}  // namespace

int ReportUnknownAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unknown Action (%d) \"%s\"", s.category, s.action);
    LogPrintf(OutputEdit, "\t%s\r\n", StepFailureText);
    StepFailureText[0] = 0;  // reported here; it is no failure reason for a later step
    // A pass that goes on with the following step; in the flow category the
    // result names the next step (plus one), so that must be said explicitly.
    return s.category == CAT_FLOW ? step + 2 : 1;
}

int ProcessExitCode() {
    if (UnattendedRun && RunOutcome) return RunOutcome;
    if (ExitCode != EXIT_CODE_NOT_SET) return ExitCode;
    return SettingInt("DefaultReturnCode");
}

const char* ExitCodeMeaning(int code) {
    switch (code) {
    case EXIT_LOAD_FAILED: return "the script could not be loaded";
    case EXIT_RUN_FAILED: return "the run failed";
    case EXIT_TIME_LIMIT: return "the run time limit ran out";
    case EXIT_NO_WINDOW: return "no window could be created";
    default: return "the run ended";
    }
}

void WriteExitMeaning(int code) {
    char line[160];
    FormatInto(line, "ZantoRunner: exit code %d: %s", code, ExitCodeMeaning(code));
    WriteStandardError(line);
}

int ProcessLastWords() {
    // Said once: WinMain's return and the time limit's watch may meet here.
    static volatile LONG said;
    const int code = ProcessExitCode();
    const bool sayNow = UnattendedRun && !InterlockedExchange(&said, 1);
    if (sayNow)
        if (int seconds = TimeLimitReached())
            LogPrintf(OutputEdit, "Run stopped: time limit of %d seconds reached\r\n", seconds);
    // The result files a fleet reads, once, with the log's last line, also
    // when the time limit ends the process.
    static volatile LONG written;
    if (RunResultsWriter && !InterlockedExchange(&written, 1)) RunResultsWriter(code);
    if (sayNow) WriteExitMeaning(code);
    return code;
}

void EndProcessNow() {
    const int code = ProcessLastWords();
    CloseChildRuns();
    RemoveRunTempFiles();
    TerminateProcess(GetCurrentProcess(), (UINT)code);
}

void BeginStep(int tab, int step) {
    TabStore* t = RunTabStore(tab);
    if (!t || step < 0 || step >= t->count || !t->steps) return;
    StepStartTick = GetTickCount();
    RecordStepBegun(tab, step);
    const Step& s = t->steps[step];
    const char* shown = lstrcmpiA(s.action, "Comment") == 0 ? TextOf(s.comment) : TextOf(s.text);
    // The step's text and its action name come from the file: they are
    // never a format, so the line goes out through "%s".
    char text[260];
    int n = 0;
    for (int i = 0; shown[i] && i < 258; i++) {
        char c = shown[i];
        if (c == '\r' || c == '\n') continue;
        text[n++] = c;
    }
    text[n] = 0;
    const char* quote = n ? "\"" : "";
    char line[1024];
    snprintf(line, sizeof line, "[STEP %d]: %s %s%s%s\r\n", step + 1, s.action, quote, text, quote);
    LogPrintf(OutputEdit, "%s", line);
    if (ProgressVisible()) {
        int total = t->count + 1 > 1 ? t->count + 1 : 1;
        ShowProgress((step + 1) * 100 / total);
    } else {
        StatusPrintf(StatusBar, 0, "%s", line);
    }
    if (StepList && tab == ScriptStore.currentTab && SelectedStepRow() != step && SettingInt("HiliteRunningStep"))
        SelectStepRow(step);
}

int StartRun(int tab, HWND window, int command, int resetRepeats) {
    if (resetRepeats) RunRepeats[ScriptStore.currentTab] = 0;
    if (RunThread) return 0;
    TabStore* t = RunTabStore(tab);
    if (!t || t->count < 1 || !t->steps) {
        RunMessageBox("The file is empty.\n\nPlease add commands before using this feature.", "System Message",
                      MB_ICONINFORMATION);
        return 0;
    }
    int selected = tab == ScriptStore.currentTab ? SelectedStepRow() : -1;
    if (selected >= 0 && selected < t->count && ContainsNoCase(t->steps[selected].action, "Pixel")) {
        SelectStepRow(-1);
        selected = -1;
    }
    command &= 0xFFFF;
    if (command == CMD_RUN) {
        if (SettingInt("ResetUserVariables") && OnlyInstance() && !(LaunchFlags & LAUNCH_VARIABLES))
            ResetAllUserVariables();
        HeldCtrl = HeldShift = HeldAlt = 0;
        InternetScratch[0] = 0;
        if (RunWorld.beginRun) RunWorld.beginRun();
        LastWindow = nullptr;
        ClearLoopStack(tab);
        DeleteSetting(nullptr, ZR_ROOT "InterStepDelay-%d", tab);
        for (int i = 0; i < t->count; i++) t->steps[i].loops = 0;
        SYSTEMTIME now;
        GetLocalTime(&now);
        LogPrintf(OutputEdit, "----------------------------------------\r\nStarting Run at %d:%02d:%02d%s%s\r\n",
                  now.wHour, now.wMinute, now.wSecond, t->path[0] ? " for " : "", t->path);
    }
    if (SettingInt("DisableScreenSaver")) {
        char active[16];
        ReadSetting(nullptr, active, sizeof active, nullptr, "Control Panel\\Desktop\\ScreenSaveActive");
        WriteSetting(nullptr, "0", 0, nullptr, "Control Panel\\Desktop\\ScreenSaveActive");
        WriteSetting(nullptr, active, 0, nullptr, ZR_ROOT "ScreenSaver");
    }
    char logfile[MAX_PATH];
    SettingText("Logfile", logfile, sizeof logfile);
    if (SettingInt("RestartLog")) DeleteFileA(logfile);
    if (ProgressBar && SettingInt("Progress")) ShowProgress(0);
    EnableRunCommands(true);
    ClearStopRequest();
    int key = SettingInt("StopKey");
    if (key) StopKey = key;
    if (SettingInt("MinimizeStart") && window) ShowWindow(window, SW_MINIMIZE);

    int first = 0, single = 0;
    if (command == CMD_RUN_SINGLE_STEP || command == CMD_RUN_FROM_HERE) {
        first = selected >= 0 ? selected : 0;
        single = command == CMD_RUN_SINGLE_STEP ? 1 : 0;
    }
    RunningTab = tab;
    DWORD id = 0;
    RunThread = CreateThread(nullptr, 0, RunCore, (LPVOID)(UINT_PTR)MakeRunArgument(tab, single, first), 0, &id);
    return RunThread ? 1 : 0;
}

DWORD WINAPI RunCore(LPVOID runArgument) {
    uint32_t argument = (uint32_t)(UINT_PTR)runArgument;
    const int tab = (int)(argument >> 28);
    const int startStep = (int)(argument & 0xFFFF);
    const int singleStep = (argument >> 24) & 15 ? startStep : -1;
    int lastBegun = -1;
    int resumedStep = -1;  // the step a debug run paused at and was told to run
    int announce = 0;
    // Scratch for the run's own lines. Its first byte is never 0, so that the
    // elapsed time of "Run Completed" is always written into it.
    char line[1280] = "-";
    TabStore* t = RunTabStore(tab);
    int step = startStep;

    if (!t || !t->steps) {
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Critical internal error in Run Core at [STEP %d]!  Discontinuing Execution\r\n",
                  step + 1);
        LogPrintf(OutputEdit, "%s", StepFailureText);
        ReleaseKeptKeys();
        return 0;  // RunThread stays set: the user has to stop the run to recover
    }
    const DWORD startTick = GetTickCount();
    while (step < t->count) {
        if (singleStep >= 0 && step != singleStep) {
            if (tab == ScriptStore.currentTab && SelectedStepRow() != step)
                SelectStepRow(step < t->count ? step : t->count - 1);
            break;
        }
        if (step < 0 || !t->steps) {
            FormatInto(line, "Critical internal error in Run Core at [STEP %d]!  Discontinuing Execution\r\n",
                      step + 1);
            LogPrintf(OutputEdit, "%s", line);
            break;
        }
        Step* s = &t->steps[step];
        if (s->status & STEP_SKIP) {
            s->last_run = LASTRUN_SKIPPED;
            if (SettingInt("LogLevel")) LogPrintf(OutputEdit, "Skipping [STEP %d]\r\n", step + 1);
            step++;
            continue;
        }
        // A debug run pauses where a plain run would end, and where the user
        // asked it to; the step it paused at then runs, breakpoint or not.
        if (step != resumedStep && DebugPausesBefore(step, (s->status & STEP_BREAKPOINT) != 0)) {
            if (s->status & STEP_BREAKPOINT) s->last_run = LASTRUN_BREAKPOINT;
            LogPrintf(OutputEdit, "Paused at [STEP %d]\r\n", step + 1);
            const int answer = PauseRun(step, PAUSE_BEFORE_STEP, nullptr);
            if (RunThreadLetGo()) {
                ForgetLetGoThread();
                return 0;
            }
            if (step >= t->count || !t->steps) continue;  // steps removed while paused
            s = &t->steps[step];
            if (answer == DEBUG_STOP) {
                s->last_run = LASTRUN_INCOMPLETE;
                FormatInto(line, "Stop request: aborting run at [STEP %d]\r\n\r\n", step + 1);
                AnnounceLine(line);
                break;
            }
            resumedStep = step;
            continue;  // the step may have become a skip meanwhile
        }
        if ((s->status & STEP_BREAKPOINT) && !DebugRun) {
            s->last_run = LASTRUN_BREAKPOINT;
            FormatInto(line, "Breakpoint on [STEP %d]\r\n", step + 1);
            AnnounceLine(line);
            announce = 1;
            break;
        }
        if (step != lastBegun) {
            BeginStep(tab, step);
            RetryCount = 0;
            lastBegun = step;
        }
        Sleep(0);
        // Popups made by earlier steps live on this thread: serve them.
        if (RunWorld.serveStepWindows) RunWorld.serveStepWindows();
        HookRunning = 0;
        s = &t->steps[step];  // a handler may move the array; take the record afresh
        s->last_run = LASTRUN_INCOMPLETE;
        s->loops++;
        const int category = s->category;
        // A reason left by an earlier step (a try that failed before it
        // passed, a note of a menu found by keys) is no reason of this one.
        StepFailureText[0] = 0;
        int result = Dispatch(tab, *s, step);
        resumedStep = -1;  // a loop back to this step may pause at it again

        if (HookRunning) {
            // Both calls pass the thread's pseudo handle, as they always did:
            // only the wait matters. A stop ends the wait; the playback is
            // ended with the run.
            DWORD priority = GetPriorityClass(GetCurrentThread());
            SetPriorityClass(GetCurrentThread(), IDLE_PRIORITY_CLASS);
            while (HookRunning) {
                Sleep(0);
                if (RunWait(nullptr, 200) == RUNWAIT_STOPPED) break;
            }
            SetPriorityClass(GetCurrentThread(), priority);
        }
        // Let go by a forced stop: whatever follows belongs to another run.
        if (RunThreadLetGo()) {
            ForgetLetGoThread();
            return 0;
        }
        if (step >= t->count || !t->steps) continue;  // the loop's range test reports it
        s = &t->steps[step];
        if (UnattendedBoxFailed) {
            // An error box that nobody could read: the run fails here.
            UnattendedBoxFailed = 0;
            s->last_run = LASTRUN_FAIL;
            LogPrintf(OutputEdit, "RUN FAILED\r\n");
            if (!RunOutcome) RunOutcome = EXIT_RUN_FAILED;
            break;
        }
        if (result == -1 || GetAsyncKeyState(StopKey) || StopRequested) {
            s->last_run = LASTRUN_INCOMPLETE;
            FormatInto(line, "Stop request: aborting run at [STEP %d]\r\n\r\n", step + 1);
            AnnounceLine(line);
            break;
        }
        if (result == 0 && DebugRun && PauseOnFailure()) {
            // Paused before the failure mode acts: the step may be fixed and
            // tried again, passed over, or left to its failure mode.
            LogPrintf(OutputEdit, "Paused at [STEP %d] after a failure: %s\r\n", step + 1, StepFailureText);
            const int answer = PauseRun(step, PAUSE_FAILURE, StepFailureText);
            if (RunThreadLetGo()) {
                ForgetLetGoThread();
                return 0;
            }
            if (step >= t->count || !t->steps) continue;
            if (answer == DEBUG_STOP) {
                t->steps[step].last_run = LASTRUN_INCOMPLETE;
                FormatInto(line, "Stop request: aborting run at [STEP %d]\r\n\r\n", step + 1);
                AnnounceLine(line);
                break;
            }
            if (answer == DEBUG_RETRY) {
                LogPrintf(OutputEdit, "Retrying [STEP %d]\r\n", step + 1);
                lastBegun = -1;  // its line again, with the text as it now stands
                resumedStep = step;
                continue;
            }
            if (answer == DEBUG_SKIP) {
                LogPrintf(OutputEdit, "Skipping [STEP %d] after its failure\r\n", step + 1);
                t->steps[step].last_run = LASTRUN_FAIL_CONTINUE;
                step++;
                continue;
            }
        }
        if (result == 0) {
            int next = HandleFailure(tab, step);
            if (next < 0) {
                t->steps[step].last_run = LASTRUN_FAIL;
                break;
            }
            if (next != step) {
                t->steps[step].last_run = LASTRUN_FAIL_CONTINUE;
                step = next;
            }
            continue;
        }
        s->last_run = LASTRUN_PASS;
        if (category == CAT_FLOW)
            step = result - 1 < 0 ? 0 : result - 1;
        else
            step++;
        // The delay that "Set Step Delay" asked for; a stop ends it.
        if (ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "InterStepDelay-%d", tab) > 0)
            RunWait(nullptr, (DWORD)ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "InterStepDelay-%d", tab));
    }

    // Let go by a forced stop or the window's end: nothing below is this run's.
    if (RunThreadLetGo()) {
        ForgetLetGoThread();
        return 0;
    }
    // The last popup of a run stays on the screen for a moment.
    if (lastBegun >= 0 && lastBegun < t->count && t->steps) {
        const Step& last = t->steps[lastBegun];
        int hold = ParseInt(last.timeout);
        if ((ContainsNoCase(last.action, " Popup") || ContainsNoCase(last.action, "Display Image")) && hold > 0)
            Sleep((DWORD)(hold < 1000 ? 1000 : hold > 3000 ? 3000 : hold));
    }
    if (step >= t->count) announce = 1;
    RecordRunEnded(tab);
    if (announce) {
        FormatElapsed(GetTickCount() - startTick, line);
        SYSTEMTIME now;
        GetLocalTime(&now);
        char done[1400];
        FormatInto(done, "Run Completed at %d:%02d:%02d (Elapsed Time: %s)\r\n\r\n", now.wHour, now.wMinute,
                  now.wSecond, line);
        AnnounceLine(done);
    }
    EndDebugRun();
    if (RunThread) CloseHandle(RunThread);
    RunThread = nullptr;
    StopRun(tab, MainWindow, CMD_STOP);
    ReleaseKeptKeys();
    return 0;
}

void StopRun(int tab, HWND window, WPARAM wParam) {
    bool endProcess = false;
    if (RunThread) {
        if (HIWORD(wParam) != 1) {
            RequestStop();
            LogPrintf(OutputEdit, "\r\nAttempting to stop script...\r\n");
            if (HWND failure = FindWindowA(nullptr, "Run Failure")) SetForegroundWindow(failure);
            if (window) SetTimer(window, TIMER_FORCE_STOP, 1000, nullptr);
            return;
        }
        if (window) KillTimer(window, TIMER_FORCE_STOP);
        int answer = RunMessageBox("The script is still running the current step.\n\nDo you want to force it to stop?",
                                   "Stop Process", MB_OKCANCEL | MB_ICONQUESTION);
        if (answer != IDOK) {
            LogPrintf(OutputEdit, "\r\nCancelling stop request - continuing script execution\r\n");
            ClearStopRequest();
            return;
        }
        if (tab >= 0 && tab < MAX_TABS) RunRepeats[tab] = 0;
        // The step is still inside a call that does not return. Killing the
        // thread could leave the heap's or the loader's lock held, and the
        // next line of the log would wait for ever: the thread is let go
        // instead, and a hidden run's process ends below, on time.
        LetRunThreadGo();
        CloseHandle(RunThread);
        RunThread = nullptr;
        LogPrintf(OutputEdit, "\r\nRun forcibly terminated\r\n\r\n");
        endProcess = (LaunchFlags & LAUNCH_HIDDEN) != 0;
    }
    EndChildRuns();
    RemoveRunTempFiles();
    if (PlaybackHook) {
        Sleep(1000);
        if (RunWorld.endPlayback) RunWorld.endPlayback();
    }
    ReleaseKey(HeldCtrl);
    ReleaseKey(HeldShift);
    ReleaseKey(HeldAlt);
    if (LeftButtonHeld) {
        mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
        LeftButtonHeld = 0;
    }
    if (SettingInt("DisableScreenSaver")) {
        char saved[16];
        ReadSetting(nullptr, saved, sizeof saved, nullptr, ZR_ROOT "ScreenSaver");
        DeleteSetting(nullptr, ZR_ROOT "ScreenSaver");
        WriteSetting(nullptr, saved, 0, nullptr, "Control Panel\\Desktop\\ScreenSaveActive");
    }

    if (endProcess) EndProcessNow();

    // A repeat is a whole new run. In a hidden run the process closes only
    // when no repeat is left, so that every repeat of a /r run is run.
    bool repeat = false;
    if (tab >= 0 && tab < MAX_TABS && RunRepeats[tab] > 0) {
        if (RunRepeats[tab] != REPEAT_FOREVER && --RunRepeats[tab] == 0) RunRepeats[tab] = -1;
        repeat = true;
    }
    if (!repeat && (LaunchFlags & LAUNCH_HIDDEN)) {
        if (window) SendMessageA(window, WM_CLOSE, 0, 0);
    } else if (SettingInt("ReturnWhenDone") && window) {
        ShowWindow(window, SW_RESTORE);
    }
    HideProgress();
    EnableRunCommands(false);
    if (repeat) StartRun(tab, window, CMD_RUN, 0);
}
