#include "documents/sensormap.h"

#include "documents/pageframe.h"

#include <QDir>
#include <QFileInfo>
#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// Millimetres.
constexpr double kDefectSide = 1.6;      // a defect's square
constexpr double kSmallestSpot = 1.2;    // a spot's circle at least, however small the map
constexpr double kSpotLine = 0.4;        // a spot's circle
constexpr double kThinLine = 0.2;        // the squares' and the field's edges
constexpr double kHighlightGap = 1.2;    // between a mark and the ring of the highlighted one
constexpr double kReach = 1.5;           // a point this near a mark's symbol is on it
constexpr double kLegendSymbol = 2.6;    // a symbol of the legend
constexpr double kLegendGap = 5.0;       // between the legend's entries
constexpr double kParagraphGap = 3.0;    // between the document's parts
constexpr double kMapShareOfPage = 0.45; // the map's height at most, of the body's

constexpr double kLegendPoints = 8.5;
constexpr double kBodyPoints = 9.5;

constexpr QRgb kField = 0xffe4e4e4;   // the raw image
constexpr QRgb kEdge = 0xffb4b4b4;    // its edge
constexpr QRgb kOutline = 0xff6e6e6e; // the active area
constexpr QRgb kShade = 0xfff0f0f0;   // every other row of the list

// The colours of the kinds: three for the pixels, two for the spots, apart
// from each other and from the grey field.
constexpr std::pair<raw::TSensorMark::Kind, QRgb> kColours[] = {
    {raw::TSensorMark::Hot, 0xffd62728},
    {raw::TSensorMark::Stuck, 0xffff8c00},
    {raw::TSensorMark::Dead, 0xff1a1a1a},
    {raw::TSensorMark::Dust, 0xff1f5fbf},
    {raw::TSensorMark::Bright, 0xff9b30c0}};

// The list's columns: their shares of the width, and numbers to the right.
constexpr double kColumnShares[raw::kSensorColumns] = {0.24, 0.14, 0.14, 0.14, 0.2, 0.14};

// A kind's symbol, centred at centre: a filled square for a pixel, a ring
// for a spot.
void paintSymbol(QPainter &painter, raw::TSensorMark::Kind kind, QPointF centre, double radius,
                 double mm)
{
    const QColor colour = markColour(kind);
    const bool spot = kind == raw::TSensorMark::Dust || kind == raw::TSensorMark::Bright;
    if (spot) {
        QColor fill = colour;
        fill.setAlpha(40);
        painter.setPen(QPen(colour, kSpotLine * mm));
        painter.setBrush(fill);
        painter.drawEllipse(centre, radius, radius);
    } else {
        painter.setPen(QPen(colour.darker(160), kThinLine * mm));
        painter.setBrush(colour);
        painter.drawRect(QRectF(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius)));
    }
}

QString legendText(raw::TSensorMark::Kind kind, int count)
{
    return QStringLiteral("%1: %2").arg(raw::markKindTitle(kind)).arg(count);
}

} // namespace

QColor markColour(raw::TSensorMark::Kind kind)
{
    for (const auto &[k, rgb] : kColours) {
        if (k == kind)
            return QColor::fromRgb(rgb);
    }
    return Qt::black;
}

// --- the map ---

TSensorMap::TSensorMap(const raw::TSensorCheckResult &result)
    : m_result(result), m_marks(raw::sensorMarks(result))
{
}

QRectF TSensorMap::field(const QRectF &room) const
{
    if (m_result.width <= 0 || m_result.height <= 0 || room.isEmpty())
        return {};
    const QSizeF size =
        QSizeF(m_result.width, m_result.height).scaled(room.size(), Qt::KeepAspectRatio);
    return QRectF(room.center() - QPointF(size.width(), size.height()) / 2, size);
}

QPointF TSensorMap::place(const QRectF &field, double x, double y) const
{
    // A raw pixel's centre.
    return {field.left() + (x + 0.5) * field.width() / m_result.width,
            field.top() + (y + 0.5) * field.height() / m_result.height};
}

double TSensorMap::symbolRadius(const raw::TSensorMark &mark, const QRectF &field, double mm) const
{
    if (!mark.isSpot())
        return kDefectSide * mm / 2;
    return std::max(kSmallestSpot * mm, mark.radius * field.width() / m_result.width);
}

void TSensorMap::paint(QPainter &painter, const QRectF &field, double mm, int highlighted) const
{
    if (field.isEmpty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor::fromRgb(kEdge), kThinLine * mm));
    painter.setBrush(QColor::fromRgb(kField));
    painter.drawRect(field);
    const QPointF activeTopLeft = place(field, m_result.activeLeft - 0.5, m_result.activeTop - 0.5);
    const QPointF activeBottomRight =
        place(field, m_result.activeRight - 0.5, m_result.activeBottom - 0.5);
    painter.setPen(QPen(QColor::fromRgb(kOutline), kThinLine * mm));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(activeTopLeft, activeBottomRight));
    // The spots under the pixels: a pixel on a spot stays visible.
    for (const bool spots : {true, false}) {
        for (const raw::TSensorMark &mark : m_marks) {
            if (mark.isSpot() == spots)
                paintSymbol(painter, mark.kind, place(field, mark.x, mark.y),
                            symbolRadius(mark, field, mm), mm);
        }
    }
    if (highlighted >= 0 && std::size_t(highlighted) < m_marks.size()) {
        const raw::TSensorMark &mark = m_marks[std::size_t(highlighted)];
        const double ring = symbolRadius(mark, field, mm) + kHighlightGap * mm;
        painter.setPen(QPen(Qt::black, kSpotLine * mm));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(place(field, mark.x, mark.y), ring, ring);
    }
    painter.restore();
}

