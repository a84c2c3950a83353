// Formulas, conditions and the number helpers.
#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "run/expressions.h"
#include "run/numbers.h"
#include "run/translate.h"
#include "test_support.h"

namespace {

std::string Calc(const char* formula) {
    char text[256], result[128];
    strcpy(text, formula);
    CalcFormula(text, result);
    return result;
}

}  // namespace

TEST(CalcFormula, PrecedenceSignsAndTheirQuirks) {
    struct Case {
        const char* formula;
        const char* result;
    } cases[] = {
        {"2+3*4", "14"},      {"(2+3)*4", "20"},     {"2^3^2", "64"},   // "^" is left-associative
        {"7%3", "1"},         {"-7%3", "-1"},        {"5&3", "1"},       {"5|3", "7"},
        {"5~3", "6"},         {"0!5", "-6"},         {"3>2", "1"},       {"2<1", "0"},
        {"2=2", "1"},         {"2==2", "2"},         {"5==5", "5"},      // the first "=" finds one value only
        {"2--3", "5"},        {"1+2+-3", "3"},       {"-(2+3)", "-5"},   {"10-4", "6"},
        {"2*5-3", "7"},       {" 1 + 1 ", "2"},      {"CALC(6/4)", "1.5"}, {"abc", "0"},
        {"0.1+0.2", "0.3"},   {"1/3", "0.33333333333333331483"},          {"2/3", "0.66666666666666662966"},
        {"1000000*1000000", "1000000000000"},      {"-0.5", "-0.5"},     {"10/4", "2.5"},
        {"(2+3", "5"},        {"2(3", "Bad Operator: ("},
    };
    for (const auto& c : cases) EXPECT_EQ(Calc(c.formula), c.result) << c.formula;
    char text[32] = "1 + 2", result[64];
    EXPECT_DOUBLE_EQ(CalcFormula(text, result), 3);
    EXPECT_STREQ(text, "1+2");  // the caller's text loses its blanks
    std::string longFormula;
    for (int i = 0; i < 130; i++) longFormula += "1+";
    longFormula += "1";
    EXPECT_EQ(Calc(longFormula.c_str()), "");  // more than 239 entries: no result
}

TEST(CompareExpression, OperatorsAndTheirAsymmetries) {
    struct Case {
        const char* condition;
        int result;
    } cases[] = {
        {"", 0},              {" ", 1},             {"abc", 1},           {"0", 0},
        {"10 = 10", 1},       {"10 = 10.0", 0},     {"10 >= 10.0", 1},    {"1.0 = 1", 0},
        {"abc = ABC", 0},     {"abc != ABC", 0},    {"abc <> abd", 1},    {"2 > 10", 0},
        {"b > a", 1},         {"a >= a", 1},        {"a < b", 1},         {"b <= a", 0},
        {"1,500 > 2", 0},     {"a=b=c", 0},         {"a=b=a", 1},         {"3 >< 4", 1},
        {"5 => 4", 0},        {"\"x\" = x", 0},     {"7 != 7", 0},        {"-3 < 2", 1},
    };
    for (const auto& c : cases) EXPECT_EQ(CompareExpression(c.condition), c.result) << "'" << c.condition << "'";
    EXPECT_EQ(CompareExpression(nullptr), 0);
}

TEST(Numbers, ParseFloatIsTextOfParseHexAndFormatNumber) {
    EXPECT_DOUBLE_EQ(ParseFloat("1,000"), 1);
    EXPECT_DOUBLE_EQ(ParseFloat("-2.5x"), -2.5);
    EXPECT_DOUBLE_EQ(ParseFloat(""), 0);
    // The fast path reads exactly what the runtime's strtod reads.
    srand(7);
    for (int i = 0; i < 2000; i++) {
        char text[40];
        snprintf(text, sizeof text, "%s%d.%0*d", i % 3 ? "" : "-", rand() % 100000, 1 + rand() % 9, rand());
        text[18] = 0;
        EXPECT_EQ(ParseFloat(text), strtod(text, nullptr)) << text;
    }
    EXPECT_DOUBLE_EQ(ParseFloat("1.2.3"), 1.2);
    EXPECT_DOUBLE_EQ(ParseFloat("123456789012345678"), 123456789012345678.0);
    EXPECT_EQ(IsTextOf("", 1), 1);
    EXPECT_EQ(IsTextOf("1.5, +-", 2), 1);
    EXPECT_EQ(IsTextOf("1a", 2), 0);
    EXPECT_EQ(IsTextOf("(1+2)*3", 3), 1);
    EXPECT_EQ(IsTextOf("+-", 4), 1);
    EXPECT_EQ(ParseHex("1F"), 31);
    EXPECT_EQ(ParseHex("f f\\"), 255);
    char text[80];
    FormatNumber(0, text);
    EXPECT_STREQ(text, "0");
    FormatNumber(-0.25, text);
    EXPECT_STREQ(text, "-0.25");
    FormatNumber(123, text);
    EXPECT_STREQ(text, "123");
}

TEST(CalcInTranslation, TheCallIsEvaluated) {
    TranslateText("total: CALC(2+3*4) items", 0, 0);
    EXPECT_STREQ(TranslatedText, "total: 14 items");
    TranslateText("Length(CALC(10/4))", 0, 0);
    EXPECT_STREQ(TranslatedText, "10");  // Length comes before CALC in the list: it counts the call's text
}
