#include "documents/treport.h"

#include "card/safewrite.h"

#include "documents/pageframe.h"
#include "documents/rgbdistribution.h"
#include "exif/paneltexts.h"
#include "rawfile/limits.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QDate>
#include <QFile>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPixmap>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QUrl>

#include <array>

Q_GUI_EXPORT int qt_defaultDpiY(); // Qt Gui's resolution of document lengths

namespace {

// Page geometry in millimetres.
constexpr double kCellPadding = 0.7;
constexpr double kPreviewWidth = 80.0;
constexpr double kPreviewHeight = 60.0;
constexpr double kDistributionWidth = 80.0;

constexpr double kBodyPoints = 10.0;

const QColor kShade(QStringLiteral("#DADADA"));

// Lengths in a document's formats (images, table columns, padding) count in
// pixels of the screen's resolution; the layout scales them to the device.
double formatPixelsPerMm()
{
    return qt_defaultDpiY() / 25.4;
}

// Puts an image into the document at a size in device pixels.
void insertImage(QTextDocument &doc, QTextCursor cursor, const QString &name, const QImage &image,
                 QSizeF size)
{
    const QUrl url(QStringLiteral("tolvik:") + name);
    doc.addResource(QTextDocument::ImageResource, url, image);
    QTextImageFormat format;
    format.setName(url.toString());
    format.setWidth(size.width());
    format.setHeight(size.height());
    cursor.insertImage(format);
}

void setAlignment(QTextCursor cursor, Qt::Alignment alignment)
{
    QTextBlockFormat block = cursor.blockFormat();
    block.setAlignment(alignment);
    cursor.setBlockFormat(block);
}

void insertCellText(QTextTable *table, int row, int column, const QString &text,
                    Qt::Alignment alignment, bool bold = false)
{
    QTextCursor cursor = table->cellAt(row, column).firstCursorPosition();
    setAlignment(cursor, alignment);
    QTextCharFormat format = cursor.charFormat();
    if (bold)
        format.setFontWeight(QFont::Bold);
    if (text.size() <= limits::kMaxReportTextLength)
        cursor.insertText(text, format);
    else
        cursor.insertText(text.left(limits::kMaxReportTextLength - 1) + QChar(0x2026), format);
}

void shade(QTextTable *table, int row, int column)
{
    QTextTableCell cell = table->cellAt(row, column);
    QTextTableCellFormat format = cell.format().toTableCellFormat();
    format.setBackground(kShade);
    cell.setFormat(format);
}

QTextTableFormat tableFormat(double mm, const QList<QTextLength> &columns)
{
    QTextTableFormat format;
    format.setCellPadding(kCellPadding * mm);
    format.setCellSpacing(0);
    format.setBorder(0);
    format.setAlignment(Qt::AlignLeft);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    format.setColumnWidthConstraints(columns);
    return format;
}

// Preview, file name, date, image number and distribution.
void insertTopBlock(QTextDocument &doc, QTextCursor &cursor, const TPanelTexts &texts,
                    const QImage &preview, const QImage &distribution, double mm)
{
    const double previewColumn = kPreviewWidth * mm + 2 * kCellPadding * mm;
    QTextTable *table =
        cursor.insertTable(4, 2,
                           tableFormat(mm, {QTextLength(QTextLength::FixedLength, previewColumn),
                                            QTextLength(QTextLength::VariableLength, 0)}));
    table->mergeCells(0, 0, 4, 1);

    // The preview keeps its aspect within 80 x 60 mm, so that a turned one
    // stands upright.
    const QSizeF box(kPreviewWidth * mm, kPreviewHeight * mm);
    insertImage(doc, table->cellAt(0, 0).firstCursorPosition(), QStringLiteral("preview"), preview,
                QSizeF(preview.size()).scaled(box, Qt::KeepAspectRatio));
    setAlignment(table->cellAt(0, 0).firstCursorPosition(), Qt::AlignLeft);

    insertCellText(table, 0, 1, texts.fileName, Qt::AlignRight, true);
    insertCellText(table, 1, 1, QStringLiteral("Date: ") + texts.dateTime, Qt::AlignRight);
    insertCellText(table, 2, 1, QStringLiteral("Shutter# : ") + texts.imageId, Qt::AlignRight);

    QTextTableCell last = table->cellAt(3, 1);
    QTextTableCellFormat bottom = last.format().toTableCellFormat();
    bottom.setVerticalAlignment(QTextCharFormat::AlignBottom);
    last.setFormat(bottom);
    const double width = kDistributionWidth * mm;
    const double height =
        distribution.isNull() ? 0 : width * distribution.height() / double(distribution.width());
    insertImage(doc, last.firstCursorPosition(), QStringLiteral("rgb"), distribution,
                QSizeF(width, height));
    setAlignment(last.firstCursorPosition(), Qt::AlignRight);

    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock(); // a blank line before the details
    setAlignment(cursor, Qt::AlignLeft);
}

// A table under a shaded title and three headings, in the columns of the
// "Exif-Details" table, so that tables below each other line up.
void insertDetailsTable(QTextCursor &cursor, const QString &title,
                        const std::array<QString, 3> &headings, const QList<TReportRow> &rows,
                        double mm)
{
    QTextTable *table =
        cursor.insertTable(int(rows.size()) + 2, 4,
                           tableFormat(mm, {QTextLength(QTextLength::FixedLength, 5 * mm),
                                            QTextLength(QTextLength::PercentageLength, 34),
                                            QTextLength(QTextLength::PercentageLength, 22),
                                            QTextLength(QTextLength::VariableLength, 0)}));
    QTextTableFormat format = table->format();
    format.setHeaderRowCount(2);
    format.setTopMargin(4 * mm);
    format.setBorder(0.5);
    format.setBorderBrush(kShade);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    table->setFormat(format);

    table->mergeCells(0, 0, 1, 4);
    shade(table, 0, 0);
    insertCellText(table, 0, 0, title, Qt::AlignLeft, true);
    for (int column = 1; column <= 3; ++column) {
        shade(table, 1, column);
        insertCellText(table, 1, column, headings[column - 1], Qt::AlignLeft);
    }
    for (int i = 0; i < rows.size(); ++i) {
        const int row = i + 2;
        shade(table, row, 0);
        insertCellText(table, row, 1, rows[i].name, Qt::AlignLeft);
        insertCellText(table, row, 2, rows[i].tag, Qt::AlignLeft);
        insertCellText(table, row, 3, rows[i].content, Qt::AlignLeft);
    }
    cursor.movePosition(QTextCursor::End);
}

// The raw exposure figures per channel, or why there are none.
QList<TReportRow> figureRows(const raw::TRawFigures &figures)
{
    if (!figures.ok())
        return {{QStringLiteral("Raw data"), QString(), figures.error}};
    QList<TReportRow> rows;
    for (const raw::TChannelFigures &c : figures.channels)
        rows.append({c.name, raw::clippedText(c.clippedPercent, c.clipped),
                     raw::headroomText(c.headroomEv)});
    return rows;
}

} // namespace

