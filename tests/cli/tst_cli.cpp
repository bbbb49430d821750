// tolvik-info as a script uses it: rows, JSON lines, CSV, folders, exit
// status, messages.

#include "card/dngfiles.h"
#include "card/marks.h"
#include "tests/support/rawgen.h"
#include "tests/support/samplem9.h"
#include "tests/support/sonybuilder.h"

#include <QDir>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using namespace fixture;

namespace {

struct Run {
    int status = -1;
    QString out;
    QString err;
};

Run tolvikInfo(const QStringList &arguments,
               const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TOLVIK_INFO), arguments);
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QList<QJsonObject> jsonLines(const QString &out)
{
    QList<QJsonObject> objects;
    for (const QString &line : out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError || !document.isObject())
            return {};
        objects.append(document.object());
    }
    return objects;
}

// The text of a PDF's pages, as pdftotext lays it out.
QString pdfText(const QString &pdf)
{
    QProcess text;
    text.start("pdftotext", {"-layout", pdf, "-"});
    text.waitForFinished();
    return QString::fromUtf8(text.readAllStandardOutput());
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void exitStatus_data();
    void exitStatus();
    void rows();
    void neverOverAnInput_data();
    void neverOverAnInput();
    void fullDisk();
    void marking();
    void marksShown_data();
    void marksShown();
    void rawFiguresOnPaper_data();
    void rawFiguresOnPaper();
    void render_data();
    void render();
    void findings_data();
    void findings();
    void json();
    void exactJson();
    void stats();
    void contactSheet();
    void preflight();
    void sonyMakerNote();
    void folders_data();
    void folders();
    void csv();
    void sameOutputForAnyJobs();
    void sharedLibraries_data();
    void sharedLibraries();

private:
    TempFiles m_files;
    QString m_good, m_other, m_random, m_pdf;
};

void TestCli::initTestCase()
{
    SampleM9 options;
    options.withThumbnail = true;
    m_good = m_files.write("L1002622.DNG", sampleM9Dng(options));
    options.model = "M8 Digital Camera";
    m_other = m_files.write("L1000001.DNG", sampleM9Dng(options));
    m_random = m_files.write("random.dng", QByteArray(500, '\x42'));
    m_pdf = m_files.path("report.pdf");
}

void TestCli::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("accepted") << QStringList{":good"} << 0;
    QTest::newRow("rejected, then accepted") << QStringList{":random", ":good"} << 1;
    QTest::newRow("missing path") << QStringList{"/nonexistent/L1.DNG"} << 1;
    QTest::newRow("no file") << QStringList{} << 2;
    QTest::newRow("unknown option") << QStringList{"--xml", ":good"} << 2;
    QTest::newRow("jobs without a number") << QStringList{"-j", ":good"} << 2;
    QTest::newRow("help") << QStringList{"--help"} << 0;
    QTest::newRow("version") << QStringList{"--version"} << 0;
    QTest::newRow("preflight of another camera") << QStringList{"--preflight", ":other"} << 1;
    QTest::newRow("report") << QStringList{"--report", ":pdf", ":good"} << 0;
    QTest::newRow("report of another camera: nothing written")
        << QStringList{"--report", ":pdf", ":other"} << 1;
    // Options that cannot work together are never silently ignored.
    QTest::newRow("stats and contact sheet")
        << QStringList{"--stats", "--contact-sheet", ":pdf", ":good"} << 2;
    QTest::newRow("report of two files") << QStringList{"--report", ":pdf", ":good", ":good"} << 2;
    QTest::newRow("Sony maker note of a folder")
        << QStringList{"--sony-makernote", "8", ":folder"} << 2;
    QTest::newRow("json and csv") << QStringList{"--json", "--csv", ":good"} << 2;
    QTest::newRow("stats of exact values") << QStringList{"--stats", "--exact", ":good"} << 2;
    QTest::newRow("report as JSON") << QStringList{"--report", ":pdf", "--json", ":good"} << 2;
    QTest::newRow("raw figures and stats") << QStringList{"--raw-stats", "--stats", ":good"} << 2;
    QTest::newRow("raw figures of a report as CSV")
        << QStringList{"--raw-stats", "--csv", "--report", ":pdf", ":good"} << 2;
    QTest::newRow("sidecar name with stats")
        << QStringList{"--sidecar-name", "full", "--stats", ":good"} << 2;
    QTest::newRow("unknown sidecar name") << QStringList{"--sidecar-name", "short", ":good"} << 2;
}

