// The exposure figures against the same figures counted here plainly (every
// value less its black, sorted), on test pictures whose clipping is known;
// the raw histogram against the figures; and tolvik-info --raw-stats's JSON
// and CSV against the library.

#include "raw/decode.h"
#include "raw/rawhistogram.h"
#include "raw/rawstats.h"
#include "tests/support/rawgen.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <numeric>

using namespace fixture;

namespace {

struct TExpected {
    QString name;
    qint64 pixels = 0, clipped = 0;
    qint64 belowHalf = 0; // value - black below half of white - black
    double black = 0, p999 = 0;
    std::optional<double> headroom;
};

// Over the crop: the filter is RGGB at the stored origin, the Monochrom one channel.
QList<TExpected> expectedFigures(const RawGenerator &generator, const raw::TRawImage &image,
                                 const QRect &crop, bool monochrom)
{
    const double white = generator.whiteLevel();
    QList<TExpected> out(monochrom ? 1 : 3);
    std::vector<std::vector<double>> aboveBlack(std::size_t(out.size()));
    for (int y = crop.top(); y <= crop.bottom(); ++y) {
        for (int x = crop.left(); x <= crop.right(); ++x) {
            const int c = monochrom ? 0 : (x & 1) + (y & 1);
            const double black = generator.blackAt(x, y);
            aboveBlack[std::size_t(c)].push_back(image.at(x, y) - black);
            out[c].black += black;
            out[c].clipped += image.at(x, y) >= white ? 1 : 0;
            out[c].belowHalf += image.at(x, y) - black < (white - black) / 2 ? 1 : 0;
        }
    }
    for (qsizetype c = 0; c < out.size(); ++c) {
        std::vector<double> &values = aboveBlack[std::size_t(c)];
        std::sort(values.begin(), values.end());
        TExpected &e = out[c];
        e.name = monochrom ? QStringLiteral("L") : QString(QLatin1Char("RGB"[c]));
        e.pixels = qint64(values.size());
        e.black /= double(e.pixels);
        const qint64 rank = (999 * e.pixels + 999) / 1000; // the smallest k with k >= 0.999 n
        e.p999 = values[std::size_t(rank - 1)];
        if (e.p999 > 0)
            e.headroom = std::log2((white - e.black) / e.p999);
    }
    return out;
}

void compare(const raw::TRawFigures &figures, const QList<TExpected> &expected,
             const QString &clippedChannels)
{
    QVERIFY2(figures.ok(), qPrintable(figures.error));
    QCOMPARE(figures.channels.size(), expected.size());
    for (qsizetype c = 0; c < expected.size(); ++c) {
        const raw::TChannelFigures &f = figures.channels[c];
        const TExpected &e = expected[c];
        QCOMPARE(f.name, e.name);
        QCOMPARE(f.pixels, e.pixels);
        QCOMPARE(f.clipped, e.clipped);
        QCOMPARE(f.clipped > 0, clippedChannels.contains(e.name));
        QCOMPARE(f.clippedPercent, 100.0 * double(e.clipped) / double(e.pixels));
        QCOMPARE(f.p999, e.p999);
        QCOMPARE(f.headroomEv.has_value(), e.headroom.has_value());
        if (e.headroom)
            QVERIFY2(std::abs(*f.headroomEv - *e.headroom) < 0.01,
                     qPrintable(QStringLiteral("%1: %2 EV, expected %3")
                                    .arg(e.name)
                                    .arg(*f.headroomEv)
                                    .arg(*e.headroom)));
    }
}

// Every pixel of a channel lies in one bin of each axis, the clipped ones in
// the last, at white; half of white is -1 EV.
void compareHistogram(const raw::TRawHistogram &histogram, const raw::TRawFigures &figures,
                      const QList<TExpected> &expected)
{
    QCOMPARE(histogram.linear.size(), figures.channels.size());
    const auto sum = [](const QList<quint32> &bins, qsizetype to) {
        return std::accumulate(bins.begin(), bins.begin() + to, qint64(0));
    };
    for (qsizetype c = 0; c < figures.channels.size(); ++c) {
        const QList<quint32> &linear = histogram.linear[c], &ev = histogram.ev[c];
        QCOMPARE(sum(linear, linear.size()), figures.channels[c].pixels);
        QCOMPARE(sum(ev, ev.size()), figures.channels[c].pixels);
        QCOMPARE(qint64(linear.last()), figures.channels[c].clipped);
        QCOMPARE(qint64(ev.last()), figures.channels[c].clipped);
        QCOMPARE(sum(linear, raw::kLinearBins / 2), expected[c].belowHalf);
        QCOMPARE(sum(ev, raw::kEvBins - raw::kBinsPerEv), expected[c].belowHalf);
    }
}

} // namespace

