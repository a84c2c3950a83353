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

std::string Base64(const std::string& data) {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    const unsigned char* p = (const unsigned char*)data.data();
    size_t i = 0;
    for (; i + 2 < data.size(); i += 3) {
        const unsigned long v = ((unsigned long)p[i] << 16) | ((unsigned long)p[i + 1] << 8) | p[i + 2];
        out += digits[(v >> 18) & 63];
        out += digits[(v >> 12) & 63];
        out += digits[(v >> 6) & 63];
        out += digits[v & 63];
    }
    if (i < data.size()) {
        unsigned long v = (unsigned long)p[i] << 16;
        if (i + 1 < data.size()) v |= (unsigned long)p[i + 1] << 8;
        out += digits[(v >> 18) & 63];
        out += digits[(v >> 12) & 63];
        out += i + 1 < data.size() ? digits[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}
