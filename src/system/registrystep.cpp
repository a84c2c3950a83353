// The registry actions: value 1 is the full path, and its last part the
// value's name. Reading and writing pass the step whatever happens; a delete
// or a copy that would reach more than the user named is refused with words.
#include "base/text.h"
#include "system/registrystep.h"

#include <string.h>

#include <vector>

#include "base/registrycopy.h"
#include "base/settings.h"
#include "run/failure.h"
#include "run/numbers.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/handles.h"

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

bool NamesOnlyARoot(const std::string& rest) {
    // A root's name alone, long or short, with the backslash that makes it a
    // prefix left off: "HKCU" would otherwise be taken as a key of that name.
    static const char* const rootNames[] = {"HKEY_LOCAL_MACHINE", "HKLM", "HKEY_CLASSES_ROOT", "HKCR",
                                            "HKEY_CURRENT_CONFIG", "HKCC", "HKEY_CURRENT_USER", "HKCU",
                                            "HKEY_USERS", "HKU"};
    std::string trimmed = rest;
    trimmed.erase(0, trimmed.find_first_not_of(" \t"));
    while (!trimmed.empty() && (trimmed.back() == ' ' || trimmed.back() == '\t')) trimmed.pop_back();
    std::vector<std::string> parts = RegistryPathParts(trimmed);
    if (parts.empty()) return true;
    if (parts.size() > 1) return false;
    for (const char* name : rootNames)
        if (lstrcmpiA(parts[0].c_str(), name) == 0) return true;
    return false;
}

namespace {

// Whether the path `inner` is `outer` or lies below it, by whole components.
bool PathWithin(const std::string& inner, const std::string& outer) {
    const std::vector<std::string> in = RegistryPathParts(inner), out = RegistryPathParts(outer);
    if (out.empty() || in.size() < out.size()) return out.empty();
    for (size_t i = 0; i < out.size(); i++)
        if (lstrcmpiA(in[i].c_str(), out[i].c_str()) != 0) return false;
    return true;
}

// The registry's own name of root\path ("\REGISTRY\USER\S-1-5-...\Software\X"):
// the name of its longest part that exists, with the rest appended as given.
// Two spellings of one key (HKEY_CURRENT_USER and HKEY_USERS\<the user's id>)
// have one such name. Empty where the system does not tell it.
std::string ResolvedKeyPath(HKEY root, const std::string& path) {
    typedef LONG(NTAPI * QueryKeyProc)(HANDLE, int, void*, ULONG, ULONG*);
    static const QueryKeyProc queryKey =
        (QueryKeyProc)(void*)GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryKey");
    const int keyNameInformation = 3;
    if (!queryKey) return "";
    const std::vector<std::string> parts = RegistryPathParts(path);
    for (size_t known = parts.size(); known > 0; known--) {
        std::string head;
        for (size_t i = 0; i < known; i++) head += (i ? "\\" : "") + parts[i];
        AutoHKEY key;
        if (!(key.h = OpenRegistryPath(root, head, KEY_QUERY_VALUE))) continue;
        std::vector<BYTE> info(65536);
        ULONG got = 0;
        if (queryKey(key.h, keyNameInformation, info.data(), (ULONG)info.size(), &got) != 0) return "";
        ULONG bytes = 0;
        memcpy(&bytes, info.data(), sizeof bytes);
        const WCHAR* name = (const WCHAR*)(info.data() + sizeof bytes);
        const int wide = (int)(bytes / sizeof(WCHAR));
        const int length = WideCharToMultiByte(CP_ACP, 0, name, wide, nullptr, 0, nullptr, nullptr);
        std::string resolved((size_t)(length > 0 ? length : 0), 0);
        if (length > 0) WideCharToMultiByte(CP_ACP, 0, name, wide, &resolved[0], length, nullptr, nullptr);
        for (size_t i = known; i < parts.size(); i++) resolved += "\\" + parts[i];
        return resolved;
    }
    return "";
}

}  // namespace

bool KeyLiesWithin(HKEY innerRoot, const std::string& inner, HKEY outerRoot, const std::string& outer) {
    if (innerRoot == outerRoot) return PathWithin(inner, outer);
    const std::string in = ResolvedKeyPath(innerRoot, inner), out = ResolvedKeyPath(outerRoot, outer);
    return !in.empty() && !out.empty() && PathWithin(in, out);
}

int RegistryStep(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.value[0], tab, step);
    const std::string named = TranslatedText;
    std::string path;
    HKEY root = RegistryRootOf(named, &path);
    if (ContainsNoCase(s.action, "Read")) {
        int size = ReadSetting(root, nullptr, -1, nullptr, "%s", path.c_str());
        std::vector<char> text((size_t)(size > 0 ? size : 0) + 256, 0);
        ReadSetting(root, text.data(), (int)text.size(), nullptr, "%s", path.c_str());
        SaveOutput(tab, step, text.data(), (long)strlen(text.data()), nullptr);
    } else if (ContainsNoCase(s.action, "Write")) {
        TranslateText(s.text, tab, step);
        char value[260];
        CopyIntoN(value, sizeof value, TranslatedText);
        // A number is kept as one: "007" stores 7.
        if (value[0] && IsTextOf(value, 1))
            WriteSetting(root, nullptr, ParseInt(value), nullptr, "%s", path.c_str());
        else
            WriteSetting(root, value, 0, nullptr, "%s", path.c_str());
    } else if (ContainsNoCase(s.action, "Copy")) {
        TranslateText(s.text, tab, step);
        char target[260];
        CopyIntoN(target, sizeof target, TranslatedText);
        std::string targetPath;
        HKEY targetRoot = RegistryRootOf(target, &targetPath);
        if (NamesOnlyARoot(path))
            return FailStep("The source '%s' names a whole root; only a key below a root is copied",
                            named.c_str());
        if (NamesOnlyARoot(targetPath))
            return FailStep("The target '%s' names a whole root; a copy goes into a key below a root",
                            target);
        if (KeyLiesWithin(targetRoot, targetPath, root, path))
            return FailStep("The target '%s' is within '%s', the key being copied; nothing was written",
                            target, named.c_str());
        {
            AutoHKEY source;
            if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &source.h) != ERROR_SUCCESS)
                return FailStep("The key '%s' does not exist; nothing was copied", named.c_str());
        }
        if (!CopyRegTree(root, path.c_str(), targetRoot, targetPath.c_str()))
            return FailStep("Copying '%s' to '%s' failed; what the copy had written was taken back",
                            named.c_str(), target);
    } else if (ContainsNoCase(s.action, "Delete")) {
        if (NamesOnlyARoot(path))
            return FailStep("'%s' names a whole root; only a key or a value below a root is deleted",
                            named.c_str());
        DeleteSetting(root, "%s", path.c_str());
    }
    return 1;
}
