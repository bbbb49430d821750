// Rejected frames moved into `_rejected` or the trash with their sidecars and
// back: every path and every byte as before, taken names refused and left
// alone, a read-only card named once and left as it was.

#include "card/rejectmove.h"
#include "tests/support/tiffbuilder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QMap>
#include <QTest>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

Q_DECLARE_METATYPE(TRejectDestination)

namespace {

// Every file under root, relative to it, with a hash of its bytes.
QMap<QString, QByteArray> tree(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : "(a link)";
        files.insert(QDir(root).relativeFilePath(file.fileName()),
                     QCryptographicHash::hash(bytes, QCryptographicHash::Sha1));
    }
    return files;
}

// The files named (each with bytes of its own; NAME@ a link to nowhere) under
// a new folder, whose data/ is the home's: the frames on the home's disk, so
// that Qt picks data/Trash. Returns the raw files named in rejected.
QStringList makeFolder(const fixture::TempFiles &temp, const QString &files,
                       const QString &rejected)
{
    for (QString name : files.split(' ')) {
        QDir().mkpath(QFileInfo(temp.path(name)).path());
        if (name.endsWith('@'))
            QFile::link(temp.path("nowhere"), temp.path(name.chopped(1)));
        else
            fixture::writeFile(temp.path(name), name.toUtf8().repeated(1000));
    }
    qputenv("HOME", QFile::encodeName(temp.path(".")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(temp.path("data")));
    QStringList paths;
    for (const QString &name : rejected.split(' '))
        paths.append(temp.path(name));
    return paths;
}

QString relative(QString text, const QString &root)
{
    return text.remove(root + '/');
}

} // namespace

class TestRejectMove : public QObject {
    Q_OBJECT
private slots:
    void moveAndUndo_data();
    void moveAndUndo();
    void folderRefuses_data();
    void folderRefuses();
};

void TestRejectMove::moveAndUndo_data()
{
    QTest::addColumn<TRejectDestination>("destination");
    QTest::addColumn<QString>("files");
    QTest::addColumn<QString>("rejected");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("errors"); // one for each rejected frame
    // Written again after the move, or taken away from where it went: undo refuses.
    QTest::addColumn<QString>("disturbed");
    const auto row = [](const char *name, TRejectDestination destination, const char *files,
                        const char *rejected, const char *after, const char *errors = "",
                        const char *disturbed = "") {
        QTest::newRow(name) << destination << QString(files) << QString(rejected) << QString(after)
                            << QString(errors) << QString(disturbed);
    };
    const auto folder = TRejectDestination::RejectedFolder;
    const auto trash = TRejectDestination::Trash;
    row("no sidecar", folder, "c/A.DNG c/B.DNG", "c/A.DNG", "c/B.DNG c/_rejected/A.DNG", "",
        "c/A.DNG");
    row("base-name sidecar; its old place taken", folder, "c/A.DNG c/A.xmp c/B.DNG c/B.xmp",
        "c/A.DNG", "c/B.DNG c/B.xmp c/_rejected/A.DNG c/_rejected/A.xmp", "", "c/A.xmp");
    row("both sidecar names, nothing else", folder,
        "c/A.DNG c/A.xmp c/A.DNG.xmp c/A.JPG c/A.DNG.pp3 c/AB.xmp", "c/A.DNG",
        "c/A.DNG.pp3 c/A.JPG c/AB.xmp c/_rejected/A.DNG c/_rejected/A.DNG.xmp c/_rejected/A.xmp",
        "", "c/_rejected/A.DNG.xmp");
    row("a sidecar's name taken in _rejected", folder, "c/A.DNG c/A.xmp c/_rejected/A.xmp c/B.DNG",
        "c/A.DNG c/B.DNG", "c/A.DNG c/A.xmp c/_rejected/A.xmp c/_rejected/B.DNG",
        "c/_rejected/A.xmp: a file of that name is there already|");
    row("in _rejected already; another folder; one missing", folder,
        "c/_rejected/A.DNG c/_rejected/A.xmp d/C.DNG", "c/_rejected/A.DNG d/C.DNG d/D.DNG",
        "c/_rejected/A.DNG c/_rejected/A.xmp d/_rejected/C.DNG",
        "||d/D.DNG: No such file or directory");
    row("trash, both sidecar names", trash, "c/A.DNG c/A.xmp c/A.DNG.xmp c/B.DNG", "c/A.DNG",
        "c/B.DNG data/Trash/files/A.DNG data/Trash/files/A.DNG.xmp data/Trash/files/A.xmp "
        "data/Trash/info/A.DNG.trashinfo data/Trash/info/A.DNG.xmp.trashinfo "
        "data/Trash/info/A.xmp.trashinfo",
        "", "data/Trash/files/A.DNG.xmp");
    row("trash, a sidecar that cannot go: the raw file comes back", trash, "c/A.DNG c/A.xmp@",
        "c/A.DNG", "c/A.DNG c/A.xmp", "c/A.xmp: No such file or directory");
    row("trash, none can be made", trash, "c/A.DNG data", "c/A.DNG", "c/A.DNG data",
        "data/Trash: Not a directory");
    // Qt names the second file of a name in the trash so (Qt 6.4).
    row("trash, the name in it taken", trash,
        "c/A.DNG data/Trash/files/A.DNG data/Trash/info/A.DNG.trashinfo", "c/A.DNG",
        "data/Trash/files/A.DNG data/Trash/files/A.DNG-0001 "
        "data/Trash/info/A.DNG-0001.trashinfo data/Trash/info/A.DNG.trashinfo");
}