class TstRawStats : public QObject {
    Q_OBJECT

private slots:
    void figures_data();
    void figures();
    void commandLine();
};

void TstRawStats::figures_data()
{
    QTest::addColumn<RawOptions>("options");
    QTest::addColumn<QString>("clipped"); // the channels with clipped pixels
    QTest::addColumn<bool>("oddCrop");    // starting a column and a row further
    const auto options = [](RawStorage storage, double stops, std::array<double, 3> gain) {
        RawOptions o;
        o.storage = storage;
        o.width = 400;
        o.height = 300;
        o.exposureStops = stops;
        o.channelGain = gain;
        return o;
    };
    QTest::newRow("red only") << options(RawStorage::Uncompressed16, 0, {4, 1, 1})
                              << QStringLiteral("R") << false;
    QTest::newRow("green and blue")
        << options(RawStorage::Packed14, 0, {0.5, 4, 4}) << QStringLiteral("GB") << false;
    QTest::newRow("none") << options(RawStorage::Packed12, 0, {1, 1, 1}) << QString() << false;
    QTest::newRow("8-bit with table")
        << options(RawStorage::Linearized8, 3, {1, 1, 1}) << QStringLiteral("RGB") << false;
    QTest::newRow("lossless JPEG tiles, red only")
        << options(RawStorage::LosslessJpeg, 0, {4, 1, 1}) << QStringLiteral("R") << false;
    RawOptions monochrom = options(RawStorage::Uncompressed16, 1, {1, 1, 1});
    monochrom.monochrom = true;
    QTest::newRow("Monochrom") << monochrom << QStringLiteral("L") << false;
    // A black per site (the two greens differ), then per row and column.
    RawOptions pattern = options(RawStorage::TiledUncompressed16, 0, {4, 1, 1});
    pattern.black = {60, 72.5, 48.25, 66};
    pattern.blackPattern = true;
    QTest::newRow("black pattern") << pattern << QStringLiteral("R") << false;
    QTest::newRow("black pattern, crop at an odd column and row")
        << pattern << QStringLiteral("R") << true;
    pattern.blackDeltas = true;
    QTest::newRow("black pattern and deltas") << pattern << QStringLiteral("R") << false;
}

void TstRawStats::figures()
{
    QFETCH(RawOptions, options);
    QFETCH(QString, clipped);
    QFETCH(bool, oddCrop);
    const RawGenerator generator(options);
    QByteArray dng = generator.dng();
    QRect crop = generator.crop().translated(generator.activeArea().topLeft());
    if (oddCrop) { // DefaultCropOrigin (LONG 2, 2): 3, 3, so that each run starts on another site
        const qsizetype entry = dng.indexOf(QByteArray("\x1f\xc6\x04\x00\x02\x00\x00\x00", 8));
        QVERIFY(entry > 0);
        const quint32 at = qFromLittleEndian<quint32>(dng.constData() + entry + 8);
        QVERIFY(qsizetype(at) + 8 <= dng.size());
        qToLittleEndian<quint32>(3, dng.data() + at);
        qToLittleEndian<quint32>(3, dng.data() + at + 4);
        crop.translate(1, 1);
    }
    const raw::TDecodeResult decoded = raw::decodeBytes(dng);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const QList<TExpected> expected =
        expectedFigures(generator, decoded.image, crop, options.monochrom);
    const raw::TRawFigures figures = raw::rawFigures(decoded.image);
    compare(figures, expected, clipped);
    compareHistogram(raw::rawHistogram(decoded.image), figures, expected);

    // Counted while decoding the file, without the picture: the same.
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("L1000001.DNG")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(dng) == dng.size());
    file.close();
    compare(raw::rawFiguresOfFile(file.fileName()), expected, clipped);
}

