#include "card/cardentry.h"

#include "rawfile/tm9file.h"

#include <QFileInfo>

TCardEntry readCardEntry(const QString &path, const TRowOptions *rows, TSidecarNaming naming)
{
    TCardEntry entry;
    entry.path = path;
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        entry.frame.texts.fileName = info.fileName();
        // Like a file that cannot be read, it is not called a wrong one.
        entry.error = QStringLiteral("not a regular file");
        if (rows)
            entry.rows = fileRows(TM9File(), *rows, false);
        return entry;
    }
    TM9File file(path);
    const bool accepted =
        rows && rows->preflight ? file.processFilePreflight() : file.processFile();
    entry.error = fileError(file, accepted);
    entry.frame = frameOf(file, accepted);
    if (accepted) {
        TMarkRead marks = readMarks(path, naming);
        entry.frame.mark = marks.mark;
        entry.markError = marks.error;
    }
    if (rows && !accepted && rows->passFactsWhenRejected)
        entry.rows = rows->all ? passFacts(file) : QList<TRow>();
    else if (rows)
        entry.rows = fileRows(file, *rows, accepted, entry.frame.mark);
    return entry;
}

QList<TRow> exactRows(const TCardEntry &entry)
{
    QList<TRow> rows{{QStringLiteral("processFile"), entry.accepted()}};
    for (const auto &[caption, text] : panelRows(entry.frame.texts))
        rows.append({caption, text});
    insertExposureSeconds(rows, entry.frame.numbers.exposureTime);
    return rows + markRows(entry.frame.mark, false);
}

void readRawFigures(TCardEntry &entry, const std::atomic<bool> *cancel)
{
    if (entry.accepted())
        entry.frame.figures = raw::rawFiguresOfFile(entry.path, cancel);
}
