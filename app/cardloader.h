#ifndef CARDLOADER_H
#define CARDLOADER_H

// Reads the DNG files of a folder into a TCardModel on worker threads, in the
// order tolvik-info reads them: rows arrive in batches while the window goes
// on answering. Pictures are made on request, small and once. A new folder or
// stop() ends the reading at the next file; what the old reading still sends
// is dropped.

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

class TCardModel;

class TCardLoader : public QObject {
    Q_OBJECT

public:
    explicit TCardLoader(TCardModel *model, QObject *parent = nullptr);
    ~TCardLoader() override; // stops and waits for its threads

    // Empties the model and reads the DNG files under folder into it.
    void start(const QString &folder);
    void stop();
    bool isLoading() const { return m_loading; }
    // Pictures asked for and not yet in the model.
    int picturesPending() const { return m_picturesPending; }

signals:
    void progress(int done, int total); // total is -1 while the files are being found
    void finished(bool complete);       // false: stopped

private:
    struct TReading {
        std::atomic<bool> stop{false};
        std::atomic<bool> done{false};
        std::thread thread;
    };
    void read(TReading *reading, int generation, const QString &folder);
    void makePicture(int row, const QString &path);
    void endReadings(bool wait);

    TCardModel *m_model;
    std::vector<std::unique_ptr<TReading>> m_readings; // the last one is current
    QThreadPool m_pictures;
    int m_generation = 0; // what a posted result must match to count
    int m_total = 0;
    int m_picturesPending = 0;
    bool m_loading = false;
};

#endif // CARDLOADER_H
