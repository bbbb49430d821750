#ifndef RAWFILE_LIMITS_H
#define RAWFILE_LIMITS_H

// Limits that end the walk of a hostile file. None of them is reached by a
// file a camera or a raw converter wrote.

#include <QtGlobal>

namespace limits {

// Metadata of a camera file is a few kilobytes; once a pass has read this
// much, every further read gives zeros and all walks end.
inline constexpr qint64 kReadBudget = 64 * 1024 * 1024;

// A DNG chains IFD0 and at most a few more; ends chains that run on through
// garbage (chains that loop are ended by the set of visited offsets).
inline constexpr int kMaxChainLength = 1024;

// Exif and GPS sit one level below their IFD; ends pointers that lead ever
// deeper (pointers back to a directory being walked are ended at once).
inline constexpr int kMaxIfdDepth = 8;

// Longer than any text a camera writes; a text without its terminating zero
// costs no more than this.
inline constexpr qint64 kMaxTextLength = 64 * 1024;

// More pixels than the full-size RGB preview of any sensor; a larger size is
// a broken header, not a picture.
inline constexpr quint64 kMaxPreviewPixels = 64ull * 1024 * 1024;

// Files that cannot be mapped (pipes, special files) are read up to this size.
inline constexpr qint64 kMaxUnmappedRead = 256 * 1024 * 1024;

} // namespace limits

#endif // RAWFILE_LIMITS_H
