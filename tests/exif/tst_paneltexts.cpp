// The texts of the information panel, shared by window, report and CLI.

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QtTest>

using namespace fixture;

// Changes the sample's options and, called a second time, adds to its IFD0.
using Change = std::function<void(SampleM9 &, Ifd &)>;
using Rows = QList<std::pair<QString, QString>>;
Q_DECLARE_METATYPE(Change)

class TestPanelTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
};

void TestPanelTexts::texts_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<Rows>("expected"); // every row in order, or the rows that differ

    QTest::newRow("the sample") << Change([](SampleM9 &, Ifd &) {})
                                << Rows{{"Camera:", "M9 Digital Camera"},
                                        {"Serial:", "3912204"},
                                        {"FW:", "1.196"},
                                        {"FileName:", "L1002622.DNG"},
                                        {"Date/Time:", "2012:06:17 14:32:05"},
                                        {"ISO:", "160"},
                                        {"Exp.Time:", "1/250 sec"},
                                        {"Appr. Aperture:", "5.0"}, // 56/10 in whole stops
                                        {"Metering:", "Center-weighted average"},
                                        {"Exp.Program", "Av [Aperture-priority]"},
                                        {"Exp.Correction", "-0.7"},
                                        {"Frame Selector:", "50/75"},
                                        {"Focal Length:", "50mm"},
                                        {"Lens:", "Summilux-M 50mm f/1.4 ASPH."},
                                        {"MeasuredLV:", "12.35"},
                                        {"ExternalSensorBrightness:", "9.88"},
                                        {"SensorTemperature:", "24C"},
                                        {"ImageID:", "10815"}};
    QTest::newRow("exposure 0/1") << Change([](SampleM9 &o, Ifd &) {
        o.exposureTime = {0, 1};
    }) << Rows{{"Exp.Time:", "n.a"}};
    QTest::newRow("exposure 1/0") << Change([](SampleM9 &o, Ifd &) {
        o.exposureTime = {1, 0};
    }) << Rows{{"Exp.Time:", "n.a"}};
    QTest::newRow("exposure 1/15 is no nominal time") << Change([](SampleM9 &o, Ifd &) {
        o.exposureTime = {1, 15};
    }) << Rows{{"Exp.Time:", "n.a sec"}};
    QTest::newRow("temperature below zero")
        << Change([](SampleM9 &o, Ifd &) { o.temperature = -3; })
        << Rows{{"SensorTemperature:", "-3C"}};
    QTest::newRow("firmware of the maker note, not Software")
        << Change([](SampleM9 &, Ifd &ifd0) { ifd0.ascii(0x0131, "9.9.9"); })
        << Rows{{"FW:", "1.196"}};
}

void TestPanelTexts::texts()
{
    QFETCH(Change, change);
    QFETCH(Rows, expected);
    SampleM9 options;
    Ifd scratch;
    change(options, scratch);
    auto ifd0 = sampleIfd0(options);
    change(options, *ifd0);
    TempFiles files;
    TM9File file(files.write("L1002622.DNG", tiff(options.order, ifd0)));
    QVERIFY(file.processFile());
    const Rows rows = panelRows(panelTexts(file));
    if (expected.size() == rows.size())
        QCOMPARE(rows, expected);
    for (const auto &row : expected)
        QVERIFY2(rows.contains(row), qPrintable(row.first + row.second));
}

QTEST_MAIN(TestPanelTexts)
#include "tst_paneltexts.moc"
