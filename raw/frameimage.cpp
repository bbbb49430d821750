#include "raw/frameimage.h"

#include <utility>

namespace raw {

QImage frameImage(const TPicture &picture)
{
    if (picture.isNull())
        return {};
    QImage image(picture.width, picture.height, QImage::Format_RGB888);
    if (image.isNull())
        return {};
    for (int y = 0; y < picture.height; ++y) {
        uchar *out = image.scanLine(y);
        const uint8_t *in = picture.line(y);
        if (picture.bits <= 8) {
            std::copy(in, in + picture.bytesPerLine(), out);
        } else {
            const auto *wide = reinterpret_cast<const uint16_t *>(in);
            for (int i = 0; i < picture.width * 3; ++i)
                out[i] = uchar((wide[i] * 255u + 32767u) / 65535u);
        }
    }
    return image;
}

} // namespace raw
