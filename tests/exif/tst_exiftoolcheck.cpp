// Compares what the reader makes of a camera-like file with what exiftool
// reads from it, for the values both name the same way.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

class TstExiftoolCheck : public QObject {
    Q_OBJECT

private slots:
    void sampleAgrees_data();
    void sampleAgrees();
};

void TstExiftoolCheck::sampleAgrees_data()
{
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<quint16>("iso");
    QTest::addColumn<quint32>("lensType");
    QTest::addColumn<qint32>("temperature");
    QTest::newRow("big-endian, Summilux 50") << true << quint16(200) << quint32(32 * 4 + 3) << 24;
    QTest::newRow("little-endian, Elmarit 28, frost")
        << false << quint16(400) << quint32(28 * 4 + 1) << -7;
}

void TstExiftoolCheck::sampleAgrees()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("exiftool"));
    if (program.isEmpty())
        QSKIP("exiftool is not installed");
    QFETCH(bool, bigEndian);
    QFETCH(quint16, iso);
    QFETCH(quint32, lensType);
    QFETCH(qint32, temperature);
    fixture::SampleM9 sample;
    sample.order = bigEndian ? fixture::Order::Big : fixture::Order::Little;
    sample.iso = iso;
    sample.lensType = lensType;
    sample.temperature = temperature;
    fixture::TempFiles files;
    const QString path = files.write("L1002622.DNG", fixture::sampleM9Dng(sample));
    TM9File file(path);
    QVERIFY(file.processFile());

    // A tag name with # asks for the number instead of the print text.
    QProcess exiftool;
    exiftool.start(program, {"-j", "-ExposureTime", "-LensType", "-SerialNumber", "-ISO#",
                             "-CameraTemperature#", "-LightValue#", path});
    QVERIFY(exiftool.waitForFinished(60000) && exiftool.exitCode() == 0);
    const QJsonObject tags =
        QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
    QCOMPARE(file.exif_0x8827_ISOAsString(), QString::number(tags["ISO"].toInt()));
    QCOMPARE(file.exif_0x829A_ExposureTimeAsString(), tags["ExposureTime"].toString());
    QCOMPARE(file.leicaLensTypeAsString(), tags["LensType"].toString());
    QCOMPARE(file.leica().serialNumber, tags["SerialNumber"].toVariant().toString());
    QCOMPARE(file.leica().cameraTemperature, tags["CameraTemperature"].toInt());
    // ISO in whole hundreds, where the light value's truncation changes nothing.
    QVERIFY(qAbs(file.composite_LightValue() - tags["LightValue"].toDouble()) < 1e-6);
}

QTEST_MAIN(TstExiftoolCheck)
#include "tst_exiftoolcheck.moc"
