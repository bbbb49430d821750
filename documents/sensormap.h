#ifndef SENSORMAP_H
#define SENSORMAP_H

// The map of a sensor check and its printed form. The map is the stored raw
// image, its aspect kept: a light grey field with the active area's outline,
// each pixel defect a small square and each spot a circle of its radius, in
// its kind's colour, and a legend of the kinds with their counts. The window
// paints it on screen and the document on paper, the same way; sizes are
// given in millimetres of the device.
//
// The document: a title, the card's folder, the frames checked and skipped,
// the map with its legend and the list of every mark (kind, x, y, radius,
// contrast, frames), continued on further pages when it is long; header and
// footer as every printed page of Tolvik has them.

#include "raw/sensorlist.h"

#include <QColor>
#include <QRectF>
#include <QString>

#include <vector>

class QPagedPaintDevice;
class QPainter;

// The colour a kind is marked in.
QColor markColour(raw::TSensorMark::Kind kind);

class TSensorMap {
public:
    explicit TSensorMap(const raw::TSensorCheckResult &result);

    const raw::TSensorCheckResult &result() const { return m_result; }
    const std::vector<raw::TSensorMark> &marks() const { return m_marks; }

    // The field in room: as large as fits with the raw image's aspect, centred.
    QRectF field(const QRectF &room) const;
    // A stored raw position on the field.
    QPointF place(const QRectF &field, double x, double y) const;
    // The field with its outline and marks; mm is device pixels per
    // millimetre. The highlighted mark (an index of marks(), or -1) gets a ring.
    void paint(QPainter &painter, const QRectF &field, double mm, int highlighted = -1) const;
    // The mark at point (the nearest whose symbol or circle is within reach),
    // or -1.
    int markAt(const QRectF &field, QPointF point, double mm) const;

    // The legend: each kind's symbol, name and count in one line.
    static double legendHeight(double mm);
    void paintLegend(QPainter &painter, const QRectF &line, double mm) const;

private:
    double symbolRadius(const raw::TSensorMark &mark, const QRectF &field, double mm) const;

    raw::TSensorCheckResult m_result;
    std::vector<raw::TSensorMark> m_marks;
};

class TSensorMapDocument {
public:
    TSensorMapDocument(const QString &folder, const raw::TSensorCheckResult &result);

    // "Sensor check · L-Card", the title of the window, the page and the PDF.
    static QString titleOf(const QString &folder);
    QString title() const { return titleOf(m_folder); }

    // Paints every page on the device; returns the number of pages.
    int print(QPagedPaintDevice *device) const;

private:
    QString m_folder;
    TSensorMap m_map;
};

// Writes the document as an A4 PDF through a temporary file renamed when
// complete; returns an empty text, or the PDF's path and the system's reason.
QString writeSensorMapPdf(const TSensorMapDocument &document, const QString &pdfPath);

#endif // SENSORMAP_H
