#include "desktop/screencapture.h"

#include <string.h>

#include <vector>

#include "base/files.h"
#include "base/handles.h"
#include "base/text.h"
#include "base/ui.h"

void NormalizeRect(RECT* rect) {
    if (rect->left > rect->right) {
        LONG t = rect->left;
        rect->left = rect->right;
        rect->right = t;
    }
    if (rect->top > rect->bottom) {
        LONG t = rect->top;
        rect->top = rect->bottom;
        rect->bottom = t;
    }
}

int CaptureScreenToFile(HWND window, const RECT* rect, const char* file, int refreshFirst) {
    if (!file || !*file) return 0;
    if (refreshFirst) {
        InvalidateRect(nullptr, nullptr, TRUE);
        Sleep(250);
    }
    RECT source = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (window)
        GetWindowRect(window, &source);
    else if (rect && (rect->left || rect->top || rect->right || rect->bottom)) {
        source = *rect;
        NormalizeRect(&source);
    }
    int width = source.right - source.left, height = source.bottom - source.top;
    if (width <= 0 || height <= 0) return 0;

    ScopedGetDC screen(nullptr);
    AutoDeleteDC memory(CreateCompatibleDC(screen.dc));
    AutoDeleteObject bitmap(CreateCompatibleBitmap(screen.dc, width, height));
    if (!memory.dc || !bitmap.obj) return 0;
    HGDIOBJ old = SelectObject(memory.dc, bitmap.obj);
    BitBlt(memory.dc, 0, 0, width, height, screen.dc, source.left, source.top, SRCCOPY | CAPTUREBLT);
    SelectObject(memory.dc, old);

    // The whole file is made in memory: headers, then the bits as
    // GetDIBits gives them.
    BITMAPINFOHEADER info = {};
    info.biSize = sizeof info;
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = 24;
    info.biCompression = BI_RGB;
    DWORD stride = ((DWORD)width * 3 + 3) & ~3u;
    info.biSizeImage = stride * (DWORD)height;
    const size_t offset = sizeof(BITMAPFILEHEADER) + sizeof info;
    std::vector<BYTE> image(offset + info.biSizeImage);
    if (!GetDIBits(memory.dc, (HBITMAP)bitmap.obj, 0, (UINT)height, image.data() + offset, (BITMAPINFO*)&info,
                   DIB_RGB_COLORS))
        return 0;
    BITMAPFILEHEADER header = {};
    header.bfType = 0x4D42;
    header.bfOffBits = 0x36;
    header.bfSize = info.biSizeImage + 0x36;
    memcpy(image.data(), &header, sizeof header);
    memcpy(image.data() + sizeof header, &info, sizeof info);
    // The old image stays until the new one is whole beside it: a full disk
    // or a failed write leaves it as it was, and no part file behind.
    return WriteFileReplacing(file, image.data(), image.size(), false) ? 1 : 0;
}
