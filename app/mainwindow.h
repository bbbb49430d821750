#ifndef MAINWINDOW_H
#define MAINWINDOW_H

// The one window of the viewer: a narrow panel with the shooting data of the
// opened DNG file and, behind the fold button, its preview with a pixel
// readout and an RGB distribution.

#include <QList>
#include <QMainWindow>
#include <QPointF>
#include <QString>
#include <QStringList>

#include "documents/rgbdistribution.h"
#include "exif/paneltexts.h"
#include "recentfiles.h"

#include <optional>
#include <utility>

class QCloseEvent;
class QContextMenuEvent;
class QDragEnterEvent;
class QDropEvent;
class TCardWindow;
class TFrameView;
class QMenu;
class QPrintPreviewDialog;
class TM9File;
class TReport;

namespace Ui {
class MainWindow;
}

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Opens a file as if it had been dropped on the window (command line).
    void openFile(const QString &path);
    // Shows the DNG files of a folder in the card window (opened on first use);
    // its current row is shown here, and Page Down follows its order.
    void openFolder(const QString &path);

    // The command that hands a file to an external program: open -a "program" "file" .
    static QString externalProgramCommand(const QString &program, const QString &file);
    // What is started for it: the command above where the desktop has "open -a"
    // (macOS); elsewhere the program itself with the file's absolute path.
    static std::pair<QString, QStringList> externalProgramLaunch(const QString &program,
                                                                 const QString &file);

    // The DNG file before (direction -1) or after (+1) path in its folder, in
    // the order tolvik-info reads a folder; empty at either end.
    static QString neighbourFile(const QString &path, int direction);

    // Where File > Open... starts. Where the desktop mounts cards under
    // "/Volumes": lastFolder. Elsewhere the folder of shownFile, else lastFolder
    // when it exists, else the folder where the desktop mounts removable media
    // for the user, else the Pictures folder.
    static QString openStartFolder(const QString &shownFile, const QString &lastFolder);

    // Where "Save PreviewPicture..." proposes to write the preview of a raw
    // file: its folder, its name up to the first dot, ".jpg".
    static QString previewProposal(const QString &rawFilePath);

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private slots:
    void on_actionOpen_triggered();
    void on_actionOpen_Folder_triggered();
    void on_actionExit_triggered();
    void on_actionPrint_triggered();
    void on_actionPreferences_triggered();
    void on_actionSave_Preview_triggered();
    void on_actionAbout_Tolvik_triggered();
    void on_actionCopy_triggered();
    void on_actionExact_Values_toggled(bool checked);
    void on_actionFrame_triggered();
    void on_actionUndo_Marking_triggered();
    void on_tbtnOpenClose_clicked();
    void onShowRGB(QPointF position, unsigned int rgb);
    void onShowRGBAus();

private:
    friend class TestPreview;
    friend class TestCommands;
    friend class TestRecentFiles;

    void readSettings();
    void saveSettings();
    bool userReallyWantsToQuit();

    void verarbeiteKontextMenu(QContextMenuEvent *event);

    void fillRecentMenu();
    // Shows a file without counting it as opened (recent files, last folder):
    // stepping through a folder or the card window's rows.
    bool showFile(const QString &path);

    bool doProcess(QString path);
    void stepFile(int direction);
    void updateAnzeige();
    void updateBild();
    void updateInfoBoxRGB();
    void berechneRGBVerteilung();
    void showDistribution();
    TValueStyle valueStyle() const;
    void addReportOptions(QPrintPreviewDialog &preview, TReport &report);

    Ui::MainWindow *ui;
    // The file opened last. Replaced (and only then deleted) by the next one.
    TM9File *rawFile = nullptr;
    bool rawFileShown = false; // the panel shows rawFile (it was accepted)
    QString currentFileName;
    QStringList programmListe;
    TRecentFiles recentFiles;
    QMenu *recentMenu = nullptr; // File > Open Recent
    bool panelOpen = false;
    QString shownRows; // the panel's rows as the clipboard gets them

    TCardWindow *cardWindow = nullptr; // made on the first folder
    TFrameView *frameView = nullptr;   // made when a frame is first shown

    // The file before (-1) or after (+1) path in the order stepping goes: the
    // card window's shown rows while it is open, else the folder's files.
    QString steppedFile(const QString &path, int direction) const;
    // The frame view on path; at 100 % around a raw position when one is given.
    void showFrameView(const QString &path, std::optional<QPoint> rawPosition = {});

    // RGB distribution, summed over every file opened so far; the exact view
    // draws the shown file's alone.
    TRgbDistribution rgb;
};

#endif // MAINWINDOW_H
