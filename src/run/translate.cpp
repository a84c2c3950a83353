// TranslateText, stage by stage, in the order that is its behaviour. Each
// stage runs only when its trigger is in the text, so that work that cannot
// change the result is not done; every value that can is read at the moment
// of use.
#include "run/translate.h"
#include "base/text.h"

#include <stdio.h>
#include <string.h>

#include <string>
#include <unordered_map>

#include "base/settings.h"
#include "base/settingswatch.h"
#include "base/ui.h"
#include "run/clipboard.h"
#include "run/expressions.h"
#include "run/loopstack.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/runwait.h"
#include "run/tempfiles.h"
#include "run/textops.h"
#include "base/handles.h"
#include "script/step.h"
#include "base/words.h"
#include "base/utf8.h"

char* TranslatedText;

namespace {

void LocalClock(SYSTEMTIME* now) { GetLocalTime(now); }

const char kEscape = '\xFF';  // a literal "%" during translation
std::string Result;           // the storage behind TranslatedText

bool Has(const std::string& s, const char* what) { return FindNoCase(s.c_str(), what) != nullptr; }

void Replace(std::string& s, const char* find, const std::string& with) {
    ReplaceInString(s, find, with.c_str(), 0, 0);
}

// One number by one of this file's literal formats ("%ld", "%02ld").
std::string Format(const char* format, long value) {
    char buffer[32];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(buffer, sizeof buffer, format, value);
#pragma GCC diagnostic pop
    return buffer;
}

// Values of user variables as last read, by full path in lower case; a
// missing value is kept as "absent". They are kept only while the settings
// watch reports no change, so each is the value the registry holds now.
struct KnownValue {
    bool exists;
    std::string text;
};
std::unordered_map<std::string, KnownValue> Known;
unsigned long KnownGeneration;

// Reads one variable's text (strings raw, numbers in decimal); false when it
// does not exist.
bool ReadVariableValue(const std::string& path, std::string& out) {
    static std::string folded;
    folded.assign(path);
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z') c = (char)(c + 32);
    auto it = Known.find(folded);
    if (it == Known.end()) {
        KnownValue v = {false, ""};
        int size = ReadSetting(nullptr, nullptr, -1, nullptr, "%s", path.c_str());
        if (size > 0) {
            std::string data((size_t)size + 256, '\0');
            ReadSetting(nullptr, &data[0], (int)data.size(), nullptr, "%s", path.c_str());
            v = {true, data.c_str()};
        }
        it = Known.emplace(folded, v).first;
    }
    out = it->second.text;
    return it->second.exists;
}

int KnownSettingInt(const char* name) {
    std::string value;
    ReadVariableValue(std::string(ZR_ROOT) + name, value);
    return atoi(value.c_str());
}

// 3. Loop values, read only when their macro is in the text.
void LoopValues(std::string& s) {
    static const char* const kLoops[] = {"file_loop", "file_line_loop", "window_loop", "hwnd_loop", "data_loop"};
    for (const char* name : kLoops) {
        std::string macro = std::string("%") + name;
        if (!Has(s, macro.c_str())) continue;
        std::string value;
        ReadVariableValue(std::string(ZR_ROOT "UserVariables\\") + name, value);
        if (value.size() > 259) value.resize(CharBoundary(value.data(), 259));
        if (!value.empty()) Replace(s, macro.c_str(), value);
    }
}

// 4. User variables: at each "%", the longest following name that exists wins.
void UserVariables(std::string& s, int tab) {
    char path[MAX_PATH] = ZR_ROOT "UserVariables\\";
    if (KnownSettingInt("LocalVariables"))
        FormatIntoN(path + strlen(path), sizeof path - strlen(path), "%li_%d\\", (long)(INT_PTR)MainWindow, tab + 1);
    for (size_t at = s.find('%'); at != std::string::npos; at = s.find('%', at + 1)) {
        size_t end = at + 1;
        while (end < s.size() && end - at - 1 < 65 && s[end] != ' ' && s[end] != '%' && s[end] != '\r' &&
               s[end] != '\n')
            end++;
        std::string name = s.substr(at + 1, end - at - 1), value;
        bool found = false;
        std::string full;
        for (; !name.empty(); name.pop_back()) {
            full.assign(path).append(name);
            found = ReadVariableValue(full, value) && !value.empty();
            if (found) break;
        }
        if (!found) continue;
        if (!value.empty() && value.back() == '*') {
            // A file reference: the value is the file's whole content.
            std::string file;
            for (char c : value)
                if (c != '*') file += c;
            AutoCloseHandle h(CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
            if (h.ok()) {
                DWORD size = GetFileSize(h.h, nullptr), got = 0;
                std::string content(size, '\0');
                if (size && ReadFile(h.h, &content[0], size, &got, nullptr)) content.resize(got);
                value = content;
            }
        }
        s.replace(at, name.size() + 1, value);
        if (s.size() > (size_t(256) << 20)) {  // a variable that holds itself
            s.clear();
            return;
        }
    }
}

// 6. Names of the platform's interface, replaced by their values in this
// order; a longer name stands before any name it contains.
struct Constant {
    const char* name;
    unsigned long value;
};
#define K(name) {#name, (unsigned long)(name)}
const Constant kMessageBox[] = {
    K(MB_OKCANCEL), K(MB_OK), K(MB_ABORTRETRYIGNORE), K(MB_YESNOCANCEL), K(MB_YESNO), K(MB_RETRYCANCEL),
    K(MB_ICONHAND), K(MB_ICONSTOP), K(MB_ICONERROR), K(MB_ICONQUESTION), K(MB_ICONEXCLAMATION),
    K(MB_ICONWARNING), K(MB_ICONASTERISK), K(MB_ICONINFORMATION), K(MB_USERICON), K(MB_DEFBUTTON1),
    K(MB_DEFBUTTON2), K(MB_DEFBUTTON3), K(MB_DEFBUTTON4), K(MB_SYSTEMMODAL), K(MB_TASKMODAL), K(MB_HELP),
    K(MB_NOFOCUS), K(MB_SETFOREGROUND), K(MB_DEFAULT_DESKTOP_ONLY), K(MB_TOPMOST), K(MB_RIGHT), K(MB_RTLREADING),
};
const Constant kDialogResults[] = {
    K(IDOK), K(IDCANCEL), K(IDABORT), K(IDRETRY), K(IDIGNORE), K(IDYES), K(IDNO), K(IDCLOSE), K(IDHELP),
};
const Constant kWindowStyles[] = {
    K(WS_OVERLAPPEDWINDOW), K(WS_OVERLAPPED), K(WS_POPUPWINDOW), K(WS_POPUP), K(WS_CHILD), K(WS_MINIMIZE),
    K(WS_VISIBLE), K(WS_DISABLED), K(WS_CLIPSIBLINGS), K(WS_CLIPCHILDREN), K(WS_MAXIMIZE), K(WS_CAPTION),
    K(WS_BORDER), K(WS_DLGFRAME), K(WS_VSCROLL), K(WS_HSCROLL), K(WS_SYSMENU), K(WS_THICKFRAME),
    K(WS_EX_TOPMOST), K(WS_EX_PALETTEWINDOW),
};
const Constant kMetrics[] = {
    K(SM_CXSCREEN), K(SM_CYSCREEN), K(SM_CXVSCROLL), K(SM_CYHSCROLL), K(SM_CYCAPTION), K(SM_CXBORDER),
    K(SM_CYBORDER), K(SM_CXDLGFRAME), K(SM_CYDLGFRAME), K(SM_CYMENU), K(SM_CXFULLSCREEN), K(SM_CYFULLSCREEN),
    K(SM_MOUSEPRESENT), K(SM_CYVSCROLL), K(SM_CXHSCROLL), K(SM_DEBUG), K(SM_CXSIZE), K(SM_CYSIZE),
    K(SM_CXFRAME), K(SM_CYFRAME), K(SM_CXDOUBLECLK), K(SM_CYDOUBLECLK), K(SM_CXICONSPACING), K(SM_CYICONSPACING),
};
const Constant kFiles[] = {
    K(GENERIC_READ), K(GENERIC_WRITE), K(FILE_SHARE_READ), K(FILE_SHARE_WRITE), K(CREATE_NEW), K(CREATE_ALWAYS),
    K(OPEN_EXISTING), K(OPEN_ALWAYS), K(TRUNCATE_EXISTING), K(FILE_ATTRIBUTE_ARCHIVE), K(FILE_ATTRIBUTE_HIDDEN),
    K(FILE_ATTRIBUTE_NORMAL), K(FILE_ATTRIBUTE_READONLY), K(FILE_ATTRIBUTE_SYSTEM), K(FILE_ATTRIBUTE_TEMPORARY),
    K(FILE_ATTRIBUTE_DIRECTORY), K(FILE_BEGIN), K(FILE_CURRENT), K(FILE_END),
};
#undef K

struct ConstantGroup {
    const char* const* prefixes;  // every name of the group starts with one of these
    const Constant* names;
    size_t count;
};
const char* const kMbPrefix[] = {"MB_", nullptr};
const char* const kIdPrefix[] = {"ID", nullptr};
const char* const kWsPrefix[] = {"WS_", nullptr};
const char* const kSmPrefix[] = {"SM_", nullptr};
const char* const kFilePrefix[] = {"GENERIC_", "FILE_", "CREATE_", "OPEN_", "TRUNCATE_", nullptr};
const ConstantGroup kConstants[] = {
    {kMbPrefix, kMessageBox, sizeof kMessageBox / sizeof *kMessageBox},
    {kIdPrefix, kDialogResults, sizeof kDialogResults / sizeof *kDialogResults},
    {kWsPrefix, kWindowStyles, sizeof kWindowStyles / sizeof *kWindowStyles},
    {kSmPrefix, kMetrics, sizeof kMetrics / sizeof *kMetrics},
    {kFilePrefix, kFiles, sizeof kFiles / sizeof *kFiles},
};

void InterfaceConstants(std::string& s) {
    // A replacement gives digits only, which start no name, so a group whose
    // prefixes are absent cannot match and is passed over as a whole.
    for (const ConstantGroup& g : kConstants) {
        bool any = false;
        for (const char* const* p = g.prefixes; *p && !any; p++) any = Has(s, *p);
        if (!any) continue;
        for (size_t i = 0; i < g.count; i++)
            if (Has(s, g.names[i].name)) Replace(s, g.names[i].name, Format("%lu", (long)g.names[i].value));
    }
}

std::string WindowsName() {
    OSVERSIONINFOA v = {sizeof v};
    GetVersionExA(&v);
    const char* name;
    if (v.dwPlatformId == VER_PLATFORM_WIN32_NT) {
        if (v.dwMajorVersion >= 6) name = "Windows Vista";
        else if (v.dwMajorVersion == 5 && v.dwMinorVersion >= 2) name = "Windows 2003 Server";
        else if (v.dwMajorVersion == 5 && v.dwMinorVersion == 1) name = "Windows XP";
        else if (v.dwMajorVersion == 5) name = "Windows 2000";
        else if (v.dwMajorVersion == 4) name = "Windows NT 4";
        else name = "Windows NT";
    } else {
        name = v.dwMinorVersion >= 90 ? "Windows ME" : v.dwMinorVersion >= 10 ? "Windows 98" : "Windows 95";
    }
    std::string out = name;
    if (v.szCSDVersion[0]) out += std::string(" ") + v.szCSDVersion;
    return out;
}

std::string WindowTitle(HWND window) {
    char title[512] = "";
    DWORD_PTR got = 0;
    if (!SendMessageTimeoutA(window, WM_GETTEXT, sizeof title, (LPARAM)title, SMTO_ABORTIFHUNG, 1000, &got))
        GetWindowTextA(window, title, sizeof title);
    return title;
}

HWND CurrentWindow() {
    if (!LastWindow) LastWindow = GetForegroundWindow();
    return LastWindow;
}

// 8. System macros, each only when it is in the text.
void SystemMacros(std::string& s, int tab) {
    char buffer[MAX_PATH * 2];
    if (Has(s, "%SYSDIR")) {
        GetSystemDirectoryA(buffer, MAX_PATH);
        Replace(s, "%SYSDIR", buffer);
    }
    if (Has(s, "%WINDIR")) {
        GetWindowsDirectoryA(buffer, MAX_PATH);
        Replace(s, "%WINDIR", buffer);
    }
    if (Has(s, "%CURDIR")) {
        GetCurrentDirectoryA(MAX_PATH, buffer);
        Replace(s, "%CURDIR", buffer);
    }
    Replace(s, "%programfiles", "%PROGRAMFILES%");
    Replace(s, "%path", "%PATH%");
    size_t first = s.find('%');
    if (first != std::string::npos && s.find('%', first + 1) != std::string::npos) {
        DWORD need = ExpandEnvironmentStringsA(s.c_str(), nullptr, 0);
        std::string expanded(need + 256, '\0');
        if (ExpandEnvironmentStringsA(s.c_str(), &expanded[0], need + 256)) s = expanded.c_str();
    }
    if (Has(s, "%LOGFILE")) {
        char logfile[260];
        ReadSetting(nullptr, logfile, 259, nullptr, ZR_ROOT "Logfile");
        Replace(s, "%LOGFILE", logfile);
    }
    if (Has(s, "%WINVER")) Replace(s, "%WINVER", WindowsName());
    if (Has(s, "%WINDOW_") && LastWindow && IsWindow(LastWindow)) {
        RECT r;
        GetWindowRect(LastWindow, &r);
        Replace(s, "%window_x", Format("%li", r.left));
        Replace(s, "%window_y", Format("%li", r.top));
        Replace(s, "%window_wide", Format("%li", r.right - r.left));
        Replace(s, "%window_hi", Format("%li", r.bottom - r.top));
    }
    if (Has(s, "%WINDOW")) Replace(s, "%WINDOW", WindowTitle(CurrentWindow()));
    if (Has(s, "%HWND")) Replace(s, "%HWND", Format("%ld", (long)(INT_PTR)CurrentWindow()));
    if (Has(s, "%WINCLASS")) {
        char cls[260] = "";
        GetClassNameA(CurrentWindow(), cls, sizeof cls);
        Replace(s, "%WINCLASS", cls);
    }
    if (Has(s, "%FILE")) {
        std::string path = tab >= 0 && tab < MAX_TABS ? ScriptStore.tab[tab].path : "";
        size_t slash = path.rfind('\\');
        std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
        std::string folder = slash == std::string::npos ? "" : path.substr(0, slash);
        if (folder.size() == 2 && folder[1] == ':') folder += '\\';  // a bare drive keeps its backslash
        size_t dot = base.rfind('.');
        Replace(s, "%FILENAME", path);
        Replace(s, "%FILEBASENAME", base);
        Replace(s, "%FILEPATH", folder);
        Replace(s, "%FILEEXT", dot == std::string::npos ? "" : base.substr(dot));
    }
    if (Has(s, "%tempfile")) {
        char folder[MAX_PATH], name[MAX_PATH] = "";
        GetTempPathA(sizeof folder, folder);
        GetTempFileNameA(folder, "", 0, name);
        NoteRunTempFile(name);
        Replace(s, "%tempfile", name);
    }
    if (Has(s, "%CLIPBOARD")) Replace(s, "%CLIPBOARD", GetClipboardText());
}

// 9. Run macros, then the three control characters.
void RunMacros(std::string& s, int tab, int step) {
    int t = tab >= 0 && tab < MAX_TABS ? tab : 0;
    if (Has(s, "%l")) {
        long loop = LoopCounters[t][0] + 1;
        Replace(s, "%llll", Format("%04ld", loop));
        Replace(s, "%lll", Format("%03ld", loop));
        Replace(s, "%ll", Format("%02ld", loop));
        Replace(s, "%l", Format("%ld", loop));
    }
    if (Has(s, "%e")) {
        long repeats = RunRepeats[t] < 0 ? 0 : RunRepeats[t];
        Replace(s, "%eeee", Format("%04ld", repeats));
        Replace(s, "%eee", Format("%03ld", repeats));
        Replace(s, "%ee", Format("%02ld", repeats));
        Replace(s, "%e", Format("%ld", repeats));
    }
    if (Has(s, "%c")) {
        Replace(s, "%currentstep", Format("%ld", step + 1));
        Replace(s, "%currentfile", Format("%ld", tab + 1));
    }
    if (Has(s, "%ticks")) Replace(s, "%ticks", Format("%lu", (long)GetTickCount()));
    if (Has(s, "%mouse_")) {
        POINT p = {};
        GetCursorPos(&p);
        Replace(s, "%mouse_x", Format("%ld", p.x));
        Replace(s, "%mouse_y", Format("%ld", p.y));
    }
    if (Has(s, "%screen_")) {
        Replace(s, "%screen_x", Format("%ld", GetSystemMetrics(SM_CXSCREEN)));
        Replace(s, "%screen_y", Format("%ld", GetSystemMetrics(SM_CYSCREEN)));
    }
    Replace(s, "%r", "\r");
    Replace(s, "%n", "\n");
    Replace(s, "%t", "\t");
}

// 10. Random digits or letters for the first run of marks after a "%".
void RandomRun(std::string& s, char lower, char upper, char lowFirst, int lowRange, char highFirst, int highRange) {
    char mark[3] = {'%', lower, 0};
    const char* at = FindNoCase(s.c_str(), mark);
    if (!at) return;
    size_t start = (size_t)(at - s.c_str()) + 1;
    size_t end = start;
    while (end < s.size() && end - start < 64 && (s[end] == lower || s[end] == upper)) end++;
    std::string run(1, '%'), drawn;
    run.append(s, start, end - start);
    for (size_t i = start; i < end; i++)
        drawn += s[i] == lower ? (char)(lowFirst + Random(0, lowRange - 1)) : (char)(highFirst + Random(0, highRange - 1));
    Replace(s, run.c_str(), drawn);
}

// 11. Dates and times, with at most one shift by "++" or "--".
void DateMacros(std::string& s) {
    SYSTEMTIME now;
    TranslateClock(&now);
    const char* mark = nullptr;
    size_t markAt = s.find("++");
    if (markAt != std::string::npos)
        mark = "++";
    else if ((markAt = s.find("--")) != std::string::npos)
        mark = "--";
    if (mark) {
        int number = ParseInt(s.substr(markAt + 2, 5).c_str());
        if (mark[0] == '-') number = -number;
        static const struct {
            const char* form;
            long long units;  // of 100 ns
        } kShifts[] = {
            {"%ss", 10000000LL},          {"%ii", 600000000LL},        {"%hh", 36000000000LL},
            {"%uu", 36000000000LL},       {"%dd", 864000000000LL},     {"%mm", 31 * 864000000000LL},
            {"%yyyy", 315364294967296LL}, {"%yy", 315364294967296LL},
        };
        for (const auto& shift : kShifts) {
            if (!Has(s, (std::string(shift.form) + mark).c_str())) continue;
            FILETIME ft;
            SystemTimeToFileTime(&now, &ft);
            ULARGE_INTEGER v;
            v.LowPart = ft.dwLowDateTime;
            v.HighPart = ft.dwHighDateTime;
            v.QuadPart += (ULONGLONG)((long long)number * shift.units);
            ft.dwLowDateTime = v.LowPart;
            ft.dwHighDateTime = v.HighPart;
            FileTimeToSystemTime(&ft, &now);
            break;
        }
        std::string sign = number > 0 ? Format("++%ld", number) : Format("-%ld", number);
        ReplaceInString(s, sign.c_str(), "", 1, 1);
    }
    static const char* const kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                          "July",    "August",   "September", "October", "November", "December"};
    static const char* const kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    int hour12 = now.wHour % 12 == 0 ? 12 : now.wHour % 12;
    Replace(s, "%yyyy", Format("%04ld", now.wYear));
    Replace(s, "%yy", Format("%02ld", now.wYear - 2000));
    Replace(s, "%mmmm", kMonths[(now.wMonth + 11) % 12]);
    Replace(s, "%mmm", std::string(kMonths[(now.wMonth + 11) % 12], 3));
    Replace(s, "%dddd", kDays[now.wDayOfWeek % 7]);
    Replace(s, "%ddd", std::string(kDays[now.wDayOfWeek % 7], 3));
    Replace(s, "%mm", Format("%02ld", now.wMonth));
    Replace(s, "%dd", Format("%02ld", now.wDay));
    Replace(s, "%uu", Format("%02ld", now.wHour));
    Replace(s, "%a", now.wHour < 12 ? "AM" : "PM");
    Replace(s, "%hh", Format("%02ld", hour12));
    Replace(s, "%ii", Format("%02ld", now.wMinute));
    Replace(s, "%ss", Format("%02ld", now.wSecond));
}

// 12. Embedded functions, in this order; an inner call of an earlier name is
// done first.
enum Function { UPPERCASE, LOWERCASE, REPLACETEXT, INSERTTEXT, GETSUBTEXT, LENGTH, FINDTEXT, COUNTITEMS, TRIM, CALC };
const char* const kFunctions[] = {"Uppercase", "Lowercase", "ReplaceText", "InsertText", "GetSubText",
                                  "Length",    "FindText",  "CountItems",  "Trim",       "CALC"};

size_t FindCall(const std::string& s, const char* name) {
    if (!FindNoCase(s.c_str(), name)) return std::string::npos;
    const char* const kOpenings[] = {" (", "(", "  ("};
    for (const char* opening : kOpenings) {
        const char* at = FindNoCase(s.c_str(), (std::string(name) + opening).c_str());
        if (at) return (size_t)(at - s.c_str());
    }
    return std::string::npos;
}

std::string Evaluate(int function, const std::string& call) {
    size_t size = call.size() + 256;
    std::string arg[4];
    for (int i = 0; i < 4; i++) {
        std::string buffer(size, '\0');
        GetCallArgument(call.c_str(), i + 1, &buffer[0], (int)size);
        arg[i] = buffer.c_str();
    }
    std::string out = arg[0];
    switch (function) {
    case UPPERCASE:
    case LOWERCASE: {
        // Through UTF-16: a letter's case may take another number of bytes.
        std::wstring wide = WideFromProgram(out.data(), out.size());
        if (wide.empty()) return out;
        if (function == UPPERCASE)
            CharUpperBuffW(&wide[0], (DWORD)wide.size());
        else
            CharLowerBuffW(&wide[0], (DWORD)wide.size());
        return ProgramFromWide(wide.data(), wide.size());
    }
    case REPLACETEXT:
        ReplaceInString(out, arg[1].c_str(), arg[2].c_str(), 0, 0);
        return out;
    case INSERTTEXT: {
        int position = ParseInt(arg[1].c_str()) - 1;
        InsertAt(out, position < 0 ? 0 : position, arg[2].c_str());
        return out;
    }
    case GETSUBTEXT: {
        int index = ParseInt(arg[2].c_str()) - 1;
        std::string item(out.size() + 256, '\0');
        GetItem(out.c_str(), arg[1].c_str(), index < 0 ? 0 : index, &item[0], (int)item.size(), 1, 0);
        return item.c_str();
    }
    case LENGTH:
        return Format("%ld", (long)CharCount(out.data(), out.size()));
    case COUNTITEMS:
        return Format("%ld", CountText(out.c_str(), arg[1].c_str()));
    case TRIM:
        while (!out.empty() && (out.back() == ' ' || out.back() == '\t')) out.pop_back();
        return out;
    case CALC: {
        char result[128];
        CalcFormula(&out[0], result);
        return result;
    }
    }
    return call;  // FindText has no handler: the call stands for itself
}

// A call of FindText stands for itself and is tried again for ever, and
// calls that double a text grow it without end: the loop gives up at the
// text ceiling and at a stop of the run, with nothing as its result (set
// apart from a cut text by TranslationCut).
void Functions(std::string& s) {
    for (int f = 0; f < (int)(sizeof kFunctions / sizeof *kFunctions); f++) {
        for (size_t at = FindCall(s, kFunctions[f]); at != std::string::npos; at = FindCall(s, kFunctions[f])) {
            if (s.size() > TEXT_CEILING) {
                TextCeilingHit = true;
                return;
            }
            if (StopAsked()) {
                TranslationCut = true;
                return;
            }
            int depth = 0;
            bool quoted = false;
            size_t end = at;
            for (; end < s.size(); end++) {
                char c = s[end];
                if (c == '"' || c == '\'') quoted = !quoted;
                if (c == '(') depth++;
                if (c == ')' && --depth == 0 && !quoted) break;
            }
            std::string call = s.substr(at, end < s.size() ? end - at + 1 : std::string::npos);
            ReplaceInString(s, call.c_str(), Evaluate(f, call).c_str(), 1, 1);
        }
    }
}

}  // namespace