QString reportHeaderText()
{
    return QStringLiteral("Tolvik Version ") + QCoreApplication::applicationVersion() +
           QStringLiteral("  | %1 | %2 | %3 | eMail: %4")
               .arg(QLatin1String(maker::kYears), QLatin1String(maker::kName),
                    QLatin1String(maker::kWeb), QLatin1String(maker::kMail));
}

QList<TReportRow> reportRows(const TM9File &file, TValueStyle style)
{
    const TExifValues &exif = file.exif();
    const TLeicaValues &leica = file.leica();
    const QString leicaNotes = QStringLiteral("Leica MakerNotes");
    // The exact view's texts where it has its own.
    const bool exact = style == TValueStyle::Exact;
    const TPanelTexts e = panelTexts(file, TValueStyle::Exact);
    return {
        {QStringLiteral("Maker"), QStringLiteral("0x010f"), exif.make},
        {QStringLiteral("Model"), QStringLiteral("0x0110"), exif.model},
        {QStringLiteral("Serial Number "), QStringLiteral("0x3103"), leica.serialNumber},
        {QStringLiteral("Firmware"), QStringLiteral("0x0131"), exif.software},
        {QStringLiteral("ISO"), QStringLiteral("0x8827"), file.exif_0x8827_ISOAsString()},
        {QStringLiteral("Exposure Time"), QStringLiteral("0x829A"),
         exact ? e.expTime : file.exif_0x829A_ExposureTimeAsString()},
        {QStringLiteral("Appr. Aperture"), QStringLiteral("0x3406"),
         exact ? e.apprAperture : approximateApertureText(leica)},
        {QStringLiteral("Metering Mode "), QStringLiteral("0x9207"),
         file.exif_0x9207_MeteringModeAsString()},
        {QStringLiteral("Exposure Program "), QStringLiteral("0x8822"),
         file.exif_0x8822_ExpProgAsString()},
        {QStringLiteral("Exposure Correction "), QStringLiteral("0x9204"),
         exact ? e.expCorrection : file.exif_0x9204_ExpCompensationAsString()},
        {QStringLiteral("Frame Selector "), leicaNotes, file.leicaFrameSelectorAsString()},
        {QStringLiteral("Focal Length "), QStringLiteral("0x920A"),
         exact ? e.focalLength : focalLengthText(file)},
        {QStringLiteral("Lens "), leicaNotes, file.leicaLensTypeAsString()},
        {QStringLiteral("Measured LV "), leicaNotes, twoDecimals(leica.measuredLV)},
        {QStringLiteral("Ext. Sensor Brightness "), QStringLiteral("0x3408"),
         twoDecimals(leica.externalSensorBrightness)},
        {QStringLiteral("Sensor Temperature "), QStringLiteral("0x3402"),
         exact ? e.sensorTemperature : temperatureText(leica)},
    };
}

