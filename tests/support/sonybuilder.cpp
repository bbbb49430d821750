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

SonyFile sonyArw(const QByteArray &model, const IfdPtr &makerNote, Order order)
{
    // The note hangs from IFD0 as a directory pointer; its position is read
    // back from that entry's field.
    constexpr quint16 kMakerNoteTag = 0x927C;
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x010F, "SONY").ascii(0x0110, model).child(kMakerNoteTag, makerNote);
    SonyFile file{tiff(order, ifd0)};
    const auto u16 = [&](qint64 at) {
        const char *p = file.data.constData() + at;
        return order == Order::Little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    };
    const auto u32 = [&](qint64 at) {
        const char *p = file.data.constData() + at;
        return order == Order::Little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
    };
    const qint64 ifd = u32(4);
    for (int i = 0; i < u16(ifd); ++i) {
        const qint64 entry = ifd + 2 + 12 * i;
        if (u16(entry) == kMakerNoteTag)
            file.makerNoteOffset = u32(entry + 8);
    }
    return file;
}

} // namespace fixture
