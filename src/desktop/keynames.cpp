// Key names of the {key} language, in the order scripts have always relied on:
// the first name that matches wins, so the order of the tables is part of the
// language.
#include "desktop/keynames.h"
#include "base/text.h"

#include <windows.h>
#include <string.h>

#include "base/words.h"

namespace {

// Compares the first `length` characters of both texts, each cut at 255, as
// whole strings without regard to case. A name longer than its own text (the
// "{Left Winkey}" slip) matches only a text that ends right after it.
bool SameStart(const char* text, const char* name, size_t length) {
    if (length > 254) length = 254;
    char a[256], b[256];
    CopyIntoN(a, (int)length + 1, text);
    CopyIntoN(b, (int)length + 1, name);
    return lstrcmpiA(a, b) == 0;
}

struct KeyName {
    const char* name;
    unsigned char vk;
    unsigned char length;  // characters compared; 0 means the name's own length
};

// Complete names, closing brace included.
const KeyName CompleteNames[] = {
    {"{NumLock}", 0x90, 0},
    {"{ScrollLock}", 0x91, 0},
    {"{Right Winkey}", 0x5C, 0},
    {"{Right Windows Key}", 0x5C, 0},
    {"{winkeyr}", 0x5C, 0},
    {"{Left Winkey}", 0x5B, 18},  // compared over the length of "{Left Windows Key}"
    {"{Left Windows Key}", 0x5B, 0},
    {"{Windows Key}", 0x5B, 0},
    {"{winkeyl}", 0x5B, 0},
    {"{winkey}", 0x5B, 0},
    {"{help}", 0x2F, 0},
    {"{backspace}", 0x08, 0},
    {"{return}", 0x0D, 0},
    {"{enter}", 0x0D, 0},
    {"{tab}", 0x09, 0},
    {"{Pause}", 0x13, 0},
    {"{escape}", 0x1B, 0},
    {"{esc}", 0x1B, 0},
    {"{Page Up}", 0x21, 0},
    {"{PgUp}", 0x21, 0},
    {"{Pg Up}", 0x21, 0},
    {"{pageup}", 0x21, 0},
    {"{Page Down}", 0x22, 0},
    {"{PgDn}", 0x22, 0},
    {"{Pg Dn}", 0x22, 0},
    {"{pagedown}", 0x22, 0},
    {"{End}", 0x23, 0},
    {"{Home}", 0x24, 0},
    {"{Left}", 0x25, 0},
    {"{Up}", 0x26, 0},
    {"{Right}", 0x27, 0},
    {"{Down}", 0x28, 0},
    {"{Insert}", 0x2D, 0},
    {"{Ins}", 0x2D, 0},
    {"{Del}", 0x2E, 0},
    {"{Prt}", 0x2C, 0},
    {"{Print}", 0x2C, 0},
    {"{Print Screen}", 0x2C, 0},
    {"{CapsLock}", 0x14, 0},
    {"{caps}", 0x14, 0},
    {"{Cap}", 0x14, 0},
    {"{Num0}", 0x60, 0},
    {"{Num1}", 0x61, 0},
    {"{Num2}", 0x62, 0},
    {"{Num3}", 0x63, 0},
    {"{Num4}", 0x64, 0},
    {"{Num5}", 0x65, 0},
    {"{Num6}", 0x66, 0},
    {"{Num7}", 0x67, 0},
    {"{Num8}", 0x68, 0},
    {"{Num9}", 0x69, 0},
    {"{Num*}", 0x6A, 0},
    {"{Num+}", 0x6B, 0},
    {"{add}", 0x6B, 0},
    {"{NumSep}", 0x6C, 0},
    {"{Num-}", 0x6D, 0},
    {"{subtract}", 0x6D, 0},
    {"{Num.}", 0x6E, 0},
    {"{decimal}", 0x6E, 0},
    {"{Num/}", 0x6F, 0},
    {"{divide}", 0x6F, 0},
    {"{appkey}", 0x5D, 0},
    {"{Application Key}", 0x5D, 0},
};

// Name beginnings: anything may follow up to the "}". A vk of 0 is the delay
// token.
const KeyName NameBeginnings[] = {
    {"{space", 0x20, 0},
    {"{shift", 0x10, 0},
    {"{control", 0x11, 0},
    {"{ctrl", 0x11, 0},
    {"{Alt", 0x12, 0},
    {"{Delay", 0x00, 0},
    {"{Volume U", 0xAF, 0},
    {"{Volume_U", 0xAF, 0},
    {"{Volume D", 0xAE, 0},
    {"{Volume_D", 0xAE, 0},
    {"{Volume M", 0xAD, 0},
    {"{Volume_M", 0xAD, 0},
    {"{Next T", 0xB0, 0},
    {"{Previous T", 0xB1, 0},
    {"{Media Stop", 0xB2, 0},
    {"{Stop Player", 0xB2, 0},
    {"{Media Play/Pause", 0xB3, 0},
    {"{Browser Back", 0xA6, 0},
    {"{Browser Forward", 0xA7, 0},
    {"{Browser Refresh", 0xA8, 0},
    {"{Browser Stop", 0xA9, 0},
    {"{Browser Search", 0xAA, 0},
    {"{Browser Favorites", 0xAB, 0},
    {"{Browser Home", 0xAC, 0},
    {"{Launch Email", 0xB4, 0},
    {"{Sleep", 0x5F, 0},
    {"{App1", 0xB6, 0},
    {"{App2", 0xB7, 0},
    {"{xbutton1", 0x05, 0},
    {"{xbutton2", 0x06, 0},
};

bool FindName(const KeyName* table, size_t count, const char* text, char* vk) {
    for (size_t i = 0; i < count; i++) {
        const KeyName& k = table[i];
        if (SameStart(text, k.name, k.length ? k.length : strlen(k.name))) {
            *vk = (char)k.vk;
            return true;
        }
    }
    return false;
}

// The US keyboard's shifted symbols and the key each sits on.
struct SymbolKey {
    char plain, shifted;
    unsigned char vk;
};
const SymbolKey SymbolKeys[] = {
    {';', ':', 0xBA}, {'=', '+', 0xBB}, {',', '<', 0xBC}, {'-', '_', 0xBD}, {'.', '>', 0xBE}, {'/', '?', 0xBF},
    {'`', '~', 0xC0}, {'[', '{', 0xDB}, {'\\', '|', 0xDC}, {']', '}', 0xDD}, {'\'', '"', 0xDE},
};
const char ShiftedDigits[] = ")!@#$%^&*(";  // what Shift gives on 0 to 9

char SingleCharacter(char c, int32_t* shiftNeeded) {
    if (c >= 'A' && c <= 'Z') {
        if (shiftNeeded) *shiftNeeded = 1;
        return c;
    }
    if (c >= 'a' && c <= 'z') return (char)(c - 'a' + 'A');
    if (c >= '0' && c <= '9') return c;
    if (c == '\t') return 0x09;
    if (c == '\n' || c == '\r') return 0x0D;
    if (c == ' ') return 0x20;
    if (const char* d = c ? strchr(ShiftedDigits, c) : nullptr) {
        if (shiftNeeded) *shiftNeeded = 1;
        return (char)('0' + (d - ShiftedDigits));
    }
    for (const SymbolKey& k : SymbolKeys) {
        if (c == k.plain || c == k.shifted) {
            if (shiftNeeded && c == k.shifted) *shiftNeeded = 1;
            return (char)k.vk;
        }
    }
    return c;
}

}  // namespace

