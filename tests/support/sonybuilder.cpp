#include "tests/support/sonybuilder.h"

#include <QtEndian>

namespace fixture {

QByteArray sonyEncipher(QByteArray plain)
{
    for (char &c : plain) {
        const int b = quint8(c);
        if (b < 249)
            c = char(b * b * b % 249);
    }
    return plain;
}

QByteArray sonyBlock(int size, const QList<std::pair<int, quint8>> &bytesAt)
{
    QByteArray block(size, '\0');
    for (const auto &[position, value] : bytesAt)
        block[position] = char(value);
    return block;
}

SonyFile sonyArw(const QByteArray &model, const IfdPtr &makerNote)
{
    // The note hangs from IFD0 as a directory pointer; its position is read
    // back from that entry's field.
    constexpr quint16 kMakerNoteTag = 0x927C;
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x010F, "SONY").ascii(0x0110, model).child(kMakerNoteTag, makerNote);
    SonyFile file{tiff(Order::Little, ifd0)};
    const auto u16 = [&](qint64 at) {
        return qFromLittleEndian<quint16>(file.data.constData() + at);
    };
    const qint64 ifd = qFromLittleEndian<quint32>(file.data.constData() + 4);
    for (int i = 0; i < u16(ifd); ++i) {
        const qint64 entry = ifd + 2 + 12 * i;
        if (u16(entry) == kMakerNoteTag)
            file.makerNoteOffset = qFromLittleEndian<quint32>(file.data.constData() + entry + 8);
    }
    return file;
}

} // namespace fixture