void TestCli::exitStatus()
{
    QFETCH(QStringList, arguments);
    for (QString &a : arguments) {
        if (a == ":good")
            a = m_good;
        else if (a == ":random")
            a = m_random;
        else if (a == ":other")
            a = m_other;
        else if (a == ":pdf")
            a = m_pdf;
        else if (a == ":folder")
            a = m_files.path(".");
    }
    QFile::remove(m_pdf);
    const Run run = tolvikInfo(arguments);
    QTEST(run.status, "status");
    QCOMPARE(QFile::exists(m_pdf), run.status == 0 && arguments.contains(m_pdf));
    // A usage error says what is wrong in one line, not the whole help.
    if (run.status == 2)
        QVERIFY2(run.err.endsWith(QLatin1String("\nTry 'tolvik-info --help'.\n")) &&
                     run.err.count(QLatin1Char('\n')) == 2,
                 qPrintable(run.err));
    if (arguments == QStringList{"--version"})
        QCOMPARE(run.out, QStringLiteral("tolvik-info " TOLVIK_VERSION "\n"));
    if (arguments == QStringList{"--help"})
        QVERIFY(run.out.startsWith(QLatin1String("Usage: tolvik-info")));
}

void TestCli::neverOverAnInput_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("destination"); // in the folder of A.DNG and B.DNG
    QTest::addColumn<int>("status");
    for (const QString option : {"--report", "--contact-sheet"}) {
        const auto row = [&](const char *name, const char *destination, int status) {
            QTest::newRow(qPrintable(option + ", " + name)) << option << destination << status;
        };
        row("the input", "A.DNG", 2);
        row("a hard link to it", "hard.pdf", 2);
        row("a symbolic link to it", "soft.pdf", 2);
        row("a detour to it", "x/../A.DNG", 2);
        row("a DNG not read", "C.DNG", 2);
        row("a folder", "x", 2);
        row("in a missing folder", "gone/r.pdf", 2);
        row("an earlier report", "earlier.pdf", 0);
    }
}

// A slip of word order never costs a frame: the destination is refused
// before any file is read, and nothing changes.
void TestCli::neverOverAnInput()
{
    QFETCH(QString, option);
    QFETCH(QString, destination);
    fixture::TempFiles card;
    const QString a = card.write("A.DNG", sampleM9Dng());
    card.write("B.DNG", sampleM9Dng());
    const QString c = card.write("C.DNG", sampleM9Dng());
    QVERIFY(QDir().mkpath(card.path("x")));
    QVERIFY(::link(QFile::encodeName(a).constData(),
                   QFile::encodeName(card.path("hard.pdf")).constData()) == 0);
    QVERIFY(QFile::link(a, card.path("soft.pdf")));
    card.write("earlier.pdf", "%PDF-1.4\n%%EOF\n");
    const QByteArray rawBefore = sampleM9Dng();
    const QString target = card.path(destination);
    const QStringList inputs{a, card.path(option == "--report" ? "A.DNG" : "B.DNG")};

    const Run run =
        tolvikInfo(QStringList{option, target} + inputs.mid(option == "--report" ? 1 : 0));
    QTEST(run.status, "status");
    for (const QString &raw : {a, c})
        QCOMPARE(fileBytes(raw), rawBefore);
    if (run.status == 2) {
        QVERIFY2(run.err.startsWith("tolvik-info: " + target + ": ") &&
                     run.err.count(QLatin1Char('\n')) == 1,
                 qPrintable(run.err));
    } else {
        QVERIFY(fileBytes(target).startsWith("%PDF-"));
    }
    QCOMPARE(QDir(card.path(".")).entryList(QDir::Hidden | QDir::Files).size(), 6); // no leftovers
}

// A write that fails on a full disk says so and leaves nothing behind, a
// large PDF as a small picture.
void TestCli::fullDisk()
{
    if (QStandardPaths::findExecutable(QStringLiteral("unshare")).isEmpty())
        QSKIP("needs unshare to mount a small file system");
    QTemporaryDir small;
    fixture::TempFiles files;
    fixture::RawOptions tiny;
    tiny.width = 96;
    tiny.height = 80;
    QVERIFY(fixture::writeRawDng(files.path("T.DNG"), tiny));
    QProcess process;
    // A private mount of a 16 KB file system, filled up.
    process.start(QStringLiteral("unshare"),
                  {"-rm", "sh", "-c",
                   "mount -t tmpfs -o size=16k tmpfs \"$1\" || exit 77; "
                   "cat /dev/zero > \"$1/fill\" 2>/dev/null; "
                   "\"$2\" --report \"$1/r.pdf\" \"$3\"; echo \"status $?\"; "
                   "\"$2\" --half --render \"$1/t.jpg\" \"$4\"; echo \"status $?\"; ls -A \"$1\"",
                   "sh", small.path(), QStringLiteral(TOLVIK_INFO), m_good, files.path("T.DNG")});
    QVERIFY(process.waitForFinished(30000));
    if (process.exitCode() == 77 || process.exitCode() == 1)
        QSKIP("no private mounts here");
    const QString err = QString::fromUtf8(process.readAllStandardError());
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             QStringLiteral("status 2\nstatus 2\nfill\n"));
    for (const char *name : {"/r.pdf: No space left on device", "/t.jpg: No space left on device"})
        QVERIFY2(err.contains(small.path() + QLatin1String(name)), qPrintable(err));
}

