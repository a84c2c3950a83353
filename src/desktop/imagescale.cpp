// Resampling by weights: each pixel of the result is a weighted sum of
// source pixels, the weights a product of one table for the columns and one
// for the rows. Shrinking weights each source pixel by how much of it the
// result pixel covers (area averaging, which keeps thin lines and text as a
// lighter smear, as a screen at that scale draws them); growing weights the
// two nearest source pixels by distance (bilinear).
#include "desktop/imagescale.h"

#include <math.h>

const int CommonScales[9] = {100, 125, 150, 175, 200, 80, 67, 57, 50};

namespace {

struct Tap {
    int from;       // first source index
    int count;      // source indexes from..from+count-1
    float weight[8];  // enough for a shrink to 1/8
};

std::vector<Tap> Weights(int source, int target) {
    std::vector<Tap> taps((size_t)target);
    const double ratio = (double)source / target;
    for (int o = 0; o < target; o++) {
        Tap& t = taps[(size_t)o];
        t.count = 0;
        if (target < source) {
            double start = o * ratio, end = (o + 1) * ratio;
            t.from = (int)floor(start);
            for (int s = t.from; s < end && t.count < 8 && s < source; s++) {
                double low = s > start ? s : start, high = s + 1 < end ? s + 1 : end;
                t.weight[t.count++] = (float)((high - low) / ratio);
            }
        } else {
            double at = (o + 0.5) * ratio - 0.5;
            if (at < 0) at = 0;
            int s = (int)floor(at);
            if (s >= source - 1) {
                t.from = source - 1;
                t.weight[t.count++] = 1.0f;
            } else {
                double f = at - s;
                t.from = s;
                t.weight[t.count++] = (float)(1 - f);
                t.weight[t.count++] = (float)f;
            }
        }
    }
    return taps;
}

}  // namespace

Needle ScaleNeedle(const Needle& in, int percent) {
    if (percent == 100 || in.width <= 0 || in.height <= 0) return in;
    Needle out;
    out.width = (int)lround(in.width * percent / 100.0);
    out.height = (int)lround(in.height * percent / 100.0);
    if (out.width < 1) out.width = 1;
    if (out.height < 1) out.height = 1;
    const std::vector<Tap> columns = Weights(in.width, out.width), rows = Weights(in.height, out.height);
    out.raw.resize((size_t)out.width * out.height);
    const bool masked = !in.skip.empty();
    if (masked) out.skip.assign(out.raw.size(), 0);
    for (int oy = 0; oy < out.height; oy++) {
        const Tap& ty = rows[(size_t)oy];
        for (int ox = 0; ox < out.width; ox++) {
            const Tap& tx = columns[(size_t)ox];
            float r = 0, g = 0, b = 0, kept = 0, skipped = 0;
            for (int j = 0; j < ty.count; j++) {
                const int sy = ty.from + j;
                for (int i = 0; i < tx.count; i++) {
                    const size_t at = (size_t)sy * in.width + (size_t)(tx.from + i);
                    const float w = ty.weight[j] * tx.weight[i];
                    if (masked && in.skip[at]) {
                        skipped += w;
                        continue;
                    }
                    const DWORD p = in.raw[at];
                    r += w * (float)((p >> 16) & 0xFF);
                    g += w * (float)((p >> 8) & 0xFF);
                    b += w * (float)(p & 0xFF);
                    kept += w;
                }
            }
            const size_t o = (size_t)oy * out.width + (size_t)ox;
            if (masked && skipped > kept) {
                out.skip[o] = 1;
                continue;
            }
            if (kept <= 0) kept = 1;
            auto channel = [&](float v) { return (DWORD)(v / kept + 0.5f > 255 ? 255 : v / kept + 0.5f); };
            out.raw[o] = (channel(r) << 16) | (channel(g) << 8) | channel(b);
        }
    }
    return out;
}
