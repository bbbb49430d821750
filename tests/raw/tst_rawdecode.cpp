// The raw decoder: the values of every storage mode against dcraw's, the
// directories' values, and hostile files rejected with a reason, quickly.

#include "raw/decode.h"
#include "tests/support/rawgen.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace fixture;

namespace {

// The stored (linearized) values as the reference program gives them, a
// 16-bit PGM: dcraw -D -4 -c writes the ActiveArea; LibRaw's unprocessed_raw
// the whole image, into FILE.pgm. Neither reads uncompressed tiles (dcraw
// reads them as one strip, LibRaw 0.20 the first tile from elsewhere): those
// are compared with the same picture in one strip, which dcraw checks.
bool referenceValues(const QString &program, const QString &path, int &width, int &height,
                     std::vector<quint16> &values)
{
    QProcess reference;
    const bool dcraw = program == QLatin1String("dcraw");
    reference.start(program, dcraw ? QStringList{QStringLiteral("-D"), QStringLiteral("-4"),
                                                 QStringLiteral("-c"), path}
                                   : QStringList{QStringLiteral("-q"), path});
    if (!reference.waitForFinished(60000))
        return false;
    QFile file(path + QStringLiteral(".pgm"));
    const QByteArray pgm = dcraw ? reference.readAllStandardOutput()
                                 : (file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    const QList<QByteArray> head = pgm.left(64).split('\n');
    if (head.size() < 4 || head[0] != "P5")
        return false;
    const QList<QByteArray> size = head[1].split(' ');
    width = size.value(0).toInt();
    height = size.value(1).toInt();
    const qsizetype start = head[0].size() + head[1].size() + head[2].size() + 3;
    if (pgm.size() - start != qsizetype(width) * height * 2)
        return false;
    values.resize(std::size_t(width) * std::size_t(height));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = quint16(uchar(pgm[start + qsizetype(2 * i)]) << 8 |
                            uchar(pgm[start + qsizetype(2 * i + 1)]));
    return true;
}

// A small CFA raw image in IFD0's SubIFD. The entries `first` adds come
// before the usual ones, so that they are the ones read.
QByteArray rawFile(const std::function<void(Ifd &)> &first,
                   QByteArray strip = QByteArray(64 * 48 * 2, '\x10'))
{
    auto raw = Ifd::make();
    first(*raw);
    raw->longValue(0x00FE, 0).longValue(0x0100, 64).longValue(0x0101, 48);
    raw->shortValue(0x0102, 16).shortValue(0x0103, 1).shortValue(0x0106, 32803);
    raw->offsetsTo(0x0111, {strip}, 0x0117);
    raw->shortValue(0x0115, 1).longValue(0x0116, 48);
    raw->shorts(0x828D, {2, 2}).bytes(0x828E, Byte, QByteArray("\x00\x01\x01\x02", 4));
    auto ifd0 = Ifd::make();
    ifd0->ascii(0x0110, "M9 Digital Camera").child(0x014A, raw);
    return tiff(Order::Little, ifd0);
}

} // namespace

class TstRawDecode : public QObject {
    Q_OBJECT

private slots:
    void sameAsDcraw_data();
    void sameAsDcraw();
    void directories();
    void hostile_data();
    void hostile();
    void fileErrors();
    void testPictures_data();
    void testPictures();
};

void TstRawDecode::sameAsDcraw_data()
{
    QTest::addColumn<int>("storage");
    QTest::addColumn<bool>("monochrom");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<int>("rowsPerStrip");
    QTest::addColumn<QString>("reference");
    QTest::addColumn<int>("width"); // not a multiple of 4: the packed rows' ends
    QTest::addColumn<int>("jpeg");  // lossless JPEG: predictor * 10 + components
    const QString dcraw = QStringLiteral("dcraw"), libraw = QStringLiteral("unprocessed_raw");
    for (RawStorage s : kRawStorages)
        QTest::addRow("%s", storageName(s))
            << int(s) << false << false << 0
            << (s == RawStorage::TiledUncompressed16 ? QStringLiteral("strip") : dcraw) << 600
            << 12;
    QTest::addRow("uncompressed16 big-endian")
        << int(RawStorage::Uncompressed16) << false << true << 0 << dcraw << 600 << 12;
    QTest::addRow("packed14 big-endian, 601 wide, strips of 50 rows")
        << int(RawStorage::Packed14) << false << true << 50 << dcraw << 601 << 12;
    QTest::addRow("packed12, 603 wide")
        << int(RawStorage::Packed12) << false << false << 0 << dcraw << 603 << 12;
    for (const auto &[predictor, components] :
         {std::pair{2, 1}, {3, 4}, {4, 2}, {5, 1}, {6, 4}, {7, 2}})
        QTest::addRow("losslessjpeg, predictor %d, %d components", predictor, components)
            << int(RawStorage::LosslessJpeg) << false << false << 0 << dcraw << 600
            << predictor * 10 + components;
    QTest::addRow("packed12, LibRaw")
        << int(RawStorage::Packed12) << false << false << 0 << libraw << 600 << 12;
    QTest::addRow("monochrom uncompressed16")
        << int(RawStorage::Uncompressed16) << true << false << 0 << dcraw << 600 << 12;
    QTest::addRow("monochrom linearized8")
        << int(RawStorage::Linearized8) << true << false << 0 << dcraw << 600 << 12;
}

void TstRawDecode::sameAsDcraw()
{
    QFETCH(int, storage);
    QFETCH(bool, monochrom);
    QFETCH(bool, bigEndian);
    QFETCH(int, rowsPerStrip);
    QFETCH(QString, reference);
    QFETCH(int, width);
    QFETCH(int, jpeg);
    if (reference != QLatin1String("strip") && QStandardPaths::findExecutable(reference).isEmpty())
        QSKIP(qPrintable(reference + QStringLiteral(" is not installed")));
    RawOptions options;
    options.storage = RawStorage(storage);
    options.monochrom = monochrom;
    options.order = bigEndian ? Order::Big : Order::Little;
    options.rowsPerStrip = rowsPerStrip;
    options.jpegPredictor = jpeg / 10;
    options.jpegComponents = jpeg % 10;
    options.width = width;
    options.height = 400;
    options.scene = RawScene::PhotoWithCharts;
    options.blackPattern = true;
    options.black = {58, 60, 61, 63};
    TempFiles files;
    const QString path = files.path(QStringLiteral("t.dng"));
    QVERIFY(writeRawDng(path, options));

    const raw::TDecodeResult decoded = raw::decodeFile(path);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const raw::TRawInfo &info = decoded.image.info;
    QCOMPARE(info.width, width);
    QCOMPARE(info.height, 400);
    QCOMPARE(info.layout, monochrom ? raw::TLayout::Linear : raw::TLayout::Cfa);

    int height = info.height;
    std::vector<quint16> expected;
    if (reference == QLatin1String("strip")) {
        options.storage = RawStorage::Uncompressed16;
        QVERIFY(writeRawDng(path, options));
        expected = raw::decodeFile(path).image.pixels;
    } else {
        QVERIFY(referenceValues(reference, path, width, height, expected));
    }
    const bool active = reference == QLatin1String("dcraw");
    QCOMPARE(width, active ? info.activeRight - info.activeLeft : info.width);
    QCOMPARE(height, active ? info.activeBottom - info.activeTop : info.height);
    const int left = active ? info.activeLeft : 0, top = active ? info.activeTop : 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const quint16 value = decoded.image.at(left + x, top + y);
            if (value != expected[std::size_t(y * width + x)])
                QFAIL(qPrintable(QStringLiteral("at %1, %2: %3, dcraw %4")
                                     .arg(x)
                                     .arg(y)
                                     .arg(value)
                                     .arg(expected[std::size_t(y * width + x)])));
        }
    }
}

