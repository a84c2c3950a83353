// Category 5. A menu item is found by walking the menu tree and posted to
// the window as a command; where that fails, the menu is worked by keys.
#include "base/text.h"
#include "desktop/menus.h"

#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/keynames.h"
#include "desktop/keypress.h"
#include "desktop/pause.h"
#include "desktop/windowcontrol.h"
#include "base/unattended.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"

namespace {

std::string WithoutAmpersands(const std::string& text) {
    std::string out;
    for (char c : text)
        if (c != '&') out += c;
    return out;
}


// What was asked for covers the start of `form`: "Sav" finds "Save".
bool Covers(const std::string& form, const std::string& wanted) {
    return form.size() >= wanted.size() && _strnicmp(form.c_str(), wanted.c_str(), wanted.size()) == 0;
}

void Press(int vk, bool up) { PressKey(vk, 0, up ? KEY_UP : KEY_DOWN); }

void Tap(int vk) {
    Press(vk, false);
    Press(vk, true);
}

LRESULT CALLBACK MenuOwnerProc(HWND w, UINT m, WPARAM wp, LPARAM lp) { return DefWindowProcA(w, m, wp, lp); }

}  // namespace

void MenuItemText(HMENU menu, int position, char* out, int size) {
    out[0] = 0;
    MENUITEMINFOA info = {};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STATE | MIIM_TYPE | MIIM_DATA;
    info.dwTypeData = out;
    info.cch = (UINT)size - 1;
    if (!GetMenuItemInfoA(menu, (UINT)position, TRUE, &info)) return;
    if (info.fType & MFT_SEPARATOR) {
        out[0] = 0;
    } else if (info.fType & MFT_OWNERDRAW) {
        if (info.dwItemData)
            CopyIntoN(out, size, (const char*)info.dwItemData);
        else
            GetMenuStringA(menu, (UINT)position, out, size, MF_BYPOSITION);
    }
}

UINT FindMenuCommand(HWND window, HMENU menu, int position, const char* path) {
    HMENU root = menu && IsMenu(menu) ? menu : GetMenu(window);
    if (!root || !path) return 0;
    std::string wanted = path;
    ReplaceInString(wanted, "...", "", 0, 1);
    const std::string wantedPlain = WithoutAmpersands(wanted);
    struct Level {
        HMENU menu;
        int position;
        char text[64];
    };
    Level stack[16];
    int depth = 0;
    stack[0] = {root, 0, ""};
    int counted = 0;
    while (depth >= 0) {
        Level& level = stack[depth];
        if (level.position >= GetMenuItemCount(level.menu)) {
            depth--;
            if (depth >= 0) stack[depth].position++;
            continue;
        }
        char text[260];
        MenuItemText(level.menu, level.position, text, sizeof text);
        std::string item = text;
        item = item.substr(0, item.find('\t'));
        item = item.substr(0, item.find("..."));
        CopyIntoN(level.text, sizeof level.text, item.c_str());
        std::string full;
        for (int i = 0; i <= depth && i < 8; i++) {
            if (i) full += ';';
            full += stack[i].text;
        }
        counted++;
        const bool hit = position > 0 ? counted == position
                                      : Covers(item, wanted) || Covers(WithoutAmpersands(item), wantedPlain) ||
                                            Covers(full, wanted) || Covers(WithoutAmpersands(full), wantedPlain);
        if (hit && !item.empty()) return GetMenuItemID(level.menu, level.position);
        HMENU sub = GetSubMenu(level.menu, level.position);
        if (sub && depth < 15) {
            stack[++depth] = {sub, 0, ""};
        } else {
            level.position++;
        }
    }
    return 0;
}

bool SelectMenuByKeys(HWND window, const char* path) {
    ForceForeground(window);
    std::string all = path;
    ReplaceInString(all, ",", ";", 0, 1);
    bool sent = false;
    size_t start = 0;
    while (start <= all.size()) {
        size_t end = all.find(';', start);
        std::string field = all.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? all.size() + 1 : end + 1;
        size_t first = field.find_first_not_of(" ;");
        if (first == std::string::npos) continue;
        field = field.substr(first, 255);
        size_t amp = field.find('&');
        char letter = amp != std::string::npos && amp + 1 < field.size() ? field[amp + 1] : field[0];
        char key[2] = {letter, 0};
        CharUpperA(key);
        const int vk = KeyNameToVk(key, nullptr, 0, nullptr) & 0xFF;
        if (!sent) Press(VK_MENU, false);
        Tap(vk);
        if (!sent) Press(VK_MENU, true);
        sent = true;
    }
    return sent;
}

