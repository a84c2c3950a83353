// Reading a file by lines, as the file actions and the File Line loop do.
#pragma once

// Line `lineNumber` (from 1) of a file into `out` (at most outSize bytes, and
// 1023 characters). Returns the line's length plus 1, or 0 with no such line.
int ReadFileLine(const char* path, int lineNumber, char* out, int outSize);
// The size of a file in bytes; 0 when it cannot be read.
unsigned long GetFileSizeByName(const char* path);
// Counts lines as scripts always have: a CR or LF and the byte after it make
// one break, and a last line is counted after the last break too.
long CountFileLines(const char* path);
