#include "products/pngimage.h"

#include <windows.h>
#include <string.h>

#include "base/files.h"

namespace {

unsigned long Crc32(const unsigned char* data, size_t length, unsigned long crc = 0) {
    static unsigned long table[256];
    static bool ready;
    if (!ready) {
        for (unsigned long n = 0; n < 256; n++) {
            unsigned long c = n;
            for (int k = 0; k < 8; k++) c = (c & 1) ? 0xEDB88320UL ^ (c >> 1) : c >> 1;
            table[n] = c;
        }
        ready = true;
    }
    crc ^= 0xFFFFFFFFUL;
    for (size_t i = 0; i < length; i++) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFUL;
}

void Big32(std::string& out, unsigned long v) {
    out += (char)(v >> 24);
    out += (char)(v >> 16);
    out += (char)(v >> 8);
    out += (char)v;
}

void Chunk(std::string& out, const char* type, const std::string& data) {
    Big32(out, (unsigned long)data.size());
    std::string body = type + data;
    out += body;
    Big32(out, Crc32((const unsigned char*)body.data(), body.size()));
}

// Deflate's bit stream: least significant bit first.
struct Bits {
    std::string out;
    unsigned long buffer = 0;
    int count = 0;
    void Put(unsigned long value, int n) {
        buffer |= value << count;
        count += n;
        while (count >= 8) {
            out += (char)(buffer & 0xFF);
            buffer >>= 8;
            count -= 8;
        }
    }
    // A Huffman code goes most significant bit first.
    void PutCode(unsigned code, int n) {
        unsigned reversed = 0;
        for (int i = 0; i < n; i++) reversed |= ((code >> i) & 1) << (n - 1 - i);
        Put(reversed, n);
    }
    void Flush() {
        if (count > 0) out += (char)(buffer & 0xFF);
        buffer = 0;
        count = 0;
    }
};

void Literal(Bits& bits, unsigned char c) {
    if (c < 144)
        bits.PutCode(0x30 + c, 8);
    else
        bits.PutCode(0x190 + (c - 144), 9);
}

void Length(Bits& bits, int length) {
    static const int base[] = {3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17, 19, 23, 27,
                               31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
    static const int extra[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
    int i = 28;
    while (base[i] > length) i--;
    const unsigned symbol = 257 + (unsigned)i;
    if (symbol < 280)
        bits.PutCode(symbol - 256, 7);
    else
        bits.PutCode(0xC0 + (symbol - 280), 8);
    if (extra[i]) bits.Put((unsigned long)(length - base[i]), extra[i]);
}

// One fixed-Huffman block: literals, and runs of a repeated byte as a
// back reference of distance 1.
std::string Deflate(const std::string& data) {
    Bits bits;
    bits.Put(1, 1);  // the last block
    bits.Put(1, 2);  // fixed codes
    const unsigned char* p = (const unsigned char*)data.data();
    const size_t n = data.size();
    for (size_t i = 0; i < n;) {
        Literal(bits, p[i]);
        size_t run = 0;
        while (i + 1 + run < n && run < 258 && p[i + 1 + run] == p[i]) run++;
        i++;
        if (run >= 3) {
            Length(bits, (int)run);
            bits.PutCode(0, 5);  // distance 1
            i += run;
        }
    }
    bits.PutCode(0, 7);  // end of block
    bits.Flush();
    return bits.out;
}

unsigned long Adler32(const std::string& data) {
    unsigned long a = 1, b = 0;
    for (unsigned char c : data) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    return (b << 16) | a;
}

}  // namespace

std::string BmpFileAsPng(const char* path, int* widthOut, int* heightOut) {
    const std::string bmp = ReadWholeFile(path);
    // A failure picture of an image search is a PNG already: its size is in
    // the header chunk (big-endian width and height after the signature).
    if (bmp.size() >= 24 && bmp.compare(0, 8, "\x89PNG\r\n\x1a\n", 8) == 0) {
        const unsigned char* h = (const unsigned char*)bmp.data() + 16;
        if (widthOut) *widthOut = (int)(((unsigned)h[0] << 24) | (h[1] << 16) | (h[2] << 8) | h[3]);
        if (heightOut) *heightOut = (int)(((unsigned)h[4] << 24) | (h[5] << 16) | (h[6] << 8) | h[7]);
        return bmp;
    }
    if (bmp.size() < sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER) || bmp[0] != 'B' || bmp[1] != 'M') return "";
    BITMAPFILEHEADER file;
    BITMAPINFOHEADER info;
    memcpy(&file, bmp.data(), sizeof file);
    memcpy(&info, bmp.data() + sizeof file, sizeof info);
    const int width = info.biWidth;
    const bool bottomUp = info.biHeight > 0;
    const int height = bottomUp ? info.biHeight : -info.biHeight;
    const int bytes = info.biBitCount / 8;
    if (width <= 0 || height <= 0 || width > 32768 || height > 32768 || (bytes != 3 && bytes != 4) ||
        info.biCompression != BI_RGB)
        return "";
    const size_t stride = ((size_t)width * (size_t)bytes + 3) & ~(size_t)3;
    if (file.bfOffBits + stride * (size_t)height > bmp.size()) return "";

    // Each row: filter 1 (the difference from the pixel to the left).
    std::string raw;
    raw.reserve((size_t)height * ((size_t)width * 3 + 1));
    for (int y = 0; y < height; y++) {
        const unsigned char* row =
            (const unsigned char*)bmp.data() + file.bfOffBits + stride * (size_t)(bottomUp ? height - 1 - y : y);
        raw += (char)1;
        unsigned char last[3] = {0, 0, 0};
        for (int x = 0; x < width; x++) {
            const unsigned char* px = row + (size_t)x * (size_t)bytes;
            const unsigned char rgb[3] = {px[2], px[1], px[0]};
            for (int c = 0; c < 3; c++) {
                raw += (char)(unsigned char)(rgb[c] - last[c]);
                last[c] = rgb[c];
            }
        }
    }
    std::string zlib = "\x78\x01";
    zlib += Deflate(raw);
    Big32(zlib, Adler32(raw));

    std::string png = "\x89PNG\r\n\x1a\n";
    std::string header;
    Big32(header, (unsigned long)width);
    Big32(header, (unsigned long)height);
    header += (char)8;  // bits per sample
    header += (char)2;  // RGB
    header += std::string(3, '\0');
    Chunk(png, "IHDR", header);
    Chunk(png, "IDAT", zlib);
    Chunk(png, "IEND", "");
    if (widthOut) *widthOut = width;
    if (heightOut) *heightOut = height;
    return png;
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
