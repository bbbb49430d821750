// The sensor check on small generated cards: each kind of fault found where
// it was put and nothing else, a clean card clean, frames that cannot count
// skipped and counted, and the JSON of tolvik-info --sensor-check.

#include "raw/decode.h"
#include "raw/sensorcheck.h"
#include "tests/support/rawgen.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace fixture;

namespace {

constexpr int kWidth = 1024, kHeight = 768, kFrames = 10;

RawOptions frameOptions(int frame)
{
    RawOptions o;
    o.width = kWidth;
    o.height = kHeight;
    o.scene = RawScene::Photo;
    o.frame = frame + 1;
    o.framePart = 0.4; // frames as different as on a card
    return o;
}

raw::TRawImage decoded(const RawOptions &options)
{
    raw::TDecodeResult r = raw::decodeBytes(RawGenerator(options).dng());
    return r.image;
}

raw::TSensorCheckResult check(const QList<PixelDefect> &defects, const QList<Spot> &spots,
                              int restingFrame, bool monochrom, RawStorage storage)
{
    std::unique_ptr<raw::TSensorCheck> check;
    for (int f = 0; f < kFrames; ++f) {
        RawOptions o = frameOptions(f);
        o.spots = spots;
        o.monochrom = monochrom;
        o.storage = storage;
        if (f != restingFrame)
            o.defects = defects;
        const raw::TRawImage image = decoded(o);
        if (!check)
            check = std::make_unique<raw::TSensorCheck>(image.info);
        check->addFrame(image);
    }
    return check->result();
}

} // namespace

class TstSensorCheck : public QObject {
    Q_OBJECT
private slots:
    void faults_data();
    void faults();
    void skipped();
    void cliJson();
};

void TstSensorCheck::faults_data()
{
    QTest::addColumn<QList<PixelDefect>>("defects");
    QTest::addColumn<QList<Spot>>("spots");
    QTest::addColumn<QString>("found"); // kind x y [radius], or empty
    QTest::addColumn<bool>("monochrom");
    QTest::addColumn<RawStorage>("storage");
    const auto defect = [](PixelDefect::Kind kind, int x, int y) {
        PixelDefect d;
        d.kind = kind;
        d.at = QPoint(x, y);
        return QList<PixelDefect>{d};
    };
    QTest::newRow("clean") << QList<PixelDefect>() << QList<Spot>() << QString() << false
                           << RawStorage::Uncompressed16;
    QTest::newRow("hot") << defect(PixelDefect::Hot, 201, 150) << QList<Spot>()
                         << QStringLiteral("hot 201 150") << false << RawStorage::Uncompressed16;
    QTest::newRow("stuck") << defect(PixelDefect::Stuck, 400, 333) << QList<Spot>()
                           << QStringLiteral("stuck 400 333") << false
                           << RawStorage::Uncompressed16;
    QTest::newRow("hot, Monochrom")
        << defect(PixelDefect::Hot, 333, 222) << QList<Spot>() << QStringLiteral("hot 333 222")
        << true << RawStorage::Uncompressed16;
    QTest::newRow("dead, Monochrom")
        << defect(PixelDefect::Dead, 500, 100) << QList<Spot>() << QStringLiteral("dead 500 100")
        << true << RawStorage::Uncompressed16;
    QTest::newRow("stuck, 8 bits and a table")
        << defect(PixelDefect::Stuck, 611, 407) << QList<Spot>() << QStringLiteral("stuck 611 407")
        << false << RawStorage::Linearized8;
    QTest::newRow("dead, 12 bits")
        << defect(PixelDefect::Dead, 222, 555) << QList<Spot>() << QStringLiteral("dead 222 555")
        << false << RawStorage::Packed12;
    QTest::newRow("hot, lossless JPEG")
        << defect(PixelDefect::Hot, 700, 300) << QList<Spot>() << QStringLiteral("hot 700 300")
        << false << RawStorage::LosslessJpeg;
    QTest::newRow("dead") << defect(PixelDefect::Dead, 77, 260) << QList<Spot>()
                          << QStringLiteral("dead 77 260") << false << RawStorage::Uncompressed16;
    QTest::newRow("dust") << QList<PixelDefect>() << QList<Spot>{{QPointF(150, 120), 20, -0.3}}
                          << QStringLiteral("dust 150 120 20") << false
                          << RawStorage::Uncompressed16;
    QTest::newRow("bright") << QList<PixelDefect>() << QList<Spot>{{QPointF(160, 110), 16, 0.25}}
                            << QStringLiteral("bright 160 110 16") << false
                            << RawStorage::Uncompressed16;
    QTest::newRow("strong dust") << QList<PixelDefect>()
                                 << QList<Spot>{{QPointF(140, 360), 20, -0.5}}
                                 << QStringLiteral("dust 140 360 20") << false
                                 << RawStorage::Uncompressed16;
    QTest::newRow("black dust") << QList<PixelDefect>()
                                << QList<Spot>{{QPointF(150, 120), 20, -0.8}}
                                << QStringLiteral("dust 150 120 20") << false
                                << RawStorage::Uncompressed16;
    QTest::newRow("strong bright")
        << QList<PixelDefect>() << QList<Spot>{{QPointF(140, 360), 25, 0.4}}
        << QStringLiteral("bright 140 360 25") << false << RawStorage::Uncompressed16;
    QTest::newRow("bright with a halo")
        << QList<PixelDefect>() << QList<Spot>{{QPointF(160, 110), 22, 0.15, 0.05}}
        << QStringLiteral("bright 160 110 22") << false << RawStorage::Uncompressed16;
}

