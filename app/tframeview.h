#ifndef TFRAMEVIEW_H
#define TFRAMEVIEW_H

// The frame itself, developed from its raw picture, in a window of its own:
// fitted at first, its half-size picture at once and the full size as soon
// as it is ready. A click or Z toggles 100 % at the mouse, the wheel zooms
// around the mouse, dragging pans; Page Down/Up and the arrow keys step to
// the next and previous frames, keeping zoom and position, so that the same
// detail can be compared across a burst. The frames next to the shown one
// are developed ahead. The readout under the mouse gives the developed
// values and the raw values of the sensor's 2 x 2 cell.
//
// The exposure as the sensor recorded it: the raw histogram with each
// channel's clipped share and headroom on a panel in a corner (H shows or
// hides it, L or a click on it switches between a linear and an EV axis),
// and overlays in a bold colour of the pixels clipped in any channel (O) and
// of those within 1/2 EV of black (U).

#include "card/marks.h"
#include "raw/exposuremarks.h"
#include "raw/picture.h"
#include "raw/rawhistogram.h"
#include "raw/rawimage.h"
#include "raw/rawstats.h"

#include <QHash>
#include <QImage>
#include <QPointF>
#include <QString>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class TRawHistogramPanel;

class TFrameView : public QWidget {
    Q_OBJECT

public:
    // The file before (-1) or after (+1) path in the order frames are
    // stepped through; empty at either end.
    using TNeighbour = std::function<QString(const QString &path, int direction)>;

    explicit TFrameView(TNeighbour neighbour, QWidget *parent = nullptr);
    ~TFrameView() override;

    void showFrame(const QString &path);
    // The frame at 100 % with the stored raw position at the window's
    // centre (as near as the picture's edges let it), once the frame is in.
    void showFrameAt(const QString &path, QPoint rawPosition);
    QString path() const { return m_path; }

    // What is shown, for the tests: the picture's size in full-size pixels,
    // whether the full-size picture is in, and screen pixels per picture pixel.
    QSize frameSize() const;
    bool showsFullSize() const;
    double zoom() const { return m_scale; }
    // The readout's text for a point of the window.
    QString readoutAt(QPoint widgetPoint) const;
    // The error of a frame that cannot be developed; empty otherwise.
    QString error() const;
    // The panel of the raw histogram and the exposure figures.
    TRawHistogramPanel *histogramPanel() const { return m_panel; }
    // The marks shown over the frame ("★★★☆☆ Red"); empty without any.
    QString markShown() const;

signals:
    // The user stepped to another frame.
    void stepped(const QString &path);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    // What the sensor recorded of the exposure, figured beside the development.
    struct TExposure {
        raw::TRawFigures figures;
        raw::TRawHistogram histogram;
        raw::TExposureMarks half, full; // over the pictures of those sizes
    };
    // One frame in the making or made.
    struct TFrame {
        std::shared_ptr<std::atomic<bool>> cancel = std::make_shared<std::atomic<bool>>(false);
        std::shared_ptr<const raw::TRawImage> raw; // for the readout
        QImage half, full;                         // upright sRGB
        QImage overview;                           // a small copy for fitted views
        std::shared_ptr<const TExposure> exposure;
        TMark mark; // as its sidecar holds it
        QString error;
    };

    void develop(const QString &path);
    void received(const QString &path, const std::shared_ptr<std::atomic<bool>> &cancel,
                  const std::function<void(TFrame &)> &apply);
    void keepAround(const QString &path);
    void step(int direction);
    const TFrame *current() const;
    QImage shownImage(double *pixelsPerImagePixel) const;
    void fit();
    void centreWhenReady();
    void zoomAround(QPointF widgetPoint, double scale);
    void clampOffset();
    QPointF toPicture(QPointF widgetPoint) const;
    QRect readoutBar() const;
    static TExposure exposureOf(const raw::TRawImage &raw);
    void showExposure();
    bool exposureKey(int key, Qt::KeyboardModifiers modifiers);
    // The culling keys mark the frame shown (0-5, X, 6-9; Ctrl+Z undoes).
    bool markKey(int key, Qt::KeyboardModifiers modifiers);
    void paintMark(QPainter &painter) const;
    void paintMarks(QPainter &painter, QSize shown, const QRectF &target,
                    const QRectF &source) const;

    // What the developments post through: they hold it, and the view
    // unhooks itself when it goes, so that nothing is posted to it then.
    struct TPostGuard {
        std::mutex mutex;
        TFrameView *view = nullptr;
    };
    std::shared_ptr<TPostGuard> m_guard = std::make_shared<TPostGuard>();

    TNeighbour m_neighbour;
    QString m_path;
    QHash<QString, std::shared_ptr<TFrame>> m_frames; // the shown one and its neighbours
    bool m_fitted = true;
    double m_scale = 1.0; // screen pixels per full-size pixel
    QPointF m_offset;     // where the picture's top left lies in the window
    QPoint m_pressedAt;   // where a click or drag began
    QPointF m_offsetAtPress;
    bool m_dragged = false;
    QPoint m_mouse{-1, -1};
    std::optional<QPoint> m_centreOn; // a raw position to show at 100 % once the frame is in
    TRawHistogramPanel *m_panel = nullptr;
    bool m_marksClipped = false, m_marksNearBlack = false; // O and U
};

#endif // TFRAMEVIEW_H
