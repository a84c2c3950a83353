// The settings store: every setting is a registry value named by its full
// path, read at the moment of use. Nothing is cached.
#pragma once

#include <windows.h>

#include "base/printf.h"

// The root of every setting, with its trailing backslash, for path formats.
#define ZR_ROOT "SOFTWARE\\ZantoRunner\\"

// Reads a value. `root` null means HKEY_CURRENT_USER. `size` is the size of
// the buffer `text` (or `binary`): at most size - 1 characters and the
// terminator are written, never more. With size -1 the result is the value's
// size (how existence is tested). A missing path gives 0 and an empty text.
int ReadSetting(HKEY root, char* text, int size, void* binary, const char* pathFormat, ...) ZR_PRINTF(5, 6);
// Writes `text` (REG_SZ, or REG_EXPAND_SZ when it holds a "%"), else `number`
// bytes of `binary` (REG_BINARY), else `number` as a REG_DWORD. 1 on success.
int WriteSetting(HKEY root, const char* text, int number, const void* binary, const char* pathFormat, ...)
    ZR_PRINTF(5, 6);
// Deletes a value, or a key with all its subkeys. 1 on success.
int DeleteSetting(HKEY root, const char* pathFormat, ...) ZR_PRINTF(2, 3);
void DeleteSubkeys(HKEY key);
// Name of the value at `index` (up to 259 characters) in `name`; returns the
// larger of its data size and its name's length, 0 with an empty name past the end.
int EnumRegValue(HKEY root, const char* keyPath, int index, char* name);
// Migration of older keys and the defaults; `reset` writes every default.
void LoadSettings(int reset);
// Deletes every user variable and its overflow file (base/uservariables.h
// says where they are kept): on a first start, and at a run's start when
// "ResetUserVariables" is on.
void ResetAllUserVariables();

// The actions the user keeps under "Favorites" at the top of the actions
// tree: one value under Favorites a favourite, named by the action and
// holding its category * 1000 + its image, as the tree reads them back.
bool IsFavoriteAction(const char* name);
int WriteFavoriteAction(const char* name, int category, int image);
int DeleteFavoriteAction(const char* name);

// Registry reads made by the program since it started (for the benchmarks).
extern unsigned long RegistryReads;

// Shorthands for the commonest reads: a number, and a text into a buffer of
// `size` bytes, both under SOFTWARE\ZantoRunner.
int SettingInt(const char* name);
void SettingText(const char* name, char* buffer, int size);
