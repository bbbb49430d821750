// Lens, frame selector and image number of M9 files.

#include "tests/exif/loadfixture.h"
#include "tests/support/samplem9.h"

#include <QtTest>

using namespace exiftest;

class TstLeicaDecoders : public QObject {
    Q_OBJECT

private:
    fixture::TempFiles m_files;

private slots:
    void lensAndFrame_data();
    void lensAndFrame();
    void imageUniqueId_data();
    void imageUniqueId();
};

void TstLeicaDecoders::lensAndFrame_data()
{
    QTest::addColumn<quint32>("lensType");
    QTest::addColumn<QString>("lens");
    QTest::addColumn<QString>("frame");
    const auto row = [](const char *name, quint32 lensType, const char *lens, const char *frame) {
        QTest::newRow(name) << lensType << QString::fromLatin1(lens) << QString::fromLatin1(frame);
    };
    row("uncoded", 0, "uncoded lens", "n.a");
    row("id 0 with frame", 0 * 4 + 2, "Elmarit-M 21mm f/2.8", "24/35");
    row("id 1", 1 * 4 + 0, "Elmarit-M 21mm f/2.8", "n.a");
    row("code 1: id 0, frame 28/90", 1, "Elmarit-M 21mm f/2.8", "28/90");
    row("id 6 frame 0", 6 * 4 + 0, "Summilux-M 35mm f/1.4", "n.a");
    row("id 6 framed", 6 * 4 + 2, "Summicron-M 35mm f/2 (IV)", "24/35");
    row("Tri-Elmar at 16", 16 * 4 + 1, "Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 16mm)", "28/90");
    row("Tri-Elmar at 18", 16 * 4 + 2, "Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 18mm)", "24/35");
    row("Tri-Elmar at 21", 16 * 4 + 3, "'Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 21mm)", "50/75");
    row("id 16 frame 0", 16 * 4 + 0, "Summicron-M 50mm f/2 (III)", "n.a");
    row("Noctilux framed", 31 * 4 + 3, " Noctilux-M 50mm f/1", "50/75");
    row("Noctilux frame 0", 31 * 4 + 0, "Noctilux-M 50mm f/1.2", "n.a");
    row("Summilux 50 ASPH", 32 * 4 + 3, "Summilux-M 50mm f/1.4 ASPH.", "50/75");
    row("Tri-Elmar 28-35-50 at 50", 42 * 4 + 3, "Tri-Elmar-M 28-35-50mm f/4 ASPH. (at 50mm)",
        "50/75");
    row("id 42 frame 0", 42 * 4 + 0, "Summarit-M 35mm f/2.5", "n.a");
    row("id 2 gap", 2 * 4 + 1, "Unknown", "28/90");
    row("id 51 gap", 51 * 4 + 0, "Unknown", "n.a");
    row("id 52 last", 52 * 4 + 0, "Super-Elmar-M 18mm f/3.8 ASPH.", "n.a");
    row("id 53 past the table", 53 * 4, "Unknown", "n.a");
    row("id 257 kept as 1", 1028, "Elmarit-M 21mm f/2.8", "n.a");
    row("id 256 kept as 0, frame 0", 1024, "uncoded lens", "n.a");
    row("id 255", 255 * 4 + 1, "Unknown", "28/90");
}

void TstLeicaDecoders::lensAndFrame()
{
    QFETCH(quint32, lensType);
    QFETCH(QString, lens);
    QFETCH(QString, frame);
    fixture::SampleM9 sample;
    sample.lensType = lensType;
    const auto file = load(m_files, fixture::sampleM9Dng(sample));
    QVERIFY(file);
    QCOMPARE(file->leica().lensType, lensType);
    QCOMPARE(file->leicaLensTypeAsString(), lens);
    QCOMPARE(file->leicaFrameSelectorAsString(), frame);
}

void TstLeicaDecoders::imageUniqueId_data()
{
    QTest::addColumn<QByteArray>("id"); // null: a file without the tag
    QTest::addColumn<QString>("expected");
    QTest::newRow("camera's 32 digits")
        << QByteArray("00000000000000000000000000002a3f") << QStringLiteral("10815");
    QTest::newRow("00ff") << QByteArray("00ff") << QStringLiteral("255");
    QTest::newRow("upper case") << QByteArray("7FFFFFFF") << QStringLiteral("2147483647");
    QTest::newRow("beyond 32 bits signed") << QByteArray("80000000") << QStringLiteral("0");
    QTest::newRow("8000000000") << QByteArray("8000000000") << QStringLiteral("0");
    QTest::newRow("not hexadecimal") << QByteArray("00fg") << QStringLiteral("0");
    QTest::newRow("missing") << QByteArray() << QStringLiteral("0");
}

void TstLeicaDecoders::imageUniqueId()
{
    QFETCH(QByteArray, id);
    QFETCH(QString, expected);
    fixture::SampleM9 sample;
    sample.imageUniqueId = id;
    const QByteArray data =
        id.isNull() ? m9File([](fixture::Ifd &, fixture::Ifd &) {}) : fixture::sampleM9Dng(sample);
    const auto file = load(m_files, data);
    QVERIFY(file);
    QCOMPARE(file->leicaImageUniqueIDAsString(), expected);
}

QTEST_MAIN(TstLeicaDecoders)
#include "tst_leicadecoders.moc"
