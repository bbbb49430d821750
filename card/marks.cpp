#include "card/marks.h"

#include "card/marklimits.h"
#include "card/safewrite.h"
#include "card/sidecar.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kMaxStars = 5;

// The two names of the sidecar, the preferred first.
std::pair<QString, QString> sidecarNames(const QString &rawPath, TSidecarNaming naming)
{
    const QFileInfo raw(rawPath);
    const QString base = raw.path() + QLatin1Char('/') + raw.completeBaseName() + ".xmp";
    const QString full = rawPath + ".xmp";
    return naming == TSidecarNaming::BaseName ? std::pair(base, full) : std::pair(full, base);
}

QString existingSidecar(const QString &rawPath, TSidecarNaming naming)
{
    const auto [preferred, other] = sidecarNames(rawPath, naming);
    if (QFileInfo::exists(preferred))
        return preferred;
    return QFileInfo::exists(other) ? other : QString();
}

// Whether both paths name one file (a link, a raw file named *.xmp).
bool sameFile(const QString &a, const QString &b)
{
    struct stat first {};
    struct stat second {};
    return ::stat(QFile::encodeName(a).constData(), &first) == 0 &&
           ::stat(QFile::encodeName(b).constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// The sidecar's bytes and marks; false with the reason in *error.
bool readSidecar(const QString &path, QByteArray *bytes, TMark *mark, QString *error)
{
    QFile file(path);
    if (!QFileInfo(path).isFile()) { // a named pipe would block the open
        *error = writeFailure(path, QStringLiteral("is not a file; left as it is"));
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = writeFailure(path, file.errorString());
        return false;
    }
    if (file.size() > limits::kMaxSidecarBytes) {
        *error = writeFailure(path, QStringLiteral("is too large for a sidecar; left as it is"));
        return false;
    }
    *bytes = file.readAll();
    QString reason;
    if (file.error() != QFileDevice::NoError)
        reason = file.errorString();
    else if (!marksOfPacket(*bytes, mark, &reason))
        reason += QStringLiteral("; left as it is");
    if (!reason.isEmpty())
        *error = writeFailure(path, reason);
    return reason.isEmpty();
}

// The marks in the raw file's own XMP packet, read without writing it.
TMarkRead embeddedMarks(const QString &rawPath)
{
    TMarkRead result;
    QFile file(rawPath);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = writeFailure(rawPath, file.errorString());
        return result;
    }
    QString reason;
    if (!marksOfPacket(ifd0XmpPacket(file), &result.mark, &reason))
        result.error = writeFailure(rawPath, QStringLiteral("its XMP packet ") + reason);
    else if (result.mark != TMark())
        result.source = rawPath;
    return result;
}

// Written as writeAtomically() writes, but unbuffered: QSaveFile's commit()
// does not see its final flush fail, so that a sidecar smaller than the
// buffer, on a full card, would be renamed into place empty.
QString writeSidecar(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return writeFailure(path, file.errorString());
    if (file.write(bytes) != bytes.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return writeFailure(path, reason);
    }
    return file.commit() ? QString() : writeFailure(path, file.errorString());
}

} // namespace

QString lookup(TColourLabel label)
{
    for (const TColourLabelText &entry : kColourLabels) {
        if (entry.code == label)
            return QLatin1String(entry.text);
    }
    return {};
}

std::optional<unsigned> labelRgb(const QString &label)
{
    for (const TColourLabelText &entry : kColourLabels) {
        if (entry.code != TColourLabel::None && label == QLatin1String(entry.text))
            return entry.rgb;
    }
    return std::nullopt;
}

TMarkTexts markTexts(const TMark &mark, bool asStars)
{
    TMarkTexts texts{{}, mark.label};
    if (!mark.hasRating || mark.rating == 0)
        return texts;
    const int stars = qBound(1, mark.rating, kMaxStars);
    if (mark.rating < 0)
        texts.rating = QStringLiteral("rejected");
    else if (asStars)
        texts.rating = QString(stars, QChar(0x2605)) + QString(kMaxStars - stars, QChar(0x2606));
    else
        texts.rating = QString::number(stars);
    return texts;
}

