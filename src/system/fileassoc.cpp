#include "system/fileassoc.h"
#include "base/text.h"

#include <windows.h>
#include <shlobj.h>

#include <string>

#include "base/settings.h"

void RegisterFileType(const char* extension, const char* program, const char* description, int iconIndex,
                      int verbs) {
    std::string ext = extension ? extension : "";
    if (ext.empty() || ext[0] != '.') ext.insert(0, 1, '.');
    // An older "Run Hidden" verb, in each spelling it may have been written in.
    for (const char* key : {"SOFTWARE\\Classes\\ZantoRunner.Document\\shell\\Run Hidden\\command",
                            "SOFTWARE\\Classes\\ZantoRunner.Document\\shell\\Run Hidden"}) {
        std::string k = key;
        for (const std::string& spelling : {k, "\\" + k, k + "\\", "\\" + k + "\\"})
            DeleteSetting(HKEY_LOCAL_MACHINE, "%s", spelling.c_str());
    }
    char type[300];
    FormatInto(type, "%s File", description);
    WriteSetting(HKEY_CLASSES_ROOT, type, 0, nullptr, "%s\\", ext.c_str());
    WriteSetting(HKEY_CLASSES_ROOT, "", 0, nullptr, "%s\\ShellNew\\NULLFile", ext.c_str());
    WriteSetting(HKEY_CLASSES_ROOT, type, 0, nullptr, "%s\\", type);
    char icon[MAX_PATH + 16];
    FormatInto(icon, "\"%s\",%d", program, iconIndex);
    WriteSetting(HKEY_CLASSES_ROOT, icon, 0, nullptr, "%s\\DefaultIcon\\", type);
    static const struct {
        int bit;
        const char* verb;
        const char* caption;
        const char* option;  // the switch between the program and the file
    } verbTable[] = {
        {VERB_OPEN, "Open", "&Open", ""},
        {VERB_EDIT, "Edit", "&Edit", " /e"},
        {VERB_RUN, "Run", "&Run", " /r"},
        {VERB_RUN_VISIBLE, "Run in ZantoRunner", "Run in &ZantoRunner", " /v"},
    };
    for (const auto& v : verbTable) {
        if (!(verbs & v.bit)) continue;
        WriteSetting(HKEY_CLASSES_ROOT, v.caption, 0, nullptr, "%s\\shell\\%s\\", type, v.verb);
        char command[MAX_PATH + 32];
        FormatInto(command, "\"%s\"%s \"%%1\"", program, v.option);
        WriteSetting(HKEY_CLASSES_ROOT, command, 0, nullptr, "%s\\shell\\%s\\command\\", type, v.verb);
    }
    SHChangeNotify(0x8000000, 0, nullptr, nullptr);
}
