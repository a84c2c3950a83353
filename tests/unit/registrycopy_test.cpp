// Registry trees: a copy that fails is taken back to what was there before,
// deep trees are copied and deleted without recursion, and the paths the
// registry actions refuse.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/handles.h"
#include "base/registrycopy.h"
#include "base/settings.h"
#include "system/registrystep.h"
#include "test_support.h"

namespace {

std::string Text(const char* path) {
    char text[300] = "";
    ReadSetting(nullptr, text, sizeof text, nullptr, "%s", path);
    return text;
}

// Opened a component at a time: Wine's ...A calls take paths of at most 260
// characters, and the deep keys here have longer ones.
HKEY OpenKey(const std::string& path) {
    HKEY key = nullptr;
    for (const std::string& part : RegistryPathParts(path)) {
        HKEY next = nullptr;
        LONG r = RegOpenKeyExA(key ? key : HKEY_CURRENT_USER, part.c_str(), 0, KEY_READ, &next);
        if (key) RegCloseKey(key);
        if (r != ERROR_SUCCESS) return nullptr;
        key = next;
    }
    return key;
}

bool KeyExists(const std::string& path) {
    AutoHKEY key;
    key.h = OpenKey(path);
    return key.h != nullptr;
}

bool ValueExists(const char* path) { return ReadSetting(nullptr, nullptr, -1, nullptr, "%s", path) > 0; }

class RegistryTree : public ::testing::Test {
protected:
    void SetUp() override { ResetTestState(); }
};

TEST_F(RegistryTree, AFailedCopyTakesBackWhatItWroteAndKeepsWhatWasThere) {
    // The target was there before, with a value the copy overwrites, one it
    // does not touch and a volatile subkey, below which the registry refuses
    // a lasting key: the copy fails after it has written into the target.
    WriteSetting(nullptr, "old", 0, nullptr, ZR_ROOT "Keep\\shared");
    WriteSetting(nullptr, "mine", 0, nullptr, ZR_ROOT "Keep\\own");
    {
        AutoHKEY vol;
        ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, ZR_ROOT "Keep\\Vol", 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &vol.h, nullptr),
                  ERROR_SUCCESS);
    }
    WriteSetting(nullptr, "new", 0, nullptr, ZR_ROOT "Src\\shared");
    WriteSetting(nullptr, "added", 0, nullptr, ZR_ROOT "Src\\added");
    WriteSetting(nullptr, "a", 0, nullptr, ZR_ROOT "Src\\A\\Deeper\\v");
    WriteSetting(nullptr, "lasting", 0, nullptr, ZR_ROOT "Src\\Vol\\Sub\\v");

    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Src", nullptr, ZR_ROOT "Keep"), 0);
    EXPECT_EQ(Text(ZR_ROOT "Keep\\shared"), "old");
    EXPECT_EQ(Text(ZR_ROOT "Keep\\own"), "mine");
    EXPECT_FALSE(ValueExists(ZR_ROOT "Keep\\added"));
    EXPECT_FALSE(KeyExists(ZR_ROOT "Keep\\A"));
    EXPECT_TRUE(KeyExists(ZR_ROOT "Keep\\Vol"));
    EXPECT_FALSE(KeyExists(ZR_ROOT "Keep\\Vol\\Sub"));
    EXPECT_EQ(Text(ZR_ROOT "Src\\A\\Deeper\\v"), "a");  // the source is only read

    // A target path of which only the start was there loses what the copy made.
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Src", nullptr, ZR_ROOT "Keep\\Vol\\Made\\Below"), 0);
    EXPECT_FALSE(KeyExists(ZR_ROOT "Keep\\Vol\\Made"));
    EXPECT_TRUE(KeyExists(ZR_ROOT "Keep\\Vol"));
}

TEST_F(RegistryTree, AMissingSourceOrARootTouchesNothing) {
    WriteSetting(nullptr, "kept", 0, nullptr, ZR_ROOT "Keep\\v");
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "NoSuchKey", nullptr, ZR_ROOT "Keep"), 0);
    EXPECT_EQ(Text(ZR_ROOT "Keep\\v"), "kept");
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "NoSuchKey", nullptr, ZR_ROOT "Fresh"), 0);
    EXPECT_FALSE(KeyExists(ZR_ROOT "Fresh"));
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Keep", nullptr, "\\"), 0);
    EXPECT_EQ(CopyRegTree(nullptr, "", nullptr, ZR_ROOT "Fresh"), 0);
    EXPECT_FALSE(KeyExists(ZR_ROOT "Fresh"));
    EXPECT_EQ(DeleteRegTree(nullptr, ""), 0);
    EXPECT_EQ(DeleteRegTree(nullptr, "\\\\"), 0);
    EXPECT_TRUE(KeyExists("Software"));
}

