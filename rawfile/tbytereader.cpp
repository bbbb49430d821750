#include "rawfile/tbytereader.h"

#include "rawfile/limits.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// Reads count bytes at position into out; returns how many were read, or -1.
qint64 readAt(QFile *file, qint64 position, char *out, qint64 count)
{
#ifdef Q_OS_UNIX
    // One system call instead of a seek and a read: this is most of the cost of a block.
    qint64 done = 0;
    while (done < count) {
        const ssize_t got =
            ::pread(file->handle(), out + done, size_t(count - done), position + done);
        if (got <= 0)
            break;
        done += got;
    }
    return done;
#else
    return file->seek(position) ? file->read(out, count) : -1;
#endif
}

} // namespace

void TByteReader::setData(const uchar *data, qint64 size)
{
    clear();
    m_data = data;
    m_size = data ? size : 0;
    m_last = data;
    m_lastSize = m_size;
}

void TByteReader::setFile(QFile *file, qint64 size)
{
    clear();
    m_file = file;
    m_size = file ? size : 0;
#ifdef POSIX_FADV_RANDOM
    // The walk jumps between a few blocks: reading ahead of them would fetch
    // far more of a cold file than the walk touches (megabytes on some disks).
    if (m_file)
        ::posix_fadvise(m_file->handle(), 0, 0, POSIX_FADV_RANDOM);
#endif
}

void TByteReader::clear()
{
    if (m_mapped && m_file)
        m_file->unmap(m_mapped);
    m_mapped = nullptr;
    m_viewBytes.clear();
    for (Block &block : m_blocks)
        block.start = -1;
    m_last = nullptr;
    m_lastSize = 0;
    m_data = nullptr;
    m_file = nullptr;
    m_size = 0;
    m_pos = 0;
    m_farthest = 0;
}

QByteArrayView TByteReader::bytesAt(qint64 position)
{
    if (position < 0 || position >= m_size)
        return QByteArrayView();
    if (m_data)
        return QByteArrayView(m_data + position, m_size - position);
    const qint64 start = position - position % kBlockSize;
    auto found = std::find_if(m_blocks.begin(), m_blocks.end(),
                              [start](const Block &b) { return b.start == start; });
    if (found == m_blocks.end()) {
        // Each block read is paid from the budget, so a hostile file that
        // jumps about cannot make the reader read without end.
        m_budget -= kBlockSize;
        if (m_budget < 0)
            return QByteArrayView();
        found = m_blocks.begin() + m_nextBlock;
        m_nextBlock = (m_nextBlock + 1) % m_blocks.size();
        found->start = start;
        found->bytes.resize(qsizetype(std::min(kBlockSize, m_size - start)));
        const qint64 got = readAt(m_file, start, found->bytes.data(), found->bytes.size());
        found->bytes.resize(qsizetype(std::max<qint64>(got, 0)));
    }
    m_last = reinterpret_cast<const uchar *>(found->bytes.constData());
    m_lastStart = start;
    m_lastSize = found->bytes.size();
    return QByteArrayView(found->bytes).sliced(std::min(position - start, m_lastSize));
}

const uchar *TByteReader::take(qint64 count)
{
    const qint64 start = m_pos;
    m_pos += count;
    m_budget -= count;
    if (m_budget < 0 || start < 0)
        return nullptr;
    m_farthest = std::max(m_farthest, start + count);
    if (start > m_size - count)
        return nullptr;
    if (start >= m_lastStart && start - m_lastStart <= m_lastSize - count)
        return m_last + (start - m_lastStart);
    const QByteArrayView first = bytesAt(start);
    if (first.size() >= count)
        return reinterpret_cast<const uchar *>(first.data());
    if (first.isEmpty() || count > qint64(m_straddle.size()))
        return nullptr;
    // The first part is copied before the second block is read, which may replace it.
    const qint64 firstSize = first.size();
    std::memcpy(m_straddle.data(), first.data(), size_t(firstSize));
    const QByteArrayView second = bytesAt(start + firstSize);
    if (firstSize + second.size() < count)
        return nullptr;
    std::memcpy(m_straddle.data() + firstSize, second.data(), size_t(count - firstSize));
    return m_straddle.data();
}

