// The seam's defaults: what a process without an editor does.
#include "base/text.h"
#include "base/ui.h"

#include <string.h>

#include "base/settings.h"

HWND MainWindow;
HWND OutputEdit;
HWND StatusBar;
HWND ProgressBar;
HWND ActionsTree;
HWND StepList;
HWND PropertyGrid;
HIMAGELIST SharedImageList;

namespace {

int DefaultMessageBox(HWND owner, const char* text, const char* title, UINT flags) {
    return MessageBoxA(owner, text, title, flags);
}

void NoTabTitle(int) {}
void NoStepList() {}
void NoRunCommands(bool) {}

BOOL CALLBACK CountMainWindows(HWND window, LPARAM param) {
    char className[260] = "";
    GetClassNameA(window, className, sizeof className);
    if (strcmp(className, "ZantoRunner") == 0) ++*(int*)param;
    return TRUE;
}

}  // namespace

int (*ShowMessageBox)(HWND owner, const char* text, const char* title, UINT flags) = DefaultMessageBox;
void (*UpdateTabTitle)(int tab) = NoTabTitle;
void (*RefreshStepList)() = NoStepList;
void (*EnableRunCommands)(bool running) = NoRunCommands;
void (*ShowSelectedRow)(int row);
int (*ListSelectedRow)();
bool (*ListRowSelected)(int row);

int RunMessageBox(const char* text, const char* title, UINT flags) {
    flags |= MB_TASKMODAL | MB_SETFOREGROUND;
    if (SettingInt("OnTop")) flags |= MB_TOPMOST;
    return ShowMessageBox(nullptr, text, title, flags);
}

void DisplayName(const char* path, char* name, int size) {
    const char* shown = path ? path : "";
    if (!SettingInt("ShowFullFilesInTabs")) {
        const char* slash = strrchr(shown, '\\');
        if (slash && slash[1]) shown = slash + 1;
    }
    CopyIntoN(name, size, shown);
}

void ShowProgress(int percent) {
    if (!ProgressBar) return;
    SendMessageA(ProgressBar, PBM_SETPOS, (WPARAM)percent, 0);
    if (!IsWindowVisible(ProgressBar)) ShowWindow(ProgressBar, SW_SHOW);
}

void HideProgress() {
    if (ProgressBar) ShowWindow(ProgressBar, SW_HIDE);
}

bool ProgressVisible() { return ProgressBar && IsWindowVisible(ProgressBar); }

bool OnlyInstance() {
    int count = 0;
    EnumWindows(CountMainWindows, (LPARAM)&count);
    return count == 1;
}
