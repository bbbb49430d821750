#include "tests/support/tiffbuilder.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QtEndian>

namespace fixture {

// --- Ifd -------------------------------------------------------------------

Ifd::Entry &Ifd::add(quint16 tag, quint16 type, quint32 count)
{
    Entry e;
    e.tag = tag;
    e.type = type;
    e.count = count;
    m_entries.append(e);
    return m_entries.last();
}

Ifd &Ifd::shortValue(quint16 tag, quint16 value)
{
    return shorts(tag, {value});
}

Ifd &Ifd::shorts(quint16 tag, const QList<quint16> &values)
{
    Entry &e = add(tag, Short, quint32(values.size()));
    for (quint16 v : values)
        e.units.append({2, v});
    return *this;
}

Ifd &Ifd::longValue(quint16 tag, quint32 value)
{
    return longs(tag, {value});
}

Ifd &Ifd::longs(quint16 tag, const QList<quint32> &values)
{
    Entry &e = add(tag, Long, quint32(values.size()));
    for (quint32 v : values)
        e.units.append({4, v});
    return *this;
}

Ifd &Ifd::slong(quint16 tag, qint32 value)
{
    add(tag, SLong, 1).units.append({4, quint32(value)});
    return *this;
}

Ifd &Ifd::bytes(quint16 tag, Type type, const QByteArray &data)
{
    Entry &e = add(tag, type, quint32(data.size()));
    for (char c : data)
        e.units.append({1, quint8(c)});
    return *this;
}

Ifd &Ifd::ascii(quint16 tag, const QByteArray &text)
{
    Entry &e = add(tag, Ascii, quint32(text.size() + 1));
    for (char c : text)
        e.units.append({1, quint8(c)});
    e.units.append({1, 0});
    return *this;
}

Ifd &Ifd::asciiOutOfLine(quint16 tag, const QByteArray &text)
{
    ascii(tag, text);
    m_entries.last().forceOutOfLine = true;
    return *this;
}

Ifd &Ifd::rational(quint16 tag, quint32 num, quint32 den)
{
    return rationals(tag, {{num, den}});
}

Ifd &Ifd::rationals(quint16 tag, const QList<std::pair<quint32, quint32>> &values)
{
    Entry &e = add(tag, Rational, quint32(values.size()));
    for (const auto &[num, den] : values) {
        e.units.append({4, num});
        e.units.append({4, den});
    }
    return *this;
}

Ifd &Ifd::srational(quint16 tag, qint32 num, qint32 den)
{
    Entry &e = add(tag, SRational, 1);
    e.units.append({4, quint32(num)});
    e.units.append({4, quint32(den)});
    return *this;
}

Ifd &Ifd::offsetTo(quint16 tag, const QByteArray &block, std::optional<quint16> lengthTag)
{
    add(tag, Long, 1).block = block;
    if (lengthTag)
        longValue(*lengthTag, quint32(block.size()));
    return *this;
}

Ifd &Ifd::child(quint16 tag, IfdPtr directory)
{
    add(tag, Long, 1).child = std::move(directory);
    return *this;
}

Ifd &Ifd::childBlock(quint16 tag, IfdPtr directory)
{
    Entry &e = add(tag, Undefined, 0);
    e.child = std::move(directory);
    e.childSizeAsCount = true;
    return *this;
}

Ifd &Ifd::raw(quint16 tag, quint16 type, quint32 count, quint32 field)
{
    add(tag, type, count).rawField = field;
    return *this;
}

Ifd &Ifd::next(IfdPtr directory)
{
    m_next = std::move(directory);
    return *this;
}

Ifd &Ifd::nextRaw(quint32 offset)
{
    m_nextRaw = offset;
    return *this;
}

Ifd &Ifd::forceEntryCount(quint16 count)
{
    m_forcedCount = count;
    return *this;
}

// --- Writer ----------------------------------------------------------------

namespace {

class Writer {
public:
    explicit Writer(Order order) : m_order(order) {}

    QByteArray out;

    void put16(quint16 v)
    {
        char b[2];
        if (m_order == Order::Big)
            qToBigEndian(v, b);
        else
            qToLittleEndian(v, b);
        out.append(b, 2);
    }
    void put32(quint32 v)
    {
        out.append(4, '\0');
        patch32(out.size() - 4, v);
    }
    void patch32(qint64 at, quint32 v)
    {
        if (m_order == Order::Big)
            qToBigEndian(v, out.data() + at);
        else
            qToLittleEndian(v, out.data() + at);
    }
    void align()
    {
        if (out.size() % 2)
            out.append('\0');
    }

    QByteArray encode(const QList<std::pair<int, quint32>> &units)
    {
        Writer w(m_order);
        for (const auto &[width, value] : units) {
            if (width == 1)
                w.out.append(char(value));
            else if (width == 2)
                w.put16(quint16(value));
            else
                w.put32(value);
        }
        return w.out;
    }

    // Appends the directory and everything it points to; returns its position.
    qint64 writeIfd(const Ifd &ifd)
    {
        align();
        const qint64 start = out.size();
        const auto &entries = ifd.entries();
        put16(ifd.forcedEntryCount().value_or(quint16(entries.size())));
        QList<qint64> fields;
        for (const auto &e : entries) {
            put16(e.tag);
            put16(e.type);
            put32(e.count);
            fields.append(out.size());
            put32(0);
        }
        const qint64 nextField = out.size();
        put32(0);

        for (int i = 0; i < entries.size(); ++i) {
            const auto &e = entries[i];
            const qint64 field = fields[i];
            if (e.rawField) {
                patch32(field, *e.rawField);
            } else if (e.child) {
                const qint64 start = writeIfd(*e.child);
                patch32(field, quint32(start));
                if (e.childSizeAsCount)
                    patch32(field - 4, quint32(out.size() - start));
            } else if (!e.block.isNull()) {
                align();
                patch32(field, quint32(out.size()));
                out.append(e.block);
            } else {
                const QByteArray value = encode(e.units);
                if (value.size() <= 4 && !e.forceOutOfLine) {
                    std::copy(value.begin(), value.end(), out.begin() + field);
                } else {
                    align();
                    patch32(field, quint32(out.size()));
                    out.append(value);
                }
            }
        }

        if (ifd.nextRawOffset())
            patch32(nextField, *ifd.nextRawOffset());
        else if (ifd.nextIfd())
            patch32(nextField, quint32(writeIfd(*ifd.nextIfd())));
        return start;
    }

private:
    Order m_order;
};

void putHeader(Writer &w, Order order, quint16 magic)
{
    w.out.append(order == Order::Big ? "MM" : "II");
    w.put16(magic);
}

} // namespace

QByteArray tiff(Order order, const IfdPtr &ifd0)
{
    Writer w(order);
    putHeader(w, order, 42);
    w.put32(8);
    w.writeIfd(*ifd0);
    return w.out;
}

QByteArray tiffHeader(Order order, quint32 firstIfdOffset, quint16 magic)
{
    Writer w(order);
    putHeader(w, order, magic);
    w.put32(firstIfdOffset);
    return w.out;
}

QByteArray leicaMakerNote(Order order, const QList<std::pair<quint16, IfdPtr>> &subDirs)
{
    Writer w(order);
    w.out.append("LEICA0\x03\x00", 8);
    Ifd main;
    for (const auto &[tag, dir] : subDirs)
        main.childBlock(tag, dir);
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

QString TempFiles::write(const QString &name, const QByteArray &data)
{
    const QString file = path(name);
    return writeFile(file, data) ? file : QString();
}

QString TempFiles::path(const QString &name) const
{
    return m_dir.filePath(name);
}

} // namespace fixture
