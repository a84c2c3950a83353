// The windows of the main thread that other subsystems write to. Each is null
// when it does not exist, as in a hidden run, so every write to the user
// interface is then a no-op.
#pragma once

#include <windows.h>
#include <commctrl.h>

extern HWND MainWindow;
extern HWND OutputEdit;      // the Output palette's edit control, id 1047
extern HWND StatusBar;       // three parts: step line, "Loops: %d", editor text
extern HWND ProgressBar;     // child of the status bar, range 0 to 100
extern HWND ActionsTree;     // the actions tree, id 1172 (hidden in a /r run)
extern HWND StepList;        // the step grid of the current tab
extern HIMAGELIST SharedImageList;  // images of the actions tree and the step list

// Refreshes a tab's caption ("* " while modified) and, for the current tab,
// the main title "%s - ZantoRunner".
void UpdateTabTitle(int tab);
// Redraws the step list of the current tab.
void RefreshStepList();
// Selects one row of the step list (or clears the selection with -1).
void SelectStepRow(int row);
int SelectedStepRow();
bool StepRowSelected(int row);
// The progress bar during a load or save: shown at `percent`, or hidden.
void ShowProgress(int percent);
void HideProgress();
bool ProgressVisible();

// The palettes round the step list; showing one lays the frame out again and
// keeps the choice in "Palettes\<name>\visible".
enum { PALETTE_ACTIONS, PALETTE_PROPERTIES, PALETTE_OUTPUT, PALETTE_VARIABLES, PALETTE_COUNT };
void ShowPalette(int palette, bool show);
bool PaletteVisible(int palette);

// Enables the run commands' opposites: while running only "Pause" (1046).
void EnableRunCommands(bool running);

// True when this is the only window of class "ZantoRunner" on the desktop.
bool OnlyInstance();

// Every message box goes through this one seam, so that tests can watch and
// answer them. The default shows MessageBoxA.
extern int (*ShowMessageBox)(HWND owner, const char* text, const char* title, UINT flags);
// A run's or a load's box: task-modal, brought to the foreground, and on top
// when OnTop is on.
int RunMessageBox(const char* text, const char* title, UINT flags);
// The title of a message that names a file: its display name.
void DisplayName(const char* path, char* name, int size);
