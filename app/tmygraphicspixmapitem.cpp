#include "tmygraphicspixmapitem.h"

#include <QGraphicsSceneHoverEvent>
#include <QImage>

TMyGraphicsPixmapItem::TMyGraphicsPixmapItem(QGraphicsItem *parent)
    : QObject(nullptr), QGraphicsPixmapItem(parent)
{
    setAcceptHoverEvents(true);
}

TMyGraphicsPixmapItem::TMyGraphicsPixmapItem(const QPixmap &pixmap, QGraphicsItem *parent)
    : QObject(nullptr), QGraphicsPixmapItem(pixmap, parent)
{
    setAcceptHoverEvents(true);
}

void TMyGraphicsPixmapItem::hoverMoveEvent(QGraphicsSceneHoverEvent *event)
{
    const QPointF position = event->pos();
    // Converted on every move; previews are small enough for that.
    const QImage image = pixmap().toImage();
    const int x = int(position.x());
    const int y = int(position.y());
    // The shape's border may report a position just outside the picture.
    if (image.valid(x, y))
        emit rgbValueChanged(position, image.pixel(x, y));
    QGraphicsPixmapItem::hoverMoveEvent(event);
}

void TMyGraphicsPixmapItem::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    emit mausRaus();
    QGraphicsPixmapItem::hoverLeaveEvent(event);
}
