// The editor's images. The pictures of the categories come from the bitmap
// resource (actions.bmp, one 16 x 16 tile each, magenta for transparent); each
// action's image index (from the catalogue) shows its category's tile, and
// comments, loops and labels have tiles of their own so that a script's shape
// shows in the step list. The row states get marks drawn here.
#include "editor/images.h"

#include <initializer_list>

#include "base/handles.h"
#include "base/ui.h"
#include "base/words.h"
#include "resources/resource.h"
#include "script/catalogue.h"

namespace {

// The tiles of actions.bmp after the sixteen categories (2..17).
enum {
    TILE_COMMENT = 16,
    TILE_LOOP = 17,
    TILE_LABEL = 18,
    TILE_FAVORITES = 19,
    TILE_COUNT = 20,
};

const COLORREF kTransparent = RGB(255, 0, 255);

// The tile of an action, or of a heading's category; -1 for none.
int TileOf(int category, const char* name) {
    if (category >= 100000) category -= 100000;
    if (category == HEADING_FAVORITES - 100000) return TILE_FAVORITES;
    if (lstrcmpiA(name, "Comment") == 0) return TILE_COMMENT;
    if (category == 13 && ContainsNoCase(name, "Label")) return TILE_LABEL;
    if (category == 13 && ContainsNoCase(name, "Loop")) return TILE_LOOP;
    if (category >= 2 && category <= 17) return category - 2;
    return -1;
}

// A step whose action is not in the catalogue: a plain grey tile.
void DrawUnknown(HDC dc, int x) {
    AutoDeleteObject brush(CreateSolidBrush(RGB(160, 160, 160)));
    AutoDeleteObject pen(CreatePen(PS_SOLID, 1, RGB(90, 90, 90)));
    HGDIOBJ oldBrush = SelectObject(dc, brush.obj), oldPen = SelectObject(dc, pen.obj);
    RoundRect(dc, x + 2, 2, x + 14, 14, 4, 4);
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
}

void DrawMark(HDC dc, int x, int image) {
    if (image == IMAGE_BREAKPOINT) {
        AutoDeleteObject brush(CreateSolidBrush(RGB(200, 0, 0)));
        HGDIOBJ old = SelectObject(dc, brush.obj);
        Ellipse(dc, x + 2, 2, x + 14, 14);
        SelectObject(dc, old);
    } else if (image == IMAGE_SKIP) {
        AutoDeleteObject pen(CreatePen(PS_SOLID, 2, RGB(120, 120, 120)));
        HGDIOBJ old = SelectObject(dc, pen.obj);
        Arc(dc, x + 2, 2, x + 14, 14, 0, 0, 0, 0);
        MoveToEx(dc, x + 4, 12, nullptr);
        LineTo(dc, x + 12, 4);
        SelectObject(dc, old);
    } else {  // bookmark
        AutoDeleteObject brush(CreateSolidBrush(RGB(0, 90, 200)));
        POINT flag[] = {{x + 4, 1}, {x + 12, 1}, {x + 12, 15}, {x + 8, 11}, {x + 4, 15}};
        HGDIOBJ old = SelectObject(dc, brush.obj);
        Polygon(dc, flag, 5);
        SelectObject(dc, old);
    }
}

}  // namespace

HIMAGELIST CreateSharedImages() {
    int tile[BASE_IMAGES];
    for (int& t : tile) t = -1;
    for (int i = 0; i < ActionCatalogueCount; i++) {
        const CatalogueEntry& e = ActionCatalogue[i];
        if (e.category < 100000 && e.image >= 0 && e.image < BASE_IMAGES) tile[e.image] = TileOf(e.category, e.name);
        else if (e.category >= 100000) tile[HEADING_IMAGE_BASE + e.category - 100000] = TileOf(e.category, e.name);
    }
    tile[HEADING_IMAGE_BASE + HEADING_FAVORITES - 100000] = TILE_FAVORITES;
    // Try the richest colour depth first.
    HIMAGELIST list = nullptr;
    for (UINT depth : {ILC_COLOR32, ILC_COLOR24, ILC_COLOR}) {
        list = ImageList_Create(16, 16, depth | ILC_MASK, BASE_IMAGES, 64);
        if (list) break;
    }
    if (!list) return nullptr;
    AutoDeleteObject tiles((HBITMAP)LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDB_ACTIONS), IMAGE_BITMAP,
                                               0, 0, LR_CREATEDIBSECTION));
    ScopedGetDC screen(nullptr);
    AutoDeleteDC dc(CreateCompatibleDC(screen.dc));
    AutoDeleteDC source(CreateCompatibleDC(screen.dc));
    AutoDeleteObject strip(CreateCompatibleBitmap(screen.dc, 16 * BASE_IMAGES, 16));
    HGDIOBJ old = SelectObject(dc.dc, strip.obj);
    HGDIOBJ oldSource = tiles.obj ? SelectObject(source.dc, tiles.obj) : nullptr;
    RECT all = {0, 0, 16 * BASE_IMAGES, 16};
    AutoDeleteObject key(CreateSolidBrush(kTransparent));
    FillRect(dc.dc, &all, (HBRUSH)key.obj);
    for (int i = 0; i < BASE_IMAGES; i++) {
        if (i == IMAGE_BOOKMARK || i == IMAGE_SKIP || i == IMAGE_BREAKPOINT)
            DrawMark(dc.dc, i * 16, i);
        else if (tile[i] >= 0 && tile[i] < TILE_COUNT && tiles.obj)
            BitBlt(dc.dc, i * 16, 0, 16, 16, source.dc, tile[i] * 16, 0, SRCCOPY);
        else
            DrawUnknown(dc.dc, i * 16);
    }
    if (oldSource) SelectObject(source.dc, oldSource);
    SelectObject(dc.dc, old);
    ImageList_AddMasked(list, (HBITMAP)strip.obj, kTransparent);
    return list;
}
