// The main directory of the Leica maker note (M9, M Monochrom): it only
// points to the four sub-directories that hold the camera's values.

#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

void TM9File::processMakerNoteLeica()
{
    TByteReader &r = m_reader;
    TEntryLength length;
    // Sub-directory offsets count from the maker note's absolute position.
    const qint64 base = m_exif.makerNotePosition;

    r.skip(8); // "LEICA0\3\0"
    const int entryCount = int(r.entriesInData(quint32(qMax<qint16>(r.readS16(), 0))));
    for (int i = 0; i < entryCount; ++i) {
        const quint16 tag = quint16(r.readS16());
        const quint16 type = quint16(r.readS16());
        const quint32 count = quint32(r.readS32());
        const qint32 value = r.readS32();
        const quint64 bytes = length.next(type, count);
        qCDebug(lcTiffEntries).noquote() << entryLine(tag, leicaTagName(tag), type, count, bytes);

        switch (tag) {
        case 0x3000: m_panasonicSubDir[0] = quint32(base + value); break;
        case 0x3100: m_panasonicSubDir[1] = quint32(base + value); break;
        case 0x3400: m_panasonicSubDir[2] = quint32(base + value); break;
        case 0x3900: m_panasonicSubDir[3] = quint32(base + value); break;
        default: break;
        }
    }
}
