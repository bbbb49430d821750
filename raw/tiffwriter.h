#ifndef RAW_TIFFWRITER_H
#define RAW_TIFFWRITER_H

// A developed picture as a baseline RGB TIFF. Qt Core only.

#include "raw/picture.h"

#include <QString>

namespace raw {

// Writes the picture uncompressed, 8 or 16 bits per sample (in the machine's
// byte order, which the header names), to a temporary file beside `path`
// that replaces `path` only once complete. False with the system's reason in
// *error (when given) if it could not be written; `path` is then unchanged.
bool writeTiff(const TPicture &picture, const QString &path, QString *error);

} // namespace raw

#endif // RAW_TIFFWRITER_H
