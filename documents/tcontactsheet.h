#ifndef TCONTACTSHEET_H
#define TCONTACTSHEET_H

// A contact sheet of a card: a grid of the frames' previews, turned upright,
// each with its file name, its stars and colour label where it has them, a
// summary line of its exact values and, when asked for, its raw exposure
// figures. The header names the folder, the number of frames and the days
// they span; the footer reads "Seite n / N" and the date, as the report's
// does. Pages are painted one at a time and each picture is read when its
// page is painted, so memory does not grow with the number of frames; the
// window makes them before, on its worker threads, so that painting a preview
// does not hold it up.

#include "card/cardentry.h"

#include <QHash>
#include <QImage>
#include <QList>
#include <QString>

class QPagedPaintDevice;

class TContactSheet {
public:
    // Each entry's picture is read again from its path when its page is painted.
    TContactSheet(const QString &folder, const QList<TCardEntry> &entries);

    // "L-Card · 24 frames · 2012-06-16 – 2012-06-18"
    QString headerText() const;
    static int framesPerPage();
    const QList<TCardEntry> &frames() const { return m_frames; }

    // A frame's picture as the sheet places it, made on any thread; null
    // when the file gives none.
    static QImage picture(const TCardEntry &frame);
    // Pictures made before, by path: painting then reads no file for them.
    void setPictures(QHash<QString, QImage> pictures);

    // Under each frame, its raw exposure figures in one line (raw::frameExposure:
    // the largest clipped share of its channels and the smallest headroom).
    // They are the entries' frame.figures, which the sheet does not count:
    // readRawFigures() counts them on the worker threads that read the
    // entries. A frame without them reads "n.a". Off unless set.
    void setShowRawFigures(bool show);

    int pageCount() const;

    // Paints every page on the device; returns the number of pages.
    int print(QPagedPaintDevice *device) const;

private:
    QString m_folder;
    QList<TCardEntry> m_frames;
    QHash<QString, QImage> m_pictures;
    bool m_showRawFigures = false;
};

// Writes the sheet as an A4 PDF through a temporary file renamed when
// complete; returns an empty text, or the PDF's path and the system's reason.
QString writeContactSheetPdf(const TContactSheet &sheet, const QString &pdfPath);

#endif // TCONTACTSHEET_H
