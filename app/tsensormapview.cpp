#include "tsensormapview.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {

// Millimetres of the screen around the map.
constexpr double kMargin = 3.0;

} // namespace

TSensorMapView::TSensorMapView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setMinimumSize(240, 180);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
}

void TSensorMapView::setResult(const raw::TSensorCheckResult &result)
{
    m_map.emplace(result);
    m_highlighted = -1;
    update();
}

void TSensorMapView::clear(const QString &text)
{
    m_map.reset();
    m_text = text;
    m_highlighted = -1;
    update();
}

void TSensorMapView::setHighlighted(int mark)
{
    m_highlighted = mark;
    update();
}

double TSensorMapView::mm() const
{
    return logicalDpiX() / 25.4;
}

// The legend right under the map, from its left edge.
QRectF TSensorMapView::legendLine() const
{
    const QRectF map = field();
    return QRectF(map.left(), map.bottom() + kMargin * mm(), width() - map.left(),
                  TSensorMap::legendHeight(mm()));
}

// The map as large as fits with the legend under it, at the top.
QRectF TSensorMapView::field() const
{
    if (!m_map)
        return {};
    const double margin = kMargin * mm();
    const QRectF room(margin, margin, width() - 2 * margin,
                      height() - 3 * margin - TSensorMap::legendHeight(mm()));
    const QRectF map = m_map->field(room);
    return map.translated(0, room.top() - map.top());
}

QPoint TSensorMapView::markPosition(int mark) const
{
    if (!m_map || mark < 0 || std::size_t(mark) >= m_map->marks().size())
        return {};
    const raw::TSensorMark &m = m_map->marks()[std::size_t(mark)];
    return m_map->place(field(), m.x, m.y).toPoint();
}

int TSensorMapView::markAt(QPoint point) const
{
    return m_map ? m_map->markAt(field(), point, mm()) : -1;
}

void TSensorMapView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!m_map) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap,
                         m_text);
        return;
    }
    painter.setPen(palette().color(QPalette::Text));
    m_map->paint(painter, field(), mm(), m_highlighted);
    m_map->paintLegend(painter, legendLine(), mm());
}

bool TSensorMapView::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    auto *help = static_cast<QHelpEvent *>(event);
    const int mark = markAt(help->pos());
    if (mark < 0) {
        QToolTip::hideText();
        event->ignore();
    } else {
        QToolTip::showText(
            help->globalPos(),
            raw::markDescription(m_map->marks()[std::size_t(mark)], m_map->result().frames), this);
    }
    return true;
}

void TSensorMapView::mouseMoveEvent(QMouseEvent *event)
{
    setCursor(markAt(event->pos()) >= 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void TSensorMapView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int mark = markAt(event->pos());
    if (mark >= 0)
        emit markClicked(mark);
}
