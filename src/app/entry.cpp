// The process's entry: parse the command line, create the main window, open
// the script, start the run, and pump messages until the window closes.
#include <windows.h>
#include "base/text.h"
#include <commctrl.h>
#include <objbase.h>
#include <stdlib.h>

#include "app/checkmode.h"
#include "app/dispatch.h"
#include "app/fleet.h"
#include "desktop/playbackhook.h"
#include "editor/mainwindow.h"
#include "base/settings.h"
#include "base/console.h"
#include "base/ui.h"
#include "base/unattended.h"
#include "resources/resource.h"
#include "run/commandline.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/childruns.h"
#include "run/runwait.h"
#include "run/tempfiles.h"
#include "run/timelimit.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

// The last word of an unattended run: what its exit code means, on standard
// error, where a scheduler or a CI job reads it.
int EndUnattended(int code) {
    WriteExitMeaning(code);
    return code;
}

// The window rectangle from the last session, if it is still usable.
RECT InitialRect(bool& useDefault) {
    RECT r = {CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT};
    useDefault = true;
    int bottom = SettingInt("Bottom");
    if (!bottom) return r;
    useDefault = false;
    r.left = SettingInt("Left");
    r.top = SettingInt("Top");
    r.right = SettingInt("Right");
    r.bottom = bottom;
    if (!(r.left > -5 && r.left < GetSystemMetrics(SM_CXSCREEN) &&
          r.right - r.left >= GetSystemMetrics(SM_CXMINTRACK) && r.bottom - r.top >= GetSystemMetrics(SM_CYMINTRACK)))
        r = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    return r;
}

// With ZR_STARTUP_TRACE set, each phase of the start and the end of a run
// writes "startup: <phase> <ms>" to standard error, the milliseconds since
// the process was created: the benchmark's split of where the time goes.
bool Tracing;
void TracePhase(const char* phase) {
    if (!Tracing) return;
    FILETIME created, exited, kernel, user, now;
    GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
    GetSystemTimeAsFileTime(&now);
    const ULONGLONG a = ((ULONGLONG)created.dwHighDateTime << 32) | created.dwLowDateTime;
    const ULONGLONG b = ((ULONGLONG)now.dwHighDateTime << 32) | now.dwLowDateTime;
    char line[96];
    FormatInto(line, "startup: %s %lu", phase, (unsigned long)((b - a) / 10000));
    WriteStandardError(line);
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int showCommand) {
    Tracing = GetEnvironmentVariableA("ZR_STARTUP_TRACE", nullptr, 0) > 0;
    TracePhase("main");
    CoInitialize(nullptr);
    InitCommonControls();
    INITCOMMONCONTROLSEX controls = {sizeof controls, 0x5AF};
    InitCommonControlsEx(&controls);
    srand(GetTickCount());
    TracePhase("com-and-controls");

    StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);
    InstallStepHandlers();
    char fileName[MAX_PATH] = "";
    ParseCommandLine(commandLine, fileName);
    // A child run of "Call Script" ends with its parent, from its start on.
    WatchParentRun();
#ifdef ZR_RUNTIME
    // A compiled script: the script stands at the end of this very file, and
    // it runs hidden; variables given on the command line still count.
    GetModuleFileNameA(nullptr, fileName, MAX_PATH);
    LaunchFlags = (LaunchFlags & (LAUNCH_VARIABLES | LAUNCH_UNATTENDED | LAUNCH_CHECK)) | LAUNCH_OPEN | LAUNCH_RUN |
                  LAUNCH_HIDDEN;
