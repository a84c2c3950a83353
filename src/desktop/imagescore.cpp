// Scoring places of an image on the screen. Comparing every pixel at every
// place costs width x height compares a place; most places are told apart
// by a few pixels. The image's pixels are put in an order: first a sample of
// pixels chosen to be stable (their neighbours share their colour, so that
// smoothing of edges and resampling leave them as they are) and rare in the
// image (so that they say most about a place), spread over the image; then
// all the others. A place is dropped as soon as its mismatches on the
// sample pass what a place at the share asked for would show there, with a
// little slack; only places that pass the sample are compared whole.
#include "desktop/imagescore.h"

#include <emmintrin.h>
#include <stdlib.h>

#include <algorithm>

namespace {

enum { SAMPLE = 32, FIRST_SAMPLE = 8, TOP_MISSES = 16 };

// The pixels in the order a place is compared, as offsets from its corner.
struct Order {
    std::vector<ptrdiff_t> at;
    std::vector<DWORD> want;
    int sample = 0, first = 0;  // pixels of the sample, and of its first part
};

inline int Channel(DWORD p, int shift) { return (int)((p >> shift) & 0xFF); }

bool Near(DWORD a, DWORD b, int tolerance) {
    for (int shift = 0; shift <= 16; shift += 8) {
        int d = Channel(a, shift) - Channel(b, shift);
        if (d < -tolerance || d > tolerance) return false;
    }
    return true;
}

inline int BinOf(DWORD p) { return (int)(((p >> 12) & 0xF00) | ((p >> 8) & 0xF0) | ((p >> 4) & 0xF)); }

Order MakeOrder(const Needle& n, int stride, const ColourCounts* counts) {
    const int w = n.width, h = n.height;
    auto skipped = [&](int i) { return !n.skip.empty() && n.skip[(size_t)i]; };
    // How common each colour is in the image, by 4 bits a channel.
    std::vector<int> histogram(4096, 0);
    auto bin = [&](DWORD p) { return BinOf(p); };
    for (int i = 0; i < w * h; i++)
        if (!skipped(i)) histogram[(size_t)bin(n.raw[(size_t)i])]++;
    struct Pick {
        int index, stable, rarity;
    };
    std::vector<Pick> picks;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            const int i = y * w + x;
            if (skipped(i)) continue;
            int stable = 1;
            for (int dy = -1; dy <= 1 && stable; dy++)
                for (int dx = -1; dx <= 1; dx++) {
                    int xx = x + dx, yy = y + dy;
                    if (xx < 0 || yy < 0 || xx >= w || yy >= h) continue;
                    if (skipped(yy * w + xx) || !Near(n.raw[(size_t)(yy * w + xx)], n.raw[(size_t)i], 24)) {
                        stable = 0;
                        break;
                    }
                }
            const int b = bin(n.raw[(size_t)i]);
            // Rare on the screen first (where the screen is known), then rare in the image.
            const int rarity = counts && !counts->bins.empty() ? counts->bins[(size_t)b] * 64 + histogram[(size_t)b]
                                                               : histogram[(size_t)b];
            picks.push_back({i, stable, rarity});
        }
    auto better = [](const Pick& a, const Pick& b) {
        if (a.stable != b.stable) return a.stable > b.stable;
        if (a.rarity != b.rarity) return a.rarity < b.rarity;
        return a.index < b.index;
    };
    // One pick for each cell of a 4 x 4 grid, the best in it, then the best
    // of the rest.
    std::vector<int> chosen;
    std::vector<unsigned char> taken((size_t)w * h, 0);
    std::vector<Pick> cells;
    for (int cy = 0; cy < 4; cy++)
        for (int cx = 0; cx < 4; cx++) {
            const Pick* best = nullptr;
            for (const Pick& p : picks) {
                int x = p.index % w, y = p.index / w;
                if (x * 4 / w != cx || y * 4 / h != cy) continue;
                if (!best || better(p, *best)) best = &p;
            }
            if (best) cells.push_back(*best);
        }
    std::sort(cells.begin(), cells.end(), better);
    for (const Pick& p : cells) {
        chosen.push_back(p.index);
        taken[(size_t)p.index] = 1;
    }
    std::sort(picks.begin(), picks.end(), better);
    // The rest of the sample from the best picks, taken at a stride so that
    // they are not all of one patch of colour.
    const size_t step = picks.size() / SAMPLE > 1 ? picks.size() / SAMPLE : 1;
    for (size_t k = 0; k < picks.size() && (int)chosen.size() < SAMPLE; k += step)
        if (!taken[(size_t)picks[k].index]) {
            chosen.push_back(picks[k].index);
            taken[(size_t)picks[k].index] = 1;
        }
    Order o;
    o.sample = (int)chosen.size();
    o.first = o.sample < FIRST_SAMPLE ? o.sample : FIRST_SAMPLE;
    for (int i = 0; i < w * h; i++)
        if (!skipped(i) && !taken[(size_t)i]) chosen.push_back(i);
    o.at.resize(chosen.size());
    o.want.resize(chosen.size());
    for (size_t k = 0; k < chosen.size(); k++) {
        o.at[k] = (ptrdiff_t)(chosen[k] / w) * stride + chosen[k] % w;
        o.want[k] = n.raw[(size_t)chosen[k]] & 0xFFFFFF;
    }
    return o;
}

