#ifndef RAWSTATS_H
#define RAWSTATS_H

// The exposure figures of a raw image: per channel of the colour filter, how
// many pixels are clipped and how far the brightest of the rest lie below
// white. One function for every view (histogram, card columns, tolvik-info
// --raw-stats). Qt Core only.
//
// Counted over the DefaultCrop, in stored coordinates (before orientation):
//   clipped          pixels whose linearized value is at or above WhiteLevel
//   clipped_percent  clipped / the channel's pixels * 100
//   p999             the 99.9th percentile by nearest rank (the k-th smallest,
//                    k = ceil(0.999 n)) of value - black level of the pixel
//                    (blackAt: pattern and deltas)
//   headroom_ev      log2((white - the channel's black) / p999); none when
//                    p999 is not above 0 or white not above the black
// The channel's black is the mean of blackAt over its pixels: its one level
// in the usual file, the mean of its sites' levels with a pattern (equal
// counts on an even crop), the deltas included where the file has them.
//
// Exactness: without deltas every 2 x 2 site has one black, so a 65,536-bin
// histogram per site is the whole distribution; a channel's percentile walks
// its sites' histograms merged by value - black, exactly. With deltas the
// black differs per row and column: the value - black of a channel is counted
// in 1-wide bins first, and the values of the one bin that holds rank k are
// then sorted, exactly too, in a second pass over the picture.

#include "raw/rawimage.h"

#include <QList>
#include <QString>

#include <atomic>
#include <optional>

namespace raw {

struct TChannelFigures {
    QString name;       // "R", "G" (both green sites), "B"; "L" for the Monochrom
    qint64 pixels = 0;  // of the channel in the crop
    qint64 clipped = 0; // at or above white
    double clippedPercent = 0;
    double black = 0; // the channel's black (see above)
    double p999 = 0;  // NaN when the channel has no pixels
    std::optional<double> headroomEv;
};

struct TRawFigures {
    double black = 0; // mean of blackAt over the crop's pixels
    uint32_t white = 0;
    QList<TChannelFigures> channels; // R, G, B, or L
    QString error;                   // empty when figured
    bool ok() const { return error.isEmpty(); }
};

// The figures of a decoded picture.
TRawFigures rawFigures(const TRawImage &image);

// The figures of a file, counted while its values are decoded: the picture
// is never kept (a file with black deltas is decoded whole instead). error
// is the decoder's reason when the file cannot be read.
TRawFigures rawFiguresOfFile(const QString &path, const std::atomic<bool> *cancel = nullptr);

// A frame's figures in one: the largest clipped percentage of its channels
// (with the clipped count it stands for), and the smallest headroom, that of
// the channel that clips first; none when no channel has one.
struct TFrameExposure {
    double clippedPercent = 0;
    qint64 clipped = 0;
    std::optional<double> headroomEv;
};
TFrameExposure frameExposure(const TRawFigures &figures);

// The texts every view shows of the figures: "0.12%" (a clipped pixel or
// more never reads as none: "<0.01%"), "1.32 EV" or "n.a".
QString clippedText(double percent, qint64 clipped);
QString headroomText(const std::optional<double> &ev);

} // namespace raw

#endif // RAWSTATS_H
