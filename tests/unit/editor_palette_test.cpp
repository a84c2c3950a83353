// The properties palette as a newcomer meets it: it names the step it shows,
// its labels and values are readable at the default size, the splitter
// beside it is dragged and remembered, every button says what it does, and
// the finder picks the right window without disturbing the editor.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "editor/commands.h"
#include "editor/finder.h"
#include "editor/metrics.h"
#include "editor/propertygrid.h"
#include "resources/resource.h"
#include "editor_support.h"
#include "script/properties.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::string Script(const std::string& steps) {
    const std::string path = TempFolder() + "\\palette.zxm";
    WriteWholeFile(path, "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n" + steps + "</ZantoRunner>\r\n");
    return path;
}

// The row of a label, or of a field; -1 when the table has none.
int RowOf(const char* label) {
    for (int row = 0; row < PropertyRowCount; row++)
        if (lstrcmpA(PropertyTable[row].label, label) == 0) return row;
    return -1;
}

int RowOfField(int field) {
    for (int row = 0; row < PropertyRowCount; row++)
        if (PropertyTable[row].rowType != ROW_END && PropertyTable[row].field == field) return row;
    return -1;
}

void Show(int row) {
    SelectStepRow(row);
    Pump();
    RefreshPropertyGrid();
    Pump();
}

int Width(HWND window) {
    RECT r;
    GetWindowRect(window, &r);
    return r.right - r.left;
}

// The pointer, pressed, moved and released as the user does it.
// Where the pointer was last put: presses and releases carry it.
POINT PointerAt = {};

void PointerTo(POINT at) {
    PointerAt = at;
    MouseAt(at, 0);
    Pump();
}

void Press() {
    MouseAt(PointerAt, MOUSEEVENTF_LEFTDOWN);
    Pump();
}

void Release() {
    MouseAt(PointerAt, MOUSEEVENTF_LEFTUP);
    PumpUntil([] { return GetAsyncKeyState(VK_LBUTTON) == 0 && GetCapture() == nullptr; }, 2000);
    Pump();
}

POINT Centre(HWND window) {
    RECT r;
    GetWindowRect(window, &r);
    return {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
}

// The tip a button of the open editor shows.
// The tip that any tool tip window of the editor holds for a button.
std::string TipOf(HWND button) {
    std::vector<HWND> tips;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND w, LPARAM out) -> BOOL {
            char cls[64] = "";
            GetClassNameA(w, cls, sizeof cls);
            if (lstrcmpiA(cls, TOOLTIPS_CLASSA) == 0) ((std::vector<HWND>*)out)->push_back(w);
            return TRUE;
        },
        (LPARAM)&tips);
    for (HWND tip : tips) {
        char text[200] = "";
        TOOLINFOA info = {};
        info.cbSize = TTTOOLINFOA_V1_SIZE;
        info.hwnd = GetParent(button);
        info.uId = (UINT_PTR)button;
        info.lpszText = text;
        SendMessageA(tip, TTM_GETTEXTA, sizeof text, (LPARAM)&info);
        if (text[0]) return text;
    }
    return "";
}

TEST(Palette, TheHeaderNamesTheStepAndClickOnImageHasATimeoutRow) {
    Editor e;
    OpenFileInTab(Script("<step><action>Label</action><text>a</text></step>"
                         "<step><action>Click on Image</action><timeout>4</timeout></step>")
                      .c_str());
    Show(1);
    EXPECT_EQ(WindowText(PropertyPalette), "Step 2: Click on Image");
    // The header sits over the grid, not over its rows.
    RECT palette, grid;
    GetWindowRect(PropertyPalette, &palette);
    GetWindowRect(PropertyGrid, &grid);
    EXPECT_GT(grid.top, palette.top);
    Show(0);
    EXPECT_EQ(WindowText(PropertyPalette), "Step 1: Label");

    // The timeout the list shows is one the palette edits.
    Show(1);
    const int timeout = RowOf("Timeout");
    ASSERT_GE(timeout, 0);
    OpenEditor(timeout);
    ASSERT_TRUE(ActiveEditor);
    EXPECT_EQ(WindowText(ActiveEditor), "4");
    SetWindowTextA(ActiveEditor, "9");
    CommitEditor();
    EXPECT_STREQ(CurrentTab().steps[1].timeout, "9");
}

