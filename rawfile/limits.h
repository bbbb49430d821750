#ifndef RAWFILE_LIMITS_H
#define RAWFILE_LIMITS_H

// Limits that end the walk of a hostile file. None of them is reached by a
// file a camera or a raw converter wrote.

#include <QtGlobal>

namespace limits {

// Metadata of a camera file is a few kilobytes; once a pass has read this
// much (each block fetched from the file counting in full), every further
// read gives zeros and all walks end.
inline constexpr qint64 kReadBudget = 16 * 1024 * 1024;

// A camera file holds fewer than ten directories (IFDs of the chain, Exif,
// GPS, maker note); ends chains that run on through garbage and pointers that
// fan out (chains that loop are ended by the set of visited offsets).
inline constexpr int kMaxDirectories = 64;

// A camera file's directories hold a few hundred entries in all; a pass
// walks at most this many, so that pointers that lead to one large directory
// again and again cannot multiply the work.
inline constexpr quint32 kMaxEntries = 4096;

// Exif and GPS sit one level below their IFD; ends pointers that lead ever
// deeper (pointers back to a directory being walked are ended at once).
inline constexpr int kMaxIfdDepth = 8;

// Longer than any text a camera writes; a text without its terminating zero
// costs no more than this.
inline constexpr qint64 kMaxTextLength = 64 * 1024;

// Far more pixels than the RGB preview a camera puts in IFD0 (the M9's has
// 320 x 240); a larger size is a broken header, not a picture.
inline constexpr quint64 kMaxPreviewPixels = 4096ull * 4096;
inline constexpr quint32 kMaxPreviewSide = 8192;

// Texts of the printed report (file name, maker, serial number, firmware...)
// are cut to this many characters: a camera's are far shorter, and laying out
// a cell of a longer unbroken word costs time that grows faster than its length.
inline constexpr qsizetype kMaxReportTextLength = 128;

// A picture in a file that cannot be mapped is read up to this size.
inline constexpr qint64 kMaxUnmappedRead = 256 * 1024 * 1024;

} // namespace limits

#endif // RAWFILE_LIMITS_H
