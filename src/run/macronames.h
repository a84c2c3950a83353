// The texts that translation understands, in three groups: "text\tcaption"
// pairs separated by "|"; "-" is a separator and a text without a tab a
// heading.
#pragma once

extern const char MacroNamesRunTime[];
extern const char MacroNamesDateTime[];
extern const char MacroNamesSystem[];
