// Copying and deleting registry trees without recursion, and a copy that
// takes back what it wrote when it fails.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Copies a key's values and subkeys onto a target path. A missing source fails
// before anything is written. A copy that fails part way is taken back: the
// keys it created are deleted, the values it overwrote get their old data
// back and the values it added go; nothing that was there before is lost.
// 1 on success. `root` null means HKEY_CURRENT_USER, for both roots.
int CopyRegTree(HKEY sourceRoot, const char* sourcePath, HKEY targetRoot, const char* targetPath);
// Deletes root\path with all its subkeys, deepest first, with no recursion.
// An empty path is refused (a root is never emptied). 1 when the key is gone.
int DeleteRegTree(HKEY root, const char* path);
// The components of a registry path, without the empty ones that doubled,
// leading or trailing backslashes leave.
std::vector<std::string> RegistryPathParts(const std::string& path);
// Opens root\path a component at a time (paths over 260 characters too);
// null when a component is missing or the path is empty.
HKEY OpenRegistryPath(HKEY root, const std::string& path, REGSAM access);
