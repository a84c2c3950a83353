// The editor shows scripts in any language: a UTF-8 script and a legacy one
// opened into the real main window show their steps' texts whole in the
// step list and the properties palette, and the file's name in the title.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "editor/commands.h"
#include "editor/mainwindow.h"
#include "editor/propertygrid.h"
#include "editor/steplist.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

void Pump() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

std::wstring Wide(const char* utf8) {
    wchar_t out[512] = {};
    MultiByteToWideChar(CP_UTF8, 0, utf8, -1, out, 512);
    return out;
}

// What a list view shows in a cell, read as Unicode.
std::wstring Cell(HWND list, int row, int column) {
    wchar_t text[512] = {};
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = 512;
    SendMessageW(list, LVM_GETITEMTEXTW, (WPARAM)row, (LPARAM)&item);
    return text;
}

const char kTitle[] = "Z\xC3\xBCrich \xE2\x80\x93 \xCE\x94 \xE2\x80\x93 \xE6\x9D\xB1\xE4\xBA\xAC \xE2\x80\x93 \xF0\x9F\x98\x80";

}  // namespace

TEST(EditorUnicode, StepsOfAnyLanguageShowWholeInTheGridAndThePalette) {
    LaunchFlags = 0;
    static bool registered = RegisterMainWindowClass(GetModuleHandleA(nullptr)) != 0;
    (void)registered;
    ResetTestState();
    ResetTab(0);
    HWND window = CreateWindowExA(0, "ZantoRunner", "ZantoRunner", WS_OVERLAPPEDWINDOW, 0, 0, 1000, 700, nullptr,
                                  nullptr, GetModuleHandleA(nullptr), nullptr);
    ASSERT_TRUE(window);
    ShowWindow(window, SW_SHOW);
    RefreshTabStrip();
    ShowTab(0);
    Pump();
    ASSERT_TRUE(StepList && PropertyGrid);

    const std::string folder = TempFolder();
    const struct {
        const char* name;
        std::string bytes;     // as the file holds it
        const char* shown;     // the text, UTF-8
    } files[] = {
        {"\xE6\x9D\xB1\xE4\xBA\xAC.zxm", std::string("<step><action>Activate</action><text>") + kTitle + "</text></step>",
         kTitle},
        {"legacy.zxm", "<step><action>Activate</action><text>Gr\xFC\xDF" "e \x80 \xD8" "deg\xE5rd</text></step>",
         "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC \xC3\x98" "deg\xC3\xA5rd"},
    };
    for (const auto& f : files) {
        const std::string path = folder + "\\" + f.name;
        WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + f.bytes + "\r\n</ZantoRunner>\r\n");
        ASSERT_EQ(OpenFileInTab(path.c_str()), 1) << f.name;
        Pump();
        EXPECT_TRUE(Cell(StepList, 0, 2) == Wide(f.shown)) << f.name;
        SelectStepRow(0);
        RefreshPropertyGrid();
        Pump();
        bool found = false;
        for (int row = 0; row < ListView_GetItemCount(PropertyGrid); row++)
            if (Cell(PropertyGrid, row, 1) == Wide(f.shown)) found = true;
        EXPECT_TRUE(found) << f.name << ": the palette shows the text";
    }
    // The first file's name, "東京.zxm", in the window's title.
    ShowTab(0);
    Pump();
    wchar_t title[256] = {};
    GetWindowTextW(window, title, 256);
    EXPECT_NE(std::wstring(title).find(L"\u6771\u4EAC.zxm"), std::wstring::npos);
    DestroyWindow(window);
    Pump();
}
