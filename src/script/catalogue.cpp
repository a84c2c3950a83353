// The action catalogue and its look-up.
#include "script/catalogue.h"

#include <commctrl.h>
#include <string.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "base/settings.h"

const CatalogueEntry ActionCatalogue[] = {
    // Run Program
    {"Run Program", 100002, 1},
    {"Start", 2, 2},
    {"Start and Wait for Program to Exit", 2, 4},
    {"Start Hidden", 2, 3},
    {"Kill Process", 2, 5},
    {"Launch Document", 2, 6},
    {"MS-DOS Command", 2, 7},
    {"Control Panel: System", 2, 8},
    {"Start Service", 2, 9},
    {"Stop Service", 2, 10},
    {"Service Startup Type", 2, 11},
    {"Call Script", 2, 12},
    // Windows/Controls
    {"Windows/Controls", 100003, 1},
    {"Activate", 3, 13},
    {"Press Button/Control", 3, 14},
    {"Get Text", 3, 15},
    {"Move Window", 3, 16},
    {"Resize", 3, 17},
    {"Maximize", 3, 18},
    {"Minimize/Restore", 3, 19},
    {"Close Window", 3, 20},
    {"Set Window Style", 3, 21},
    {"Minimize all Windows", 3, 22},
    {"Close all Windows", 3, 23},
    // Keyboard
    {"Keyboard", 100004, 1},
    {"Type", 4, 24},
    {"Buffered Virtual Keys", 4, 25},
    {"Text via Clipboard", 4, 26},
    {"Direct Window Entry", 4, 27},
    {"Block Input", 4, 28},
    {"Unblock Input", 4, 29},
    // Menu
    {"Menu", 100005, 1},
    {"Select Menu Item", 5, 30},
    {"Select System Menu", 5, 31},
    {"Show Popup Menu", 5, 32},
    // Mouse
    {"Mouse", 100006, 1},
    {"Move", 6, 33},
    {"Move Relative", 6, 148},
    {"Move to Control", 6, 34},
    {"Move to Window", 6, 35},
    {"Move to Image", 6, 36},
    {"Move to Masked Image", 6, 37},
    {"Left Button Click", 6, 38},
    {"Right Button Click", 6, 39},
    {"Left Button Double-Click", 6, 40},
    {"Left Button Down + Hold", 6, 41},
    {"Left Button Up", 6, 42},
    {"Mouse Wheel Up", 6, 43},
    {"Mouse Wheel Down", 6, 44},
    {"Click on Image", 6, 45},
    {"Click on Masked Image", 6, 46},
    {"Save Current Position", 6, 47},
    {"Return to Saved Position", 6, 48},
    // Wait
    {"Wait", 100007, 1},
    {"Delay", 7, 49},
    {"Wait for Keypress", 7, 50},
    {"Wait for Mouse Click", 7, 51},
    {"Wait for Mouse Movement", 7, 52},
    {"Wait for Pixel", 7, 53},
    {"Wait for Image to Appear", 7, 54},
    {"Wait for Masked Image", 7, 55},
    {"Wait for Window to Appear", 7, 56},
    {"Wait for Window to Disappear", 7, 57},
    {"Wait for File to Exist", 7, 58},
    // User Prompt
    {"User Prompt", 100008, 1},
    {"Display Message", 8, 59},
    {"Display Warning", 8, 60},
    {"Status Popup", 8, 61},
    {"Progress Bar Popup", 8, 62},
    {"Tool Tip Popup", 8, 63},
    {"Balloon Popup", 8, 64},
    {"Display Image", 8, 65},
    {"Ask Yes/No Question", 8, 66},
    {"Input Value", 8, 67},
    {"Login Prompt", 8, 68},
    {"Choose from a List", 8, 69},
    {"Choose a File", 8, 70},
    {"Choose a Folder", 8, 71},
    {"Custom Message Box", 8, 72},
    // Recordings
    {"Recordings", 100009, 1},
    {"Recording", 9, 73},
    // Files/Folders
    {"Files/Folders", 100010, 1},
    {"Read File", 10, 74},
    {"Read File Line", 10, 75},
    {"Count File Lines", 10, 76},
    {"Write/Create File", 10, 77},
    {"Copy File", 10, 78},
    {"Move/Rename File", 10, 79},
    {"Delete File", 10, 80},
    {"Change File Size", 10, 81},
    {"Create Folder", 10, 82},
    {"Copy Folder", 10, 83},
    {"Move/Rename Folder", 10, 84},
    {"Delete Folder", 10, 85},
    {"Set Current Directory", 10, 86},
    {"Set File Association", 10, 87},
    {"Map Drive", 10, 88},
    {"Map Drive Prompt", 10, 89},
    // Internet
    {"Internet", 100011, 1},
    {"Start Browser", 2, 90},
    {"Start Email", 2, 91},
    {"Open a Web Page", 11, 92},
    {"Save Web Page Text", 11, 93},
    {"Save Web Page HTML", 11, 94},
    {"Download", 11, 95},
    {"HTTP Post", 11, 96},
    {"Check Email: POP3", 11, 97},
    {"Delete Email: POP3", 11, 98},
    {"Send Email: SMTP", 11, 99},
    {"Send Email: MAPI", 11, 100},
    {"Send Email: \"mailto\"", 11, 101},
    {"FTP Download", 11, 102},
    {"FTP Upload", 11, 103},
    {"FTP Delete File", 11, 104},
    {"FTP Create Folder", 11, 105},
    {"FTP Delete Folder", 11, 106},
    {"Ping IP Address", 11, 107},
    // Database
    {"Database", 100012, 1},
    {"Execute SQL Query", 12, 108},
    // Loops / Flow
    {"Loops / Flow", 100013, 1},
    {"Start 'For' Loop", 13, 109},
    {"Start 'While' Loop", 13, 110},
    {"Start Files Loop", 13, 111},
    {"Start File Line Loop", 13, 112},
    {"Start Windows Loop", 13, 113},
    {"Start Dataset Loop", 13, 114},
    {"Break out of Loop", 13, 115},
    {"NEXT LOOP", 13, 116},
    {"Label", 13, 117},
    {"Goto Label", 13, 118},
    {"Set Run Repeats", 13, 119},
    {"Exit Run", 13, 120},
    {"Exit ZantoRunner", 13, 121},
    // IF
    {"IF", 100014, 1},
    {"IF Expression", 14, 122},
    {"IF File Exists", 14, 123},
    {"IF Folder Exists", 14, 124},
    {"IF Window Exists", 14, 125},
    {"IF Control Exists", 14, 126},
    {"IF Control Is Checked", 14, 127},
    {"IF Caps Lock is On", 14, 128},
    {"IF Pixel is Visible", 14, 129},
    {"IF Image is Visible", 14, 130},
    {"IF Masked Image is Visible", 14, 131},
    {"IF Clipboard Equals", 14, 132},
    {"ELSE", 14, 133},
    {"END IF", 14, 134},
    // System
    {"System", 100015, 1},
    {"Comment", 15, 135},
    {"Create/Set Variable", 15, 136},
    {"Increment Variable", 15, 137},
    {"Decrement Variable", 15, 138},
    {"Set Environment Variable", 15, 139},
    {"Set Step Delay", 15, 140},
    {"Write to Log", 15, 141},
    {"Set Clipboard Text", 15, 142},
    {"Paste Clipboard", 15, 143},
    {"Clear Clipboard", 15, 144},
    {"Screen Image Capture", 15, 145},
    {"Window Image Capture", 15, 146},
    {"Video Display Mode", 15, 147},
    {"Disable Screen Saver", 15, 149},
    {"Enable Screen Saver", 15, 150},
    {"Read Registry", 15, 151},
    {"Write Registry", 15, 152},
    {"Copy Registry", 15, 153},
    {"Delete Registry", 15, 154},
    {"Logoff", 15, 155},
    {"Restart", 15, 156},
    {"Shutdown", 15, 157},
    // Functions
    {"Functions", 100016, 1},
    {"Get Length", 16, 158},
    {"Uppercase", 16, 159},
    {"Lowercase", 16, 160},
    {"Trim", 16, 161},
    {"Replace Text", 16, 162},
    {"Insert Text", 16, 163},
    {"Get Sub Text", 16, 164},
    {"Count Items", 16, 165},
    {"Find String", 16, 166},
    {"Pad String", 16, 167},
    {"Left String", 16, 168},
    {"Right String", 16, 169},
    {"Mid String", 16, 170},
    {"Encrypt/Decrypt Text", 16, 171},
    {"Format Number", 16, 172},
    {"Number to Words", 16, 173},
    {"Absolute Value", 16, 174},
    {"Random Number", 16, 175},
    {"Math Calculation", 16, 176},
    // External Functions
    {"External Functions", 100017, 1},
    {"Win32 API", 17, 177},
    {"Call DLL Function", 17, 178},
    {"Post WM_COMMAND", 17, 179},
};
const int ActionCatalogueCount = sizeof(ActionCatalogue) / sizeof(ActionCatalogue[0]);

