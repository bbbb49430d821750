#include "rawfile/upright.h"

#include "rawfile/tm9file.h"

#include <QPixmap>
#include <QTransform>

QImage turnedByOrientation(const QImage &image, int orientation)
{
    int degrees = 0;
    if (orientation == 8)
        degrees = 270;
    else if (orientation == 6)
        degrees = 90;
    if (degrees == 0)
        return image;
    return image.transformed(QTransform().rotate(degrees), Qt::FastTransformation);
}

QImage uprightPreview(TM9File &file)
{
    const QPixmap *preview = file.previewImage();
    return preview ? turnedByOrientation(preview->toImage(), file.exif().orientation) : QImage();
}
