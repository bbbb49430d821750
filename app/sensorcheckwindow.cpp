#include "sensorcheckwindow.h"
#include "ui_sensorcheckwindow.h"

#include "documents/sensormap.h"
#include "safeprint.h"
#include "settingskeys.h"
#include "workpool.h"

#include <QAbstractTableModel>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPainter>
#include <QPrinter>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QtConcurrent>

#include <algorithm>

namespace {

// What a check gives back: its result and the frames it used.
struct TOutcome {
    raw::TSensorCheckResult result;
    QStringList used;
};

constexpr int kSwatchSide = 10; // the colour of a kind in the list, pixels
constexpr int kRowPadding = 6;  // a row of the list is a line of text and this, pixels

} // namespace

// The marks as rows: each column's text as the list shows it, and its value
// to sort by.
class TSensorListModel : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setMarks(std::vector<raw::TSensorMark> marks, int framesChecked)
    {
        beginResetModel();
        m_marks = std::move(marks);
        m_framesChecked = framesChecked;
        endResetModel();
    }
    const raw::TSensorMark &mark(int row) const { return m_marks[std::size_t(row)]; }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_marks.size());
    }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : raw::kSensorColumns;
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
            return raw::sensorListHeader().value(section);
        return {};
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid())
            return {};
        const raw::TSensorMark &m = mark(index.row());
        switch (role) {
        case Qt::DisplayRole: return raw::sensorListCells(m).value(index.column());
        case Qt::ToolTipRole: return raw::markDescription(m, m_framesChecked);
        case Qt::TextAlignmentRole:
            return int(index.column() == raw::KindColumn ? Qt::AlignLeft | Qt::AlignVCenter
                                                         : Qt::AlignRight | Qt::AlignVCenter);
        case Qt::DecorationRole:
            return index.column() == raw::KindColumn ? swatch(m.kind) : QVariant();
        case Qt::UserRole: return sortValue(m, index.column());
        default: return {};
        }
    }

private:
    static QVariant sortValue(const raw::TSensorMark &m, int column)
    {
        switch (column) {
        case raw::KindColumn: return int(m.kind);
        case raw::XColumn: return m.x;
        case raw::YColumn: return m.y;
        case raw::RadiusColumn: return m.radius;
        case raw::ContrastColumn: return m.isSpot() ? m.contrastPercent : 0.0;
        default: return m.frames;
        }
    }
    static QPixmap swatch(raw::TSensorMark::Kind kind)
    {
        QPixmap pixmap(kSwatchSide, kSwatchSide);
        pixmap.fill(markColour(kind));
        return pixmap;
    }

    std::vector<raw::TSensorMark> m_marks;
    int m_framesChecked = 0;
};

struct TSensorCheckWindow::TRun {
    std::shared_ptr<std::atomic<bool>> cancel = std::make_shared<std::atomic<bool>>(false);
    QFutureWatcher<TOutcome> *watcher = nullptr;
};

TSensorCheckWindow::TSensorCheckWindow(QWidget *parent)
    : QMainWindow(parent), ui(new Ui::TSensorCheckWindow), m_model(new TSensorListModel(this)),
      m_sorted(new QSortFilterProxyModel(this))
{
    ui->setupUi(this);
    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(Qt::UserRole);
    ui->tableView->setModel(m_sorted);
    ui->tableView->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui->tableView->horizontalHeader()->setStretchLastSection(true);
    ui->tableView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ui->tableView->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowPadding);
    ui->tableView->sortByColumn(-1, Qt::AscendingOrder); // as the check lists them
    ui->splitter->setStretchFactor(0, 3);
    ui->splitter->setStretchFactor(1, 2);
    connect(ui->map, &TSensorMapView::markClicked, this, [this](int mark) {
        const QModelIndex row = m_sorted->mapFromSource(m_model->index(mark, 0));
        ui->tableView->selectionModel()->setCurrentIndex(row, QItemSelectionModel::ClearAndSelect |
                                                                  QItemSelectionModel::Rows);
        requestFrame(mark);
    });
    connect(ui->tableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { ui->map->setHighlighted(markOfRow(current)); });
    restoreGeometry(QSettings().value(settingskeys::kSensorGeometry).toByteArray());
    showRunning(false);
}

