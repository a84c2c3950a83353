#include "run/params.h"

#include <windows.h>

#include <vector>

#include "base/files.h"
#include "base/jsontext.h"
#include "base/settings.h"

namespace {

std::wstring Wide(const std::string& utf8) {
    if (utf8.empty()) return std::wstring();
    const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), (int)utf8.size(), nullptr, 0);
    std::wstring out((size_t)n, L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), (int)utf8.size(), &out[0], n);
    return out;
}

// Written through the wide registry calls, so that a text keeps letters the
// legacy code page does not have. The prefix is the command line's own, as
// for a %name=value word.
bool WriteVariable(const std::string& name, const std::string& value) {
    std::wstring key = L"SOFTWARE\\ZantoRunner\\UserVariables";
    if (SettingInt("LocalVariables")) {
        wchar_t prefix[32];
        wsprintfW(prefix, L"\\%li_1", (long)(INT_PTR)GetModuleHandleA(nullptr));
        key += prefix;
    }
    std::wstring valueName = Wide(name);
    // A backslash in a name makes a subkey, as everywhere a variable is kept.
    const size_t slash = valueName.rfind(L'\\');
    if (slash != std::wstring::npos) {
        key += L"\\" + valueName.substr(0, slash);
        valueName.erase(0, slash + 1);
    }
    HKEY k;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &k, nullptr) !=
        ERROR_SUCCESS)
        return false;
    LONG result;
    if (value.empty()) {
        result = RegDeleteValueW(k, valueName.c_str());
        if (result == ERROR_FILE_NOT_FOUND) result = ERROR_SUCCESS;
    } else {
        const std::wstring data = Wide(value);
        const DWORD type = data.find(L'%') != std::wstring::npos ? REG_EXPAND_SZ : REG_SZ;
        result = RegSetValueExW(k, valueName.c_str(), 0, type, (const BYTE*)data.c_str(),
                                (DWORD)((data.size() + 1) * sizeof(wchar_t)));
    }
    RegCloseKey(k);
    return result == ERROR_SUCCESS;
}

}  // namespace

bool SetVariablesFromJsonFile(const char* path, std::string& error) {
    const std::string where = std::string("The parameters file \"") + (path ? path : "") + "\"";
    if (!path || !*path || GetFileAttributesA(path) == INVALID_FILE_ATTRIBUTES ||
        (GetFileAttributesA(path) & FILE_ATTRIBUTE_DIRECTORY)) {
        error = where + " does not exist";
        return false;
    }
    const std::string text = ReadWholeFile(path);
    std::vector<JsonField> fields;
    std::string flaw;
    if (!ReadFlatJsonObject(text, fields, flaw)) {
        error = where + " is not a flat JSON object: " + flaw;
        return false;
    }
    for (const JsonField& f : fields) {
        std::string name = f.name;
        if (!name.empty() && name[0] == '%') name.erase(0, 1);
        if (name.empty() || name.size() > 62) {
            error = where + ": the name \"" + f.name + "\" is empty or longer than 62 characters";
            return false;
        }
        if (!WriteVariable(name, f.value)) {
            error = where + ": the variable \"" + name + "\" could not be written";
            return false;
        }
    }
    return true;
}
