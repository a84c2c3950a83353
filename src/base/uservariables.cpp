#include "base/uservariables.h"
#include "base/fileidentity.h"
#include "base/text.h"

#include <windows.h>
#include <string.h>

void VariableFilePath(const char* name, char* buffer) {
    char full[MAX_PATH * 2];
    GetModuleFileNameA(nullptr, full, MAX_PATH);
    if (char* slash = strrchr(full, '\\')) slash[1] = 0;
    strncat(full, name, MAX_PATH - 12);
    AppendInto(full, ".ZANTO_var");
    int n = 0;
    for (const char* p = full; *p && n < MAX_PATH - 1; p++)
        if (*p != '%') buffer[n++] = *p;
    buffer[n] = 0;
}

void DeleteVariableFile(const char* name) {
    char path[MAX_PATH + 2];
    VariableFilePath(name, path);
    char folder[MAX_PATH + 2];
    VariableFilePath("", folder);  // the program's folder and ".ZANTO_var"
    if (char* slash = strrchr(folder, '\\')) *slash = 0;
    if (PathWithinFolder(path, folder)) DeleteFileA(path);
}

void (*UserVariableChanged)(const char* name, const char* value, bool deleted);
