#include "tframeview.h"

#include "marker.h"
#include "raw/decode.h"
#include "raw/develop.h"
#include "raw/frameimage.h"
#include "settingskeys.h"
#include "trawhistogrampanel.h"
#include "workpool.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSettings>
#include <QThreadPool>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

// The fitted view draws from a copy this large on its longer side: painting
// an 18-megapixel picture scaled down on every repaint would stall the window.
constexpr int kOverviewSide = 1600;
// Zoom steps of the wheel, and how far in and out it goes.
constexpr double kWheelStep = 1.25;
constexpr double kMostZoom = 16.0;
// A press that moves less than this is a click (100 %), not a drag.
constexpr int kClickSlop = 4;
constexpr int kReadoutHeight = 22;
// The overlays' colours: bold, and seldom in a photograph.
constexpr QRgb kClippedColour = 0xffff00ff;   // magenta
constexpr QRgb kNearBlackColour = 0xff00b4ff; // light blue

QImage shownForm(const raw::TPicture &picture)
{
    return raw::frameImage(picture).convertToFormat(QImage::Format_RGB32);
}

QString rawCellText(const raw::TRawImage &raw, QPoint stored)
{
    const raw::TRawInfo &info = raw.info;
    const int x = stored.x() & ~1, y = stored.y() & ~1;
    if (x < 0 || y < 0 || x + 1 >= info.width || y + 1 >= info.height)
        return {};
    static constexpr char kColours[] = {'R', 'G', 'B'};
    QStringList values;
    for (int dy = 0; dy < 2; ++dy) {
        for (int dx = 0; dx < 2; ++dx) {
            const QString value = QString::number(raw.at(x + dx, y + dy));
            values.append(info.layout == raw::TLayout::Cfa
                              ? QString(QLatin1Char(kColours[info.colourAt(x + dx, y + dy) % 3])) +
                                    QLatin1Char(' ') + value
                              : value);
        }
    }
    return QStringLiteral("raw %1 at %2, %3").arg(values.join(QStringLiteral(" · "))).arg(x).arg(y);
}

} // namespace

TFrameView::TFrameView(TNeighbour neighbour, QWidget *parent)
    : QWidget(parent), m_neighbour(std::move(neighbour))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(160, 120);
    m_guard->view = this;
    m_panel = new TRawHistogramPanel(this);
    connect(marker(), &TMarker::marked, this, [this](const QString &path, const TMark &mark) {
        if (const auto frame = m_frames.value(path)) {
            frame->mark = mark;
            if (path == m_path)
                update();
        }
    });
}

TFrameView::~TFrameView()
{
    // The developments end at their next strip or tile and post nothing
    // more; the view does not wait for them (a file on a hung share).
    for (const auto &frame : std::as_const(m_frames))
        *frame->cancel = true;
    const std::lock_guard lock(m_guard->mutex);
    m_guard->view = nullptr;
}

void TFrameView::showFrame(const QString &path)
{
    m_centreOn.reset();
    m_path = path;
    setWindowTitle(QFileInfo(path).fileName() + QStringLiteral(" \u2013 Tolvik"));
    keepAround(path);
    if (m_fitted)
        fit();
    clampOffset();
    showExposure();
    update();
}

void TFrameView::showFrameAt(const QString &path, QPoint rawPosition)
{
    showFrame(path);
    m_centreOn = rawPosition;
    centreWhenReady();
}

// 100 % around the raw position asked for, as soon as the frame's geometry
// is known (its half-size picture is in).
void TFrameView::centreWhenReady()
{
    const TFrame *frame = current();
    if (!m_centreOn || !frame || !frame->raw)
        return;
    const QPoint at = raw::developedPositionOf(frame->raw->info, raw::TSize::Full, *m_centreOn);
    m_centreOn.reset();
    m_scale = 1.0;
    m_fitted = false;
    m_offset = QPointF(rect().center()) - QPointF(at) - QPointF(0.5, 0.5);
    clampOffset();
    update();
}

