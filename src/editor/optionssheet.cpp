// The Options sheet: one table of rows, each tying a control to a setting,
// laid out on the page it names from one empty page template. A page reads
// its settings when it is made (and again after a reset), checks its values
// when the user leaves it or stores, and writes them on OK or Apply.
#include "editor/optionssheet.h"

#include <commctrl.h>
#include <commdlg.h>
#include <prsht.h>
#include <string.h>

#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "desktop/filedialogs.h"
#include "desktop/keynames.h"
#include "editor/mainwindow.h"
#include "resources/resource.h"
#include "script/properties.h"

HWND OptionsSheet;

namespace {

enum Kind {
    CHECK,         // a check box: 1 or 0
    NUMBER,        // a whole number from `low` to `high`
    CHOICE_INDEX,  // a list of `choices`: the index of the chosen one
    CHOICE_TEXT,   // a list of `choices`: the chosen text
    LOG_FILE,      // a file name, with Browse; its folder must exist
    COLOR,         // a colour, chosen in the system's colour dialog
    STOP_KEY,      // a key, taken by pressing it in the field
    OUTPUT_FONT,   // the Output palette's font: four settings
    TEXT,          // a line of text
    RESET,         // the button that puts every setting back to its default
};

struct OptionRow {
    int page;
    Kind kind;
    const char* setting;  // under SOFTWARE\ZantoRunner
    const char* label;
    int low, high;
    const char* choices;  // ";" between
};

const char* const kPageTitles[OPTIONS_PAGES] = {"General", "Run Options", "Files", "Logging", "UI Style", "Colors/Fonts"};

const OptionRow kRows[] = {
    {0, CHECK, "PromptSave", "Ask to save a changed script when it is closed", 0, 0, nullptr},
    {0, CHECK, "AutoReload", "Open the last script again when the program starts", 0, 0, nullptr},
    {0, CHECK, "ShowSplash", "Show the splash picture at start", 0, 0, nullptr},
    {0, CHECK, "OnTop", "Keep the editor on top of other windows", 0, 0, nullptr},
    {0, CHECK, "ShowFullFilesInTabs", "Show whole paths in the tabs", 0, 0, nullptr},
    {0, NUMBER, "MaxUndo", "Maximum Undo Steps:", 1, 1000000, nullptr},
    {0, CHOICE_INDEX, "AutoUpdate", "Check the web for a new version:", 0, 2, "Never;Daily;Weekly"},
    {0, RESET, "Reset", "Reset All Settings...", 0, 0, nullptr},

    {1, STOP_KEY, "StopKey", "Stop key (click, then press the key):", 0, 0, nullptr},
    {1, CHECK, "HiliteRunningStep", "Select each step in the list as it runs", 0, 0, nullptr},
    {1, CHECK, "MinimizeStart", "Minimise the editor when a run starts", 0, 0, nullptr},
    {1, CHECK, "ReturnWhenDone", "Restore the editor when a run ends", 0, 0, nullptr},
    {1, CHECK, "Progress", "Show the progress bar during long file operations", 0, 0, nullptr},
    {1, CHECK, "DisableScreenSaver", "Turn the screen saver off while a script runs", 0, 0, nullptr},
    {1, CHECK, "MultipleWindowError", "Fail when several windows match a window step", 0, 0, nullptr},
    {1, CHECK, "SlowPixelScan", "Search images pixel by pixel (slower)", 0, 0, nullptr},
    {1, CHECK, "Debug\\PauseOnFailure", "Pause a debug run at a failing step", 0, 0, nullptr},
    {1, CHOICE_TEXT, "DefaultFailureMode", "When a step fails (default):", 0, 0, FailureModeChoices},
    {1, NUMBER, "DefaultReturnCode", "Exit code when a script sets none:", -2147483647, 2147483647, nullptr},
    {1, NUMBER, "UnattendedTimeLimit", "Unattended run time limit (seconds, 0: none):", 0, 604800, nullptr},
    {1, CHECK, "MinimizeFindWin", "Minimise the editor while choosing a window", 0, 0, nullptr},
    {1, CHECK, "MinimizeRecord", "Minimise the editor while recording", 0, 0, nullptr},
    {1, NUMBER, "RecordingSlowRatio", "Recording playback slow-down (2 to 100):", 2, 100, nullptr},

    {2, CHECK, "EncodeXML", "Encode special characters in saved scripts", 0, 0, nullptr},
    {2, NUMBER, "MemoryAllocationChunk", "Steps allocated at a time while loading:", 0, 100000, nullptr},
    {2, CHECK, "LocalVariables", "Keep variables apart for each window and tab", 0, 0, nullptr},
    {2, CHECK, "ResetUserVariables", "Delete all variables when the program closes", 0, 0, nullptr},

    {3, CHECK, "Log", "Write a log file of each run", 0, 0, nullptr},
    {3, LOG_FILE, "Logfile", "Log file:", 0, 0, nullptr},
    {3, CHECK, "RestartLog", "Start the log afresh at each run", 0, 0, nullptr},
    {3, CHECK, "LogLevel", "Also log skipped steps and saved variables", 0, 0, nullptr},

    {4, CHECK, "ShowTips", "Show tips in the step list and the palettes", 0, 0, nullptr},
    {4, CHECK, "AlwaysShowSysVars", "Always show the System Variables button", 0, 0, nullptr},
    {4, NUMBER, "Palettes\\Properties\\MaxFieldSize", "Rows of a multi-line field (1 to 50):", 1, 50, nullptr},
    {4, NUMBER, "Palettes\\MainList\\IndentSize", "Blanks per indent (0 to 31):", 0, 31, nullptr},
    {4, CHECK, "Palettes\\MainList\\IndentAllColumns", "Indent every column, not only the action", 0, 0, nullptr},
    {4, CHOICE_INDEX, "Palettes\\MainList\\GridStyle", "Step list style:", 0, 2,
     "Plain;Alternate row colour;Grid lines"},

    {5, COLOR, "Colors\\CommentText", "Comment text:", 0, 0, nullptr},
    {5, COLOR, "Colors\\CommentFill", "Comment background:", 0, 0, nullptr},
    {5, CHECK, "Colors\\CommentItalic", "Comments in italics", 0, 0, nullptr},
    {5, COLOR, "Colors\\SkipText", "Skipped step text:", 0, 0, nullptr},
    {5, COLOR, "Colors\\SkipFill", "Skipped step background:", 0, 0, nullptr},
    {5, CHECK, "Colors\\SkipItalic", "Skipped steps in italics", 0, 0, nullptr},
    {5, COLOR, "Colors\\BreakText", "Breakpoint text:", 0, 0, nullptr},
    {5, COLOR, "Colors\\BreakFill", "Breakpoint background:", 0, 0, nullptr},
    {5, COLOR, "Palettes\\MainList\\GridStyle_AltColor", "Alternate row colour:", 0, 0, nullptr},
    {5, COLOR, "Colors\\OnFailureLables", "\"On Failure\" labels in the palette:", 0, 0, nullptr},
    {5, OUTPUT_FONT, "Palettes\\Output\\Font", "Output palette font:", 0, 0, nullptr},
};
const int kRowCount = (int)(sizeof kRows / sizeof kRows[0]);

enum { FIRST_CONTROL = 2200, FIRST_BROWSE = 2400 };

HWND PageWindows[OPTIONS_PAGES];
bool Loading;  // true while a page is being filled: no "changed" then

// The Output font as the page shows it until it is stored.
struct FontChoice {
    char face[LF_FACESIZE];
    int size, italic, weight;
};
FontChoice OutputFontChoice;

COLORREF CustomColors[16];

int PageOf(HWND page) { return (int)GetWindowLongPtrA(page, GWLP_USERDATA); }

void FontCaption(char* out, size_t size) {
    FormatIntoN(out, size, "%s, %d pt%s%s", OutputFontChoice.face, OutputFontChoice.size,
                OutputFontChoice.weight >= FW_BOLD ? ", bold" : "", OutputFontChoice.italic ? ", italic" : "");
}

// The key field takes any key but Tab (so that the keyboard can leave it)
// and shows its name.
LRESULT CALLBACK KeyFieldProc(HWND field, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_GETDLGCODE:
        if (lParam && ((MSG*)lParam)->wParam == VK_TAB) break;
        return DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN: {
        if (wParam == VK_TAB) break;
        char name[KEY_NAME_SIZE] = "";
        VkToKeyName((int)wParam, name);
        if (!name[0]) FormatInto(name, "Key %d", (int)wParam);
        SetPropA(field, "ZrKey", (HANDLE)(INT_PTR)wParam);
        SetWindowTextA(field, name);
        PropSheet_Changed(GetParent(GetParent(field)), GetParent(field));
        return 0;
    }
    case WM_CHAR:
    case WM_SYSCHAR: return 0;
    }
    return DefSubclassProc(field, message, wParam, lParam);
}

