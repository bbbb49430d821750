// Compares what the reader makes of a camera-like file with what exiftool
// reads from it, for the values both name the same way.

#include "tests/exif/loadfixture.h"
#include "tests/support/samplem9.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

Q_DECLARE_METATYPE(fixture::Order)

class TstExiftoolCheck : public QObject {
    Q_OBJECT

private:
    fixture::TempFiles m_files;

    // exiftool's tags of the file; -n gives numbers instead of print texts.
    static QJsonObject exiftool(const QString &program, const QString &path, bool numeric)
    {
        QProcess process;
        QStringList args{QStringLiteral("-j")};
        if (numeric)
            args.prepend(QStringLiteral("-n"));
        process.start(program, args << path);
        if (!process.waitForFinished(60000) || process.exitCode() != 0)
            return {};
        return QJsonDocument::fromJson(process.readAllStandardOutput()).array().at(0).toObject();
    }

private slots:
    void sampleAgrees_data();
    void sampleAgrees();
};

void TstExiftoolCheck::sampleAgrees_data()
{
    QTest::addColumn<fixture::Order>("order");
    QTest::addColumn<quint16>("iso");
    QTest::addColumn<quint32>("lensType");
    QTest::addColumn<qint32>("temperature");
    QTest::newRow("big-endian, Summilux 50")
        << fixture::Order::Big << quint16(200) << quint32(32 * 4 + 3) << 24;
    QTest::newRow("little-endian, Elmarit 28, frost")
        << fixture::Order::Little << quint16(400) << quint32(28 * 4 + 1) << -7;
}

void TstExiftoolCheck::sampleAgrees()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("exiftool"));
    if (program.isEmpty())
        QSKIP("exiftool is not installed");
    QFETCH(fixture::Order, order);
    QFETCH(quint16, iso);
    QFETCH(quint32, lensType);
    QFETCH(qint32, temperature);

    fixture::SampleM9 sample;
    sample.order = order;
    sample.iso = iso;
    sample.lensType = lensType;
    sample.temperature = temperature;
    const QString path = m_files.write(QString::fromLatin1(QTest::currentDataTag()) + ".DNG",
                                       fixture::sampleM9Dng(sample));
    QVERIFY(!path.isEmpty());
    TM9File file(path);
    QVERIFY(file.processFile());

    const QJsonObject text = exiftool(program, path, false);
    const QJsonObject number = exiftool(program, path, true);
    QVERIFY2(!text.isEmpty() && !number.isEmpty(), "exiftool gave no result");

    QCOMPARE(file.exif_0x8827_ISOAsString(), QString::number(number["ISO"].toInt()));
    QCOMPARE(file.exif_0x829A_ExposureTimeAsString(), text["ExposureTime"].toString());
    QCOMPARE(file.leicaLensTypeAsString(), text["LensType"].toString());
    QCOMPARE(file.leica().serialNumber, text["SerialNumber"].toVariant().toString());
    QCOMPARE(file.leica().cameraTemperature, number["CameraTemperature"].toInt());
    // ISO in whole hundreds, where the light value's truncation changes nothing.
    QVERIFY(qAbs(file.composite_LightValue() - number["LightValue"].toDouble()) < 1e-6);
}

QTEST_MAIN(TstExiftoolCheck)
#include "tst_exiftoolcheck.moc"
