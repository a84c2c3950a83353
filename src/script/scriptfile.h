// Reading and writing scripts: the .zxm file, the clipboard form of steps,
// and the script at the end of a compiled EXE all share one <step> text.
#pragma once

#include <string>

#include <stddef.h>

// Parses the steps in `xml` into the current tab; `insertAt` negative appends.
// Returns how many were read; the caller adds that to the step count.
int ReadSteps(char* xml, int insertAt);
// Reads a file into a tab; returns the step count, or 0.
int OpenScript(const char* path, int tab);
// Builds the document: mode 1 the selected steps, mode 2 all steps of the
// current tab. The text belongs to the writer and lives until its next use.
const char* WriteSteps(int mode, int withLastRun, int maxLength);
// All steps of the current tab as WriteSteps gives them in its mode 2, less
// the document round them (the XML line, the header lines and the root tag):
// for a caller that writes its own root (the compiled EXE, the report).
std::string WriteStepRecords(int withLastRun, int maxLength);
// Writes a tab's file; on failure copies the system's message to errorText
// (if given) and returns 0.
enum { SAVE_ERROR_SIZE = 512 };  // the size of SaveScript's `errorText`
int SaveScript(int tab, char* errorText);
// The word of a last_run code, as in the report and the step list.
const char* LastRunWord(int code);
// Maps an old action name to the current one (done for every file).
void MapOldActionName(char* action);