// The places to try: corners whose whole image is inside `within` and the
// capture. False when there is none.
bool Places(const PixelArea& s, const Needle& n, const RECT& within, RECT& corners) {
    if (!s.bits || n.width <= 0 || n.height <= 0) return false;
    corners.left = within.left > s.area.left ? within.left : s.area.left;
    corners.top = within.top > s.area.top ? within.top : s.area.top;
    LONG right = within.right + 1 < s.area.right ? within.right + 1 : s.area.right;  // past the last column
    LONG bottom = within.bottom + 1 < s.area.bottom ? within.bottom + 1 : s.area.bottom;
    corners.right = right - n.width;  // inclusive
    corners.bottom = bottom - n.height;
    return corners.left <= corners.right && corners.top <= corners.bottom;
}

template <bool Exact>
inline bool Same(DWORD have, DWORD want, int v) {
    if (Exact) return (have & 0xFFFFFF) == want;
    int d = (int)(have & 0xFF) - (int)(want & 0xFF);
    if (d < -v || d > v) return false;
    d = (int)((have >> 8) & 0xFF) - (int)((want >> 8) & 0xFF);
    if (d < -v || d > v) return false;
    d = (int)((have >> 16) & 0xFF) - (int)((want >> 16) & 0xFF);
    return d >= -v && d <= v;
}

// The places that got furthest before they were dropped: the pixels they
// matched on the way. Kept for a search that finds nothing, to name the
// place that came closest without a second pass.
struct Closest {
    struct Entry {
        int depth;
        LONG x, y;
    };
    Entry entry[TOP_MISSES];
    int used = 0, bar = -1;  // a place must get further than `bar` to be kept, once full

    void Offer(int depth, LONG x, LONG y) {
        if (depth <= bar) return;
        int at = used < TOP_MISSES ? used++ : TOP_MISSES - 1;
        // Kept in order, deepest first; among equals the earlier place stays ahead.
        while (at > 0 && entry[at - 1].depth < depth) {
            entry[at] = entry[at - 1];
            at--;
        }
        entry[at] = {depth, x, y};
        if (used == TOP_MISSES) bar = entry[TOP_MISSES - 1].depth;
    }
};

// On i686 the SSE2 code is compiled for SSE2 alone and used only when the
// processor has it; x86_64 always has it.
#if defined(__i386__)
#define SSE2_CODE __attribute__((target("sse2")))
bool HasSse2() {
    static const bool has = __builtin_cpu_supports("sse2");
    return has;
}
#else
#define SSE2_CODE
bool HasSse2() { return true; }
#endif

