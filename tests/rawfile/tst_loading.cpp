// Recognising and loading a file: byte orders, JPEG with Exif, the model test,
// and files that are broken, hostile or not there at all.

#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QDir>
#include <QElapsedTimer>
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
    void neverWritesTheFile();
    void hostileInput_data();
    void hostileInput();
    void damagedSample();
};

void TestLoading::recognition_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("fileTyp");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<qint64>("tiffBase");
    QTest::addColumn<QString>("model");

    const QByteArray m9 = "M9 Digital Camera";
    QTest::newRow("M9 big-endian")
        << sample(m9) << true << 1 << true << qint64(0) << "M9 Digital Camera";
    QTest::newRow("M Monochrom little-endian")
        << sample("M Monochrom", Order::Little) << true << 1 << false << qint64(0) << "M Monochrom";
    QTest::newRow("model in other letter case")
        << sample("M9 DIGITAL CAMERA") << false << 1 << true << qint64(0) << "M9 DIGITAL CAMERA";
    QTest::newRow("model with trailing blank")
        << sample("M Monochrom ") << false << 1 << true << qint64(0) << "M Monochrom ";
    QByteArray magic43 = sample(m9);
    magic43[3] = 43;
    QTest::newRow("MM and 43") << magic43 << false << 0 << true << qint64(0) << "n.a.";
    // A JPEG from the camera: recognised, never walked, so the model stays unknown.
    QTest::newRow("JPEG with Exif")
        << jpegWithExif(sample(m9).left(4096)) << false << 2 << true << qint64(12) << "n.a.";
    QTest::newRow("JPEG with APP0 and Exif")
        << jpegWithExif(sample(m9).left(4096), true) << false << 2 << true << qint64(30) << "n.a.";
    QTest::newRow("JPEG without Exif")
        << jpegPicture(8, 8, 0xFF0000) << false << 0 << true << qint64(0) << "n.a.";
}

void TestLoading::recognition()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, accepted);
    TempFiles files;
    TM9File file(files.write("f.dng", bytes));
    QCOMPARE(file.processFile(), accepted);
    QTEST(file.fileTyp(), "fileTyp");
    QTEST(file.isBigEndian(), "bigEndian");
    QTEST(file.tiffBase(), "tiffBase");
    QTEST(file.exif().model, "model");
    QCOMPARE(file.hasPreviewImage(), accepted);
    // A rejected DNG is walked all the same, but its maker note is not.
    if (file.fileTyp() == 1) {
        QCOMPARE(file.exif().exposureTime.den, 250u);
        QCOMPARE(file.leica().serialNumber == QLatin1String("3912204"), accepted);
    }
}

void TestLoading::neverWritesTheFile()
{
    TempFiles files;
    const QByteArray bytes = sampleM9Dng();
    const QString path = files.write("r.dng", bytes);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser);
    const QDateTime modified = QFileInfo(path).lastModified();
    {
        TM9File file(path);
        QVERIFY(file.processFile());
        QVERIFY(file.previewImageScaled(100, 0));
        QVERIFY(!file.extractJPEGImage(0, 100));
        file.extractFullSizeImage(nullptr);
        TM9File(path).processFilePreflight();
    }
    QFile reread(path);
    QVERIFY(reread.open(QIODevice::ReadOnly));
    QCOMPARE(reread.readAll(), bytes);
    QCOMPARE(QFileInfo(path).lastModified(), modified);
}

// The files in tests/data once hung or overran the reader; each must now end
// quickly with the answer its well-formed part gives. Paths that are no
// files end at once.
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
    TempFiles files;
    if (path == QLatin1String(":empty"))
        path = files.write("empty.dng", QByteArray());
    QVERIFY2(!accepted || QFileInfo::exists(path), qPrintable(path));
    QElapsedTimer timer;
    timer.start();
    TM9File file(path);
    QCOMPARE(file.processFile(), accepted);
    if (ifdCount >= 0)
        QCOMPARE(file.ifdCount(), ifdCount);
    QVERIFY(!file.previewImageScaled(64, 0) || file.previewImage()->width() < 8192);
    TM9File preflight(path);
    QVERIFY(preflight.processFilePreflight() <= accepted);
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
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
    TempFiles files;
    for (qsizetype length = 0; length < whole.size(); ++length)
        openBoth(files.write("cut.dng", whole.left(length)));
    QVERIFY(openBoth(files.write("cut.dng", whole)));

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
        openBoth(files.write("random.dng", bytes));
    }
}

QTEST_MAIN(TestLoading)
#include "tst_loading.moc"
