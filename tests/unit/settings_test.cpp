// The settings helpers and the migration of the older products' keys.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/registrycopy.h"
#include "base/settings.h"
#include "base/handles.h"
#include "test_support.h"

namespace {

DWORD TypeOf(const char* key, const char* value) {
    AutoHKEY h;
    DWORD type = 0;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, key, 0, KEY_READ, &h.h) == ERROR_SUCCESS)
        RegQueryValueExA(h.h, value, nullptr, &type, nullptr, nullptr);
    return type;
}

void RawValue(HKEY root, const char* key, const char* value, DWORD type, const void* data, DWORD size) {
    AutoHKEY h;
    RegCreateKeyExA(root, key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &h.h, nullptr);
    RegSetValueExA(h.h, value, 0, type, (const BYTE*)data, size);
}

}  // namespace

TEST(Settings, TypesFollowWhatIsWritten) {
    EXPECT_EQ(WriteSetting(nullptr, "plain", 0, nullptr, ZR_ROOT "A"), 1);
    EXPECT_EQ(WriteSetting(nullptr, "100%", 0, nullptr, ZR_ROOT "B"), 1);
    EXPECT_EQ(WriteSetting(nullptr, nullptr, 42, nullptr, ZR_ROOT "C"), 1);
    EXPECT_EQ(WriteSetting(nullptr, nullptr, 3, "\x01\x02\x03", ZR_ROOT "D"), 1);
    EXPECT_EQ(TypeOf("SOFTWARE\\ZantoRunner", "A"), (DWORD)REG_SZ);
    EXPECT_EQ(TypeOf("SOFTWARE\\ZantoRunner", "B"), (DWORD)REG_EXPAND_SZ);
    EXPECT_EQ(TypeOf("SOFTWARE\\ZantoRunner", "C"), (DWORD)REG_DWORD);
    EXPECT_EQ(TypeOf("SOFTWARE\\ZantoRunner", "D"), (DWORD)REG_BINARY);

    char text[64];
    EXPECT_EQ(ReadSetting(nullptr, text, 64, nullptr, ZR_ROOT "B"), 100);  // the text's integer value
    EXPECT_STREQ(text, "100%");  // raw, not expanded
    EXPECT_EQ(ReadSetting(nullptr, text, 64, nullptr, ZR_ROOT "C"), 42);
    EXPECT_STREQ(text, "42");
    unsigned char bytes[8] = {};
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 2, bytes, ZR_ROOT "D"), 2);
    EXPECT_EQ(bytes[1], 2);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "D"), 3);  // the size
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "C"), 42);
}

TEST(Settings, MissingPathsReadAsZeroAndEmpty) {
    char text[16] = "stale";
    EXPECT_EQ(ReadSetting(nullptr, text, 16, nullptr, ZR_ROOT "Nope\\Nothing"), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Nothing"), 0);
}

TEST(Settings, PathIsAFormatWithALengthLimit) {
    WriteSetting(nullptr, nullptr, 250, nullptr, ZR_ROOT "InterStepDelay-%d", 3);
    EXPECT_EQ(SettingInt("InterStepDelay-3"), 250);
    std::string longPath = ZR_ROOT + std::string(1100, 'x');
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, "%s", longPath.c_str()), 0);
}

TEST(Settings, TextsAreCutAndMultiLineValuesJoinedWithCrLf) {
    WriteSetting(nullptr, "abcdef", 0, nullptr, ZR_ROOT "T");
    char text[8];
    ReadSetting(nullptr, text, 4, nullptr, ZR_ROOT "T");
    EXPECT_STREQ(text, "abc");
    RawValue(HKEY_CURRENT_USER, "SOFTWARE\\ZantoRunner", "M", REG_MULTI_SZ, "one\0two\0\0", 9);
    char joined[32];
    ReadSetting(nullptr, joined, 32, nullptr, ZR_ROOT "M");
    EXPECT_STREQ(joined, "one\r\ntwo");
    std::string big(5000, 'z');
    WriteSetting(nullptr, big.c_str(), 0, nullptr, ZR_ROOT "Big");
    std::string back(6000, 0);
    ReadSetting(nullptr, &back[0], 6000, nullptr, ZR_ROOT "Big");
    EXPECT_EQ(strlen(back.c_str()), 5000u);
}

