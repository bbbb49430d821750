#include "documents/tcontactsheet.h"

#include "documents/pageframe.h"
#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"

#include <QFileInfo>
#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>
#include <optional>

namespace {

// The grid of a page, A4 upright.
constexpr int kColumns = 4;
constexpr int kRows = 5;

// Millimetres within a cell.
constexpr double kCellPadding = 2.0;
constexpr double kTextGap = 1.0;

constexpr double kNamePoints = 7.5;
constexpr double kSummaryPoints = 6.0;
constexpr double kStarPoints = 7.0;

// Millimetres between the stars and the label's chip, and between the chip
// and its name.
constexpr double kMarkGap = 2.0;
constexpr double kChipGap = 0.8;

// Pictures are scaled to this resolution before they are placed: sharp on
// paper, and a page of twenty stays small.
constexpr double kPictureDotsPerMm = 150.0 / 25.4;

// Pictures made before the sheet is painted fit this box (millimetres), a
// little larger than a cell's on A4, and are scaled down into their cell.
constexpr QSizeF kMadeBeforeBox(50, 40);

// The preview of one frame, upright and scaled to fit box (millimetres);
// null when the file cannot give one any more.
QImage framePicture(const TCardEntry &frame, QSizeF box)
{
    if (!frame.accepted())
        return QImage();
    TM9File file(frame.path);
    if (!file.processFile())
        return QImage();
    const QImage upright = turnedByOrientation(file.previewPicture(), file.exif().orientation);
    if (upright.isNull())
        return upright;
    const QSize fit = (box * kPictureDotsPerMm).toSize();
    return upright.scaled(fit.boundedTo(upright.size()), Qt::KeepAspectRatio,
                          Qt::SmoothTransformation);
}

// The summary's parts ("≈ f/2.0", "1/125", ...) kept whole, as many to a
// line as fit.
QStringList summaryLines(const QString &summary, const QFontMetrics &metrics, double width)
{
    const QString separator = QStringLiteral(" \u00b7 ");
    QStringList lines;
    QString line;
    for (const QString &part : summary.split(separator)) {
        const QString longer = line.isEmpty() ? part : line + separator + part;
        if (line.isEmpty() || metrics.horizontalAdvance(longer) <= width) {
            line = longer;
        } else {
            lines.append(line);
            line = part;
        }
    }
    lines.append(line);
    return lines;
}

// The lines a cell has under its picture besides the name and the summary,
// the same in every cell of a sheet.
struct TCellLines {
    bool marks = false;   // the sheet has frames with stars or a label
    bool figures = false; // the raw exposure figures are asked for
};

// The colour of one of the five colour labels; none for another text.
std::optional<QColor> labelColour(const QString &label)
{
    if (const std::optional<unsigned> rgb = labelRgb(label))
        return QColor(QRgb(*rgb));
    return std::nullopt;
}

// "Clipped 0.12% · Headroom 1.32 EV": the channel with the largest clipped
// share and the one that clips first; "n.a" before they are counted.
QString figuresText(const std::optional<raw::TRawFigures> &figures)
{
    const raw::TFrameExposure exposure = raw::frameExposure(figures.value_or(raw::TRawFigures()));
    return QStringLiteral("Clipped %1 \u00b7 Headroom %2")
        .arg(figures ? raw::clippedText(exposure.clippedPercent, exposure.clipped)
                     : QStringLiteral("n.a"),
             raw::headroomText(exposure.headroomEv));
}

// The stars ("rejected" in red) and the label, a chip of its colour (for the
// five colours) and its name, from the left of line.
void paintMarks(QPainter &painter, const TMark &mark, const QRectF &line, double mm)
{
    const TMarkTexts texts = markTexts(mark, true);
    painter.save();
    double x = line.left();
    if (!texts.rating.isEmpty()) {
        setPoints(painter, kStarPoints, mark.rating < 0);
        if (mark.rating < 0)
            painter.setPen(Qt::darkRed);
        painter.drawText(QRectF(x, line.top(), line.width(), line.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, texts.rating);
        x += painter.fontMetrics().horizontalAdvance(texts.rating) + kMarkGap * mm;
    }
    if (!texts.label.isEmpty()) {
        setPoints(painter, kSummaryPoints);
        if (const std::optional<QColor> colour = labelColour(texts.label)) {
            const double side = painter.fontMetrics().ascent();
            painter.setPen(Qt::NoPen);
            painter.setBrush(*colour);
            painter.drawRoundedRect(QRectF(x, line.center().y() - side / 2, side, side), side / 4,
                                    side / 4);
            x += side + kChipGap * mm;
        }
        painter.setPen(Qt::black);
        painter.drawText(QRectF(x, line.top(), std::max(0.0, line.right() - x), line.height()),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(texts.label, Qt::ElideRight,
                                                          int(std::max(0.0, line.right() - x))));
    }
    painter.restore();
}

// One frame in its cell: the picture centred in the upper part (made before,
// or read now), the name, the marks, the summary and the figures under it.
void paintCell(QPainter &painter, const TCardEntry &frame, const QImage *madeBefore,
               const QRectF &cell, double mm, TCellLines lines)
{
    const QRectF inner =
        cell.adjusted(kCellPadding * mm, kCellPadding * mm, -kCellPadding * mm, -kCellPadding * mm);
    setPoints(painter, kNamePoints, true);
    const double nameLine = painter.fontMetrics().height();
    setPoints(painter, kStarPoints);
    const double marksLine = lines.marks ? painter.fontMetrics().height() : 0.0;
    setPoints(painter, kSummaryPoints);
    const double summaryLine = painter.fontMetrics().height();
    const double figuresLine = lines.figures ? summaryLine : 0.0;
    const double textHeight = nameLine + marksLine + 2 * summaryLine + figuresLine + kTextGap * mm;
    const QRectF box(inner.topLeft(), QSizeF(inner.width(), inner.height() - textHeight));

    const QImage picture = madeBefore ? *madeBefore : framePicture(frame, box.size() / mm);
    if (!picture.isNull()) {
        QSizeF shown = QSizeF(picture.size()).scaled(box.size(), Qt::KeepAspectRatio);
        const QRectF target(box.center() - QPointF(shown.width(), shown.height()) / 2, shown);
        painter.drawImage(target, picture);
    } else {
        painter.save();
        painter.setPen(QPen(Qt::gray, 0.2 * mm, Qt::DashLine));
        painter.drawRect(box.adjusted(mm, mm, -mm, -mm));
        painter.restore();
    }

    const QRectF name(inner.left(), box.bottom() + kTextGap * mm, inner.width(), nameLine);
    setPoints(painter, kNamePoints, true);
    painter.drawText(name, Qt::AlignLeft | Qt::AlignTop,
                     painter.fontMetrics().elidedText(QFileInfo(frame.path).fileName(),
                                                      Qt::ElideMiddle, int(name.width())));
    if (frame.accepted() && lines.marks)
        paintMarks(painter, frame.frame.mark,
                   QRectF(inner.left(), name.bottom(), inner.width(), marksLine), mm);
    setPoints(painter, kSummaryPoints);
    const QRectF summary(inner.left(), name.bottom() + marksLine, inner.width(), 2 * summaryLine);
    painter.save();
    if (!frame.accepted()) {
        painter.setPen(Qt::darkRed);
        painter.drawText(summary, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, frame.error);
    } else {
        const QStringList summaryParts =
            summaryLines(frameSummary(frame.frame.texts), painter.fontMetrics(), summary.width());
        for (qsizetype i = 0; i < std::min<qsizetype>(2, summaryParts.size()); ++i)
            painter.drawText(summary.translated(0, double(i) * summaryLine),
                             Qt::AlignLeft | Qt::AlignTop,
                             painter.fontMetrics().elidedText(summaryParts[i], Qt::ElideRight,
                                                              int(summary.width())));
    }
    if (frame.accepted() && lines.figures) {
        const std::optional<raw::TRawFigures> &figures = frame.frame.figures;
        const bool failed = figures && !figures->ok();
        if (failed)
            painter.setPen(Qt::darkRed);
        const QString text = failed ? figures->error : figuresText(figures);
        painter.drawText(
            QRectF(inner.left(), summary.bottom(), inner.width(), figuresLine),
            Qt::AlignLeft | Qt::AlignTop,
            painter.fontMetrics().elidedText(text, Qt::ElideRight, int(inner.width())));
    }
    painter.restore();
}

} // namespace

TContactSheet::TContactSheet(const QString &folder, const QList<TCardEntry> &entries)
    : m_folder(folder), m_frames(entries)
{
}

QString TContactSheet::headerText() const
{
    QDate first;
    QDate last;
    for (const TCardEntry &frame : m_frames) {
        const QDateTime &taken = frame.frame.numbers.taken;
        if (!frame.accepted() || !taken.isValid())
            continue;
        const QDate day = taken.date();
        first = first.isValid() ? std::min(first, day) : day;
        last = last.isValid() ? std::max(last, day) : day;
    }
    QString text = QFileInfo(m_folder).fileName();
    if (text.isEmpty())
        text = m_folder;
    text += QStringLiteral(" \u00b7 %1 ").arg(m_frames.size()) +
            (m_frames.size() == 1 ? QStringLiteral("frame") : QStringLiteral("frames"));
    if (first.isValid()) {
        text += QStringLiteral(" \u00b7 ") + first.toString(Qt::ISODate);
        if (last != first)
            text += QStringLiteral(" \u2013 ") + last.toString(Qt::ISODate);
    }
    return text;
}

QImage TContactSheet::picture(const TCardEntry &frame)
{
    return framePicture(frame, kMadeBeforeBox);
}

void TContactSheet::setPictures(QHash<QString, QImage> pictures)
{
    m_pictures = std::move(pictures);
}

void TContactSheet::setShowRawFigures(bool show)
{
    m_showRawFigures = show;
}

int TContactSheet::framesPerPage()
{
    return kColumns * kRows;
}

int TContactSheet::pageCount() const
{
    return std::max<int>(1, int((m_frames.size() + framesPerPage() - 1) / framesPerPage()));
}

int TContactSheet::print(QPagedPaintDevice *device) const
{
    QPainter painter(device);
    if (!painter.isActive())
        return 0;
    const TPageFrame page(device);
    const int pages = pageCount();
    const QSizeF cell(page.body.width() / kColumns, page.body.height() / kRows);
    TCellLines lines;
    lines.figures = m_showRawFigures;
    lines.marks = std::any_of(m_frames.cbegin(), m_frames.cend(), [](const TCardEntry &frame) {
        const TMarkTexts texts = markTexts(frame.frame.mark, true);
        return frame.accepted() && !(texts.rating.isEmpty() && texts.label.isEmpty());
    });
    for (int p = 0; p < pages; ++p) {
        if (p > 0)
            device->newPage();
        page.paintHeader(painter, headerText());
        page.paintFooter(painter, p + 1, pages);
        for (int i = 0; i < framesPerPage(); ++i) {
            const qsizetype index = qsizetype(p) * framesPerPage() + i;
            if (index >= m_frames.size())
                break;
            const QPointF at(page.body.left() + (i % kColumns) * cell.width(),
                             page.body.top() + (i / kColumns) * cell.height());
            const TCardEntry &frame = m_frames[index];
            const auto made = m_pictures.constFind(frame.path);
            paintCell(painter, frame, made == m_pictures.cend() ? nullptr : &*made,
                      QRectF(at, cell), page.mm, lines);
        }
    }
    return pages;
}

QString writeContactSheetPdf(const TContactSheet &sheet, const QString &pdfPath)
{
    return writePagesPdf(pdfPath, sheet.headerText(),
                         [&sheet](QPagedPaintDevice *device) { return sheet.print(device); });
}
