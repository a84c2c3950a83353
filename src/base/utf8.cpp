#include "base/utf8.h"

#include <windows.h>
#include <stdlib.h>
#include <string.h>

namespace {

unsigned TheCodePage = 0;  // 0 until first asked
bool TheUtf8 = false;
bool TheDoubleByte = false;  // a legacy page with lead bytes (932, 936, 949, 950)

void Settle() {
    if (TheCodePage) return;
    TheCodePage = GetACP();
    TheUtf8 = TheCodePage == CP_UTF8;
    CPINFO info = {};
    TheDoubleByte = !TheUtf8 && GetCPInfo(TheCodePage, &info) && info.MaxCharSize == 2;
}

// The length of a UTF-8 sequence from its first byte; 0 for a byte that
// cannot start one.
inline size_t SequenceLength(unsigned char c) {
    if (c < 0x80) return 1;
    if (c >= 0xC2 && c <= 0xDF) return 2;
    if (c >= 0xE0 && c <= 0xEF) return 3;
    if (c >= 0xF0 && c <= 0xF4) return 4;
    return 0;
}

inline bool Continuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// The length of the well-formed sequence at text[at], or 0.
size_t WellFormedAt(const unsigned char* p, size_t left) {
    const size_t n = SequenceLength(p[0]);
    if (n == 0 || n > left) return 0;
    if (n == 1) return 1;
    for (size_t i = 1; i < n; i++)
        if (!Continuation(p[i])) return 0;
    // The second byte's range rules out overlong forms, surrogates and
    // values above U+10FFFF.
    if (p[0] == 0xE0 && p[1] < 0xA0) return 0;
    if (p[0] == 0xED && p[1] > 0x9F) return 0;
    if (p[0] == 0xF0 && p[1] < 0x90) return 0;
    if (p[0] == 0xF4 && p[1] > 0x8F) return 0;
    return n;
}

}  // namespace

unsigned ProgramCodePage() {
    Settle();
    return TheCodePage;
}

bool ProgramIsUtf8() {
    Settle();
    return TheUtf8;
}

void SetProgramCodePage(unsigned codePage) {
    TheCodePage = 0;
    Settle();
    if (!codePage) return;
    TheCodePage = codePage;
    TheUtf8 = codePage == CP_UTF8;
    CPINFO info = {};
    TheDoubleByte = !TheUtf8 && GetCPInfo(codePage, &info) && info.MaxCharSize == 2;
}

unsigned LegacyCodePage() {
    char number[16] = {};
    if (!GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE, number, sizeof number)) return 1252;
    unsigned page = (unsigned)strtoul(number, nullptr, 10);
    // A locale without an ANSI page (0) reads and writes UTF-8.
    return page ? page : CP_UTF8;
}

bool IsUtf8(const char* text, size_t length) {
    const unsigned char* p = (const unsigned char*)text;
    size_t i = 0;
    while (i < length) {
        // Plain ASCII, the bulk of any script, eight bytes at a time.
        while (i + 8 <= length) {
            unsigned long long block;
            memcpy(&block, p + i, 8);
            if (block & 0x8080808080808080ULL) break;
            i += 8;
        }
        if (i >= length) break;
        if (p[i] < 0x80) {
            i++;
            continue;
        }
        const size_t n = WellFormedAt(p + i, length - i);
        if (!n) return false;
        i += n;
    }
    return true;
}

size_t CharBoundary(const char* text, size_t at) {
    Settle();
    if (!text || at == 0) return 0;
    const unsigned char* p = (const unsigned char*)text;
    if (TheUtf8) {
        // The start of the last character ahead of the cut: if that one
        // needs more bytes than the cut leaves it, the cut moves ahead of it.
        // Only the bytes before the cut are read.
        size_t back = 1;
        while (back < 4 && back < at && Continuation(p[at - back])) back++;
        const size_t start = at - back;
        const size_t n = SequenceLength(p[start]);
        return n > back ? start : at;
    }
    if (TheDoubleByte) {
        size_t i = 0;
        while (i < at) {
            const size_t step = IsDBCSLeadByteEx(TheCodePage, p[i]) && p[i + 1] ? 2 : 1;
            if (i + step > at) break;
            i += step;
        }
        return i;
    }
    return at;
}

