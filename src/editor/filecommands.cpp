// The File menu: tabs opened, saved and closed, and the recent files.
#include <windows.h>
#include "base/text.h"
#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>
#include <string.h>

#include <string>

#include "desktop/filedialogs.h"
#include "editor/commands.h"
#include "editor/propertygrid.h"
#include "base/settings.h"
#include "editor/steplist.h"
#include "base/ui.h"
#include "base/fileidentity.h"
#include "base/log.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

const char kFilter[] = "ZantoRunner File (*.zxm, *.xml)\0*.zxm;*.xml\0All Files (*.*)\0*.*\0";

int FreeTab() {
    for (int tab = 0; tab < MAX_TABS; tab++)
        if (!ScriptStore.tab[tab].path[0]) return tab;
    char text[200];
    FormatInto(text, "A maximum of %d files may be opened in ZantoRunner.\n\nPlease close a file before opening another one.",
              MAX_TABS);
    ShowMessageBox(MainWindow, text, "ZantoRunner Warning", MB_ICONWARNING);
    return -1;
}

// A tab not in use: no path, nothing selected.
void ClearTab(int tab) {
    ScriptStore.tab[tab] = TabStore{};
    ScriptStore.tab[tab].selected = -1;
}

bool Untitled(const TabStore& t) { return lstrcmpA(t.path, "(Untitled)") == 0; }

bool EmptyUntitled(const TabStore& t) {
    return Untitled(t) && t.count == 0 && !TabModified((int)(&t - ScriptStore.tab));
}

// Frees a tab and moves the tabs to its right down by one.
void DropTab(int tab) {
    ScriptStore.currentTab = tab;
    FreeUndo(tab);
    FreeSteps(tab);
    for (int i = tab; i < MAX_TABS - 1; i++) ScriptStore.tab[i] = ScriptStore.tab[i + 1];
    ClearTab(MAX_TABS - 1);
    if (TabsInUse() == 0) ResetTab(0);
    int current = tab < TabsInUse() ? tab : TabsInUse() - 1;
    ScriptStore.currentTab = current;
    RefreshTabStrip();
    ShowTab(current);
}

void ReportOpened(const char* path, int steps) {
    WIN32_FILE_ATTRIBUTE_DATA info = {};
    GetFileAttributesExA(path, GetFileExInfoStandard, &info);
    const long bytes = (long)info.nFileSizeLow;
    char name[MAX_PATH];
    DisplayName(path, name, sizeof name);
    const char* plural = steps == 1 ? "" : "s";
    if (bytes < 1024)
        StatusPrintf(StatusBar, 0, "\"%s\" successfully opened  (%li bytes, %d step%s)", name, bytes, steps, plural);
    else if (bytes < 1024 * 1024)
        StatusPrintf(StatusBar, 0, "\"%s\" successfully opened  (%li K, %d step%s)", name, bytes / 1024, steps, plural);
    else
        StatusPrintf(StatusBar, 0, "\"%s\" successfully opened  (%li MB, %d step%s)", name, bytes / (1024 * 1024),
                     steps, plural);
}

// Writes the tab's file. A saved script counts as unchanged, and loses the
// "* " of its caption, until its steps differ from the file again; its undo
// list stays, so a change saved can still be taken back.
int SaveTab(int tab) {
    DiscardEditor();
    char reason[512] = "";
    if (!SaveScript(tab, reason)) {
        char text[MAX_PATH + 600];
        FormatInto(text, "Unable to save the file \"%s\"\n\n%s", ScriptStore.tab[tab].path, reason);
        ShowMessageBox(MainWindow, text, "ZantoRunner Error", MB_ICONERROR);
        return -1;
    }
    WIN32_FILE_ATTRIBUTE_DATA info = {};
    GetFileAttributesExA(ScriptStore.tab[tab].path, GetFileExInfoStandard, &info);
    char name[MAX_PATH];
    DisplayName(ScriptStore.tab[tab].path, name, sizeof name);
    StatusPrintf(StatusBar, 0, "\"%s\" has been saved  (%li bytes)", name, (long)info.nFileSizeLow);
    MarkTabSaved(tab);
    UpdateTabTitle(tab);
    return 0;
}

}  // namespace

