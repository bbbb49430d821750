// The embedded pictures (RGB preview, JPEG thumbnail) and the preflight pass
// that reads model and thumbnail quickly.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QPixmap>
#include <QtTest>

using namespace fixture;

namespace {

QImage cornerPicture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB888);
    image.fill(QColor(10, 20, 30));
    image.setPixelColor(0, 0, QColor(255, 0, 0));
    image.setPixelColor(width - 1, height - 1, QColor(0, 0, 255));
    return image;
}

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
    void previewFromShortStrip();
    void previewScaled();
    void noPreview();
    void thumbnailNeedsPositionAndLength();
    void preflight_data();
    void preflight();
    void jpegThatDoesNotDecode();
};

void TestPictures::preview_data()
{
    QTest::addColumn<int>("order");
    QTest::addColumn<QSize>("size");
    QTest::newRow("320 x 240, big-endian") << int(Order::Big) << QSize(320, 240);
    QTest::newRow("320 x 240, little-endian") << int(Order::Little) << QSize(320, 240);
    QTest::newRow("portrait") << int(Order::Big) << QSize(24, 32);
}

void TestPictures::preview()
{
    QFETCH(int, order);
    QFETCH(QSize, size);
    SampleM9 options;
    options.order = Order(order);
    options.preview = cornerPicture(size.width(), size.height());
    TempFiles files;
    TM9File file(files.write("p.dng", sampleM9Dng(options)));
    QVERIFY(file.processFile());
    QVERIFY(file.hasPreviewImage());
    QCOMPARE(file.exif().stripByteCounts, quint32(size.width() * size.height() * 3));
    const QImage image = file.previewImage()->toImage();
    QCOMPARE(image.size(), size);
    QCOMPARE(image.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(image.pixel(1, 0), qRgb(10, 20, 30));
    QCOMPARE(image.pixel(size.width() - 1, size.height() - 1), qRgb(0, 0, 255));
}

void TestPictures::previewFromShortStrip()
{
    // A strip with one row of the two: the second row stays black.
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M Monochrom").longValue(0x0100, 2).longValue(0x0101, 2);
    ifd0->offsetTo(0x0111, QByteArray("\x10\x20\x30\x40\x50\x60", 6), 0x0117);
    TempFiles files;
    TM9File file(files.write("s.dng", tiff(Order::Big, ifd0) + QByteArray(64, '\0')));
    QVERIFY(file.processFile());
    const QImage image = file.previewImage()->toImage();
    QCOMPARE(image.pixel(1, 0), qRgb(0x40, 0x50, 0x60));
    QCOMPARE(image.pixel(0, 1), qRgb(0, 0, 0));
}

void TestPictures::previewScaled()
{
    TempFiles files;
    TM9File file(files.write("p.dng", sampleM9Dng()));
    QVERIFY(!file.previewImageScaled(160, 999));
    QVERIFY(file.processFile());
    QCOMPARE(file.previewImageScaled(160, 999)->size(), QSize(160, 120));
    QCOMPARE(file.previewImageScaled(32, 1)->size(), QSize(32, 24));
    QCOMPARE(file.previewImage()->size(), QSize(320, 240));
    QVERIFY(!file.previewImageScaled(0, 10));
    QVERIFY(!file.previewImageScaled(100000, 10)); // 100000 x 75000 is no preview
}

void TestPictures::noPreview()
{
    // Accepted, but IFD0 names no picture size.
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M9 Digital Camera");
    TempFiles files;
    TM9File file(files.write("n.dng", tiff(Order::Big, ifd0)));
    QVERIFY(file.processFile());
    QVERIFY(!file.hasPreviewImage());
    QVERIFY(!file.previewImage());
    QVERIFY(!file.hasFullSizeImage());
}

void TestPictures::thumbnailNeedsPositionAndLength()
{
    auto ifd1 = Ifd::make();
    ifd1->longValue(0x0201, 4000).longValue(0x0202, 0);
    auto ifd0 = sampleIfd0(SampleM9{});
    ifd0->next(ifd1);
    TempFiles files;
    TM9File file(files.write("t.dng", tiff(Order::Big, ifd0)));
    QVERIFY(file.processFile());
    QVERIFY(!file.hasThumbnailImage());

    // With an IFD1 JPEG: known after processFile, made only by the preflight pass.
    SampleM9 options;
    options.withThumbnail = true;
    TM9File withThumbnail(files.write("u.dng", sampleM9Dng(options)));
    QVERIFY(withThumbnail.processFile());
    QVERIFY(withThumbnail.hasThumbnailImage());
    QVERIFY(!withThumbnail.thumbnailImage());
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
    QTest::newRow("M9 DNG without thumbnail") << sampleM9Dng() << true << QSize();

    auto inIfd0 = sampleIfd0(SampleM9{});
    inIfd0->offsetTo(0x0201, jpeg, 0x0202);
    QTest::newRow("thumbnail pointer in IFD0 is ignored")
        << tiff(Order::Big, inIfd0) << true << QSize();

    auto inIfd2 = sampleIfd0(SampleM9{});
    auto empty = Ifd::make();
    empty->longValue(0x00FE, 1);
    empty->next(thumbnailIfd(jpeg));
    inIfd2->next(empty);
    QTest::newRow("thumbnail pointer in IFD2 is ignored")
        << tiff(Order::Big, inIfd2) << true << QSize();

    SampleM9 other = withThumbnail;
    other.model = "M8 Digital Camera";
    QTest::newRow("another camera") << sampleM9Dng(other) << false << QSize();

    // The camera's JPEG: its Exif data holds IFD0 with the model, IFD1 the thumbnail.
    auto exifIfd0 = Ifd::make();
    exifIfd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    exifIfd0->next(thumbnailIfd(jpegPicture(64, 48, 0x808080)));
    const QByteArray exif = tiff(Order::Little, exifIfd0);
    QTest::newRow("JPEG from an M9") << jpegWithExif(exif) << true << QSize(64, 48);
    QTest::newRow("JPEG from an M9 behind APP0")
        << jpegWithExif(exif, true) << true << QSize(64, 48);
    QTest::newRow("random bytes") << QByteArray(300, '\x5A') << false << QSize();
}

void TestPictures::preflight()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, thumbnail);
    TempFiles files;
    const QString path = files.write("f.dng", bytes);
    TM9File file(path);
    QTEST(file.processFilePreflight(), "accepted");
    QCOMPARE(file.thumbnailImage() ? file.thumbnailImage()->size() : QSize(), thumbnail);
    QVERIFY(!file.hasPreviewImage());
    if (file.fileTyp() == 1 && file.isValidModel()) { // read from the Exif IFD
        QCOMPARE(file.exif().fNumber.num, 56u);
        QCOMPARE(file.exif().focalLength.num, 50u);
    }
    if (file.fileTyp() == 2) // processFile recognises such a JPEG but never accepts it
        QVERIFY(!TM9File(path).processFile());
}

void TestPictures::jpegThatDoesNotDecode()
{
    TempFiles files;
    TM9File file(files.write("j.dng", sampleM9Dng()));
    QVERIFY(file.processFile());
    QVERIFY(!file.extractJPEGImage(8, 200)); // reopens the file for it
    QVERIFY(!file.extractJPEGImage(0xFFFFFF00, 0xFFFF));
    const QByteArray jpeg = jpegPicture(8, 8, 0x00FF00);
    TM9File picture(files.write("p.jpg", jpeg));
    const std::unique_ptr<QPixmap> decoded(picture.extractJPEGImage(0, quint32(jpeg.size())));
    QVERIFY(decoded);
    QCOMPARE(decoded->size(), QSize(8, 8));
}

QTEST_MAIN(TestPictures)
#include "tst_pictures.moc"
