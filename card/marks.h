#ifndef CARD_MARKS_H
#define CARD_MARKS_H

// Culling marks of a raw file: a rating and a colour label, kept as xmp:Rating
// and xmp:Label in an XMP sidecar beside it, where Lightroom, Bridge,
// darktable, digiKam and exiftool find them. The raw file is only read.
//
// A file has one sidecar: an existing one under either name is the one read
// and updated (the preferred name when both exist), and a new one gets the
// preferred name. Without a sidecar, the marks a converter embedded in the
// DNG's own XMP packet are read. A sidecar is rewritten through Exempi with
// only the two properties changed; one that does not parse is reported and
// left as it is. Every write goes through a temporary file in the folder.
// Safe on any thread. Qt Core and Exempi.

#include <QList>
#include <QString>

#include <atomic>
#include <optional>

struct TMark {
    int rating = 0; // when hasRating: -1 rejected, 0 unrated, 1..5 stars
    bool hasRating = false;
    QString label; // a colour label's text ("Red"), another program's text, or empty
    bool operator==(const TMark &other) const
    {
        return hasRating == other.hasRating && (!hasRating || rating == other.rating) &&
               label == other.label;
    }
    bool operator!=(const TMark &other) const { return !(*this == other); }
};

enum class TColourLabel { None, Red, Yellow, Green, Blue, Purple };

// The colour labels as stored in xmp:Label, the texts Lightroom and Bridge
// use, and the colour every view shows them in (0xRRGGBB).
struct TColourLabelText {
    TColourLabel code;
    const char *text;
    unsigned rgb;
};
inline constexpr TColourLabelText kColourLabels[] = {
    {TColourLabel::None, "", 0},
    {TColourLabel::Red, "Red", 0xd83b3b},
    {TColourLabel::Yellow, "Yellow", 0xe8c21c},
    {TColourLabel::Green, "Green", 0x3fa34d},
    {TColourLabel::Blue, "Blue", 0x3b6fd8},
    {TColourLabel::Purple, "Purple", 0x9046c4},
};
QString lookup(TColourLabel label);
// The colour one of the five colour labels shows in; none for another text.
std::optional<unsigned> labelRgb(const QString &label);

// What a row shows of a mark: the rating as "★★★☆☆" (asStars) or "3",
// "rejected", or empty when unrated; the label as stored.
struct TMarkTexts {
    QString rating;
    QString label;
};
TMarkTexts markTexts(const TMark &mark, bool asStars);

// The name of a new sidecar: L1001234.xmp (what most editors read) or
// L1001234.DNG.xmp (darktable's and digiKam's).
enum class TSidecarNaming { BaseName, FullName };

// The sidecar the marks of rawPath are in: the existing one (the preferred
// name when both exist), else the path a new one gets.
QString sidecarFor(const QString &rawPath, TSidecarNaming naming);

// Every sidecar rawPath has, under either name (a link too, but no folder and
// not the raw file itself): the files that go where it goes.
QStringList sidecarsOf(const QString &rawPath);

struct TMarkRead {
    TMark mark;
    QString source; // the sidecar or the raw file the marks came from; empty: none
    QString error;  // "FILE: reason" when the sidecar or raw file could not be read
};
TMarkRead readMarks(const QString &rawPath, TSidecarNaming naming);

enum class TMarkOutcome {
    Written,      // the sidecar holds the new marks
    Unchanged,    // it held them already (or, without a sidecar, the DNG did): nothing written
    Failed,       // error says why; nothing changed
    NotAttempted, // cancelled, or its folder failed before: nothing changed
};

struct TMarkWrite {
    QString rawPath;
    QString sidecar;
    TMarkOutcome outcome = TMarkOutcome::NotAttempted;
    // The marks as readMarks showed them before: writing them back undoes the
    // change. A sidecar made by the write is kept, holding the old marks.
    TMark before;
    QString error;
    // The folder refuses new files (a read-only or full card): so will the
    // other files in it.
    bool folderNotWritable = false;
};
TMarkWrite writeMarks(const QString &rawPath, const TMark &mark, TSidecarNaming naming);

struct TMarkChange {
    QString rawPath;
    TMark mark;
};

struct TMarkBatch {
    QList<TMarkWrite> files; // one per change, in order
    // The first "folder not writable" failure, once: the other files of that
    // folder are NotAttempted with the same text.
    QString folderFailure;
};

// Writes each change in turn; once cancel is set, the rest are NotAttempted.
// Meant for a worker thread.
TMarkBatch writeMarks(const QList<TMarkChange> &changes, TSidecarNaming naming,
                      const std::atomic<bool> *cancel = nullptr);

// The changes that undo what batch wrote.
QList<TMarkChange> undoOf(const TMarkBatch &batch);

#endif // CARD_MARKS_H
