// File helpers that every layer shares.
#pragma once

// Creates a folder with all its missing parents; 1 when it exists afterwards.
int CreateFolderPath(const char* path);

#include <stddef.h>

#include <string>

// A file's whole content; "" when it cannot be read.
std::string ReadWholeFile(const char* path);

// Whether `name` (one file name, no folder) matches `pattern` of "*" (any
// run of characters) and "?" (one character), letters A-Z in either case.
// As in the system's own patterns, a final ".*" also takes a name with no
// extension ("*.*" matches every name). The system's search also matches
// the 8.3 short name ("*.doc" finds "a.docx" as "A~1.DOC"); this test sees
// the long name only, so an action that acts on what a search finds tests
// each name here first.
bool NameMatchesPattern(const char* name, const char* pattern);
// Whether the text holds "*" or "?".
bool HasWildcards(const char* text);

// A path the system can take whole (shorter than MAX_PATH). A longer one is
// never cut to fit: it would name another file.
bool PathFits(const char* path);
// The words of a step that refuses such a path, naming it, into `text`.
void PathTooLongText(const char* path, char* text, size_t size);

// Writes every byte or fails: a short write (a full disk) is a failure too,
// with GetLastError set (ERROR_DISK_FULL when the system gave no reason).
bool WriteAll(void* file, const void* data, size_t length);

// Saves never truncate first: new content goes to a temporary file beside
// the target, is flushed, and then takes the target's place in one step, so
// a write that fails midway (a full disk, a path cut short) leaves the old
// file as it was.

// A new, empty file in the folder of `path` (made if missing when
// `makeFolder`), named so that no other writer takes it; "" when the folder
// takes none.
std::string TemporaryBeside(const char* path, bool makeFolder);
// Puts the finished `temporary` in the place of `target` in one step; on
// failure `target` is untouched, and the caller removes `temporary`.
bool ReplaceWithFile(const char* temporary, const char* target);
// The whole new content of `path`, written and put in place as above. On
// failure the old file stays, nothing is left behind, and GetLastError says why.
bool WriteFileReplacing(const char* path, const void* data, size_t length, bool makeFolder);
