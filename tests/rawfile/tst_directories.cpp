// The directory walkers: how each tag is read and stored, the per-entry trace
// lines, the GPS directory and the Leica sub-directories.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QLoggingCategory>
#include <QtTest>

using namespace fixture;

namespace {

QStringList g_lines;

void collectEntryLines(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    if (qstrcmp(context.category, "tolvik.tiff.entries") == 0)
        g_lines.append(message);
}

// Loads the file and returns the reader; processFile's result is in accepted.
std::unique_ptr<TM9File> load(TempFiles &files, const QByteArray &bytes, bool *accepted = nullptr)
{
    auto file = std::make_unique<TM9File>(files.write("t.dng", bytes));
    const bool result = file->processFile();
    if (accepted)
        *accepted = result;
    return file;
}

IfdPtr m9Ifd0()
{
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M9 Digital Camera");
    return ifd0;
}

using Parts = QList<std::pair<quint32, quint32>>;

} // namespace

class TestDirectories : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entryLines();
    void entryLinesOffByDefault();
    void readingRules_data();
    void readingRules();
    void chain();
    void makerNoteNeedsModelFirst();
    void gps_data();
    void gps();
    void gpsTexts();
    void gpsTagNames_data();
    void gpsTagNames();
    void leicaSubDirectories();
};

void TestDirectories::entryLines()
{
    auto first = Ifd::make();
    first->raw(0x0001, 0, 5, 0);             // unknown type first: length 0
    first->ascii(0x010F, "Leica Camera AG"); // 16 bytes
    first->raw(0x9999, Double, 3, 0);        // unknown type: keeps 16
    first->shortValue(0x0112, 1);
    first->ascii(0x0110, "M9 Digital Camera");
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined, leicaMakerNote(Order::Big, {{0x3400, Ifd::make()}}));
    first->child(0x8769, exif);

    QLoggingCategory::setFilterRules(QStringLiteral("tolvik.tiff.entries.debug=true"));
    g_lines.clear();
    const auto previous = qInstallMessageHandler(collectEntryLines);
    TempFiles files;
    load(files, tiff(Order::Big, first));
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QStringLiteral("tolvik.tiff.entries.debug=false"));

    const QStringList expected = {
        "Tag: 0x   1 [Exif] InteropIndex, Typ: unbekannt, Count: 5,  Länge: 0",
        "Tag: 0x 10f [Exif] Make, Typ: ASCII, Count: 16,  Länge: 16",
        "Tag: 0x9999 [Exif] --- unbekannt ---, Typ: unbekannt, Count: 3,  Länge: 16",
        "Tag: 0x 112 [Exif] Orientation, Typ: SHORT (16-Bit uint), Count: 1,  Länge: 2",
        "Tag: 0x 110 [Exif] Model, Typ: ASCII, Count: 18,  Länge: 18",
        "Tag: 0x8769 [Exif] ExifOffset, Typ: LONG (32-Bit uint), Count: 1,  Länge: 4",
        "Tag: 0x927c [Exif] MakerNotes -> jeweilige MakerNotes, Typ: Undefined (8Bit), Count: 32,  "
        "Länge: 32",
        "Tag: 0x3400 [Leica] --- unbekannt ---, Typ: Undefined (8Bit), Count: 6,  Länge: 6",
    };
    QCOMPARE(g_lines, expected);
}

void TestDirectories::entryLinesOffByDefault()
{
    g_lines.clear();
    const auto previous = qInstallMessageHandler(collectEntryLines);
    TempFiles files;
    load(files, sampleM9Dng());
    qInstallMessageHandler(previous);
    QVERIFY(g_lines.isEmpty());
}

