// Finding a window from a textual description, and the dump of all windows.
//
// The criteria text holds, separated by "|", the fields of the criteria that
// are selected, in the fixed order title, class, ID, user data, handle. The
// search keeps its parameters and results in process-wide variables; only one
// search runs at a time.
#pragma once

#include <windows.h>
#include <stdint.h>

enum {
    MATCH_TITLE = 0x01,
    MATCH_CLASS = 0x02,
    MATCH_ID = 0x04,
    MATCH_USER = 0x08,
    MATCH_HANDLE = 0x10,
    MATCH_DUMP = 0x100,          // no search: each window is written to the dump file
    MATCH_MINIMIZE_ALL = 0x200,
    MATCH_CLOSE_ALL = 0x400,
    DUMP_FRAMED = 0x1000,        // only visible framed windows (also: short dump lines)
    DUMP_MAIN = 0x2000,          // only visible framed windows with no parent
};

extern int32_t MatchFlags;
extern int32_t DumpFlags;
extern HWND OwnWindow;
extern char CriteriaTitle[260];
extern char CriteriaClass[64];
extern char CriteriaId[32];
extern char CriteriaUser[32];
extern char CriteriaHandle[32];
extern int32_t TopLevelMatches;
extern int32_t ChildMatches;
extern HWND FoundWindow;
extern int32_t WindowActivated;  // set by "Activate" and "Maximize"
// The close-all mode ends programs by rising force (the option "Force"),
// else it asks each window and forces only hung programs.
extern bool CloseAllByForce;

// The window that matches `criteria` (the last in enumeration order), or 0.
// A lone title or class is first tried whole by FindWindowA, which returns
// before the match counters are reset.
HWND FindWindowByCriteria(HWND ownWindow, int32_t matchFlags, const char* criteria, int32_t dumpFlags);
// One window against the current criteria: the window for a match, else 0.
HWND MatchWindow(HWND window, const char* criteria);
// Nonzero if `candidate` or one of its five ancestors is `ownWindow` or has a
// class name that contains the class of `ownWindow`.
int IsOwnWindow(HWND ownWindow, HWND candidate);
// A window with WS_DLGFRAME or WS_THICKFRAME that IsWindowVisible.
bool IsFramed(HWND window);
// The criteria bits that the words of an options text select.
int32_t MatchFlagsFromOptions(const char* options);
// The first titled top-level window of a process or thread id (its parent if
// it has one).
HWND FindProcessWindow(DWORD id);
// "windows.txt" in the program's own folder.
void DumpFilePath(char* path);
