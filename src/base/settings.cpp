// The settings helpers over the registry, the table of defaults and the
// migration of the keys of the earlier products.
#include "base/settings.h"
#include "base/text.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/registrycopy.h"
#include "base/registrykeys.h"
#include "base/uservariables.h"
#include "base/handles.h"

namespace {

HKEY RootOf(HKEY root) { return root ? root : HKEY_CURRENT_USER; }

// Formats a setting path and splits it at its last backslash. A format of 1023
// characters or more gives an empty path.
struct SettingPath {
    char key[1024];
    char value[1024];
};

void FormatPath(SettingPath& p, const char* format, va_list args) {
    char full[1025];  // wvsprintf writes at most 1024 characters and the terminator
    full[0] = 0;
    if (format && strlen(format) < 1023) wvsprintfA(full, format, args);
    char* slash = strrchr(full, '\\');
    if (slash) {
        *slash = 0;
        CopyInto(p.key, full);
        CopyInto(p.value, slash + 1);
    } else {
        p.key[0] = 0;  // a bare name is a value of the root
        CopyInto(p.value, full);
    }
}

}  // namespace

unsigned long RegistryReads;

namespace {

int ReadSettingV(HKEY root, char* text, int size, void* binary, const char* format,
                 va_list args) {
    if (text && size > 0) text[0] = 0;
    SettingPath p;
    FormatPath(p, format, args);
    RegistryReads++;
    HKEY key = KeptKey(RootOf(root), p.key, false);
    if (!key) return 0;
    // One query with a buffer that fits most values; a larger value is read
    // again at its size.
    DWORD type = 0, got = 1022;
    std::vector<char> data(1024, 0);
    LONG r = RegQueryValueExA(key, p.value, nullptr, &type, size == -1 ? nullptr : (BYTE*)data.data(), &got);
    if (KeyWasDeleted(r)) {
        ForgetKeys(RootOf(root), p.key);
        if (!(key = KeptKey(RootOf(root), p.key, false))) return 0;
        got = 1022;
        r = RegQueryValueExA(key, p.value, nullptr, &type, size == -1 ? nullptr : (BYTE*)data.data(), &got);
    }
    if (r == ERROR_MORE_DATA && size != -1) {
        data.assign(got + 256, 0);
        got = (DWORD)data.size() - 2;
        r = RegQueryValueExA(key, p.value, nullptr, &type, (BYTE*)data.data(), &got);
    }
    if (r != ERROR_SUCCESS) return 0;
    if (size == -1) return (int)got;
    int result = 0;
    if (type == REG_MULTI_SZ) {
        // Each zero between lines becomes CR LF; the list ends at a double zero.
        std::string joined;
        for (DWORD i = 0; i < got && data[i];) {
            size_t len = strlen(&data[i]);
            if (!joined.empty()) joined += "\r\n";
            joined.append(&data[i], len);
            i += (DWORD)len + 1;
        }
        data.assign(joined.begin(), joined.end());
        data.resize(joined.size() + 1, 0);
    }
    if (type == REG_DWORD) {
        DWORD v = 0;
        memcpy(&v, data.data(), sizeof v);
        result = (int)v;
        char dec[16];
        FormatInto(dec, "%d", result);
        if (text && size > 0) CopyIntoN(text, size, dec);
        return result;
    }
    if (type == REG_BINARY) {
        int n = (int)got < size ? (int)got : size;
        if (binary && n > 0) memcpy(binary, data.data(), (size_t)n);
        result = n;
    } else {
        result = atoi(data.data());
    }
    if (text && size > 0) CopyIntoN(text, size, data.data());
    return result;
}

}  // namespace

int ReadSetting(HKEY root, char* text, int size, void* binary, const char* pathFormat, ...) {
    va_list args;
    va_start(args, pathFormat);
    int r = ReadSettingV(root, text, size, binary, pathFormat, args);
    va_end(args);
    return r;
}

