// Recognising and loading a file: byte orders, JPEG with Exif, the model test,
// and files that are broken, hostile or not there at all.

#include "exif/paneltexts.h"
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

// A complete M9 file that is small enough to cut at every length.
QByteArray smallSample()
{
    SampleM9 options;
    options.preview = QImage(8, 6, QImage::Format_RGB888);
    options.preview.fill(Qt::darkCyan);
    options.rawDataBytes = 16;
    options.withGps = true;
    options.withThumbnail = true;
    return sampleM9Dng(options);
}

} // namespace

class TestLoading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognition_data();
    void recognition();
    void fileNames();
    void processesOnlyAcceptedModels_data();
    void processesOnlyAcceptedModels();
    void neverWritesTheFile();
    void badInput_data();
    void badInput();
    void reproducers_data();
    void reproducers();
    void truncatedAtEveryLength();
    void valuesAcrossBlockEdges();
    void randomBytes();
};

void TestLoading::recognition_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("fileTyp");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<qint64>("tiffBase");
    QTest::addColumn<QString>("model");

    SampleM9 little;
    little.order = Order::Little;
    QTest::newRow("M9 big-endian")
        << sampleM9Dng() << true << 1 << true << qint64(0) << "M9 Digital Camera";
    QTest::newRow("M9 little-endian")
        << sampleM9Dng(little) << true << 1 << false << qint64(0) << "M9 Digital Camera";

    QByteArray magic43 = sampleM9Dng();
    magic43[3] = 43;
    QTest::newRow("MM and 43") << magic43 << false << 0 << true << qint64(0) << "n.a.";

    // A JPEG from the camera: recognised, never walked, so the model stays unknown.
    const QByteArray exif = sampleM9Dng();
    QTest::newRow("JPEG with Exif")
        << jpegWithExif(exif.left(4096)) << false << 2 << true << qint64(12) << "n.a.";
    QTest::newRow("JPEG with APP0 and Exif")
        << jpegWithExif(exif.left(4096), true) << false << 2 << true << qint64(30) << "n.a.";
    QTest::newRow("JPEG without Exif")
        << jpegPicture(8, 8, 0xFF0000) << false << 0 << true << qint64(0) << "n.a.";
    QTest::newRow("text file") << QByteArray("MMMM not a picture") << false << 0 << true
                               << qint64(0) << "n.a.";
}

void TestLoading::recognition()
{
    QFETCH(QByteArray, bytes);
    TempFiles files;
    TM9File file(files.write("f.dng", bytes));
    QTEST(file.processFile(), "accepted");
    QTEST(file.fileTyp(), "fileTyp");
    QTEST(file.isBigEndian(), "bigEndian");
    QTEST(file.tiffBase(), "tiffBase");
    QTEST(file.exif().model, "model");
    QCOMPARE(file.hasPreviewImage(), file.fileTyp() == 1 && file.isValidModel());
}

void TestLoading::fileNames()
{
    TM9File file(QStringLiteral("/photos/2012/L1002622.DNG"));
    QCOMPARE(file.fileName(), QStringLiteral("L1002622.DNG"));
    QCOMPARE(file.fileNameComplete(), QStringLiteral("/photos/2012/L1002622.DNG"));
    QCOMPARE(TM9File().fileNameComplete(), QString());
}

void TestLoading::processesOnlyAcceptedModels_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("M9") << QByteArray("M9 Digital Camera") << true;
    QTest::newRow("M Monochrom") << QByteArray("M Monochrom") << true;
    QTest::newRow("other letter case") << QByteArray("M9 DIGITAL CAMERA") << false;
    QTest::newRow("trailing blank") << QByteArray("M Monochrom ") << false;
    QTest::newRow("another camera") << QByteArray("M8 Digital Camera") << false;
}

void TestLoading::processesOnlyAcceptedModels()
{
    QFETCH(QByteArray, model);
    SampleM9 options;
    options.model = model;
    TempFiles files;
    TM9File file(files.write("m.dng", sampleM9Dng(options)));
    QTEST(file.processFile(), "accepted");
    QTEST(file.isValidModel(), "accepted");
    // A rejected file is walked all the same, but its maker note is not.
    QCOMPARE(file.exif().exposureTime.den, 250u);
    QCOMPARE(file.leica().serialNumber == QLatin1String("3912204"), file.isValidModel());
    QCOMPARE(file.hasPreviewImage(), file.isValidModel());
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

void TestLoading::badInput_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing path") << QStringLiteral("/nonexistent/tolvik/L1000001.DNG");
    QTest::newRow("empty path") << QString();
    QTest::newRow("directory") << QDir::tempPath();
    QTest::newRow("character device") << QStringLiteral("/dev/zero");
    QTest::newRow("empty file") << QStringLiteral(":empty");
}

