// The editor's sizes in units of the system's message font, so that the
// window follows the user's font and scaling instead of fixed pixels. (Sizes
// that the program fixes in pixels, such as the step list's default column
// widths, stay as they are.)
#pragma once

#include <windows.h>

// Reads the font's average character width and line height; with no font,
// the system's message font. Called when the editor's window is made and when
// the system's settings change.
void ReadEditorMetrics(HFONT font = nullptr);
// A width of `quarters` quarters of an average character (dialog units).
int FontUnitsX(int quarters);
// A height of `eighths` eighths of a line of text (dialog units).
int FontUnitsY(int eighths);
// The height of one line of a font.
int FontLineHeight(HFONT font);
