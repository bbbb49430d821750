// The directory walkers: the per-entry trace lines and tag names, the IFD
// chain, the GPS directory and the Leica maker note with its sub-directories.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QLoggingCategory>
#include <QSet>
#include <QtTest>

using namespace fixture;

namespace {

QStringList g_lines;

void collectEntryLines(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    if (qstrcmp(context.category, "tolvik.tiff.entries") == 0)
        g_lines.append(message);
}

// Loads the file and returns the reader.
std::unique_ptr<TM9File> load(const QByteArray &bytes)
{
    static TempFiles files;
    auto file = std::make_unique<TM9File>(files.write("t.dng", bytes));
    file->processFile();
    return file;
}

IfdPtr m9Ifd0()
{
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M9 Digital Camera");
    return ifd0;
}

// Gives IFD0 an Exif IFD with a Leica maker note of these sub-directories.
IfdPtr withLeicaNote(IfdPtr ifd0, Order order, const QList<std::pair<quint16, IfdPtr>> &subDirs)
{
    auto exif = Ifd::make();
    exif->bytes(0x927C, Undefined, leicaMakerNote(order, subDirs));
    ifd0->child(0x8769, exif);
    return ifd0;
}

using Parts = Fractions;
using F = TM9File;

} // namespace

class TestDirectories : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entryLines();
    void tagNames_data();
    void tagNames();
    void chain();
    void makerNoteNeedsModelFirst();
    void leicaSubDirectories();
    void gps_data();
    void gps();
};

void TestDirectories::entryLines()
{
    auto first = Ifd::make();
    first->raw(0x0001, 0, 5, 0);             // unknown type first: length 0
    first->ascii(0x010F, "Leica Camera AG"); // 16 bytes
    first->raw(0x9999, 12, 3, 0);            // DOUBLE, no type of ours: keeps 16
    first->shortValue(0x0112, 1);
    first->ascii(0x0110, "M9 Digital Camera");
    const QByteArray file =
        tiff(Order::Big, withLeicaNote(first, Order::Big, {{0x3400, Ifd::make()}}));

    // Off unless asked for.
    g_lines.clear();
    const auto previous = qInstallMessageHandler(collectEntryLines);
    load(file);
    QVERIFY(g_lines.isEmpty());
    QLoggingCategory::setFilterRules(QStringLiteral("tolvik.tiff.entries.debug=true"));
    load(file);
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

void TestDirectories::tagNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &actual, const char *expected) {
        QTest::newRow(name) << actual << QString::fromUtf8(expected);
    };
    row("Exif name under two tags", F::exifTagName(0xBC80), "[Exif] ImageWidth");
    row("Exif tag unknown", F::exifTagName(0x3039), "[Exif] --- unbekannt ---");
    row("Exif tag beyond 16 bits", F::exifTagName(0x1829A), "[Exif] --- unbekannt ---");
    row("Leica name with a tab", F::leicaTagName(0x3901),
        "[Leica] Data1\t--> Panasonic Data1 Tags");
    row("Leica sub-directory pointer", F::leicaTagName(0x3400), "[Leica] --- unbekannt ---");
    row("last GPS tag", F::gpsTagName(30), "[GPS] GPSDifferential");
    row("GPS tag 31 unknown", F::gpsTagName(31), "[Sony] --- unbekannt ---");

    // The catalogue is searched by halves: every one of its 475 tags must be
    // found (21 names stand under two tags).
    const QString unknown = F::exifTagName(0);
    int known = 0;
    QSet<QString> names;
    for (int tag = 0; tag <= 0xFFFF; ++tag) {
        const QString name = F::exifTagName(tag);
        known += name != unknown;
        names.insert(name);
    }
    row("Exif catalogue", QStringLiteral("%1 tags, %2 names").arg(known).arg(names.size() - 1),
        "475 tags, 454 names");
}

void TestDirectories::tagNames()
{
    QFETCH(QString, name);
    QTEST(name, "expected");
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
    const auto file = load(tiff(Order::Little, ifd0));
    QVERIFY(file->isValidModel());
    QCOMPARE(file->ifdCount(), 2);
    QCOMPARE(file->exif().jpegOffsetIfd0, 77u);
    QCOMPARE(file->exif().thumbnailOffset, 5000u);
    QCOMPARE(file->exif().thumbnailLength, 1200u);

    // A first-IFD offset of 0 reads the header itself as an IFD once.
    const auto header = load(QByteArray("MM\0\x2A\0\0\0\0", 8));
    QCOMPARE(header->fileTyp(), 1);
    QCOMPARE(header->ifdCount(), 1);
}

