#include "base/words.h"
#include "base/text.h"

#include <windows.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

#if defined(__SSE2__)
// The first byte of `text` that is `c` or the end. Aligned loads never cross
// into a page the text does not reach.
const char* FindCharOrEnd(const char* text, char c) {
    const __m128i want = _mm_set1_epi8(c), zero = _mm_setzero_si128();
    const uintptr_t skip = (uintptr_t)text & 15;
    const char* block = text - skip;
    __m128i v = _mm_load_si128((const __m128i*)block);
    unsigned hits = (unsigned)_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, want), _mm_cmpeq_epi8(v, zero)));
    hits &= ~0u << skip;
    while (!hits) {
        block += 16;
        v = _mm_load_si128((const __m128i*)block);
        hits = (unsigned)_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, want), _mm_cmpeq_epi8(v, zero)));
    }
    return block + __builtin_ctz(hits);
}
#endif

}  // namespace

char* FindNoCase(const char* text, const char* what) {
    if (!text || !what) return nullptr;
    if (!*what) return (char*)text;
    const char first = AsciiLower(*what);
    auto matchesAt = [what](const char* p) {
        const char* a = p + 1;
        const char* b = what + 1;
        while (*b && AsciiLower(*a) == AsciiLower(*b)) a++, b++;
        return !*b;
    };
    if (first < 'a' || first > 'z') {
        // A first character that has no case ("<" of every tag): its places
        // are found sixteen bytes at a time.
        for (const char* p = FindChar(text, first); p; p = FindChar(p + 1, first))
            if (matchesAt(p)) return (char*)p;
        return nullptr;
    }
    for (const char* p = text; *p; p++)
        if (AsciiLower(*p) == first && matchesAt(p)) return (char*)p;
    return nullptr;
}

const char* FindChar(const char* text, char c) {
    if (!text || !c) return nullptr;
#if defined(__SSE2__)
    const char* at = FindCharOrEnd(text, c);
    return *at ? at : nullptr;
#else
    return strchr(text, c);
#endif
}

size_t TextLength(const char* text) {
    if (!text) return 0;
#if defined(__SSE2__)
    return (size_t)(FindCharOrEnd(text, 0) - text);
#else
    return strlen(text);
#endif
}

const char* FindExact(const char* text, const char* what) {
    if (!text || !what) return nullptr;
    if (!*what) return text;
    // The rest is compared here: the C library's strncmp is a call into
    // Wine's msvcrt for each place of the first character.
    for (const char* p = FindChar(text, what[0]); p; p = FindChar(p + 1, what[0])) {
        const char* a = p + 1;
        const char* b = what + 1;
        while (*b && *a == *b) a++, b++;
        if (!*b) return p;
    }
    return nullptr;
}

bool ContainsNoCase(const char* text, const char* what) {
    return FindNoCase(text, what) != nullptr;
}

void TrimSpaces(char* text) {
    if (!text) return;
    size_t n = strlen(text);
    while (n && (text[n - 1] == ' ' || text[n - 1] == '\t')) text[--n] = 0;
    size_t start = 0;
    while (text[start] == ' ' || text[start] == '\t') start++;
    if (start) memmove(text, text + start, n - start + 1);
}

void ReplaceAllInPlace(char* text, const char* from, const char* to) {
    size_t fromLen = strlen(from), toLen = strlen(to);
    if (!fromLen || toLen > fromLen) return;  // only shrinking replacements fit in place
    // One pass: the text is copied onto itself, and an occurrence is replaced
    // as soon as its last character is copied. The replacement then stands
    // before what follows, so "&amp;amp;" ends as "&", as a search that
    // starts again at each replacement gives.
    const char last = from[fromLen - 1];
    char* w = text;
    for (const char* r = text; *r; r++) {
        *w++ = *r;
        if (*r == last && (size_t)(w - text) >= fromLen && memcmp(w - fromLen, from, fromLen) == 0) {
            w -= fromLen;
            memcpy(w, to, toLen);
            w += toLen;
        }
    }
    *w = 0;
}

void SetOption(char* options, const char* word, int add) {
    if (!options || !word || !*word) return;
    if (add) {
        if (ContainsNoCase(options, word)) return;
        size_t need = strlen(options) + (options[0] ? 1 : 0) + strlen(word);
        if (need >= 260) return;
        if (options[0]) AppendIntoN(options, FIELD_OPTIONS_SIZE, ",");
        AppendIntoN(options, FIELD_OPTIONS_SIZE, word);
        return;
    }
    size_t wordLen = strlen(word);
    char* p;
    while ((p = FindNoCase(options, word)) != nullptr) memmove(p, p + wordLen, strlen(p + wordLen) + 1);
    if (!strchr(options, ',')) return;
    ReplaceAllInPlace(options, "  ", " ");
    ReplaceAllInPlace(options, ", ", ",");
    ReplaceAllInPlace(options, " ,", ",");
    ReplaceAllInPlace(options, ",,", ",");
    size_t n = strlen(options);
    while (n && (options[n - 1] == ',' || options[n - 1] == ' ')) options[--n] = 0;
    size_t start = 0;
    while (options[start] == ',' || options[start] == ' ') start++;
    if (start) memmove(options, options + start, n - start + 1);
}

int ParseInt(const char* text) {
    if (!text || !*text) return 0;
    char digits[32];
    size_t n = 0;
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && text[2] >= '0' && text[2] <= '9') {
        for (const char* p = text + 2; *p && n < 31; p++)
            if (*p != ' ' && *p != '\r' && *p != '\n') digits[n++] = *p;
        digits[n] = 0;
        return (int)strtoul(digits, nullptr, 16);
    }
    for (const char* p = text; *p && n < 31; p++)
        if ((*p >= '0' && *p <= '9') || *p == '-') digits[n++] = *p;
    digits[n] = 0;
    long long v = strtoll(digits, nullptr, 10);
    if (v > INT_MAX) return INT_MAX;
    if (v < INT_MIN) return INT_MIN;
    return (int)v;
}
