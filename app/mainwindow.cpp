#include "mainwindow.h"
#include "ui_mainwindow.h"
#include "ui_reportoptions.h"

#include "card/dngfiles.h"
#include "card/filerows.h"
#include "card/safewrite.h"
#include "cardwindow.h"
#include "documents/treport.h"
#include "exif/paneltexts.h"
#include "marker.h"
#include "rawfile/tm9file.h"
#include "safeprint.h"
#include "settingskeys.h"
#include "tdlgpreferences.h"
#include "tframeview.h"
#include "tmygraphicspixmapitem.h"
#include "workpool.h"

#include <QBuffer>
#include <QClipboard>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QFutureWatcher>
#include <QGraphicsScene>
#include <QIcon>
#include <QImage>
#include <QImageWriter>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPixmap>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProcess>
#include <QSettings>
#include <QShortcut>
#include <QStandardPaths>
#include <QToolBar>
#include <QToolTip>
#include <QUrl>
#include <QtConcurrent>

#include <atomic>
#include <memory>

namespace {

constexpr int kFoldedWidth = 344;
constexpr int kUnfoldedWidth = 650;
constexpr int kWindowHeight = 475;

// The local path of the first dragged URL when its suffix is DNG in any
// letter case; further URLs do not count.
QString firstDngPath(const QMimeData *mime)
{
    if (!mime)
        return {};
    const QList<QUrl> urls = mime->urls();
    if (urls.isEmpty())
        return {};
    const QString path = urls.first().toLocalFile();
    if (QFileInfo(path).suffix().toUpper() != QLatin1String("DNG"))
        return {};
    return path;
}

// The header fonts of the form are the Mac's, whose points are pixels there.
// Where they are missing, the stand-in gets the same pixel size, so that
// camera, serial number and firmware keep to their narrow labels.
void fitMacFonts(QWidget *window)
{
    const QList<QLabel *> labels = window->findChildren<QLabel *>();
    for (QLabel *label : labels) {
        QFont font = label->font();
        const QString family = font.family();
        if (!family.contains(QLatin1String("Lucida Grande")) || QFontDatabase::hasFamily(family))
            continue;
        font.setPixelSize(font.pointSize());
        label->setFont(font);
    }
}

// The local path of the first dragged URL when it is a folder.
QString firstFolderPath(const QMimeData *mime)
{
    if (!mime || mime->urls().isEmpty())
        return {};
    const QString path = mime->urls().first().toLocalFile();
    return !path.isEmpty() && QFileInfo(path).isDir() ? path : QString();
}

// The fold button's pictures keep their ".tiff" names but are PNGs, which Qt
// recognises by their content: no TIFF plugin is loaded and libtiff has
// nothing to complain about on stderr.
QIcon foldIcon(const QString &path)
{
    return QIcon(QPixmap(path));
}

// A JPEG with an Exif segment holding only the orientation, right after the
// start of image (and JFIF's APP0, where Qt wrote one): every viewer then
// turns the stored pixels upright as the raw file's own viewers do.
QByteArray withOrientation(const QByteArray &jpeg, quint16 orientation)
{
    if (orientation <= 1 || orientation > 8 || !jpeg.startsWith("\xFF\xD8"))
        return jpeg;
    // "Exif\0\0", a big-endian TIFF header, one directory of one entry.
    QByteArray exif("Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01", 24);
    exif += char(orientation >> 8);
    exif += char(orientation & 0xFF);
    exif += QByteArray(2 + 4, '\0'); // the value's padding, no next directory
    QByteArray segment("\xFF\xE1", 2);
    segment += char((exif.size() + 2) >> 8);
    segment += char((exif.size() + 2) & 0xFF);
    segment += exif;
    qsizetype at = 2;
    if (jpeg.mid(2, 2) == QByteArray("\xFF\xE0", 2) && jpeg.size() > 6)
        at = 4 + (uchar(jpeg[4]) << 8 | uchar(jpeg[5]));
    return jpeg.left(at) + segment + jpeg.mid(at);
}

// The preview is made from the file when first asked for; by then it was gone.
QString previewGoneText()
{
    return QStringLiteral("No preview: the file was removed or changed after it was opened.");
}

// Beside the values of a file cut short.
QString incompleteText(const QString &finding)
{
    return QStringLiteral("File incomplete (%1): the remaining values are missing.").arg(finding);
}

} // namespace

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent), ui(new Ui::MainWindow)
{
    // A dialog-type window with a close button only: no minimise, no maximise.
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint |
                   Qt::WindowCloseButtonHint);
    ui->setupUi(this);
    fitMacFonts(this);

    setAcceptDrops(true);
    installEventFilter(this);
    ui->tbtnOpenClose->setEnabled(false);

    setWindowTitle(QStringLiteral("Tolvik V.") + QCoreApplication::applicationVersion());

    readSettings();

    // Page Down / Page Up step through the folder wherever the focus is, the
    // arrow keys unless the preview has it.
    const auto stepKey = [this](Qt::Key key, int direction, bool besidePreview) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this,
                [this, direction, besidePreview] {
                    if (!besidePreview || !ui->graphicsView->hasFocus())
                        stepFile(direction);
                });
    };
    stepKey(Qt::Key_PageDown, +1, false);
    stepKey(Qt::Key_PageUp, -1, false);
    stepKey(Qt::Key_Right, +1, true);
    stepKey(Qt::Key_Left, -1, true);

    // Culling: the keys mark the shown file; what it now holds shows briefly
    // over the panel.
    addMarkActions(ui->menuMark, ui->actionUndo_Marking, [this](const TMarkEdit &edit) {
        if (currentFileName.isEmpty() || !rawFileShown)
            return;
        marker()->mark({currentFileName}, edit);
        if (QSettings().value(settingskeys::kStepAfterMarking, false).toBool())
            stepFile(+1);
    });
    ui->menuMark->insertSeparator(ui->actionUndo_Marking);
    connect(marker(), &TMarker::undoChanged, ui->actionUndo_Marking, &QAction::setEnabled);
    connect(marker(), &TMarker::marked, this, [this](const QString &path, const TMark &mark) {
        if (path != currentFileName || !isActiveWindow())
            return;
        const TMarkTexts texts = markTexts(mark, true);
        const QString shown =
            QStringList{texts.rating, texts.label}.join(QLatin1Char(' ')).trimmed();
        QToolTip::showText(mapToGlobal(rect().center()),
                           QFileInfo(path).fileName() + QStringLiteral(": ") +
                               (shown.isEmpty() ? tr("no marks") : shown),
                           this);
    });

    // File > Open Recent, below Open..., filled each time it opens.
    recentMenu = new QMenu(tr("Open &Recent"), this);
    recentMenu->setObjectName(QStringLiteral("menuOpenRecent"));
    ui->menuFile->insertMenu(ui->actionSave_Preview, recentMenu);
    connect(recentMenu, &QMenu::aboutToShow, this, &MainWindow::fillRecentMenu);

    // Always start folded, whatever geometry the settings restored.
    setFixedSize(kFoldedWidth, kWindowHeight);
}

