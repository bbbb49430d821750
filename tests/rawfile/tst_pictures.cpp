// The embedded pictures (RGB preview, JPEG thumbnail) and the preflight pass
// that reads model and thumbnail quickly.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QPixmap>
#include <QtTest>

using namespace fixture;

namespace {

// IFD1 with a JPEG thumbnail, as a camera writes it behind IFD0.
IfdPtr thumbnailIfd(const QByteArray &jpeg)
{
    auto ifd = Ifd::make();
    ifd->longValue(0x00FE, 1).shortValue(0x0103, 6).offsetTo(0x0201, jpeg, 0x0202);
    return ifd;
}

} // namespace

class TestPictures : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void preview_data();
    void preview();
    void previewScaled();
    void preflight_data();
    void preflight();
    void jpegThatDoesNotDecode();

private:
    TempFiles m_files;
};

void TestPictures::preview_data()
{
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<QSize>("size");
    QTest::newRow("320 x 240, big-endian") << true << QSize(320, 240);
    QTest::newRow("portrait, little-endian") << false << QSize(24, 32);
}

void TestPictures::preview()
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

void TestPictures::previewScaled()
{
    TM9File file(m_files.write("p.dng", sampleM9Dng()));
    QVERIFY(!file.previewImageScaled(160, 999));
    QVERIFY(file.processFile());
    QCOMPARE(file.previewImageScaled(160, 999)->size(), QSize(160, 120));
    QCOMPARE(file.previewImageScaled(32, 1)->size(), QSize(32, 24));
    QCOMPARE(file.previewImage()->size(), QSize(320, 240));
    QVERIFY(!file.previewImageScaled(0, 10));
    QVERIFY(!file.previewImageScaled(100000, 10)); // 100000 x 75000 is no preview

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

void TestPictures::preflight_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QSize>("thumbnail");

    const QByteArray jpeg = jpegPicture(160, 120, 0x3060A0);
    SampleM9 withThumbnail;
    withThumbnail.withThumbnail = true;
    QTest::newRow("M9 DNG with IFD1 thumbnail")
        << sampleM9Dng(withThumbnail) << true << QSize(160, 120);
    auto noLength = sampleIfd0({});
    auto ifd1 = Ifd::make();
    ifd1->longValue(0x0201, 4000).longValue(0x0202, 0);
    noLength->next(ifd1);
    QTest::newRow("IFD1 thumbnail of length 0") << tiff(Order::Big, noLength) << true << QSize();

    auto inIfd0 = sampleIfd0({});
    inIfd0->offsetTo(0x0201, jpeg, 0x0202);
    QTest::newRow("thumbnail pointer in IFD0 is ignored")
        << tiff(Order::Big, inIfd0) << true << QSize();

    auto inIfd2 = sampleIfd0({});
    auto empty = Ifd::make();
    inIfd2->next(empty);
    empty->longValue(0x00FE, 1).next(thumbnailIfd(jpeg));
    QTest::newRow("thumbnail pointer in IFD2 is ignored")
        << tiff(Order::Big, inIfd2) << true << QSize();

    SampleM9 other = withThumbnail;
    other.model = "M8 Digital Camera";
    QTest::newRow("another camera") << sampleM9Dng(other) << false << QSize();

    // The camera's JPEG: its Exif data holds IFD0 with the model, IFD1 the thumbnail.
    auto exifIfd0 = Ifd::make();
    exifIfd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    exifIfd0->next(thumbnailIfd(jpegPicture(64, 48, 0x808080)));
    QTest::newRow("JPEG from an M9 behind APP0")
        << jpegWithExif(tiff(Order::Little, exifIfd0), true) << true << QSize(64, 48);
    QTest::newRow("random bytes") << QByteArray(300, '\x5A') << false << QSize();
}

void TestPictures::preflight()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, thumbnail);
    const QString path = m_files.write("f.dng", bytes);
    TM9File file(path);
    QTEST(file.processFilePreflight(), "accepted");
    QCOMPARE(file.thumbnailImage() ? file.thumbnailImage()->size() : QSize(), thumbnail);
    QVERIFY(!file.hasPreviewImage());
    if (file.fileTyp() == 1 && file.isValidModel()) { // read from the Exif IFD
        QCOMPARE(file.exif().fNumber.num, 56u);
        QCOMPARE(file.exif().focalLength.num, 50u);
        // processFile knows of the thumbnail but leaves making it to this pass.
        TM9File full(path);
        QVERIFY(full.processFile());
        QVERIFY(full.hasThumbnailImage() || !thumbnail.isValid());
        QVERIFY(!full.thumbnailImage());
    }
    if (file.fileTyp() == 2) // processFile recognises such a JPEG but never accepts it
        QVERIFY(!TM9File(path).processFile());
}

void TestPictures::jpegThatDoesNotDecode()
{
    TM9File file(m_files.write("j.dng", sampleM9Dng()));
    QVERIFY(file.processFile());
    QVERIFY(!file.extractJPEGImage(8, 200)); // reopens the file for it
    QVERIFY(!file.extractJPEGImage(0xFFFFFF00, 0xFFFF));
    const QByteArray jpeg = jpegPicture(8, 8, 0x00FF00);
    TM9File picture(m_files.write("p.jpg", jpeg));
    const std::unique_ptr<QPixmap> decoded(picture.extractJPEGImage(0, quint32(jpeg.size())));
    QVERIFY(decoded);
    QCOMPARE(decoded->size(), QSize(8, 8));
}

QTEST_MAIN(TestPictures)
#include "tst_pictures.moc"
