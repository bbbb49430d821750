#include "marker.h"

#include "settingskeys.h"
#include "workpool.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QtConcurrent>

#include <algorithm>

namespace {

struct TKeyEdit {
    int key;
    TMarkEdit edit;
    const char *text; // the menu's
};
constexpr TKeyEdit kKeyEdits[] = {
    {Qt::Key_0, {TMarkEdit::SetRating, 0}, "No Rating"},
    {Qt::Key_1, {TMarkEdit::SetRating, 1}, "\u2605"},
    {Qt::Key_2, {TMarkEdit::SetRating, 2}, "\u2605\u2605"},
    {Qt::Key_3, {TMarkEdit::SetRating, 3}, "\u2605\u2605\u2605"},
    {Qt::Key_4, {TMarkEdit::SetRating, 4}, "\u2605\u2605\u2605\u2605"},
    {Qt::Key_5, {TMarkEdit::SetRating, 5}, "\u2605\u2605\u2605\u2605\u2605"},
    {Qt::Key_X, {TMarkEdit::ToggleRejected}, "Rejected"},
    {Qt::Key_6, {TMarkEdit::ToggleLabel, 0, TColourLabel::Red}, "Red Label"},
    {Qt::Key_7, {TMarkEdit::ToggleLabel, 0, TColourLabel::Yellow}, "Yellow Label"},
    {Qt::Key_8, {TMarkEdit::ToggleLabel, 0, TColourLabel::Green}, "Green Label"},
    {Qt::Key_9, {TMarkEdit::ToggleLabel, 0, TColourLabel::Blue}, "Blue Label"},
};

// What a marking wrote, with the marks it wrote.
struct TWritten {
    QList<TMarkChange> changes;
    TMarkBatch batch;
};

} // namespace

std::optional<TMarkEdit> markEditOfKey(int key, Qt::KeyboardModifiers modifiers)
{
    // The digits of the keypad count as well; Shift does not change a digit
    // on every keyboard, so only Ctrl, Alt and Meta make another key.
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return std::nullopt;
    for (const TKeyEdit &row : kKeyEdits) {
        if (row.key == key)
            return row.edit;
    }
    return std::nullopt;
}

QList<TMarkChange> changesOf(const QList<TMarkChange> &current, const TMarkEdit &edit)
{
    const QString label = lookup(edit.label);
    const bool allRejected = std::all_of(current.begin(), current.end(), [](const TMarkChange &c) {
        return c.mark.hasRating && c.mark.rating < 0;
    });
    const bool allLabelled = std::all_of(current.begin(), current.end(), [&](const TMarkChange &c) {
        return c.mark.label == label;
    });
    QList<TMarkChange> changes = current;
    for (TMarkChange &change : changes) {
        TMark &mark = change.mark;
        switch (edit.kind) {
        case TMarkEdit::SetRating:
            mark.hasRating = true;
            mark.rating = edit.stars;
            break;
        case TMarkEdit::ToggleRejected:
            mark.hasRating = true;
            mark.rating = allRejected ? 0 : -1;
            break;
        case TMarkEdit::ToggleLabel: mark.label = allLabelled ? QString() : label; break;
        }
    }
    return changes;
}

TSidecarNaming sidecarNaming()
{
    return QSettings().value(settingskeys::kSidecarName).toString() == QLatin1String("full")
               ? TSidecarNaming::FullName
               : TSidecarNaming::BaseName;
}

QString markProblem(const TMarkBatch &batch)
{
    QStringList kept;
    QStringList reasons;
    if (!batch.folderFailure.isEmpty())
        reasons.append(batch.folderFailure);
    for (const TMarkWrite &file : batch.files) {
        if (file.outcome != TMarkOutcome::Failed && file.outcome != TMarkOutcome::NotAttempted)
            continue;
        kept.append(QFileInfo(file.rawPath).fileName());
        if (!file.folderNotWritable && !file.error.isEmpty())
            reasons.append(file.error);
    }
    if (kept.isEmpty())
        return QString();
    return QCoreApplication::translate("TMarker", "The marks could not be written: %1\n"
                                                  "These frames kept their old marks: %2")
        .arg(reasons.join(QLatin1Char('\n')), kept.join(QStringLiteral(", ")));
}

