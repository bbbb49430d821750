#ifndef FRAMEIMAGE_H
#define FRAMEIMAGE_H

// A developed frame as a QImage, for the window and the thumbnailer (Qt Gui).

#include "raw/picture.h"

#include <QImage>

namespace raw {

// The picture as an 8-bit RGB image (a 16-bit picture is rounded to 8 bits);
// null for a null picture.
QImage frameImage(const TPicture &picture);

} // namespace raw

#endif // FRAMEIMAGE_H