// --rate, --reject and --label write the sidecars of a folder's files and
// change nothing else; a wrong value is a usage error.
void TestCli::marking()
{
    fixture::TempFiles card;
    const QString a = card.write("A.DNG", sampleM9Dng());
    const QString b = card.write("B.DNG", sampleM9Dng());
    QCOMPARE(tolvikInfo({"--rate", "4", "--label", "blue", card.path(".")}).status, 0);
    QCOMPARE(tolvikInfo({"--reject", b}).status, 0);
    const TMark first = readMarks(a, TSidecarNaming::BaseName).mark;
    const TMark second = readMarks(b, TSidecarNaming::BaseName).mark;
    QCOMPARE(std::tuple(first.rating, first.label), std::tuple(4, QStringLiteral("Blue")));
    QCOMPARE(std::tuple(second.rating, second.label), std::tuple(-1, QStringLiteral("Blue")));
    QCOMPARE(fileBytes(a), sampleM9Dng());
    for (const QStringList &wrong : {QStringList{"--rate", "6"}, QStringList{"--label", "Pink"},
                                     QStringList{"--rate", "2", "--reject"}})
        QCOMPARE(tolvikInfo(wrong + QStringList{a}).status, 2);
}

// The marks a file's sidecar holds end its text rows where it has them, and
// its CSV row and JSON object always; --sidecar-name picks the sidecar
// written and, where both exist, read.
void TestCli::marksShown_data()
{
    QTest::addColumn<QStringList>("marking"); // runs on A.DNG, "|" between; "cp FROM TO" copies
    QTest::addColumn<QStringList>("reading");
    QTest::addColumn<QString>("tail"); // how the output of A.DNG ends
    QTest::addColumn<QStringList>("sidecars");
    const QStringList fourBlue{"--rate", "4", "--label", "blue"};
    const QString id = QStringLiteral("  ImageID:                   10815\n");
    QTest::newRow("text, stars and label")
        << fourBlue << QStringList{}
        << id + "  Rating:                    \u2605\u2605\u2605\u2605\u2606\n"
                "  Label:                     Blue\n"
        << QStringList{"A.xmp"};
    QTest::newRow("text, rejected") << QStringList{"--reject"} << QStringList{}
                                    << id + "  Rating:                    rejected\n"
                                    << QStringList{"A.xmp"};
    QTest::newRow("text, unmarked: as before")
        << QStringList{} << QStringList{} << id << QStringList{};
    QTest::newRow("CSV, stars and label")
        << fourBlue << QStringList{"--csv"} << ",10815,4,Blue,\r\n"
        << QStringList{"A.xmp"};
    QTest::newRow("CSV, unmarked") << QStringList{} << QStringList{"--csv"} << ",10815,,,\r\n"
                                   << QStringList{};
    QTest::newRow("JSON, rejected")
        << QStringList{"--reject"} << QStringList{"--json"} << "\"rating\":-1,\"label\":null}\n"
        << QStringList{"A.xmp"};
    QTest::newRow("JSON, unmarked: null")
        << QStringList{} << QStringList{"--json"} << "\"rating\":null,\"label\":null}\n"
        << QStringList{};
    QTest::newRow("full name written") << QStringList{"--sidecar-name", "full", "--rate", "2"}
                                       << QStringList{"--json"} << "\"rating\":2,\"label\":null}\n"
                                       << QStringList{"A.DNG.xmp"};
    const QStringList both{"--rate",         "1",    "|",      "cp", "A.xmp", "A.DNG.xmp", "|",
                           "--sidecar-name", "full", "--rate", "5"};
    QTest::newRow("both names: base read")
        << both << QStringList{"--json"} << "\"rating\":1,\"label\":null}\n"
        << QStringList{"A.DNG.xmp", "A.xmp"};
    QTest::newRow("both names: full read")
        << both << QStringList{"--json", "--sidecar-name", "full"}
        << "\"rating\":5,\"label\":null}\n"
        << QStringList{"A.DNG.xmp", "A.xmp"};
}

void TestCli::marksShown()
{
    QFETCH(QStringList, marking);
    QFETCH(QStringList, reading);
    fixture::TempFiles card;
    const QString a = card.write("A.DNG", sampleM9Dng());
    for (const QString &run : marking.join(' ').split('|', Qt::SkipEmptyParts)) {
        const QStringList words = run.split(' ', Qt::SkipEmptyParts);
        if (words.first() == "cp")
            QVERIFY(QFile::copy(card.path(words[1]), card.path(words[2])));
        else
            QCOMPARE(tolvikInfo(words + QStringList{a}).status, 0);
    }
    const Run run = tolvikInfo(reading + QStringList{a});
    QCOMPARE(run.status, 0);
    QFETCH(QString, tail);
    QVERIFY2(run.out.endsWith(tail), qPrintable(run.out.right(200)));
    QTEST(QDir(card.path(".")).entryList({"*.xmp"}, QDir::Files, QDir::Name), "sidecars");
}

