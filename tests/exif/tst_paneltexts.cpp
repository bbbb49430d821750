// The texts of the information panel, shared by window, report and CLI.

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QtTest>

using namespace fixture;

// Changes the sample's options and, called a second time, adds to its IFD0.
using Change = std::function<void(SampleM9 &, Ifd &)>;
Q_DECLARE_METATYPE(Change)

class TestPanelTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void sampleRows();
};

void TestPanelTexts::texts_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");

    QTest::newRow("exposure 1/250")
        << "Exp.Time:" << Change([](SampleM9 &, Ifd &) {}) << "1/250 sec";
    QTest::newRow("exposure 0/1") << "Exp.Time:" << Change([](SampleM9 &o, Ifd &) {
        o.exposureTime = {0, 1};
    }) << "n.a";
    QTest::newRow("exposure 1/0") << "Exp.Time:" << Change([](SampleM9 &o, Ifd &) {
        o.exposureTime = {1, 0};
    }) << "n.a";
    QTest::newRow("exposure 1/15 is no nominal time")
        << "Exp.Time:" << Change([](SampleM9 &o, Ifd &) {
               o.exposureTime = {1, 15};
           })
        << "n.a sec";
    QTest::newRow("temperature below zero")
        << "SensorTemperature:" << Change([](SampleM9 &o, Ifd &) { o.temperature = -3; }) << "-3C";
    QTest::newRow("aperture 5.6 shows whole stops")
        << "Appr. Aperture:" << Change([](SampleM9 &, Ifd &) {}) << "5.0";
    QTest::newRow("measured LV with two decimals")
        << "MeasuredLV:" << Change([](SampleM9 &, Ifd &) {}) << "12.35";
    QTest::newRow("focal length in mm")
        << "Focal Length:" << Change([](SampleM9 &, Ifd &) {}) << "50mm";
    QTest::newRow("image ID in decimal")
        << "ImageID:" << Change([](SampleM9 &, Ifd &) {}) << "10815";
    QTest::newRow("ISO") << "ISO:" << Change([](SampleM9 &o, Ifd &) { o.iso = 2500; }) << "2500";
    QTest::newRow("date and time as stored")
        << "Date/Time:" << Change([](SampleM9 &, Ifd &) {}) << "2012:06:17 14:32:05";
    QTest::newRow("firmware of the maker note, not Software")
        << "FW:" << Change([](SampleM9 &, Ifd &ifd0) { ifd0.ascii(0x0131, "9.9.9"); }) << "1.196";
    QTest::newRow("lens") << "Lens:" << Change([](SampleM9 &o, Ifd &) { o.lensType = 16 * 4 + 3; })
                          << "'Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 21mm)";
}

void TestPanelTexts::texts()
{
    QFETCH(QString, row);
    QFETCH(Change, change);
    SampleM9 options;
    Ifd scratch;
    change(options, scratch);
    auto ifd0 = sampleIfd0(options);
    change(options, *ifd0);
    TempFiles files;
    TM9File file(files.write("L1000001.DNG", tiff(options.order, ifd0)));
    QVERIFY(file.processFile());
    const auto rows = panelRows(panelTexts(file));
    const auto it =
        std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return r.first == row; });
    QVERIFY(it != rows.end());
    QTEST(it->second, "expected");
}

void TestPanelTexts::sampleRows()
{
    TempFiles files;
    TM9File file(files.write("L1002622.DNG", sampleM9Dng()));
    QVERIFY(file.processFile());
    const TPanelTexts t = panelTexts(file);
    QCOMPARE(t.camera, QStringLiteral("M9 Digital Camera"));
    QCOMPARE(t.serial, QStringLiteral("3912204"));
    QCOMPARE(t.fileName, QStringLiteral("L1002622.DNG"));
    QCOMPARE(t.metering, QStringLiteral("Center-weighted average"));
    QCOMPARE(t.expProgram, QStringLiteral("Av [Aperture-priority]"));
    QCOMPARE(t.expCorrection, QStringLiteral("-0.7"));
    QCOMPARE(t.frameSelector, QStringLiteral("50/75"));
    QCOMPARE(t.lens, QStringLiteral("Summilux-M 50mm f/1.4 ASPH."));
    QCOMPARE(t.sensorBrightness, QStringLiteral("9.88"));
    QCOMPARE(panelRows(t).size(), 18);
    QCOMPARE(panelRows(t).at(3).first, QStringLiteral("FileName:"));
    QCOMPARE(panelRows(t).last().first, QStringLiteral("ImageID:"));
}

QTEST_MAIN(TestPanelTexts)
#include "tst_paneltexts.moc"
