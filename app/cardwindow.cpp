#include "cardwindow.h"
#include "ui_cardwindow.h"

#include "card/rejectmove.h"
#include "card/safewrite.h"
#include "cardloader.h"
#include "cardmodel.h"
#include "documents/tcontactsheet.h"
#include "marker.h"
#include "safeprint.h"
#include "sensorcheckwindow.h"
#include "settingskeys.h"
#include "tframeview.h"
#include "tstatisticspane.h"
#include "workpool.h"

#include <QCloseEvent>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QHeaderView>
#include <QMessageBox>
#include <QPointer>
#include <QPrinter>
#include <QProgressDialog>
#include <QSaveFile>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QToolButton>
#include <QtConcurrent>

namespace {

// Rows of pictures asked for beyond those shown, above and below: a page
// turned by Page Down has its pictures at once.
constexpr int kPictureRowsAhead = 20;

// Widths a column gets before the user sets its own.
constexpr int kColumnWidth = 95;
constexpr int kFileNameWidth = 120;
constexpr int kDateTimeWidth = 140;
constexpr int kLensWidth = 220;
constexpr int kApertureWidth = 190; // "Aperture (camera's estimate)"
constexpr int kRatingWidth = 80;    // "★★★★★"
constexpr int kStatisticsWidth = 380;
constexpr int kFramePaneWidth = 320; // the selected frame, beside the table

// The charts are counted again at most this often while rows arrive or the
// filter changes: the first change starts the wait, later ones join it.
constexpr int kStatisticsDelayMs = 200;

// A task shorter than this shows no progress dialog.
constexpr int kProgressAfterMs = 500;

} // namespace

TCardWindow::TCardWindow(QWidget *parent)
    : QMainWindow(parent), ui(new Ui::TCardWindow), m_model(new TCardModel(this)),
      m_filter(new TCardFilter(this)), m_loader(new TCardLoader(m_model, this)),
      m_statisticsDue(new QTimer(this))
{
    ui->setupUi(this);
    m_filter->setSourceModel(m_model);
    ui->tableView->setModel(m_filter);

    QHeaderView *header = ui->tableView->horizontalHeader();
    header->setSectionsMovable(true);
    header->setDefaultSectionSize(kColumnWidth);
    header->resizeSection(TCardModel::Picture, TCardModel::kPictureHeight * 3 / 2 + 8);
    header->resizeSection(TCardModel::FileName, kFileNameWidth);
    header->resizeSection(TCardModel::DateTime, kDateTimeWidth);
    header->resizeSection(TCardModel::Lens, kLensWidth);
    header->resizeSection(TCardModel::Aperture, kApertureWidth);
    header->resizeSection(TCardModel::Rating, kRatingWidth);
    header->resizeSection(TCardModel::Label, kRatingWidth);
    // The error column takes the rest; a reason longer still keeps its start
    // and its end (the finding), and the tool tip has it in full.
    header->setStretchLastSection(true);
    ui->tableView->setTextElideMode(Qt::ElideMiddle);
    QHeaderView *rows = ui->tableView->verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(TCardModel::kPictureHeight + 4);
    ui->tableView->setIconSize(
        QSize(TCardModel::kPictureHeight * 3 / 2, TCardModel::kPictureHeight));

    connect(ui->tableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { onCurrentRowChanged(current); });
    connect(m_loader, &TCardLoader::progress, this, &TCardWindow::onProgress);
    connect(m_loader, &TCardLoader::finished, this, [this] { onFinished(); });
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_filter, signal, this, [this] { updateShown(); });
    connect(m_filter, &QAbstractItemModel::modelReset, this, [this] { updateShown(); });
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this] { statisticsChanged(); });
    // Raw figures and marks arrive after the rows: the charts count them too.
    connect(m_model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &, const QModelIndex &, const QList<int> &roles) {
                if (!roles.contains(Qt::DecorationRole))
                    statisticsChanged();
            });
    connect(m_loader, &TCardLoader::figuresProgress, this, [this](int done, int total) {
        statusBar()->showMessage(
            done < total ? tr("Raw figures: %1 of %2 frames").arg(done).arg(total) : QString(), 0);
    });

    // Culling: the keys mark the selected rows; the marks written show in
    // every window.
    addMarkActions(ui->menuMark, ui->actionUndo_Marking,
                   [this](const TMarkEdit &edit) { markSelected(edit); });
    connect(marker(), &TMarker::marked, m_model, &TCardModel::setMark);
    connect(marker(), &TMarker::undoChanged, ui->actionUndo_Marking, &QAction::setEnabled);
    ui->actionUndo_Marking->setEnabled(marker()->canUndo());
    fillMarkFilters();
    connect(m_filter, &TCardFilter::conditionsChanged, this, [this] { showConditions(); });
    connect(m_filter, &QAbstractItemModel::layoutChanged, this, [this] { askPicturesAhead(); });
    connect(ui->tableView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this] { askPicturesAhead(); });

    m_statisticsDue->setSingleShot(true);
    m_statisticsDue->setInterval(kStatisticsDelayMs);
    connect(m_statisticsDue, &QTimer::timeout, this, [this] { updateStatistics(); });
    connect(ui->statistics, &TStatisticsPane::barClicked, m_filter, &TCardFilter::toggleCondition);
    // The selected row's frame, developed, between the table and the charts;
    // its arrow keys step through the shown rows.
    m_framePane = new TFrameView(
        [this](const QString &path, int direction) { return neighbourPath(path, direction); });
    m_framePane->setObjectName(QStringLiteral("framePane"));
    connect(m_framePane, &TFrameView::stepped, this, &TCardWindow::selectPath);
    ui->splitter->insertWidget(1, m_framePane);
    ui->splitter->setStretchFactor(0, 1);
    ui->splitter->setSizes(
        {width() - kStatisticsWidth - kFramePaneWidth, kFramePaneWidth, kStatisticsWidth});

    ui->progressBar->hide();
    ui->btnStop->hide();
    updateSensorAction();
    showConditions();
    updateLenses();
    readSettings();
    connect(m_filter, &TCardFilter::conditionsChanged, this, [this] { showMarkConditions(); });
}