// With --raw-stats the contact sheet and the report carry the figures
// tolvik-info --raw-stats gives of a frame whose red channel clips; the
// sheet shows its stars and label always.
void TestCli::rawFiguresOnPaper_data()
{
    QTest::addColumn<QStringList>("arguments"); // :pdf, then the frame
    QTest::addColumn<QStringList>("shown");     // :R, :G, :B the channels' "R 4.50% 0.00 EV"
    QTest::addColumn<QString>("absent");
    const QString stars = QStringLiteral("\u2605\u2605\u2605\u2605\u2606");
    QTest::newRow("contact sheet")
        << QStringList{"--raw-stats", "--contact-sheet"}
        << QStringList{stars, "Blue", "Clipped :R% \u00b7 Headroom 0.00 EV"} << "";
    QTest::newRow("contact sheet without figures")
        << QStringList{"--contact-sheet"} << QStringList{stars, "Blue"} << "Clipped";
    QTest::newRow("report") << QStringList{"--raw-stats", "--report"}
                            << QStringList{"Raw Exposure", ":R", ":G", ":B"} << "";
}

void TestCli::rawFiguresOnPaper()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, shown);
    QFETCH(QString, absent);
    fixture::TempFiles files;
    fixture::RawOptions frame;
    frame.width = 640;
    frame.height = 440;
    frame.channelGain = {4, 1, 1};
    const QString dng = files.path("L1000001.DNG");
    QVERIFY(fixture::writeRawDng(dng, frame));
    QCOMPARE(tolvikInfo({"--rate", "4", "--label", "blue", dng}).status, 0);
    // "L1000001.DNG  R 4.50% 0.00 EV  G 0.00% 0.50 EV  B 0.00% 0.84 EV"
    const QStringList figures = tolvikInfo({"--raw-stats", dng}).out.trimmed().split("  ");
    QCOMPARE(figures.size(), 4);
    QVERIFY2(figures[1].startsWith("R ") && figures[1].endsWith(" 0.00 EV") &&
                 !figures[1].startsWith("R 0.00%"),
             qPrintable(figures[1])); // red clips
    const QString pdf = files.path("out.pdf");
    const Run run = tolvikInfo(arguments + QStringList{pdf, dng});
    QCOMPARE(run.status, 0);
    const QString pages = pdfText(pdf).simplified();
    for (QString line : shown) {
        line.replace(":R%", figures[1].section(' ', 1, 1));
        for (int c = 1; c < 4; ++c)
            line.replace(QLatin1Char(':') + figures[c].left(1), figures[c]);
        QVERIFY2(pages.contains(line), qPrintable(line + " not in: " + pages));
    }
    QVERIFY(absent.isEmpty() || !pages.contains(absent));
}

void TestCli::render_data()
{
    QTest::addColumn<QStringList>("arguments"); // :a and :b the frames, :out the folder
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("written"); // name: width x height
    QTest::newRow("JPEG") << QStringList{"--render", ":out/a.jpg", ":a"} << 0
                          << QStringList{"a.jpg: 582x396"};
    QTest::newRow("half size, PNG") << QStringList{"--half", "--render", ":out/a.png", ":a"} << 0
                                    << QStringList{"a.png: 291x198"};
    QTest::newRow("16-bit TIFF") << QStringList{"--render", ":out/a.tif", ":a"} << 0
                                 << QStringList{"a.tif: 16-bit TIFF"};
    QTest::newRow("two files into a folder")
        << QStringList{"--format", "png", "--render", ":out", ":a", ":b"} << 0
        << QStringList{"A.png: 582x396", "B.png: 582x396"};
    QTest::newRow("another camera: nothing")
        << QStringList{"--render", ":out/c.jpg", ":other"} << 1 << QStringList{};
    QTest::newRow("over the raw file: refused")
        << QStringList{"--render", ":a", ":a"} << 2 << QStringList{};
    QTest::newRow("unknown extension")
        << QStringList{"--render", ":out/a.gif", ":a"} << 2 << QStringList{};
}

