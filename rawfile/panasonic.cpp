// The sub-directories of the Leica maker note (Panasonic layout).

#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

void TM9File::processPanasonicSubDirIFD()
{
    TByteReader &r = m_reader;
    TLeicaValues &l = m_leica;
    TEntryLength length;
    // Offsets in these directories count from the maker note's start.
    const qint64 base = m_exif.makerNotePosition;

    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        const quint16 tag = readEntryHead(r, length, &leicaTagName).tag;
        m_leicaTags.insert(tag);

        switch (tag) {
        case 0x300A: l.contrast = r.readU32(); break;
        case 0x300B: l.sharpening = r.readU32(); break;
        case 0x300D: l.saturation = r.readU32(); break;
        case 0x3033: l.whiteBalance = r.readU32(); break;
        case 0x3034: l.jpegQuality = r.readU32(); break;
        case 0x3103: l.serialNumber = readIFDStringEntry(qint64(r.readU32()) + base); break;
        case 0x3109: l.firmwareVersion = readIFDStringEntry(qint64(r.readU32()) + base); break;
        case 0x312A: l.baseISO = r.readU32(); break;
        case 0x312B: l.sensorWidth = r.readU32(); break;
        case 0x312C: l.sensorHeight = r.readU32(); break;
        case 0x312D: l.sensorBitDepth = r.readU32(); break;
        case 0x3402: l.cameraTemperature = r.readS32(); break;
        case 0x3405: l.lensType = r.readU32(); break;
        case 0x3406:
            readIFDRationalEntry(qint64(r.readU32()) + base, &l.approximateFNumber.num,
                                 &l.approximateFNumber.den);
            break;
        case 0x3407: l.measuredLV = r.readS32() / 100000.0; break;
        case 0x3408: l.externalSensorBrightness = r.readS32() / 100000.0; break;
        default: r.skip(4); break;
        }
    }
    m_nextIfdOffset = r.readU32();
}
