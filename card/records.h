#ifndef RECORDS_H
#define RECORDS_H

// One file's record as tolvik-info prints it: aligned rows, a JSON line or a
// CSV row (RFC 4180). Pure text work, safe on any thread.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

using TRow = std::pair<QString, QVariant>; // caption or query name, value

enum class TFormat { Text, Json, Csv };

// The row's key as JSON and CSV name it: captions lose their colon.
QString rowKey(const QString &caption);

// One CSV record (RFC 4180) and one JSON object on a line of its own.
QByteArray csvLine(const QStringList &fields);
QByteArray jsonLine(const QList<TRow> &members);

// The CSV header: "file", the keys of rows, "error".
QByteArray csvHeader(const QList<TRow> &rows);

// rows begins with the pass's result ("processFile": true/false) except in
// text. A rejected file prints nothing as text, its path, rows and error as
// JSON (the caller gives the rows it wants shown: none, or the pass's facts)
// and its path and error as CSV; an accepted one with an error (cut short)
// has it in both too.
QByteArray record(TFormat format, const QString &path, const QList<TRow> &rows, bool accepted,
                  const QString &error);

#endif // RECORDS_H
