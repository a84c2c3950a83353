#include "run/numbers.h"
#include "base/text.h"

#include <stdlib.h>
#include <string.h>

#include <string>

double ParseFloat(const char* text) {
    if (!text) return 0;
    char number[33];
    int n = 0;
    for (const char* p = text; *p && n < 32; p++) {
        bool digit = (*p >= '0' && *p <= '9') || *p == '.';
        if (!digit && !(*p == '-' && n == 0)) break;
        number[n++] = *p;
    }
    if (n > 18) n = 18;
    number[n] = 0;
    // Fast path: up to 15 significant digits and 22 decimals are exact
    // doubles, and one division of exact doubles rounds as strtod does.
    static const double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                     1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const char* p = number;
    bool negative = *p == '-';
    if (negative) p++;
    unsigned long long mantissa = 0;
    int digits = 0, decimals = 0;
    bool point = false;
    for (; *p; p++) {
        if (*p == '.') {
            if (point) break;  // a second point ends the number
            point = true;
            continue;
        }
        if (*p < '0' || *p > '9') break;
        mantissa = mantissa * 10 + (unsigned)(*p - '0');
        if (mantissa) digits++;
        if (point) decimals++;
    }
    if (digits > 15 || decimals > 22) return strtod(number, nullptr);
    double value = (double)mantissa / kPowers[decimals];
    return negative ? -value : value;
}

int IsTextOf(const char* text, int kind) {
    static const char* const kSets[] = {"", "0123456789", "0123456789., +-", "0123456789., */+-()^%&|~!=<>",
                                        "*/+-()^%&|~!=<>"};
    if (kind < 1 || kind > 4) return 0;
    for (const char* p = text ? text : ""; *p; p++)
        if (!strchr(kSets[kind], *p)) return 0;
    return 1;
}

namespace {

// The value with `decimals` decimals, as the runtime's _fcvt gives it, with
// the point put in.
std::string Fixed(double value, int decimals) {
    int point = 0, sign = 0;
    std::string digits = _fcvt(value, decimals, &point, &sign);
    if (digits.size() > 63) digits.resize(63);
    while (point < 0 && digits.size() < 24) {
        digits.insert(0, 1, '0');
        point++;
    }
    if (point < 0) point = 0;
    if ((size_t)point > digits.size()) digits.append((size_t)point - digits.size(), '0');
    digits.insert((size_t)point, 1, '.');
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    if (!digits.empty() && digits.back() == '.') digits.pop_back();
    return digits;
}

// Position of a run of seven zeros or nines after the point, or npos.
size_t NoiseRun(const std::string& text) {
    size_t point = text.find('.');
    if (point == std::string::npos) return std::string::npos;
    size_t zeros = text.find("0000000", point), nines = text.find("9999999", point);
    return zeros < nines ? zeros : nines;
}

}  // namespace

void FormatNumber(double value, char* text) {
    if (value == 0) {
        CopyIntoN(text, NUMBER_TEXT_SIZE, "0");
        return;
    }
    std::string out = Fixed(value, 20);
    if (NoiseRun(out) != std::string::npos) {
        out = Fixed(value, 7);
        size_t run = NoiseRun(out);
        if (run != std::string::npos) out.resize(run);
    }
    if (!out.empty() && out[0] == '.') out.insert(0, 1, '0');
    if (value < 0 && (out.empty() || out[0] != '-')) out.insert(0, 1, '-');
    if (out.size() > 79) out.resize(79);
    CopyIntoN(text, NUMBER_TEXT_SIZE, out.c_str());
}

int ParseHex(const char* text) {
    unsigned value = 0;
    int taken = 0;
    for (const char* p = text ? text : ""; *p && taken < 31; p++, taken++) {
        char c = *p;
        if (c == '\r' || c == '\n' || c == ' ' || c == '\\') continue;
        int digit;
        if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            digit = c - '0';  // an invalid digit counts as its code minus 48
        value = value * 16 + (unsigned)digit;
    }
    return (int)value;
}

unsigned long SecondsToMilliseconds(double seconds) {
    const double ms = seconds * 1000.0;
    if (!(ms > 0)) return 0;  // negative, zero or not a number
    if (ms >= 4294967294.0) return 0xFFFFFFFEul;
    return (unsigned long)ms;
}

int Random(int low, int high) {
    float scale = (float)rand() * 3.0516645908355713f / 100000.0f;
    // The width of the range in 64 bits: 0 to 2147483647 is 2^31 numbers,
    // which an int cannot hold. A width that fits keeps the single-precision
    // product; a wider one is scaled in double, and stays below the width too.
    const long long width = (long long)high - low + 1;
    if (width <= 0) return low;
    if (width <= 2147483647LL) return (int)(scale * (float)width) + low;
    long long offset = (long long)((double)scale * (double)width);
    if (offset >= width) offset = width - 1;
    return (int)(low + offset);
}
