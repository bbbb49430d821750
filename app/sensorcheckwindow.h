#ifndef SENSORCHECKWINDOW_H
#define SENSORCHECKWINDOW_H

// Card ▸ Check Sensor...: the sensor check of a card's accepted frames
// (raw/sensorcheck.h) run on the work pool, with its progress and a Stop
// that returns at once; then the map of the sensor with every defect and spot
// marked beside their sortable list. A click on a mark or a double click on
// a row asks for the spot in a frame of the card at 100 %; the list copies
// as tab-separated text, and the map prints or is saved as a PDF.

#include "card/cardentry.h"
#include "raw/sensorlist.h"

#include <QMainWindow>
#include <QPoint>
#include <QStringList>

#include <atomic>
#include <memory>

class QSortFilterProxyModel;
class TSensorListModel;
template <typename T> class QFutureWatcher;

namespace Ui {
class TSensorCheckWindow;
}

class TSensorCheckWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit TSensorCheckWindow(QWidget *parent = nullptr);
    ~TSensorCheckWindow() override;

    // Checks frames (the card's accepted entries, in the card's order); the
    // PDF is never written over one of cardFiles. A check still running is
    // stopped first.
    void start(const QString &folder, const QList<TCardEntry> &frames,
               const QStringList &cardFiles);
    void stop();
    bool isRunning() const { return m_run != nullptr; }
    // Whether the window shows a check of folder, running or done (not stopped).
    bool showsCheckOf(const QString &folder) const;
    const raw::TSensorCheckResult &result() const { return m_result; }

    // The frame a mark is best seen in: for a spot the frame checked at the
    // smallest aperture, else the card's first frame checked.
    QString frameFor(const raw::TSensorMark &mark) const;

signals:
    // The place of a mark asked for in a frame, at 100 %.
    void frameRequested(const QString &path, QPoint rawPosition);

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void on_btnStop_clicked();
    void on_actionCopy_triggered();
    void on_actionPrint_triggered();
    void on_actionSave_PDF_triggered();
    void on_tableView_activated(const QModelIndex &index);

private:
    struct TRun;
    void finished(const raw::TSensorCheckResult &result, const QStringList &used);
    void showRunning(bool running);
    void requestFrame(int mark);
    int markOfRow(const QModelIndex &index) const;

    Ui::TSensorCheckWindow *ui;
    TSensorListModel *m_model;
    QSortFilterProxyModel *m_sorted;
    QString m_folder;
    QList<TCardEntry> m_frames;
    QStringList m_cardFiles;
    QList<TCardEntry> m_checked; // the frames the check used, in the card's order
    raw::TSensorCheckResult m_result;
    std::unique_ptr<TRun> m_run; // the check running, if one is
};

#endif // SENSORCHECKWINDOW_H
