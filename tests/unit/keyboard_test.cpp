// The {key} language, the key events of each typing mode, the drain wait and
// the buffered hook's event protocol. Key events are recorded, not sent.
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/bufferedtype.h"
#include "desktop/keyboard.h"
#include "desktop/keynames.h"
#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "run/clipboard.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::string Events;
std::vector<DWORD> Sleeps;

// "v41" is key 0x41 down, "^41" up; "e" marks the extended flag.
void RecordKey(BYTE vk, BYTE, DWORD flags) {
    char one[8];
    snprintf(one, sizeof one, "%s%02X%s", (flags & KEYEVENTF_KEYUP) ? "^" : "v", vk,
             (flags & KEYEVENTF_EXTENDEDKEY) ? "e" : "");
    if (!Events.empty()) Events += ' ';
    Events += one;
}

void RecordSleep(DWORD ms) { Sleeps.push_back(ms); }

class Keyboard : public ::testing::Test {
protected:
    void SetUp() override {
        ResetTestState();
        Events.clear();
        Sleeps.clear();
        SendKeyEvent = RecordKey;
        DesktopSleep = RecordSleep;
        HeldCtrl = HeldShift = HeldAlt = 0;
        PlaybackHook = nullptr;
        HookRunning = 0;
        LastWindow = nullptr;
    }
    // Runs one step of `action` with `text` and returns its result.
    int Run(const char* action, const std::string& text, const char* options = "") {
        std::string xml = "<ZantoRunner><step><action>" + std::string(action) + "</action><text>" + text +
                          "</text><options>" + options + "</options></step></ZantoRunner>";
        EXPECT_EQ(ReplaceSteps(xml), 1);
        return ActKeyboard(0, 0);
    }
};

struct NameCase {
    const char* text;
    int vk;
    int shift;
    int isName;
};

TEST_F(Keyboard, KeyNamesFollowTheLanguageWithItsSlips) {
    const NameCase cases[] = {
        {"{F12}", 0x7B, 0, 1},
        {"{f5}", 0x74, 0, 1},
        {"{F24}", 0x87, 0, 1},
        {"{F1}3", 0x7C, 0, 1},              // the number runs on past the brace: F13
        {"{F0}", 0xDB, 1, 0},               // no function key: a "{"
        {"{Delete}", 0xDB, 1, 0},           // only "{Del}" is a name
        {"{Del}", 0x2E, 0, 1},
        {"{Left Winkey}", 0x5B, 0, 1},      // at the end of the text ...
        {"{Left Winkey}x", 0xDB, 1, 0},     // ... and only there
        {"{Left Windows Key}x", 0x5B, 0, 1},
        {"{SPACE}", 0x20, 0, 1},
        {"{Space bar}", 0x20, 0, 1},
        {"{Spacebar}", 0x20, 0, 1},
        {"{spacious}", 0xDB, 1, 0},  // "{space" is compared over its six characters
        {"{Alt", 0x12, 0, 1},
        {"{Delay=250}", 0x00, 0, 1},
        {"{Volume_Up}", 0xAF, 0, 1},
        {"{Num7}", 0x67, 0, 1},
        {"{unknown}", 0xDB, 1, 0},
        {"a", 'A', 0, 0},
        {"Q", 'Q', 1, 0},
        {"7", '7', 0, 0},
        {"!", '1', 1, 0},
        {")", '0', 1, 0},
        {":", 0xBA, 1, 0},
        {";", 0xBA, 0, 0},
        {"\"", 0xDE, 1, 0},
        {"\n", 0x0D, 0, 0},
        {"\t", 0x09, 0, 0},
        {"\xE9", 0xE9, 0, 0},  // no key of its own: its byte
    };
    for (const NameCase& c : cases) {
        int32_t shift = 5, isName = 5;
        int vk = KeyNameToVk(c.text, &shift, 1, &isName) & 0xFF;
        EXPECT_EQ(vk, c.vk) << c.text;
        EXPECT_EQ(shift, c.shift) << c.text;
        EXPECT_EQ(isName, c.isName) << c.text;
    }
    // Without names only the first character counts, and isName is not touched.
    int32_t shift = 0, isName = 7;
    EXPECT_EQ(KeyNameToVk("{tab}", &shift, 0, &isName) & 0xFF, 0xDB);
    EXPECT_EQ(shift, 1);
    EXPECT_EQ(isName, 7);
}

TEST_F(Keyboard, PressKeySendsEachClassItsOwnEvents) {
    struct {
        int vk, shift, mode;
        const char* events;
    } cases[] = {
        {'A', 1, KEY_DOWN, "v10 v41"},
        {'A', 1, KEY_UP, "^41 ^10"},
        {'A', 0, KEY_DOWN, "v41"},
        {0x25, 0, KEY_DOWN, "v25e"},   // Left is extended
        {0x25, 1, KEY_DOWN, "v10 v25"},  // but not when wrapped in Shift
        {0x11, 1, KEY_UP, "^11e"},     // Ctrl ignores shift
        {0x5C, 0, KEY_DOWN, "v5C"},    // the right Windows key is not extended
        {0x12, 1, KEY_DOWN, "v12"},
        {0x1B, 0, KEY_UP, "^1B"},
        {0, 1, KEY_DOWN, ""},
    };
    for (const auto& c : cases) {
        Events.clear();
        PressKey(c.vk, c.shift, c.mode);
        EXPECT_EQ(Events, c.events) << c.vk;
    }
}