// --render develops each frame into a picture of the size its crop gives.
void TestCli::render()
{
    QFETCH(QStringList, arguments);
    fixture::TempFiles files;
    fixture::RawOptions frame;
    frame.width = 640;
    frame.height = 440;
    frame.scene = fixture::RawScene::Charts;
    QVERIFY(fixture::writeRawDng(files.path("A.DNG"), frame));
    QVERIFY(fixture::writeRawDng(files.path("B.DNG"), frame));
    QVERIFY(QDir().mkpath(files.path("out")));
    for (QString &a : arguments) {
        a.replace(":out", files.path("out"));
        a.replace(":a", files.path("A.DNG")).replace(":b", files.path("B.DNG"));
        a.replace(":other", m_other);
    }
    const QByteArray raw = fileBytes(files.path("A.DNG"));
    const Run run = tolvikInfo(arguments);
    QTEST(run.status, "status");
    QStringList written;
    for (const QFileInfo &file : QDir(files.path("out")).entryInfoList(QDir::Files, QDir::Name)) {
        // Qt reads no TIFF without a plugin: its header and its size.
        const QSize size = QImageReader(file.filePath()).size();
        const bool tiff =
            fileBytes(file.filePath()).startsWith("II*") && file.size() > 582 * 396 * 6;
        written.append(file.fileName() + QStringLiteral(": ") +
                       (tiff ? QStringLiteral("16-bit TIFF")
                             : QStringLiteral("%1x%2").arg(size.width()).arg(size.height())));
    }
    QTEST(written, "written");
    QCOMPARE(fileBytes(files.path("A.DNG")), raw);
}

void TestCli::rows()
{
    const Run run = tolvikInfo({m_random, m_good});
    QVERIFY(!run.out.contains(m_random));
    QVERIFY(run.out.startsWith(m_good + QLatin1Char('\n')));
    QVERIFY(!run.out.contains(QLatin1String("processFile"))); // only with --all
    for (const char *row :
         {"Camera:                    M9 Digital Camera", "Exp.Time:                  1/250 sec",
          "Lens:                      Summilux-M 50mm f/1.4 ASPH.",
          "SensorTemperature:         24C", "ImageID:                   10815"})
        QVERIFY2(run.out.contains(QLatin1String(row)), row);
}

// What a rejected or cut-short file was found to be, on stderr and in the
// error field of CSV and JSON, and the exit status of every way of reading
// it; a file cut short keeps the values read.
void TestCli::findings_data()
{
    QTest::addColumn<QByteArray>("bytes"); // empty: the file is not there
    QTest::addColumn<QString>("finding");
    QTest::addColumn<bool>("kept");
    SampleM9 m10;
    m10.model = "LEICA M10";
    const QByteArray whole = sampleM9Dng();
    QTest::newRow("another camera") << sampleM9Dng(m10) << "(Model: LEICA M10)" << false;
    QTest::newRow("not a TIFF file") << QByteArray("GIF89a", 6) << "(not a TIFF file)" << false;
    QTest::newRow("not there") << QByteArray() << "No such file or directory" << false;
    QTest::newRow("cut short") << whole.left(whole.size() - 100)
                               << QStringLiteral("file ends at byte %1").arg(whole.size() - 100)
                               << true;
}

void TestCli::findings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, finding);
    const QString path = bytes.isEmpty() ? m_files.path("none.dng") : m_files.write("f.dng", bytes);
    const Run csv = tolvikInfo({"--csv", path});
    QCOMPARE(csv.status, 1);
    QCOMPARE(tolvikInfo({"--stats", path}).status, 1);
    QVERIFY2(csv.err.startsWith(path + ": ") && csv.err.endsWith(finding + "\n"),
             qPrintable(csv.err));
    QVERIFY(csv.out.endsWith(finding + "\r\n"));
    const QJsonObject json = jsonLines(tolvikInfo({"--json", path}).out).value(0);
    QVERIFY(json["error"].toString().endsWith(finding));
    QTEST(json.contains("Camera"), "kept");
}

// The panel's rows and, with --all, every query.
void TestCli::json()
{
    const Run run = tolvikInfo({"--json", "--all", m_good, m_random});
    QCOMPARE(run.status, 1);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 2);
    const QJsonObject &o = objects[0];
    QCOMPARE(o["file"].toString(), m_good);
    QCOMPARE(o["processFile"].toBool(), true);
    QCOMPARE(o["Exp.Program"].toString(), QStringLiteral("Av [Aperture-priority]"));
    QCOMPARE(o["Date/Time"].toString(), QStringLiteral("2012:06:17 14:32:05"));
    QCOMPARE(o["exif_0x829A_ExposureTimeAsString"].toString(), QStringLiteral("1/250"));
    QCOMPARE(o["fileTyp"].toInt(), 1);
    QCOMPARE(o["hasPreviewImage"].toBool(), true);
    QCOMPARE(o["previewImage"].toString(), QStringLiteral("320x240"));
    QVERIFY(o["thumbnailImage"].isNull());
    QCOMPARE(o["exif_0x9204_ExpCompensationAsReal"].toDouble(), -2.0 / 3.0);
    QCOMPARE(o["leica.serialNumber"].toString(), QStringLiteral("3912204"));
    QCOMPARE(o["leica.measuredLV"].toDouble(), 12.34567);
    // A rejected file: what the pass found, to diagnose it by; without --all
    // its path and error alone.
    QCOMPARE(objects[1]["processFile"].toBool(true), false);
    QVERIFY(objects[1].contains("isBigEndian") && objects[1].contains("exif.model"));
    QVERIFY(!objects[1].contains("Camera"));
    QVERIFY(run.err.contains(m_random));
    QCOMPARE(jsonLines(tolvikInfo({"--json", m_random}).out).value(0).keys(),
             (QStringList{"error", "file"}));
}

