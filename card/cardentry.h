#ifndef CARDENTRY_H
#define CARDENTRY_H

// One file of a card, read once: what the card window lists, what tolvik-info
// prints and what a contact sheet shows of it. Plain values only, made on any
// thread.

#include "card/filerows.h"
#include "card/statistics.h"

struct TCardEntry {
    QString path;
    QString error;    // fileError(): why it is not accepted, or what is amiss with it
    TFrame frame;     // its exact texts and numbers, and whether it is accepted
    QList<TRow> rows; // what tolvik-info prints of it; only when asked for
    // Why its sidecar could not be read (its marks, frame.mark, then count as
    // unset).
    QString markError;

    bool accepted() const { return frame.accepted; }
};

// Reads the file at path. Only a regular file is opened: a FIFO or a device
// could keep the reading thread waiting for ever, so it is rejected unread.
// With rows, its pass is the one they name (the quick pass for preflight) and
// the entry keeps them; without, the full pass and no rows.
// The marks are read from the sidecar named naming prefers when both exist.
TCardEntry readCardEntry(const QString &path, const TRowOptions *rows = nullptr,
                         TSidecarNaming naming = TSidecarNaming::BaseName);

// Counts the raw exposure figures of an accepted entry into frame.figures.
void readRawFigures(TCardEntry &entry, const std::atomic<bool> *cancel = nullptr);

// The rows tolvik-info --csv --exact prints of an entry read without rows,
// the exposure time in seconds among them and the marks last.
QList<TRow> exactRows(const TCardEntry &entry);

#endif // CARDENTRY_H
