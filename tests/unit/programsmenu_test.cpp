// The Programs menu lists the desktop, shortcuts resolved, and the common
// programs.
#include <gtest/gtest.h>

#include <string>

#include "editor/programsmenu.h"
#include "base/settings.h"
#include "test_support.h"

namespace {

const char kDesktop[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders\\Desktop";

TEST(ProgramsMenu, ListsTheDesktopThenTheCommonPrograms) {
    char saved[MAX_PATH];
    ReadSetting(nullptr, saved, sizeof saved, nullptr, kDesktop);
    const std::string folder = TempFolder();
    WriteWholeFile(folder + "\\desktop.ini", "[.ShellClassInfo]\r\n");
    WriteWholeFile(folder + "\\tool.exe", "MZ");
    WriteWholeFile(folder + "\\.hidden", "a dot-file");
    WriteWholeFile(folder + "\\secret.exe", "MZ");
    SetFileAttributesA((folder + "\\secret.exe").c_str(), FILE_ATTRIBUTE_HIDDEN);
    WriteSetting(nullptr, folder.c_str(), 0, nullptr, kDesktop);
    const std::vector<ProgramChoice> list = ListPrograms();
    WriteSetting(nullptr, saved, 0, nullptr, kDesktop);

    ASSERT_GE(list.size(), 5u);
    EXPECT_EQ(list[0].caption, "tool.exe");
    EXPECT_EQ(list[0].command, folder + "\\tool.exe");
    for (const ProgramChoice& p : list) {
        EXPECT_NE(p.caption, "desktop.ini");
        EXPECT_NE(p.caption, ".hidden");
        EXPECT_NE(p.caption, "secret.exe");
        // Only programs that are there: Wine has no Excel or Word.
        EXPECT_NE(p.caption, "Microsoft Excel");
        EXPECT_NE(p.caption, "Microsoft Word");
    }
    EXPECT_EQ(list[1].caption, "COMMON PROGRAMS");
    EXPECT_EQ(list[1].command, "");
    const ProgramChoice& dos = list.back();
    EXPECT_EQ(dos.caption, "MS-DOS Command");
    EXPECT_NE(dos.command.find("CMD.EXE /C dir c:\\*.* /s"), std::string::npos) << dos.command;
    bool notepad = false;
    for (const ProgramChoice& p : list) notepad = notepad || p.caption == "Notepad";
    EXPECT_TRUE(notepad);
}

}  // namespace
