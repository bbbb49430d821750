#ifndef TIFFBUILDER_H
#define TIFFBUILDER_H

// Writes TIFF/DNG files entry by entry, in either byte order, for tests, the
// benchmark and the sample file. Directories are laid out in the order they are
// reached; every offset is filled in by the writer, so a test names values, not
// positions. Broken layouts are made with raw fields, raw next offsets and a
// forced entry count.
//
//   auto exif = fixture::Ifd::make();
//   exif->rational(0x829A, 1, 250);
//   auto ifd0 = fixture::Ifd::make();
//   ifd0->ascii(0x0110, "M9 Digital Camera").child(0x8769, exif);
//   QByteArray file = fixture::tiff(fixture::Order::Big, ifd0);

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <utility>

namespace fixture {

enum class Order { Big, Little };

enum Type : quint16 {
    Byte = 1,
    Ascii = 2,
    Short = 3,
    Long = 4,
    Rational = 5,
    Undefined = 7,
    SLong = 9,
    SRational = 10,
    Double = 12,
};

class Ifd;
using IfdPtr = std::shared_ptr<Ifd>;

class Ifd {
public:
    static IfdPtr make() { return std::make_shared<Ifd>(); }

    // Values that TIFF keeps in the field when they fit (4 bytes or fewer).
    Ifd &shortValue(quint16 tag, quint16 value);
    Ifd &shorts(quint16 tag, const QList<quint16> &values);
    Ifd &longValue(quint16 tag, quint32 value);
    Ifd &longs(quint16 tag, const QList<quint32> &values);
    Ifd &slong(quint16 tag, qint32 value);
    Ifd &bytes(quint16 tag, Type type, const QByteArray &data);

    // Text with its terminator. Placed out of line unless it fits the field.
    Ifd &ascii(quint16 tag, const QByteArray &text);
    // Text placed out of line even when short (how the reader expects texts).
    Ifd &asciiOutOfLine(quint16 tag, const QByteArray &text);

    Ifd &rational(quint16 tag, quint32 num, quint32 den);
    Ifd &rationals(quint16 tag, const QList<std::pair<quint32, quint32>> &values);
    Ifd &srational(quint16 tag, qint32 num, qint32 den);

    // A LONG whose value is the offset of a data block written elsewhere in
    // the file (strip offsets, JPEG thumbnails). lengthTag, when given, gets
    // the block's size.
    Ifd &offsetTo(quint16 tag, const QByteArray &block, std::optional<quint16> lengthTag = {});

    // A pointer to another directory (Exif 0x8769, GPS 0x8825, SubIFDs 0x014A).
    Ifd &child(quint16 tag, IfdPtr directory);

    // A directory kept as an UNDEFINED block (count = its size in bytes), as
    // maker notes point to their sub-directories.
    Ifd &childBlock(quint16 tag, IfdPtr directory);

    // The field written verbatim (in file byte order) with any type and count.
    Ifd &raw(quint16 tag, quint16 type, quint32 count, quint32 field);

    // Chaining: the next IFD, or a next offset written as given.
    Ifd &next(IfdPtr directory);
    Ifd &nextRaw(quint32 offset);
    // Writes this entry count instead of the real one.
    Ifd &forceEntryCount(quint16 count);

    struct Entry {
        quint16 tag = 0;
        quint16 type = 0;
        quint32 count = 0;
        // The values as (byte width, value) units, put in file order on writing.
        QList<std::pair<int, quint32>> units;
        bool forceOutOfLine = false;
        QByteArray block; // for offsetTo: written as it is
        IfdPtr child;     // field = offset of this directory
        bool childSizeAsCount = false;
        std::optional<quint32> rawField;
    };
    const QList<Entry> &entries() const { return m_entries; }
    IfdPtr nextIfd() const { return m_next; }
    std::optional<quint32> nextRawOffset() const { return m_nextRaw; }
    std::optional<quint16> forcedEntryCount() const { return m_forcedCount; }

private:
    Entry &add(quint16 tag, quint16 type, quint32 count);
    QList<Entry> m_entries;
    IfdPtr m_next;
    std::optional<quint32> m_nextRaw;
    std::optional<quint16> m_forcedCount;
};

// A complete TIFF file: header, first IFD and everything reachable from it.
QByteArray tiff(Order order, const IfdPtr &ifd0);

// A TIFF header whose first-IFD offset is given verbatim, followed by body.
QByteArray tiffHeader(Order order, quint32 firstIfdOffset, quint16 magic = 42);

// A Leica maker note as the M9 writes it: the 8-byte header "LEICA0\3\0", a
// main directory of sub-directory pointers (tags 0x3000, 0x3100, 0x3400,
// 0x3900) and the sub-directories. Offsets are relative to the note's start.
QByteArray leicaMakerNote(Order order, const QList<std::pair<quint16, IfdPtr>> &subDirs);

// A JPEG file whose APP1 segment carries the given TIFF data as Exif,
// optionally behind a JFIF APP0 segment.
QByteArray jpegWithExif(const QByteArray &tiffData, bool withApp0 = false);

// A small valid JPEG picture of one colour.
QByteArray jpegPicture(int width, int height, quint32 rgb);

// Packed 8-bit RGB samples of a picture drawn by the callback.
template <typename F> QByteArray rgbStrip(int width, int height, F pixel)
{
    QByteArray out;
    out.reserve(width * height * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const quint32 rgb = pixel(x, y);
            out.append(char((rgb >> 16) & 0xFF));
            out.append(char((rgb >> 8) & 0xFF));
            out.append(char(rgb & 0xFF));
        }
    }
    return out;
}

// Writes data to path; returns false when that fails.
bool writeFile(const QString &path, const QByteArray &data);

// Files of one test, in a directory removed with it.
class TempFiles {
public:
    QString write(const QString &name, const QByteArray &data);
    QString path(const QString &name) const;

private:
    QTemporaryDir m_dir;
};

} // namespace fixture

#endif // TIFFBUILDER_H
