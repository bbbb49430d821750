#include "raw/sensorcheck.h"

#include "raw/decode.h"

#include <QMutex>

#include <algorithm>
#include <array>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace raw {

namespace {

// Frames are counted per pixel in 16 bits.
constexpr int kMaxFrames = 65535;
// Twice the M9's 18.5 million pixels: the counts take 4 bytes a pixel, and a
// file claiming more is no frame of the cameras checked.
constexpr std::size_t kMaxSensorPixels = 40'000'000;
// Frames decoded at a time: each holds a decoded frame (37 MB for an M9);
// more only wait for the per-pixel pass, which takes one frame at a time.
constexpr int kMaxDecodingThreads = 8;
// A sensor with more outstanding pixels than this is not one to map pixel by
// pixel (and a list this long is no help to anyone).
constexpr std::size_t kMaxDefects = 100'000;
// Pixels marked outstanding in one frame, to leave their blocks out of the
// spot planes; a frame with more is noise, and its other blocks still count.
constexpr std::size_t kMaxMarksPerFrame = 1u << 20;
// Blocks of the spot planes: two cells of each filter colour a side.
constexpr int kBlock = 4;
// The smoothing a block is compared with, in blocks each side: twice the
// largest spot's radius (40 pixels), so a spot hardly moves its own background.
constexpr int kSmoothRadius = 20;
// Where scene detail competes with a spot: its own size, in blocks each side.
constexpr int kFlatRadius = 6;
// The local spread (natural log) below which a scene counts as flat: the
// light's own grain; flatter places do not weigh more.
constexpr float kFlatFloor = 0.02f;
// What the glass itself may add to every frame's spread around a block (the
// variance of the natural log), up to the darkest dust's. How much a block's
// average rests on counts each frame's flatness beyond the glass's own spread:
// a strong spot is no scene detail, and must not have its average pulled
// towards none as if every frame were busy there. The frames' weights are
// summed for each of these until the average shows which holds where.
constexpr std::array<float, 3> kGlassSpreads{0.005f, 0.025f, 0.125f};
// A frame's say about a block is capped (natural log) for the search: an edge
// in the scene is no statement about the glass and must not outweigh other
// frames.
constexpr float kRatioCap = 0.4f;
// ... and for measuring the spots found, only at the darkest dust's (90 %):
// a strong spot says more than the search's cap in every frame.
constexpr float kWideRatioCap = 2.3f;
// What a block's average is pulled towards none by, for the search: the
// weight of this many frames of a perfectly flat scene. Where the scene was
// busy in every frame the average says little, and must not make spots.
constexpr double kPriorFrames = 0.5;
// A block is compared with its smoothing when this share of a full box is
// valid there (a box at the image's corner holds a quarter of one).
constexpr float kMinValidShare = 0.0625f;
// The spot radii the search looks at, in pixels (blobs of 8 to 40).
constexpr std::array<double, 6> kSearchRadii{8, 11, 16, 22, 30, 40};
// The radii a fit may end at, in pixels: a little beyond the searched ones.
constexpr double kFitRadiusMin = 6, kFitRadiusMax = 48;
// The fit looks this far from a spot's centre, in blocks (60 pixels).
constexpr int kFitWindow = 15;
// The neighbourhood whose spread of the response a blob is measured against,
// in blocks each side (200 pixels), and how far it must stand out of it.
constexpr int kSpreadRadius = 50;
constexpr double kLocalSigmas = 6;
// A blob stands out at this many times the spread of the search's response...
constexpr double kSigmas = 6;
// ... and by at least this much (natural log, 3 %): less is below what the
// averaged scene still varies by on a card of a few dozen frames.
constexpr double kMinSpotLog = 0.03;
// The search's least response: a little under what the smallest spot of
// 3 % gives, whose centre fills part of a block only.
constexpr double kMinBlobLog = 0.02;
// A spot's core in sectors, each of which must show at least this share of
// the fitted spot: a shared edge in the scene shows on one side only.
constexpr int kSectors = 8;
constexpr double kRoundness = 0.6;
// A spot weaker than this share of a stronger one, within this many of the
// stronger one's radii, is the stronger one's echo.
constexpr double kEchoReach = 3, kEchoShare = 0.35;
// Spots are looked for from this many frames on: in fewer the scene cannot
// average away.
constexpr int kMinSpotFrames = 5;
// Candidates fitted at most: more are the scene, not the glass.
constexpr std::size_t kMaxSpots = 500;

struct TLevels {
    int black = 0;         // the smallest black level of the frame
    int low = 0;           // at or below: at the black level
    int clippedLow = 0;    // at or below: cut off at black
    int high = 0;          // at or above: at the white level
    int hotMargin = 0;     // how far above its neighbours a hot pixel stands at least
    int contrastLimit = 0; // neighbours all above this are not at black
    float blackMean = 0;
    float dark = 0; // blocks darker than this (above black) are too dark for spots
};

TLevels levelsOf(const TRawInfo &info)
{
    const int cells = std::clamp(info.blackRepeatRows * info.blackRepeatColumns, 1, 4);
    double bmin = info.blackLevel[0], bmax = bmin, bsum = 0;
    for (int i = 0; i < cells; ++i) {
        bmin = std::min(bmin, info.blackLevel[std::size_t(i)]);
        bmax = std::max(bmax, info.blackLevel[std::size_t(i)]);
        bsum += info.blackLevel[std::size_t(i)];
    }
    const auto extent = [](const std::vector<float> &deltas, bool largest) {
        double e = 0;
        for (float v : deltas)
            e = largest ? std::max(e, double(v)) : std::min(e, double(v));
        return e;
    };
    bmin += extent(info.blackDeltaH, false) + extent(info.blackDeltaV, false);
    bmax += extent(info.blackDeltaH, true) + extent(info.blackDeltaV, true);
    const double white = info.whiteLevel;
    const double range = std::max(16.0, white - bmax);
    const double tolerance = std::max(2.0, 0.01 * range); // clearly off a level
    TLevels l;
    l.black = int(std::floor(bmin));
    l.low = int(std::lround(bmax + std::max(2.0, 0.002 * range))); // a dead pixel's read noise
    l.clippedLow = int(std::ceil(bmax));
    l.high = int(std::lround(white - tolerance));
    l.hotMargin = int(std::lround(std::max(4.0, 0.02 * range)));
    l.contrastLimit = int(std::lround(bmax + tolerance));
    l.blackMean = float(bsum / cells);
    l.dark = float(0.002 * range);
    return l;
}

// One row of the defect test: each pixel against the largest of its eight
// same-colour neighbours S pixels away.
template <int S>
void defectRow(const uint16_t *r0, const uint16_t *r1, const uint16_t *r2, int x0, int x1,
               const TLevels &l, uint16_t *hot, uint8_t *flags, uint8_t *contrast, uint8_t *hotRow)
{
    const int black = l.black, low = l.low, high = l.high, margin0 = l.hotMargin,
              contrastLimit = l.contrastLimit;
    for (int x = x0; x < x1; ++x) {
        const int a = std::max(std::max(r0[x - S], r0[x]), std::max(r0[x + S], r1[x - S]));
        const int b = std::max(std::max(r1[x + S], r2[x - S]), std::max(r2[x], r2[x + S]));
        const int mx = std::max(a, b);
        const int c = std::min(std::min(r0[x - S], r0[x]), std::min(r0[x + S], r1[x - S]));
        const int e = std::min(std::min(r1[x + S], r2[x - S]), std::min(r2[x], r2[x + S]));
        const int mn = std::min(c, e);
        const int v = r1[x];
        const int margin = std::max(margin0, (mx - black) >> 2);
        const uint8_t isHot = v > mx + margin;
        const uint8_t white = v >= high;
        const uint8_t atBlack = v <= low;
        hot[x] = uint16_t(hot[x] + isHot);
        flags[x] &= uint8_t(white | (atBlack << 1));
        contrast[x] = uint8_t(contrast[x] +
                              (atBlack & uint8_t(mn > contrastLimit) & uint8_t(contrast[x] < 255)));
        hotRow[x] = isHot;
    }
}

// Sums of a box of (2 r + 1)^2 around each cell, the box cut at the edges.
void boxSums(const std::vector<float> &in, std::vector<float> &out, int w, int h, int r,
             std::vector<double> &line)
{
    out.resize(in.size());
    line.resize(std::size_t(std::max(w, h)));
    for (int y = 0; y < h; ++y) {
        const float *s = in.data() + std::size_t(y) * std::size_t(w);
        float *o = out.data() + std::size_t(y) * std::size_t(w);
        double sum = 0;
        for (int x = 0; x < std::min(r, w); ++x)
            sum += double(s[x]);
        for (int x = 0; x < w; ++x) {
            if (x + r < w)
                sum += double(s[x + r]);
            if (x - r - 1 >= 0)
                sum -= double(s[x - r - 1]);
            o[x] = float(sum);
        }
    }
    for (int x = 0; x < w; ++x) {
        for (int y = 0; y < h; ++y)
            line[std::size_t(y)] = double(out[std::size_t(y) * std::size_t(w) + std::size_t(x)]);
        double sum = 0;
        for (int y = 0; y < std::min(r, h); ++y)
            sum += line[std::size_t(y)];
        for (int y = 0; y < h; ++y) {
            if (y + r < h)
                sum += line[std::size_t(y + r)];
            if (y - r - 1 >= 0)
                sum -= line[std::size_t(y - r - 1)];
            out[std::size_t(y) * std::size_t(w) + std::size_t(x)] = float(sum);
        }
    }
}

// The soft disc a particle on the cover glass casts: 1 at the centre, 0 at
// the radius.
double spotShape(double d, double radius)
{
    return d < radius ? 0.5 * (1 + std::cos(M_PI * d / radius)) : 0.0;
}

// The light ring corrosion often leaves around a bright spot: 0 at the
// radius, 1 at 1.3 radii, 0 from 1.6 radii on.
double haloShape(double d, double radius)
{
    const double s = d / radius - 1;
    return s > 0 && s < 0.6 ? std::pow(std::sin(M_PI * s / 0.6), 2) : 0.0;
}

} // namespace