void ShowKey(HWND field, int vk) {
    char name[KEY_NAME_SIZE] = "";
    VkToKeyName(vk, name);
    if (!name[0]) FormatInto(name, "Key %d", vk);
    SetPropA(field, "ZrKey", (HANDLE)(INT_PTR)vk);
    SetWindowTextA(field, name);
}

HWND MakeControl(HWND page, const char* cls, const char* text, DWORD style, int id, int x, int y, int w, int h,
                 DWORD exStyle = 0) {
    RECT r = {x, y, x + w, y + h};
    MapDialogRect(page, &r);
    HWND control = CreateWindowExA(exStyle, cls, text, WS_CHILD | WS_VISIBLE | style, r.left, r.top,
                                   r.right - r.left, r.bottom - r.top, page, (HMENU)(INT_PTR)id, nullptr, nullptr);
    SendMessageA(control, WM_SETFONT, SendMessageA(page, WM_GETFONT, 0, 0), FALSE);
    return control;
}

// The page's controls, one row under the other (in dialog units).
void BuildPage(HWND page, int number) {
    int y = 7;
    for (int i = 0; i < kRowCount; i++) {
        const OptionRow& row = kRows[i];
        if (row.page != number) continue;
        const int id = FIRST_CONTROL + i;
        switch (row.kind) {
        case CHECK:
            MakeControl(page, "BUTTON", row.label, BS_AUTOCHECKBOX | WS_TABSTOP, id, 7, y, 270, 10);
            y += 13;
            break;
        case RESET:
            y += 6;
            MakeControl(page, "BUTTON", row.label, BS_PUSHBUTTON | WS_TABSTOP, id, 7, y, 100, 14);
            y += 18;
            break;
        case LOG_FILE:
            MakeControl(page, "STATIC", row.label, SS_LEFT, -1, 7, y + 2, 60, 10);
            MakeControl(page, "EDIT", "", ES_AUTOHSCROLL | WS_TABSTOP, id, 50, y, 172, 12, WS_EX_CLIENTEDGE);
            MakeControl(page, "BUTTON", "Browse...", BS_PUSHBUTTON | WS_TABSTOP, FIRST_BROWSE + i, 226, y, 50, 13);
            y += 17;
            break;
        default: {
            MakeControl(page, "STATIC", row.label, SS_LEFT, -1, 7, y + 2, 160, 10);
            if (row.kind == NUMBER) {
                MakeControl(page, "EDIT", "", ES_AUTOHSCROLL | WS_TABSTOP, id, 196, y, 80, 12, WS_EX_CLIENTEDGE);
            } else if (row.kind == CHOICE_INDEX || row.kind == CHOICE_TEXT) {
                HWND list = MakeControl(page, "COMBOBOX", "", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, id, 170, y,
                                        106, 120);
                const char* from = row.choices;
                while (from && *from) {
                    const char* end = strchr(from, ';');
                    char item[64];
                    const size_t length = end ? (size_t)(end - from) : strlen(from);
                    CopyIntoN(item, length + 1 < sizeof item ? length + 1 : sizeof item, from);
                    SendMessageA(list, CB_ADDSTRING, 0, (LPARAM)item);
                    from = end ? end + 1 : nullptr;
                }
            } else if (row.kind == COLOR) {
                MakeControl(page, "BUTTON", "", BS_OWNERDRAW | WS_TABSTOP, id, 226, y, 50, 12);
            } else if (row.kind == STOP_KEY) {
                HWND field = MakeControl(page, "EDIT", "", ES_READONLY | WS_TABSTOP, id, 196, y, 80, 12,
                                         WS_EX_CLIENTEDGE);
                SetWindowSubclass(field, KeyFieldProc, 1, 0);
            } else if (row.kind == OUTPUT_FONT) {
                MakeControl(page, "BUTTON", "", BS_PUSHBUTTON | WS_TABSTOP, id, 150, y, 126, 13);
            } else {
                MakeControl(page, "EDIT", "", ES_AUTOHSCROLL | WS_TABSTOP, id, 150, y, 126, 12, WS_EX_CLIENTEDGE);
            }
            y += 16;
        }
        }
    }
}

