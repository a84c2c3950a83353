// The file helpers' counting and deleting rules, and the file actions where
// a scenario cannot see the difference.
#include <gtest/gtest.h>

#include <string>

#include "base/fileidentity.h"
#include "base/files.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "base/text.h"
#include "script/step.h"
#include "system/fileactions.h"
#include "system/fileassoc.h"
#include "system/filelines.h"
#include "system/filemoves.h"
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

TEST(Files, PatternsMatchLongNamesOnly) {
    struct {
        const char* name;
        const char* pattern;
        bool matches;
    } cases[] = {
        {"b.doc", "*.doc", true},       {"B.DOC", "*.doc", true},      {"a.docx", "*.doc", false},
        {"a.doc.bak", "*.doc", false},  {"a.docx", "*.doc*", true},    {"readme", "*.*", true},
        {"a.b.c", "*.c", true},         {"abc", "a?c", true},          {"ac", "a?c", false},
        {"abcd", "a?c", false},         {"report.txt", "re*.txt", true}, {"x.txt", "re*.txt", false},
        {"a", "a.*", true},             {"ab", "a.*", false},          {"aXbXc", "a*b*c", true},
        {"aXbXd", "a*b*c", false},      {"anything", "*", true},       {"a.txt", "A.TXT", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(NameMatchesPattern(c.name, c.pattern), c.matches) << c.name << " against " << c.pattern;
}

// The system's search also matches short names: "*.doc" finds "a.docx" by
// its 8.3 name. Only the long name counts; a plain name by its short form
// still names its one file.
TEST(Files, APatternDeletesWhatItsLongNameMatchesAndAShortNameItsOneFile) {
    std::string folder = TempFolder();
    for (const char* name : {"a.docx", "b.doc", "C.DOC", "keep.doc.bak", "long name.docx"})
        WriteWholeFile(folder + "\\" + name, name);
    EXPECT_EQ(DeleteFilesByPattern((folder + "\\*.doc").c_str()), 2);
    for (const char* kept : {"a.docx", "keep.doc.bak", "long name.docx"})
        EXPECT_EQ(ReadWholeFile(folder + "\\" + kept), kept);
    char shortName[MAX_PATH] = "";
    ASSERT_TRUE(GetShortPathNameA((folder + "\\long name.docx").c_str(), shortName, sizeof shortName));
    EXPECT_EQ(DeleteFilesByPattern(shortName), 1);
    EXPECT_EQ(GetFileAttributesA((folder + "\\long name.docx").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(ReadWholeFile(folder + "\\a.docx"), "a.docx");
}

// A move within a volume renames: the file that arrives is the one that
// left (the same file index), not a copy of it.
TEST(Files, AMoveWithinAVolumeIsARename) {
    std::string folder = TempFolder(), from = folder + "\\from.txt", to = folder + "\\sub\\to.txt";
    WriteWholeFile(from, "moved whole");
    auto indexOf = [](const std::string& path) {
        HANDLE file = CreateFileA(path.c_str(), 0, 7, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        BY_HANDLE_FILE_INFORMATION info = {};
        GetFileInformationByHandle(file, &info);
        CloseHandle(file);
        return ((unsigned long long)info.nFileIndexHigh << 32) | info.nFileIndexLow;
    };
    unsigned long long before = indexOf(from);
    ASSERT_NE(before, 0u);
    EXPECT_EQ(CopyOrMoveFileChecked(from.c_str(), to.c_str(), true), 1);
    EXPECT_EQ(indexOf(to), before);
    EXPECT_EQ(ReadWholeFile(to), "moved whole");
    EXPECT_EQ(GetFileAttributesA(from.c_str()), INVALID_FILE_ATTRIBUTES);
    CreateFolderPath((folder + "\\tree\\inner").c_str());
    WriteWholeFile(folder + "\\tree\\inner\\x.txt", "x");
    before = indexOf(folder + "\\tree\\inner\\x.txt");
    EXPECT_EQ(CopyOrMoveFolderChecked((folder + "\\tree").c_str(), (folder + "\\moved\\tree").c_str(), true), 1);
    EXPECT_EQ(indexOf(folder + "\\moved\\tree\\inner\\x.txt"), before);
}

TEST(Files, AFolderCopyIsWholeOnlyWithEveryFileAtItsSize) {
    std::string folder = TempFolder(), from = folder + "\\from", to = folder + "\\to";
    CreateFolderPath((from + "\\deep").c_str());
    CreateFolderPath((to + "\\deep").c_str());
    WriteWholeFile(from + "\\a.txt", "abc");
    WriteWholeFile(from + "\\deep\\b.txt", "bcd");
    WriteWholeFile(to + "\\a.txt", "abc");
    char missing[MAX_PATH] = "";
    EXPECT_FALSE(FolderCopyIsWhole(from.c_str(), to.c_str(), missing, sizeof missing));
    EXPECT_EQ(std::string(missing), to + "\\deep\\b.txt");
    WriteWholeFile(to + "\\deep\\b.txt", "bc");  // cut short
    EXPECT_FALSE(FolderCopyIsWhole(from.c_str(), to.c_str(), nullptr, 0));
    WriteWholeFile(to + "\\deep\\b.txt", "xyz");
    WriteWholeFile(to + "\\extra.txt", "more in the copy is no loss");
    EXPECT_TRUE(FolderCopyIsWhole(from.c_str(), to.c_str(), nullptr, 0));
}

// A name that is written or deleted is looked for beside the script, then
// in the current folder; found in neither, it goes beside the script.
TEST(Files, AWrittenNameLandsBesideTheScriptOrWhereItIs) {
    std::string scriptFolder = TempFolder(), current = TempFolder();
    char before[MAX_PATH];
    GetCurrentDirectoryA(sizeof before, before);
    SetCurrentDirectoryA(current.c_str());
    struct {
        bool inScriptFolder, inCurrent;
        std::string written;
    } cases[] = {
        {false, false, scriptFolder},
        {true, false, scriptFolder},
        {false, true, current},
        {true, true, scriptFolder},
    };
    for (const auto& c : cases) {
        ResetTestState();
        DeleteFileA((scriptFolder + "\\name.txt").c_str());
        DeleteFileA((current + "\\name.txt").c_str());
        if (c.inScriptFolder) WriteWholeFile(scriptFolder + "\\name.txt", "");
        if (c.inCurrent) WriteWholeFile(current + "\\name.txt", "");
        ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Write/Create File</action><value1>name.txt</value1>"
                               "<text>written</text></step></ZantoRunner>"),
                  1);
        CopyInto(ScriptStore.tab[0].path, (scriptFolder + "\\job.zxm").c_str());
        EXPECT_EQ(FileAction(0, 0), 1);
        EXPECT_EQ(ReadWholeFile(c.written + "\\name.txt"), "written") << c.inScriptFolder << c.inCurrent;
    }
    SetCurrentDirectoryA(before);
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
