#ifndef MARKER_H
#define MARKER_H

// Culling from the windows: the keys that rate and label frames, the marks
// written to the frames' XMP sidecars on the work pool one marking after the
// other, and Ctrl+Z, which writes back what the last marking replaced. One
// marker serves every window (marker()), so that the main window, the frame
// view and the card window show the same marks and undo in one order.

#include "card/marks.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

class QAction;
class QMenu;

// What a key does to the marks of the frames it is given.
struct TMarkEdit {
    enum Kind { SetRating, ToggleRejected, ToggleLabel } kind = SetRating;
    int stars = 0;                           // SetRating: 0 (none) to 5
    TColourLabel label = TColourLabel::None; // ToggleLabel
};

// The edit a key stands for, as photo tools have them: 0–5 rate, X rejects
// (again: takes it back), 6–9 give Red, Yellow, Green, Blue (again: take it
// off). Only the plain key, without Ctrl or Alt.
std::optional<TMarkEdit> markEditOfKey(int key, Qt::KeyboardModifiers modifiers);

// Puts an action for each of those keys into menu before before, each
// calling apply with its edit: the keys work wherever the menu's window has
// the focus, and the menu shows them.
void addMarkActions(QMenu *menu, QAction *before,
                    const std::function<void(const TMarkEdit &)> &apply);

// The marks of a set of frames after an edit: a label given to frames that
// all have it already is taken off, and so is a reject.
QList<TMarkChange> changesOf(const QList<TMarkChange> &current, const TMarkEdit &edit);

// The name a new sidecar gets, as the preferences say.
TSidecarNaming sidecarNaming();

class TMarker : public QObject {
    Q_OBJECT

public:
    explicit TMarker(QObject *parent = nullptr);

    // Applies the edit to the files' marks as their sidecars hold them.
    // Returns at once; marked() tells each new mark as it is written.
    void mark(const QStringList &paths, const TMarkEdit &edit);
    // Writes back the marks the last marking replaced (or moves back what
    // the last move moved: see addUndo()).
    void undo();
    bool canUndo() const { return !m_undo.empty(); }
    // Whether markings are still being written.
    bool isBusy() const { return m_running || !m_queue.empty(); }

    // Another window's step that Ctrl+Z takes back in the same order as the
    // markings (moving rejected frames aside).
    void addUndo(std::function<void()> undo);

signals:
    // A file's marks as they now stand in its sidecar.
    void marked(const QString &path, const TMark &mark);
    // What could not be written, once per marking: the folder that refused,
    // or each file that kept its old marks and why.
    void problem(const QString &message);
    void undoChanged(bool canUndo);

private:
    struct TJob {
        QList<TMarkChange> fixed; // undo: these marks exactly
        QStringList paths;        // or: these files, edited
        TMarkEdit edit;
        bool remember = true; // an undo's own writing is not undone again
    };
    void startNext();
    void finished(const TMarkBatch &batch, bool remember);

    std::vector<TJob> m_queue;
    bool m_running = false;
    std::vector<std::function<void()>> m_undo;
};

// The one marker of the program.
TMarker *marker();

// The text of a marking's failures: the folder's reason once, else one line
// per file that kept its marks; empty when every file was written.
QString markProblem(const TMarkBatch &batch);

#endif // MARKER_H