// The shown frame and its neighbours stay; every other frame is let go.
void TFrameView::keepAround(const QString &path)
{
    QStringList wanted{path};
    const TFrame *shown = m_frames.value(path).get();
    const bool ready = shown && (!shown->full.isNull() || !shown->error.isEmpty());
    // Ahead only once the shown frame is ready: it comes first.
    if (ready) {
        for (const int direction : {+1, -1}) {
            const QString next = m_neighbour ? m_neighbour(path, direction) : QString();
            if (!next.isEmpty())
                wanted.append(next);
        }
    }
    for (auto frame = m_frames.begin(); frame != m_frames.end();) {
        if (wanted.contains(frame.key())) {
            ++frame;
        } else {
            *frame.value()->cancel = true;
            frame = m_frames.erase(frame);
        }
    }
    for (const QString &file : std::as_const(wanted)) {
        if (!m_frames.contains(file))
            develop(file);
    }
}

// Decodes and develops a frame on the window's pool: the half-size picture
// first, then the full size; each is posted to the view as it is made.
void TFrameView::develop(const QString &path)
{
    auto frame = std::make_shared<TFrame>();
    m_frames.insert(path, frame);
    const std::shared_ptr<std::atomic<bool>> cancel = frame->cancel;
    const auto post = [guard = m_guard, path, cancel](auto apply) {
        const std::lock_guard lock(guard->mutex);
        TFrameView *view = guard->view;
        if (!view)
            return;
        QMetaObject::invokeMethod(
            view, [view, path, cancel, apply] { view->received(path, cancel, apply); },
            Qt::QueuedConnection);
    };
    const TSidecarNaming naming = sidecarNaming();
    workPool()->start([path, cancel, post, naming] {
        post([mark = readMarks(path, naming).mark](TFrame &f) { f.mark = mark; });
        raw::TDecodeResult decoded = raw::decodeFile(path, cancel.get());
        if (*cancel)
            return;
        if (!decoded.ok()) {
            post([error = decoded.error](TFrame &f) { f.error = error; });
            return;
        }
        const auto rawImage = std::make_shared<const raw::TRawImage>(std::move(decoded.image));
        raw::TDevelopOptions options;
        options.cancel = cancel.get();
        options.size = raw::TSize::Half;
        const QImage half = shownForm(raw::develop(*rawImage, options));
        if (*cancel)
            return;
        if (half.isNull()) {
            post([](TFrame &f) { f.error = tr("The raw picture could not be developed."); });
            return;
        }
        const QImage overview = half.width() > kOverviewSide || half.height() > kOverviewSide
                                    ? half.scaled(kOverviewSide, kOverviewSide, Qt::KeepAspectRatio,
                                                  Qt::SmoothTransformation)
                                    : half;
        post([rawImage, half, overview](TFrame &f) {
            f.raw = rawImage;
            f.half = half;
            f.overview = overview;
        });
        const auto exposure = std::make_shared<const TExposure>(exposureOf(*rawImage));
        if (*cancel)
            return;
        post([exposure](TFrame &f) { f.exposure = exposure; });
        options.size = raw::TSize::Full;
        const QImage full = shownForm(raw::develop(*rawImage, options));
        if (!*cancel && !full.isNull())
            post([full](TFrame &f) { f.full = full; });
    });
}

// On the window's thread: a development's result for path, unless the
// frame was let go meanwhile.
void TFrameView::received(const QString &path, const std::shared_ptr<std::atomic<bool>> &cancel,
                          const std::function<void(TFrame &)> &apply)
{
    const std::shared_ptr<TFrame> target = m_frames.value(path);
    if (!target || target->cancel != cancel)
        return;
    apply(*target);
    if (path != m_path)
        return;
    centreWhenReady();
    if (m_fitted)
        fit();
    showExposure();
    update();
    // Ahead once the shown frame is ready; its half-size picture alone does
    // not make it so, and asking for the neighbours lists their folder.
    if (!target->full.isNull() || !target->error.isEmpty())
        keepAround(m_path);
}

const TFrameView::TFrame *TFrameView::current() const
{
    return m_frames.value(m_path).get();
}

QSize TFrameView::frameSize() const
{
    const TFrame *frame = current();
    if (!frame || !frame->raw)
        return {};
    const raw::TGeometry geometry = raw::geometryOf(frame->raw->info, raw::TSize::Full);
    return {geometry.uprightWidth(), geometry.uprightHeight()};
}

bool TFrameView::showsFullSize() const
{
    const TFrame *frame = current();
    return frame && !frame->full.isNull();
}

QString TFrameView::error() const
{
    const TFrame *frame = current();
    return frame ? frame->error : QString();
}