#endif
    // "/check" runs nothing and needs no window.
    if (LaunchFlags & LAUNCH_CHECK) return RunCheckCommand(fileName, (LaunchFlags & LAUNCH_UNATTENDED) != 0);
    // Unattended: no box of the load or the run waits for a person.
    UnattendedRun = (LaunchFlags & LAUNCH_UNATTENDED) && (LaunchFlags & LAUNCH_HIDDEN);
    if (UnattendedRun) ShowMessageBox = UnattendedMessageBox;
    // The result files, the artefacts and the parameters a fleet asked for.
    PrepareRunResults(fileName);

    RegisterMainWindowClass(instance);
    bool useDefault;
    RECT r = InitialRect(useDefault);
    HWND window = CreateWindowExA(0, "ZantoRunner", "ZantoRunner", 0x02CF0000, r.left, r.top,
                                  useDefault ? CW_USEDEFAULT : r.right - r.left,
                                  useDefault ? CW_USEDEFAULT : r.bottom - r.top, nullptr, nullptr, instance, nullptr);
    if (!window) {
        ShowMessageBox(nullptr, "Unable to start ZantoRunner: Main window launch error", "ZantoRunner Error",
                       MB_ICONERROR);
        WriteLoadFailureResults(UnattendedRun ? EXIT_NO_WINDOW : 0);
        return UnattendedRun ? EndUnattended(EXIT_NO_WINDOW) : 0;
    }
    TracePhase("window");
    if (LaunchFlags & LAUNCH_HIDDEN) {
        ShowWindow(window, SW_HIDE);
    } else {
        ShowWindow(window, showCommand);
        UpdateWindow(window);
        OSVERSIONINFOA version = {sizeof version};
        GetVersionExA(&version);
        StatusPrintf(StatusBar, 0, " ZantoRunner " ZR_VERSION " running on Windows %d.%d",
                     (int)version.dwMajorVersion, (int)version.dwMinorVersion);
    }

    if ((LaunchFlags & LAUNCH_OPEN) && fileName[0]) {
        if (!ReadRunParameters() || !OpenScript(fileName, 0)) {
            if (LaunchFlags & LAUNCH_HIDDEN) {
                WriteLoadFailureResults(UnattendedRun ? EXIT_LOAD_FAILED : 0);
                return UnattendedRun ? EndUnattended(EXIT_LOAD_FAILED) : 0;
            }
            ResetTab(0);  // the editor a failed load leaves is a fresh one
        }
    } else {
        ResetTab(0);
    }
    TracePhase("script");
    int started = 0;
    if (CurrentTab().path[0] && (LaunchFlags & LAUNCH_RUN)) started = StartRun(ScriptStore.currentTab, window, CMD_RUN, 1);
    if (UnattendedRun) {
        // A hidden run that did not start would wait for ever for a window
        // nobody sees: no file, or nothing in it to run.
        if (!started) {
            if (!fileName[0]) ReportUnshownBox("ZantoRunner", "no script file was given");
            WriteLoadFailureResults(EXIT_LOAD_FAILED);
            return EndUnattended(EXIT_LOAD_FAILED);
        }
        StartRunTimeLimit(window);
    }
    if (!(LaunchFlags & (LAUNCH_OPEN | LAUNCH_RUN | LAUNCH_HIDDEN)) && SettingInt("AutoReload")) {
        char recent[MAX_PATH];
        SettingText("RecentFile1", recent, sizeof recent);
        if (recent[0] && GetFileAttributesA(recent) != INVALID_FILE_ATTRIBUTES)
            SendMessageA(window, WM_COMMAND, CMD_OPEN_RECENT1, 0);
    }

    TracePhase("run-started");
    HACCEL accelerators = LoadAcceleratorsA(instance, MAKEINTRESOURCEA(IDR_ACCELERATORS));
    MSG msg;
    for (;;) {
        // A Unicode loop: typed characters reach the editor's controls and
        // the prompts whole (an ANSI loop takes them through the keyboard's
        // legacy code page, where "東" is "?").
        BOOL got = GetMessageW(&msg, nullptr, 0, 0);
        if (got == 0 || got == -1) break;
        if (msg.message == WM_CANCELJOURNAL && PlaybackHook) {
            ReleasePlaybackHook();
        }
        if (MainWindow && accelerators && AcceleratorApplies(msg) && TranslateAcceleratorW(MainWindow, accelerators, &msg))
            continue;
        if (MainWindow && IsDialogMessageW(MainWindow, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    TracePhase("loop-ended");
    if (AnyRunThreadLetGo()) EndProcessNow();
    HeapFreeBlock(StepFailureText);
    StepFailureText = nullptr;
    CoUninitialize();
    TracePhase("end");
    CloseChildRuns();
    RemoveRunTempFiles();
    return ProcessLastWords();
}