const char *defectKindName(TSensorDefect::Kind kind)
{
    switch (kind) {
    case TSensorDefect::Hot: return "hot";
    case TSensorDefect::Stuck: return "stuck";
    case TSensorDefect::Dead: return "dead";
    }
    return "";
}

struct TSensorCheck::Impl {
    TRawInfo reference;
    int step = 2; // same-colour neighbours' distance
    // The active area, inside the image.
    int activeLeft = 0, activeTop = 0, activeRight = 0, activeBottom = 0;
    int blocksW = 0, blocksH = 0;

    mutable QMutex countsMutex;
    int frames = 0, otherCamera = 0, otherSize = 0, cutShort = 0;

    QMutex defectMutex;            // the per-pixel counts
    std::vector<uint16_t> hot;     // frames a pixel stood above its neighbours
    std::vector<uint8_t> flags;    // 1: at white in every frame, 2: at black in every frame
    std::vector<uint8_t> contrast; // frames at black while its neighbours were not

    QMutex spotMutex; // the block planes
    // Per block, the sums over the frames of the weight and of the weight
    // times the ratio capped and capped wide.
    std::vector<float> weightSum, ratioSum, wideSum;
    // Per glass spread and block, the sum of the weights beyond that spread.
    std::array<std::vector<float>, kGlassSpreads.size()> beyondGlass;
    // The sums of the squared weight and of the weight times the squared wide
    // ratio: how much the frames' average varies.
    std::vector<float> weightSquares, wideSquares;
    std::vector<float> leastSpread; // the flattest frame's spread at a block
    double frameWeights = 0;        // the sum of the frames' own weights
    std::vector<uint16_t> validFrames;

