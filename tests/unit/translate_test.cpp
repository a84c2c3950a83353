// Text translation: the stages and what shadows what.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "run/numbers.h"
#include "run/textops.h"
#include "run/tempfiles.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// Saturday 2026-01-31 23:59:30.
void FixedClock(SYSTEMTIME* now) {
    *now = SYSTEMTIME{};
    now->wYear = 2026;
    now->wMonth = 1;
    now->wDay = 31;
    now->wDayOfWeek = 6;
    now->wHour = 23;
    now->wMinute = 59;
    now->wSecond = 30;
}

class TranslateTest : public testing::Test {
protected:
    void SetUp() override { TranslateClock = FixedClock; }
    void TearDown() override { TranslateClock = saved; }
    std::string T(const char* text) {
        TranslateText(text, 0, 4);
        return TranslatedText;
    }
    void Var(const char* name, const char* value) {
        WriteSetting(nullptr, value, 0, nullptr, ZR_ROOT "UserVariables\\%s", name);
    }
    void (*saved)(SYSTEMTIME*) = TranslateClock;
};

struct Case {
    const char* in;
    const char* out;
};

}  // namespace

TEST_F(TranslateTest, EscapesConstantsAndKeys) {
    Case cases[] = {
        {"100%%", "100%"},
        {"100%% %%dd", "100% %dd"},
        {"XMB_OKY", "X0Y"},
        {"MB_OKCANCEL|MB_ICONSTOP", "1|16"},
        {"idok idcancel", "1 2"},
        {"WS_OVERLAPPEDWINDOW WS_POPUPWINDOW", "13565952 2156396544"},
        {"WS_EX_PALETTEWINDOW", "392"},
        {"GENERIC_READ", "2147483648"},
        {"a{enter}b{TAB}c{Space}d", "a\nb\tc d"},
        {"%r%n%t", "\r\n\t"},
        {"plain text, no macro at all", "plain text, no macro at all"},
        {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
    EXPECT_EQ(TranslateText("", 0, 0), 0);
    EXPECT_EQ(TranslateText(nullptr, 0, 0), 0);
    EXPECT_EQ(TranslateText("abc", 0, 0), 4);
}

TEST_F(TranslateTest, LongestVariableNameWins) {
    Var("fo", "[fo]");
    Var("ab1", "<ab1>");
    Case cases[] = {
        {"%foo", "[fo]o"},
        {"%ab1x", "<ab1>x"},
        {"%zzz stays", "%zzz stays"},
        {"%none", "\none"},  // no variable: "%n" is a line feed later on
        {"x%fo%fo", "x[fo][fo]"},
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
}

TEST_F(TranslateTest, InsertedValuesAreWalkedAgain) {
    Var("outer", "(%inner)");
    Var("inner", "in");
    Var("date", "%dd");
    EXPECT_EQ(T("%outer"), "(in)");
    EXPECT_EQ(T("day %date"), "day 31");  // expanded later in the same call
}

TEST_F(TranslateTest, EmptyValueLeavesTheMacroAndFileReferencesAreRead) {
    Var("qq", "");
    EXPECT_EQ(T("%qq"), "%qq");
    std::string dir = TempFolder();
    WriteWholeFile(dir + "\\value.txt", "from a file");
    Var("big", (dir + "\\value.txt*").c_str());
    EXPECT_EQ(T("<%big>"), "<from a file>");
}

TEST_F(TranslateTest, OverflowedVariableReadsBackThroughItsReference) {
    LoadSteps("<ZantoRunner><step><action>Create/Set Variable</action><output value=\"v\">Variable</output>"
              "</step></ZantoRunner>");
    auto store = StoreVariableValue;
    StoreVariableValue = [](const char*, const char*, const char*) { return 0; };  // the registry refuses it
    SaveOutput(0, 0, "kept in a file", 14, nullptr);
    StoreVariableValue = store;
    EXPECT_EQ(T("%v!"), "kept in a file!");
    char buffer[MAX_PATH];
    ReadVariable("v", 0, 0, buffer, sizeof buffer);  // the reference itself; "%v" reads the file
    EXPECT_EQ(buffer[strlen(buffer) - 1], '*');
}

TEST_F(TranslateTest, LoopValuesComeFirst) {
    Var("file_loop", "C:\\a.txt");
    Var("file", "VAR");
    EXPECT_EQ(T("%file_loop"), "C:\\a.txt");
}

TEST_F(TranslateTest, DatesAndShifts) {
    Case cases[] = {
        {"%yyyy-%mm-%dd %uu:%ii:%ss", "2026-01-31 23:59:30"},
        {"%yy %mmmm %mmm %dddd %ddd", "26 January Jan Saturday Sat"},
        {"%hh %a", "11 PM"},
        {"%dd++7", "07"},                     // a week ahead wraps into February
        {"%mm++1 %dd", "03 03"},              // a month is 31 days: 31 Jan + 31 = 3 Mar
        {"%yyyy++1-%mm-%dd %uu:%ii", "2027-02-01 00:06"},  // 365 days and 429.4967296 s
        {"%ss++30", "00"},
        {"%dd--31", "31"},                    // 31 days back: 31 Dec
        {"%mm--1 %yyyy", "12 2025"},
        {"a--b %dd -0", "a--b 31 "},          // sign with 0: no shift, "-0" goes
        {"%dd++0", "31++0"},                  // "++0" stays
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
}

TEST_F(TranslateTest, RunMacros) {
    LoopCounters[0][0] = 4;
    RunRepeats[0] = -1;
    Case cases[] = {
        {"%l %ll %lll %llll", "5 05 005 0005"},
        {"%L", "5"},
        {"%e %ee", "0 00"},
        {"%currentstep/%currentfile", "5/1"},
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
    std::string screen = T("%screen_x");
    EXPECT_EQ(screen, std::to_string(GetSystemMetrics(SM_CXSCREEN)));
}

TEST_F(TranslateTest, RandomDigitsAndLetters) {
    std::string x = T("%xxXX and %xxXX");
    ASSERT_EQ(x.size(), 13u);
    EXPECT_EQ(x.substr(0, 4), x.substr(9, 4));  // the same run everywhere
    for (int i = 0; i < 4; i++) EXPECT_TRUE(isdigit((unsigned char)x[i]));
    EXPECT_NE(x[2], '0');
    EXPECT_NE(x[3], '0');
    std::string c = T("%cC");
    ASSERT_EQ(c.size(), 2u);
    EXPECT_TRUE(c[0] >= 'a' && c[0] <= 'z');
    EXPECT_TRUE(c[1] >= 'A' && c[1] <= 'Z');
    std::string second = T("%x and %xx");
    EXPECT_EQ(second[6], second[0]);
    EXPECT_EQ(second.back(), 'x');
}

TEST_F(TranslateTest, SystemMacros) {
    char logfile[] = "C:\\logs\\run.txt";
    WriteSetting(nullptr, logfile, 0, nullptr, ZR_ROOT "Logfile");
    lstrcpyA(ScriptStore.tab[0].path, "C:\\Jobs\\Daily.Job.zxm");
    Case cases[] = {
        {"%LOGFILE", "C:\\logs\\run.txt"},
        {"%FILENAME", "C:\\Jobs\\Daily.Job.zxm"},
        {"%FILEBASENAME|%FILEPATH|%FILEEXT", "Daily.Job.zxm|C:\\Jobs|.zxm"},
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
    lstrcpyA(ScriptStore.tab[0].path, "C:\\Top.zxm");
    EXPECT_EQ(T("%FILEPATH"), "C:\\");
    SetEnvironmentVariableA("ZR_ENV", "env value");
    EXPECT_EQ(T("<%ZR_ENV%>"), "<env value>");
    char windows[MAX_PATH];
    GetWindowsDirectoryA(windows, MAX_PATH);
    EXPECT_EQ(T("%WINDIR"), windows);
    EXPECT_EQ(T("%WINVER").rfind("Windows ", 0), 0u);
}

TEST_F(TranslateTest, WindowMacrosWithAndWithoutACurrentWindow) {
    HWND window = CreateWindowExA(0, "STATIC", "Probe Title", WS_POPUP | WS_VISIBLE, 10, 20, 300, 200, nullptr,
                                  nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    LastWindow = window;
    EXPECT_EQ(T("%window_x,%window_y,%window_wide,%window_hi"), "10,20,300,200");
    EXPECT_EQ(T("%WINDOW / %WINCLASS"), "Probe Title / Static");
    EXPECT_EQ(T("%HWND"), std::to_string((long)(INT_PTR)window));
    // With no current window the foreground window becomes it, and
    // "%window_x" is read as "%WINDOW" followed by "_x".
    LastWindow = nullptr;
    SetForegroundWindow(window);
    std::string title = T("%window_x");
    EXPECT_EQ(LastWindow, GetForegroundWindow());
    EXPECT_EQ(title.substr(title.size() - 2), "_x");
    DestroyWindow(window);
    LastWindow = nullptr;
}

TEST_F(TranslateTest, EmbeddedFunctions) {
    Case cases[] = {
        {"Length(Uppercase(abc))", "3"},
        {"MyLength(abc)", "My3"},
        {"Uppercase( \"a b\" )!", "A B!"},
        {"Lowercase(ABC) Lowercase(DEF)", "abc def"},
        {"Trim('  a  ')|", "  a|"},
        {"ReplaceText(banana, AN, _)", "b__a"},
        {"InsertText(abc, 2, X)", "aXbc"},
        {"InsertText(abc, 6, X)", "abc  X"},
        {"GetSubText(a;b;c, ;, 2)", "b"},
        {"GetSubText(a;b;c, ;, 0)", "a"},
        {"CountItems(banana, AN)", "2"},
        {"CountItems(\"a,b,a\", a)", "2"},
        {"Length(abc", "Length(abc"},  // no ")" switches the stage off
        // Characters, not bytes; the embedded case functions change every letter.
        {"Length(Z\xC3\xBCrich\xF0\x9F\x98\x80)", "7"},
        {"InsertText(\xC3\xBC\xC3\xBC, 2, -)", "\xC3\xBC-\xC3\xBC"},
        {"Uppercase(z\xC3\xBCrich \xCE\xB4)", "Z\xC3\x9CRICH \xCE\x94"},
        {"Lowercase(\xC3\x98" "DEG\xC3\x85" "RD)", "\xC3\xB8" "deg\xC3\xA5" "rd"},
    };
    for (const Case& c : cases) EXPECT_EQ(T(c.in), c.out) << c.in;
}

TEST(TextOps, GetCallArgument) {
    struct ArgCase {
        const char* call;
        int index;
        const char* arg;
    } cases[] = {
        {"Name( a, \"b c\", 3 )", 1, "a"},    {"Name( a, \"b c\", 3 )", 2, "b c"},
        {"Name( a, \"b c\", 3 )", 3, "3"},    {"Name( a, \"b c\", 3 )", 4, ""},
        {"x, y ,z", 2, "y "},                  {"f(\"\")", 1, ""},
        {"f(it's)", 1, "it's"},                {"f(g(1,2), 3)", 1, "g(1,2)"},
        {"f(g(1,2), 3)", 2, "3"},
    };
    for (const ArgCase& c : cases) {
        char dest[64];
        GetCallArgument(c.call, c.index, dest, sizeof dest);
        EXPECT_STREQ(dest, c.arg) << c.call << " #" << c.index;
    }
    char dest[64];
    EXPECT_EQ(GetCallArgument("f(12, x)", 1, dest, sizeof dest), 12);
}

TEST(TextOps, ReplaceCountInsertCutAndItems) {
    std::string s = "a-A-a";
    EXPECT_EQ(ReplaceInString(s, "a", "b", 0, 0), 3);
    EXPECT_EQ(s, "b-b-b");
    s = "a-A-a";
    EXPECT_EQ(ReplaceInString(s, "a", "b", 0, 1), 2);
    EXPECT_EQ(s, "b-A-b");
    s = "x1x2x3";
    ReplaceInString(s, "x", "_", 2, 1);
    EXPECT_EQ(s, "x1_2x3");
    ReplaceInString(s, "x", "_", -1, 1);
    EXPECT_EQ(s, "x1_2_3");
    EXPECT_EQ(CountText("aAaA", "aa"), 2);
    std::string t = "ab";
    InsertAt(t, 4, "X");
    EXPECT_EQ(t, "ab  X");
    struct CutCase {
        const char* in;
        const char* marker;
        int mode;
        const char* out;
    } cuts[] = {{"abcXdef", "x", 0, "abc"}, {"--a--", "-", 1, "a--"}, {"--a--", "-", 2, "--a"},
                {"abc", "", 4, "bc"},        {"abc", "", 5, "ab"}};
    for (const CutCase& c : cuts) {
        std::string u = c.in;
        CutText(u, c.marker, c.mode);
        EXPECT_EQ(u, c.out) << c.in << " mode " << c.mode;
    }
    char item[64];
    EXPECT_EQ(GetItem("a,\"b,c\",d", ",", 1, item, sizeof item, 1, 1), 1);
    EXPECT_STREQ(item, "\"b,c\"");
    GetItem("a,\"b,c\",d", ",", 1, item, sizeof item, 1, 0);
    EXPECT_STREQ(item, "\"b");
    GetItem("x\"\"y,z", ",", 0, item, sizeof item, 1, 1);
    EXPECT_STREQ(item, "x\"\"y");
    EXPECT_EQ(GetItem("aXb", "x", 1, item, sizeof item, 1, 0), 0);
    GetItem("aXb", "x", 1, item, sizeof item, 0, 0);
    EXPECT_STREQ(item, "b");
    for (int i = 0; i < 200; i++) {
        int r = Random(3, 5);
        EXPECT_TRUE(r >= 3 && r <= 5);
    }
}

TEST(Random, AnyRangeOf32BitNumbersHoldsItsResults) {
    struct Range {
        int low, high;
    } ranges[] = {{0, 2147483647}, {-2147483647 - 1, 2147483647}, {-2147483647 - 1, -2147483647 - 1},
                  {2147483646, 2147483647}, {-5, 5}, {7, 7}};
    for (const Range& r : ranges) {
        for (int i = 0; i < 500; i++) {
            int got = Random(r.low, r.high);
            ASSERT_TRUE(got >= r.low && got <= r.high) << r.low << ".." << r.high << " gave " << got;
        }
    }
}

TEST_F(TranslateTest, VariablesAreReadAfreshWhenAnyoneChangesThem) {
    Var("v", "1");
    EXPECT_EQ(T("%v"), "1");
    Var("v", "2");  // this process
    EXPECT_EQ(T("%v"), "2");
    // Another process: the registry tool of the system.
    RunProcess("reg add HKCU\\SOFTWARE\\ZantoRunner\\UserVariables /v v /d 3 /f");
    EXPECT_EQ(T("%v"), "3");
    DeleteSetting(nullptr, ZR_ROOT "UserVariables");
    EXPECT_EQ(T("%v"), "%v");
}

TEST_F(TranslateTest, AWatchArmedByAnEndedThreadIsNotTrusted) {
    Var("w", "before");
    HANDLE t = CreateThread(nullptr, 0, [](LPVOID) -> DWORD {
        TranslateText("%w", 0, 0);
        return 0;
    }, nullptr, 0, nullptr);
    WaitForSingleObject(t, 10000);
    CloseHandle(t);
    RunProcess("reg add HKCU\\SOFTWARE\\ZantoRunner\\UserVariables /v w /d after /f");
    EXPECT_EQ(T("%w"), "after");
}

namespace {

// "%tempfile" makes a new empty file each time; the run's end removes them
// all, and only them.
TEST(TempFiles, TheRunsEndRemovesWhatTempfileMade) {
    std::string made[3];
    for (std::string& path : made) {
        TranslateText("%tempfile", 0, 0);
        path = TranslatedText;
        ASSERT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << path;
    }
    EXPECT_NE(made[0], made[1]);
    std::string other = TempFolder() + "\\keep.txt";
    WriteWholeFile(other, "keep");
    RemoveRunTempFiles();
    for (const std::string& path : made) EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << path;
    EXPECT_EQ(ReadWholeFile(other), "keep");
}

}  // namespace
