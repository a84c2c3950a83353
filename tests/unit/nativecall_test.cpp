// The native function bridge: parsing, call shapes by argument kinds, the
// "parameter" variables, and its words for calls it refuses.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/runstate.h"
#include "system/nativecall.h"
#include "test_support.h"

namespace {

class Bridge : public ::testing::Test {
protected:
    void SetUp() override { ResetTestState(); }
    std::string Variable(const char* name) {
        char text[300] = "";
        if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\%s", name) <= 0) return "(none)";
        ReadSetting(nullptr, text, sizeof text, nullptr, ZR_ROOT "UserVariables\\%s", name);
        return text;
    }
};

TEST_F(Bridge, NumbersAndStringsAreCalledByTheirKinds) {
    EXPECT_EQ(NativeCall("GetSystemMetrics( 0 )", ""), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(NativeCall("  lstrlenA(\"hello, world\");", ""), 12);  // a quoted comma does not split
    EXPECT_EQ(NativeCall("lstrlenA(abc)", ""), 3);                  // an unquoted string ends at a comma
    EXPECT_EQ(NativeCall("GetTickCount()", "KERNEL32.DLL") != NOT_RUN, true);
    // The buffer of a string argument takes what the function writes; the
    // slots with a number in them are kept as "parameter" variables.
    char windows[MAX_PATH];
    int length = (int)GetWindowsDirectoryA(windows, sizeof windows);
    EXPECT_EQ(NativeCall("GetWindowsDirectoryA(\"\", 260)", ""), length);
    EXPECT_EQ(Variable("parameter1"), "(none)");  // no digits in a folder name like C:\windows
    EXPECT_EQ(Variable("parameter2"), "260");
    EXPECT_NE(NativeCall("CharUpper(\"mixed\")", ""), NOT_RUN);  // found as CharUpperA
}

TEST_F(Bridge, RefusedCallsSayWhy) {
    EXPECT_EQ(NativeCall("SixArgs(1, 2, 3, 4, 5, 6)", ""), NOT_RUN);
    EXPECT_STREQ(StepFailureText,
                 "The \"SixArgs\" Win32 API function is not supported.  Check to be sure that the name is correct.");
    EXPECT_EQ(NativeCall("GetSystemMetrics(0 x)", ""), NOT_RUN);
    EXPECT_STREQ(StepFailureText, "The formatting of the function call is incorrect (characters found after end: \"x\")");
    EXPECT_EQ(NativeCall("StretchDIBits(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17)", ""), NOT_RUN);
    EXPECT_STREQ(StepFailureText, "The formatting of the function call is incorrect (characters found after end: \"17\")");
    EXPECT_EQ(NativeCall("NoSuchFunction(1)", ""), NOT_RUN);
    EXPECT_STREQ(StepFailureText, "Unable to run function \"NoSuchFunction(1)\"");
    EXPECT_EQ(NativeCall("", ""), NOT_RUN);
}

TEST_F(Bridge, StepsFoldConstantExpressionsAndSaveTheResult) {
    ReplaceSteps("<ZantoRunner><step><action>Win32 API</action><text>GetSystemMetrics( SM_CXSCREEN + 1 )"
                 "</text><output value=\"got\">Variable</output></step></ZantoRunner>");
    // "0+1" is folded to 1: the call reads SM_CYSCREEN.
    EXPECT_EQ(ExternalAction(0, 0), GetSystemMetrics(SM_CYSCREEN));
    EXPECT_EQ(Variable("got"), std::to_string(GetSystemMetrics(SM_CYSCREEN)));
    ReplaceSteps("<ZantoRunner><step><action>Call DLL Function</action><value1>KERNEL32.DLL</value1>"
                 "<text>IsWindow(NULL)</text><output value=\"got\">Variable</output></step></ZantoRunner>");
    EXPECT_EQ(ExternalAction(0, 0), 1);  // a result of 0 still passes
    EXPECT_EQ(Variable("got"), "0");
}

TEST(KeepFormulaCharacters, KeepsDigitsOperatorsAndBlanks) {
    char text[] = "MessageBox( 0+64 | x)";
    KeepFormulaCharacters(text);
    EXPECT_STREQ(text, "( 0+64 | )");
}

}  // namespace
