#ifndef RAWLIMITS_H
#define RAWLIMITS_H

// Limits that end the decoding of a hostile raw file before anything is
// allocated. None of them is reached by a file a camera or a raw converter
// wrote: the M9 stores 5270 x 3516 pixels in one strip.

#include <QtGlobal>

namespace raw::limits {

// The largest sensors sold (medium-format backs) have under 15,000 pixels a side.
inline constexpr quint32 kMaxSide = 32768;

// Twice a 150 MP back; as 16-bit values the most a decode ever allocates (600 MB).
inline constexpr quint64 kMaxPixels = 300'000'000;

// A camera writes one strip or a few hundred tiles; 16 x 16 tiles of the
// largest image are fewer than this.
inline constexpr quint64 kMaxBlocks = 1u << 20;

// A raw directory holds some 30 entries, IFD0 of a DNG some 60.
inline constexpr quint32 kMaxDirectoryEntries = 1024;

// IFD0 of a DNG points to the raw image and one or two previews.
inline constexpr quint32 kMaxSubIfds = 32;

// One entry per 16-bit stored value at most.
inline constexpr quint32 kMaxLinearizationEntries = 65536;

// Any tag other than the block lists and the tables above: matrices,
// levels, neutral, pattern (the deltas have one value per row or column).
inline constexpr quint32 kMaxSmallValues = kMaxSide;

// JPEG marker segments before the scan: tables, frame and a few APPn.
inline constexpr int kMaxJpegSegments = 64;

} // namespace raw::limits

#endif // RAWLIMITS_H
