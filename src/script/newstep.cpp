// The defaults of new steps, action by action. A "contains" test looks for
// the text anywhere in the name, in any case; the others compare the whole
// name. Some tree items are shorthands that store another action name.
#include "script/newstep.h"
#include "base/text.h"

#include <windows.h>
#include <string.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "script/catalogue.h"
#include "script/step.h"
#include "script/undo.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

bool Is(const char* name, const char* what) { return lstrcmpiA(name, what) == 0; }

void SetText(Step& s, const char* text) {
    s.text = EnsureCapacity(s.text, strlen(text));
    if (s.text) CopyIntoN(s.text, HeapBlockSize(s.text), text);
}

void SetComment(Step& s, const char* text) {
    s.comment = EnsureCapacity(s.comment, strlen(text));
    if (s.comment) CopyIntoN(s.comment, HeapBlockSize(s.comment), text);
}

// The browser or mail program for "Start Browser" and "Start Email".
std::string RegisteredProgram(bool mail) {
    char program[MAX_PATH * 2] = "";
    if (mail) {
        if (!AssociatedProgram("MAIL", program, nullptr) || !program[0]) {
            AssociatedProgram(".eml", program, nullptr);
            if (char* slash = strchr(program, '/')) *slash = 0;
            for (size_t n = strlen(program); n && program[n - 1] == ' '; n--) program[n - 1] = 0;
        }
        return program;
    }
    if (!AssociatedProgram(".htm", program, nullptr) || !program[0]) ResolveProgramPath("IEXPLORE.EXE", program, nullptr);
    std::string text = program;
    if (const char* exe = FindNoCase(text.c_str(), ".EXE")) text = text.substr(0, (size_t)(exe - text.c_str())) + ".EXE";
    return text;
}