// --exact: the camera's texts, and beside them numbers of JSON's own types;
// a value the file does not hold is null.
void TestCli::exactJson()
{
    SampleM9 options;
    options.iso = 0;
    options.withTemperature = false;
    const QString noIso = m_files.write("L1000002.DNG", sampleM9Dng(options));
    const Run run = tolvikInfo({"--exact", "--json", m_good, noIso});
    QCOMPARE(run.status, 0);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 2);
    const QJsonObject &o = objects[0];
    QCOMPARE(o["Exp.Time"].toString(), QStringLiteral("1/250"));
    QCOMPARE(o["Exp.Correction"].toString(), QStringLiteral("-0.7 EV"));
    QCOMPARE(o["date_time"].toString(), QStringLiteral("2012-06-17T14:32:05"));
    QCOMPARE(o["iso"].type(), QJsonValue::Double);
    QCOMPARE(o["iso"].toDouble(), 160.0);
    QCOMPARE(o["exposure_time_s"].toDouble(), 0.004);
    QCOMPARE(o["aperture_estimate"].toDouble(), 5.6);
    QCOMPARE(o["focal_length_mm"].toDouble(), 50.0);
    QCOMPARE(o["exposure_correction_ev"].toDouble(), -2.0 / 3.0);
    QCOMPARE(o["sensor_temperature_c"].toDouble(), 24.0);
    QCOMPARE(objects[1]["iso"].type(), QJsonValue::Null);
    QCOMPARE(objects[1]["sensor_temperature_c"].type(), QJsonValue::Null); // not 0
    QCOMPARE(objects[1]["SensorTemperature"].toString(), QStringLiteral("n.a"));
    QCOMPARE(objects[1]["ISO"].toString(), QStringLiteral("n.a"));

    // Text and CSV carry the texts alone.
    QVERIFY(tolvikInfo({"--exact", m_good}).out.contains(QStringLiteral("1/250\n")));
    QVERIFY(!tolvikInfo({"--exact", "--csv", m_good}).out.contains(QStringLiteral("iso")));
}

// --stats counts the accepted files of a card; the rejected one is reported.
void TestCli::stats()
{
    const Run run = tolvikInfo({"--stats", "--csv", m_good, m_other, m_good});
    QCOMPARE(run.status, 1);
    QVERIFY(run.err.contains(m_other));
    const QStringList lines = run.out.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    QCOMPARE(lines.value(0), QStringLiteral("category,value,frames"));
    for (const char *line : {"Lens,Summilux-M 50mm f/1.4 ASPH.,2", "Exposure time,1/250,2",
                             "Day,2012-06-17,2", "Aperture (camera's estimate),\u2248 f/5.6,2",
                             "Sensor temperature,24 \u00b0C \u2013 24 \u00b0C,2"})
        QVERIFY2(lines.contains(QString::fromUtf8(line)), line);
    QCOMPARE(lines.size(), 9);
}

// A folder of 21 frames and a rejected file: two pages of twenty, the header
// naming the folder, the frames and their day; the first frame, taken
// upright (orientation 6), placed upright.
void TestCli::contactSheet()
{
    TempFiles card;
    QVERIFY(QDir().mkpath(card.path("card")));
    SampleM9 options;
    options.orientation = 6;
    for (int i = 0; i < 21; ++i) {
        card.write(QStringLiteral("card/L10000%1.DNG").arg(i, 2, 10, QLatin1Char('0')),
                   sampleM9Dng(options));
        options.orientation = 1;
    }
    card.write("card/L1009999.DNG", QByteArray(500, '\x42'));
    const QString pdf = card.path("sheet.pdf");
    const Run run = tolvikInfo({"--contact-sheet", pdf, card.path("card")});
    QCOMPARE(run.status, 1);
    const QString pages = pdfText(pdf);
    for (const char *line :
         {"card \u00b7 22 frames \u00b7 2012-06-17", "Seite 1 / 2", "Seite 2 / 2", "L1000000.DNG",
          "\u2248 f/5.6 \u00b7 1/250 \u00b7 ISO 160 \u00b7 -0.7 EV", "L1009999.DNG"})
        QVERIFY2(pages.contains(QString::fromUtf8(line)), line);
    QProcess images;
    images.start("pdfimages", {"-list", pdf});
    QVERIFY(images.waitForFinished());
    const QStringList first = QString::fromUtf8(images.readAllStandardOutput())
                                  .split(QLatin1Char('\n'))
                                  .value(2)
                                  .simplified()
                                  .split(QLatin1Char(' '));
    QVERIFY2(first.value(4).toInt() > first.value(3).toInt(), qPrintable(first.join(' ')));
}

