// Compiling a script into an EXE from the runtime template, and running it.
#include <gtest/gtest.h>

#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include <string>
#include <vector>

#include "desktop/pause.h"
#include "base/settings.h"
#include "products/compile.h"
#include "script/step.h"
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
    DWORD RunIt(const std::string& exe, const std::string& arguments = "") {
        STARTUPINFOA si = {sizeof si};
        PROCESS_INFORMATION pi = {};
        std::string line = "\"" + exe + "\"" + (arguments.empty() ? "" : " " + arguments);
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

// A compiled script takes the switches of a run a fleet reads: results go
// where the line says (a path with "-r" in it keeps its letters).
TEST_F(Compile, TheCompiledScriptWritesTheResultFiles) {
    std::string exe = folder + "\\job.exe";
    ASSERT_EQ(CompileExe(exe.c_str(), "", 1), 1);
    const std::string out = folder + "\\out-r";
    EXPECT_EQ(RunIt(exe, "/unattended /junit \"" + out + "\\r.xml\" /json " + out + "\\r.json"), 9u);
    const std::string junit = ReadWholeFile(out + "\\r.xml");
    EXPECT_NE(junit.find("<testsuite name=\"job\""), std::string::npos) << junit;
    EXPECT_NE(junit.find("<property name=\"exit-code\" value=\"9\"/>"), std::string::npos) << junit;
    EXPECT_NE(junit.find("<property name=\"steps-run\" value=\"1\"/>"), std::string::npos) << junit;
    const std::string json = ReadWholeFile(out + "\\r.json");
    EXPECT_NE(json.find("\"exitCode\": 9,"), std::string::npos) << json;
    EXPECT_NE(json.find("\"outcome\": \"passed\""), std::string::npos) << json;
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

// Every resource of a type in a module, as "name" or "name/language" for
// any language but the first seen, so that a leftover copy in another
// language shows too.
BOOL CALLBACK AddLanguage(HMODULE, LPCSTR, LPCSTR name, WORD language, LONG_PTR out) {
    auto* list = (std::vector<std::pair<std::string, WORD>>*)out;
    list->push_back({IS_INTRESOURCE(name) ? std::to_string((int)(UINT_PTR)name) : std::string(name), language});
    return TRUE;
}

BOOL CALLBACK AddName(HMODULE module, LPCSTR type, LPSTR name, LONG_PTR out) {
    EnumResourceLanguagesA(module, type, name, AddLanguage, out);
    return TRUE;
}

struct IconListing {
    std::vector<std::string> groups;  // each group: "name"
    std::vector<std::string> icons;   // each icon: "id"
    std::vector<std::string> named;   // the icon ids that the groups name
};

IconListing ListIcons(const std::string& exe) {
    IconListing listing;
    HMODULE module = LoadLibraryExA(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (!module) return listing;
    std::vector<std::pair<std::string, WORD>> groups, icons;
    EnumResourceNamesA(module, RT_GROUP_ICON, AddName, (LONG_PTR)&groups);
    EnumResourceNamesA(module, RT_ICON, AddName, (LONG_PTR)&icons);
    for (const auto& g : groups) {
        listing.groups.push_back(g.first);
        LPCSTR name = isdigit((unsigned char)g.first[0]) ? MAKEINTRESOURCEA(atoi(g.first.c_str())) : g.first.c_str();
        HRSRC found = FindResourceExA(module, RT_GROUP_ICON, name, g.second);
        const BYTE* data = found ? (const BYTE*)LockResource(LoadResource(module, found)) : nullptr;
        const DWORD size = found ? SizeofResource(module, found) : 0;
        const int count = data && size >= 6 ? *(const WORD*)(data + 4) : 0;
        for (int i = 0; i < count && 6 + 14 * (DWORD)(i + 1) <= size; i++)
            listing.named.push_back(std::to_string(*(const WORD*)(data + 6 + 14 * i + 12)));
    }
    for (const auto& i : icons) listing.icons.push_back(i.first);
    FreeLibrary(module);
    std::sort(listing.icons.begin(), listing.icons.end());
    std::sort(listing.named.begin(), listing.named.end());
    return listing;
}

TEST_F(Compile, TheCompiledExeHoldsOneIconGroupAndOnlyItsIcons) {
    // A one-image icon file: a 16 x 16, 32-bit image with its mask.
    std::string ico = folder + "\\one.ico";
    {
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
    }
    // The program's own first group, for an icon taken from a module.
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    const std::string program = std::string(self).substr(0, std::string(self).rfind('\\')) + "\\..\\ZantoRunner.exe";
    const IconListing own = ListIcons(program);
    ASSERT_EQ(own.groups.size(), 1u);
    struct Case {
        const char* what;
        std::string source;
        std::string group;  // the one group the EXE must hold
    } cases[] = {
        {"no icon chosen: the template's", "", "1000"},
        {"an icon file", ico, "1"},
        {"a module's first group", program, own.groups[0]},
    };
    for (const Case& c : cases) {
        const std::string exe = folder + "\\icons" + std::to_string(&c - cases) + ".exe";
        ASSERT_EQ(CompileExe(exe.c_str(), c.source.c_str(), 0), 1) << c.what;
        const IconListing l = ListIcons(exe);
        EXPECT_EQ(l.groups, std::vector<std::string>{c.group}) << c.what;
        EXPECT_FALSE(l.icons.empty()) << c.what;
        EXPECT_EQ(l.icons, l.named) << c.what;  // the group's icons, and no other
    }
    EXPECT_EQ(RunIt(folder + "\\icons1.exe"), 9u);
}

}  // namespace

namespace {

// A compile deletes its output first: an output that is this program, one of
// its templates or the script itself is refused, whatever its spelling, and
// the file stays as it was.
TEST_F(Compile, AnOutputThatIsOneOfItsSourcesIsRefusedAndKept) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    const std::string program = self, dir = program.substr(0, program.rfind('\\'));
    const std::string name = program.substr(dir.size() + 1), base = program.substr(0, program.size() - 4);
    std::string upper = name;
    for (char& c : upper) c = (char)toupper((unsigned char)c);
    const std::string script = folder + "\\job.zxm";
    WriteWholeFile(script, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner><step><action>Exit Run</action><text>9</text></step></ZantoRunner>");
    lstrcpynA(ScriptStore.tab[0].path, script.c_str(), MAX_PATH);
    struct Case {
        std::string output, file;  // the spelling given, the file it names
        const char* words;
    } cases[] = {
        {dir + "\\" + upper, program, "is ZantoRunner's own program file"},
        {dir + "\\.\\" + name, program, "is ZantoRunner's own program file"},
        {base + "B.LIB", base + "B.LIB", "is the runtime template that a compile copies from"},
        {dir + "\\sub\\..\\" + name.substr(0, name.size() - 4) + "a.lib", base + "A.LIB",
         "is the runtime template that a compile copies from"},
        {folder + "\\\\JOB.zxm", script, "is the script being compiled"},
    };
    for (const Case& c : cases) {
        const std::string before = ReadWholeFile(c.file);
        ASSERT_FALSE(before.empty()) << c.file;
        char why[600];
        EXPECT_TRUE(CompileOutputRefused(c.output.c_str(), why, sizeof why)) << c.output;
        EXPECT_NE(std::string(why).find(c.words), std::string::npos) << why;
        EXPECT_EQ(CompileExe(c.output.c_str(), "", 0), -6) << c.output;
        EXPECT_EQ(ReadWholeFile(c.file), before) << c.output;
    }
    EXPECT_FALSE(CompileOutputRefused((folder + "\\job.exe").c_str(), nullptr, 0));

    // The command says why in a box, and asks nothing.
    const std::string before = ReadWholeFile(program);
    WriteSetting(nullptr, (dir + "\\" + upper).c_str(), 0, nullptr, ZR_ROOT "Compile\\Output");
    CompileFromOptions();
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].title, "ZantoRunner Error");
    EXPECT_EQ(SeenBoxes[0].text.find("Unable to compile \""), 0u) << SeenBoxes[0].text;
    EXPECT_NE(SeenBoxes[0].text.find("is ZantoRunner's own program file"), std::string::npos);
    EXPECT_EQ(ReadWholeFile(program), before);
}

}  // namespace
