// The bounded writes: every result terminated and cut at the buffer's end.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/text.h"

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
