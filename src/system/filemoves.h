// Copy and Move/Rename of files and folders, for the file actions. Before
// anything is written, both names are resolved to the objects they name;
// a copy or move that would land on its own source or inside it is refused
// with words, and both stay as they were. A move renames wherever the
// system can (within one volume), which cannot lose the file; only across
// volumes is it a copy, checked against the source, before the source goes.
#pragma once

#include <windows.h>

#include <string>

// `source` and `destination` as the step resolved them. 1, or 0 with the
// reason in StepFailureText.
int CopyOrMoveFileChecked(const char* source, const char* destination, bool move);
int CopyOrMoveFolderChecked(const char* source, const char* destination, bool move);

// Whether every file below the folder `source` has a counterpart of the
// same size below `copy` (and every folder one); the first that has none
// goes into `missing` (optional).
bool FolderCopyIsWhole(const char* source, const char* copy, char* missing, int missingSize);

// The system's words for an error, without the line end they come with, to
// stand inside a failure's own words.
std::string SystemWords(DWORD error);
