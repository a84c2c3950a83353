#include "products/compile.h"
#include "base/text.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "desktop/pause.h"
#include "desktop/popups.h"
#include "base/fileidentity.h"
#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "resources/resource.h"
#include "base/log.h"
#include "base/handles.h"
#include "script/fileencoding.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "base/words.h"
#include "system/processes.h"

namespace {

void ClosePopup() {
    if (PopupWindow) DestroyWindow(PopupWindow);
}

// The template beside the program: its path with ".EXE" replaced.
std::string TemplatePath(bool optimize) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string path = self;
    if (char* exe = FindNoCase(path.c_str(), ".EXE")) path.replace((size_t)(exe - path.c_str()), 4, optimize ? "A.LIB" : "B.LIB");
    return path;
}

std::vector<char> ReadAll(HANDLE file) {
    DWORD size = GetFileSize(file, nullptr);
    std::vector<char> data(size == INVALID_FILE_SIZE ? 0 : size);
    DWORD got = 0;
    if (!data.empty()) ReadFile(file, data.data(), size, &got, nullptr);
    data.resize(got);
    return data;
}

// Writes `text` as wide characters over the value that stands `offset` bytes
// behind the end of `key`, never longer than the value already there.
void WriteValueInPlace(std::vector<char>& block, const char* key, size_t offset, const char* text) {
    std::wstring wide;
    for (const char* k = key; *k; k++) wide += (wchar_t)(unsigned char)*k;
    const size_t bytes = wide.size() * 2;
    for (size_t i = 0; i + bytes + offset + 2 <= block.size(); i += 2) {
        if (memcmp(&block[i], wide.data(), bytes) != 0) continue;
        char* value = &block[i + bytes + offset];
        size_t room = 0;
        while (value + room * 2 + 1 < block.data() + block.size() && (value[room * 2] || value[room * 2 + 1]))
            room++;
        if (room > 259) room = 259;
        size_t n = 0;
        for (; n < room && text[n]; n++) {
            value[n * 2] = text[n];
            value[n * 2 + 1] = 0;
        }
        // The rest of the old text is cleared; its end stays where it was.
        for (size_t k = n; k < room; k++) value[k * 2] = value[k * 2 + 1] = 0;
        return;
    }
}

}  // namespace

bool CompileOutputRefused(const char* outputPath, char* why, size_t size) {
    if (why && size) why[0] = 0;
    if (!outputPath || !*outputPath) return false;
    // By identity, so that no other spelling of these files (case, ".\",
    // a short name) slips past: a compile deletes its output first.
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    const char* what = nullptr;
    if (SameDiskObject(outputPath, self))
        what = "is ZantoRunner's own program file";
    else if (SameDiskObject(outputPath, TemplatePath(false).c_str()) ||
             SameDiskObject(outputPath, TemplatePath(true).c_str()))
        what = "is the runtime template that a compile copies from";
    else if (SameDiskObject(outputPath, ScriptStore.tab[ScriptStore.currentTab].path))
        what = "is the script being compiled";
    if (!what) return false;
    if (why && size)
        FormatIntoN(why, size, "The output \"%s\" %s; it is left as it is.\n\nChoose another name for the EXE.",
                    outputPath, what);
    return true;
}

