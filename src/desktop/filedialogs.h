// The system's file and folder choosers, as every part of the program asks
// them: an owner, a filter ("Name\0pattern\0...\0"), an optional title.
#pragma once

#include <windows.h>

// `path` (of `size`) holds the starting name and, when one is chosen, the
// answer. `save` shows a save dialog. `flags` adds to OFN_HIDEREADONLY |
// OFN_EXPLORER. True when the user chose a file.
bool ChooseFileName(HWND owner, const char* filter, const char* title, char* path, int size, bool save,
                    DWORD flags = 0);
// Fills `path` (MAX_PATH) with the chosen folder; true when one was chosen.
bool ChooseFolderName(HWND owner, const char* title, char* path, UINT flags);
