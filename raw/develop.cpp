#include "raw/develop.h"

#include "raw/colour.h"
#include "raw/demosaic.h"
#include "raw/developlimits.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <thread>

namespace raw {

namespace {

// Tiles of this many developed pixels a side: with RCD's border, the eight
// float planes of a tile stay within a core's 2 MB second-level cache.
constexpr int kTileSide = 192;
// The transfer curve is looked up at this many steps of linear light (the
// curve's steepest part, 12.92, moves an 8-bit value by 0.05 per step).
constexpr int kCurveSteps = 65535;

// The sRGB transfer curve, at linear values i / kCurveSteps.
template <typename T> std::vector<T> transferCurve()
{
    std::vector<T> curve(kCurveSteps + 1);
    const double top = sizeof(T) == 1 ? 255 : 65535;
    for (int i = 0; i <= kCurveSteps; ++i) {
        const double v = double(i) / kCurveSteps;
        const double e = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
        curve[std::size_t(i)] = T(std::lround(std::clamp(e, 0.0, 1.0) * top));
    }
    return curve;
}

// Reflects a coordinate into [low, high) keeping its parity (so the filter
// colour stays), for the tiles' borders beyond the active area.
int reflect(int v, int low, int high)
{
    const int n = high - low;
    if (n <= 1)
        return low;
    if (n == 2)
        return low + ((v - low) & 1);
    const int period = 2 * (n - 1);
    int r = (v - low) % period;
    if (r < 0)
        r += period;
    return low + (r < n ? r : period - r);
}

// (raw - black) * gain, clipped to [0, 1], for n samples.
TOLVIK_VECTOR_CLONES
void scale(const uint16_t *__restrict src, const float *__restrict black,
           const float *__restrict gain, float *__restrict out, int n)
{
    for (int i = 0; i < n; ++i)
        out[i] = std::min(std::max((float(src[i]) - black[i]) * gain[i], 0.0f), 1.0f);
}

// Maps stored raw values to [0, 1] and balances them: (raw - black) /
// (white - black) * balance of the sample's colour, clipped to [0, 1].
class TNormalizer {
public:
    TNormalizer(const TRawImage &raw, const TColourTransform &colour, bool linear)
        : m_raw(raw), m_info(raw.info), m_linear(linear)
    {
        const TRawInfo &i = raw.info;
        m_white = double(i.whiteLevel);
        m_rows = std::clamp(i.blackRepeatRows, 1, 2);
        m_columns = std::clamp(i.blackRepeatColumns, 1, 2);
        for (int c = 0; c < 3; ++c)
            m_balance[c] = linear ? 1.0 : colour.balance[std::size_t(c)];
    }

    // For the stored columns xs[0..n) of a tile: the black of each column in
    // both row phases of the pattern (with BlackLevelDeltaH), and the gain
    // for its colour in both row parities.
    void prepare(const int *xs, int n)
    {
        m_gain.resize(std::size_t(n) * 4);
        m_black.resize(std::size_t(n) * 2);
        for (int r = 0; r < 2; ++r)
            for (int i = 0; i < n; ++i) {
                const int x = xs[i];
                const int ax = x - m_info.activeLeft;
                const int pr = (r % m_rows), pc = ax % m_columns;
                double black = m_info.blackLevel[std::size_t(pr * m_columns + pc)];
                if (std::size_t(ax) < m_info.blackDeltaH.size())
                    black += double(m_info.blackDeltaH[std::size_t(ax)]);
                m_black[std::size_t(r * n + i)] = float(black);
                for (int yp = 0; yp < 2; ++yp) {
                    const int c = m_linear ? 0 : m_info.colourAt(x, yp);
                    const double range = m_white - black;
                    m_gain[std::size_t((r * 2 + yp) * n + i)] =
                        float(range > 0 ? m_balance[c] / range : 0);
                }
            }
        m_n = n;
    }

