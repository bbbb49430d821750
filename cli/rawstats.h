#ifndef CLI_RAWSTATS_H
#define CLI_RAWSTATS_H

// tolvik-info --raw-stats FILE|FOLDER...: the exposure figures of each file's
// raw data (raw/rawstats.h), one line, JSON object or CSV row per file.

#include "card/records.h"

#include <QByteArray>
#include <QStringList>

namespace raw {
struct TRawFigures;
}

// Reads the files on jobs threads and prints their records in file order;
// returns the exit status: 0 every file figured, 1 one was not.
int runRawStats(const QStringList &files, TFormat format, int jobs);

// One file's record in format; error (the figures' own, or why the file is
// not accepted) makes it an error record.
QByteArray rawStatsRecord(TFormat format, const QString &path, const raw::TRawFigures &figures);
QByteArray rawStatsCsvHeader();

#endif // CLI_RAWSTATS_H
