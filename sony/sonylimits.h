#ifndef SONY_SONYLIMITS_H
#define SONY_SONYLIMITS_H

// Limits of the Sony maker-note reader, beside the general ones in
// rawfile/limits.h. None of them is reached by a file a camera wrote.

#include <QtGlobal>

namespace limits {

// The largest Sony data block is block 0x2010 with about 7 KB; a longer
// length is cut here, so that a hostile count cannot make the reader
// allocate gigabytes (the fields read all lie far below).
inline constexpr quint64 kMaxSonyBlockLength = 64 * 1024;

// Lens specification, image sizes and AF-point lists hold at most a few
// dozen values; the rest of a longer entry is not read.
inline constexpr quint32 kMaxSonyArrayValues = 64;

} // namespace limits

#endif // SONY_SONYLIMITS_H
