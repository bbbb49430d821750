// A quick pass that reads only the model, the IFD1 thumbnail, the F-number
// and the focal length; it walks the Exif data of JPEG files as well.

#include "rawfile/limits.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

namespace {

// The largest side a JPEG decoder accepts (libjpeg's JPEG_MAX_DIMENSION).
constexpr quint16 kMaxJpegSide = 65500;
// The most colour components a JPEG frame may have (libjpeg's MAX_COMPONENTS).
constexpr quint8 kMaxJpegComponents = 10;

// Whether a start-of-frame marker begins a frame a JPEG decoder reads:
// baseline, extended, progressive, and these two with arithmetic coding.
bool isDecodedFrame(quint8 marker)
{
    return marker == 0xC0 || marker == 0xC1 || marker == 0xC2 || marker == 0xC9 || marker == 0xCA;
}

// The size in the frame header of the JPEG of length bytes at position,
// read through the walk's blocks without decoding the picture (so safe on any
// thread, and only the header's blocks are read). Invalid unless the bytes
// are a JPEG whose 8-bit frame of a decoded kind is followed by its first scan.
QSize jpegSize(TByteReader &r, qint64 position, qint64 length)
{
    r.setBigEndian(true);
    r.seek(position);
    if (length < 4 || r.readU16() != 0xFFD8)
        return QSize();
    const qint64 end = position + length;
    QSize size;
    while (r.pos() < end) {
        if (r.readU8() != 0xFF)
            return QSize(); // no marker where one belongs, or past the end of the file
        quint8 marker = r.readU8();
        while (marker == 0xFF && r.pos() < end) // fill bytes
            marker = r.readU8();
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7))
            continue; // no segment follows
        if (marker == 0xD8 || marker == 0xD9 || marker == 0x00)
            return QSize(); // a second start, or the end before any scan
        const qint64 segment = r.pos();
        const quint16 segmentLength = r.readU16();
        if (segmentLength < 2)
            return QSize();
        if (marker == 0xDA)
            return size; // the first scan: the frame must have come before it
        if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
            marker != 0xCC) {
            if (size.isValid() || !isDecodedFrame(marker))
                return QSize();
            const quint8 precision = r.readU8();
            const quint16 height = r.readU16();
            const quint16 width = r.readU16();
            const quint8 components = r.readU8();
            if (precision != 8 || height == 0 || width == 0 || height > kMaxJpegSide ||
                width > kMaxJpegSide || components == 0 || components > kMaxJpegComponents ||
                segmentLength != 8 + 3 * components)
                return QSize();
            size = QSize(width, height);
        }
        r.seek(segment + segmentLength);
    }
    return QSize();
}

} // namespace

bool TM9File::processFilePreflight()
{
    openData();
    recogniseContainer();

    bool accepted = false;
    if (m_fileTyp == 1 || m_fileTyp == 2) {
        walkChain(&TM9File::processIFDPreflight);
        accepted = isValidModel();
        if (accepted && hasThumbnailImage())
            m_thumbnailSize = jpegSize(m_reader, m_exif.thumbnailOffset, m_exif.thumbnailLength);
    }
    closeData();
    return accepted;
}

void TM9File::processIFDPreflight()
{
    TByteReader &r = m_reader;
    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        const quint16 tag = r.readU16();
        r.skip(6); // type and count
        qCDebug(lcTiffEntries).noquote() << QStringLiteral("Tag: 0x%1 %2")
                                                .arg(tag, 4, 16, QLatin1Char(' '))
                                                .arg(exifTagName(tag));

        switch (tag) {
        case 0x0110: m_exif.model = readIFDStringEntry(qint64(r.readU32()) + m_tiffBase); break;
        case 0x0201:
        case 0x0202: {
            const quint32 value = r.readU32();
            if (m_ifdCounter != 1)
                break;
            if (tag == 0x0201)
                m_exif.thumbnailOffset = quint32(value + m_tiffBase);
            else
                m_exif.thumbnailLength = value;
            break;
        }
        case 0x829D:
            readIFDRationalEntry(qint64(r.readU32()) + m_tiffBase, &m_exif.fNumber.num,
                                 &m_exif.fNumber.den);
            break;
        case 0x920A:
            readIFDRationalEntry(qint64(r.readU32()) + m_tiffBase, &m_exif.focalLength.num,
                                 &m_exif.focalLength.den);
            break;
        case 0x8769:
            walkNestedIfd(qint64(r.readU32()) + m_tiffBase, &TM9File::processIFDPreflight);
            break;
        default: r.skip(4); break; // the GPS IFD is not walked here
        }
    }
    m_nextIfdOffset = r.readU32();
}
