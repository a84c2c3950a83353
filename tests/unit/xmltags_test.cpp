// The reader's primitives: tag look-up, comments, entities, option lists and
// the number reader.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/words.h"
#include "script/xmltags.h"

namespace {

std::string Tag(const char* xml, const char* tag, int limit = 259) {
    char dest[300];
    ReadTag(xml, tag, dest, limit);
    return dest;
}

}  // namespace

TEST(ReadTag, FindsTagsInAnyCaseAndReturnsTheNumber) {
    EXPECT_EQ(Tag("<ACTION>Move</Action>", "<action>"), "Move");
    EXPECT_EQ(ReadTag("<status>0x1001</status>", "<status>", nullptr, 0), 0x1001);
    EXPECT_EQ(ReadTag("<indents>a1b2</indents>", "<indents>", nullptr, 0), 12);
    EXPECT_EQ(ReadTag("<x>5</x>", "<missing>", nullptr, 0), 0);
    EXPECT_EQ(ReadTag("", "<x>", nullptr, 0), 0);
    EXPECT_EQ(ReadTag("<x>5</x>", "", nullptr, 0), 0);
}

TEST(ReadTag, NegativeLimitMeasuresTheContent) {
    EXPECT_EQ(ReadTag("<text>hello</text>", "<text>", nullptr, -1), 6);
    EXPECT_EQ(ReadTag("<text></text>", "<text>", nullptr, -1), 1);
    // Without a closing tag a negative limit gives an empty content.
    EXPECT_EQ(ReadTag("<text>hello", "<text>", nullptr, -1), 1);
}

TEST(ReadTag, MissingClosingTagRunsToLimitOrEnd) {
    EXPECT_EQ(Tag("<text>abcdef", "<text>", 3), "abc");
    EXPECT_EQ(Tag("<text>abcdef", "<text>", 100), "abcdef");
}

TEST(ReadTag, CutsAtLimitAndDecodesAfterCounting) {
    EXPECT_EQ(Tag("<text>abcdef</text>", "<text>", 4), "abcd");
    EXPECT_EQ(Tag("<text>a&amp;b</text>", "<text>"), "a&b");
}

TEST(ReadTag, ReadsAttributesOfTheOpeningTag) {
    char value[260], label[260], image[260], log[260];
    const char* const names[4] = {"value", "label", "image", "log"};
    char* const dests[4] = {value, label, image, log};
    char mode[64];
    ReadTag("<onfail value=\"a&amp;b\" image=\"1\" log=\"0\">Jump to Label</onfail>", "<onfail>", mode, 63,
            names, dests);
    EXPECT_STREQ(mode, "Jump to Label");
    EXPECT_STREQ(value, "a&b");
    EXPECT_STREQ(label, "");
    EXPECT_STREQ(image, "1");
    EXPECT_STREQ(log, "0");
}

TEST(ReadTag, PrefixSearchFindsLongerTagNames) {
    // Searching "<value1" also finds "<value10", whose closing tag then does
    // not match: the content runs to the end. The format has no such tags.
    EXPECT_EQ(Tag("<value10>x</value10>", "<value1>"), "x</value10>");
}

TEST(StripComments, RemovesCommentsAndAnUnterminatedTail) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"a<!-- x -->b<!--y-->c", "abc"},
        {"a<!-- x --><!-- y -->b", "ab"},
        {"keep<!-- open", "keep"},
        {"none", "none"},
        {"<!---->", ""},
        {"a<!<!---->--b", "a<!--b"},           // what closes up is not searched again
        {"<!-- a <!-- b -->c-->d", "c-->d"},   // comments do not nest
        {"a<!---->b<!-- -- -->c", "abc"},
    };
    for (const Case& c : cases) {
        char buffer[64];
        strcpy(buffer, c.in);
        StripComments(buffer, strlen(buffer));
        EXPECT_STREQ(buffer, c.out) << c.in;
    }
}

TEST(Entities, EncodeAmpersandFirstAndOnlyWhenItFits) {
    char text[64] = "a<b&c>";
    EncodeEntities(text, sizeof text, 255);
    EXPECT_STREQ(text, "a&lt;b&amp;c&gt;");
    char full[16] = "&&&&";  // needs 4 + 1 + 16 = 21 bytes
    EXPECT_EQ(EncodeEntities(full, sizeof full, 255), 21);
    EXPECT_STREQ(full, "&&&&");
    char masked[32] = "<&>";
    EncodeEntities(masked, sizeof masked, 2);
    EXPECT_STREQ(masked, "&lt;&>");
}

TEST(Entities, DecodeTwiceOverOnPurpose) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"&amp;amp;", "&"},
        {"&amp;lt;", "<"},
        {"&#038;&#060;&#062;&#039;&#034;", "&<>'\""},
        {"&apos;&quot;&gt;", "'\">"},
        {"plain & text", "plain & text"},
        {"&amp;amp;amp;amp;", "&"},
        {"&amp;#038;lt;", "<"},
        {"&&amp;;", "&&;"},
        {"&lt&gt;;", "&lt>;"},
    };
    for (const Case& c : cases) {
        char buffer[64];
        strcpy(buffer, c.in);
        DecodeEntities(buffer);
        EXPECT_STREQ(buffer, c.out) << c.in;
    }
}

