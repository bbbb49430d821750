#include "tbarchart.h"

#include "tbarchartaccessible.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QToolTip>

#include <algorithm>
#include <limits>

namespace {

constexpr int kMargin = 6;
constexpr int kGap = 6;                // between the value labels and the bars
constexpr int kBarSpacing = 3;         // between two bars
constexpr int kAxisTicks = 4;          // steps along the frames axis, at most
constexpr double kMaxLabelShare = 0.6; // of the width, for the value labels at most
constexpr int kLabelSlack = 4;         // pixels, so that a label that fits is never elided
constexpr int kTickLabelGap = 6;       // pixels at least between two numbers of the axis

// A step of 1, 2 or 5 times a power of ten, so the ticks fall on round numbers.
int tickStep(int largest)
{
    int step = 1;
    while (largest / step > kAxisTicks) {
        if (largest / (step * 2) <= kAxisTicks)
            return step * 2;
        if (largest / (step * 5) <= kAxisTicks)
            return step * 5;
        step *= 10;
    }
    return step;
}

} // namespace

TBarChart::TBarChart(TCategory category, QWidget *parent) : QWidget(parent), m_category(category)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(categoryName(category));
    installBarChartAccessibility();
    setAccessibleDescription(tr("No frames"));
}

QString TBarChart::framesText(int frames)
{
    return frames == 1 ? tr("1 frame") : tr("%1 frames").arg(frames);
}

QString TBarChart::barText(int bar) const
{
    const TCount &count = m_counts[bar];
    QString text = QStringLiteral("%1 %2: %3")
                       .arg(categoryName(m_category), count.value, framesText(count.frames));
    if (count.value == m_chosen)
        text += tr(", shown alone");
    return text;
}

void TBarChart::setCounts(const QList<TCount> &counts)
{
    const QString current = m_current >= 0 ? m_counts[m_current].value : QString();
    m_counts = counts;
    int bar = -1;
    for (int i = 0; i < m_counts.size(); ++i) {
        if (m_counts[i].value == current)
            bar = i;
    }
    setCurrentBar(bar >= 0 || m_counts.isEmpty() || !hasFocus() ? bar : 0);
    updateGeometry();
    update();
}

void TBarChart::setCurrentBar(int bar)
{
    m_current = bar;
    QString description;
    if (m_counts.isEmpty())
        description = tr("No frames");
    else if (bar >= 0)
        description = barText(bar);
    else
        description = tr("%n bar(s)", nullptr, int(m_counts.size()));
    if (description != accessibleDescription()) {
        setAccessibleDescription(description);
        QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&changed);
    }
    if (bar >= 0 && hasFocus()) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        focus.setChild(bar);
        QAccessible::updateAccessibility(&focus);
    }
    update();
}

QStringList TBarChart::labels() const
{
    QStringList labels;
    int widest = 0;
    for (const TCount &count : m_counts) {
        labels.append(count.value);
        widest = std::max(widest, fontMetrics().horizontalAdvance(count.value));
    }
    if (labels.size() < 2 || widest + kLabelSlack <= int(width() * kMaxLabelShare))
        return labels;
    // The words every label begins with.
    qsizetype shared = 0;
    for (;;) {
        const qsizetype end = labels.first().indexOf(QLatin1Char(' '), shared);
        if (end < 0)
            break;
        const QString start = labels.first().left(end + 1);
        if (!std::all_of(labels.cbegin(), labels.cend(),
                         [&](const QString &label) { return label.startsWith(start); }))
            break;
        shared = end + 1;
    }
    for (QString &label : labels)
        label = label.mid(shared);
    return labels;
}

void TBarChart::setChosen(const QString &value)
{
    m_chosen = value;
    setCurrentBar(m_current); // says so to accessibility tools
}

int TBarChart::labelWidth() const
{
    int widest = 0;
    for (const QString &label : labels())
        widest = std::max(widest, fontMetrics().horizontalAdvance(label));
    return std::min(widest + kLabelSlack, int(width() * kMaxLabelShare));
}

QRect TBarChart::barArea() const
{
    const int line = fontMetrics().height();
    const int left = kMargin + labelWidth() + kGap;
    const int top = kMargin + line + kGap;                   // below the title
    const int bottom = height() - kMargin - 2 * line - kGap; // above the axis and its caption
    return QRect(left, top, std::max(1, width() - left - kMargin), std::max(1, bottom - top));
}

QSize TBarChart::sizeHint() const
{
    const int line = fontMetrics().height();
    const int bars = int(std::max<qsizetype>(1, m_counts.size()));
    return QSize(360, 2 * kMargin + 3 * line + 2 * kGap + bars * (line + kBarSpacing));
}

QSize TBarChart::minimumSizeHint() const
{
    return QSize(200, sizeHint().height());
}

int TBarChart::barAt(QPoint position) const
{
    const QRect area = barArea();
    if (m_counts.isEmpty() || position.y() < area.top() || position.y() >= area.bottom() ||
        position.x() < kMargin || position.x() > area.right())
        return -1;
    const int index = int((position.y() - area.top()) * m_counts.size() / area.height());
    return index < m_counts.size() ? index : -1;
}

void TBarChart::mousePressEvent(QMouseEvent *event)
{
    const int bar = barAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && bar >= 0)
        clickBar(bar);
}