TEST_F(Keyboard, TypeTurnsTextIntoKeyEvents) {
    struct {
        const char* text;
        const char* options;
        const char* events;
    } cases[] = {
        {"aB", "", "v41 ^41 v10 v42 ^42 ^10"},
        {"a\r\nb", "", "v41 ^41 v0D ^0D v42 ^42"},              // a line break is one Enter
        {"a%r%nb", "", "v41 ^41 v0D ^0D v0D ^0D v42 ^42"},      // "%r%n" is two
        {"{Left}{F2}", "", "v25e ^25e v71 ^71"},
        {"{shiftdown}a{shiftup}", "", "v10 v41 ^41 ^10"},
        {"{ctrl}", "", "v11e ^11e"},
        {"{x}", "Format", "v10 vDB ^DB ^10 v58 ^58 v10 vDD ^DD ^10"},  // typed literally
        {"%%", "Format", "v10 v35 ^35 ^10 v10 v35 ^35 ^10"},
    };
    for (const auto& c : cases) {
        Events.clear();
        EXPECT_EQ(Run("Type", c.text, c.options), 1);
        EXPECT_EQ(Events, c.events) << c.text;
    }
    EXPECT_EQ(HeldShift, 0x10);  // noted for the run's end, never cleared
    EXPECT_EQ(HeldCtrl, 0x11);
    EXPECT_TRUE(Sleeps.empty());
}

TEST_F(Keyboard, OlderNamesOfTypeAndUnknownNamesPass) {
    EXPECT_EQ(Run("Simulate Keypress", "a"), 1);
    EXPECT_EQ(Run("Text + System Keys", "b"), 1);
    EXPECT_EQ(Events, "v41 ^41 v42 ^42");
    Events.clear();
    EXPECT_EQ(Run("Typewriter", "c"), 1);  // not "Type" as a whole name
    EXPECT_EQ(Events, "");
    EXPECT_EQ(Run("Unblock Input", ""), 1);  // a system without BlockInput has nothing to block
}

TEST_F(Keyboard, DelayTokensSleepWhereverTheirNumberStands) {
    EXPECT_EQ(Run("Type", "{Delay=250}x{Delay 30}{delay7}"), 1);
    EXPECT_EQ(Events, "v58 ^58");
    EXPECT_EQ(Sleeps, (std::vector<DWORD>{250, 30, 7}));
}

TEST_F(Keyboard, ManyKeysWaitForTheKeyboardBuffer) {
    std::string folder = LogIntoNewFolder("log.txt");
    struct {
        int keys;
        std::vector<DWORD> sleeps;
        const char* line;
    } cases[] = {
        {19, {}, nullptr},
        {20, {100}, nullptr},
        {120, {1000}, "\t'Simulate Keypress' extra duration for keyboard buffer: 1 second(s)\r\n"},
        {400, {2500}, "\t'Simulate Keypress' extra duration for keyboard buffer: 2 second(s)\r\n"},
    };
    for (const auto& c : cases) {
        Sleeps.clear();
        DeleteFileA((folder + "\\log.txt").c_str());
        EXPECT_EQ(Run("Type", std::string(c.keys, 'k')), 1);
        EXPECT_EQ(Sleeps, c.sleeps) << c.keys;
        std::string log = ReadWholeFile(folder + "\\log.txt");
        EXPECT_EQ(log, c.line ? c.line : "") << c.keys;
    }
}

TEST_F(Keyboard, ClipboardPasteRestoresTheOldText) {
    SetClipboardText("old", 3);
    EXPECT_EQ(Run("Text via Clipboard", "new %r%n"), 1);
    EXPECT_EQ(Events, "v11e v56 ^56 ^11e");
    EXPECT_EQ(Sleeps, (std::vector<DWORD>{500}));
    EXPECT_EQ(GetClipboardText(), "old");
}

