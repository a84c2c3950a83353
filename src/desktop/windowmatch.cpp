// The window search: EnumWindows over the top-level windows, and for each of
// them EnumChildWindows over all its descendants. The last match wins; the
// counters tell the callers whether the description was ambiguous.
#include "desktop/windowmatch.h"
#include "base/text.h"

#include <string.h>

#include <string>

#include "desktop/windowcontrol.h"
#include "base/log.h"
#include "base/words.h"

int32_t MatchFlags;
int32_t DumpFlags;
HWND OwnWindow;
char CriteriaTitle[260];
char CriteriaClass[64];
char CriteriaId[32];
char CriteriaUser[32];
char CriteriaHandle[32];
int32_t TopLevelMatches;
int32_t ChildMatches;
HWND FoundWindow;
int32_t WindowActivated;
bool CloseAllByForce;

namespace {

char TitleBuffer[260];  // the title of the window in hand

// A window that does not answer within 100 ms gives an empty title, and a
// hung one at once: one hung program never holds up a search.
void ReadTitle(HWND window, char* title) {
    title[0] = 0;
    if (!SendWithin(window, WM_GETTEXT, 255, (LPARAM)title, 100)) title[0] = 0;
    title[255] = 0;
}

void RemoveAmpersands(char* text) {
    char* out = text;
    for (const char* in = text; *in; in++)
        if (*in != '&') *out++ = *in;
    *out = 0;
}

// Cuts the criteria text at "|" into the fields of the selected bits.
void SplitCriteria(const char* criteria) {
    struct Field {
        int32_t bit;
        char* field;
        int size;
    } fields[] = {{MATCH_TITLE, CriteriaTitle, sizeof CriteriaTitle},
                  {MATCH_CLASS, CriteriaClass, sizeof CriteriaClass},
                  {MATCH_ID, CriteriaId, sizeof CriteriaId},
                  {MATCH_USER, CriteriaUser, sizeof CriteriaUser},
                  {MATCH_HANDLE, CriteriaHandle, sizeof CriteriaHandle}};
    const char* rest = criteria;
    for (Field& f : fields) {
        f.field[0] = 0;
        if (!(MatchFlags & f.bit)) continue;
        const char* bar = rest ? strchr(rest, '|') : nullptr;
        if (rest) {
            size_t length = bar ? (size_t)(bar - rest) : strlen(rest);
            if (length > (size_t)f.size - 1) length = (size_t)f.size - 1;
            memcpy(f.field, rest, length);
            f.field[length] = 0;
        }
        rest = bar ? bar + 1 : nullptr;
    }
    RemoveAmpersands(CriteriaTitle);
}

void DumpWindow(HWND window) {
    ReadTitle(window, TitleBuffer);
    char className[64] = "";
    GetClassNameA(window, className, sizeof className);
    std::string line;
    if (DumpFlags & (DUMP_FRAMED | DUMP_MAIN)) {
        if (!TitleBuffer[0]) return;
        line = std::string(TitleBuffer) + "\r\n";
    } else {
        const bool framed = IsFramed(window);
        const char* separator =
            framed && !GetParent(window)
                ? "\r\n======================================================================\r\n"
                : "";
        char tail[160];
        FormatInto(tail, "\"\t\t\t(Class: %s  ID: %li  HWND: 0x%x)\r\n", className,
                  (long)GetWindowLongA(window, GWL_ID), (unsigned)(UINT_PTR)window);
        line = std::string(separator) + (framed ? "" : "      ") + "\"" + TitleBuffer + tail;
    }
    char path[MAX_PATH];
    DumpFilePath(path);
    AppendToFile(nullptr, path, line.c_str());
}

BOOL CALLBACK ChildCallback(HWND child, LPARAM criteria) {
    if (MatchWindow(child, (const char*)criteria) && !IsOwnWindow(OwnWindow, child)) {
        ChildMatches++;
        FoundWindow = child;
    }
    return TRUE;
}

BOOL CALLBACK TopLevelCallback(HWND window, LPARAM criteria) {
    HWND match = MatchWindow(window, (const char*)criteria);
    if (match && IsFramed(match)) {
        TopLevelMatches++;
        FoundWindow = match;
    }
    EnumChildWindows(window, ChildCallback, criteria);
    return TRUE;
}

}  // namespace

bool IsFramed(HWND window) {
    return (GetWindowLongA(window, GWL_STYLE) & (WS_DLGFRAME | WS_THICKFRAME)) && IsWindowVisible(window);
}

HWND FindWindowByCriteria(HWND ownWindow, int32_t matchFlags, const char* criteria, int32_t dumpFlags) {
    OwnWindow = ownWindow;
    if (criteria && *criteria) {
        HWND fast = matchFlags == MATCH_TITLE   ? FindWindowA(nullptr, criteria)
                    : matchFlags == MATCH_CLASS ? FindWindowA(criteria, nullptr)
                                                : nullptr;
        if (fast) return fast;
    }
    MatchFlags = matchFlags;
    DumpFlags = dumpFlags;
    FoundWindow = nullptr;
    TopLevelMatches = ChildMatches = 0;
    if ((!criteria || !*criteria) && matchFlags != MATCH_DUMP && matchFlags != MATCH_MINIMIZE_ALL &&
        matchFlags != MATCH_CLOSE_ALL)
        return nullptr;
    SplitCriteria(criteria);
    EnumWindows(TopLevelCallback, (LPARAM)criteria);
    return FoundWindow;
}

