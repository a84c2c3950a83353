#include "desktop/filedialogs.h"

#include <commdlg.h>
#include <shlobj.h>

#include "base/unattended.h"

bool ChooseFileName(HWND owner, const char* filter, const char* title, char* path, int size, bool save,
                    DWORD flags) {
    if (UnattendedRun) {
        ReportUnshownBox(title && title[0] ? title : (save ? "Save As" : "Open"), "file chooser cancelled");
        return false;
    }
    OPENFILENAMEA choose = {};
    choose.lStructSize = sizeof choose;
    choose.hwndOwner = owner;
    choose.lpstrFilter = filter;
    choose.lpstrFile = path;
    choose.nMaxFile = (DWORD)size;
    choose.lpstrTitle = title && title[0] ? title : nullptr;
    choose.Flags = OFN_HIDEREADONLY | OFN_EXPLORER | flags;
    return (save ? GetSaveFileNameA(&choose) : GetOpenFileNameA(&choose)) != 0;
}

bool ChooseFolderName(HWND owner, const char* title, char* path, UINT flags) {
    if (UnattendedRun) {
        ReportUnshownBox(title && title[0] ? title : "Browse for Folder", "folder chooser cancelled");
        return false;
    }
    char name[MAX_PATH];
    BROWSEINFOA info = {};
    info.hwndOwner = owner;
    info.pszDisplayName = name;
    info.lpszTitle = title;
    info.ulFlags = flags;
    LPITEMIDLIST chosen = SHBrowseForFolderA(&info);
    if (!chosen) return false;
    const bool got = SHGetPathFromIDListA(chosen, path) != 0;
    CoTaskMemFree(chosen);
    return got;
}