void TstRawDecode::directories()
{
    RawOptions options;
    options.storage = RawStorage::Linearized8;
    options.width = 200;
    options.height = 120;
    options.blackPattern = true;
    options.blackDeltas = true;
    options.black = {58, 60, 61, 63};
    const RawGenerator generator(options);
    TempFiles files;
    const QString path = files.write(QStringLiteral("t.dng"), generator.dng());
    const raw::TDecodeResult result = raw::readInfo(path);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QVERIFY(result.image.pixels.empty());
    const raw::TRawInfo &info = result.image.info;
    QCOMPARE(info.model, QStringLiteral("M9 Digital Camera"));
    QCOMPARE(info.bitsPerSample, 8);
    QCOMPARE(info.linearization.size(), std::size_t(256));
    QCOMPARE(info.whiteLevel, generator.whiteLevel());
    const QRect active = generator.activeArea();
    QCOMPARE(QRect(QPoint(info.activeLeft, info.activeTop),
                   QPoint(info.activeRight - 1, info.activeBottom - 1)),
             active);
    QCOMPARE(QRectF(info.cropX, info.cropY, info.cropWidth, info.cropHeight),
             QRectF(generator.crop()));
    QCOMPARE(info.blackRepeatRows * info.blackRepeatColumns, 4);
    QCOMPARE(info.blackDeltaH.size(), std::size_t(active.width()));
    for (const QPoint &p :
         {active.topLeft(), active.bottomRight(), active.center(), QPoint(57, 31)})
        QCOMPARE(qRound(info.blackAt(p.x(), p.y()) * 100),
                 qRound(generator.blackAt(p.x(), p.y()) * 100));
    QCOMPARE(info.cfa, (std::array<uint8_t, 4>{raw::Red, raw::Green, raw::Green, raw::Blue}));
    QCOMPARE(info.calibrationIlluminant1, 17);
    QCOMPARE(info.calibrationIlluminant2, 21);
    QVERIFY(info.colorMatrix1.present && info.colorMatrix2.present && !info.forwardMatrix1.present);
    for (int i = 0; i < 9; ++i) {
        QCOMPARE(qRound(info.colorMatrix1.m[std::size_t(i)] * 1e4),
                 qRound(generator.colorMatrix1()[std::size_t(i)] * 1e4));
        QCOMPARE(qRound(info.colorMatrix2.m[std::size_t(i)] * 1e4),
                 qRound(generator.colorMatrix2()[std::size_t(i)] * 1e4));
    }
    QVERIFY(info.hasAsShotNeutral);
    for (int c = 0; c < 3; ++c)
        QCOMPARE(qRound(info.asShotNeutral[std::size_t(c)] * 1e6),
                 qRound(generator.asShotNeutral()[std::size_t(c)] * 1e6));
    QCOMPARE(info.baselineExposure, 0.5);

    // Values past the end of a LinearizationTable read as its last entry,
    // which is also the white level when the file states none.
    const raw::TDecodeResult table = raw::decodeBytes(rawFile([](Ifd &r) {
        r.shorts(0xC618, {5, 6, 7});
    }));
    QVERIFY2(table.ok(), qPrintable(table.error));
    QCOMPARE(table.image.info.whiteLevel, 7u);
    QVERIFY(std::all_of(table.image.pixels.begin(), table.image.pixels.end(),
                        [](quint16 v) { return v == 7; }));

    // A point transform drops low bits: the values are those of the same
    // picture uncompressed, without them.
    RawOptions jpeg;
    jpeg.width = 200;
    jpeg.height = 120;
    jpeg.bareIfd0 = true;
    const std::vector<quint16> plain = raw::decodeBytes(RawGenerator(jpeg).dng()).image.pixels;
    jpeg.storage = RawStorage::LosslessJpeg;
    jpeg.jpegPointTransform = 3;
    jpeg.jpegPredictor = 4;
    const std::vector<quint16> transformed =
        raw::decodeBytes(RawGenerator(jpeg).dng()).image.pixels;
    QCOMPARE(transformed.size(), plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i)
        QCOMPARE(transformed[i], quint16(plain[i] & ~7));
}

