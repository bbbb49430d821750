#ifndef SONYMAKERNOTE_H
#define SONYMAKERNOTE_H

// tolvik-info --sony-makernote OFFSET FILE: walks the Sony maker-note
// directory at an absolute offset of an ARW file and prints its values.

#include "cli/queries.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

struct TSonyMakerNoteOptions {
    QString offset; // decimal or 0x-hexadecimal
    QString path;
    bool json = false;
    bool all = false;
};

using TOutputRow = std::pair<QString, QVariant>;
using TPrintRows = void (*)(const QString &path, const QList<TOutputRow> &rows, bool json);

// Reads the file and prints with print; returns the exit status: 0 done,
// 1 the offset lies outside the file or the file cannot be read, 2 the
// offset is no number.
int runSonyMakerNote(const TSonyMakerNoteOptions &options, TPrintRows print);

// The Sony decoders that take no argument, by method name.
const QList<TQuery> &sonyQueries();

#endif // SONYMAKERNOTE_H