    void frameSpots(const TRawImage &image, const TLevels &l, const std::vector<int> &marks,
                    double weight);
    std::vector<TSensorSpot> findSpots(int frameCount) const;
};

TSensorCheck::TSensorCheck(const TRawInfo &reference) : d(std::make_unique<Impl>())
{
    d->reference = reference;
    d->step = reference.layout == TLayout::Cfa ? 2 : 1;
    std::size_t pixels =
        std::size_t(std::max(0, reference.width)) * std::size_t(std::max(0, reference.height));
    if (pixels > kMaxSensorPixels) {
        // Nothing is allocated; every frame is then of another size.
        d->reference.width = d->reference.height = d->reference.activeRight =
            d->reference.activeBottom = 0;
        pixels = 0;
    }
    const TRawInfo &r = d->reference;
    d->hot.assign(pixels, 0);
    d->flags.assign(pixels, 3);
    d->contrast.assign(pixels, 0);
    d->activeLeft = std::clamp(r.activeLeft, 0, std::max(0, r.width));
    d->activeRight = std::clamp(r.activeRight, d->activeLeft, std::max(0, r.width));
    d->activeTop = std::clamp(r.activeTop, 0, std::max(0, r.height));
    d->activeBottom = std::clamp(r.activeBottom, d->activeTop, std::max(0, r.height));
    d->blocksW = (d->activeRight - d->activeLeft) / kBlock;
    d->blocksH = (d->activeBottom - d->activeTop) / kBlock;
    const std::size_t blocks = std::size_t(d->blocksW) * std::size_t(d->blocksH);
    d->weightSum.assign(blocks, 0);
    d->ratioSum.assign(blocks, 0);
    d->wideSum.assign(blocks, 0);
    for (std::vector<float> &sums : d->beyondGlass)
        sums.assign(blocks, 0);
    d->weightSquares.assign(blocks, 0);
    d->wideSquares.assign(blocks, 0);
    d->leastSpread.assign(blocks, HUGE_VALF);
    d->validFrames.assign(blocks, 0);
}

TSensorCheck::~TSensorCheck() = default;

bool TSensorCheck::acceptedModel(const QString &model)
{
    return model == QLatin1String("M9 Digital Camera") || model == QLatin1String("M Monochrom");
}

void TSensorCheck::countSkipped(Verdict verdict)
{
    QMutexLocker lock(&d->countsMutex);
    switch (verdict) {
    case OtherCamera: ++d->otherCamera; break;
    case OtherSize: ++d->otherSize; break;
    case CutShort: ++d->cutShort; break;
    case Used: break;
    }
}

TSensorCheck::Verdict TSensorCheck::addFrame(const TRawImage &image, double weight)
{
    const TRawInfo &r = d->reference, &i = image.info;
    Verdict verdict = Used;
    if (i.model != r.model || i.layout != r.layout)
        verdict = OtherCamera;
    else if (i.width != r.width || i.height != r.height || i.activeLeft != r.activeLeft ||
             i.activeTop != r.activeTop || i.activeRight != r.activeRight ||
             i.activeBottom != r.activeBottom || i.cfa != r.cfa)
        verdict = OtherSize;
    else if (image.pixels.size() != std::size_t(r.width) * std::size_t(r.height) ||
             d->hot.size() != image.pixels.size())
        verdict = CutShort;
    if (verdict == Used) {
        QMutexLocker lock(&d->countsMutex);
        if (d->frames >= kMaxFrames)
            verdict = OtherSize; // no room to count it (never on a card)
        else
            ++d->frames;
    }
    if (verdict != Used) {
        countSkipped(verdict);
        return verdict;
    }

    const TLevels l = levelsOf(i);
    const int w = i.width, s = d->step;
    const int x0 = d->activeLeft + s, x1 = d->activeRight - s;
    const int y0 = d->activeTop + s, y1 = d->activeBottom - s;
    std::vector<int> marks; // pixels outstanding in this frame
    if (x0 < x1 && y0 < y1) {
        std::vector<uint8_t> hotRow(static_cast<std::size_t>(w));
        QMutexLocker lock(&d->defectMutex);
        for (int y = y0; y < y1; ++y) {
            const std::size_t row = std::size_t(y) * std::size_t(w);
            const uint16_t *p = image.pixels.data() + row;
            const std::size_t stride = std::size_t(s) * std::size_t(w);
            if (s == 2)
                defectRow<2>(p - stride, p, p + stride, x0, x1, l, d->hot.data() + row,
                             d->flags.data() + row, d->contrast.data() + row, hotRow.data());
            else
                defectRow<1>(p - stride, p, p + stride, x0, x1, l, d->hot.data() + row,
                             d->flags.data() + row, d->contrast.data() + row, hotRow.data());
            const int by = (y - d->activeTop) / kBlock;
            for (int x = x0; x < x1; ++x) {
                const int bx = (x - d->activeLeft) / kBlock;
                if (hotRow[std::size_t(x)] && bx < d->blocksW && by < d->blocksH &&
                    marks.size() < kMaxMarksPerFrame)
                    marks.push_back(by * d->blocksW + bx);
            }
        }
    }
    d->frameSpots(image, l, marks, weight);
    return Used;
}

