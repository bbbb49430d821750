#include "cardwindow.h"
#include "ui_cardwindow.h"

#include "card/safewrite.h"
#include "cardloader.h"
#include "cardmodel.h"
#include "documents/pageframe.h"
#include "documents/tcontactsheet.h"
#include "safeprint.h"
#include "tstatisticspane.h"

#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QSaveFile>
#include <QScrollBar>
#include <QSettings>
#include <QTimer>

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
constexpr int kStatisticsWidth = 380;

// The charts are counted again at most this often while rows arrive or the
// filter changes.
constexpr int kStatisticsDelayMs = 150;

const QString kSettingsGroup = QStringLiteral("CardWindow");

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
    header->setStretchLastSection(true);
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
    connect(m_filter, &QAbstractItemModel::layoutChanged, this, [this] { askPicturesAhead(); });
    connect(ui->tableView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this] { askPicturesAhead(); });

    m_statisticsDue->setSingleShot(true);
    m_statisticsDue->setInterval(kStatisticsDelayMs);
    connect(m_statisticsDue, &QTimer::timeout, this, [this] { updateStatistics(); });
    connect(ui->statistics, &TStatisticsPane::barClicked, this, &TCardWindow::filterByCategory);
    ui->splitter->setStretchFactor(0, 1);
    ui->splitter->setSizes({width() - kStatisticsWidth, kStatisticsWidth});

    ui->progressBar->hide();
    ui->btnStop->hide();
    filterByCategory(TCategory::Lens, QString());
    updateLenses();
    readSettings();
}

TCardWindow::~TCardWindow()
{
    delete ui;
}

QString TCardWindow::lastFolder()
{
    return QSettings()
        .value(kSettingsGroup + QStringLiteral("/lastFolder"), QDir::homePath())
        .toString();
}

void TCardWindow::openFolder(const QString &folder)
{
    m_folder = QFileInfo(folder).absoluteFilePath();
    QSettings().setValue(kSettingsGroup + QStringLiteral("/lastFolder"), m_folder);
    setWindowTitle(QStringLiteral("Tolvik \u2013 ") + QDir::toNativeSeparators(m_folder));
    ui->cbLens->setCurrentIndex(0);
    m_loader->start(m_folder);
}

// --- settings ---

void TCardWindow::readSettings()
{
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    QHeaderView *header = ui->tableView->horizontalHeader();
    // Column order and widths and the sort column; by date taken at first.
    if (!header->restoreState(settings.value(QStringLiteral("columns")).toByteArray()))
        header->setSortIndicator(TCardModel::DateTime, Qt::AscendingOrder);
    ui->tableView->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());
    ui->splitter->restoreState(settings.value(QStringLiteral("splitter")).toByteArray());
    settings.endGroup();
}

void TCardWindow::saveSettings() const
{
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("columns"), ui->tableView->horizontalHeader()->saveState());
    settings.setValue(QStringLiteral("splitter"), ui->splitter->saveState());
    settings.endGroup();
}

void TCardWindow::closeEvent(QCloseEvent *event)
{
    m_loader->stop();
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
        files.append(m_model->cardRow(row).path);
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
    QList<TSheetFrame> frames;
    for (const int row : shownRows()) {
        const TCardRow &r = m_model->cardRow(row);
        frames.append(sheetFrame(r.path, r.frame.texts, r.frame.numbers, r.accepted, r.error));
    }
    return TContactSheet(m_folder, frames);
}

void TCardWindow::on_actionPrint_Contact_Sheet_triggered()
{
    const TContactSheet sheet = contactSheet();
    QPrinter printer;
    setReportMargins(&printer);
    printer.setDocName(sheet.headerText());
    QPrintPreviewDialog preview(&printer, this);
    connect(&preview, &QPrintPreviewDialog::paintRequested, &preview, [&](QPrinter *target) {
        printSafely(&preview, target, cardFiles(),
                    [&sheet](QPrinter *p) { return sheet.print(p) > 0; });
    });
    preview.exec();
}

