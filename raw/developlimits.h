#ifndef RAW_DEVELOPLIMITS_H
#define RAW_DEVELOPLIMITS_H

// Limits of developing a raw picture. A Leica M9 or M Monochrom frame is
// 5,270 x 3,516 pixels; none of these is reached by a camera's file.

#include <cstdint>

namespace raw::limits {

// Twice the side of any sensor Tolvik reads; a larger side is a broken header.
inline constexpr int kMaxRawSide = 16384;

// Eight times an M9 frame: a 16-bit picture of this many pixels still fits the
// 4 GB a baseline TIFF's 32-bit offsets reach.
inline constexpr int64_t kMaxRawPixels = 150'000'000;

// More threads than any desktop has cores brings nothing but their stacks.
inline constexpr int kMaxThreads = 256;

} // namespace raw::limits

#endif // RAW_DEVELOPLIMITS_H
