#ifndef SONYMAKERNOTE_H
#define SONYMAKERNOTE_H

// tolvik-info --sony-makernote OFFSET FILE: walks the Sony maker-note
// directory at an absolute offset of an ARW file and prints its values.

#include "card/queries.h"
#include "card/records.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

struct TSonyMakerNoteOptions {
    QString offset; // decimal or 0x-hexadecimal
    QString path;
    bool all = false;
};

// Reads the file and prints its record in format; returns the exit status: 0 done,
// 1 the offset lies outside the file or the file cannot be read, 2 the
// offset is no number.
int runSonyMakerNote(const TSonyMakerNoteOptions &options, TFormat format);

// The Sony decoders that take no argument, by method name.
const QList<TQuery> &sonyQueries();

#endif // SONYMAKERNOTE_H
