// The program carries its manifest: common controls 6, per-monitor DPI
// awareness and the supported systems, read out of the built EXE.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

TEST(Manifest, TheProgramAsksForCommonControls6AndPerMonitorDpi) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string exe = self;
    exe = exe.substr(0, exe.rfind('\\')) + "\\..\\ZantoRunner.exe";
    HMODULE module = LoadLibraryExA(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(module) << exe;
    HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24));  // RT_MANIFEST
    ASSERT_TRUE(found);
    const char* data = (const char*)LockResource(LoadResource(module, found));
    const std::string manifest(data, SizeofResource(module, found));
    FreeLibrary(module);
    EXPECT_NE(manifest.find("Microsoft.Windows.Common-Controls"), std::string::npos);
    EXPECT_NE(manifest.find("version=\"6.0.0.0\""), std::string::npos);
    EXPECT_NE(manifest.find("PerMonitorV2"), std::string::npos);
    EXPECT_NE(manifest.find("<supportedOS Id=\"{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}\"/>"), std::string::npos);
}

// The program's icon group holds the picture at 16, 32 and 48 pixels, and
// the runtime that compiled scripts copy carries the same.
TEST(Manifest, TheProgramAndTheRuntimeCarryTheIconAtThreeSizes) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string folder = self;
    folder = folder.substr(0, folder.rfind('\\')) + "\\..\\";
    for (const char* name : {"ZantoRunner.exe", "ZantoRunnerRuntime.exe"}) {
        HMODULE module = LoadLibraryExA((folder + name).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        ASSERT_TRUE(module) << name;
        HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(1000), RT_GROUP_ICON);
        ASSERT_TRUE(found) << name;
        const BYTE* group = (const BYTE*)LockResource(LoadResource(module, found));
        const WORD count = *(const WORD*)(group + 4);
        std::string sizes;
        for (WORD i = 0; i < count; i++) sizes += std::to_string(group[6 + 14 * i]) + " ";
        EXPECT_EQ(sizes, "16 32 48 ") << name;
        HICON icon = (HICON)LoadImageA(module, MAKEINTRESOURCEA(1000), IMAGE_ICON, 32, 32, 0);
        EXPECT_TRUE(icon) << name;
        if (icon) DestroyIcon(icon);
        FreeLibrary(module);
    }
}