int WriteSetting(HKEY root, const char* text, int number, const void* binary,
                 const char* pathFormat, ...) {
    SettingPath p;
    va_list args;
    va_start(args, pathFormat);
    FormatPath(p, pathFormat, args);
    va_end(args);
    LONG r = ERROR_KEY_DELETED;
    for (int attempt = 0; attempt < 2 && KeyWasDeleted(r); attempt++) {
        if (attempt) ForgetKeys(RootOf(root), p.key);
        HKEY key = KeptKey(RootOf(root), p.key, true);
        if (!key) return 0;
        if (text) {
            DWORD type = strchr(text, '%') ? REG_EXPAND_SZ : REG_SZ;
            r = RegSetValueExA(key, p.value, 0, type, (const BYTE*)text, (DWORD)strlen(text) + 1);
        } else if (binary) {
            r = RegSetValueExA(key, p.value, 0, REG_BINARY, (const BYTE*)binary, (DWORD)number);
        } else {
            DWORD v = (DWORD)number;
            r = RegSetValueExA(key, p.value, 0, REG_DWORD, (const BYTE*)&v, sizeof v);
        }
    }
    return r == ERROR_SUCCESS ? 1 : 0;
}

void DeleteSubkeys(HKEY key) {
    char name[260];
    // Always take index 0: the list shrinks as subkeys go.
    for (;;) {
        DWORD len = sizeof name;
        if (RegEnumKeyExA(key, 0, name, &len, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        {
            AutoHKEY sub;
            if (RegOpenKeyExA(key, name, 0, KEY_ALL_ACCESS, &sub.h) == ERROR_SUCCESS)
                DeleteSubkeys(sub.h);
        }
        if (RegDeleteKeyA(key, name) != ERROR_SUCCESS) break;
    }
}

int DeleteSetting(HKEY root, const char* pathFormat, ...) {
    char full[1025];  // wvsprintf writes at most 1024 characters and the terminator
    full[0] = 0;
    va_list args;
    va_start(args, pathFormat);
    if (pathFormat && strlen(pathFormat) < 1023) wvsprintfA(full, pathFormat, args);
    va_end(args);
    HKEY r = RootOf(root);
    ForgetKeys(r, full);  // kept handles below a deleted key would be stale
    char parent[1024];
    CopyInto(parent, full);
    char* slash = strrchr(parent, '\\');
    const char* value = full;
    if (slash) {
        *slash = 0;
        value = full + (slash - parent) + 1;
    } else {
        parent[0] = 0;
    }
    // A key goes with its subkeys; else the value of that name goes from its
    // own key, and from nowhere else: not from the key itself, nor from the
    // root (a missing path once took the root's value of its last name).
    {
        AutoHKEY key;
        if (RegOpenKeyExA(r, full, 0, KEY_READ, &key.h) == ERROR_SUCCESS) {
            RegCloseKey(key.h);
            key.h = nullptr;
            return DeleteRegTree(r, full);
        }
    }
    AutoHKEY key;
    if (RegOpenKeyExA(r, parent, 0, KEY_SET_VALUE, &key.h) != ERROR_SUCCESS) return 0;
    return RegDeleteValueA(key.h, value) == ERROR_SUCCESS ? 1 : 0;
}

int EnumRegValue(HKEY root, const char* keyPath, int index, char* name) {
    name[0] = 0;
    AutoHKEY key;
    if (RegOpenKeyExA(RootOf(root), keyPath, 0, KEY_READ, &key.h) != ERROR_SUCCESS) return 0;
    DWORD len = 260, size = 0;
    if (RegEnumValueA(key.h, (DWORD)index, name, &len, nullptr, nullptr, nullptr, &size) !=
        ERROR_SUCCESS) {
        name[0] = 0;
        return 0;
    }
    return (int)(size > len ? size : len);
}

int SettingInt(const char* name) {
    return ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "%s", name);
}

void SettingText(const char* name, char* buffer, int size) {
    ReadSetting(nullptr, buffer, size, nullptr, ZR_ROOT "%s", name);
}

namespace {

struct DefaultSetting {
    const char* name;
    const char* text;  // null for a number
    int number;
};

// The defaults, in the order they are written.
const DefaultSetting kDefaults[] = {
    {"StopKey", nullptr, 19},
    {"InterStepDelay", nullptr, 0},
    {"RecordingSlowRatio", nullptr, 4},
    {"AlwaysShowSysVars", nullptr, 1},
    {"MaxUndo", nullptr, 500},
    {"EncodeXML", nullptr, 1},
    {"ShowFullFilesInTabs", nullptr, 0},
    {"MemoryAllocationChunk", nullptr, 100},
    {"InsertNewStep", nullptr, 0},
    {"ShowSamples", nullptr, 1},
    {"Hints", nullptr, 1},
    {"HiliteRunningStep", nullptr, 1},
    {"OnTop", nullptr, 0},
    {"RestartLog", nullptr, 1},
    {"Find", nullptr, 0},
    {"AutoReload", nullptr, 0},
    {"RunAtLeastOnce", nullptr, 0},
    {"MinimizeFindWin", nullptr, 0},
    {"MinimizeRecord", nullptr, 0},
    {"MinimizeStart", nullptr, 0},
    {"ReturnWhenDone", nullptr, 0},
    {"ShowTips", nullptr, 1},
    {"ShowEditTips", nullptr, 1},
    {"LocalVariables", nullptr, 0},
    {"PromptSave", nullptr, 1},
    {"Colors\\CommentItalic", nullptr, 1},
    {"Palettes\\MainList\\GridStyle", nullptr, 2},
    {"Palettes\\MainList\\GridStyle_AltColor", nullptr, 0xFFF0F0},
    {"Colors\\SkipItalic", nullptr, 0},
    {"Colors\\BreakFill", nullptr, 0x463A96},
    {"Colors\\BreakText", nullptr, 0xFFFFFF},
    {"Colors\\SkipFill", nullptr, 0xF0F0F0},
    {"Colors\\SkipText", nullptr, 0x808080},
    {"Colors\\CommentFill", nullptr, 0xC0FFFF},
    {"Colors\\CommentText", nullptr, 0x00A000},
    {"Colors\\OnFailureLables", nullptr, 0x008080},
    {"Palettes\\Properties\\MaxFieldSize", nullptr, 15},
    {"LogLevel", nullptr, 0},
    {"Progress", nullptr, 0},
    {"Compile\\Optimize", nullptr, 0},
    {"Palettes\\Output\\Font", "Courier New", 0},
    {"Palettes\\Output\\FontSize", nullptr, 8},
    {"Palettes\\Output\\Font_Italic", nullptr, 0},
    {"Palettes\\Output\\Font_Weight", nullptr, 400},
    {"DisableScreenSaver", nullptr, 0},
    {"ShowSplash", nullptr, 1},
    {"ResetUserVariables", nullptr, 0},
    {"Speed", nullptr, 5},
    {"MultipleWindowError", nullptr, 1},
    {"DefaultFailureMode", "Display Error and Stop", 0},
    {"Logfile", "C:\\ZantoRunnerLog.txt", 0},
    {"Palettes\\MainList\\IndentSize", nullptr, 6},
    {"Palettes\\MainList\\IndentAllColumns", nullptr, 0},
    {"DefaultSpeed", nullptr, 10},
    {"DefaultReturnCode", nullptr, 0},
    {"SlowPixelScan", nullptr, 0},
    {"Report\\Show1", nullptr, 1},
    {"Report\\Show2", nullptr, 1},
    {"Report\\Show3", nullptr, 1},
    {"Report\\Show4", nullptr, 1},
    {"Report\\Show5", nullptr, 1},
    {"Report\\Show6", nullptr, 1},
    {"Report\\Show7", nullptr, 1},
    {"Report\\MaxTextLen", nullptr, 50},
    {"Debug\\PauseOnFailure", nullptr, 1},
};

// Values of the earlier product that moved to a new place.
const struct {
    const char* oldName;
    const char* newName;
} kMovedValues[] = {
    {"CommentFill", "Colors\\CommentFill"},
    {"BreakFill", "Colors\\BreakFill"},
    {"BreakText", "Colors\\BreakText"},
    {"CommentItalic", "Colors\\CommentItalic"},
    {"CommentText", "Colors\\CommentText"},
    {"GridStyle", "Palettes\\MainList\\GridStyle"},
    {"GridStyle_AltColor", "Palettes\\MainList\\GridStyle_AltColor"},
    {"Hilite", "HiliteRunningStep"},
    {"IndentAllColumns", "Palettes\\MainList\\IndentAllColumns"},
    {"IndentSize", "Palettes\\MainList\\IndentSize"},
    {"SkipFill", "Colors\\SkipFill"},
    {"SkipItalic", "Colors\\SkipItalic"},
    {"SkipText", "Colors\\SkipText"},
};

#define OLD_ROOT "SOFTWARE\\ZantoTask"

// Copies one old value, whatever its type, to its new place and deletes it.
void MoveValue(const char* oldName, const char* newName) {
    AutoHKEY from;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, OLD_ROOT, 0, KEY_ALL_ACCESS, &from.h) != ERROR_SUCCESS)
        return;
    DWORD type = 0, size = 0;
    if (RegQueryValueExA(from.h, oldName, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return;
    std::vector<BYTE> data(size + 2, 0);
    if (RegQueryValueExA(from.h, oldName, nullptr, &type, data.data(), &size) != ERROR_SUCCESS)
        return;
    char path[512];
    FormatInto(path, ZR_ROOT "%s", newName);
    char* slash = strrchr(path, '\\');
    *slash = 0;
    AutoHKEY to;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &to.h,
                        nullptr) != ERROR_SUCCESS)
        return;
    if (RegSetValueExA(to.h, slash + 1, 0, type, data.data(), size) == ERROR_SUCCESS)
        RegDeleteValueA(from.h, oldName);
}

}  // namespace

