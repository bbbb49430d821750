// The IFD walker and the entry readers.

#include "rawfile/limits.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

#include <algorithm>

QString TM9File::readIFDStringEntry(qint64 position)
{
    const qint64 back = m_reader.pos();
    m_reader.seek(position);
    const QString text = m_reader.readCString(limits::kMaxTextLength);
    m_reader.seek(back);
    return text;
}

void TM9File::readIFDRationalEntry(qint64 position, unsigned int *numerator,
                                   unsigned int *denominator)
{
    const qint64 back = m_reader.pos();
    m_reader.seek(position);
    *numerator = m_reader.readU32();
    *denominator = m_reader.readU32();
    m_reader.seek(back);
}

void TM9File::readIFDRationalSEntry(qint64 position, int *numerator, int *denominator)
{
    const qint64 back = m_reader.pos();
    m_reader.seek(position);
    *numerator = m_reader.readS32();
    *denominator = m_reader.readS32();
    m_reader.seek(back);
}

void TM9File::readIFDRationalArrayEntry(qint64 position, unsigned int *numerators,
                                        unsigned int *denominators, int n)
{
    const qint64 back = m_reader.pos();
    m_reader.seek(position);
    for (int i = 0; i < n; ++i) {
        numerators[i] = m_reader.readU32();
        denominators[i] = m_reader.readU32();
    }
    m_reader.seek(back);
}

namespace {

// Reads `count` values of one width at an absolute position into the first
// elements of `out` and returns to where it was; values beyond out are not read.
template <typename T, typename Read>
void readArrayAt(TByteReader &reader, qint64 position, quint32 count, T &out, Read read)
{
    const qint64 back = reader.pos();
    reader.seek(position);
    const quint32 n = std::min<quint32>(count, quint32(std::size(out)));
    for (quint32 i = 0; i < n; ++i)
        out[i] = read();
    reader.seek(back);
}

} // namespace

void TM9File::noteSubIfdDataEnd(qint64 position)
{
    // A single strip, as a camera writes the raw data, with its offset and
    // length in the entries' fields.
    TByteReader &r = m_reader;
    const qint64 back = r.pos();
    r.seek(position);
    qint64 offset = 0, length = 0;
    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        quint16 tag = 0, type = 0;
        quint32 count = 0;
        r.readEntryHead(tag, type, count);
        quint32 value = 0;
        if (type == 3) { // a SHORT in the field's first half
            value = r.readU16();
            r.skip(2);
        } else {
            value = r.readU32();
        }
        if (count == 1 && tag == 0x0111)
            offset = qint64(value) + m_tiffBase;
        else if (count == 1 && tag == 0x0117)
            length = value;
    }
    r.seek(back);
    if (offset > 0 && length > 0)
        m_dataEnd = std::max(m_dataEnd, offset + length);
}

