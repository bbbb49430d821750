// Culling marks in XMP sidecars: what exiftool reads back, what a rewrite
// keeps, which sidecar is used, what is refused, and that the raw file and a
// read-only card stay as they were.

#include "card/marks.h"
#include "tests/support/tiffbuilder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

Q_DECLARE_METATYPE(TMark)
Q_DECLARE_METATYPE(TSidecarNaming)

namespace {

const QByteArray kRdf =
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
    "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
    "<rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" ";

QByteArray packet(const QByteArray &attributes)
{
    return kRdf + attributes + "/></rdf:RDF></x:xmpmeta>\n";
}

// A small DNG, with an XMP packet in IFD0 when given.
QByteArray dng(const QByteArray &xmp = {}, fixture::Order order = fixture::Order::Little)
{
    auto ifd0 = fixture::Ifd::make();
    ifd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    if (!xmp.isEmpty())
        ifd0->bytes(700, fixture::Byte, xmp);
    ifd0->bytes(0xC612, fixture::Byte, QByteArray("\1\2\0\0", 4));
    return fixture::tiff(order, ifd0);
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

TMark mark(int rating, const char *label = "")
{
    return {rating, rating != 0, QLatin1String(label)};
}

// What exiftool prints, one sorted line each (its order is the packet's).
QStringList exiftool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("exiftool"), arguments);
    process.waitForFinished(-1);
    QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).trimmed().split('\n');
    lines.sort();
    return lines;
}

} // namespace

class TestMarks : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { m_exiftool = !QStandardPaths::findExecutable("exiftool").isEmpty(); }
    void written_data();
    void written();
    void keepsOtherProperties_data();
    void keepsOtherProperties();
    void brokenSidecarIsLeftAlone_data();
    void brokenSidecarIsLeftAlone();
    void embedded_data();
    void embedded();
    void folderRefuses_data();
    void folderRefuses();
    void batchUndoAndCancel();

private:
    bool m_exiftool = false;
};

void TestMarks::written_data()
{
    QTest::addColumn<TSidecarNaming>("naming");
    QTest::addColumn<QStringList>("existing"); // sidecars there before
    QTest::addColumn<TMark>("mark");
    QTest::addColumn<QString>("updated");
    QTest::addColumn<QString>("exiftool");
    const auto base = TSidecarNaming::BaseName;
    const auto full = TSidecarNaming::FullName;
    const QStringList none;
    QTest::newRow("new, base name") << base << none << mark(3, "Red") << "L1001234.xmp"
                                    << "3\nRed";
    QTest::newRow("new, full name") << full << none << mark(-1) << "L1001234.DNG.xmp"
                                    << "-1";
    QTest::newRow("label only") << base << none << mark(0, "Purple") << "L1001234.xmp"
                                << "Purple";
    QTest::newRow("unrated with 0 stars") << base << none << TMark{0, true, {}} << "L1001234.xmp"
                                          << "0";
    QTest::newRow("the other name exists: updated, no second")
        << base << QStringList{"L1001234.DNG.xmp"} << mark(5, "Green") << "L1001234.DNG.xmp"
        << "5\nGreen";
    QTest::newRow("both exist: the preferred one")
        << full << QStringList{"L1001234.xmp", "L1001234.DNG.xmp"} << mark(1) << "L1001234.DNG.xmp"
        << "1";
    QTest::newRow("marks removed")
        << base << QStringList{"L1001234.xmp"} << TMark() << "L1001234.xmp"
        << "";
}

