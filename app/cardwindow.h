#ifndef CARDWINDOW_H
#define CARDWINDOW_H

// The card window: every DNG file of a folder as a row of a sortable,
// filterable table. Selecting a row shows the file in the main window's panel;
// File ▸ Export CSV... writes the shown rows as tolvik-info --csv --exact does.

#include <QMainWindow>
#include <QPoint>
#include <QString>

#include <optional>

class QCloseEvent;
class QModelIndex;
class QTimer;
class TCardFilter;
class TCardLoader;
class TCardModel;
class TContactSheet;
class TFrameView;
class TSensorCheckWindow;
enum class TCategory;
struct TMarkEdit;

namespace Ui {
class TCardWindow;
}

class TCardWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit TCardWindow(QWidget *parent = nullptr);
    ~TCardWindow() override;

    // Reads the folder's DNG files into the table; stops a folder still loading.
    void openFolder(const QString &folder);
    QString folder() const { return m_folder; }

    // Moves the current row by direction in the shown order; false when no row
    // is current. At either end nothing happens.
    bool stepRow(int direction);
    // Whether path is a shown row; the accepted file before (-1) or after
    // (+1) it in the shown order, empty at either end; making it current.
    bool holds(const QString &path) const;
    QString neighbourPath(const QString &path, int direction) const;
    void selectPath(const QString &path);

    // Writes the shown rows in the shown order; an empty text, or why the
    // file was not written (refused, or the system's reason).
    QString exportCsv(const QString &path) const;
    // The contact sheet of the shown rows in the shown order (of every row
    // in the card's order with File ▸ Contact Sheet of the Shown Frames
    // Only off), with the raw figures where File ▸ Raw Exposure Figures on
    // the Contact Sheet is on.
    TContactSheet contactSheet() const;

    // The pictures of the rows shown and a few beyond are asked for.
    void askPicturesAhead();

signals:
    void fileChosen(const QString &path);     // a row of an accepted file became current
    void fileActivated(const QString &path);  // Enter or a double click on it
    void folderOpened(const QString &folder); // for Open Recent
    // A place on the sensor asked for in a frame at 100 % (the sensor check).
    void frameAtRequested(const QString &path, QPoint rawPosition);

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void on_actionOpen_Folder_triggered();
    void on_actionExport_CSV_triggered();
    void on_actionPrint_Contact_Sheet_triggered();
    void on_actionSave_Contact_Sheet_triggered();
    void on_actionCheck_Sensor_triggered();
    void on_btnClearCategory_clicked();
    void on_actionClose_triggered();
    void on_leFilter_textChanged(const QString &text);
    void on_cbLens_currentIndexChanged(int index);
    void on_chkRejected_toggled(bool checked);
    void on_btnStop_clicked();
    void on_cbRating_currentIndexChanged(int index);
    void on_cbLabel_currentIndexChanged(int index);
    void on_actionUndo_Marking_triggered();
    void on_actionStep_After_Marking_toggled(bool checked);
    void on_actionMove_Rejected_triggered();
    void on_tableView_activated(const QModelIndex &index);

private:
    void readSettings();
    void saveSettings() const;
    void onCurrentRowChanged(const QModelIndex &current);
    void onProgress(int done, int total);
    void onFinished();
    void updateLenses();
    void updateShown();
    void updateSensorAction();
    void statisticsChanged();
    void updateStatistics();
    void showConditions();
    QList<int> shownRows() const;
    // The accepted files of the selected rows, in the shown order.
    QStringList selectedPaths() const;
    void markSelected(const TMarkEdit &edit);
    void fillMarkFilters();
    void showMarkConditions();
    // The frames rated rejected, moved aside as the preferences say; Ctrl+Z
    // brings them back into the card.
    void moveRejected(const QStringList &paths);
    std::optional<TContactSheet> preparedSheet();
    QList<int> allRows() const;
    QStringList cardFiles() const; // every file of the card, to be kept from any output
    QString pathAt(const QModelIndex &index) const;
    int shownRowOf(const QString &path) const;

    Ui::TCardWindow *ui;
    TCardModel *m_model;
    TCardFilter *m_filter;
    TCardLoader *m_loader;
    QString m_folder;
    TFrameView *m_framePane; // the selected row's developed frame
    QTimer *m_statisticsDue; // counts again at most every so often while rows change
    TSensorCheckWindow *m_sensorCheck = nullptr; // made when first asked for
};

#endif // CARDWINDOW_H