void TestDirectories::readingRules_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    const auto file = [](Order order, const std::function<void(Ifd &)> &add) {
        auto ifd0 = m9Ifd0();
        add(*ifd0);
        return tiff(order, ifd0);
    };
    QTest::newRow("SHORT width, little-endian")
        << file(Order::Little, [](Ifd &d) { d.shortValue(0x0100, 320); }) << "imageWidth"
        << "320";
    QTest::newRow("SHORT width, big-endian, read as LONG")
        << file(Order::Big, [](Ifd &d) { d.shortValue(0x0100, 320); }) << "imageWidth"
        << "20971520";
    QTest::newRow("short text kept in the field is read at the offset its bytes form")
        << file(Order::Big, [](Ifd &d) { d.ascii(0x013B, "ab"); }) << "artist"
        << "";
    QTest::newRow("text out of line")
        << file(Order::Big, [](Ifd &d) { d.ascii(0x013B, "Anna Berg"); }) << "artist"
        << "Anna Berg";
    QTest::newRow("DNGVersion without trailing point")
        << file(Order::Big, [](Ifd &d) { d.bytes(0xC612, Byte, QByteArray("\1\4\0\0", 4)); })
        << "dngVersion"
        << "1.4.0.0";
    QTest::newRow("ExifVersion as four characters")
        << file(Order::Little, [](Ifd &d) { d.bytes(0x9000, Undefined, "0230"); }) << "exifVersion"
        << "0230";
    QTest::newRow("FileSource, whole field, big-endian")
        << file(Order::Big, [](Ifd &d) { d.bytes(0xA300, Undefined, "\3"); }) << "fileSource"
        << "50331648";
    QTest::newRow("FileSource, whole field, little-endian")
        << file(Order::Little, [](Ifd &d) { d.bytes(0xA300, Undefined, "\3"); }) << "fileSource"
        << "3";
    QTest::newRow("CFARepeatPatternDim keeps both SHORTs") << file(Order::Big,
                                                                   [](Ifd &d) {
                                                                       d.shorts(0x828D, {2, 3});
                                                                   })
                                                           << "cfaRepeatPatternDim"
                                                           << "2 3";
    QTest::newRow("CFAPattern from the field")
        << file(Order::Little, [](Ifd &d) { d.bytes(0x828E, Byte, QByteArray("\0\1\1\2", 4)); })
        << "cfaPattern"
        << "4: 0 1 1 2";
    QTest::newRow("UserComment skips its character code")
        << file(Order::Big,
                [](Ifd &d) { d.bytes(0x9286, Undefined, QByteArray("ASCII\0\0\0Hello", 13)); })
        << "userComment"
        << "Hello";
    QTest::newRow("BlackLevel read as one value")
        << file(Order::Little, [](Ifd &d) { d.longValue(0xC61A, 512); }) << "blackLevel"
        << "512/1";
    QTest::newRow("DefaultCropSize keeps the first values")
        << file(Order::Big,
                [](Ifd &d) {
                    d.longs(0xC620, {5200, 3456, 7});
                })
        << "defaultCropSize"
        << "5200 3456 7";
    QTest::newRow("ComponentsConfiguration as four bytes")
        << file(Order::Big, [](Ifd &d) { d.bytes(0x9101, Undefined, QByteArray("\1\2\3\0", 4)); })
        << "componentsConfiguration"
        << "1 2 3 0";
    QTest::newRow("Sony tone curve of four SHORTs")
        << file(Order::Little,
                [](Ifd &d) {
                    d.shorts(0x7010, {0, 4000, 8000, 16383});
                })
        << "sonyToneCurve"
        << "0 4000 8000 16383";
    QTest::newRow("LensSpecification as four rationals")
        << file(Order::Big,
                [](Ifd &d) {
                    d.rationals(0xA432, {{24, 1}, {70, 1}, {28, 10}, {4, 1}});
                })
        << "lensInfo"
        << "24/1 70/1 28/10 4/1";
    QTest::newRow("ExposureBias is signed")
        << file(Order::Little, [](Ifd &d) { d.srational(0x9204, -2, 3); }) << "exposureBiasValue"
        << "-2/3";
}

void TestDirectories::readingRules()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, value);
    TempFiles files;
    const auto file = load(files, bytes);
    const TExifValues &v = file->exif();
    const auto join = [](const auto &values) {
        QStringList parts;
        for (const auto &x : values)
            parts.append(QString::number(x));
        return parts.join(' ');
    };
    const auto fraction = [](const auto &r) {
        return QStringLiteral("%1/%2").arg(r.num).arg(r.den);
    };
    const QHash<QString, std::function<QString()>> read = {
        {"imageWidth", [&] { return QString::number(v.imageWidth); }},
        {"artist", [&] { return v.artist; }},
        {"dngVersion", [&] { return v.dngVersion; }},
        {"exifVersion", [&] { return v.exifVersion; }},
        {"fileSource", [&] { return QString::number(v.fileSource); }},
        {"cfaRepeatPatternDim", [&] { return join(v.cfaRepeatPatternDim); }},
        {"cfaPattern",
         [&] {
             return QString::number(v.cfaPatternCount) + ": " +
                    join(QList<quint8>(v.cfaPattern.begin(), v.cfaPattern.begin() + 4));
         }},
        {"userComment", [&] { return v.userComment; }},
        {"blackLevel", [&] { return fraction(v.blackLevel.value(0)); }},
        {"defaultCropSize", [&] { return join(v.defaultCropSize); }},
        {"componentsConfiguration", [&] { return join(v.componentsConfiguration); }},
        {"sonyToneCurve", [&] { return join(v.sonyToneCurve); }},
        {"lensInfo",
         [&] {
             QStringList parts;
             for (const TRational &r : v.lensInfo)
                 parts.append(fraction(r));
             return parts.join(' ');
         }},
        {"exposureBiasValue", [&] { return fraction(v.exposureBiasValue); }},
    };
    QVERIFY(read.contains(value));
    QTEST(read[value](), "expected");
}

