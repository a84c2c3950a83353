// The run log: line formatting limits, the file channel and elapsed times.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "base/log.h"
#include "test_support.h"

namespace {

std::string Elapsed(unsigned ms) {
    char buffer[64] = "x";
    FormatElapsed(ms, buffer);
    return buffer;
}

class LogTest : public testing::Test {
protected:
    void SetUp() override {
        dir = TempFolder();
        path = dir + "\\log.txt";
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
        WriteSetting(nullptr, path.c_str(), 0, nullptr, ZR_ROOT "Logfile");
    }
    std::string dir, path;
};

}  // namespace

TEST(FormatElapsed, ChoosesTheFirstRowThatFits) {
    struct Case {
        unsigned ms;
        const char* text;
    } cases[] = {
        {0, "less than 1 second"}, {999, "less than 1 second"}, {1000, "1 second"},
        {2000, "2 seconds"},        {59999, "59 seconds"},        {60000, "1:00"},
        {61000, "1:01"},           {3599000, "59:59"},           {3661000, "1:01:01"},
        {215999000, "59:59:59"},   {216000000, "x"},             // 60 hours: the buffer keeps its text
    };
    for (const Case& c : cases) EXPECT_EQ(Elapsed(c.ms), c.text) << c.ms;
    char empty[32] = "";
    FormatElapsed(5000, empty);
    EXPECT_STREQ(empty, "");  // only a buffer that holds text is written
}

TEST_F(LogTest, LinesGoToTheFileOnlyWhenLoggingIsOn) {
    LogPrintf(nullptr, "one %d\r\n", 1);
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");
    LogPrintf(nullptr, "two\r\n");
    EXPECT_EQ(ReadWholeFile(path), "one 1\r\n");
}

// The rule for formats of any length is tested with made formats, which the
// program itself never passes (its formats are literals).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
TEST_F(LogTest, LongFormatsAreCutAndNotFormatted) {
    std::string at991 = std::string(989, 'a') + "%d";  // 991 characters: formatted
    LogPrintf(nullptr, at991.c_str(), 7);
    std::string at992 = std::string(990, 'b') + "%d";  // 992 characters: raw
    LogPrintf(nullptr, at992.c_str(), 7);
    std::string log = ReadWholeFile(path);
    EXPECT_EQ(log, std::string(989, 'a') + "7" + std::string(990, 'b') + "%d");
}
#pragma GCC diagnostic pop

TEST_F(LogTest, MissingFoldersAreCreated) {
    std::string deep = dir + "\\a\\b\\log.txt";
    WriteSetting(nullptr, deep.c_str(), 0, nullptr, ZR_ROOT "Logfile");
    LogPrintf(nullptr, "x");
    EXPECT_EQ(ReadWholeFile(deep), "x");
}

TEST_F(LogTest, AppendToFileRefusesEmptyTextsAndPaths) {
    EXPECT_EQ(AppendToFile(nullptr, path.c_str(), ""), 0);
    EXPECT_EQ(AppendToFile(nullptr, "", "x"), 0);
    EXPECT_EQ(AppendToFile(nullptr, path.c_str(), "ab"), 1);
    EXPECT_EQ(AppendPrintf(nullptr, path.c_str(), "%s-%d", "c", 4), 1);
    EXPECT_EQ(ReadWholeFile(path), "abc-4");
    EXPECT_EQ(OpenFileForWrite(""), INVALID_HANDLE_VALUE);
}

