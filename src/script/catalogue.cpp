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
    {"Run Program", 100002, 1,
     "Start programs and documents, call other scripts, end processes and drive services."},
    {"Start", 2, 2,
     "Starts a program or opens a document, optionally hidden, reusing a running copy, or waiting for it to end."},
    {"Start and Wait for Program to Exit", 2, 4,
     "Starts a program and waits until it ends, up to the time limit; its exit code can be saved."},
    {"Start Hidden", 2, 3,
     "Starts a program without showing its window."},
    {"Kill Process", 2, 5,
     "Ends every running process of the given program name."},
    {"Launch Document", 2, 6,
     "Opens a document with the program registered for its type."},
    {"MS-DOS Command", 2, 7,
     "Runs a command line through the command interpreter."},
    {"Control Panel: System", 2, 8,
     "Opens the System page of the Control Panel."},
    {"Start Service", 2, 9,
     "Starts a Windows service by name."},
    {"Stop Service", 2, 10,
     "Stops a Windows service by name."},
    {"Service Startup Type", 2, 11,
     "Sets whether a service starts automatically, by hand, or not at all."},
    {"Call Script", 2, 12,
     "Runs another script as a child run and waits for it; variables are shared."},
    // Windows/Controls
    {"Windows/Controls", 100003, 1,
     "Find windows and the controls in them by title, class, ID or image, and act on them as a person would."},
    {"Activate", 3, 13,
     "Brings a window to the front and gives it the keyboard."},
    {"Press Button/Control", 3, 14,
     "Presses a button or other control of a window, found by its text or ID."},
    {"Get Text", 3, 15,
     "Reads the text of a window or control and saves it."},
    {"Move Window", 3, 16,
     "Moves a window to a position on the screen."},
    {"Resize", 3, 17,
     "Changes a window's width and height."},
    {"Maximize", 3, 18,
     "Maximizes a window."},
    {"Minimize/Restore", 3, 19,
     "Minimizes a window, or restores it."},
    {"Close Window", 3, 20,
     "Asks a window to close, as its close button does."},
    {"Set Window Style", 3, 21,
     "Changes a window's style: shown or hidden, enabled or disabled, always on top, its caption, border and buttons."},
    {"Minimize all Windows", 3, 22,
     "Minimizes every window on the desktop."},
    {"Close all Windows", 3, 23,
     "Closes every main window on the desktop."},
    // Keyboard
    {"Keyboard", 100004, 1,
     "Type text and keys into the window in front, or straight into a control."},
    {"Type", 4, 24,
     "Types text and {key} names into the window in front as key presses."},
    {"Buffered Virtual Keys", 4, 25,
     "Types text all at once through the input queue, faster than Type and not split by other input."},
    {"Text via Clipboard", 4, 26,
     "Puts the text on the clipboard and pastes it into the window in front."},
    {"Direct Window Entry", 4, 27,
     "Sets the text of a control directly, without key presses."},
    {"Block Input", 4, 28,
     "Stops the user's keyboard and mouse from reaching programs until Unblock Input or the end of the run."},
    {"Unblock Input", 4, 29,
     "Gives the keyboard and mouse back to the user."},
    // Menu
    {"Menu", 100005, 1,
     "Choose items of other programs' menus by their path."},
    {"Select Menu Item", 5, 30,
     "Chooses an item of a window's menu bar by its path, such as &File;&Save."},
    {"Select System Menu", 5, 31,
     "Chooses an item of a window's system menu (Move, Size, Close...)."},
    {"Show Popup Menu", 5, 32,
     "Shows a menu of the script's own items and saves the one chosen."},
    // Mouse
    {"Mouse", 100006, 1,
     "Move the mouse to points, windows, controls and images, click, and scroll."},
    {"Move", 6, 33,
     "Moves the mouse to a point on the screen or in a window."},
    {"Move Relative", 6, 148,
     "Moves the mouse by a distance from where it is."},
    {"Move to Control", 6, 34,
     "Moves the mouse over a control of a window."},
    {"Move to Window", 6, 35,
     "Moves the mouse over a window."},
    {"Move to Image", 6, 36,
     "Moves the mouse to where an image is found on the screen."},
    {"Move to Masked Image", 6, 37,
     "Moves the mouse to where an image is found, ignoring the pixels of its mask colour."},
    {"Left Button Click", 6, 38,
     "Clicks the left mouse button."},
    {"Right Button Click", 6, 39,
     "Clicks the right mouse button."},
    {"Left Button Double-Click", 6, 40,
     "Double-clicks the left mouse button."},
    {"Left Button Down + Hold", 6, 41,
     "Presses the left button and holds it, for a drag."},
    {"Left Button Up", 6, 42,
     "Lets the left button go, ending a drag."},
    {"Mouse Wheel Up", 6, 43,
     "Turns the mouse wheel up."},
    {"Mouse Wheel Down", 6, 44,
     "Turns the mouse wheel down."},
    {"Click on Image", 6, 45,
     "Finds an image on the screen and clicks it."},
    {"Click on Masked Image", 6, 46,
     "Finds an image on the screen, ignoring its mask colour, and clicks it."},
    {"Save Current Position", 6, 47,
     "Remembers where the mouse is."},
    {"Return to Saved Position", 6, 48,
     "Moves the mouse back to the remembered position."},
    // Wait
    {"Wait", 100007, 1,
     "Wait for time to pass, or for a key, a click, a pixel, an image, a window or a file."},
    {"Delay", 7, 49,
     "Waits a number of milliseconds."},
    {"Wait for Keypress", 7, 50,
     "Waits until a key is pressed."},
    {"Wait for Mouse Click", 7, 51,
     "Waits until a mouse button is clicked."},
    {"Wait for Mouse Movement", 7, 52,
     "Waits until the mouse moves."},
    {"Wait for Pixel", 7, 53,
     "Waits until a point of the screen has a colour."},
    {"Wait for Image to Appear", 7, 54,
     "Waits until an image is seen on the screen."},
    {"Wait for Masked Image", 7, 55,
     "Waits until an image is seen, ignoring its mask colour."},
    {"Wait for Window to Appear", 7, 56,
     "Waits until a window exists."},
    {"Wait for Window to Disappear", 7, 57,
     "Waits until a window is gone."},
    {"Wait for File to Exist", 7, 58,
     "Waits until a file exists."},
    // User Prompt
    {"User Prompt", 100008, 1,
     "Tell the user something or ask: messages, popups, questions, inputs and choosers."},
    {"Display Message", 8, 59,
     "Shows a message box, closed by the user or after a time."},
    {"Display Warning", 8, 60,
     "Shows a warning box."},
    {"Status Popup", 8, 61,
     "Shows a small window with a status text that stays while the run goes on."},
    {"Progress Bar Popup", 8, 62,
     "Shows a progress bar at a percentage."},
    {"Tool Tip Popup", 8, 63,
     "Shows a tooltip at the mouse."},
    {"Balloon Popup", 8, 64,
     "Shows a balloon tip from the notification area."},
    {"Display Image", 8, 65,
     "Shows a picture file in a window."},
    {"Ask Yes/No Question", 8, 66,
     "Asks a Yes/No question and saves 1 for Yes (or no answer in time), 0 for No."},
    {"Input Value", 8, 67,
     "Asks the user for a value and saves it."},
    {"Login Prompt", 8, 68,
     "Asks for a user name and password."},
    {"Choose from a List", 8, 69,
     "Lets the user choose one item of a list and saves it."},
    {"Choose a File", 8, 70,
     "Lets the user choose a file and saves its path."},
    {"Choose a Folder", 8, 71,
     "Lets the user choose a folder and saves its path."},
    {"Custom Message Box", 8, 72,
     "Shows a message box with the buttons and icon you choose and saves the button pressed."},
    // Recordings
    {"Recordings", 100009, 1,
     "Play back keyboard and mouse input recorded in the editor."},
    {"Recording", 9, 73,
     "Plays back a recording of keyboard and mouse input at its recorded pace."},
    // Files/Folders
    {"Files/Folders", 100010, 1,
     "Read, write, copy, move and delete files and folders."},
    {"Read File", 10, 74,
     "Reads a whole file and saves its text."},
    {"Read File Line", 10, 75,
     "Reads one line of a file by its number."},
    {"Count File Lines", 10, 76,
     "Counts the lines of a file."},
    {"Write/Create File", 10, 77,
     "Writes text to a file, replacing it or adding at its end."},
    {"Copy File", 10, 78,
     "Copies files; wildcards copy several."},
    {"Move/Rename File", 10, 79,
     "Moves or renames a file."},
    {"Delete File", 10, 80,
     "Deletes files; wildcards delete several."},
    {"Change File Size", 10, 81,
     "Cuts or extends a file to a size."},
    {"Create Folder", 10, 82,
     "Creates a folder and any missing folders above it."},
    {"Copy Folder", 10, 83,
     "Copies a folder with everything in it."},
    {"Move/Rename Folder", 10, 84,
     "Moves or renames a folder."},
    {"Delete Folder", 10, 85,
     "Deletes a folder with everything in it."},
    {"Set Current Directory", 10, 86,
     "Sets the folder that relative paths start from."},
    {"Set File Association", 10, 87,
     "Sets the program that opens files of a type."},
    {"Map Drive", 10, 88,
     "Connects a drive letter to a network share."},
    {"Map Drive Prompt", 10, 89,
     "Shows the system's dialog for connecting a network drive."},
    // Internet
    {"Internet", 100011, 1,
     "Web pages, downloads, mail, FTP and ping."},
    {"Start Browser", 2, 90,
     "Starts the web browser, optionally at an address."},
    {"Start Email", 2, 91,
     "Starts the mail program."},
    {"Open a Web Page", 11, 92,
     "Opens an address in the web browser."},
    {"Save Web Page Text", 11, 93,
     "Downloads a web page and saves its text without the markup."},
    {"Save Web Page HTML", 11, 94,
     "Downloads a web page and saves its HTML."},
    {"Download", 11, 95,
     "Downloads a file from an address."},
    {"HTTP Post", 11, 96,
     "Sends form data to an address and saves the answer."},
    {"Check Email: POP3", 11, 97,
     "Reads messages from a POP3 mailbox."},
    {"Delete Email: POP3", 11, 98,
     "Deletes messages from a POP3 mailbox."},
    {"Send Email: SMTP", 11, 99,
     "Sends a message through an SMTP server."},
    {"Send Email: MAPI", 11, 100,
     "Sends a message through the mail program (MAPI)."},
    {"Send Email: \"mailto\"", 11, 101,
     "Opens a new message in the mail program through a mailto: address."},
    {"FTP Download", 11, 102,
     "Downloads a file from an FTP server."},
    {"FTP Upload", 11, 103,
     "Uploads a file to an FTP server."},
    {"FTP Delete File", 11, 104,
     "Deletes a file on an FTP server."},
    {"FTP Create Folder", 11, 105,
     "Creates a folder on an FTP server."},
    {"FTP Delete Folder", 11, 106,
     "Deletes a folder on an FTP server."},
    {"Ping IP Address", 11, 107,
     "Checks that a computer answers, and saves the time it took."},
    // Database
    {"Database", 100012, 1,
     "Query ODBC data sources."},
    {"Execute SQL Query", 12, 108,
     "Runs an SQL statement against an ODBC data source and saves the rows."},
    // Loops / Flow
    {"Loops / Flow", 100013, 1,
     "Loops, labels and jumps, repeats and exits: the order the steps run in."},
    {"Start 'For' Loop", 13, 109,
     "Repeats the steps up to NEXT LOOP a number of times; %l counts the passes."},
    {"Start 'While' Loop", 13, 110,
     "Repeats the steps up to NEXT LOOP while an expression is true."},
    {"Start Files Loop", 13, 111,
     "Repeats the steps up to NEXT LOOP for each file that matches a pattern."},
    {"Start File Line Loop", 13, 112,
     "Repeats the steps up to NEXT LOOP for each line of a file."},
    {"Start Windows Loop", 13, 113,
     "Repeats the steps up to NEXT LOOP for each window that matches."},
    {"Start Dataset Loop", 13, 114,
     "Repeats the steps up to NEXT LOOP for each row of a query's result."},
    {"Break out of Loop", 13, 115,
     "Leaves the loop it is in and goes on after its NEXT LOOP."},
    {"NEXT LOOP", 13, 116,
     "Ends the steps of a loop: the run goes back to the loop's start for the next pass."},
    {"Label", 13, 117,
     "Marks a place that Goto Label and failure modes can jump to."},
    {"Goto Label", 13, 118,
     "Goes on at the step after a label."},
    {"Set Run Repeats", 13, 119,
     "Runs the whole script again a number of times."},
    {"Exit Run", 13, 120,
     "Ends the run with an exit code."},
    {"Exit ZantoRunner", 13, 121,
     "Ends the run and closes ZantoRunner with an exit code."},
    // IF
    {"IF", 100014, 1,
     "Run steps only when a condition holds: IF, ELSE, END IF."},
    {"IF Expression", 14, 122,
     "Runs the steps up to ELSE or END IF when an expression is true."},
    {"IF File Exists", 14, 123,
     "Runs the steps up to ELSE or END IF when a file exists."},
    {"IF Folder Exists", 14, 124,
     "Runs the steps up to ELSE or END IF when a folder exists."},
    {"IF Window Exists", 14, 125,
     "Runs the steps up to ELSE or END IF when a window exists."},
    {"IF Control Exists", 14, 126,
     "Runs the steps up to ELSE or END IF when a control of a window exists."},
    {"IF Control Is Checked", 14, 127,
     "Runs the steps up to ELSE or END IF when a check box or radio button is checked."},
    {"IF Caps Lock is On", 14, 128,
     "Runs the steps up to ELSE or END IF when Caps Lock is on."},
    {"IF Pixel is Visible", 14, 129,
     "Runs the steps up to ELSE or END IF when a point of the screen has a colour."},
    {"IF Image is Visible", 14, 130,
     "Runs the steps up to ELSE or END IF when an image is seen on the screen."},
    {"IF Masked Image is Visible", 14, 131,
     "Runs the steps up to ELSE or END IF when an image is seen, ignoring its mask colour."},
    {"IF Clipboard Equals", 14, 132,
     "Runs the steps up to ELSE or END IF when the clipboard holds a text."},
    {"ELSE", 14, 133,
     "Starts the steps that run when the IF's condition does not hold."},
    {"END IF", 14, 134,
     "Ends an IF block."},
    // System
    {"System", 100015, 1,
     "Variables, the log, the clipboard, screen captures, the registry and the session."},
    {"Comment", 15, 135,
     "A note in the script; it does nothing when the run reaches it."},
    {"Create/Set Variable", 15, 136,
     "Sets a variable to a text, translated first."},
    {"Increment Variable", 15, 137,
     "Adds one to a variable."},
    {"Decrement Variable", 15, 138,
     "Takes one from a variable."},
    {"Set Environment Variable", 15, 139,
     "Sets an environment variable of the run and the programs it starts."},
    {"Set Step Delay", 15, 140,
     "Sets the pause between steps for the rest of the run."},
    {"Write to Log", 15, 141,
     "Writes a line to the log."},
    {"Set Clipboard Text", 15, 142,
     "Puts a text on the clipboard."},
    {"Paste Clipboard", 15, 143,
     "Pastes the clipboard into the window in front."},
    {"Clear Clipboard", 15, 144,
     "Empties the clipboard."},
    {"Screen Image Capture", 15, 145,
     "Saves a picture of the screen to a file."},
    {"Window Image Capture", 15, 146,
     "Saves a picture of a window to a file."},
    {"Video Display Mode", 15, 147,
     "Changes the screen's resolution and colours."},
    {"Disable Screen Saver", 15, 149,
     "Turns the screen saver off."},
    {"Enable Screen Saver", 15, 150,
     "Turns the screen saver on."},
    {"Read Registry", 15, 151,
     "Reads a registry value and saves it."},
    {"Write Registry", 15, 152,
     "Writes a registry value."},
    {"Copy Registry", 15, 153,
     "Copies a registry key with its values."},
    {"Delete Registry", 15, 154,
     "Deletes a registry value or key."},
    {"Logoff", 15, 155,
     "Logs the user off."},
    {"Restart", 15, 156,
     "Restarts the computer."},
    {"Shutdown", 15, 157,
     "Shuts the computer down."},
    // Functions
    {"Functions", 100016, 1,
     "Work with text and numbers; each saves its result."},
    {"Get Length", 16, 158,
     "Saves the number of characters of a text."},
    {"Uppercase", 16, 159,
     "Saves a text in capital letters."},
    {"Lowercase", 16, 160,
     "Saves a text in small letters."},
    {"Trim", 16, 161,
     "Strips a character or text from the end (or the front) of a text, as often as it is there."},
    {"Replace Text", 16, 162,
     "Replaces every occurrence of a text in another."},
    {"Insert Text", 16, 163,
     "Inserts a text at a position of another."},
    {"Get Sub Text", 16, 164,
     "Saves one item of a text split by a delimiter, by its number."},
    {"Count Items", 16, 165,
     "Counts the items of a text separated by a character."},
    {"Find String", 16, 166,
     "Saves the text from the first match of a search text to its end."},
    {"Pad String", 16, 167,
     "Appends a text as often as needed to bring a text up to a length."},
    {"Left String", 16, 168,
     "Saves the first characters of a text."},
    {"Right String", 16, 169,
     "Saves the last characters of a text."},
    {"Mid String", 16, 170,
     "Saves characters from the middle of a text."},
    {"Encrypt/Decrypt Text", 16, 171,
     "Scrambles a text with a key; the same step with the same key unscrambles it."},
    {"Format Number", 16, 172,
     "Formats a number with decimals and thousands separators."},
    {"Number to Words", 16, 173,
     "Writes a number in words."},
    {"Absolute Value", 16, 174,
     "Saves a number without its sign."},
    {"Random Number", 16, 175,
     "Saves a random whole number in a range."},
    {"Math Calculation", 16, 176,
     "Calculates a formula and saves the result."},
    // External Functions
    {"External Functions", 100017, 1,
     "Call functions of system libraries and your own DLLs, and post commands to windows."},
    {"Win32 API", 17, 177,
     "Calls a function of a system library from a line of text, such as MessageBox( 0, \"hi\", \"title\", 0 )."},
    {"Call DLL Function", 17, 178,
     "Calls a function of a library you name, with arguments."},
    {"Post WM_COMMAND", 17, 179,
     "Posts a command message to a window, as its menu or toolbar would."},
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
    HTREEITEM favorites = InsertItem(tree, TVI_ROOT, "Favorites", HEADING_FAVORITES,
                                     HEADING_IMAGE_BASE + HEADING_FAVORITES - 100000);
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
            heading = InsertItem(tree, TVI_ROOT, e.name, e.category, HEADING_IMAGE_BASE + e.category - 100000);
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

const char* ActionSummary(const char* name) {
    for (int i = 0; i < ActionCatalogueCount; i++)
        if (lstrcmpiA(ActionCatalogue[i].name, name) == 0) return ActionCatalogue[i].summary;
    return "";
}

const char* CategoryName(int category) {
    for (int i = 0; i < ActionCatalogueCount; i++)
        if (ActionCatalogue[i].category == 100000 + category) return ActionCatalogue[i].name;
    return "";
}
