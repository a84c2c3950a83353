// Drawing a picture into a window: bitmaps, image-list images, icons, and
// other formats through the system's picture decoder.
#pragma once

#include <windows.h>
#include <commctrl.h>

// Draws one picture at (x, y) on `dc`, or with a `dc` of 0 only measures it
// into `outRect`. The source is `bitmap`, else an image of `imageList`, else
// `file` (".ICO"/".CUR" icons, ".BMP" or a resource id, any other format
// decoded by OleLoadPicture). `percent` scales (0 is 100); `fitWindow` fits
// the picture to a window's client area, `centreWindow` centres it there.
// `transparent` shows the background where the picture has the colour of its
// pixel (0, 0); `grayed` draws it in light gray. Returns 1 when drawn or measured.
int DrawPicture(HDC dc, const char* file, int resourceId, HIMAGELIST imageList, int imageIndex, HBITMAP bitmap, int x,
                int y, int transparent, int percent, HWND fitWindow, HWND centreWindow, int grayed, RECT* outRect);
