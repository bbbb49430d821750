#include "raw/rawhistogram.h"

#include "raw/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace raw {

namespace {

// One count per value a 16-bit sample can take, per site of the 2 x 2 pattern.
constexpr int kValues = 65536;
constexpr int kSites = 4;

// Adds count pixels of a channel with this value and black to both axes.
void add(TRawHistogram &h, int channel, uint32_t value, double black, uint32_t white, quint32 count)
{
    QList<quint32> &linear = h.linear[channel], &ev = h.ev[channel];
    if (value >= white) {
        linear[kLinearBins] += count;
        ev[kEvBins] += count;
        return;
    }
    const double n = double(white) > black ? (value - black) / (double(white) - black) : 0.0;
    linear[std::clamp(int(n * kLinearBins), 0, kLinearBins - 1)] += count;
    const int stop = n > 0 ? int(std::floor((std::log2(n) + kEvStops) * kBinsPerEv)) : 0;
    ev[std::clamp(stop, 0, kEvBins - 1)] += count;
}

} // namespace

TRawHistogram rawHistogram(const TRawImage &image)
{
    const TRawInfo &info = image.info;
    const TGeometry g = geometryOf(info, TSize::Full);
    if (!g.valid || image.pixels.size() != std::size_t(info.width) * std::size_t(info.height))
        return {};
    const int channels = info.layout == TLayout::Linear ? 1 : 3;
    const auto channelOf = [&](int site) {
        return info.layout == TLayout::Linear ? 0 : int(info.cfa[std::size_t(site)]);
    };
    TRawHistogram h;
    h.linear.fill(QList<quint32>(kLinearBins + 1, 0), channels);
    h.ev.fill(QList<quint32>(kEvBins + 1, 0), channels);
    const int right = g.left + g.cropWidth, bottom = g.top + g.cropHeight;
    // Where each pixel has a black of its own, it is counted by itself;
    // else the values of each site first, all of whose pixels share a black.
    const bool deltas = !info.blackDeltaH.empty() || !info.blackDeltaV.empty();
    std::vector<quint32> sites(deltas ? 0 : std::size_t(kSites) * kValues, 0);
    std::array<double, kSites> siteBlack{};
    for (int y = g.top; y < bottom; ++y) {
        const uint16_t *row = image.pixels.data() + std::size_t(y) * std::size_t(info.width);
        const int rowSites = (y & 1) * 2;
        if (deltas) {
            for (int x = g.left; x < right; ++x)
                add(h, channelOf(rowSites + (x & 1)), row[x], info.blackAt(x, y), info.whiteLevel,
                    1);
            continue;
        }
        for (int x = g.left; x < std::min(g.left + 2, right); ++x)
            siteBlack[std::size_t(rowSites + (x & 1))] = info.blackAt(x, y);
        for (int x = g.left; x < right; ++x)
            ++sites[std::size_t(rowSites + (x & 1)) * kValues + row[x]];
    }
    for (int s = 0; s < int(sites.size() / kValues); ++s) {
        const quint32 *counts = sites.data() + std::size_t(s) * kValues;
        for (uint32_t v = 0; v < uint32_t(kValues); ++v) {
            if (counts[v] > 0)
                add(h, channelOf(s), v, siteBlack[std::size_t(s)], info.whiteLevel, counts[v]);
        }
    }
    return h;
}

} // namespace raw