void TestDirectories::chain()
{
    // An empty IFD0 reads only its next offset; IFD1 follows with the
    // model and the JPEG thumbnail, kept apart from IFD0's JPEG tags.
    auto ifd1 = m9Ifd0();
    ifd1->longValue(0x0201, 5000).longValue(0x0202, 1200);
    auto ifd0 = Ifd::make();
    auto exif = Ifd::make();
    exif->longValue(0x0201, 77); // Exif entries count as the IFD's own
    ifd0->child(0x8769, exif).next(ifd1);
    TempFiles files;
    bool accepted = false;
    const auto file = load(files, tiff(Order::Little, ifd0), &accepted);
    QVERIFY(accepted);
    QCOMPARE(file->ifdCount(), 2);
    QCOMPARE(file->exif().jpegOffsetIfd0, 77u);
    QCOMPARE(file->exif().thumbnailOffset, 5000u);
    QCOMPARE(file->exif().thumbnailLength, 1200u);

    // A first-IFD offset of 0 reads the header itself as an IFD once.
    const auto header = load(files, tiffHeader(Order::Big, 0));
    QCOMPARE(header->fileTyp(), 1);
    QCOMPARE(header->ifdCount(), 1);
}

void TestDirectories::makerNoteNeedsModelFirst()
{
    SampleM9 options;
    auto ifd0 = sampleIfd0(options);
    TempFiles files;
    const auto m9 = load(files, tiff(Order::Big, ifd0));
    QCOMPARE(m9->leica().serialNumber, QStringLiteral("3912204"));
    QVERIFY(m9->exif().makerNotePosition != 0);

    // Another camera: the position is kept, the note is not read.
    options.model = "X1";
    const auto other = load(files, sampleM9Dng(options));
    QVERIFY(other->exif().makerNotePosition != 0);
    QCOMPARE(other->leica().serialNumber, QStringLiteral("n.a."));
    QCOMPARE(other->panasonicSubDirPosition(0), 0u);

    // The model behind the Exif IFD comes too late for the maker note.
    auto serial = Ifd::make();
    serial->asciiOutOfLine(0x3103, "77");
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined, leicaMakerNote(Order::Big, {{0x3100, serial}}));
    auto late = Ifd::make();
    late->child(0x8769, exif).ascii(0x0110, "M9 Digital Camera");
    bool accepted = false;
    const auto lateModel = load(files, tiff(Order::Big, late), &accepted);
    QVERIFY(accepted);
    QCOMPARE(lateModel->leica().serialNumber, QStringLiteral("n.a."));
}

void TestDirectories::gps_data()
{
    QTest::addColumn<Parts>("latitude");
    QTest::addColumn<QByteArray>("reference");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("degrees");

    QTest::newRow("fractional seconds are cut")
        << Parts{{52, 1}, {31, 1}, {1234, 100}} << QByteArray("N") << "52 31 12 "
        << 52 + (31 + 12 / 60.0) / 60;
    QTest::newRow("south gives the same positive value")
        << Parts{{52, 1}, {31, 1}, {1234, 100}} << QByteArray("S") << "52 31 12 "
        << 52 + (31 + 12 / 60.0) / 60;
    QTest::newRow("missing minutes are left out")
        << Parts{{48, 1}, {0, 1}, {30, 1}} << QByteArray("N") << "48 30 " << 48 + (30 / 60.0) / 60;
    QTest::newRow("zero denominator")
        << Parts{{48, 0}, {7, 1}, {0, 0}} << QByteArray("N") << "7 " << 7 / 60.0;
    QTest::newRow("minutes with decimals")
        << Parts{{13, 1}, {2450, 100}, {0, 1}} << QByteArray("E") << "13 24 " << 13 + 24 / 60.0;
}

