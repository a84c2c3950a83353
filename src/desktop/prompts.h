// The handler of category 8 ("User Prompt"): message boxes, popups, tips,
// images, and the dialogs that ask for a value, a login, a choice from a
// list, a file or a folder.
#pragma once

#include <windows.h>

extern char PromptTitle[259];
extern char PromptText[259];
extern char PromptResult[259];    // cleared at run start
extern char PromptPassword[259];

int ActPrompt(int tab, int step);
// A message box that closes by itself after `timeoutMs` and then returns -1.
int TimedMessageBox(HWND owner, const char* text, const char* title, UINT flags, int timeoutMs);
// The procedure of the dialogs 1050 (login), 1100 (value) and 1108 (list).
INT_PTR CALLBACK PromptDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