void TSensorCheck::Impl::frameSpots(const TRawImage &image, const TLevels &l,
                                    const std::vector<int> &marks, double weight)
{
    const int bw = blocksW, bh = blocksH, w = image.info.width;
    const std::size_t blocks = std::size_t(bw) * std::size_t(bh);
    if (!blocks || !(weight > 0))
        return;
    // Block means above black, as logarithms; 0 where the block is left out.
    std::vector<float> logMean(blocks), valid(blocks), squares(blocks);
    std::vector<uint8_t> bad(blocks, 0);
    for (int m : marks)
        bad[std::size_t(m)] = 1;
    const auto width = static_cast<std::size_t>(bw);
    std::vector<int> sum(width), lo(width), hi(width);
    for (int by = 0; by < bh; ++by) {
        std::fill(sum.begin(), sum.end(), 0);
        std::fill(lo.begin(), lo.end(), 65535);
        std::fill(hi.begin(), hi.end(), 0);
        for (int r = 0; r < kBlock; ++r) {
            const uint16_t *p = image.pixels.data() +
                                std::size_t(activeTop + by * kBlock + r) * std::size_t(w) +
                                std::size_t(activeLeft);
            for (int bx = 0; bx < bw; ++bx) {
                const uint16_t *q = p + bx * kBlock;
                const int a = q[0], b = q[1], c = q[2], e = q[3];
                sum[std::size_t(bx)] += a + b + c + e;
                lo[std::size_t(bx)] =
                    std::min(lo[std::size_t(bx)], std::min(std::min(a, b), std::min(c, e)));
                hi[std::size_t(bx)] =
                    std::max(hi[std::size_t(bx)], std::max(std::max(a, b), std::max(c, e)));
            }
        }
        for (int bx = 0; bx < bw; ++bx) {
            const std::size_t k = std::size_t(by) * std::size_t(bw) + std::size_t(bx);
            const float mean = float(sum[std::size_t(bx)]) / (kBlock * kBlock) - l.blackMean;
            const bool ok = !bad[k] && lo[std::size_t(bx)] > l.clippedLow &&
                            hi[std::size_t(bx)] < l.high && mean > l.dark;
            const float v = ok ? std::log(mean) : 0.f;
            logMean[k] = v;
            squares[k] = v * v;
            valid[k] = ok ? 1.f : 0.f;
        }
    }
    // Each block against the frame's smoothing of itself, and how flat the
    // scene is around it.
    std::vector<double> line;
    std::vector<float> smoothL, smoothN, flatL, flatL2, flatN;
    boxSums(logMean, smoothL, bw, bh, kSmoothRadius, line);
    boxSums(valid, smoothN, bw, bh, kSmoothRadius, line);
    boxSums(logMean, flatL, bw, bh, kFlatRadius, line);
    boxSums(squares, flatL2, bw, bh, kFlatRadius, line);
    boxSums(valid, flatN, bw, bh, kFlatRadius, line);
    const float smoothFull = float((2 * kSmoothRadius + 1) * (2 * kSmoothRadius + 1));
    std::vector<float> &ratio = squares, &wide = flatL, &spread = flatL2; // reused
    for (std::size_t k = 0; k < blocks; ++k) {
        const bool use = valid[k] > 0 && smoothN[k] >= kMinValidShare * smoothFull && flatN[k] >= 2;
        if (!use) {
            ratio[k] = wide[k] = 0;
            spread[k] = -1; // no say
            continue;
        }
        const float mean = flatL[k] / flatN[k];
        spread[k] = std::max(0.f, flatL2[k] / flatN[k] - mean * mean);
        const float difference = logMean[k] - smoothL[k] / smoothN[k];
        ratio[k] = std::clamp(difference, -kRatioCap, kRatioCap);
        wide[k] = std::clamp(difference, -kWideRatioCap, kWideRatioCap);
    }
    const float floor2 = kFlatFloor * kFlatFloor, frameWeight = float(weight);
    QMutexLocker lock(&spotMutex);
    frameWeights += weight;
    for (std::size_t g = 0; g < kGlassSpreads.size(); ++g) {
        float *sums = beyondGlass[g].data();
        const float glass = kGlassSpreads[g];
        for (std::size_t k = 0; k < blocks; ++k)
            sums[k] +=
                spread[k] < 0 ? 0.f : frameWeight / (std::max(0.f, spread[k] - glass) + floor2);
    }
    for (std::size_t k = 0; k < blocks; ++k) {
        if (spread[k] < 0)
            continue;
        const float w = frameWeight / (spread[k] + floor2);
        weightSum[k] += w;
        ratioSum[k] += w * ratio[k];
        wideSum[k] += w * wide[k];
        weightSquares[k] += w * w;
        wideSquares[k] += w * wide[k] * wide[k];
        leastSpread[k] = std::min(leastSpread[k], spread[k]);
        ++validFrames[k];
    }
}

