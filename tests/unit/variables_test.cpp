// User variables in the registry and the saving of results.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "base/uservariables.h"
#include "run/clipboard.h"
#include "run/runstate.h"
#include "run/variables.h"
#include "script/step.h"
#include "test_support.h"

namespace {

class VariablesTest : public testing::Test {
protected:
    void SetUp() override {
        dir = LogIntoNewFolder("run.log");
    }
    void TearDown() override { StoreVariableValue = saved; }
    // One step of the given action whose result goes to `output`.
    void Step1(const char* action, const char* output, const char* outputValue, const char* text = "") {
        LoadSteps(std::string("<ZantoRunner><step><action>") + action + "</action><text>" + text +
                  "</text><output value=\"" + outputValue + "\">" + output + "</output></step></ZantoRunner>");
    }
    std::string Variable(const char* name) {
        char value[4096];
        ReadSetting(nullptr, value, sizeof value, nullptr, ZR_ROOT "UserVariables\\%s", name);
        return value;
    }
    bool Exists(const char* name) {
        return ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\%s", name) > 0;
    }
    std::string Log() { return ReadWholeFile(dir + "\\run.log"); }
    std::string dir;
    int (*saved)(const char*, const char*, const char*) = StoreVariableValue;
};

int Refuse(const char*, const char*, const char*) { return 0; }

}  // namespace

TEST_F(VariablesTest, ReadVariableGivesTextAndIntegerValue) {
    struct Case {
        const char* stored;
        int value;
    } cases[] = {{"12abc", 12}, {"a-1", -1}, {"0x1F", 31}, {"", 0}, {"text", 0}};
    char buffer[64];
    for (const Case& c : cases) {
        WriteSetting(nullptr, c.stored, 0, nullptr, ZR_ROOT "UserVariables\\v");
        EXPECT_EQ(ReadVariable("%v", 0, 0, buffer, sizeof buffer), c.value) << c.stored;
        EXPECT_STREQ(buffer, c.stored);
    }
    strcpy(buffer, "untouched");
    EXPECT_EQ(ReadVariable(nullptr, 0, 0, buffer, sizeof buffer), 0);
    EXPECT_EQ(ReadVariable("v", -1, 0, buffer, sizeof buffer), 0);
    EXPECT_EQ(ReadVariable("v", 0, 0, buffer, 0), 0);
    EXPECT_STREQ(buffer, "untouched");
    WriteSetting(nullptr, "abcdef", 0, nullptr, ZR_ROOT "UserVariables\\v");
    ReadVariable("v", 0, 0, buffer, 4);
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(VariablesTest, SaveOutputToAVariableLogsAPreview) {
    Step1("Create/Set Variable", "Variable", "%name");
    SaveOutput(0, 0, "12345", 5, nullptr);
    EXPECT_EQ(Variable("name"), "12345");
    SaveOutput(0, 0, "123456", 6, nullptr);
    std::string long200(200, 'x');
    SaveOutput(0, 0, long200.c_str(), 200, nullptr);
    EXPECT_EQ(Variable("name"), long200);  // stored whole
    std::string log = Log();
    EXPECT_NE(log.find("\t%name = \"12345\"\r\n"), std::string::npos);
    EXPECT_NE(log.find("\t%name = \"123456\" (6 bytes)\r\n"), std::string::npos);
    EXPECT_NE(log.find("\t%name = \"" + std::string(129, 'x') + "\" (200 bytes)\r\n"), std::string::npos);
}

TEST_F(VariablesTest, StoringEmptyDeletesAndOverrideNamesTheVariable) {
    Step1("Create/Set Variable", "Variable", "a");
    SaveOutput(0, 0, "1", 1, nullptr);
    ASSERT_TRUE(Exists("a"));
    SaveOutput(0, 0, "", 0, nullptr);
    EXPECT_FALSE(Exists("a"));
    SaveOutput(0, 0, "x", 1, "%other");
    EXPECT_EQ(Variable("other"), "x");
    EXPECT_NE(Log().find("\ta = \"x\"\r\n"), std::string::npos);  // the printed name is output_value
}

TEST_F(VariablesTest, LogLevelAddsTheSavingLine) {
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "LogLevel");
    Step1("Create/Set Variable", "Variable", "a");
    SaveOutput(0, 0, "1", 1, nullptr);
    EXPECT_NE(Log().find("\tsaving to: SOFTWARE\\ZantoRunner\\UserVariables\\a\r\n"), std::string::npos);
}

