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

#include "desktop/imagerank.h"

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

Order MakeOrder(const Needle& n, int stride) {
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
    // Cells in an order where each run of eight holds two of every row and
    // column of the grid: a change along a line of the image (a label
    // rewritten, an underline) reaches few of the first pixels tried.
    static const int kSpread[16] = {0, 10, 7, 13, 5, 15, 2, 8, 3, 9, 4, 14, 1, 11, 6, 12};
    std::vector<Pick> cells;
    for (int c = 0; c < 16; c++) {
        const int cx = kSpread[c] % 4, cy = kSpread[c] / 4;
        const Pick* best = nullptr;
        for (const Pick& p : picks) {
            int x = p.index % w, y = p.index / w;
            if (x * 4 / w != cx || y * 4 / h != cy) continue;
            if (!best || better(p, *best)) best = &p;
        }
        if (best && !taken[(size_t)best->index]) {
            cells.push_back(*best);
            taken[(size_t)best->index] = 1;
        }
    }
    // Stable pixels first, each group in the spread order.
    std::stable_sort(cells.begin(), cells.end(), [](const Pick& a, const Pick& b) { return a.stable > b.stable; });
    for (const Pick& p : cells) chosen.push_back(p.index);
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

// How a pixel of the image is compared with the screen's: equal; each
// channel within the variation; or, for an image grown to a larger scale
// (whose pixels fall up to half a pixel off the screen's, and whose edges
// and text the screen draws at that scale with its own smoothing),
// each channel within the range the screen shows in the 3 x 3 pixels
// around it (and a few levels of the variation).
enum { MATCH_EQUAL, MATCH_NEAR, MATCH_AROUND, AROUND_MARGIN = 4 };

// A place's corner in the screen's pixels and, for MATCH_AROUND, in the
// darkest and lightest of their neighbourhoods.
struct Corner {
    const DWORD* bits;
    const DWORD* low;
    const DWORD* high;
};

inline Corner CornerAt(const PixelArea& s, LONG x, LONG y) {
    const size_t at = (size_t)(y - s.area.top) * (size_t)s.stride + (size_t)(x - s.area.left);
    return Corner{s.bits + at, s.low ? s.low + at : nullptr, s.high ? s.high + at : nullptr};
}

template <int Mode>
inline bool Same(const Corner& c, ptrdiff_t k, DWORD want, int v) {
    if (Mode == MATCH_EQUAL) return (c.bits[k] & 0xFFFFFF) == want;
    if (Mode == MATCH_NEAR) {
        const DWORD have = c.bits[k];
        int d = (int)(have & 0xFF) - (int)(want & 0xFF);
        if (d < -v || d > v) return false;
        d = (int)((have >> 8) & 0xFF) - (int)((want >> 8) & 0xFF);
        if (d < -v || d > v) return false;
        d = (int)((have >> 16) & 0xFF) - (int)((want >> 16) & 0xFF);
        return d >= -v && d <= v;
    }
    const DWORD low = c.low[k], high = c.high[k];
    for (int shift = 0; shift <= 16; shift += 8) {
        const int w = (int)((want >> shift) & 0xFF);
        if (w + v < (int)((low >> shift) & 0xFF) || w - v > (int)((high >> shift) & 0xFF)) return false;
    }
    return true;
}

// The places that scored most on a sample, best first; among equals the
// earlier place stays ahead.
struct TopPlaces {
    struct Entry {
        int score;
        LONG x, y;
    };
    std::vector<Entry> entry;
    size_t keep;
    int bar = -1;  // once full, a place must score above this

    explicit TopPlaces(size_t n) : keep(n) { entry.reserve(n + 1); }
    void Offer(int score, LONG x, LONG y) {
        if (score <= bar) return;
        size_t at = entry.size();
        entry.push_back({score, x, y});
        while (at > 0 && entry[at - 1].score < score) {
            entry[at] = entry[at - 1];
            at--;
        }
        entry[at] = {score, x, y};
        if (entry.size() > keep) entry.pop_back();
        if (entry.size() == keep) bar = entry.back().score;
    }
};

// The first pixels of the order tested for four neighbouring places at once:
// a place whose first `count` pixels all differ can be dropped at once
// whenever it may miss fewer of them than that, which is where most places
// on a screen end. Each channel within [want - v, want + v].
struct FourPlaces {
    int count = 0;
    ptrdiff_t at[FIRST_SAMPLE];
    __m128i low[FIRST_SAMPLE], high[FIRST_SAMPLE];

    IMAGE_SSE2 void Set(const Order& o, int pixels, int variation) {
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
    // A bit for each of the four places at the corner `c` and the three
    // right of it that one of the pixels passes at: with the neighbourhoods'
    // ranges, where the range reaches into [want - v, want + v].
    IMAGE_SSE2 int Any(const Corner& c) const {
        __m128i any = _mm_setzero_si128();
        for (int k = 0; k < count; k++) {
            __m128i above, below;
            if (c.low) {
                const __m128i darkest = _mm_loadu_si128((const __m128i*)(c.low + at[k]));
                const __m128i lightest = _mm_loadu_si128((const __m128i*)(c.high + at[k]));
                above = _mm_cmpeq_epi8(_mm_max_epu8(lightest, low[k]), lightest);
                below = _mm_cmpeq_epi8(_mm_min_epu8(darkest, high[k]), darkest);
            } else {
                const __m128i p = _mm_loadu_si128((const __m128i*)(c.bits + at[k]));
                above = _mm_cmpeq_epi8(_mm_max_epu8(p, low[k]), p);
                below = _mm_cmpeq_epi8(_mm_min_epu8(p, high[k]), p);
            }
            any = _mm_or_si128(any, _mm_cmpeq_epi32(_mm_and_si128(above, below), _mm_set1_epi32(-1)));
        }
        return _mm_movemask_ps(_mm_castsi128_ps(any));
    }
};

// What the search below may spend, in pixels compared a place, before it
// gives up on telling places apart pixel by pixel; and the rows' worth of
// that it may spend at the start.
enum { WORK_PER_PLACE = 12, WORK_START_ROWS = 4, SEARCH_GAVE_UP = -1 };

// The places in `c`, by rows from the top, each dropped at the first bound
// its mismatches pass. 1 with the best in `found`, 0 when no place reaches
// `allowed`. With `thrifty`, SEARCH_GAVE_UP once the pixels compared pass
// WORK_PER_PLACE for each place so far (after a start): the quick tests do
// not tell the places apart, and comparing on would cost a pass over every
// pixel at nearly every place.
template <int Mode>
int Search(const PixelArea& s, const Order& o, const RECT& c, int variation, int allowed, Candidate* found,
           bool (*stop)(), bool thrifty = false) {
    const long long rowPlaces = c.right - c.left + 1;
    long long work = 0, budget = WORK_PER_PLACE * WORK_START_ROWS * rowPlaces;
    const int total = (int)o.at.size();
    const ptrdiff_t* at = o.at.data();
    const DWORD* want = o.want.data();
    // What a place at the share asked for may miss on the sample: its share
    // of the sample, and some slack, since misses gather at edges.
    const int slack = allowed > 0 ? 2 : 0;
    const int firstLimit = total > 0 ? (int)((long long)o.first * allowed / total) + slack : 0;
    const int sampleLimit = total > 0 ? (int)((long long)o.sample * allowed / total) + 2 * slack : 0;
    int best = -1;  // mismatches of the best place so far
    // Until a place is found, a place passes the first part of the sample
    // only if one of its first firstLimit + 1 pixels matches: tested four
    // places at a time.
    FourPlaces prefilter;
    const int prefilterPixels = firstLimit + 1;
    const bool usePrefilter = ImageSse2() && prefilterPixels <= o.first;
    if (usePrefilter) prefilter.Set(o, prefilterPixels, Mode == MATCH_EQUAL ? 0 : variation);
    for (LONG y = c.top; y <= c.bottom; y++) {
        if (stop && ((y - c.top) & 15) == 0 && stop()) return 0;
        if (thrifty && work > budget) return SEARCH_GAVE_UP;
        budget += WORK_PER_PLACE * rowPlaces;
        const size_t rowAt = (size_t)(y - s.area.top) * (size_t)s.stride;
        int four = 0;  // bits of the places x..x+3 still worth a look; 0 before a block is tested
        for (LONG x = c.left; x <= c.right; x++) {
            const size_t placeAt = rowAt + (size_t)(x - s.area.left);
            const Corner base = {s.bits + placeAt, s.low ? s.low + placeAt : nullptr, s.high ? s.high + placeAt : nullptr};
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
            // Each part of the order has its own bound; a place is dropped at
            // the first bound it passes.
            int m = 0, k = 0;
            for (; k < o.first; k++)
                if (!Same<Mode>(base, at[k], want[k], variation) && ++m > first) break;
            if (m > first) {
                work += k + 1;
                continue;
            }
            for (; k < o.sample; k++)
                if (!Same<Mode>(base, at[k], want[k], variation) && ++m > sample) break;
            if (m > sample) {
                work += k + 1;
                continue;
            }
            for (; k < total; k++)
                if (!Same<Mode>(base, at[k], want[k], variation) && ++m > limit) break;
            work += k + 1;
            if (m > limit) continue;
            best = m;
            found->x = (int)x;
            found->y = (int)y;
            found->matched = total - m;
            found->compared = total;
            if (m == 0) return 1;  // nothing later can do better
        }
    }
    return best >= 0 ? 1 : 0;
}


// Pixels on an even grid of g x g over the image (those not skipped), as
// offsets from a place's corner and the colours wanted there.
void GridSample(const Needle& n, int g, int stride, std::vector<ptrdiff_t>& at, std::vector<DWORD>& want) {
    for (int j = 0; j < g; j++)
        for (int i = 0; i < g; i++) {
            const int x = (int)(((long long)2 * i + 1) * n.width / (2 * g)), y = (int)(((long long)2 * j + 1) * n.height / (2 * g));
            const int index = y * n.width + x;
            if (!n.skip.empty() && n.skip[(size_t)index]) continue;
            at.push_back((ptrdiff_t)y * stride + x);
            want.push_back(n.raw[(size_t)index] & 0xFFFFFF);
        }
}

template <int Mode>
int GridMatches(const Corner& base, const std::vector<ptrdiff_t>& at, const std::vector<DWORD>& want, int variation) {
    int matched = 0;
    for (size_t k = 0; k < at.size(); k++) matched += Same<Mode>(base, at[k], want[k], variation);
    return matched;
}

// The place that came closest, for a search that found nothing. The sample
// here is an even grid, blind to colour, so that it estimates a place's share
// without the bias of the ranking pixels (which may all lie in the part of
// the image that changed): every place on a 4 x 4 grid, the best 64 on an
// 8 x 8 grid, the best 16 of those compared whole.
template <int Mode>
Candidate ClosestPlace(const PixelArea& s, const Needle& n, const RECT& c, int variation) {
    Candidate best;
    std::vector<ptrdiff_t> coarseAt, fineAt;
    std::vector<DWORD> coarseWant, fineWant;
    GridSample(n, 4, s.stride, coarseAt, coarseWant);
    GridSample(n, 8, s.stride, fineAt, fineWant);
    const int coarse = (int)coarseAt.size();
    TopPlaces first(64), second(16);
    auto at = [&](LONG x, LONG y) { return CornerAt(s, x, y); };
    for (LONG y = c.top; y <= c.bottom; y++) {
        for (LONG x = c.left; x <= c.right; x++) {
            const int matched = GridMatches<Mode>(at(x, y), coarseAt, coarseWant, variation);
            if (coarse > 0) first.Offer(matched, x, y);
        }
    }
    for (const TopPlaces::Entry& e : first.entry)
        second.Offer(GridMatches<Mode>(at(e.x, e.y), fineAt, fineWant, variation), e.x, e.y);
    Order whole;
    for (int i = 0; i < n.width * n.height; i++) {
        if (!n.skip.empty() && n.skip[(size_t)i]) continue;
        whole.at.push_back((ptrdiff_t)(i / n.width) * s.stride + i % n.width);
        whole.want.push_back(n.raw[(size_t)i] & 0xFFFFFF);
    }
    for (const TopPlaces::Entry& e : second.entry) {
        Candidate t;
        t.x = (int)e.x;
        t.y = (int)e.y;
        t.compared = (int)whole.at.size();
        t.matched = GridMatches<Mode>(at(e.x, e.y), whole.at, whole.want, variation);
        if (BetterCandidate(t, best)) best = t;
    }
    if (best.compared == 0 && c.left <= c.right && c.top <= c.bottom) {
        // Every pixel is skipped: any place is as good as another.
        best.x = (int)c.left;
        best.y = (int)c.top;
    }
    return best;
}

// Where the quick tests gave up: the places ranked best by the cells'
// means (RankPlaces), each with its neighbours a pixel around it, compared
// whole. The best of those is the place found when it reaches `allowed`,
// else the place that came closest; among equals the first from the
// top-left, since they are compared in that order. This is exact when the
// best place on the screen, pixel by pixel, is among the best-ranked
// RANKED_PLACES places or next to one of them; it is approximate beyond
// that: a place whose cells' means lie farther off than those of
// RANKED_PLACES others (many near copies of the image elsewhere, or a place
// that matches most pixels but where the rest differ by much, shifting the
// means) is not compared. SEARCH_GAVE_UP when the image cannot be ranked.
enum { RANKED_PLACES = 64 };

template <int Mode>
int RankedSearch(const PixelArea& s, const Needle& n, const Order& o, const RECT& c, int variation, int allowed,
                 Candidate* found, Candidate* nearest) {
    const std::vector<POINT> ranked = RankPlaces(s, n, c, RANKED_PLACES);
    if (ranked.empty()) return SEARCH_GAVE_UP;
    std::vector<POINT> places;
    places.reserve(ranked.size() * 9);
    for (const POINT& p : ranked)
        for (LONG dy = -1; dy <= 1; dy++)
            for (LONG dx = -1; dx <= 1; dx++) {
                const POINT q = {p.x + dx, p.y + dy};
                if (q.x >= c.left && q.x <= c.right && q.y >= c.top && q.y <= c.bottom) places.push_back(q);
            }
    std::sort(places.begin(), places.end(),
              [](const POINT& a, const POINT& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    places.erase(std::unique(places.begin(), places.end(),
                             [](const POINT& a, const POINT& b) { return a.x == b.x && a.y == b.y; }),
                 places.end());
    const int total = (int)o.at.size();
    int best = total + 1;  // mismatches of the best place so far
    for (const POINT& p : places) {
        const Corner base = CornerAt(s, p.x, p.y);
        int m = 0;
        // A place that can only tie loses to the earlier one: stop there.
        for (int k = 0; k < total && m < best; k++) m += !Same<Mode>(base, o.at[(size_t)k], o.want[(size_t)k], variation);
        if (m >= best) continue;
        best = m;
        nearest->x = (int)p.x;
        nearest->y = (int)p.y;
        nearest->matched = total - m;
        nearest->compared = total;
    }
    if (best > allowed) return 0;
    *found = *nearest;
    return 1;
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
                 Candidate* found, Candidate* closest, bool (*stop)(), const Candidate* beat) {
    if (closest) *closest = Candidate{};
    RECT corners;
    if (!Places(screen, needle, within, corners)) return false;
    const Order o = MakeOrder(needle, screen.stride);
    const int total = (int)o.at.size();
    if (percent > 100) percent = 100;
    if (percent < 50) percent = 50;
    // The mismatches a place may have and still reach the share.
    int allowed = total - (int)(((long long)total * percent + 99) / 100);
    if (beat && beat->compared > 0) {
        // ... and still score above the place to beat: (total - m) / total
        // > matched / compared.
        const int most = total - (int)((long long)beat->matched * total / beat->compared) - 1;
        if (most < allowed) allowed = most;
        if (allowed < 0) return false;
    }
    const int mode = screen.low && screen.high ? MATCH_AROUND : variation > 0 ? MATCH_NEAR : MATCH_EQUAL;
    if (variation < 0) variation = 0;
    // Around each pixel the range already holds what the screen's own
    // smoothing at that size changes; the variation widens it by at most
    // AROUND_MARGIN levels (the resampling's rounding), as a wider margin lets
    // an image of a light label pass on any light area with some dark text.
    if (mode == MATCH_AROUND && variation > AROUND_MARGIN) variation = AROUND_MARGIN;
    Candidate c;
    // A search that may miss pixels gives up on the quick tests when they
    // pass nearly every place, and ranks the places instead.
    const bool thrifty = allowed > 0;
    auto search = [&](bool spare) {
        return mode == MATCH_AROUND ? Search<MATCH_AROUND>(screen, o, corners, variation, allowed, &c, stop, spare)
               : mode == MATCH_NEAR ? Search<MATCH_NEAR>(screen, o, corners, variation, allowed, &c, stop, spare)
                                    : Search<MATCH_EQUAL>(screen, o, corners, 0, allowed, &c, stop, spare);
    };
    int outcome = search(thrifty);
    if (outcome == SEARCH_GAVE_UP) {
        Candidate nearest;
        outcome = mode == MATCH_AROUND ? RankedSearch<MATCH_AROUND>(screen, needle, o, corners, variation, allowed, &c, &nearest)
                  : mode == MATCH_NEAR ? RankedSearch<MATCH_NEAR>(screen, needle, o, corners, variation, allowed, &c, &nearest)
                                       : RankedSearch<MATCH_EQUAL>(screen, needle, o, corners, 0, allowed, &c, &nearest);
        if (outcome == SEARCH_GAVE_UP)  // the image cannot be ranked: every place, pixel by pixel
            outcome = search(false);
        else if (outcome == 0 && closest && !(stop && stop())) {
            *closest = nearest;
            return false;
        }
    }
    const bool ok = outcome == 1;
    if (!ok && stop && stop()) return false;  // stopped: no closest place either
    if (ok && found) *found = c;
    if (closest && !ok)
        *closest = mode == MATCH_AROUND ? ClosestPlace<MATCH_AROUND>(screen, needle, corners, variation)
                   : mode == MATCH_NEAR ? ClosestPlace<MATCH_NEAR>(screen, needle, corners, variation)
                                        : ClosestPlace<MATCH_EQUAL>(screen, needle, corners, 0);
    else if (closest)
        *closest = c;
    return ok;
}

namespace {

inline DWORD ByteMin(DWORD a, DWORD b) {
    DWORD out = 0;
    for (int shift = 0; shift <= 24; shift += 8) {
        const DWORD x = (a >> shift) & 0xFF, y = (b >> shift) & 0xFF;
        out |= (x < y ? x : y) << shift;
    }
    return out;
}

inline DWORD ByteMax(DWORD a, DWORD b) {
    DWORD out = 0;
    for (int shift = 0; shift <= 24; shift += 8) {
        const DWORD x = (a >> shift) & 0xFF, y = (b >> shift) & 0xFF;
        out |= (x > y ? x : y) << shift;
    }
    return out;
}

// Extreme3's first pixels, four at a time; returns how many it did.
IMAGE_SSE2 int Extreme3Wide(const DWORD* a, const DWORD* b, const DWORD* c, DWORD* out, int n, bool greatest) {
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        const __m128i x = _mm_loadu_si128((const __m128i*)(a + i)), y = _mm_loadu_si128((const __m128i*)(b + i)),
                      z = _mm_loadu_si128((const __m128i*)(c + i));
        const __m128i e = greatest ? _mm_max_epu8(_mm_max_epu8(x, y), z) : _mm_min_epu8(_mm_min_epu8(x, y), z);
        _mm_storeu_si128((__m128i*)(out + i), e);
    }
    return i;
}

// out[i] = the least (`greatest` false) or greatest of a[i], b[i], c[i],
// channel by channel.
void Extreme3(const DWORD* a, const DWORD* b, const DWORD* c, DWORD* out, int n, bool greatest) {
    int i = ImageSse2() ? Extreme3Wide(a, b, c, out, n, greatest) : 0;
    for (; i < n; i++) out[i] = greatest ? ByteMax(ByteMax(a[i], b[i]), c[i]) : ByteMin(ByteMin(a[i], b[i]), c[i]);
}

}  // namespace

void NeighbourRanges(const PixelArea& s, std::vector<DWORD>& low, std::vector<DWORD>& high) {
    const int w = (int)(s.area.right - s.area.left), h = (int)(s.area.bottom - s.area.top);
    const size_t size = w > 0 && h > 0 ? (size_t)s.stride * (size_t)h : 0;
    // Kept at their size from one search to the next, not filled first:
    // every pixel of the area is written below.
    if (low.size() != size) low.resize(size);
    if (high.size() != size) high.resize(size);
    if (!size || !s.bits) return;
    // Along each row first: a pixel with its left and right neighbours (at
    // an edge, the one it has), for three rows at a time; then down the
    // columns, each row's ranges with those of the rows above and below.
    std::vector<DWORD> rows((size_t)w * 6);
    auto along = [&](int y) {
        DWORD* l = rows.data() + (size_t)(y % 3) * w;
        DWORD* g = l + (size_t)3 * w;
        const DWORD* p = s.bits + (size_t)y * s.stride;
        if (w == 1) {
            l[0] = g[0] = p[0];
            return;
        }
        l[0] = ByteMin(p[0], p[1]);
        g[0] = ByteMax(p[0], p[1]);
        Extreme3(p, p + 1, p + 2, l + 1, w - 2, false);
        Extreme3(p, p + 1, p + 2, g + 1, w - 2, true);
        l[w - 1] = ByteMin(p[w - 2], p[w - 1]);
        g[w - 1] = ByteMax(p[w - 2], p[w - 1]);
    };
    auto lowRow = [&](int y) { return rows.data() + (size_t)(y % 3) * w; };
    auto highRow = [&](int y) { return rows.data() + (size_t)(y % 3 + 3) * w; };
    along(0);
    for (int y = 0; y < h; y++) {
        if (y + 1 < h) along(y + 1);
        const int above = y > 0 ? y - 1 : y, below = y + 1 < h ? y + 1 : y;
        Extreme3(lowRow(above), lowRow(y), lowRow(below), low.data() + (size_t)y * s.stride, w, false);
        Extreme3(highRow(above), highRow(y), highRow(below), high.data() + (size_t)y * s.stride, w, true);
    }
}
