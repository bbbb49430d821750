// Writes the files in tests/data that once hung or overran the reader. They
// are committed; this program documents how each was made.
//   tolvik-reproducers DIRECTORY

#include "tests/support/samplem9.h"

#include <QDir>
#include <QGuiApplication>
#include <functional>

using namespace fixture;

namespace {

// A small M9 file whose IFD0 the change breaks.
QByteArray broken(const std::function<void(Ifd &)> &change, Order order = Order::Big)
{
    SampleM9 options;
    options.preview = QImage(16, 12, QImage::Format_RGB888);
    options.preview.fill(QColor(90, 120, 150));
    options.rawDataBytes = 64;
    auto ifd0 = sampleIfd0(options);
    change(*ifd0);
    return tiff(order, ifd0);
}

void exifNestedDeep(Ifd &ifd0)
{
    auto inner = Ifd::make();
    inner->rational(0x829A, 1, 60);
    for (int depth = 0; depth < 2000; ++depth) {
        auto outer = Ifd::make();
        outer->child(0x8769, inner);
        inner = outer;
    }
    ifd0.child(0x8769, inner);
}

void offsetsNear4G(Ifd &ifd0)
{
    for (quint16 tag : {0x010E, 0x011A, 0x7010, 0x74C7, 0xA432, 0xC61F, 0x9286})
        ifd0.raw(tag, Ascii, 0xFFFFFFFF, 0xFFFFFFF0);
    ifd0.raw(0x8769, Long, 1, 0xFFFFFFFC).raw(0x8825, Long, 1, 0xFFFFFFFF);
    ifd0.raw(0x927C, Undefined, 0xFFFFFFFF, 0xFFFFFFFF).nextRaw(0xFFFFFFF8);
}

// A text entry, the last of IFD0, on 100 KB of 'A' at the end of the file.
QByteArray unterminatedText()
{
    const auto file = [](quint32 textStart) {
        return broken([=](Ifd &d) { d.raw(0x010E, Ascii, 8, textStart); });
    };
    const quint32 end = quint32(file(0).size());
    return file(end) + QByteArray(100 * 1024, 'A');
}

// 65533 entries on one 60 KB text right behind IFD0.
QByteArray longTextManyTimes()
{
    auto ifd0 = Ifd::make();
    ifd0->offsetTo(0x010E, QByteArray(60 * 1024, 'B') + '\0');
    ifd0->ascii(0x0110, "M9 Digital Camera");
    const quint32 textOffset = 8 + 2 + 65535 * 12 + 4;
    for (int i = 2; i < 65535; ++i)
        ifd0->raw(0x010E, Ascii, 60 * 1024, textOffset);
    return tiff(Order::Big, ifd0);
}

// A Leica maker note whose main directory claims 32767 entries.
void leicaMakerNoteCountMax(Ifd &ifd0)
{
    QByteArray note = leicaMakerNote(Order::Big, {});
    note[8] = char(0x7F);
    note[9] = char(0xFF);
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined, note + QByteArray(4096, '\x30'));
    ifd0.child(0x8769, exif);
}

// Maker and software texts of 32 KB each: the report once laid them out for 30 s.
void reportLongTexts(Ifd &ifd0)
{
    ifd0.offsetTo(0x010F, QByteArray(32 * 1024, 'M') + '\0');
    ifd0.offsetTo(0x0131, QByteArray(32 * 1024, 'S') + '\0');
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    if (argc != 2)
        return 2;
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    const std::pair<const char *, QByteArray> files[] = {
        {"ifd-chain-loop.dng", broken([](Ifd &d) { d.nextRaw(8); })},
        {"exif-points-to-own-ifd.dng", broken([](Ifd &d) { d.raw(0x8769, Long, 1, 8); })},
        {"exif-nested-deep.dng", broken(exifNestedDeep, Order::Little)},
        {"entry-count-65535.dng", broken([](Ifd &d) { d.forceEntryCount(0xFFFF); })},
        {"offsets-near-4g.dng", broken(offsetsNear4G)},
        {"unterminated-text.dng", unterminatedText()},
        {"long-text-many-times.dng", longTextManyTimes()},
        {"cfa-count-huge.dng", broken([](Ifd &d) { d.raw(0x828E, Byte, 0xFFFFFFFF, 0); })},
        {"preview-size-huge.dng",
         broken([](Ifd &d) { d.longValue(0x0100, 65535).longValue(0x0101, 65535); })},
        {"leica-makernote-count-max.dng", broken(leicaMakerNoteCountMax)},
        {"report-long-texts.dng", broken(reportLongTexts, Order::Little)},
    };
    for (const auto &[name, bytes] : files) {
        if (!writeFile(dir.filePath(QLatin1String(name)), bytes))
            return 1;
    }
    return 0;
}
