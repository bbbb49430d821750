#ifndef UPRIGHT_H
#define UPRIGHT_H

// The embedded preview turned upright by the file's orientation, as the
// report prints it and the thumbnailer writes it.

#include <QImage>

class TM9File;

// The image turned by an EXIF orientation: 6 a quarter clockwise, 8 a quarter
// counter-clockwise; any other value leaves it as it is.
QImage turnedByOrientation(const QImage &image, int orientation);

// The file's preview turned upright (built here if it was not yet); a null
// image when the file has none.
QImage uprightPreview(TM9File &file);

#endif // UPRIGHT_H
