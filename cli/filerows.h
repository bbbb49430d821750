#ifndef FILEROWS_H
#define FILEROWS_H

// What tolvik-info prints of one file, as rows: the panel's captions and
// texts, the quick pass's, or every query. The card window exports its table
// through the same rows.

#include "cli/records.h"

class TM9File;

struct TRowOptions {
    bool preflight = false; // the quick pass's rows instead of the panel's
    bool all = false;       // every query and stored value after them
    bool exact = false;     // the exact texts
    bool numbers = false;   // the exact values as numbers too, for JSON
};

// The rows of one file after its pass; builds no picture, so any thread may
// call it. The first row is the pass's result.
QList<TRow> fileRows(const TM9File &file, const TRowOptions &options, bool accepted);

// Why a file after its pass is not accepted: "Fehler bei der Verarbeitung.
// Keine native DNG-Datei!", followed by the camera model found when the file
// names another camera. tolvik-info and the card window say it alike.
QString rejectionText(const TM9File &file);

#endif // FILEROWS_H
