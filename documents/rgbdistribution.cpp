#include "documents/rgbdistribution.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QPixmap>

#include <algorithm>

namespace {

// One column per channel value 0..254.
constexpr int kCurveColumns = 255;
constexpr int kCurveHeight = 100;

void drawCurve(QPainter &painter, const QColor &colour, const QList<qint32> &counts, qint32 maximum)
{
    painter.setPen(QPen(colour, 1, Qt::SolidLine));
    for (int i = 0; i < kCurveColumns; ++i) {
        const double h = counts[i] / double(maximum) * 100.0;
        // A spike above the maximum leaves the picture at the top anyway.
        const int top = kCurveHeight - qRound(std::min(h, 10.0 * kCurveHeight));
        painter.drawLine(i, kCurveHeight, i, top);
    }
}

} // namespace

void TRgbDistribution::add(const QPixmap *preview)
{
    // The counts are not cleared: every added picture adds to them.
    redCounts.resize(256);
    greenCounts.resize(256);
    blueCounts.resize(256);
    allCounts.resize(768);
    maxCount = 0;
    secondCount = 0;

    if (preview && !preview->isNull()) {
        const QImage image = preview->toImage().convertToFormat(QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                ++redCounts[qRed(line[x])];
                ++greenCounts[qGreen(line[x])];
                ++blueCounts[qBlue(line[x])];
            }
        }
    }

    // After the resize above the list keeps its first 768 (smallest) entries
    // of the last call and gets the 768 new counts behind them.
    for (int i = 0; i < 256; ++i)
        allCounts << redCounts[i] << greenCounts[i] << blueCounts[i];
    std::sort(allCounts.begin(), allCounts.end());
    maxCount = allCounts.last();
    secondCount = allCounts[allCounts.size() - 2];

    // One dominating spike would flatten every other value: scale to the
    // next-highest count instead, and let the spike leave the picture.
    if (qint64(maxCount) > 5 * qint64(secondCount))
        maxCount = secondCount;
}

QImage TRgbDistribution::picture() const
{
    QImage picture(kCurveColumns, kCurveHeight, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    // Nothing counted so far (or an empty preview): nothing to scale against.
    if (maxCount > 0) {
        QPainter painter(&picture);
        drawCurve(painter, QColor(255, 0, 0), redCounts, maxCount);
        drawCurve(painter, QColor(0, 255, 0), greenCounts, maxCount);
        drawCurve(painter, QColor(0, 0, 255), blueCounts, maxCount);
    }
    return picture;
}
