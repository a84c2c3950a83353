// JSON and XML text for the result files, and the flat JSON object that
// /params reads.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/jsontext.h"
#include "base/base64.h"

namespace {

std::string Json(const std::string& text) {
    std::string out;
    AppendJsonString(out, text);
    return out;
}

std::string Xml(const std::string& text) {
    std::string out;
    AppendXmlText(out, text);
    return out;
}

}  // namespace

TEST(JsonText, EveryControlCharacterIsEscaped) {
    for (int c = 1; c < 0x20; c++) {
        const std::string got = Json(std::string(1, (char)c));
        const char* shortForm = c == '\n' ? "\"\\n\"" : c == '\r' ? "\"\\r\"" : c == '\t' ? "\"\\t\"" :
                                c == '\b' ? "\"\\b\"" : c == '\f' ? "\"\\f\"" : nullptr;
        if (shortForm) {
            EXPECT_EQ(got, shortForm) << c;
        } else {
            char expected[16];
            snprintf(expected, sizeof expected, "\"\\u%04x\"", c);
            EXPECT_EQ(got, expected) << c;
        }
    }
    EXPECT_EQ(Json(std::string("a\0b", 3)), "\"a\\u0000b\"");
    EXPECT_EQ(Json("\x7f"), "\"\\u007f\"");
    EXPECT_EQ(Json("say \"hi\" \\ /"), "\"say \\\"hi\\\" \\\\ /\"");
}

TEST(JsonText, Utf8StaysAndOtherBytesBecomeTheirLatin1Letters) {
    EXPECT_EQ(Json("\xce\xa9 \xe2\x82\xac \xf0\x9f\x98\x80"), "\"\xce\xa9 \xe2\x82\xac \xf0\x9f\x98\x80\"");
    // A byte that is no part of a UTF-8 sequence: "é" in the legacy code page.
    EXPECT_EQ(Json("caf\xe9"), "\"caf\xc3\xa9\"");
    // An overlong form, a lone continuation byte, a cut sequence.
    EXPECT_EQ(AsUtf8(std::string("\xc0\xaf")), "\xc3\x80\xc2\xaf");
    EXPECT_EQ(AsUtf8(std::string("\x80")), "\xc2\x80");
    EXPECT_EQ(AsUtf8(std::string("\xe2\x82")), "\xc3\xa2\xc2\x82");
}

TEST(XmlText, MarkupIsEscapedAndForbiddenControlsReplaced) {
    EXPECT_EQ(Xml("<a href=\"x\">&'</a>"), "&lt;a href=&quot;x&quot;&gt;&amp;&#39;&lt;/a&gt;");
    EXPECT_EQ(Xml("a\tb\r\nc\x01\x1f"), "a\tb\r\nc??");
    EXPECT_EQ(Xml("\xce\xa9\xe9"), "\xce\xa9\xc3\xa9");
}

TEST(FlatJson, ReadsTextsNumbersBooleansAndNull) {
    std::vector<JsonField> fields;
    std::string error;
    ASSERT_TRUE(ReadFlatJsonObject("\xEF\xBB\xBF{ \"a\": \"x\\u00e9\\ud83d\\ude00\\n/\", \"n\": -12.5e3, \"t\": true,\n"
                                   "\"f\": false, \"z\": null, \"u\": \"\xce\xa9\" }",
                                   fields, error))
        << error;
    ASSERT_EQ(fields.size(), 6u);
    EXPECT_EQ(fields[0].value, "x\xc3\xa9\xf0\x9f\x98\x80\n/");
    EXPECT_EQ(fields[1].value, "-12.5e3");
    EXPECT_EQ(fields[1].kind, JSON_NUMBER);
    EXPECT_EQ(fields[2].value, "1");
    EXPECT_EQ(fields[3].value, "0");
    EXPECT_EQ(fields[4].kind, JSON_NULL);
    EXPECT_EQ(fields[5].value, "\xce\xa9");
    EXPECT_TRUE(ReadFlatJsonObject("{}", fields, error));
    EXPECT_TRUE(fields.empty());
}

TEST(FlatJson, RefusesWithLineAndColumn) {
    struct Case {
        const char* text;
        const char* error;
    } cases[] = {
        {"{\n  \"a\": {\"b\": 1}\n}", "line 2, column 8: the value of \"a\" is nested"},
        {"{\"a\": [1]}", "line 1, column 7: the value of \"a\" is nested"},
        {"{\n\"a\": 1,\n\"b\" 2}", "line 3, column 5: ':' was expected"},
        {"{\"a\": \"\xce\xa9\xce\xa9\" x}", "line 1, column 12: ',' or '}' was expected"},
        {"{\"a\": tru}", "line 1, column 7: a value must be"},
        {"{\"a\": \"open", "line 1, column 12: a text has no closing quote"},
        {"{\"a\": \"\\q\"}", "line 1, column 8: unknown escape"},
        {"{\"a\": 01}", "line 1, column 8: ',' or '}' was expected"},
        {"[1]", "line 1, column 1: the file must hold one JSON object"},
        {"", "line 1, column 1: the file must hold one JSON object"},
        {"{} {}", "line 1, column 4: text after the object's end"},
        {"{\"a\": \"\xff\"}", "line 1, column 8: the file is not UTF-8"},
        {"{\"a\": \"x\ty\"}", "line 1, column 9: a control character"},
    };
    for (const Case& c : cases) {
        std::vector<JsonField> fields;
        std::string error;
        EXPECT_FALSE(ReadFlatJsonObject(c.text, fields, error)) << c.text;
        EXPECT_EQ(error.rfind(c.error, 0), 0u) << c.text << " gave " << error;
    }
}

TEST(PngImage, Base64OfEachTail) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64(std::string("\xff\xfe\x00", 3)), "//4A");
}
