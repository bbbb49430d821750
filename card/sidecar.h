#ifndef CARD_SIDECAR_H
#define CARD_SIDECAR_H

// XMP packets of culling marks, read and changed through Exempi, and the
// packet a DNG embeds in its first directory. Exempi is set up once and
// used by one thread at a time; these functions may be called from any.

#include "card/marks.h"

#include <QByteArray>

class QIODevice;

// The marks packet holds. False, with the reason in *error, when it does not
// parse as XMP.
bool marksOfPacket(const QByteArray &packet, TMark *mark, QString *error);

// packet with xmp:Rating and xmp:Label set to mark (removed where mark has
// none) and every other property as it was; an empty packet gives a new
// sidecar. Empty, with the reason in *error, when packet does not parse.
// Exempi writes the packet anew: see README, "Culling marks", for what
// changes besides the two properties.
QByteArray packetWithMarks(const QByteArray &packet, const TMark &mark, QString *error);

// The XMP packet of a TIFF or DNG file's IFD0 (tag 700), empty when it has
// none or the directory is broken. Every size and offset is checked against
// the file before it is read.
QByteArray ifd0XmpPacket(QIODevice &file);

#endif // CARD_SIDECAR_H