void TstRawDecode::hostile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("error");
    const auto none = [](Ifd &) {};
    QTest::addRow("100000 x 100000")
        << rawFile([](Ifd &r) { r.longValue(0x0100, 100000).longValue(0x0101, 100000); })
        << "exceeds the limit";
    QTest::addRow("16000 x 16000 in 6 KB") << rawFile([](Ifd &r) {
        r.longValue(0x0100, 16000).longValue(0x0101, 16000).longValue(0x0116, 16000);
    }) << "the pixels need";
    QByteArray cut = rawFile(none);
    cut.chop(100);
    QTest::addRow("strip cut short") << cut << "raw data cut short";
    QTest::addRow("strip too small") << rawFile(none, QByteArray(1000, '\0')) << "the pixels need";
    QTest::addRow("unknown compression")
        << rawFile([](Ifd &r) { r.shortValue(0x0103, 8); }) << "compression 8 (Deflate)";
    QTest::addRow("CFA 3 x 3") << rawFile([](Ifd &r) { r.shorts(0x828D, {3, 3}); }) << "2 x 2";
    QTest::addRow("LinearRaw, 3 samples")
        << rawFile([](Ifd &r) { r.shortValue(0x0106, 34892).shortValue(0x0115, 3); })
        << "3 samples";
    QTest::addRow("strips: rows per strip wants 2 strips")
        << rawFile([](Ifd &r) { r.longValue(0x0116, 24); }) << "needs 2 strips";
    QTest::addRow("tiles: 4 needed, 1 listed") << rawFile([](Ifd &r) {
        r.longValue(0x0142, 32)
            .longValue(0x0143, 32)
            .offsetsTo(0x0144, {QByteArray(2048, '\0')}, 0x0145);
    }) << "needs 4 tiles";
    QTest::addRow("no raw directory") << tiff(Order::Big, Ifd::make()) << "no raw image";
    QTest::addRow("not TIFF") << QByteArray("hello, world") << "not a TIFF file";

    // Lossless JPEG: a good file, then broken.
    RawOptions options;
    options.storage = RawStorage::LosslessJpeg;
    options.width = 64;
    options.height = 48;
    options.bareIfd0 = true;
    const QByteArray jpeg = RawGenerator(options).dng();
    QByteArray overflow = jpeg, noTable = jpeg, truncated = jpeg;
    const qsizetype dht = jpeg.indexOf("\xFF\xC4");
    overflow[dht + 5] = 3;   // three codes of one bit
    noTable[dht + 4] = 0x01; // the table is number 1, the scan uses 0
    QTest::addRow("lossless JPEG, Huffman codes overflow") << overflow << "bad Huffman table";
    QTest::addRow("lossless JPEG, Huffman table missing") << noTable << "bad Huffman table";
    truncated.replace(jpeg.indexOf("\xFF\xD9") - 200, 2, "\xFF\xD9"); // the scan ends early
    QTest::addRow("lossless JPEG, cut short") << truncated << "cut short";
    QByteArray sof0 = jpeg;
    sof0[jpeg.indexOf("\xFF\xC3") + 1] = char(0xC0);
    QTest::addRow("JPEG, not lossless") << sof0 << "SOF0";
}

