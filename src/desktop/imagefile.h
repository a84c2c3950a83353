// Reading a picture file of any common kind (BMP, PNG, JPEG, GIF) into
// pixels, and writing pixels as a PNG file. Both go through the platform's
// image codecs; a BMP is read as it always was, by LoadImage.
#pragma once

#include <windows.h>
#include <stddef.h>

#include <string>
#include <vector>

struct ImagePixels {
    int width = 0, height = 0;
    std::vector<COLORREF> pixels;      // by rows from the top
    std::vector<unsigned char> clear;  // 1 where the file's pixel is transparent; empty when none is
};

enum { IMAGE_READ_OK = 0, IMAGE_READ_MISSING = 1, IMAGE_READ_UNDECODABLE = 2, IMAGE_READ_TOO_LARGE = 3 };

// Reads `file` into `image`. A pixel whose alpha is below one half counts as
// transparent. An image wider than `maxWidth` or higher than `maxHeight` is
// measured but its pixels are not read (IMAGE_READ_TOO_LARGE).
int ReadImageFile(const char* file, int maxWidth, int maxHeight, ImagePixels& image);

// 32-bit pixels (0x00RRGGBB, by rows from the top) encoded as a PNG in
// memory; "" when the codec refused.
std::string EncodePng(const DWORD* pixels, int width, int height);
// Writes such pixels as a PNG file, which takes the place of what is there
// only when it is whole.
bool WritePngFile(const char* file, const DWORD* pixels, int width, int height);
