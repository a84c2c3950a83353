// Where user variables are kept: one value each under the settings root's
// "UserVariables" key, and an overflow file beside the program for a value
// the registry refused. The settings store clears them on a first start
// (ResetAllUserVariables); the run engine reads and writes them.
#pragma once

// The overflow file of a variable whose value the registry refused:
// the program's folder, the name and ".ZANTO_var", with every "%" removed.
void VariableFilePath(const char* name, char* buffer);
// Deletes that file, and only when it lies in the program's folder: a name
// holding "..\\" must not reach a file elsewhere.
void DeleteVariableFile(const char* name);
// ResetAllUserVariables (base/settings.h) deletes them all.
// Told of each variable a run saves (`deleted` when it was removed) and, with
// a null name, of a reset of them all; the editor keeps its Variables
// palette up to date through it. Null: nobody listens. Called on the thread
// that saves, so a listener reaches its windows only by sending messages.
extern void (*UserVariableChanged)(const char* name, const char* value, bool deleted);