// The first pixels of the order tested for four neighbouring places at once:
// a place whose first `count` pixels all differ can be dropped at once
// whenever it may miss fewer of them than that, which is where most places
// on a screen end. Each channel within [want - v, want + v].
struct FourPlaces {
    int count = 0;
    ptrdiff_t at[FIRST_SAMPLE];
    __m128i low[FIRST_SAMPLE], high[FIRST_SAMPLE];

    SSE2_CODE void Set(const Order& o, int pixels, int variation) {
        count = pixels;
        const int v = variation > 0 ? variation : 0;
        for (int k = 0; k < pixels; k++) {
            at[k] = o.at[(size_t)k];
            DWORD lowWord = 0, highWord = 0xFF000000;
            for (int shift = 0; shift <= 16; shift += 8) {
                const int c = (int)((o.want[(size_t)k] >> shift) & 0xFF);
                lowWord |= (DWORD)(c - v < 0 ? 0 : c - v) << shift;
                highWord |= (DWORD)(c + v > 255 ? 255 : c + v) << shift;
            }
            low[k] = _mm_set1_epi32((int)lowWord);
            high[k] = _mm_set1_epi32((int)highWord);
        }
    }
    // A bit for each of the four places at `base`..`base`+3 that one of the
    // pixels passes at.
    SSE2_CODE int Any(const DWORD* base) const {
        __m128i any = _mm_setzero_si128();
        for (int k = 0; k < count; k++) {
            const __m128i p = _mm_loadu_si128((const __m128i*)(base + at[k]));
            const __m128i above = _mm_cmpeq_epi8(_mm_max_epu8(p, low[k]), p);
            const __m128i below = _mm_cmpeq_epi8(_mm_min_epu8(p, high[k]), p);
            any = _mm_or_si128(any, _mm_cmpeq_epi32(_mm_and_si128(above, below), _mm_set1_epi32(-1)));
        }
        return _mm_movemask_ps(_mm_castsi128_ps(any));
    }
};

template <bool Exact>
bool Search(const PixelArea& s, const Order& o, const RECT& c, int variation, int allowed, Candidate* found,
            Closest* closest) {
    const int total = (int)o.at.size();
    const ptrdiff_t* at = o.at.data();
    const DWORD* want = o.want.data();
    // What a place at the share asked for may miss on the sample: its share
    // of the sample, and some slack, since misses gather at edges.
    const int slack = allowed > 0 ? 1 : 0;
    const int firstLimit = total > 0 ? (int)((long long)o.first * allowed / total) + slack : 0;
    const int sampleLimit = total > 0 ? (int)((long long)o.sample * allowed / total) + 2 * slack : 0;
    int best = -1;  // mismatches of the best place so far
    // Until a place is found, a place passes the first part of the sample
    // only if one of its first firstLimit + 1 pixels matches: tested four
    // places at a time. The places it drops are not offered as the closest;
    // they matched none of those pixels.
    FourPlaces prefilter;
    const int prefilterPixels = firstLimit + 1;
    const bool usePrefilter = HasSse2() && prefilterPixels <= o.first;
    if (usePrefilter) prefilter.Set(o, prefilterPixels, Exact ? 0 : variation);
    for (LONG y = c.top; y <= c.bottom; y++) {
        const DWORD* row = s.bits + (size_t)(y - s.area.top) * (size_t)s.stride - s.area.left;
        int four = 0;  // bits of the places x..x+3 still worth a look; 0 before a block is tested
        for (LONG x = c.left; x <= c.right; x++) {
            const DWORD* base = row + x;
            if (usePrefilter && ((x - c.left) & 3) == 0) {
                four = x + 3 <= c.right ? prefilter.Any(base) : 0xF;
                if (!four) {
                    x += 3;  // none of the four can reach the share
                    continue;
                }
            }
            if (usePrefilter && !(four & (1 << ((x - c.left) & 3)))) continue;
            const int limit = best >= 0 && best - 1 < allowed ? best - 1 : allowed;
            const int first = firstLimit < limit ? firstLimit : limit;
            const int sample = sampleLimit < limit ? sampleLimit : limit;
            int m = 0, k = 0;
            for (; k < o.first; k++)
                if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > first) break;
            if (m <= first) {
                for (; k < o.sample; k++)
                    if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > sample) break;
                if (m <= sample) {
                    for (; k < total; k++)
                        if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > limit) break;
                }
            }
            if (m > limit || m > sample || m > first) {
                if (closest && best < 0) closest->Offer(k + 1 - m, x, y);
                continue;
            }
            best = m;
            found->x = (int)x;
            found->y = (int)y;
            found->matched = total - m;
            found->compared = total;
            if (m == 0) return true;  // nothing later can do better
        }
    }
    return best >= 0;
}