// The quick pass: model, IFD1 thumbnail, F-number and focal length (a
// camera's JPEG goes through it too; see tst_loading).
void TestCli::preflight()
{
    const Run run = tolvikInfo({"--preflight", "--json", m_good});
    QCOMPARE(run.status, 0);
    const QList<QJsonObject> objects = jsonLines(run.out);
    QCOMPARE(objects.size(), 1);
    QCOMPARE(objects[0]["processFilePreflight"].toBool(), true);
    QCOMPARE(objects[0]["Model"].toString(), QStringLiteral("M9 Digital Camera"));
    QCOMPARE(objects[0]["Thumbnail"].toString(), QStringLiteral("160x120"));
    QCOMPARE(objects[0]["F-Number"].toString(), QStringLiteral("5.6"));
    QCOMPARE(objects[0]["Focal Length"].toString(), QStringLiteral("50mm"));
}

void TestCli::sonyMakerNote()
{
    auto note = Ifd::make();
    note->shortValue(0xB001, 358)
        .bytes(0x9402, Undefined, sonyEncipher(sonyBlock(46, {{45, 0x50}})));
    const SonyFile sony = sonyArw("ILCE-9", note);
    const QString arw = m_files.write("DSC00001.ARW", sony.data);

    const Run json = tolvikInfo({"--json", "--all", "--sony-makernote",
                                 QStringLiteral("0x%1").arg(sony.makerNoteOffset, 0, 16), arw});
    const QList<QJsonObject> objects = jsonLines(json.out);
    QCOMPARE(objects.size(), 1);
    QCOMPARE(objects[0]["Model"].toString(), QStringLiteral("ILCE-9"));
    QCOMPARE(objects[0]["sony.focusPosition"].toInt(), 0x50);
    QVERIFY(objects[0].contains("mnSony_0xB001_SonyModelIDAsString"));
    QVERIFY(!objects[0].contains("mnSony_0x0102_QualityAsString")); // a tag the note lacks
    QVERIFY(!objects[0].contains("composite_FocusDistance"));       // no 35 mm focal length

    const Run past = tolvikInfo({"--sony-makernote", QString::number(sony.data.size()), arw});
    QCOMPARE(past.status, 1);
    QVERIFY(past.out.isEmpty() && past.err.contains(arw));
}

void TestCli::folders_data()
{
    // The tree: card/ with A.DNG, B.DNG, a0.dng (after B: character by
    // character, not by letter), notes.txt, a hidden ._A.DNG, sub/b.Dng,
    // sub/deeper/c.dng, sub/up -> .. and the loop x -> y -> x.
    const QString card = m_files.path(QStringLiteral("card"));
    QVERIFY(QDir().mkpath(card + QStringLiteral("/sub/deeper")));
    const QByteArray dng = sampleM9Dng();
    for (const char *name :
         {"A.DNG", "B.DNG", "a0.dng", "._A.DNG", "notes.txt", "sub/b.Dng", "sub/deeper/c.dng"})
        QVERIFY(writeFile(card + QLatin1Char('/') + QLatin1String(name), dng));
    QVERIFY(QFile::link(QStringLiteral(".."), card + QStringLiteral("/sub/up")));
    QVERIFY(QFile::link(QStringLiteral("y"), card + QStringLiteral("/x")));
    QVERIFY(QFile::link(QStringLiteral("x"), card + QStringLiteral("/y")));

    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("letter case, nesting, links that loop")
        << QStringList{card}
        << QStringList{"card/A.DNG", "card/B.DNG", "card/a0.dng", "card/sub/b.Dng",
                       "card/sub/deeper/c.dng"};
    QTest::newRow("a file named is read whatever its name")
        << QStringList{card + QStringLiteral("/notes.txt"), card + QStringLiteral("/sub/deeper")}
        << QStringList{"card/notes.txt", "card/sub/deeper/c.dng"};
    QTest::newRow("entered through a link")
        << QStringList{card + QStringLiteral("/sub/up")}
        << QStringList{"card/sub/up/A.DNG", "card/sub/up/B.DNG", "card/sub/up/a0.dng",
                       "card/sub/up/sub/b.Dng", "card/sub/up/sub/deeper/c.dng"};
}

