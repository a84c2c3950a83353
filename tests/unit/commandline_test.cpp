// Command-line parsing: switches found anywhere, variables to the registry.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/commandline.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

std::string Variable(const char* name) {
    char value[260];
    ReadSetting(nullptr, value, 260, nullptr, ZR_ROOT "UserVariables\\%s", name);
    return value;
}

bool VariableExists(const char* name) {
    return ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\%s", name) > 0;
}

}  // namespace

TEST(ParseCommandLine, ModesAndFileName) {
    struct Case {
        const char* line;
        int flags;
        const char* file;
    } cases[] = {
        {"/r C:\\Job.zxm", 7, "C:\\Job.zxm"},
        {"-R C:\\Job.zxm", 7, "C:\\Job.zxm"},
        {"/v C:\\Job.zxm", 3, "C:\\Job.zxm"},
        {"/e C:\\Job.zxm", 1, "C:\\Job.zxm"},
        {"/v /r C:\\Job.zxm", 3, "C:\\Job.zxm"},              // /v wins
        {"C:\\Job.zxm", 1, "C:\\Job.zxm"},                    // a bare name opens
        {"\"C:\\My Job.zxm\"", 1, "C:\\My Job.zxm"},          // one quote off each end
        {"C:\\a-r\\Job.zxm", 7, "C:\\a\\Job.zxm"},            // "-r" in a path is a switch
        {"/r", 7, ""},
        {"/g /d /r x.zxm", 7, "x.zxm"},                        // reserved switches are removed
    };
    for (const Case& c : cases) {
        char file[MAX_PATH];
        EXPECT_EQ(ParseCommandLine(c.line, file), 1) << c.line;
        EXPECT_EQ(LaunchFlags, c.flags) << c.line;
        EXPECT_STREQ(file, c.file) << c.line;
    }
    char file[MAX_PATH];
    EXPECT_EQ(ParseCommandLine("", file), 0);
    EXPECT_EQ(LaunchFlags, 0);
}

TEST(ParseCommandLine, UnattendedIsTakenOutBeforeTheOtherSwitches) {
    struct Case {
        const char* line;
        int flags;
        const char* file;
    } cases[] = {
        {"/r /unattended C:\\Job.zxm", 7 | LAUNCH_UNATTENDED, "C:\\Job.zxm"},
        {"C:\\Job.zxm -UNATTENDED /r", 7 | LAUNCH_UNATTENDED, "C:\\Job.zxm"},
        {"/Unattended /e x.zxm", 1 | LAUNCH_UNATTENDED, "x.zxm"},   // only a hidden run uses it
        {"/r /unattended", 7 | LAUNCH_UNATTENDED, ""},
        {"/r C:\\a-unattended\\Job.zxm", 7 | LAUNCH_UNATTENDED, "C:\\a\\Job.zxm"},  // the same trap as "-r"
    };
    for (const Case& c : cases) {
        char file[MAX_PATH];
        EXPECT_EQ(ParseCommandLine(c.line, file), 1) << c.line;
        EXPECT_EQ(LaunchFlags, c.flags) << c.line;
        EXPECT_STREQ(file, c.file) << c.line;
    }
}

TEST(ParseCommandLine, HelpShowsTheUsageAndStops) {
    char file[MAX_PATH];
    EXPECT_EQ(ParseCommandLine("/r x.zxm /?", file), 0);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].title, "ZantoRunner");
    EXPECT_EQ(SeenBoxes[0].text.rfind("ZantoRunner Startup (Command Line) Options:\n\n\t/e\tEdit file", 0), 0u);
    EXPECT_EQ(LaunchFlags, 0);
    EXPECT_EQ(ParseCommandLine("-help", file), 0);
}

TEST(ParseCommandLine, LoggingSwitchesPersistAndOffWins) {
    char file[MAX_PATH];
    ParseCommandLine("/r x.zxm /L", file);
    EXPECT_EQ(SettingInt("Log"), 1);
    ParseCommandLine("/r x.zxm /l -F", file);
    EXPECT_EQ(SettingInt("Log"), 0);
    EXPECT_STREQ(file, "x.zxm");
}