int TSensorMap::markAt(const QRectF &field, QPointF point, double mm) const
{
    int found = -1;
    double nearest = 0;
    for (std::size_t i = 0; i < m_marks.size(); ++i) {
        const QPointF at = place(field, m_marks[i].x, m_marks[i].y);
        const double distance = std::hypot(at.x() - point.x(), at.y() - point.y());
        if (distance <= symbolRadius(m_marks[i], field, mm) + kReach * mm &&
            (found < 0 || distance < nearest)) {
            found = int(i);
            nearest = distance;
        }
    }
    return found;
}

double TSensorMap::legendHeight(double mm)
{
    return std::max(kLegendSymbol, 5.0) * mm;
}

void TSensorMap::paintLegend(QPainter &painter, const QRectF &line, double mm) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    setPoints(painter, kLegendPoints);
    const QColor text = painter.pen().color();
    double x = line.left();
    for (const raw::TSensorMark::Kind kind : raw::kSensorMarkKinds) {
        const auto count =
            std::count_if(m_marks.cbegin(), m_marks.cend(),
                          [kind](const raw::TSensorMark &m) { return m.kind == kind; });
        const double symbol = kLegendSymbol * mm;
        paintSymbol(painter, kind, QPointF(x + symbol / 2, line.center().y()), symbol / 2, mm);
        x += symbol + mm;
        const QString label = legendText(kind, int(count));
        painter.setPen(text);
        const double width = painter.fontMetrics().horizontalAdvance(label);
        painter.drawText(QRectF(x, line.top(), width + mm, line.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, label);
        x += width + kLegendGap * mm;
    }
    painter.restore();
}

// --- the document ---

TSensorMapDocument::TSensorMapDocument(const QString &folder, const raw::TSensorCheckResult &result)
    : m_folder(folder), m_map(result)
{
}

QString TSensorMapDocument::titleOf(const QString &folder)
{
    const QString name = QFileInfo(folder).fileName();
    return QStringLiteral("Sensor check \u00b7 ") +
           (name.isEmpty() ? QDir::toNativeSeparators(folder) : name);
}

int TSensorMapDocument::print(QPagedPaintDevice *device) const
{
    QPainter painter(device);
    if (!painter.isActive())
        return 0;
    const TPageFrame page(device);
    const double mm = page.mm;
    setPoints(painter, kBodyPoints);
    const double line = painter.fontMetrics().height();
    const double row = line * 1.25;

    QStringList intro{QStringLiteral("Folder: ") + QDir::toNativeSeparators(m_folder),
                      raw::checkedText(m_map.result())};
    for (const QString &text : {raw::skippedText(m_map.result()), raw::mapText(m_map.result())}) {
        if (!text.isEmpty())
            intro.append(text);
    }
    const QRectF body = page.body;
    const QRectF field =
        m_map.field(QRectF(body.left(), body.top() + intro.size() * line + kParagraphGap * mm,
                           body.width(), body.height() * kMapShareOfPage));
    const double legendTop = field.bottom() + kParagraphGap * mm;
    const double listTop = legendTop + TSensorMap::legendHeight(mm) + kParagraphGap * mm;

    // Rows on the first page under the map, then whole pages of them.
    const auto rowsFrom = [&](double top) {
        return std::max(1, int((body.bottom() - top) / row) - 1);
    };
    const int marks = int(m_map.marks().size());
    const int firstRows = rowsFrom(listTop), laterRows = rowsFrom(body.top());
    const int pages = 1 + std::max(0, (marks - firstRows + laterRows - 1) / laterRows);

    const auto paintRow = [&](double top, const QStringList &cells, bool header, bool shaded) {
        if (shaded)
            painter.fillRect(QRectF(body.left(), top, body.width(), row), QColor::fromRgb(kShade));
        setPoints(painter, kBodyPoints, header);
        double x = body.left();
        for (int c = 0; c < raw::kSensorColumns; ++c) {
            const double width = kColumnShares[c] * body.width();
            const Qt::Alignment align = c == raw::KindColumn ? Qt::AlignLeft : Qt::AlignRight;
            painter.drawText(QRectF(x + mm, top, width - 2 * mm, row), align | Qt::AlignVCenter,
                             cells.value(c));
            x += width;
        }
        if (header)
            painter.drawLine(QPointF(body.left(), top + row), QPointF(body.right(), top + row));
    };

    int next = 0;
    for (int p = 0; p < pages; ++p) {
        if (p > 0)
            device->newPage();
        page.paintHeader(painter, title());
        page.paintFooter(painter, p + 1, pages);
        double top = body.top();
        if (p == 0) {
            setPoints(painter, kBodyPoints);
            for (const QString &text : std::as_const(intro)) {
                painter.drawText(
                    QRectF(body.left(), top, body.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                    painter.fontMetrics().elidedText(text, Qt::ElideMiddle, int(body.width())));
                top += line;
            }
            m_map.paint(painter, field, mm);
            m_map.paintLegend(painter,
                              QRectF(field.left(), legendTop, body.right() - field.left(),
                                     TSensorMap::legendHeight(mm)),
                              mm);
            top = listTop;
        }
        paintRow(top, raw::sensorListHeader(), true, false);
        const int rows = p == 0 ? firstRows : laterRows;
        for (int r = 0; r < rows && next < marks; ++r, ++next) {
            top += row;
            paintRow(top, raw::sensorListCells(m_map.marks()[std::size_t(next)]), false, r % 2);
        }
    }
    return pages;
}

QString writeSensorMapPdf(const TSensorMapDocument &document, const QString &pdfPath)
{
    return writePagesPdf(pdfPath, document.title(),
                         [&document](QPagedPaintDevice *device) { return document.print(device); });
}
