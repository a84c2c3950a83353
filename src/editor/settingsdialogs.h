// The two small dialogs over groups of settings: "Compile Options" and the
// XML report's options. Each control shows one setting and stores it on OK.
#pragma once

#include <windows.h>

// Shows the dialog `id` (IDD_COMPILE_OPTIONS or IDD_REPORT_OPTIONS); IDOK when
// the user confirmed and the settings were stored. A seam, so that tests can
// answer it.
extern INT_PTR (*ShowSettingsDialog)(HWND owner, int id);
// The dialogs' procedure; the dialog's id comes as the creation parameter.
INT_PTR CALLBACK SettingsDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