TEST(ParseCommandLine, VariablesGoToTheRegistry) {
    char file[MAX_PATH];
    ParseCommandLine("/r C:\\Job.zxm %foo=\"New Value\" %n=5", file);
    EXPECT_EQ(LaunchFlags, 7 | 8);
    EXPECT_STREQ(file, "C:\\Job.zxm");
    EXPECT_EQ(Variable("foo"), "New Value");
    EXPECT_EQ(Variable("n"), "5");
}

// A value and a file name in any language: their bytes never count as a
// switch, a quote or a blank.
TEST(ParseCommandLine, VariablesAndTheFileNameHoldAnyCharacter) {
    char file[MAX_PATH];
    ParseCommandLine("/r C:\\R\xC3\xA9sum\xC3\xA9 \xE6\x9D\xB1.zxm %kunde=\"\xC3\x98" "deg\xC3\xA5rd \xE2\x80\x93 "
                     "\xF0\x9F\x98\x80\" %ort=Z\xC3\xBCrich",
                     file);
    EXPECT_STREQ(file, "C:\\R\xC3\xA9sum\xC3\xA9 \xE6\x9D\xB1.zxm");
    EXPECT_EQ(Variable("kunde"), "\xC3\x98" "deg\xC3\xA5rd \xE2\x80\x93 \xF0\x9F\x98\x80");
    EXPECT_EQ(Variable("ort"), "Z\xC3\xBCrich");
}

TEST(ParseCommandLine, UnquotedValuesStopAtBlankPercentOrSlash) {
    char file[MAX_PATH];
    ParseCommandLine("/r x.zxm %a=1%b=two/e %c='one two'", file);
    EXPECT_EQ(Variable("a"), "1");
    EXPECT_EQ(Variable("b"), "two");
    EXPECT_EQ(Variable("c"), "one two");
    EXPECT_STREQ(file, "x.zxm");
    // A quote of the other kind switches the state: the double quote then
    // closes the value.
    ParseCommandLine("/r x.zxm %d='a \"b\" c'", file);
    EXPECT_EQ(Variable("d"), "a \"b");
}

TEST(ParseCommandLine, FirstTokenLosesItsFirstCharacter) {
    char file[MAX_PATH];
    ParseCommandLine("%foo=1", file);
    EXPECT_EQ(Variable("foo"), "1");
    EXPECT_STREQ(file, "");  // a lone "%" is no file
    ParseCommandLine("xbar=2 /r y.zxm", file);
    EXPECT_EQ(Variable("bar"), "2");
    EXPECT_FALSE(VariableExists("xbar"));
}

TEST(ParseCommandLine, LocalVariablesTakeTheModulePrefix) {
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "LocalVariables");
    char file[MAX_PATH];
    ParseCommandLine("/r x.zxm %v=9", file);
    char name[64];
    wsprintfA(name, "%li_1\\v", (long)(INT_PTR)GetModuleHandleA(nullptr));
    EXPECT_EQ(Variable(name), "9");
    EXPECT_FALSE(VariableExists("v"));
}