// What the registry holds, into the page's controls.
void LoadPage(HWND page, int number) {
    Loading = true;
    for (int i = 0; i < kRowCount; i++) {
        const OptionRow& row = kRows[i];
        if (row.page != number) continue;
        HWND control = GetDlgItem(page, FIRST_CONTROL + i);
        char text[MAX_PATH] = "";
        switch (row.kind) {
        case CHECK: CheckDlgButton(page, FIRST_CONTROL + i, SettingInt(row.setting) ? BST_CHECKED : BST_UNCHECKED); break;
        case NUMBER: SetDlgItemInt(page, FIRST_CONTROL + i, (UINT)SettingInt(row.setting), TRUE); break;
        case CHOICE_INDEX: {
            int index = SettingInt(row.setting);
            if (index < row.low || index > row.high) index = row.low;
            SendMessageA(control, CB_SETCURSEL, (WPARAM)index, 0);
            break;
        }
        case CHOICE_TEXT: {
            SettingText(row.setting, text, sizeof text);
            const LRESULT at = SendMessageA(control, CB_FINDSTRINGEXACT, (WPARAM)-1, (LPARAM)text);
            SendMessageA(control, CB_SETCURSEL, at == CB_ERR ? 0 : (WPARAM)at, 0);
            break;
        }
        case LOG_FILE:
        case TEXT:
            SettingText(row.setting, text, sizeof text);
            SetWindowTextA(control, text);
            break;
        case COLOR:
            SetPropA(control, "ZrColor", (HANDLE)(INT_PTR)(SettingInt(row.setting) & 0xFFFFFF));
            InvalidateRect(control, nullptr, TRUE);
            break;
        case STOP_KEY: ShowKey(control, SettingInt(row.setting)); break;
        case OUTPUT_FONT:
            SettingText("Palettes\\Output\\Font", OutputFontChoice.face, sizeof OutputFontChoice.face);
            if (!OutputFontChoice.face[0]) CopyInto(OutputFontChoice.face, "Courier New");
            OutputFontChoice.size = SettingInt("Palettes\\Output\\FontSize");
            if (OutputFontChoice.size <= 0) OutputFontChoice.size = 8;
            OutputFontChoice.italic = SettingInt("Palettes\\Output\\Font_Italic");
            OutputFontChoice.weight = SettingInt("Palettes\\Output\\Font_Weight");
            FontCaption(text, sizeof text);
            SetWindowTextA(control, text);
            break;
        case RESET: break;
        }
    }
    Loading = false;
}

