#include "card/rejectmove.h"

#include "card/marks.h"
#include "card/safewrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using TStep = QString (*)(TFileMove &move);

bool taken(const QString &path) // a file, a folder or a link, even a dangling one
{
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
}

// Renames from to to, never over something standing there: 0 or the errno.
int renameFree(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
#if defined(Q_OS_LINUX) && defined(RENAME_NOREPLACE)
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
#elif defined(Q_OS_DARWIN)
    if (::renamex_np(source.constData(), target.constData(), RENAME_EXCL) == 0)
        return 0;
    if (errno != ENOTSUP)
        return errno;
#endif
    // A file system without the flag (a network share): looked at, then renamed.
    if (taken(to))
        return EEXIST;
    return ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}

QString nameTaken(const QString &path)
{
    return writeFailure(path, QStringLiteral("a file of that name is there already"));
}

QString renamed(const QString &from, const QString &to)
{
    const int error = renameFree(from, to);
    if (error == EEXIST)
        return nameTaken(to);
    return error == 0 ? QString() : writeFailure(from, errnoText(error));
}

QString renameForth(TFileMove &move)
{
    return renamed(move.from, move.to);
}
QString renameBack(TFileMove &move)
{
    return renamed(move.to, move.from);
}

QString toTrash(TFileMove &move)
{
    QFile file(move.from);
    if (!file.moveToTrash()) {
        const QString reason = file.errorString();
        return writeFailure(move.from, reason != errnoText(EXDEV)
                                           ? reason
                                           : QStringLiteral("its disk has no trash, and none can "
                                                            "be made there"));
    }
    if (QDir::isRelativePath(file.fileName())) { // no trash found: see trashRefusal()
        const QString back = renamed(file.fileName(), move.from);
        return writeFailure(move.from, QStringLiteral("no trash was found")) +
               (back.isEmpty() ? QString() : QStringLiteral("; ") + back);
    }
    move.to = file.fileName();
    return {};
}

// Why the home's trash cannot be used, made when missing. Qt falls back on it
// for a disk without a trash of its own, and with no trash at all moves the
// file into the working folder (Qt 6.4).
QString trashRefusal()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString trash = data + QStringLiteral("/Trash");
    if (QFileInfo(trash).isDir())
        return {};
    QDir().mkpath(data);
    if (::mkdir(QFile::encodeName(trash).constData(), 0700) != 0)
        return writeFailure(trash, errnoText(errno));
    return {};
}

// The trash's record of a file in it: info/NAME.trashinfo beside files/NAME.
QString trashInfoOf(const QString &trashed)
{
    const QFileInfo file(trashed);
    QDir trash = file.dir();
    if (trash.dirName() != QLatin1String("files") || !trash.cdUp())
        return {};
    return trash.filePath(QStringLiteral("info/") + file.fileName() + ".trashinfo");
}

// Removes the trash's records of files taken out of it again, as a file
// manager's restore does; the files themselves are where they were.
void forgetTrashed(const QList<TFileMove> &moves)
{
    for (const TFileMove &move : moves) {
        const QString info = move.to.isEmpty() ? QString() : trashInfoOf(move.to);
        if (!info.isEmpty())
            QFile::remove(info);
    }
}

// Moves a frame's files by step() in turn, all or none: when one fails, those
// moved are moved the other way again by undo(). Returns how many stay moved:
// all, none, or, when undo() failed as well, the first few (*error tells).
qsizetype moveAll(QList<TFileMove> &moves, TStep step, TStep undo, QString *error)
{
    qsizetype done = 0;
    while (done < moves.size() && (*error = step(moves[done])).isEmpty())
        ++done;
    if (done == moves.size())
        return done;
    while (done > 0) {
        const QString failure = undo(moves[done - 1]);
        if (!failure.isEmpty()) {
            *error += QStringLiteral("; ") + failure;
            break;
        }
        --done;
    }
    return done;
}

// The first of paths something stands at.
QString firstTaken(const QList<TFileMove> &moves, QString TFileMove::*place)
{
    for (const TFileMove &move : moves) {
        if (taken(move.*place))
            return nameTaken(move.*place);
    }
    return {};
}

// Why folder will not give up or take files, or an empty text.
QString refusalOf(const QString &folder)
{
    if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0)
        return writeFailure(folder, errnoText(errno));
    return {};
}

QString rejectedFolderOf(const QString &path)
{
    return QFileInfo(path).path() + QLatin1Char('/') + QLatin1String(kRejectedFolderName);
}

// The checks of each folder once, and the batch's one text for each that refuses.
class TFolders {
public:
    explicit TFolders(TRejectBatch &batch) : m_batch(batch) {}
    // Why the folder of path refuses, as check(folder) tells once for it, or empty.
    template <typename Check> QString refusal(const QString &path, Check check)
    {
        const QString folder = QFileInfo(path).absolutePath();
        auto known = m_refusals.constFind(folder);
        if (known == m_refusals.constEnd())
            known = m_refusals.insert(folder, check(folder));
        return *known;
    }
    void refuse(const QString &path, const QString &reason)
    {
        m_refusals.insert(QFileInfo(path).absolutePath(), reason);
    }
    // The frame is not tried for its folder's refusal, named once in the batch.
    void notAttempted(TRejectMove &frame, const QString &reason)
    {
        frame.error = reason;
        if (!m_batch.folderFailures.contains(reason))
            m_batch.folderFailures.append(reason);
    }

private:
    TRejectBatch &m_batch;
    QHash<QString, QString> m_refusals; // folder: why it refuses, or empty
};