int TabsInUse() {
    int count = 0;
    while (count < MAX_TABS && ScriptStore.tab[count].path[0]) count++;
    return count;
}

void AddRecentFile(const char* path) {
    if (!path || !path[0]) return;
    char recent[8][MAX_PATH];
    for (int i = 0; i < 8; i++) ReadSetting(nullptr, recent[i], MAX_PATH, nullptr, ZR_ROOT "RecentFile%d", i + 1);
    int slot = 1;
    WriteSetting(nullptr, path, 0, nullptr, ZR_ROOT "RecentFile1");
    for (int i = 0; i < 8 && slot < 8; i++) {
        if (!recent[i][0] || lstrcmpiA(recent[i], path) == 0) continue;
        WriteSetting(nullptr, recent[i], 0, nullptr, ZR_ROOT "RecentFile%d", ++slot);
    }
    SHAddToRecentDocs(SHARD_PATHA, path);
}

int TabOfFile(const char* path, int except) {
    const std::string resolved = ResolvedPath(path);
    for (int i = 0; i < TabsInUse(); i++) {
        const TabStore& t = ScriptStore.tab[i];
        if (i == except || Untitled(t)) continue;
        // By identity; by the resolved spelling for a file not on disk (yet).
        if (SameDiskObject(t.path, path) ||
            (!resolved.empty() && lstrcmpiA(ResolvedPath(t.path).c_str(), resolved.c_str()) == 0))
            return i;
    }
    return -1;
}

int OpenFileInTab(const char* path) {
    int tab = TabOfFile(path, -1);
    if (tab >= 0) {
        char text[MAX_PATH + 200];
        FormatInto(text, "\"%s\" is already open.\n\nDo you want to revert to the saved copy from disk and lose your "
                        "changes?", path);
        if (ShowMessageBox(MainWindow, text, "ZantoRunner", MB_YESNO | MB_ICONQUESTION) != IDYES) {
            ShowTab(tab);
            return 0;
        }
    } else if (EmptyUntitled(CurrentTab())) {
        tab = ScriptStore.currentTab;
    } else if ((tab = FreeTab()) < 0) {
        return 0;
    }
    DiscardEditor();
    const bool fresh = !ScriptStore.tab[tab].path[0];
    const int steps = OpenScript(path, tab);
    if (steps <= 0) {
        char name[MAX_PATH];
        DisplayName(path, name, sizeof name);
        StatusPrintf(StatusBar, 0, "Error while opening \"%s\"", name);
        if (fresh) {
            FreeSteps(tab);
            ClearTab(tab);
            ScriptStore.currentTab = tab > 0 ? tab - 1 : 0;
            if (TabsInUse() == 0) ResetTab(0);
        } else if (!ScriptStore.tab[tab].count) {
            CopyInto(ScriptStore.tab[tab].path, "(Untitled)");
        }
        RefreshTabStrip();
        ShowTab(ScriptStore.currentTab);
        return 0;
    }
    ScriptStore.tab[tab].selected = -1;
    ReportOpened(ScriptStore.tab[tab].path, steps);
    AddRecentFile(ScriptStore.tab[tab].path);
    RefreshTabStrip();
    ShowTab(tab);
    return steps;
}

int CommandNew(HWND) {
    const int tab = FreeTab();
    if (tab < 0) return 0;
    DiscardEditor();
    ClearTab(tab);
    ResetTab(tab);
    RefreshTabStrip();
    ShowTab(tab);
    return 0;
}

int CommandOpen(HWND window) {
    char path[MAX_PATH] = "";
    if (!ChooseFileName(window, kFilter, nullptr, path, sizeof path, false, OFN_FILEMUSTEXIST)) return 0;
    OpenFileInTab(path);
    return 0;
}

int CommandOpenRecent(HWND, int number) {
    char path[MAX_PATH];
    ReadSetting(nullptr, path, sizeof path, nullptr, ZR_ROOT "RecentFile%d", number);
    if (!path[0]) return 0;
    OpenFileInTab(path);  // the loader reports a file that has gone
    return 0;
}

