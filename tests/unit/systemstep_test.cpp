// The system actions that act on the machine: registry, screen saver,
// captures, the clipboard paste, display modes.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "base/settings.h"
#include "base/words.h"
#include "run/numbers.h"
#include "system/display.h"
#include "system/registrystep.h"
#include "system/systemstep.h"
#include "test_support.h"

namespace {

std::string Keys;
std::vector<DWORD> Pauses;
void RecordKey(BYTE vk, BYTE, DWORD flags) { Keys += (flags & KEYEVENTF_KEYUP) ? '^' : 'v';
    Keys += std::to_string(vk);
    Keys += ' '; }
void RecordPause(DWORD ms) { Pauses.push_back(ms); }

class System : public ::testing::Test {
protected:
    void SetUp() override {
        ResetTestState();
        Keys.clear();
        Pauses.clear();
        SendKeyEvent = RecordKey;
        DesktopSleep = RecordPause;
    }
    int Run(const char* action, const std::string& text, const std::string& value1 = "") {
        ReplaceSteps("<ZantoRunner><step><action>" + std::string(action) + "</action><text>" + text +
                     "</text><value1>" + value1 + "</value1><output value=\"got\">Variable</output></step></ZantoRunner>");
        return SystemStep(0, 0);
    }
    std::string Text(HKEY root, const char* path) {
        char text[300] = "";
        ReadSetting(root, text, sizeof text, nullptr, "%s", path);
        return text;
    }
};

TEST_F(System, RegistryPathsFindTheirRoot) {
    std::string rest;
    EXPECT_EQ(RegistryRootOf("HKEY_LOCAL_MACHINE\\SOFTWARE\\X\\v", &rest), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(rest, "SOFTWARE\\X\\v");
    EXPECT_EQ(RegistryRootOf("hkey_users\\.DEFAULT\\v", &rest), HKEY_USERS);
    EXPECT_EQ(rest, ".DEFAULT\\v");
    EXPECT_EQ(RegistryRootOf("SOFTWARE\\NoRoot\\v", &rest), HKEY_CURRENT_USER);
    EXPECT_EQ(rest, "SOFTWARE\\NoRoot\\v");
}

TEST_F(System, RegistryActionsWriteNumbersAsNumbersAndReadCopyDelete) {
    const std::string key = "HKEY_CURRENT_USER\\SOFTWARE\\ZantoRunner\\Test\\";
    EXPECT_EQ(Run("Write Registry", "007", key + "number"), 1);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Test\\number"), 7);
    EXPECT_EQ(Run("Write Registry", "seven", key + "word"), 1);
    EXPECT_EQ(Run("Read Registry", "", key + "word"), 1);
    EXPECT_EQ(Text(nullptr, ZR_ROOT "UserVariables\\got"), "seven");
    EXPECT_EQ(Run("Copy Registry", "SOFTWARE\\ZantoRunner\\Copy", "SOFTWARE\\ZantoRunner\\Test"), 1);
    EXPECT_EQ(Text(nullptr, ZR_ROOT "Copy\\word"), "seven");
    EXPECT_EQ(Run("Delete Registry", "", key.substr(0, key.size() - 1)), 1);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Test\\word"), 0);
    // A value that is not there saves an empty result, which deletes the variable.
    EXPECT_EQ(Run("Read Registry", "", key + "word"), 1);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\got"), 0);
}

TEST_F(System, TheScreenSaverProgramIsKeptAsideWhileItIsOff) {
    WriteSetting(nullptr, "saver.scr", 0, nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE");
    EXPECT_EQ(Run("Disable Screen Saver", ""), 1);
    EXPECT_EQ(Text(nullptr, "Control Panel\\Desktop\\ScreenSaveActive"), "0");
    EXPECT_EQ(Text(nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE.BAK"), "saver.scr");
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE"), 0);
    EXPECT_EQ(Run("Enable Screen Saver", ""), 1);
    EXPECT_EQ(Text(nullptr, "Control Panel\\Desktop\\ScreenSaveActive"), "1");
    EXPECT_EQ(Text(nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE"), "saver.scr");
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE.BAK"), 0);
    DeleteSetting(nullptr, "Control Panel\\Desktop\\SCRNSAVE.EXE");
    DeleteSetting(nullptr, "Control Panel\\Desktop\\ScreenSaveActive");
}

TEST_F(System, CapturesAndThePasteKeys) {
    std::string folder = TempFolder();
    EXPECT_EQ(Run("Screen Image Capture", folder + "\\screen.bmp"), 1);
    std::string screen = ReadWholeFile(folder + "\\screen.bmp");
    ASSERT_GT(screen.size(), 54u);
    EXPECT_EQ(screen.substr(0, 2), "BM");
    EXPECT_EQ(Run("Window Image Capture", folder + "\\window.bmp"), 1);  // no window yet: the foreground one
    EXPECT_EQ(Pauses, (std::vector<DWORD>{250}));
    EXPECT_EQ(Run("Paste Clipboard", ""), 1);
    EXPECT_EQ(Keys, "v17 v86 ^86 ^17 ");
    EXPECT_EQ(Pauses.back(), 500u);
}

TEST_F(System, DisplayModesAreListedOnceEach) {
    std::vector<std::string> modes = ListDisplayModes();
    ASSERT_FALSE(modes.empty());
    EXPECT_LE(modes.size(), 256u);
    EXPECT_EQ(std::set<std::string>(modes.begin(), modes.end()).size(), modes.size());
    EXPECT_NE(modes[0].find("x"), std::string::npos);
    DEVMODEA now = {};
    now.dmSize = sizeof now;
    EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &now);
    EXPECT_EQ(SetDisplayMode(DISPLAY_TEST, (int)now.dmPelsWidth, (int)now.dmPelsHeight, 0, 0), 1);
}

}  // namespace

TEST(SystemStep, StepDelayKeepsAnyNumberWithinAWait) {
    struct Case {
        const char* text;
        int ms;
    } cases[] = {
        {"-2147483649", 0}, {"-2147483648", 0}, {"-5", 0},  {"250", 250},
        {"2147483648", 2147483647}, {"99999999999999999999", 2147483647}, {"abc", 0},
    };
    for (const Case& c : cases) {
        ReplaceSteps(std::string("<ZantoRunner><step><action>Set Step Delay</action><text>") + c.text +
                     "</text></step></ZantoRunner>");
        EXPECT_EQ(SystemStep(0, 0), 1) << c.text;
        EXPECT_EQ(SettingInt("InterStepDelay-0"), c.ms) << c.text;
    }
}

TEST(Numbers, SecondsBecomeAWaitForAnyInput) {
    EXPECT_EQ(SecondsToMilliseconds(-2147483649.0), 0ul);
    EXPECT_EQ(SecondsToMilliseconds(0.25), 250ul);
    EXPECT_EQ(SecondsToMilliseconds(1e20), 0xFFFFFFFEul);
    EXPECT_EQ(SecondsToMilliseconds(ParseFloat("not a number")), 0ul);
    EXPECT_EQ(ParseInt("2147483648"), 2147483647);  // ParseInt keeps to 32 bits
    EXPECT_EQ(ParseInt("-2147483649"), -2147483647 - 1);
    EXPECT_EQ(ParseInt("99999999999999999999"), 2147483647);
}
