// Number reading shared by the run engine.
#pragma once

// Reads a leading number: digits and "." (and "-" first), up to 32 characters
// of which the first 18 count. '1,000' reads as 1; an empty text gives 0.
double ParseFloat(const char* text);

// 1 when every character of `text` is in the set of `kind` (1 digits, 2 a
// number "0123456789., +-", 3 a formula, 4 operators); an empty text gives 1.
int IsTextOf(const char* text, int kind);
// Writes a value with as many decimals as it needs, without binary noise:
// 0.1 + 0.2 prints "0.3". `text` takes at least 80 bytes.
enum { NUMBER_TEXT_SIZE = 80 };  // the size of FormatNumber's `text` and CalcFormula's `result`
void FormatNumber(double value, char* text);
// Reads up to 31 hexadecimal characters, ignoring blanks, line ends and
// backslashes.
int ParseHex(const char* text);
// An integer from low to high, from the runtime's rand().
int Random(int low, int high);
// Seconds as a wait in milliseconds, for any input: nothing below zero (and
// for a text that is no number), at most 0xFFFFFFFE (not INFINITE) above.
unsigned long SecondsToMilliseconds(double seconds);