TCardWindow::~TCardWindow()
{
    delete ui;
}

void TCardWindow::openFolder(const QString &folder)
{
    m_folder = QFileInfo(folder).absoluteFilePath();
    QSettings().setValue(settingskeys::kLastFolder, m_folder);
    setWindowTitle(QStringLiteral("Tolvik \u2013 ") + QDir::toNativeSeparators(m_folder));
    statusBar()->clearMessage();
    m_filter->clearConditions(); // those of the card before
    ui->cbRating->setCurrentIndex(0);
    if (m_sensorCheck)
        m_sensorCheck->close(); // the check of the card before
    m_loader->start(m_folder);
    updateSensorAction();
    emit folderOpened(m_folder);
}

// --- settings ---

void TCardWindow::readSettings()
{
    const QSettings settings;
    restoreGeometry(settings.value(settingskeys::kCardGeometry).toByteArray());
    QHeaderView *header = ui->tableView->horizontalHeader();
    // Column order and widths and the sort column; by date taken at first.
    if (!header->restoreState(settings.value(settingskeys::kCardColumns).toByteArray()))
        header->setSortIndicator(TCardModel::DateTime, Qt::AscendingOrder);
    ui->tableView->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());
    ui->splitter->restoreState(settings.value(settingskeys::kCardSplitter).toByteArray());
    ui->actionStep_After_Marking->setChecked(
        settings.value(settingskeys::kStepAfterMarking, false).toBool());
}

void TCardWindow::saveSettings() const
{
    QSettings settings;
    settings.setValue(settingskeys::kCardGeometry, saveGeometry());
    settings.setValue(settingskeys::kCardColumns, ui->tableView->horizontalHeader()->saveState());
    settings.setValue(settingskeys::kCardSplitter, ui->splitter->saveState());
}

void TCardWindow::closeEvent(QCloseEvent *event)
{
    m_loader->stop();
    if (m_sensorCheck)
        m_sensorCheck->close();
    saveSettings();
    event->accept();
}

// --- menu ---

void TCardWindow::on_actionOpen_Folder_triggered()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Open Folder"), lastFolder());
    if (!folder.isEmpty())
        openFolder(folder);
}

