#ifndef RECENTFILES_H
#define RECENTFILES_H

// The files and folders opened last, newest first, for File > Open Recent.
// The list lives in the settings store and is written at once, so that every
// window sees the same list and a crash does not lose it. An entry that does
// not exist now (a card taken out) is kept, but not offered.

#include <QString>
#include <QStringList>

class TRecentFiles {
public:
    // A menu of ten entries is read at a glance; older ones drop out.
    static constexpr int kMaxEntries = 10;

    // Every stored entry, newest first.
    QStringList entries() const;
    // The entries that exist now, newest first: what the menu offers.
    QStringList existing() const;
    // Puts path (made absolute) first; an entry already there moves up.
    void add(const QString &path);
    void clear();

private:
    void store(const QStringList &entries);
};

#endif // RECENTFILES_H
