// Reading in order: whatever the number of threads and however long each
// item takes, every result is delivered once, in item order, on the calling
// thread.

#include "card/inorder.h"

#include <QtTest>

#include <numeric>
#include <thread>

class TestInOrder : public QObject {
    Q_OBJECT

private slots:
    void sameOutputForEveryThreadCount_data();
    void sameOutputForEveryThreadCount();
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

QTEST_GUILESS_MAIN(TestInOrder)
#include "tst_inorder.moc"
