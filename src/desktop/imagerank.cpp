// The ranking pass. The image is cut into a grid of up to 6 x 6 equal cells
// and each cell's mean colour is taken once. The screen's mean colours over
// a box of a cell's size are taken once for every pixel (running sums over
// columns, then along rows), so that a place at any pixel, not only on a
// coarse grid, is ranked with its cells lined up exactly: the rank of a
// place is the sum, over its cells and the three channels, of the distance
// between the two means. That costs one table read a cell a place, four
// places at a time, whatever the screen shows; a place that only shares the
// colour of most of the image (its background) ranks far below the place
// whose text and edges also lie where the image has them, as those shift
// the cells' means. A mean does not see which pixels differ, so the rank is
// only an ordering for the comparison that follows, never a verdict.
#include "desktop/imagerank.h"

#include <emmintrin.h>

#include <algorithm>

#if defined(__i386__)
bool ImageSse2() {
    static const bool has = __builtin_cpu_supports("sse2");
    return has;
}
#else
bool ImageSse2() { return true; }
#endif

namespace {

const int kMostCellsAcross = 6;

// The places ranked best so far, best (lowest) first; among equal ranks the
// one offered first stays ahead.
struct Best {
    struct Entry {
        unsigned rank;
        LONG x, y;
    };
    std::vector<Entry> entry;
    size_t keep;
    unsigned bar = 0xFFFFFFFFu;  // once full, a place must rank below this

    explicit Best(size_t n) : keep(n) { entry.reserve(n + 1); }
    void Offer(unsigned rank, LONG x, LONG y) {
        if (rank >= bar) return;
        size_t at = entry.size();
        entry.push_back({rank, x, y});
        while (at > 0 && entry[at - 1].rank > rank) {
            entry[at] = entry[at - 1];
            at--;
        }
        entry[at] = {rank, x, y};
        if (entry.size() > keep) entry.pop_back();
        if (entry.size() == keep) bar = entry.back().rank;
    }
};

inline DWORD Pack(unsigned r, unsigned g, unsigned b) { return (r << 16) | (g << 8) | b; }

inline unsigned Distance(DWORD a, DWORD b) {
    unsigned d = 0;
    for (int shift = 0; shift <= 16; shift += 8) {
        const int x = (int)((a >> shift) & 0xFF) - (int)((b >> shift) & 0xFF);
        d += (unsigned)(x < 0 ? -x : x);
    }
    return d;
}

// The cells of the grid that the ranking uses: offsets in the box-mean
// table's rows and columns, and the image's mean colour in each.
struct Cells {
    int width = 0, height = 0;  // of a cell
    std::vector<int> dx, dy;
    std::vector<DWORD> want;
};

Cells MakeCells(const Needle& n) {
    Cells c;
    const int across = std::min(kMostCellsAcross, std::max(1, n.width / 2));
    const int down = std::min(kMostCellsAcross, std::max(1, n.height / 2));
    c.width = n.width / across;
    c.height = n.height / down;
    // The grid in the middle of the image: the pixels left over lie at its
    // edges, where a capture's cut is least sure anyway.
    const int left = (n.width - across * c.width) / 2, top = (n.height - down * c.height) / 2;
    for (int j = 0; j < down; j++)
        for (int i = 0; i < across; i++) {
            const int x0 = left + i * c.width, y0 = top + j * c.height;
            unsigned r = 0, g = 0, b = 0;
            bool skipped = false;
            for (int y = y0; y < y0 + c.height && !skipped; y++)
                for (int x = x0; x < x0 + c.width; x++) {
                    const size_t at = (size_t)y * n.width + x;
                    // A cell with a skipped pixel has no mean to compare:
                    // the screen's mean under it takes in every pixel.
                    if (!n.skip.empty() && n.skip[at]) {
                        skipped = true;
                        break;
                    }
                    const DWORD p = n.raw[at];
                    r += (p >> 16) & 0xFF;
                    g += (p >> 8) & 0xFF;
                    b += p & 0xFF;
                }
            if (skipped) continue;
            const unsigned count = (unsigned)(c.width * c.height);
            c.dx.push_back(x0);
            c.dy.push_back(y0);
            c.want.push_back(Pack((r + count / 2) / count, (g + count / 2) / count, (b + count / 2) / count));
        }
    return c;
}

// The screen's mean colour over a box of `bw` x `bh` pixels whose corner is
// at each pixel of `width` x `height` from (x0, y0).
std::vector<DWORD> BoxMeans(const PixelArea& s, LONG x0, LONG y0, int width, int height, int bw, int bh) {
    std::vector<DWORD> means((size_t)width * height);
    const int columns = width + bw - 1;
    std::vector<unsigned> sum((size_t)columns * 3, 0);
    auto row = [&](LONG y) { return s.bits + (size_t)(y - s.area.top) * (size_t)s.stride + (size_t)(x0 - s.area.left); };
    auto add = [&](LONG y, int sign) {
        const DWORD* p = row(y);
        unsigned* t = sum.data();
        if (sign > 0)
            for (int x = 0; x < columns; x++, t += 3) {
                t[0] += (p[x] >> 16) & 0xFF;
                t[1] += (p[x] >> 8) & 0xFF;
                t[2] += p[x] & 0xFF;
            }
        else
            for (int x = 0; x < columns; x++, t += 3) {
                t[0] -= (p[x] >> 16) & 0xFF;
                t[1] -= (p[x] >> 8) & 0xFF;
                t[2] -= p[x] & 0xFF;
            }
    };
    for (int y = 0; y < bh; y++) add(y0 + y, 1);
    const unsigned long long scale = (1ull << 32) / (unsigned long long)(bw * bh);
    auto mean = [&](unsigned v) { return (unsigned)(((unsigned long long)v * scale + (1ull << 31)) >> 32); };
    for (int y = 0; y < height; y++) {
        unsigned r = 0, g = 0, b = 0;
        const unsigned* t = sum.data();
        for (int x = 0; x < bw; x++) {
            r += t[3 * x];
            g += t[3 * x + 1];
            b += t[3 * x + 2];
        }
        DWORD* out = means.data() + (size_t)y * width;
        for (int x = 0; x < width; x++) {
            const unsigned cr = mean(r), cg = mean(g), cb = mean(b);
            out[x] = Pack(cr > 255 ? 255 : cr, cg > 255 ? 255 : cg, cb > 255 ? 255 : cb);
            if (x + 1 < width) {
                r += t[3 * (x + bw)] - t[3 * x];
                g += t[3 * (x + bw) + 1] - t[3 * x + 1];
                b += t[3 * (x + bw) + 2] - t[3 * x + 2];
            }
        }
        if (y + 1 < height) {
            add(y0 + y, -1);
            add(y0 + y + bh, 1);
        }
    }
    return means;
}

// The ranks of four neighbouring places at once: for each cell, the
// channels' distances of four box means from the cell's mean, summed in
// 16-bit lanes (36 cells x 255 stays below 65536).
IMAGE_SSE2 void RankFour(const DWORD* const* cell, const DWORD* want, size_t count, size_t at, unsigned out[4]) {
    __m128i low = _mm_setzero_si128(), high = _mm_setzero_si128();
    const __m128i zero = _mm_setzero_si128();
    for (size_t c = 0; c < count; c++) {
        const __m128i have = _mm_loadu_si128((const __m128i*)(cell[c] + at));
        const __m128i w = _mm_set1_epi32((int)want[c]);
        const __m128i d = _mm_or_si128(_mm_subs_epu8(have, w), _mm_subs_epu8(w, have));
        low = _mm_add_epi16(low, _mm_unpacklo_epi8(d, zero));
        high = _mm_add_epi16(high, _mm_unpackhi_epi8(d, zero));
    }
    const __m128i ones = _mm_set1_epi16(1);
    alignas(16) unsigned pairs[8];
    _mm_store_si128((__m128i*)pairs, _mm_madd_epi16(low, ones));
    _mm_store_si128((__m128i*)(pairs + 4), _mm_madd_epi16(high, ones));
    for (int k = 0; k < 4; k++) out[k] = pairs[2 * k] + pairs[2 * k + 1];
}

}  // namespace

