#include "trawhistogrampanel.h"

#include "settingskeys.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace {

constexpr int kMargin = 8;      // inside the panel
constexpr int kInset = 10;      // from the corner of the view
constexpr int kPlotWidth = 300; // about one pixel per bin
constexpr int kPlotHeight = 110;
constexpr int kWhiteGap = 4;      // between the last bin and the bars at white
constexpr int kWhiteBarWidth = 3; // per channel
// The view shows the panel only when it is at least this many times as wide,
// so that the picture stays the main thing (the card window's narrow pane).
constexpr int kRoomFactor = 2;
constexpr int kTickLength = 3;

QColor channelColour(const QString &name)
{
    static constexpr struct {
        char name;
        QRgb colour;
    } kColours[] = {{'R', 0xffff5050}, {'G', 0xff50d050}, {'B', 0xff5a8cff}, {'L', 0xffdcdcdc}};
    for (const auto &c : kColours) {
        if (name == QLatin1Char(c.name))
            return QColor::fromRgba(c.colour);
    }
    return Qt::white;
}

// The ticks of an axis: where (0 at the left, 1 at white) and the label, if any.
QList<std::pair<double, QString>> axisTicks(bool ev, double whiteAboveBlack)
{
    QList<std::pair<double, QString>> ticks;
    if (ev) {
        for (int stop = -raw::kEvStops; stop <= 0; stop += 2)
            ticks.append({double(stop + raw::kEvStops) / raw::kEvStops,
                          stop % 4 != 0 ? QString()
                          : stop == 0
                              ? QStringLiteral("0 EV")
                              : QString::number(stop).replace(QLatin1Char('-'), QChar(0x2212))});
    } else {
        for (int quarter = 0; quarter <= 4; ++quarter)
            ticks.append({quarter / 4.0, QString::number(qRound(whiteAboveBlack * quarter / 4))});
    }
    return ticks;
}

} // namespace

TRawHistogramPanel::TRawHistogramPanel(QWidget *parent)
    : QWidget(parent), m_ev(QSettings().value(settingskeys::kFrameHistogramEv, false).toBool()),
      m_wanted(QSettings().value(settingskeys::kFrameHistogram, true).toBool())
{
    setCursor(Qt::PointingHandCursor);
    setToolTip(tr("Click or L: linear or EV axis \u00b7 H hides the histogram"));
    parent->installEventFilter(this);
    place();
}

QString TRawHistogramPanel::figuresLine(const raw::TChannelFigures &channel)
{
    return tr("%1 %2 clipped \u00b7 headroom %3")
        .arg(channel.name, raw::clippedText(channel.clippedPercent, channel.clipped),
             raw::headroomText(channel.headroomEv));
}

QStringList TRawHistogramPanel::lines() const
{
    QStringList out;
    for (const raw::TChannelFigures &channel : m_figures.channels)
        out.append(figuresLine(channel));
    return out;
}

void TRawHistogramPanel::setExposure(const raw::TRawHistogram &histogram,
                                     const raw::TRawFigures &figures)
{
    m_histogram = histogram;
    m_figures = figures;
    m_drawn = QImage();
    place();
    update();
}

void TRawHistogramPanel::toggleAxis()
{
    m_ev = !m_ev;
    QSettings().setValue(settingskeys::kFrameHistogramEv, m_ev);
    m_drawn = QImage();
    update();
}

void TRawHistogramPanel::toggleWanted()
{
    m_wanted = !m_wanted;
    QSettings().setValue(settingskeys::kFrameHistogram, m_wanted);
    place();
}

// The top right corner of the parent, in a size for the channels' lines.
void TRawHistogramPanel::place()
{
    const int line = fontMetrics().height();
    const int channels = std::max<int>(1, int(m_figures.channels.size()));
    const QSize size(2 * kMargin + kPlotWidth + kWhiteGap + 3 * kWhiteBarWidth,
                     2 * kMargin + line * (2 + channels) + kPlotHeight + kTickLength);
    const QWidget *view = parentWidget();
    setGeometry(QRect(QPoint(view->width() - size.width() - kInset, kInset), size));
    setVisible(m_wanted && view->width() >= kRoomFactor * size.width() &&
               view->height() >= kRoomFactor * size.height());
}

bool TRawHistogramPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

QRect TRawHistogramPanel::plotRect() const
{
    return QRect(kMargin, kMargin + fontMetrics().height(), kPlotWidth, kPlotHeight);
}

