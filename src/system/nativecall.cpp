// The bridge: the argument kinds decide the shape of the call (a number is
// passed by value, a string as the address of a 2048-byte buffer that the
// function may write into), except for the functions of more than five
// arguments, which each have a fixed shape.
#include "base/text.h"
#include "system/nativecall.h"

#include <windows.h>
#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/pause.h"
#include "base/settings.h"
#include "base/unattended.h"
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
    {"AngleArc", "nnnnff"}, {"CreateRoundRectRg", "nnnnnn"}, {"MoveWindow", "nnnnnn"}, {"ToUnicode", "nnnnnn"},
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

#if defined(__i386__)
// Calls with `n` arguments, stdcall or cdecl alike: the stack pointer is kept
// in a register the callee preserves and put back after the call, so neither
// a cdecl function (which leaves its arguments) nor a stdcall function given
// the wrong count (which takes too many or too few) can move it.
uintptr_t CallWith(FARPROC f, int n, const uintptr_t* a) {
    uintptr_t result;
    int count = n;
    asm volatile(
        "movl %%esp, %%esi\n\t"
        "1:\n\t"
        "testl %%ecx, %%ecx\n\t"
        "jz 2f\n\t"
        "pushl -4(%%edi,%%ecx,4)\n\t"
        "decl %%ecx\n\t"
        "jmp 1b\n"
        "2:\n\t"
        "call *%%ebx\n\t"
        "movl %%esi, %%esp\n\t"
        : "=a"(result), "+c"(count)
        : "b"(f), "D"(a)
        : "edx", "esi", "memory", "cc");
    return result;
}
#else
// On x86_64 the caller owns the stack, so any count is safe: the call is made
// with all sixteen slots, and the callee reads the ones it has.
uintptr_t CallWith(FARPROC f, int, const uintptr_t* a) {
    typedef uintptr_t u;
    return ((u(*)(u, u, u, u, u, u, u, u, u, u, u, u, u, u, u, u))(void*)f)(
        a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12], a[13], a[14], a[15]);
}
#endif

// Number slots are as wide as a pointer: 64 bits on x86_64, where handles
// and addresses do not fit in 32, and 32 on i686. A number is read in 64 bits
// and passes its bits (the low 32 on i686), so 2147483648 (GENERIC_READ)
// arrives as Windows defines it.
struct Arguments {
    int count = 0;
    int64_t number[MAX_ARGUMENTS] = {};
    char kind[MAX_ARGUMENTS] = {};  // 'n' or 's'
    std::vector<std::vector<char>> text;
    uintptr_t Value(int i, char as) const {
        if (as == 's') return (uintptr_t)text[(size_t)i].data();
        if (as == 'f') {
            // A FLOAT argument: its bits in the slot, where the callee reads
            // them (AngleArc's angles are its fifth and sixth, on the stack).
            const float value = (float)atof(text[(size_t)i].data());
            uint32_t bits = 0;
            memcpy(&bits, &value, sizeof bits);
            return (uintptr_t)bits;
        }
        return (uintptr_t)number[i];
    }
};

// ParseInt's rule (every digit and minus sign of the text, at most 31;
// hexadecimal after "0x"), read in 64 bits.
int64_t ParseBridgeNumber(const char* text) {
    char digits[32];
    size_t n = 0;
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        for (const char* p = text + 2; *p && n < 31; p++)
            if (isxdigit((unsigned char)*p)) digits[n++] = *p;
        digits[n] = 0;
        return (int64_t)strtoull(digits, nullptr, 16);
    }
    for (const char* p = text; *p && n < 31; p++)
        if ((*p >= '0' && *p <= '9') || *p == '-') digits[n++] = *p;
    digits[n] = 0;
    if (digits[0] != '-') return (int64_t)strtoull(digits, nullptr, 10);  // up to 2^64 - 1, its bits
    return strtoll(digits, nullptr, 10);
}

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
            // A decimal point is taken too, for a FLOAT argument; a number
            // slot keeps the whole part.
            while (i < s.size() && ((s[i] >= '0' && s[i] <= '9') || s[i] == '-' || s[i] == '.')) piece += s[i++];
            a.number[a.count] = ParseBridgeNumber(piece.substr(0, piece.find('.')).c_str());
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
        CopyIntoN(text.data(), ARGUMENT_TEXT, piece.c_str());
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

