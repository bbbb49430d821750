#include "documents/pageframe.h"

#include "card/safewrite.h"

#include <QCoreApplication>
#include <QDate>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

namespace {

// Millimetres.
constexpr double kMargin = 15.0;
constexpr double kHeaderHeight = 10.0; // text line, rule, gap
constexpr double kFooterHeight = 9.0;  // gap, rule, text line
constexpr double kRuleWidth = 0.25;

constexpr double kHeaderPoints = 11.0;
constexpr double kFooterPoints = 8.0;

} // namespace

void setPoints(QPainter &painter, double points, bool bold)
{
    QFont font = painter.font();
    font.setPointSizeF(points);
    font.setBold(bold);
    painter.setFont(font);
}

TPageFrame::TPageFrame(const QPaintDevice *device)
    : mm(device->logicalDpiY() / 25.4),
      body(0, kHeaderHeight * mm, device->width(),
           device->height() - (kHeaderHeight + kFooterHeight) * mm)
{
}

void TPageFrame::paintHeader(QPainter &painter, const QString &text) const
{
    painter.save();
    painter.setPen(QPen(painter.pen().color(), kRuleWidth * mm));
    setPoints(painter, kHeaderPoints);
    const double line = painter.fontMetrics().height();
    painter.drawText(QRectF(0, 0, body.width(), line), Qt::AlignCenter, text);
    const double rule = line + 1.5 * mm;
    painter.drawLine(QPointF(0, rule), QPointF(body.width(), rule));
    painter.restore();
}

void TPageFrame::paintFooter(QPainter &painter, int page, int pages) const
{
    painter.save();
    painter.setPen(QPen(painter.pen().color(), kRuleWidth * mm));
    const double rule = body.bottom() + 2 * mm;
    painter.drawLine(QPointF(0, rule), QPointF(body.width(), rule));
    setPoints(painter, kFooterPoints);
    const QString text = QStringLiteral("Seite %1 / %2 | %3")
                             .arg(page)
                             .arg(pages)
                             .arg(QDate::currentDate().toString(Qt::TextDate));
    painter.drawText(QRectF(0, rule + 1.5 * mm, body.width(), painter.fontMetrics().height()),
                     Qt::AlignHCenter | Qt::AlignTop, text);
    painter.restore();
}

void setReportMargins(QPagedPaintDevice *device)
{
    device->setPageMargins(QMarginsF(kMargin, kMargin, kMargin, kMargin), QPageLayout::Millimeter);
}

QString reportCreator()
{
    return QStringLiteral("Tolvik ") + QCoreApplication::applicationVersion();
}

QString writePagesPdf(const QString &pdfPath, const QString &title,
                      const std::function<int(QPagedPaintDevice *)> &print)
{
    return writeAtomically(pdfPath, [&](QIODevice &device) {
        QPdfWriter writer(&device);
        writer.setPageSize(QPageSize(QPageSize::A4));
        setReportMargins(&writer);
        writer.setTitle(title);
        writer.setCreator(reportCreator());
        return print(&writer) > 0;
    });
}
