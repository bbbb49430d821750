#include "raw/tiffwriter.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QSaveFile>
#include <QSysInfo>

#include <cstring>
#include <limits>

namespace raw {

namespace {

// Strips of at most this many bytes, as readers that read a strip at once
// expect of a baseline file.
constexpr std::size_t kStripBytes = 256 * 1024;

class TIfd {
public:
    explicit TIfd(bool little) : m_little(little) {}

    void put16(QByteArray &b, quint16 v) const
    {
        const char bytes[2] = {char(m_little ? v : v >> 8), char(m_little ? v >> 8 : v)};
        b.append(bytes, 2);
    }
    void put32(QByteArray &b, quint32 v) const
    {
        for (int i = 0; i < 4; ++i)
            b.append(char(v >> (m_little ? 8 * i : 8 * (3 - i))));
    }
    // An entry whose value fits its four bytes (SHORT or LONG, one value).
    void entry(quint16 tag, quint16 type, quint32 count, quint32 value)
    {
        put16(m_entries, tag);
        put16(m_entries, type);
        put32(m_entries, count);
        if (type == 3 && count == 1) {
            put16(m_entries, quint16(value));
            put16(m_entries, 0);
        } else {
            put32(m_entries, value);
        }
        ++m_count;
    }
    const QByteArray &entries() const { return m_entries; }
    int count() const { return m_count; }

private:
    bool m_little;
    QByteArray m_entries;
    int m_count = 0;
};

enum : quint16 { kShort = 3, kLong = 4, kRational = 5 };

} // namespace

bool writeTiff(const TPicture &picture, const QString &path, QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (picture.isNull() || (picture.bits != 8 && picture.bits != 16) ||
        picture.data.size() != picture.bytesPerLine() * std::size_t(picture.height))
        return fail(QCoreApplication::translate("raw", "The picture is empty."));
    const std::size_t line = picture.bytesPerLine();
    const int rowsPerStrip = int(std::max<std::size_t>(1, kStripBytes / line));
    const int strips = (picture.height + rowsPerStrip - 1) / rowsPerStrip;
    const bool little = QSysInfo::ByteOrder == QSysInfo::LittleEndian;
    TIfd ifd(little);

    // Header, directory, then the values that do not fit an entry, then the pixels.
    constexpr int kEntries = 13;
    const quint32 ifdAt = 8;
    const quint32 extraAt = ifdAt + 2 + 12 * kEntries + 4;
    const quint32 bitsAt = extraAt, resolutionAt = bitsAt + 8;
    const quint32 offsetsAt = resolutionAt + 8, countsAt = offsetsAt + 4 * quint32(strips);
    // One strip's offset and count fit their entries; more need arrays.
    const quint64 pixelsAt = strips == 1 ? offsetsAt : countsAt + 4 * quint64(strips);
    if (pixelsAt + picture.data.size() > std::numeric_limits<quint32>::max())
        return fail(
            QCoreApplication::translate("raw", "The picture is too large for a TIFF file."));

    const quint16 bits = quint16(picture.bits);
    ifd.entry(256, kLong, 1, quint32(picture.width));
    ifd.entry(257, kLong, 1, quint32(picture.height));
    ifd.entry(258, kShort, 3, bitsAt);
    ifd.entry(259, kShort, 1, 1); // no compression
    ifd.entry(262, kShort, 1, 2); // RGB
    ifd.entry(273, kLong, quint32(strips), strips == 1 ? quint32(pixelsAt) : offsetsAt);
    ifd.entry(277, kShort, 1, 3);
    ifd.entry(278, kLong, 1, quint32(rowsPerStrip));
    const quint32 lastStrip = quint32(picture.height - (strips - 1) * rowsPerStrip);
    ifd.entry(279, kLong, quint32(strips), strips == 1 ? quint32(line * lastStrip) : countsAt);
    ifd.entry(282, kRational, 1, resolutionAt);
    ifd.entry(283, kRational, 1, resolutionAt);
    ifd.entry(284, kShort, 1, 1); // samples interleaved
    ifd.entry(296, kShort, 1, 2); // inches
    Q_ASSERT(ifd.count() == kEntries);

    QByteArray head(little ? "II" : "MM");
    ifd.put16(head, 42);
    ifd.put32(head, ifdAt);
    ifd.put16(head, quint16(kEntries));
    head += ifd.entries();
    ifd.put32(head, 0); // no further directory
    for (int i = 0; i < 3; ++i)
        ifd.put16(head, bits);
    ifd.put16(head, 0); // padding to a word
    ifd.put32(head, 300);
    ifd.put32(head, 1);
    for (int s = 0; strips > 1 && s < strips; ++s)
        ifd.put32(head, quint32(pixelsAt + quint64(s) * quint64(rowsPerStrip) * line));
    for (int s = 0; strips > 1 && s < strips; ++s)
        ifd.put32(head, quint32(line * (s + 1 < strips ? quint32(rowsPerStrip) : lastStrip)));
    Q_ASSERT(quint64(head.size()) == pixelsAt);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    bool ok = file.write(head) == head.size();
    // The pixels, in pieces: each write copies nothing.
    const char *data = reinterpret_cast<const char *>(picture.data.data());
    for (std::size_t at = 0; ok && at < picture.data.size(); at += 8 * kStripBytes) {
        const qint64 n = qint64(std::min(picture.data.size() - at, 8 * kStripBytes));
        ok = file.write(data + at, n) == n;
    }
    if (!ok) {
        const QString why = file.errorString();
        file.cancelWriting();
        return fail(why);
    }
    if (!file.commit())
        return fail(file.errorString());
    return true;
}

} // namespace raw
