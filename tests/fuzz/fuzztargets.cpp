#include "tests/fuzz/fuzztargets.h"

#include "card/queries.h"
#include "card/sidecar.h"
#include "cli/sonymakernote.h"
#include "documents/rgbdistribution.h"
#include "documents/treport.h"
#include "exif/paneltexts.h"
#include "raw/decode.h"
#include "raw/develop.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPdfWriter>
#include <QPixmap>
#include <QTemporaryDir>

// The reader's private parts, for the narrow targets.
class TM9FileTestAccess {
public:
    // Bit 0 of flags: big-endian. The directory lies where a TIFF header's
    // first-IFD offset points, or for the Leica note at offset 0.
    static void walk(TM9File &file, quint8 flags, void (TM9File::*walker)())
    {
        const bool leica = walker == &TM9File::processMakerNoteLeica;
        file.openData();
        file.m_reader.setBigEndian(file.m_bigEndian = flags & 1);
        file.m_exif.model = QStringLiteral("M9 Digital Camera");
        file.m_reader.seek(4);
        file.walkNestedIfd(leica ? 0 : file.m_reader.readU32(), walker);
        file.walkPanasonicSubDirs();
        file.closeData();
    }
    // Preview and JPEG thumbnail start at offset 2; the whole is a JPEG file.
    static void setPictures(TM9File &file, const uint8_t *data, quint32 size)
    {
        TExifValues &exif = file.m_exif;
        exif.imageWidth = data[0] % 64 + 1;
        exif.imageLength = data[1] % 64 + 1;
        exif.orientation = data[0] >> 5;
        exif.stripOffsets = exif.thumbnailOffset = 2;
        exif.stripByteCounts = exif.thumbnailLength = size - 2;
        file.m_previewFound = true;
        file.m_thumbnailSize = QSize(1, 1);
        file.m_fileTyp = 2;
    }
};

namespace fuzz {

namespace {

// Scratch files, and the offscreen application pictures need (a test has its own).
const QTemporaryDir &scratch()
{
    static int argc = 1;
    static char name[] = "tolvik-fuzz";
    static char *argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QGuiApplication(argc, argv);
    }
    // In memory where the system offers it (/dev/shm): on disk, writing each
    // input costs nearly as much as the whole walk of it.
    static const QTemporaryDir dir(QDir(QStringLiteral("/dev/shm")).exists()
                                       ? QStringLiteral("/dev/shm/tolvik-fuzz-XXXXXX")
                                       : QDir::tempPath() + QStringLiteral("/tolvik-fuzz-XXXXXX"));
    return dir;
}

QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

TM9File inMemory(const uint8_t *data, size_t size)
{
    scratch();
    return TM9File(QStringLiteral("input.dng"), bytes(data, size));
}

void everyValue(const TM9File &file)
{
    for (const TQuery &query : allQueries())
        query.value(file);
    for (const TQuery &field : storedValues())
        field.value(file);
    panelRows(panelTexts(file, TValueStyle::Exact));
}

// Qt's decoders and scaling cost in proportion to the pixels; a large
// picture is fuzzed for its header alone.
bool small(QSize size)
{
    return size.isValid() && qint64(size.width()) * size.height() <= 128 * 128;
}

using Routine = void (TM9File::*)(const QByteArray &);

// The order is that of the seed corpus (routine-N.bin).
constexpr Routine kRoutines[] = {
    &TM9File::verarbeiteSony2010gTags, &TM9File::verarbeiteSony2010hTags,
    &TM9File::verarbeiteSony2010iTags, &TM9File::verarbeiteSony9050aTags,
    &TM9File::verarbeiteSony9050bTags, &TM9File::verarbeiteSony9400cTags,
    &TM9File::verarbeiteSony9401Tags,  &TM9File::verarbeiteSony9402Tags,
    &TM9File::verarbeiteSony9403Tags,  &TM9File::verarbeiteSony9404Tags,
    &TM9File::verarbeiteSony9405bTags, &TM9File::verarbeiteSony9406Tags,
    &TM9File::verarbeiteSony940cTags,  &TM9File::verarbeiteSonyShotInfoTags,
};

} // namespace

void reader(const uint8_t *data, size_t size)
{
    const QString path = scratch().filePath(QStringLiteral("input.dng"));
    QFile out(path);
    if (out.open(QIODevice::WriteOnly | QIODevice::Truncate) && out.write(bytes(data, size)))
        out.close();
    TM9File loaded(path);
    loaded.processFile();
    everyValue(loaded);
    if (small(loaded.previewSize()))
        loaded.previewImageScaled(64, 0);
    TM9File preflight(path);
    preflight.processFilePreflight();
    if (small(preflight.thumbnailSize()))
        preflight.thumbnailImage();
}

