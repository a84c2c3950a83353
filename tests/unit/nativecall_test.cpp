// The native function bridge: parsing, call shapes by argument kinds, the
// "parameter" variables, and its words for calls it refuses.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/runstate.h"
#include "system/nativecall.h"
#include "test_support.h"

namespace {

// The call's result, or kNotRun when no call was made.
const intptr_t kNotRun = INTPTR_MIN;
intptr_t Call(const char* text, const char* library = "") {
    intptr_t result = 0;
    return NativeCall(text, library, &result) ? result : kNotRun;
}

std::string ResultText(intptr_t value) {
    char text[32];
    BridgeResultText(value, text, sizeof text);
    return text;
}

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
    EXPECT_EQ(Call("GetSystemMetrics( 0 )"), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(Call("  lstrlenA(\"hello, world\");"), 12);  // a quoted comma does not split
    EXPECT_EQ(Call("lstrlenA(abc)"), 3);                  // an unquoted string ends at a comma
    EXPECT_EQ(Call("GetTickCount()", "KERNEL32.DLL") != kNotRun, true);
    // The buffer of a string argument takes what the function writes; the
    // slots with a number in them are kept as "parameter" variables.
    char windows[MAX_PATH];
    int length = (int)GetWindowsDirectoryA(windows, sizeof windows);
    EXPECT_EQ(Call("GetWindowsDirectoryA(\"\", 260)"), length);
    EXPECT_EQ(Variable("parameter1"), "(none)");  // no digits in a folder name like C:\windows
    EXPECT_EQ(Variable("parameter2"), "260");
    EXPECT_NE(Call("CharUpper(\"mixed\")"), kNotRun);  // found as CharUpperA
}

TEST_F(Bridge, RefusedCallsSayWhy) {
    EXPECT_EQ(Call("SixArgs(1, 2, 3, 4, 5, 6)"), kNotRun);
    EXPECT_STREQ(StepFailureText,
                 "The \"SixArgs\" Win32 API function is not supported.  Check to be sure that the name is correct.");
    EXPECT_EQ(Call("GetSystemMetrics(0 x)"), kNotRun);
    EXPECT_STREQ(StepFailureText, "The formatting of the function call is incorrect (characters found after end: \"x\")");
    EXPECT_EQ(Call("StretchDIBits(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17)"), kNotRun);
    EXPECT_STREQ(StepFailureText, "The formatting of the function call is incorrect (characters found after end: \"17\")");
    EXPECT_EQ(Call("NoSuchFunction(1)"), kNotRun);
    EXPECT_STREQ(StepFailureText, "Unable to run function \"NoSuchFunction(1)\"");
    EXPECT_EQ(Call(""), kNotRun);
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

TEST_F(Bridge, AddressesAndNumbersPastThe32BitRangeKeepTheirBits) {
    // An address from the top of the address space is passed back whole.
    const std::string call = "VirtualAlloc(0, 65536, " + std::to_string(MEM_COMMIT | MEM_RESERVE | MEM_TOP_DOWN) + ", 4)";
    const intptr_t address = Call(call.c_str());
    ASSERT_NE(address, kNotRun);
    ASSERT_NE(address, 0);
    const std::string text = ResultText(address);
    EXPECT_EQ(Call(("VirtualFree(" + text + ", 0, 32768)").c_str()), 1) << text;  // MEM_RELEASE
    // An int result keeps its sign.
    EXPECT_EQ(ResultText(Call("lstrcmpA(\"a\", \"b\")")), "-1");
    // 2147483648 is GENERIC_READ, as Windows defines it.
    const std::string file = TempFolder() + "\\read.txt";
    WriteWholeFile(file, "x");
    const intptr_t handle = Call(("CreateFileA(\"" + file + "\", 2147483648, 1, 0, 3, 128, 0)").c_str());
    ASSERT_NE(handle, kNotRun);
    EXPECT_NE(handle, (intptr_t)INVALID_HANDLE_VALUE);
    CloseHandle((HANDLE)handle);
}

TEST(BridgeResultText, ThirtyTwoBitResultsPrintAsIntsAndWiderOnesInFull) {
    EXPECT_EQ(ResultText(0), "0");
    EXPECT_EQ(ResultText(-1), "-1");
    EXPECT_EQ(ResultText((intptr_t)0xFFFFFFFFu), "-1");  // an int -1 in a 64-bit register
    EXPECT_EQ(ResultText(2147483647), "2147483647");
#if INTPTR_MAX > 0x7FFFFFFF
    EXPECT_EQ(ResultText((intptr_t)0x7FF612340000LL), "140694844080128");
    EXPECT_EQ(ResultText((intptr_t)-5000000000LL), "-5000000000");
#endif
}

// A library of our own, built for both targets: functions of every count of
// arguments, in both conventions, each returning its count and its sum.
TEST_F(Bridge, CdeclAndStdcallFunctionsOfAnyCountReturnCleanly) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string library = self;
    library = library.substr(0, library.rfind('\\') + 1) + "zrbridgetest.dll";
    ASSERT_NE(GetFileAttributesA(library.c_str()), INVALID_FILE_ATTRIBUTES) << library;
    const char* const names[2][9] = {
        {"Std0", "Std1", "Std2", "Std3", "Std4", "Std5", "MoveWindow", "SetWindowPos", "ScrollWindowEx"},
        {"Cdecl0", "Cdecl1", "Cdecl2", "Cdecl3", "Cdecl4", "Cdecl5", "ToUnicode", "TrackPopupMenu", nullptr}};
    for (int convention = 0; convention < 2; convention++) {
        for (int n = 0; n <= 8 && names[convention][n]; n++) {
            std::string call = std::string(names[convention][n]) + "(";
            int sum = 0;
            for (int k = 1; k <= n; k++) {
                call += (k > 1 ? ", " : "") + std::to_string(k * 10);
                sum += k * 10;
            }
            call += ")";
            EXPECT_EQ(Call(call.c_str(), library.c_str()), 1000 * n + sum) << call;
        }
        // Too few arguments for a function: the call still returns to its place.
        const std::string fewer = std::string(names[convention][3]) + "(1)";
        EXPECT_NE(Call(fewer.c_str(), library.c_str()), kNotRun) << fewer;
    }
    // AngleArc's angles are FLOATs: the bridge passes their bits.
    EXPECT_EQ(Call("AngleArc(1, 2, 3, 4, 2.5, 0.75)", library.c_str()), 3);  // (int)(2.5 + 0.75)
}

TEST(KeepFormulaCharacters, KeepsDigitsOperatorsAndBlanks) {
    char text[] = "MessageBox( 0+64 | x)";
    KeepFormulaCharacters(text);
    EXPECT_STREQ(text, "( 0+64 | )");
}

}  // namespace