// The picture to draw from at the present zoom: the full size when it is in
// and shown at half its size or more, else the half size, else the overview.
QImage TFrameView::shownImage(double *pixelsPerImagePixel) const
{
    const TFrame *frame = current();
    const QSize size = frameSize();
    if (!frame || size.isEmpty())
        return {};
    for (const QImage *image : {&frame->full, &frame->half, &frame->overview}) {
        if (image->isNull())
            continue;
        const double perPixel = double(size.width()) / image->width();
        if (m_scale * perPixel >= 0.5 || image == &frame->overview) {
            *pixelsPerImagePixel = perPixel;
            return *image;
        }
    }
    return {};
}

QRect TFrameView::readoutBar() const
{
    return QRect(0, height() - kReadoutHeight, width(), kReadoutHeight);
}

void TFrameView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0x20, 0x20, 0x20));
    double perPixel = 1;
    const QImage image = shownImage(&perPixel);
    if (image.isNull()) {
        painter.setPen(Qt::lightGray);
        painter.drawText(
            rect().adjusted(12, 12, -12, -12 - kReadoutHeight), Qt::AlignCenter | Qt::TextWordWrap,
            error().isEmpty() ? tr("Developing %1 \u2026").arg(QFileInfo(m_path).fileName())
                              : QFileInfo(m_path).fileName() + QStringLiteral(": ") + error());
    } else {
        // Only the part in the window is drawn, smoothly when scaled down,
        // as pixels when enlarged.
        const double scale = m_scale * perPixel; // screen pixels per image pixel
        const QRectF picture(m_offset, QSizeF(image.width() * scale, image.height() * scale));
        const QRectF visible = picture.intersected(QRectF(rect()));
        if (!visible.isEmpty()) {
            const QRectF source((visible.left() - m_offset.x()) / scale,
                                (visible.top() - m_offset.y()) / scale, visible.width() / scale,
                                visible.height() / scale);
            painter.setRenderHint(QPainter::SmoothPixmapTransform, scale < 1.0);
            painter.drawImage(visible, image, source);
            paintMarks(painter, image.size(), visible, source);
        }
        paintMark(painter);
    }
    const QRect bar = readoutBar();
    painter.fillRect(bar, QColor(0, 0, 0, 170));
    painter.setPen(Qt::white);
    const QString readout = rect().contains(m_mouse) ? readoutAt(m_mouse) : QString();
    const QString zoom = QStringLiteral("%1 %").arg(qRound(m_scale * 100));
    painter.drawText(bar.adjusted(8, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft, readout);
    painter.drawText(bar.adjusted(8, 0, -8, 0), Qt::AlignVCenter | Qt::AlignRight,
                     showsFullSize() ? zoom : zoom + QStringLiteral(" \u00b7 half size"));
}

QPointF TFrameView::toPicture(QPointF widgetPoint) const
{
    return (widgetPoint - m_offset) / m_scale;
}

QString TFrameView::readoutAt(QPoint widgetPoint) const
{
    const TFrame *frame = current();
    const QSize size = frameSize();
    const QPointF at = toPicture(widgetPoint);
    if (!frame || size.isEmpty() || at.x() < 0 || at.y() < 0 || at.x() >= size.width() ||
        at.y() >= size.height())
        return {};
    const QPoint pixel(int(at.x()), int(at.y()));
    // The developed values of the best picture in, and the sensor's values.
    const bool full = !frame->full.isNull();
    const QImage &image = full ? frame->full : frame->half;
    const QPoint inImage = full ? pixel : pixel / 2;
    QString text = QStringLiteral("%1, %2").arg(pixel.x()).arg(pixel.y());
    if (image.valid(inImage)) {
        const QRgb rgb = image.pixel(inImage);
        text +=
            QStringLiteral("   R %1  G %2  B %3").arg(qRed(rgb)).arg(qGreen(rgb)).arg(qBlue(rgb));
    }
    const QString cell =
        rawCellText(*frame->raw, raw::rawPositionOf(frame->raw->info, raw::TSize::Full, pixel));
    return cell.isEmpty() ? text : text + QStringLiteral("   ") + cell;
}

void TFrameView::fit()
{
    const QSize size = frameSize();
    if (size.isEmpty())
        return;
    const QSizeF room(width(), height() - kReadoutHeight);
    m_scale = std::min(room.width() / size.width(), room.height() / size.height());
    m_offset = QPointF((room.width() - size.width() * m_scale) / 2,
                       (room.height() - size.height() * m_scale) / 2);
    m_fitted = true;
}