HWND MatchWindow(HWND window, const char* criteria) {
    if (!MatchFlags) return nullptr;
    if (MatchFlags == MATCH_MINIMIZE_ALL) {
        // Showing a window of another thread waits for that thread: a hung
        // one is passed over.
        if (IsFramed(window) && !GetParent(window) && IsWindow(window) &&
            (GetWindowLongA(window, GWL_STYLE) & WS_VISIBLE) && !IsIconic(window) && WindowAnswers(window))
            ShowWindow(window, SW_MINIMIZE);
        return nullptr;
    }
    if (MatchFlags == MATCH_CLOSE_ALL) {
        if (IsFramed(window) && !GetParent(window) && IsWindow(window) && window != GetDesktopWindow()) {
            // A program asking to save keeps its question, as with one window.
            HWND question = nullptr;
            if (CloseAllByForce)
                CloseWindowForcibly(window, 250);
            else
                CloseWindowPolitely(window, 250, &question);
        }
        return nullptr;
    }
    if ((DumpFlags & DUMP_FRAMED) && !IsFramed(window)) return nullptr;
    if ((DumpFlags & DUMP_MAIN) && (!IsFramed(window) || GetParent(window))) return nullptr;
    if (MatchFlags == MATCH_DUMP) {
        DumpWindow(window);
        return nullptr;
    }
    ReadTitle(window, TitleBuffer);
    RemoveAmpersands(TitleBuffer);
    char className[64] = "", id[32], user[32];
    GetClassNameA(window, className, sizeof className);
    FormatInto(id, "%li", (long)GetWindowLongA(window, GWL_ID));
    snprintf(user, sizeof user, "%lld", (long long)GetWindowLongPtrA(window, GWLP_USERDATA));  // pointer-sized
    if ((MatchFlags & MATCH_CLASS) && lstrcmpiA(className, CriteriaClass) != 0) return nullptr;
    if ((MatchFlags & MATCH_ID) && lstrcmpiA(id, CriteriaId) != 0) return nullptr;
    if ((MatchFlags & MATCH_USER) && lstrcmpiA(user, CriteriaUser) != 0) return nullptr;
    // Window handles are 32-bit values on 64-bit systems as well.
    if ((MatchFlags & MATCH_HANDLE) && (DWORD)ParseInt(CriteriaHandle) != (DWORD)(UINT_PTR)window) return nullptr;
    if ((MatchFlags & MATCH_TITLE) && (!TitleBuffer[0] || !ContainsNoCase(TitleBuffer, CriteriaTitle)))
        return nullptr;
    return window;
}

int IsOwnWindow(HWND ownWindow, HWND candidate) {
    HWND line[6];
    line[0] = candidate;
    for (int i = 1; i < 6; i++) line[i] = line[i - 1] ? GetParent(line[i - 1]) : nullptr;
    char ownClass[64] = "";
    if (ownWindow) GetClassNameA(ownWindow, ownClass, sizeof ownClass);
    for (HWND w : line) {
        char className[64] = "";
        if (w && ownClass[0] && GetClassNameA(w, className, sizeof className) && strstr(className, ownClass))
            return 1;
    }
    for (HWND w : line)
        if (w && w == ownWindow) return 1;
    return 0;
}

int32_t MatchFlagsFromOptions(const char* options) {
    int32_t flags = 0;
    if (ContainsNoCase(options, "Title")) flags |= MATCH_TITLE;
    if (ContainsNoCase(options, "Class")) flags |= MATCH_CLASS;
    if (ContainsNoCase(options, "ID")) flags |= MATCH_ID;
    if (ContainsNoCase(options, "User")) flags |= MATCH_USER;
    if (ContainsNoCase(options, "Handle") || ContainsNoCase(options, "HWND")) flags |= MATCH_HANDLE;
    return flags;
}

namespace {

struct ProcessSearch {
    DWORD id;
    HWND found;
};

BOOL CALLBACK ProcessWindowCallback(HWND window, LPARAM param) {
    ProcessSearch* search = (ProcessSearch*)param;
    char title[260] = "";
    ReadTitle(window, title);
    DWORD process = 0;
    DWORD thread = GetWindowThreadProcessId(window, &process);
    if (title[0] && (thread == search->id || process == search->id)) {
        search->found = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

HWND FindProcessWindow(DWORD id) {
    ProcessSearch search = {id, nullptr};
    EnumWindows(ProcessWindowCallback, (LPARAM)&search);
    if (!search.found) return nullptr;
    HWND parent = GetParent(search.found);
    return !parent || parent == GetDesktopWindow() ? search.found : parent;
}

void DumpFilePath(char* path) {
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    char* slash = strrchr(path, '\\');
    char* name = slash ? slash + 1 : path;
    CopyIntoN(name, MAX_PATH - (size_t)(name - path), "windows.txt");
    // A program installed where the user may not write (Program Files)
    // keeps the dump in the user's temporary folder instead.
    HANDLE probe = CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                               OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (probe != INVALID_HANDLE_VALUE) {
        CloseHandle(probe);
        return;
    }
    char folder[MAX_PATH] = "";
    const DWORD length = GetTempPathA(sizeof folder, folder);
    if (length == 0 || length >= sizeof folder) return;
    FormatIntoN(path, MAX_PATH, "%swindows.txt", folder);
}
