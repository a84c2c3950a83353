#include "base/uservariables.h"
#include "base/text.h"

#include <windows.h>
#include <string.h>

#include "base/handles.h"
#include "base/settings.h"

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

void (*UserVariableChanged)(const char* name, const char* value, bool deleted);

void ResetAllUserVariables() {
    DeleteSetting(nullptr, ZR_ROOT "UserVariables");
    if (UserVariableChanged) UserVariableChanged(nullptr, nullptr, true);
    char pattern[MAX_PATH];
    VariableFilePath("*", pattern);
    char folder[MAX_PATH];
    CopyInto(folder, pattern);
    if (char* slash = strrchr(folder, '\\')) slash[1] = 0;
    WIN32_FIND_DATAA found;
    AutoFindHandle find;
    find.h = FindFirstFileA(pattern, &found);
    if (find.h == INVALID_HANDLE_VALUE) return;
    do {
        char path[MAX_PATH * 2];
        FormatInto(path, "%s%s", folder, found.cFileName);
        DeleteFileA(path);
    } while (FindNextFileA(find.h, &found));
}