void TCardWindow::on_actionExport_CSV_triggered()
{
    const QString proposal =
        QDir::home().filePath(QFileInfo(m_folder).fileName() + QStringLiteral(".csv"));
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Export CSV"), proposal, tr("CSV files (*.csv)"));
    if (path.isEmpty())
        return;
    if (const QString failure = exportCsv(path); !failure.isEmpty())
        warnNotWritten(this, tr("Export CSV"), failure);
}

void TCardWindow::on_actionClose_triggered()
{
    close();
}

QList<int> TCardWindow::shownRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_filter->rowCount(); ++row)
        rows.append(m_filter->mapToSource(m_filter->index(row, 0)).row());
    return rows;
}

QStringList TCardWindow::cardFiles() const
{
    QStringList files;
    for (int row = 0; row < m_model->rowCount(); ++row)
        files.append(m_model->entry(row).path);
    return files;
}

QString TCardWindow::exportCsv(const QString &path) const
{
    if (const QString refusal = outputRefusal(path, TOutputKind::Csv, cardFiles());
        !refusal.isEmpty())
        return refusal;
    const QByteArray csv = m_model->csv(shownRows());
    return writeAtomically(path, [&csv](QIODevice &device) { return device.write(csv) >= 0; });
}

// --- contact sheet ---

TContactSheet TCardWindow::contactSheet() const
{
    QList<TCardEntry> entries;
    const bool shownOnly = ui->actionSheet_Shown_Only->isChecked();
    for (const int row : shownOnly ? shownRows() : allRows())
        entries.append(m_model->entry(row));
    TContactSheet sheet(m_folder, entries);
    sheet.setShowRawFigures(ui->actionSheet_Raw_Figures->isChecked());
    return sheet;
}

QList<int> TCardWindow::allRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_model->rowCount(); ++row)
        rows.append(row);
    return rows;
}

namespace {

// A frame of the sheet made ready on a worker: its picture, and its raw
// figures where they are asked for and not counted yet.
struct TSheetFrame {
    QImage picture;
    std::optional<raw::TRawFigures> figures;
};

} // namespace

// The sheet with its pictures made (and the raw figures the table does not
// have yet counted, where the sheet shows them) on the work pool while a
// progress dialog shows and the window goes on answering; none when
// cancelled.
std::optional<TContactSheet> TCardWindow::preparedSheet()
{
    const TContactSheet sheet = contactSheet();
    QList<TCardEntry> entries = sheet.frames();
    const bool figures = ui->actionSheet_Raw_Figures->isChecked();
    QProgressDialog progress(tr("Making the pictures of the contact sheet..."), tr("Cancel"), 0,
                             int(entries.size()), this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(kProgressAfterMs);
    QFutureWatcher<TSheetFrame> making;
    QEventLoop loop;
    connect(&making, &QFutureWatcher<TSheetFrame>::progressValueChanged, &progress,
            &QProgressDialog::setValue);
    connect(&progress, &QProgressDialog::canceled, &making, &QFutureWatcher<TSheetFrame>::cancel);
    connect(&making, &QFutureWatcher<TSheetFrame>::finished, &loop, &QEventLoop::quit);
    making.setFuture(QtConcurrent::mapped(workPool(), entries, [figures](const TCardEntry &entry) {
        TSheetFrame frame{TContactSheet::picture(entry), entry.frame.figures};
        if (figures && entry.accepted() && !frame.figures)
            frame.figures = raw::rawFiguresOfFile(entry.path);
        return frame;
    }));
    if (!making.isFinished())
        loop.exec();
    if (making.isCanceled())
        return std::nullopt;
    QHash<QString, QImage> pictures;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const TSheetFrame frame = making.resultAt(int(i));
        pictures.insert(entries[i].path, frame.picture);
        entries[i].frame.figures = frame.figures;
    }
    TContactSheet ready(m_folder, entries);
    ready.setShowRawFigures(figures);
    ready.setPictures(std::move(pictures));
    return ready;
}

void TCardWindow::on_actionPrint_Contact_Sheet_triggered()
{
    const std::optional<TContactSheet> sheet = preparedSheet();
    if (!sheet)
        return;
    printPreview(this, sheet->headerText(), cardFiles(),
                 [&sheet](QPrinter *p) { return sheet->print(p) > 0; });
}

