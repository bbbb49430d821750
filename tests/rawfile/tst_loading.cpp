// Recognising and loading a file: byte orders, JPEG with Exif, the model test,
// the embedded pictures, and files that are broken, hostile or not there at all.

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QRandomGenerator>
#include <QtTest>

using namespace fixture;

namespace {

QByteArray sample(QByteArray model, Order order = Order::Big)
{
    SampleM9 options;
    options.model = model;
    options.order = order;
    return sampleM9Dng(options);
}

// IFD1 with a JPEG thumbnail, as a camera writes it behind IFD0.
IfdPtr thumbnailIfd(const QByteArray &jpeg)
{
    auto ifd = Ifd::make();
    ifd->longValue(0x00FE, 1).shortValue(0x0103, 6).offsetTo(0x0201, jpeg, 0x0202);
    return ifd;
}

// Both passes over the file; returns processFile's answer.
bool openBoth(const QString &path)
{
    TM9File preflight(path);
    preflight.processFilePreflight();
    TM9File file(path);
    return file.processFile();
}

} // namespace

class TestLoading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognition_data();
    void recognition();
    void preview_data();
    void preview();
    void pictures();
    void pictureOfAFileGone();
    void hostileInput_data();
    void hostileInput();
    void damagedSample();
    void valuesAcrossBlockEdges();

private:
    TempFiles m_files;
};

// Both passes: processFile and the quick preflight pass that reads model,
// IFD1 thumbnail, F-number and focal length (and walks a JPEG's Exif data).
void TestLoading::recognition_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("fileTyp");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<qint64>("tiffBase");
    QTest::addColumn<QString>("model");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("preflight");
    QTest::addColumn<QSize>("thumbnail"); // made by the preflight pass

    const QString m9 = "M9 Digital Camera";
    SampleM9 withThumbnail;
    withThumbnail.withThumbnail = true;
    QTest::newRow("M9 big-endian with IFD1 thumbnail")
        << sampleM9Dng(withThumbnail) << 1 << true << 0ll << m9 << true << true << QSize(160, 120);
    QTest::newRow("M Monochrom little-endian") << sample("M Monochrom", Order::Little) << 1 << false
                                               << 0ll << "M Monochrom" << true << true << QSize();
    QTest::newRow("model in other letter case") << sample("M9 DIGITAL CAMERA") << 1 << true << 0ll
                                                << "M9 DIGITAL CAMERA" << false << false << QSize();
    QTest::newRow("model with trailing blank") << sample("M Monochrom ") << 1 << true << 0ll
                                               << "M Monochrom " << false << false << QSize();
    QByteArray magic43 = sample(m9.toLatin1());
    magic43[3] = 43;
    QTest::newRow("MM and 43") << magic43 << 0 << true << 0ll << "n.a." << false << false
                               << QSize();
    QTest::newRow("JPEG without Exif")
        << jpegPicture(8, 8, 0xFF0000) << 0 << true << 0ll << "n.a." << false << false << QSize();

    // The camera's JPEG: its Exif data holds IFD0 with the model, IFD1 the
    // thumbnail. processFile recognises it, never walks it, never accepts it.
    auto exifIfd0 = Ifd::make();
    exifIfd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    exifIfd0->next(thumbnailIfd(jpegPicture(64, 48, 0x808080)));
    const QByteArray exif = tiff(Order::Little, exifIfd0);
    QTest::newRow("JPEG with Exif")
        << jpegWithExif(exif) << 2 << false << 12ll << "n.a." << false << true << QSize(64, 48);
    QTest::newRow("JPEG with APP0 and Exif") << jpegWithExif(exif, true) << 2 << false << 30ll
                                             << "n.a." << false << true << QSize(64, 48);

    // Only IFD1's thumbnail counts, and only with position and length.
    const QByteArray jpeg = jpegPicture(160, 120, 0x3060A0);
    auto noLength = sampleIfd0({}), inIfd0 = sampleIfd0({}), inIfd2 = sampleIfd0({});
    auto ifd1 = Ifd::make(), emptyIfd1 = Ifd::make();
    noLength->next(ifd1);
    ifd1->longValue(0x0201, 4000).longValue(0x0202, 0);
    inIfd0->offsetTo(0x0201, jpeg, 0x0202);
    inIfd2->next(emptyIfd1);
    emptyIfd1->longValue(0x00FE, 1).next(thumbnailIfd(jpeg));
    QTest::newRow("IFD1 thumbnail of length 0")
        << tiff(Order::Big, noLength) << 1 << true << 0ll << m9 << true << true << QSize();
    QTest::newRow("thumbnail pointer in IFD0 is ignored")
        << tiff(Order::Big, inIfd0) << 1 << true << 0ll << m9 << true << true << QSize();
    QTest::newRow("thumbnail pointer in IFD2 is ignored")
        << tiff(Order::Big, inIfd2) << 1 << true << 0ll << m9 << true << true << QSize();

    // The thumbnail's size is read from its frame header, which comes before its first scan.
    const auto inIfd1 = [](const QByteArray &thumbnail) {
        auto ifd0 = sampleIfd0({});
        ifd0->next(thumbnailIfd(thumbnail));
        return tiff(Order::Big, ifd0);
    };
    QTest::newRow("thumbnail that is no JPEG")
        << inIfd1(QByteArray(600, '\xFF')) << 1 << true << 0ll << m9 << true << true << QSize();
    QTest::newRow("thumbnail cut before its first scan")
        << inIfd1(jpeg.left(jpeg.indexOf("\xFF\xDA"))) << 1 << true << 0ll << m9 << true << true
        << QSize();
}

