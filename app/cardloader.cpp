#include "cardloader.h"

#include "cardmodel.h"
#include "card/inorder.h"
#include "rawfile/dngfiles.h"
#include "rawfile/tm9file.h"

#include <QElapsedTimer>
#include <QImage>
#include <QThread>

#include <algorithm>

namespace {

// Rows reach the window at most this often after the first one: fewer, larger
// batches cost the view less, and 40 ms still looks continuous.
constexpr int kBatchMilliseconds = 40;

// Threads that read files or make pictures, each: all cores but the one the
// window needs to answer at once; reading is fast enough on one (50 µs a file).
int workerThreads()
{
    return std::max(QThread::idealThreadCount() - 1, 1);
}

// The file's preview made kPictureHeight high; null without one.
QImage cardPicture(const QString &path)
{
    TM9File file(path);
    if (!file.processFile())
        return {};
    const QImage preview = file.previewPicture();
    return preview.isNull()
               ? preview
               : preview.scaledToHeight(TCardModel::kPictureHeight, Qt::SmoothTransformation);
}

} // namespace

TCardLoader::TCardLoader(TCardModel *model, QObject *parent) : QObject(parent), m_model(model)
{
    connect(model, &TCardModel::pictureWanted, this, &TCardLoader::makePicture);
    m_pictures.setMaxThreadCount(workerThreads());
}

TCardLoader::~TCardLoader()
{
    endReadings(true);
    m_pictures.clear();
    m_pictures.waitForDone();
}

void TCardLoader::start(const QString &folder)
{
    stop();
    m_model->clear();
    m_loading = true;
    m_total = -1;
    const int generation = m_generation;
    auto reading = std::make_unique<TReading>();
    TReading *current = reading.get();
    reading->thread = std::thread([=] { read(current, generation, folder); });
    m_readings.push_back(std::move(reading));
    emit progress(0, -1);
}

void TCardLoader::stop()
{
    // Whatever is still on its way belongs to an earlier generation.
    ++m_generation;
    m_picturesPending = 0;
    m_pictures.clear();
    endReadings(false);
    if (m_loading) {
        m_loading = false;
        emit finished(false);
    }
}

// Tells every reading to stop; joins those that have ended (all with wait).
// A reading blocked on a slow share is not waited for, only told.
void TCardLoader::endReadings(bool wait)
{
    for (auto &reading : m_readings)
        reading->stop = true;
    const auto ended = [wait](const std::unique_ptr<TReading> &reading) {
        if (!wait && !reading->done)
            return false;
        reading->thread.join();
        return true;
    };
    m_readings.erase(std::remove_if(m_readings.begin(), m_readings.end(), ended), m_readings.end());
}

// On the reading's thread: finds the files, reads them on all cores and posts
// the rows in file order.
void TCardLoader::read(TReading *reading, int generation, const QString &folder)
{
    const QStringList files = dngFilesUnder(folder);
    const int count = int(files.size());
    const auto post = [&](std::vector<TCardRow> rows, bool last) {
        QMetaObject::invokeMethod(
            this,
            [this, generation, count, last, rows = std::move(rows)]() mutable {
                if (generation != m_generation)
                    return;
                m_total = count;
                m_model->append(std::move(rows));
                emit progress(m_model->rowCount(), count);
                if (last) {
                    m_loading = false;
                    emit finished(true);
                }
            },
            Qt::QueuedConnection);
    };

    std::vector<TCardRow> batch;
    QElapsedTimer sincePost;
    sincePost.start();
    bool first = true;
    const int threads = std::clamp(workerThreads(), 1, std::max(count, 1));
    runInOrder<TCardRow>(
        count, threads,
        [&](int i) { return reading->stop ? TCardRow{} : TCardRow::read(files[i]); },
        [&](int, TCardRow &&row) {
            if (reading->stop)
                return;
            batch.push_back(std::move(row));
            // The first row at once, so that the window fills without delay.
            if (first || sincePost.elapsed() >= kBatchMilliseconds) {
                post(std::move(batch), false);
                batch.clear();
                sincePost.restart();
                first = false;
            }
        });
    if (!reading->stop)
        post(std::move(batch), true);
    reading->done = true;
}

void TCardLoader::makePicture(int row, const QString &path)
{
    const int generation = m_generation;
    ++m_picturesPending;
    m_pictures.start([this, row, path, generation] {
        const QImage picture = cardPicture(path);
        QMetaObject::invokeMethod(
            this,
            [this, row, generation, picture] {
                if (generation != m_generation)
                    return;
                --m_picturesPending;
                m_model->setPicture(row, picture);
            },
            Qt::QueuedConnection);
    });
}
