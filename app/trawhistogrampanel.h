#ifndef TRAWHISTOGRAMPANEL_H
#define TRAWHISTOGRAMPANEL_H

// The raw histogram of the frame shown, on a translucent panel in the top
// right corner of the frame view: per channel (R, G, B; L for the
// Monochrom) on a linear axis of raw values less black or an EV axis (0 EV,
// white, at the right), white marked; under it each channel's clipped share
// and headroom. A click switches the axis. Both choices are kept in the
// settings. It follows its parent's size and stays hidden where the parent
// is too small to show a picture beside it.

#include "raw/rawhistogram.h"
#include "raw/rawstats.h"

#include <QImage>
#include <QWidget>

class TRawHistogramPanel : public QWidget {
    Q_OBJECT

public:
    explicit TRawHistogramPanel(QWidget *parent);

    // An empty histogram leaves the panel blank (a frame in the making).
    void setExposure(const raw::TRawHistogram &histogram, const raw::TRawFigures &figures);
    bool evAxis() const { return m_ev; }
    void toggleAxis();
    // Whether it is wanted; it shows when wanted and there is room.
    bool isWanted() const { return m_wanted; }
    void toggleWanted();
    // The lines under the histogram, one per channel.
    QStringList lines() const;
    // A channel's line: "R 0.12% clipped · headroom 0.00 EV".
    static QString figuresLine(const raw::TChannelFigures &channel);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void place();
    QRect plotRect() const;
    void draw(QPainter &painter) const;
    void paintAxis(QPainter &painter, const QRect &plot) const;

    raw::TRawHistogram m_histogram;
    raw::TRawFigures m_figures;
    bool m_ev;
    bool m_wanted;
    QImage m_drawn; // the panel as last drawn; null when it changed
};

#endif // TRAWHISTOGRAMPANEL_H