void TM9File::processIFD()
{
    TByteReader &r = m_reader;
    TExifValues &v = m_exif;
    TEntryLength length;

    // The reading rules of the dispatch table.
    const auto S = [&r] {
        const quint16 value = r.readU16();
        r.readU16();
        return value;
    };
    const auto L = [&r] { return r.readU32(); };
    const auto T = [&] { return readIFDStringEntry(qint64(r.readU32()) + m_tiffBase); };
    const auto R = [&](TRational &out) {
        readIFDRationalEntry(qint64(r.readU32()) + m_tiffBase, &out.num, &out.den);
    };
    const auto SR = [&](TSRational &out) {
        readIFDRationalSEntry(qint64(r.readU32()) + m_tiffBase, &out.num, &out.den);
    };
    const auto C4 = [&r] {
        QString text;
        for (int i = 0; i < 4; ++i)
            text.append(QChar(r.readU8()));
        return text;
    };
    const auto V4 = [&r] {
        QStringList parts;
        for (int i = 0; i < 4; ++i)
            parts.append(QString::number(r.readU8()));
        return parts.join(QLatin1Char('.'));
    };
    const auto Ln = [&](quint32 count, auto &out) {
        readArrayAt(r, qint64(r.readU32()) + m_tiffBase, count, out, [&r] { return r.readU32(); });
    };
    const auto LnList = [&](quint32 count, QList<quint32> &out) {
        std::array<quint32, kLongArrayCapacity> values{};
        Ln(count, values);
        out = QList<quint32>(values.begin(),
                             values.begin() + std::min<quint32>(count, values.size()));
    };
    // Both halves of a field that holds two SHORTs.
    const auto S2 = [&r](std::array<quint16, 2> &out) {
        out[0] = r.readU16();
        out[1] = r.readU16();
    };

    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        const TEntryHead entry = readEntryHead(r, length, &exifTagName);
        const quint16 tag = entry.tag;
        const quint32 count = entry.count;

        switch (tag) {
        case 0x00FE: v.newSubfileType = L(); break;
        case 0x0100: v.imageWidth = L(); break;
        case 0x0101: v.imageLength = L(); break;
        case 0x0102: v.bitsPerSample = S(); break;
        case 0x0103: v.compression = S(); break;
        case 0x0106: v.photometric = S(); break;
        case 0x010E: v.imageDescription = T(); break;
        case 0x010F: v.make = T(); break;
        case 0x0110: v.model = T(); break;
        case 0x0111: v.stripOffsets = L(); break;
        case 0x0112: v.orientation = S(); break;
        case 0x0115: v.samplesPerPixel = S(); break;
        case 0x0116: v.rowsPerStrip = L(); break;
        case 0x0117: v.stripByteCounts = L(); break;
        case 0x011A: R(v.xResolution); break;
        case 0x011B: R(v.yResolution); break;
        case 0x011C: v.planarConfiguration = S(); break;
        case 0x0128: v.resolutionUnit = S(); break;
        case 0x0131: v.software = T(); break;
        case 0x0132: v.dateTime = T(); break;
        case 0x013B: v.artist = T(); break;
        case 0x014A: noteSubIfdDataEnd(qint64(L()) + m_tiffBase); break;
        case 0x0201: (m_ifdCounter == 0 ? v.jpegOffsetIfd0 : v.thumbnailOffset) = L(); break;
        case 0x0202: (m_ifdCounter == 0 ? v.jpegLengthIfd0 : v.thumbnailLength) = L(); break;
        case 0x7000: v.sonyRawFileType = S(); break;
        case 0x7010:
            readArrayAt(r, qint64(r.readU32()) + m_tiffBase, count, v.sonyToneCurve,
                        [&r] { return r.readU16(); });
            break;
        case 0x7034: v.sonyChromaticAberrationCorrection = S(); break;
        case 0x7036: v.sonyDistortionCorrection = S(); break;
        case 0x74C7: Ln(count, v.sonyCropTopLeft); break;
        case 0x74C8: Ln(count, v.sonyCropSize); break;
        case 0x828D: S2(v.cfaRepeatPatternDim); break;
        case 0x828E: {
            // The bytes are read from the field onward, not from an offset; a
            // count other than 4 leaves the walker out of step, as in the camera's files.
            v.cfaPatternCount = count;
            const quint32 kept = std::min<quint32>(count, kCfaPatternCapacity);
            for (quint32 k = 0; k < kept; ++k)
                v.cfaPattern[k] = r.readU8();
            r.skip(qint64(count) - kept);
            break;
        }
        case 0x829A: R(v.exposureTime); break;
        case 0x829D: R(v.fNumber); break;
        case 0x8769: walkNestedIfd(qint64(r.readU32()) + m_tiffBase, &TM9File::processIFD); break;
        case 0x8822: v.exposureProgram = S(); break;
        case 0x8825:
            walkNestedIfd(qint64(r.readU32()) + m_tiffBase, &TM9File::processGPSInfoIFD);
            break;
        case 0x8827: v.iso = S(); break;
        case 0x8830: v.sensitivityType = S(); break;
        case 0x8832: v.recommendedExposureIndex = L(); break;
        case 0x9000: v.exifVersion = C4(); break;
        case 0x9003: v.dateTimeOriginal = T(); break;
        case 0x9004: v.dateTimeDigitized = T(); break;
        case 0x9010: v.offsetTime = T(); break;
        case 0x9011: v.offsetTimeOriginal = T(); break;
        case 0x9012: v.offsetTimeDigitized = T(); break;
        case 0x9101:
            for (quint8 &component : v.componentsConfiguration)
                component = r.readU8();
            break;
        case 0x9102: R(v.compressedBitsPerPixel); break;
        case 0x9201: R(v.shutterSpeedValue); break;
        case 0x9203: SR(v.brightnessValue); break;
        case 0x9204: SR(v.exposureBiasValue); break;
        case 0x9205: R(v.maxApertureValue); break;
        case 0x9207: v.meteringMode = S(); break;
        case 0x9208: v.lightSource = S(); break;
        case 0x9209: v.flash = S(); break;
        case 0x920A: R(v.focalLength); break;
        case 0x927C:
            // Only the Leica maker note is read; its position is kept for every file.
            // The model must come before the Exif IFD, as it does in IFD0.
            v.makerNotePosition = quint32(qint64(r.readU32()) + m_tiffBase);
            if (isValidModel())
                walkNestedIfd(qint64(v.makerNotePosition) + m_tiffBase,
                              &TM9File::processMakerNoteLeica);
            break;
        case 0x9286:
            v.userComment = readIFDStringEntry(qint64(r.readU32()) + m_tiffBase + 8);
            break;
        case 0xA000: v.flashpixVersion = C4(); break;
        case 0xA001: v.colorSpace = S(); break;
        case 0xA002: v.pixelXDimension = L(); break;
        case 0xA003: v.pixelYDimension = L(); break;
        case 0xA005: v.interopOffset = L(); break;
        case 0xA300: v.fileSource = L(); break;
        case 0xA301: v.sceneType = L(); break;
        case 0xA401: v.customRendered = S(); break;
        case 0xA402: v.exposureMode = S(); break;
        case 0xA403: v.whiteBalance = S(); break;
        case 0xA404: R(v.digitalZoomRatio); break;
        case 0xA405: v.focalLengthIn35mm = S(); break;
        case 0xA406: v.sceneCaptureType = S(); break;
        case 0xA408: v.contrast = S(); break;
        case 0xA409: v.saturation = S(); break;
        case 0xA40A: v.sharpness = S(); break;
        case 0xA420: v.imageUniqueID = T(); break;
        case 0xA432: readRationalArray(qint64(r.readU32()) + m_tiffBase, v.lensInfo); break;
        case 0xA434: v.lensModel = T(); break;
        case 0xA500: R(v.gamma); break;
        case 0xC612: v.dngVersion = V4(); break;
        case 0xC613: v.dngBackwardVersion = V4(); break;
        case 0xC614: v.uniqueCameraModel = T(); break;
        case 0xC619: S2(v.blackLevelRepeatDim); break;
        case 0xC61A: v.blackLevel = {TRational{L(), 1}}; break;
        case 0xC61D: v.whiteLevel = {L()}; break;
        case 0xC61F: LnList(count, v.defaultCropOrigin); break;
        case 0xC620: LnList(count, v.defaultCropSize); break;
        case 0xC62D: v.bayerGreenSplit = L(); break;
        case 0xC632: R(v.antiAliasStrength); break;
        default: r.skip(4); break;
        }
    }
    m_nextIfdOffset = r.readU32();
}
