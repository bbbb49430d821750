#ifndef TREPORT_H
#define TREPORT_H

// The one-page report of a raw file: a header with the program's version and
// the maker's line, the preview with file name, date, image number and RGB
// distribution, the "Exif-Details" table, when asked for the raw exposure
// figures per channel, and a footer with page numbers and today's date. Needs Qt Gui only, so that
// tolvik-info writes the same report as the window prints.

#include "documents/pageframe.h"
#include "exif/paneltexts.h"
#include "raw/rawstats.h"

#include <QImage>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class QPagedPaintDevice;
class QTextDocument;
class TM9File;

// Who makes Tolvik, for the report's header and the About box.
namespace maker {
inline constexpr char kYears[] = "2025-2026";
inline constexpr char kName[] = "Brekko";
inline constexpr char kWeb[] = "brekko.example";
inline constexpr char kMail[] = "info@brekko.example";
} // namespace maker

// "Tolvik Version 0.6.2  | 2025-2026 | Brekko | brekko.example | eMail: ..."
QString reportHeaderText();

// A row of the "Exif-Details" table: name, tag number or directory, value.
struct TReportRow {
    QString name;
    QString tag;
    QString content;
};
QList<TReportRow> reportRows(const TM9File &file, TValueStyle style = TValueStyle::Specified);

class TReport {
public:
    // The file must have a preview (made here if it was not yet);
    // rgbDistribution is the picture the window shows beside it.
    TReport(TM9File &file, const QImage &rgbDistribution,
            TValueStyle style = TValueStyle::Specified);

    // A table of the raw exposure figures after the details: per channel (R,
    // G, B or L) the clipped share and the headroom, or why there are none.
    // Not shown unless set.
    void setRawFigures(std::optional<raw::TRawFigures> figures);

    // Lays the report out for the device's pages and paints each of them with
    // header and footer. Returns the number of pages.
    int print(QPagedPaintDevice *device) const;

private:
    // The body of the report laid out for the device (no header or footer).
    std::unique_ptr<QTextDocument> document(QPagedPaintDevice *device) const;

    const TM9File &m_file;
    QImage m_preview;
    QImage m_rgbDistribution;
    TValueStyle m_style;
    std::optional<raw::TRawFigures> m_figures;
};

// Writes the report of a processed file to a PDF, with the RGB distribution of
// its preview alone and the raw exposure figures given, through a temporary
// file renamed when complete. Returns an empty text, or what went wrong (no
// preview; the PDF's path and the system's reason).
QString writeReportPdf(TM9File &file, const QString &pdfPath,
                       TValueStyle style = TValueStyle::Specified,
                       const std::optional<raw::TRawFigures> &figures = std::nullopt);

#endif // TREPORT_H
