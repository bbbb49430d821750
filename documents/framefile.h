#ifndef FRAMEFILE_H
#define FRAMEFILE_H

// A developed frame written as a file: JPEG, 8-bit PNG or 16-bit TIFF, as the
// destination's extension says, through a temporary file renamed when
// complete.

#include "card/safewrite.h"
#include "raw/picture.h"

#include <QString>

// The kind of file a frame is written as, by the path's extension (jpg, jpeg,
// png, tif, tiff in any letter case); false for any other.
bool frameKindOf(const QString &path, TOutputKind *kind);
// The bits per sample a frame is developed at for that kind: 16 for TIFF.
int frameBits(TOutputKind kind);

// Writes the picture as kind; an empty text, or the path and the system's reason.
QString writeFrame(const raw::TPicture &picture, const QString &path, TOutputKind kind);

#endif // FRAMEFILE_H