void addMarkActions(QMenu *menu, QAction *before,
                    const std::function<void(const TMarkEdit &)> &apply)
{
    for (const TKeyEdit &row : kKeyEdits) {
        auto *action = new QAction(QString::fromUtf8(row.text), menu);
        action->setShortcut(QKeySequence(row.key));
        const TMarkEdit edit = row.edit;
        QObject::connect(action, &QAction::triggered, menu, [apply, edit] { apply(edit); });
        menu->insertAction(before, action);
        if (row.key == Qt::Key_5 || row.key == Qt::Key_X)
            menu->insertSeparator(before);
    }
    menu->insertSeparator(before);
}

TMarker::TMarker(QObject *parent) : QObject(parent) {}

TMarker *marker()
{
    static TMarker *one = new TMarker(QCoreApplication::instance());
    return one;
}

void TMarker::mark(const QStringList &paths, const TMarkEdit &edit)
{
    if (paths.isEmpty())
        return;
    m_queue.push_back({{}, paths, edit, true});
    startNext();
}

void TMarker::undo()
{
    if (m_undo.empty())
        return;
    const std::function<void()> step = std::move(m_undo.back());
    m_undo.pop_back();
    emit undoChanged(canUndo());
    step();
}

void TMarker::addUndo(std::function<void()> undo)
{
    m_undo.push_back(std::move(undo));
    emit undoChanged(true);
}

// One marking at a time, in the order asked: the second of two keys pressed
// quickly on a frame reads what the first wrote.
void TMarker::startNext()
{
    if (m_running || m_queue.empty())
        return;
    TJob job = std::move(m_queue.front());
    m_queue.erase(m_queue.begin());
    m_running = true;
    const TSidecarNaming naming = sidecarNaming();
    auto *watcher = new QFutureWatcher<TWritten>(this);
    const bool remember = job.remember;
    connect(watcher, &QFutureWatcher<TWritten>::finished, this, [this, watcher, remember] {
        watcher->deleteLater();
        const TWritten written = watcher->result();
        m_running = false;
        for (qsizetype i = 0; i < written.batch.files.size(); ++i) {
            const TMarkOutcome outcome = written.batch.files[i].outcome;
            if (outcome == TMarkOutcome::Written || outcome == TMarkOutcome::Unchanged)
                emit marked(written.changes[i].rawPath, written.changes[i].mark);
        }
        finished(written.batch, remember);
        startNext();
    });
    watcher->setFuture(QtConcurrent::run(workPool(), [job, naming] {
        TWritten written;
        written.changes = job.fixed;
        if (!job.paths.isEmpty()) {
            QList<TMarkChange> current;
            for (const QString &path : job.paths)
                current.append({path, readMarks(path, naming).mark});
            written.changes = changesOf(current, job.edit);
        }
        written.batch = writeMarks(written.changes, naming);
        return written;
    }));
}

void TMarker::finished(const TMarkBatch &batch, bool remember)
{
    const QString problem = markProblem(batch);
    if (!problem.isEmpty()) {
        // Once, over whichever window the keys were pressed in, without
        // stopping the window: the next marking may be on its way.
        auto *box = new QMessageBox(QMessageBox::Warning, tr("Marks"), problem, QMessageBox::Ok,
                                    QApplication::activeWindow());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
        emit this->problem(problem);
    }
    const QList<TMarkChange> back = undoOf(batch);
    if (!remember || back.isEmpty())
        return;
    addUndo([this, back] {
        m_queue.push_back({back, {}, {}, false});
        startNext();
    });
}
