#ifndef PAGEFRAME_H
#define PAGEFRAME_H

// What every printed page of Tolvik shares: the margins, a header line with a
// rule under it, and a footer "Seite n / N | date" over a rule.

#include <QRectF>
#include <QString>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;

class TPageFrame {
public:
    explicit TPageFrame(const QPaintDevice *device);

    void paintHeader(QPainter &painter, const QString &text) const;
    void paintFooter(QPainter &painter, int page, int pages) const;

    double mm;   // device pixels per millimetre
    QRectF body; // between header and footer, in device pixels
};

// The painter's font at a size in points, bold or not.
void setPoints(QPainter &painter, double points, bool bold = false);

// The margins printed pages are laid out with, on paper or in a PDF.
void setReportMargins(QPagedPaintDevice *device);

#endif // PAGEFRAME_H
