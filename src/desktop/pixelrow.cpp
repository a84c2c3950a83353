// The row scan of the pixel and image searches. On a full screen with the
// colour absent this loop reads every pixel once, so it is what a search
// costs beyond the capture; SSE2 tests four pixels in one compare.
#include "desktop/pixelrow.h"

#include <emmintrin.h>

namespace {

// On i686 the SSE2 code is compiled for SSE2 alone and called only when the
// processor has it; x86_64 always has it.
#if defined(__i386__)
#define SSE2_CODE __attribute__((target("sse2")))
#else
#define SSE2_CODE
#endif

// Four pixels' answers to the exact test: all ones where a pixel passes.
struct ExactFour {
    __m128i mask, want;
    SSE2_CODE __m128i operator()(const DWORD* at) const {
        return _mm_cmpeq_epi32(_mm_and_si128(_mm_loadu_si128((const __m128i*)at), mask), want);
    }
};

// The same for the bounds test: each byte within its low and high bound.
struct BoundFour {
    __m128i low, high;
    SSE2_CODE __m128i operator()(const DWORD* at) const {
        const __m128i v = _mm_loadu_si128((const __m128i*)at);
        const __m128i above = _mm_cmpeq_epi8(_mm_max_epu8(v, low), v);
        const __m128i below = _mm_cmpeq_epi8(_mm_min_epu8(v, high), v);
        return _mm_cmpeq_epi32(_mm_and_si128(above, below), _mm_set1_epi32(-1));
    }
};

SSE2_CODE inline ExactFour ExactOf(const PixelTest& t) {
    return {_mm_set1_epi32(0x00FFFFFF), _mm_set1_epi32((int)t.raw)};
}

SSE2_CODE inline BoundFour BoundsOf(const PixelTest& t) {
    DWORD lowWord = 0, highWord = 0;
    for (int i = 3; i >= 0; i--) {
        lowWord = (lowWord << 8) | (i == 3 ? 0 : t.low[i]);
        highWord = (highWord << 8) | (i == 3 ? 0xFF : t.high[i]);
    }
    return {_mm_set1_epi32((int)lowWord), _mm_set1_epi32((int)highWord)};
}

// Four pixels at a time, sixteen a round; the first hit is then found four
// and one at a time, so the answer is the plain scan's. One copy of the loop
// per kind of test, so that the test is not chosen anew every four pixels.
template <typename Four>
SSE2_CODE int ScanFour(const DWORD* row, int from, int to, const PixelTest& t, const Four& hits) {
    int x = from;
    for (; x + 15 <= to; x += 16) {
        const __m128i any = _mm_or_si128(_mm_or_si128(hits(row + x), hits(row + x + 4)),
                                         _mm_or_si128(hits(row + x + 8), hits(row + x + 12)));
        if (_mm_movemask_epi8(any)) break;
    }
    for (; x + 3 <= to; x += 4)
        if (int bits = _mm_movemask_epi8(hits(row + x))) return x + __builtin_ctz((unsigned)bits) / 4;
    for (; x <= to; x++)
        if (PixelPasses(row[x], t)) return x;
    return -1;
}

SSE2_CODE int FindSse2(const DWORD* row, int from, int to, const PixelTest& t) {
    return t.exact ? ScanFour(row, from, to, t, ExactOf(t)) : ScanFour(row, from, to, t, BoundsOf(t));
}

// Either test, chosen at each use: the pair scan runs only along stretches
// of candidates, where that choice costs nothing that counts.
struct EitherFour {
    bool exact;
    ExactFour exactHits;
    BoundFour boundHits;
    SSE2_CODE __m128i operator()(const DWORD* at) const { return exact ? exactHits(at) : boundHits(at); }
};

SSE2_CODE inline EitherFour EitherOf(const PixelTest& t) { return {t.exact, ExactOf(t), BoundsOf(t)}; }

SSE2_CODE int FindPairSse2(const DWORD* row, const DWORD* second, int from, int to, const PixelTest& test,
                           const PixelTest& secondTest) {
    const EitherFour hits = EitherOf(test), secondHits = EitherOf(secondTest);
    int x = from;
    for (; x + 3 <= to; x += 4)
        if (int bits = _mm_movemask_epi8(_mm_and_si128(hits(row + x), secondHits(second + x))))
            return x + __builtin_ctz((unsigned)bits) / 4;
    for (; x <= to; x++)
        if (PixelPasses(row[x], test) && PixelPasses(second[x], secondTest)) return x;
    return -1;
}

bool HasSse2() {
#if defined(__SSE2__)
    return true;
#else
    static const bool has = __builtin_cpu_supports("sse2");
    return has;
#endif
}

}  // namespace

void ColorRange(COLORREF color, int variation, int* redMin, int* redMax, int* greenMin, int* greenMax, int* blueMin,
                int* blueMax) {
    int channel[3] = {GetRValue(color), GetGValue(color), GetBValue(color)};
    int* mins[3] = {redMin, greenMin, blueMin};
    int* maxs[3] = {redMax, greenMax, blueMax};
    for (int i = 0; i < 3; i++) {
        int lo = 0, hi = 0;
        if (variation > 0) {
            lo = channel[i] - variation < 0 ? 0 : channel[i] - variation;
            hi = channel[i] + variation > 255 ? 255 : channel[i] + variation;
        }
        if (mins[i]) *mins[i] = lo;
        if (maxs[i]) *maxs[i] = hi;
    }
}

PixelTest MakePixelTest(COLORREF color, int variation) {
    PixelTest t = {};
    t.exact = variation == 0;
    t.raw = ((DWORD)GetRValue(color) << 16) | ((DWORD)GetGValue(color) << 8) | GetBValue(color);
    int rMin, rMax, gMin, gMax, bMin, bMax;
    ColorRange(color, variation, &rMin, &rMax, &gMin, &gMax, &bMin, &bMax);
    t.low[0] = (BYTE)bMin, t.low[1] = (BYTE)gMin, t.low[2] = (BYTE)rMin;
    t.high[0] = (BYTE)bMax, t.high[1] = (BYTE)gMax, t.high[2] = (BYTE)rMax;
    t.high[3] = 0xFF;
    return t;
}

int FindPixelInRowPlain(const DWORD* row, int from, int to, const PixelTest& test) {
    for (int x = from; x <= to; x++)
        if (PixelPasses(row[x], test)) return x;
    return -1;
}

int FindPixelInRow(const DWORD* row, int from, int to, const PixelTest& test) {
    if (from > to) return -1;
    return HasSse2() ? FindSse2(row, from, to, test) : FindPixelInRowPlain(row, from, to, test);
}

int FindPixelPairInRowPlain(const DWORD* row, const DWORD* second, int from, int to, const PixelTest& test,
                            const PixelTest& secondTest) {
    for (int x = from; x <= to; x++)
        if (PixelPasses(row[x], test) && PixelPasses(second[x], secondTest)) return x;
    return -1;
}

int FindPixelPairInRow(const DWORD* row, const DWORD* second, int from, int to, const PixelTest& test,
                       const PixelTest& secondTest) {
    if (from > to) return -1;
    return HasSse2() ? FindPairSse2(row, second, from, to, test, secondTest)
                     : FindPixelPairInRowPlain(row, second, from, to, test, secondTest);
}
