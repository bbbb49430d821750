// Every seed of the fuzz corpus and every reproducer in tests/data goes
// through its way into the reader in bounded time. A walk that grows
// exponentially or without end takes seconds; a file that is only large takes
// milliseconds. The time is the processor's (a busy machine does not count)
// and the limits generous, so that the sanitizers do not make the test flaky;
// the slowest input is reported. Reading takes well under 50 ms; a report
// costs some 300 ms (1 s under the sanitizers) to lay out and compress its
// page whatever the file, so it has a limit of its own.

#include "tests/fuzz/fuzztargets.h"

#include <QDir>
#include <QtTest>

#include <ctime>

class TstBoundedTime : public QObject {
    Q_OBJECT

    QMap<int, std::pair<qint64, QString>> m_slowest; // by target: ms, input

private slots:
    void everyKnownInput_data();
    void everyKnownInput();
    void cleanupTestCase();
};

void TstBoundedTime::everyKnownInput_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("target"); // index into fuzz::kTargets
    const QDir corpus(qEnvironmentVariable("TOLVIK_FUZZ_CORPUS"));
    const QDir data(qEnvironmentVariable("TOLVIK_TEST_DATA"));
    for (int t = 0; t < int(std::size(fuzz::kTargets)); ++t) {
        const QString name = QLatin1String(fuzz::kTargets[t].name);
        // The development starts from what the decoder's seeds decode to.
        const QString seeds =
            name == QLatin1String("rawdevelop") ? QStringLiteral("rawdecode") : name;
        QList<QFileInfo> files = QDir(corpus.filePath(seeds)).entryInfoList(QDir::Files);
        // The reproducers are files: they go in where a file goes in.
        if (name == QLatin1String("reader") || name == QLatin1String("report"))
            files += data.entryInfoList({QStringLiteral("*.dng")}, QDir::Files);
        if (seeds == QLatin1String("rawdecode"))
            files += data.entryInfoList({QStringLiteral("raw-*.dng")}, QDir::Files);
        for (const QFileInfo &file : files) {
            QTest::addRow("%s %s", qPrintable(name), qPrintable(file.fileName()))
                << file.filePath() << t;
        }
    }
}

void TstBoundedTime::everyKnownInput()
{
    QFETCH(QString, path);
    QFETCH(int, target);
    QFile file(path);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
    const QByteArray bytes = file.readAll();
    const std::clock_t start = std::clock();
    fuzz::kTargets[target].run(reinterpret_cast<const uint8_t *>(bytes.constData()),
                               size_t(bytes.size()));
    const qint64 ms = qint64(std::clock() - start) * 1000 / CLOCKS_PER_SEC;
    if (!m_slowest.contains(target) || ms > m_slowest[target].first)
        m_slowest[target] = {ms, QString::fromLatin1(QTest::currentDataTag())};
    const qint64 limitMs = fuzz::kTargets[target].run == fuzz::report ? 5000 : 1000;
    QVERIFY2(ms < limitMs, qPrintable(QStringLiteral("%1 ms").arg(ms)));
}

void TstBoundedTime::cleanupTestCase()
{
    QCOMPARE(m_slowest.size(), int(std::size(fuzz::kTargets)));
    for (const auto &[ms, input] : std::as_const(m_slowest))
        qInfo("slowest: %s, %lld ms", qPrintable(input), ms);
}

QTEST_MAIN(TstBoundedTime)
#include "tst_boundedtime.moc"