std::vector<TSensorSpot> TSensorCheck::Impl::findSpots(int frameCount) const
{
    const int bw = blocksW, bh = blocksH;
    const std::size_t blocks = std::size_t(bw) * std::size_t(bh);
    if (bw < 3 || bh < 3)
        return {};
    // The frames' average: what the glass does to each block.
    // m: the average, capped wide, that spots are measured on; shrunk: the
    // search's, of capped ratios, pulled towards none where it rests on little.
    std::vector<float> m(blocks), shrunk(blocks);
    std::vector<uint8_t> has(blocks);
    const double frames = std::max(1, frameCount);
    const float prior =
        float(kPriorFrames * frameWeights / frames / double(kFlatFloor * kFlatFloor));
    std::vector<float> hasPlane(blocks);
    std::vector<double> line;
    {
        // The glass's own spread around each block: the spread of the average
        // weighted as if there were none, less what that average varies by
        // from the frames' disagreement, and no more than the flattest frame's.
        std::vector<float> squares(blocks), noise(blocks), sumN, sumM, sumM2, sumNoise;
        for (std::size_t k = 0; k < blocks; ++k) {
            has[k] = weightSum[k] > 0;
            hasPlane[k] = has[k];
            if (!has[k]) {
                m[k] = squares[k] = noise[k] = 0;
                continue;
            }
            const float w = weightSum[k];
            m[k] = wideSum[k] / w;
            squares[k] = m[k] * m[k];
            // A weighted average's variance from the frames' scatter about it:
            // with q the sum of the squared weights over the squared sum (one
            // over the frames that count), the scatter times q / (1 - q).
            const float q = std::min(0.999f, weightSquares[k] / (w * w));
            noise[k] = std::max(0.f, wideSquares[k] / w - squares[k]) * q / (1 - q);
        }
        boxSums(hasPlane, sumN, bw, bh, kFlatRadius, line);
        boxSums(m, sumM, bw, bh, kFlatRadius, line);
        boxSums(squares, sumM2, bw, bh, kFlatRadius, line);
        boxSums(noise, sumNoise, bw, bh, kFlatRadius, line);
        for (std::size_t k = 0; k < blocks; ++k) {
            if (!has[k]) {
                shrunk[k] = 0;
                continue;
            }
            const float mean = sumM[k] / sumN[k];
            const float glass = std::min(
                leastSpread[k], std::max(0.f, (sumM2[k] - sumNoise[k]) / sumN[k] - mean * mean));
            // The weight at that spread, between the levels kept around it
            // (geometrically: a frame a little flatter than a level weighs as
            // a flat one there).
            float below = weightSum[k], above = below, t = 1;
            for (std::size_t g = 0; g < kGlassSpreads.size() && t >= 1; ++g) {
                const float from = g ? kGlassSpreads[g - 1] : 0.f;
                below = above;
                above = beyondGlass[g][k];
                t = std::min(1.f, (glass - from) / (kGlassSpreads[g] - from));
            }
            const float rests = below * std::pow(above / below, t);
            shrunk[k] = ratioSum[k] / weightSum[k] * rests / (rests + prior);
        }
    }
    const std::size_t iw = std::size_t(bw) + 1;
    std::vector<double> im(iw * (std::size_t(bh) + 1)), in(im.size());
    for (int y = 0; y < bh; ++y) {
        for (int x = 0; x < bw; ++x) {
            const std::size_t k = std::size_t(y) * std::size_t(bw) + std::size_t(x);
            const std::size_t i = std::size_t(y + 1) * iw + std::size_t(x + 1);
            im[i] = double(shrunk[k]) + im[i - 1] + im[i - iw] - im[i - iw - 1];
            in[i] = double(has[k]) + in[i - 1] + in[i - iw] - in[i - iw - 1];
        }
    }
    // Sum and count of the blocks of a box (inclusive, cut at the edges).
    const auto box = [&](int x0, int y0, int x1, int y1, double &sum, double &count) {
        x0 = std::max(x0, 0), y0 = std::max(y0, 0);
        x1 = std::min(x1, bw - 1), y1 = std::min(y1, bh - 1);
        if (x0 > x1 || y0 > y1) {
            sum = count = 0;
            return;
        }
        const std::size_t a = std::size_t(y0) * iw + std::size_t(x0),
                          b = std::size_t(y0) * iw + std::size_t(x1 + 1),
                          c = std::size_t(y1 + 1) * iw + std::size_t(x0),
                          e = std::size_t(y1 + 1) * iw + std::size_t(x1 + 1);
        sum = im[e] - im[b] - im[c] + im[a];
        count = in[e] - in[b] - in[c] + in[a];
    };

    // The search: a centre against a ring around it, at each radius.
    struct Candidate {
        int bx, by;
        double radius, response, score;
    };
    std::vector<Candidate> candidates;
    std::vector<float> response(blocks), magnitudes, squaredResponse(blocks), localSpread, counts;
    boxSums(hasPlane, counts, bw, bh, kSpreadRadius, line);
    for (const double radius : kSearchRadii) {
        const double rb = radius / kBlock;
        const int a = int(std::floor(0.3 * rb)), e = int(std::ceil(rb)),
                  o = e + std::max(2, int(std::ceil(0.5 * rb)));
        magnitudes.clear();
        for (int y = 0; y < bh; ++y) {
            for (int x = 0; x < bw; ++x) {
                double si, ni, so, no, se, ne;
                box(x - a, y - a, x + a, y + a, si, ni);
                box(x - o, y - o, x + o, y + o, so, no);
                box(x - e, y - e, x + e, y + e, se, ne);
                const double ring = no - ne;
                const std::size_t k = std::size_t(y) * std::size_t(bw) + std::size_t(x);
                response[k] = ni > 0 && ring >= 4 ? float(si / ni - (so - se) / ring) : 0.f;
                if (has[k])
                    magnitudes.push_back(std::abs(response[k]));
            }
        }
        if (magnitudes.empty())
            continue;
        auto middle = magnitudes.begin() + std::ptrdiff_t(magnitudes.size() / 2);
        std::nth_element(magnitudes.begin(), middle, magnitudes.end());
        const double sigma = std::max(1.4826 * double(*middle), 1e-6);
        // The response's spread around each block: where the scene left more
        // behind, a blob must stand out more (a spot itself hardly counts).
        const float cap = float(kSigmas * sigma);
        for (std::size_t k = 0; k < blocks; ++k) {
            const float v = std::min(std::abs(response[k]), cap);
            squaredResponse[k] = has[k] ? v * v : 0.f;
        }
        boxSums(squaredResponse, localSpread, bw, bh, kSpreadRadius, line);
        for (int y = 1; y + 1 < bh; ++y) {
            for (int x = 1; x + 1 < bw; ++x) {
                const std::size_t k = std::size_t(y) * std::size_t(bw) + std::size_t(x);
                const float r = response[k];
                const double local = std::sqrt(double(localSpread[k]) / std::max(1.f, counts[k]));
                const double threshold =
                    std::max({kSigmas * sigma, kLocalSigmas * local, kMinBlobLog});
                if (std::abs(r) < threshold)
                    continue;
                bool peak = true;
                for (int dy = -1; dy <= 1 && peak; ++dy)
                    for (int dx = -1; dx <= 1 && peak; ++dx)
                        peak = (dx == 0 && dy == 0) ||
                               (r > 0 ? response[std::size_t(y + dy) * std::size_t(bw) +
                                                 std::size_t(x + dx)] <= r
                                      : response[std::size_t(y + dy) * std::size_t(bw) +
                                                 std::size_t(x + dx)] >= r);
                if (peak)
                    candidates.push_back({x, y, radius, r, std::abs(r) / threshold});
            }
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate &a, const Candidate &b) { return a.score > b.score; });
    std::vector<Candidate> chosen;
    for (const Candidate &c : candidates) {
        if (chosen.size() >= kMaxSpots)
            break;
        const bool near = std::any_of(chosen.begin(), chosen.end(), [&](const Candidate &o) {
            return std::hypot(c.bx - o.bx, c.by - o.by) * kBlock < std::max(c.radius, o.radius);
        });
        if (!near)
            chosen.push_back(c);
    }

    struct Fit {
        double error = HUGE_VAL, height = 0, level = 0;
    };
    // The fit: the average around a centre (in blocks) as a level plus a
    // soft disc of the radius (in pixels) plus a halo around it, by least
    // squares; the squared error, the level and the disc's height.
    const auto fit = [&](double cx, double cy, double radius) {
        // Sums of the products of 1, the disc, the halo and the average.
        std::array<std::array<double, 4>, 4> s{};
        const int x0 = int(std::floor(cx)) - kFitWindow, y0 = int(std::floor(cy)) - kFitWindow;
        for (int y = std::max(0, y0); y <= std::min(bh - 1, y0 + 2 * kFitWindow + 1); ++y) {
            for (int x = std::max(0, x0); x <= std::min(bw - 1, x0 + 2 * kFitWindow + 1); ++x) {
                const std::size_t k = std::size_t(y) * std::size_t(bw) + std::size_t(x);
                const double dx = (x - cx) * kBlock, dy = (y - cy) * kBlock;
                if (!has[k] ||
                    dx * dx + dy * dy > double(kFitWindow * kBlock * kFitWindow * kBlock))
                    continue;
                // The block's mean of the shapes, from four points in it.
                std::array<double, 4> v{1, 0, 0, double(m[k])};
                for (const double ox : {-1.0, 1.0}) {
                    for (const double oy : {-1.0, 1.0}) {
                        const double d = std::hypot(dx + ox, dy + oy);
                        v[1] += spotShape(d, radius) / 4;
                        v[2] += haloShape(d, radius) / 4;
                    }
                }
                for (std::size_t i = 0; i < 4; ++i)
                    for (std::size_t j = 0; j < 4; ++j)
                        s[i][j] += v[i] * v[j];
            }
        }
        Fit f;
        // The normal equations by Cramer's rule.
        const auto det3 = [](const std::array<std::array<double, 3>, 3> &a) {
            return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
                   a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
                   a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
        };
        std::array<std::array<double, 3>, 3> a{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j)
                a[i][j] = s[i][j];
        const double det = det3(a);
        if (s[0][0] < 8 || std::abs(det) <= 1e-9 * s[0][0] * s[0][0])
            return f;
        std::array<double, 3> beta{};
        for (std::size_t c = 0; c < 3; ++c) {
            auto b = a;
            for (std::size_t i = 0; i < 3; ++i)
                b[i][c] = s[i][3];
            beta[c] = det3(b) / det;
        }
        f.level = beta[0];
        f.height = beta[1];
        f.error = s[3][3] - beta[0] * s[0][3] - beta[1] * s[1][3] - beta[2] * s[2][3];
        return f;
    };
    // The average between blocks (bilinear), at a point in blocks.
    const auto at = [&](double x, double y) {
        x = std::clamp(x, 0.0, bw - 1.0), y = std::clamp(y, 0.0, bh - 1.0);
        const int x0 = std::min(int(x), bw - 2), y0 = std::min(int(y), bh - 2);
        const double fx = x - x0, fy = y - y0;
        const auto v = [&](int xx, int yy) {
            return double(m[std::size_t(yy) * std::size_t(bw) + std::size_t(xx)]);
        };
        return (1 - fy) * ((1 - fx) * v(x0, y0) + fx * v(x0 + 1, y0)) +
               fy * ((1 - fx) * v(x0, y0 + 1) + fx * v(x0 + 1, y0 + 1));
    };
    // A spot is round: each of eight sectors of its core differs from the
    // level as the whole core does. An edge in the scene that the frames
    // share differs on one side only.
    const auto round = [&](double cx, double cy, double radius, const Fit &f) {
        std::array<double, kSectors> sector{};
        for (int j = 0; j < 2 * kSectors; ++j) {
            const double angle = M_PI * j / kSectors;
            for (const double r : {0.3, 0.5, 0.7}) {
                const double d = r * radius / kBlock;
                sector[std::size_t(j / 2)] +=
                    (at(cx + d * std::cos(angle), cy + d * std::sin(angle)) - f.level) / f.height /
                    6 / spotShape(r * radius, radius);
            }
        }
        return *std::min_element(sector.begin(), sector.end()) >= kRoundness;
    };
    std::vector<TSensorSpot> spots;
    for (const Candidate &c : chosen) {
        double cx = c.bx, cy = c.by, radius = c.radius;
        const auto bestRadius = [&](double from, double to, double step) {
            Fit best;
            for (double r = from; r <= to + 1e-9; r += step) {
                const Fit f = fit(cx, cy, r);
                if (f.error < best.error) {
                    best = f;
                    radius = r;
                }
            }
            return best;
        };
        const auto bestCentre = [&](double reach, double step) {
            const double x0 = cx, y0 = cy;
            Fit best;
            for (double dy = -reach; dy <= reach + 1e-9; dy += step) {
                for (double dx = -reach; dx <= reach + 1e-9; dx += step) {
                    const Fit f = fit(x0 + dx, y0 + dy, radius);
                    if (f.error < best.error) {
                        best = f;
                        cx = x0 + dx;
                        cy = y0 + dy;
                    }
                }
            }
        };
        // The radius at the search's centre, the centre at that radius, and
        // both again from there: the search's centre and size are coarse (on
        // a strong spot's capped core its peak may lie anywhere).
        bestRadius(kFitRadiusMin, kFitRadiusMax, 2);
        bestCentre(1.5, 0.25);
        bestRadius(kFitRadiusMin, kFitRadiusMax, 2);
        bestCentre(0.5, 0.25);
        const Fit best = bestRadius(std::max(kFitRadiusMin, radius - 3),
                                    std::min(kFitRadiusMax, radius + 3), 0.5);
        // A fit at the end of its range is no spot of the sizes looked for.
        if (best.height * c.response <= 0 || std::abs(best.height) < kMinSpotLog ||
            radius <= kFitRadiusMin || radius >= kFitRadiusMax || !round(cx, cy, radius, best))
            continue;
        TSensorSpot spot;
        spot.x = activeLeft + cx * kBlock + (kBlock - 1) / 2.0;
        spot.y = activeTop + cy * kBlock + (kBlock - 1) / 2.0;
        spot.radius = radius;
        spot.bright = best.height > 0;
        spot.contrastPercent = std::expm1(best.height) * 100;
        const int kx = std::clamp(int(std::lround(cx)), 0, bw - 1),
                  ky = std::clamp(int(std::lround(cy)), 0, bh - 1);
        spot.frames = validFrames[std::size_t(ky) * std::size_t(bw) + std::size_t(kx)];
        if (2 * spot.frames >= frameCount)
            spots.push_back(spot);
    }
    // The strongest first; a weak one in a strong one's surroundings is the
    // strong one's mark on the frames' smoothing, or the same spot again.
    std::sort(spots.begin(), spots.end(), [](const TSensorSpot &a, const TSensorSpot &b) {
        return std::abs(a.contrastPercent) > std::abs(b.contrastPercent);
    });
    std::vector<TSensorSpot> kept;
    for (const TSensorSpot &spot : spots) {
        const bool shadow = std::any_of(kept.begin(), kept.end(), [&](const TSensorSpot &o) {
            const double apart = std::hypot(o.x - spot.x, o.y - spot.y);
            return apart < 0.5 * std::max(o.radius, spot.radius) ||
                   (apart < kEchoReach * o.radius &&
                    std::abs(spot.contrastPercent) < kEchoShare * std::abs(o.contrastPercent));
        });
        if (!shadow)
            kept.push_back(spot);
    }
    return kept;
}