// The first value of the page that cannot be stored, said in a box when
// `say` is set; false when there is one, and the focus goes to it.
bool PageValid(HWND page, int number, bool say) {
    for (int i = 0; i < kRowCount; i++) {
        const OptionRow& row = kRows[i];
        if (row.page != number) continue;
        HWND control = GetDlgItem(page, FIRST_CONTROL + i);
        char message[MAX_PATH + 200] = "";
        if (row.kind == NUMBER) {
            BOOL ok = FALSE;
            const int value = (int)GetDlgItemInt(page, FIRST_CONTROL + i, &ok, TRUE);
            if (!ok || value < row.low || value > row.high) {
                char label[128];
                CopyInto(label, row.label);
                if (char* colon = strrchr(label, ':')) *colon = 0;
                FormatInto(message, "\"%s\" takes a whole number from %d to %d.", label, row.low, row.high);
            }
        } else if (row.kind == LOG_FILE) {
            char path[MAX_PATH] = "";
            GetWindowTextA(control, path, sizeof path);
            const bool logging = IsDlgButtonChecked(page, OptionControlId("Log", nullptr)) == BST_CHECKED;
            char folder[MAX_PATH];
            CopyInto(folder, path);
            char* slash = strrchr(folder, '\\');
            if (slash) *slash = 0;
            const DWORD attributes = slash && folder[0] ? GetFileAttributesA(folder) : INVALID_FILE_ATTRIBUTES;
            if (!path[0] && logging)
                CopyInto(message, "Logging is on, but no log file is named.\n\nName a file or turn logging off.");
            else if (path[0] && (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY)))
                FormatInto(message, "The folder of the log file does not exist:\n\n%s", path);
        }
        if (message[0]) {
            if (say) ShowMessageBox(GetParent(page), message, "Options", MB_ICONWARNING);
            SetFocus(control);
            return false;
        }
    }
    return true;
}