void TestDirectories::gps()
{
    QFETCH(Parts, latitude);
    QFETCH(QByteArray, reference);
    auto gps = Ifd::make();
    gps->ascii(0x0001, reference).rationals(0x0002, latitude);
    gps->ascii(0x0003, "W").rationals(0x0004, latitude);
    auto ifd0 = m9Ifd0();
    ifd0->child(0x8825, gps);
    TempFiles files;
    const auto file = load(files, tiff(Order::Big, ifd0));
    QTEST(file->gps_0x0002_LatitudeAsString(), "text");
    QTEST(file->gps_0x0004_LongitudeAsString(), "text");
    QFETCH(double, degrees);
    QCOMPARE(file->gps_0x0002_LatitudeAsKML(), degrees);
    QCOMPARE(file->gps_0x0004_LongitudeAsKML(), degrees);
    QCOMPARE(file->gps().latitudeRef, QString::fromLatin1(reference));
}

void TestDirectories::gpsTexts()
{
    SampleM9 options;
    options.withGps = true;
    TempFiles files;
    const auto file = load(files, sampleM9Dng(options));
    const TGpsValues &g = file->gps();
    QCOMPARE(g.versionId, QStringLiteral("2200"));
    QCOMPARE(g.longitudeRef, QStringLiteral("E"));
    QCOMPARE(g.mapDatum, QStringLiteral("WGS-84"));
    QCOMPARE(g.dateStamp, QStringLiteral("2012:06:17"));
    QCOMPARE(file->gps_0x0007_TimeStampAsString(), QStringLiteral("12 32 5 "));
    QCOMPARE(TM9File::grad2dezimalgrad(10, 30, 36), 10.51);

    // Without a GPS IFD everything keeps its default.
    const auto none = load(files, sampleM9Dng());
    QCOMPARE(none->gps_0x0002_LatitudeAsString(), QString());
    QCOMPARE(none->gps_0x0004_LongitudeAsKML(), 0.0);
    QCOMPARE(none->gps().mapDatum, QStringLiteral("n.a."));
}

void TestDirectories::gpsTagNames_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("name");
    QTest::newRow("0") << 0 << "[GPS] GPSVersionID";
    QTest::newRow("18") << 18 << "[GPS] GPSMapDatum";
    QTest::newRow("30") << 30 << "[GPS] GPSDifferential";
    QTest::newRow("31 unknown") << 31 << "[Sony] --- unbekannt ---";
    QTest::newRow("-1 unknown") << -1 << "[Sony] --- unbekannt ---";
}

void TestDirectories::gpsTagNames()
{
    QFETCH(int, tag);
    QTEST(TM9File::gpsTagName(tag), "name");
}

void TestDirectories::leicaSubDirectories()
{
    auto first = Ifd::make();
    first->slong(0x3402, -3).longValue(0x300A, 4);
    auto last = Ifd::make();
    last->slong(0x3402, 31).slong(0x3407, -150000).rational(0x3406, 28, 10);
    auto serial = Ifd::make();
    serial->asciiOutOfLine(0x3103, "4000123").asciiOutOfLine(0x3109, "2.0.1");
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined,
                leicaMakerNote(Order::Little, {{0x3900, last}, {0x3100, serial}, {0x3000, first}}));
    auto ifd0 = m9Ifd0();
    ifd0->child(0x8769, exif);
    TempFiles files;
    const auto file = load(files, tiff(Order::Little, ifd0));
    const TLeicaValues &l = file->leica();
    // Walked in the order 0x3000, 0x3100, 0x3400, 0x3900: the later value wins.
    QCOMPARE(l.cameraTemperature, 31);
    QCOMPARE(l.contrast, 4u);
    QCOMPARE(l.measuredLV, -1.5);
    QCOMPARE(l.approximateFNumber.num, 28u);
    QCOMPARE(l.serialNumber, QStringLiteral("4000123"));
    QCOMPARE(l.firmwareVersion, QStringLiteral("2.0.1"));
    QCOMPARE(file->panasonicSubDirPosition(2), 0u);

    // A maker note of 0 entries names no sub-directory.
    auto empty = Ifd::make();
    empty->bytes(0x927C, Undefined, leicaMakerNote(Order::Big, {}));
    auto plain = m9Ifd0();
    plain->child(0x8769, empty);
    const auto none = load(files, tiff(Order::Big, plain));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(none->panasonicSubDirPosition(i), 0u);
    QCOMPARE(none->leica().cameraTemperature, 0);
}

QTEST_MAIN(TestDirectories)
#include "tst_directories.moc"