TSensorCheckResult TSensorCheck::result() const
{
    TSensorCheckResult r;
    {
        QMutexLocker lock(&d->countsMutex);
        r.frames = d->frames;
        r.skippedOtherCamera = d->otherCamera;
        r.skippedOtherSize = d->otherSize;
        r.skippedCutShort = d->cutShort;
    }
    r.width = d->reference.width;
    r.height = d->reference.height;
    r.activeLeft = d->activeLeft;
    r.activeTop = d->activeTop;
    r.activeRight = d->activeRight;
    r.activeBottom = d->activeBottom;
    if (r.frames == 0)
        return r;
    {
        QMutexLocker lock(&d->defectMutex);
        const int s = d->step, n = r.frames;
        for (int y = d->activeTop + s; y < d->activeBottom - s; ++y) {
            for (int x = d->activeLeft + s; x < d->activeRight - s; ++x) {
                const std::size_t k = std::size_t(y) * std::size_t(r.width) + std::size_t(x);
                const int hot = d->hot[k];
                TSensorDefect defect{x, y, TSensorDefect::Hot, hot};
                if ((d->flags[k] & 1) && hot >= 1)
                    defect = {x, y, TSensorDefect::Stuck, n};
                else if (2 * hot > n && !(d->flags[k] & 1))
                    defect = {x, y, TSensorDefect::Hot, hot};
                else if ((d->flags[k] & 2) && d->contrast[k] >= 1)
                    defect = {x, y, TSensorDefect::Dead, n};
                else
                    continue;
                if (r.defects.size() < kMaxDefects)
                    r.defects.push_back(defect);
            }
        }
    }
    if (r.frames >= kMinSpotFrames) {
        QMutexLocker lock(&d->spotMutex);
        r.spots = d->findSpots(r.frames);
    }
    return r;
}

