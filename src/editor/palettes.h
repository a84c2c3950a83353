// The palettes round the step list; showing one lays the frame out again and
// keeps the choice in "Palettes\<name>\visible". The main window, which lays
// them out, carries these out (editor/mainwindow.cpp); a part of the editor
// that only shows a palette needs no more than this.
#pragma once

enum { PALETTE_ACTIONS, PALETTE_PROPERTIES, PALETTE_OUTPUT, PALETTE_VARIABLES, PALETTE_COUNT };
void ShowPalette(int palette, bool show);
bool PaletteVisible(int palette);