TEST(Settings, DeleteRemovesValuesAndWholeKeys) {
    WriteSetting(nullptr, "x", 0, nullptr, ZR_ROOT "UserVariables\\a");
    WriteSetting(nullptr, "y", 0, nullptr, ZR_ROOT "UserVariables\\Deep\\b");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Keep");
    EXPECT_EQ(DeleteSetting(nullptr, ZR_ROOT "Keep"), 1);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Keep"), 0);
    EXPECT_EQ(DeleteSetting(nullptr, ZR_ROOT "Keep"), 0);  // nothing left to delete
    EXPECT_EQ(DeleteSetting(nullptr, ZR_ROOT "UserVariables"), 1);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\Deep\\b"), 0);
    AutoHKEY h;
    EXPECT_NE(RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\ZantoRunner\\UserVariables", 0, KEY_READ, &h.h),
              ERROR_SUCCESS);
}

TEST(Settings, EnumRegValueListsNamesThenEnds) {
    WriteSetting(nullptr, "longer text", 0, nullptr, ZR_ROOT "E\\b");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "E\\aa");
    char name[260];
    EXPECT_EQ(EnumRegValue(nullptr, ZR_ROOT "E", 0, name), 4);  // DWORD size beats the name's 2
    EXPECT_STREQ(name, "aa");
    EXPECT_EQ(EnumRegValue(nullptr, ZR_ROOT "E", 1, name), 12);
    EXPECT_STREQ(name, "b");
    EXPECT_EQ(EnumRegValue(nullptr, ZR_ROOT "E", 2, name), 0);
    EXPECT_STREQ(name, "");
}

TEST(Settings, CopyRegTreeCopiesValuesAndSubkeys) {
    WriteSetting(nullptr, "1", 0, nullptr, ZR_ROOT "Src\\v");
    WriteSetting(nullptr, nullptr, 2, nullptr, ZR_ROOT "Src\\Sub\\w");
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Src", nullptr, ZR_ROOT "Dst"), 1);
    EXPECT_EQ(SettingInt("Dst\\Sub\\w"), 2);
    char v[8];
    SettingText("Dst\\v", v, sizeof v);
    EXPECT_STREQ(v, "1");
    // A source that cannot be read leaves no target behind.
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Missing", nullptr, ZR_ROOT "Dst2"), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Dst2\\v"), 0);
}

TEST(LoadSettings, WritesDefaultsOnceAndResetsOnDemand) {
    LoadSettings(0);
    EXPECT_EQ(SettingInt("StopKey"), 19);
    EXPECT_EQ(SettingInt("MemoryAllocationChunk"), 100);
    EXPECT_EQ(SettingInt("Colors\\OnFailureLables"), 0x008080);
    EXPECT_EQ(SettingInt("Report\\Show7"), 1);
    char text[260];
    SettingText("Logfile", text, sizeof text);
    EXPECT_STREQ(text, "C:\\ZantoRunnerLog.txt");
    SettingText("Palettes\\Output\\Font", text, sizeof text);
    EXPECT_STREQ(text, "Courier New");
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Log"), 0);  // no default

    WriteSetting(nullptr, nullptr, 250, nullptr, ZR_ROOT "MaxUndo");
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "StopKey");
    WriteSetting(nullptr, nullptr, 5, nullptr, ZR_ROOT "Bottom");
    WriteSetting(nullptr, "v", 0, nullptr, ZR_ROOT "UserVariables\\x");
    LoadSettings(0);
    EXPECT_EQ(SettingInt("MaxUndo"), 250);  // kept
    EXPECT_EQ(SettingInt("StopKey"), 19);   // a key of 0 cannot be kept
    EXPECT_EQ(SettingInt("Bottom"), 5);     // not a first start
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\x"), 2);

    LoadSettings(1);
    EXPECT_EQ(SettingInt("MaxUndo"), 500);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Bottom"), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\x"), 0);
}

