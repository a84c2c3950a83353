// Whether two spellings of a path name one object on disk. Before anything
// writes, moves or deletes a user's file it asks here, by identity (volume
// serial and file index), not by spelling: case, ".\", "..\", doubled or
// forward slashes, 8.3 short names and trailing dots all name the same file.
#pragma once

#include <string>

// The path as the system resolves it (GetFullPathNameA: ".", "..", doubled
// and forward slashes, trailing dots and blanks), without a trailing
// backslash except after a drive; "" when it cannot be had.
std::string ResolvedPath(const char* path);

// 1 when both paths exist and are one file or one folder (same volume serial
// and file index); 0 otherwise, also when either is missing.
bool SameDiskObject(const char* a, const char* b);

// 1 when `inner` is the folder `outer` itself or lies somewhere below it,
// also when `inner` or some of its lower parts do not exist yet: its nearest
// existing ancestor is compared with `outer` by identity, so a spelling
// cannot hide it.
bool PathWithinFolder(const char* inner, const char* outer);

// The last part of the existing `path` as the disk keeps it: its long name
// in its stored case ("A~1.DOC" gives "a.docx", "C:\DATA\A.TXT" gives
// "a.txt"); "" when nothing is there, or for a drive's root.
std::string StoredName(const char* path);
