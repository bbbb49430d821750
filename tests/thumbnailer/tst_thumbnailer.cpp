// tolvik-thumbnailer run by its entry's Exec line: a PNG of the preview,
// upright and no larger than asked, for M9 and M Monochrom files; nothing
// for any other file. In GNOME's sandbox too, which shows it only /usr, the
// input file and a writable /tmp, and no display.

#include "tests/support/rawgen.h"
#include "tests/support/samplem9.h"

#include <QFile>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace fixture;

namespace {

// A preview whose quarters tell which way it was turned.
QImage quarters()
{
    QImage image(320, 240, QImage::Format_RGB32);
    const QRgb colours[2][2] = {{qRgb(255, 0, 0), qRgb(0, 255, 0)},
                                {qRgb(0, 0, 255), qRgb(255, 255, 255)}};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, colours[y >= 120][x >= 160]);
    }
    return image;
}

// The entry's command, split into words; %s, %i and %o are filled in later.
QStringList execLine()
{
    QFile entry(QStringLiteral(TOLVIK_THUMBNAILER_ENTRY));
    if (!entry.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QStringList words;
    for (const QString &line : QString::fromUtf8(entry.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("Exec=")))
            words = line.mid(5).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    }
    if (!words.isEmpty() && words.first() == QLatin1String("tolvik-thumbnailer"))
        words.first() = QStringLiteral(TOLVIK_THUMBNAILER);
    return words;
}

// What gnome-desktop's thumbnail script puts before the command on a
// usr-merged system: /usr read-only, the input under /tmp, the output folder
// as /tmp, nothing shared; and the program from the build tree.
QStringList sandbox(const QString &input, const QString &outputFolder)
{
    QStringList args =
        QStringLiteral(
            "--ro-bind /usr /usr --ro-bind-try /etc/ld.so.cache /etc/ld.so.cache "
            "--symlink usr/bin /bin --symlink usr/lib /lib --symlink usr/lib64 /lib64 "
            "--symlink usr/sbin /sbin --ro-bind-try /var/cache/fontconfig /var/cache/fontconfig "
            "--ro-bind-try /etc/alternatives /etc/alternatives --proc /proc --dev /dev "
            "--chdir / --setenv GIO_USE_VFS local --unshare-all --die-with-parent --bind")
            .split(QLatin1Char(' '));
    args << outputFolder << "/tmp"
         << "--ro-bind" << input << "/tmp/gnome-desktop-file-to-thumbnail.dng"
         << "--ro-bind" << TOLVIK_THUMBNAILER << TOLVIK_THUMBNAILER;
    return args;
}

} // namespace

class TestThumbnailer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thumbnail_data();
    void thumbnail();
    void largerThanThePreview();
};

void TestThumbnailer::thumbnail_data()
{
    QTest::addColumn<QByteArray>("model"); // empty: a file of random bytes
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("sandboxed");
    QTest::addColumn<QSize>("expected"); // invalid: no thumbnail
    QTest::addColumn<QColor>("topLeft"); // the upright picture's top-left quarter

    const QByteArray m9 = "M9 Digital Camera";
    const QColor red(255, 0, 0), green(0, 255, 0), blue(0, 0, 255);
    QTest::newRow("as it is, large") << m9 << 1 << 256 << false << QSize(256, 192) << red;
    QTest::newRow("6: turned clockwise") << m9 << 6 << 128 << false << QSize(96, 128) << blue;
    QTest::newRow("8: turned counter-clockwise, Monochrom")
        << QByteArray("M Monochrom") << 8 << 128 << false << QSize(96, 128) << green;
    QTest::newRow("never enlarged") << m9 << 1 << 1024 << false << QSize(320, 240) << red;
    QTest::newRow("another camera: nothing")
        << QByteArray("M8 Digital Camera") << 1 << 256 << false << QSize() << QColor();
    QTest::newRow("not a raw file: nothing")
        << QByteArray() << 1 << 256 << false << QSize() << QColor();
    QTest::newRow("not there: nothing, and said so")
        << QByteArray("-") << 1 << 256 << false << QSize() << QColor();
    QTest::newRow("sandboxed as GNOME runs it")
        << m9 << 6 << 256 << true << QSize(192, 256) << blue;
    QTest::newRow("sandboxed, another camera: nothing")
        << QByteArray("M8 Digital Camera") << 1 << 256 << true << QSize() << QColor();
}

