#ifndef TBYTEREADER_H
#define TBYTEREADER_H

// A cursor over the bytes of a mapped file with switchable byte order.
//
// It follows the stream rules the directory walkers rely on: any position can
// be sought, and whatever lies beyond the end reads as zeros. A read budget
// bounds the work a hostile file can cause: once it is spent, every read gives
// zeros, so all walks end at their next entry count or next-IFD offset.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

class TByteReader {
public:
    void setData(const uchar *data, qint64 size);
    void clear() { setData(nullptr, 0); }
    bool hasData() const { return m_data != nullptr; }

    void setBigEndian(bool bigEndian) { m_bigEndian = bigEndian; }

    qint64 pos() const { return m_pos; }
    void seek(qint64 position) { m_pos = position; }
    void skip(qint64 count)
    {
        m_pos += count;
        m_budget -= qMax<qint64>(count, 0);
    }

    quint8 readU8();
    quint16 readU16();
    quint32 readU32();
    qint16 readS16() { return static_cast<qint16>(readU16()); }
    qint32 readS32() { return static_cast<qint32>(readU32()); }

    // count bytes from the cursor on; those past the end, or once the budget
    // is spent, are zeros. The caller bounds count.
    QByteArray readBytes(qint64 count);

    // Bytes up to (not including) the next 0, each taken as one character,
    // at most maxLength of them. Consumes the terminator.
    QString readCString(qint64 maxLength);

    // Direct access for large blocks: the bytes from position on that exist
    // (at most count), or an empty view. Does not move the cursor.
    QByteArrayView view(qint64 position, qint64 count) const;

    void setBudget(qint64 bytes) { m_budget = bytes; }

private:
    // Moves the cursor by count and tells whether those bytes may be read.
    const uchar *take(qint64 count);

    const uchar *m_data = nullptr;
    qint64 m_size = 0;
    qint64 m_pos = 0;
    qint64 m_budget = 0;
    bool m_bigEndian = true;
};

#endif // TBYTEREADER_H
