// The property table of the selected step. Its rows are chosen by category
// and then by name tests, as the executors tell their actions apart, so the
// palette edits exactly the fields that the action reads.
#include "base/text.h"
#include "script/properties.h"

#include <windows.h>
#include <string.h>

#include "base/settings.h"
#include "base/words.h"

PropertyRow PropertyTable[MAX_PROPERTY_ROWS];
int PropertyRowCount;

const char FailureModeChoices[] =
    "Display Error and Stop;Display Error and Continue;Ignore/Continue;Retry the Step x Times;Stop Silently;"
    "Ask to Continue;Jump to Label;Increment Variable;Restart Run";

namespace {

const char kOutputChoices[] = "Clipboard;Variable;File;(do not save)";
const char kCtrlEnterHelp[] = "  (Press Ctrl+Enter to close field)";

bool Is(const char* name, const char* what) { return lstrcmpiA(name, what) == 0; }
bool Has(const char* name, const char* what) { return ContainsNoCase(name, what); }

// Rows are added from row 0 upwards; `next` is the row the next one takes.
struct Builder {
    int next = 0;
    void Add(const char* label, int field, int rowType, const char* help, int flags = 0, int extra = 0,
             const char* choices = "") {
        AddProperty(next++, label, field, rowType, flags, extra, choices, help, 0);
    }
    void Check(const char* label, const char* word, const char* help, int extra = 0) {
        Add(label, FIELD_OPTIONS, ROW_CHECK, help, 0, extra, word);
    }
    void Timeout(const char* help = "Seconds to wait before the step fails") {
        Add("Timeout", FIELD_TIMEOUT, ROW_NUMBER, help);
    }
};

// The match rows of every action that finds a window: the criteria text and
// one check box for each way of matching it.
void MatchRows(Builder& b) {
    b.Add("Match Criteria", FIELD_TEXT, ROW_LINE,
          "The window's title, class, ID, user data or handle, one or more separated by commas", ROWF_FIND_WINDOW);
    b.Check("Match Title", "Title", "Match the window by its title (wildcards allowed)", 0x20);
    b.Check("Match Class", "Class", "Match the window by its class name", 0x10);
    b.Check("Match ID", "ID", "Match the control by its ID", 0x08);
    b.Check("Match User Data", "Userdata", "Match the window by its user data", 0x04);
    b.Check("Match Handle (HWND)", "Handle", "Match the window by its handle", 0x80);
}

// How closely an image must match, and at what scales: values 4 and 5 of
// every step that searches for an image. `lead` opens the help texts.
void MatchSettingRows(Builder& b, const char* lead) {
    char help[256];
    FormatInto(help, "%sThe share of the image's pixels that must match; the place with the best share wins. Empty is "
                     "100: every pixel", lead);
    b.Add("Similarity (50-100 %)", FIELD_VALUE1 + 3, ROW_NUMBER, help);
    FormatInto(help, "%sThe image's size on the screen against its file: 100%%, one other scale, or Common Scales to "
                     "try 100, 125, 150, 175 and 200%% and their inverses", lead);
    b.Add("Screen Scale", FIELD_VALUE1 + 4, ROW_LIST, help, 0, 0, "100%;Common Scales;125%;150%;175%;200%;80%;67%;57%;50%");
}

// The rows of an image or pixel search.
void ImageRows(Builder& b, bool pixel) {
    if (pixel)
        b.Add("X, Y Coordinates", FIELD_TEXT, ROW_LINE, "Screen position and colour of the pixel: x, y, color",
              ROWF_MOUSE_POINT);
    else
        b.Add("Image File", FIELD_TEXT, ROW_LINE, "The picture to find on the screen (BMP, PNG, JPEG or GIF)",
              ROWF_PREVIEW | ROWF_CAPTURE | ROWF_CHOOSE_FILE);
    b.Add("Pixel Color Variation (0-255)", FIELD_VALUE1, ROW_NUMBER,
          "How far each colour component may differ from the image");
    b.Add("Start Search At (X, Y)", FIELD_VALUE1 + 1, ROW_LINE, "Top left corner of the area searched",
          ROWF_INNER_CHECK | ROWF_MOUSE_POINT, 0, "Full Screen");
    b.Add("Stop Search At (X, Y)", FIELD_VALUE1 + 2, ROW_LINE, "Bottom right corner of the area searched",
          ROWF_MOUSE_POINT);
    if (!pixel) {
        MatchSettingRows(b, "");
        b.Check("Show Screen Scan", "Show", "Outline the area while it is searched");
    }
}

void ProgramRows(Builder& b, const char* name) {
    if (Has(name, "Service")) {
        b.Add("Service", FIELD_TEXT, ROW_LIST, "The service's name", 0, LIST_SERVICES);
        if (Has(name, "Startup"))
            b.Add("Startup Type", FIELD_VALUE1, ROW_LIST, "How the service starts", 0, 0,
                  "Automatic;Manual;Disabled");
        return;
    }
    if (Has(name, "Kill")) {
        b.Add("Program/Document", FIELD_TEXT, ROW_LINE, "The program file of the process to end", ROWF_PROGRAMS);
        return;
    }
    const char* label = Is(name, "Start Browser") ? "Browser" : Is(name, "Start Email") ? "Email Program"
                                                                                        : "Program/Document";
    b.Add(label, FIELD_TEXT, ROW_LINE, "The program to start, with its arguments, or a document to open",
          ROWF_CHOOSE_FILE | ROWF_PROGRAMS);
    b.Check("Activate if Already Running", "Single", "Bring a running copy to the front instead of starting another");
    b.Check("Run Hidden", "Hidden", "Start the program without showing its window");
    b.Check("Wait For Program to Exit", "Wait For Exit", "Go on with the next step only after the program ends");
    b.Add("Timeout", FIELD_TIMEOUT, ROW_NUMBER, "Seconds to wait for the program", ROWF_INNER_CHECK, 4,
          "Wait Forever");
}

void WindowRows(Builder& b, const char* name) {
    MatchRows(b);
    b.Check("Match Image", "Image", "The criteria name an image of the window", 0x40);
    if (!Has(name, "all ")) MatchSettingRows(b, "With Match Image: ");
    if (Has(name, "Move Window")) {
        b.Add("Move To X (Left)", FIELD_VALUE1, ROW_NUMBER, "New left edge");
        b.Add("Move To Y (Top)", FIELD_VALUE1 + 1, ROW_NUMBER, "New top edge");
    } else if (Has(name, "Resize")) {
        b.Add("New Width", FIELD_VALUE1, ROW_NUMBER, "New width in pixels");
        b.Add("New Height", FIELD_VALUE1 + 1, ROW_NUMBER, "New height in pixels");
    } else if (Has(name, "Set Window Style")) {
        b.Add("New Style", FIELD_VALUE1, ROW_LIST, "The style to give the window", 0, 0,
              "Always on Top;Not Always on Top;Hide;Show;Disable;Enable");
    }
    if (!Has(name, "all ")) b.Timeout("Seconds to wait for the window to appear");
}

void KeyboardRows(Builder& b, const char* name) {
    if (Has(name, "Block Input")) return;
    if (Has(name, "Direct Window Entry")) MatchRows(b);
    b.Add("Text", FIELD_TEXT, ROW_LINES, "The text to type; keys in braces, such as {Enter} or {Ctrl+S}");
    b.Check("No Formatting", "No Formatting", "Type braces as they stand instead of reading key names");
}

void MouseRows(Builder& b, const char* name) {
    if (Has(name, "Image")) {
        ImageRows(b, false);
        return;
    }
    if (Has(name, "Move to Control") || Has(name, "Move to Window")) {
        MatchRows(b);
        b.Add("Snap to Position", FIELD_VALUE1, ROW_CHECK, "Move to the centre without gliding", 0, 0, "Snap");
        return;
    }
    if (Is(name, "Move") || Has(name, "Move Relative")) {
        b.Add("X, Y Coordinates", FIELD_TEXT, ROW_LINE, "Where the pointer goes", ROWF_MOUSE_POINT);
        b.Add("Relative To", FIELD_OPTIONS, ROW_LIST, "What the coordinates are counted from", 0, 0x2000,
              "Screen;Window;Current Position");
    }
}

void WaitRows(Builder& b, const char* name) {
    if (Is(name, "Delay")) {
        b.Add("Delay Seconds", FIELD_TIMEOUT, ROW_NUMBER, "Seconds to wait; fractions allowed");
        return;
    }
    if (Has(name, "Keypress")) b.Add("Key Code", FIELD_TEXT, ROW_LINE, "The key to wait for, such as {Esc}");
    else if (Has(name, "Pixel")) ImageRows(b, true);
    else if (Has(name, "Image")) ImageRows(b, false);
    else if (Has(name, "Window")) MatchRows(b);
    else if (Has(name, "File")) b.Add("File Name", FIELD_TEXT, ROW_LINE, "The file to wait for", ROWF_CHOOSE_FILE);
    b.Timeout();
}

void PromptRows(Builder& b, const char* name) {
    if (Has(name, "Display Image")) {
        b.Add("Image File", FIELD_TEXT, ROW_LINE, "The image to show", ROWF_PREVIEW | ROWF_CHOOSE_FILE);
    } else if (!Has(name, "Login")) {
        b.Add("Message Text", FIELD_TEXT, ROW_LINES,
              Has(name, "List") ? "The question, then the items, separated by semicolons" : "The text to show");
    }
    if (Has(name, "Balloon") || Has(name, "Choose a F")) b.Add("Title", FIELD_VALUE1, ROW_LINE, "The title");
    if (Has(name, "Display") || Has(name, "Ask"))
        b.Check("Always on Top", "Top", "Keep the message above other windows");
    b.Timeout("Seconds before the prompt closes by itself");
}

void FileRows(Builder& b, const char* name) {
    if (Has(name, "Map Drive")) {
        if (Has(name, "Prompt")) return;
        b.Add("Shared Folder", FIELD_VALUE1, ROW_LINE, "The network share, such as \\\\server\\share");
        b.Add("New Drive Letter", FIELD_TEXT, ROW_LINE, "The drive letter, such as H:");
        return;
    }
    if (Has(name, "Association")) {
        b.Add("EXE Program", FIELD_VALUE1, ROW_LINE, "The program that opens the files", ROWF_CHOOSE_FILE);
        b.Add("Extension", FIELD_VALUE1 + 1, ROW_LINE, "The file extension, such as .txt");
        b.Add("Description", FIELD_TEXT, ROW_LINE, "The name of the file type");
        return;
    }
    if (Has(name, "Folder") || Has(name, "Directory")) {
        b.Add("Folder Name", FIELD_VALUE1, ROW_LINE, "The folder", ROWF_CHOOSE_FOLDER);
        if (Has(name, "Copy Folder"))
            b.Add("Copy to Folder", FIELD_TEXT, ROW_LINE, "Where the copy goes", ROWF_CHOOSE_FOLDER);
        else if (Has(name, "Move"))
            b.Add("Destination Folder", FIELD_TEXT, ROW_LINE, "The new name or place", ROWF_CHOOSE_FOLDER);
        return;
    }
    b.Add("File Name", FIELD_VALUE1, ROW_LINE, "The file", ROWF_CHOOSE_FILE);
    if (Is(name, "Read File")) {
        b.Add("Start Position", FIELD_VALUE1 + 1, ROW_NUMBER, "Byte offset to start at", ROWF_INNER_CHECK, 1,
              "Start of File");
        b.Add("Stop Position", FIELD_VALUE1 + 2, ROW_NUMBER, "Number of bytes to read", ROWF_INNER_CHECK, 2,
              "End of File");
    } else if (Has(name, "Read File Line")) {
        b.Add("Line Number", FIELD_VALUE1 + 1, ROW_NUMBER, "The line to read, from 1");
    } else if (Has(name, "Write")) {
        b.Add("Start Position", FIELD_VALUE1 + 1, ROW_NUMBER, "Byte offset to write at", ROWF_INNER_CHECK, 3,
              "Append");
        b.Add("Data to Write", FIELD_TEXT, ROW_LINES, "The text written to the file");
    } else if (Has(name, "Copy File")) {
        b.Add("Destination File", FIELD_TEXT, ROW_LINE, "The copy's name or folder", ROWF_CHOOSE_FILE);
    } else if (Has(name, "Move/Rename")) {
        b.Add("New Name", FIELD_TEXT, ROW_LINE, "The new name or place", ROWF_CHOOSE_FILE);
    } else if (Has(name, "Size")) {
        b.Add("New Size", FIELD_VALUE1 + 1, ROW_NUMBER, "The new length in bytes");
    }
}

void InternetRows(Builder& b, const char* name) {
    if (Is(name, "Start Browser") || Is(name, "Start Email")) {
        ProgramRows(b, name);
        return;
    }
    if (Has(name, "POP3")) {
        b.Add("POP3 Server", FIELD_TEXT, ROW_LINE, "The mail server");
        b.Add("Login", FIELD_VALUE1 + 2, ROW_LINE, "The mailbox's user name");
        b.Add("Password", FIELD_VALUE1 + 1, ROW_MASKED, "The mailbox's password");
        b.Add("Which Email", FIELD_VALUE1 + 3, ROW_NUMBER, "The number of the message, from 1");
        b.Timeout();
        return;
    }
    if (Has(name, "Send Email")) {
        b.Add("Message", FIELD_TEXT, ROW_LINES, "The body of the message");
        if (Has(name, "SMTP")) {
            b.Add("SMTP Server", FIELD_VALUE1 + 2, ROW_LINE, "The mail server");
            b.Add("Subject", FIELD_VALUE1 + 3, ROW_LINE, "The subject line");
            b.Add("From", FIELD_VALUE1 + 4, ROW_LINE, "The sender's address");
            b.Add("To", FIELD_VALUE1 + 5, ROW_LINE, "The addresses, separated by commas");
        } else {
            b.Add("Send To", FIELD_VALUE1 + 2, ROW_LINE, "The addresses, separated by commas");
            b.Add("Subject", FIELD_VALUE1 + 3, ROW_LINE, "The subject line");
        }
        return;
    }
    if (Has(name, "FTP ")) {
        b.Add(Has(name, "Folder") ? "Remote Folder" : "Remote File", FIELD_TEXT, ROW_LINE,
              "Server and path in one, such as ftp.example.com/folder/file.txt");
        if (Has(name, "Upload")) b.Add("Local File", FIELD_VALUE1, ROW_LINE, "The file to send", ROWF_CHOOSE_FILE);
        b.Add("Login Username", FIELD_VALUE1 + 2, ROW_LINE, "The user name on the server");
        b.Add("Password", FIELD_VALUE1 + 1, ROW_MASKED, "The password on the server");
        return;
    }
    if (Has(name, "Ping")) {
        b.Add("Hostname / IP", FIELD_TEXT, ROW_LINE, "The host to ping");
        b.Timeout("Milliseconds to wait for the reply");
        return;
    }
    // A fetch with no address, or a page saved to no file, fails at once.
    const bool fetches = Has(name, "Save Web") || Is(name, "Download") || Has(name, "HTTP Post");
    b.Add(Has(name, "HTTP Post") ? "Post String" : "Web Address", FIELD_TEXT, ROW_LINE,
          Has(name, "HTTP Post") ? "The address, a question mark and the data to post" : "The page's address",
          fetches ? ROWF_REQUIRED : 0);
}

void DatabaseRows(Builder& b) {
    b.Add("SQL Query", FIELD_TEXT, ROW_LINES, "The statement to run");
    b.Add("Data Source", FIELD_VALUE1, ROW_LIST, "The ODBC data source", 0, LIST_DATA_SOURCES);
    b.Add("Login Username", FIELD_VALUE1 + 1, ROW_LINE, "The user name of the data source");
    b.Add("Password", FIELD_VALUE1 + 2, ROW_MASKED, "The password of the data source");
    b.Add("Max Rows", FIELD_VALUE1 + 3, ROW_NUMBER, "The most rows to keep", ROWF_INNER_CHECK, 4, "Retrieve All Rows");
    b.Timeout();
}

void FlowRows(Builder& b, const char* name) {
    if (Has(name, "'For'") || Has(name, "Repeats"))
        b.Add("Loops", FIELD_TEXT, ROW_NUMBER, "How many times");
    else if (Has(name, "'While'"))
        b.Add("Expression", FIELD_TEXT, ROW_LINE, "The loop runs while this is true, such as %count% < 10");
    else if (Has(name, "Files Loop"))
        b.Add("File Spec", FIELD_TEXT, ROW_LINE, "The files to walk, such as C:\\Folder\\*.*", ROWF_CHOOSE_FOLDER);
    else if (Has(name, "File Line"))
        b.Add("File", FIELD_TEXT, ROW_LINE, "The file whose lines are read", ROWF_CHOOSE_FILE);
    else if (Has(name, "Label"))
        b.Add("Label Name", FIELD_TEXT, ROW_LINE, "The name of the label");
    else if (Has(name, "Exit"))
        b.Add("Return Code", FIELD_TEXT, ROW_NUMBER, "The exit code of the run");
}

void IfRows(Builder& b, const char* name) {
    if (Has(name, "Expression")) {
        b.Add("Expression", FIELD_TEXT, ROW_LINE, "True when this is not zero, such as %a% = 5");
    } else if (Has(name, "File Exists")) {
        b.Add("File", FIELD_TEXT, ROW_LINE, "The file", ROWF_CHOOSE_FILE);
    } else if (Has(name, "Folder Exists")) {
        b.Add("Folder", FIELD_TEXT, ROW_LINE, "The folder", ROWF_CHOOSE_FOLDER);
    } else if (Has(name, "Window") || Has(name, "Control")) {
        MatchRows(b);
    } else if (Has(name, "Pixel")) {
        ImageRows(b, true);
    } else if (Has(name, "Image")) {
        ImageRows(b, false);
    } else if (Has(name, "Clipboard")) {
        b.Add("Text", FIELD_TEXT, ROW_LINES, "The text the clipboard must hold");
    }
}

void SystemRows(Builder& b, const char* name) {
    if (Has(name, "Environment")) {
        b.Add("Variable Name", FIELD_VALUE1, ROW_LINE, "The environment variable");
        b.Add("Set to Value", FIELD_TEXT, ROW_LINE, "Its new value; empty removes it");
    } else if (Has(name, "Variable")) {
        b.Add("Variable Name", FIELD_OUTPUT_VALUE, ROW_LINE, "The variable");
        if (Has(name, "Set")) b.Add("Set to Value", FIELD_TEXT, ROW_LINES, "The value, or a formula");
    } else if (Has(name, "Step Delay")) {
        b.Add("Milliseconds", FIELD_TEXT, ROW_NUMBER, "The pause after each step");
    } else if (Has(name, "Write to Log")) {
        b.Add("Write to Log", FIELD_TEXT, ROW_LINES, "The line written to the log");
    } else if (Has(name, "Set Clipboard")) {
        b.Add("Set Clipboard Text", FIELD_TEXT, ROW_LINES, "The text put on the clipboard");
    } else if (Has(name, "Window Image")) {
        MatchRows(b);
        b.Add("Save to File", FIELD_TEXT, ROW_LINE, "The bitmap file written", ROWF_CHOOSE_FILE);
    } else if (Has(name, "Image Capture")) {
        b.Add("Save to File", FIELD_TEXT, ROW_LINE, "The bitmap file written", ROWF_CHOOSE_FILE);
    } else if (Has(name, "Video")) {
        b.Add("Video Mode", FIELD_TEXT, ROW_LIST, "The display mode", 0, LIST_VIDEO_MODES);
    } else if (Has(name, "Registry")) {
        b.Add("Key Name", FIELD_VALUE1, ROW_LINE, "The full path of the key and value");
        if (Has(name, "Write")) b.Add("Value to Write", FIELD_TEXT, ROW_LINE, "The value's new data");
        if (Has(name, "Copy")) b.Add("Destination Folder", FIELD_TEXT, ROW_LINE, "The key the tree is copied to");
    }
}

void FunctionRows(Builder& b, const char* name) {
    b.Add(Has(name, "Math") ? "Expression" : "Text/Variable", FIELD_TEXT, ROW_LINES,
          Has(name, "Math") ? "The formula" : "The text worked on, usually a variable such as %text%");
    const int v1 = FIELD_VALUE1, v2 = FIELD_VALUE1 + 1;
    if (Has(name, "Trim")) {
        b.Add("Text to Trim", v1, ROW_LINE, "Taken off repeatedly; empty means blanks");
        b.Add("Trim From", v2, ROW_LIST, "Which end", 0, 0, "Front;Back");
    } else if (Has(name, "Replace")) {
        b.Add("Search Text", v1, ROW_LINE, "The text replaced");
        b.Add("Replace With", v2, ROW_LINE, "The new text");
        b.Check("Case Sensitive", "Case Sensitive", "Match the case exactly");
        b.Check("Replace First Only", "First Only", "Replace only the first match");
    } else if (Has(name, "Insert")) {
        b.Add("Position", v1, ROW_NUMBER, "Where, from 1");
        b.Add("Insert Text", v2, ROW_LINE, "The text inserted");
    } else if (Has(name, "Sub Text")) {
        b.Add("Delimiter", v1, ROW_LINE, "The separator between items");
        b.Add("Which Item", v2, ROW_NUMBER, "The item, from 1");
        b.Check("Case Sensitive", "Sensitive", "Match the separator's case exactly");
        b.Check("Allow Quotes", "Quotes", "A separator inside quotes does not count");
    } else if (Has(name, "Count")) {
        b.Add("Text to Count", v1, ROW_LINE, "The text counted");
    } else if (Has(name, "Find")) {
        b.Add("Text to Search For", v1, ROW_LINE, "The text searched for");
        b.Check("Case Sensitive", "Sensitive", "Match the case exactly");
    } else if (Has(name, "Pad")) {
        b.Add("Pad to Length", v1, ROW_NUMBER, "The length reached");
        b.Add("Pad with String", v2, ROW_LINE, "The text appended");
    } else if (Has(name, "Mid")) {
        b.Add("Length", v1, ROW_NUMBER, "Characters taken");
        b.Add("Start Position", v2, ROW_NUMBER, "The first character, from 1");
    } else if (Has(name, "Left") || Has(name, "Right")) {
        b.Add("Length", v1, ROW_NUMBER, "Characters taken");
    } else if (Has(name, "Encrypt")) {
        b.Add("XOR Key", v1, ROW_LINE, "The key; the same key decrypts");
    } else if (Has(name, "Format")) {
        b.Add("Format String", v1, ROW_LINE, "A printf format, such as %.2f");
    } else if (Has(name, "Random")) {
        b.Add("Minimum", v1, ROW_NUMBER, "The smallest number");
        b.Add("Maximum", v2, ROW_NUMBER, "The largest number");
    }
}

void ExternalRows(Builder& b, const char* name) {
    if (Has(name, "DLL")) {
        b.Add("DLL Module", FIELD_VALUE1, ROW_LINE, "The library", ROWF_CHOOSE_FILE);
        b.Add("Function Name", FIELD_TEXT, ROW_LINE, "The call, such as MyFunction( \"text\", 1 )");
    } else if (Has(name, "WM_COMMAND")) {
        b.Add("Command ID", FIELD_TEXT, ROW_LINE, "The window, a comma and the command number");
    } else {
        b.Add("Win32 Function", FIELD_TEXT, ROW_LINE, "The call, such as MessageBox( 0, \"text\", \"title\", 0 )");
    }
}

// Actions whose step leaves a result for "Save Output To".
bool SavesOutput(int category, const char* name) {
    switch (category) {
    case CAT_RUN_PROGRAM: return Is(name, "Start") || Has(name, "Call Script");
    case CAT_WINDOWS: return Has(name, "Get Text");
    case CAT_MENU: return Has(name, "Popup");
    case CAT_MOUSE: return Has(name, "Image");
    case CAT_WAIT: return Has(name, "Image");
    case CAT_PROMPT:
        return Has(name, "Ask") || Has(name, "Input") || Has(name, "Login") || Has(name, "Choose");
    case CAT_FILES: return Has(name, "Read") || Has(name, "Count");
    case CAT_INTERNET:
        return Has(name, "Save Web") || Has(name, "Download") || Has(name, "Post") || Has(name, "Check Email");
    case CAT_DATABASE:
    case CAT_FUNCTIONS: return true;
    case CAT_SYSTEM: return Has(name, "Read Registry");
    case CAT_EXTERNAL: return !Has(name, "WM_COMMAND");
    }
    return false;
}

}  // namespace

