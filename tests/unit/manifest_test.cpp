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
    EXPECT_NE(manifest.find("<activeCodePage xmlns=\"http://schemas.microsoft.com/SMI/2019/WindowsSettings\">"
                            "UTF-8</activeCodePage>"),
              std::string::npos);
}

// The test program carries the program's manifest, and Wine honours its
// request for UTF-8: GetACP says 65001, while the locale still names the
// legacy page that old scripts are in (1252 under the suite's pinned
// C.UTF-8 locale).
TEST(Manifest, TheUtf8RequestIsHonouredAndTheLegacyPageStaysKnown) {
    EXPECT_EQ(GetACP(), 65001u);
    char legacy[16] = {};
    GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE, legacy, sizeof legacy);
    EXPECT_STREQ(legacy, "1252");
    // A title set through the ...A call comes back whole through the ...W one.
    WNDCLASSA plain = {};
    plain.lpfnWndProc = DefWindowProcA;
    plain.hInstance = GetModuleHandleA(nullptr);
    plain.lpszClassName = "ZantoManifestProbe";
    RegisterClassA(&plain);
    HWND window = CreateWindowA("ZantoManifestProbe", "Z\xC3\xBCrich \xE6\x9D\xB1\xE4\xBA\xAC \xF0\x9F\x98\x80", WS_POPUP, 0, 0, 10, 10,
                                nullptr, nullptr, plain.hInstance, nullptr);
    ASSERT_TRUE(window);
    wchar_t wide[32] = {};
    GetWindowTextW(window, wide, 32);
    DestroyWindow(window);
    EXPECT_STREQ(wide, L"Z\u00FCrich \u6771\u4EAC \U0001F600");
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