void StorePage(HWND page, int number) {
    for (int i = 0; i < kRowCount; i++) {
        const OptionRow& row = kRows[i];
        if (row.page != number) continue;
        HWND control = GetDlgItem(page, FIRST_CONTROL + i);
        char path[300], text[MAX_PATH] = "";
        FormatInto(path, ZR_ROOT "%s", row.setting);
        switch (row.kind) {
        case CHECK:
            WriteSetting(nullptr, nullptr, IsDlgButtonChecked(page, FIRST_CONTROL + i) == BST_CHECKED, nullptr, "%s", path);
            break;
        case NUMBER:
            WriteSetting(nullptr, nullptr, (int)GetDlgItemInt(page, FIRST_CONTROL + i, nullptr, TRUE), nullptr, "%s", path);
            break;
        case CHOICE_INDEX:
            WriteSetting(nullptr, nullptr, (int)SendMessageA(control, CB_GETCURSEL, 0, 0), nullptr, "%s", path);
            break;
        case CHOICE_TEXT: {
            const LRESULT at = SendMessageA(control, CB_GETCURSEL, 0, 0);
            if (at != CB_ERR && SendMessageA(control, CB_GETLBTEXTLEN, (WPARAM)at, 0) < (LRESULT)sizeof text) {
                SendMessageA(control, CB_GETLBTEXT, (WPARAM)at, (LPARAM)text);
                WriteSetting(nullptr, text, 0, nullptr, "%s", path);
            }
            break;
        }
        case LOG_FILE:
        case TEXT:
            GetWindowTextA(control, text, sizeof text);
            WriteSetting(nullptr, text, 0, nullptr, "%s", path);
            break;
        case COLOR:
            WriteSetting(nullptr, nullptr, (int)(INT_PTR)GetPropA(control, "ZrColor"), nullptr, "%s", path);
            break;
        case STOP_KEY:
            // A key code of 0 would be written over at the next start.
            if (const int vk = (int)(INT_PTR)GetPropA(control, "ZrKey")) WriteSetting(nullptr, nullptr, vk, nullptr, "%s", path);
            break;
        case OUTPUT_FONT:
            WriteSetting(nullptr, OutputFontChoice.face, 0, nullptr, ZR_ROOT "Palettes\\Output\\Font");
            WriteSetting(nullptr, nullptr, OutputFontChoice.size, nullptr, ZR_ROOT "Palettes\\Output\\FontSize");
            WriteSetting(nullptr, nullptr, OutputFontChoice.italic, nullptr, ZR_ROOT "Palettes\\Output\\Font_Italic");
            WriteSetting(nullptr, nullptr, OutputFontChoice.weight, nullptr, ZR_ROOT "Palettes\\Output\\Font_Weight");
            break;
        case RESET: break;
        }
    }
}

