// Key events by class: toggles and the plain keys carry their extended flag,
// Alt goes with scan code 0, and the rest may be wrapped in Shift.
#include "desktop/keypress.h"

#include <string.h>

#include "base/utf8.h"
#include "desktop/keynames.h"

namespace {

void KeybdEvent(BYTE vk, BYTE scan, DWORD flags) { keybd_event(vk, scan, flags, 0); }

bool IsLetterOrDigit(int vk) { return (vk >= 'A' && vk <= 'Z') || (vk >= '0' && vk <= '9'); }

// Backspace, Caps Lock, Escape, Num Lock and Scroll Lock once needed their
// keyboard-state byte flipped by hand on Windows 9x; no supported system
// does, so they go as plain keys.
bool IsToggle(int vk) { return vk == 0x08 || vk == 0x14 || vk == 0x1B || vk == 0x90 || vk == 0x91; }
bool IsPlain(int vk) { return vk == 0x11 || vk == 0x5B || vk == 0x5C || vk == 0x5D; }

}  // namespace

void (*SendKeyEvent)(BYTE vk, BYTE scan, DWORD flags) = KeybdEvent;

void PressKey(int vk, int shift, int mode) {
    vk &= 0xFF;
    if (!vk) return;
    const BYTE scan = (BYTE)MapVirtualKeyA((UINT)vk, 0);
    const DWORD up = mode == KEY_UP ? KEYEVENTF_KEYUP : 0;
    if (vk == VK_MENU) {
        SendKeyEvent(VK_MENU, 0, up);
        return;
    }
    if (IsToggle(vk) || IsPlain(vk) || (!shift && !IsLetterOrDigit(vk))) {
        SendKeyEvent((BYTE)vk, scan, (KeyIsExtended(vk) ? KEYEVENTF_EXTENDEDKEY : 0) | up);
        return;
    }
    const BYTE shiftScan = (BYTE)MapVirtualKeyA(VK_SHIFT, 0);
    if (shift && mode != KEY_UP) SendKeyEvent(VK_SHIFT, shiftScan, 0);
    SendKeyEvent((BYTE)vk, scan, up);
    if (shift && mode == KEY_UP) SendKeyEvent(VK_SHIFT, shiftScan, KEYEVENTF_KEYUP);
}

void PressWithCtrl(int vk) {
    PressKey(VK_CONTROL, 0, KEY_DOWN);
    PressKey(vk, 0, KEY_DOWN);
    PressKey(vk, 0, KEY_UP);
    PressKey(VK_CONTROL, 0, KEY_UP);
}

void TypeUnicodeCharacter(WCHAR unit) {
    INPUT input[2];
    memset(input, 0, sizeof input);
    for (INPUT& i : input) {
        i.type = INPUT_KEYBOARD;
        i.ki.wScan = unit;
        i.ki.dwFlags = KEYEVENTF_UNICODE;
    }
    input[1].ki.dwFlags |= KEYEVENTF_KEYUP;
    SendInput(2, input, sizeof *input);
}

int CharacterWithoutKey(const char* text, WCHAR units[2], int* unitCount) {
    *unitCount = 0;
    const unsigned char* b = (const unsigned char*)text;
    if (!b || b[0] < 0x80) return 0;
    // A UTF-8 sequence: a lead byte and its continuation bytes, the shortest
    // form only, up to U+10FFFF.
    int length = b[0] >= 0xC2 && b[0] <= 0xDF ? 2 : b[0] >= 0xE0 && b[0] <= 0xEF ? 3 : b[0] >= 0xF0 && b[0] <= 0xF4 ? 4 : 0;
    for (int k = 1; k < length; k++)
        if ((b[k] & 0xC0) != 0x80) length = 0;
    if (length) {
        unsigned long code = b[0] & (0x7F >> length);
        for (int k = 1; k < length; k++) code = (code << 6) | (b[k] & 0x3F);
        const unsigned long smallest[5] = {0, 0, 0x80, 0x800, 0x10000};
        if (code >= smallest[length] && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF)) {
            if (code >= 0x10000) {
                units[0] = (WCHAR)(0xD800 + ((code - 0x10000) >> 10));
                units[1] = (WCHAR)(0xDC00 + ((code - 0x10000) & 0x3FF));
                *unitCount = 2;
            } else {
                units[0] = (WCHAR)code;
                *unitCount = 1;
            }
            return length;
        }
    }
    if (VkKeyScanA((CHAR)b[0]) != -1) return 0;  // a key of the layout types it
    // A byte that is no UTF-8 is read in the machine's legacy page, the one
    // such a byte comes from (the program's own page is UTF-8 under its
    // manifest, where a lone byte means nothing).
    if (!MultiByteToWideChar(ProgramIsUtf8() ? LegacyCodePage() : CP_ACP, 0, text, 1, units, 1)) return 0;
    *unitCount = 1;
    return 1;
}
