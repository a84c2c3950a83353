// Bounded writes of text into fixed buffers, the only ones the program makes:
// a destination that is an array gives its own size (the compiler refuses a
// pointer there), and a pointer must come with the size of what it points to.
// Every result is terminated and cut at the buffer's end, never past it.
#pragma once

#include <stddef.h>

#include "base/printf.h"

// wsprintf's rules (at most 1024 characters), cut to the buffer.
int FormatIntoN(char* out, size_t size, const char* format, ...) ZR_PRINTF(3, 4);
// Copies, or appends to what `out` holds, as much as fits.
void CopyIntoN(char* out, size_t size, const char* text);
void AppendIntoN(char* out, size_t size, const char* text);

template <typename T, size_t N>
constexpr size_t ArraySize(T (&)[N]) {
    return N;
}

#define FormatInto(out, ...) FormatIntoN((out), ArraySize(out), __VA_ARGS__)
#define CopyInto(out, text) CopyIntoN((out), ArraySize(out), (text))
#define AppendInto(out, text) AppendIntoN((out), ArraySize(out), (text))
