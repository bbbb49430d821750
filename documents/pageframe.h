#ifndef PAGEFRAME_H
#define PAGEFRAME_H

// What every printed page of Tolvik shares: the margins, a header line with a
// rule under it, and a footer "Seite n / N | date" over a rule.

#include <QRectF>
#include <QString>

#include <functional>

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

// The program that made a PDF: "Tolvik 0.6.2".
QString reportCreator();

// Writes an A4 PDF with these margins, titled title, through a temporary file
// renamed when complete: print paints the pages and returns how many (0:
// nothing could be painted). An empty text, or the path and the reason.
QString writePagesPdf(const QString &pdfPath, const QString &title,
                      const std::function<int(QPagedPaintDevice *)> &print);

#endif // PAGEFRAME_H