TSensorCheckWindow::~TSensorCheckWindow()
{
    stop();
    delete ui;
}

void TSensorCheckWindow::start(const QString &folder, const QList<TCardEntry> &frames,
                               const QStringList &cardFiles)
{
    stop();
    m_folder = folder;
    m_frames = frames;
    m_cardFiles = cardFiles;
    m_checked.clear();
    m_result = {};
    m_model->setMarks({}, 0);
    setWindowTitle(TSensorMapDocument::titleOf(folder));
    ui->lblSummary->setText(tr("Checking the sensor on %1 frames of %2 \u2026")
                                .arg(frames.size())
                                .arg(QDir::toNativeSeparators(folder)));
    ui->map->clear(tr("The map shows once every frame is read."));
    ui->lblFile->clear();
    ui->progressBar->setRange(0, int(frames.size()));
    ui->progressBar->setValue(0);

    QStringList paths;
    QHash<QString, double> apertures;
    for (const TCardEntry &frame : frames) {
        paths.append(frame.path);
        apertures.insert(frame.path, frame.frame.numbers.aperture);
    }
    m_run = std::make_unique<TRun>();
    m_run->watcher = new QFutureWatcher<TOutcome>(this);
    QFutureWatcher<TOutcome> *watcher = m_run->watcher;
    connect(watcher, &QFutureWatcherBase::progressValueChanged, ui->progressBar,
            &QProgressBar::setValue);
    connect(watcher, &QFutureWatcherBase::progressTextChanged, ui->lblFile, &QLabel::setText);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        const TOutcome outcome = watcher->result();
        watcher->deleteLater();
        finished(outcome.result, outcome.used);
    });
    // The check decodes as many frames at a time as the pool has threads; the
    // pool's thread waits for them and reports each frame as it is done.
    const int jobs = std::max(1, workPool()->maxThreadCount());
    watcher->setFuture(QtConcurrent::run(
        workPool(), [paths, apertures, jobs, cancel = m_run->cancel](QPromise<TOutcome> &promise) {
            TOutcome outcome;
            raw::TSensorCheckOptions options;
            options.jobs = jobs;
            options.cancel = cancel.get();
            options.weightOf = [&apertures](const QString &path) {
                return raw::apertureWeight(apertures.value(path));
            };
            options.progress = [&](int done, int total, const QString &path,
                                   const QString &problem) {
                if (problem.isEmpty())
                    outcome.used.append(path);
                promise.setProgressRange(0, total);
                promise.setProgressValueAndText(
                    done, problem.isEmpty()
                              ? QFileInfo(path).fileName()
                              : QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(), problem));
            };
            outcome.result = raw::checkSensor(paths, options);
            promise.addResult(outcome);
        }));
    showRunning(true);
}

bool TSensorCheckWindow::showsCheckOf(const QString &folder) const
{
    return isVisible() && m_folder == folder && (isRunning() || m_result.width > 0);
}

void TSensorCheckWindow::stop()
{
    if (!m_run)
        return;
    // At once: the check ends at its next strip or tile, unwatched.
    *m_run->cancel = true;
    m_run->watcher->disconnect(this);
    m_run->watcher->deleteLater();
    m_run.reset();
    ui->lblSummary->setText(tr("Stopped after %1 of %2 frames.")
                                .arg(ui->progressBar->value())
                                .arg(ui->progressBar->maximum()));
    ui->map->clear(tr("No map: the check was stopped."));
    showRunning(false);
}

