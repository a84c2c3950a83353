// The file helpers' counting and deleting rules, and the file actions where
// a scenario cannot see the difference.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "run/runstate.h"
#include "system/fileactions.h"
#include "system/fileassoc.h"
#include "system/filelines.h"
#include "system/folders.h"
#include "test_support.h"

namespace {

TEST(Files, LineCountsKeepTheirOldRules) {
    std::string folder = TempFolder();
    struct {
        const char* text;
        long count;
    } cases[] = {{"", 0}, {"a", 1}, {"a\n\nb", 2}, {"a\r\nb\r\n", 3}, {"a\rb", 2}, {"a\n\n\nb", 3}};
    for (const auto& c : cases) {
        WriteWholeFile(folder + "\\count.txt", c.text);
        EXPECT_EQ(CountFileLines((folder + "\\count.txt").c_str()), c.count) << c.text;
    }
    EXPECT_EQ(CountFileLines((folder + "\\missing.txt").c_str()), 0);
}

TEST(Files, ReadFileLineFindsBlankLinesAndEachEnding) {
    std::string folder = TempFolder(), file = folder + "\\lines.txt";
    char line[64];
    WriteWholeFile(file, "one\r\n\r\nthree");
    EXPECT_EQ(ReadFileLine(file.c_str(), 2, line, sizeof line), 1);  // blank: length 0, plus 1
    EXPECT_STREQ(line, "");
    EXPECT_EQ(ReadFileLine(file.c_str(), 3, line, sizeof line), 6);
    EXPECT_STREQ(line, "three");
    EXPECT_EQ(ReadFileLine(file.c_str(), 4, line, sizeof line), 0);
    EXPECT_EQ(ReadFileLine(file.c_str(), 0, line, sizeof line), 0);
    WriteWholeFile(file, "one\ntwo\n");
    EXPECT_EQ(ReadFileLine(file.c_str(), 2, line, sizeof line), 4);
    EXPECT_STREQ(line, "two");
}

TEST(Files, PatternsDeleteOnlyFilesAndFoldersGoWithTheirContents) {
    std::string folder = TempFolder();
    CreateFolderPath((folder + "\\only\\sub").c_str());
    EXPECT_EQ(DeleteFilesByPattern((folder + "\\only\\*").c_str()), 0);  // only a folder matches
    WriteWholeFile(folder + "\\only\\a.log", "a");
    WriteWholeFile(folder + "\\only\\b.log", "b");
    WriteWholeFile(folder + "\\only\\c.txt", "c");
    EXPECT_EQ(DeleteFilesByPattern((folder + "\\only\\*.log").c_str()), 2);
    EXPECT_EQ(GetFileAttributesA((folder + "\\only\\c.txt").c_str()) != INVALID_FILE_ATTRIBUTES, true);
    EXPECT_EQ(RemoveFolder((folder + "\\only\\").c_str(), 1), 1);  // not empty: the shell removes it all
    EXPECT_EQ(GetFileAttributesA((folder + "\\only").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(Files, SizesChangeAndZerosFillOnlyWhenAsked) {
    std::string file = TempFolder() + "\\size.bin";
    WriteWholeFile(file, "abcdef");
    EXPECT_EQ(SetFileLength(file.c_str(), 3, 0), 1);
    EXPECT_EQ(ReadWholeFile(file), "abc");
    EXPECT_EQ(SetFileLength(file.c_str(), 6, 1), 1);
    EXPECT_EQ(ReadWholeFile(file), std::string("abc\0\0\0", 6));
    EXPECT_EQ(SetFileLength((file + ".none").c_str(), 6, 0), 0);
}

TEST(Files, AReadCountBeyondItsBlockStopsAtTheBlock) {
    ResetTestState();
    std::string file = TempFolder() + "\\data.txt";
    WriteWholeFile(file, std::string(1000, 'z'));
    // "-1" is a huge count: it is read only as far as the block goes.
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Read File</action><value1>" + file +
                           "</value1><value3>-1</value3><output value=\"got\">Variable</output></step></ZantoRunner>"),
              1);
    EXPECT_EQ(FileAction(0, 0), 1);
    char got[400] = "";
    ReadSetting(nullptr, got, sizeof got, nullptr, ZR_ROOT "UserVariables\\got");
    EXPECT_EQ(std::string(got), std::string(254, 'z'));
}

TEST(Files, AReadThatStartsPastTheEndReadsNothingAndPasses) {
    ResetTestState();
    std::string file = TempFolder() + "\\short.txt";
    WriteWholeFile(file, "0123456789");
    for (const char* offset : {"26", "1000000", "2147483647"}) {
        ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Read File</action><value1>" + file + "</value1><value2>" +
                               offset + "</value2><output value=\"got\">Variable</output></step></ZantoRunner>"),
                  1);
        WriteSetting(nullptr, "before", 0, nullptr, ZR_ROOT "UserVariables\\got");
        EXPECT_EQ(FileAction(0, 0), 1) << offset;
        char got[64] = "x";
        ReadSetting(nullptr, got, sizeof got, nullptr, ZR_ROOT "UserVariables\\got");
        EXPECT_STREQ(got, "") << offset;
    }
}

TEST(Files, APathTooLongIsRefusedNotCut) {
    ResetTestState();
    std::string folder = TempFolder();
    std::string path = folder + "\\" + std::string(268 - folder.size() - 1, 'p');
    ASSERT_EQ(path.size(), 268u);
    WriteSetting(nullptr, path.c_str(), 0, nullptr, ZR_ROOT "UserVariables\\long");
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Write/Create File</action><text>data</text>"
                           "<value1>%long</value1></step></ZantoRunner>"),
              1);
    EXPECT_EQ(FileAction(0, 0), 0);
    EXPECT_EQ(std::string(StepFailureText), "The path is longer than 259 characters: '" + path + "'");
    EXPECT_EQ(GetFileAttributesA(path.substr(0, 259).c_str()), INVALID_FILE_ATTRIBUTES);  // nothing at the cut
}

TEST(Files, AnAssociationRegistersTheTypeAndItsOpenVerb) {
    RegisterFileType("zrtest", "C:\\Tools\\viewer.exe", "ZrTest", 0, VERB_OPEN | VERB_RUN);
    char text[300] = "";
    ReadSetting(HKEY_CLASSES_ROOT, text, 300, nullptr, ".zrtest\\");
    EXPECT_STREQ(text, "ZrTest File");
    ReadSetting(HKEY_CLASSES_ROOT, text, 300, nullptr, "ZrTest File\\shell\\Open\\command\\");
    EXPECT_STREQ(text, "\"C:\\Tools\\viewer.exe\" \"%1\"");
    ReadSetting(HKEY_CLASSES_ROOT, text, 300, nullptr, "ZrTest File\\shell\\Run\\command\\");
    EXPECT_STREQ(text, "\"C:\\Tools\\viewer.exe\" /r \"%1\"");
    ReadSetting(HKEY_CLASSES_ROOT, text, 300, nullptr, "ZrTest File\\DefaultIcon\\");
    EXPECT_STREQ(text, "\"C:\\Tools\\viewer.exe\",0");
    DeleteSetting(HKEY_CLASSES_ROOT, ".zrtest");
    DeleteSetting(HKEY_CLASSES_ROOT, "ZrTest File");
}

}  // namespace
