// Windows services: start, stop and startup type, and the editor's list.
#pragma once

#include <windows.h>

// The service actions of category 2; `name` is the translated step text.
int ServiceStep(int tab, int step, const char* name);
// Fills a combo box with "display name* [service]" lines (the "*" marks a
// running service) and selects the first that contains `current`.
void GetServiceChooserList(HWND comboBox, const char* current);
