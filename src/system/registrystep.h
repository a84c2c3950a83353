// "Read Registry", "Write Registry", "Copy Registry" and "Delete Registry".
#pragma once

#include <windows.h>

#include <string>

// Splits a full registry path into its root (HKEY_CURRENT_USER when none is
// named) and the rest.
HKEY RegistryRootOf(const std::string& fullPath, std::string* rest);
int RegistryStep(int tab, int step);
