#ifndef SONYBUILDER_H
#define SONYBUILDER_H

// Sony ARW fixtures: an IFD0 with the camera model and a Sony maker-note
// directory whose data blocks are enciphered as the camera does it.
//
//   auto note = fixture::Ifd::make();
//   note->bytes(0x9402, fixture::Undefined,
//               fixture::sonyEncipher(fixture::sonyBlock(64, {{45, 0x50}})));
//   const fixture::SonyFile file = fixture::sonyArw("ILCE-9", note);

#include "tests/support/tiffbuilder.h"

#include <QByteArray>
#include <QList>

#include <utility>

namespace fixture {

// Each byte b below 249 becomes b cubed modulo 249; the rest stay.
QByteArray sonyEncipher(QByteArray plain);

// size zero bytes with the given bytes set at their positions.
QByteArray sonyBlock(int size, const QList<std::pair<int, quint8>> &bytesAt);

struct SonyFile {
    QByteArray data;
    quint32 makerNoteOffset = 0; // absolute position of the note's entry count
};

// A TIFF file (little-endian as the cameras write it) with Make "SONY", the
// model and the maker note.
SonyFile sonyArw(const QByteArray &model, const IfdPtr &makerNote, Order order = Order::Little);

} // namespace fixture

#endif // SONYBUILDER_H
