#ifndef TIFFBUILDER_H
#define TIFFBUILDER_H

// Writes TIFF/DNG files entry by entry, in either byte order, for tests, the
// benchmark and the sample file. Directories are laid out in the order they are
// reached; every offset is filled in by the writer, so a test names values, not
// positions. Broken layouts are made with raw fields.
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

enum Type : quint16 { Byte = 1, Ascii, Short, Long, Rational, Undefined = 7, SLong = 9, SRational };

class Ifd;
using IfdPtr = std::shared_ptr<Ifd>;
using Fractions = QList<std::pair<quint32, quint32>>;

class Ifd {
public:
    static IfdPtr make() { return std::make_shared<Ifd>(); }

    // Values are kept in the field when they fit (4 bytes or fewer).
    Ifd &shortValue(quint16 tag, quint16 value) { return add(tag, Short, 1, 2, {value}); }
    Ifd &shorts(quint16 tag, const QList<quint16> &v)
    {
        return add(tag, Short, v.size(), 2, widen(v));
    }
    Ifd &longValue(quint16 tag, quint32 value) { return add(tag, Long, 1, 4, {value}); }
    Ifd &longs(quint16 tag, const QList<quint32> &v) { return add(tag, Long, v.size(), 4, v); }
    Ifd &slong(quint16 tag, qint32 value) { return add(tag, SLong, 1, 4, {quint32(value)}); }
    Ifd &bytes(quint16 tag, quint16 type, const QByteArray &b)
    {
        return add(tag, type, b.size(), 1, widen(b));
    }
    // Text with its terminator; outOfLine places it behind the IFD even when short.
    Ifd &ascii(quint16 tag, const QByteArray &text, bool outOfLine = false);
    Ifd &rational(quint16 tag, quint32 num, quint32 den) { return rationals(tag, {{num, den}}); }
    Ifd &rationals(quint16 tag, const Fractions &values);
    Ifd &srational(quint16 tag, qint32 num, qint32 den)
    {
        return add(tag, SRational, 1, 4, {quint32(num), quint32(den)});
    }
    Ifd &srationals(quint16 tag, const QList<std::pair<qint32, qint32>> &values)
    {
        QList<quint32> parts;
        for (const auto &[num, den] : values)
            parts << quint32(num) << quint32(den);
        return add(tag, SRational, values.size(), 4, parts);
    }

    // A LONG holding the offset of a data block written elsewhere in the file
    // (strips, JPEG thumbnails); lengthTag, when given, gets the block's size.
    Ifd &offsetTo(quint16 tag, const QByteArray &block, std::optional<quint16> lengthTag = {});
    // LONG offsets of blocks written one after the other (strips, tiles);
    // lengthTag, when given, gets their sizes.
    Ifd &offsetsTo(quint16 tag, const QList<QByteArray> &blocks,
                   std::optional<quint16> lengthTag = {});
    // A pointer to another directory (Exif 0x8769, GPS 0x8825, SubIFDs 0x014A);
    // asBlock writes it as an UNDEFINED block of its size, as maker notes do.
    Ifd &child(quint16 tag, IfdPtr directory, bool asBlock = false);
    // The field written verbatim (in file byte order) with any type and count.
    Ifd &raw(quint16 tag, quint16 type, quint32 count, quint32 field);

    Ifd &next(IfdPtr directory)
    {
        m_next = std::move(directory);
        return *this;
    }

private:
    friend class Writer;
    struct Entry {
        quint16 tag = 0, type = 0;
        quint32 count = 0;
        int width = 1; // of each value, put in file byte order on writing
        QList<quint32> values;
        bool outOfLine = false;
        QByteArray block;
        QList<QByteArray> blocks;
        IfdPtr child;
        bool childAsBlock = false;
        std::optional<quint32> rawField;
    };
    Ifd &add(quint16 tag, quint16 type, qsizetype count, int width = 1, QList<quint32> values = {});
    template <typename L> static QList<quint32> widen(const L &list)
    {
        return {list.begin(), list.end()};
    }
    QList<Entry> m_entries;
    IfdPtr m_next;
};

// A complete TIFF file: header, first IFD and everything reachable from it.
QByteArray tiff(Order order, const IfdPtr &ifd0);

// A Leica maker note as the M9 writes it: the header "LEICA0\3\0", a main
// directory of sub-directory blocks (0x3000, 0x3100, 0x3400, 0x3900) and the
// sub-directories; offsets count from the note's start.
QByteArray leicaMakerNote(Order order, const QList<std::pair<quint16, IfdPtr>> &subDirs);

// A JPEG whose APP1 segment holds the TIFF data as Exif, optionally behind JFIF APP0.
QByteArray jpegWithExif(const QByteArray &tiffData, bool withApp0 = false);
// A small valid JPEG picture of one colour.
QByteArray jpegPicture(int width, int height, quint32 rgb);

bool writeFile(const QString &path, const QByteArray &data);

// Files of one test, in a directory removed with it.
class TempFiles {
public:
    QString write(const QString &name, const QByteArray &data)
    {
        const QString file = path(name);
        return writeFile(file, data) ? file : QString();
    }
    QString path(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
};

} // namespace fixture

#endif // TIFFBUILDER_H
