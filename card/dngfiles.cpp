#include "card/dngfiles.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

bool isDngName(const QString &name)
{
    return name.endsWith(QLatin1String(".dng"), Qt::CaseInsensitive);
}

// Files and folders (symbolic links followed), not hidden, sorted by name.
QFileInfoList sortedEntries(const QString &folder)
{
    QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
    std::sort(entries.begin(), entries.end(),
              [](const QFileInfo &a, const QFileInfo &b) { return a.fileName() < b.fileName(); });
    return entries;
}

// The DNG files of folder; with a set of visited folders, those below it too.
void collect(const QString &folder, QSet<QString> *visited, const TCancelled &cancelled,
             QStringList &files)
{
    if (cancelled && cancelled())
        return;
    for (const QFileInfo &entry : sortedEntries(folder)) {
        if (!entry.isDir()) {
            if (entry.isFile() && isDngName(entry.fileName()))
                files.append(entry.filePath());
            continue;
        }
        // Canonical paths end loops of links: each real folder is read once.
        const QString canonical = entry.canonicalFilePath();
        if (visited && !canonical.isEmpty() && !visited->contains(canonical)) {
            visited->insert(canonical);
            collect(entry.filePath(), visited, cancelled, files);
        }
    }
}

} // namespace

QStringList dngFilesIn(const QString &folder)
{
    QStringList files;
    collect(folder, nullptr, {}, files);
    return files;
}

QStringList dngFilesUnder(const QString &folder, const TCancelled &cancelled)
{
    QSet<QString> visited{QFileInfo(folder).canonicalFilePath()};
    QStringList files;
    collect(folder, &visited, cancelled, files);
    return files;
}