// Moved files keep their bytes, and the undo data says where they are; undo
// brings every path back, refusing while something stands at an old place.
void TestRejectMove::moveAndUndo()
{
    QFETCH(TRejectDestination, destination);
    QFETCH(QString, files);
    QFETCH(QString, rejected);
    QFETCH(QString, disturbed);
    fixture::TempFiles temp;
    const QStringList raws = makeFolder(temp, files, rejected);
    const QString root = QDir::cleanPath(temp.path("."));
    const QMap<QString, QByteArray> before = tree(root);
    TRejectBatch batch = moveRejected(raws, destination);
    QMap<QString, QByteArray> moved = tree(root);
    QTEST(moved.keys().join(' '), "after");
    QStringList errors;
    for (const TRejectMove &frame : batch.files) {
        errors.append(relative(frame.error, root));
        const TMoveOutcome expected = isPutAway(frame.rawPath) ? TMoveOutcome::Left
                                      : frame.error.isEmpty()  ? TMoveOutcome::Moved
                                      : batch.folderFailures.contains(frame.error)
                                          ? TMoveOutcome::NotAttempted
                                          : TMoveOutcome::Failed;
        QCOMPARE(int(frame.outcome), int(expected));
        for (const TFileMove &move : frame.moves)
            QCOMPARE(moved.value(relative(move.to, root)), before.value(relative(move.from, root)));
    }
    QTEST(errors.join('|'), "errors");
    if (!disturbed.isEmpty()) {
        const QString path = temp.path(disturbed);
        const bool gone = QFile::exists(path);
        QVERIFY(gone ? QFile::rename(path, temp.path("aside")) : fixture::writeFile(path, "new"));
        moved = tree(root);
        batch = undoMove(batch);
        QCOMPARE(int(batch.files.first().outcome), int(TMoveOutcome::Moved));
        QCOMPARE(relative(batch.files.first().error, root),
                 disturbed + (gone ? ": No such file or directory"
                                   : ": a file of that name is there already"));
        QCOMPARE(tree(root), moved);
        QVERIFY(gone ? QFile::rename(temp.path("aside"), path) : QFile::remove(path));
    }
    batch = undoMove(batch);
    for (const TRejectMove &frame : batch.files)
        QCOMPARE(int(frame.outcome), int(TMoveOutcome::Restored));
    QCOMPARE(tree(root), before);
    QCOMPARE(QFileInfo::exists(temp.path("c/_rejected")), files.contains("c/_rejected/"));
}

void TestRejectMove::folderRefuses_data()
{
    QTest::addColumn<TRejectDestination>("destination");
    QTest::addColumn<QString>("moved"); // the other folder's frame
    QTest::newRow("_rejected") << TRejectDestination::RejectedFolder << "d/_rejected/L3.DNG";
    QTest::newRow("trash") << TRejectDestination::Trash << "data/Trash/files/L3.DNG";
}

// A read-only card gives one reason for its frames and stays as it was; the
// frame of another folder moves. Root writes through any file mode, so a
// child mounts the folder read-only where only it sees it. A cancelled move
// moves nothing.
void TestRejectMove::folderRefuses()
{
    QFETCH(TRejectDestination, destination);
    fixture::TempFiles temp;
    const QStringList raws = makeFolder(temp, "c/L1.DNG c/L1.xmp c/L2.DNG c/L2.DNG.xmp d/L3.DNG",
                                        "c/L1.DNG c/L2.DNG d/L3.DNG");
    const std::atomic<bool> cancelled{true};
    for (const TRejectMove &frame : moveRejected(raws, destination, &cancelled).files)
        QCOMPARE(int(frame.outcome), int(TMoveOutcome::NotAttempted));
    const QMap<QString, QByteArray> before = tree(temp.path("c"));
    const QByteArray card = QFile::encodeName(temp.path("c"));
    const pid_t child = ::fork();
    if (child == 0) {
        const bool readOnly =
            ::geteuid() != 0
                ? ::chmod(card.constData(), 0555) == 0
                : ::unshare(CLONE_NEWNS) == 0 &&
                      ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      ::mount(card.constData(), card.constData(), nullptr, MS_BIND, nullptr) == 0 &&
                      ::mount(nullptr, card.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY,
                              nullptr) == 0;
        if (!readOnly)
            ::_exit(77);
        const TRejectBatch batch = moveRejected(raws, destination);
        QByteArray report = batch.folderFailures.join('|').toUtf8();
        for (const TRejectMove &frame : batch.files)
            report += ' ' + QByteArray::number(int(frame.outcome)) +
                      (frame.error == batch.folderFailures.value(0) ? "=" : "");
        ::chmod(card.constData(), 0755);
        ::_exit(fixture::writeFile(temp.path("report"), report) ? 0 : 1);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    if (WEXITSTATUS(status) == 77)
        QSKIP("the folder cannot be made read-only here");
    QFile report(temp.path("report"));
    QVERIFY(report.open(QIODevice::ReadOnly));
    const char *reason = ::geteuid() == 0 ? "Read-only file system" : "Permission denied";
    QCOMPARE(report.readAll(), temp.path("c").toUtf8() + ": " + reason + " 4= 4= 0");
    QCOMPARE(tree(temp.path("c")), before);
    QFETCH(QString, moved);
    QVERIFY(!QFile::exists(raws.last()) && QFile::exists(temp.path(moved)));
}

QTEST_GUILESS_MAIN(TestRejectMove)
#include "tst_rejectmove.moc"
