#include "cli/marking.h"

#include <cstdio>

QString parseMarking(const QString &option, const QString &value, TMarking &marking)
{
    if (option == QLatin1String("--reject")) {
        marking.rating = -1;
        return {};
    }
    if (option == QLatin1String("--rate")) {
        bool ok = false;
        const int stars = value.toInt(&ok);
        if (!ok || stars < 0 || stars > 5)
            return QStringLiteral("--rate takes 0 to 5 stars");
        marking.rating = stars;
        return {};
    }
    for (const TColourLabelText &entry : kColourLabels) {
        if (value.compare(QLatin1String(entry.text), Qt::CaseInsensitive) == 0 &&
            entry.code != TColourLabel::None) {
            marking.label = QLatin1String(entry.text);
            return {};
        }
    }
    if (value == QLatin1String("none")) {
        marking.label = QString();
        return {};
    }
    return QStringLiteral("--label takes Red, Yellow, Green, Blue, Purple or none");
}

int runMarking(const QStringList &files, const TMarking &marking, TSidecarNaming naming)
{
    QList<TMarkChange> changes;
    for (const QString &file : files) {
        // What the sidecar holds now, changed only where asked.
        TMark mark = readMarks(file, naming).mark;
        if (marking.rating) {
            mark.rating = *marking.rating;
            mark.hasRating = true;
        }
        if (marking.label)
            mark.label = *marking.label;
        changes.append({file, mark});
    }
    const TMarkBatch batch = writeMarks(changes, naming);
    int status = 0;
    if (!batch.folderFailure.isEmpty()) {
        std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(batch.folderFailure));
        status = 2;
    }
    for (const TMarkWrite &write : batch.files) {
        if (write.outcome == TMarkOutcome::Failed && !write.folderNotWritable) {
            std::fprintf(stderr, "tolvik-info: %s\n", qPrintable(write.error));
            status = 2;
        } else if (write.outcome == TMarkOutcome::NotAttempted && !write.folderNotWritable) {
            status = 2;
        }
    }
    return status;
}
