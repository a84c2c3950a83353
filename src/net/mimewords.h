// Header texts of a mail in any language (RFC 2047): a subject or a name
// with a character outside ASCII goes out as "=?UTF-8?B?...?=" words, and
// such words (B or Q, UTF-8 or the machine's legacy page) are read back.
#pragma once

#include <string>
#include <vector>

// Whether every byte is 7-bit ASCII.
bool IsAsciiText(const std::string& text);
// The program's text as a header value: unchanged when it is ASCII, else as
// encoded words of at most 75 characters, never splitting a character, on
// lines folded with CR LF and a blank.
std::string EncodeHeaderWords(const std::string& text);
// A header value with its encoded words decoded, as the program's text.
std::string DecodeHeaderWords(const std::string& value);

// A From or To header's value: each entry of the list (split at commas and
// semicolons) whose display name holds more than ASCII gets that name as
// encoded words, and its <address> stays as written; every other entry, and
// an all-ASCII list, stays exactly as typed.
std::string EncodeAddressHeader(const std::string& list);
// The mail addresses of a list for the envelope (MAIL FROM, RCPT TO): an
// entry with an <address> gives what stands in the brackets, so its display
// name is not taken for an address; any other entry is split at blanks,
// tabs and line ends, each word an address, as lists always were.
std::vector<std::string> EnvelopeAddresses(const std::string& list);
