#ifndef CARD_REJECTMOVE_H
#define CARD_REJECTMOVE_H

// Rejected frames put away, and brought back. Each raw file moves with every
// sidecar it has under either name (L1001234.xmp, L1001234.DNG.xmp; see
// sidecarsOf() in marks.h) and nothing else, into a `_rejected` folder beside
// it or to the desktop's trash; undoMove() moves them back.
//
// Nothing is deleted and nothing is overwritten. A file moves by rename()
// alone, never by a copy: `_rejected` is on the frame's own file system, and
// QFile::moveToTrash() uses the trash of the frame's own disk (freedesktop's
// `$topdir/.Trash-$uid` for a card, `$XDG_DATA_HOME/Trash` for files on the
// home's disk); where no trash can be made there, the frame stays. The
// home's trash is made first when missing (Qt 6.4, finding no trash at all,
// would move the file into the working folder). A rename
// never replaces a file (RENAME_NOREPLACE). A frame whose name (or a
// sidecar's) is taken in `_rejected` already is refused with that name and
// stays, rather than being renamed: a raw file under another name would no
// longer match its sidecars or another program's catalogue. A raw file and
// its sidecars move together or not at all: when one cannot move, those
// moved before are moved back.
//
// A folder that refuses changes (a read-only or locked card) gives one
// reason for all its frames, which are not tried, and is left as it was.
// Reads no file's contents. Safe on any thread; meant for a worker thread.
// Qt Core only.

#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>

enum class TRejectDestination { RejectedFolder, Trash };

// The folder beside the frames that rejected frames are moved into.
inline constexpr char kRejectedFolderName[] = "_rejected";

// Whether rawPath lies in a `_rejected` folder already: moveRejected()
// leaves such a frame where it is (a confirmation should not count it).
bool isPutAway(const QString &rawPath);

enum class TMoveOutcome {
    Moved,        // moves says from where to where; undoMove() can move it back
    Restored,     // (by undoMove()) back where it was
    Left,         // in a `_rejected` folder already: left where it is
    Failed,       // error says why; nothing of it moved
    NotAttempted, // cancelled, or its folder refuses changes: error says so; nothing moved
};

struct TFileMove {
    QString from;
    QString to; // for the trash, the file's path in it
};

struct TRejectMove {
    QString rawPath;
    TMoveOutcome outcome = TMoveOutcome::NotAttempted;
    QList<TFileMove> moves; // Moved, Restored: the raw file first, then its sidecars
    QString error;          // "FILE: reason"
};

struct TRejectBatch {
    TRejectDestination destination = TRejectDestination::RejectedFolder;
    QList<TRejectMove> files;   // one per raw file, in the order given
    QStringList folderFailures; // "FOLDER: reason", once for each folder that refused
    QStringList madeFolders;    // the `_rejected` folders the move made
};

// Moves each rejected raw file with its sidecars; once cancel is set (it is
// looked at between frames), the rest are NotAttempted. The batch returned
// is the undo data.
TRejectBatch moveRejected(const QStringList &rawPaths, TRejectDestination destination,
                          const std::atomic<bool> *cancel = nullptr);

// Moves the Moved frames of batch back where they were, each raw file with
// its sidecars, and removes the `_rejected` folders the move made once they
// are empty (and the trash's record of each file taken out of it). A frame is
// never moved back over something that stands at its old place now: it stays
// where it is. Returns the batch as it stands after: frames moved back are
// Restored; those that are not stay Moved, with error saying why (the old
// place taken, the moved file gone, the folder refusing, cancelled), so that
// undoing the returned batch tries them again. The other frames are left out.
TRejectBatch undoMove(const TRejectBatch &batch, const std::atomic<bool> *cancel = nullptr);

#endif // CARD_REJECTMOVE_H
