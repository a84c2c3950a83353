// The state of a run: process-wide variables polled between steps. There are
// no locks; each variable has one writer at a time by protocol.
#pragma once

#include <windows.h>
#include <stdint.h>

// LaunchFlags bits, set by ParseCommandLine before the main window exists.
enum {
    LAUNCH_OPEN = 1,       // open the file named on the command line
    LAUNCH_RUN = 2,        // run it at once
    LAUNCH_HIDDEN = 4,     // no editor; the process closes when the run ends
    LAUNCH_VARIABLES = 8,  // a variable was given on the command line
    LAUNCH_UNATTENDED = 16,  // "/unattended": with LAUNCH_HIDDEN, no box waits for a person
    LAUNCH_CHECK = 32,     // "/check": check the file and run nothing
};

enum {
    EXIT_CODE_NOT_SET = 3829,
    // What ended an unattended run, kept apart from the codes a script sets.
    EXIT_LOAD_FAILED = 3830,   // no file, or it could not be loaded
    EXIT_RUN_FAILED = 3831,    // a failure mode ended the run
    EXIT_TIME_LIMIT = 3832,    // UnattendedTimeLimit ran out
    EXIT_NO_WINDOW = 3833,     // no window could be created (no display)
    REPEAT_FOREVER = 2000000000,
    STEP_FAILURE_TEXT_SIZE = 2048,
};

// Run commands (menu ids).
enum {
    CMD_RUN = 1045,
    CMD_STOP = 1046,
    CMD_RUN_SINGLE_STEP = 1075,
    CMD_RUN_FROM_HERE = 1076,
};

// Timers the run thread sets on the main window.
enum {
    TIMER_PLAYBACK = 0x8065,
    TIMER_BUFFERED_TYPING = 0x8066,
    TIMER_HOOK_WATCH = 0x8067,
    TIMER_FORCE_STOP = 0x8068,
    TIMER_HOOK_CHECK = 0x8069,  // whether the system calls the playback hook
};

extern int32_t LaunchFlags;
extern HANDLE RunThread;           // null: no run is going on
extern volatile int32_t StopRequested;
extern int32_t ExitCode;
extern int32_t StopKey;            // virtual-key code, 0x13 (Pause) at first
extern char* StepFailureText;      // 2048 bytes, allocated in WinMain
extern HHOOK PlaybackHook;        // non-zero while a playback hook (or its replay) runs
extern uint32_t PlaybackLastTick;  // the tick of the recording playback's last event
extern volatile int32_t HookRunning;
extern int32_t RetryCount;
extern uint32_t StepStartTick;
extern int32_t RunRepeats[8];
extern int32_t HeldCtrl, HeldShift, HeldAlt;
extern int32_t LeftButtonHeld;
extern HWND LastWindow;
extern char InternetScratch[260];
extern int32_t RunningTab;         // the tab of the current (or last) run
extern int32_t RunOutcome;         // 0, or the EXIT_ code of what ended the run

// A step handler: returns -1 to stop the run, 0 for a failure (reason in
// StepFailureText), anything else for success. A handler of category 13
// returns the next step's index plus one.
typedef int (*StepHandler)(int tab, int step);
// One handler per category id; null means not built, which the run core
// reports as an unknown action.
extern StepHandler StepHandlers[18];

// The run thread's single argument: tab in bits 28-31, single step in 24-27,
// first step in 0-15.
inline uint32_t MakeRunArgument(int tab, int singleStep, int firstStep) {
    return ((uint32_t)tab << 28) | ((uint32_t)(singleStep & 15) << 24) | ((uint32_t)firstStep & 0xFFFF);
}

int StartRun(int tab, HWND window, int command, int resetRepeats);
void StopRun(int tab, HWND window, WPARAM wParam);
DWORD WINAPI RunCore(LPVOID runArgument);
void BeginStep(int tab, int step);
// The run core's answer for an action whose handler is not built: it says so
// in the log and counts the step as passed.
int ReportUnknownAction(int tab, int step);
// The value of the process's exit: ExitCode, or DefaultReturnCode if unset;
// in an unattended run, RunOutcome when something ended the run.
int ProcessExitCode();
// What an exit code says, for the last line of an unattended run.
const char* ExitCodeMeaning(int code);
// The last line of an unattended run on standard error, where a scheduler
// or a CI job reads it: "ZantoRunner: exit code N: <meaning>".
void WriteExitMeaning(int code);
// The process's exit code with its last words: for an unattended run the
// time limit's line in the log and the meaning on standard error.
int ProcessLastWords();
// Ends a hidden run's process at once, with its last words and its exit
// code, when its run thread cannot be brought back: nothing waits on the
// thread, and no lock it may hold is needed on the way out.
void EndProcessNow();
