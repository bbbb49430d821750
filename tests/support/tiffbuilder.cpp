#include "tests/support/tiffbuilder.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QtEndian>

namespace fixture {

Ifd &Ifd::add(quint16 tag, quint16 type, qsizetype count, int width, QList<quint32> values)
{
    Entry &e = m_entries.emplace_back();
    e.tag = tag;
    e.type = type;
    e.count = quint32(count);
    e.width = width;
    e.values = std::move(values);
    return *this;
}

Ifd &Ifd::ascii(quint16 tag, const QByteArray &text, bool outOfLine)
{
    bytes(tag, Ascii, text + '\0');
    m_entries.last().outOfLine = outOfLine;
    return *this;
}

Ifd &Ifd::rationals(quint16 tag, const Fractions &values)
{
    QList<quint32> parts;
    for (const auto &[num, den] : values)
        parts << num << den;
    return add(tag, Rational, values.size(), 4, parts);
}

Ifd &Ifd::offsetTo(quint16 tag, const QByteArray &block, std::optional<quint16> lengthTag)
{
    add(tag, Long, 1).m_entries.last().block = block;
    return lengthTag ? longValue(*lengthTag, quint32(block.size())) : *this;
}

Ifd &Ifd::offsetsTo(quint16 tag, const QList<QByteArray> &blocks, std::optional<quint16> lengthTag)
{
    add(tag, Long, blocks.size()).m_entries.last().blocks = blocks;
    QList<quint32> sizes;
    for (const QByteArray &block : blocks)
        sizes << quint32(block.size());
    return lengthTag ? longs(*lengthTag, sizes) : *this;
}

Ifd &Ifd::child(quint16 tag, IfdPtr directory, bool asBlock)
{
    add(tag, asBlock ? Undefined : Long, 1).m_entries.last().child = std::move(directory);
    m_entries.last().childAsBlock = asBlock;
    return *this;
}

Ifd &Ifd::raw(quint16 tag, quint16 type, quint32 count, quint32 field)
{
    add(tag, type, count).m_entries.last().rawField = field;
    return *this;
}

class Writer {
public:
    explicit Writer(Order order) : m_order(order) {}
    QByteArray out;

    void put16(quint16 v)
    {
        out.append(2, '\0');
        m_order == Order::Big ? qToBigEndian(v, out.end() - 2) : qToLittleEndian(v, out.end() - 2);
    }
    void put32(quint32 v)
    {
        out.append(4, '\0');
        patch32(out.size() - 4, v);
    }
    void patch32(qint64 at, quint32 v)
    {
        m_order == Order::Big ? qToBigEndian(v, out.data() + at)
                              : qToLittleEndian(v, out.data() + at);
    }
    // Appends data at an even position and points the field at it.
    void placeAt(qint64 field, const QByteArray &data)
    {
        if (out.size() % 2)
            out.append('\0');
        patch32(field, quint32(out.size()));
        out.append(data);
    }

    // Appends the directory and everything it points to; returns its position.
    qint64 writeIfd(const Ifd &ifd)
    {
        if (out.size() % 2)
            out.append('\0');
        const qint64 start = out.size();
        put16(quint16(ifd.m_entries.size()));
        for (const auto &e : ifd.m_entries) {
            put16(e.tag);
            put16(e.type);
            put32(e.count);
            put32(0);
        }
        const qint64 nextField = out.size();
        put32(0);

        for (qsizetype i = 0; i < ifd.m_entries.size(); ++i) {
            const auto &e = ifd.m_entries[i];
            const qint64 field = start + 2 + i * 12 + 8;
            if (e.rawField) {
                patch32(field, *e.rawField);
            } else if (e.child) {
                const qint64 at = writeIfd(*e.child);
                patch32(field, quint32(at));
                if (e.childAsBlock)
                    patch32(field - 4, quint32(out.size() - at));
            } else if (!e.blocks.isEmpty()) {
                qint64 list = field;
                if (e.blocks.size() > 1) {
                    placeAt(field, QByteArray(e.blocks.size() * 4, '\0'));
                    list = out.size() - e.blocks.size() * 4;
                }
                for (qsizetype b = 0; b < e.blocks.size(); ++b) {
                    if (out.size() % 2)
                        out.append('\0');
                    patch32(list + b * 4, quint32(out.size()));
                    out.append(e.blocks[b]);
                }
            } else if (!e.block.isNull()) {
                placeAt(field, e.block);
            } else {
                Writer value(m_order);
                for (quint32 v : e.values) {
                    if (e.width == 1)
                        value.out.append(char(v));
                    else if (e.width == 2)
                        value.put16(quint16(v));
                    else
                        value.put32(v);
                }
                if (value.out.size() <= 4 && !e.outOfLine)
                    std::copy(value.out.begin(), value.out.end(), out.begin() + field);
                else
                    placeAt(field, value.out);
            }
        }
        if (ifd.m_next)
            patch32(nextField, quint32(writeIfd(*ifd.m_next)));
        return start;
    }

private:
    Order m_order;
};

QByteArray tiff(Order order, const IfdPtr &ifd0)
{
    Writer w(order);
    w.out.append(order == Order::Big ? "MM" : "II");
    w.put16(42);
    w.put32(8);
    w.writeIfd(*ifd0);
    return w.out;
}

QByteArray leicaMakerNote(Order order, const QList<std::pair<quint16, IfdPtr>> &subDirs)
{
    Writer w(order);
    w.out.append("LEICA0\x03\x00", 8);
    Ifd main;
    for (const auto &[tag, dir] : subDirs)
        main.child(tag, dir, true);
    w.writeIfd(main);
    return w.out;
}

QByteArray jpegPicture(int width, int height, quint32 rgb)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(rgb));
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 90);
    return out;
}

QByteArray jpegWithExif(const QByteArray &tiffData, bool withApp0)
{
    Writer w(Order::Big);
    w.put16(0xFFD8);
    if (withApp0) {
        w.put16(0xFFE0);
        w.put16(16);
        w.out.append("JFIF\0\x01\x01\x00\x00\x01\x00\x01\x00\x00", 14);
    }
    w.put16(0xFFE1);
    w.put16(quint16(2 + 6 + tiffData.size()));
    w.out.append("Exif\0\0", 6);
    w.out.append(tiffData);
    // The rest of a real picture, so that the file is a JPEG as a whole.
    w.out.append(jpegPicture(16, 16, 0x808080).mid(2));
    return w.out;
}

bool writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size();
}

} // namespace fixture
