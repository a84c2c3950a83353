// The filter box and the Favorites menu of the actions tree. A filter takes
// items out of the tree the catalogue filled, so the catalogue's table stays
// the only list of action names; while a filter is typed the headings that
// keep an action stand open, and an empty box gives back the tree with the
// headings open as they were before the first letter.
#include "editor/actionstree.h"

#include <commctrl.h>

#include <set>
#include <string>

#include "base/settings.h"
#include "base/text.h"
#include "base/ui.h"
#include "base/words.h"
#include "editor/metrics.h"
#include "resources/resource.h"
#include "script/catalogue.h"

HWND ActionsFilter;

namespace {

const int kNameSize = 256;  // an action's name, or what the box holds

std::set<std::string> OpenHeadings;  // the headings open before a filter
bool Filtered;                       // whether the tree shows a filter's result

std::string ItemText(HTREEITEM item, LPARAM* data = nullptr) {
    char text[kNameSize] = "";
    TVITEMA tv = {};
    tv.mask = TVIF_TEXT | TVIF_PARAM;
    tv.hItem = item;
    tv.pszText = text;
    tv.cchTextMax = sizeof text;
    if (!item || !SendMessageA(ActionsTree, TVM_GETITEMA, 0, (LPARAM)&tv)) return "";
    if (data) *data = tv.lParam;
    return text;
}

bool IsAction(LPARAM data) { return data >= 1 && data <= 99999; }

void RememberOpenHeadings() {
    OpenHeadings.clear();
    for (HTREEITEM h = TreeView_GetRoot(ActionsTree); h; h = TreeView_GetNextSibling(ActionsTree, h))
        if (TreeView_GetItemState(ActionsTree, h, TVIS_EXPANDED) & TVIS_EXPANDED) OpenHeadings.insert(ItemText(h));
}

// Fills the tree; `open` is a heading to open besides those the user had
// open (Favorites, once an action is added to it).
void Refill(const char* open) {
    if (!ActionsTree) return;
    char filter[kNameSize] = "";
    if (ActionsFilter) GetWindowTextA(ActionsFilter, filter, sizeof filter);
    if (!Filtered) RememberOpenHeadings();
    if (open) OpenHeadings.insert(open);
    Filtered = filter[0] != 0;
    SendMessageA(ActionsTree, WM_SETREDRAW, FALSE, 0);
    FillActionsTree(ActionsTree);
    for (HTREEITEM heading = TreeView_GetRoot(ActionsTree); heading;) {
        const HTREEITEM next = TreeView_GetNextSibling(ActionsTree, heading);
        if (Filtered) {
            // A byte-wise compare that folds only A-Z: a character of
            // several bytes matches only itself, never part of another.
            for (HTREEITEM item = TreeView_GetChild(ActionsTree, heading); item;) {
                const HTREEITEM after = TreeView_GetNextSibling(ActionsTree, item);
                LPARAM data = 0;
                const std::string name = ItemText(item, &data);
                if (!IsAction(data) || !ContainsNoCase(name.c_str(), filter)) TreeView_DeleteItem(ActionsTree, item);
                item = after;
            }
            if (TreeView_GetChild(ActionsTree, heading)) TreeView_Expand(ActionsTree, heading, TVE_EXPAND);
            else TreeView_DeleteItem(ActionsTree, heading);
        } else {
            TreeView_Expand(ActionsTree, heading, OpenHeadings.count(ItemText(heading)) ? TVE_EXPAND : TVE_COLLAPSE);
        }
        heading = next;
    }
    TreeView_SelectSetFirstVisible(ActionsTree, TreeView_GetRoot(ActionsTree));
    SendMessageA(ActionsTree, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(ActionsTree, nullptr, TRUE);
}

// Enter or Down in the box: into the tree, on its first action.
void MoveIntoTree() {
    if (!ActionsTree || !IsWindowVisible(ActionsTree)) return;
    HTREEITEM first = nullptr;
    for (HTREEITEM h = TreeView_GetRoot(ActionsTree); h && !first; h = TreeView_GetNextSibling(ActionsTree, h)) {
        LPARAM data = 0;
        HTREEITEM child = TreeView_GetChild(ActionsTree, h);
        ItemText(child, &data);
        if (child && IsAction(data) && (Filtered || TreeView_GetItemState(ActionsTree, h, TVIS_EXPANDED) & TVIS_EXPANDED))
            first = child;
    }
    if (!first) first = TreeView_GetSelection(ActionsTree) ? TreeView_GetSelection(ActionsTree) : TreeView_GetRoot(ActionsTree);
    if (first) TreeView_SelectItem(ActionsTree, first);
    SetFocus(ActionsTree);
}

LRESULT CALLBACK FilterProc(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    // The dialog navigation of the main window would take Enter and Esc.
    case WM_GETDLGCODE:
        if (lParam) {
            const MSG* m = (const MSG*)lParam;
            if (m->message == WM_KEYDOWN && (m->wParam == VK_RETURN || m->wParam == VK_ESCAPE))
                return DLGC_WANTMESSAGE | DefSubclassProc(box, message, wParam, lParam);
        }
        break;
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE) {
            SetWindowTextA(box, "");
            ActionsFilterChanged();
            return 0;
        }
        if (wParam == VK_RETURN || wParam == VK_DOWN) {
            MoveIntoTree();
            return 0;
        }
        break;
    case WM_CHAR:
        if (wParam == '\r' || wParam == 27) return 0;  // no beep
        break;
    }
    return DefSubclassProc(box, message, wParam, lParam);
}

}  // namespace

