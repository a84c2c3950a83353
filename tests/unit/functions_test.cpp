// The "Functions" actions, each through a real step and its output.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/functions.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

struct Case {
    const char* action;
    const char* text;
    const char* value1;
    const char* value2;
    const char* options;
    const char* result;
};

std::string Escape(const char* s) {
    std::string out;
    for (; *s; s++) {
        if (*s == '&') out += "&amp;";
        else if (*s == '<') out += "&lt;";
        else out += *s;
    }
    return out;
}

// Runs one function step whose result goes to the variable "r".
std::string RunStep(const Case& c, int* result = nullptr) {
    ResetTestState();
    LoadSteps(std::string("<ZantoRunner><step><action>") + c.action + "</action><text>" + Escape(c.text) +
              "</text><value1>" + Escape(c.value1) + "</value1><value2>" + Escape(c.value2) + "</value2><options>" +
              c.options + "</options><output value=\"r\">Variable</output></step></ZantoRunner>");
    int r = RunFunction(0, 0);
    if (result) *result = r;
    char value[512];
    ReadSetting(nullptr, value, sizeof value, nullptr, ZR_ROOT "UserVariables\\r");
    std::string text = value;
    // An empty result for a variable that was not there is kept in a file.
    if (!text.empty() && text.back() == '*') return ReadWholeFile(text.substr(0, text.size() - 1));
    return text;
}

}  // namespace

TEST(Functions, EachActionByItsWord) {
    Case cases[] = {
        {"Get Length", "hello", "", "", "", "5"},
        {"Uppercase", "abc \xc3\xa9", "", "", "", "ABC \xc3\xa9"},  // accented letters stay
        {"Lowercase", "ABC", "", "", "", "abc"},
        {"Trim", "--a--", "-", "", "", "--a"},
        {"Trim", "--a--", "-", "Front", "", "a--"},
        {"Trim", "  a  ", "", "", "", "  a"},
        {"Replace Text", "aAa", "a", "x", "", "xxx"},
        {"Replace Text", "aAa", "a", "x", "Case Sensitive", "xAx"},
        {"Replace Text", "aAa", "a", "x", "First Only", "xAa"},
        {"Insert Text", "abc", "2", "X", "", "aXbc"},
        {"Insert Text", "abc", "10", "X", "", "abc      X"},  // pads up to the ninth place
        {"Get Sub Text", "a;b;c", ";", "3", "", "c"},
        {"Get Sub Text", "a,\"b,c\",d", ",", "2", "Quote", "\"b,c\""},
        {"Count Items", "banana", "an", "", "", "2"},
        {"Find String", "Hello World", "wor", "", "", "World"},
        {"Find String", "Hello World", "wor", "", "Sensitive", "Hello World"},
        {"Pad String", "ab", "7", "xyz", "", "abxyzxy"},
        {"Pad String", "abcdef", "3", "x", "", "abcdef"},
        {"Mid String", "abcdef", "3", "2", "", "bcd"},
        {"Mid String", "abcdef", "10", "0", "", "abcdef"},
        {"Mid String", "abcdef", "-1", "2", "", ""},
        {"Left String", "abcdef", "0", "", "", ""},
        {"Left String", "abcdef", "99", "", "", "abcdef"},
        {"Right String", "abcdef", "2", "", "", "ef"},
        {"Absolute Value", "-3.7", "", "", "", "37"},
        {"Absolute Value", "-12", "", "", "", "12"},
        {"Format Number", "1234.567", "%.2f", "", "", "1234.57"},
        {"Format Number", "255.9", "%x", "", "", "ff"},
        {"Format Number", "3", "Item %03d of %d", "", "", "Item 003 of %d"},
        {"Format Number", "1234.5", "#,###.##", "", "", "1,234.50"},
        {"Format Number", "10000", "#####", "", "", "10000"},
        {"Format Number", "10000", "##,###", "", "", "1,0000"},  // the comma moves, as it always did
        {"Math Calculation", "2+3*4", "", "", "", "14"},
        {"Number to Words", "1,234", "", "", "", "One Thousand Two Hundred Thirty Four"},
        {"Number to Words", "0", "", "", "", "Zero"},
        {"Number to Words", "3000000001", "", "", "", "(Out of Range)"},
        {"Number to Words", "2000000000", "", "", "", "Two Billion"},
        {"Number to Words", "115", "", "", "", "One Hundred Fifteen"},
        {"Number to Words", "3.14", "", "", "", "Three point One Four"},
        {"Number to Words", "21.5", "", "", "Check", "Twenty One and 50/100"},
        {"Number to Words", "7", "", "", "Check", "Seven and no/100"},
        {"Random Number", "", "4", "4", "", "4"},
    };
    for (const Case& c : cases) EXPECT_EQ(RunStep(c), c.result) << c.action << " of '" << c.text << "'";
}

