// Header texts of a mail in any language (RFC 2047): a subject or a name
// with a character outside ASCII goes out as "=?UTF-8?B?...?=" words, and
// such words (B or Q, UTF-8 or the machine's legacy page) are read back.
#pragma once

#include <string>

// Whether every byte is 7-bit ASCII.
bool IsAsciiText(const std::string& text);
// The program's text as a header value: unchanged when it is ASCII, else as
// encoded words of at most 75 characters, never splitting a character, on
// lines folded with CR LF and a blank.
std::string EncodeHeaderWords(const std::string& text);
// A header value with its encoded words decoded, as the program's text.
std::string DecodeHeaderWords(const std::string& value);
