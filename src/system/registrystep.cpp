// The registry actions: value 1 is the full path, and its last part the
// value's name. Failures pass the step without a word.
#include "system/registrystep.h"

#include <vector>

#include "base/settings.h"
#include "run/numbers.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"

HKEY RegistryRootOf(const std::string& fullPath, std::string* rest) {
    static const struct {
        const char* prefix;
        HKEY root;
    } roots[] = {{"HKEY_LOCAL_MACHINE\\", HKEY_LOCAL_MACHINE},
                 {"HKEY_CLASSES_ROOT\\", HKEY_CLASSES_ROOT},
                 {"HKEY_CURRENT_CONFIG\\", HKEY_CURRENT_CONFIG},
                 {"HKEY_CURRENT_USER\\", HKEY_CURRENT_USER},
                 {"HKEY_USERS\\", HKEY_USERS}};
    HKEY root = HKEY_CURRENT_USER;
    bool chosen = false;
    for (const auto& r : roots) {
        if (!chosen && ContainsNoCase(fullPath.c_str(), r.prefix)) {
            root = r.root;
            chosen = true;
        }
    }
    // Every prefix goes, wherever it stands.
    std::string path = fullPath;
    for (const auto& r : roots) {
        for (char* at = FindNoCase(path.c_str(), r.prefix); at; at = FindNoCase(path.c_str(), r.prefix))
            path.erase((size_t)(at - path.c_str()), strlen(r.prefix));
    }
    *rest = path;
    return root;
}

int RegistryStep(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.value[0], tab, step);
    std::string path;
    HKEY root = RegistryRootOf(TranslatedText, &path);
    if (ContainsNoCase(s.action, "Read")) {
        int size = ReadSetting(root, nullptr, -1, nullptr, "%s", path.c_str());
        std::vector<char> text((size_t)(size > 0 ? size : 0) + 256, 0);
        ReadSetting(root, text.data(), (int)text.size(), nullptr, "%s", path.c_str());
        SaveOutput(tab, step, text.data(), (long)strlen(text.data()), nullptr);
    } else if (ContainsNoCase(s.action, "Write")) {
        TranslateText(s.text, tab, step);
        char value[260];
        lstrcpynA(value, TranslatedText, sizeof value);
        // A number is kept as one: "007" stores 7.
        if (value[0] && IsTextOf(value, 1))
            WriteSetting(root, nullptr, ParseInt(value), nullptr, "%s", path.c_str());
        else
            WriteSetting(root, value, 0, nullptr, "%s", path.c_str());
    } else if (ContainsNoCase(s.action, "Copy")) {
        TranslateText(s.text, tab, step);
        char target[260];
        lstrcpynA(target, TranslatedText, sizeof target);
        std::string targetPath;
        HKEY targetRoot = RegistryRootOf(target, &targetPath);
        CopyRegTree(root, path.c_str(), targetRoot, targetPath.c_str());
    } else if (ContainsNoCase(s.action, "Delete")) {
        DeleteSetting(root, "%s", path.c_str());
    }
    return 1;
}