    // The samples of stored row y at the prepared columns xs[0..n) into out.
    void row(int y, const int *xs, float *out) const
    {
        const int ay = y - m_info.activeTop;
        const int r = ay % m_rows;
        const double deltaV = std::size_t(ay) < m_info.blackDeltaV.size()
                                  ? double(m_info.blackDeltaV[std::size_t(ay)])
                                  : 0.0;
        const uint16_t *src = m_raw.pixels.data() + std::size_t(y) * std::size_t(m_info.width);
        const float *black = m_black.data() + std::size_t(r * m_n);
        if (deltaV == 0) {
            const float *gain = m_gain.data() + std::size_t((r * 2 + (y & 1)) * m_n);
            if (xs[m_n - 1] - xs[0] == m_n - 1) // no column reflected
                scale(src + xs[0], black, gain, out, m_n);
            else
                for (int i = 0; i < m_n; ++i)
                    out[i] =
                        std::min(std::max((float(src[xs[i]]) - black[i]) * gain[i], 0.0f), 1.0f);
            return;
        }
        for (int i = 0; i < m_n; ++i) {
            const double b = double(black[i]) + deltaV;
            const int c = m_linear ? 0 : m_info.colourAt(xs[i], y);
            const double range = m_white - b;
            const double v = range > 0 ? (double(src[xs[i]]) - b) / range * m_balance[c] : 0;
            out[i] = float(std::clamp(v, 0.0, 1.0));
        }
    }

private:
    const TRawImage &m_raw;
    const TRawInfo &m_info;
    bool m_linear;
    double m_white = 0;
    int m_rows = 1, m_columns = 1, m_n = 0;
    double m_balance[3] = {1, 1, 1};
    std::vector<float> m_gain;
    std::vector<float> m_black;
};

// The index into the transfer curve of one channel's linear sRGB, the
// matrix's row m applied to balanced camera values.
TOLVIK_VECTOR_CLONES
void curveIndex(const float *__restrict m, const float *__restrict r, const float *__restrict g,
                const float *__restrict b, int *__restrict index, int n)
{
    constexpr float steps = kCurveSteps;
    for (int i = 0; i < n; ++i) {
        const float v = m[0] * r[i] + m[1] * g[i] + m[2] * b[i];
        index[i] = int(std::min(std::max(v, 0.0f), 1.0f) * steps + 0.5f);
    }
}

// Writes developed pixels into the upright picture.
class TWriter {
public:
    TWriter(TPicture &picture, const TGeometry &g, const TColourTransform &colour)
        : m_picture(picture), m_g(g)
    {
        for (int i = 0; i < 9; ++i)
            m_m[i] = float(colour.toSrgb[std::size_t(i)]);
        if (picture.bits > 8)
            m_curve16 = transferCurve<uint16_t>();
        else
            m_curve8 = transferCurve<uint8_t>();
        // Where stepping one developed pixel to the right lands upright.
        const QPoint a = g.upright({0, 0}), b = g.upright({1, 0});
        m_step = (b.y() - a.y()) * std::ptrdiff_t(g.uprightWidth()) + (b.x() - a.x());
        if (g.width == 1)
            m_step = 0;
    }

    // Row y of the developed picture (before turning), pixels x0 .. x0 + n.
    void row(int x0, int y, int n, const float *r, const float *g, const float *b) const
    {
        const QPoint start = m_g.upright({x0, y});
        std::ptrdiff_t at = std::ptrdiff_t(start.y()) * m_g.uprightWidth() + start.x();
        if (m_picture.bits > 8)
            store(reinterpret_cast<uint16_t *>(m_picture.data.data()), m_curve16.data(), at, n, r,
                  g, b);
        else
            store(m_picture.data.data(), m_curve8.data(), at, n, r, g, b);
    }

private:
    template <typename T>
    void store(T *out, const T *curve, std::ptrdiff_t at, int n, const float *r, const float *g,
               const float *b) const
    {
        // In pieces: the matrix and the curve's index in a loop gcc vectorises,
        // then the look-ups.
        constexpr int kPiece = 256;
        int index[3][kPiece];
        for (int start = 0; start < n; start += kPiece) {
            const int count = std::min(kPiece, n - start);
            for (int c = 0; c < 3; ++c)
                curveIndex(m_m + 3 * c, r + start, g + start, b + start, index[c], count);
            for (int i = 0; i < count; ++i, at += m_step) {
                T *p = out + at * 3;
                p[0] = curve[index[0][i]];
                p[1] = curve[index[1][i]];
                p[2] = curve[index[2][i]];
            }
        }
    }

