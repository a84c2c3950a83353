// The native function bridge: a line of text such as
// 'MessageBox( 0, "message", "title", 64 )' parsed into up to 16 numbers and
// strings and called by name in a system library or the step's own.
#pragma once

#include <stdint.h>

enum : int32_t { NOT_RUN = -998877 };  // no call was made

// The function's 32-bit result, or NOT_RUN with the reason in
// StepFailureText. `library` may be empty.
int32_t NativeCall(const char* text, const char* library);
// Keeps only digits, ".", blanks and "+-*/^%)(|&~", in place.
void KeepFormulaCharacters(char* text);
// The handler of category 17: "Win32 API", "Call DLL Function" and
// "Post WM_COMMAND".
int ExternalAction(int tab, int step);
