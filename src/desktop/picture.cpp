#include "desktop/picture.h"

#include <ole2.h>
#include <shellapi.h>
#include <olectl.h>
#include <string.h>

#include <string>
#include <vector>

#include "desktop/imagefile.h"
#include "desktop/imagesearch.h"
#include "base/handles.h"
#include "base/words.h"

namespace {

// The last icon, kept with its file name so that a repeat does not extract it again.
HICON LastIcon;
std::string LastIconFile;
int LastIconSmall;
// The last decoded picture, kept until the next one.
IPicture* LastPicture;

HICON IconOf(const char* file, bool small) {
    if (LastIcon && LastIconFile == file && LastIconSmall == (int)small) return LastIcon;
    if (LastIcon) DestroyIcon(LastIcon);
    LastIcon = nullptr;
    HICON large = nullptr, little = nullptr;
    ExtractIconExA(file, 0, &large, &little, 1);
    LastIcon = small ? little : large;
    if (small && large) DestroyIcon(large);
    if (!small && little) DestroyIcon(little);
    LastIconFile = file;
    LastIconSmall = small;
    return LastIcon;
}

IPicture* PictureOf(const char* file) {
    if (LastPicture) LastPicture->Release();
    LastPicture = nullptr;
    AutoCloseHandle h(CreateFileA(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!h.ok()) return nullptr;
    DWORD size = GetFileSize(h.h, nullptr), got = 0;
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!memory) return nullptr;
    void* p = GlobalLock(memory);
    ReadFile(h.h, p, size, &got, nullptr);
    GlobalUnlock(memory);
    IStream* stream = nullptr;
    if (CreateStreamOnHGlobal(memory, TRUE, &stream) != S_OK) {
        GlobalFree(memory);
        return nullptr;
    }
    OleLoadPicture(stream, (LONG)size, FALSE, IID_IPicture, (void**)&LastPicture);
    stream->Release();
    return LastPicture;
}

// A picture file read by the image codecs, as a DIB section.
HBITMAP BitmapOfFile(const char* file) {
    ImagePixels image;
    if (ReadImageFile(file, 0x7FFF, 0x7FFF, image) != IMAGE_READ_OK) return nullptr;
    BITMAPINFO bi = {};
    bi.bmiHeader = {sizeof bi.bmiHeader, image.width, -image.height, 1, 32, BI_RGB};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap || !bits) return bitmap;
    DWORD* out = (DWORD*)bits;
    for (size_t i = 0; i < image.pixels.size(); i++) {
        const COLORREF c = image.pixels[i];
        out[i] = ((DWORD)GetRValue(c) << 16) | ((DWORD)GetGValue(c) << 8) | GetBValue(c);
    }
    return bitmap;
}

// Pixels of a DIB of w x h, top-down, 0x00RRGGBB.
struct Pixels {
    int w = 0, h = 0;
    std::vector<DWORD> px;
};

void Read(HDC dc, HBITMAP bitmap, Pixels& out) {
    BITMAPINFO bi = {};
    bi.bmiHeader = {sizeof bi.bmiHeader, out.w, -out.h, 1, 32, BI_RGB};
    out.px.assign((size_t)out.w * (size_t)out.h, 0);
    GetDIBits(dc, bitmap, 0, (UINT)out.h, out.px.data(), &bi, DIB_RGB_COLORS);
}

void Write(HDC dc, int x, int y, const Pixels& in) {
    BITMAPINFO bi = {};
    bi.bmiHeader = {sizeof bi.bmiHeader, in.w, -in.h, 1, 32, BI_RGB};
    SetDIBitsToDevice(dc, x, y, (DWORD)in.w, (DWORD)in.h, 0, 0, 0, (UINT)in.h, in.px.data(), &bi, DIB_RGB_COLORS);
}

}  // namespace

