#ifndef TMYGRAPHICSPIXMAPITEM_H
#define TMYGRAPHICSPIXMAPITEM_H

// The preview picture in the graphics view. It reports the colour of the
// pixel under the mouse and when the mouse leaves the picture.

#include <QGraphicsPixmapItem>
#include <QObject>
#include <QPointF>

class TMyGraphicsPixmapItem : public QObject, public QGraphicsPixmapItem {
    Q_OBJECT

public:
    explicit TMyGraphicsPixmapItem(QGraphicsItem *parent = nullptr);
    explicit TMyGraphicsPixmapItem(const QPixmap &pixmap, QGraphicsItem *parent = nullptr);

signals:
    // position in item coordinates, colour as 0xAARRGGBB
    void rgbValueChanged(QPointF position, unsigned int rgb);
    void mausRaus();

protected:
    void hoverMoveEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;
};

#endif // TMYGRAPHICSPIXMAPITEM_H
