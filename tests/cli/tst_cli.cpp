// tolvik-info as a script uses it: rows, JSON lines, exit status, messages.

#include "tests/support/samplem9.h"
#include "tests/support/sonybuilder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

using namespace fixture;

namespace {

struct Run {
    int status = -1;
    QString out;
    QString err;
};

Run tolvikInfo(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(TOLVIK_INFO), arguments);
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QList<QJsonObject> jsonLines(const QString &out)
{
    QList<QJsonObject> objects;
    for (const QString &line : out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError || !document.isObject())
            return {};
        objects.append(document.object());
    }
    return objects;
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void exitStatus_data();
    void exitStatus();
    void rows();
    void json();
    void jsonAll();
    void preflight();
    void sonyMakerNote();

private:
    TempFiles m_files;
    QString m_good, m_other, m_random;
};

void TestCli::initTestCase()
{
    SampleM9 options;
    options.withThumbnail = true;
    m_good = m_files.write("L1002622.DNG", sampleM9Dng(options));
    options.model = "M8 Digital Camera";
    m_other = m_files.write("L1000001.DNG", sampleM9Dng(options));
    m_random = m_files.write("random.dng", QByteArray(500, '\x42'));
}

void TestCli::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("accepted") << QStringList{":good"} << 0;
    QTest::newRow("rejected, then accepted") << QStringList{":random", ":good"} << 1;
    QTest::newRow("missing path") << QStringList{"/nonexistent/L1.DNG"} << 1;
    QTest::newRow("no file") << QStringList{} << 2;
    QTest::newRow("unknown option") << QStringList{"--xml", ":good"} << 2;
    QTest::newRow("help") << QStringList{"--help"} << 0;
    QTest::newRow("preflight of another camera") << QStringList{"--preflight", ":other"} << 1;
}

void TestCli::exitStatus()
{
    QFETCH(QStringList, arguments);
    for (QString &a : arguments) {
        if (a == ":good")
            a = m_good;
        else if (a == ":random")
            a = m_random;
        else if (a == ":other")
            a = m_other;
    }
    const Run run = tolvikInfo(arguments);
    QTEST(run.status, "status");
    if (run.status == 2)
        QVERIFY(run.err.contains(QLatin1String("usage: tolvik-info")));
}

void TestCli::rows()
{
    const Run run = tolvikInfo({m_random, m_good});
    QCOMPARE(run.err,
             m_random + QStringLiteral(": Fehler bei der Verarbeitung. Keine native DNG-Datei!\n"));
    QVERIFY(!run.out.contains(m_random));
    QVERIFY(run.out.startsWith(m_good + QLatin1Char('\n')));
    for (const char *row :
         {"Camera:                    M9 Digital Camera", "Exp.Time:                  1/250 sec",
          "Lens:                      Summilux-M 50mm f/1.4 ASPH.",
          "SensorTemperature:         24C", "ImageID:                   10815"})
        QVERIFY2(run.out.contains(QLatin1String(row)), row);
}

void TestCli::json()
{
    const Run run = tolvikInfo({"--json", m_good, m_random});
    QCOMPARE(run.status, 1);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 2);
    QCOMPARE(objects[0]["file"].toString(), m_good);
    QCOMPARE(objects[0]["processFile"].toBool(), true);
    QCOMPARE(objects[0]["Exp.Program"].toString(), QStringLiteral("Av [Aperture-priority]"));
    QCOMPARE(objects[0]["Date/Time"].toString(), QStringLiteral("2012:06:17 14:32:05"));
    // A rejected file gets its object too, with what was read.
    QCOMPARE(objects[1]["processFile"].toBool(true), false);
    QCOMPARE(objects[1]["Camera"].toString(), QStringLiteral("n.a."));
    QVERIFY(run.err.contains(m_random));
}

