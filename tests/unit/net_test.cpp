// Fetching from the harness's web server on loopback, and the text that a
// saved page keeps.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

#include "net/fetch.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

std::string Web(const char* path) {
    const char* port = getenv("ZR_WEB_PORT");
    return std::string("http://127.0.0.1:") + (port ? port : "0") + path;
}

TEST(Fetch, ABufferKeepsWhatFitsWhileTheCountIsWhole) {
    ResetTestState();
    char buffer[6] = "xxxxx";
    EXPECT_EQ(FetchUrl(Web("/data.txt").c_str(), nullptr, buffer, sizeof buffer, nullptr), 11);
    EXPECT_STREQ(buffer, "plain");
    std::string file = TempFolder() + "\\got.txt";
    EXPECT_EQ(FetchUrl(Web("/data.txt").c_str(), file.c_str(), nullptr, 0, nullptr), 11);
    EXPECT_EQ(FetchUrl(Web("/data.txt").c_str(), file.c_str(), nullptr, 0, nullptr), 11);
    EXPECT_EQ(ReadWholeFile(file), "plain bytesplain bytes");  // a file grows, chunk by chunk
    EXPECT_EQ(FetchUrl("", file.c_str(), nullptr, 0, nullptr), 0);
    EXPECT_STREQ(StepFailureText, "Missing Parameters");
    EXPECT_EQ(FetchUrl("http://127.0.0.1:1/closed", nullptr, buffer, sizeof buffer, nullptr), 0);
    EXPECT_EQ(std::string(StepFailureText).rfind("InternetOpenUrl ", 0), 0u) << StepFailureText;
}

TEST(Fetch, PageTextDropsTagsCommentsAndFoldsBlanks) {
    struct {
        const char* page;
        const char* text;
    } cases[] = {
        {"no body <b>bold</b>   text", "no body bold text"},
        {"<head>x</head><body>a<BR>b<br/>c</body>", "a\r\nbc"},
        {"<body>1<!-- hidden -->2</body>", "12"},
        {"<body>line\r\nbreaks\ngo</body>", "linebreaksgo"},
        {"<body><li>x&nbsp;&amp;&copy;</body>", "\r\n* x &(c)"},
    };
    for (const auto& c : cases) {
        size_t length = 0;
        std::string text = PageText(c.page, &length);
        EXPECT_EQ(text, c.text) << c.page;
        EXPECT_EQ(length, text.size());
    }
    size_t length = 0;
    EXPECT_EQ(PageText("<body>a &lt; b</body>", &length), "a < b");
    EXPECT_EQ(length, 8u);  // counted before the last replacement: three bytes more
}

}  // namespace
