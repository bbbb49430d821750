#include "raw/exposuremarks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace raw {

namespace {

enum TFlag : uint8_t { Clipped = 1, NearBlack = 2 };

QImage maskOf(QSize size, const QList<QRgb> &colours)
{
    QImage mask(size, QImage::Format_Mono);
    if (mask.isNull())
        return {};
    mask.setColorTable(colours);
    mask.fill(0);
    return mask;
}

// Marks pixel p of a Format_Mono image, given its bits (QImage::bits()
// once: scanLine() looks at the sharing on every call).
void mark(uchar *bits, qsizetype bytesPerLine, QPoint p)
{
    bits[p.y() * bytesPerLine + (p.x() >> 3)] |= uchar(0x80 >> (p.x() & 7));
}

} // namespace

TExposureMarks exposureMarks(const TRawImage &raw, TSize size, QRgb clippedColour,
                             QRgb nearBlackColour)
{
    const TRawInfo &info = raw.info;
    const TGeometry g = geometryOf(info, size);
    if (!g.valid || raw.pixels.size() != std::size_t(info.width) * std::size_t(info.height))
        return {};
    const QSize upright(g.uprightWidth(), g.uprightHeight());
    TExposureMarks marks{maskOf(upright, {qRgba(0, 0, 0, 0), clippedColour}),
                         maskOf(upright, {qRgba(0, 0, 0, 0), nearBlackColour})};
    if (marks.clipped.isNull() || marks.nearBlack.isNull())
        return {};
    // The stored pixels a developed pixel answers for: a square of span from
    // its first, which a filter's cell takes at even coordinates.
    const bool cells = size == TSize::Full && info.layout == TLayout::Cfa;
    const int span = cells || size == TSize::Half ? 2 : 1;
    const auto first = [&](int developed, int origin) {
        const int stored = origin + developed * g.scale;
        return cells ? stored & ~1 : stored;
    };
    // The greatest value near black per stored column, of two rows (the
    // black's pattern repeats every two) or, with black deltas, of each row.
    const int base = first(0, g.top);
    const int from = first(0, g.left), to = std::min(g.left + g.cropWidth + 1, info.width);
    const bool deltas = !info.blackDeltaH.empty() || !info.blackDeltaV.empty();
    std::vector<uint16_t> limits(std::size_t(2) * std::size_t(info.width + 1), 0);
    const auto fillLimits = [&](int y, uint16_t *limit) {
        for (int x = from; x < to; ++x)
            limit[x] = uint16_t(
                std::min(std::floor(std::max(info.blackAt(x, y) * M_SQRT2, 1.0)), 65535.0));
    };
    for (int parity = 0; parity < 2 && !deltas; ++parity)
        fillLimits(base + parity, limits.data() + parity * (info.width + 1));
    const uint32_t white = std::min<uint32_t>(info.whiteLevel, 65536);
    // Per stored column, the flags of the rows a developed row answers for;
    // per developed pixel, those of its columns (at full size, the column's).
    std::vector<uint8_t> columns(std::size_t(info.width) + 1, 0), flags(std::size_t(g.width), 0);
    const uint8_t *developed = nullptr;
    bool any = false;
    uchar *const clipped = marks.clipped.bits(), *const nearBlack = marks.nearBlack.bits();
    const qsizetype bytesPerLine = marks.clipped.bytesPerLine();
    int flaggedRow = -1;
    for (int sy = 0; sy < g.height; ++sy) {
        const int y0 = first(sy, g.top);
        if (y0 != flaggedRow) {
            std::fill(columns.begin(), columns.end(), 0);
            for (int y = y0; y < std::min(y0 + span, info.height); ++y) {
                uint16_t *limit =
                    limits.data() + (deltas ? 0 : ((y - base) & 1) * (info.width + 1));
                if (deltas)
                    fillLimits(y, limit);
                const uint16_t *row = raw.pixels.data() + std::size_t(y) * std::size_t(info.width);
                for (int x = from; x < to; ++x)
                    columns[std::size_t(x)] |= uint8_t((row[x] >= white ? Clipped : 0) |
                                                       (row[x] <= limit[x] ? NearBlack : 0));
            }
            if (cells) { // a cell's two columns alike
                for (int x = from; x + 1 < to; x += 2)
                    columns[std::size_t(x)] = columns[std::size_t(x) + 1] =
                        columns[std::size_t(x)] | columns[std::size_t(x) + 1];
            }
            for (int sx = 0; size == TSize::Half && sx < g.width; ++sx)
                flags[std::size_t(sx)] = columns[std::size_t(g.left + 2 * sx)] |
                                         columns[std::size_t(g.left + 2 * sx + 1)];
            developed = size == TSize::Half ? flags.data() : columns.data() + g.left;
            any = std::any_of(developed, developed + g.width, [](uint8_t f) { return f != 0; });
            flaggedRow = y0;
        }
        for (int sx = 0; any && sx < g.width; ++sx) {
            if (developed[sx] == 0)
                continue;
            const QPoint at = g.upright({sx, sy});
            if (developed[sx] & Clipped)
                mark(clipped, bytesPerLine, at);
            if (developed[sx] & NearBlack)
                mark(nearBlack, bytesPerLine, at);
        }
    }
    return marks;
}

QImage marksOnScreen(const QImage &mask, const QRectF &source, double scale, QPointF at,
                     QPoint *origin)
{
    *origin = QPoint(int(std::floor(at.x())), int(std::floor(at.y())));
    const auto screen = [&](int pixel, double from, double start) {
        return int(std::floor(start + (pixel + 0.5 - from) * scale));
    };
    QImage out = maskOf(QSize(int(std::ceil(at.x() + source.width() * scale)) - origin->x(),
                              int(std::ceil(at.y() + source.height() * scale)) - origin->y()),
                        mask.colorTable());
    if (out.isNull())
        return {};
    uchar *const bits = out.bits();
    const QRect inside =
        QRect(QPoint(int(std::floor(source.left())), int(std::floor(source.top()))),
              QPoint(int(std::ceil(source.right())) - 1, int(std::ceil(source.bottom())) - 1))
            .intersected(mask.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const int row = screen(y, source.top(), at.y()) - origin->y();
        if (row < 0 || row >= out.height())
            continue;
        const uchar *line = mask.constScanLine(y);
        for (int x = inside.left(); x <= inside.right(); ++x) {
            if ((x & 7) == 0 && line[x >> 3] == 0) {
                x += 7; // eight pixels unmarked
                continue;
            }
            const int column = screen(x, source.left(), at.x()) - origin->x();
            if ((line[x >> 3] & (0x80 >> (x & 7))) && column >= 0 && column < out.width())
                mark(bits, out.bytesPerLine(), QPoint(column, row));
        }
    }
    return out;
}

} // namespace raw
