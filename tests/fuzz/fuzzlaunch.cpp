// The whole-program fuzz's launcher (tests/fuzz/fuzz_runs.py), run inside the
// fuzz's own Wine prefix for every generated script:
//
//   fuzzlaunch.exe PROGRAM SCRIPT WORKDIR WALL_MS
//
// It sets the program's settings afresh (a script may have changed them: a
// run limit of 1 second, the log in WORKDIR), starts PROGRAM /r /unattended
// SCRIPT in WORKDIR with this process's standard handles, and waits WALL_MS
// at most. It then prints, on standard output:
//
//   FUZZ HANG                    the program was still running after WALL_MS
//                                (it is then ended)
//   FUZZ EXIT <code>             the whole exit code (Wine's own exit keeps 8 bits)
//   FUZZ LEFT <name> <pid>       a process that the run started and that is
//                                still alive after it ended (each is then ended)
//
// Processes that were there before the start, this launcher, and Wine's own
// background programs are not counted.
#include <windows.h>
#include <tlhelp32.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <set>
#include <string>
#include <vector>

namespace {

const char kKey[] = "SOFTWARE\\ZantoRunner";

// Wine starts these for itself when a program needs them (the desktop,
// services, devices); they are not the run's.
const char* const kWineOwn[] = {"explorer.exe", "services.exe", "winedevice.exe", "plugplay.exe", "svchost.exe",
                                "rpcss.exe",    "conhost.exe",  "wineboot.exe",   "tabtip.exe",   "start.exe",
                                "winemenubuilder.exe"};

struct Proc {
    DWORD pid;
    std::string name;
};

std::vector<Proc> ListProcesses() {
    std::vector<Proc> out;
    HANDLE snap = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snap == INVALID_HANDLE_VALUE) return out;
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL ok = Process32First(snap, &entry); ok; ok = Process32Next(snap, &entry)) {
        out.push_back({entry.th32ProcessID, entry.szExeFile});
    }
    CloseHandle(snap);
    return out;
}

bool WineOwn(const std::string& name) {
    for (const char* own : kWineOwn) {
        if (_stricmp(name.c_str(), own) == 0) return true;
    }
    return false;
}

// The processes alive now that were not there before the run.
std::vector<Proc> NewProcesses(const std::set<DWORD>& before) {
    std::vector<Proc> out;
    DWORD self = GetCurrentProcessId();
    for (const Proc& p : ListProcesses()) {
        if (p.pid == self || before.count(p.pid) || WineOwn(p.name)) continue;
        out.push_back(p);
    }
    return out;
}

void SetSettings(const char* workdir) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    // The key that generated registry steps write to starts empty too.
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\ZrFuzz");
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) != 0) {
        fprintf(stderr, "fuzzlaunch: cannot create the settings key\n");
        return;
    }
    DWORD one = 1;
    RegSetValueExA(key, "UnattendedTimeLimit", 0, REG_DWORD, (const BYTE*)&one, sizeof one);
    RegSetValueExA(key, "Log", 0, REG_DWORD, (const BYTE*)&one, sizeof one);
    std::string logfile = std::string(workdir) + "\\log.txt";
    RegSetValueExA(key, "Logfile", 0, REG_SZ, (const BYTE*)logfile.c_str(), (DWORD)logfile.size() + 1);
    RegCloseKey(key);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        fprintf(stderr, "usage: fuzzlaunch PROGRAM SCRIPT WORKDIR WALL_MS\n");
        return 250;
    }
    const char* program = argv[1];
    const char* script = argv[2];
    const char* workdir = argv[3];
    DWORD wall = (DWORD)strtoul(argv[4], nullptr, 10);
    SetSettings(workdir);

    std::set<DWORD> before;
    for (const Proc& p : ListProcesses()) before.insert(p.pid);

    std::string line = std::string("\"") + program + "\" /r /unattended \"" + script + "\"";
    std::vector<char> buffer(line.begin(), line.end());
    buffer.push_back('\0');
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    si.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(nullptr, buffer.data(), nullptr, nullptr, TRUE, 0, nullptr, workdir, &si, &pi)) {
        fprintf(stderr, "fuzzlaunch: cannot start (%lu)\n", GetLastError());
        return 251;
    }
    if (WaitForSingleObject(pi.hProcess, wall) == WAIT_TIMEOUT) {
        printf("FUZZ HANG\n");
        fflush(stdout);
        TerminateProcess(pi.hProcess, 259);
        WaitForSingleObject(pi.hProcess, 5000);
    }
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    printf("FUZZ EXIT %lu\n", code);
    fflush(stdout);

    // A process that is ending as the run ends gets three seconds to go
    // before it counts as left behind: under Wine a job does not end its
    // processes, and child runs end as a chain, each after its own children
    // (the program waits that long for them, too).
    std::vector<Proc> left = NewProcesses(before);
    for (int i = 0; i < 60 && !left.empty(); i++) {
        Sleep(50);
        left = NewProcesses(before);
    }
    for (const Proc& p : left) printf("FUZZ LEFT %s %lu\n", p.name.c_str(), p.pid);
    fflush(stdout);
    // End them, also those that a runaway chain starts while this goes on.
    for (int round = 0; round < 100 && !left.empty(); round++) {
        for (const Proc& p : left) {
            HANDLE h = OpenProcess(PROCESS_TERMINATE, FALSE, p.pid);
            if (h) {
                TerminateProcess(h, 1);
                CloseHandle(h);
            }
        }
        Sleep(20);
        left = NewProcesses(before);
    }
    if (!left.empty()) printf("FUZZ STILL %zu\n", left.size());
    fflush(stdout);
    return 0;
}
