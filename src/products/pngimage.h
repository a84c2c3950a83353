// A screen image as a PNG for a page: the report embeds the failure's image
// in itself, and a BMP of a whole screen is too big for a phone.
#pragma once

#include <string>

// The PNG of a picture file (the BMP or PNG of a failure), through the
// platform's codecs; "" when the file is no picture.
std::string PictureFileAsPng(const char* path, int* width = nullptr, int* height = nullptr);
