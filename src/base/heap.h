// Zero-filled global heap blocks with a known size, and the text helpers
// built on them: every layer allocates through these.
#pragma once

#include <stddef.h>

void* HeapAllocZero(size_t size);
void HeapFreeBlock(void* block);
size_t HeapBlockSize(const void* block);
// Allocates a text block able to hold `length` plus a margin (at least 256).
char* AllocText(size_t length);
// Resizes a block to `newSize` (at least 256) keeping its content, the new
// part zero-filled; in place for large blocks. On failure the old block is
// freed too and null returned.
void* GrowBlock(void* block, size_t newSize);
// Grows a heap text to hold `length` plus 2 bytes; a null text is allocated.
char* EnsureCapacity(char* text, size_t length);

// A null text reads as an empty one everywhere.
inline const char* TextOf(const char* t) { return t ? t : ""; }
