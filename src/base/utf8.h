// Characters in the program's texts. Every text the program holds is in the
// process's ANSI code page: UTF-8 where the manifest's request for it is
// honoured (Windows 10 1903 and later, Wine 7.7 and later), the machine's
// legacy page (1252, 932, ...) on older systems. A character is then one to
// four bytes, and no cut, count or position may split one.
#pragma once

#include <stddef.h>

#include <string>

// The code page of the program's texts (GetACP, read once): 65001 under the
// manifest.
unsigned ProgramCodePage();
bool ProgramIsUtf8();
// For tests: texts taken as being in `codePage` from now on (0: GetACP again).
void SetProgramCodePage(unsigned codePage);
// The machine's legacy ANSI code page, which GetACP no longer names once the
// program runs in UTF-8: the one old files and old programs' texts are in.
unsigned LegacyCodePage();

// Whether the bytes are well-formed UTF-8 (no overlong forms, surrogates or
// values above U+10FFFF).
bool IsUtf8(const char* text, size_t length);

// The largest cut at or before `at` that ends on a character boundary of the
// program's code page: a character that the first `at` bytes hold only in
// part is left out whole. Only those bytes are read. A byte that cannot
// start a character is taken as one on its own.
size_t CharBoundary(const char* text, size_t at);
// At most `most` bytes of a text, never a part of a character: what a
// message shows of a long name (a precision such as "%.200s" can cut a
// character in two, and the wsprintf behind the bounded formats has no "*").
std::string TextCut(const char* text, size_t most);
// The number of characters in `length` bytes of text (a character outside
// the BMP counts as one). In a single-byte page this is `length`.
size_t CharCount(const char* text, size_t length);
// The byte offset after the first `chars` characters, at most `length`.
size_t CharOffset(const char* text, size_t length, size_t chars);
// The number of bytes of the character at the start of `text` (at least 1
// for a text that is not empty, at most what is left of `length`).
size_t CharBytes(const char* text, size_t length);

// Decodes the UTF-8 character at text[*at] and moves *at past it; a byte that
// is not part of a well-formed character gives U+FFFD and moves one byte.
unsigned DecodeUtf8(const char* text, size_t length, size_t* at);

// Converts between code pages (65001 for UTF-8). `lost` (if given) is set
// when a character has no form in `to` and was replaced.
std::string ConvertText(const char* text, size_t length, unsigned from, unsigned to, bool* lost);
// The program's text with each character beyond ASCII as its UTF-8 bytes,
// percent-encoded ("Zürich" is "Z%C3%BCrich"), as addresses carry them; the
// ASCII bytes stay as they are.
std::string PercentEncodeBeyondAscii(const char* text, size_t length);
// The program's text in UTF-16, and back.
std::wstring WideFromProgram(const char* text, size_t length);
std::string ProgramFromWide(const wchar_t* text, size_t length);