QString sidecarFor(const QString &rawPath, TSidecarNaming naming)
{
    const QString existing = existingSidecar(rawPath, naming);
    return existing.isEmpty() ? sidecarNames(rawPath, naming).first : existing;
}

QStringList sidecarsOf(const QString &rawPath)
{
    QStringList found;
    const auto [base, full] = sidecarNames(rawPath, TSidecarNaming::BaseName);
    for (const QString &name : {base, full}) {
        const QFileInfo info(name);
        if ((info.exists() || info.isSymLink()) && !info.isDir() && !found.contains(name) &&
            !sameFile(name, rawPath))
            found.append(name);
    }
    return found;
}

TMarkRead readMarks(const QString &rawPath, TSidecarNaming naming)
{
    const QString sidecar = existingSidecar(rawPath, naming);
    if (sidecar.isEmpty() || sameFile(sidecar, rawPath))
        return embeddedMarks(rawPath);
    TMarkRead result;
    QByteArray bytes;
    result.source = sidecar;
    if (!readSidecar(sidecar, &bytes, &result.mark, &result.error))
        result.mark = {};
    return result;
}

TMarkWrite writeMarks(const QString &rawPath, const TMark &mark, TSidecarNaming naming)
{
    TMarkWrite result;
    result.rawPath = rawPath;
    result.sidecar = sidecarFor(rawPath, naming);
    result.outcome = TMarkOutcome::Failed;
    const auto fail = [&result](const QString &reason) {
        result.error = writeFailure(result.sidecar, reason);
        return result;
    };
    if (mark.hasRating && (mark.rating < -1 || mark.rating > kMaxStars))
        return fail(QStringLiteral("a rating of %1 is not one of -1 to 5").arg(mark.rating));
    if (sameFile(result.sidecar, rawPath))
        return fail(QStringLiteral("is the raw file; not written"));
    QByteArray packet;
    if (QFileInfo::exists(result.sidecar)) {
        if (!readSidecar(result.sidecar, &packet, &result.before, &result.error))
            return result;
    } else {
        result.before = embeddedMarks(rawPath).mark;
    }
    if (result.before == mark) {
        result.outcome = TMarkOutcome::Unchanged;
        return result;
    }
    // The sidecar is made beside the raw file and renamed over the old one; a
    // folder that refuses that refuses every file in it.
    const QString folder = QFileInfo(result.sidecar).absolutePath();
    if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0) {
        result.error = writeFailure(folder, errnoText(errno));
        result.folderNotWritable = isFolderFailure(result.error);
        return result;
    }
    QString reason;
    const QByteArray written = packetWithMarks(packet, mark, &reason);
    if (written.isEmpty())
        return fail(reason);
    result.error = writeSidecar(result.sidecar, written);
    if (result.error.isEmpty())
        result.outcome = TMarkOutcome::Written;
    result.folderNotWritable = isFolderFailure(result.error);
    return result;
}

TMarkBatch writeMarks(const QList<TMarkChange> &changes, TSidecarNaming naming,
                      const std::atomic<bool> *cancel)
{
    TMarkBatch batch;
    QHash<QString, QString> failedFolders; // folder: its failure
    for (const TMarkChange &change : changes) {
        const QString folder = QFileInfo(change.rawPath).absolutePath();
        TMarkWrite file;
        file.rawPath = change.rawPath;
        if (cancel && cancel->load()) {
            file.error = QStringLiteral("cancelled");
        } else if (failedFolders.contains(folder)) {
            file.error = failedFolders.value(folder);
            file.folderNotWritable = true;
        } else {
            file = writeMarks(change.rawPath, change.mark, naming);
            if (file.folderNotWritable) {
                failedFolders.insert(folder, file.error);
                if (batch.folderFailure.isEmpty())
                    batch.folderFailure = file.error;
            }
        }
        batch.files.append(file);
    }
    return batch;
}

QList<TMarkChange> undoOf(const TMarkBatch &batch)
{
    QList<TMarkChange> changes;
    for (const TMarkWrite &file : batch.files) {
        if (file.outcome == TMarkOutcome::Written)
            changes.append({file.rawPath, file.before});
    }
    return changes;
}
