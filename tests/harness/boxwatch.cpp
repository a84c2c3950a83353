// The test harness's box watcher: answers every message box that appears on
// the desktop, so that no run can hang the suite, and reports each one as
// "BOX<tab>title<tab>text" on stdout. It stops when the stop file exists.
//
//   boxwatch.exe STOPFILE [title=answer ...]
// An answer is a button id (1 OK, 2 Cancel, 6 Yes, 7 No); by default a box is
// answered with OK when it has that button, else Yes. An answer of 0 leaves
// the box alone and unreported: a dialog that the script itself fills in.
// "title=1:text" first puts the text into the dialog's first edit control (a
// file chooser's name), or chooses it in its first list, then presses the
// button.
#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <set>
#include <string>
#include <vector>

namespace {

struct Answer {
    std::string title;
    int button;
    std::string text;
    bool typed;
};

struct FirstOf {
    const char* className;
    HWND found;
};

BOOL CALLBACK FirstChild(HWND window, LPARAM param) {
    FirstOf* f = (FirstOf*)param;
    char cls[64];
    if (!GetClassNameA(window, cls, sizeof cls) || lstrcmpiA(cls, f->className) != 0) return TRUE;
    f->found = window;
    return FALSE;
}

std::vector<Answer> Answers;
std::set<HWND> Seen;

std::string Escape(const char* text) {
    std::string out;
    for (const char* p = text; *p; p++) {
        if (*p == '\n') out += "\\n";
        else if (*p == '\r') out += "\\r";
        else if (*p == '\t') out += "\\t";
        else out += *p;
    }
    return out;
}

BOOL CALLBACK Visit(HWND window, LPARAM) {
    char cls[64];
    if (!GetClassNameA(window, cls, sizeof cls) || strcmp(cls, "#32770") != 0) return TRUE;
    if (!IsWindowVisible(window) || Seen.count(window)) return TRUE;
    char title[512] = "", text[4096] = "";
    SendMessageA(window, WM_GETTEXT, sizeof title, (LPARAM)title);
    HWND label = GetDlgItem(window, 0xFFFF);
    if (label) SendMessageA(label, WM_GETTEXT, sizeof text, (LPARAM)text);
    Seen.insert(window);
    int button = GetDlgItem(window, IDOK) ? IDOK : IDYES;
    for (const Answer& a : Answers)
        if (a.title == title) {
            button = a.button;
            if (a.typed) {
                FirstOf edit = {"Edit", nullptr}, list = {"ListBox", nullptr};
                EnumChildWindows(window, FirstChild, (LPARAM)&edit);
                if (edit.found) {
                    SendMessageA(edit.found, WM_SETTEXT, 0, (LPARAM)a.text.c_str());
                } else {
                    EnumChildWindows(window, FirstChild, (LPARAM)&list);
                    if (list.found) SendMessageA(list.found, LB_SELECTSTRING, (WPARAM)-1, (LPARAM)a.text.c_str());
                }
            }
        }
    if (button == 0) return TRUE;
    printf("BOX\t%s\t%s\t%d\n", Escape(title).c_str(), Escape(text).c_str(), button);
    fflush(stdout);
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), (LPARAM)GetDlgItem(window, button));
    return TRUE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    for (int i = 2; i < argc; i++) {
        const char* colon = strchr(argv[i], ':');
        const char* eq = argv[i];
        // The title ends at the last "=" before any text to type.
        for (const char* p = argv[i]; *p && (!colon || p < colon); p++)
            if (*p == '=') eq = p;
        if (eq == argv[i]) continue;
        Answers.push_back({std::string((const char*)argv[i], eq), atoi(eq + 1), colon ? colon + 1 : "", colon != nullptr});
    }
    printf("READY\n");
    fflush(stdout);
    for (;;) {
        EnumWindows(Visit, 0);
        if (GetFileAttributesA(argv[1]) != INVALID_FILE_ATTRIBUTES) break;
        Sleep(50);
    }
    return 0;
}
