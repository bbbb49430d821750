// Reading in order: whatever the number of threads and however long each
// item takes, every result is delivered once, in item order, on the calling
// thread.

#include "card/inorder.h"

#include <QtTest>

#include <mutex>
#include <numeric>
#include <thread>

class TestInOrder : public QObject {
    Q_OBJECT

private slots:
    void sameOutputForEveryThreadCount_data();
    void sameOutputForEveryThreadCount();
    void anItemThatNeverEndsHoldsUpNoOther_data();
    void anItemThatNeverEndsHoldsUpNoOther();
};

void TestInOrder::sameOutputForEveryThreadCount_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("threads");
    for (const int count : {0, 1, 7, 500}) {
        for (const int threads : {1, 2, 3, 8, 64})
            QTest::addRow("%d items, %d threads", count, threads) << count << threads;
    }
}

void TestInOrder::sameOutputForEveryThreadCount()
{
    QFETCH(int, count);
    QFETCH(int, threads);
    const std::thread::id caller = std::this_thread::get_id();
    QList<int> delivered;
    bool onCaller = true;
    runInOrder<QString>(
        count, threads,
        [](int i) {
            // Items end out of order: some take longer than the ones after them.
            for (int spin = (i * 7919) % 13; spin > 0; --spin)
                std::this_thread::yield();
            return QString::number(i * i);
        },
        [&](int i, QString &&result) {
            onCaller = onCaller && std::this_thread::get_id() == caller;
            QCOMPARE(result, QString::number(i * i));
            delivered.append(i);
        });
    QList<int> expected(count);
    std::iota(expected.begin(), expected.end(), 0);
    QCOMPARE(delivered, expected);
    QVERIFY(onCaller);
}

void TestInOrder::anItemThatNeverEndsHoldsUpNoOther_data()
{
    QTest::addColumn<int>("threads");
    QTest::addRow("one thread") << 1;
    QTest::addRow("two threads") << 2;
}

// A file on a share that hangs: its item is given up on after the patience,
// the others are delivered in order, and its thread is left to end later.
void TestInOrder::anItemThatNeverEndsHoldsUpNoOther()
{
    QFETCH(int, threads);
    static std::mutex hung; // outlives the threads left waiting for it
    hung.lock();            // held until the end: items 1 and 3 wait for it
    QStringList delivered;
    const int abandoned = runInOrderPatiently<QString>(
        6, threads,
        [](int i) {
            if (i == 1 || i == 3) {
                const std::lock_guard wait(hung);
            }
            return QString::number(i);
        },
        [&](int, QString &&result) { delivered.append(result); },
        [](int i) { return QStringLiteral("unanswered %1").arg(i); },
        std::chrono::milliseconds(50));
    hung.unlock();
    QCOMPARE(abandoned, 2);
    QCOMPARE(delivered, QStringList({"0", "unanswered 1", "2", "unanswered 3", "4", "5"}));
}

QTEST_GUILESS_MAIN(TestInOrder)
#include "tst_inorder.moc"
