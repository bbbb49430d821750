// The byte reader's fast paths (the block last read, a directory entry's
// head in one step) give what its general path gives: a reader over a file,
// read in blocks, against one over the same bytes in memory, and an entry's
// head read at once against its three fields read one by one, on random bytes
// at random places, around block edges and past the end.

#include "rawfile/tbytereader.h"

#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QtTest>

class TestByteReader : public QObject {
    Q_OBJECT

private slots:
    void fastPathsAgreeWithGeneralPath_data();
    void fastPathsAgreeWithGeneralPath();
};

void TestByteReader::fastPathsAgreeWithGeneralPath_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("bigEndian");
    QTest::newRow("a few bytes, big-endian") << 1u << qint64(13) << true;
    QTest::newRow("one block and a bit, little-endian") << 2u << qint64(4096 + 5) << false;
    QTest::newRow("several blocks, big-endian") << 3u << qint64(5 * 4096 + 1234) << true;
    QTest::newRow("more blocks than are kept, little-endian") << 4u << qint64(20 * 4096) << false;
}

void TestByteReader::fastPathsAgreeWithGeneralPath()
{
    QFETCH(quint32, seed);
    QFETCH(qint64, size);
    QFETCH(bool, bigEndian);
    QRandomGenerator random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    QTemporaryFile file;
    QVERIFY(file.open());
    QCOMPARE(file.write(bytes), size);
    QVERIFY(file.flush());

    TByteReader inFile;
    inFile.setFile(&file, size);
    TByteReader inMemory;
    inMemory.setData(reinterpret_cast<const uchar *>(bytes.constData()), size);
    for (TByteReader *reader : {&inFile, &inMemory}) {
        reader->setBigEndian(bigEndian);
        reader->setBudget(qint64(1) << 40);
    }
    for (int step = 0; step < 20000; ++step) {
        // Mostly near a block edge or the end, where the paths part.
        const qint64 anchor =
            random.bounded(3) == 0 ? size : random.bounded(size / 4096 + 1) * 4096;
        const qint64 position = std::max<qint64>(anchor + random.bounded(24) - 12, 0);
        inFile.seek(position);
        inMemory.seek(position);
        const int read = random.bounded(4);
        const QString at = QStringLiteral("read %1 at %2").arg(read).arg(position);
        if (read == 0) {
            quint16 tag = 0, type = 0;
            quint32 count = 0;
            inFile.readEntryHead(tag, type, count);
            QCOMPARE(QList<quint32>({tag, type, count}),
                     QList<quint32>({inMemory.readU16(), inMemory.readU16(), inMemory.readU32()}));
        } else if (read == 1) {
            QVERIFY2(inFile.readU32() == inMemory.readU32(), qPrintable(at));
        } else if (read == 2) {
            QVERIFY2(inFile.readU16() == inMemory.readU16(), qPrintable(at));
        } else {
            QVERIFY2(inFile.readBytes(9) == inMemory.readBytes(9), qPrintable(at));
        }
        QVERIFY2(inFile.pos() == inMemory.pos(), qPrintable(at));
        QVERIFY2(inFile.farthest() == inMemory.farthest(), qPrintable(at));
    }
}

QTEST_GUILESS_MAIN(TestByteReader)
#include "tst_bytereader.moc"
