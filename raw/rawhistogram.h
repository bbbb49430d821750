#ifndef RAWHISTOGRAM_H
#define RAWHISTOGRAM_H

// The raw histogram of a frame, for a raw viewer: per channel of the colour
// filter in the order of rawFigures (R, G of both green sites, B; L for the
// Monochrom), over the DefaultCrop in stored coordinates. Each pixel counts
// by its share of white, n = (value - black) / (white - black) with its own
// black (blackAt), on two axes: linear, kLinearBins equal steps of n from 0
// to 1 (values at or below black in the first), and in EV, kEvBins steps of
// log2 n from -kEvStops to 0 (darker values, black itself, in the first).
// Both axes end in one more bin at white: the pixels at or above WhiteLevel,
// the clipped ones of rawFigures. Qt Core only.

#include "raw/rawimage.h"

#include <QList>

namespace raw {

inline constexpr int kLinearBins = 256;
// A 14-bit sensor's range: one raw unit above black lies 14 stops below white.
inline constexpr int kEvStops = 14;
inline constexpr int kBinsPerEv = 16;
inline constexpr int kEvBins = kEvStops * kBinsPerEv;

struct TRawHistogram {
    // Per channel, kLinearBins + 1 and kEvBins + 1 counts; the last at white.
    QList<QList<quint32>> linear, ev;
    bool isEmpty() const { return linear.isEmpty(); }
};

// Empty when the picture holds no pixels or no crop.
TRawHistogram rawHistogram(const TRawImage &image);

} // namespace raw

#endif // RAWHISTOGRAM_H
