#ifndef RAW_PICTURE_H
#define RAW_PICTURE_H

// A developed picture and where its pixels lie on the sensor. Qt Core only.

#include "raw/rawimage.h"

#include <QPoint>

#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace raw {

// Half: one pixel per 2 x 2 cell of the sensor, for showing a frame at once.
// Full: one pixel per sensor pixel, demosaiced.
enum class TSize { Half, Full };

// An allocator that leaves new elements uninitialised: a picture's bytes are
// all written by the threads that develop it, each touching its own pages
// first, instead of being zeroed by one thread before.
template <typename T> struct TUninitialized : std::allocator<T> {
    template <typename U> struct rebind {
        using other = TUninitialized<U>;
    };
    TUninitialized() = default;
    template <typename U> TUninitialized(const TUninitialized<U> &) {}
    template <typename U> void construct(U *p) { ::new (static_cast<void *>(p)) U; }
    template <typename U, typename... A> void construct(U *p, A &&...args)
    {
        ::new (static_cast<void *>(p)) U(std::forward<A>(args)...);
    }
};

// An sRGB picture, upright: rows of 3 * width samples (R, G, B), 8 bits as
// uint8_t or 16 bits as uint16_t in the machine's byte order.
struct TPicture {
    int width = 0, height = 0, bits = 8;
    std::vector<uint8_t, TUninitialized<uint8_t>> data;

    bool isNull() const { return width <= 0 || height <= 0 || data.empty(); }
    std::size_t bytesPerSample() const { return bits > 8 ? 2 : 1; }
    std::size_t bytesPerLine() const { return std::size_t(width) * 3 * bytesPerSample(); }
    const uint8_t *line(int y) const { return data.data() + std::size_t(y) * bytesPerLine(); }
    // R, G, B of a pixel as stored (0..255 or 0..65535).
    std::array<int, 3> rgb(int x, int y) const;
};

// Where the developed picture lies in the stored raw image: the default crop
// in stored coordinates, the picture's size before it is turned upright, and
// the orientation that turns it.
struct TGeometry {
    int left = 0, top = 0;             // the crop's first stored pixel
    int cropWidth = 0, cropHeight = 0; // in stored pixels
    int scale = 1;                     // stored pixels per developed pixel and side
    int width = 0, height = 0;         // developed, before turning
    int orientation = 1;               // EXIF 1..8
    bool valid = false;

    // The upright picture's size.
    int uprightWidth() const { return orientation >= 5 ? height : width; }
    int uprightHeight() const { return orientation >= 5 ? width : height; }
    // A pixel of the developed picture before turning, turned upright, and back.
    QPoint upright(QPoint p) const;
    QPoint stored(QPoint upright) const;
};

// The geometry of developing at this size: the active area (the whole image
// when the file names none or an impossible one), the default crop inside it
// (clipped to it; the whole active area when the file names none), whole
// pixels (a fractional origin is rounded).
TGeometry geometryOf(const TRawInfo &info, TSize size);

// The stored raw position under pixel `developed` of the upright picture (at
// half size, the top left pixel of its 2 x 2 cell), and the pixel of the
// upright picture that shows the stored position `raw`. Positions outside the
// picture map to positions outside the crop and back.
QPoint rawPositionOf(const TRawInfo &info, TSize size, QPoint developed);
QPoint developedPositionOf(const TRawInfo &info, TSize size, QPoint raw);

} // namespace raw

#endif // RAW_PICTURE_H
