// A screen image as a PNG for a page: the report embeds the failure's image
// in itself, and a BMP of a whole screen is too big for a phone.
#pragma once

#include <string>

// The PNG of a 24- or 32-bit BMP file's picture (a PNG file as it is); "" when the file is no such
// BMP. Flat areas (most of a desktop) compress well: each row is written as
// differences from the pixel before, and runs of a byte as back references.
std::string BmpFileAsPng(const char* path, int* width = nullptr, int* height = nullptr);
// Base64 of a block, for a data: address.
std::string Base64(const std::string& data);
