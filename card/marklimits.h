#ifndef CARD_MARKLIMITS_H
#define CARD_MARKLIMITS_H

// Limits of reading culling marks. None of them is reached by a sidecar or a
// DNG a camera or an editor wrote.

#include <QtGlobal>

namespace limits {

// A sidecar with a long develop history is a few hundred kilobytes; a larger
// file is not read into memory, and not rewritten.
inline constexpr qint64 kMaxSidecarBytes = 16 * 1024 * 1024;

// The XMP packet a converter embeds in a DNG is a few kilobytes.
inline constexpr quint32 kMaxEmbeddedXmpBytes = 4 * 1024 * 1024;

// IFD0 of a camera file holds a few dozen entries; a larger count is garbage.
inline constexpr quint32 kMaxIfd0Entries = 1024;

} // namespace limits

#endif // CARD_MARKLIMITS_H
