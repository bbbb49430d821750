#include "card/safewrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Enough of an existing destination to tell what kind of file it is.
constexpr qint64 kSignatureBytes = 4096;

// Reasons a write fails for every file of its folder alike.
constexpr int kFolderErrors[] = {EROFS, EACCES, EPERM, ENOSPC, EDQUOT};

struct TKindText {
    TOutputKind kind;
    const char *name;
};
constexpr TKindText kKindNames[] = {
    {TOutputKind::Pdf, "PDF"},   {TOutputKind::Jpeg, "JPEG"}, {TOutputKind::Png, "PNG"},
    {TOutputKind::Tiff, "TIFF"}, {TOutputKind::Csv, "CSV"},
};

QString lookup(TOutputKind kind)
{
    for (const TKindText &entry : kKindNames) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return {};
}

bool isTiff(const QByteArray &head)
{
    return head.startsWith(QByteArrayLiteral("II*\0")) || head.startsWith("MM\0*");
}

// Whether a TIFF's first directory holds a DNGVersion tag (0xC612): a raw
// file, never to be taken for an earlier picture of ours.
bool isDng(const QString &path, const QByteArray &head)
{
    const bool little = head.startsWith("II");
    const auto number = [little](const QByteArray &bytes, qint64 at, int width) -> quint32 {
        quint32 value = 0;
        for (int i = 0; i < width; ++i) {
            const auto byte = quint32(uchar(bytes[at + (little ? width - 1 - i : i)]));
            value = value << 8 | byte;
        }
        return value;
    };
    QFile file(path);
    if (head.size() < 8 || !file.open(QIODevice::ReadOnly))
        return true; // cannot tell: keep it
    const quint32 ifd = number(head, 4, 4);
    if (!file.seek(ifd))
        return true;
    const QByteArray countBytes = file.read(2);
    if (countBytes.size() < 2)
        return true;
    const quint32 count = number(countBytes, 0, 2);
    const QByteArray entries = file.read(qint64(count) * 12);
    for (qint64 at = 0; at + 12 <= entries.size(); at += 12) {
        if (number(entries, at, 2) == 0xC612)
            return true;
    }
    return entries.size() < qint64(count) * 12;
}

// Whether the first bytes are those of a file of the kind.
bool startsAs(TOutputKind kind, const QString &path, const QByteArray &head)
{
    switch (kind) {
    case TOutputKind::Pdf: return head.startsWith("%PDF-");
    case TOutputKind::Jpeg: return head.startsWith("\xFF\xD8\xFF");
    case TOutputKind::Png: return head.startsWith("\x89PNG\r\n\x1A\n");
    case TOutputKind::Tiff: return isTiff(head) && !isDng(path, head);
    case TOutputKind::Csv: return !head.contains('\0') && !isTiff(head);
    }
    return false;
}

// Passes writes on to the file and keeps the first that failed: some writers
// (Qt's PDF engine) go on without looking at what a write returned, and the
// file's own error is reset by later calls.
class TGuardedWrites : public QIODevice {
public:
    explicit TGuardedWrites(QSaveFile &file) : m_file(file) { open(QIODevice::WriteOnly); }
    QString failure() const { return m_failure; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 length) override
    {
        if (!m_failure.isEmpty())
            return -1;
        errno = 0;
        const qint64 written = m_file.write(data, length);
        if (written != length) {
            const int error = errno;
            // The file's own text says "Unknown error" until its buffer is flushed.
            m_failure = error != 0 ? errnoText(error) : m_file.errorString();
            return -1;
        }
        return written;
    }

private:
    QSaveFile &m_file;
    QString m_failure;
};

} // namespace

QString writeFailure(const QString &path, const QString &reason)
{
    return QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), reason);
}

QString errnoText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

bool isFolderFailure(const QString &failure)
{
    for (const int code : kFolderErrors) {
        if (failure.endsWith(QStringLiteral(": ") + errnoText(code)))
            return true;
    }
    return false;
}

QString outputRefusal(const QString &path, TOutputKind kind, const QStringList &inputs)
{
    const QByteArray encoded = QFile::encodeName(path);
    struct stat destination {};
    if (::stat(encoded.constData(), &destination) == 0) {
        if (S_ISDIR(destination.st_mode))
            return writeFailure(path, QStringLiteral("is a folder"));
        for (const QString &input : inputs) {
            struct stat read {};
            if (::stat(QFile::encodeName(input).constData(), &read) == 0 &&
                read.st_dev == destination.st_dev && read.st_ino == destination.st_ino)
                return writeFailure(path, QStringLiteral("is one of the files being read; not "
                                                         "overwritten"));
        }
        QFile existing(path);
        if (!existing.open(QIODevice::ReadOnly))
            return writeFailure(path, existing.errorString());
        const QByteArray head = existing.read(kSignatureBytes);
        if (!head.isEmpty() && !startsAs(kind, path, head))
            return writeFailure(
                path,
                QStringLiteral("exists and is not a %1 file; not overwritten").arg(lookup(kind)));
    } else if (errno != ENOENT) {
        return writeFailure(path, errnoText(errno));
    }
    // The new file is made beside the destination, then renamed over it.
    const QString folder = QFileInfo(path).absolutePath();
    if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0)
        return writeFailure(path, errnoText(errno));
    return {};
}

QString writeAtomically(const QString &path, const std::function<bool(QIODevice &)> &write)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return writeFailure(path, file.errorString());
    TGuardedWrites guarded(file);
    const bool written = write(guarded);
    QString reason = guarded.failure();
    if (reason.isEmpty() && !written)
        reason = QStringLiteral("the content could not be made");
    if (!reason.isEmpty()) {
        file.cancelWriting();
        return writeFailure(path, reason);
    }
    // What is still in the file's buffer (all of a small output) reaches the
    // disk here; commit() alone does not tell when that fails.
    if (!file.flush() || !file.commit())
        return writeFailure(path, file.errorString());
    return {};
}