TReport::TReport(TM9File &file, const QImage &rgbDistribution, TValueStyle style)
    : m_file(file), m_rgbDistribution(rgbDistribution), m_style(style)
{
    m_preview = uprightPreview(file);
}

void TReport::setRawFigures(std::optional<raw::TRawFigures> figures)
{
    m_figures = std::move(figures);
}

std::unique_ptr<QTextDocument> TReport::document(QPagedPaintDevice *device) const
{
    auto doc = std::make_unique<QTextDocument>();
    doc->documentLayout()->setPaintDevice(device);
    doc->setDocumentMargin(0);
    QFont font = doc->defaultFont();
    font.setPointSizeF(kBodyPoints);
    doc->setDefaultFont(font);
    doc->setPageSize(TPageFrame(device).body.size());
    const double mm = formatPixelsPerMm();

    QTextCursor cursor(doc.get());
    insertTopBlock(*doc, cursor, panelTexts(m_file, m_style), m_preview, m_rgbDistribution, mm);
    insertDetailsTable(
        cursor, QStringLiteral("Exif-Details"),
        {QStringLiteral("Tag"), QStringLiteral("Tag# (Hex)"), QStringLiteral("Content")},
        reportRows(m_file, m_style), mm);
    if (m_figures)
        insertDetailsTable(cursor, QStringLiteral("Raw Exposure (default crop)"),
                           {QStringLiteral("Channel"), QStringLiteral("Clipped"),
                            QStringLiteral("Headroom (99.9th percentile)")},
                           figureRows(*m_figures), mm);
    return doc;
}

int TReport::print(QPagedPaintDevice *device) const
{
    const std::unique_ptr<QTextDocument> doc = document(device);
    const TPageFrame frame(device);
    const int pages = doc->pageCount();

    QPainter painter(device);
    if (!painter.isActive())
        return 0;
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            device->newPage();
        frame.paintHeader(painter, reportHeaderText());
        painter.save();
        const QRectF shown(0, page * frame.body.height(), frame.body.width(), frame.body.height());
        painter.translate(0, frame.body.top() - shown.top());
        painter.setClipRect(shown);
        doc->drawContents(&painter, shown);
        painter.restore();
        frame.paintFooter(painter, page + 1, pages);
    }
    return pages;
}

QString writeReportPdf(TM9File &file, const QString &pdfPath, TValueStyle style,
                       const std::optional<raw::TRawFigures> &figures)
{
    if (!file.previewImage())
        return writeFailure(file.fileNameComplete(),
                            QStringLiteral("no preview picture to report"));
    TRgbDistribution distribution;
    distribution.add(file.previewImage());
    TReport report(file, distribution.picture(), style);
    report.setRawFigures(figures);
    return writePagesPdf(pdfPath, file.fileName(),
                         [&report](QPagedPaintDevice *device) { return report.print(device); });
}