void LoadSettings(int reset) {
    // The oldest product's key moves to the older one's place first, so that
    // the value moves below see one tree.
    if (ReadSetting(nullptr, nullptr, -1, nullptr, "SOFTWARE\\ZantoTaskPro\\Right") ||
        ReadSetting(nullptr, nullptr, -1, nullptr, "SOFTWARE\\ZantoTaskPro\\RunAtLeastOnce")) {
        const HKEY roots[] = {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE};
        for (HKEY root : roots) {
            if (CopyRegTree(root, "SOFTWARE\\ZantoTaskPro", root, OLD_ROOT))
                DeleteSetting(root, "SOFTWARE\\ZantoTaskPro");
        }
    }
    if (ReadSetting(nullptr, nullptr, -1, nullptr, OLD_ROOT "\\SuppressLogo")) {
        WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "ShowSplash");
        DeleteSetting(nullptr, OLD_ROOT "\\SuppressLogo");
    }
    if (ReadSetting(nullptr, nullptr, -1, nullptr, OLD_ROOT "\\GlobalVariables") &&
        ReadSetting(nullptr, nullptr, 0, nullptr, OLD_ROOT "\\GlobalVariables") == 0) {
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "LocalVariables");
        DeleteSetting(nullptr, OLD_ROOT "\\GlobalVariables");
    }
    for (const auto& m : kMovedValues) MoveValue(m.oldName, m.newName);

    int firstStart = ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "DefaultSpeed") == 0;
    for (const auto& d : kDefaults) {
        if (reset || ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "%s", d.name) == 0)
            WriteSetting(nullptr, d.text, d.number, nullptr, ZR_ROOT "%s", d.name);
    }
    // A key code of 0 cannot be kept: the stop key would never fire.
    if (SettingInt("StopKey") == 0) WriteSetting(nullptr, nullptr, 19, nullptr, ZR_ROOT "StopKey");

    if (reset || firstStart) {
        const char* placement[] = {"Left", "Top", "Right", "Bottom"};
        for (const char* name : placement) DeleteSetting(nullptr, ZR_ROOT "%s", name);
        ResetAllUserVariables();
        for (int i = 1; i <= 9; i++) DeleteSetting(nullptr, ZR_ROOT "RecentFile%d", i);
    }
}

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

bool IsFavoriteAction(const char* name) {
    return name && name[0] && ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "Favorites\\%s", name) > 0;
}

int WriteFavoriteAction(const char* name, int category, int image) {
    if (!name || !name[0] || category < 1) return 0;
    return WriteSetting(nullptr, nullptr, category * 1000 + image, nullptr, ZR_ROOT "Favorites\\%s", name);
}

int DeleteFavoriteAction(const char* name) {
    if (!name || !name[0]) return 0;
    return DeleteSetting(nullptr, ZR_ROOT "Favorites\\%s", name);
}
