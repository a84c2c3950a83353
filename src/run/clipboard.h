// The clipboard as text.
#pragma once

#include <stddef.h>

// Puts `length` bytes of text on the clipboard (CF_TEXT). A clipboard that
// cannot be opened is not reported.
void SetClipboardText(const char* text, size_t length);
