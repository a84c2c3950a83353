// The clipboard as text.
#pragma once

#include <stddef.h>

#include <string>

// Puts `length` bytes of text on the clipboard (as CF_UNICODETEXT). A clipboard that
// cannot be opened is not reported.
void SetClipboardText(const char* text, size_t length);
// The clipboard's text, or "" when there is none or it cannot be opened.
std::string GetClipboardText();
