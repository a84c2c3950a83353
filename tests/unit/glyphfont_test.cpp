// A font that has the glyphs: where the editor's font cannot draw other
// scripts and a face that can is installed (dev.sh installs one), the step
// list, the palette and the output draw them.
#include <gtest/gtest.h>

#include <windows.h>

#include "editor/glyphfont.h"
#include "editor/propertygrid.h"
#include "editor_support.h"
#include "test_support.h"

namespace {

LONG Height(HFONT font) {
    LOGFONTW look = {};
    GetObjectW(font, sizeof look, &look);
    return look.lfHeight;
}

}  // namespace

TEST(GlyphFont, AFaceThatDrawsMoreIsTakenAtTheSameSize) {
    HFONT base = CreateFontW(-17, 0, 0, 0, FW_BOLD, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Tahoma");
    ASSERT_TRUE(base);
    const int drawn = GlyphsDrawn(base);
    HFONT better = FontWithGlyphs(base);
    if (drawn == GlyphSampleCount()) {
        // A system that links fonts draws them all in its own: nothing changes.
        EXPECT_EQ(better, nullptr);
    } else {
        ASSERT_NE(better, nullptr) << "no installed face draws more than " << drawn << " of the samples";
        EXPECT_GT(GlyphsDrawn(better), drawn);
        EXPECT_EQ(Height(better), -17);
        LOGFONTW look = {};
        GetObjectW(better, sizeof look, &look);
        EXPECT_EQ(look.lfWeight, FW_BOLD);
        // Asked again, the same font; and a font that draws them all needs none.
        EXPECT_EQ(FontWithGlyphs(base), better);
        if (GlyphsDrawn(better) == GlyphSampleCount()) {
            EXPECT_EQ(FontWithGlyphs(better), nullptr);
        }
    }
    DeleteObject(base);
}

// The output's font is fixed-pitch so its columns line up: a face with the
// glyphs but letters of many widths must not take its place.
TEST(GlyphFont, AFixedPitchFontKeepsAFixedPitch) {
    HFONT base = CreateFontW(-13, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, FIXED_PITCH | FF_MODERN,
                             L"Courier New");
    ASSERT_TRUE(base);
    HFONT better = FontWithGlyphs(base);
    // Where Courier New lacks them, this machine has a fixed-pitch face that
    // draws them (dev.sh installs one).
    if (GlyphsDrawn(base) < GlyphSampleCount()) {
        ASSERT_NE(better, nullptr);
    }
    if (better) {
        HDC dc = CreateCompatibleDC(nullptr);
        HGDIOBJ old = SelectObject(dc, better);
        SIZE narrow = {}, wide = {};
        GetTextExtentPoint32W(dc, L"iiii", 4, &narrow);
        GetTextExtentPoint32W(dc, L"WWWW", 4, &wide);
        SelectObject(dc, old);
        DeleteDC(dc);
        EXPECT_EQ(narrow.cx, wide.cx);
        EXPECT_GT(GlyphsDrawn(better), GlyphsDrawn(base));
    }
    DeleteObject(base);
}

TEST(GlyphFont, TheStepListPaletteAndOutputDrawOtherScripts) {
    const int best = [] {
        HFONT gui = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
        HFONT better = FontWithGlyphs(gui);
        return GlyphsDrawn(better ? better : gui);
    }();
    ResetTestState();
    Editor e;
    ASSERT_TRUE(StepList && PropertyGrid && OutputEdit);
    const struct {
        const char* name;
        HWND control;
    } controls[] = {{"step list", StepList}, {"palette", PropertyGrid}, {"output", OutputEdit}};
    for (const auto& c : controls) {
        HFONT font = (HFONT)SendMessageW(c.control, WM_GETFONT, 0, 0);
        EXPECT_EQ(GlyphsDrawn(font ? font : (HFONT)GetStockObject(DEFAULT_GUI_FONT)), best) << c.name;
    }
    // This machine has such a face (dev.sh installs one).
    EXPECT_EQ(best, GlyphSampleCount());
}
