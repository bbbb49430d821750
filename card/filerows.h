#ifndef FILEROWS_H
#define FILEROWS_H

// What tolvik-info prints of one file, as rows: the panel's captions and
// texts, the quick pass's, or every query. The card window exports its table
// through the same rows.

#include "card/marks.h"
#include "card/records.h"

class TM9File;

struct TRowOptions {
    bool preflight = false; // the quick pass's rows instead of the panel's
    bool all = false;       // every query and stored value after them
    bool exact = false;     // the exact texts
    bool numbers = false;   // the exact values as numbers too, for JSON
    // The exposure time in seconds beside its text (CSV of the exact texts).
    bool exposureSeconds = false;
    // A rejected file's rows are its pass facts with all, else none (JSON).
    bool passFactsWhenRejected = false;
    // The marks as the text output shows them, only where set (markRows()).
    bool marksAsText = false;
};

// The rows of one file after its pass, its marks last; builds no picture, so
// any thread may call it. The first row is the pass's result.
QList<TRow> fileRows(const TM9File &file, const TRowOptions &options, bool accepted,
                     const TMark &mark = TMark());

// The rows of a file's culling marks: "rating" (-1 rejected, 0 unrated, 1 to
// 5) and "label", null when unset, always there for JSON and CSV; asText,
// "Rating:" ("★★★★☆", "rejected") and "Label:" only where the file has them,
// so that an unmarked file's text output is as it was.
QList<TRow> markRows(const TMark &mark, bool asText);

// What a rejected file's JSON holds with --all: the pass's result and every
// query and stored value, so that a file can be diagnosed.
QList<TRow> passFacts(const TM9File &file);

// Puts the exposure time in seconds beside its text ("Exp.Time:") in rows.
void insertExposureSeconds(QList<TRow> &rows, double seconds);

// What a file's pass found amiss: the system's reason it could not be read
// ("No such file or directory", "Permission denied"), "not a TIFF file",
// "Model: LEICA M10" (another camera), "file ends at byte N" (cut short; an
// accepted file keeps its values), "no camera model"; empty for a whole M9
// or M Monochrom file.
QString fileFinding(const TM9File &file);

// Why a file after its pass is not accepted: "Fehler bei der Verarbeitung.
// Keine native DNG-Datei!", followed by the finding in brackets. tolvik-info,
// its CSV and JSON, and the card window say it alike.
QString rejectionText(const TM9File &file);

// What is left to say of a file after its pass: the system's reason when it
// could not be read, the rejection text when it is not accepted, else its
// finding (a file cut short); empty for a whole file. Scripts see it on stderr and in the CSV and
// JSON error field, the card window in its error column.
QString fileError(const TM9File &file, bool accepted);

#endif // FILEROWS_H