void TCardWindow::on_actionSave_Contact_Sheet_triggered()
{
    const QString name = QFileInfo(m_folder).fileName();
    const QString proposal = QDir(m_folder).filePath(
        (name.isEmpty() ? QStringLiteral("card") : name) + QStringLiteral("-contact-sheet.pdf"));
    const QString path = QFileDialog::getSaveFileName(this, tr("Save Contact Sheet as PDF"),
                                                      proposal, tr("PDF files (*.pdf)"));
    if (path.isEmpty())
        return;
    QString failure = outputRefusal(path, TOutputKind::Pdf, cardFiles());
    if (failure.isEmpty())
        failure = writeContactSheetPdf(contactSheet(), path);
    if (!failure.isEmpty())
        warnNotWritten(this, tr("Save Contact Sheet"), failure);
}

// --- statistics ---

void TCardWindow::updateStatistics()
{
    QList<TFrame> frames;
    for (const int row : shownRows())
        frames.append(m_model->cardRow(row).frame);
    ui->statistics->setFrames(frames);
}

void TCardWindow::filterByCategory(TCategory category, const QString &value)
{
    m_filter->setCategoryValue(category, value);
    ui->statistics->setChosen(category, value);
    ui->lblCategoryFilter->setText(
        value.isEmpty()
            ? QString()
            : QStringLiteral("%1: <b>%2</b>").arg(categoryName(category), value.toHtmlEscaped()));
    ui->lblCategoryFilter->setVisible(!value.isEmpty());
    ui->btnClearCategory->setVisible(!value.isEmpty());
}

void TCardWindow::on_btnClearCategory_clicked()
{
    filterByCategory(TCategory::Lens, QString());
}

// --- filter and lens selector ---

void TCardWindow::on_leFilter_textChanged(const QString &text)
{
    m_filter->setText(text);
}

void TCardWindow::on_cbLens_currentIndexChanged(int index)
{
    m_filter->setColumnValue(TCardModel::Lens, ui->cbLens->itemData(index).toString());
}

void TCardWindow::on_chkRejected_toggled(bool checked)
{
    m_filter->setShowRejected(checked);
}

// The lenses of the card with their counts; the chosen one stays chosen.
void TCardWindow::updateLenses()
{
    const QString chosen = ui->cbLens->currentData().toString();
    const QList<std::pair<QString, int>> lenses = m_model->lensCounts();
    int files = 0;
    for (const auto &[lens, count] : lenses)
        files += count;
    const QSignalBlocker blocker(ui->cbLens);
    ui->cbLens->clear();
    ui->cbLens->addItem(tr("All lenses (%1)").arg(files), QString());
    for (const auto &[lens, count] : lenses)
        ui->cbLens->addItem(QStringLiteral("%1 (%2)").arg(lens).arg(count), lens);
    ui->cbLens->setCurrentIndex(std::max(0, ui->cbLens->findData(chosen)));
}

void TCardWindow::updateShown()
{
    m_statisticsDue->start();
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
    updateLenses();
}

void TCardWindow::onFinished()
{
    ui->progressBar->hide();
    ui->btnStop->hide();
    updateShown();
}

void TCardWindow::on_btnStop_clicked()
{
    m_loader->stop();
}

// Asks the model for the pictures of the rows shown and a few beyond; the
// model has each made once.
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
    for (int row = std::max(top - kPictureRowsAhead, 0);
         row <= std::min(bottom + kPictureRowsAhead, rows - 1); ++row)
        m_filter->index(row, TCardModel::Picture).data(Qt::DecorationRole);
}

// --- together with the main window ---

QString TCardWindow::pathAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    const TCardRow &row = m_model->cardRow(m_filter->mapToSource(index).row());
    return row.accepted ? row.path : QString();
}

void TCardWindow::onCurrentRowChanged(const QModelIndex &current)
{
    const QString path = pathAt(current);
    if (!path.isEmpty())
        emit fileChosen(path);
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