TEST_F(RegistryTree, DeepTreesAreCopiedAndDeletedWithoutRecursion) {
    // 300 levels: a walk that held a name buffer of 16 KB a level on the
    // stack would need about 5 MB of it.
    std::string deep = ZR_ROOT "Deep";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, deep.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    for (int i = 0; i < 300; i++) {
        HKEY below = nullptr;
        ASSERT_EQ(RegCreateKeyExA(key, "d", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr), ERROR_SUCCESS)
            << "level " << i;
        RegCloseKey(key);
        key = below;
        deep += "\\d";
    }
    RegSetValueExA(key, "v", 0, REG_SZ, (const BYTE*)"bottom", 7);
    RegCloseKey(key);
    ASSERT_TRUE(KeyExists(deep));
    ASSERT_EQ(CopyRegTree(nullptr, ZR_ROOT "Deep", nullptr, ZR_ROOT "Copy"), 1);
    std::string copied = ZR_ROOT "Copy" + deep.substr(strlen(ZR_ROOT "Deep"));
    AutoHKEY bottom;
    ASSERT_TRUE(bottom.h = OpenKey(copied));
    char value[16] = "";
    DWORD size = sizeof value;
    RegQueryValueExA(bottom.h, "v", nullptr, nullptr, (BYTE*)value, &size);
    EXPECT_STREQ(value, "bottom");
    EXPECT_EQ(DeleteRegTree(nullptr, ZR_ROOT "Copy"), 1);
    EXPECT_FALSE(KeyExists(ZR_ROOT "Copy"));
    EXPECT_TRUE(KeyExists(deep));
}

TEST_F(RegistryTree, ACopyIntoItsOwnSubtreeEndsAndLeavesNothingBehind) {
    // The action refuses this; the copy itself, reached some other way (a
    // second spelling of the same key), finds what it has just written at
    // every level. It stops at the registry's depth and takes it all back.
    WriteSetting(nullptr, "v", 0, nullptr, ZR_ROOT "Loop\\v");
    EXPECT_EQ(CopyRegTree(nullptr, ZR_ROOT "Loop", nullptr, ZR_ROOT "Loop\\inside"), 0);
    EXPECT_FALSE(KeyExists(ZR_ROOT "Loop\\inside"));
    EXPECT_EQ(Text(ZR_ROOT "Loop\\v"), "v");
}

TEST_F(RegistryTree, TheUsersKeyUnderHkeyUsersIsTheSameKey) {
    WriteSetting(nullptr, "mark", 0, nullptr, ZR_ROOT "Alias\\v");
    std::string sid;
    for (DWORD i = 0; sid.empty(); i++) {
        char name[256];
        DWORD length = sizeof name;
        if (RegEnumKeyExA(HKEY_USERS, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        AutoHKEY key;
        if (RegOpenKeyExA(HKEY_USERS, (std::string(name) + "\\" ZR_ROOT "Alias").c_str(), 0, KEY_READ, &key.h) ==
            ERROR_SUCCESS)
            sid = name;
    }
    ASSERT_FALSE(sid.empty());
    const std::string alias = sid + "\\" ZR_ROOT "Alias";
    EXPECT_TRUE(KeyLiesWithin(HKEY_USERS, alias + "\\inside", HKEY_CURRENT_USER, ZR_ROOT "Alias"));
    EXPECT_TRUE(KeyLiesWithin(HKEY_CURRENT_USER, ZR_ROOT "Alias\\New\\Deeper", HKEY_USERS, alias));
    EXPECT_FALSE(KeyLiesWithin(HKEY_USERS, alias + "Other", HKEY_CURRENT_USER, ZR_ROOT "Alias"));
    EXPECT_FALSE(KeyLiesWithin(HKEY_LOCAL_MACHINE, ZR_ROOT "Alias\\inside", HKEY_CURRENT_USER, ZR_ROOT "Alias"));
}

TEST(RegistryPaths, OnlyARootAndKeysWithinAKey) {
    const struct {
        const char* rest;
        bool onlyRoot;
    } roots[] = {{"", true},          {"\\", true},        {"\\\\", true},       {" ", true},
                 {"HKCU", true},      {"hkcu\\", true},    {"HKEY_USERS", true}, {"HKEY_CURRENT_USER\\", true},
                 {"HKLM\\x", false},  {"Software", false}, {"\\Software\\", false}};
    for (const auto& r : roots) EXPECT_EQ(NamesOnlyARoot(r.rest), r.onlyRoot) << "'" << r.rest << "'";

    const HKEY cu = HKEY_CURRENT_USER, lm = HKEY_LOCAL_MACHINE;
    const struct {
        HKEY innerRoot;
        const char* inner;
        HKEY outerRoot;
        const char* outer;
        bool within;
    } pairs[] = {
        {cu, "Software\\ZrTree\\inside", cu, "Software\\ZrTree", true},
        {cu, "software\\zrtree\\Inside", cu, "SOFTWARE\\ZrTree\\", true},
        {cu, "Software\\\\ZrTree", cu, "Software\\ZrTree", true},
        {cu, "Software\\ZrTreeCopy", cu, "Software\\ZrTree", false},  // a component boundary
        {cu, "Software\\Zr", cu, "Software\\ZrTree", false},
        {lm, "Software\\ZrTree\\inside", cu, "Software\\ZrTree", false},
    };
    for (const auto& p : pairs)
        EXPECT_EQ(KeyLiesWithin(p.innerRoot, p.inner, p.outerRoot, p.outer), p.within) << p.inner << " in " << p.outer;
}

}  // namespace
