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

Order MakeOrder(const Needle& n, int stride) {
    const int w = n.width, h = n.height;
    auto skipped = [&](int i) { return !n.skip.empty() && n.skip[(size_t)i]; };
    // How common each colour is in the image, by 4 bits a channel.
    std::vector<int> histogram(4096, 0);
    auto bin = [&](DWORD p) { return (int)(((p >> 12) & 0xF00) | ((p >> 8) & 0xF0) | ((p >> 4) & 0xF)); };
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
            picks.push_back({i, stable, histogram[(size_t)bin(n.raw[(size_t)i])]});
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

template <bool Exact>
bool Search(const PixelArea& s, const Order& o, const RECT& c, int variation, int allowed, Candidate* found) {
    const int total = (int)o.at.size();
    const ptrdiff_t* at = o.at.data();
    const DWORD* want = o.want.data();
    // What a place at the share asked for may miss on the sample: its share
    // of the sample, and some slack, since misses gather at edges.
    const int slack = allowed > 0 ? 1 : 0;
    const int firstLimit = total > 0 ? (int)((long long)o.first * allowed / total) + slack : 0;
    const int sampleLimit = total > 0 ? (int)((long long)o.sample * allowed / total) + 2 * slack : 0;
    int best = -1;  // mismatches of the best place so far
    for (LONG y = c.top; y <= c.bottom; y++) {
        const DWORD* row = s.bits + (size_t)(y - s.area.top) * (size_t)s.stride - s.area.left;
        for (LONG x = c.left; x <= c.right; x++) {
            const DWORD* base = row + x;
            const int limit = best >= 0 && best - 1 < allowed ? best - 1 : allowed;
            const int first = firstLimit < limit ? firstLimit : limit;
            const int sample = sampleLimit < limit ? sampleLimit : limit;
            int m = 0, k = 0;
            for (; k < o.first; k++)
                if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > first) break;
            if (m > first) continue;
            for (; k < o.sample; k++)
                if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > sample) break;
            if (m > sample) continue;
            for (; k < total; k++)
                if (!Same<Exact>(base[at[k]], want[k], variation) && ++m > limit) break;
            if (m > limit) continue;
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

int ScorePermille(const Candidate& c) {
    return c.compared > 0 ? (int)((long long)c.matched * 1000 / c.compared) : 0;
}

bool BetterCandidate(const Candidate& a, const Candidate& b) {
    if (a.compared <= 0) return false;
    if (b.compared <= 0) return true;
    return (long long)a.matched * b.compared > (long long)b.matched * a.compared;
}

bool ScoreSearch(const PixelArea& screen, const Needle& needle, const RECT& within, int variation, int percent,
                 Candidate* found) {
    RECT corners;
    if (!Places(screen, needle, within, corners)) return false;
    const Order o = MakeOrder(needle, screen.stride);
    const int total = (int)o.at.size();
    if (percent > 100) percent = 100;
    if (percent < 50) percent = 50;
    // The mismatches a place may have and still reach the share.
    const int allowed = total - (int)(((long long)total * percent + 99) / 100);
    Candidate c;
    bool ok = variation > 0 ? Search<false>(screen, o, corners, variation, allowed, &c)
                            : Search<true>(screen, o, corners, 0, allowed, &c);
    if (ok && found) *found = c;
    return ok;
}

Candidate BestMiss(const PixelArea& screen, const Needle& needle, const RECT& within, int variation) {
    Candidate best;
    RECT corners;
    if (!Places(screen, needle, within, corners)) return best;
    const Order o = MakeOrder(needle, screen.stride);
    const int total = (int)o.at.size();
    // The places that miss least on the sample, then each compared whole.
    struct Top {
        int misses;
        LONG x, y;
    };
    std::vector<Top> top;
    int bar = o.sample;  // a place must miss fewer than the worst kept
    for (LONG y = corners.top; y <= corners.bottom; y++) {
        const DWORD* row = screen.bits + (size_t)(y - screen.area.top) * (size_t)screen.stride - screen.area.left;
        for (LONG x = corners.left; x <= corners.right; x++) {
            const int m = CountMismatches(row + x, o, 0, o.sample, variation, bar);
            if (m > bar || ((int)top.size() >= TOP_MISSES && m >= bar)) continue;
            top.push_back({m, x, y});
            std::stable_sort(top.begin(), top.end(), [](const Top& a, const Top& b) { return a.misses < b.misses; });
            if ((int)top.size() > TOP_MISSES) top.pop_back();
            if ((int)top.size() >= TOP_MISSES) bar = top.back().misses;
        }
    }
    for (const Top& t : top) {
        const DWORD* base = screen.bits + (size_t)(t.y - screen.area.top) * (size_t)screen.stride + (t.x - screen.area.left);
        Candidate c;
        c.x = (int)t.x;
        c.y = (int)t.y;
        c.compared = total;
        c.matched = total - CountMismatches(base, o, 0, total, variation, total);
        if (BetterCandidate(c, best)) best = c;
    }
    return best;
}
