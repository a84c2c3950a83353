// "Read Registry", "Write Registry", "Copy Registry" and "Delete Registry".
#pragma once

#include <windows.h>

#include <string>

// Splits a full registry path into its root (HKEY_CURRENT_USER when none is
// named) and the rest.
HKEY RegistryRootOf(const std::string& fullPath, std::string* rest);
// Whether what is left of a path after its root names nothing below the root:
// empty, only backslashes, or a root's name alone ("HKCU", "HKEY_USERS").
bool NamesOnlyARoot(const std::string& rest);
// Whether innerRoot\inner is outerRoot\outer or lies below it, compared by
// whole components and case-insensitively; across two roots, by the names the
// registry itself gives the keys (HKEY_CURRENT_USER is a key of HKEY_USERS).
bool KeyLiesWithin(HKEY innerRoot, const std::string& inner, HKEY outerRoot, const std::string& outer);
int RegistryStep(int tab, int step);