// Why `_rejected` beside path cannot take files, making it when missing.
QString readyRejectedFolder(const QString &path, TRejectBatch &batch)
{
    const QString folder = rejectedFolderOf(path);
    if (!taken(folder)) {
        if (::mkdir(QFile::encodeName(folder).constData(), 0777) != 0)
            return writeFailure(folder, errnoText(errno));
        batch.madeFolders.append(folder);
    } else if (!QFileInfo(folder).isDir()) {
        return writeFailure(folder, QStringLiteral("is not a folder"));
    }
    return refusalOf(folder);
}

void putAway(TRejectMove &frame, TRejectDestination destination)
{
    QStringList paths = sidecarsOf(frame.rawPath);
    paths.prepend(frame.rawPath);
    for (const QString &path : paths) {
        const QString to = destination == TRejectDestination::Trash
                               ? QString()
                               : rejectedFolderOf(path) + '/' + QFileInfo(path).fileName();
        frame.moves.append({path, to});
    }
    frame.error = firstTaken(frame.moves, &TFileMove::to);
    const TStep step = destination == TRejectDestination::Trash ? toTrash : renameForth;
    const qsizetype moved =
        frame.error.isEmpty() ? moveAll(frame.moves, step, renameBack, &frame.error) : 0;
    if (destination == TRejectDestination::Trash)
        forgetTrashed(frame.moves.mid(moved));
    frame.moves.resize(moved);
    frame.outcome = moved > 0 ? TMoveOutcome::Moved : TMoveOutcome::Failed;
}

// Stays Moved with the reason when not all its files can go back.
void bringBack(TRejectMove &frame, TRejectDestination destination)
{
    frame.error = firstTaken(frame.moves, &TFileMove::from);
    if (!frame.error.isEmpty())
        return;
    const qsizetype restored = moveAll(frame.moves, renameBack, renameForth, &frame.error);
    if (destination == TRejectDestination::Trash)
        forgetTrashed(frame.moves.first(restored));
    if (restored == frame.moves.size())
        frame.outcome = TMoveOutcome::Restored;
    else
        frame.moves.remove(0, restored); // back, though the rest could not follow
}

} // namespace

bool isPutAway(const QString &rawPath)
{
    return QFileInfo(rawPath).absoluteDir().dirName() == QLatin1String(kRejectedFolderName);
}

TRejectBatch moveRejected(const QStringList &rawPaths, TRejectDestination destination,
                          const std::atomic<bool> *cancel)
{
    TRejectBatch batch;
    batch.destination = destination;
    TFolders folders(batch);
    for (const QString &rawPath : rawPaths) {
        TRejectMove &frame = batch.files.emplace_back();
        frame.rawPath = rawPath;
        if (cancel && cancel->load()) {
            frame.error = QStringLiteral("cancelled");
            continue;
        }
        if (isPutAway(rawPath)) {
            frame.outcome = TMoveOutcome::Left;
            continue;
        }
        QString refusal = folders.refusal(rawPath, [destination](const QString &folder) {
            const QString there = refusalOf(folder);
            return there.isEmpty() && destination == TRejectDestination::Trash ? trashRefusal()
                                                                               : there;
        });
        if (refusal.isEmpty() && !taken(rawPath)) {
            frame.outcome = TMoveOutcome::Failed;
            frame.error = writeFailure(rawPath, errnoText(ENOENT));
            continue;
        }
        if (refusal.isEmpty() && destination == TRejectDestination::RejectedFolder) {
            refusal = readyRejectedFolder(rawPath, batch);
            if (!refusal.isEmpty())
                folders.refuse(rawPath, refusal);
        }
        if (refusal.isEmpty())
            putAway(frame, destination);
        else
            folders.notAttempted(frame, refusal);
    }
    return batch;
}

TRejectBatch undoMove(const TRejectBatch &batch, const std::atomic<bool> *cancel)
{
    TRejectBatch result;
    result.destination = batch.destination;
    TFolders folders(result);
    for (const TRejectMove &moved : batch.files) {
        if (moved.outcome != TMoveOutcome::Moved || moved.moves.isEmpty())
            continue;
        TRejectMove &frame = result.files.emplace_back(moved);
        frame.error.clear();
        if (cancel && cancel->load()) {
            frame.error = QStringLiteral("cancelled");
            continue;
        }
        const TFileMove &raw = moved.moves.first();
        const QString refusal = folders.refusal(raw.from, [&raw](const QString &folder) {
            const QString there = refusalOf(folder);
            return there.isEmpty() ? refusalOf(QFileInfo(raw.to).absolutePath()) : there;
        });
        if (refusal.isEmpty())
            bringBack(frame, batch.destination);
        else
            folders.notAttempted(frame, refusal);
    }
    for (const QString &folder : batch.madeFolders) {
        // Removes the folder only when it is empty.
        if (::rmdir(QFile::encodeName(folder).constData()) != 0 && taken(folder))
            result.madeFolders.append(folder);
    }
    return result;
}
