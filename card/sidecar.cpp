#include "card/sidecar.h"

#include "card/marklimits.h"

#include <QIODevice>
#include <QXmlStreamReader>

#include <exempi/xmp.h>
#include <exempi/xmpconsts.h>
#include <exempi/xmperrors.h>

#include <memory>
#include <mutex>

namespace {

// Exempi is initialised once for the process; the toolkit beneath it keeps
// shared tables (namespaces, aliases), so one thread at a time uses it.
std::mutex &exempi()
{
    static std::mutex mutex;
    static std::once_flag initialised;
    std::call_once(initialised, [] { xmp_init(); });
    return mutex;
}

struct TXmpErrorText {
    int code;
    const char *text;
};
constexpr TXmpErrorText kXmpErrors[] = {
    {XMPErr_BadXML, "is not well-formed XML"},
    {XMPErr_BadRDF, "is not valid RDF"},
    {XMPErr_BadXMP, "is not valid XMP"},
    {XMPErr_BadUnicode, "is not valid UTF-8"},
    {XMPErr_BadSerialize, "could not be written as XMP"},
};

QString lookup(int code)
{
    for (const TXmpErrorText &entry : kXmpErrors) {
        if (entry.code == code)
            return QLatin1String(entry.text);
    }
    return QStringLiteral("is not usable XMP (Exempi error %1)").arg(code);
}

struct TXmpFree {
    void operator()(XmpPtr xmp) const { xmp_free(xmp); }
    void operator()(XmpStringPtr text) const { xmp_string_free(text); }
};
using TXmp = std::unique_ptr<std::remove_pointer_t<XmpPtr>, TXmpFree>;
using TXmpString = std::unique_ptr<std::remove_pointer_t<XmpStringPtr>, TXmpFree>;

// The parsed packet; null, with the reason in *error, when it does not parse.
// Call with the mutex held.
TXmp parsed(QByteArray packet, QString *error)
{
    while (packet.endsWith('\0')) // a DNG's packet may be padded so
        packet.chop(1);
    TXmp xmp(xmp_new_empty());
    if (packet.isEmpty())
        return xmp;
    // Exempi prints each parse failure on stderr; XML that is not well-formed
    // (the common fault: a file cut short) is caught here first, with its line.
    QXmlStreamReader xml(packet);
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError()) {
        *error = QStringLiteral("is not well-formed XML (line %1: %2)")
                     .arg(xml.lineNumber())
                     .arg(xml.errorString());
        return {};
    }
    if (!xmp_parse(xmp.get(), packet.constData(), size_t(packet.size()))) {
        *error = lookup(xmp_get_error());
        return {};
    }
    return xmp;
}

QString property(XmpPtr xmp, const char *name)
{
    TXmpString value(xmp_string_new());
    if (!xmp_get_property(xmp, NS_XAP, name, value.get(), nullptr))
        return {};
    return QString::fromUtf8(xmp_string_cstr(value.get())).trimmed();
}

void setProperty(XmpPtr xmp, const char *name, const QString &value)
{
    if (value.isEmpty())
        xmp_delete_property(xmp, NS_XAP, name);
    else
        xmp_set_property(xmp, NS_XAP, name, value.toUtf8().constData(), 0);
}

// An XML declaration at the start, which Exempi drops; kept for a new sidecar
// too, as darktable and exiftool begin theirs.
QByteArray declarationOf(const QByteArray &packet)
{
    if (packet.isEmpty())
        return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (!packet.startsWith("<?xml"))
        return {};
    const qsizetype end = packet.indexOf("?>");
    return end < 0 ? QByteArray() : packet.left(end + 2) + '\n';
}

quint32 number(const QByteArray &bytes, qsizetype at, int width, bool little)
{
    quint32 value = 0;
    for (int i = 0; i < width; ++i)
        value = value << 8 | uchar(bytes[at + (little ? width - 1 - i : i)]);
    return value;
}

} // namespace

bool marksOfPacket(const QByteArray &packet, TMark *mark, QString *error)
{
    std::lock_guard<std::mutex> lock(exempi());
    const TXmp xmp = parsed(packet, error);
    if (!xmp)
        return false;
    *mark = {};
    bool isNumber = false;
    const double rating = property(xmp.get(), "Rating").toDouble(&isNumber);
    if (isNumber && rating >= -1 && rating <= 5) {
        mark->hasRating = true;
        mark->rating = qRound(rating);
    }
    mark->label = property(xmp.get(), "Label");
    return true;
}

QByteArray packetWithMarks(const QByteArray &packet, const TMark &mark, QString *error)
{
    std::lock_guard<std::mutex> lock(exempi());
    const TXmp xmp = parsed(packet, error);
    if (!xmp)
        return {};
    setProperty(xmp.get(), "Rating", mark.hasRating ? QString::number(mark.rating) : QString());
    setProperty(xmp.get(), "Label", mark.label);
    // The compact form keeps simple properties as attributes, as editors write
    // them; a packet wrapper is kept where there was one, without padding
    // (a sidecar is rewritten whole, never edited in place).
    const bool wrapped = packet.contains("<?xpacket");
    const quint32 options =
        XMP_SERIAL_USECOMPACTFORMAT | (wrapped ? 0u : quint32(XMP_SERIAL_OMITPACKETWRAPPER));
    TXmpString text(xmp_string_new());
    if (!xmp_serialize_and_format(xmp.get(), text.get(), options, wrapped ? 1 : 0, "\n", " ", 0)) {
        *error = lookup(xmp_get_error());
        return {};
    }
    return declarationOf(packet) + QByteArray(xmp_string_cstr(text.get()));
}

QByteArray ifd0XmpPacket(QIODevice &file)
{
    constexpr quint16 kXmpTag = 700;
    constexpr int kEntrySize = 12;
    const qint64 size = file.size();
    if (!file.seek(0))
        return {};
    const QByteArray header = file.read(8);
    const bool little = header.startsWith("II*\0");
    if (header.size() < 8 || !(little || header.startsWith("MM\0*")))
        return {};
    const quint32 ifd0 = number(header, 4, 4, little);
    if (qint64(ifd0) + 2 > size || !file.seek(ifd0))
        return {};
    const QByteArray countBytes = file.read(2);
    const quint32 count = countBytes.size() == 2 ? number(countBytes, 0, 2, little) : 0;
    if (count > limits::kMaxIfd0Entries)
        return {};
    const QByteArray entries = file.read(qint64(count) * kEntrySize);
    for (qsizetype at = 0; at + kEntrySize <= entries.size(); at += kEntrySize) {
        const quint32 type = number(entries, at + 2, 2, little);
        const quint32 length = number(entries, at + 4, 4, little);
        // BYTE as TIFF/XMP says, UNDEFINED as some converters write it.
        if (number(entries, at, 2, little) != kXmpTag || (type != 1 && type != 7))
            continue;
        if (length <= 4)
            return entries.mid(at + 8, length);
        const quint32 offset = number(entries, at + 8, 4, little);
        if (length > limits::kMaxEmbeddedXmpBytes || qint64(offset) + length > size ||
            !file.seek(offset))
            return {};
        const QByteArray packet = file.read(length);
        return packet.size() == qsizetype(length) ? packet : QByteArray();
    }
    return {};
}