quint8 TByteReader::readU8()
{
    const uchar *p = take(1);
    return p ? *p : 0;
}

template <typename T> T TByteReader::valueAt(const uchar *p) const
{
    return m_bigEndian ? qFromBigEndian<T>(p) : qFromLittleEndian<T>(p);
}

quint16 TByteReader::readU16()
{
    const uchar *p = take(2);
    return p ? valueAt<quint16>(p) : 0;
}

quint32 TByteReader::readU32()
{
    const uchar *p = take(4);
    return p ? valueAt<quint32>(p) : 0;
}

void TByteReader::readEntryHead(quint16 &tag, quint16 &type, quint32 &count)
{
    // Most heads lie whole in the block last read; the others, near the end
    // of the data or of the budget, are read field by field as they always were.
    const qint64 start = m_pos;
    if (m_budget < 8 || start < m_lastStart || start - m_lastStart > m_lastSize - 8) {
        tag = readU16();
        type = readU16();
        count = readU32();
        return;
    }
    const uchar *p = m_last + (start - m_lastStart);
    m_pos += 8;
    m_budget -= 8;
    m_farthest = std::max(m_farthest, m_pos);
    tag = valueAt<quint16>(p);
    type = valueAt<quint16>(p + 2);
    count = valueAt<quint32>(p + 4);
}

QByteArray TByteReader::readBytes(qint64 count)
{
    QByteArray out(qMax<qint64>(count, 0), '\0');
    const qint64 start = m_pos;
    take(out.size()); // moves the cursor and spends the budget; a partial block is copied too
    if (m_budget >= 0) {
        const QByteArrayView bytes = view(start, out.size());
        std::copy(bytes.begin(), bytes.end(), out.begin());
    }
    return out;
}

QString TByteReader::readCString(qint64 maxLength)
{
    // Block by block up to the terminator; a text that runs into the end of
    // the data ends there, since the zeros beyond terminate it.
    QByteArray text;
    qint64 length = 0;
    for (qint64 p = m_pos; length < maxLength;) {
        QByteArrayView bytes = bytesAt(p);
        if (bytes.isEmpty())
            break;
        bytes = bytes.first(std::min(qint64(bytes.size()), maxLength - length));
        const auto *nul =
            static_cast<const char *>(std::memchr(bytes.data(), 0, size_t(bytes.size())));
        const qint64 part = nul ? nul - bytes.data() : bytes.size();
        text.append(bytes.data(), qsizetype(part));
        length += part;
        p += part;
        if (nul)
            break;
    }
    const qint64 consumed = std::min(length + 1, maxLength);
    m_pos += consumed;
    m_budget -= consumed;
    if (m_budget < 0)
        return QString();
    return QString::fromLatin1(text);
}

QByteArrayView TByteReader::view(qint64 position, qint64 count)
{
    if (position < 0 || position >= m_size || count <= 0)
        return QByteArrayView();
    count = std::min(count, m_size - position);
    if (m_data)
        return QByteArrayView(m_data + position, count);
    if (!m_mapped)
        m_mapped = m_file->map(0, m_size);
#ifdef POSIX_FADV_WILLNEED
    // A picture is read whole: fetch its bytes at once rather than block by block.
    ::posix_fadvise(m_file->handle(), off_t(position), off_t(count), POSIX_FADV_WILLNEED);
#endif
    if (m_mapped)
        return QByteArrayView(m_mapped + position, count);
    // Files that cannot be mapped are read, up to a limit.
    count = std::min(count, limits::kMaxUnmappedRead);
    m_viewBytes.resize(qsizetype(count));
    const qint64 got = readAt(m_file, position, m_viewBytes.data(), count);
    m_viewBytes.resize(qsizetype(std::max<qint64>(got, 0)));
    return QByteArrayView(m_viewBytes);
}
