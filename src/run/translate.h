// Text translation: every text field of a step goes through TranslateText
// before an action uses it.
#pragma once

// The result of the last translation: one process-wide text, valid until the
// next call, so callers copy it at once.
extern char* TranslatedText;

// Expands a step's text. Until macros, variables and functions are built,
// the text comes back as it stands.
const char* TranslateText(const char* text, int tab, int step);