MainWindow::~MainWindow()
{
    // rawFile is left to the end of the process, like every file opened
    // before it was replaced.
    delete ui;
}

void MainWindow::openFile(const QString &path)
{
    if (!showFile(path))
        return;
    // Remembered at once, not only on quitting.
    recentFiles.add(path);
    QSettings().setValue(settingskeys::kLastFolder, QFileInfo(path).absolutePath());
}

bool MainWindow::showFile(const QString &path)
{
    currentFileName = path;
    return doProcess(currentFileName);
}

void MainWindow::fillRecentMenu()
{
    recentMenu->clear();
    for (const QString &path : recentFiles.existing()) {
        QString text = QDir::toNativeSeparators(path);
        QAction *entry =
            recentMenu->addAction(text.replace(QLatin1Char('&'), QStringLiteral("&&")));
        connect(entry, &QAction::triggered, this, [this, path] {
            if (QFileInfo(path).isDir())
                openFolder(path);
            else
                openFile(path);
        });
    }
    recentMenu->addSeparator();
    QAction *clear = recentMenu->addAction(tr("Clear"));
    clear->setObjectName(QStringLiteral("actionClearRecent"));
    clear->setEnabled(!recentFiles.entries().isEmpty());
    connect(clear, &QAction::triggered, this, [this] { recentFiles.clear(); });
}