void TestCli::jsonAll()
{
    const Run run = tolvikInfo({"--json", "--all", m_good});
    QCOMPARE(run.status, 0);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 1);
    const QJsonObject &o = objects[0];
    QCOMPARE(o["exif_0x829A_ExposureTimeAsString"].toString(), QStringLiteral("1/250"));
    QCOMPARE(o["fileTyp"].toInt(), 1);
    QCOMPARE(o["hasPreviewImage"].toBool(), true);
    QCOMPARE(o["hasThumbnailImage"].toBool(), true);
    QCOMPARE(o["isValidModel"].toBool(), true);
    QCOMPARE(o["previewImage"].toString(), QStringLiteral("320x240"));
    QVERIFY(o["thumbnailImage"].isNull());
    QCOMPARE(o["exif_0x9204_ExpCompensationAsReal"].toDouble(), -2.0 / 3.0);
    QCOMPARE(o["composite_HyperfocalDistance"].toString(), QStringLiteral("inf"));
    QCOMPARE(o["leica.serialNumber"].toString(), QStringLiteral("3912204"));
    QCOMPARE(o["exif.exposureTime"].toString(), QStringLiteral("1/250"));
    QCOMPARE(o["leica.measuredLV"].toDouble(), 12.34567);
}

void TestCli::preflight()
{
    auto ifd0 = Ifd::make();
    auto ifd1 = Ifd::make();
    ifd1->offsetTo(0x0201, jpegPicture(32, 24, 0x777777), 0x0202);
    ifd0->ascii(0x0110, "M Monochrom").next(ifd1);
    const QString jpeg = m_files.write("L1000002.JPG", jpegWithExif(tiff(Order::Little, ifd0)));

    const Run run = tolvikInfo({"--preflight", "--json", jpeg, m_good});
    QCOMPARE(run.status, 0);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 2);
    QCOMPARE(objects[0]["processFilePreflight"].toBool(), true);
    QCOMPARE(objects[0]["Model"].toString(), QStringLiteral("M Monochrom"));
    QCOMPARE(objects[0]["Thumbnail"].toString(), QStringLiteral("32x24"));
    QCOMPARE(objects[1]["Thumbnail"].toString(), QStringLiteral("160x120"));
    QCOMPARE(objects[1]["F-Number"].toString(), QStringLiteral("5.6"));
    QCOMPARE(objects[1]["Focal Length"].toString(), QStringLiteral("50mm"));
    // The full pass never accepts a JPEG.
    QCOMPARE(tolvikInfo({jpeg}).status, 1);
}

void TestCli::sonyMakerNote()
{
    auto note = Ifd::make();
    note->shortValue(0xB001, 358)
        .bytes(0x9402, Undefined, sonyEncipher(sonyBlock(46, {{45, 0x50}})));
    const SonyFile sony = sonyArw("ILCE-9", note);
    const QString arw = m_files.write("DSC00001.ARW", sony.data);

    const Run plain = tolvikInfo({"--sony-makernote", QString::number(sony.makerNoteOffset), arw});
    QCOMPARE(plain.status, 0);
    QVERIFY(plain.out.contains(QLatin1String("mnSony_0xB001_SonyModelIDAsString ILCE-9")));

    const Run json = tolvikInfo({"--json", "--all", "--sony-makernote",
                                 QStringLiteral("0x%1").arg(sony.makerNoteOffset, 0, 16), arw});
    const QList<QJsonObject> objects = jsonLines(json.out);
    QCOMPARE(objects.size(), 1);
    QCOMPARE(objects[0]["Model"].toString(), QStringLiteral("ILCE-9"));
    QCOMPARE(objects[0]["sony.focusPosition"].toInt(), 0x50);

    const Run past = tolvikInfo({"--sony-makernote", QString::number(sony.data.size()), arw});
    QCOMPARE(past.status, 1);
    QVERIFY(past.out.isEmpty() && past.err.contains(arw));
}

QTEST_MAIN(TestCli)
#include "tst_cli.moc"