void TestLoading::recognition()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, accepted);
    QFETCH(QSize, thumbnail);
    const QString path = m_files.write("f.dng", bytes);
    TM9File preflight(path);
    QTEST(preflight.processFilePreflight(), "preflight");
    QCOMPARE(preflight.thumbnailImage() ? preflight.thumbnailImage()->size() : QSize(), thumbnail);
    QVERIFY(!preflight.hasPreviewImage());

    TM9File file(path);
    QCOMPARE(file.processFile(), accepted);
    QTEST(file.fileTyp(), "fileTyp");
    QTEST(file.isBigEndian(), "bigEndian");
    QTEST(file.tiffBase(), "tiffBase");
    QTEST(file.exif().model, "model");
    QCOMPARE(file.hasPreviewImage(), accepted);
    // processFile knows of the thumbnail but leaves making it to the preflight pass.
    QVERIFY(!file.thumbnailImage());
    QVERIFY(file.hasThumbnailImage() || !thumbnail.isValid() || file.fileTyp() == 2);
    if (file.fileTyp() == 1) {
        // A rejected DNG is walked all the same, but its maker note is not.
        QCOMPARE(file.exif().exposureTime.den, 250u);
        QCOMPARE(file.leica().serialNumber == QLatin1String("3912204"), accepted);
        QCOMPARE(preflight.exif().fNumber.num, 56u);
        QCOMPARE(preflight.exif().focalLength.num, 50u);
    }
}

