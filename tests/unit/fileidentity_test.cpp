// Two spellings of one path are one object; a folder and what lies below it
// are told apart from a folder that only starts with the same letters.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "base/fileidentity.h"
#include "test_support.h"

namespace {

TEST(FileIdentity, EverySpellingOfOneFileIsTheSameObject) {
    std::string folder = TempFolder();
    CreateDirectoryA((folder + "\\sub").c_str(), nullptr);
    WriteWholeFile(folder + "\\a.txt", "keep");
    WriteWholeFile(folder + "\\b.txt", "other");
    std::string a = folder + "\\a.txt";
    char shortName[MAX_PATH] = "";
    GetShortPathNameA(a.c_str(), shortName, sizeof shortName);
    const std::string same[] = {a,
                                folder + "\\A.TXT",
                                folder + "\\.\\a.txt",
                                folder + "\\sub\\..\\a.txt",
                                folder + "\\\\a.txt",
                                folder + "/a.txt",
                                folder + "\\a.txt.",
                                folder + "\\a.txt ",
                                shortName};
    for (const std::string& s : same) EXPECT_TRUE(SameDiskObject(a.c_str(), s.c_str())) << s;
    EXPECT_FALSE(SameDiskObject(a.c_str(), (folder + "\\b.txt").c_str()));
    EXPECT_FALSE(SameDiskObject(a.c_str(), (folder + "\\missing.txt").c_str()));
    EXPECT_FALSE(SameDiskObject((folder + "\\missing.txt").c_str(), (folder + "\\missing.txt").c_str()));
    EXPECT_TRUE(SameDiskObject(folder.c_str(), (folder + "\\sub\\..").c_str()));
}

TEST(FileIdentity, AFolderHoldsItselfAndWhatIsBelowItOnly) {
    std::string folder = TempFolder(), sub = folder + "\\sub";
    CreateDirectoryA(sub.c_str(), nullptr);
    CreateDirectoryA((folder + "\\subway").c_str(), nullptr);
    struct {
        std::string inner;
        bool within;
    } cases[] = {
        {sub, true},
        {folder + "\\SUB\\.", true},
        {sub + "\\keep\\deeper", true},  // not made yet
        {folder + "\\sub/keep", true},
        {folder + "\\subway", false},  // same first letters, another folder
        {folder + "\\subway\\x", false},
        {folder, false},
        {folder + "\\other", false},
    };
    for (const auto& c : cases) EXPECT_EQ(PathWithinFolder(c.inner.c_str(), sub.c_str()), c.within) << c.inner;
    EXPECT_FALSE(PathWithinFolder(sub.c_str(), (folder + "\\missing").c_str()));
}

TEST(FileIdentity, TheStoredNameIsTheLongNameInItsCase) {
    std::string folder = TempFolder();
    CreateDirectoryA((folder + "\\Sub Folder").c_str(), nullptr);
    WriteWholeFile(folder + "\\Mixed Case.text", "x");
    char shortName[MAX_PATH] = "";
    GetShortPathNameA((folder + "\\Mixed Case.text").c_str(), shortName, sizeof shortName);
    EXPECT_EQ(StoredName((folder + "\\MIXED CASE.TEXT").c_str()), "Mixed Case.text");
    EXPECT_EQ(StoredName(shortName), "Mixed Case.text");
    EXPECT_EQ(StoredName((folder + "\\sub folder\\.").c_str()), "Sub Folder");
    EXPECT_EQ(StoredName((folder + "\\missing.txt").c_str()), "");
    EXPECT_EQ(StoredName((folder + "\\*.text").c_str()), "");  // a pattern names no one thing
    EXPECT_EQ(StoredName("C:\\"), "");
}

TEST(FileIdentity, ResolvedPathTakesTheSystemsReading) {
    EXPECT_EQ(ResolvedPath("C:\\data\\.\\sub\\..\\a.txt"), "C:\\data\\a.txt");
    EXPECT_EQ(ResolvedPath("C:/data//a.txt"), "C:\\data\\a.txt");
    EXPECT_EQ(ResolvedPath("C:\\data\\"), "C:\\data");
    EXPECT_EQ(ResolvedPath("C:\\"), "C:\\");
    EXPECT_EQ(ResolvedPath(""), "");
}

}  // namespace