TEST(SetOption, AddsWithoutBlankAndRemovesWithTidying) {
    struct Case {
        const char* before;
        const char* word;
        int add;
        const char* after;
    } cases[] = {
        {"", "Title", 1, "Title"},
        {"Title", "Class", 1, "Title,Class"},
        {"Title, Class", "class", 1, "Title, Class"},  // already there, any case
        {"Title, Class, ID", "Class", 0, "Title,ID"},
        {"Class, Title", "Class", 0, "Title"},
        {"Title", "Title", 0, ""},
        {"A,,B", "X", 0, "A,B"},
    };
    for (const Case& c : cases) {
        char options[260];
        strcpy(options, c.before);
        SetOption(options, c.word, c.add);
        EXPECT_STREQ(options, c.after) << c.before << " / " << c.word;
    }
}

TEST(ParseInt, CollectsDigitsAndMinusSigns) {
    struct Case {
        const char* text;
        int value;
    } cases[] = {
        {"", 0},          {"42", 42},         {"1,000", 1000},   {"a1b2", 12},    {"-7", -7},
        {"0x1f", 31},     {"0X1 0", 16},      {"0xff", 0},       {"x", 0},        {" 12 ", 12},
        {"1-2", 1},       {"99999999999", 2147483647},
    };
    for (const Case& c : cases) EXPECT_EQ(ParseInt(c.text), c.value) << c.text;
    EXPECT_EQ(ParseInt(nullptr), 0);
}

TEST(Words, ContainsNoCaseAndTrim) {
    EXPECT_TRUE(ContainsNoCase("Start 'For' Loop", "for"));
    EXPECT_FALSE(ContainsNoCase("Start", "stop"));
    EXPECT_FALSE(ContainsNoCase(nullptr, "x"));
    char text[32] = " \t a b \t";
    TrimSpaces(text);
    EXPECT_STREQ(text, "a b");
}

// The one walk over a step finds each tag where ReadTag's own search would.
TEST(FindTags, FindsWhatTheSearchOfEachTagFinds) {
    const char* const tags[] = {"<action>", "<text>", "<value1>", "<value10>", "<output>", "<comment>", "<x>"};
    const int count = (int)(sizeof tags / sizeof tags[0]);
    const char* const pieces[] = {
        "<action>Type</action><text>a</text>",
        "<TEXTual>no</TEXTual><Text>yes</Text><ACTION>Delay</ACTION>",
        "<value10>ten</value10><value1>one</value1>",
        "<output value=\"v\">Variable</output><output>second</output>",
        "<<action<action>>x</action><comment/>",
        "text without tags",
        "<",
        "<text",
        "",
    };
    for (const char* piece : pieces) {
        const char* found[count];
        FindTags(piece, tags, count, found);
        for (int i = 0; i < count; i++) {
            std::string open = tags[i];
            open.pop_back();  // without its ">"
            EXPECT_EQ(found[i], FindNoCase(piece, open.c_str())) << piece << " / " << tags[i];
            // And the reading from there is ReadTag's.
            char viaIndex[64], viaSearch[64];
            EXPECT_EQ(ReadTagAt(found[i], tags[i], viaIndex, 63), ReadTag(piece, tags[i], viaSearch, 63));
            EXPECT_STREQ(viaIndex, viaSearch) << piece << " / " << tags[i];
        }
    }
}

// The sixteen-at-a-time search answers as strchr and strstr do from every
// alignment, and never finds what lies past the end of the text.
TEST(FindChar, AnswersAsTheLibraryFromEveryAlignment) {
    alignas(16) char buffer[80];
    memset(buffer, '<', sizeof buffer);  // what follows the end must not be found
    const char text[] = "ab<step>cd</step>efghijklmnopqrstu<x";
    for (size_t at = 0; at < 16; at++) {
        memcpy(buffer + at, text, sizeof text);
        for (size_t from = at; from < at + sizeof text - 1; from++) {
            const char* start = buffer + from;
            EXPECT_EQ(FindChar(start, '<'), strchr(start, '<')) << at << " " << from;
            EXPECT_EQ(FindChar(start, 'q'), strchr(start, 'q'));
            EXPECT_EQ(FindChar(start, 'Z'), nullptr);
            EXPECT_EQ(FindExact(start, "</step>"), strstr(start, "</step>"));
            EXPECT_EQ(FindExact(start, "<x"), strstr(start, "<x"));
            EXPECT_EQ(FindExact(start, "<xy"), nullptr);
        }
        memset(buffer, '<', sizeof buffer);
    }
    EXPECT_EQ(FindChar("", '<'), nullptr);
    EXPECT_EQ(FindChar("abc", 0), nullptr);
}
