#include "rawfile/tiffentry.h"

#include "rawfile/tbytereader.h"
#include "rawfile/tcodetable.h"

Q_LOGGING_CATEGORY(lcTiffEntries, "tolvik.tiff.entries", QtWarningMsg)

namespace {

// TIFF field types
constexpr TCodeText kFieldTypes[] = {
    {1, "BYTE (8-Bit sint)"},
    {2, "ASCII"},
    {3, "SHORT (16-Bit uint)"},
    {4, "LONG (32-Bit uint)"},
    {5, "RATIONAL unsigned (2 LONG, Num/Denum)"},
    {7, "Undefined (8Bit)"},
    {9, "SLONG (32Bit Signed Int)"},
    {10, "Rational signed (2 SLONG, Num/Denum)"},
};

int fieldTypeSize(quint16 type)
{
    switch (type) {
    case 1:
    case 2:
    case 7: return 1;
    case 3: return 2;
    case 4:
    case 9: return 4;
    case 5:
    case 10: return 8;
    default: return 0;
    }
}

} // namespace

QString fieldTypeText(quint16 type)
{
    return lookup(kFieldTypes, type, "unbekannt");
}

quint64 TEntryLength::next(quint16 type, quint32 count)
{
    if (const int size = fieldTypeSize(type))
        m_last = quint64(count) * quint64(size);
    return m_last;
}

QString entryLine(quint16 tag, const QString &name, quint16 type, quint32 count, quint64 length,
                  QChar fill)
{
    return QStringLiteral("Tag: 0x%1 %2, Typ: %3, Count: %4,  Länge: %5")
        .arg(tag, 4, 16, fill)
        .arg(name, fieldTypeText(type))
        .arg(count)
        .arg(length);
}

TEntryHead readEntryHead(TByteReader &reader, TEntryLength &length, QString (*tagName)(int),
                         QChar fill)
{
    TEntryHead head;
    reader.readEntryHead(head.tag, head.type, head.count);
    const quint64 bytes = length.next(head.type, head.count);
    qCDebug(lcTiffEntries).noquote()
        << entryLine(head.tag, tagName(head.tag), head.type, head.count, bytes, fill);
    return head;
}
