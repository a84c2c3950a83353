// Fetching from the harness's web server on loopback, the text that a saved
// page keeps, and the files that downloads and captures replace: whole or
// not at all.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

#include "base/files.h"
#include "desktop/screencapture.h"
#include "net/fetch.h"
#include "net/internet.h"
#include "net/ping.h"
#include "run/runstate.h"
#include "system/folders.h"
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

TEST(Fetch, AddressesBeyondAsciiGoAsPercentEncodedUtf8) {
    struct Case {
        const char* given;
        const char* sent;
    } cases[] = {
        {"http://127.0.0.1:8080/Z\xC3\xBCrich?q=\xE6\x9D\xB1&x=1#\xF0\x9F\x98\x80",
         "http://127.0.0.1:8080/Z%C3%BCrich?q=%E6%9D%B1&x=1#%F0%9F%98%80"},
        {"HTTPS://example.test?city=Z\xC3\xBCrich", "HTTPS://example.test?city=Z%C3%BCrich"},
        {"http://example.test/a%20b?c=d e", "http://example.test/a%20b?c=d e"},  // ASCII: as given
        {"ftp://127.0.0.1/Z\xC3\xBCrich.txt", "ftp://127.0.0.1/Z\xC3\xBCrich.txt"},  // not the web
        {"http://example.test", "http://example.test"},
        // A host beyond ASCII in its IDNA form, with a user, a port, a path.
        {"http://b\xC3\xBC" "cher.test", "http://xn--bcher-kva.test"},
        {"https://me:pw@b\xC3\xBC" "cher.test:8443/Z\xC3\xBCrich", "https://me:pw@xn--bcher-kva.test:8443/Z%C3%BCrich"},
        {"http://\xE6\x9D\xB1\xE4\xBA\xAC.test?a=b", "http://xn--1lqs71d.test?a=b"},
        {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(WireUrl(c.given), c.sent) << c.given;
}

TEST(Fetch, AnErrorStatusOrAShortBodyIsNoDownload) {
    ResetTestState();
    struct {
        const char* path;
        const char* words;
    } cases[] = {
        {"/status/500", "The server answered 500 "},
        {"/status/404", "The server answered 404 "},
        {"/drop/4000", "The connection closed after 2000 of the 4000 bytes"},
    };
    for (const auto& c : cases) {
        char buffer[64] = "";
        StepFailureText[0] = 0;
        EXPECT_EQ(FetchUrl(Web(c.path).c_str(), nullptr, buffer, sizeof buffer, nullptr), 0) << c.path;
        EXPECT_EQ(std::string(StepFailureText).rfind(c.words, 0), 0u) << c.path << ": " << StepFailureText;
    }
}

TEST(Fetch, AStopEndsATransferAtOnce) {
    ResetTestState();
    char buffer[64] = "";
    StopRequested = 1;
    const DWORD start = GetTickCount();
    EXPECT_EQ(FetchUrl(Web("/stall/10").c_str(), nullptr, buffer, sizeof buffer, nullptr), 0);
    StopRequested = 0;
    EXPECT_LT(GetTickCount() - start, 5000u);
    EXPECT_STREQ(StepFailureText, "Transfer stopped");
}

TEST(Ping, AStopEndsTheWaitForTheReply) {
    ResetTestState();
    StopRequested = 1;
    EXPECT_EQ(PingHost("127.0.0.1", 0), 0);
    StopRequested = 0;
    EXPECT_STREQ(StepFailureText, "Ping stopped");
}

// A disk of 1 MiB that the harness mounts (ZR_SMALL_DISK), filled up to 16
// KiB: a new file of any size fails there half-way.
class SmallDisk : public testing::Test {
protected:
    void SetUp() override {
        ResetTestState();
        char disk[MAX_PATH] = "";
        ASSERT_TRUE(GetEnvironmentVariableA("ZR_SMALL_DISK", disk, sizeof disk)) << "the harness mounts a small disk";
        ULARGE_INTEGER diskSize = {};
        GetDiskFreeSpaceExA((std::string(disk) + "\\").c_str(), nullptr, &diskSize, nullptr);
        if (diskSize.QuadPart == 0 || diskSize.QuadPart > (16ull << 20))
            GTEST_SKIP() << "no small disk at " << disk << " (the harness could not mount one)";
        dir = std::string(disk) + "\\net";
        RemoveFolder(dir.c_str(), 1);
        ASSERT_TRUE(CreateFolderPath(dir.c_str()));
        WriteWholeFile(dir + "\\keep.bin", "old content");
        HANDLE file = CreateFileA((dir + "\\filler.bin").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        std::string block(65536, 'f');
        DWORD put = 0, total = 0;
        while (WriteFile(file, block.data(), (DWORD)block.size(), &put, nullptr) && put == block.size()) total += put;
        total += put;
        SetFilePointer(file, (LONG)(total > 16384 ? total - 16384 : 0), nullptr, FILE_BEGIN);
        SetEndOfFile(file);
        CloseHandle(file);
    }
    void TearDown() override { RemoveFolder(dir.c_str(), 1); }
    // keep.bin and the filler, and no temporary beside them.
    int FilesInFolder() {
        WIN32_FIND_DATAA found;
        HANDLE find = FindFirstFileA((dir + "\\*").c_str(), &found);
        int count = 0;
        if (find == INVALID_HANDLE_VALUE) return 0;
        do
            if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) count++;
        while (FindNextFileA(find, &found));
        FindClose(find);
        return count;
    }
    std::string dir;
};

TEST_F(SmallDisk, ACaptureThatDoesNotFitKeepsTheOldFile) {
    EXPECT_EQ(CaptureScreenToFile(nullptr, nullptr, (dir + "\\keep.bin").c_str(), 0), 0);
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.bin"), "old content");
    EXPECT_EQ(FilesInFolder(), 2);
}

TEST_F(SmallDisk, ADownloadThatDoesNotFitKeepsTheOldFile) {
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Download</action><text>" + Web("/big/300000") +
                           "</text><output value=\"" + dir + "\\keep.bin\">File</output></step></ZantoRunner>"),
              1);
    EXPECT_EQ(InternetAction(0, 0), 0);
    EXPECT_NE(std::string(StepFailureText), "");
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.bin"), "old content");
    EXPECT_EQ(FilesInFolder(), 2);
}

}  // namespace