TEST_F(LogTest, AnEmptyLogfileLogsNothing) {
    WriteSetting(nullptr, "", 0, nullptr, ZR_ROOT "Logfile");
    LogPrintf(nullptr, "lost");
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

namespace {

struct Writer {
    std::string path;
    char letter;
};

DWORD WINAPI AppendLines(LPVOID param) {
    const Writer* w = (const Writer*)param;
    for (int i = 0; i < 1500; i++) {
        std::string line = std::string(60, w->letter) + " " + std::to_string(i) + "\r\n";
        AppendToFile(nullptr, w->path.c_str(), line.c_str());
    }
    return 0;
}

}  // namespace

TEST_F(LogTest, TwoWritersAtOnceLoseAndCutNoLine) {
    Writer a = {path, 'a'}, b = {path, 'b'};
    HANDLE threads[2] = {CreateThread(nullptr, 0, AppendLines, &a, 0, nullptr),
                         CreateThread(nullptr, 0, AppendLines, &b, 0, nullptr)};
    WaitForMultipleObjects(2, threads, TRUE, 60000);
    CloseHandle(threads[0]);
    CloseHandle(threads[1]);
    std::string log = ReadWholeFile(path);
    int whole[2] = {0, 0}, broken = 0;
    for (size_t start = 0; start < log.size();) {
        size_t end = log.find("\r\n", start);
        if (end == std::string::npos) end = log.size();
        std::string line = log.substr(start, end - start);
        if (line.size() > 61 && line.find_first_not_of(line[0], 0) == 60 && line[60] == ' ')
            whole[line[0] == 'a' ? 0 : 1]++;
        else
            broken++;
        start = end + 2;
    }
    EXPECT_EQ(whole[0], 1500);
    EXPECT_EQ(whole[1], 1500);
    EXPECT_EQ(broken, 0);
}

namespace {

// Starts the real program on a script, hidden ("/r"); the process handle, or null.
HANDLE StartRun(const std::string& script) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string exe = self;
    exe = exe.substr(0, exe.rfind('\\')) + "\\..\\ZantoRunner.exe";
    // The program's path stays out of the command line: a dash in a folder
    // name would read as a switch there.
    std::string line = "ZantoRunner.exe /r \"" + script + "\"";
    STARTUPINFOA si = {sizeof si};
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(exe.c_str(), &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return nullptr;
    CloseHandle(pi.hThread);
    return pi.hProcess;
}

}  // namespace

// Two runs at once, each with 1,500 "Write to Log" lines into one log file
// (with logging on each line stands there twice): every line of both arrives
// whole, and the file holds nothing but whole lines of the two runs.
TEST_F(LogTest, TwoRunsLoggingIntoOneFileKeepEveryLineWhole) {
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "RestartLog");  // the second start keeps the first's lines
    const char* names[2] = {"alpha", "beta"};
    HANDLE runs[2];
    for (int i = 0; i < 2; i++) {
        const std::string script = dir + "\\" + names[i] + ".zxm";
        WriteWholeFile(script, std::string("<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                                           "<step><action>Start 'For' Loop</action><text>1500</text></step>\r\n"
                                           "<step><action>Write to Log</action><text>") +
                                   names[i] + " line %l " + std::string(40, names[i][0]) +
                                   "</text></step>\r\n<step><action>NEXT LOOP</action></step>\r\n</ZantoRunner>\r\n");
        runs[i] = StartRun(script);
        ASSERT_TRUE(runs[i]);
    }
    const DWORD waited = WaitForMultipleObjects(2, runs, TRUE, 90000);
    EXPECT_EQ(waited, WAIT_OBJECT_0);
    if (waited != WAIT_OBJECT_0) {
        TerminateProcess(runs[0], 1);
        TerminateProcess(runs[1], 1);
    }
    CloseHandle(runs[0]);
    CloseHandle(runs[1]);
    const std::string log = ReadWholeFile(path);
    // Each "Write to Log" line: its run's word, the loop count, the padding.
    std::vector<int> seen[2] = {std::vector<int>(1501), std::vector<int>(1501)};
    int foreign = 0;
    for (size_t start = 0; start < log.size();) {
        size_t end = log.find("\r\n", start);
        if (end == std::string::npos) end = log.size();
        const std::string line = log.substr(start, end - start);
        start = end + 2;
        int run = -1;
        for (int i = 0; i < 2; i++)
            if (line.rfind(std::string(names[i]) + " line ", 0) == 0) run = i;
        if (run >= 0) {
            const std::string padding = " " + std::string(40, names[run][0]);
            const size_t number = strlen(names[run]) + 6;
            const int n = atoi(line.c_str() + number);
            if (n >= 1 && n <= 1500 && line == std::string(names[run]) + " line " + std::to_string(n) + padding)
                seen[run][n]++;
            else
                foreign++;
            continue;
        }
        // The runs' own lines: their steps as they stand, and loop reports,
        // start and end lines that carry no piece of a step or logged line.
        bool own = false;
        for (int i = 0; i < 2; i++)
            own = own || line == "[STEP 1]: Start 'For' Loop \"1500\"" || line == "[STEP 3]: NEXT LOOP " ||
                  line == "[STEP 2]: Write to Log \"" + std::string(names[i]) + " line %l " +
                              std::string(40, names[i][0]) + "\"";
        auto clean = [](const std::string& rest) {
            for (const char* piece : {"[STEP", " line ", "---", "Run ", "Starting"})
                if (rest.find(piece) != std::string::npos) return false;
            return true;
        };
        if (line.empty() || line == std::string(40, '-')) own = true;
        if (line[0] == '\t') own = clean(line);
        if (line.rfind("Starting Run at ", 0) == 0) own = clean(line.substr(16));
        if (line.rfind("Run Completed at ", 0) == 0) own = clean(line.substr(17));
        if (!own) foreign++;
    }
    int whole[2] = {0, 0};
    for (int i = 0; i < 2; i++)
        for (int n = 1; n <= 1500; n++) whole[i] += seen[i][n] == 2 ? 1 : 0;
    EXPECT_EQ(whole[0], 1500);
    EXPECT_EQ(whole[1], 1500);
    EXPECT_EQ(foreign, 0);
}

// The appends of our processes take turns on a lock far past the end of the
// file: a run's line waits while another process holds the turn, and
// arrives once it is let go. (Where the system places an append by asking
// the file's size first, two appends without turns can land on one place.)
TEST_F(LogTest, ARunsLineWaitsItsTurnToAppend) {
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "RestartLog");
    WriteWholeFile(path, "first\r\n");
    const std::string script = dir + "\\turn.zxm";
    WriteWholeFile(script, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                           "<step><action>Write to Log</action><text>after the turn</text></step>\r\n</ZantoRunner>\r\n");
    HANDLE held = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    OVERLAPPED turn = {};
    turn.OffsetHigh = 0x40000000;
    ASSERT_TRUE(LockFileEx(held, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &turn));
    HANDLE run = StartRun(script);
    ASSERT_TRUE(run);
    EXPECT_EQ(WaitForSingleObject(run, 3000), (DWORD)WAIT_TIMEOUT);  // waiting for its turn
    EXPECT_EQ(ReadWholeFile(path), "first\r\n");
    UnlockFileEx(held, 0, 1, 0, &turn);
    CloseHandle(held);
    EXPECT_EQ(WaitForSingleObject(run, 30000), WAIT_OBJECT_0);
    CloseHandle(run);
    const std::string log = ReadWholeFile(path);
    EXPECT_EQ(log.rfind("first\r\n", 0), 0u);
    EXPECT_NE(log.find("\r\nafter the turn\r\nafter the turn\r\n"), std::string::npos) << log;
}
