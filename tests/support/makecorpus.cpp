// Writes the seed corpus of the libFuzzer targets (tests/fuzz/corpus/), one
// directory per target: both byte orders and every kind of directory the
// reader walks. The files are committed; this program documents them.
//   tolvik-corpus DIRECTORY

#include "tests/support/rawgen.h"
#include "tests/support/samplem9.h"
#include "tests/support/sonybuilder.h"

#include <QDir>
#include <QGuiApplication>
#include <QtEndian>

#include <cstdio>

using namespace fixture;

namespace {

// An M9 file kept small: a 16 x 12 preview and a token raw strip.
QByteArray m9(Order order, bool thumbnailAndGps, QByteArray model = "M9 Digital Camera",
              quint16 orientation = 1)
{
    SampleM9 options;
    options.order = order;
    options.model = model;
    options.orientation = orientation;
    options.preview = QImage(16, 12, QImage::Format_RGB888);
    options.preview.fill(QColor(90, 120, 150));
    options.rawDataBytes = 64;
    options.withThumbnail = thumbnailAndGps;
    options.withGps = thumbnailAndGps;
    return sampleM9Dng(options);
}

// A block of the given size whose bytes are not zero, so that every field
// read from it has a value to decode.
QByteArray pattern(int size, int seed)
{
    QByteArray block(size, '\0');
    for (int i = 0; i < size; ++i)
        block[i] = char(1 + (i * 7 + seed) % 200);
    return block;
}

// The enciphered blocks by tag, with the sizes the cameras write.
const std::pair<quint16, int> kBlocks[] = {
    {0x2010, 6400}, {0x9050, 320}, {0x9400, 90},   {0x9401, 1500}, {0x9402, 64},
    {0x9403, 32},   {0x9404, 64},  {0x9405, 1600}, {0x9406, 64},   {0x940C, 64},
};

// A Sony maker note with the plain entries, the arrays, the panorama and AF
// records, the shot information and every enciphered block.
IfdPtr sonyNote()
{
    auto note = Ifd::make();
    note->longValue(0x0102, 2).srational(0x0104, -1, 3).longValue(0x0105, 0x48);
    note->bytes(0x1003, Undefined, pattern(44, 3));
    note->longValue(0x0115, 0x10).shortValue(0x2009, 1).longValue(0x200A, 0x10001);
    note->shortValue(0x200E, 5).bytes(0x201B, Byte, QByteArray(1, '\x02'));
    note->bytes(0x2022, Byte, pattern(12, 5)).slong(0x2026, -3).shorts(0x2027, {0, 0, 300, 200});
    note->bytes(0x202A, Undefined, pattern(20, 9)).ascii(0x2031, "5012345");
    note->bytes(0x3000, Undefined, pattern(100, 11));
    for (const auto &[tag, size] : kBlocks)
        note->bytes(tag, Undefined, sonyEncipher(pattern(size, tag)));
    note->shorts(0xB001, {358}).ascii(0xB020, "Standard").bytes(0xB02A, Byte, pattern(8, 13));
    note->longs(0xB02B, {4000, 6000}).longs(0xB02C, {1080, 1616});
    return note;
}

// The maker-note target's input: the offset (little-endian) before the file.
QByteArray withOffset(const SonyFile &file)
{
    QByteArray input(4, '\0');
    qToLittleEndian<quint32>(file.makerNoteOffset, input.data());
    return input + file.data;
}

// The block target's input: the routine's number before the enciphered block.
QByteArray routineInput(int routine, int size)
{
    return char(routine) + sonyEncipher(pattern(size, routine));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: tolvik-corpus DIRECTORY\n");
        return 2;
    }
    QDir root(QString::fromLocal8Bit(argv[1]));
    QList<std::pair<QString, QByteArray>> files;
    const auto add = [&](const char *target, const QString &name, const QByteArray &bytes) {
        files.append({QStringLiteral("%1/%2").arg(QLatin1String(target), name), bytes});
    };
    for (const Order order : {Order::Big, Order::Little}) {
        const QString o = order == Order::Big ? QStringLiteral("be") : QStringLiteral("le");
        add("reader", o + QStringLiteral("-m9.dng"), m9(order, false));
        add("reader", o + QStringLiteral("-m9-thumbnail-gps.dng"), m9(order, true));
        add("report", o + QStringLiteral("-m9-thumbnail-gps.dng"), m9(order, true));
        const char flag = order == Order::Big ? 1 : 0; // the narrow targets' byte order
        SampleM9 options;
        options.order = order;
        add("exifgps", o + QStringLiteral("-ifd0.bin"), flag + m9(order, true));
        add("exifgps", o + QStringLiteral("-gps.bin"), char(flag | 2) + tiff(order, gpsIfd()));
        add("leica", o + QStringLiteral("-makernote.bin"), flag + leicaNote(options));
        // The marks a converter embeds in IFD0 (tag 700), as xmppacket finds them.
        auto marked = Ifd::make();
        marked->ascii(0x0110, "M9 Digital Camera")
            .bytes(700, Byte,
                   "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/"
                   "1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\" xmlns:xmp=\"http://"
                   "ns.adobe.com/xap/1.0/\" xmp:Rating=\"3\" xmp:Label=\"Red\"/></rdf:RDF></"
                   "x:xmpmeta>");
        add("xmppacket", o + QStringLiteral("-marks.dng"), tiff(order, marked));
        add("reader", o + QStringLiteral("-sony.arw"), sonyArw("ILCE-9", sonyNote(), order).data);
        for (const char *model : {"ILCE-7M2", "ILCE-7RM2", "ILCE-9", "DSC-RX100"}) {
            add("sonymakernote", QStringLiteral("%1-%2.bin").arg(o, QLatin1String(model)),
                withOffset(sonyArw(model, sonyNote(), order)));
        }
    }
    add("reader", QStringLiteral("be-monochrom.dng"), m9(Order::Big, false, "M Monochrom"));
    add("reader", QStringLiteral("exif-in-jpeg.jpg"), jpegWithExif(m9(Order::Little, false), true));
    add("report", QStringLiteral("be-monochrom-turned.dng"),
        m9(Order::Big, false, "M Monochrom", 6));
    // Width, height (and orientation in the top bits) before the strip; a JPEG.
    for (const int orientation : {1, 6, 8})
        add("pictures", QStringLiteral("strip-%1.bin").arg(orientation),
            QByteArray{char(orientation << 5 | 15), 11} + pattern(16 * 12 * 3, orientation));
    add("pictures", QStringLiteral("jpeg.bin"), QByteArray(2, '\7') + jpegPicture(8, 8, 0x336699));
    // Raw images of 64 x 48 pixels in every storage mode, a few KB each.
    for (const RawStorage storage : kRawStorages) {
        RawOptions raw;
        raw.storage = storage;
        raw.width = 64;
        raw.height = 48;
        raw.bareIfd0 = true;
        raw.tileSize = 32;
        raw.scene = RawScene::Charts;
        add("rawdecode", QStringLiteral("%1.dng").arg(QLatin1String(storageName(storage))),
            RawGenerator(raw).dng());
        raw.order = Order::Big;
        raw.monochrom = true;
        raw.rowsPerStrip = 16;
        raw.blackPattern = raw.blackDeltas = true;
        add("rawdecode",
            QStringLiteral("%1-be-monochrom.dng").arg(QLatin1String(storageName(storage))),
            RawGenerator(raw).dng());
    }
    for (const auto &[predictor, components] : {std::pair{6, 4}, {7, 1}}) {
        RawOptions raw;
        raw.storage = RawStorage::LosslessJpeg;
        raw.width = 64;
        raw.height = 48;
        raw.bareIfd0 = true;
        raw.tileSize = 32;
        raw.jpegPredictor = predictor;
        raw.jpegComponents = components;
        add("rawdecode",
            QStringLiteral("losslessjpeg-predictor%1-components%2.dng")
                .arg(predictor)
                .arg(components),
            RawGenerator(raw).dng());
    }
    // The whole-file targets share their seeds.
    for (const auto &[name, bytes] : QList(files))
        if (name.startsWith(QLatin1String("reader/")))
            files.append({QStringLiteral("ifd/") + name.mid(7), bytes});
    // Routines in the order of the block target's table, each with a block
    // large enough for all its fields.
    const int blockSizes[] = {6400, 6400, 6400, 320, 320, 90, 1500, 64, 32, 64, 1600, 64, 64, 100};
    for (int routine = 0; routine < int(std::size(blockSizes)); ++routine)
        add("sonyblocks", QStringLiteral("routine-%1.bin").arg(routine),
            routineInput(routine, blockSizes[routine]));

    for (const auto &[name, bytes] : files) {
        root.mkpath(QFileInfo(name).path());
        if (!writeFile(root.filePath(name), bytes))
            return 1;
    }
    return 0;
}