    TPicture &m_picture;
    const TGeometry &m_g;
    float m_m[9];
    std::ptrdiff_t m_step = 1;
    std::vector<uint8_t> m_curve8;
    std::vector<uint16_t> m_curve16;
};

struct TJob {
    const TRawImage &raw;
    const TGeometry &g;
    const TColourTransform &colour;
    bool linear;
    TWriter &writer;
    int left, top, right, bottom; // the active area
};

// One thread's buffers, reused from tile to tile.
struct TScratch {
    std::vector<int> xs;
    std::vector<float> samples, planes;
    TRcdScratch rcd;
};

// A tile of the full-size picture: developed pixels tx .. tx + tw, ty .. ty + th.
void fullTile(const TJob &job, int tx, int ty, int tw, int th, TScratch &s)
{
    const int border = job.linear ? 0 : kRcdBorder;
    const int bw = tw + 2 * border, bh = th + 2 * border;
    const int x0 = job.g.left + tx - border, y0 = job.g.top + ty - border;
    TNormalizer normalizer(job.raw, job.colour, job.linear);
    s.xs.resize(std::size_t(bw));
    for (int i = 0; i < bw; ++i)
        s.xs[std::size_t(i)] = reflect(x0 + i, job.left, job.right);
    normalizer.prepare(s.xs.data(), bw);
    const std::size_t n = std::size_t(bw) * std::size_t(bh);
    s.samples.resize(n);
    for (int j = 0; j < bh; ++j)
        normalizer.row(reflect(y0 + j, job.top, job.bottom), s.xs.data(),
                       s.samples.data() + std::size_t(j) * std::size_t(bw));
    if (job.linear) {
        for (int j = 0; j < th; ++j) {
            const float *grey = s.samples.data() + std::size_t(j) * std::size_t(bw);
            job.writer.row(tx, ty + j, tw, grey, grey, grey);
        }
        return;
    }
    s.planes.resize(3 * n);
    float *const rgb[3] = {s.planes.data(), s.planes.data() + n, s.planes.data() + 2 * n};
    TCfaTile tile;
    tile.samples = s.samples.data();
    tile.width = bw;
    tile.height = bh;
    for (int i = 0; i < 4; ++i)
        tile.pattern[std::size_t(i)] = job.raw.info.colourAt(x0 + (i & 1), y0 + (i >> 1));
    demosaicRcd(tile, rgb, s.rcd);
    for (int j = 0; j < th; ++j) {
        const std::size_t at = std::size_t(j + border) * std::size_t(bw) + std::size_t(border);
        job.writer.row(tx, ty + j, tw, rgb[0] + at, rgb[1] + at, rgb[2] + at);
    }
}

// A tile of the half-size picture: each pixel from its 2 x 2 cell, red, the
// mean of the greens and blue (the mean of the four for a grey picture).
void halfTile(const TJob &job, int tx, int ty, int tw, int th, TScratch &s)
{
    const int x0 = job.g.left + 2 * tx, y0 = job.g.top + 2 * ty;
    const int bw = 2 * tw;
    TNormalizer normalizer(job.raw, job.colour, job.linear);
    s.xs.resize(std::size_t(bw));
    for (int i = 0; i < bw; ++i)
        s.xs[std::size_t(i)] = x0 + i;
    normalizer.prepare(s.xs.data(), bw);
    s.samples.resize(2 * std::size_t(bw));
    s.planes.resize(3 * std::size_t(tw));
    float *r = s.planes.data(), *g = r + tw, *b = g + tw;
    const TRawInfo &info = job.raw.info;
    for (int j = 0; j < th; ++j) {
        const int y = y0 + 2 * j;
        float *top = s.samples.data(), *bottom = top + bw;
        normalizer.row(y, s.xs.data(), top);
        normalizer.row(y + 1, s.xs.data(), bottom);
        if (job.linear) {
            for (int i = 0; i < tw; ++i)
                r[i] = 0.25f * (top[2 * i] + top[2 * i + 1] + bottom[2 * i] + bottom[2 * i + 1]);
            job.writer.row(tx, ty + j, tw, r, r, r);
            continue;
        }
        // Which of the cell's four samples is red and blue; the other two are green.
        int red = 0, blue = 0;
        for (int k = 0; k < 4; ++k) {
            const int c = info.colourAt(x0 + (k & 1), y + (k >> 1));
            if (c == Red)
                red = k;
            else if (c == Blue)
                blue = k;
        }
        const float *cell[4] = {top, top + 1, bottom, bottom + 1};
        for (int i = 0; i < tw; ++i) {
            float sum = 0;
            for (int k = 0; k < 4; ++k)
                sum += cell[k][2 * i];
            r[i] = cell[red][2 * i];
            b[i] = cell[blue][2 * i];
            g[i] = 0.5f * (sum - r[i] - b[i]);
        }
        job.writer.row(tx, ty + j, tw, r, g, b);
    }
}

bool consistent(const TRawImage &raw)
{
    const TRawInfo &i = raw.info;
    if (i.width <= 0 || i.height <= 0 || i.width > limits::kMaxRawSide ||
        i.height > limits::kMaxRawSide || int64_t(i.width) * i.height > limits::kMaxRawPixels)
        return false;
    if (raw.pixels.size() != std::size_t(i.width) * std::size_t(i.height))
        return false;
    if (i.whiteLevel == 0 || i.blackRepeatRows < 1 || i.blackRepeatRows > 2 ||
        i.blackRepeatColumns < 1 || i.blackRepeatColumns > 2)
        return false;
    for (double b : i.blackLevel)
        if (!std::isfinite(b) || b >= double(i.whiteLevel))
            return false;
    const auto finite = [](const std::vector<float> &v) {
        return std::all_of(v.begin(), v.end(), [](float f) { return std::isfinite(f); });
    };
    return finite(i.blackDeltaH) && finite(i.blackDeltaV) &&
           (i.layout == TLayout::Linear || isBayer(i.cfa));
}

} // namespace

TPicture develop(const TRawImage &raw, const TDevelopOptions &options)
{
    if ((options.bits != 8 && options.bits != 16) || !consistent(raw))
        return {};
    const TGeometry g = geometryOf(raw.info, options.size);
    if (!g.valid)
        return {};
    const bool linear = raw.info.layout == TLayout::Linear;
    // A grey picture is its linear values times 2^BaselineExposure.
    TColourTransform colour;
    if (!linear) {
        colour = colourTransform(raw.info);
    } else {
        const double e = std::isfinite(raw.info.baselineExposure)
                             ? std::exp2(std::clamp(raw.info.baselineExposure, -10.0, 10.0))
                             : 1;
        colour.toSrgb = diagonal({e, e, e});
    }

    TPicture picture;
    picture.width = g.uprightWidth();
    picture.height = g.uprightHeight();
    picture.bits = options.bits;
    try {
        picture.data.resize(picture.bytesPerLine() * std::size_t(picture.height));
    } catch (const std::bad_alloc &) {
        return {};
    }
    TWriter writer(picture, g, colour);
    const TRawInfo &info = raw.info;
    const bool activeOk = info.activeLeft >= 0 && info.activeTop >= 0 &&
                          info.activeRight > info.activeLeft &&
                          info.activeBottom > info.activeTop && info.activeRight <= info.width &&
                          info.activeBottom <= info.height;
    const TJob job{raw,
                   g,
                   colour,
                   linear,
                   writer,
                   activeOk ? info.activeLeft : 0,
                   activeOk ? info.activeTop : 0,
                   activeOk ? info.activeRight : info.width,
                   activeOk ? info.activeBottom : info.height};

    const int columns = (g.width + kTileSide - 1) / kTileSide;
    const int rows = (g.height + kTileSide - 1) / kTileSide;
    const int tiles = columns * rows;
    int threads = options.threads > 0 ? options.threads : int(std::thread::hardware_concurrency());
    threads = std::clamp(threads, 1, std::min(limits::kMaxThreads, tiles));

    std::atomic<int> next{0};
    std::atomic<bool> failed{false};
    const auto work = [&] {
        try {
            TScratch scratch;
            while (!failed.load(std::memory_order_relaxed)) {
                if (options.cancel && options.cancel->load(std::memory_order_relaxed)) {
                    failed = true;
                    break;
                }
                const int t = next.fetch_add(1);
                if (t >= tiles)
                    break;
                const int tx = (t % columns) * kTileSide, ty = (t / columns) * kTileSide;
                const int tw = std::min(kTileSide, g.width - tx);
                const int th = std::min(kTileSide, g.height - ty);
                if (options.size == TSize::Half)
                    halfTile(job, tx, ty, tw, th, scratch);
                else
                    fullTile(job, tx, ty, tw, th, scratch);
            }
        } catch (...) { // out of memory for a tile's buffers
            failed = true;
        }
    };
    std::vector<std::thread> helpers;
    try {
        for (int i = 1; i < threads; ++i)
            helpers.emplace_back(work);
    } catch (const std::exception &) {
        // Fewer threads than asked for; the ones started and this one do it all.
    }
    work();
    for (std::thread &t : helpers)
        t.join();
    if (failed)
        return {};
    return picture;
}

} // namespace raw