void TSensorCheckWindow::finished(const raw::TSensorCheckResult &result, const QStringList &used)
{
    m_run.reset();
    m_result = result;
    // In the card's order, so that the first frame is the card's first.
    const QSet<QString> usedPaths(used.cbegin(), used.cend());
    for (const TCardEntry &frame : std::as_const(m_frames)) {
        if (usedPaths.contains(frame.path))
            m_checked.append(frame);
    }
    QStringList summary{raw::checkedText(result)};
    if (const QString skipped = raw::skippedText(result); !skipped.isEmpty())
        summary.append(skipped);
    ui->lblSummary->setText(summary.join(QStringLiteral(" \u00b7 ")));
    if (result.width > 0)
        ui->map->setResult(result);
    else
        ui->map->clear(tr("No frame of this card could be checked."));
    m_model->setMarks(raw::sensorMarks(result), result.frames);
    showRunning(false);
}

void TSensorCheckWindow::showRunning(bool running)
{
    ui->progressBar->setVisible(running);
    ui->btnStop->setVisible(running);
    ui->lblFile->setVisible(running);
    const bool result = !running && m_result.width > 0;
    ui->actionPrint->setEnabled(result);
    ui->actionSave_PDF->setEnabled(result);
    ui->actionCopy->setEnabled(result);
    ui->btnCopy->setEnabled(result);
}

void TSensorCheckWindow::on_btnStop_clicked()
{
    stop();
}

void TSensorCheckWindow::closeEvent(QCloseEvent *event)
{
    stop();
    QSettings().setValue(settingskeys::kSensorGeometry, saveGeometry());
    event->accept();
}

// --- the marks ---

int TSensorCheckWindow::markOfRow(const QModelIndex &index) const
{
    return index.isValid() ? m_sorted->mapToSource(index).row() : -1;
}

QString TSensorCheckWindow::frameFor(const raw::TSensorMark &mark) const
{
    if (m_checked.isEmpty())
        return {};
    // A spot shows sharpest at a small aperture: the largest f-number known.
    const TCardEntry *best = &m_checked.first();
    for (const TCardEntry &frame : m_checked) {
        if (mark.isSpot() && frame.frame.numbers.aperture > best->frame.numbers.aperture)
            best = &frame;
    }
    return best->path;
}

void TSensorCheckWindow::requestFrame(int mark)
{
    if (mark < 0 || mark >= m_model->rowCount())
        return;
    const raw::TSensorMark &m = m_model->mark(mark);
    const QString path = frameFor(m);
    if (!path.isEmpty())
        emit frameRequested(path, QPoint(qRound(m.x), qRound(m.y)));
}

void TSensorCheckWindow::on_tableView_activated(const QModelIndex &index)
{
    requestFrame(markOfRow(index));
}

// The selected rows, or every row, in the order shown.
void TSensorCheckWindow::on_actionCopy_triggered()
{
    QModelIndexList rows = ui->tableView->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        for (int row = 0; row < m_sorted->rowCount(); ++row)
            rows.append(m_sorted->index(row, 0));
    }
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    std::vector<raw::TSensorMark> marks;
    for (const QModelIndex &row : std::as_const(rows))
        marks.push_back(m_model->mark(markOfRow(row)));
    QGuiApplication::clipboard()->setText(raw::sensorListTabbed(marks));
}

// --- printing ---

void TSensorCheckWindow::on_actionPrint_triggered()
{
    const TSensorMapDocument document(m_folder, m_result);
    printPreview(this, document.title(), m_cardFiles,
                 [&document](QPrinter *p) { return document.print(p) > 0; });
}

void TSensorCheckWindow::on_actionSave_PDF_triggered()
{
    savePdfAs(this, tr("Save Sensor Check as PDF"), m_folder, QStringLiteral("sensor-check"),
              m_cardFiles, [this](const QString &path) {
                  return writeSensorMapPdf(TSensorMapDocument(m_folder, m_result), path);
              });
}