TSensorCheckResult checkSensor(const QStringList &files, const TSensorCheckOptions &options)
{
    const auto cancelled = [&] { return options.cancel && options.cancel->load(); };
    // The reference: the first file that names a camera the check knows.
    TRawInfo reference;
    bool found = false;
    for (const QString &path : files) {
        if (cancelled())
            break;
        const TDecodeResult info = readInfo(path);
        const std::size_t pixels = std::size_t(std::max(0, info.image.info.width)) *
                                   std::size_t(std::max(0, info.image.info.height));
        if (info.ok() && TSensorCheck::acceptedModel(info.image.info.model) &&
            pixels <= kMaxSensorPixels) {
            reference = info.image.info;
            found = true;
            break;
        }
    }
    TSensorCheckResult none;
    if (!found) {
        // Nothing to check: each file is counted from its directories.
        for (int i = 0; i < files.size() && !cancelled(); ++i) {
            const TDecodeResult info = readInfo(files[i]);
            const QString problem =
                info.ok() ? QStringLiteral("another camera (%1)").arg(info.image.info.model)
                          : info.error;
            ++(info.ok() ? none.skippedOtherCamera : none.skippedCutShort);
            if (options.progress)
                options.progress(i + 1, int(files.size()), files[i], problem);
        }
        none.cancelled = cancelled();
        return none;
    }

    TSensorCheck check(reference);
    struct Done {
        int index;
        QString problem;
    };
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<Done> done;
    std::atomic<int> next{0};
    const auto worker = [&] {
        for (;;) {
            const int i = next++;
            if (i >= files.size())
                return;
            QString problem;
            if (cancelled()) {
                problem = QStringLiteral("cancelled");
            } else {
                TDecodeResult decoded = decodeFile(files[i], options.cancel);
                if (!decoded.ok()) {
                    problem = decoded.error;
                    if (!cancelled())
                        check.countSkipped(TSensorCheck::CutShort);
                } else {
                    const double weight = options.weightOf ? options.weightOf(files[i]) : 1.0;
                    const TRawInfo &info = decoded.image.info;
                    switch (check.addFrame(decoded.image, weight)) {
                    case TSensorCheck::Used: break;
                    case TSensorCheck::OtherCamera:
                        problem = QStringLiteral("another camera (%1)").arg(info.model);
                        break;
                    case TSensorCheck::OtherSize:
                        problem = QStringLiteral("raw image of %1 x %2 pixels, not %3 x %4")
                                      .arg(info.width)
                                      .arg(info.height)
                                      .arg(reference.width)
                                      .arg(reference.height);
                        break;
                    case TSensorCheck::CutShort: problem = QStringLiteral("cut short"); break;
                    }
                }
            }
            std::lock_guard lock(mutex);
            done.push_back({i, problem});
            ready.notify_one();
        }
    };
    const int threads = std::clamp(
        options.jobs, 1,
        int(std::min<qsizetype>(kMaxDecodingThreads, std::max<qsizetype>(1, files.size()))));
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back(worker);
    for (int count = 0; count < files.size(); ++count) {
        std::unique_lock lock(mutex);
        ready.wait(lock, [&] { return !done.empty(); });
        const Done d = done.front();
        done.pop_front();
        lock.unlock();
        if (options.progress)
            options.progress(count + 1, int(files.size()), files[d.index], d.problem);
    }
    for (std::thread &t : pool)
        t.join();
    TSensorCheckResult r = cancelled() ? TSensorCheckResult() : check.result();
    r.cancelled = cancelled();
    return r;
}

} // namespace raw