namespace {

struct Found {
    int category;
    int image;
};

// Built by FillActionsTree from exactly the items it put in the tree, in the
// tree's depth-first order; the first label wins, as in a walk of the tree.
std::unordered_map<std::string, Found> LookupIndex;

std::string FoldCase(const char* text) {
    std::string s(text);
    if (!s.empty()) CharLowerBuffA(&s[0], (DWORD)s.size());
    return s;
}

void AddToIndex(const char* name, int category, int image) {
    LookupIndex.emplace(FoldCase(name), Found{category, image});
}

HTREEITEM InsertItem(HWND tree, HTREEITEM parent, const char* label, int data, int image) {
    if (!tree) return nullptr;
    TVINSERTSTRUCTA ins = {};
    ins.hParent = parent;
    ins.hInsertAfter = TVI_LAST;
    ins.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    ins.item.pszText = (char*)label;
    ins.item.lParam = data;
    ins.item.iImage = ins.item.iSelectedImage = image;
    return (HTREEITEM)SendMessageA(tree, TVM_INSERTITEMA, 0, (LPARAM)&ins);
}

void ExpandIfSaved(HWND tree, HTREEITEM item, int data) {
    if (tree && item &&
        ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Palettes\\Actions\\tree_%d", data))
        SendMessageA(tree, TVM_EXPAND, TVE_EXPAND, (LPARAM)item);
}

}  // namespace

void FillActionsTree(HWND tree) {
    LookupIndex.clear();
    if (tree) SendMessageA(tree, TVM_DELETEITEM, 0, (LPARAM)TVI_ROOT);

    // Favorites: each value under Favorites names an action, and its number
    // is category * 1000 + image; only numbers above 1000 count.
    HTREEITEM favorites = InsertItem(tree, TVI_ROOT, "Favorites", HEADING_FAVORITES, 0);
    AddToIndex("Favorites", HEADING_FAVORITES, 0);
    int added = 0;
    char name[260];
    for (int i = 0; EnumRegValue(nullptr, ZR_ROOT "Favorites", i, name) > 0; i++) {
        int number = ReadSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Favorites\\%s", name);
        if (number <= 1000) continue;
        InsertItem(tree, favorites, name, number / 1000, number % 1000);
        AddToIndex(name, number / 1000, number % 1000);
        added++;
    }
    if (!added) {
        InsertItem(tree, favorites, "(right-click any action to add)", FAVORITES_PLACEHOLDER, 0);
        AddToIndex("(right-click any action to add)", FAVORITES_PLACEHOLDER, 0);
    }
    ExpandIfSaved(tree, favorites, HEADING_FAVORITES);

    HTREEITEM heading = nullptr;
    int headingData = 0;
    for (int i = 0; i < ActionCatalogueCount; i++) {
        const CatalogueEntry& e = ActionCatalogue[i];
        if (e.category > 99999) {
            ExpandIfSaved(tree, heading, headingData);
            heading = InsertItem(tree, TVI_ROOT, e.name, e.category, e.image);
            headingData = e.category;
        } else {
            InsertItem(tree, heading, e.name, e.category, e.image);
        }
        AddToIndex(e.name, e.category, e.image);
    }
    ExpandIfSaved(tree, heading, headingData);
}

int LookupAction(HWND, const char* name, int* category, int* image) {
    *category = *image = 0;
    if (!name) return 0;
    auto it = LookupIndex.find(FoldCase(name));
    if (it == LookupIndex.end()) return 0;
    *category = it->second.category;
    *image = it->second.image;
    return 1;
}

const char* CategoryName(int category) {
    for (int i = 0; i < ActionCatalogueCount; i++)
        if (ActionCatalogue[i].category == 100000 + category) return ActionCatalogue[i].name;
    return "";
}