int CommandClose(HWND window) {
    if (ActiveEditor) CommitEditor();
    const int tab = ScriptStore.currentTab;
    TabStore& t = CurrentTab();
    if (TabModified(tab) && SettingInt("PromptSave")) {
        char name[MAX_PATH], text[MAX_PATH + 32];
        DisplayName(t.path, name, sizeof name);
        FormatInto(text, "Save changes to %s?", name);
        const int answer = ShowMessageBox(window, text, "Confirm Action", MB_YESNOCANCEL | MB_ICONQUESTION);
        if (answer == IDCANCEL) return -1;
        if (answer == IDYES && CommandSave(window) < 0) return -1;
        if (answer == IDYES && TabModified(tab)) return -1;  // Save As was cancelled
    }
    DiscardEditor();
    DropTab(tab);
    return 0;
}

int CommandCloseAll(HWND window) {
    for (int tab = TabsInUse() - 1; tab >= 0; tab--) {
        ShowTab(tab);
        if (CommandClose(window) < 0) return -1;
    }
    return 0;
}

int CommandSave(HWND window) {
    if (ActiveEditor) CommitEditor();
    if (Untitled(CurrentTab())) return CommandSaveAs(window);
    return SaveTab(ScriptStore.currentTab);
}

int CommandSaveAs(HWND window) {
    if (ActiveEditor) CommitEditor();
    char path[MAX_PATH] = "";
    if (!Untitled(CurrentTab())) CopyIntoN(path, sizeof path, CurrentTab().path);
    if (!ChooseFileName(window, kFilter, nullptr, path, sizeof path, true, OFN_PATHMUSTEXIST)) return -1;
    return SaveCurrentTabAs(window, path);
}

int SaveCurrentTabAs(HWND window, const char* chosen) {
    char path[MAX_PATH] = "";
    CopyIntoN(path, sizeof path, chosen);
    const char* slash = strrchr(path, '\\');
    if (!strchr(slash ? slash : path, '.') && strlen(path) + 4 < sizeof path) AppendInto(path, ".zxm");
    // Another tab's file would be overwritten under that tab, whose next save
    // would overwrite it back: refused, whatever the spelling.
    const int other = TabOfFile(path, ScriptStore.currentTab);
    if (other >= 0) {
        char name[MAX_PATH], text[MAX_PATH * 2 + 200];
        DisplayName(ScriptStore.tab[other].path, name, sizeof name);
        FormatInto(text, "Unable to save as \"%s\"\n\nThat file is open in another tab (%s). Close that tab first, "
                         "or choose another name.", path, name);
        ShowMessageBox(window, text, "ZantoRunner Error", MB_ICONERROR);
        return -1;
    }
    if (GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES) {
        char text[MAX_PATH + 100];
        FormatInto(text, "The file '%s' already exists.\n\nDo you want to replace the existing file?", path);
        if (ShowMessageBox(window, text, "ZantoRunner", MB_YESNO | MB_ICONQUESTION) != IDYES) return -1;
    }
    CopyIntoN(CurrentTab().path, MAX_PATH, path);
    if (SaveTab(ScriptStore.currentTab) < 0) return -1;
    AddRecentFile(path);
    return 0;
}

int CommandSaveAll(HWND window) {
    const int current = ScriptStore.currentTab;
    for (int tab = 0; tab < TabsInUse(); tab++) {
        if (!TabModified(tab)) continue;
        ShowTab(tab);
        if (CommandSave(window) < 0) break;
    }
    ShowTab(current);
    return 0;
}

int CommandCustomTags(HWND window) {
    const char* tags = CurrentTab().xmlHeader;
    ShowMessageBox(window, tags[0] ? tags : "(none)", "Custom XML Tags", MB_ICONINFORMATION);
    return 0;
}

int CommandFileProperties(HWND window) {
    if (Untitled(CurrentTab()) || GetFileAttributesA(CurrentTab().path) == INVALID_FILE_ATTRIBUTES) {
        ShowMessageBox(window, "No file currently open", "ZantoRunner", MB_ICONINFORMATION);
        return 0;
    }
    SHELLEXECUTEINFOA info = {};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_INVOKEIDLIST;
    info.hwnd = window;
    info.lpVerb = "properties";
    info.lpFile = CurrentTab().path;
    info.nShow = SW_SHOW;
    ShellExecuteExA(&info);
    return 0;
}