void TFrameView::zoomAround(QPointF widgetPoint, double scale)
{
    const QPointF at = toPicture(widgetPoint);
    m_scale = scale;
    m_offset = widgetPoint - at * m_scale;
    m_fitted = false;
    clampOffset();
    update();
}

// Keeps the picture in the window: centred where it is smaller, with no
// empty border where it is larger.
void TFrameView::clampOffset()
{
    const QSize size = frameSize();
    if (size.isEmpty() || m_fitted)
        return;
    const QSizeF room(width(), height() - kReadoutHeight);
    const QSizeF shown(size.width() * m_scale, size.height() * m_scale);
    const auto clamp = [](double offset, double shown, double room) {
        return shown <= room ? (room - shown) / 2 : std::clamp(offset, room - shown, 0.0);
    };
    m_offset = QPointF(clamp(m_offset.x(), shown.width(), room.width()),
                       clamp(m_offset.y(), shown.height(), room.height()));
}

void TFrameView::resizeEvent(QResizeEvent *)
{
    if (m_fitted)
        fit();
    clampOffset();
}

void TFrameView::wheelEvent(QWheelEvent *event)
{
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0 || frameSize().isEmpty())
        return;
    const QSize size = frameSize();
    const double fitted =
        std::min(double(width()) / size.width(), double(height() - kReadoutHeight) / size.height());
    const double scale =
        std::clamp(m_scale * std::pow(kWheelStep, steps), std::min(fitted, 1.0) / 2, kMostZoom);
    zoomAround(event->position(), scale);
}

void TFrameView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->pos();
    m_offsetAtPress = m_offset;
    m_dragged = false;
}

void TFrameView::mouseMoveEvent(QMouseEvent *event)
{
    m_mouse = event->pos();
    if (event->buttons() & Qt::LeftButton) {
        const QPoint moved = event->pos() - m_pressedAt;
        m_dragged = m_dragged || moved.manhattanLength() > kClickSlop;
        if (m_dragged && !m_fitted) {
            m_offset = m_offsetAtPress + moved;
            clampOffset();
        }
    }
    update();
}

void TFrameView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_dragged)
        return;
    // A click: 100 % at the mouse, or back to the fitted view.
    if (m_fitted || m_scale != 1.0)
        zoomAround(event->position(), 1.0);
    else {
        fit();
        update();
    }
}

void TFrameView::leaveEvent(QEvent *)
{
    m_mouse = QPoint(-1, -1);
    update();
}

void TFrameView::step(int direction)
{
    const QString next = m_neighbour ? m_neighbour(m_path, direction) : QString();
    if (next.isEmpty())
        return;
    showFrame(next); // the zoom and position stay, so the same detail shows
    emit stepped(next);
}

void TFrameView::keyPressEvent(QKeyEvent *event)
{
    if (markKey(event->key(), event->modifiers()))
        return;
    switch (event->key()) {
    case Qt::Key_Z: {
        const QPoint at = rect().contains(m_mouse) ? m_mouse : rect().center();
        if (m_fitted || m_scale != 1.0) {
            zoomAround(at, 1.0);
        } else {
            fit();
            update();
        }
        break;
    }
    case Qt::Key_PageDown:
    case Qt::Key_Right: step(+1); break;
    case Qt::Key_PageUp:
    case Qt::Key_Left: step(-1); break;
    case Qt::Key_F11: isFullScreen() ? showNormal() : showFullScreen(); break;
    case Qt::Key_Escape:
        if (isFullScreen())
            showNormal();
        else
            close();
        break;
    default:
        if (!exposureKey(event->key(), event->modifiers()))
            QWidget::keyPressEvent(event);
    }
}

// Figured on the worker beside the development, once the half size is shown.
TFrameView::TExposure TFrameView::exposureOf(const raw::TRawImage &raw)
{
    return {raw::rawFigures(raw), raw::rawHistogram(raw),
            raw::exposureMarks(raw, raw::TSize::Half, kClippedColour, kNearBlackColour),
            raw::exposureMarks(raw, raw::TSize::Full, kClippedColour, kNearBlackColour)};
}

