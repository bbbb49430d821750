#ifndef MARKING_H
#define MARKING_H

// tolvik-info --rate N, --reject, --label COLOUR|none: marks written to the
// files' XMP sidecars, where other photo tools read them.

#include "card/marks.h"

#include <QString>
#include <QStringList>

#include <optional>

struct TMarking {
    std::optional<int> rating;    // -1 rejected, 0 unrated, 1..5
    std::optional<QString> label; // "" none
};

// The marking an option asks for, or why it is wrong: "--rate" with its
// value, "--reject", "--label" with its value.
QString parseMarking(const QString &option, const QString &value, TMarking &marking);

// Writes the marking into each file's sidecar (a new one named as naming
// says), keeping what the sidecar held besides; returns 0, or 2 when a
// sidecar could not be written (the reason on stderr, once per folder that
// refuses new files).
int runMarking(const QStringList &files, const TMarking &marking, TSidecarNaming naming);

#endif // MARKING_H
