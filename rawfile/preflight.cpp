// A quick pass that reads only the model, the IFD1 thumbnail, the F-number
// and the focal length; it walks the Exif data of JPEG files as well.

#include "rawfile/limits.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"

#include <QBuffer>
#include <QImageReader>

namespace {

// The size in a JPEG's header, read without decoding the picture (and so
// safe on any thread); invalid when the bytes are no JPEG.
QSize jpegSize(QByteArrayView bytes)
{
    QByteArray data = QByteArray::fromRawData(bytes.data(), bytes.size());
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "JPG");
    return reader.canRead() ? reader.size() : QSize();
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
            m_thumbnailSize =
                jpegSize(m_reader.view(m_exif.thumbnailOffset, m_exif.thumbnailLength));
    }
    closeData();
    return accepted;
}

void TM9File::processIFDPreflight()
{
    TByteReader &r = m_reader;
    const quint16 entryCount = r.readU16();
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
