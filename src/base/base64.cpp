#include "base/base64.h"

#include <string.h>

namespace {

const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int Base64Value(char c) {
    const char* at = c ? strchr(kBase64, c) : nullptr;
    return at ? (int)(at - kBase64) : -1;
}

}  // namespace

std::string Base64(const std::string& bytes) {
    std::string out;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const unsigned a = (unsigned char)bytes[i];
        const unsigned b = i + 1 < bytes.size() ? (unsigned char)bytes[i + 1] : 0;
        const unsigned c = i + 2 < bytes.size() ? (unsigned char)bytes[i + 2] : 0;
        const unsigned n = (a << 16) | (b << 8) | c;
        out += kBase64[(n >> 18) & 63];
        out += kBase64[(n >> 12) & 63];
        out += i + 1 < bytes.size() ? kBase64[(n >> 6) & 63] : '=';
        out += i + 2 < bytes.size() ? kBase64[n & 63] : '=';
    }
    return out;
}

std::string FromBase64(const std::string& text) {
    std::string out;
    unsigned bits = 0;
    int count = 0;
    for (char c : text) {
        const int v = Base64Value(c);
        if (v < 0) continue;
        bits = (bits << 6) | (unsigned)v;
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += (char)((bits >> count) & 0xFF);
        }
    }
    return out;
}