// One fault (or none) on a card of ten frames: exactly it is found. A hot
// pixel rests in one frame and is still hot in nine.
void TstSensorCheck::faults()
{
    QFETCH(QList<PixelDefect>, defects);
    QFETCH(QList<Spot>, spots);
    QFETCH(QString, found);
    QFETCH(bool, monochrom);
    QFETCH(RawStorage, storage);
    const bool hot = !defects.isEmpty() && defects.first().kind == PixelDefect::Hot;
    const raw::TSensorCheckResult r = check(defects, spots, hot ? 3 : -1, monochrom, storage);
    QCOMPARE(r.frames, kFrames);
    QCOMPARE(r.width, kWidth);
    const QStringList want = found.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList got;
    for (const raw::TSensorDefect &d : r.defects)
        got << QStringLiteral("%1 %2 %3 in %4")
                   .arg(QLatin1String(raw::defectKindName(d.kind)))
                   .arg(d.x)
                   .arg(d.y)
                   .arg(d.frames);
    for (const raw::TSensorSpot &s : r.spots)
        got << QStringLiteral("%1 %2 %3 %4 %5 %")
                   .arg(s.bright ? "bright" : "dust")
                   .arg(s.x)
                   .arg(s.y)
                   .arg(s.radius)
                   .arg(s.contrastPercent);
    QCOMPARE(got.size(), want.isEmpty() ? 0 : 1);
    if (want.isEmpty())
        return;
    if (want.size() == 3) {
        const int frames = want[0] == QLatin1String("hot") ? kFrames - 1 : kFrames;
        QCOMPARE(got.first(), found + QStringLiteral(" in %1").arg(frames));
        return;
    }
    const raw::TSensorSpot &s = r.spots.front();
    const double radius = want[3].toDouble();
    QVERIFY2(std::hypot(s.x - want[1].toDouble(), s.y - want[2].toDouble()) <= 3 &&
                 std::abs(s.radius - radius) <= radius / 4 &&
                 s.bright == (want[0] == QLatin1String("bright")),
             qPrintable(got.first()));
    const double contrast = spots.first().contrast * 100;
    QVERIFY2(std::abs(s.contrastPercent - contrast) <= std::abs(contrast) / 3,
             qPrintable(got.first()));
    QCOMPARE(s.frames, kFrames);
}