TEST_F(Keyboard, DirectEntrySetsTheTextOfTheLastWindow) {
    HWND window = CreateWindowExA(0, "STATIC", "before", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(window);
    LastWindow = window;
    EXPECT_EQ(Run("Direct Window Entry", "after %r%n"), 1);
    char text[64];
    GetWindowTextA(window, text, sizeof text);
    EXPECT_STREQ(text, "after \r\n");
    EXPECT_TRUE(Sleeps.empty());
    DestroyWindow(window);
}

TEST_F(Keyboard, BufferedTypingFailsWithoutItsHook) {
    PlaybackHook = (HHOOK)(INT_PTR)1;
    EXPECT_EQ(Run("Buffered Virtual Keys", "x"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to start buffer hook");
    PlaybackHook = nullptr;
    // No main window to install it: nothing sets HookRunning.
    EXPECT_EQ(Run("Buffered Virtual Keys", "x"), 0);
    EXPECT_STREQ(StepFailureText, "Unable to start Windows hook procedure");
    EXPECT_EQ(Sleeps, (std::vector<DWORD>{300}));
}

// Plays the buffered hook's protocol by hand: "v41" for WM_KEYDOWN of 0x41,
// "^41" for WM_KEYUP, "c-23" for a WM_CHAR, "0" for an event with no message.
std::string PlayBuffered(const char* text, DWORD startedAgo) {
    SetTranslatedText(text);
    BufferPos = 0;
    BufferSubstate = 0;
    BufferStartTick = GetTickCount() - startedAgo;
    HookRunning = 1;
    std::string played;
    for (int i = 0; i < 100 && HookRunning; i++) {
        EVENTMSG event;
        BufferedTypeHook(HC_GETNEXT, 0, (LPARAM)&event);
        char one[16];
        if (event.message == WM_KEYDOWN || event.message == WM_KEYUP)
            snprintf(one, sizeof one, "%s%02X", event.message == WM_KEYDOWN ? "v" : "^", event.paramL);
        else if (event.message == WM_CHAR)
            snprintf(one, sizeof one, "c%d/%X", (int)event.paramL, event.paramH);
        else
            snprintf(one, sizeof one, "0");
        played += played.empty() ? one : std::string(" ") + one;
        BufferedTypeHook(HC_SKIP, 0, 0);
    }
    return played;
}

TEST_F(Keyboard, BufferedHookPlaysFiveEventsACharacter) {
    EXPECT_EQ(PlayBuffered("aB\xE9", 0), "v41 ^41 0 0 v10 v42 ^42 ^10 0 c-23/38");
    EXPECT_EQ(HookRunning, 0);
    EXPECT_EQ(BufferPos, 3);
    // "{tab}" has no name here: its characters are typed.
    EXPECT_EQ(PlayBuffered("{t", 0), "v10 vDB ^DB ^10 0 v54 ^54 0 0");
}

TEST_F(Keyboard, BufferedHookStopsAfterTwoSecondsWithTheCharacterInHand) {
    EXPECT_EQ(PlayBuffered("abc", 2500), "v41 ^41 0 0");
    EXPECT_EQ(BufferPos, 1);
    EXPECT_EQ(HookRunning, 0);
}

TEST_F(Keyboard, KeyDisplayNames) {
    struct {
        int vk;
        const char* name;
    } cases[] = {{0x1B, "Escape"}, {0x20, "Space"}, {0x12, "Menu"},   {0x5C, "Right WinKey"},
                 {0x75, "F6"},     {0x87, "F24"},   {'Q', "Q"},       {'4', "4"},
                 {0xBA, ""},       {0x6C, ""}};
    for (const auto& c : cases) {
        char name[32] = "junk";
        VkToKeyName(c.vk, name);
        EXPECT_STREQ(name, c.name) << c.vk;
    }
    VkToKeyName(0x1B, nullptr);  // nothing to write into: nothing done
    EXPECT_EQ(ShiftedChar('A', 0), 'a');
    EXPECT_EQ(ShiftedChar('1', 0), '1');
    EXPECT_EQ(ShiftedChar('a', 1), 'A');
    EXPECT_EQ(ShiftedChar('1', 1), '!');
    EXPECT_EQ(ShiftedChar('\\', 1), '|');
    EXPECT_EQ(ShiftedChar('1', 2), '1');
    EXPECT_EQ(ShiftedChar('a', 2), 'A');
    EXPECT_NE(strstr(KeyMenuText, "{Delay=250}\t"), nullptr);
}

}  // namespace

TEST(CharacterWithoutKey, IsFoundInTheCodePageAndInUtf8) {
    struct Case {
        const char* text;
        int used;
        int units;
        WCHAR first;
    } cases[] = {
        {"a", 0, 0, 0},                       // a key types it
        {"\xce\xa9x", 2, 1, 0x03A9},          // UTF-8 omega
        {"\xe2\x82\xac", 3, 1, 0x20AC},       // UTF-8 euro sign
        {"\xf0\x9f\x98\x80", 4, 2, 0xD83D},   // UTF-8 beyond the first plane: two units
        {"\xc0\x80", 1, 1, 0x00C0},           // an overlong form is no UTF-8: the code page's letter
        {"\xe9t\xe9", 1, 1, 0x00E9},          // the code page's e acute
    };
    for (const Case& c : cases) {
        WCHAR units[2] = {0, 0};
        int count = 0;
        EXPECT_EQ(CharacterWithoutKey(c.text, units, &count), c.used) << c.text;
        EXPECT_EQ(count, c.units) << c.text;
        if (c.units) {
            EXPECT_EQ(units[0], c.first) << c.text;
        }
    }
}
