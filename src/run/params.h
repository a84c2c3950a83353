// "/params FILE.json": user variables from a JSON object, set as a
// %name=value word of the command line sets them.
#pragma once

#include <string>

// Sets every field of the file's object as a user variable: a text as it
// stands (any Unicode), a number as written, true and false as 1 and 0, null
// as empty (which removes the variable). A missing or unreadable file, a
// file that is no such object, or a nested value: false, with `error`
// naming the file and, for a flaw in it, its line and column.
bool SetVariablesFromJsonFile(const char* path, std::string& error);
