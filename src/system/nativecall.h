// The native function bridge: a line of text such as
// 'MessageBox( 0, "message", "title", 64 )' parsed into up to 16 numbers and
// strings and called by name in a system library or the step's own.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Calls the function; true with its result (as wide as a pointer), or false
// with the reason in StepFailureText when no call was made. `library` may be
// empty.
bool NativeCall(const char* text, const char* library, intptr_t* result);
// The result as the step saves it: a 32-bit value as "%d" (an int -1 gives
// "-1"), a wider one (an address, a handle on x86_64) in full.
void BridgeResultText(intptr_t result, char* text, size_t size);
// Keeps only digits, ".", blanks and "+-*/^%)(|&~", in place.
void KeepFormulaCharacters(char* text);
// The handler of category 17: "Win32 API", "Call DLL Function" and
// "Post WM_COMMAND".
int ExternalAction(int tab, int step);