// --- settings and quitting ---

void MainWindow::readSettings()
{
    const QSettings settings;
    restoreGeometry(settings.value(settingskeys::kMainGeometry).toByteArray());
    restoreState(settings.value(settingskeys::kMainState).toByteArray(), 0);
    ui->actionExact_Values->setChecked(settings.value(settingskeys::kExactValues, false).toBool());
    programmListe = settings.value(settingskeys::kPrograms).toStringList();
}

void MainWindow::saveSettings()
{
    QSettings settings;
    settings.setValue(settingskeys::kMainGeometry, saveGeometry());
    settings.setValue(settingskeys::kMainState, saveState(0));
    const QString folder =
        currentFileName.isEmpty() ? lastFolder() : QFileInfo(currentFileName).absolutePath();
    settings.setValue(settingskeys::kLastFolder, QFileInfo(folder).absoluteFilePath());
    settings.setValue(settingskeys::kPrograms, programmListe);
}

bool MainWindow::userReallyWantsToQuit()
{
    QMessageBox box(QMessageBox::Question, QString(),
                    tr("Möchten Sie das Programm tatsächlich beenden?"),
                    QMessageBox::Ok | QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Cancel);
    return box.exec() == QMessageBox::Ok;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (userReallyWantsToQuit()) {
        saveSettings();
        if (cardWindow)
            cardWindow->close();
        event->accept();
    } else {
        event->ignore();
    }
}

