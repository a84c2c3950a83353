// The harness's look at the screen after a run: whether a top-level window of
// exactly TITLE is there, visible and enabled, and the text of the first
// descendant of each CLASS in it (with \r, \n and \t escaped).
//
//   windowcheck.exe TITLE [CLASS...]
// prints "WINDOW visible|hidden enabled|disabled" (or "NOWINDOW"), then
// "STATE maximized|minimized|normal topmost|nottopmost WIDTHxHEIGHT" and
// "TEXT<tab>class<tab>text" for each class found.
#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>

namespace {

struct Search {
    const char* title;
    const char* className;
    HWND found;
};

std::string TextOf(HWND window) {
    static char text[65536];
    text[0] = 0;
    DWORD_PTR got = 0;
    if (!SendMessageTimeoutA(window, WM_GETTEXT, sizeof text, (LPARAM)text, SMTO_ABORTIFHUNG, 2000, &got)) return "";
    text[sizeof text - 1] = 0;
    return text;
}

BOOL CALLBACK TopLevel(HWND window, LPARAM param) {
    Search* s = (Search*)param;
    if (TextOf(window) != s->title) return TRUE;
    // A visible one wins over one Wine keeps hidden.
    if (!s->found || IsWindowVisible(window)) s->found = window;
    return !IsWindowVisible(window);
}

BOOL CALLBACK Child(HWND window, LPARAM param) {
    Search* s = (Search*)param;
    char className[128] = "";
    GetClassNameA(window, className, sizeof className);
    if (lstrcmpiA(className, s->className) != 0) return TRUE;
    s->found = window;
    return FALSE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    Search top = {argv[1], nullptr, nullptr};
    EnumWindows(TopLevel, (LPARAM)&top);
    if (!top.found) {
        printf("NOWINDOW\n");
        return 1;
    }
    printf("WINDOW %s %s\n", IsWindowVisible(top.found) ? "visible" : "hidden",
           IsWindowEnabled(top.found) ? "enabled" : "disabled");
    RECT r;
    GetWindowRect(top.found, &r);
    printf("STATE %s %s %ldx%ld\n",
           IsZoomed(top.found) ? "maximized" : IsIconic(top.found) ? "minimized" : "normal",
           (GetWindowLongA(top.found, GWL_EXSTYLE) & WS_EX_TOPMOST) ? "topmost" : "nottopmost", r.right - r.left,
           r.bottom - r.top);
    for (int i = 2; i < argc; i++) {
        Search child = {nullptr, argv[i], nullptr};
        EnumChildWindows(top.found, Child, (LPARAM)&child);
        if (!child.found) continue;
        printf("TEXT\t%s\t", argv[i]);
        for (char c : TextOf(child.found)) {
            if (c == '\r') printf("\\r");
            else if (c == '\n') printf("\\n");
            else if (c == '\t') printf("\\t");
            else putchar(c);
        }
        printf("\n");
    }
    return 0;
}