void ifd(const uint8_t *data, size_t size)
{
    TM9File file = inMemory(data, size);
    file.processFile();
    everyValue(file);
    TM9File preflight = inMemory(data, size);
    preflight.processFilePreflight();
}

void exifGps(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    TM9File file = inMemory(data + 1, size - 1);
    TM9FileTestAccess::walk(file, data[0],
                            data[0] & 2 ? &TM9File::processGPSInfoIFD : &TM9File::processIFD);
    everyValue(file);
}

void leica(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    TM9File file = inMemory(data + 1, size - 1);
    TM9FileTestAccess::walk(file, data[0], &TM9File::processMakerNoteLeica);
    everyValue(file);
}

void pictures(const uint8_t *data, size_t size)
{
    if (size < 2)
        return;
    TM9File file = inMemory(data, size);
    TM9FileTestAccess::setPictures(file, data, quint32(size));
    file.previewImageScaled(int(data[1]), 0);
    uprightPreview(file);
    file.thumbnailImage();
    file.extractFullSizeImage(nullptr);
}

void sonyMakerNote(const uint8_t *data, size_t size)
{
    if (size < 4)
        return;
    const quint32 offset =
        quint32(data[0]) | quint32(data[1]) << 8 | quint32(data[2]) << 16 | quint32(data[3]) << 24;
    TM9File file = inMemory(data + 4, size - 4);
    if (!file.processSonyMakerNoteAt(offset))
        return;
    for (const TQuery &query : sonyQueries())
        query.value(file);
    for (const TQuery &field : storedValues())
        field.value(file);
}

void sonyBlocks(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    const Routine routine = kRoutines[data[0] % std::size(kRoutines)];
    QByteArray block = bytes(data + 1, size - 1);
    TM9File::decipher(reinterpret_cast<unsigned char *>(block.data()), int(block.size()));
    TM9File file;
    (file.*routine)(block);
    for (const TQuery &query : sonyQueries())
        query.value(file);
}

void report(const uint8_t *data, size_t size)
{
    TM9File file = inMemory(data, size);
    if (!file.processFile() || !small(file.previewSize()) || !file.previewImage())
        return;
    TRgbDistribution distribution;
    distribution.add(file.previewImage());
    const TReport report(file, distribution.picture(), TValueStyle(size % 2));
    // Chosen by a hash of the whole input: a choice by one byte would paint
    // nearly every input, as most end in zeros.
    if (qHash(QByteArrayView(data, qsizetype(size))) % reportPaintedOneIn != 0)
        return;
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    QPdfWriter writer(&pdf);
    writer.setResolution(72); // the same layout, with fewer pixels to paint
    report.print(&writer);
}

void rawDecode(const uint8_t *data, size_t size)
{
    const raw::TDecodeResult result =
        raw::decodeBytes(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    // Every value of the picture is read once, so that a value left unset shows.
    quint32 sum = 0;
    for (quint16 v : result.image.pixels)
        sum += v;
    if (result.ok() && !result.image.pixels.empty())
        (void)result.image.info.blackAt(int(sum % quint32(result.image.info.width)), 0);
}

void rawDevelop(const uint8_t *data, size_t size)
{
    const raw::TDecodeResult result =
        raw::decodeBytes(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    // Larger pictures take longer, not other ways.
    constexpr qint64 kMaxPixels = 1 << 20;
    if (!result.ok() || qint64(result.image.info.width) * result.image.info.height > kMaxPixels)
        return;
    quint32 sum = 0;
    for (raw::TSize s : {raw::TSize::Half, raw::TSize::Full}) {
        const raw::TPicture picture =
            raw::develop(result.image, {s, s == raw::TSize::Full ? 16 : 8, 1, nullptr});
        for (uint8_t v : picture.data) // every value once, so that one left unset shows
            sum += v;
        if (!picture.isNull()) {
            const QPoint corner(picture.width - 1, picture.height - 1);
            const QPoint stored = raw::rawPositionOf(result.image.info, s, corner);
            if (raw::developedPositionOf(result.image.info, s, stored) != corner)
                __builtin_trap();
        }
    }
    (void)sum;
}

void xmpPacket(const uint8_t *data, size_t size)
{
    QByteArray file = bytes(data, size);
    QBuffer device(&file);
    device.open(QIODevice::ReadOnly);
    TMark mark;
    QString error;
    marksOfPacket(ifd0XmpPacket(device), &mark, &error);
}

} // namespace fuzz
