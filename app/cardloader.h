#ifndef CARDLOADER_H
#define CARDLOADER_H

// Reads the DNG files of a folder into a TCardModel on the work pool: the
// folder is searched, then its files are read on every thread of the pool,
// and rows arrive in batches, as they are read, while the window goes on
// answering. A file that does not answer holds up its own thread only.
// Pictures are made for the rows the window asks for, small and once. Once
// every row is in, the raw figures of the accepted files are counted, a few
// at a time, so that the shooting data never wait for them.
//
// stop(), a new folder or the loader's end cancel the reading at once at any
// point, the search included: nothing is waited for, what the old reading
// still sends is dropped, and its threads end as soon as their current file
// answers.

#include "card/cardentry.h"
#include "card/dngfiles.h"

#include <QFuture>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class QTimer;
class TCardModel;

class TCardLoader : public QObject {
    Q_OBJECT

public:
    // Reads one file into an entry on a worker thread; cancelled says that the
    // reading was stopped, for a reader that can give up part-way.
    using TReader = std::function<TCardEntry(const QString &path, const TCancelled &cancelled)>;

    explicit TCardLoader(TCardModel *model, QObject *parent = nullptr);
    ~TCardLoader() override; // cancels, and waits for nothing

    // Empties the model and reads the DNG files under folder into it.
    void start(const QString &folder);
    void stop();
    bool isLoading() const { return m_loading; }

    // Another way to read a file (a test's reader that blocks); the next
    // start() uses it.
    void setReader(TReader reader) { m_reader = std::move(reader); }

    // Makes the pictures of these files, in this order, those not made or
    // being made yet; what was asked for before and is not started yet, and
    // is not asked for again, is dropped (rows that scrolled away).
    void requestPictures(const QStringList &paths);
    // Pictures asked for and not yet in the model.
    int picturesPending() const { return int(m_pictureQueue.size()) + m_picturesRunning; }

signals:
    void progress(int done, int total); // total is -1 while the files are being found
    void finished(bool complete);       // false: stopped
    // The raw figures of done of total files are in; done == total at the end.
    void figuresProgress(int done, int total);

private:
    void read(const QStringList &files);
    void takeResults(int begin, int end);
    void flush();
    void startPictures();
    void startFigures();

    TCardModel *m_model;
    TReader m_reader;
    // What the current reading is told when it is stopped; each reading has its own.
    std::shared_ptr<std::atomic<bool>> m_cancelled;
    QFuture<QStringList> m_search;
    QFuture<TCardEntry> m_reading;
    QObject *m_watchers = nullptr;                     // the current reading's watchers
    std::vector<std::pair<int, TCardEntry>> m_arrived; // not yet in the model
    QTimer *m_batch;
    int m_total = 0;
    int m_done = 0;
    bool m_loading = false;

    QStringList m_pictureQueue;
    QSet<QString> m_picturesAsked; // made, being made or queued
    int m_picturesRunning = 0;
    int m_generation = 0; // what a picture or figures made must match to count

    QStringList m_figuresQueue;
    int m_figuresRunning = 0;
    int m_figuresDone = 0;
    int m_figuresTotal = 0;
};

#endif // CARDLOADER_H
