#include "raw/demosaic.h"

#include "raw/rawimage.h"

#include <algorithm>
#include <cmath>

namespace raw {

bool isBayer(const std::array<uint8_t, 4> &p)
{
    const bool greensOnDiagonal =
        (p[0] == Green && p[3] == Green && p[1] != Green && p[2] != Green && p[1] != p[2]) ||
        (p[1] == Green && p[2] == Green && p[0] != Green && p[3] != Green && p[0] != p[3]);
    return greensOnDiagonal && std::all_of(p.begin(), p.end(), [](uint8_t c) { return c <= Blue; });
}

namespace {

constexpr float kEps = 1e-5f;
// RCD's statistic is blind at the sampling's Nyquist frequency, by design
// (so that the filter array's colour alternation does not count as
// structure): on lines one pixel wide it cannot tell vertical from
// horizontal and the lines come out as a flat false colour. This much of the
// squared first-order differences (across colours) decides there, and is
// lost in the statistic wherever it sees structure. (+3 dB on line pairs
// against the truth; photographs unchanged.)
constexpr float kNyquistWeight = 0.05f;
constexpr float kEpsSq = 1e-10f;

inline float clip01(float v)
{
    return std::min(std::max(v, 0.0f), 1.0f);
}

// The first column of row y, from x0 on, whose colour is not green.
inline int firstNonGreen(const std::array<uint8_t, 4> &p, int y, int x0)
{
    return p[std::size_t((y & 1) * 2 + (x0 & 1))] == Green ? x0 + 1 : x0;
}

// The rows of steps 3, 5 and 6: estimates at every sample of a row into t.
// (Separate functions: gcc trusts __restrict on parameters only, and without
// it does not vectorise loops that read this many neighbours.)
inline void greenRow(const float *__restrict c, const float *__restrict l,
                     const float *__restrict d, float *__restrict t, int w)
{
    const std::ptrdiff_t w1 = w, w2 = 2 * w1, w3 = 3 * w1, w4 = 4 * w1;
    for (int x = 5; x < w - 5; ++x) {
        const float nGrad = kEps + std::abs(c[x - w1] - c[x + w1]) + std::abs(c[x] - c[x - w2]) +
                            std::abs(c[x - w1] - c[x - w3]) + std::abs(c[x - w2] - c[x - w4]);
        const float sGrad = kEps + std::abs(c[x - w1] - c[x + w1]) + std::abs(c[x] - c[x + w2]) +
                            std::abs(c[x + w1] - c[x + w3]) + std::abs(c[x + w2] - c[x + w4]);
        const float wGrad = kEps + std::abs(c[x - 1] - c[x + 1]) + std::abs(c[x] - c[x - 2]) +
                            std::abs(c[x - 1] - c[x - 3]) + std::abs(c[x - 2] - c[x - 4]);
        const float eGrad = kEps + std::abs(c[x - 1] - c[x + 1]) + std::abs(c[x] - c[x + 2]) +
                            std::abs(c[x + 1] - c[x + 3]) + std::abs(c[x + 2] - c[x + 4]);
        const float nEst = c[x - w1] * (1 + (l[x] - l[x - w2]) / (kEps + l[x] + l[x - w2]));
        const float sEst = c[x + w1] * (1 + (l[x] - l[x + w2]) / (kEps + l[x] + l[x + w2]));
        const float wEst = c[x - 1] * (1 + (l[x] - l[x - 2]) / (kEps + l[x] + l[x - 2]));
        const float eEst = c[x + 1] * (1 + (l[x] - l[x + 2]) / (kEps + l[x] + l[x + 2]));
        const float vEst = (sGrad * nEst + nGrad * sEst) / (nGrad + sGrad);
        const float hEst = (eGrad * wEst + wGrad * eEst) / (eGrad + wGrad);
        const float central = d[x];
        const float around =
            0.25f * (d[x - w1 - 1] + d[x - w1 + 1] + d[x + w1 - 1] + d[x + w1 + 1]);
        const float disc = std::abs(0.5f - central) < std::abs(0.5f - around) ? around : central;
        t[x] = clip01(disc * hEst + (1 - disc) * vEst);
    }
}

inline void diagonalRow(const float *__restrict d, const float *__restrict gr,
                        const float *__restrict o, float *__restrict t, int w)
{
    const std::ptrdiff_t w1 = w, w2 = 2 * w1, w3 = 3 * w1;
    for (int x = 7; x < w - 7; ++x) {
        const float central = d[x];
        const float around =
            0.25f * (d[x - w1 - 1] + d[x - w1 + 1] + d[x + w1 - 1] + d[x + w1 + 1]);
        const float disc = std::abs(0.5f - central) < std::abs(0.5f - around) ? around : central;
        const float nwGrad = kEps + std::abs(o[x - w1 - 1] - o[x + w1 + 1]) +
                             std::abs(o[x - w1 - 1] - o[x - w3 - 3]) +
                             std::abs(gr[x] - gr[x - w2 - 2]);
        const float neGrad = kEps + std::abs(o[x - w1 + 1] - o[x + w1 - 1]) +
                             std::abs(o[x - w1 + 1] - o[x - w3 + 3]) +
                             std::abs(gr[x] - gr[x - w2 + 2]);
        const float swGrad = kEps + std::abs(o[x - w1 + 1] - o[x + w1 - 1]) +
                             std::abs(o[x + w1 - 1] - o[x + w3 - 3]) +
                             std::abs(gr[x] - gr[x + w2 - 2]);
        const float seGrad = kEps + std::abs(o[x - w1 - 1] - o[x + w1 + 1]) +
                             std::abs(o[x + w1 + 1] - o[x + w3 + 3]) +
                             std::abs(gr[x] - gr[x + w2 + 2]);
        const float nwEst = o[x - w1 - 1] - gr[x - w1 - 1];
        const float neEst = o[x - w1 + 1] - gr[x - w1 + 1];
        const float swEst = o[x + w1 - 1] - gr[x + w1 - 1];
        const float seEst = o[x + w1 + 1] - gr[x + w1 + 1];
        const float pEst = (nwGrad * seEst + seGrad * nwEst) / (nwGrad + seGrad);
        const float qEst = (neGrad * swEst + swGrad * neEst) / (neGrad + swGrad);
        t[x] = clip01(gr[x] + (1 - disc) * pEst + disc * qEst);
    }
}

inline void cardinalRow(const float *__restrict d, const float *__restrict gr,
                        const float *__restrict o, float *__restrict t, int w)
{
    const std::ptrdiff_t w1 = w, w2 = 2 * w1, w3 = 3 * w1;
    for (int x = kRcdBorder; x < w - kRcdBorder; ++x) {
        const float central = d[x];
        const float around =
            0.25f * (d[x - w1 - 1] + d[x - w1 + 1] + d[x + w1 - 1] + d[x + w1 + 1]);
        const float disc = std::abs(0.5f - central) < std::abs(0.5f - around) ? around : central;
        const float nGrad = kEps + std::abs(gr[x] - gr[x - w2]) + std::abs(o[x - w1] - o[x + w1]) +
                            std::abs(o[x - w1] - o[x - w3]);
        const float sGrad = kEps + std::abs(gr[x] - gr[x + w2]) + std::abs(o[x + w1] - o[x - w1]) +
                            std::abs(o[x + w1] - o[x + w3]);
        const float wGrad = kEps + std::abs(gr[x] - gr[x - 2]) + std::abs(o[x - 1] - o[x + 1]) +
                            std::abs(o[x - 1] - o[x - 3]);
        const float eGrad = kEps + std::abs(gr[x] - gr[x + 2]) + std::abs(o[x + 1] - o[x - 1]) +
                            std::abs(o[x + 1] - o[x + 3]);
        const float nEst = o[x - w1] - gr[x - w1];
        const float sEst = o[x + w1] - gr[x + w1];
        const float wEst = o[x - 1] - gr[x - 1];
        const float eEst = o[x + 1] - gr[x + 1];
        const float vEst = (nGrad * sEst + sGrad * nEst) / (nGrad + sGrad);
        const float hEst = (eGrad * wEst + wGrad * eEst) / (eGrad + wGrad);
        t[x] = clip01(gr[x] + (1 - disc) * vEst + disc * hEst);
    }
}

} // namespace

TOLVIK_VECTOR_CLONES
void demosaicRcd(const TCfaTile &tile, float *const rgb[3], TRcdScratch &s)
{
    const int w = tile.width, h = tile.height;
    const std::size_t n = std::size_t(w) * std::size_t(h);
    if (w < 2 * kRcdBorder + 1 || h < 2 * kRcdBorder + 1)
        return;
    const float *cfa = tile.samples;
    const auto &pat = tile.pattern;
    s.a.resize(n);
    s.b.resize(n);
    s.vh.resize(n);
    s.pq.resize(n);
    float *bufV = s.a.data(), *bufH = s.b.data(), *vhDir = s.vh.data(), *pqDir = s.pq.data();
    const int w1 = w, w2 = 2 * w, w3 = 3 * w;

    // The known samples of each plane.
    for (int y = 0; y < h; ++y) {
        const std::size_t row = std::size_t(y) * std::size_t(w);
        for (int x = 0; x < w; ++x) {
            const int c = pat[std::size_t((y & 1) * 2 + (x & 1))];
            rgb[c][row + std::size_t(x)] = cfa[row + std::size_t(x)];
        }
    }

    // 1. Vertical and horizontal discrimination: the squared response of a
    // colour-difference high-pass filter, summed over three samples along
    // its direction.
    for (int y = 3; y < h - 3; ++y) {
        const float *__restrict c = cfa + std::ptrdiff_t(y) * w;
        float *__restrict v = bufV + std::ptrdiff_t(y) * w;
        float *__restrict hz = bufH + std::ptrdiff_t(y) * w;
        // (Two loops: gcc vectorises each, not the two in one.)
        for (int x = 3; x < w - 3; ++x) {
            const float fv = (c[x - w3] - c[x - w1] - c[x + w1] + c[x + w3]) -
                             3 * (c[x - w2] + c[x + w2]) + 6 * c[x];
            v[x] = fv * fv;
        }
        for (int x = 3; x < w - 3; ++x) {
            const float fh =
                (c[x - 3] - c[x - 1] - c[x + 1] + c[x + 3]) - 3 * (c[x - 2] + c[x + 2]) + 6 * c[x];
            hz[x] = fh * fh;
        }
    }
    for (int y = 4; y < h - 4; ++y) {
        const float *__restrict v = bufV + std::ptrdiff_t(y) * w;
        float *__restrict hz = bufH + std::ptrdiff_t(y) * w;
        float *__restrict d = vhDir + std::ptrdiff_t(y) * w;
        const float *__restrict c = cfa + std::ptrdiff_t(y) * w;
        for (int x = 4; x < w - 4; ++x) {
            const float dv =
                (c[x] - c[x - w1]) * (c[x] - c[x - w1]) + (c[x] - c[x + w1]) * (c[x] - c[x + w1]);
            const float dh =
                (c[x] - c[x - 1]) * (c[x] - c[x - 1]) + (c[x] - c[x + 1]) * (c[x] - c[x + 1]);
            const float vs = std::max(kEpsSq, v[x - w1] + v[x] + v[x + w1] + kNyquistWeight * dv);
            const float hs = std::max(kEpsSq, hz[x - 1] + hz[x] + hz[x + 1] + kNyquistWeight * dh);
            d[x] = vs / (vs + hs);
        }
    }

    // 2. A low-pass filter of the mosaic (into bufV, free now).
    float *lpf = bufV;
    for (int y = 1; y < h - 1; ++y) {
        const float *__restrict c = cfa + std::ptrdiff_t(y) * w;
        float *__restrict l = lpf + std::ptrdiff_t(y) * w;
        for (int x = 1; x < w - 1; ++x)
            l[x] = c[x] + 0.5f * (c[x - w1] + c[x + w1] + c[x - 1] + c[x + 1]) +
                   0.25f * (c[x - w1 - 1] + c[x - w1 + 1] + c[x + w1 - 1] + c[x + w1 + 1]);
    }

    // 3. Green at red and blue: each cardinal neighbour corrected by the
    // ratio of the low-pass filter, weighted by the inverse gradients, the
    // vertical and horizontal estimates mixed by the discrimination (that of
    // the diagonal neighbours where it is the more decided).
    // Each row's estimates are computed at every sample, which gcc vectorises,
    // and kept where the sample is not green (steps 5 and 6 alike).
    float *g = rgb[1];
    s.row.resize(std::size_t(w));
    float *__restrict t = s.row.data();
    for (int y = 5; y < h - 5; ++y) {
        const std::ptrdiff_t row = std::ptrdiff_t(y) * w;
        greenRow(cfa + row, lpf + row, vhDir + row, t, w);
        float *gr = g + row;
        for (int x = firstNonGreen(pat, y, 5); x < w - 5; x += 2)
            gr[x] = t[x];
    }

    // 4. Diagonal discrimination, as in 1 along the two diagonals (P: top
    // left to bottom right, Q: top right to bottom left).
    float *bufP = bufV, *bufQ = bufH;
    for (int y = 3; y < h - 3; ++y) {
        const float *__restrict c = cfa + std::ptrdiff_t(y) * w;
        float *__restrict p = bufP + std::ptrdiff_t(y) * w;
        float *__restrict q = bufQ + std::ptrdiff_t(y) * w;
        for (int x = 3; x < w - 3; ++x) {
            const float fp = (c[x - w3 - 3] - c[x - w1 - 1] - c[x + w1 + 1] + c[x + w3 + 3]) -
                             3 * (c[x - w2 - 2] + c[x + w2 + 2]) + 6 * c[x];
            p[x] = fp * fp;
        }
        for (int x = 3; x < w - 3; ++x) {
            const float fq = (c[x - w3 + 3] - c[x - w1 + 1] - c[x + w1 - 1] + c[x + w3 - 3]) -
                             3 * (c[x - w2 + 2] + c[x + w2 - 2]) + 6 * c[x];
            q[x] = fq * fq;
        }
    }
    for (int y = 4; y < h - 4; ++y) {
        const float *__restrict p = bufP + std::ptrdiff_t(y) * w;
        float *__restrict q = bufQ + std::ptrdiff_t(y) * w;
        float *d = pqDir + std::ptrdiff_t(y) * w;
        for (int x = 4; x < w - 4; ++x) {
            const float ps = std::max(kEpsSq, p[x - w1 - 1] + p[x] + p[x + w1 + 1]);
            const float qs = std::max(kEpsSq, q[x - w1 + 1] + q[x] + q[x + w1 - 1]);
            d[x] = ps / (ps + qs);
        }
    }

    // 5. Red at blue and blue at red: green plus the colour difference of the
    // diagonal neighbours, weighted by the inverse gradients.
    for (int y = 7; y < h - 7; ++y) {
        const std::ptrdiff_t row = std::ptrdiff_t(y) * w;
        const int first = firstNonGreen(pat, y, 7);
        // A row's samples that are not green are all red or all blue.
        const int other = 2 - pat[std::size_t((y & 1) * 2 + (first & 1))];
        diagonalRow(pqDir + row, g + row, rgb[other] + row, t, w);
        float *out = rgb[other] + row;
        for (int x = first; x < w - 7; x += 2)
            out[x] = t[x];
    }

    // 6. Red and blue at green: green plus the colour difference of the
    // cardinal neighbours, mixed as green was.
    s.row2.resize(std::size_t(w));
    float *__restrict t2 = s.row2.data();
    for (int y = kRcdBorder; y < h - kRcdBorder; ++y) {
        const std::ptrdiff_t row = std::ptrdiff_t(y) * w;
        cardinalRow(vhDir + row, g + row, rgb[0] + row, t, w);
        cardinalRow(vhDir + row, g + row, rgb[2] + row, t2, w);
        float *outR = rgb[0] + row, *outB = rgb[2] + row;
        const int first =
            firstNonGreen(pat, y, kRcdBorder) == kRcdBorder ? kRcdBorder + 1 : kRcdBorder;
        for (int x = first; x < w - kRcdBorder; x += 2) {
            outR[x] = t[x];
            outB[x] = t2[x];
        }
    }
}

void demosaicBilinear(const TCfaTile &tile, float *const rgb[3])
{
    const int w = tile.width, h = tile.height;
    const float *cfa = tile.samples;
    const auto colour = [&](int x, int y) {
        return int(tile.pattern[std::size_t((y & 1) * 2 + (x & 1))]);
    };
    for (int y = 1; y < h - 1; ++y) {
        for (int x = 1; x < w - 1; ++x) {
            float sum[3] = {}, count[3] = {};
            // The sample itself, else the mean of the 3 x 3 neighbours of each colour.
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int c = colour(x + dx, y + dy);
                    sum[c] += cfa[std::ptrdiff_t(y + dy) * w + x + dx];
                    count[c] += 1;
                }
            const int own = colour(x, y);
            for (int c = 0; c < 3; ++c)
                rgb[c][std::ptrdiff_t(y) * w + x] =
                    c == own ? cfa[std::ptrdiff_t(y) * w + x] : sum[c] / count[c];
        }
    }
}

} // namespace raw
