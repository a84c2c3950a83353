// The user-interface seam: the one way the layers below the editor speak to
// whatever user interface the process has.
//
// A hidden run (/r) has no editor. There the window handles below stay null,
// every write to a window is then a no-op, and the notifications stay the
// no-ops they start as. The editor fills the handles as it creates its
// windows and installs its own notifications at start-up. Lower layers
// include this header, never one of the editor's.
#pragma once

#include <windows.h>
#include <commctrl.h>

// The main thread's windows; each is null when it does not exist.
extern HWND MainWindow;
extern HWND OutputEdit;      // the Output palette's edit control, id 1047
extern HWND StatusBar;       // three parts: step line, "Loops: %d", editor text
extern HWND ProgressBar;     // child of the status bar, range 0 to 100
extern HWND ActionsTree;     // the actions tree, id 1172 (hidden in a /r run)
extern HWND StepList;        // the step grid of the current tab
extern HWND PropertyGrid;    // the properties palette's grid, id 1249
extern HIMAGELIST SharedImageList;  // images of the actions tree and the step list

// Every message box goes through this one seam, so that tests can watch and
// answer them. The default shows MessageBoxA.
extern int (*ShowMessageBox)(HWND owner, const char* text, const char* title, UINT flags);
// A run's or a load's box: task-modal, brought to the foreground, and on top
// when OnTop is on.
int RunMessageBox(const char* text, const char* title, UINT flags);
// The title of a message that names a file: its display name.
void DisplayName(const char* path, char* name, int size);

// The progress bar during a load, a save or a run: shown at `percent`, or hidden.
void ShowProgress(int percent);
void HideProgress();
bool ProgressVisible();

// True when this is the only window of class "ZantoRunner" on the desktop.
bool OnlyInstance();

// Notifications upward. No-ops until the editor installs its own.
// A tab's caption ("* " while modified) and, for the current tab, the title.
extern void (*UpdateTabTitle)(int tab);
// The step list of the current tab changed: redraw it.
extern void (*RefreshStepList)();
// A run started (true) or ended: enable the commands that fit.
extern void (*EnableRunCommands)(bool running);
// The step list's selection as the list shows it. Null without a list; the
// tab's own selection (SelectStepRow and its fellows) is the fallback.
extern void (*ShowSelectedRow)(int row);
extern int (*ListSelectedRow)();
extern bool (*ListRowSelected)(int row);