// The panel shows the figures of the frame shown, blank until they are in.
void TFrameView::showExposure()
{
    const TFrame *frame = current();
    const TExposure *exposure = frame ? frame->exposure.get() : nullptr;
    m_panel->setExposure(exposure ? exposure->histogram : raw::TRawHistogram(),
                         exposure ? exposure->figures : raw::TRawFigures());
}

// H shows or hides the histogram, L switches its axis; O and U the overlays.
bool TFrameView::exposureKey(int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (key) {
    case Qt::Key_H: m_panel->toggleWanted(); break;
    case Qt::Key_L: m_panel->toggleAxis(); break;
    case Qt::Key_O: m_marksClipped = !m_marksClipped; break;
    case Qt::Key_U: m_marksNearBlack = !m_marksNearBlack; break;
    default: return false;
    }
    update();
    return true;
}

// The overlays over the part `source` of the picture drawn at `target`, from
// the marks of its size (the half size's under the overview). Enlarged, a
// mark is a block of screen pixels; made smaller, a screen pixel is marked
// when any pixel under it is.
void TFrameView::paintMarks(QPainter &painter, QSize shown, const QRectF &target,
                            const QRectF &source) const
{
    const TFrame *frame = current();
    const TExposure *exposure = frame ? frame->exposure.get() : nullptr;
    if (!exposure || (!m_marksClipped && !m_marksNearBlack))
        return;
    const raw::TExposureMarks &marks =
        exposure->full.clipped.size() == shown ? exposure->full : exposure->half;
    if (marks.isNull())
        return;
    const double ratio = double(marks.clipped.width()) / shown.width(); // mask pixels per shown
    const QRectF from(source.topLeft() * ratio, source.size() * ratio);
    const double scale = target.width() / from.width(); // screen pixels per mask pixel
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (const QImage *mask : {m_marksClipped ? &marks.clipped : nullptr,
                               m_marksNearBlack ? &marks.nearBlack : nullptr}) {
        if (!mask) {
            continue;
        } else if (scale >= 1) {
            painter.drawImage(target, *mask, from);
        } else {
            QPoint origin;
            const QImage onScreen =
                raw::marksOnScreen(*mask, from, scale, target.topLeft(), &origin);
            painter.drawImage(origin, onScreen);
        }
    }
}

bool TFrameView::markKey(int key, Qt::KeyboardModifiers modifiers)
{
    if (key == Qt::Key_Z && modifiers == Qt::ControlModifier) {
        marker()->undo();
        return true;
    }
    const std::optional<TMarkEdit> edit = markEditOfKey(key, modifiers);
    if (!edit || !current() || !current()->error.isEmpty())
        return false;
    marker()->mark({m_path}, *edit);
    if (QSettings().value(settingskeys::kStepAfterMarking, false).toBool())
        step(+1);
    return true;
}

QString TFrameView::markShown() const
{
    const TFrame *frame = current();
    if (!frame)
        return {};
    const TMarkTexts texts = markTexts(frame->mark, true);
    return QStringList{texts.rating, texts.label}.join(QLatin1Char(' ')).trimmed();
}

// The frame's stars and label in the top left corner, where a photographer
// culling looks for them.
void TFrameView::paintMark(QPainter &painter) const
{
    const QString shown = markShown();
    if (shown.isEmpty())
        return;
    const QFontMetrics metrics(font());
    const QString label = current()->mark.label;
    const std::optional<unsigned> rgb = labelRgb(label);
    const QColor dot = rgb ? QColor(QRgb(*rgb)) : QColor();
    constexpr int kMargin = 10;
    constexpr int kPadding = 6;
    const int dotSide = dot.isValid() ? metrics.height() - 4 : 0;
    const QRect box(kMargin, kMargin,
                    metrics.horizontalAdvance(shown) + 2 * kPadding + (dotSide ? dotSide + 4 : 0),
                    metrics.height() + 2 * kPadding);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(box, 4, 4);
    int x = box.left() + kPadding;
    if (dotSide) {
        painter.setBrush(dot);
        painter.drawEllipse(QRect(x, box.center().y() - dotSide / 2, dotSide, dotSide));
        x += dotSide + 4;
    }
    const bool rejected = current()->mark.hasRating && current()->mark.rating < 0;
    painter.setPen(rejected ? QColor(0xff, 0x70, 0x70) : QColor(Qt::white));
    painter.drawText(QRect(x, box.top(), box.right() - x, box.height()), Qt::AlignVCenter, shown);
    painter.restore();
}