void TstRawDecode::hostile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, error);
    QElapsedTimer timer;
    timer.start();
    const raw::TDecodeResult result = raw::decodeBytes(bytes);
    QVERIFY2(result.error.contains(error), qPrintable(result.error));
    QVERIFY(result.image.pixels.empty());
    QVERIFY(timer.elapsed() < 2000); // a generous guard: these fail before reading pixels
}

void TstRawDecode::fileErrors()
{
    TempFiles files;
    QVERIFY(raw::decodeFile(files.path(QStringLiteral("gone.dng")))
                .error.contains(QLatin1String("No such file or directory")));
    RawOptions options;
    options.width = 64;
    options.height = 48;
    options.bareIfd0 = true;
    const QString path = files.write(QStringLiteral("t.dng"), RawGenerator(options).dng());
    const std::atomic<bool> cancel{true};
    QCOMPARE(raw::decodeFile(path, &cancel).error, QStringLiteral("cancelled"));
    QVERIFY(raw::decodeFile(path).ok());
}

// The test pictures: a neutral grey is recorded in the ratios of
// AsShotNeutral (what the DNG colour pipeline means by it), and the truth is
// the scene wherever nothing clips (the pipeline run back on the raw values).
void TstRawDecode::testPictures_data()
{
    QTest::addColumn<int>("storage");
    QTest::addColumn<bool>("monochrom");
    QTest::addColumn<int>("tolerance"); // 8-bit codes are coarse in the shadows
    QTest::addRow("uncompressed16") << int(RawStorage::Uncompressed16) << false << 1;
    QTest::addRow("linearized8") << int(RawStorage::Linearized8) << false << 10;
    QTest::addRow("monochrom") << int(RawStorage::Uncompressed16) << true << 1;
}