// Frames of another camera, of another raw size and cut short are counted,
// not checked; the others are.
void TstSensorCheck::skipped()
{
    QTemporaryDir dir;
    QStringList files;
    const auto write = [&](const QString &name, const QByteArray &bytes) {
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        files << file.fileName();
    };
    for (int f = 0; f < 3; ++f)
        write(QStringLiteral("L%1.DNG").arg(f), RawGenerator(frameOptions(f)).dng());
    RawOptions mono = frameOptions(4);
    mono.monochrom = true;
    write(QStringLiteral("mono.DNG"), RawGenerator(mono).dng());
    RawOptions small = frameOptions(5);
    small.width = 320;
    small.height = 240;
    write(QStringLiteral("small.DNG"), RawGenerator(small).dng());
    const QByteArray whole = RawGenerator(frameOptions(6)).dng();
    write(QStringLiteral("short.DNG"), whole.left(whole.size() / 2));
    write(QStringLiteral("missing.DNG"), QByteArray());

    raw::TSensorCheckOptions options;
    options.jobs = 2;
    QStringList problems;
    options.progress = [&](int done, int total, const QString &path, const QString &problem) {
        QCOMPARE(total, files.size());
        QVERIFY(done >= 1 && done <= total);
        if (!problem.isEmpty())
            problems << QFileInfo(path).fileName();
    };
    const raw::TSensorCheckResult r = raw::checkSensor(files, options);
    QCOMPARE(r.frames, 3);
    QCOMPARE(r.skippedOtherCamera, 1);
    QCOMPARE(r.skippedOtherSize, 1);
    QCOMPARE(r.skippedCutShort, 2);
    problems.sort();
    QCOMPARE(problems, QStringList({"missing.DNG", "mono.DNG", "short.DNG", "small.DNG"}));
    QVERIFY(r.defects.empty() && r.spots.empty());

    std::atomic<bool> cancel{true};
    options.cancel = &cancel;
    options.progress = nullptr;
    const raw::TSensorCheckResult stopped = raw::checkSensor(files, options);
    QVERIFY(stopped.cancelled);
    QCOMPARE(stopped.frames, 0);
}

// tolvik-info --sensor-check --json: one object with the frames, the map's
// size, what was skipped, and the defects and spots in raw coordinates;
// status 1 when a file was skipped.
void TstSensorCheck::cliJson()
{
    QTemporaryDir dir;
    PixelDefect stuck;
    stuck.kind = PixelDefect::Stuck;
    stuck.at = QPoint(300, 200);
    for (int f = 0; f < 4; ++f) {
        RawOptions o = frameOptions(f);
        o.defects = {stuck};
        QVERIFY(writeRawDng(dir.filePath(QStringLiteral("L%1.DNG").arg(f)), o));
    }
    QProcess process;
    process.start(QStringLiteral(TOLVIK_INFO), {"--json", "--sensor-check", dir.path()});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    const QByteArray out = process.readAllStandardOutput();
    QCOMPARE(out.count('\n'), 1);
    const QJsonObject o = QJsonDocument::fromJson(out).object();
    QCOMPARE(o.keys(), QStringList({"defects", "frames", "height", "skipped", "spots", "width"}));
    QCOMPARE(o["frames"].toInt(), 4);
    QCOMPARE(o["width"].toInt(), kWidth);
    QCOMPARE(o["skipped"].toObject()["cut_short"].toInt(), 0);
    QCOMPARE(o["defects"].toArray().size(), 1);
    QCOMPARE(o["defects"][0].toObject(),
             QJsonObject({{"x", 300}, {"y", 200}, {"kind", "stuck"}, {"frames", 4}}));
    QCOMPARE(o["spots"].toArray().size(), 0);

    QFile broken(dir.filePath(QStringLiteral("L9.DNG")));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write(QByteArray("II*\0", 4)) == 4);
    broken.close();
    process.start(QStringLiteral(TOLVIK_INFO), {"--sensor-check", dir.path()});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("L9.DNG"));
    QVERIFY(process.readAllStandardOutput().contains("x   300  y   200  stuck  in 4 of 4 frames"));
    process.start(QStringLiteral(TOLVIK_INFO), {"--csv", "--sensor-check", dir.path()});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 2);
}

QTEST_GUILESS_MAIN(TstSensorCheck)
#include "tst_sensorcheck.moc"
