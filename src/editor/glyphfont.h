// A font that has the glyphs: where the editor's font cannot draw the
// letters of other scripts (Greek, Cyrillic, CJK, Hangul) and the system
// does not fill them in from another font (Windows links fonts; Wine does
// not), the step list, the palette and the output take an installed face
// that can, at the same size.
#pragma once

#include <windows.h>

// How many of the sample letters of other scripts the font draws (out of
// GlyphSampleCount()): a letter is drawn when its picture differs from that
// of a code point no font has, which is the font's box for a missing glyph.
int GlyphsDrawn(HFONT font);
int GlyphSampleCount();
// A font like `base` (its height, weight, slant and pitch) in an installed
// face that draws more of the samples than `base` does, the one that draws the
// most; null when `base` draws them all or no face does better. The font
// stays for the life of the process, shared by every caller.
HFONT FontWithGlyphs(HFONT base);
// Gives the control FontWithGlyphs of its font, where there is one.
void GiveGlyphFont(HWND control);
