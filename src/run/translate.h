// Text translation: every text field of a step goes through TranslateText
// just before an action uses it. It is a fixed sequence of substring
// replacements over one buffer, and the order of that sequence decides what
// shadows what.
#pragma once

#include <windows.h>

// The result of the last translation: one process-wide text, valid until the
// next call, so callers copy it at once and never hand it back in.
extern char* TranslatedText;

// Expands macros, variables and embedded functions of a step's text. Returns
// the result's length plus 1, or 0 for a null or empty input.
int TranslateText(const char* text, int tab, int step);

// Makes `text` the translation result as it stands, for actions that skip
// the translation ("No Formatting").
void SetTranslatedText(const char* text);

// The clock of the date macros; tests put a fixed one here.
extern void (*TranslateClock)(SYSTEMTIME* now);
