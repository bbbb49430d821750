#ifndef TIFFENTRY_H
#define TIFFENTRY_H

// What every directory walker shares: the TIFF field types with their texts
// and sizes, and the per-entry trace line, which goes to the logging category
// "tolvik.tiff.entries" (off unless enabled with QT_LOGGING_RULES).

#include <QLoggingCategory>
#include <QString>

Q_DECLARE_LOGGING_CATEGORY(lcTiffEntries)

// Text of a TIFF field type: "BYTE (8-Bit sint)", ..., "unbekannt".
QString fieldTypeText(quint16 type);

// The byte length of one entry, count times the type's size. An entry of a
// type without a size keeps the length of the entry before it (0 for the
// first entry of a directory).
class TEntryLength {
public:
    quint64 next(quint16 type, quint32 count);
    quint64 current() const { return m_last; }

private:
    quint64 m_last = 0;
};

class TByteReader;

// Tag, type and count of a directory entry; the value field follows.
struct TEntryHead {
    quint16 tag = 0;
    quint16 type = 0;
    quint32 count = 0;
};

// Reads the head of the next entry and traces its line, naming the tag with
// tagName and padding its number with fill.
TEntryHead readEntryHead(TByteReader &reader, TEntryLength &length, QString (*tagName)(int),
                         QChar fill = QLatin1Char(' '));

// "Tag: 0x%1 %2, Typ: %3, Count: %4,  Länge: %5"; the tag in four hexadecimal
// places, padded with fill (blanks for the TIFF directories, zeros for Sony's).
QString entryLine(quint16 tag, const QString &name, quint16 type, quint32 count, quint64 length,
                  QChar fill = QLatin1Char(' '));

#endif // TIFFENTRY_H
