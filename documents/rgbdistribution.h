#ifndef RGBDISTRIBUTION_H
#define RGBDISTRIBUTION_H

// The RGB distribution of preview pictures: how often each 8-bit value occurs
// per channel, and the drawing of the three curves that the window shows and
// the printed report carries.

#include <QImage>
#include <QList>

class QPixmap;

class TRgbDistribution {
public:
    // Adds the counts of a preview to those of the pictures added before and
    // finds the scale of the drawing. No preview adds nothing.
    void add(const QPixmap *preview);

    // 255 x 100 pixels on a transparent ground; empty when nothing was counted.
    QImage picture() const;

    QList<qint32> redCounts;
    QList<qint32> greenCounts;
    QList<qint32> blueCounts;
    QList<qint32> allCounts;
    qint32 maxCount = 0;
    qint32 secondCount = 0;
};

#endif // RGBDISTRIBUTION_H