std::vector<POINT> RankPlaces(const PixelArea& screen, const Needle& needle, const RECT& corners, int keep) {
    std::vector<POINT> places;
    if (!screen.bits || keep <= 0 || corners.left > corners.right || corners.top > corners.bottom) return places;
    const Cells cells = MakeCells(needle);
    // Too few cells say too little to rank on.
    if (cells.want.size() < 4) return places;
    const int across = (int)(corners.right - corners.left + 1), down = (int)(corners.bottom - corners.top + 1);
    int spanX = 0, spanY = 0;  // the farthest cell corner from a place's corner
    for (size_t c = 0; c < cells.want.size(); c++) {
        spanX = std::max(spanX, cells.dx[c]);
        spanY = std::max(spanY, cells.dy[c]);
    }
    int firstX = spanX, firstY = spanY;
    for (size_t c = 0; c < cells.want.size(); c++) {
        firstX = std::min(firstX, cells.dx[c]);
        firstY = std::min(firstY, cells.dy[c]);
    }
    const int width = across + spanX - firstX, height = down + spanY - firstY;
    const std::vector<DWORD> means =
        BoxMeans(screen, corners.left + firstX, corners.top + firstY, width, height, cells.width, cells.height);
    Best best((size_t)keep);
    const size_t count = cells.want.size();
    std::vector<const DWORD*> cell(count);
    const bool wide = ImageSse2();
    for (int v = 0; v < down; v++) {
        for (size_t c = 0; c < count; c++)
            cell[c] = means.data() + (size_t)(v + cells.dy[c] - firstY) * width + (size_t)(cells.dx[c] - firstX);
        int u = 0;
        if (wide)
            for (; u + 3 < across; u += 4) {
                unsigned rank[4];
                RankFour(cell.data(), cells.want.data(), count, (size_t)u, rank);
                for (int k = 0; k < 4; k++) best.Offer(rank[k], corners.left + u + k, corners.top + v);
            }
        for (; u < across; u++) {
            unsigned rank = 0;
            for (size_t c = 0; c < count; c++) rank += Distance(cell[c][u], cells.want[c]);
            best.Offer(rank, corners.left + u, corners.top + v);
        }
    }
    for (const Best::Entry& e : best.entry) places.push_back(POINT{e.x, e.y});
    return places;
}
