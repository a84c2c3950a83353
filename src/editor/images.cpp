// The editor's images are drawn at start-up instead of loaded: each action
// gets a tile in the colour of its category, and the row states get their
// own marks. Indices are those of the catalogue.
#include "editor/images.h"

#include <initializer_list>

#include "base/ui.h"
#include "script/catalogue.h"
#include "base/handles.h"

namespace {

// One colour per category, 2 to 17.
const COLORREF kCategoryColors[] = {
    RGB(128, 128, 128), RGB(128, 128, 128), RGB(0, 120, 215),  RGB(0, 153, 188),  RGB(142, 68, 173),
    RGB(44, 62, 80),    RGB(211, 84, 0),    RGB(243, 156, 18), RGB(39, 174, 96),  RGB(192, 57, 43),
    RGB(22, 160, 133),  RGB(41, 128, 185),  RGB(52, 73, 94),   RGB(155, 89, 182), RGB(127, 140, 141),
    RGB(230, 126, 34),  RGB(26, 188, 156),  RGB(100, 100, 100),
};

void DrawTile(HDC dc, int x, COLORREF color) {
    AutoDeleteObject brush(CreateSolidBrush(color));
    AutoDeleteObject pen(CreatePen(PS_SOLID, 1, RGB(GetRValue(color) / 2, GetGValue(color) / 2, GetBValue(color) / 2)));
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
    COLORREF color[BASE_IMAGES];
    for (COLORREF& c : color) c = kCategoryColors[0];
    for (int i = 0; i < ActionCatalogueCount; i++) {
        const CatalogueEntry& e = ActionCatalogue[i];
        if (e.category >= 2 && e.category <= 17 && e.image >= 0 && e.image < BASE_IMAGES)
            color[e.image] = kCategoryColors[e.category];
    }
    // Try the richest colour depth first.
    HIMAGELIST list = nullptr;
    for (UINT depth : {ILC_COLOR32, ILC_COLOR24, ILC_COLOR}) {
        list = ImageList_Create(16, 16, depth | ILC_MASK, BASE_IMAGES, 64);
        if (list) break;
    }
    if (!list) return nullptr;
    ScopedGetDC screen(nullptr);
    AutoDeleteDC dc(CreateCompatibleDC(screen.dc));
    AutoDeleteObject strip(CreateCompatibleBitmap(screen.dc, 16 * BASE_IMAGES, 16));
    HGDIOBJ old = SelectObject(dc.dc, strip.obj);
    RECT all = {0, 0, 16 * BASE_IMAGES, 16};
    AutoDeleteObject white(CreateSolidBrush(RGB(255, 0, 255)));
    FillRect(dc.dc, &all, (HBRUSH)white.obj);
    for (int i = 0; i < BASE_IMAGES; i++) {
        if (i == IMAGE_BOOKMARK || i == IMAGE_SKIP || i == IMAGE_BREAKPOINT)
            DrawMark(dc.dc, i * 16, i);
        else
            DrawTile(dc.dc, i * 16, color[i]);
    }
    SelectObject(dc.dc, old);
    ImageList_AddMasked(list, (HBITMAP)strip.obj, RGB(255, 0, 255));
    return list;
}
