// The Output palette: a header with its title and buttons over the run's
// lines, and the lines of a failing step tinted where the user reads them.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "editor/commands.h"
#include "editor/outputpalette.h"
#include "editor/palettes.h"
#include "editor/panekeys.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "test_support.h"

namespace {

TEST(OutputPalette, TheFailureLinesAreTheLogsOwnForAFailingStep) {
    struct Case {
        const char* line;
        bool failure;
    } cases[] = {
        {"\tERROR while running [STEP 3] Read File: The file was not found", true},
        {"\tERROR while running [STEP 12] Delay", true},
        {"\tFailure Mode: Ignore/Continue", true},
        {"RUN FAILED", true},
        {"Critical internal error in Run Core at [STEP 2]!  Discontinuing Execution", true},
        {"[STEP 1]: Write to Log ERROR while running", false},
        {"a user's own line: RUN FAILED", false},
        {"\tRetrying step (retry 1 of 3)", false},
        {"Run Completed at 9:00:00 (Elapsed Time: 1 second)", false},
        {"", false},
    };
    for (const Case& c : cases) EXPECT_EQ(IsFailureLine(c.line), c.failure) << c.line;
}

size_t LineOf(const std::string& text, const char* what) {
    const size_t at = text.find(what);
    if (at == std::string::npos) return (size_t)-1;
    size_t line = 0;
    for (size_t i = 0; i < at; i++)
        if (text[i] == '\n') line++;
    return line;
}

TEST(OutputPalette, HasATitleAndTintsTheLinesOfAFailingStep) {
    Editor e;
    ASSERT_TRUE(OutputPalette && OutputEdit);
    EXPECT_TRUE(IsWindowVisible(OutputEdit));
    HWND title = FindWindowExA(OutputPalette, nullptr, "Static", "Output");
    ASSERT_TRUE(title);
    RECT head, edit;
    GetWindowRect(title, &head);
    GetWindowRect(OutputEdit, &edit);
    EXPECT_LE(head.bottom, edit.top);
    HWND copy = FindWindowExA(OutputPalette, nullptr, "Button", "&Copy");
    HWND clear = FindWindowExA(OutputPalette, nullptr, "Button", "C&lear");
    ASSERT_TRUE(copy && clear);

    const std::string path = TempFolder() + "\\fails.zxm";
    WriteWholeFile(path,
                   "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n"
                   "<step><action>Set Environment Variable</action><text>x</text><value1>a=b</value1>"
                   "<onfail>Ignore/Continue</onfail></step>\r\n"
                   "<step><action>Write to Log</action><text>all is well</text></step>\r\n"
                   "</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 2);
    e.Command(CMD_RUN);
    ASSERT_TRUE(PumpUntil([] { return RunThread == nullptr; }, 20000));
    const int length = GetWindowTextLengthA(OutputEdit);
    std::string text(length + 1, '\0');
    GetWindowTextA(OutputEdit, &text[0], length + 1);
    const size_t error = LineOf(text, "\tERROR while running [STEP 1]");
    const size_t mode = LineOf(text, "\tFailure Mode: Ignore/Continue");
    const size_t next = LineOf(text, "[STEP 2]");
    ASSERT_NE(error, (size_t)-1) << text;
    ASSERT_NE(mode, (size_t)-1) << text;
    ASSERT_NE(next, (size_t)-1) << text;

    // The failure line first in view, as the palette paints it.
    const int first = (int)SendMessageA(OutputEdit, EM_GETFIRSTVISIBLELINE, 0, 0);
    SendMessageA(OutputEdit, EM_LINESCROLL, 0, (LPARAM)((int)error - first));
    RedrawWindow(OutputEdit, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    Pump();
    ASSERT_EQ((size_t)SendMessageA(OutputEdit, EM_GETFIRSTVISIBLELINE, 0, 0), error);
    RECT format;
    SendMessageA(OutputEdit, EM_GETRECT, 0, (LPARAM)&format);
    HDC dc = GetDC(OutputEdit);
    HGDIOBJ old = SelectObject(dc, (HFONT)SendMessageA(OutputEdit, WM_GETFONT, 0, 0));
    TEXTMETRICA tm;
    GetTextMetricsA(dc, &tm);
    SelectObject(dc, old);
    auto pixel = [&](size_t line, int x) {
        return GetPixel(dc, x, format.top + (int)(line - error) * tm.tmHeight + tm.tmHeight / 2);
    };
    ASSERT_LT(format.top + (int)(next - error + 1) * tm.tmHeight, format.bottom) << "the lines do not fit in view";
    // Where no text is drawn: the tab before a failure line's words, the
    // right end of a plain line.
    const COLORREF plain = pixel(next, format.right - 3);
    const COLORREF tinted = RGB(GetRValue(plain) & GetRValue(kFailureTint), GetGValue(plain) & GetGValue(kFailureTint),
                                GetBValue(plain) & GetBValue(kFailureTint));
    ASSERT_NE(plain, tinted);
    EXPECT_EQ(pixel(error, format.left + 2), tinted);
    EXPECT_EQ(pixel(mode, format.left + 2), tinted);
    ReleaseDC(OutputEdit, dc);

    // The header's Clear empties it.
    SendMessageA(clear, BM_CLICK, 0, 0);
    Pump();
    EXPECT_EQ(GetWindowTextLengthA(OutputEdit), 0);
}

// Hidden, the palette takes no lines: the log's test of the edit's
// visibility sees the palette's.
TEST(OutputPalette, AHiddenPaletteHidesItsEdit) {
    Editor e;
    ShowPalette(PALETTE_OUTPUT, false);
    EXPECT_FALSE(IsWindowVisible(OutputPalette));
    EXPECT_FALSE(IsWindowVisible(OutputEdit));
    ShowPalette(PALETTE_OUTPUT, true);
    EXPECT_TRUE(IsWindowVisible(OutputEdit));
}

}  // namespace