void ChooseColour(HWND page, HWND button) {
    CHOOSECOLORA choose = {};
    choose.lStructSize = sizeof choose;
    choose.hwndOwner = page;
    choose.rgbResult = (COLORREF)(INT_PTR)GetPropA(button, "ZrColor");
    choose.lpCustColors = CustomColors;
    choose.Flags = CC_RGBINIT | CC_FULLOPEN;
    if (!ChooseColorA(&choose)) return;
    SetPropA(button, "ZrColor", (HANDLE)(INT_PTR)(choose.rgbResult & 0xFFFFFF));
    InvalidateRect(button, nullptr, TRUE);
    PropSheet_Changed(GetParent(page), page);
}

void ChooseOutputFont(HWND page, HWND button) {
    LOGFONTA font = {};
    HDC dc = GetDC(page);
    font.lfHeight = -MulDiv(OutputFontChoice.size, GetDeviceCaps(dc, LOGPIXELSY), 72);
    ReleaseDC(page, dc);
    font.lfWeight = OutputFontChoice.weight;
    font.lfItalic = (BYTE)(OutputFontChoice.italic != 0);
    CopyInto(font.lfFaceName, OutputFontChoice.face);
    CHOOSEFONTA choose = {};
    choose.lStructSize = sizeof choose;
    choose.hwndOwner = page;
    choose.lpLogFont = &font;
    choose.Flags = CF_SCREENFONTS | CF_INITTOLOGFONTSTRUCT;
    if (!ChooseFontA(&choose)) return;
    CopyInto(OutputFontChoice.face, font.lfFaceName);
    OutputFontChoice.size = choose.iPointSize / 10 > 0 ? choose.iPointSize / 10 : 8;
    OutputFontChoice.italic = font.lfItalic ? 1 : 0;
    OutputFontChoice.weight = font.lfWeight ? (int)font.lfWeight : FW_NORMAL;
    char caption[LF_FACESIZE + 40];
    FontCaption(caption, sizeof caption);
    SetWindowTextA(button, caption);
    PropSheet_Changed(GetParent(page), page);
}

