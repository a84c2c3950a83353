// Script files in any encoding: the golden scripts of tests/golden (made by
// make-golden.py) load and save byte for byte, and a legacy script that is
// given a character its code page cannot hold is saved as UTF-8, saying so.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "base/heap.h"
#include "base/log.h"
#include "base/ui.h"
#include "script/fileencoding.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::string Golden(const char* name) { return ReadWholeFile(std::string(ZR_GOLDEN_DIR "/") + name); }

// The golden file copied into a fresh folder, opened into tab 0.
std::string OpenCopy(const char* name, int expectSteps) {
    ResetTestState();
    const std::string path = TempFolder() + "\\" + name;
    WriteWholeFile(path, Golden(name));
    EXPECT_EQ(OpenScript(path.c_str(), 0), expectSteps) << name;
    return path;
}

const char kZurich[] = "Z\xC3\xBCrich \xE2\x80\x93 \xCE\x94 \xE2\x80\x93 \xE6\x9D\xB1\xE4\xBA\xAC \xE2\x80\x93 \xF0\x9F\x98\x80";

}  // namespace

TEST(ScriptEncoding, EachGoldenScriptLoadsAndSavesByteForByte) {
    const struct {
        const char* name;
        int encoding;
    } cases[] = {
        {"cp1252.zxm", 1252},
        {"utf8.zxm", SCRIPT_UTF8},
        {"utf8_mark.zxm", SCRIPT_UTF8_MARK},
    };
    for (const auto& c : cases) {
        const std::string golden = Golden(c.name);
        ASSERT_FALSE(golden.empty()) << c.name;
        const std::string path = OpenCopy(c.name, 3);
        EXPECT_EQ(CurrentTab().encoding, c.encoding) << c.name;
        char error[SAVE_ERROR_SIZE] = "";
        ASSERT_EQ(SaveScript(0, error), 1) << c.name << ": " << error;
        EXPECT_EQ(ReadWholeFile(path), golden) << c.name;
        EXPECT_EQ(CurrentTab().encoding, c.encoding) << c.name;
    }
}

TEST(ScriptEncoding, TextsAreTheProgramsUtf8WhateverTheFileWasIn) {
    OpenCopy("cp1252.zxm", 3);
    // 0x80 is the euro sign, 0x81 has no character and stays U+0081, 0xFF is "ÿ".
    const std::string text = CurrentTab().steps[1].text;
    EXPECT_EQ(text.substr(0, 5), "\xE2\x82\xAC\xC2\x81");
    EXPECT_EQ(text.substr(text.size() - 2), "\xC3\xBF");
    EXPECT_STREQ(CurrentTab().steps[1].output_value, "Gr\xC3\xBC\xC3\x9F" "e");
    for (const char* name : {"utf8.zxm", "utf8_mark.zxm"}) {
        OpenCopy(name, 3);
        EXPECT_STREQ(CurrentTab().steps[1].text, kZurich) << name;
    }
}

TEST(ScriptEncoding, ALegacyScriptGivenAnEastAsianCharacterSavesAsUtf8AndSaysSo) {
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSA plain = {};
    plain.lpfnWndProc = DefWindowProcA;
    plain.hInstance = GetModuleHandleA(nullptr);
    plain.lpszClassName = "ZantoEncodingTestFrame";
    RegisterClassA(&plain);
    HWND frame = CreateWindowA(plain.lpszClassName, "", WS_POPUP, 0, 0, 400, 100, nullptr, nullptr, plain.hInstance,
                               nullptr);
    HWND status = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD, 0, 0, 400, 20, frame, nullptr, plain.hInstance,
                                  nullptr);
    ASSERT_TRUE(status) << GetLastError();
    HWND kept = StatusBar;
    StatusBar = status;
    const std::string path = OpenCopy("cp1252.zxm", 3);
    Step& s = CurrentTab().steps[1];
    const std::string changed = std::string(s.text) + "\xE6\x9D\xB1";
    s.text = (char*)GrowBlock(s.text, changed.size() + 256);
    lstrcpyA(s.text, changed.c_str());
    char error[SAVE_ERROR_SIZE] = "";
    EXPECT_EQ(SaveScript(0, error), 1) << error;
    char said[512] = "";
    SendMessageA(status, SB_GETTEXTA, 0, (LPARAM)said);
    StatusBar = kept;
    DestroyWindow(frame);
    EXPECT_EQ(ReadWholeFile(path), Golden("cp1252_east.saved.zxm"));
    EXPECT_EQ(CurrentTab().encoding, SCRIPT_UTF8);
    EXPECT_STREQ(said, "Saved as UTF-8: the script holds characters that code page 1252 has no place for");
    // Once UTF-8, it stays UTF-8.
    EXPECT_EQ(SaveScript(0, error), 1);
    EXPECT_EQ(ReadWholeFile(path), Golden("cp1252_east.saved.zxm"));
}

TEST(ScriptEncoding, ANewScriptIsUtf8WithoutAMark) {
    ResetTestState();
    LoadSteps("<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n<step>\r\n\t<action>Activate</action>\r\n\t<text>" +
              std::string(kZurich) + "</text>\r\n</step>\r\n</ZantoRunner>");
    const std::string path = TempFolder() + "\\new.zxm";
    lstrcpyA(CurrentTab().path, path.c_str());
    char error[SAVE_ERROR_SIZE] = "";
    ASSERT_EQ(SaveScript(0, error), 1);
    const std::string saved = ReadWholeFile(path);
    EXPECT_EQ(saved.substr(0, 5), "<?xml");
    EXPECT_NE(saved.find(kZurich), std::string::npos);
}

// Detection looks at the script only: a compiled EXE's program bytes ahead
// of it are not UTF-8, and must not make its UTF-8 script legacy.
TEST(ScriptEncoding, DetectionLooksAtTheScriptAfterItsRootOnly) {
    const std::string exe = std::string("MZ\x90\x00\xFF\xFE", 6) + "<ZantoRunner><step><action>Activate</action><text>" +
                            kZurich + "</text></step></ZantoRunner>";
    const char* script = exe.c_str() + exe.find("<ZantoRunner>");
    EXPECT_EQ(DetectScriptEncoding(exe.data(), exe.size(), script), SCRIPT_UTF8);
    const std::string old = "<?xml version=\"1.0\" ?><ZantoRunner><text>Gr\xFC\xDF" "e</text></ZantoRunner>";
    EXPECT_EQ(DetectScriptEncoding(old.data(), old.size(), old.c_str() + 22), 1252);
    const std::string marked = "\xEF\xBB\xBF<?xml?><ZantoRunner>\xFC</ZantoRunner>";
    EXPECT_EQ(DetectScriptEncoding(marked.data(), marked.size(), marked.c_str() + 11), SCRIPT_UTF8_MARK);
}
