// The editor's commands, one procedure each, reached from the main window's
// dispatch table. Each returns 0, or -1 when the user cancelled.
#pragma once

#include <windows.h>

// The shared operations on the frame (UpdateTabTitle and EnableRunCommands
// are in editor/ui.h).
void AddRecentFile(const char* path);

// File menu.
int CommandNew(HWND window);
int CommandOpen(HWND window);
int CommandOpenRecent(HWND window, int number);
int CommandClose(HWND window);
int CommandCloseAll(HWND window);
int CommandSave(HWND window);
int CommandSaveAs(HWND window);
// Save As with the name chosen: `.zxm` added when it has no extension, a
// file open in another tab refused in a box, an existing file replaced only
// when the user says so. 0, or -1 when refused, cancelled or failed.
int SaveCurrentTabAs(HWND window, const char* path);
int CommandSaveAll(HWND window);
int CommandCustomTags(HWND window);
int CommandFileProperties(HWND window);
// Opens `path` in a tab: the tab that has it already, the current tab when it
// is an empty "(Untitled)", or a free one. The step count, or 0.
int OpenFileInTab(const char* path);
// The tab (other than `except`) whose file `path` names, by identity or by
// its resolved spelling; -1 for none.
int TabOfFile(const char* path, int except);
// The number of tabs in use (tabs are dense from 0).
int TabsInUse();

// Edit and Step menus.
int CommandUndo(HWND window);
int CommandRedo(HWND window);
int CommandCopy(HWND window);
int CommandCut(HWND window);
int CommandPaste(HWND window);
int CommandDelete(HWND window);
int CommandSelectAll(HWND window);
int CommandFind(HWND window, int id);
int CommandGotoStep(HWND window);
int CommandBookmark(HWND window, int id);
int CommandNewStep(HWND window);
int CommandEditProperties(HWND window);
int CommandViewXml(HWND window);
int CommandMove(HWND window, int direction);
int CommandIndent(HWND window, int by);
int CommandAutoIndent(HWND window);
int CommandToggle(HWND window, int bit);
int CommandRemoveAll(HWND window, int bit);
int CommandAddComment(HWND window);
// The next step (from the selection, in the direction) whose display text
// holds `text` in any case; -1 for none.
int FindStep(const char* text, int from, bool down);

// View, Tools and Help.
int CommandKeepOnTop(HWND window);
int CommandTogglePalette(HWND window, int id);
int CommandTree(HWND window, bool expand);
int CommandResetLayout(HWND window);
int CommandOpenLogfile(HWND window);
// Tools > "Check Script": the checker's findings of the current tab in the
// Output palette; double-clicking one selects its step.
int CommandCheckScript(HWND window);
// Tools > "Test Image Step": the selected image step's search on the live
// screen, its outcome logged and the screen shown with the place boxed.
int CommandTestImageStep(HWND window);
void WatchFindingClicks(HWND outputEdit);
// The step (from 1) a line of the checker names, or 0.
int FindingStep(const char* line);
int CommandOptions(HWND window);
int CommandHelp(HWND window, int id);
// Opens a topic ("saveresult.htm", "mouse.htm#move"; empty for the start
// page) of the help file beside the program, "ZantoRunner.chm" beside
// "ZantoRunner.exe"; a missing file says so in a box.
void OpenHelpTopic(HWND window, const char* topic);
// A help topic's name for a title: its letters and digits in lower case, as
// the help's pages are named ("Windows/Controls" gives "windowscontrols").
void HelpSlug(const char* title, char* slug, size_t size);
// The topic of an action: the page of its category, at the action.
void HelpTopicOfAction(int category, const char* action, char* topic, size_t size);
int CommandCheckUpdates(HWND window);