char KeyNameToVk(const char* text, int32_t* shiftNeeded, int allowNames, int32_t* isName) {
    if (shiftNeeded) *shiftNeeded = 0;
    if (!text) return 0;
    if (allowNames) {
        if (isName) *isName = 1;
        // {F1} to {F24}: the number is read from the digit to the end of the
        // whole text, so "{F1}3" is F13, as scripts have always had it.
        if (text[0] == '{' && (text[1] == 'F' || text[1] == 'f') && text[2] >= '1' && text[2] <= '9' &&
            (text[3] == '}' || (text[3] && text[4] == '}')))
            return (char)(0x6F + ParseInt(text + 2));
        char vk;
        if (FindName(CompleteNames, sizeof CompleteNames / sizeof *CompleteNames, text, &vk)) return vk;
        if (FindName(NameBeginnings, sizeof NameBeginnings / sizeof *NameBeginnings, text, &vk)) return vk;
        if (isName) *isName = 0;
    }
    return SingleCharacter(text[0], shiftNeeded);
}

int KeyIsExtended(int vk) {
    // Deliberately not 0x5C, the right Windows key.
    return vk == 0x11 || (vk >= 0x21 && vk <= 0x28) || vk == 0x2C || vk == 0x2D || vk == 0x2E || vk == 0x5B ||
           vk == 0x5D;
}

namespace {

struct DisplayName {
    const char* name;
    unsigned char vk;
};
const DisplayName DisplayNames[] = {
    {"Escape", 0x1B}, {"Return", 0x0D}, {"Control", 0x11}, {"Space", 0x20}, {"Tab", 0x09},
    {"Shift", 0x10}, {"Caps Lock", 0x14}, {"Space", 0x20}, {"Pg Up", 0x21}, {"Pg Dn", 0x22},
    {"End", 0x23}, {"Home", 0x24}, {"Left", 0x25}, {"Up", 0x26}, {"Right", 0x27},
    {"Down", 0x28}, {"Insert", 0x2D}, {"Backspace", 0x08}, {"Delete", 0x2E}, {"Num 0", 0x60},
    {"Num 1", 0x61}, {"Num 2", 0x62}, {"Num 3", 0x63}, {"Num 4", 0x64}, {"Num 5", 0x65},
    {"Num 6", 0x66}, {"Num 7", 0x67}, {"Num 8", 0x68}, {"Num 9", 0x69}, {"Num *", 0x6A},
    {"Num +", 0x6B}, {"Num -", 0x6D}, {"Num .", 0x6E}, {"Num /", 0x6F}, {"NumLock", 0x90},
    {"Scroll", 0x91}, {"Pause", 0x13}, {"Menu", 0x12}, {"Print Screen", 0x2C}, {"Left WinKey", 0x5B},
    {"Right WinKey", 0x5C}, {"AppKey", 0x5D},
};

}  // namespace

