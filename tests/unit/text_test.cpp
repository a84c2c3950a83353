// The bounded writes: every result terminated and cut at the buffer's end.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/text.h"
#include "base/utf8.h"

TEST(BoundedText, WritesStopAtTheBuffersEnd) {
    struct {
        char buffer[8];
        char canary[4];
    } g;
    memset(g.canary, 'C', sizeof g.canary);
    EXPECT_EQ(FormatInto(g.buffer, "%s-%d", "abcdef", 12345), 7);
    EXPECT_STREQ(g.buffer, "abcdef-");
    CopyInto(g.buffer, "0123456789");
    EXPECT_STREQ(g.buffer, "0123456");
    CopyInto(g.buffer, "ab");
    AppendInto(g.buffer, "cdefghij");
    EXPECT_STREQ(g.buffer, "abcdefg");
    AppendInto(g.buffer, "x");  // full: nothing more
    EXPECT_STREQ(g.buffer, "abcdefg");
    EXPECT_EQ(std::string(g.canary, 4), "CCCC");
    char one[1] = {'z'};
    CopyIntoN(one, 1, "abc");
    EXPECT_EQ(one[0], 0);
    // wsprintf's own reach: 1024 bytes with the terminator, whatever the buffer.
    char big[2000];
    FormatInto(big, "%s", std::string(1500, 'w').c_str());
    EXPECT_EQ(strlen(big), 1023u);
}

// A cut keeps the buffer's size in bytes but never splits a character: one
// that does not fit whole is left out whole. In a single-byte code page
// every byte is a character, and the cut is where it always was.
TEST(BoundedText, CutsEndOnACharacterBoundary) {
    const char zurich[] = "Z\xC3\xBCrich \xE6\x9D\xB1\xF0\x9F\x98\x80";  // Z ü r i c h _ 東 😀
    const struct {
        size_t size;
        const char* kept;
    } cases[] = {
        {1, ""},
        {2, "Z"},
        {3, "Z"},  // the two bytes of "ü" need a size of 4
        {4, "Z\xC3\xBC"},
        {9, "Z\xC3\xBCrich "},
        {10, "Z\xC3\xBCrich "},
        {11, "Z\xC3\xBCrich "},
        {12, "Z\xC3\xBCrich \xE6\x9D\xB1"},
        {15, "Z\xC3\xBCrich \xE6\x9D\xB1"},
        {16, "Z\xC3\xBCrich \xE6\x9D\xB1\xF0\x9F\x98\x80"},
    };
    for (const auto& c : cases) {
        char buffer[32];
        memset(buffer, 'C', sizeof buffer);
        CopyIntoN(buffer, c.size, zurich);
        EXPECT_STREQ(buffer, c.kept) << "size " << c.size;
        memset(buffer, 'C', sizeof buffer);
        FormatIntoN(buffer, c.size, "%s", zurich);
        EXPECT_STREQ(buffer, c.kept) << "format, size " << c.size;
        buffer[0] = 0;
        AppendIntoN(buffer, c.size, zurich);
        EXPECT_STREQ(buffer, c.kept) << "append, size " << c.size;
        // A message's cut of at most size - 1 bytes keeps the same.
        EXPECT_EQ(TextCut(zurich, c.size - 1), c.kept) << "cut, size " << c.size;
    }
    EXPECT_EQ(TextCut(zurich, 100), zurich);  // only what there is
    // wsprintf's own cut at 1023 bytes drops a character it would split.
    std::string many = "a";
    for (int i = 0; i < 400; i++) many += "\xE6\x9D\xB1";  // 1 + 1200 bytes
    char big[2000];
    FormatInto(big, "%s", many.c_str());
    EXPECT_EQ(strlen(big), 1021u);  // "a" and 340 whole characters
    // Bytes that are no UTF-8 are single characters and cut as before.
    char four[4];
    CopyInto(four, "\x80\x80\x80\x80\x80");
    EXPECT_STREQ(four, "\x80\x80\x80");
    // The legacy page: every byte a character.
    SetProgramCodePage(1252);
    char three[3];
    CopyInto(three, "Z\xC3\xBC");
    EXPECT_STREQ(three, "Z\xC3");
    SetProgramCodePage(0);
}

TEST(Characters, CountAndOffsetWalkWholeCharacters) {
    const char text[] = "Z\xC3\xBCrich\xF0\x9F\x98\x80";  // Zürich😀
    const size_t length = strlen(text);
    EXPECT_EQ(CharCount(text, length), 7u);
    EXPECT_EQ(CharOffset(text, length, 1), 1u);
    EXPECT_EQ(CharOffset(text, length, 2), 3u);
    EXPECT_EQ(CharOffset(text, length, 6), 7u);
    EXPECT_EQ(CharOffset(text, length, 7), length);
    EXPECT_EQ(CharOffset(text, length, 99), length);
    // A stray byte counts as one character.
    EXPECT_EQ(CharCount("a\x80" "b", 3), 3u);
    EXPECT_TRUE(IsUtf8(text, length));
    EXPECT_FALSE(IsUtf8("Gr\xFC\xDF" "e", 5));
    EXPECT_FALSE(IsUtf8("\xC0\xAF", 2));          // overlong
    EXPECT_FALSE(IsUtf8("\xED\xA0\x80", 3));      // a surrogate
    EXPECT_FALSE(IsUtf8("\xF4\x90\x80\x80", 4));  // above U+10FFFF
    EXPECT_FALSE(IsUtf8("\xE6\x9D", 2));          // cut short
    SetProgramCodePage(1252);
    EXPECT_EQ(CharCount(text, length), length);
    EXPECT_EQ(CharOffset(text, length, 2), 2u);
    SetProgramCodePage(0);
}
