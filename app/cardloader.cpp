#include "cardloader.h"

#include "card/limits.h"
#include "cardmodel.h"
#include "marker.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"
#include "workpool.h"

#include <QFutureWatcher>
#include <QImage>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent>

namespace {

// Rows reach the window at most this often after the first one: fewer, larger
// batches cost the view less, and 40 ms still looks continuous.
constexpr int kBatchMilliseconds = 40;

// The file's preview made kPictureHeight high; null without one.
QImage cardPicture(const QString &path)
{
    TM9File file(path);
    if (!file.processFile())
        return {};
    // Upright, as the frame view and the contact sheet show it.
    const QImage preview = turnedByOrientation(file.previewPicture(), file.exif().orientation);
    return preview.isNull()
               ? preview
               : preview.scaledToHeight(TCardModel::kPictureHeight, Qt::SmoothTransformation);
}

TCardEntry readEntry(const QString &path, const TCancelled &)
{
    return readCardEntry(path, nullptr, sidecarNaming());
}

} // namespace

TCardLoader::TCardLoader(TCardModel *model, QObject *parent)
    : QObject(parent), m_model(model), m_reader(readEntry), m_batch(new QTimer(this))
{
    m_batch->setSingleShot(true);
    m_batch->setInterval(kBatchMilliseconds);
    connect(m_batch, &QTimer::timeout, this, &TCardLoader::flush);
}

TCardLoader::~TCardLoader()
{
    m_loading = false; // nobody to tell any more
    stop();
}

void TCardLoader::start(const QString &folder)
{
    stop();
    m_model->clear();
    m_loading = true;
    m_total = -1;
    m_done = 0;
    const auto cancelled = std::make_shared<std::atomic<bool>>(false);
    m_cancelled = cancelled;
    m_watchers = new QObject(this);
    const QObject *owner = m_watchers;

    m_search = QtConcurrent::run(workPool(), [folder, cancelled](QPromise<QStringList> &promise) {
        promise.addResult(
            dngFilesUnder(folder, [&] { return cancelled->load() || promise.isCanceled(); }));
    });
    auto *search = new QFutureWatcher<QStringList>(m_watchers);
    connect(search, &QFutureWatcher<QStringList>::finished, this, [this, owner, search] {
        if (owner == m_watchers && !search->isCanceled() && search->future().resultCount() > 0)
            read(search->result());
    });
    search->setFuture(m_search);
    emit progress(0, -1);
}

// Reads the files found on every thread of the pool; each result is taken as
// it comes, whatever the files before it do.
void TCardLoader::read(const QStringList &files)
{
    m_total = int(files.size());
    const TReader reader = m_reader;
    const auto cancelled = m_cancelled;
    m_reading = QtConcurrent::mapped(
        workPool(), files, [reader, cancelled](const QString &path) -> TCardEntry {
            if (cancelled->load())
                return {};
            return reader(path, [cancelled] { return cancelled->load(); });
        });
    const QObject *owner = m_watchers;
    auto *reading = new QFutureWatcher<TCardEntry>(m_watchers);
    connect(reading, &QFutureWatcher<TCardEntry>::resultsReadyAt, this,
            [this, owner](int begin, int end) {
                if (owner == m_watchers)
                    takeResults(begin, end);
            });
    connect(reading, &QFutureWatcher<TCardEntry>::finished, this, [this, owner, reading] {
        if (owner != m_watchers || reading->isCanceled())
            return;
        flush();
        m_reading = QFuture<TCardEntry>(); // its results are in the model now
        m_loading = false;
        emit progress(m_done, m_total);
        emit finished(true);
        for (int row = 0; row < m_model->rowCount(); ++row) {
            if (m_model->entry(row).accepted() && !m_model->entry(row).frame.figures)
                m_figuresQueue.append(m_model->entry(row).path);
        }
        m_figuresDone = 0;
        m_figuresTotal = int(m_figuresQueue.size());
        startFigures();
    });
    reading->setFuture(m_reading);
}

void TCardLoader::takeResults(int begin, int end)
{
    for (int i = begin; i < end; ++i)
        m_arrived.emplace_back(i, m_reading.resultAt(i));
    m_done += end - begin;
    // The first rows at once, so that the window fills without delay.
    if (!m_batch->isActive()) {
        flush();
        m_batch->start();
    }
}

void TCardLoader::flush()
{
    if (m_arrived.empty())
        return;
    m_model->append(std::move(m_arrived));
    m_arrived.clear();
    emit progress(m_done, m_total);
}

void TCardLoader::stop()
{
    if (m_cancelled)
        *m_cancelled = true;
    m_search.cancel();
    m_reading.cancel();
    if (m_watchers)
        m_watchers->deleteLater();
    m_watchers = nullptr;
    m_arrived.clear();
    m_batch->stop();
    // Pictures still being made belong to an earlier generation.
    ++m_generation;
    m_pictureQueue.clear();
    m_picturesAsked.clear();
    m_picturesRunning = 0;
    m_figuresQueue.clear();
    m_figuresRunning = 0;
    if (m_loading) {
        m_loading = false;
        emit finished(false);
    }
}

void TCardLoader::requestPictures(const QStringList &paths)
{
    m_pictureQueue.clear();
    for (const QString &path : paths) {
        if (!m_picturesAsked.contains(path))
            m_pictureQueue.append(path);
    }
    startPictures();
}

// Keeps a few pictures per thread of the pool on their way, in the order
// asked: enough that no thread waits for the window to start the next, few
// enough that what scrolls away can still be dropped.
void TCardLoader::startPictures()
{
    const int inFlight = workPool()->maxThreadCount() * limits::kFilesInFlightPerThread;
    while (m_picturesRunning < inFlight && !m_pictureQueue.isEmpty()) {
        const QString path = m_pictureQueue.takeFirst();
        m_picturesAsked.insert(path);
        ++m_picturesRunning;
        auto *watcher = new QFutureWatcher<QImage>(this);
        const int generation = m_generation;
        connect(watcher, &QFutureWatcher<QImage>::finished, this,
                [this, watcher, generation, path] {
                    watcher->deleteLater();
                    if (generation != m_generation)
                        return;
                    --m_picturesRunning;
                    m_model->setPicture(path, watcher->result());
                    startPictures();
                });
        watcher->setFuture(QtConcurrent::run(workPool(), cardPicture, path));
    }
}

// One file's figures per thread of the pool at most: the pictures the window
// asks for meanwhile wait for one file at the most.
void TCardLoader::startFigures()
{
    const int inFlight = workPool()->maxThreadCount();
    while (m_figuresRunning < inFlight && !m_figuresQueue.isEmpty()) {
        const QString path = m_figuresQueue.takeFirst();
        ++m_figuresRunning;
        auto *watcher = new QFutureWatcher<raw::TRawFigures>(this);
        const int generation = m_generation;
        connect(watcher, &QFutureWatcher<raw::TRawFigures>::finished, this,
                [this, watcher, generation, path] {
                    watcher->deleteLater();
                    if (generation != m_generation)
                        return;
                    --m_figuresRunning;
                    m_model->setFigures(path, watcher->result());
                    emit figuresProgress(++m_figuresDone, m_figuresTotal);
                    startFigures();
                });
        const auto cancelled = m_cancelled;
        watcher->setFuture(QtConcurrent::run(workPool(), [path, cancelled] {
            return raw::rawFiguresOfFile(path, cancelled.get());
        }));
    }
}