void TestDirectories::makerNoteNeedsModelFirst()
{
    // The model behind the Exif IFD comes too late for the maker note (another
    // camera's note is not read either: see tst_loading's recognition).
    auto serial = Ifd::make();
    serial->ascii(0x3103, "77", true);
    auto late = withLeicaNote(Ifd::make(), Order::Big, {{0x3100, serial}});
    late->ascii(0x0110, "M9 Digital Camera");
    const auto file = load(tiff(Order::Big, late));
    QVERIFY(file->isValidModel());
    QCOMPARE(file->leica().serialNumber, QStringLiteral("n.a."));
}

void TestDirectories::leicaSubDirectories()
{
    auto first = Ifd::make();
    first->slong(0x3402, -3).longValue(0x300A, 4);
    auto last = Ifd::make();
    last->slong(0x3402, 31).slong(0x3407, -150000).rational(0x3406, 28, 10);
    auto serial = Ifd::make();
    serial->ascii(0x3103, "4000123", true).ascii(0x3109, "2.0.1", true);
    const auto ifd0 =
        withLeicaNote(m9Ifd0(), Order::Little, {{0x3900, last}, {0x3100, serial}, {0x3000, first}});
    const auto file = load(tiff(Order::Little, ifd0));
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
    const auto none = load(tiff(Order::Big, withLeicaNote(m9Ifd0(), Order::Big, {})));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(none->panasonicSubDirPosition(i), 0u);
    QCOMPARE(none->leica().cameraTemperature, 0);
}

void TestDirectories::gps_data()
{
    QTest::addColumn<Parts>("latitude"); // none: no GPS IFD
    QTest::addColumn<QString>("reference");
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QString>("text");

    const Parts north{{52, 1}, {31, 1}, {1234, 100}};
    QTest::newRow("fractional seconds are cut") << north << "N" << 52.52 << "52 31 12 ";
    QTest::newRow("south gives the same positive value") << north << "S" << 52.52 << "52 31 12 ";
    QTest::newRow("missing minutes are left out")
        << Parts{{48, 1}, {0, 1}, {30, 1}} << "N" << 48.008333333333333 << "48 30 ";
    QTest::newRow("zero denominator")
        << Parts{{48, 0}, {7, 1}, {0, 0}} << "N" << 0.11666666666666667 << "7 ";
    QTest::newRow("minutes with decimals")
        << Parts{{13, 1}, {2450, 100}, {0, 1}} << "E" << 13.4 << "13 24 ";
    QTest::newRow("no GPS IFD") << Parts{} << "" << 0.0 << "";
}

void TestDirectories::gps()
{
    QFETCH(Parts, latitude);
    QFETCH(QString, reference);
    auto gps = Ifd::make();
    gps->bytes(0x0000, Byte, QByteArray("\x02\x02\x00\x00", 4)).ascii(0x0001, reference.toLatin1());
    gps->rationals(0x0002, latitude).ascii(0x0003, "W").rationals(0x0004, latitude);
    gps->rationals(0x0007, {{12, 1}, {32, 1}, {5, 1}});
    auto ifd0 = m9Ifd0();
    if (!latitude.isEmpty())
        ifd0->child(0x8825, gps);
    const auto file = load(tiff(Order::Big, ifd0));
    QTEST(file->gps_0x0002_LatitudeAsString(), "text");
    QTEST(file->gps_0x0004_LongitudeAsString(), "text");
    QFETCH(double, degrees);
    QCOMPARE(file->gps_0x0002_LatitudeAsKML(), degrees);
    QCOMPARE(file->gps_0x0004_LongitudeAsKML(), degrees);
    QCOMPARE(file->gps().latitudeRef, reference);
    QCOMPARE(file->gps().versionId, latitude.isEmpty() ? "" : "2200");
    QCOMPARE(file->gps_0x0007_TimeStampAsString(), latitude.isEmpty() ? "" : "12 32 5 ");
}

QTEST_MAIN(TestDirectories)
#include "tst_directories.moc"
