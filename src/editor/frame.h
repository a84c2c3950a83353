// The editor's frame: its windows are the seam's handles (base/ui.h), and it
// installs the seam's notifications when the editor is built.
#pragma once

#include "base/ui.h"

// Puts the frame's notifications in the seam: tab titles, the step list's
// refresh and selection, the run commands.
void InstallEditorSeam();

// The palettes round the step list; showing one lays the frame out again and
// keeps the choice in "Palettes\<name>\visible".
enum { PALETTE_ACTIONS, PALETTE_PROPERTIES, PALETTE_OUTPUT, PALETTE_VARIABLES, PALETTE_COUNT };
void ShowPalette(int palette, bool show);
bool PaletteVisible(int palette);