void MainWindow::on_actionExit_triggered()
{
    close();
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ContextMenu) {
        verarbeiteKontextMenu(static_cast<QContextMenuEvent *>(event));
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

// --- external programs ---

QString MainWindow::externalProgramCommand(const QString &program, const QString &file)
{
    return QStringLiteral("open -a ") + QLatin1Char('"') + program + QStringLiteral("\" ") +
           QLatin1Char('"') + QFileInfo(file).absoluteFilePath() + QStringLiteral("\" ");
}

void MainWindow::verarbeiteKontextMenu(QContextMenuEvent *event)
{
    if (programmListe.isEmpty())
        return;
    QMenu menu(this);
    for (const QString &program : std::as_const(programmListe))
        menu.addAction(program);
    const QAction *chosen = menu.exec(mapToGlobal(event->pos()));
    if (!chosen)
        return;
    // Whether the program could be started is not looked at.
    auto *process = new QProcess(this);
    const auto [program, arguments] = externalProgramLaunch(chosen->text(), currentFileName);
    process->startDetached(program, arguments, {});
}

std::pair<QString, QStringList> MainWindow::externalProgramLaunch(const QString &program,
                                                                  const QString &file)
{
#ifdef Q_OS_MACOS
    return {externalProgramCommand(program, file), {}};
#else
    // No "open -a" here (Linux's open is openvt): the program gets the file.
    return {program, {QFileInfo(file).absoluteFilePath()}};
#endif
}

void MainWindow::on_actionPreferences_triggered()
{
    TDlgPreferences dialog(this, programmListe);
    if (dialog.exec() == QDialog::Accepted)
        programmListe = dialog.programmListe();
}

// --- report, saving the preview, About ---

void MainWindow::on_actionPrint_triggered()
{
    if (!rawFile || !rawFile->previewImage())
        return;
    TReport report(*rawFile, ui->lblRGBPic->pixmap().toImage(), valueStyle());
    QPrinter printer;
    setReportMargins(&printer);
    // A PDF carries the title and creator tolvik-info --report gives it, and
    // is proposed under the raw file's base name: by the print dialog, which
    // proposes the document's name for one; without a printer, where the
    // preview only exports a PDF, beside the raw file.
    printer.setDocName(rawFile->fileName());
    printer.setCreator(reportCreator());
    if (QPrinterInfo::availablePrinterNames().isEmpty()) {
        const QFileInfo raw(currentFileName);
        printer.setOutputFileName(raw.absolutePath() + QLatin1Char('/') + raw.baseName() +
                                  QStringLiteral(".pdf"));
    }
    QPrintPreviewDialog preview(&printer);
    connect(&preview, &QPrintPreviewDialog::paintRequested, &preview, [&](QPrinter *target) {
        printSafely(&preview, target, {currentFileName},
                    [&report](QPrinter *p) { return report.print(p) > 0; });
    });
    addReportOptions(preview, report);
    preview.exec();
}

// The report's options in the preview's tool bar: the raw exposure figures,
// counted on the pool when first asked for (a pass over the raw data), the
// preview painted again once they are there.
void MainWindow::addReportOptions(QPrintPreviewDialog &preview, TReport &report)
{
    auto *bar = preview.findChild<QToolBar *>();
    auto *pages = preview.findChild<QPrintPreviewWidget *>();
    if (!bar || !pages)
        return;
    auto *options = new QWidget; // the tool bar's
    const auto form = std::make_shared<Ui::ReportOptions>();
    form->setupUi(options);
    bar->addSeparator();
    bar->addWidget(options);

    auto *counting = new QFutureWatcher<raw::TRawFigures>(&preview);
    const auto cancelled = std::make_shared<std::atomic<bool>>(false);
    connect(&preview, &QDialog::finished, &preview, [cancelled] { cancelled->store(true); });
    const auto show = [&report, pages, counting, form] {
        const bool shown = form->chkRawFigures->isChecked() && counting->future().resultCount() > 0;
        report.setRawFigures(shown ? std::optional(counting->result()) : std::nullopt);
        pages->updatePreview();
    };
    connect(counting, &QFutureWatcher<raw::TRawFigures>::finished, &preview, show);
    connect(form->chkRawFigures, &QCheckBox::toggled, &preview,
            [show, counting, cancelled, path = currentFileName](bool on) {
                QSettings().setValue(settingskeys::kReportRawFigures, on);
                if (on && counting->future().resultCount() == 0 && !counting->isRunning())
                    counting->setFuture(QtConcurrent::run(workPool(), [path, cancelled] {
                        return raw::rawFiguresOfFile(path, cancelled.get());
                    }));
                else
                    show();
            });
    form->chkRawFigures->setChecked(
        QSettings().value(settingskeys::kReportRawFigures, false).toBool());
}

QString MainWindow::previewProposal(const QString &rawFilePath)
{
    const QFileInfo info(rawFilePath);
    // No file yet: the working directory.
    const QString folder = rawFilePath.isEmpty() ? QDir::currentPath() : info.absolutePath();
    return folder + QLatin1Char('/') + info.baseName() + QStringLiteral(".jpg");
}

void MainWindow::on_actionSave_Preview_triggered()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save PreviewPicture as jpg"),
                                     previewProposal(currentFileName), tr("Images (*.jpg)"));
    if (path.isEmpty() || !rawFile)
        return;
    const QString title = QStringLiteral("Save Preview");
    if (const QString refusal = outputRefusal(path, TOutputKind::Jpeg, {currentFileName});
        !refusal.isEmpty()) {
        warnNotWritten(this, title, refusal);
        return;
    }
    if (!rawFile->previewImage()) {
        if (rawFile->hasPreviewImage()) // it was there when the file was opened
            QMessageBox::warning(this, title, previewGoneText());
        return;
    }
    // The pixels as stored, and the orientation beside them.
    QBuffer jpeg;
    jpeg.open(QIODevice::WriteOnly);
    QImageWriter(&jpeg, "jpg").write(rawFile->previewImage()->toImage());
    const QByteArray bytes = withOrientation(jpeg.data(), rawFile->exif().orientation);
    if (const QString failure = writeAtomically(path,
                                                [&bytes](QIODevice &device) {
                                                    return bytes.size() > 2 &&
                                                           device.write(bytes) == bytes.size();
                                                });
        !failure.isEmpty()) {
        warnNotWritten(this, title, failure);
        return;
    }
    QMessageBox box(QMessageBox::Information, title,
                    QStringLiteral("Datei ") + path + QStringLiteral(" wurde gespeichert"),
                    QMessageBox::Ok, this);
    box.exec();
}

