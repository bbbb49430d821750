#include "rawfile/tbytereader.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

void TByteReader::setData(const uchar *data, qint64 size)
{
    m_data = data;
    m_size = data ? size : 0;
    m_pos = 0;
}

const uchar *TByteReader::take(qint64 count)
{
    const qint64 start = m_pos;
    m_pos += count;
    m_budget -= count;
    if (m_budget < 0 || start < 0 || start > m_size - count)
        return nullptr;
    return m_data + start;
}

quint8 TByteReader::readU8()
{
    const uchar *p = take(1);
    return p ? *p : 0;
}

quint16 TByteReader::readU16()
{
    const uchar *p = take(2);
    if (!p)
        return 0;
    return m_bigEndian ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
}

quint32 TByteReader::readU32()
{
    const uchar *p = take(4);
    if (!p)
        return 0;
    return m_bigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
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
    const QByteArrayView bytes = view(m_pos, maxLength);
    const auto *nul =
        bytes.isEmpty()
            ? nullptr
            : static_cast<const char *>(std::memchr(bytes.data(), 0, size_t(bytes.size())));
    const qint64 length = nul ? nul - bytes.data() : bytes.size();
    // The text and its terminator; a text that runs into the end of the data
    // ends there, since the zeros beyond terminate it.
    const qint64 consumed = std::min(length + 1, maxLength);
    m_pos += consumed;
    m_budget -= consumed;
    if (m_budget < 0)
        return QString();
    return QString::fromLatin1(bytes.data(), length);
}

QByteArrayView TByteReader::view(qint64 position, qint64 count) const
{
    if (!m_data || position < 0 || position >= m_size || count <= 0)
        return QByteArrayView();
    return QByteArrayView(m_data + position, std::min(count, m_size - position));
}