void TstRawDecode::testPictures()
{
    QFETCH(int, storage);
    QFETCH(bool, monochrom);
    QFETCH(int, tolerance);
    RawOptions options;
    options.storage = RawStorage(storage);
    options.monochrom = monochrom;
    options.width = 600;
    options.height = 400;
    options.scene = RawScene::Charts;
    options.blackPattern = true;
    options.black = {58, 60, 61, 63};
    const RawGenerator generator(options);
    const raw::TDecodeResult decoded = raw::decodeBytes(generator.dng());
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));

    // The grey patch 0xA0A0A0: third of the last row of the colour patches.
    const QRect active = generator.activeArea();
    const int cw = active.width() / 2, ch = active.height() / 2;
    const QPoint centre = active.topLeft() + QPoint(cw + cw / 6 * 5 / 2, ch + ch / 4 * 7 / 2);
    std::array<double, 3> sum{};
    std::array<int, 3> count{};
    for (int y = centre.y() - 4; y < centre.y() + 4; ++y) {
        for (int x = centre.x() - 4; x < centre.x() + 4; ++x) {
            const std::size_t c = monochrom ? 1 : decoded.image.info.colourAt(x, y);
            sum[c] += decoded.image.at(x, y) - generator.blackAt(x, y);
            ++count[c];
        }
    }
    if (!monochrom) {
        for (std::size_t c : {0, 2}) {
            const double ratio = sum[c] / count[c] / (sum[1] / count[1]);
            const double expected = generator.asShotNeutral()[c] / generator.asShotNeutral()[1];
            QVERIFY2(std::abs(ratio / expected - 1) < 0.01, qPrintable(QString::number(ratio)));
        }
    }

    const QImage truth = generator.truth();
    const QImage scene = generator.scene().copy(generator.crop());
    QCOMPARE(truth.size(), scene.size());
    int worst = 0;
    for (int y = 0; y < truth.height(); ++y) {
        for (int x = 0; x < truth.width(); ++x) {
            const QRgb t = truth.pixel(x, y), s = scene.pixel(x, y);
            // The Monochrom records luminance.
            const auto linear = [](int v) { return std::pow((v / 255.0 + 0.055) / 1.055, 2.4); };
            const double y =
                0.2126 * linear(qRed(s)) + 0.7152 * linear(qGreen(s)) + 0.0722 * linear(qBlue(s));
            const int grey = qRound(255 * (1.055 * std::pow(y, 1 / 2.4) - 0.055));
            worst = std::max({worst, std::abs(qRed(t) - (monochrom ? grey : qRed(s))),
                              std::abs(qGreen(t) - (monochrom ? grey : qGreen(s))),
                              std::abs(qBlue(t) - (monochrom ? grey : qBlue(s)))});
        }
    }
    QVERIFY2(worst <= tolerance, qPrintable(QString::number(worst)));
}

QTEST_MAIN(TstRawDecode)
#include "tst_rawdecode.moc"