void MainWindow::on_actionAbout_Tolvik_triggered()
{
    const QString text =
        QStringLiteral("<big><b>Tolvik Version ") + QCoreApplication::applicationVersion() +
        QStringLiteral("</b></big><br><br>") +
        QStringLiteral("%1 by %2<br>")
            .arg(QLatin1String(maker::kYears), QLatin1String(maker::kName)) +
        QStringLiteral("Internet: <a href=\"https://%1\">%1</a><br>")
            .arg(QLatin1String(maker::kWeb)) +
        QStringLiteral("eMail: <a href=\"mailto:%1\">%1</a>").arg(QLatin1String(maker::kMail));
    QMessageBox::about(this, QStringLiteral("Über Tolvik "), text);
}

// --- opening a file ---

QString MainWindow::openStartFolder(const QString &shownFile, const QString &lastFolder)
{
    if (QFileInfo::exists(QStringLiteral("/Volumes")))
        return lastFolder;
    if (!shownFile.isEmpty())
        return QFileInfo(shownFile).absolutePath();
    if (QFileInfo(lastFolder).isDir())
        return lastFolder;
    // udisks mounts under /run/media/USER, or /media/USER on Debian.
    const QString user = qEnvironmentVariable("USER", QDir::home().dirName());
    for (const QString &media : {QStringLiteral("/run/media/"), QStringLiteral("/media/")}) {
        if (QFileInfo(media + user).isDir())
            return media + user;
    }
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
}

void MainWindow::on_actionOpen_triggered()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Open DNG-File"), openStartFolder(currentFileName, lastFolder()),
        tr("M9-Images (*.dng)"));
    if (path.isEmpty())
        return;
    openFile(path);
}

void MainWindow::on_actionOpen_Folder_triggered()
{
    const QString path = QFileDialog::getExistingDirectory(this, tr("Open Folder"), lastFolder());
    if (!path.isEmpty())
        openFolder(path);
}

void MainWindow::openFolder(const QString &path)
{
    if (!cardWindow) {
        cardWindow = new TCardWindow(this);
        cardWindow->setWindowFlag(Qt::Window);
        // Going through the card's rows browses it, as stepping does.
        connect(cardWindow, &TCardWindow::fileChosen, this, &MainWindow::showFile);
        // Enter or a double click on a row: the frame itself.
        connect(cardWindow, &TCardWindow::fileActivated, this,
                [this](const QString &path) { showFrameView(path); });
        // A defect or spot of the sensor check, in a frame at 100 %.
        connect(cardWindow, &TCardWindow::frameAtRequested, this,
                [this](const QString &path, QPoint at) { showFrameView(path, at); });
        // From here or from the card window's own Open Folder.
        connect(cardWindow, &TCardWindow::folderOpened, this,
                [this](const QString &folder) { recentFiles.add(folder); });
    }
    cardWindow->openFolder(path);
    cardWindow->show();
    cardWindow->raise();
}

QString MainWindow::neighbourFile(const QString &path, int direction)
{
    const QFileInfo current(path);
    const QStringList files = dngFilesIn(current.absolutePath());
    // By name, so that a file opened whatever its extension has neighbours too.
    const QString name = current.fileName();
    if (direction > 0) {
        for (const QString &file : files) {
            if (QFileInfo(file).fileName() > name)
                return file;
        }
    } else {
        for (auto file = files.crbegin(); file != files.crend(); ++file) {
            if (QFileInfo(*file).fileName() < name)
                return *file;
        }
    }
    return {};
}

