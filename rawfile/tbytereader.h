#ifndef TBYTEREADER_H
#define TBYTEREADER_H

// A cursor over the bytes of a file with switchable byte order.
//
// It follows the stream rules the directory walkers rely on: any position can
// be sought, and whatever lies beyond the end reads as zeros. A read budget
// bounds the work a hostile file can cause: once it is spent, every read gives
// zeros, so all walks end at their next entry count or next-IFD offset.
//
// A file is read in small aligned blocks when the walk first touches them, so
// only the few kilobytes of directories are read, never the raw image data.
// Reading beats mapping here: a mapping costs more to set up and tear down
// than the whole walk, and it serialises threads that open files at once.
// Large views (pictures) map the file after all.

#include "rawfile/limits.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <array>

class QFile;

class TByteReader {
public:
    void setData(const uchar *data, qint64 size); // bytes in memory
    void setFile(QFile *file, qint64 size);       // an open file, read on demand
    void clear();
    bool hasData() const { return m_data != nullptr || m_file != nullptr; }

    void setBigEndian(bool bigEndian) { m_bigEndian = bigEndian; }

    qint64 pos() const { return m_pos; }
    qint64 size() const { return m_size; }

    // Of count directory entries from the cursor on, those that begin inside
    // the data (the ones past its end would read as zeros), and no more than
    // are left of the pass's kMaxEntries.
    quint32 entriesInData(quint32 count)
    {
        const qint64 left = m_size - m_pos;
        const quint32 n =
            left <= 0 ? 0 : quint32(std::min<qint64>({count, (left + 11) / 12, m_entriesLeft}));
        m_entriesLeft -= n;
        return n;
    }
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
    // A directory entry's tag, type and count: the three reads in one step.
    void readEntryHead(quint16 &tag, quint16 &type, quint32 &count);

    // count bytes from the cursor on; those past the end, or once the budget
    // is spent, are zeros. The caller bounds count.
    QByteArray readBytes(qint64 count);

    // Bytes up to (not including) the next 0, each taken as one character,
    // at most maxLength of them. Consumes the terminator.
    QString readCString(qint64 maxLength);

    // Direct access for large blocks: the bytes from position on that exist
    // (at most count), or an empty view. Does not move the cursor; valid
    // until the next view or until the data is cleared.
    QByteArrayView view(qint64 position, qint64 count);

    void setBudget(qint64 bytes)
    {
        m_budget = bytes;
        m_entriesLeft = limits::kMaxEntries;
    }

    // One past the farthest byte a read asked for, inside the data or not:
    // beyond the size, the file ends before what its directories point to.
    qint64 farthest() const { return m_farthest; }

private:
    // Moves the cursor by count and tells whether those bytes may be read.
    const uchar *take(qint64 count);
    // The value at p in the reader's byte order.
    template <typename T> T valueAt(const uchar *p) const;
    // The bytes from position to the end of the block that holds it.
    QByteArrayView bytesAt(qint64 position);

    static constexpr qint64 kBlockSize = 4096;
    struct Block {
        qint64 start = -1;
        QByteArray bytes;
    };

    const uchar *m_data = nullptr;
    QFile *m_file = nullptr;
    qint64 m_size = 0;
    qint64 m_pos = 0;
    qint64 m_budget = 0;
    qint64 m_entriesLeft = 0;
    qint64 m_farthest = 0;
    bool m_bigEndian = true;

    // The bytes last reached, from file position m_lastStart on: most reads
    // fall into the block of the read before.
    const uchar *m_last = nullptr;
    qint64 m_lastStart = 0;
    qint64 m_lastSize = 0;

    std::array<Block, 8> m_blocks; // replaced in turn
    std::size_t m_nextBlock = 0;
    std::array<uchar, 8> m_straddle{}; // a value that spans two blocks
    uchar *m_mapped = nullptr;         // the file, once a view needed it
    QByteArray m_viewBytes;            // a view's bytes when the file cannot be mapped
};

#endif // TBYTEREADER_H