int CountMismatches(const DWORD* base, const Order& o, int from, int to, int variation, int stopAbove) {
    int m = 0;
    for (int k = from; k < to; k++)
        if (!(variation > 0 ? Same<false>(base[o.at[k]], o.want[k], variation) : Same<true>(base[o.at[k]], o.want[k], 0)) &&
            ++m > stopAbove)
            break;
    return m;
}

}  // namespace

ColourCounts CountColours(const PixelArea& screen) {
    ColourCounts c;
    c.bins.assign(4096, 0);
    if (!screen.bits) return c;
    for (LONG y = screen.area.top; y < screen.area.bottom; y += 3) {
        const DWORD* row = screen.bits + (size_t)(y - screen.area.top) * (size_t)screen.stride;
        for (LONG x = 0; x < screen.area.right - screen.area.left; x += 3) c.bins[(size_t)BinOf(row[x])]++;
    }
    return c;
}

int ScorePermille(const Candidate& c) {
    return c.compared > 0 ? (int)((long long)c.matched * 1000 / c.compared) : 0;
}

bool BetterCandidate(const Candidate& a, const Candidate& b) {
    if (a.compared <= 0) return false;
    if (b.compared <= 0) return true;
    return (long long)a.matched * b.compared > (long long)b.matched * a.compared;
}

bool ScoreSearch(const PixelArea& screen, const Needle& needle, const RECT& within, int variation, int percent,
                 Candidate* found, Candidate* closest, const ColourCounts* counts) {
    if (closest) *closest = Candidate{};
    RECT corners;
    if (!Places(screen, needle, within, corners)) return false;
    const Order o = MakeOrder(needle, screen.stride, counts);
    const int total = (int)o.at.size();
    if (percent > 100) percent = 100;
    if (percent < 50) percent = 50;
    // The mismatches a place may have and still reach the share.
    const int allowed = total - (int)(((long long)total * percent + 99) / 100);
    Candidate c;
    Closest kept;
    bool ok = variation > 0 ? Search<false>(screen, o, corners, variation, allowed, &c, closest ? &kept : nullptr)
                            : Search<true>(screen, o, corners, 0, allowed, &c, closest ? &kept : nullptr);
    if (ok && found) *found = c;
    if (closest) {
        if (ok) {
            *closest = c;
        } else {
            // The places that got furthest, each compared whole: the best of them.
            for (int i = 0; i < kept.used; i++) {
                const Closest::Entry& e = kept.entry[i];
                const DWORD* base =
                    screen.bits + (size_t)(e.y - screen.area.top) * (size_t)screen.stride + (e.x - screen.area.left);
                Candidate t;
                t.x = (int)e.x;
                t.y = (int)e.y;
                t.compared = total;
                t.matched = total - CountMismatches(base, o, 0, total, variation, total);
                if (BetterCandidate(t, *closest)) *closest = t;
            }
        }
    }
    return ok;
}