void MainWindow::stepFile(int direction)
{
    // While the card window is open, its shown order is the order.
    if (cardWindow && cardWindow->isVisible() && cardWindow->stepRow(direction))
        return;
    if (currentFileName.isEmpty())
        return;
    const QString next = neighbourFile(currentFileName, direction);
    if (!next.isEmpty())
        showFile(next);
}

QString MainWindow::steppedFile(const QString &path, int direction) const
{
    if (cardWindow && cardWindow->isVisible()) {
        const QString next = cardWindow->neighbourPath(path, direction);
        if (!next.isEmpty() || cardWindow->holds(path))
            return next;
    }
    return neighbourFile(path, direction);
}

void MainWindow::on_actionUndo_Marking_triggered()
{
    marker()->undo();
}

void MainWindow::on_actionFrame_triggered()
{
    if (!currentFileName.isEmpty())
        showFrameView(currentFileName);
}

void MainWindow::showFrameView(const QString &path, std::optional<QPoint> rawPosition)
{
    if (!frameView) {
        frameView = new TFrameView(
            [this](const QString &file, int direction) { return steppedFile(file, direction); },
            this);
        frameView->setWindowFlag(Qt::Window);
        frameView->resize(1200, 820);
        // The panel and the card's current row follow the frame shown.
        connect(frameView, &TFrameView::stepped, this, [this](const QString &file) {
            showFile(file);
            if (cardWindow && cardWindow->isVisible())
                cardWindow->selectPath(file);
        });
    }
    if (rawPosition)
        frameView->showFrameAt(path, *rawPosition);
    else
        frameView->showFrame(path);
    frameView->show();
    frameView->raise();
    frameView->activateWindow();
}

void MainWindow::on_actionCopy_triggered()
{
    if (!shownRows.isEmpty())
        QGuiApplication::clipboard()->setText(shownRows);
}

TValueStyle MainWindow::valueStyle() const
{
    return ui->actionExact_Values->isChecked() ? TValueStyle::Exact : TValueStyle::Specified;
}

void MainWindow::on_actionExact_Values_toggled(bool checked)
{
    QSettings().setValue(settingskeys::kExactValues, checked);
    if (!rawFileShown)
        return;
    updateAnzeige();
    showDistribution();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!firstDngPath(event->mimeData()).isEmpty() || !firstFolderPath(event->mimeData()).isEmpty())
        event->accept();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QString path = firstDngPath(event->mimeData());
    const QString folder = firstFolderPath(event->mimeData());
    if (!path.isEmpty())
        openFile(path);
    else if (!folder.isEmpty())
        openFolder(folder);
}

bool MainWindow::doProcess(QString path)
{
    delete rawFile;
    rawFile = nullptr;
    rawFile = new TM9File(path);
    if (!rawFile->processFile()) {
        // The rejected file stays current, but the window keeps showing the
        // last good one. A file that cannot be read is not called a wrong one.
        const bool read = rawFile->isFileFound();
        QMessageBox box(QMessageBox::Warning, QString(),
                        read ? tr("Fehler bei der Verarbeitung. Keine native DNG-Datei!")
                             : writeFailure(path, rawFile->openError()),
                        QMessageBox::Ok, this);
        if (read)
            box.setDetailedText(rawFile->fileName() + QStringLiteral(": ") + fileFinding(*rawFile));
        box.exec();
        rawFileShown = false;
        return false;
    }
    rawFileShown = true;
    const QString finding = fileFinding(*rawFile); // a file cut short
    ui->lblNotice->setText(finding.isEmpty() ? QString() : incompleteText(finding));
    ui->lblNotice->setVisible(!finding.isEmpty());
    updateAnzeige();
    updateBild();
    updateInfoBoxRGB();
    ui->tbtnOpenClose->setEnabled(true);
    return true;
}

