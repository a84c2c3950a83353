// Small text helpers shared by the whole program: case-insensitive search,
// option lists and the one number reader.
#pragma once

#include <stddef.h>

#include <string>

// A letter A-Z in lower case, any other byte as it is: the case rule of every
// case-insensitive compare here (no locale, so a name matches the same way
// on every machine).
inline char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? (char)(c + 32) : c; }

// The case-insensitive substring test used for nearly every name test.
bool ContainsNoCase(const char* text, const char* what);
// Case-insensitive strstr; null when absent.
char* FindNoCase(const char* text, const char* what);
// The first `c` in `text`, or null (at the end of the text, or for c 0).
// Sixteen bytes at a time: the C library's strchr and strstr under Wine walk
// byte by byte, and strstr builds a table for every call.
const char* FindChar(const char* text, char c);
// strlen, sixteen bytes at a time, for whole scripts and documents.
size_t TextLength(const char* text);
// strstr: the first place of `what` in `text`, case as it stands.
const char* FindExact(const char* text, const char* what);
// Removes blanks (spaces and tabs) from both ends, in place.
void TrimSpaces(char* text);
// Adds (without a blank) or removes one word of a comma-separated list, in a
// buffer of 260 bytes.
enum { FIELD_OPTIONS_SIZE = 260 };  // the options field SetOption works in
void SetOption(char* options, const char* word, int add);
// Collects the digits and minus signs of a text (at most 31) and reads them as
// a decimal integer; "0x" followed by a digit reads hexadecimal.
int ParseInt(const char* text);
// Replaces every occurrence of `from` by `to` in place; the replacement is
// searched again from its own start, so "&amp;amp;" decodes to "&".
// `from` must begin with a character found nowhere else in it (as "&amp;"
// does), and `to` be no longer; one pass over the text.
void ReplaceAllInPlace(char* text, const char* from, const char* to);