void TestThumbnailer::thumbnail()
{
    QFETCH(QByteArray, model);
    QFETCH(int, orientation);
    QFETCH(int, size);
    QFETCH(bool, sandboxed);
    QFETCH(QSize, expected);
    QFETCH(QColor, topLeft);
    if (sandboxed && (!TOLVIK_SANDBOX_TESTS ||
                      QProcess::execute(QStringLiteral("bwrap"),
                                        {"--ro-bind", "/", "/", "--unshare-all", "true"}) != 0))
        QSKIP("bwrap cannot make a sandbox here");

    QTemporaryDir input, output;
    SampleM9 options;
    options.model = model;
    options.orientation = quint16(orientation);
    options.preview = quarters();
    const QByteArray bytes = model.isEmpty() ? QByteArray(4000, '\x42') : sampleM9Dng(options);
    const QString raw = input.filePath(QStringLiteral("L1002622.DNG"));
    QVERIFY(model == "-" || writeFile(raw, bytes));
    const QString png = output.filePath(QStringLiteral("gnome-desktop-thumbnailer.png"));

    QStringList command = execLine();
    QCOMPARE(command.size(), 5);
    const QString in = sandboxed ? QStringLiteral("/tmp/gnome-desktop-file-to-thumbnail.dng") : raw;
    const QString out = sandboxed ? QStringLiteral("/tmp/gnome-desktop-thumbnailer.png") : png;
    command.replaceInStrings(QStringLiteral("%s"), QString::number(size));
    command.replaceInStrings(QStringLiteral("%i"), in);
    command.replaceInStrings(QStringLiteral("%o"), out);
    if (sandboxed)
        command = sandbox(raw, output.path()) + command;

    QProcess process;
    const QString program = sandboxed ? QStringLiteral("bwrap") : command.takeFirst();
    process.start(program, command);
    QVERIFY(process.waitForFinished(30000));
    const QByteArray err = process.readAllStandardError();

    QImageReader reader(png);
    if (!expected.isValid()) {
        QVERIFY(process.exitCode() != 0);
        QVERIFY(!QFile::exists(png));
        QCOMPARE(err.contains("No such file or directory"), model == "-");
        return;
    }
    QVERIFY2(process.exitCode() == 0, err.constData());
    QVERIFY2(err.isEmpty(), err.constData());
    QCOMPARE(reader.format(), QByteArray("png"));
    const QImage thumbnail = reader.read();
    QCOMPARE(thumbnail.size(), expected);
    // Scaled smoothly: the colour of the quarter, give or take the rounding
    // of the processor's scaling code.
    const QColor seen = thumbnail.pixelColor(expected.width() / 4, expected.height() / 4);
    QVERIFY2(std::abs(seen.red() - topLeft.red()) <= 2 &&
                 std::abs(seen.green() - topLeft.green()) <= 2 &&
                 std::abs(seen.blue() - topLeft.blue()) <= 2,
             qPrintable(seen.name()));
}

// Asked for more than the 320 x 240 preview holds: the frame developed at
// half size, scaled to the size asked for.
void TestThumbnailer::largerThanThePreview()
{
    QTemporaryDir dir;
    fixture::RawOptions frame;
    frame.width = 1400;
    frame.height = 1000;
    const QString raw = dir.filePath(QStringLiteral("L1000001.DNG"));
    QVERIFY(fixture::writeRawDng(raw, frame));
    const QString png = dir.filePath(QStringLiteral("t.png"));
    QCOMPARE(QProcess::execute(QStringLiteral(TOLVIK_THUMBNAILER), {"-s", "512", raw, png}), 0);
    QCOMPARE(QImageReader(png).size(), QSize(512, 364)); // 673 x 480 at half size
}

QTEST_GUILESS_MAIN(TestThumbnailer)
#include "tst_thumbnailer.moc"