// Exiftool reads what was written, the one sidecar is updated, the raw file's
// bytes stay.
void TestMarks::written()
{
    QFETCH(TSidecarNaming, naming);
    QFETCH(QStringList, existing);
    QFETCH(TMark, mark);
    QFETCH(QString, updated);
    fixture::TempFiles files;
    const QString raw = files.write("L1001234.DNG", dng(packet("xmp:Rating=\"2\"")));
    const QByteArray rawBytes = bytesOf(raw);
    for (const QString &name : existing)
        files.write(name, packet("xmp:Rating=\"4\" xmp:Label=\"Blue\""));
    const TMarkWrite write = writeMarks(raw, mark, naming);
    QCOMPARE(write.error, QString());
    QCOMPARE(int(write.outcome), int(TMarkOutcome::Written));
    QCOMPARE(write.sidecar, files.path(updated));
    QCOMPARE(write.before, existing.isEmpty() ? ::mark(2) : ::mark(4, "Blue"));
    QCOMPARE(QDir(files.path(".")).entryList({"*.xmp"}).size(), qMax(1, int(existing.size())));
    const TMarkRead read = readMarks(raw, naming);
    QCOMPARE(read.mark, mark);
    QCOMPARE(read.source, write.sidecar);
    QCOMPARE(bytesOf(raw), rawBytes);
    QCOMPARE(int(writeMarks(raw, mark, naming).outcome), int(TMarkOutcome::Unchanged));

    if (!m_exiftool)
        QSKIP("exiftool is not installed");
    QTEST(exiftool({"-XMP:Rating", "-XMP:Label", "-s3", write.sidecar}).join('\n'), "exiftool");
}

void TestMarks::keepsOtherProperties_data()
{
    // A sidecar as darktable writes it, with keywords, a develop history,
    // Camera Raw's settings and a namespace no one knows.
    const QByteArray darktable = bytesOf(QFINDTESTDATA("darktable.xmp"));
    QTest::addColumn<QByteArray>("sidecar");
    QTest::newRow("darktable's layout") << darktable;
    QTest::newRow("in a packet wrapper")
        << "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n" +
               darktable.mid(darktable.indexOf('\n') + 1) + "<?xpacket end=\"w\"?>";
}

// Keywords, a develop history, another program's settings and an unknown
// namespace survive a change of the marks, as exiftool reads them.
void TestMarks::keepsOtherProperties()
{
    QFETCH(QByteArray, sidecar);
    if (!m_exiftool)
        QSKIP("exiftool is not installed");
    fixture::TempFiles files;
    const QString raw = files.write("L1001234.DNG", dng());
    const QString path = files.write("L1001234.xmp", sidecar);
    const QStringList others = {
        "-a", "-G1",           "-s", "-XMP:all",         "-x", "XMP-xmp:Rating",
        "-x", "XMP-xmp:Label", "-x", "XMP-x:XMPToolkit", path};
    const QStringList before = exiftool(others);
    QVERIFY(before.size() >= 10);
    QCOMPARE(int(writeMarks(raw, mark(4, "Green"), TSidecarNaming::BaseName).outcome),
             int(TMarkOutcome::Written));
    QCOMPARE(exiftool(others), before);
    const QByteArray after = bytesOf(path);
    QCOMPARE(readMarks(raw, TSidecarNaming::BaseName).mark, mark(4, "Green"));
    // What Exempi changed besides the marks, shown for the README's account.
    const QList<QByteArray> lines = after.split('\n');
    int kept = 0;
    for (const QByteArray &line : lines)
        kept += sidecar.split('\n').contains(line);
    qInfo("%lld bytes became %lld; %d of %lld lines kept verbatim", qint64(sidecar.size()),
          qint64(after.size()), kept, qint64(lines.size()));
    QCOMPARE(after.startsWith("<?xml"), sidecar.startsWith("<?xml"));
    QCOMPARE(after.contains("<?xpacket"), sidecar.contains("<?xpacket"));
}

void TestMarks::brokenSidecarIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("sidecar"); // null: a named pipe
    QTest::addColumn<QString>("reason");
    QTest::newRow("a named pipe, which once blocked") << QByteArray() << "is not a file";
    QTest::newRow("text") << QByteArray("rating: 5\n") << "is not well-formed XML";
    QTest::newRow("cut short") << packet("xmp:Rating=\"3\"").left(120) << "is not well-formed XML";
    QTest::newRow("the raw file under the sidecar's name") << dng() << "is not well-formed XML";
}

