#ifndef DNGFILES_H
#define DNGFILES_H

// The DNG files of a folder, in the order tolvik-info reads them; the window
// steps through a folder in the same order. Qt Core only: no widget, no picture.
//
// A DNG file is any regular file whose name ends in ".dng" in any letter case. Hidden
// entries are left out: a Mac leaves "._L1002622.DNG" companions on a card,
// which are no pictures. A FIFO, socket or device never is one, whatever its name:
// reading it could wait for ever. Entries are sorted by name, character by character,
// so the order is the same on every system and in every locale.

#include <QStringList>

#include <functional>

// Asked before each folder is listed; true ends the search with what was found.
using TCancelled = std::function<bool()>;

// The DNG files directly in folder.
QStringList dngFilesIn(const QString &folder);

// The DNG files in folder and every folder below it, depth first: the entries
// of each folder in name order, a sub-folder's files at the sub-folder's place.
// A folder reached twice (through symbolic links, or a link that loops back)
// is read only the first time. A folder on a share that hangs holds up the
// search, but cancelled ends it as soon as that folder answers.
QStringList dngFilesUnder(const QString &folder, const TCancelled &cancelled = {});

#endif // DNGFILES_H
