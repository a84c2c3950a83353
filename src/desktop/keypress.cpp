// Key events by class: toggles and the plain keys carry their extended flag,
// Alt goes with scan code 0, and the rest may be wrapped in Shift.
#include "desktop/keypress.h"

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