// A timeout that the step list shows is one the palette edits; an image
// search has the row even before it has a timeout, and the steps that cannot
// fail have none.
TEST(Palette, ATimeoutTheListShowsHasARow) {
    Editor e;
    const struct {
        const char* step;
        bool timeout;
    } cases[] = {
        {"<action>Click on Image</action>", true},
        {"<action>Minimize all Windows</action><timeout>5</timeout>", true},
        {"<action>Minimize all Windows</action>", false},
        {"<action>Type</action><text>a</text><timeout>2</timeout>", true},
        {"<action>Type</action><text>a</text>", false},
        {"<action>Close Window</action>", true},
        {"<action>IF Expression</action><timeout>2</timeout>", false},
    };
    std::string steps;
    for (const auto& c : cases) steps += std::string("<step>") + c.step + "</step>";
    OpenFileInTab(Script(steps).c_str());
    for (int i = 0; i < (int)(sizeof cases / sizeof cases[0]); i++) {
        Show(i);
        EXPECT_EQ(RowOfField(FIELD_TIMEOUT) >= 0, cases[i].timeout) << cases[i].step;
    }
}

TEST(Palette, LabelsAndValuesAreReadableAtTheDefaultSize) {
    Editor e;
    OpenFileInTab(Script("<step><action>Click on Image</action></step><step><action>Start</action></step>"
                         "<step><action>Wait for Window to Appear</action></step>")
                      .c_str());
    for (int step = 0; step < 3; step++) {
        Show(step);
        for (int row = 0; row < PropertyRowCount; row++)
            EXPECT_FALSE(PropertyLabelCut(row)) << PropertyTable[row].label;
        // The values keep room for at least 20 characters.
        EXPECT_GE(ListView_GetColumnWidth(PropertyGrid, 1), FontUnitsX(80)) << step;
    }
    // A label cut by a narrow column is shown whole in the grid's tip.
    Show(0);
    const int variation = RowOf("Pixel Color Variation (0-255)");
    ASSERT_GE(variation, 0);
    ListView_SetColumnWidth(PropertyGrid, 0, FontUnitsX(40));
    ASSERT_TRUE(PropertyLabelCut(variation));
    char text[100] = "";
    NMLVGETINFOTIPA tip = {};
    tip.hdr.hwndFrom = PropertyGrid;
    tip.hdr.idFrom = GetDlgCtrlID(PropertyGrid);
    tip.hdr.code = LVN_GETINFOTIPA;
    tip.pszText = text;
    tip.cchTextMax = sizeof text;
    tip.iItem = variation;
    SendMessageA(PropertyPalette, WM_NOTIFY, tip.hdr.idFrom, (LPARAM)&tip);
    EXPECT_STREQ(text, "Pixel Color Variation (0-255)");
}