HWND CreateActionsFilter(HWND parent, bool visible) {
    ActionsFilter = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                                    WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL | (visible ? WS_VISIBLE : 0), 0, 0, 10, 10,
                                    parent, (HMENU)(INT_PTR)IDC_ACTIONS_FILTER, nullptr, nullptr);
    if (!ActionsFilter) return nullptr;
    SendMessageA(ActionsFilter, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), FALSE);
    SendMessageA(ActionsFilter, EM_LIMITTEXT, 60, 0);
    // The grey hint in the empty box (where the common controls draw one).
    SendMessageW(ActionsFilter, EM_SETCUEBANNER, TRUE, (LPARAM)L"Search actions");
    SetWindowSubclass(ActionsFilter, FilterProc, 0x7A46, 0);
    Filtered = false;
    return ActionsFilter;
}

int ActionsFilterHeight() { return FontUnitsY(12) + 2; }

void ActionsFilterChanged() { Refill(nullptr); }

void ShowActionsTreeMenu(const POINT* at) {
    if (!ActionsTree) return;
    HTREEITEM item = nullptr;
    POINT where = {};
    if (at) {
        TVHITTESTINFO hit = {};
        hit.pt = *at;
        ScreenToClient(ActionsTree, &hit.pt);
        item = TreeView_HitTest(ActionsTree, &hit);
        if (!(hit.flags & TVHT_ONITEM)) item = nullptr;
        where = *at;
    } else {
        item = TreeView_GetSelection(ActionsTree);
        RECT r = {};
        if (item && TreeView_GetItemRect(ActionsTree, item, &r, TRUE)) {
            where = {r.left, r.bottom};
            ClientToScreen(ActionsTree, &where);
        }
    }
    LPARAM data = 0;
    const std::string name = ItemText(item, &data);
    if (!item || !IsAction(data)) return;
    TreeView_SelectItem(ActionsTree, item);
    const bool favorite = IsFavoriteAction(name.c_str());
    HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_STRING, favorite ? CMD_REMOVE_FAVORITE : CMD_ADD_FAVORITE,
                favorite ? "&Remove from Favorites" : "&Add to Favorites");
    const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, where.x, where.y, 0,
                                      GetParent(ActionsTree), nullptr);
    DestroyMenu(menu);
    if (chosen == CMD_ADD_FAVORITE || chosen == CMD_REMOVE_FAVORITE) SetFavorite(name.c_str(), chosen == CMD_ADD_FAVORITE);
}

void SetFavorite(const char* name, bool favorite) {
    if (favorite) {
        int category = 0, image = 0;
        if (!LookupAction(ActionsTree, name, &category, &image) || category < 1 || category > 99999) return;
        WriteFavoriteAction(name, category, image);
    } else {
        DeleteFavoriteAction(name);
    }
    Refill(favorite ? "Favorites" : nullptr);
}
