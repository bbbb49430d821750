// Names of Exif and Leica tags in the entry lines of the directory walkers.

#include "rawfile/tm9file.h"

#include <QSet>
#include <QtTest>

class TstTagNames : public QObject {
    Q_OBJECT

private slots:
    void exifTagName_data();
    void exifTagName();
    void exifCatalogue();
    void leicaTagName_data();
    void leicaTagName();
};

void TstTagNames::exifTagName_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, int tag, const char *text) {
        QTest::newRow(name) << tag << QString::fromLatin1(text);
    };
    row("first", 0x0001, "[Exif] InteropIndex");
    row("last", 0xFE58, "[Exif] MoireFilter");
    row("ExposureTime", 0x829A, "[Exif] ExposureTime");
    row("ImageWidth", 0x0100, "[Exif] ImageWidth");
    row("ImageWidth again", 0xBC80, "[Exif] ImageWidth");
    row("raw meaning", 0x0201, "[Exif] ThumbnailOffset <=> PreviewImageOffset");
    row("raw size", 0x0117, "[Exif] StripByteCounts <=> RawImageSize");
    row("SubIFD", 0x014A, "[Exif] SubIFD A100DataOffset");
    row("Sony SR2", 0xC634, "[Exif] PrivateTags (-> Sony SR2)");
    row("maker note", 0x927C, "[Exif] MakerNotes -> jeweilige MakerNotes");
    row("lower-case of", 0x014E, "[Exif] NumberofInks");
    row("Samsung", 0xA102, "[Exif] SamsungRawUnknown?");
    row("Copyright", 0x8298, "[Exif] Copyright");
    row("ProfileCopyright", 0xC6FE, "[Exif] ProfileCopyright");
    row("unknown 0x3039", 0x3039, "[Exif] --- unbekannt ---");
    row("unknown 0x0000", 0x0000, "[Exif] --- unbekannt ---");
    row("past the last", 0xFFFF, "[Exif] --- unbekannt ---");
    row("negative", -1, "[Exif] --- unbekannt ---");
    row("beyond 16 bits", 0x1829A, "[Exif] --- unbekannt ---");
}

void TstTagNames::exifTagName()
{
    QFETCH(int, tag);
    QFETCH(QString, expected);
    QCOMPARE(TM9File::exifTagName(tag), expected);
}

void TstTagNames::exifCatalogue()
{
    // 475 tags, 21 names of which stand under two tags.
    const QString unknown = TM9File::exifTagName(0);
    int known = 0;
    QSet<QString> names;
    for (int tag = 0; tag <= 0xFFFF; ++tag) {
        const QString name = TM9File::exifTagName(tag);
        if (name == unknown)
            continue;
        ++known;
        names.insert(name);
        QVERIFY2(name.startsWith(QLatin1String("[Exif] ")), qPrintable(name));
    }
    QCOMPARE(known, 475);
    QCOMPARE(names.size(), 454);
}

void TstTagNames::leicaTagName_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, int tag, const char *text) {
        QTest::newRow(name) << tag << QString::fromLatin1(text);
    };
    row("LensType", 0x3405, "[Leica] LensType");
    row("SerialNumber", 0x3103, "[Leica] SerialNumber");
    row("Data1 with tab", 0x3901, "[Leica] Data1\t--> Panasonic Data1 Tags");
    row("Data2 with tab", 0x3902, "[Leica] Data2\t--> Panasonic Data2 Tags");
    row("0x3403 unknown", 0x3403, "[Leica] --- unbekannt ---");
    row("sub-directory pointer", 0x3400, "[Leica] --- unbekannt ---");
}

void TstTagNames::leicaTagName()
{
    QFETCH(int, tag);
    QFETCH(QString, expected);
    QCOMPARE(TM9File::leicaTagName(tag), expected);
}

QTEST_MAIN(TstTagNames)
#include "tst_tagnames.moc"