// With "/unattended", "/check" or a result switch as a word, switches count
// only as whole words: paths and values keep their letters.
TEST(ParseCommandLine, ByWordsPathsKeepTheirLetters) {
    struct Case {
        const char* line;
        int flags;
        const char* file;
    } cases[] = {
        {"/r /unattended C:\\Jobs\\my-reports\\daily.zxm", 7 | LAUNCH_UNATTENDED, "C:\\Jobs\\my-reports\\daily.zxm"},
        {"/r /unattended C:\\a-r\\b-e\\x=y-unattended.zxm", 7 | LAUNCH_UNATTENDED, "C:\\a-r\\b-e\\x=y-unattended.zxm"},
        {"-R -Unattended \"C:\\My Jobs\\a -r b.zxm\"", 7 | LAUNCH_UNATTENDED, "C:\\My Jobs\\a -r b.zxm"},
        {"/check C:\\x/e\\y.zxm", 1 | LAUNCH_CHECK, "C:\\x/e\\y.zxm"},
        {"/junit out.xml /r C:\\Job.zxm", 7, "C:\\Job.zxm"},
        {"/v /r /unattended C:\\Job.zxm", 3 | LAUNCH_UNATTENDED, "C:\\Job.zxm"},  // /v still wins
        {"/e /unattended C:\\Job.zxm /g /d", 1 | LAUNCH_UNATTENDED, "C:\\Job.zxm"},
        {"/unattended /r", 7 | LAUNCH_UNATTENDED, ""},
    };
    for (const Case& c : cases) {
        char file[MAX_PATH];
        EXPECT_EQ(ParseCommandLine(c.line, file), 1) << c.line;
        EXPECT_EQ(LaunchFlags, c.flags) << c.line;
        EXPECT_STREQ(file, c.file) << c.line;
        EXPECT_TRUE(RunResultSwitches.byWords) << c.line;
    }
    // Without those words the old parse stands, letters lost and all.
    char file[MAX_PATH];
    ParseCommandLine("/r C:\\Jobs\\my-reports\\daily.zxm", file);
    EXPECT_STREQ(file, "C:\\Jobs\\myeports\\daily.zxm");
    EXPECT_FALSE(RunResultSwitches.byWords);
}

TEST(ParseCommandLine, ByWordsResultSwitchesTakeTheNextWord) {
    char file[MAX_PATH];
    ASSERT_EQ(ParseCommandLine("/r /JUnit \"C:\\out dir\\r.xml\" -json r.json /report C:\\a-r\\r.html "
                               "/params p-e.json /artifacts D:\\art C:\\Job.zxm",
                               file),
              1);
    EXPECT_STREQ(file, "C:\\Job.zxm");
    EXPECT_EQ(RunResultSwitches.junit, "C:\\out dir\\r.xml");
    EXPECT_EQ(RunResultSwitches.json, "r.json");
    EXPECT_EQ(RunResultSwitches.report, "C:\\a-r\\r.html");
    EXPECT_EQ(RunResultSwitches.params, "p-e.json");
    EXPECT_EQ(RunResultSwitches.artifacts, "D:\\art");
    EXPECT_EQ(RunResultSwitches.error, "");

    ParseCommandLine("/r C:\\Job.zxm /junit", file);
    EXPECT_EQ(RunResultSwitches.error, "the switch /junit needs a value after it");
    // A new parse forgets the last one's switches.
    ParseCommandLine("/r C:\\Job.zxm", file);
    EXPECT_EQ(RunResultSwitches.junit, "");
    EXPECT_EQ(RunResultSwitches.error, "");
}

TEST(ParseCommandLine, ByWordsVariablesKeepSlashesAndEquals) {
    char file[MAX_PATH];
    ParseCommandLine("/r /unattended %url=http://h/a?b=c %t=\"two words/e\" %s='it is' C:\\Job.zxm x=1", file);
    EXPECT_EQ(LaunchFlags, 7 | LAUNCH_UNATTENDED | LAUNCH_VARIABLES);
    EXPECT_EQ(Variable("url"), "http://h/a?b=c");
    EXPECT_EQ(Variable("t"), "two words/e");
    EXPECT_EQ(Variable("s"), "it is");
    // Only a word that starts with "%" is a variable: the rest is the path.
    EXPECT_STREQ(file, "C:\\Job.zxm x=1");
    EXPECT_FALSE(VariableExists("x"));
}

TEST(ParseCommandLine, ByWordsHelpOnlyAsAWord) {
    char file[MAX_PATH];
    EXPECT_EQ(ParseCommandLine("/r /unattended C:\\jobs-help\\x.zxm", file), 1);
    EXPECT_TRUE(SeenBoxes.empty());
    EXPECT_STREQ(file, "C:\\jobs-help\\x.zxm");
    EXPECT_EQ(ParseCommandLine("/r /unattended x.zxm -?", file), 0);
    EXPECT_EQ(SeenBoxes.size(), 1u);
}
