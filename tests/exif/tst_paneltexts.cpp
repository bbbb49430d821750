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
    void sampleRows();
    void texts_data();
    void texts();

private:
    QList<std::pair<QString, QString>> rows(const Change &change);
    TempFiles m_files;
};

QList<std::pair<QString, QString>> TestPanelTexts::rows(const Change &change)
{
    SampleM9 options;
    Ifd scratch;
    change(options, scratch);
    auto ifd0 = sampleIfd0(options);
    change(options, *ifd0);
    TM9File file(m_files.write("L1002622.DNG", tiff(options.order, ifd0)));
    return file.processFile() ? panelRows(panelTexts(file)) : QList<std::pair<QString, QString>>();
}

void TestPanelTexts::sampleRows()
{
    const QList<std::pair<QString, QString>> expected = {
        {"Camera:", "M9 Digital Camera"},
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
        {"ImageID:", "10815"},
    };
    QCOMPARE(rows([](SampleM9 &, Ifd &) {}), expected);
}

void TestPanelTexts::texts_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");

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
    QTest::newRow("firmware of the maker note, not Software")
        << "FW:" << Change([](SampleM9 &, Ifd &ifd0) { ifd0.ascii(0x0131, "9.9.9"); }) << "1.196";
}

void TestPanelTexts::texts()
{
    QFETCH(QString, row);
    QFETCH(Change, change);
    const auto rows = this->rows(change);
    const auto it =
        std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return r.first == row; });
    QVERIFY(it != rows.end());
    QTEST(it->second, "expected");
}

QTEST_MAIN(TestPanelTexts)
#include "tst_paneltexts.moc"
