// The bridge: the argument kinds decide the shape of the call (a number is
// passed by value, a string as the address of a 2048-byte buffer that the
// function may write into), except for the functions of more than five
// arguments, which each have a fixed shape.
#include "system/nativecall.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/pause.h"
#include "base/settings.h"
#include "run/expressions.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

enum { MAX_ARGUMENTS = 16, ARGUMENT_TEXT = 2048 };

const char* const NamesWithA[] = {
    "MessageBox", "CallWindowProc", "CharLower", "CharNext", "CharPrev", "CharToOem", "CharUpper", "CharUpperBuff",
    "CreateWindow", "CreateWindowEx", "CreateDialog", "CreateDialogIndirect", "CreateDialogIndirectParam",
    "CreateFile", "DialogBox", "DialogBoxIndirect", "DialogBoxParam", "DispatchMessage", "DlgDirList",
    "DlgDirListComboBox", "DlgDirSelectEx", "DrawText", "DrawTextEx", "FindWindow", "FindWindowEx", "GetClassLong",
    "GetDlgItemText", "GetMenuString", "GetMessage", "GetWindowLong", "GetWindowText", "IsCharAlpha",
    "IsCharAlphaNumeric", "IsCharLower", "IsCharUpper", "IsDialogMessage", "PostMessage", "PeekMessage",
    "RegisterClass", "RegisterClassEx", "SendMessage", "SendDlgItemMessage", "SendMessageTimeout", "SetWindowLong",
    "SetWindowsHook", "SetWindowsHookEx", "SetWindowText", "wsprintf", "SetDlgItemText", "SetClassLong",
    "SetMenuItemInfo", "SystemParametersInfo", "WinHelp", "ShellAbout",
};

// The search places after the step's own library. Nine places in all are
// searched, counting the step's library whether or not there is one, so the
// last two of the table are never reached.
const char* const Modules[] = {"USER32.DLL",   "GDI32.DLL",    "KERNEL32.DLL", "SHELL32.DLL", "COMCTL32.DLL",
                               "COMDLG32.DLL", "ADVAPI32.DLL", "WSOCK32.DLL",  "ODBC32.DLL",  "MFC40.DLL"};

// The functions of six arguments or more and their shapes: "n" a number,
// "s" a text buffer, in call order.
struct Shape {
    const char* name;
    const char* kinds;
};
const Shape LongShapes[] = {
    {"MessageBox", "nssn"},
    {"AngleArc", "nnnnnn"}, {"CreateRoundRectRg", "nnnnnn"}, {"MoveWindow", "nnnnnn"}, {"ToUnicode", "nnnnnn"},
    {"TrackPopupMenuEx", "nnnnnn"},
    {"CreateCursor", "nnnnnnn"}, {"CreateIcon", "nnnnnnn"}, {"ImageList_LoadImage", "nnnnnnn"},
    {"RoundRect", "nnnnnnn"}, {"ScrollDC", "nnnnnnn"}, {"SetWindowPos", "nnnnnnn"}, {"TrackPopupMenu", "nnnnnnn"},
    {"ScrollWindowEx", "nnnnnnnn"},
    {"Arc", "nnnnnnnnn"}, {"ArcTo", "nnnnnnnnn"}, {"BitBlt", "nnnnnnnnn"}, {"Chord", "nnnnnnnnn"},
    {"DrawIconEx", "nnnnnnnnn"}, {"GrayStringA", "nnnnnnnnn"}, {"Pie", "nnnnnnnnn"},
    {"MaskBlt", "nnnnnnnnnnnn"}, {"StretchBlt", "nnnnnnnnnnnn"},
    {"StretchDIBits", "nnnnnnnnnnnnn"},
    {"CompareStringA", "nnsnsn"},
    {"CreateFileA", "snnnnnn"},
    {"CreateProcessA", "ssnnnnnsnn"},
    {"CreateWindowExA", "nssnnnnnnnnn"},
    {"ShellExecuteA", "nssnnn"},
    {"GetPrivateProfileStringA", "ssssns"},
    {"GetVolumeInformationA", "ss"},  // and its own sizes and result words
    {"ExtEscape", "nnnsns"},
    {"FormatMessageA", "nnnnsnn"},
    {"PatBlt", "nnnnnn"},
    {"ToAsciiEx", "nnssnn"},
};

const Shape* LongShape(const std::string& name) {
    for (const Shape& s : LongShapes)
        if (name == s.name) return &s;
    return nullptr;
}

