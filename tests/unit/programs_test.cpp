// Launching programs and waiting for them, and finding and killing a
// process by its file name.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "system/launch.h"
#include "system/processes.h"
#include "run/childruns.h"
#include "base/programpath.h"
#include "test_support.h"

namespace {

// A window program of the harness under a name of our own, started and left
// running until the test ends it.
struct Victim {
    PROCESS_INFORMATION pi = {};
    std::string exe;
    Victim() {
        char self[MAX_PATH];
        GetModuleFileNameA(nullptr, self, sizeof self);
        *strrchr(self, '\\') = 0;
        exe = TempFolder() + "\\zrvictim.exe";
        CopyFileA((std::string(self) + "\\testwindows.exe").c_str(), exe.c_str(), FALSE);
        std::string line = "\"" + exe + "\" \"" + exe + ".stop\" ZrVictim";
        STARTUPINFOA si = {sizeof si};
        CreateProcessA(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi);
        // A console program: wait for its window rather than for input idle.
        for (DWORD start = GetTickCount(); GetTickCount() - start < 5000 && !FindWindowA(nullptr, "ZrVictim");)
            WaitForSingleObject(pi.hProcess, 20);
    }
    ~Victim() {
        TerminateProcess(pi.hProcess, 0);
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
};

TEST(Programs, LaunchWaitsForTheExitCodeOrTheLimit) {
    EXPECT_EQ(LaunchProgram("cmd.exe /c exit 7", 0, 20000), 7);
    EXPECT_EQ(LaunchProgram("cmd.exe /c exit 7", 0, 0), 1);  // no wait: 1
    EXPECT_EQ(LaunchProgram("", 1, 0), LAUNCH_FAILED);
    Victim victim;  // never ends by itself
    DWORD start = GetTickCount();
    EXPECT_EQ(LaunchProgram(("\"" + victim.exe + "\" never ZrSecond").c_str(), 1, 1000), LAUNCH_TIMEOUT);
    EXPECT_GE(GetTickCount() - start, 1500u);  // the limit plus 500 ms
    // The timed-out copy is left running: end both copies (one a call).
    EXPECT_GT(FindProcess(victim.exe.c_str(), 2, nullptr, 0, nullptr, 0), 0);
    EXPECT_GT(FindProcess(victim.exe.c_str(), 2, nullptr, 0, nullptr, 0), 0);
}

// A child run's command line holds the script's path after its switches:
// it must still start as a child the run knows, one that ends with the run
// (its folder is not the text before the line's last backslash).
TEST(Programs, AChildRunWithAPathInItsLineEndsWithTheRun) {
    Victim victim;
    const std::string line = "\"" + victim.exe + "\" \"" + victim.exe + ".none\" ZrChildRun";
    EXPECT_EQ(LaunchProgram(line.c_str(), 1, 0, true), 1);
    HWND child = nullptr;
    for (DWORD start = GetTickCount(); GetTickCount() - start < 5000 && !child;)
        if (!(child = FindWindowA(nullptr, "ZrChildRun"))) Sleep(20);  // polls a condition
    ASSERT_NE(child, nullptr);
    EndChildRuns();
    EXPECT_FALSE(IsWindow(child));
    // The harness's own copy is no child run: it is still there.
    EXPECT_NE(FindWindowA(nullptr, "ZrVictim"), nullptr);
}

TEST(Programs, FindProcessMatchesTheFileNameAndKillsTheFirst) {
    Victim victim;
    char list[65536];
    HWND window = nullptr;
    int count = FindProcess("C:\\elsewhere\\ZRVICTIM.EXE", 1, list, sizeof list, &window, 0);
    EXPECT_GT(count, 1);  // all processes are counted
    char line[64];
    wsprintfA(line, "zrvictim.exe - %lu\r\n", (unsigned long)victim.pi.dwProcessId);
    EXPECT_NE(strstr(list, line), nullptr);
    ASSERT_TRUE(window);
    char title[64] = "";
    GetWindowTextA(window, title, sizeof title);
    EXPECT_STREQ(title, "ZrVictim");
    EXPECT_GT(FindProcess("zrvictim.exe", 1, nullptr, 0, nullptr, 1), 0);  // the second listing route
    EXPECT_EQ(FindProcess("no-such-program.exe", 2, nullptr, 0, nullptr, 0), 0);
    EXPECT_GT(FindProcess("zrvictim.exe", 2, nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(WaitForSingleObject(victim.pi.hProcess, 5000), WAIT_OBJECT_0);
    EXPECT_EQ(FindProcess(nullptr, 1, nullptr, 0, nullptr, 0), 0);
}

TEST(Programs, ProgramPathsResolveBySearchOrder) {
    char out[MAX_PATH];
    char system[MAX_PATH];
    GetSystemDirectoryA(system, sizeof system);
    EXPECT_EQ(ResolveProgramPath("cmd.exe", out, nullptr), 1);
    EXPECT_EQ(lstrcmpiA(out, (std::string(system) + "\\cmd.exe").c_str()), 0) << out;
    std::string folder = TempFolder();
    WriteWholeFile(folder + "\\beside.zxm", "x");
    EXPECT_EQ(ResolveProgramPath("beside.zxm", out, (folder + "\\script.zxm").c_str()), 1);
    EXPECT_EQ(std::string(out), folder + "\\beside.zxm");
    EXPECT_EQ(ResolveProgramPath("zz-nothing-here.exe", out, nullptr), 0);
    EXPECT_STREQ(out, "zz-nothing-here.exe");
    EXPECT_TRUE(GetWindowsVersionMask(nullptr) & 0x8000);
}

}  // namespace