TEST(Functions, EncryptTwiceRestoresTheText) {
    std::string text = "secret Kk";
    XorText(text, "key");
    EXPECT_NE(text, "secret Kk");
    EXPECT_EQ(text.find('\0'), std::string::npos);
    XorText(text, "key");
    EXPECT_EQ(text, "secret Kk");
    std::string same = "k";
    XorText(same, "k");
    EXPECT_EQ(same, "\x7f");  // a byte equal to its key byte
    XorText(same, "k");
    EXPECT_EQ(same, "k");
}

TEST(Functions, InsertThousandsKeepsItsMovingComma) {
    struct {
        const char* in;
        const char* out;
    } cases[] = {{"1000", "1,000"}, {"10000", "1,0000"}, {"1234567.89", "1,234,567.89"}, {"-1000", "-1,000"},
                 {"999", "999"}};
    for (const auto& c : cases) {
        std::string s = c.in;
        InsertThousands(s);
        EXPECT_EQ(s, c.out);
    }
}

TEST(Functions, AnUnknownFunctionFailsWithItsName) {
    int result = 1;
    RunStep({"Frobnicate Text", "x", "", "", "", ""}, &result);
    EXPECT_EQ(result, 0);
    EXPECT_STREQ(StepFailureText, "Unknown function: \"Frobnicate Text\"");
}

// Lengths, positions and counts are characters: "ü" is one, "😀" (outside
// the BMP, four bytes) is one. Uppercase and Lowercase still change a to z
// only.
TEST(Functions, LengthsAndPositionsCountCharacters) {
    const char* const zurich = "Z\xC3\xBCrich\xF0\x9F\x98\x80";  // Zürich😀
    Case cases[] = {
        {"Get Length", zurich, "", "", "", "7"},
        {"Get Length", "\xE6\x9D\xB1\xE4\xBA\xAC", "", "", "", "2"},
        {"Left String", zurich, "2", "", "", "Z\xC3\xBC"},
        {"Right String", zurich, "2", "", "", "h\xF0\x9F\x98\x80"},
        {"Mid String", zurich, "3", "2", "", "\xC3\xBCri"},
        {"Mid String", zurich, "5", "7", "", "\xF0\x9F\x98\x80"},
        {"Insert Text", zurich, "3", "-", "", "Z\xC3\xBC-rich\xF0\x9F\x98\x80"},
        {"Insert Text", "\xC3\xBC", "4", "X", "", "\xC3\xBC  X"},
        {"Pad String", "\xC3\xBC", "4", "\xE2\x80\x93", "", "\xC3\xBC\xE2\x80\x93\xE2\x80\x93\xE2\x80\x93"},
        {"Pad String", "a", "3", "\xC3\xA9\xC3\xA8\xC3\xAA", "", "a\xC3\xA9\xC3\xA8"},
        {"Uppercase", "z\xC3\xBCrich", "", "", "", "Z\xC3\xBCRICH"},
        {"Trim", "\xC3\xBC\xC3\xBC" "a\xC3\xBC", "\xC3\xBC", "Front", "", "a\xC3\xBC"},
    };
    for (const Case& c : cases) EXPECT_EQ(RunStep(c), c.result) << c.action << " of '" << c.text << "'";
}
