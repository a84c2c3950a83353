#include "products/pngimage.h"

#include <windows.h>

#include <vector>

#include "desktop/imagefile.h"

std::string PictureFileAsPng(const char* path, int* widthOut, int* heightOut) {
    ImagePixels image;
    if (ReadImageFile(path, 32768, 32768, image) != IMAGE_READ_OK || image.width <= 0 || image.height <= 0)
        return "";
    // The codec takes 0x00RRGGBB; the file's pixels are COLORREFs (0x00BBGGRR).
    std::vector<DWORD> pixels(image.pixels.size());
    for (size_t i = 0; i < pixels.size(); i++) {
        const COLORREF c = image.pixels[i];
        pixels[i] = ((DWORD)GetRValue(c) << 16) | ((DWORD)GetGValue(c) << 8) | GetBValue(c);
    }
    if (widthOut) *widthOut = image.width;
    if (heightOut) *heightOut = image.height;
    return EncodePng(pixels.data(), image.width, image.height);
}
