#ifndef SAFEWRITE_H
#define SAFEWRITE_H

// Every file Tolvik writes (a report, a contact sheet, a picture, a table)
// goes through here. Before anything is read, the destination is checked:
// it must not be one of the files being read, nor an existing file of
// another kind, and its folder must take a new file. Then it is written to a
// temporary file in the same folder, which replaces the destination only
// when it is complete: a full disk or a crash never leaves half a file in
// place of a good one, and never touches a raw file. Qt Core only.

#include <QString>
#include <QStringList>

#include <functional>

class QIODevice;

// What is written; an existing destination must start as such a file does.
enum class TOutputKind { Pdf, Jpeg, Png, Tiff, Csv };

// Why path must not be written as kind, or an empty text when it may: the
// folder is missing or cannot be written to, the path is a folder, it is one
// of inputs (same device and inode, so that a hard link, a symbolic link or
// "./x/../A.DNG" is caught), or it exists and is not a file of that kind (a
// DNG for a PDF, say). Reads nothing but the first bytes of an existing
// destination.
QString outputRefusal(const QString &path, TOutputKind kind, const QStringList &inputs = {});

// Writes path through a temporary file in its folder: write() fills the
// device and returns false when it failed. Returns an empty text on success;
// otherwise the destination is as it was, and the text names the file and
// the system's reason ("No space left on device", "Permission denied").
QString writeAtomically(const QString &path, const std::function<bool(QIODevice &)> &write);

// "FILE: reason", the form every failed write is reported in.
QString writeFailure(const QString &path, const QString &reason);

// The system's text for an errno value ("Permission denied").
QString errnoText(int error);

// Whether a failure ("FILE: reason") has a reason that refuses every file of
// its folder alike: a card mounted read-only or locked, a folder of someone
// else's, a full card.
bool isFolderFailure(const QString &failure);

#endif // SAFEWRITE_H