void VkToKeyName(int vk, char* out) {
    if (!out) return;
    out[0] = 0;
    for (const DisplayName& d : DisplayNames) {
        if (d.vk == vk) {
            CopyIntoN(out, KEY_NAME_SIZE, d.name);
            return;
        }
    }
    if (vk >= 0x70 && vk <= 0x87) {
        FormatIntoN(out, KEY_NAME_SIZE, "F%d", vk - 0x6F);
        return;
    }
    if ((vk >= 'A' && vk <= 'Z') || (vk >= '0' && vk <= '9')) {
        char c = (char)vk;
        if ((GetKeyState(VK_SHIFT) & 0x8000) && !(GetKeyState(VK_CONTROL) & 0x8000) &&
            !(GetKeyState(VK_MENU) & 0x8000))
            c = ShiftedChar(c, 1);
        out[0] = c;
        out[1] = 0;
    }
}

char ShiftedChar(char ch, int mode) {
    if (mode == 0) return ch >= 'A' && ch <= 'Z' ? (char)(ch - 'A' + 'a') : ch;
    if (ch >= 'a' && ch <= 'z') return (char)(ch - 'a' + 'A');
    if (mode == 2) return ch;
    if (ch >= '0' && ch <= '9') return ShiftedDigits[ch - '0'];
    for (const SymbolKey& k : SymbolKeys)
        if (ch == k.plain) return k.shifted;
    return ch;
}

const char KeyMenuText[] =
    "{Alt}\tAlt|{AltDown}\tAlt Down|{AltUp}\tAlt Up|{Ctrl}\tCtrl|{CtrlDown}\tCtrl Down|{CtrlUp}\tCtrl Up|"
    "{Shift}\tShift|{ShiftDown}\tShift Down|{ShiftUp}\tShift Up|-|{Esc}\tEscape|{Space}\tSpace|{Tab}\tTab|"
    "{Enter}\tEnter|{Backspace}\tBackspace|{Ins}\tInsert|{Del}\tDelete|{Pause}\tPause|{PgDn}\tPage Down|"
    "{PgUp}\tPage Up|{End}\tEnd|{Home}\tHome|{Left}\tLeft Arrow|{Right}\tRight Arrow|{Up}\tUp Arrow|"
    "{Down}\tDown Arrow|{Caps}\tCaps Lock|{NumLock}\tNum Lock|{ScrollLock}\tScroll Lock|{Winkey}\tWindows Key|"
    "{Appkey}\tApplication Key|{Delay=250}\tDelay 250 ms|-|FUNCTION KEYS|"
    "{F1}\tF1|{F2}\tF2|{F3}\tF3|{F4}\tF4|{F5}\tF5|{F6}\tF6|{F7}\tF7|{F8}\tF8|{F9}\tF9|{F10}\tF10|{F11}\tF11|"
    "{F12}\tF12|{F13}\tF13|{F14}\tF14|{F15}\tF15|{F16}\tF16|{F17}\tF17|{F18}\tF18|{F19}\tF19|{F20}\tF20|"
    "{F21}\tF21|{F22}\tF22|{F23}\tF23|{F24}\tF24|-|NUMBER KEYPAD|"
    "{Num0}\tNum 0|{Num1}\tNum 1|{Num2}\tNum 2|{Num3}\tNum 3|{Num4}\tNum 4|{Num5}\tNum 5|{Num6}\tNum 6|"
    "{Num7}\tNum 7|{Num8}\tNum 8|{Num9}\tNum 9|{Num*}\tNum *|{Num/}\tNum /|{Num+}\tNum +|{Num-}\tNum -|"
    "{Num.}\tNum .|{Num/}\tNum /|{NumSep}\tNum Separator|-|MEDIA COMMANDS|"
    "{Volume Up}\tVolume Up|{Volume Down}\tVolume Down|{Volume Mute}\tVolume Mute|{Next Track}\tNext Track|"
    "{Previous Track}\tPrevious Track|{Stop Player}\tStop Player|{Media Play/Pause}\tPlay/Pause|"
    "{Browser Back}\tBrowser Back|{Browser Forward}\tBrowser Forward|{Browser Refresh}\tBrowser Refresh|"
    "{Browser Stop}\tBrowser Stop|{Browser Search}\tBrowser Search|{Browser Favorites}\tBrowser Favorites|"
    "{Browser Home}\tBrowser Home|{Launch Email}\tLaunch Email|{Sleep Mode}\tSleep Mode";