void AddProperty(int row, const char* label, int field, int rowType, int flags, int extra, const char* choices,
                 const char* help, int locked) {
    if (row < 0 || row >= MAX_PROPERTY_ROWS) return;
    PropertyRow& r = PropertyTable[row];
    r = PropertyRow{};
    CopyIntoN(r.label, sizeof r.label, label ? label : "");
    CopyIntoN(r.help, sizeof r.help, help ? help : "");
    CopyIntoN(r.choices, sizeof r.choices, choices ? choices : "");
    r.rowType = rowType;
    r.field = field;
    r.flags = flags;
    r.extra = extra;
    r.locked = locked;
    if (row + 1 > PropertyRowCount) PropertyRowCount = row + 1;
}

int FindProperty(const char* label, int field) {
    for (int row = 0; row < PropertyRowCount; row++) {
        if (label && label[0] ? lstrcmpiA(PropertyTable[row].label, label) == 0 : PropertyTable[row].field == field)
            return row;
    }
    return 0;
}

char* StepFieldText(Step& s, int field, int* width) {
    int w = 0;
    char* text = nullptr;
    if (field == FIELD_TEXT) text = s.text;
    else if (field == FIELD_COMMENT) text = s.comment;
    else if (field == FIELD_OPTIONS) text = s.options, w = sizeof s.options;
    else if (field == FIELD_TIMEOUT) text = s.timeout, w = sizeof s.timeout;
    else if (field >= FIELD_VALUE1 && field < FIELD_VALUE1 + (int)STEP_VALUES)
        text = s.value[field - FIELD_VALUE1], w = sizeof s.value[0];
    else if (field == FIELD_OUTPUT) text = s.output, w = sizeof s.output;
    else if (field == FIELD_OUTPUT_VALUE) text = s.output_value, w = sizeof s.output_value;
    else if (field == FIELD_ONFAIL) text = s.onfail, w = sizeof s.onfail;
    else if (field == FIELD_ONFAIL_VALUE) text = s.onfail_value, w = sizeof s.onfail_value;
    if (width) *width = w;
    return text;
}

