// The "Programs" menu: the entries of the desktop folder named by the
// registry's "Shell Folders\Desktop", with shortcuts resolved to their
// targets, and under "COMMON PROGRAMS" the programs most scripts start.
#include "editor/programsmenu.h"

#include <objbase.h>
#include <shlobj.h>
#include <string.h>

#include "base/settings.h"
#include "base/handles.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

enum { FIRST_ID = 3500 };

std::string ShortcutTarget(const std::string& link) {
    IShellLinkA* shell = nullptr;
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, (void**)&shell)))
        return link;
    std::string target = link;
    IPersistFile* file = nullptr;
    if (SUCCEEDED(shell->QueryInterface(IID_IPersistFile, (void**)&file))) {
        WCHAR wide[MAX_PATH];
        MultiByteToWideChar(CP_ACP, 0, link.c_str(), -1, wide, MAX_PATH);
        char path[MAX_PATH] = "";
        if (SUCCEEDED(file->Load(wide, STGM_READ)) && SUCCEEDED(shell->GetPath(path, MAX_PATH, nullptr, 0)) &&
            path[0])
            target = path;
        file->Release();
    }
    shell->Release();
    return target;
}

std::string Program(const char* name) {
    char path[MAX_PATH * 2] = "";
    if (!ResolveProgramPath(name, path, nullptr) || !path[0]) return name;
    return path;
}

// Whether the program a command starts is on the machine: a menu of
// programs that are not installed only leads to failing steps.
bool Installed(const std::string& command) {
    if (command.empty()) return false;
    std::string file = command;
    if (file[0] == '"') {
        const size_t end = file.find('"', 1);
        file = file.substr(1, end == std::string::npos ? std::string::npos : end - 1);
    } else if (GetFileAttributesA(file.c_str()) == INVALID_FILE_ATTRIBUTES) {
        file = file.substr(0, file.find(' '));
    }
    const DWORD attributes = GetFileAttributesA(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

std::vector<ProgramChoice> ListPrograms() {
    std::vector<ProgramChoice> list;
    char desktop[MAX_PATH];
    ReadSetting(nullptr, desktop, sizeof desktop, nullptr,
                "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders\\Desktop");
    if (desktop[0]) {
        WIN32_FIND_DATAA found;
        AutoFindHandle walk;
        walk.h = FindFirstFileA((std::string(desktop) + "\\*.*").c_str(), &found);
        for (bool more = walk.h != INVALID_HANDLE_VALUE; more; more = FindNextFileA(walk.h, &found)) {
            const std::string name = found.cFileName;
            // Hidden entries (and dot-files, hidden on other systems) are
            // not the user's programs.
            if (name[0] == '.' || lstrcmpiA(name.c_str(), "desktop.ini") == 0 ||
                (found.dwFileAttributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)))
                continue;
            std::string path = std::string(desktop) + "\\" + name;
            const char* dot = strrchr(name.c_str(), '.');
            std::string caption = name;
            if (dot && (lstrcmpiA(dot, ".lnk") == 0 || lstrcmpiA(dot, ".pif") == 0)) {
                path = ShortcutTarget(path);
                caption = name.substr(0, (size_t)(dot - name.c_str()));
            }
            list.push_back({caption, path});
        }
    }
    char browser[MAX_PATH * 2] = "", mail[MAX_PATH * 2] = "";
    AssociatedProgram(".htm", browser, nullptr);
    AssociatedProgram("MAIL", mail, nullptr);
    list.push_back({"COMMON PROGRAMS", ""});
    const ProgramChoice common[] = {
        {"Web Browser", browser[0] ? browser : Program("iexplore.exe")},
        {"Email", mail},
        {"Microsoft Excel", Program("excel.exe")},
        {"Microsoft Word", Program("winword.exe")},
        {"Notepad", Program("notepad.exe")},
        {"File Explorer", Program("explorer.exe")},
        {"MS-DOS Command", Program("CMD.EXE") + " /C dir c:\\*.* /s"},
    };
    for (const ProgramChoice& p : common)
        if (Installed(p.command)) list.push_back(p);
    return list;
}

std::string ChooseProgram(HWND owner, int x, int y) {
    const std::vector<ProgramChoice> list = ListPrograms();
    HMENU menu = CreatePopupMenu();
    for (size_t i = 0; i < list.size(); i++) {
        if (list[i].command.empty()) {
            if (i) AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
            AppendMenuA(menu, MF_STRING | MF_GRAYED, 0, list[i].caption.c_str());
        } else {
            AppendMenuA(menu, MF_STRING, FIRST_ID + i, list[i].caption.c_str());
        }
    }
    const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_LEFTALIGN | TPM_RIGHTBUTTON, x, y, 0, owner, nullptr);
    DestroyMenu(menu);
    if (chosen < FIRST_ID || chosen - FIRST_ID >= (int)list.size()) return "";
    return list[(size_t)(chosen - FIRST_ID)].command;
}
