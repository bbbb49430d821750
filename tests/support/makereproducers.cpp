// Writes the files in tests/data that once hung or overran the reader. They
// are committed; this program documents how each was made.
//   tolvik-reproducers DIRECTORY

#include "tests/support/samplem9.h"

#include <QDir>
#include <QGuiApplication>
#include <cstdio>

using namespace fixture;

namespace {

SampleM9 small()
{
    SampleM9 options;
    options.preview = QImage(16, 12, QImage::Format_RGB888);
    options.preview.fill(QColor(90, 120, 150));
    options.rawDataBytes = 64;
    return options;
}

QByteArray chainLoop()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->nextRaw(8); // IFD0 again
    return tiff(Order::Big, ifd0);
}

QByteArray exifPointsToOwnIfd()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->raw(0x8769, Long, 1, 8);
    return tiff(Order::Big, ifd0);
}

QByteArray exifNestedDeep()
{
    auto inner = Ifd::make();
    inner->rational(0x829A, 1, 60);
    for (int depth = 0; depth < 2000; ++depth) {
        auto outer = Ifd::make();
        outer->child(0x8769, inner);
        inner = outer;
    }
    auto ifd0 = sampleIfd0(small());
    ifd0->child(0x8769, inner);
    return tiff(Order::Little, ifd0);
}

QByteArray entryCount65535()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->forceEntryCount(0xFFFF);
    return tiff(Order::Big, ifd0);
}

QByteArray offsetsNear4G()
{
    auto ifd0 = sampleIfd0(small());
    for (quint16 tag : {0x010E, 0x011A, 0x7010, 0x74C7, 0xA432, 0xC61F, 0x9286})
        ifd0->raw(tag, Ascii, 0xFFFFFFFF, 0xFFFFFFF0);
    ifd0->raw(0x8769, Long, 1, 0xFFFFFFFC);
    ifd0->raw(0x8825, Long, 1, 0xFFFFFFFF);
    ifd0->raw(0x927C, Undefined, 0xFFFFFFFF, 0xFFFFFFFF);
    ifd0->nextRaw(0xFFFFFFF8);
    return tiff(Order::Big, ifd0);
}

QByteArray unterminatedText()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->raw(0x010E, Ascii, 8, 0); // patched below to the last 100 KB
    QByteArray file = tiff(Order::Big, ifd0);
    const quint32 textStart = quint32(file.size());
    file.append(QByteArray(100 * 1024, 'A'));
    // The entry is the last of IFD0: count, 12-byte entries, next offset.
    const int ifd0Entries = int(ifd0->entries().size());
    const int field = 8 + 2 + (ifd0Entries - 1) * 12 + 8;
    file[field] = char(textStart >> 24);
    file[field + 1] = char(textStart >> 16);
    file[field + 2] = char(textStart >> 8);
    file[field + 3] = char(textStart);
    return file;
}

QByteArray longTextManyTimes()
{
    auto ifd0 = Ifd::make();
    ifd0->offsetTo(0x010E, QByteArray(60 * 1024, 'B') + '\0'); // data right behind IFD0
    ifd0->ascii(0x0110, "M9 Digital Camera");
    const quint32 textOffset = 8 + 2 + 65535 * 12 + 4;
    for (int i = 2; i < 65535; ++i)
        ifd0->raw(0x010E, Ascii, 60 * 1024, textOffset);
    return tiff(Order::Big, ifd0);
}

QByteArray reportLongTexts()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->offsetTo(0x010F, QByteArray(32 * 1024, 'M') + '\0');
    ifd0->offsetTo(0x0131, QByteArray(32 * 1024, 'S') + '\0');
    return tiff(Order::Little, ifd0);
}

QByteArray cfaCountHuge()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->raw(0x828E, Byte, 0xFFFFFFFF, 0);
    return tiff(Order::Big, ifd0);
}

QByteArray previewSizeHuge()
{
    auto ifd0 = sampleIfd0(small());
    ifd0->longValue(0x0100, 65535).longValue(0x0101, 65535);
    return tiff(Order::Big, ifd0);
}

QByteArray leicaMakerNoteCountMax()
{
    QByteArray note = leicaMakerNote(Order::Big, {});
    note[8] = char(0x7F);
    note[9] = char(0xFF);
    note.append(QByteArray(4096, '\x30'));
    auto ifd0 = sampleIfd0(small());
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined, note);
    ifd0->child(0x8769, exif);
    return tiff(Order::Big, ifd0);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: tolvik-reproducers DIRECTORY\n");
        return 2;
    }
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    const std::pair<const char *, QByteArray> files[] = {
        {"ifd-chain-loop.dng", chainLoop()},
        {"exif-points-to-own-ifd.dng", exifPointsToOwnIfd()},
        {"exif-nested-deep.dng", exifNestedDeep()},
        {"entry-count-65535.dng", entryCount65535()},
        {"offsets-near-4g.dng", offsetsNear4G()},
        {"unterminated-text.dng", unterminatedText()},
        {"long-text-many-times.dng", longTextManyTimes()},
        {"cfa-count-huge.dng", cfaCountHuge()},
        {"preview-size-huge.dng", previewSizeHuge()},
        {"leica-makernote-count-max.dng", leicaMakerNoteCountMax()},
        {"report-long-texts.dng", reportLongTexts()},
    };
    for (const auto &[name, bytes] : files) {
        if (!writeFile(dir.filePath(QLatin1String(name)), bytes))
            return 1;
    }
    return 0;
}
