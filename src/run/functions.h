// Category 16, "Functions": one text at a time, the result to the step's output.
#pragma once

#include <string>

int RunFunction(int tab, int step);

// Scrambles a text with a key, in place; its own inverse. Never yields a
// zero byte: a byte equal to the key byte becomes 0x7F and back.
void XorText(std::string& text, const std::string& key);
// A number by a print format ("%.2f", "%x") or a picture of "#", "," and ".".
std::string FormatPicture(double value, const char* format);
// Thousands separators, walking left from the point; a "0" ahead of the place
// keeps the count running, so "10000" becomes "1,0000", as it always did.
void InsertThousands(std::string& text);
// A number in English words; `cheque` tells the fraction as "and NN/100".
std::string NumberToWords(const char* text, bool cheque);