// Calls with exactly `n` arguments: a stdcall function cleans its own stack,
// so the count must be right on 32-bit systems.
uintptr_t CallWith(FARPROC f, int n, const uintptr_t* a) {
    typedef uintptr_t u;
    switch (n) {
    case 0: return ((u(WINAPI*)())(void*)f)();
    case 1: return ((u(WINAPI*)(u))(void*)f)(a[0]);
    case 2: return ((u(WINAPI*)(u, u))(void*)f)(a[0], a[1]);
    case 3: return ((u(WINAPI*)(u, u, u))(void*)f)(a[0], a[1], a[2]);
    case 4: return ((u(WINAPI*)(u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3]);
    case 5: return ((u(WINAPI*)(u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4]);
    case 6: return ((u(WINAPI*)(u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5]);
    case 7: return ((u(WINAPI*)(u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6]);
    case 8: return ((u(WINAPI*)(u, u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
    case 9:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8]);
    case 10:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7],
                                                                    a[8], a[9]);
    case 11:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6],
                                                                       a[7], a[8], a[9], a[10]);
    case 12:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(a[0], a[1], a[2], a[3], a[4], a[5], a[6],
                                                                          a[7], a[8], a[9], a[10], a[11]);
    case 13:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(
            a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12]);
    case 14:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(
            a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12], a[13]);
    case 15:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(
            a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12], a[13], a[14]);
    default:
        return ((u(WINAPI*)(u, u, u, u, u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(
            a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12], a[13], a[14], a[15]);
    }
}

struct Arguments {
    int count = 0;
    int32_t number[MAX_ARGUMENTS] = {};
    char kind[MAX_ARGUMENTS] = {};  // 'n' or 's'
    std::vector<std::vector<char>> text;
    uintptr_t Value(int i, char as) const {
        return as == 's' ? (uintptr_t)text[(size_t)i].data() : (uintptr_t)(intptr_t)number[i];
    }
};

// Reads the arguments; the rest of the text that could not be read, if any.
std::string Parse(const std::string& s, Arguments& a) {
    size_t i = 0;
    auto skip = [&](const char* set) {
        while (i < s.size() && strchr(set, s[i])) i++;
    };
    skip(" ");
    while (i < s.size() && a.count < MAX_ARGUMENTS) {
        std::vector<char>& text = a.text[(size_t)a.count];
        std::string piece;
        if ((s[i] >= '0' && s[i] <= '9') || s[i] == '-') {
            while (i < s.size() && ((s[i] >= '0' && s[i] <= '9') || s[i] == '-')) piece += s[i++];
            a.number[a.count] = ParseInt(piece.c_str());
            a.kind[a.count] = 'n';
        } else {
            if (s[i] == '"') {
                size_t close = s.find('"', i + 1);
                piece = s.substr(i + 1, close == std::string::npos ? std::string::npos : close - i - 1);
                i = close == std::string::npos ? s.size() : close + 1;
            } else {
                while (i < s.size() && s[i] != ',' && s[i] != '"') piece += s[i++];
            }
            a.kind[a.count] = 's';
        }
        lstrcpynA(text.data(), piece.c_str(), ARGUMENT_TEXT);
        a.count++;
        skip(" ");
        // Only a comma leads to a further argument: "0x" leaves the "x" over.
        if (i < s.size() && s[i] != ',') break;
        skip(",");
        skip(" ");
    }
    skip(" ;");
    return s.substr(i);
}

int32_t CallFound(FARPROC f, const std::string& name, Arguments& a) {
    uintptr_t values[MAX_ARGUMENTS] = {};
    if (name == "GetVolumeInformationA") {
        DWORD serial = 0, length = 0, flags = 0;
        BOOL ok = ((BOOL(WINAPI*)(LPCSTR, LPSTR, DWORD, LPDWORD, LPDWORD, LPDWORD, LPSTR, DWORD))(void*)f)(
            a.text[0].data(), a.text[1].data(), 255, &serial, &length, &flags, a.text[6].data(), 255);
        if (ok) {
            DWORD words[3] = {serial, length, flags};
            for (int k = 0; k < 3; k++) FormatNumber((double)words[k], a.text[(size_t)3 + k].data());
        }
        return ok;
    }
    if (const Shape* shape = LongShape(name)) {
        int n = (int)strlen(shape->kinds);
        for (int k = 0; k < n; k++) values[k] = a.Value(k, shape->kinds[k]);
        return (int32_t)CallWith(f, n, values);
    }
    if (name == "StrStrA" || name == "StrStr") {
        values[0] = a.Value(0, 's');
        values[1] = a.Value(1, 's');
        return (int32_t)CallWith(f, 2, values);
    }
    for (int k = 0; k < a.count; k++) values[k] = a.Value(k, a.kind[k]);
    return (int32_t)CallWith(f, a.count, values);
}

}  // namespace

void KeepFormulaCharacters(char* text) {
    char* out = text;
    for (const char* in = text; *in; in++)
        if ((*in >= '0' && *in <= '9') || strchr(". +-*/^%)(|&~", *in)) *out++ = *in;
    *out = 0;
}