bool SelectSystemMenu(HWND window, const char* name) {
    const std::string plain = WithoutAmpersands(name);
    static const struct {
        const char* word;
        WPARAM code;
    } commands[] = {{"max", SC_MAXIMIZE}, {"min", SC_MINIMIZE}, {"restore", SC_RESTORE},
                    {"move", SC_MOVE},    {"close", SC_CLOSE},  {"size", SC_SIZE}};
    for (const auto& c : commands) {
        if (ContainsNoCase(plain.c_str(), c.word)) {
            SendWithin(window, WM_SYSCOMMAND, c.code, 0);
            return true;
        }
    }
    const char* amp = strchr(name, '&');
    if (!amp || !amp[1]) return false;
    ForceForeground(window);
    Press(VK_MENU, false);
    Tap(VK_SPACE);
    Press(VK_MENU, true);
    char key[2] = {amp[1], 0};
    Tap(KeyNameToVk(key, nullptr, 0, nullptr) & 0xFF);
    return true;
}

int ShowPopupMenu(const char* text) {
    if (UnattendedRun) {
        // Nobody is there to choose: the menu is reported, with its lines
        // one after the other, and closed with no choice, as Escape would.
        std::string items;
        for (const char* p = text ? text : ""; *p; p++) {
            if (*p == '\r') continue;
            items += *p == '\n' ? std::string("; ") : std::string(1, *p);
        }
        ReportUnshownBox("Show Popup Menu", items.c_str());
        return 0;
    }
    WNDCLASSA wc;
    if (!GetClassInfoA(GetModuleHandleA(nullptr), "ZantoMenuHandler", &wc)) {
        memset(&wc, 0, sizeof wc);
        wc.lpfnWndProc = MenuOwnerProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "ZantoMenuHandler";
        RegisterClassA(&wc);
    }
    HWND owner = CreateWindowExA(0, "ZantoMenuHandler", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                 GetModuleHandleA(nullptr), nullptr);
    if (!owner) return 0;
    HMENU menu = CreatePopupMenu();
    std::string all = text ? text : "";
    size_t start = 0;
    for (int number = 1; start < all.size(); number++) {
        size_t end = all.find('\n', start);
        std::string line = all.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? all.size() : end + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const bool more = start < all.size();
        if ((line.empty() || line[0] == '-' || line[0] == '_') && more) {
            AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
            continue;
        }
        if (!line.empty() && line[0] == ' ') line.erase(0, 1);
        AppendMenuA(menu, MF_STRING, (UINT_PTR)number, line.c_str());
    }
    POINT at;
    GetCursorPos(&at);
    SetForegroundWindow(owner);
    TrackPopupMenu(menu, 0, at.x, at.y, 0, owner, nullptr);
    DestroyMenu(menu);
    DesktopSleep(200);
    int chosen = 0;
    MSG msg;
    if (PeekMessageA(&msg, owner, WM_COMMAND, WM_COMMAND, PM_REMOVE)) chosen = LOWORD(msg.wParam);
    PostMessageA(owner, WM_CLOSE, 0, 0);
    DestroyWindow(owner);
    return chosen;
}

int ActMenu(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.text, tab, step);
    std::string text = TranslatedText;
    if (!LastWindow) {
        DesktopSleep(250);
        LastWindow = GetForegroundWindow();
    }
    if (ContainsNoCase(s.action, "Show Popup Menu")) {
        int chosen = ShowPopupMenu(text.c_str());
        if (chosen > 0) {
            // The chosen line, without its line end.
            size_t start = 0;
            for (int line = 1; line < chosen && start != std::string::npos; line++) {
                start = text.find('\n', start);
                if (start != std::string::npos) start++;
            }
            if (start != std::string::npos) {
                std::string line = text.substr(start, text.find('\n', start) - start);
                if (!line.empty() && line.back() == '\r') line.pop_back();
                SaveOutput(tab, step, line.c_str(), (long)line.size(), nullptr);
            }
        }
        return 1;
    }
    if (ContainsNoCase(s.action, "Select System")) {
        if (SelectSystemMenu(LastWindow, text.c_str())) return 1;
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to find system menu '%s'", text.c_str());
        return 0;
    }
    if (ContainsNoCase(s.action, "Select Menu")) {
        std::string path = text;
        ReplaceInString(path, ", ", ";", 0, 1);
        ReplaceInString(path, ",", ";", 0, 1);
        path = path.substr(0, path.find('\t'));
        if (UINT id = FindMenuCommand(LastWindow, nullptr, 0, path.c_str())) {
            PostMessageA(LastWindow, WM_COMMAND, MAKEWPARAM(id, 0), 0);
            return 1;
        }
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to find menu \"%s\", trying keyboard method...",
                 text.c_str());
        if (SelectMenuByKeys(LastWindow, path.c_str())) return 1;
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to find menu '%s'", text.c_str());
        return 0;
    }
    return 1;
}
