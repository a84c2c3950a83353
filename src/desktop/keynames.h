// The {key} text language: key names and characters to virtual keys and back.
#pragma once

#include <stdint.h>

// The virtual key of the character or {name} at `text`, inside a longer text.
// Returns 0 for a "{Delay" token. `shiftNeeded` (optional) is set to 1 when
// the character needs Shift. With `allowNames` set, `isName` (optional) says
// whether a {name} was recognised; with it clear, `isName` is not touched.
// Keys from 0x80 up come back as negative bytes: mask with 0xFF.
char KeyNameToVk(const char* text, int32_t* shiftNeeded, int allowNames, int32_t* isName);

// 1 for the keys that carry the extended-key flag.
int KeyIsExtended(int vk);

// The display name of a key, for prompts ("Escape", "F5", "A", ...); the
// empty string for a key without one. A null `out` does nothing.
enum { KEY_NAME_SIZE = 32 };  // the size of VkToKeyName's `out`
void VkToKeyName(int vk, char* out);

// The character Shift gives on a US keyboard (mode 1), without the symbol
// row (mode 2), or the lower-case letter (mode 0).
char ShiftedChar(char ch, int mode);

// The menu of keys offered beside a text field: "{name}\tcaption" pairs
// separated by "|", "-" for a separator.
extern const char KeyMenuText[];