void ApplyDefaults(Step& s, const char* name) {
    const int category = s.category;
    if (category == CAT_RUN_PROGRAM) {
        if (Is(name, "Start and Wait for Program to Exit")) {
            CopyInto(s.action, "Start");
            CopyInto(s.options, "Wait For Exit");
        } else if (ContainsNoCase(name, "Start Hidden")) {
            CopyInto(s.action, "Start");
            CopyInto(s.options, "Hidden");
        } else if (ContainsNoCase(name, "Call Script")) {
            s.icon = 4;
            CopyInto(s.options, "Wait For Exit");
        } else if (ContainsNoCase(name, "MS-DOS")) {
            SetText(s, "%sysdir\\CMD.EXE /C dir c:\\*.* /s");
            CopyInto(s.options, "Single");
        } else if (Is(name, "Control Panel: System")) {
            SetText(s, "rundll32.exe Shell32.dll Control_RunDLLA sysdm.cpl");
            SetComment(s, "Can also be accomplished with Windows Key + Pause");
            CopyInto(s.options, "Single");
        } else if (Is(name, "Start Browser") || Is(name, "Start Email")) {
            CopyInto(s.action, "Start");
            SetText(s, RegisteredProgram(Is(name, "Start Email")).c_str());
        } else {
            CopyInto(s.options, "Single");
        }
    } else if (category == CAT_WINDOWS) {
        if (Is(name, "Get Text") || Is(name, "Press Button/Control")) {
            CopyInto(s.options, "Class, ID, Userdata");
        } else {
            CopyInto(s.options, "Title");
            if (!ContainsNoCase(name, "all ")) CopyInto(s.timeout, "3");
        }
    } else if (category == CAT_KEYBOARD) {
        s.onfail[0] = 0;
    } else if (category == CAT_MENU) {
        if (Is(name, "Select Menu Item")) SetText(s, "&File; &Open");
        if (Is(name, "Select System Menu")) SetText(s, "Ma&ximize");
    } else if (category == CAT_MOUSE) {
        if (Is(name, "Move Relative")) CopyInto(s.options, "Current Position");
        if (Is(name, "Move to Control")) CopyInto(s.options, "Class,ID");
        if (Is(name, "Move to Window")) CopyInto(s.options, "Title,Class,ID");
    } else if (category == CAT_WAIT) {
        CopyInto(s.timeout, Is(name, "Delay") ? "2" : "3");
        if (Is(name, "Wait for Keypress")) SetText(s, "{Esc}");
    } else if (category == CAT_PROMPT) {
        if (Is(name, "Input Value")) {
            SetText(s, "Please enter a value:\r\n(you can change this message)");
        } else if (Is(name, "Choose from a List")) {
            SetText(s, "Please choose from the list:\r\n(you can change this message);Option #1;Option #2;Option #3");
        } else if (ContainsNoCase(name, "Progress Bar")) {
            SetText(s, "50% Complete");
        } else if (ContainsNoCase(name, "Status Popup") || ContainsNoCase(name, "Tool Tip Popup")) {
            CopyInto(s.timeout, "2");
        } else if (ContainsNoCase(name, "Custom Message Box")) {
            CopyInto(s.action, "Win32 API");
            s.category = CAT_EXTERNAL;
            SetText(s, "MessageBox( 0, \"message\", \"title\", MB_YESNOCANCEL+MB_ICONQUESTION )");
            SetComment(s, "Yes=6, No=7, Cancel=2  (see \"Win32 API\" in help file for details)");
        }
    } else if (category == CAT_FILES) {
        if (Is(name, "Map Drive")) {
            CopyInto(s.value[0], "\\\\server\\share");
            SetText(s, "H:");
        }
    } else if (category == CAT_INTERNET) {
        if (Is(name, "Open a Web Page") || ContainsNoCase(name, "Save Web Page") || Is(name, "HTTP Post") ||
            Is(name, "Download")) {
            SetText(s, "http://www.example.com/");
        } else if (ContainsNoCase(name, "POP3")) {
            SetText(s, "pop.example.com");
            CopyInto(s.value[2], "1");
        } else if (ContainsNoCase(name, "FTP ")) {
            SetText(s, ContainsNoCase(name, "Folder") ? "ftp.example.com/folder/" : "ftp.example.com/folder/file.txt");
        }
    } else if (category == CAT_FLOW) {
        if (Is(name, "Start Files Loop")) SetText(s, "C:\\Folder\\*.*");
    } else if (category == CAT_SYSTEM) {
        if (ContainsNoCase(name, "Copy Registry")) {
            CopyInto(s.value[0], "HKEY_CURRENT_USER\\SOFTWARE\\TreeName");
            SetText(s, "HKEY_CURRENT_USER\\SOFTWARE\\TreeName2");
        } else if (ContainsNoCase(name, "Registry")) {
            CopyInto(s.value[0], "HKEY_CURRENT_USER\\SOFTWARE\\TreeName\\SubKeyName");
        } else if (ContainsNoCase(name, "Variable")) {
            CopyInto(s.output, "Variable");
        }
    } else if (category == CAT_EXTERNAL) {
        if (ContainsNoCase(name, "Win32")) SetText(s, "MessageBox( 0, \"message\", \"title\", MB_OK+MB_ICONINFORMATION )");
        if (ContainsNoCase(name, "DLL")) {
            SetText(s, "MyFunction( \"some text\", 1 )");
            CopyInto(s.value[0], "MyModule.DLL");
        }
    }
}

}  // namespace

int NewStep(const char* name, int position) {
    int category = 0, image = 0;
    LookupAction(ActionsTree, name, &category, &image);
    if (category < 1 || category > 99999) return -1;  // a heading cannot become a step
    TabStore& t = CurrentTab();
    const int selected = t.selected;
    const int at = AddSteps(position < 0 ? t.count : position, 1, 1);
    if (!t.steps) return -1;
    SaveUndo((int32_t)GetTickCount(), at, UNDO_ADDED);
    Step& s = t.steps[at];
    CopyIntoN(s.action, sizeof s.action, name);
    s.category = category;
    s.icon = image;
    SettingText("DefaultFailureMode", s.onfail, sizeof s.onfail);
    SettingText("DefaultFailureMode_Jump", s.onfail_value, sizeof s.onfail_value);
    if (!s.onfail[0]) CopyInto(s.onfail, "Display Error and Stop");
    ApplyDefaults(s, name);
    // Prompts: no timeout, or a selected step of timeout "0", gives 30 (the
    // selected step is looked at, not the new one, as it always was).
    if (category == CAT_PROMPT) {
        const bool selectedZero = selected >= 0 && selected < t.count && selected != at &&
                                  lstrcmpA(t.steps[selected < at ? selected : selected + 1].timeout, "0") == 0;
        if (!s.timeout[0] || selectedZero) CopyInto(s.timeout, "30");
    }
    t.count++;
    RefreshStepList();
    return at;
}
