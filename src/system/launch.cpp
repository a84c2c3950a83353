// LaunchProgram: the command as it stands, then as a resolved .EXE, then the
// program the system registers for it (two ways), and last the shell's
// "open".
#include "system/launch.h"

#include <windows.h>
#include <shellapi.h>
#include <string.h>

#include <string>

#include "desktop/pause.h"
#include "desktop/windowmatch.h"
#include "base/handles.h"
#include "base/words.h"
#include "base/programpath.h"
#include "run/childruns.h"
#include "run/runwait.h"

namespace {

// A child run goes into the run's job and list as it is made, under the
// child runs' lock, so that no end of the run can miss it. It is not started
// suspended: a parent killed between the start and the resume would leave it
// suspended for ever, while a running child that finds its parent gone ends
// by itself (it watches its parent from its first instruction).
bool Start(std::string command, const char* folder, DWORD flags, WORD show, PROCESS_INFORMATION* pi,
           bool childRun = false) {
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESHOWWINDOW;
    si.wShowWindow = show;
    command.push_back('\0');
    // A run that is ending for good makes no more child runs.
    if (childRun && !BeginChildRunStart()) return false;
    const bool made = CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, flags, nullptr,
                                     folder && *folder ? folder : nullptr, &si, pi);
    if (childRun) FinishChildRunStart(made ? pi->hProcess : nullptr);
    return made;
}

std::string Quoted(const std::string& text) {
    return text.find('"') == std::string::npos ? "\"" + text + "\"" : text;
}

// The folder part of a command, without its quotes.
std::string FolderOf(const std::string& command) {
    std::string plain;
    for (char c : command)
        if (c != '"') plain += c;
    size_t slash = plain.rfind('\\');
    return slash == std::string::npos ? "" : plain.substr(0, slash);
}

// The shell's "open", the last attempt; a hidden program's window is put
// away and the foreground given back.
int32_t ShellOpen(const std::string& command, bool visible, HWND foreground) {
    const char* exe = FindNoCase(command.c_str(), ".exe ");
    std::string file = exe ? std::string(exe + 5) : command;
    if ((INT_PTR)ShellExecuteA(GetForegroundWindow(), "open", file.c_str(), nullptr, nullptr, 0) <= 32)
        return LAUNCH_FAILED;
    if (!visible) {
        DesktopSleep(2000);
        HWND now = GetForegroundWindow();
        if (now != foreground) {
            ShowWindow(now, SW_HIDE);
            SetForegroundWindow(foreground);
        }
    }
    return 1;
}

}  // namespace

int32_t LaunchProgram(const char* commandLine, int visible, int32_t waitMilliseconds, bool childRun) {
    if (!commandLine || !*commandLine) return LAUNCH_FAILED;
    if (childRun && StopAsked()) return LAUNCH_STOPPED;
    const std::string command = commandLine;
    HWND foreground = visible ? nullptr : GetForegroundWindow();
    const WORD show = visible ? SW_SHOWDEFAULT : SW_HIDE;
    const DWORD flags = NORMAL_PRIORITY_CLASS | (visible ? 0 : CREATE_NO_WINDOW);
    PROCESS_INFORMATION pi = {};
    char buffer[MAX_PATH * 2 + 520] = "";

    // A child run starts in the run's own folder, as a program found by
    // its path does: the folder part of its command line would run on into
    // its switches and the script's path, and name no folder.
    bool started = Start(command.find('"') == std::string::npos ? Quoted(command) : command,
                         childRun ? nullptr : FolderOf(command).c_str(), flags, show, &pi, childRun);
    // A child run is this program by its own path: the other ways below
    // could only start something else, outside the run's job.
    if (childRun && !started) return StopAsked() ? LAUNCH_STOPPED : LAUNCH_FAILED;
    if (!started && ContainsNoCase(command.c_str(), ".EXE")) {
        ResolveProgramPath(command.c_str(), buffer, nullptr);
        started = Start(buffer, nullptr, flags, show, &pi);
    }
    if (!started && !strstr(command.c_str(), ".EXE") &&
        (INT_PTR)FindExecutableA(command.c_str(), nullptr, buffer) > 32) {
        started = Start(std::string(buffer) + " " + Quoted(command), nullptr, flags, show, &pi);
    }
    if (!started && command.find('.') != std::string::npos) {
        std::string extension = command.substr(command.find('.'), 14);
        if (AssociatedProgram(extension.c_str(), buffer, command.c_str()) && buffer[0])
            started = Start(std::string(buffer) + " " + command, nullptr, flags, show, &pi);
    }
    if (!started) return ShellOpen(command, visible, foreground);

    CloseHandle(pi.hThread);
    AutoCloseHandle process(pi.hProcess);
    // In pieces, so that a stop of the run is seen while a program that
    // never settles (or, with no limit, for ever) is waited for.
    const DWORD settle = waitMilliseconds < 0 ? INFINITE : (DWORD)(waitMilliseconds > 5000 ? waitMilliseconds : 5000);
    for (DWORD settleStart = GetTickCount(); !StopAsked();) {
        const DWORD passed = GetTickCount() - settleStart;
        if (settle != INFINITE && passed >= settle) break;
        const DWORD piece = settle == INFINITE || settle - passed > 100 ? 100 : settle - passed;
        if (WaitForInputIdle(pi.hProcess, piece) != WAIT_TIMEOUT) break;
    }
    if (!visible) {
        DesktopSleep(100);
        HWND window = FindProcessWindow(pi.dwProcessId);
        if (window && (GetWindowLongA(window, GWL_STYLE) & WS_VISIBLE) && IsWindowVisible(window)) {
            ShowWindow(window, SW_HIDE);
            UpdateWindow(window);
        }
    }
    if (waitMilliseconds == 0) return 1;
    // A negative wait is for ever, until the program ends or the run is
    // stopped (which ends a child run with it).
    const DWORD limit = waitMilliseconds < 0 ? INFINITE : (DWORD)waitMilliseconds + 500;
    const int waited = RunWait(pi.hProcess, limit);
    if (waited == RUNWAIT_STOPPED) return LAUNCH_STOPPED;
    if (waited != RUNWAIT_DONE) return LAUNCH_TIMEOUT;
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(pi.hProcess, &code);
    return (int32_t)code;
}