int32_t NativeCall(const char* text, const char* library) {
    for (int i = 1; i <= 9; i++) DeleteSetting(nullptr, ZR_ROOT "UserVariables\\parameter%d", i);
    if (!text || !*text) return NOT_RUN;
    const std::string all = text;
    const size_t open = all.find('(');
    std::string name;
    for (char c : all.substr(0, open))
        if (c != ' ') name += c;
    std::string arguments = open == std::string::npos ? "" : all.substr(open + 1);
    while (!arguments.empty() && arguments.back() == ' ') arguments.pop_back();
    if (!arguments.empty() && arguments.back() == ';') arguments.pop_back();
    if (!arguments.empty() && arguments.back() == ')') arguments.pop_back();
    while (!arguments.empty() && arguments.back() == ' ') arguments.pop_back();
    for (int k = 0; k < 2 && !arguments.empty() && arguments[0] == '('; k++) arguments.erase(0, 1);

    std::string lookup = name;
    for (const char* a : NamesWithA)
        if (lstrcmpA(name.c_str(), a) == 0) lookup += "A";
    int commas = 0;
    bool quoted = false;
    for (char c : arguments) {
        if (c == '"') quoted = !quoted;
        if (c == ',' && !quoted) commas++;
    }
    if (commas + 1 >= 6 && !LongShape(lookup) && !LongShape(name)) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                 "The \"%s\" Win32 API function is not supported.  Check to be sure that the name is correct.",
                 name.c_str());
        return NOT_RUN;
    }
    Arguments a;
    a.text.assign(MAX_ARGUMENTS, std::vector<char>(ARGUMENT_TEXT, 0));
    std::string rest = Parse(arguments, a);
    if (!rest.empty()) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                 "The formatting of the function call is incorrect (characters found after end: \"%s\")", rest.c_str());
        return NOT_RUN;
    }
    const bool strStr = lookup == "StrStr" || lookup == "StrStrA";
    bool found = false;
    int32_t result = NOT_RUN;
    for (int place = 0; place < 9 && !found; place++) {
        const char* module = place == 0 ? library : Modules[place - 1];
        if (!module || !*module) continue;
        HMODULE handle = LoadLibraryA(module);
        if (!handle) continue;
        FARPROC f = GetProcAddress(handle, strStr ? "StrStrA" : lookup.c_str());
        if (f) {
            found = true;
            result = CallFound(f, lookup, a);
        }
        FreeLibrary(handle);
    }
    // The first nine slots that hold a number-like text are kept.
    for (int i = 0; i < 9; i++)
        if (a.text[(size_t)i][0] && ParseInt(a.text[(size_t)i].data()))
            WriteSetting(nullptr, a.text[(size_t)i].data(), 0, nullptr, ZR_ROOT "UserVariables\\parameter%d", i + 1);
    if (!found) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to run function \"%s\"", text);
        return NOT_RUN;
    }
    return result;
}

namespace {

// Constant expressions among the first six arguments become one number:
// "0+64" is 64. An expression worth 0 or less stays as it is. The function's
// name and its "(" stay out of the first argument.
void FoldExpressions(std::string& text) {
    const size_t open = text.find('(');
    const std::string head = open == std::string::npos ? "" : text.substr(0, open + 1);
    std::string s = open == std::string::npos ? text : text.substr(open + 1);
    std::vector<std::string> items;
    std::string item;
    bool quoted = false;
    for (char c : s) {
        if (c == '"') quoted = !quoted;
        if (c == ',' && !quoted) {
            items.push_back(item);
            item.clear();
        } else {
            item += c;
        }
    }
    items.push_back(item);
    for (size_t i = 0; i < items.size() && i < 6; i++) {
        if (items[i].find('+') == std::string::npos) continue;
        std::vector<char> copy(items[i].begin(), items[i].end());
        copy.push_back(0);
        KeepFormulaCharacters(copy.data());
        if (ParseInt(copy.data()) <= 0) continue;
        char value[96];
        CalcFormula(copy.data(), value);
        items[i] = value;
    }
    text = head;
    for (size_t i = 0; i < items.size(); i++) text += (i ? "," : "") + items[i];
}

}  // namespace

int ExternalAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (ContainsNoCase(s.action, "WM_COMMAND")) {
        TranslateText(s.text, tab, step);
        const int command = ParseInt(TranslatedText);
        if (!LastWindow) {
            DesktopSleep(250);
            LastWindow = GetForegroundWindow();
        }
        PostMessageA(LastWindow, WM_COMMAND, (WPARAM)command, 0);
        return 1;
    }
    char library[MAX_PATH * 2] = "";
    if (s.value[0][0]) {
        TranslateText(s.value[0], tab, step);
        std::string name = TranslatedText;
        ResolveProgramPath(name.c_str(), library, ScriptStore.tab[tab].path);
    }
    TranslateText(s.text, tab, step);
    std::string text = TranslatedText;
    ReplaceInString(text, "NULL", "\"\"", 0, 0);
    ReplaceInString(text, " + ", "+", 0, 0);
    ReplaceInString(text, " | ", "+", 0, 0);
    ReplaceInString(text, "|", "+", 0, 0);
    FoldExpressions(text);
    const int32_t result = NativeCall(text.c_str(), library);
    if (result == NOT_RUN) return 0;
    char number[16];
    wsprintfA(number, "%d", result);
    SaveOutput(tab, step, number, (long)strlen(number), nullptr);
    return result >= 1 ? result : 1;
}
