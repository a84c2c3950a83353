// The press primitive: one virtual key down or up as platform key events.
#pragma once

#include <windows.h>

enum { KEY_DOWN = 1, KEY_UP = 2 };

// Presses (mode KEY_DOWN) or releases (KEY_UP) a key; `shift` wraps a plain
// key in the Shift key. A vk of 0 does nothing.
void PressKey(int vk, int shift, int mode);

// Ctrl down, the key down and up, Ctrl up: a paste is PressWithCtrl of "v".
void PressWithCtrl(int vk);

// Types one UTF-16 unit as a Unicode character event (KEYEVENTF_UNICODE):
// for a character that no key of the layout produces.
void TypeUnicodeCharacter(WCHAR unit);

// The character a text of the system's code page, or of UTF-8, begins with,
// when it has no key of the current layout: its UTF-16 units in `units` (one
// or two), the return the count of bytes it takes, 0 for a character a key
// produces (typed as keys as ever). A valid UTF-8 sequence of two to four
// bytes is one character; any other byte from 0x80 up is a character of the
// code page when VkKeyScanA has no key for it.
int CharacterWithoutKey(const char* text, WCHAR units[2], int* unitCount);

// Where the key events go: keybd_event, or a recorder in tests.
extern void (*SendKeyEvent)(BYTE vk, BYTE scan, DWORD flags);