void TstRawStats::commandLine()
{
    QTemporaryDir dir;
    RawOptions options;
    options.width = 400;
    options.height = 300;
    options.channelGain = {4, 1, 1};
    const QString m9 = dir.filePath(QStringLiteral("L1000001.DNG"));
    QVERIFY(writeRawDng(m9, options));
    options.monochrom = true;
    options.channelGain = {1, 1, 1};
    const QString mono = dir.filePath(QStringLiteral("L1000002.DNG"));
    QVERIFY(writeRawDng(mono, options));
    const QString broken = dir.filePath(QStringLiteral("L1000003.DNG"));
    QFile junk(broken);
    QVERIFY(junk.open(QIODevice::WriteOnly) && junk.write("not a DNG") == 9);
    junk.close();
    const QStringList files{m9, mono, broken};
    const auto run = [&](const QString &option, int status = 1) {
        QProcess process;
        process.start(QStringLiteral(TOLVIK_INFO),
                      QStringList{QStringLiteral("--raw-stats"), option, QStringLiteral("-j2")} +
                          files);
        process.waitForFinished(60000);
        [&] { QCOMPARE(process.exitCode(), status); }();
        return process.readAllStandardOutput().split('\n');
    };
    // Options of other modes are usage errors, never ignored.
    run(QStringLiteral("--exact"), 2);
    run(QStringLiteral("--stats"), 2);

    const QList<QByteArray> json = run(QStringLiteral("--json"));
    QCOMPARE(json.size(), 4); // three lines and the empty rest
    const QStringList keys{QStringLiteral("clipped"), QStringLiteral("clipped_percent"),
                           QStringLiteral("p999"), QStringLiteral("headroom_ev")};
    for (int i = 0; i < 2; ++i) {
        const raw::TRawFigures figures = raw::rawFiguresOfFile(files[i]);
        const QJsonObject object = QJsonDocument::fromJson(json[i]).object();
        QCOMPARE(object.value(QStringLiteral("file")).toString(), files[i]);
        QCOMPARE(object.value(QStringLiteral("black")).toDouble(), figures.black);
        QCOMPARE(object.value(QStringLiteral("white")).toInteger(), qint64(figures.white));
        const QJsonObject channels = object.value(QStringLiteral("channels")).toObject();
        QCOMPARE(channels.size(), figures.channels.size());
        for (const raw::TChannelFigures &c : figures.channels) {
            const QJsonObject channel = channels.value(c.name).toObject();
            for (const QString &key : keys)
                QVERIFY2(channel.contains(key), qPrintable(c.name + QLatin1Char(' ') + key));
            QCOMPARE(channel.value(QStringLiteral("clipped")).toInteger(), c.clipped);
            QCOMPARE(channel.value(QStringLiteral("clipped_percent")).toDouble(), c.clippedPercent);
            QCOMPARE(channel.value(QStringLiteral("p999")).toDouble(), c.p999);
            QCOMPARE(channel.value(QStringLiteral("headroom_ev")).toDouble(), *c.headroomEv);
        }
    }
    QVERIFY(QJsonDocument::fromJson(json[2]).object().contains(QStringLiteral("error")));

    const QList<QByteArray> csv = run(QStringLiteral("--csv"));
    QCOMPARE(csv.size(), 5);
    const QList<QByteArray> header = csv[0].trimmed().split(',');
    const QList<QByteArray> red = csv[1].trimmed().split(',');
    QCOMPARE(header.size(), 3 + 4 * 4 + 1);
    QCOMPARE(red.size(), header.size());
    const raw::TRawFigures figures = raw::rawFiguresOfFile(m9);
    QCOMPARE(red[header.indexOf("R_clipped")].toLongLong(), figures.channels[0].clipped);
    QCOMPARE(red[header.indexOf("B_p999")].toDouble(), figures.channels[2].p999);
    QCOMPARE(red[header.indexOf("G_headroom_ev")].toDouble(), *figures.channels[1].headroomEv);
    QCOMPARE(csv[2].split(',')[header.indexOf("L_clipped")], "0");
    QVERIFY(csv[3].trimmed().endsWith("(not a TIFF file)"));
}

QTEST_GUILESS_MAIN(TstRawStats)
#include "tst_rawstats.moc"