void TCardWindow::on_actionSave_Contact_Sheet_triggered()
{
    // The pictures and figures are made once the file is chosen and allowed;
    // cancelled, nothing is written.
    savePdfAs(this, tr("Save Contact Sheet as PDF"), m_folder, QStringLiteral("contact-sheet"),
              cardFiles(), [this](const QString &path) {
                  const std::optional<TContactSheet> sheet = preparedSheet();
                  return sheet ? writeContactSheetPdf(*sheet, path) : QString();
              });
}

// --- sensor check ---

void TCardWindow::updateSensorAction()
{
    bool accepted = false;
    for (int row = 0; row < m_model->rowCount() && !accepted; ++row)
        accepted = m_model->entry(row).accepted();
    ui->actionCheck_Sensor->setEnabled(accepted && !m_loader->isLoading());
}

// The check of this card's accepted frames, in a window of its own; asked
// for again, a check of this card running or done comes forward as it is.
void TCardWindow::on_actionCheck_Sensor_triggered()
{
    if (!m_sensorCheck) {
        m_sensorCheck = new TSensorCheckWindow(this);
        m_sensorCheck->setWindowFlag(Qt::Window);
        connect(m_sensorCheck, &TSensorCheckWindow::frameRequested, this,
                &TCardWindow::frameAtRequested);
    }
    if (!m_sensorCheck->showsCheckOf(m_folder)) {
        QList<int> rows; // the accepted files in the folder's order
        for (int row = 0; row < m_model->rowCount(); ++row) {
            if (m_model->entry(row).accepted())
                rows.append(row);
        }
        std::sort(rows.begin(), rows.end(),
                  [this](int a, int b) { return m_model->foundAt(a) < m_model->foundAt(b); });
        QList<TCardEntry> frames;
        for (const int row : std::as_const(rows))
            frames.append(m_model->entry(row));
        m_sensorCheck->start(m_folder, frames, cardFiles());
    }
    m_sensorCheck->show();
    m_sensorCheck->raise();
    m_sensorCheck->activateWindow();
}

// --- statistics ---

void TCardWindow::statisticsChanged()
{
    if (!m_statisticsDue->isActive())
        m_statisticsDue->start();
}

void TCardWindow::updateStatistics()
{
    m_statisticsDue->stop();
    QList<TFrame> frames;
    for (const int row : shownRows())
        frames.append(m_model->entry(row).frame);
    ui->statistics->setFrames(frames);
    updateLenses();
}

// The conditions the table is narrowed by, each a button that lifts it; the
// charts mark their bars and the lens selector its lens.
void TCardWindow::showConditions()
{
    const QList<QToolButton *> old =
        ui->conditionBar->findChildren<QToolButton *>(QString(), Qt::FindDirectChildrenOnly);
    qDeleteAll(old);
    for (const TCardFilter::TCondition &condition : m_filter->conditions()) {
        auto *button = new QToolButton(ui->conditionBar);
        button->setText(
            QStringLiteral("%1: %2 \u2715").arg(categoryName(condition.category), condition.value));
        button->setToolTip(tr("Show the frames of every %1 again")
                               .arg(categoryName(condition.category).toLower()));
        button->setAutoRaise(true);
        const TCategory category = condition.category;
        connect(button, &QToolButton::clicked, m_filter,
                [this, category] { m_filter->setCondition(category, QString()); });
        ui->conditionLayout->addWidget(button);
    }
    for (const TCategory category : kCategories)
        ui->statistics->setChosen(category, m_filter->condition(category));
    const bool any = !m_filter->conditions().isEmpty();
    ui->conditionBar->setVisible(any);
    ui->btnClearCategory->setVisible(any);
    const QSignalBlocker blocker(ui->cbLens);
    ui->cbLens->setCurrentIndex(
        std::max(0, ui->cbLens->findData(m_filter->condition(TCategory::Lens))));
}

void TCardWindow::on_btnClearCategory_clicked()
{
    m_filter->clearConditions();
}

// --- filter and lens selector ---

void TCardWindow::on_leFilter_textChanged(const QString &text)
{
    m_filter->setText(text);
}

void TCardWindow::on_cbLens_currentIndexChanged(int index)
{
    m_filter->setCondition(TCategory::Lens, ui->cbLens->itemData(index).toString());
}