void TestMarks::brokenSidecarIsLeftAlone()
{
    QFETCH(QByteArray, sidecar);
    QFETCH(QString, reason);
    fixture::TempFiles files;
    const QString raw = files.write("L1001234.DNG", dng());
    const QString path = files.path("L1001234.DNG.xmp");
    QVERIFY(sidecar.isNull() ? ::mkfifo(QFile::encodeName(path).constData(), 0644) == 0
                             : fixture::writeFile(path, sidecar));
    const TMarkWrite write = writeMarks(raw, mark(5), TSidecarNaming::BaseName);
    QCOMPARE(int(write.outcome), int(TMarkOutcome::Failed));
    QVERIFY2(write.error.startsWith(path + ": " + reason) &&
                 write.error.endsWith("; left as it is"),
             qPrintable(write.error));
    QCOMPARE(sidecar.isNull() ? QByteArray() : bytesOf(path), sidecar);
    QVERIFY(!QFile::exists(files.path("L1001234.xmp")));
    QCOMPARE(readMarks(raw, TSidecarNaming::BaseName).error, write.error);
}

void TestMarks::embedded_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<TMark>("mark");
    const QByteArray marks = packet("xmp:Rating=\"2\" xmp:Label=\"Yellow\"");
    QTest::newRow("little-endian") << dng(marks) << mark(2, "Yellow");
    QTest::newRow("big-endian") << dng(marks, fixture::Order::Big) << mark(2, "Yellow");
    QTest::newRow("rejected, as a real") << dng(packet("xmp:Rating=\"-1.0\"")) << mark(-1);
    QTest::newRow("packet cut off by the file's end")
        << dng(marks + QByteArray(64, ' ')).left(200) << TMark();
    QTest::newRow("no packet") << dng() << TMark();
    QTest::newRow("not a TIFF") << QByteArray("FUJIFILMCCD-RAW ") << TMark();
}

void TestMarks::embedded()
{
    QFETCH(QByteArray, file);
    fixture::TempFiles files;
    const QString raw = files.write("L1001234.DNG", file);
    const TMarkRead read = readMarks(raw, TSidecarNaming::BaseName);
    QTEST(read.mark, "mark");
    QCOMPARE(read.source, read.mark == TMark() ? QString() : raw);
}

void TestMarks::folderRefuses_data()
{
    QTest::addColumn<bool>("full");
    QTest::addColumn<QString>("failed"); // what the one message names
    QTest::addColumn<QString>("reason");
    const bool root = ::geteuid() == 0;
    QTest::newRow("read-only card")
        << false << "card" << (root ? "Read-only file system" : "Permission denied");
    QTest::newRow("full card") << true << "card/L1001.xmp"
                               << "No space left on device";
}

