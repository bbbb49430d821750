#include "raw/picture.h"

#include <algorithm>
#include <cmath>

namespace raw {

std::array<int, 3> TPicture::rgb(int x, int y) const
{
    std::array<int, 3> v{};
    const std::size_t i = std::size_t(x) * 3;
    for (std::size_t c = 0; c < 3; ++c) {
        if (bits > 8)
            v[c] = reinterpret_cast<const uint16_t *>(line(y))[i + c];
        else
            v[c] = line(y)[i + c];
    }
    return v;
}

QPoint TGeometry::upright(QPoint p) const
{
    const int x = p.x(), y = p.y(), w = width, h = height;
    switch (orientation) {
    case 2: return {w - 1 - x, y};
    case 3: return {w - 1 - x, h - 1 - y};
    case 4: return {x, h - 1 - y};
    case 5: return {y, x};
    case 6: return {h - 1 - y, x};
    case 7: return {h - 1 - y, w - 1 - x};
    case 8: return {y, w - 1 - x};
    default: return p;
    }
}

QPoint TGeometry::stored(QPoint upright) const
{
    const int u = upright.x(), v = upright.y(), w = width, h = height;
    switch (orientation) {
    case 2: return {w - 1 - u, v};
    case 3: return {w - 1 - u, h - 1 - v};
    case 4: return {u, h - 1 - v};
    case 5: return {v, u};
    case 6: return {v, h - 1 - u};
    case 7: return {w - 1 - v, h - 1 - u};
    case 8: return {w - 1 - v, u};
    default: return upright;
    }
}

TGeometry geometryOf(const TRawInfo &info, TSize size)
{
    TGeometry g;
    if (info.width <= 0 || info.height <= 0)
        return g;
    int left = info.activeLeft, top = info.activeTop;
    int right = info.activeRight, bottom = info.activeBottom;
    if (left < 0 || top < 0 || right <= left || bottom <= top || right > info.width ||
        bottom > info.height) {
        left = 0, top = 0, right = info.width, bottom = info.height;
    }
    // The crop, relative to the active area; NaN and absurd values fall back
    // to the whole active area.
    const auto whole = [](double v, int limit) {
        return std::isfinite(v) && v >= 0 && v < limit ? int(std::lround(v)) : -1;
    };
    int cx = whole(info.cropX, right - left), cy = whole(info.cropY, bottom - top);
    int cw = whole(info.cropWidth, right - left + 1), ch = whole(info.cropHeight, bottom - top + 1);
    if (cx < 0 || cy < 0 || cw <= 0 || ch <= 0)
        cx = 0, cy = 0, cw = right - left, ch = bottom - top;
    g.left = left + cx;
    g.top = top + cy;
    g.cropWidth = std::min(cw, right - g.left);
    g.cropHeight = std::min(ch, bottom - g.top);
    g.scale = size == TSize::Half ? 2 : 1;
    g.width = g.cropWidth / g.scale;
    g.height = g.cropHeight / g.scale;
    g.orientation = info.orientation >= 1 && info.orientation <= 8 ? info.orientation : 1;
    g.valid = g.width > 0 && g.height > 0;
    return g;
}

namespace {

int floorDiv(int a, int b)
{
    return a >= 0 ? a / b : -((-a + b - 1) / b);
}

} // namespace

QPoint rawPositionOf(const TRawInfo &info, TSize size, QPoint developed)
{
    const TGeometry g = geometryOf(info, size);
    const QPoint s = g.stored(developed);
    return {g.left + s.x() * g.scale, g.top + s.y() * g.scale};
}

QPoint developedPositionOf(const TRawInfo &info, TSize size, QPoint raw)
{
    const TGeometry g = geometryOf(info, size);
    return g.upright({floorDiv(raw.x() - g.left, g.scale), floorDiv(raw.y() - g.top, g.scale)});
}

} // namespace raw