// The rating filter's choices: at least so many stars, or one rating.
struct TRatingChoice {
    const char *text;
    int minimumStars;
    const char *rating; // the rating chart's value it stands for
};
constexpr TRatingChoice kRatingChoices[] = {
    {"Any rating", 0, ""},
    {"\u2605 and more", 1, ""},
    {"\u2605\u2605 and more", 2, ""},
    {"\u2605\u2605\u2605 and more", 3, ""},
    {"\u2605\u2605\u2605\u2605 and more", 4, ""},
    {"\u2605\u2605\u2605\u2605\u2605", 5, ""},
    {"Unrated", 0, "unrated"},
    {"Rejected", 0, "rejected"},
};

void TCardWindow::fillMarkFilters()
{
    for (const TRatingChoice &choice : kRatingChoices)
        ui->cbRating->addItem(tr(choice.text));
    ui->cbLabel->addItem(tr("Any label"), QString());
    for (const TColourLabelText &label : kColourLabels) {
        if (label.code != TColourLabel::None)
            ui->cbLabel->addItem(tr(label.text), QString::fromLatin1(label.text));
    }
    ui->cbLabel->addItem(tr("No label"), QStringLiteral("none"));
}

void TCardWindow::on_cbRating_currentIndexChanged(int index)
{
    if (index < 0)
        return;
    const TRatingChoice &choice = kRatingChoices[index];
    m_filter->setMinimumStars(choice.minimumStars);
    m_filter->setCondition(TCategory::Rating, QString::fromLatin1(choice.rating));
}

void TCardWindow::on_cbLabel_currentIndexChanged(int index)
{
    m_filter->setCondition(TCategory::Label, ui->cbLabel->itemData(index).toString());
}

// The selectors follow the conditions a bar or the condition bar set.
void TCardWindow::showMarkConditions()
{
    const QString rating = m_filter->condition(TCategory::Rating);
    int choice = 0;
    for (int i = 0; i < int(std::size(kRatingChoices)); ++i) {
        const TRatingChoice &c = kRatingChoices[i];
        if (rating.isEmpty() ? c.minimumStars == m_filter->minimumStars() && !*c.rating
                             : rating == QLatin1String(c.rating))
            choice = i;
    }
    const QSignalBlocker ratingBlocker(ui->cbRating);
    ui->cbRating->setCurrentIndex(choice);
    const QSignalBlocker labelBlocker(ui->cbLabel);
    ui->cbLabel->setCurrentIndex(
        std::max(0, ui->cbLabel->findData(m_filter->condition(TCategory::Label))));
}

// --- culling ---

QStringList TCardWindow::selectedPaths() const
{
    QList<int> rows;
    for (const QModelIndex &index : ui->tableView->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QStringList paths;
    for (const int row : rows) {
        const QString path = pathAt(m_filter->index(row, 0));
        if (!path.isEmpty())
            paths.append(path);
    }
    return paths;
}

void TCardWindow::markSelected(const TMarkEdit &edit)
{
    const QStringList paths = selectedPaths();
    if (paths.isEmpty())
        return;
    marker()->mark(paths, edit);
    if (paths.size() == 1 && ui->actionStep_After_Marking->isChecked())
        stepRow(+1);
}

void TCardWindow::on_actionUndo_Marking_triggered()
{
    marker()->undo();
}

void TCardWindow::on_actionStep_After_Marking_toggled(bool checked)
{
    QSettings().setValue(settingskeys::kStepAfterMarking, checked);
}

void TCardWindow::on_actionMove_Rejected_triggered()
{
    QStringList paths;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const TCardEntry &entry = m_model->entry(row);
        const TMark &mark = entry.frame.mark;
        if (entry.accepted() && mark.hasRating && mark.rating < 0 && !isPutAway(entry.path))
            paths.append(entry.path);
    }
    if (paths.isEmpty()) {
        QMessageBox::information(this, tr("Move Rejected Frames"),
                                 tr("No frame of this card is rated rejected (X)."));
        return;
    }
    const bool trash =
        QSettings().value(settingskeys::kRejectsTo).toString() == QLatin1String("trash");
    const QString where = trash ? tr("to the trash") : tr("into a folder _rejected beside them");
    const QString question =
        tr("Move %n rejected frame(s), with their sidecars, %1?", "", int(paths.size()))
            .arg(where) +
        QLatin1Char('\n') + tr("Nothing is deleted; Mark \u25b8 Undo (Ctrl+Z) brings them back.");
    if (QMessageBox::question(this, tr("Move Rejected Frames"), question) != QMessageBox::Yes)
        return;
    moveRejected(paths);
}