void MainWindow::updateAnzeige()
{
    const TPanelTexts t = panelTexts(*rawFile, valueStyle());
    ui->lblFileName->setText(t.fileName);
    ui->lblDateTime->setText(t.dateTime);
    ui->lblExpTime->setText(t.expTime);
    ui->lblCamera->setText(t.camera);
    ui->lblISO->setText(t.iso);
    ui->lblSerial->setText(t.serial);
    ui->lblFirmware->setText(t.firmware);
    ui->lblApprAperture->setText(t.apprAperture);
    ui->lblMetering->setText(t.metering);
    ui->lblExpProgram->setText(t.expProgram);
    ui->lblExpCorrection->setText(t.expCorrection);
    ui->lblFocalLength->setText(t.focalLength);
    ui->lblFrameSelector->setText(t.frameSelector);
    ui->lblLens->setText(t.lens);
    ui->lblShutterID->setText(t.imageId);
    ui->lblMeasuredLV->setText(t.measuredLV);
    ui->lblSensorBrightness->setText(t.sensorBrightness);
    ui->lblSensorTemperature->setText(t.sensorTemperature);
    shownRows = panelRowsTabbed(t);
}

void MainWindow::on_tbtnOpenClose_clicked()
{
    if (panelOpen) {
        setFixedWidth(kFoldedWidth);
        panelOpen = false;
        ui->tbtnOpenClose->setIcon(foldIcon(QStringLiteral(":/images/btn_Aufklappen.tiff")));
    } else {
        setFixedWidth(kUnfoldedWidth);
        panelOpen = true;
        ui->tbtnOpenClose->setIcon(foldIcon(QStringLiteral(":/images/btn_Zuklappen.tiff")));
    }
}

// --- preview and pixel readout ---

void MainWindow::updateBild()
{
    // Each file gets a scene of its own; the earlier ones are kept alive.
    auto *scene = new QGraphicsScene();
    ui->graphicsView->setScene(scene);

    // A file without a preview gives an empty, zero-sized view.
    QPixmap pixmap;
    if (const QPixmap *preview = rawFile->previewImage())
        pixmap = *preview;
    else if (rawFile->hasPreviewImage()) // the file went away or changed since it was read
        scene->addText(previewGoneText());
    auto *item = new TMyGraphicsPixmapItem(pixmap);
    scene->addItem(item);

    ui->graphicsView->setFixedSize(pixmap.width(), pixmap.height());
    scene->setSceneRect(0, 0, pixmap.width(), pixmap.height());
    ui->graphicsView->fitInView(scene->sceneRect(), Qt::KeepAspectRatio);

    connect(item, &TMyGraphicsPixmapItem::rgbValueChanged, this, &MainWindow::onShowRGB);
    connect(item, &TMyGraphicsPixmapItem::mausRaus, this, &MainWindow::onShowRGBAus);
}

void MainWindow::onShowRGB(QPointF position, unsigned int rgb)
{
    Q_UNUSED(position)
    ui->lblR->setText(QString::number((rgb >> 16) & 0xFF));
    ui->lblG->setText(QString::number((rgb >> 8) & 0xFF));
    ui->lblB->setText(QString::number(rgb & 0xFF));
}

void MainWindow::onShowRGBAus()
{
    ui->lblR->setText(QStringLiteral("-"));
    ui->lblG->setText(QStringLiteral("-"));
    ui->lblB->setText(QStringLiteral("-"));
}

// --- RGB distribution ---

void MainWindow::updateInfoBoxRGB()
{
    berechneRGBVerteilung();
    showDistribution();
}

void MainWindow::showDistribution()
{
    QImage picture = rgb.picture();
    if (valueStyle() == TValueStyle::Exact) {
        TRgbDistribution shownFile;
        shownFile.add(rawFile->previewImage());
        picture = shownFile.picture();
    }
    ui->lblRGBPic->setScaledContents(true);
    ui->lblRGBPic->setPixmap(QPixmap::fromImage(picture));
}

void MainWindow::berechneRGBVerteilung()
{
    rgb.add(rawFile ? rawFile->previewImage() : nullptr);
}