std::string TextCut(const char* text, size_t most) {
    if (!text) return std::string();
    const size_t length = strnlen(text, most);
    return std::string(text, length < most ? length : CharBoundary(text, most));
}

size_t CharBytes(const char* text, size_t length) {
    Settle();
    if (!text || !length) return 0;
    const unsigned char* p = (const unsigned char*)text;
    if (TheUtf8) {
        const size_t n = WellFormedAt(p, length);
        return n ? n : 1;
    }
    if (TheDoubleByte && length > 1 && IsDBCSLeadByteEx(TheCodePage, p[0])) return 2;
    return 1;
}

size_t CharCount(const char* text, size_t length) {
    Settle();
    if (!text) return 0;
    if (!TheUtf8 && !TheDoubleByte) return length;
    size_t count = 0;
    for (size_t i = 0; i < length; count++) i += CharBytes(text + i, length - i);
    return count;
}

size_t CharOffset(const char* text, size_t length, size_t chars) {
    Settle();
    if (!text) return 0;
    if (!TheUtf8 && !TheDoubleByte) return chars < length ? chars : length;
    size_t i = 0;
    for (size_t c = 0; c < chars && i < length; c++) i += CharBytes(text + i, length - i);
    return i;
}

unsigned DecodeUtf8(const char* text, size_t length, size_t* at) {
    const unsigned char* p = (const unsigned char*)text + *at;
    const size_t n = WellFormedAt(p, length - *at);
    if (!n) {
        (*at)++;
        return 0xFFFD;
    }
    *at += n;
    switch (n) {
    case 1: return p[0];
    case 2: return ((p[0] & 0x1Fu) << 6) | (p[1] & 0x3Fu);
    case 3: return ((p[0] & 0x0Fu) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu);
    default: return ((p[0] & 0x07u) << 18) | ((p[1] & 0x3Fu) << 12) | ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu);
    }
}

static std::wstring WideFromPage(const char* text, size_t length, unsigned page) {
    std::wstring wide;
    if (!text || !length) return wide;
    const int n = MultiByteToWideChar(page, 0, text, (int)length, nullptr, 0);
    if (n <= 0) return wide;
    wide.resize((size_t)n);
    MultiByteToWideChar(page, 0, text, (int)length, wide.data(), n);
    return wide;
}

static std::string PageFromWide(const wchar_t* text, size_t length, unsigned page, bool* lost) {
    std::string out;
    if (lost) *lost = false;
    if (!text || !length) return out;
    // UTF-8 holds every character; a legacy page is told to replace rather
    // than guess (no best fit: "ü" for "ü", never "u"), and says when it did.
    const bool utf8 = page == CP_UTF8;
    const DWORD flags = utf8 ? 0 : WC_NO_BEST_FIT_CHARS;
    BOOL used = FALSE;
    const int n = WideCharToMultiByte(page, flags, text, (int)length, nullptr, 0, nullptr, utf8 ? nullptr : &used);
    if (n <= 0) return out;
    out.resize((size_t)n);
    used = FALSE;
    WideCharToMultiByte(page, flags, text, (int)length, out.data(), n, nullptr, utf8 ? nullptr : &used);
    if (lost && used) *lost = true;
    return out;
}

std::string ConvertText(const char* text, size_t length, unsigned from, unsigned to, bool* lost) {
    if (lost) *lost = false;
    if (from == to) return std::string(text ? text : "", text ? length : 0);
    const std::wstring wide = WideFromPage(text, length, from);
    return PageFromWide(wide.data(), wide.size(), to, lost);
}

std::string PercentEncodeBeyondAscii(const char* text, size_t length) {
    const std::string utf8 = ConvertText(text, length, ProgramCodePage(), CP_UTF8, nullptr);
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : utf8) {
        if (c < 0x80) {
            out += (char)c;
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

std::wstring WideFromProgram(const char* text, size_t length) {
    return WideFromPage(text, length, ProgramCodePage());
}

std::string ProgramFromWide(const wchar_t* text, size_t length) {
    return PageFromWide(text, length, ProgramCodePage(), nullptr);
}
