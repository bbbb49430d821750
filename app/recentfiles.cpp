#include "recentfiles.h"

#include "settingskeys.h"

#include <QFileInfo>
#include <QSettings>

QStringList TRecentFiles::entries() const
{
    return QSettings().value(settingskeys::kRecentFiles).toStringList().mid(0, kMaxEntries);
}

QStringList TRecentFiles::existing() const
{
    QStringList shown;
    for (const QString &path : entries()) {
        if (QFileInfo::exists(path))
            shown.append(path);
    }
    return shown;
}

void TRecentFiles::add(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList list = entries();
    list.removeAll(absolute);
    list.prepend(absolute);
    store(list.mid(0, kMaxEntries));
}

void TRecentFiles::clear()
{
    store({});
}

void TRecentFiles::store(const QStringList &entries)
{
    QSettings settings;
    settings.setValue(settingskeys::kRecentFiles, entries);
    settings.sync();
}