int DrawPicture(HDC dc, const char* file, int resourceId, HIMAGELIST imageList, int imageIndex, HBITMAP bitmap, int x,
                int y, int transparent, int percent, HWND fitWindow, HWND centreWindow, int grayed, RECT* outRect) {
    if (outRect) SetRect(outRect, 0, 0, 0, 0);
    // A bitmap handle is copied as it is, at (0, 0).
    if (bitmap) {
        BITMAP bm = {};
        GetObjectA(bitmap, sizeof bm, &bm);
        if (outRect) SetRect(outRect, 0, 0, bm.bmWidth, bm.bmHeight);
        if (!dc) return 0;
        AutoDeleteDC memory(CreateCompatibleDC(dc));
        HGDIOBJ old = SelectObject(memory.dc, bitmap);
        BitBlt(dc, 0, 0, bm.bmWidth, bm.bmHeight, memory.dc, 0, 0, SRCCOPY);
        SelectObject(memory.dc, old);
        return 1;
    }
    // An image of a list: 16 by 16.
    if (imageList && imageIndex >= 0) {
        if (outRect) SetRect(outRect, x, y, x + 16, y + 16);
        if (dc) ImageList_Draw(imageList, imageIndex, dc, x, y, transparent ? ILD_TRANSPARENT : ILD_NORMAL);
        return 1;
    }
    const char* name = file ? file : "";
    bool icon = ContainsNoCase(name, ".ICO") || ContainsNoCase(name, ".CUR");
    HICON iconHandle = nullptr;
    AutoDeleteObject loaded(nullptr);
    IPicture* picture = nullptr;
    int width = 0, height = 0;
    if (icon) {
        iconHandle = IconOf(name, percent == 50);
        if (!iconHandle) return 0;
        width = GetSystemMetrics(percent == 50 ? SM_CXSMICON : SM_CXICON);
        height = GetSystemMetrics(percent == 50 ? SM_CYSMICON : SM_CYICON);
        if (percent == 50) percent = 100;  // the small icon is the half size already
    } else if (ContainsNoCase(name, ".BMP") || (resourceId && !*name)) {
        loaded.obj = *name ? LoadImageA(nullptr, name, IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION)
                           : LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(resourceId), IMAGE_BITMAP, 0, 0,
                                        LR_CREATEDIBSECTION);
        if (!loaded.obj) return 0;
        BITMAP bm = {};
        GetObjectA(loaded.obj, sizeof bm, &bm);
        width = bm.bmWidth;
        height = bm.bmHeight;
    } else {
        picture = *name ? PictureOf(name) : nullptr;
        if (!picture) {
            // What the picture object cannot read (PNG above all) the image
            // codecs can: drawn as a bitmap.
            loaded.obj = *name ? BitmapOfFile(name) : nullptr;
            if (!loaded.obj) return 0;
            BITMAP bm = {};
            GetObjectA(loaded.obj, sizeof bm, &bm);
            width = bm.bmWidth;
            height = bm.bmHeight;
        }
    }
    if (picture) {
        OLE_XSIZE_HIMETRIC hw = 0;
        OLE_YSIZE_HIMETRIC hh = 0;
        picture->get_Width(&hw);
        picture->get_Height(&hh);
        ScopedGetDC screen(nullptr);
        width = MulDiv(hw, GetDeviceCaps(screen.dc, LOGPIXELSX), 2540);
        height = MulDiv(hh, GetDeviceCaps(screen.dc, LOGPIXELSY), 2540);
    }

    int scale = percent > 0 ? percent : 100;
    RECT client;
    if (fitWindow && IsWindow(fitWindow) && GetClientRect(fitWindow, &client) && width > 0 && height > 0) {
        int byWidth = client.right * 100 / width, byHeight = client.bottom * 100 / height;
        scale = byWidth < byHeight ? byWidth : byHeight;
    }
    int w = width * scale / 100, h = height * scale / 100;
    if (centreWindow && IsWindow(centreWindow) && GetClientRect(centreWindow, &client)) {
        x = (client.right - w) / 2;
        y = (client.bottom - h) / 2;
    }
    if (outRect) SetRect(outRect, x, y, x + w, y + h);
    if (!dc || w <= 0 || h <= 0) return dc ? 0 : 1;

    // The picture at its drawn size, in memory, then the background rules.
    AutoDeleteDC memory(CreateCompatibleDC(dc));
    AutoDeleteObject canvas(CreateCompatibleBitmap(dc, w, h));
    HGDIOBJ oldCanvas = SelectObject(memory.dc, canvas.obj);
    BitBlt(memory.dc, 0, 0, w, h, dc, x, y, SRCCOPY);  // the background, under icons and pictures
    if (iconHandle) {
        DrawIconEx(memory.dc, 0, 0, iconHandle, w, h, 0, nullptr, DI_NORMAL);
    } else if (loaded.obj) {
        AutoDeleteDC source(CreateCompatibleDC(dc));
        HGDIOBJ old = SelectObject(source.dc, loaded.obj);
        if (scale != 100)
            StretchBlt(memory.dc, 0, 0, w, h, source.dc, 0, 0, width, height, SRCCOPY);
        else
            BitBlt(memory.dc, 0, 0, w, h, source.dc, 0, 0, SRCCOPY);
        SelectObject(source.dc, old);
    } else if (picture) {
        OLE_XSIZE_HIMETRIC hw = 0;
        OLE_YSIZE_HIMETRIC hh = 0;
        picture->get_Width(&hw);
        picture->get_Height(&hh);
        picture->Render(memory.dc, 0, 0, w, h, 0, hh, hw, -hh, nullptr);
    }
    SelectObject(memory.dc, oldCanvas);
    Pixels image;
    image.w = w;
    image.h = h;
    Read(memory.dc, (HBITMAP)canvas.obj, image);
    if (transparent && !image.px.empty()) {
        Pixels under;
        under.w = w;
        under.h = h;
        AutoDeleteObject back(CreateCompatibleBitmap(dc, w, h));
        HGDIOBJ old = SelectObject(memory.dc, back.obj);
        BitBlt(memory.dc, 0, 0, w, h, dc, x, y, SRCCOPY);
        SelectObject(memory.dc, old);
        Read(memory.dc, (HBITMAP)back.obj, under);
        DWORD key = image.px[0] & 0xFFFFFF;
        for (size_t i = 0; i < image.px.size(); i++)
            if ((image.px[i] & 0xFFFFFF) == key) image.px[i] = under.px[i];
    }
    if (grayed) {
        for (DWORD& p : image.px) {
            int mean = (int)(((p >> 16) & 0xFF) + ((p >> 8) & 0xFF) + (p & 0xFF)) / 3;
            COLORREF light = LightenColor(RGB(mean, mean, mean), 0.2);
            p = ((DWORD)GetRValue(light) << 16) | ((DWORD)GetGValue(light) << 8) | GetBValue(light);
        }
    }
    Write(dc, x, y, image);
    return 1;
}
