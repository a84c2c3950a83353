// Compiling a script into an EXE from the runtime template, and running it.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "desktop/pause.h"
#include "base/settings.h"
#include "products/compile.h"
#include "test_support.h"

namespace {

void NoPause(DWORD) {}

class Compile : public ::testing::Test {
protected:
    std::string folder;
    void SetUp() override {
        ResetTestState();
        DesktopSleep = NoPause;
        // The templates stand beside the program: here, beside the tests.
        char self[MAX_PATH];
        GetModuleFileNameA(nullptr, self, sizeof self);
        std::string exe = self, dir = exe.substr(0, exe.rfind('\\'));
        std::string base = exe.substr(0, exe.size() - 4);
        CopyFileA((dir + "\\..\\ZantoRunnerB.LIB").c_str(), (base + "B.LIB").c_str(), FALSE);
        CopyFileA((dir + "\\..\\ZantoRunnerA.LIB").c_str(), (base + "A.LIB").c_str(), FALSE);
        folder = TempFolder();
        ReplaceSteps("<ZantoRunner><step><action>Exit Run</action><text>9</text></step></ZantoRunner>");
    }
    std::string Value(const std::string& file, const char* name) {
        DWORD ignored;
        DWORD size = GetFileVersionInfoSizeA(file.c_str(), &ignored);
        std::vector<char> block(size);
        char* value = nullptr;
        UINT length = 0;
        if (!size || !GetFileVersionInfoA(file.c_str(), 0, size, block.data())) return "";
        std::string key = std::string("\\StringFileInfo\\040904b0\\") + name;
        if (!VerQueryValueA(block.data(), key.c_str(), (void**)&value, &length)) return "";
        return value;
    }
    DWORD RunIt(const std::string& exe) {
        STARTUPINFOA si = {sizeof si};
        PROCESS_INFORMATION pi = {};
        std::string line = "\"" + exe + "\"";
        if (!CreateProcessA(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return 999;
        WaitForSingleObject(pi.hProcess, 60000);
        DWORD code = 998;
        GetExitCodeProcess(pi.hProcess, &code);
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
        return code;
    }
};

TEST_F(Compile, TheCompiledScriptRunsWithItsVersionAndTexts) {
    WriteSetting(nullptr, "3.7", 0, nullptr, ZR_ROOT "Compile\\Version");
    WriteSetting(nullptr, "(c) Ada Lovelace", 0, nullptr, ZR_ROOT "Compile\\Copyright");
    WriteSetting(nullptr, "A test script", 0, nullptr, ZR_ROOT "Compile\\Description");
    std::string exe = folder + "\\job.exe";
    ASSERT_EQ(CompileExe(exe.c_str(), "", 0), 1);
    std::string bytes = ReadWholeFile(exe);
    EXPECT_EQ(bytes.substr(0, 2), "MZ");
    EXPECT_EQ(bytes.substr(bytes.size() - 14), "</ZantoRunner>");
    // The template, then one root round the step records, and nothing after.
    const size_t root = bytes.rfind("<ZantoRunner>");
    ASSERT_NE(root, std::string::npos);
    EXPECT_EQ(bytes.substr(root), "<ZantoRunner><step>\r\n\t<action>Exit Run</action>\r\n\t<text>9</text>\r\n</step>\r\n"
                                  "</ZantoRunner>");
    char version[64];
    GetFileVersionText(exe.c_str(), version, 0);
    EXPECT_STREQ(version, "3.7.0.0");
    GetFileVersionText(exe.c_str(), version, 1);
    EXPECT_STREQ(version, "3.7");
    EXPECT_EQ(Value(exe, "LegalCopyright"), "(c) Ada Lovelace");
    EXPECT_EQ(Value(exe, "FileDescription"), "A test script");
    EXPECT_EQ(RunIt(exe), 9u);  // the script's "Exit Run" is the program's exit code
}

TEST_F(Compile, AnOptimizedCompileKeepsTheTemplatesBlock) {
    WriteSetting(nullptr, "3", 0, nullptr, ZR_ROOT "Compile\\Version");
    std::string exe = folder + "\\fast.exe";
    ASSERT_EQ(CompileExe(exe.c_str(), "", 1), 1);
    char version[64];
    GetFileVersionText(exe.c_str(), version, 0);
    EXPECT_STREQ(version, "1.0.0.0");
    EXPECT_EQ(CompileExe("", "", 0), -1);
    ReplaceSteps("");
    EXPECT_EQ(CompileExe(exe.c_str(), "", 0), -1);  // no steps
}

TEST_F(Compile, AnIconFileReplacesTheIcons) {
    // A one-image icon file: a 16 x 16, 32-bit image with its mask.
    std::string ico = folder + "\\one.ico";
    std::string image(40 + 16 * 16 * 4 + 16 * 4, '\0');
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = 16;
    h.biHeight = 32;
    h.biPlanes = 1;
    h.biBitCount = 32;
    memcpy(&image[0], &h, sizeof h);
    std::string file(6 + 16, '\0');
    WORD header[3] = {0, 1, 1};
    memcpy(&file[0], header, 6);
    BYTE entry[16] = {16, 16, 0, 0, 1, 0, 32, 0};
    DWORD size = (DWORD)image.size(), offset = 22;
    memcpy(entry + 8, &size, 4);
    memcpy(entry + 12, &offset, 4);
    memcpy(&file[6], entry, 16);
    WriteWholeFile(ico, file + image);
    std::string exe = folder + "\\icon.exe";
    ASSERT_EQ(CompileExe(exe.c_str(), ico.c_str(), 0), 1);
    HMODULE module = LoadLibraryExA(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(module);
    EXPECT_TRUE(FindResourceA(module, MAKEINTRESOURCEA(1), RT_GROUP_ICON));
    EXPECT_TRUE(FindResourceA(module, MAKEINTRESOURCEA(1), RT_ICON));
    FreeLibrary(module);
    EXPECT_EQ(RunIt(exe), 9u);
}

}  // namespace
