// The press primitive: one virtual key down or up as platform key events.
#pragma once

#include <windows.h>

enum { KEY_DOWN = 1, KEY_UP = 2 };

// Presses (mode KEY_DOWN) or releases (KEY_UP) a key; `shift` wraps a plain
// key in the Shift key. A vk of 0 does nothing.
void PressKey(int vk, int shift, int mode);

// Ctrl down, the key down and up, Ctrl up: a paste is PressWithCtrl of "v".
void PressWithCtrl(int vk);

// Where the key events go: keybd_event, or a recorder in tests.
extern void (*SendKeyEvent)(BYTE vk, BYTE scan, DWORD flags);