TEST_F(VariablesTest, RefusedValueGoesToAnOverflowFile) {
    StoreVariableValue = Refuse;
    Step1("Create/Set Variable", "Variable", "%big");
    SaveOutput(0, 0, "the\0value", 9, nullptr);
    char path[MAX_PATH];
    VariableFilePath("big", path);
    EXPECT_EQ(Variable("big"), std::string(path) + "*");
    EXPECT_EQ(ReadWholeFile(path), std::string("the\0value", 9));
    EXPECT_EQ(std::string(path).substr(std::string(path).size() - 14), "\\big.ZANTO_var");
    ResetAllUserVariables();
    EXPECT_EQ(GetFileAttributesA(path), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(Exists("big"));
}

TEST_F(VariablesTest, VariableFilePathDropsEveryPercent) {
    char path[MAX_PATH];
    VariableFilePath("%a%b", path);
    char module[MAX_PATH];
    GetModuleFileNameA(nullptr, module, sizeof module);
    *strrchr(module, '\\') = 0;
    EXPECT_EQ(std::string(path), std::string(module) + "\\ab.ZANTO_var");
}

// A variable's file is deleted beside the program only: a name that climbs
// out of its folder leaves the file it names where it is.
TEST_F(VariablesTest, AVariablesFileIsDeletedOnlyBesideTheProgram) {
    char own[MAX_PATH], outside[MAX_PATH];
    VariableFilePath("zr-own", own);
    VariableFilePath("..\\zr-outside", outside);
    WriteWholeFile(own, "x");
    WriteWholeFile(outside, "x");
    ASSERT_NE(GetFileAttributesA(outside), INVALID_FILE_ATTRIBUTES);
    DeleteVariableFile("zr-own");
    DeleteVariableFile("..\\zr-outside");
    EXPECT_EQ(GetFileAttributesA(own), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(GetFileAttributesA(outside), INVALID_FILE_ATTRIBUTES);
    DeleteFileA(outside);
}

TEST_F(VariablesTest, LocalVariablesUseTheWindowAndTabPrefix) {
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "LocalVariables");
    Step1("Create/Set Variable", "Variable", "v");
    SaveOutput(0, 0, "local", 5, nullptr);
    char name[64];
    wsprintfA(name, "%li_1\\v", (long)(INT_PTR)MainWindow);
    EXPECT_EQ(Variable(name), "local");
    EXPECT_FALSE(Exists("v"));
    char buffer[16];
    ReadVariable("v", 0, 0, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "local");
}

TEST_F(VariablesTest, ClipboardAndFileTargets) {
    Step1("Create/Set Variable", "Clipboard", "");
    SaveOutput(0, 0, "on the clipboard", 16, nullptr);
    EXPECT_EQ(GetClipboardText(), "on the clipboard");
    EXPECT_NE(Log().find("\tSaving 16 byte(s) to clipboard: \"on the clipboard\"\r\n"), std::string::npos);

    ResetTestState();
    SetUp();
    std::string file = dir + "\\out\\result.txt";
    Step1("Create/Set Variable", "File", file.c_str());
    SaveOutput(0, 0, "first result", 12, nullptr);
    SaveOutput(0, 0, "second", 6, nullptr);
    EXPECT_EQ(ReadWholeFile(file), "second");  // the last result alone
    SaveOutput(0, 0, "", 0, nullptr);
    EXPECT_EQ(GetFileAttributesA(file.c_str()), INVALID_FILE_ATTRIBUTES);

    ResetTestState();
    SetUp();
    Step1("Create/Set Variable", "(do not save)", "x");
    SaveOutput(0, 0, "nothing", 7, nullptr);
    EXPECT_FALSE(Exists("x"));
}

TEST_F(VariablesTest, VariableActions) {
    struct Case {
        const char* action;
        const char* before;  // null: no variable
        const char* text;
        const char* after;
    } cases[] = {
        {"Create/Set Variable", nullptr, "hello", "hello"},
        {"Update Variable", "old", "new", "new"},
        {"Increment Variable", nullptr, "", "1"},
        {"Increment Variable", "41", "", "42"},
        {"Decrement Variable", "abc", "", "-1"},
        {"Decrement Variable", "10", "", "9"},
    };
    for (const Case& c : cases) {
        ResetTestState();
        SetUp();
        if (c.before) WriteSetting(nullptr, c.before, 0, nullptr, ZR_ROOT "UserVariables\\n");
        Step1(c.action, "Variable", "n", c.text);
        CurrentTab().count = 1;
        EXPECT_EQ(VariableStep(0, 0), 1) << c.action;
        EXPECT_EQ(Variable("n"), c.after) << c.action;
    }
}

TEST_F(VariablesTest, SetEnvironmentVariableChangesOurEnvironment) {
    LoadSteps("<ZantoRunner><step><action>Set Environment Variable</action><text>on</text>"
              "<value1>%ZR_TEST%</value1></step></ZantoRunner>");
    EXPECT_EQ(VariableStep(0, 0), 1);
    EXPECT_STREQ(CurrentTab().steps[0].value[0], "ZR_TEST");
    char value[16] = "";
    GetEnvironmentVariableA("ZR_TEST", value, sizeof value);
    EXPECT_STREQ(value, "on");

    ResetTestState();
    LoadSteps("<ZantoRunner><step><action>Set Environment Variable</action><text>x</text>"
              "<value1>a=b</value1></step></ZantoRunner>");
    EXPECT_EQ(VariableStep(0, 0), 0);
    EXPECT_NE(StepFailureText[0], 0);  // the system's words
}

TEST_F(VariablesTest, StartOfAWholeRunResetsVariablesOnlyWhenAsked) {
    WriteSetting(nullptr, "kept", 0, nullptr, ZR_ROOT "UserVariables\\k");
    LoadSteps("<ZantoRunner><step><action>Comment</action></step></ZantoRunner>");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "ResetUserVariables");
    LaunchFlags = LAUNCH_VARIABLES;  // a variable on the command line turns the reset off
    ASSERT_EQ(StartRun(0, nullptr, CMD_RUN, 1), 1);
    for (int i = 0; i < 500 && RunThread; i++) Sleep(10);
    EXPECT_TRUE(Exists("k"));
}