void TestCli::folders()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, files);
    const Run run = tolvikInfo(QStringList{"--csv"} + arguments);
    QStringList read;
    for (const QString &row : run.out.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts).mid(1))
        read.append(QDir(m_files.path({})).relativeFilePath(row.section(QLatin1Char(','), 0, 0)));
    QCOMPARE(read, files);
    QCOMPARE(dngFilesIn(m_files.path(QStringLiteral("card"))),
             (QStringList{m_files.path("card/A.DNG"), m_files.path("card/B.DNG"),
                          m_files.path("card/a0.dng")}));
}

void TestCli::csv()
{
    const QString odd = m_files.write(QStringLiteral("L1,\"2\".DNG"), sampleM9Dng());
    const Run run = tolvikInfo({"--csv", odd, m_random});
    QCOMPARE(run.status, 1);
    QCOMPARE(run.err, m_random + QStringLiteral(": Fehler bei der Verarbeitung. Keine native "
                                                "DNG-Datei! (not a TIFF file)\n"));
    const QStringList rows = run.out.split(QStringLiteral("\r\n"));
    QCOMPARE(rows.size(), 4); // header, two files, the empty rest after the last CRLF
    QVERIFY(rows[0].startsWith(QLatin1String("file,Camera,Serial,FW,FileName,Date/Time,ISO,")));
    QVERIFY(rows[0].endsWith(QLatin1String(",ImageID,rating,label,error")));
    const QString quoted = QString(odd).replace(QLatin1Char('"'), QLatin1String("\"\""));
    QVERIFY(rows[1].startsWith(QLatin1Char('"') + quoted +
                               QStringLiteral("\",M9 Digital Camera,3912204,1.196,"
                                              "\"L1,\"\"2\"\".DNG\",2012:06:17")));
    QVERIFY(rows[1].endsWith(QLatin1String(",10815,,,")));
    QCOMPARE(rows[2], m_random + QString(20, QLatin1Char(',')) +
                          QStringLiteral(",Fehler bei der Verarbeitung. Keine native DNG-Datei! "
                                         "(not a TIFF file)"));
    // A comma alone is quoted too.
    const QString comma = m_files.write(QStringLiteral("L1,3.DNG"), sampleM9Dng());
    QVERIFY(tolvikInfo({"--csv", comma}).out.contains(QLatin1Char('"') + comma + "\","));
}

void TestCli::sameOutputForAnyJobs()
{
    // Accepted and rejected files mixed, more files than threads can hold.
    const QString folder = m_files.path(QStringLiteral("many"));
    QVERIFY(QDir().mkpath(folder));
    for (int i = 0; i < 40; ++i) {
        SampleM9 options;
        options.iso = quint16(100 + i);
        QVERIFY(writeFile(folder + QStringLiteral("/L%1.DNG").arg(i, 3, 10, QLatin1Char('0')),
                          i % 7 == 3 ? QByteArray(64, 'x') : sampleM9Dng(options)));
    }
    for (const char *format : {"--csv", "--json"}) {
        const Run one = tolvikInfo({format, "-j", "1", folder});
        const Run four = tolvikInfo({format, "-j4", folder});
        QCOMPARE(one.status, 1);
        QCOMPARE(four.status, one.status);
        QCOMPARE(four.out, one.out);
        QCOMPARE(four.err, one.err);
        QVERIFY(one.out.count(QLatin1Char('\n')) >= 40); // every file has its line
    }
}

// Reading and printing values load Qt Core alone; only a drawing loads Qt Gui
// (the dynamic loader names every library it loads, dlopen'ed ones too).
void TestCli::sharedLibraries_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("gui");
    QTest::newRow("text") << QStringList{":good"} << false;
    QTest::newRow("CSV of a folder, preflight")
        << QStringList{"--csv", "--preflight", ":folder"} << false;
    QTest::newRow("JSON, every value") << QStringList{"--json", "--all", ":good"} << false;
    QTest::newRow("report") << QStringList{"--report", ":pdf", ":good"} << true;
    QTest::newRow("contact sheet") << QStringList{"--contact-sheet", ":pdf", ":good"} << true;
}

void TestCli::sharedLibraries()
{
    QFETCH(QStringList, arguments);
    arguments.replaceInStrings(QStringLiteral(":good"), m_good);
    arguments.replaceInStrings(QStringLiteral(":folder"), QFileInfo(m_good).path());
    arguments.replaceInStrings(QStringLiteral(":pdf"), m_pdf);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_DEBUG"), QStringLiteral("libs"));
    const Run run = tolvikInfo(arguments, environment);
    QVERIFY(run.err.contains(QLatin1String("find library=libQt6Core.so")));
    QTEST(run.err.contains(QLatin1String("find library=libQt6Gui.so")), "gui");
}

QTEST_MAIN(TestCli)
#include "tst_cli.moc"
