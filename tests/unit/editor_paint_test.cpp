// The step list after a maximise and a restore looks as a fresh paint of it
// does: no blank columns, no header cut short.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>
#include <vector>

#include "editor/commands.h"
#include "editor_support.h"
#include "test_support.h"

namespace {

// What the screen shows of a window.
std::vector<COLORREF> Shot(HWND window, int* w, int* h) {
    RECT r;
    GetWindowRect(window, &r);
    *w = r.right - r.left;
    *h = r.bottom - r.top;
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, *w, *h);
    HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, *w, *h, screen, r.left, r.top, SRCCOPY);
    std::vector<COLORREF> pixels;
    for (int y = 0; y < *h; y++)
        for (int x = 0; x < *w; x++) pixels.push_back(GetPixel(memory, x, y));
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return pixels;
}

void Settle() {
    for (int i = 0; i < 5; i++) {
        Pump();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
    Pump();
}

TEST(Paint, TheStepListAfterMaximiseAndRestoreIsAFreshPaint) {
    Editor e;
    std::string steps;
    for (int i = 0; i < 30; i++)
        steps += "<step><action>Write to Log</action><text>line " + std::to_string(i) +
                 "</text><comment>a comment</comment></step>\r\n";
    const std::string path = TempFolder() + "\\paint.zxm";
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + steps + "</ZantoRunner>\r\n");
    ASSERT_EQ(OpenFileInTab(path.c_str()), 30);
    SetForegroundWindow(e.window);
    for (int round = 0; round < 2; round++) {
        ShowWindow(e.window, SW_MAXIMIZE);
        Settle();
        int w = 0, h = 0;
        const std::vector<COLORREF> maximised = Shot(StepList, &w, &h);
        RedrawWindow(StepList, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        Settle();
        EXPECT_TRUE(maximised == Shot(StepList, &w, &h)) << "maximised, round " << round;
        ShowWindow(e.window, SW_RESTORE);
        Settle();
        const std::vector<COLORREF> restored = Shot(StepList, &w, &h);
        RedrawWindow(StepList, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        Settle();
        EXPECT_TRUE(restored == Shot(StepList, &w, &h)) << "restored, round " << round;
    }
}

}  // namespace
