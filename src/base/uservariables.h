// Where user variables are kept: one value each under the settings root's
// "UserVariables" key, and an overflow file beside the program for a value
// the registry refused. The settings store clears them on a first start
// (ResetAllUserVariables); the run engine reads and writes them.
#pragma once

// The overflow file of a variable whose value the registry refused:
// the program's folder, the name and ".ZANTO_var", with every "%" removed.
void VariableFilePath(const char* name, char* buffer);
// ResetAllUserVariables (base/settings.h) deletes them all.