void ResetAll(HWND page) {
    if (ShowMessageBox(GetParent(page), "Are you sure that you want to reset all configurations to their original values?",
                       "Confirm Action", MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    LoadSettings(1);
    for (int p = 0; p < OPTIONS_PAGES; p++)
        if (PageWindows[p] && IsWindow(PageWindows[p])) LoadPage(PageWindows[p], p);
    if (MainWindow) ReapplySettings(MainWindow);
}

void BrowseLogFile(HWND page, int row) {
    HWND field = GetDlgItem(page, FIRST_CONTROL + row);
    char path[MAX_PATH] = "";
    GetWindowTextA(field, path, sizeof path);
    if (ChooseFileName(page, "Text Files (*.txt, *.log)\0*.txt;*.log\0All Files (*.*)\0*.*\0", "Log File", path,
                       sizeof path, true))
        SetWindowTextA(field, path);
}

INT_PTR CALLBACK PageProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG: {
        const int number = (int)((PROPSHEETPAGEA*)lParam)->lParam;
        SetWindowLongPtrA(page, GWLP_USERDATA, number);
        PageWindows[number] = page;
        BuildPage(page, number);
        LoadPage(page, number);
        return TRUE;
    }
    case WM_DESTROY:
        for (HWND& w : PageWindows)
            if (w == page) w = nullptr;
        return FALSE;
    case WM_DRAWITEM: {
        const DRAWITEMSTRUCT* item = (const DRAWITEMSTRUCT*)lParam;
        RECT r = item->rcItem;
        DrawFrameControl(item->hDC, &r, DFC_BUTTON, DFCS_BUTTONPUSH | (item->itemState & ODS_SELECTED ? DFCS_PUSHED : 0));
        InflateRect(&r, -4, -3);
        HBRUSH brush = CreateSolidBrush((COLORREF)(INT_PTR)GetPropA(item->hwndItem, "ZrColor"));
        FillRect(item->hDC, &r, brush);
        DeleteObject(brush);
        FrameRect(item->hDC, &r, (HBRUSH)GetStockObject(BLACK_BRUSH));
        if (item->itemState & ODS_FOCUS) {
            InflateRect(&r, 2, 2);
            DrawFocusRect(item->hDC, &r);
        }
        return TRUE;
    }
    case WM_COMMAND: {
        const int id = LOWORD(wParam), code = HIWORD(wParam);
        if (id >= FIRST_BROWSE && id < FIRST_BROWSE + kRowCount) {
            BrowseLogFile(page, id - FIRST_BROWSE);
            return TRUE;
        }
        if (id < FIRST_CONTROL || id >= FIRST_CONTROL + kRowCount) break;
        const OptionRow& row = kRows[id - FIRST_CONTROL];
        if (code == BN_CLICKED && row.kind == RESET) ResetAll(page);
        else if (code == BN_CLICKED && row.kind == COLOR) ChooseColour(page, (HWND)lParam);
        else if (code == BN_CLICKED && row.kind == OUTPUT_FONT) ChooseOutputFont(page, (HWND)lParam);
        else if (!Loading && (code == BN_CLICKED || code == EN_CHANGE || code == CBN_SELCHANGE))
            PropSheet_Changed(GetParent(page), page);
        return TRUE;
    }
    case WM_NOTIFY: {
        const NMHDR* header = (const NMHDR*)lParam;
        const int number = PageOf(page);
        switch (header->code) {
        case PSN_SETACTIVE:
            WriteSetting(nullptr, nullptr, number, nullptr, ZR_ROOT "LastTab");
            SetWindowLongPtrA(page, DWLP_MSGRESULT, 0);
            return TRUE;
        case PSN_KILLACTIVE:
            SetWindowLongPtrA(page, DWLP_MSGRESULT, PageValid(page, number, true) ? FALSE : TRUE);
            return TRUE;
        // Each page was checked, with words, when the user left it (the
        // current one too, as OK leaves it): here only nothing invalid is
        // stored.
        case PSN_APPLY:
            if (!PageValid(page, number, false)) {
                SetWindowLongPtrA(page, DWLP_MSGRESULT, PSNRET_INVALID);
                return TRUE;
            }
            StorePage(page, number);
            if (MainWindow) ReapplySettings(MainWindow);
            SetWindowLongPtrA(page, DWLP_MSGRESULT, PSNRET_NOERROR);
            return TRUE;
        }
        break;
    }
    }
    return FALSE;
}

// The sheet's window is known from its first message on.
int CALLBACK SheetCallback(HWND sheet, UINT message, LPARAM) {
    if (message == PSCB_INITIALIZED) OptionsSheet = sheet;
    return 0;
}

}  // namespace

int OptionControlId(const char* setting, int* page) {
    for (int i = 0; i < kRowCount; i++) {
        if (lstrcmpiA(kRows[i].setting, setting) != 0) continue;
        if (page) *page = kRows[i].page;
        return FIRST_CONTROL + i;
    }
    return 0;
}

bool ShowOptionsSheet(HWND owner) {
    PROPSHEETPAGEA pages[OPTIONS_PAGES] = {};
    for (int p = 0; p < OPTIONS_PAGES; p++) {
        pages[p].dwSize = sizeof pages[p];
        pages[p].dwFlags = PSP_USETITLE;
        pages[p].hInstance = GetModuleHandleA(nullptr);
        pages[p].pszTemplate = MAKEINTRESOURCEA(IDD_OPTIONS_PAGE);
        pages[p].pfnDlgProc = PageProc;
        pages[p].pszTitle = kPageTitles[p];
        pages[p].lParam = p;
    }
    int start = SettingInt("LastTab");
    if (start < 0 || start >= OPTIONS_PAGES) start = 0;
    PROPSHEETHEADERA header = {};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_USECALLBACK | PSH_NOCONTEXTHELP;
    header.hwndParent = owner;
    header.hInstance = GetModuleHandleA(nullptr);
    header.pszCaption = "Options";
    header.nPages = OPTIONS_PAGES;
    header.nStartPage = (UINT)start;
    header.ppsp = pages;
    header.pfnCallback = SheetCallback;
    const INT_PTR result = PropertySheetA(&header);
    OptionsSheet = nullptr;
    return result > 0;
}