TEST(LoadSettings, FirstStartClearsPlacementVariablesAndRecentFiles) {
    WriteSetting(nullptr, nullptr, 5, nullptr, ZR_ROOT "Left");
    WriteSetting(nullptr, "C:\\a.zxm", 0, nullptr, ZR_ROOT "RecentFile3");
    WriteSetting(nullptr, "v", 0, nullptr, ZR_ROOT "UserVariables\\x");
    LoadSettings(0);  // DefaultSpeed absent: a first start
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Left"), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "RecentFile3"), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\x"), 0);
}

TEST(LoadSettings, MigratesTheOlderProductsKeys) {
    // The oldest key moves to the older one's place, whose values then move
    // to their new names.
    WriteSetting(nullptr, nullptr, 1, nullptr, "SOFTWARE\\ZantoTaskPro\\RunAtLeastOnce");
    WriteSetting(nullptr, nullptr, 0x123456, nullptr, "SOFTWARE\\ZantoTaskPro\\CommentFill");
    WriteSetting(nullptr, nullptr, 0, nullptr, "SOFTWARE\\ZantoTaskPro\\Hilite");
    WriteSetting(nullptr, nullptr, 1, nullptr, "SOFTWARE\\ZantoTaskPro\\SuppressLogo");
    WriteSetting(nullptr, nullptr, 0, nullptr, "SOFTWARE\\ZantoTaskPro\\GlobalVariables");
    WriteSetting(nullptr, nullptr, 3, nullptr, "SOFTWARE\\ZantoTaskPro\\Sub\\Deep");
    LoadSettings(0);
    EXPECT_EQ(SettingInt("Colors\\CommentFill"), 0x123456);
    EXPECT_EQ(SettingInt("HiliteRunningStep"), 0);  // moved, so the default does not apply
    EXPECT_EQ(SettingInt("ShowSplash"), 0);
    EXPECT_EQ(SettingInt("LocalVariables"), 1);
    AutoHKEY h;
    EXPECT_NE(RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\ZantoTaskPro", 0, KEY_READ, &h.h), ERROR_SUCCESS);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, "SOFTWARE\\ZantoTask\\Sub\\Deep"), 3);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, "SOFTWARE\\ZantoTask\\CommentFill"), 0);
    EXPECT_EQ(ReadSetting(nullptr, nullptr, -1, nullptr, "SOFTWARE\\ZantoTask\\SuppressLogo"), 0);
}

TEST(ReadSetting, ATextNeverPassesTheBufferItIsGiven) {
    const std::string long300(300, 'r');
    WriteSetting(nullptr, long300.c_str(), 0, nullptr, ZR_ROOT "RecentFile1");
    struct {
        char buffer[MAX_PATH];
        char canary[8];
    } guarded;
    memset(guarded.canary, 'C', sizeof guarded.canary);
    ReadSetting(nullptr, guarded.buffer, sizeof guarded.buffer, nullptr, ZR_ROOT "RecentFile1");
    EXPECT_EQ(std::string(guarded.buffer), std::string(MAX_PATH - 1, 'r'));
    EXPECT_EQ(std::string(guarded.canary, sizeof guarded.canary), std::string(8, 'C'));
    char small[4];
    WriteSetting(nullptr, nullptr, 123456, nullptr, ZR_ROOT "Number");
    ReadSetting(nullptr, small, sizeof small, nullptr, ZR_ROOT "Number");
    EXPECT_STREQ(small, "123");
}
