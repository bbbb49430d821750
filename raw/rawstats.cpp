#include "raw/rawstats.h"

#include "raw/decode.h"
#include "raw/rawlimits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <vector>

namespace raw {

namespace {

// One bin per value a 16-bit sample can take.
constexpr int kBins = 65536;
// A bin counts in 32 bits: no picture the decoder accepts has more pixels.
static_assert(limits::kMaxPixels < std::numeric_limits<quint32>::max());
// The 2 x 2 sites of the colour filter (also the Monochrom's, for a black pattern).
constexpr int kSites = 4;

// The DefaultCrop in stored coordinates; right and bottom exclusive.
struct TCrop {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

TCrop cropOf(const TRawInfo &info)
{
    TCrop crop;
    crop.left = info.activeLeft + int(std::lround(info.cropX));
    crop.top = info.activeTop + int(std::lround(info.cropY));
    crop.right = std::min(crop.left + int(std::lround(info.cropWidth)), info.activeRight);
    crop.bottom = std::min(crop.top + int(std::lround(info.cropHeight)), info.activeBottom);
    crop.right = std::clamp(crop.right, crop.left, info.width);
    crop.bottom = std::clamp(crop.bottom, crop.top, info.height);
    return crop;
}

// Which channel a site counts for, and the channels' names.
int channelOf(const TRawInfo &info, int site)
{
    return info.layout == TLayout::Linear ? 0 : info.cfa[std::size_t(site)];
}

QStringList channelNames(const TRawInfo &info)
{
    return info.layout == TLayout::Linear
               ? QStringList{QStringLiteral("L")}
               : QStringList{QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B")};
}

// The rank of the 99.9th percentile by nearest rank among n values, from 1.
qint64 rankOf(qint64 n)
{
    return (999 * n + 999) / 1000;
}

// The ratios and the headroom of a channel whose counts, black and p999 are known.
void finish(TChannelFigures &c, uint32_t white)
{
    c.clippedPercent = c.pixels > 0 ? 100.0 * double(c.clipped) / double(c.pixels) : 0.0;
    if (c.pixels == 0)
        c.p999 = std::numeric_limits<double>::quiet_NaN();
    if (c.pixels > 0 && c.p999 > 0 && double(white) > c.black)
        c.headroomEv = std::log2((double(white) - c.black) / c.p999);
}

// Counts the values of each site in a histogram while they are decoded: exact
// when each site has one black, which begin() refuses otherwise.
class TSiteCounter final : public TRowSink {
public:
    bool begin(const TRawInfo &info) override
    {
        m_info = info;
        m_crop = cropOf(info);
        m_needsPicture = !info.blackDeltaH.empty() || !info.blackDeltaV.empty();
        if (m_needsPicture)
            return false;
        m_counts.assign(std::size_t(kSites) * kBins, 0);
        return true;
    }

    void row(int x, int y, int n, const uint16_t *values) override
    {
        if (y < m_crop.top || y >= m_crop.bottom)
            return;
        const int from = std::max(x, m_crop.left), to = std::min(x + n, m_crop.right);
        if (from >= to)
            return;
        quint32 *const rowSites = m_counts.data() + std::size_t((y & 1) * 2) * kBins;
        quint32 *const first = rowSites + std::size_t(from & 1) * kBins;
        quint32 *const second = rowSites + std::size_t((from + 1) & 1) * kBins;
        const uint16_t *v = values + (from - x);
        const int count = to - from;
        int i = 0;
        for (; i + 1 < count; i += 2) {
            ++first[v[i]];
            ++second[v[i + 1]];
        }
        if (i < count)
            ++first[v[i]];
    }

    bool needsPicture() const { return m_needsPicture; }

    TRawFigures figures() const
    {
        TRawFigures out;
        out.white = m_info.whiteLevel;
        std::array<double, kSites> black{};
        std::array<qint64, kSites> pixels{};
        for (int s = 0; s < kSites; ++s) {
            // A position of the site inside the crop (or next to it: a crop one
            // pixel wide has no pixel of the other column's sites).
            const int x = m_crop.left + ((s & 1) != (m_crop.left & 1) ? 1 : 0);
            const int y = m_crop.top + ((s >> 1) != (m_crop.top & 1) ? 1 : 0);
            black[std::size_t(s)] = m_info.blackAt(x, y);
            const quint32 *h = site(s);
            pixels[std::size_t(s)] = std::accumulate(h, h + kBins, qint64(0));
        }
        out.black = meanBlack(black, pixels, [](int) { return true; });
        const QStringList names = channelNames(m_info);
        for (int c = 0; c < names.size(); ++c) {
            TChannelFigures figures;
            figures.name = names[c];
            const auto inChannel = [&](int s) { return channelOf(m_info, s) == c; };
            for (int s = 0; s < kSites; ++s) {
                if (!inChannel(s))
                    continue;
                figures.pixels += pixels[std::size_t(s)];
                const quint32 *h = site(s);
                for (uint32_t v = std::min<uint32_t>(m_info.whiteLevel, kBins); v < kBins; ++v)
                    figures.clipped += h[v];
            }
            figures.black = meanBlack(black, pixels, inChannel);
            if (figures.pixels > 0)
                figures.p999 = kthSmallest(black, inChannel, rankOf(figures.pixels));
            finish(figures, out.white);
            out.channels.append(figures);
        }
        return out;
    }

private:
    const quint32 *site(int s) const { return m_counts.data() + std::size_t(s) * kBins; }

    // The mean black over the pixels of the sites chosen; the level itself
    // when they share one, so that a plain 60 stays 60.
    template <typename Chosen>
    static double meanBlack(const std::array<double, kSites> &black,
                            const std::array<qint64, kSites> &pixels, Chosen chosen)
    {
        double sum = 0;
        qint64 n = 0;
        bool same = true;
        std::optional<double> first;
        for (int s = 0; s < kSites; ++s) {
            if (!chosen(s) || pixels[std::size_t(s)] == 0)
                continue;
            const double b = black[std::size_t(s)];
            same = same && (!first || *first == b);
            first = first.value_or(b);
            sum += b * double(pixels[std::size_t(s)]);
            n += pixels[std::size_t(s)];
        }
        if (n == 0)
            return black[0];
        return same ? *first : sum / double(n);
    }

    // The k-th smallest value - black over the chosen sites: their histograms
    // walked together in the order of value - black.
    template <typename Chosen>
    double kthSmallest(const std::array<double, kSites> &black, Chosen chosen, qint64 k) const
    {
        std::array<int, kSites> next{};
        const auto skipEmpty = [&](int s) {
            const quint32 *h = site(s);
            int &v = next[std::size_t(s)];
            while (v < kBins && h[v] == 0)
                ++v;
        };
        for (int s = 0; s < kSites; ++s) {
            if (chosen(s))
                skipEmpty(s);
            else
                next[std::size_t(s)] = kBins;
        }
        qint64 seen = 0;
        for (;;) {
            int best = -1;
            for (int s = 0; s < kSites; ++s) {
                if (next[std::size_t(s)] < kBins &&
                    (best < 0 || next[std::size_t(s)] - black[std::size_t(s)] <
                                     next[std::size_t(best)] - black[std::size_t(best)]))
                    best = s;
            }
            if (best < 0) // k beyond the values counted: cannot happen for k <= n
                return std::numeric_limits<double>::quiet_NaN();
            const int v = next[std::size_t(best)];
            seen += site(best)[v];
            if (seen >= k)
                return v - black[std::size_t(best)];
            ++next[std::size_t(best)];
            skipEmpty(best);
        }
    }

    TRawInfo m_info;
    TCrop m_crop;
    bool m_needsPicture = false;
    std::vector<quint32> m_counts; // kSites histograms of kBins
};

// value - black in 1-wide bins, clamped to a range wider than any 16-bit
// value less any black a file may state within it.
constexpr int kDeltaBins = 2 * kBins;

int deltaBin(double d)
{
    return int(std::clamp(std::floor(d), double(-kBins), double(kBins - 1))) + kBins;
}

// With black deltas: two passes over the picture, the bins of value - black,
// then the values of the bin holding the percentile's rank.
TRawFigures figuresWithDeltas(const TRawImage &image)
{
    const TRawInfo &info = image.info;
    const TCrop crop = cropOf(info);
    const QStringList names = channelNames(info);
    const int channels = int(names.size());
    std::vector<std::vector<quint32>> bins(std::size_t(channels),
                                           std::vector<quint32>(kDeltaBins, 0));
    std::vector<double> blackSum(std::size_t(channels), 0.0);
    QList<TChannelFigures> figures(channels);
    const auto channelAt = [&](int x, int y) { return channelOf(info, (y & 1) * 2 + (x & 1)); };
    for (int y = crop.top; y < crop.bottom; ++y) {
        for (int x = crop.left; x < crop.right; ++x) {
            const int c = channelAt(x, y);
            const uint16_t v = image.at(x, y);
            const double black = info.blackAt(x, y);
            ++bins[std::size_t(c)][std::size_t(deltaBin(v - black))];
            blackSum[std::size_t(c)] += black;
            figures[c].pixels += 1;
            figures[c].clipped += v >= info.whiteLevel ? 1 : 0;
        }
    }
    // The bin of each channel's rank, and the rank within it.
    std::vector<int> rankBin(std::size_t(channels), -1);
    std::vector<qint64> rankInBin(std::size_t(channels), 0);
    for (int c = 0; c < channels; ++c) {
        const qint64 k = rankOf(figures[c].pixels);
        qint64 seen = 0;
        for (int b = 0; b < kDeltaBins && k > 0; ++b) {
            const quint32 n = bins[std::size_t(c)][std::size_t(b)];
            if (seen + n >= k) {
                rankBin[std::size_t(c)] = b;
                rankInBin[std::size_t(c)] = k - seen - 1;
                break;
            }
            seen += n;
        }
    }
    std::vector<std::vector<double>> inBin(static_cast<std::size_t>(channels));
    for (int y = crop.top; y < crop.bottom; ++y) {
        for (int x = crop.left; x < crop.right; ++x) {
            const int c = channelAt(x, y);
            const double d = image.at(x, y) - info.blackAt(x, y);
            if (deltaBin(d) == rankBin[std::size_t(c)])
                inBin[std::size_t(c)].push_back(d);
        }
    }
    TRawFigures out;
    out.white = info.whiteLevel;
    double allBlack = 0;
    qint64 all = 0;
    for (int c = 0; c < channels; ++c) {
        TChannelFigures &f = figures[c];
        f.name = names[c];
        allBlack += blackSum[std::size_t(c)];
        all += f.pixels;
        f.black = f.pixels > 0 ? blackSum[std::size_t(c)] / double(f.pixels) : 0.0;
        std::vector<double> &values = inBin[std::size_t(c)];
        if (!values.empty()) {
            const auto nth = values.begin() + std::ptrdiff_t(rankInBin[std::size_t(c)]);
            std::nth_element(values.begin(), nth, values.end());
            f.p999 = *nth;
        }
        finish(f, out.white);
    }
    out.black = all > 0 ? allBlack / double(all) : 0.0;
    out.channels = figures;
    return out;
}

} // namespace

TRawFigures rawFigures(const TRawImage &image)
{
    const TRawInfo &info = image.info;
    if (info.width <= 0 || info.height <= 0 ||
        image.pixels.size() != std::size_t(info.width) * std::size_t(info.height)) {
        TRawFigures out;
        out.error = QStringLiteral("the raw image holds no pixels");
        return out;
    }
    TSiteCounter counter;
    if (!counter.begin(info))
        return figuresWithDeltas(image);
    const TCrop crop = cropOf(info);
    for (int y = crop.top; y < crop.bottom; ++y)
        counter.row(0, y, info.width,
                    image.pixels.data() + std::size_t(y) * std::size_t(info.width));
    return counter.figures();
}

TRawFigures rawFiguresOfFile(const QString &path, const std::atomic<bool> *cancel)
{
    TSiteCounter counter;
    const TDecodeResult read = decodeFileRows(path, counter, cancel);
    if (read.ok() && counter.needsPicture()) {
        const TDecodeResult whole = decodeFile(path, cancel);
        if (whole.ok())
            return rawFigures(whole.image);
        TRawFigures out;
        out.error = whole.error;
        return out;
    }
    if (!read.ok()) {
        TRawFigures out;
        out.error = read.error;
        return out;
    }
    return counter.figures();
}

TFrameExposure frameExposure(const TRawFigures &figures)
{
    TFrameExposure exposure;
    for (const TChannelFigures &c : figures.channels) {
        if (c.clippedPercent > exposure.clippedPercent) {
            exposure.clippedPercent = c.clippedPercent;
            exposure.clipped = c.clipped;
        }
        if (c.headroomEv && (!exposure.headroomEv || *c.headroomEv < *exposure.headroomEv))
            exposure.headroomEv = c.headroomEv;
    }
    return exposure;
}

QString clippedText(double percent, qint64 clipped)
{
    if (clipped > 0 && percent < 0.005)
        return QStringLiteral("<0.01%");
    return QString::number(percent, 'f', 2) + QLatin1Char('%');
}

QString headroomText(const std::optional<double> &ev)
{
    return ev ? QString::number(*ev, 'f', 2) + QStringLiteral(" EV") : QStringLiteral("n.a");
}

} // namespace raw