namespace {

// What a move or its undo could not do, for the photographer; empty when
// every frame went.
QString moveProblem(const TRejectBatch &batch)
{
    QStringList reasons = batch.folderFailures;
    for (const TRejectMove &file : batch.files) {
        if (file.outcome == TMoveOutcome::Failed ||
            (file.outcome == TMoveOutcome::Moved && !file.error.isEmpty()))
            reasons.append(file.error);
    }
    return reasons.join(QLatin1Char('\n'));
}

void warnNonModal(QWidget *parent, const QString &title, const QString &text)
{
    auto *box = new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace

void TCardWindow::moveRejected(const QStringList &paths)
{
    const TRejectDestination destination =
        QSettings().value(settingskeys::kRejectsTo).toString() == QLatin1String("trash")
            ? TRejectDestination::Trash
            : TRejectDestination::RejectedFolder;
    auto *moving = new QFutureWatcher<TRejectBatch>(this);
    connect(moving, &QFutureWatcher<TRejectBatch>::finished, this, [this, moving] {
        moving->deleteLater();
        const TRejectBatch batch = moving->result();
        QStringList moved;
        for (const TRejectMove &file : batch.files) {
            if (file.outcome == TMoveOutcome::Moved)
                moved.append(file.rawPath);
        }
        if (const QString problem = moveProblem(batch); !problem.isEmpty())
            warnNonModal(this, tr("Move Rejected Frames"), problem);
        if (moved.isEmpty())
            return;
        statusBar()->showMessage(tr("%n rejected frame(s) moved", "", int(moved.size())));
        auto entries =
            std::make_shared<std::vector<std::pair<int, TCardEntry>>>(m_model->take(moved));
        const QPointer<TCardWindow> window(this);
        const QString folder = m_folder;
        marker()->addUndo([window, folder, batch, entries] {
            auto *back = new QFutureWatcher<TRejectBatch>(marker());
            QObject::connect(back, &QFutureWatcher<TRejectBatch>::finished, marker(),
                             [window, folder, back, entries] {
                                 back->deleteLater();
                                 const TRejectBatch after = back->result();
                                 QStringList restored;
                                 for (const TRejectMove &file : after.files) {
                                     if (file.outcome == TMoveOutcome::Restored)
                                         restored.append(file.rawPath);
                                 }
                                 if (!window || window->m_folder != folder)
                                     return;
                                 std::vector<std::pair<int, TCardEntry>> again;
                                 for (auto &entry : *entries) {
                                     if (restored.contains(entry.second.path))
                                         again.push_back(entry);
                                 }
                                 window->m_model->append(std::move(again));
                                 if (const QString problem = moveProblem(after); !problem.isEmpty())
                                     warnNonModal(window, tr("Move Rejected Frames"), problem);
                             });
            back->setFuture(QtConcurrent::run(workPool(), [batch] { return undoMove(batch); }));
        });
    });
    moving->setFuture(QtConcurrent::run(
        workPool(), [paths, destination] { return ::moveRejected(paths, destination); }));
}

void TCardWindow::on_chkRejected_toggled(bool checked)
{
    m_filter->setShowRejected(checked);
}

// The lenses of the card with their counts, as the lens chart counts them:
// together they are the accepted files. The chosen one stays chosen.
void TCardWindow::updateLenses()
{
    const QList<TCount> lenses = countPer(TCategory::Lens, m_model->frames());
    int files = 0;
    for (const TCount &lens : lenses)
        files += lens.frames;
    const QSignalBlocker blocker(ui->cbLens);
    ui->cbLens->clear();
    ui->cbLens->addItem(tr("All lenses (%1)").arg(files), QString());
    for (const TCount &lens : lenses)
        ui->cbLens->addItem(QStringLiteral("%1 (%2)").arg(lens.value).arg(lens.frames), lens.value);
    ui->cbLens->setCurrentIndex(
        std::max(0, ui->cbLens->findData(m_filter->condition(TCategory::Lens))));
}

void TCardWindow::updateShown()
{
    statisticsChanged();
    ui->lblShown->setText(
        tr("%1 of %2 files shown").arg(m_filter->rowCount()).arg(m_model->rowCount()));
    askPicturesAhead();
}

// --- loading ---

void TCardWindow::onProgress(int done, int total)
{
    ui->progressBar->setRange(0, std::max(total, 0)); // busy while the files are found
    ui->progressBar->setValue(done);
    ui->progressBar->show();
    ui->btnStop->show();
    updateSensorAction();
}

void TCardWindow::onFinished()
{
    ui->progressBar->hide();
    ui->btnStop->hide();
    updateSensorAction();
    updateShown();
    updateStatistics(); // once more, with every row
}

void TCardWindow::on_btnStop_clicked()
{
    m_loader->stop();
}

// Asks for the pictures of the rows shown and a few beyond, those in view
// first; the loader makes each once and drops what scrolled away before it
// was begun.
void TCardWindow::askPicturesAhead()
{
    const QTableView *view = ui->tableView;
    const int rows = m_filter->rowCount();
    if (rows == 0)
        return;
    const int top = std::max(view->rowAt(0), 0);
    int bottom = view->rowAt(view->viewport()->height() - 1);
    if (bottom < 0)
        bottom = rows - 1;
    QStringList paths;
    const auto ask = [&](int row) {
        const TCardEntry &entry =
            m_model->entry(m_filter->mapToSource(m_filter->index(row, 0)).row());
        if (entry.accepted() && !m_model->hasPicture(m_model->rowOfPath(entry.path)))
            paths.append(entry.path);
    };
    for (int row = top; row <= bottom; ++row)
        ask(row);
    for (int row = bottom + 1; row <= std::min(bottom + kPictureRowsAhead, rows - 1); ++row)
        ask(row);
    for (int row = top - 1; row >= std::max(top - kPictureRowsAhead, 0); --row)
        ask(row);
    m_loader->requestPictures(paths);
}

// --- together with the main window ---

// The shown row of path in the filter's order; -1 when it is not shown.
int TCardWindow::shownRowOf(const QString &path) const
{
    const int row = m_model->rowOfPath(path);
    return row < 0 ? -1 : m_filter->mapFromSource(m_model->index(row, 0)).row();
}

bool TCardWindow::holds(const QString &path) const
{
    return shownRowOf(path) >= 0;
}

QString TCardWindow::neighbourPath(const QString &path, int direction) const
{
    const int shown = shownRowOf(path);
    if (shown < 0)
        return {};
    // Rejected rows have no frame to step to.
    for (int row = shown + direction; row >= 0 && row < m_filter->rowCount(); row += direction) {
        const QString next = pathAt(m_filter->index(row, 0));
        if (!next.isEmpty())
            return next;
    }
    return {};
}

void TCardWindow::selectPath(const QString &path)
{
    const int shown = shownRowOf(path);
    if (shown >= 0)
        ui->tableView->setCurrentIndex(
            m_filter->index(shown, ui->tableView->currentIndex().column()));
}

QString TCardWindow::pathAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    const TCardEntry &entry = m_model->entry(m_filter->mapToSource(index).row());
    return entry.accepted() ? entry.path : QString();
}

// An accepted file is shown in the main window; a rejected one leaves it as it
// is, and the status bar says why and that it does.
void TCardWindow::onCurrentRowChanged(const QModelIndex &current)
{
    if (!current.isValid())
        return;
    const TCardEntry &entry = m_model->entry(m_filter->mapToSource(current).row());
    if (entry.accepted()) {
        statusBar()->showMessage(entry.error); // a file cut short still says so
        if (m_framePane->path() != entry.path)
            m_framePane->showFrame(entry.path);
        emit fileChosen(entry.path);
        return;
    }
    statusBar()->showMessage(tr("%1: %2 \u2013 not shown in the main window")
                                 .arg(QFileInfo(entry.path).fileName(), entry.error));
}

void TCardWindow::on_tableView_activated(const QModelIndex &index)
{
    const QString path = pathAt(index);
    if (!path.isEmpty())
        emit fileActivated(path);
}

bool TCardWindow::stepRow(int direction)
{
    const QModelIndex current = ui->tableView->currentIndex();
    if (!current.isValid())
        return false;
    const QModelIndex next = m_filter->index(current.row() + direction, current.column());
    if (next.isValid())
        ui->tableView->setCurrentIndex(next);
    return true;
}