TEST(Palette, TheSplitterIsDraggedAndRemembered) {
    int dragged = 0;
    {
        Editor e;
        OpenFileInTab(Script("<step><action>Click on Image</action></step>").c_str());
        Show(0);
        SetForegroundWindow(e.window);
        const int before = Width(PropertyPalette);
        RECT palette;
        GetWindowRect(PropertyPalette, &palette);
        const POINT gap = {palette.left - 1, (palette.top + palette.bottom) / 2};
        EXPECT_EQ(WindowFromPoint(gap), e.window);
        PointerTo(gap);
        Press();
        ASSERT_TRUE(PumpUntil([&] { return GetCapture() == e.window; }, 2000));
        PointerTo({gap.x - 60, gap.y});
        EXPECT_TRUE(PumpUntil([&] { return Width(PropertyPalette) == before + 60; }, 2000))
            << before << " " << Width(PropertyPalette);
        Release();
        dragged = Width(PropertyPalette);
        EXPECT_EQ(dragged, before + 60);
        EXPECT_EQ(ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Properties\\Width"), dragged);
    }
    Editor again;
    EXPECT_EQ(Width(PropertyPalette), dragged);
    // Reset Layout sizes the palette by its labels again.
    NextBoxAnswer = IDYES;
    again.Command(CMD_RESET_UI);
    EXPECT_EQ(Width(PropertyPalette), dragged - 60);
}

TEST(Palette, EveryButtonBesideAValueHasATip) {
    Editor e;
    OpenFileInTab(Script("<step><action>Click on Image</action></step><step><action>Start</action></step>"
                         "<step><action>Close Window</action></step>")
                      .c_str());
    const struct {
        int step;
        const char* row;
        int buttons;
    } cases[] = {
        {0, "Image File", 3},              // choose the file, preview it, system variables
        {0, "Stop Search At (X, Y)", 2},   // coordinates, system variables
        {1, "Program/Document", 3},        // choose the file, programs, system variables
        {2, "Match Criteria", 2},          // the finder, system variables
    };
    std::string glyphs;
    for (const auto& c : cases) {
        Show(c.step);
        const int row = RowOf(c.row);
        ASSERT_GE(row, 0) << c.row;
        OpenEditor(row);
        int buttons = 0;
        for (HWND part = GetWindow(PropertyGrid, GW_CHILD); part; part = GetWindow(part, GW_HWNDNEXT)) {
            char cls[32] = "";
            GetClassNameA(part, cls, sizeof cls);
            if (lstrcmpiA(cls, "Button") != 0) continue;
            buttons++;
            glyphs += WindowText(part);
            EXPECT_GT(TipOf(part).size(), 3u) << c.row << ": " << WindowText(part);
        }
        EXPECT_EQ(buttons, c.buttons) << c.row;
        DiscardEditor();
    }
    for (const char* glyph : {"%", "@", "P", "?", "..."}) EXPECT_NE(glyphs.find(glyph), std::string::npos) << glyph;
}

// Pure rules of the finder: which window a pick stands for, and the
// program's own windows refused with words.
TEST(Palette, TheFinderPicksTheTopLevelWindowOrTheControl) {
    EXPECT_FALSE(ActsOnControl("Close Window"));
    EXPECT_FALSE(ActsOnControl("Activate"));
    EXPECT_TRUE(ActsOnControl("Press Button/Control"));
    EXPECT_TRUE(ActsOnControl("IF Control Exists"));

    HWND top = CreateWindowExA(0, "STATIC", "Finder Target", WS_POPUP | WS_VISIBLE, 100, 100, 300, 200, nullptr,
                               nullptr, nullptr, nullptr);
    HWND child = CreateWindowExA(0, "BUTTON", "Press Me", WS_CHILD | WS_VISIBLE, 20, 20, 120, 40, top,
                                 (HMENU)(INT_PTR)1234, nullptr, nullptr);
    SetWindowPos(top, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    Pump();
    const POINT at = Centre(child);
    EXPECT_EQ(PickedWindow(at, false), top);
    EXPECT_EQ(PickedWindow(at, true), child);
    const std::string shown = DescribePickedWindow(child);
    EXPECT_NE(shown.find("Press Me"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Button"), std::string::npos) << shown;
    EXPECT_NE(shown.find("1234"), std::string::npos) << shown;
    EXPECT_NE(std::string(RefusedPick(top)).find("ZantoRunner"), std::string::npos);
    EXPECT_STREQ(RefusedPick(GetDesktopWindow()), "");
    DestroyWindow(top);
}

// The band round a window's edges, as the screen shows it, where the
// finder's outline is drawn: 4 pixels in from each edge and 2 outside.
std::vector<COLORREF> EdgePixels(const RECT& r) {
    std::vector<COLORREF> pixels;
    HDC screen = GetDC(nullptr);
    for (int d = -2; d < 4; d++) {
        for (int x = r.left; x < r.right; x += 3) {
            pixels.push_back(GetPixel(screen, x, r.top + d));
            pixels.push_back(GetPixel(screen, x, r.bottom - 1 - d));
        }
        for (int y = r.top; y < r.bottom; y += 3) {
            pixels.push_back(GetPixel(screen, r.left + d, y));
            pixels.push_back(GetPixel(screen, r.right - 1 - d, y));
        }
    }
    ReleaseDC(nullptr, screen);
    return pixels;
}

// The finder's outline moves over a window and off it, and ends with the
// drag: each time the screen round the window is as it was before.
TEST(Palette, TheFinderOutlineLeavesNothingBehind) {
    Editor e;
    OpenFileInTab(Script("<step><action>Close Window</action><options>Title</options></step>").c_str());
    // A plain green window to outline, away from the editor, on a plain
    // green ground of the same kind so that the band outside it is known too.
    WNDCLASSA wc = {};
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hbrBackground = CreateSolidBrush(RGB(0, 160, 0));
    wc.lpszClassName = "OutlineTarget";
    RegisterClassA(&wc);
    HWND ground = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, "OutlineTarget", "", WS_POPUP | WS_VISIBLE, 1010,
                                  400, 260, 300, nullptr, nullptr, nullptr, nullptr);
    HWND target = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, "OutlineTarget", "Outline Target",
                                  WS_POPUP | WS_VISIBLE, 1040, 440, 200, 150, nullptr, nullptr, nullptr, nullptr);
    RECT r;
    GetWindowRect(target, &r);
    auto clean = [&] {
        for (COLORREF c : EdgePixels(r))
            if (c != RGB(0, 160, 0)) return false;
        return true;
    };
    ASSERT_TRUE(PumpUntil(clean, 3000)) << "the screen round the window is not plain to start with";

    Show(0);
    OpenEditor(RowOf("Match Criteria"));
    HWND finder = FindWindowExA(PropertyGrid, nullptr, "Button", "@");
    ASSERT_TRUE(finder);
    PointerTo(Centre(finder));
    Press();
    ASSERT_TRUE(PumpUntil([&] { return GetCapture() == finder; }, 2000));
    // Over the window: the outline shows round it.
    PointerTo(Centre(target));
    EXPECT_TRUE(PumpUntil([] { return FinderOutlineShown(); }, 2000));
    EXPECT_TRUE(PumpUntil([&] { return !clean(); }, 2000)) << "no outline seen round the window";
    // The label that follows the pointer passes over the outline's edges
    // while the same window stays outlined.
    for (POINT at : {POINT{r.right - 30, r.bottom - 30}, POINT{r.right - 80, r.bottom - 25},
                     POINT{r.left + 10, r.bottom - 30}, POINT{r.right - 20, r.top + 5}}) {
        PointerTo(at);
        PumpUntil([&] { return FinderLabel() && IsWindowVisible(FinderLabel()); }, 1000);
    }
    // Off it, onto the plain ground: nothing of it stays round the window.
    PointerTo({r.left - 20, r.bottom + 4});
    EXPECT_TRUE(PumpUntil(clean, 3000)) << "the outline left pixels behind when it moved";
    // Back over it, and released there: nothing stays either.
    PointerTo(Centre(target));
    EXPECT_TRUE(PumpUntil([&] { return !clean(); }, 2000));
    SeenBoxes.clear();
    Release();
    EXPECT_FALSE(FinderOutlineShown());
    EXPECT_TRUE(PumpUntil(clean, 3000)) << "the outline left pixels behind when the drag ended";
    DiscardEditor();
    DestroyWindow(target);
    DestroyWindow(ground);
}

// The finder dragged by the pointer from the palette onto Notepad: the
// label names what is under the pointer, a window action takes Notepad's own
// window, a control action its edit control, the editor stays maximised, and
// the editor's own window is refused.
TEST(Palette, TheFinderDraggedOntoNotepad) {
    STARTUPINFOA start = {sizeof start};
    PROCESS_INFORMATION process = {};
    char command[] = "notepad.exe";
    ASSERT_TRUE(CreateProcessA(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process));
    HWND notepad = nullptr;
    PumpUntil([&] { return (notepad = FindWindowA("Notepad", nullptr)) != nullptr; }, 20000);
    ASSERT_TRUE(notepad);
    HWND edit = FindWindowExA(notepad, nullptr, "Edit", nullptr);
    ASSERT_TRUE(edit);

    Editor e;
    OpenFileInTab(Script("<step><action>Close Window</action><options>Title</options></step>"
                         "<step><action>Press Button/Control</action><options>Class</options></step>")
                      .c_str());
    ShowWindow(e.window, SW_MAXIMIZE);
    Pump();
    ASSERT_TRUE(IsZoomed(e.window));
    // Notepad over the left of the editor, the palette's finder still in view.
    SetWindowPos(notepad, HWND_TOPMOST, 40, 120, 360, 260, SWP_SHOWWINDOW | SWP_NOACTIVATE);
    PumpUntil([&] { return WindowFromPoint(Centre(edit)) == edit; }, 5000);
    char title[200] = "";
    GetWindowTextA(notepad, title, sizeof title);

    auto drag = [&](int step, POINT to, std::string* label) {
        Show(step);
        OpenEditor(RowOf("Match Criteria"));
        HWND finder = FindWindowExA(PropertyGrid, nullptr, "Button", "@");
        if (!finder) return std::string("no finder");
        PointerTo(Centre(finder));
        Press();
        if (!PumpUntil([&] { return GetCapture() == finder; }, 2000)) {
            Release();
            return std::string("the finder took no press");
        }
        PointerTo(to);
        PumpUntil([&] { return FinderLabel() && !WindowText(FinderLabel()).empty(); }, 2000);
        *label = FinderLabel() ? WindowText(FinderLabel()) : "";
        Release();
        const std::string picked = ActiveEditor ? WindowText(ActiveEditor) : "";
        DiscardEditor();
        return picked;
    };
    std::string label;
    EXPECT_EQ(drag(0, Centre(edit), &label), title);
    EXPECT_NE(label.find("Notepad"), std::string::npos) << label;
    EXPECT_TRUE(IsZoomed(e.window));
    EXPECT_FALSE(FinderLabel());

    EXPECT_EQ(drag(1, Centre(edit), &label), "Edit");
    EXPECT_NE(label.find("Class: Edit"), std::string::npos) << label;
    EXPECT_TRUE(IsZoomed(e.window));

    SeenBoxes.clear();
    EXPECT_EQ(drag(0, Centre(StepList), &label), "");
    EXPECT_NE(label.find("ZantoRunner itself"), std::string::npos) << label;
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_NE(SeenBoxes[0].text.find("ZantoRunner itself"), std::string::npos);

    TerminateProcess(process.hProcess, 0);
    WaitForSingleObject(process.hProcess, 5000);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
}

}  // namespace