void (*TranslateClock)(SYSTEMTIME* now) = LocalClock;

void SetTranslatedText(const char* text) {
    Result.assign(text ? text : "");
    Result.reserve(256);
    TranslatedText = &Result[0];
}

int TranslateText(const char* text, int tab, int step) {
    if (!text || !*text) {
        Result.clear();
        TranslatedText = &Result[0];
        return 0;
    }
    std::string s(text);
    s.reserve(s.size() + 1024);
    ReplaceInString(s, "%%", std::string(1, kEscape).c_str(), 0, 1);
    bool percent = s.find('%') != std::string::npos;
    if (percent) {
        unsigned long generation = SettingsGeneration();
        if (generation != KnownGeneration) {
            Known.clear();
            KnownGeneration = generation;
        }
        LoopValues(s);
        UserVariables(s, tab);
    }
    if (s.find('{') != std::string::npos) {
        Replace(s, "{ENTER}", "%n");
        Replace(s, "{TAB}", "%t");
        Replace(s, "{SPACE}", " ");
    }
    InterfaceConstants(s);
    if (s.find('%') != std::string::npos) {
        SystemMacros(s, tab);
        RunMacros(s, tab, step);
        if (Has(s, "%x")) RandomRun(s, 'x', 'X', '0', 10, '1', 9);
        if (Has(s, "%c")) RandomRun(s, 'c', 'C', 'a', 26, 'A', 26);
    }
    if (s.find('%') != std::string::npos) DateMacros(s);
    if (s.find('(') != std::string::npos && s.find(')') != std::string::npos) Functions(s);
    // A text past the ceiling yields nothing rather than a cut one; the run
    // core fails the step.
    if (s.size() > TEXT_CEILING) TextCeilingHit = true;
    if (TextCeilingHit || TranslationCut) s.clear();
    for (char& c : s)
        if (c == kEscape) c = '%';
    Result.swap(s);
    TranslatedText = &Result[0];
    return (int)Result.size() + 1;
}