// The files in tests/data once hung or overran the reader; each must now end
// with the answer its well-formed part gives (tst_boundedtime times them).
// Paths that are no files end at once.
void TestLoading::hostileInput_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("ifdCount"); // -1: not checked
    const QDir data(qEnvironmentVariable("TOLVIK_TEST_DATA"));
    const auto reproducer = [&](const char *name, const char *file, int ifds = -1) {
        QTest::newRow(name) << data.filePath(QLatin1String(file)) << true << ifds;
    };
    reproducer("IFD chain pointing back to IFD0", "ifd-chain-loop.dng", 1);
    reproducer("Exif pointer to its own IFD", "exif-points-to-own-ifd.dng");
    reproducer("Exif pointers nested without end", "exif-nested-deep.dng");
    reproducer("65535 entries", "entry-count-65535.dng");
    reproducer("offsets near 0xFFFFFFFF", "offsets-near-4g.dng");
    reproducer("text without terminator", "unterminated-text.dng");
    reproducer("thousands of entries on one long text", "long-text-many-times.dng");
    reproducer("CFA pattern of 0xFFFFFFFF bytes", "cfa-count-huge.dng");
    reproducer("preview of 65535 x 65535 pixels", "preview-size-huge.dng");
    reproducer("preview of 1 x 131072 pixels, scaled", "preview-one-pixel-wide.dng");
    reproducer("Leica maker note of 32767 entries", "leica-makernote-count-max.dng");
    QTest::newRow("missing path") << "/nonexistent/tolvik/L1000001.DNG" << false << 0;
    QTest::newRow("directory") << QDir::tempPath() << false << 0;
    QTest::newRow("character device") << "/dev/zero" << false << 0;
    QTest::newRow("empty file") << ":empty" << false << 0;
}

void TestLoading::hostileInput()
{
    QFETCH(QString, path);
    QFETCH(bool, accepted);
    QFETCH(int, ifdCount);
    if (path == QLatin1String(":empty"))
        path = m_files.write("empty.dng", QByteArray());
    QVERIFY2(!accepted || QFileInfo::exists(path), qPrintable(path));
    TM9File file(path);
    QCOMPARE(file.processFile(), accepted);
    if (ifdCount >= 0)
        QCOMPARE(file.ifdCount(), ifdCount);
    QVERIFY(!file.previewImageScaled(64, 0) || file.previewImage()->width() < 8192);
    TM9File preflight(path);
    QVERIFY(preflight.processFilePreflight() <= accepted);
}

// The sample cut at every length and with random bytes: every pass must end.
void TestLoading::damagedSample()
{
    SampleM9 options;
    options.preview = QImage(8, 6, QImage::Format_RGB888);
    options.preview.fill(Qt::darkCyan);
    options.rawDataBytes = 16;
    options.withGps = true;
    options.withThumbnail = true;
    const QByteArray whole = sampleM9Dng(options);
    for (qsizetype length = 0; length < whole.size(); ++length)
        openBoth(m_files.write("cut.dng", whole.left(length)));
    QVERIFY(openBoth(m_files.write("cut.dng", whole)));

    QRandomGenerator random(20120617);
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = whole;
        // Random bytes behind a valid header, or flipped bytes in a real file.
        if (round % 2 == 0) {
            for (qsizetype i = 8; i < bytes.size(); ++i)
                bytes[i] = char(random.bounded(256));
        } else {
            for (int flips = 0; flips < 20; ++flips)
                bytes[random.bounded(int(bytes.size()))] = char(random.bounded(256));
        }
        openBoth(m_files.write("random.dng", bytes));
    }
}

void TestLoading::preview_data()
{
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<QSize>("size");
    QTest::newRow("320 x 240, big-endian") << true << QSize(320, 240);
    QTest::newRow("portrait, little-endian") << false << QSize(24, 32);
}

