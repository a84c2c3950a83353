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

namespace {

bool Start(std::string command, const char* folder, DWORD flags, WORD show, PROCESS_INFORMATION* pi) {
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESHOWWINDOW;
    si.wShowWindow = show;
    command.push_back('\0');
    return CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, flags, nullptr,
                          folder && *folder ? folder : nullptr, &si, pi) != 0;
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

int32_t LaunchProgram(const char* commandLine, int visible, int32_t waitMilliseconds) {
    if (!commandLine || !*commandLine) return LAUNCH_FAILED;
    const std::string command = commandLine;
    HWND foreground = visible ? nullptr : GetForegroundWindow();
    const WORD show = visible ? SW_SHOWDEFAULT : SW_HIDE;
    const DWORD flags = NORMAL_PRIORITY_CLASS | (visible ? 0 : CREATE_NO_WINDOW);
    PROCESS_INFORMATION pi = {};
    char buffer[MAX_PATH * 2 + 520] = "";

    bool started = Start(command.find('"') == std::string::npos ? Quoted(command) : command,
                         FolderOf(command).c_str(), flags, show, &pi);
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
    WaitForInputIdle(pi.hProcess, waitMilliseconds < 0 ? INFINITE
                                                       : (DWORD)(waitMilliseconds > 5000 ? waitMilliseconds : 5000));
    if (!visible) {
        DesktopSleep(100);
        HWND window = FindProcessWindow(pi.dwProcessId);
        if (window && (GetWindowLongA(window, GWL_STYLE) & WS_VISIBLE) && IsWindowVisible(window)) {
            ShowWindow(window, SW_HIDE);
            UpdateWindow(window);
        }
    }
    if (waitMilliseconds == 0) return 1;
    // The limit is unsigned: a negative wait is, in practice, for ever.
    const DWORD limit = (DWORD)waitMilliseconds + 500;
    const DWORD start = GetTickCount();
    DWORD code = STILL_ACTIVE;
    while (GetTickCount() - start < limit) {
        Sleep(100);
        GetExitCodeProcess(pi.hProcess, &code);
        if (code != STILL_ACTIVE) break;
    }
    if (GetTickCount() - start >= limit) return LAUNCH_TIMEOUT;
    GetExitCodeProcess(pi.hProcess, &code);
    return (int32_t)code;
}