int CompileExe(const char* outputPath, const char* iconPath, int optimize) {
    const TabStore& t = ScriptStore.tab[ScriptStore.currentTab];
    if (!outputPath || !*outputPath || t.count < 1 || !t.steps) {
        LogPrintf(OutputEdit, "Error -1: [%s] [%s] [%d]\r\n", outputPath ? outputPath : "", iconPath ? iconPath : "",
                  optimize);
        return -1;
    }
    // An output that is one of the compile's own sources is never deleted:
    // it counts as an old output that cannot be replaced.
    char why[MAX_PATH + 200];
    if (CompileOutputRefused(outputPath, why, sizeof why)) {
        LogPrintf(OutputEdit, "Error -6: %s\r\n", why);
        return -6;
    }
    ShowPopup(0, 0, 0, 0, 0, 0, 0, "Compiling '%s'...", outputPath);
    DesktopSleep(500);
    const std::string source = TemplatePath(optimize != 0);
    if (GetFileAttributesA(source.c_str()) == INVALID_FILE_ATTRIBUTES) {
        ClosePopup();
        RunMessageBox(("Unable to find required file for compile\n\n" + source).c_str(), "ZantoRunner Error",
                      MB_ICONERROR);
        return -5;
    }
    if (GetFileAttributesA(outputPath) != INVALID_FILE_ATTRIBUTES && !DeleteFileA(outputPath)) {
        ClosePopup();
        return -6;
    }
    if (!CopyFileA(source.c_str(), outputPath, FALSE)) {
        ClosePopup();
        return -7;
    }
    {
        // Give the image back its first two bytes.
        AutoCloseHandle file(CreateFileA(outputPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file.ok()) {
            std::vector<char> data = ReadAll(file.h);
            data.insert(data.begin(), {'M', 'Z'});
            SetFilePointer(file.h, 0, nullptr, FILE_BEGIN);
            if (!WriteAll(file.h, data.data(), data.size())) return -8;
        }
    }
    if (!optimize) {
        char version[64] = "", copyright[260] = "", description[260] = "";
        SettingText("Compile\\Version", version, sizeof version);
        SettingText("Compile\\Copyright", copyright, sizeof copyright);
        SettingText("Compile\\Description", description, sizeof description);
        int minor = 0;
        if (char* dot = strchr(version, '.')) {
            minor = ParseInt(dot + 1);
            *dot = 0;
        }
        const int major = ParseInt(version);
        if (major || minor || copyright[0] || description[0])
            SetVersionResource(outputPath, copyright, description, major, minor);
        if (iconPath && *iconPath) ReplaceIcon(outputPath, iconPath);
    }
    // The carried script is UTF-8 whatever the code page it was made in, as
    // a new script file is; the runtime's reader finds it so.
    std::string script = ProgramTextToUtf8(WriteStepRecords(0, 0));
    AutoCloseHandle file(CreateFileA(outputPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) {
        ClosePopup();
        return 1;  // a file without its script, as it always was
    }
    SetFilePointer(file.h, 0, nullptr, FILE_END);
    const bool root = WriteAll(file.h, "<ZantoRunner>", 13);
    script += "</ZantoRunner>";
    SetFilePointer(file.h, 0, nullptr, FILE_END);
    const bool ok = root && WriteAll(file.h, script.data(), script.size());
    ClosePopup();
    return ok ? 1 : -8;
}

void SetVersionResource(const char* path, const char* copyright, const char* description, int major, int minor) {
    DWORD ignored = 0;
    DWORD size = GetFileVersionInfoSizeA(path, &ignored);
    std::vector<char> block(size < 256 ? 256 : size, 0);
    if (!size || !GetFileVersionInfoA(path, 0, (DWORD)block.size(), block.data())) return;
    // The fixed information stands behind the key "VS_VERSION_INFO".
    const size_t fixed = ((size_t)wcslen((const wchar_t*)(block.data() + 6)) * 2 + 11) & ~(size_t)3;
    if (fixed + sizeof(VS_FIXEDFILEINFO) <= block.size()) {
        VS_FIXEDFILEINFO* info = (VS_FIXEDFILEINFO*)(block.data() + fixed);
        info->dwFileVersionMS = info->dwProductVersionMS = (DWORD)major * 65536 + (DWORD)minor;
        info->dwFileVersionLS = info->dwProductVersionLS = 0;
    }
    WORD language = 0x409;
    WORD* translation = nullptr;
    UINT length = 0;
    if (VerQueryValueA(block.data(), "\\VarFileInfo\\Translation", (void**)&translation, &length) && length >= 2)
        language = translation[0];
    if (copyright && *copyright) WriteValueInPlace(block, "Copyright", 2, copyright);
    if (description && *description) WriteValueInPlace(block, "Description", 4, description);
    HANDLE update = BeginUpdateResourceA(path, FALSE);
    if (!update) return;
    UpdateResourceA(update, RT_VERSION, MAKEINTRESOURCEA(1), language, block.data(), size);
    EndUpdateResourceA(update, FALSE);
}

namespace {

#pragma pack(push, 2)
struct GroupEntry {
    BYTE width, height, colors, reserved;
    WORD planes, bits;
    DWORD bytes;
    WORD id;
};
#pragma pack(pop)

// The first name of a resource type: the walk ends with it.
BOOL CALLBACK FirstName(HMODULE, LPCSTR, LPSTR name, LONG_PTR out) {
    *(LPSTR*)out = name;
    return FALSE;
}

}  // namespace

namespace {

// A resource's type or name as a walk gives it: a number, or a text kept
// here, since the module's own copy goes when it is freed.
struct ResourceName {
    WORD id = 0;
    std::string text;
    LPCSTR Get() const { return text.empty() ? MAKEINTRESOURCEA(id) : text.c_str(); }
    bool Is(LPCSTR number) const { return text.empty() && id == (WORD)(UINT_PTR)number; }
};

ResourceName NameOf(LPCSTR name) {
    ResourceName n;
    if (IS_INTRESOURCE(name)) n.id = (WORD)(UINT_PTR)name;
    else n.text = name;
    return n;
}

// One resource of a module, with a copy of its bytes.
struct Resource {
    ResourceName type, name;
    WORD language;
    std::vector<char> data;
};

struct ResourceWalk {
    HMODULE module;
    std::vector<Resource>* found;
    ResourceName type, name;
};

BOOL CALLBACK AddLanguage(HMODULE, LPCSTR, LPCSTR, WORD language, LONG_PTR param) {
    ResourceWalk* walk = (ResourceWalk*)param;
    Resource r = {walk->type, walk->name, language, {}};
    HRSRC found = FindResourceExA(walk->module, walk->type.Get(), walk->name.Get(), language);
    const char* bytes = found ? (const char*)LockResource(LoadResource(walk->module, found)) : nullptr;
    if (bytes) r.data.assign(bytes, bytes + SizeofResource(walk->module, found));
    walk->found->push_back(r);
    return TRUE;
}

BOOL CALLBACK AddName(HMODULE module, LPCSTR, LPSTR name, LONG_PTR param) {
    ResourceWalk* walk = (ResourceWalk*)param;
    walk->name = NameOf(name);
    EnumResourceLanguagesA(module, walk->type.Get(), walk->name.Get(), AddLanguage, param);
    return TRUE;
}

BOOL CALLBACK AddType(HMODULE module, LPSTR type, LONG_PTR param) {
    ResourceWalk* walk = (ResourceWalk*)param;
    walk->type = NameOf(type);
    EnumResourceNamesA(module, walk->type.Get(), AddName, param);
    return TRUE;
}

}  // namespace

int RemoveIcons(const char* path) {
    // Every icon group, whatever its id and language, goes, and with it every
    // icon that one of them names: a template may carry several groups.
    HMODULE module = LoadLibraryExA(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (!module) return 0;
    std::vector<Resource> all;
    ResourceWalk walk = {module, &all, {}, {}};
    EnumResourceTypesA(module, AddType, (LONG_PTR)&walk);
    FreeLibrary(module);
    std::vector<WORD> named;
    bool groups = false;
    for (const Resource& r : all) {
        if (!r.type.Is(RT_GROUP_ICON)) continue;
        groups = true;
        const size_t size = r.data.size();
        int count = size >= 6 ? *(const WORD*)(r.data.data() + 4) : 0;
        if (count > 256) count = 256;
        for (int i = 0; i < count && 18 + 14 * (size_t)i + 2 <= size; i++)
            named.push_back(*(const WORD*)(r.data.data() + 18 + 14 * i));
    }
    if (!groups) return 0;
    // The file is given its resources anew without them. Removing them one
    // by one is not enough: some systems report the removal done and leave
    // the resource in the file.
    HANDLE update = BeginUpdateResourceA(path, TRUE);
    if (!update) return 0;
    for (const Resource& r : all) {
        const bool icon = r.type.Is(RT_ICON) && r.name.text.empty() &&
                          std::find(named.begin(), named.end(), r.name.id) != named.end();
        if (r.type.Is(RT_GROUP_ICON) || icon) continue;
        UpdateResourceA(update, r.type.Get(), r.name.Get(), r.language, (void*)r.data.data(), (DWORD)r.data.size());
    }
    return EndUpdateResourceA(update, FALSE) ? 1 : 0;
}

void ReplaceIcon(const char* path, const char* iconSource) {
    if (!ContainsNoCase(iconSource, ".ICO")) {
        // A module: its first icon group, with the icons it names.
        HMODULE module = LoadLibraryExA(iconSource, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        if (!module) return;
        LPSTR name = nullptr;
        EnumResourceNamesA(module, RT_GROUP_ICON, FirstName, (LONG_PTR)&name);
        HRSRC found = name ? FindResourceA(module, name, RT_GROUP_ICON) : nullptr;
        if (!found) {
            FreeLibrary(module);
            return;
        }
        const BYTE* group = (const BYTE*)LockResource(LoadResource(module, found));
        const DWORD groupSize = SizeofResource(module, found);
        RemoveIcons(path);
        HANDLE update = BeginUpdateResourceA(path, FALSE);
        if (update) {
            const int count = *(const WORD*)(group + 4);
            for (int i = 0; i < count; i++) {
                WORD id = *(const WORD*)(group + 18 + 14 * i);
                HRSRC icon = FindResourceA(module, MAKEINTRESOURCEA(id), RT_ICON);
                if (!icon) break;
                if (!UpdateResourceA(update, RT_ICON, MAKEINTRESOURCEA(id), 0x409,
                                     LockResource(LoadResource(module, icon)), SizeofResource(module, icon)))
                    break;
            }
            UpdateResourceA(update, RT_GROUP_ICON, name, 0x400, (void*)group, groupSize);
            EndUpdateResourceA(update, FALSE);
        }
        FreeLibrary(module);
        return;
    }
    AutoCloseHandle file(CreateFileA(iconSource, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) return;
    std::vector<char> data = ReadAll(file.h);
    if (data.size() < 6) return;
    const WORD count = *(const WORD*)(data.data() + 4);
    if (6 + 16 * (size_t)count > data.size()) return;
    RemoveIcons(path);
    HANDLE update = BeginUpdateResourceA(path, FALSE);
    if (!update) return;
    std::vector<char> group(data.begin(), data.begin() + 6);
    for (WORD i = 0; i < count; i++) {
        const char* entry = data.data() + 6 + 16 * i;
        const DWORD bytes = *(const DWORD*)(entry + 8), offset = *(const DWORD*)(entry + 12);
        if ((size_t)offset + bytes > data.size()) break;
        if (!UpdateResourceA(update, RT_ICON, MAKEINTRESOURCEA(i + 1), 0x409, (void*)(data.data() + offset), bytes))
            break;
        group.insert(group.end(), entry, entry + 12);
        WORD id = (WORD)(i + 1);
        group.insert(group.end(), (const char*)&id, (const char*)&id + 2);
    }
    UpdateResourceA(update, RT_GROUP_ICON, MAKEINTRESOURCEA(1), 0x400, group.data(), (DWORD)group.size());
    EndUpdateResourceA(update, FALSE);
}

void GetFileVersionText(const char* path, char* out, int shortForm) {
    out[0] = 0;
    char self[MAX_PATH];
    if (!path || !*path) {
        GetModuleFileNameA(nullptr, self, sizeof self);
        path = self;
    }
    DWORD ignored = 0;
    DWORD size = GetFileVersionInfoSizeA(path, &ignored);
    std::vector<char> block(size < 256 ? 256 : size, 0);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!size || !GetFileVersionInfoA(path, 0, (DWORD)block.size(), block.data()) ||
        !VerQueryValueA(block.data(), "\\", (void**)&info, &length) || !info)
        return;
    if (shortForm)
        FormatIntoN(out, VERSION_TEXT_SIZE, "%u.%u", (unsigned)HIWORD(info->dwFileVersionMS), (unsigned)LOWORD(info->dwFileVersionMS));
    else
        FormatIntoN(out, VERSION_TEXT_SIZE, "%u.%u.%u.%u", (unsigned)HIWORD(info->dwFileVersionMS), (unsigned)LOWORD(info->dwFileVersionMS),
                  (unsigned)HIWORD(info->dwFileVersionLS), (unsigned)LOWORD(info->dwFileVersionLS));
}

bool CompileAllowed() {
    if ((GetWindowsVersionMask(nullptr) & 0x7) == 0) return true;
    RunMessageBox("Windows 95/98/ME cannot be used to compile EXEs (but can be used to run them).", "ZantoRunner",
                  MB_ICONINFORMATION);
    return false;
}

void CompileFromOptions() {
    char output[MAX_PATH] = "";
    SettingText("Compile\\Output", output, sizeof output);
    if (char* dot = strrchr(output, '.')) *dot = 0;
    AppendInto(output, ".exe");
    char why[MAX_PATH + 200];
    if (CompileOutputRefused(output, why, sizeof why)) {
        char message[MAX_PATH * 2 + 300];
        FormatInto(message, "Unable to compile \"%s\"\n\n%s", output, why);
        RunMessageBox(message, "ZantoRunner Error", MB_ICONERROR);
        return;
    }
    if (GetFileAttributesA(output) != INVALID_FILE_ATTRIBUTES) {
        char question[MAX_PATH + 128];
        FormatInto(question, "The file '%s' already exists.\n\nDo you want to replace the existing file?", output);
        if (RunMessageBox(question, "Confirm Action", MB_YESNO | MB_ICONQUESTION) == IDNO) return;
        DeleteFileA(output);
    }
    char icon[MAX_PATH] = "";
    SettingText("Compile\\Icon", icon, sizeof icon);
    const int result = CompileExe(output, icon, SettingInt("Compile\\Optimize"));
    DesktopSleep(500);
    char message[MAX_PATH + 128];
    if (result < 0) {
        FormatInto(message, "Unable to compile \"%s\"\n\nError %d", output, result);
        RunMessageBox(message, "ZantoRunner Error", MB_ICONERROR);
        return;
    }
    HANDLE probe = CreateFileA(output, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    long size = probe != INVALID_HANDLE_VALUE ? (long)GetFileSize(probe, nullptr) : 0;
    if (probe != INVALID_HANDLE_VALUE) CloseHandle(probe);
    if (size >= 1048576)
        FormatInto(message, "The file \"%s\" was successfully created\n\nOutput file size: %li MB", output, size / 1048576);
    else
        FormatInto(message, "The file \"%s\" was successfully created\n\nOutput file size: %lik", output, size / 1024);
    RunMessageBox(message, "Compile EXE", MB_ICONINFORMATION);
}