void TestLoading::preview()
{
    QFETCH(bool, bigEndian);
    QFETCH(QSize, size);
    SampleM9 options;
    options.order = bigEndian ? Order::Big : Order::Little;
    options.preview = QImage(size, QImage::Format_RGB888);
    options.preview.fill(QColor(10, 20, 30));
    options.preview.setPixelColor(0, 0, QColor(255, 0, 0));
    options.preview.setPixelColor(size.width() - 1, size.height() - 1, QColor(0, 0, 255));
    TM9File file(m_files.write("p.dng", sampleM9Dng(options)));
    QVERIFY(file.processFile());
    const QImage image = file.previewImage()->toImage();
    QCOMPARE(image.size(), size);
    QCOMPARE(image.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(image.pixel(1, 0), qRgb(10, 20, 30));
    QCOMPARE(image.pixel(size.width() - 1, size.height() - 1), qRgb(0, 0, 255));
}

void TestLoading::pictures()
{
    TM9File file(m_files.write("p.dng", sampleM9Dng()));
    QVERIFY(!file.previewImageScaled(160, 999));
    QVERIFY(file.processFile());
    QCOMPARE(file.previewImageScaled(160, 999)->size(), QSize(160, 120));
    QCOMPARE(file.previewImageScaled(32, 1)->size(), QSize(32, 24));
    QCOMPARE(file.previewImage()->size(), QSize(320, 240));
    QVERIFY(!file.previewImageScaled(0, 10));
    QVERIFY(!file.previewImageScaled(100000, 10)); // 100000 x 75000 is no preview
    // JPEGs are read after processFile has closed the file: it is reopened for them.
    QVERIFY(!file.extractJPEGImage(8, 200));
    QVERIFY(!file.extractJPEGImage(0xFFFFFF00, 0xFFFF));
    const QByteArray jpeg = jpegPicture(8, 8, 0x00FF00);
    TM9File picture(m_files.write("p.jpg", jpeg));
    const std::unique_ptr<QPixmap> decoded(picture.extractJPEGImage(0, quint32(jpeg.size())));
    QCOMPARE(decoded ? decoded->size() : QSize(), QSize(8, 8));

    // A strip with one row of the two: the second row stays black.
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M Monochrom").longValue(0x0100, 2).longValue(0x0101, 2);
    ifd0->offsetTo(0x0111, QByteArray("\x10\x20\x30\x40\x50\x60", 6), 0x0117);
    TM9File shortStrip(m_files.write("s.dng", tiff(Order::Big, ifd0) + QByteArray(64, '\0')));
    QVERIFY(shortStrip.processFile());
    const QImage image = shortStrip.previewImage()->toImage();
    QCOMPARE(image.pixel(1, 0), qRgb(0x40, 0x50, 0x60));
    QCOMPARE(image.pixel(0, 1), qRgb(0, 0, 0));

    // Accepted, but IFD0 names no picture size.
    auto bare = Ifd::make();
    bare->ascii(0x0110, "M Monochrom");
    TM9File none(m_files.write("n.dng", tiff(Order::Big, bare)));
    QVERIFY(none.processFile());
    QVERIFY(!none.hasPreviewImage());
    QVERIFY(!none.hasFullSizeImage());
}

// A picture asked for after the file was removed or rewritten is none at
// all, not black or another file's.
void TestLoading::pictureOfAFileGone()
{
    TM9File removed(m_files.write("gone.dng", sampleM9Dng()));
    QVERIFY(removed.processFile() && removed.isFileUnchanged());
    TM9File rewritten(m_files.write("new.dng", sampleM9Dng()));
    QVERIFY(rewritten.processFile() && QFile::remove(m_files.path("gone.dng")));
    m_files.write("new.dng", QByteArray(9000, 'x'));
    for (TM9File *file : {&removed, &rewritten})
        QVERIFY(!file->isFileUnchanged() && file->previewPicture().isNull() &&
                !file->previewImage());
}

// The file is fetched in blocks: shifting the directories behind the raw data
// by 0 to 15 bytes puts every kind of field across a block edge once.
void TestLoading::valuesAcrossBlockEdges()
{
    QList<std::pair<QString, QString>> unshifted;
    for (int shift = 0; shift < 16; ++shift) {
        SampleM9 options;
        options.withGps = true;
        options.rawDataBytes = 4096 + shift;
        TM9File file(m_files.write("shifted.dng", sampleM9Dng(options)));
        QVERIFY(file.processFile());
        auto rows = panelRows(panelTexts(file));
        rows.append({QStringLiteral("GPS"), file.gps_0x0002_LatitudeAsString()});
        if (shift == 0)
            unshifted = rows;
        QCOMPARE(rows, unshifted);
    }
    QCOMPARE(unshifted[1].second, QStringLiteral("3912204")); // from the maker note's sub-directory
}

QTEST_MAIN(TestLoading)
#include "tst_loading.moc"