// Drawn once for each histogram and axis: the view repaints under the mouse.
void TRawHistogramPanel::paintEvent(QPaintEvent *)
{
    const qreal ratio = devicePixelRatioF();
    if (m_drawn.size() != size() * ratio) {
        m_drawn = QImage(size() * ratio, QImage::Format_ARGB32_Premultiplied);
        m_drawn.setDevicePixelRatio(ratio);
        m_drawn.fill(Qt::transparent);
        QPainter painter(&m_drawn);
        painter.setFont(font());
        draw(painter);
    }
    QPainter(this).drawImage(0, 0, m_drawn);
}

void TRawHistogramPanel::draw(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(rect(), 6, 6);
    const QRect plot = plotRect();
    const int line = fontMetrics().height();
    painter.setPen(Qt::lightGray);
    const QRect title(kMargin, kMargin, width() - 2 * kMargin, line);
    painter.drawText(title, Qt::AlignLeft | Qt::AlignVCenter,
                     m_ev ? tr("Raw histogram, EV") : tr("Raw histogram, linear"));
    if (m_histogram.isEmpty())
        return;
    painter.drawText(title, Qt::AlignRight | Qt::AlignVCenter, tr("white %1").arg(m_figures.white));
    const QList<QList<quint32>> &bins = m_ev ? m_histogram.ev : m_histogram.linear;
    // Counts up to the largest bin between the first (black and below) and
    // white, either of which may dwarf the rest; those stop at the top.
    quint32 largest = 1;
    for (const QList<quint32> &channel : bins)
        largest = std::max(largest, *std::max_element(channel.begin() + 1, channel.end() - 1));
    const auto heightOf = [&](quint32 count) {
        return std::min(1.0, double(count) / largest) * plot.height();
    };
    const int regular = int(bins.first().size()) - 1;
    const double binWidth = double(plot.width()) / regular;
    for (qsizetype c = 0; c < bins.size() && c < m_figures.channels.size(); ++c) {
        const QColor colour = channelColour(m_figures.channels[c].name);
        QPainterPath path(QPointF(plot.left(), plot.bottom() + 1));
        for (int i = 0; i < regular; ++i) {
            const double y = plot.bottom() + 1 - heightOf(bins[c][i]);
            path.lineTo(plot.left() + i * binWidth, y);
            path.lineTo(plot.left() + (i + 1) * binWidth, y);
        }
        path.lineTo(plot.right() + 1, plot.bottom() + 1);
        QColor fill = colour;
        fill.setAlpha(80);
        painter.setBrush(fill);
        painter.setPen(QPen(colour, 1));
        painter.drawPath(path);
        // The bin at white, the channels side by side.
        const double height = heightOf(bins[c][regular]);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRect(QRectF(plot.right() + 1 + kWhiteGap + c * kWhiteBarWidth,
                                plot.bottom() + 1 - height, kWhiteBarWidth, height));
    }
    // White, where the last bin ends.
    painter.setPen(QPen(Qt::white, 1, Qt::DashLine));
    painter.drawLine(QPointF(plot.right() + 1 + kWhiteGap / 2.0, plot.top()),
                     QPointF(plot.right() + 1 + kWhiteGap / 2.0, plot.bottom() + kTickLength));
    paintAxis(painter, plot);
    const QStringList texts = lines();
    for (qsizetype c = 0; c < texts.size(); ++c) {
        painter.setPen(channelColour(m_figures.channels[c].name).lighter(130));
        painter.drawText(QRect(kMargin, plot.bottom() + kTickLength + line * int(c + 1),
                               width() - 2 * kMargin, line),
                         Qt::AlignLeft | Qt::AlignVCenter, texts[c]);
    }
}

// The ticks and their labels under the plot: raw values less black, or EV.
void TRawHistogramPanel::paintAxis(QPainter &painter, const QRect &plot) const
{
    painter.setPen(Qt::lightGray);
    const int line = fontMetrics().height();
    const auto ticks = axisTicks(m_ev, double(m_figures.white) - m_figures.black);
    for (const auto &[at, label] : ticks) {
        const double x = plot.left() + at * (plot.width() + 1);
        painter.drawLine(QPointF(x, plot.bottom() + 1), QPointF(x, plot.bottom() + kTickLength));
        if (label.isEmpty())
            continue;
        const int width = fontMetrics().horizontalAdvance(label);
        const int left = std::clamp(int(x) - width / 2, 0, this->width() - kMargin / 2 - width);
        painter.drawText(QRect(left, plot.bottom() + kTickLength, width, line), Qt::AlignCenter,
                         label);
    }
}

void TRawHistogramPanel::mousePressEvent(QMouseEvent *event)
{
    event->accept(); // the click is the panel's, not the view's zoom
}

void TRawHistogramPanel::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        toggleAxis();
}
