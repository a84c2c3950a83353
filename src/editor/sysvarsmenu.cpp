// The "System Variables" menu beside a text editor of the properties
// palette: the texts that translation understands, grouped, each inserted
// into the editor at its caret.
#include "editor/sysvarsmenu.h"

#include <string.h>

#include <string>
#include <vector>

#include "desktop/keynames.h"
#include "base/settings.h"
#include "run/macronames.h"

namespace {

enum { FIRST_ID = 3000 };

struct MenuBuilder {
    std::vector<std::string> texts;

    void AddItem(HMENU menu, const std::string& text, const std::string& caption) {
        texts.push_back(text);
        std::string label = caption.empty() ? text : caption + "\t" + text;
        for (size_t at = label.find('&'); at != std::string::npos; at = label.find('&', at + 2)) label.insert(at, 1, '&');
        AppendMenuA(menu, MF_STRING, FIRST_ID + texts.size() - 1, label.c_str());
    }

    HMENU FromList(const char* list) {
        HMENU menu = CreatePopupMenu();
        std::string entry;
        for (const char* p = list;; p++) {
            if (*p == '|' || !*p) {
                const size_t tab = entry.find('\t');
                if (entry == "-") AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
                else if (tab == std::string::npos) AppendMenuA(menu, MF_STRING | MF_GRAYED, 0, entry.c_str());
                else AddItem(menu, entry.substr(0, tab), entry.substr(tab + 1));
                entry.clear();
                if (!*p) break;
            } else {
                entry += *p;
            }
        }
        return menu;
    }

    HMENU Environment() {
        HMENU menu = CreatePopupMenu();
        char* block = GetEnvironmentStringsA();
        int count = 0;
        for (const char* p = block; p && *p && count < 60; p += strlen(p) + 1) {
            const char* eq = strchr(p + 1, '=');
            if (*p == '=' || !eq) continue;
            std::string name(1, '%');
            name.append(p, (size_t)(eq - p));
            name += '%';
            AddItem(menu, name, "");
            count++;
        }
        if (block) FreeEnvironmentStringsA(block);
        return menu;
    }

    HMENU UserVariables() {
        HMENU menu = CreatePopupMenu();
        char name[260];
        for (int i = 0; EnumRegValue(HKEY_CURRENT_USER, ZR_ROOT "UserVariables", i, name) && i < 200; i++)
            if (name[0]) AddItem(menu, std::string(1, '%') + name, "");
        if (GetMenuItemCount(menu) == 0) AppendMenuA(menu, MF_STRING | MF_GRAYED, 0, "No Variables Declared");
        return menu;
    }
};

}  // namespace

std::string ChooseSystemVariable(HWND owner, int x, int y) {
    MenuBuilder b;
    HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.FromList(MacroNamesRunTime), "Run-time Text");
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.FromList(MacroNamesDateTime), "Date/Time");
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.FromList(MacroNamesSystem), "System Text");
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.FromList(KeyMenuText), "Keyboard");
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.Environment(), "Environment Variables");
    AppendMenuA(menu, MF_POPUP, (UINT_PTR)b.UserVariables(), "User Variables");
    const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_LEFTALIGN | TPM_RIGHTBUTTON, x, y, 0, owner, nullptr);
    DestroyMenu(menu);
    if (chosen < FIRST_ID || chosen - FIRST_ID >= (int)b.texts.size()) return "";
    return b.texts[(size_t)(chosen - FIRST_ID)];
}