void TestLoading::badInput()
{
    QFETCH(QString, path);
    TempFiles files;
    if (path == QLatin1String(":empty"))
        path = files.write("empty.dng", QByteArray());
    TM9File file(path);
    QVERIFY(!file.processFile());
    QCOMPARE(file.fileTyp(), 0);
    QVERIFY(!file.hasPreviewImage());
    QVERIFY(!file.previewImage());
    QVERIFY(!file.processFilePreflight());
}

// Each file once hung or overran the reader; each must now end quickly with
// the answer its well-formed part gives.
void TestLoading::reproducers_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("IFD chain pointing back to IFD0") << "ifd-chain-loop.dng" << true;
    QTest::newRow("Exif pointer to its own IFD") << "exif-points-to-own-ifd.dng" << true;
    QTest::newRow("Exif pointers nested without end") << "exif-nested-deep.dng" << true;
    QTest::newRow("65535 entries") << "entry-count-65535.dng" << true;
    QTest::newRow("offsets near 0xFFFFFFFF") << "offsets-near-4g.dng" << true;
    QTest::newRow("text without terminator") << "unterminated-text.dng" << true;
    QTest::newRow("thousands of entries on one long text") << "long-text-many-times.dng" << true;
    QTest::newRow("CFA pattern of 0xFFFFFFFF bytes") << "cfa-count-huge.dng" << true;
    QTest::newRow("preview of 65535 x 65535 pixels") << "preview-size-huge.dng" << true;
    QTest::newRow("preview of 1 x 131072 pixels, scaled") << "preview-one-pixel-wide.dng" << true;
    QTest::newRow("Leica maker note of 32767 entries") << "leica-makernote-count-max.dng" << true;
}

void TestLoading::reproducers()
{
    QFETCH(QString, name);
    const QString path = QDir(qEnvironmentVariable("TOLVIK_TEST_DATA")).filePath(name);
    QVERIFY2(QFileInfo::exists(path), qPrintable(path));
    QElapsedTimer timer;
    timer.start();
    TM9File file(path);
    QTEST(file.processFile(), "accepted");
    QVERIFY(!file.previewImageScaled(64, 0) || file.previewImage()->width() < 8192);
    TM9File preflight(path);
    preflight.processFilePreflight();
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
}

void TestLoading::truncatedAtEveryLength()
{
    const QByteArray whole = smallSample();
    TempFiles files;
    const QString path = files.write("cut.dng", whole);
    QFile cut(path);
    for (qsizetype length = 0; length <= whole.size(); ++length) {
        QVERIFY(cut.open(QIODevice::WriteOnly | QIODevice::Truncate));
        cut.write(whole.constData(), length);
        cut.close();
        TM9File file(path);
        const bool accepted = file.processFile();
        // Once the model and the Exif data are there, the cut only costs values.
        if (length == whole.size()) {
            QVERIFY(accepted);
            QCOMPARE(file.leica().serialNumber, QStringLiteral("3912204"));
            QCOMPARE(file.previewImage()->size(), QSize(8, 6));
        }
        TM9File preflight(path);
        preflight.processFilePreflight();
    }
}

// The file is fetched in blocks: shifting the directories behind the raw data
// by 0 to 15 bytes puts every kind of field across a block edge once.
void TestLoading::valuesAcrossBlockEdges()
{
    TempFiles files;
    QList<std::pair<QString, QString>> unshifted;
    for (int shift = 0; shift < 16; ++shift) {
        SampleM9 options;
        options.withGps = true;
        options.rawDataBytes = 4096 + shift;
        TM9File file(files.write("shifted.dng", sampleM9Dng(options)));
        QVERIFY(file.processFile());
        auto rows = panelRows(panelTexts(file));
        rows.append({QStringLiteral("GPS"), file.gps_0x0002_LatitudeAsString()});
        if (shift == 0)
            unshifted = rows;
        QCOMPARE(rows, unshifted);
    }
    QCOMPARE(unshifted[1].second, QStringLiteral("3912204")); // from the maker note's sub-directory
}

void TestLoading::randomBytes()
{
    QRandomGenerator random(20120617);
    TempFiles files;
    const QByteArray sample = smallSample();
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = sample;
        // Random bytes behind a valid header, or flipped bytes in a real file.
        if (round % 2 == 0) {
            for (qsizetype i = 8; i < bytes.size(); ++i)
                bytes[i] = char(random.bounded(256));
        } else {
            for (int flips = 0; flips < 20; ++flips)
                bytes[random.bounded(int(bytes.size()))] = char(random.bounded(256));
        }
        const QString path = files.write(QStringLiteral("random%1.dng").arg(round), bytes);
        TM9File file(path);
        file.processFile();
        TM9File preflight(path);
        preflight.processFilePreflight();
    }
}

QTEST_MAIN(TestLoading)
#include "tst_loading.moc"