void TBarChart::clickBar(int bar)
{
    setCurrentBar(bar);
    emit barClicked(m_category, m_counts[bar].value);
}

QRect TBarChart::barRect(int bar) const
{
    const QRect area = barArea();
    const double slot = m_counts.isEmpty() ? 0 : double(area.height()) / m_counts.size();
    const int top = area.top() + int(bar * slot);
    return QRect(kMargin, top, area.right() - kMargin, std::max(1, int(slot) - kBarSpacing));
}

void TBarChart::keyPressEvent(QKeyEvent *event)
{
    const int bars = int(m_counts.size());
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Left:
        if (bars > 0)
            setCurrentBar(std::max(m_current - 1, 0));
        break;
    case Qt::Key_Down:
    case Qt::Key_Right:
        if (bars > 0)
            setCurrentBar(std::min(m_current + 1, bars - 1));
        break;
    case Qt::Key_Home:
        if (bars > 0)
            setCurrentBar(0);
        break;
    case Qt::Key_End:
        if (bars > 0)
            setCurrentBar(bars - 1);
        break;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_current >= 0)
            clickBar(m_current);
        break;
    default: QWidget::keyPressEvent(event); return;
    }
    event->accept();
}

bool TBarChart::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const int bar = barAt(static_cast<QHelpEvent *>(event)->pos());
        if (bar >= 0)
            QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                               barText(bar) + QLatin1Char('\n') +
                                   tr("Click to show only these frames, again to show all"),
                               this);
        else
            QToolTip::hideText();
        return true;
    }
    if (event->type() == QEvent::FocusIn && m_current < 0 && !m_counts.isEmpty())
        setCurrentBar(0);
    return QWidget::event(event);
}

void TBarChart::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    const QPalette &colours = palette();
    const QFontMetrics metrics = fontMetrics();
    const int line = metrics.height();

    QFont titleFont = font();
    titleFont.setBold(true);
    painter.setFont(titleFont);
    painter.setPen(colours.color(QPalette::WindowText));
    painter.drawText(QRect(kMargin, kMargin, width() - 2 * kMargin, line),
                     Qt::AlignLeft | Qt::AlignVCenter, categoryName(m_category));
    painter.setFont(font());

    const QRect area = barArea();
    int largest = 1;
    for (const TCount &count : m_counts)
        largest = std::max(largest, count.frames);
    const int step = tickStep(largest);
    const int axisEnd = (largest + step - 1) / step * step;
    const double slot = m_counts.isEmpty() ? 0 : double(area.height()) / m_counts.size();
    const QStringList labels = this->labels();

    for (int i = 0; i < m_counts.size(); ++i) {
        const TCount &count = m_counts[i];
        const int top = area.top() + int(i * slot);
        const int height = std::max(1, int(slot) - kBarSpacing);
        const QRect label(kMargin, top, area.left() - kGap - kMargin, height);
        painter.setPen(colours.color(QPalette::WindowText));
        painter.drawText(label, Qt::AlignRight | Qt::AlignVCenter,
                         metrics.elidedText(labels[i], Qt::ElideRight, label.width()));

        const int length = std::max(1, area.width() * count.frames / axisEnd);
        const QRect bar(area.left(), top, length, height);
        const bool chosen = count.value == m_chosen;
        painter.fillRect(bar, colours.color(chosen ? QPalette::Link : QPalette::Highlight));
        // The count inside the bar where it fits, else just after it.
        const QString frames = QString::number(count.frames);
        const int textWidth = metrics.horizontalAdvance(frames) + 2 * kBarSpacing;
        const bool inside = textWidth <= length;
        painter.setPen(colours.color(inside ? QPalette::HighlightedText : QPalette::WindowText));
        painter.drawText(inside ? bar.adjusted(0, 0, -kBarSpacing, 0)
                                : QRect(bar.right() + kBarSpacing, top, textWidth, height),
                         (inside ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, frames);
        if (i == m_current && hasFocus()) {
            QStyleOptionFocusRect focus;
            focus.initFrom(this);
            focus.rect = barRect(i);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
        }
    }

    // The frames axis: a rule with round ticks and its caption.
    const int axisY = area.bottom() + kGap / 2;
    painter.setPen(colours.color(QPalette::Mid));
    painter.drawLine(area.left(), axisY, area.right(), axisY);
    painter.drawLine(area.left(), area.top(), area.left(), axisY);
    painter.setPen(colours.color(QPalette::WindowText));
    // A number that would touch the one before it is left out ("80100").
    int shownEnd = std::numeric_limits<int>::min();
    for (int value = 0; value <= axisEnd; value += step) {
        const int x = area.left() + area.width() * value / axisEnd;
        painter.drawLine(x, axisY, x, axisY + 3);
        const QString text = QString::number(value);
        const int w = metrics.horizontalAdvance(text);
        const int left = std::min(x - w / 2, width() - kMargin - w);
        if (left < shownEnd + kTickLabelGap)
            continue;
        painter.drawText(QRect(left, axisY + 3, w, line), Qt::AlignCenter, text);
        shownEnd = left + w;
    }
    painter.drawText(QRect(area.left(), axisY + 3 + line, area.width(), line),
                     Qt::AlignHCenter | Qt::AlignVCenter, tr("frames"));
}