intptr_t CallFound(FARPROC f, const std::string& name, Arguments& a) {
    uintptr_t values[MAX_ARGUMENTS] = {};
    // An unattended run shows no box, also none a script calls for (the
    // "Custom Message Box"): it is reported and answered as the program's own.
    if (UnattendedRun && (name == "MessageBoxA" || name == "MessageBoxExA"))
        return UnattendedMessageBox((HWND)a.Value(0, 'n'), a.text[1].data(), a.text[2].data(), (UINT)a.number[3]);
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
        return (intptr_t)CallWith(f, n, values);
    }
    if (name == "StrStrA" || name == "StrStr") {
        values[0] = a.Value(0, 's');
        values[1] = a.Value(1, 's');
        return (intptr_t)CallWith(f, 2, values);
    }
    for (int k = 0; k < a.count; k++) values[k] = a.Value(k, a.kind[k]);
    return (intptr_t)CallWith(f, a.count, values);
}

}  // namespace

void KeepFormulaCharacters(char* text) {
    char* out = text;
    for (const char* in = text; *in; in++)
        if ((*in >= '0' && *in <= '9') || strchr(". +-*/^%)(|&~", *in)) *out++ = *in;
    *out = 0;
}

bool NativeCall(const char* text, const char* library, intptr_t* result) {
    *result = 0;
    for (int i = 1; i <= 9; i++) DeleteSetting(nullptr, ZR_ROOT "UserVariables\\parameter%d", i);
    if (!text || !*text) return false;
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
        return false;
    }
    Arguments a;
    a.text.assign(MAX_ARGUMENTS, std::vector<char>(ARGUMENT_TEXT, 0));
    std::string rest = Parse(arguments, a);
    if (!rest.empty()) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                 "The formatting of the function call is incorrect (characters found after end: \"%s\")", rest.c_str());
        return false;
    }
    const bool strStr = lookup == "StrStr" || lookup == "StrStrA";
    bool found = false;
    for (int place = 0; place < 9 && !found; place++) {
        const char* module = place == 0 ? library : Modules[place - 1];
        if (!module || !*module) continue;
        HMODULE handle = LoadLibraryA(module);
        if (!handle) continue;
        FARPROC f = GetProcAddress(handle, strStr ? "StrStrA" : lookup.c_str());
        if (f) {
            found = true;
            *result = CallFound(f, lookup, a);
        }
        FreeLibrary(handle);
    }
    // The first nine slots that hold a number-like text are kept.
    for (int i = 0; i < 9; i++)
        if (a.text[(size_t)i][0] && ParseInt(a.text[(size_t)i].data()))
            WriteSetting(nullptr, a.text[(size_t)i].data(), 0, nullptr, ZR_ROOT "UserVariables\\parameter%d", i + 1);
    if (!found) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to run function \"%s\"", text);
        return false;
    }
    return true;
}

void BridgeResultText(intptr_t result, char* text, size_t size) {
    // The bridge cannot know the return type. A value whose upper half is
    // zero or only the sign of its lower half is a 32-bit result and prints
    // as one (an int of -1 gives "-1"); anything wider (an address, a handle)
    // prints in full, so that it can be passed back.
    const int64_t value = (int64_t)result;
    const uint64_t high = (uint64_t)value >> 32;
    if (high == 0 || value == (int64_t)(int32_t)value)
        snprintf(text, size, "%d", (int)(int32_t)value);
    else
        snprintf(text, size, "%lld", (long long)value);
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
    intptr_t result = 0;
    if (!NativeCall(text.c_str(), library, &result)) return 0;
    char number[32];
    BridgeResultText(result, number, sizeof number);
    SaveOutput(tab, step, number, (long)strlen(number), nullptr);
    // A handler's result is an int: any result of 1 or more passes as 1 when
    // it does not fit, and the run core takes it as a pass either way.
    return result >= 1 && result <= 0x7FFFFFFF ? (int)result : 1;
}
