// What a script file's bytes are in, and the way back: the reader decides it
// per file and the tab keeps it, so that a save writes the file the way it
// came (an old file byte for byte), and only a character that the file's
// page cannot hold makes it UTF-8.
#pragma once

#include <stddef.h>

#include <string>

// A tab's `encoding`: UTF-8 without or with the mark, or else the number of
// the legacy code page the file was in. A new tab's zero is UTF-8 without
// the mark.
enum { SCRIPT_UTF8 = 0, SCRIPT_UTF8_MARK = 1 };

// Decides the encoding of a file's bytes: a UTF-8 mark at its start, else the
// script (from its root tag `script` to the end of `file`) being well-formed
// UTF-8, else the machine's legacy page. Only the script is looked at, since
// a compiled EXE carries its script after a program's bytes.
int DetectScriptEncoding(const char* file, size_t fileLength, const char* script);
// Whether a file in `encoding` needs converting to be the program's text.
bool ScriptTextToProgramNeeded(int encoding);
// `length` bytes of a file in `encoding`, as the program's text.
std::string ScriptTextToProgram(const char* text, size_t length, int encoding);
// The program's text as a file in *encoding (the mark included), or, when
// the legacy page it names cannot hold every character, as UTF-8 without
// the mark; *encoding then says SCRIPT_UTF8 and *switched is set.
std::string ProgramTextToScript(const char* text, size_t length, int* encoding, bool* switched);
// A whole script file's bytes as the program's text, decided as the reader
// decides (for what looks at the file beside its loaded steps).
std::string ScriptFileAsProgramText(const std::string& file);
// The program's text as UTF-8, for what is always UTF-8 (the report, the
// script a compiled EXE carries).
std::string ProgramTextToUtf8(const std::string& text);