// On a read-only or full card the first file gives the one message and the
// rest of its folder is not tried; another folder is written. (A sidecar
// written alone on a full card was once renamed into place empty.) Root writes
// through any file mode, so a child of the test mounts the folder read-only,
// or a small file system over it, where only it sees them.
void TestMarks::folderRefuses()
{
    QFETCH(bool, full);
    fixture::TempFiles files;
    QVERIFY(QDir().mkpath(files.path("card")) && QDir().mkpath(files.path("disk")));
    QList<TMarkChange> changes;
    for (const char *name : {"card/L1001.DNG", "card/L1002.DNG", "card/L1003.DNG", "disk/L1.DNG"})
        changes.append({files.write(name, dng()), mark(3)});
    const QString sidecar = files.write("card/L1002.xmp", packet("xmp:Rating=\"1\""));
    const QByteArray card = QFile::encodeName(files.path("card"));
    const auto refuse = [&] {
        if (::geteuid() != 0)
            return !full && ::chmod(card.constData(), 0555) == 0;
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return false;
        if (!full)
            return ::mount(card.constData(), card.constData(), nullptr, MS_BIND, nullptr) == 0 &&
                   ::mount(nullptr, card.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY,
                           nullptr) == 0;
        if (::mount("tmpfs", card.constData(), "tmpfs", 0, "size=16k") != 0)
            return false;
        for (const TMarkChange &change : changes.mid(0, 3))
            fixture::writeFile(change.rawPath, dng());
        fixture::writeFile(sidecar, packet("xmp:Rating=\"1\""));
        QFile filler(files.path("card/filler"));
        filler.open(QIODevice::WriteOnly);
        while (filler.write(QByteArray(4096, 'x')) > 0 && filler.flush()) {
        }
        return true;
    };
    const pid_t child = ::fork();
    if (child == 0) {
        if (!refuse())
            ::_exit(77);
        const TMarkBatch batch = writeMarks(changes, TSidecarNaming::BaseName);
        QByteArray report = batch.folderFailure.toUtf8();
        for (const TMarkWrite &file : batch.files)
            report +=
                '|' + QByteArray::number(int(file.outcome)) + (file.folderNotWritable ? "!" : "");
        // A sidecar written alone in that folder keeps its bytes.
        const TMarkWrite alone = writeMarks(changes[1].rawPath, mark(3), TSidecarNaming::BaseName);
        report += '|' + QByteArray::number(int(alone.outcome));
        report += bytesOf(sidecar) == packet("xmp:Rating=\"1\"") ? "=" : "~";
        ::chmod(card.constData(), 0755);
        ::_exit(fixture::writeFile(files.path("report"), report) ? 0 : 1);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    if (WEXITSTATUS(status) == 77)
        QSKIP("the folder cannot be made read-only or full here");
    QFETCH(QString, failed);
    QFETCH(QString, reason);
    QCOMPARE(QString::fromUtf8(bytesOf(files.path("report"))),
             QStringLiteral("%1: %2|2!|3!|3!|0|2=").arg(files.path(failed), reason));
    QCOMPARE(QDir(files.path("card")).entryList({"*.xmp"}), QStringList{"L1002.xmp"});
    QCOMPARE(bytesOf(sidecar), packet("xmp:Rating=\"1\""));
    QCOMPARE(readMarks(changes.last().rawPath, TSidecarNaming::BaseName).mark, mark(3));
}

// Batches on two threads at once; undo brings the old marks back, and a
// cancelled batch writes nothing.
void TestMarks::batchUndoAndCancel()
{
    fixture::TempFiles files;
    QList<TMarkChange> first, second;
    for (int i = 0; i < 8; ++i) {
        const QString raw = files.write(QStringLiteral("L100%1.DNG").arg(i), dng());
        files.write(QStringLiteral("L100%1.xmp").arg(i), packet("xmp:Label=\"Red\""));
        (i % 2 ? first : second).append({raw, mark(i % 6, "Blue")});
    }
    TMarkBatch batches[2];
    std::thread other([&] { batches[1] = writeMarks(second, TSidecarNaming::BaseName); });
    batches[0] = writeMarks(first, TSidecarNaming::BaseName);
    other.join();
    for (const TMarkBatch &batch : batches) {
        QCOMPARE(undoOf(batch).size(), 4);
        const TMarkBatch undone = writeMarks(undoOf(batch), TSidecarNaming::BaseName);
        for (const TMarkWrite &file : undone.files)
            QCOMPARE(readMarks(file.rawPath, TSidecarNaming::BaseName).mark, mark(0, "Red"));
    }
    const std::atomic<bool> cancelled{true};
    const TMarkBatch batch = writeMarks(first, TSidecarNaming::BaseName, &cancelled);
    QCOMPARE(int(batch.files.first().outcome), int(TMarkOutcome::NotAttempted));
    QCOMPARE(readMarks(first.first().rawPath, TSidecarNaming::BaseName).mark, mark(0, "Red"));
}

QTEST_GUILESS_MAIN(TestMarks)
#include "tst_marks.moc"