bool PropertyChecked(const Step& s, const PropertyRow& row) {
    if (row.field == FIELD_ONFAIL_IMAGE) return s.onfail_image != 0;
    if (row.field == FIELD_ONFAIL_LOG) return s.onfail_log != 0;
    if (!row.choices[0]) return false;
    if (row.field >= FIELD_VALUE1 && row.field < FIELD_VALUE1 + 6)
        return ContainsNoCase(s.value[row.field - FIELD_VALUE1], row.choices);
    return ContainsNoCase(s.options, row.choices);
}

const char* FollowingRowLabel(const Step& s, int field) {
    if (field == FIELD_OUTPUT) {
        if (Is(s.output, "Variable")) return "Save Output: Variable Name";
        if (Is(s.output, "File")) return "Save Output: File Name";
        return "(Optional Output Data)";
    }
    if (Is(s.onfail, "Jump to Label")) return "On Failure: Label Name";
    if (Is(s.onfail, "Increment Variable")) return "On Failure: Variable Name";
    if (Is(s.onfail, "Retry the Step x Times")) return "On Failure: Retries";
    return "(Optional Failure Data)";
}

void BuildPropertyTable(int show) {
    TabStore& t = CurrentTab();
    if (!show || t.selected < 0 || t.selected >= t.count || !t.steps) return;
    memset(PropertyTable, 0, sizeof PropertyTable);
    PropertyRowCount = 0;
    Step& s = t.steps[t.selected];
    const char* name = s.action;
    Builder b;
    switch (s.category) {
    case CAT_RUN_PROGRAM: ProgramRows(b, name); break;
    case CAT_WINDOWS: WindowRows(b, name); break;
    case CAT_KEYBOARD: KeyboardRows(b, name); break;
    case CAT_MENU:
        b.Add("Menu Text", FIELD_TEXT, ROW_LINE, "The menu path, items separated by semicolons, such as &File; &Open");
        if (!Has(name, "Popup")) MatchRows(b);
        break;
    case CAT_MOUSE: MouseRows(b, name); break;
    case CAT_WAIT: WaitRows(b, name); break;
    case CAT_PROMPT: PromptRows(b, name); break;
    case CAT_RECORDINGS:
        b.Add("Record Actions", FIELD_VALUE1 + 1, ROW_RECORDING, "Record the keyboard and the mouse");
        b.Add("Playback Speed", FIELD_OPTIONS, ROW_LIST, "How fast the recording plays", 0, 0, "Fast;Normal;Slow");
        break;
    case CAT_FILES: FileRows(b, name); break;
    case CAT_INTERNET: InternetRows(b, name); break;
    case CAT_DATABASE: DatabaseRows(b); break;
    case CAT_FLOW: FlowRows(b, name); break;
    case CAT_IF: IfRows(b, name); break;
    case CAT_SYSTEM: SystemRows(b, name); break;
    case CAT_FUNCTIONS: FunctionRows(b, name); break;
    case CAT_EXTERNAL: ExternalRows(b, name); break;
    }
    // A step that fails is tried again until its timeout has passed. An
    // image search is given the row always; any other step that can fail has
    // it once it has a timeout (from a file or a recording), so that a
    // timeout the step list shows is always one the palette edits.
    const bool canFail = !(s.category == CAT_IF || (s.category == CAT_SYSTEM && Is(name, "Comment")));
    bool timed = false;
    for (int row = 0; row < b.next; row++) timed = timed || PropertyTable[row].field == FIELD_TIMEOUT;
    if (canFail && !timed && (s.timeout[0] || (s.category == CAT_MOUSE && Has(name, "Image"))))
        b.Timeout("Seconds the step keeps trying before it fails");
    if (SavesOutput(s.category, name)) {
        b.Add("Save Output To", FIELD_OUTPUT, ROW_LIST, "Where the step's result goes", 0, LIST_OUTPUT,
              kOutputChoices);
        b.Add(FollowingRowLabel(s, FIELD_OUTPUT), FIELD_OUTPUT_VALUE, ROW_LINE,
              "The variable or file that takes the result",
              s.category == CAT_INTERNET && Has(name, "Save Web") ? ROWF_REQUIRED : 0);
    }
    b.Add("Comment", FIELD_COMMENT, ROW_LINES, "A note for whoever reads the script; it does not run");
    // IF steps and comments cannot fail, so they carry no failure settings.
    if (s.category == CAT_IF || (s.category == CAT_SYSTEM && Is(name, "Comment"))) {
        s.onfail[0] = 0;
        s.onfail_value[0] = 0;
        s.onfail_image = 0;
        s.onfail_log = 0;
    } else {
        b.Add("On Failure", FIELD_ONFAIL, ROW_LIST, "What happens when the step fails", 0, LIST_ONFAIL,
              FailureModeChoices);
        b.Add(FollowingRowLabel(s, FIELD_ONFAIL), FIELD_ONFAIL_VALUE, ROW_LINE,
              "Additional information used when errors occur.  The type of data depends on the \"On Failure\" "
              "selection");
        b.Add("On Failure: Write to Log", FIELD_ONFAIL_LOG, ROW_CHECK, "Write the failure to the log file");
        b.Add("On Failure: Screenshot", FIELD_ONFAIL_IMAGE, ROW_CHECK, "Save an image of the screen on failure");
    }
    b.Add("", 0, ROW_END, "");

    const bool tips = SettingInt("ShowTips") != 0;
    for (int row = 0; row < PropertyRowCount; row++) {
        PropertyRow& r = PropertyTable[row];
        const int type = r.rowType;
        if ((type == ROW_LINE || type == ROW_LINES || type == ROW_NUMBER) && r.field != FIELD_COMMENT)
            r.flags |= ROWF_EDIT;
        if (type == ROW_CHECK) r.checked = PropertyChecked(s, r);
        if (type == ROW_LINES && tips) {
            const size_t used = strlen(r.help);
            CopyIntoN(r.help + used, (int)(sizeof r.help - used), kCtrlEnterHelp);
        }
    }
}
