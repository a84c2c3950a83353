// Writes on a disk that is full: each fails as a whole, says so, and leaves
// the file that was there as it was. The harness mounts a small disk of its
// own (ZR_SMALL_DISK); each test fills it to a few KiB first.
#include <gtest/gtest.h>

#include <string>

#include "base/files.h"
#include "base/settings.h"
#include "run/runstate.h"
#include "run/variables.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "system/fileactions.h"
#include "system/folders.h"
#include "test_support.h"

namespace {

class FullDisk : public testing::Test {
protected:
    void SetUp() override {
        char disk[MAX_PATH] = "";
        ASSERT_TRUE(GetEnvironmentVariableA("ZR_SMALL_DISK", disk, sizeof disk)) << "the harness mounts a small disk";
        // A machine that would not mount it leaves a plain folder: there is
        // no small disk to fill then, and the tests say so instead of passing.
        ULARGE_INTEGER diskSize = {};
        GetDiskFreeSpaceExA((std::string(disk) + "\\").c_str(), nullptr, &diskSize, nullptr);
        if (diskSize.QuadPart == 0 || diskSize.QuadPart > (16ull << 20))
            GTEST_SKIP() << "no small disk at " << disk << " (the harness could not mount one)";
        dir = std::string(disk) + "\\case";
        RemoveFolder(dir.c_str(), 1);
        ASSERT_TRUE(CreateFolderPath(dir.c_str()));
        WriteWholeFile(dir + "\\keep.txt", "old content");
        // Fill the disk, then give back 16 KiB: room for a small file only.
        std::string filler = dir + "\\filler.bin";
        HANDLE file = CreateFileA(filler.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        std::string block(65536, 'f');
        DWORD put = 0, total = 0;
        while (WriteFile(file, block.data(), (DWORD)block.size(), &put, nullptr) && put == block.size()) total += put;
        total += put;
        SetFilePointer(file, (LONG)(total > 16384 ? total - 16384 : 0), nullptr, FILE_BEGIN);
        SetEndOfFile(file);
        CloseHandle(file);
        big = std::string(300000, 'x');
    }
    void TearDown() override { RemoveFolder(dir.c_str(), 1); }
    // No temporary file of a failed save is left beside the target.
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
    std::string dir, big;
};

}  // namespace

TEST_F(FullDisk, AReplacingWriteFailsAndKeepsTheOldFile) {
    EXPECT_FALSE(WriteFileReplacing((dir + "\\keep.txt").c_str(), big.data(), big.size(), false));
    EXPECT_EQ(GetLastError(), (DWORD)ERROR_DISK_FULL);
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.txt"), "old content");
    EXPECT_EQ(FilesInFolder(), 2);  // keep.txt and the filler
    EXPECT_TRUE(WriteFileReplacing((dir + "\\keep.txt").c_str(), "new", 3, false));
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.txt"), "new");
}

TEST_F(FullDisk, WriteCreateFileFailsWithTheSystemsWords) {
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Write/Create File</action><text>" + big + "</text><value1>" +
                           dir + "\\new.txt</value1></step></ZantoRunner>"),
              1);
    EXPECT_EQ(FileAction(0, 0), 0);
    EXPECT_NE(std::string(StepFailureText), "");
}

TEST_F(FullDisk, AnOutputToAFileKeepsTheOldFileWhenItCannotBeWritten) {
    std::string log = LogIntoNewFolder("log.txt");
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Create/Set Variable</action><output value=\"" + dir +
                           "\\keep.txt\">File</output></step></ZantoRunner>"),
              1);
    SaveOutput(0, 0, big.data(), (long)big.size(), nullptr);
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.txt"), "old content");
    EXPECT_EQ(FilesInFolder(), 2);
    EXPECT_NE(ReadWholeFile(log + "\\log.txt").find("\tERROR saving 300000 byte(s) to file"), std::string::npos);
}

TEST_F(FullDisk, ASavedScriptIsReplacedWholeOrNotAtAll) {
    std::string path = dir + "\\job.zxm";
    WriteWholeFile(path, "the old script");
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Comment</action><comment>" + big +
                           "</comment></step></ZantoRunner>"),
              1);
    lstrcpyA(CurrentTab().path, path.c_str());
    char error[512] = "";
    EXPECT_EQ(SaveScript(0, error), 0);
    EXPECT_NE(error[0], 0);
    EXPECT_EQ(ReadWholeFile(path), "the old script");
    EXPECT_EQ(FilesInFolder(), 3);  // keep.txt, the filler, the script
}

TEST_F(FullDisk, ACopyThatDoesNotFitLeavesNoEmptyTarget) {
    std::string source = TempFolder() + "\\big.txt";
    WriteWholeFile(source, big);
    EXPECT_EQ(CopyFileEnsuringFolder(source.c_str(), (dir + "\\copy.txt").c_str()), 0);
    EXPECT_EQ(GetFileAttributesA((dir + "\\copy.txt").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(CopyFileEnsuringFolder(source.c_str(), (dir + "\\keep.txt").c_str()), 0);
    EXPECT_EQ(ReadWholeFile(dir + "\\keep.txt"), "old content");
    EXPECT_EQ(FilesInFolder(), 2);
}
