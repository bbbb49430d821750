#ifndef EXPOSUREMARKS_H
#define EXPOSUREMARKS_H

// Where the sensor clipped and where it recorded next to nothing, as masks
// over the developed picture (Qt Gui). A developed pixel is marked when a
// stored pixel it answers for is: at full size the colour filter's 2 x 2
// cell under it (the cell the readout shows; the Monochrom's pixel itself),
// at half size the 2 x 2 block it is made of. The stored pixels are mapped
// through the development's geometry (crop, half size, orientation), so the
// masks lie on the upright picture of that size.
//   clipped     value at or above WhiteLevel (as rawFigures counts)
//   near black  within 1/2 EV of black: value <= max(black * sqrt 2, 1),
//               with the pixel's own black (blackAt); the 1 stands for
//               the ratio a black of 0 does not have

#include "raw/picture.h"
#include "raw/rawimage.h"

#include <QImage>

namespace raw {

struct TExposureMarks {
    // Format_Mono, the size of the upright picture: index 1 marks a pixel,
    // in the colour given; index 0 is transparent.
    QImage clipped, nearBlack;
    bool isNull() const { return clipped.isNull(); }
};

// Null when the picture holds no pixels or no crop.
TExposureMarks exposureMarks(const TRawImage &raw, TSize size, QRgb clippedColour,
                             QRgb nearBlackColour);

// The part `source` of a mask (in its pixels) as drawn from the point `at`
// of the screen at scale < 1 screen pixels per mask pixel: a screen pixel is
// marked when the centre of any marked pixel lies in it, so that no mark is
// lost when several pixels share one on the screen. Its top left lies at
// *origin, a whole screen pixel.
QImage marksOnScreen(const QImage &mask, const QRectF &source, double scale, QPointF at,
                     QPoint *origin);

} // namespace raw

#endif // EXPOSUREMARKS_H
