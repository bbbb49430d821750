// The frame view: the developed frame fitted, 100 % at the mouse, stepping
// with zoom and position kept, the readout's raw values, a frame that cannot
// be developed.

#include "apptest.h"
#include "card/dngfiles.h"
#include "raw/decode.h"
#include "raw/picture.h"
#include "tests/support/rawgen.h"
#include "tframeview.h"

#include <QtTest>

class TestFrameView : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void zoomStepAndReadout();
    void frameThatCannotBeDeveloped();

private:
    QTemporaryDir m_settings;
    QTemporaryDir m_files;
};

void TestFrameView::initTestCase()
{
    QVERIFY(m_settings.isValid() && m_files.isValid());
    apptest::prepareApplication(m_settings.path());
    fixture::RawOptions frame;
    frame.width = 640;
    frame.height = 440;
    frame.scene = fixture::RawScene::Charts;
    for (const char *name : {"L1000001.DNG", "L1000002.DNG"}) {
        QVERIFY(fixture::writeRawDng(m_files.filePath(QLatin1String(name)), frame));
        ++frame.frame;
    }
}

void TestFrameView::zoomStepAndReadout()
{
    const auto next = [](const QString &path, int direction) {
        const QStringList files = dngFilesIn(QFileInfo(path).absolutePath());
        const qsizetype at = files.indexOf(path) + direction;
        return at >= 0 && at < files.size() ? files[at] : QString();
    };
    TFrameView view(next);
    view.resize(400, 300); // smaller than the frame
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QString first = m_files.filePath(QStringLiteral("L1000001.DNG"));
    view.showFrame(first);
    QTRY_VERIFY_WITH_TIMEOUT(view.showsFullSize(), 30000);
    QCOMPARE(view.frameSize(), QSize(582, 396)); // the default crop

    // Z: 100 % with the point under the mouse kept there.
    const QPoint mouse(200, 139);
    QTest::mouseMove(&view, mouse);
    const QString before = view.readoutAt(mouse);
    QTest::keyClick(&view, Qt::Key_Z);
    QCOMPARE(view.zoom(), 1.0);
    QCOMPARE(view.readoutAt(mouse).section(QLatin1Char(' '), 0, 1),
             before.section(QLatin1Char(' '), 0, 1));

    // The next frame at the same zoom and place; the readout gives the raw
    // values of the sensor's 2 x 2 cell under the mouse.
    QSignalSpy stepped(&view, &TFrameView::stepped);
    QTest::keyClick(&view, Qt::Key_PageDown);
    QCOMPARE(stepped.value(0).value(0).toString(),
             m_files.filePath(QStringLiteral("L1000002.DNG")));
    QCOMPARE(view.zoom(), 1.0);
    QTRY_VERIFY_WITH_TIMEOUT(view.showsFullSize(), 30000);
    const QString readout = view.readoutAt(mouse);
    const QStringList place = readout.section(QLatin1Char(' '), 0, 1).split(QStringLiteral(", "));
    const QPoint stored =
        raw::rawPositionOf(raw::readInfo(view.path()).image.info, raw::TSize::Full,
                           QPoint(place.value(0).toInt(), place.value(1).toInt()));
    const raw::TRawImage image = raw::decodeFile(view.path()).image;
    const int x = stored.x() & ~1, y = stored.y() & ~1;
    const QString cell = QStringLiteral("raw R %1 · G %2 · G %3 · B %4")
                             .arg(image.at(x, y))
                             .arg(image.at(x + 1, y))
                             .arg(image.at(x, y + 1))
                             .arg(image.at(x + 1, y + 1));
    QVERIFY2(readout.contains(cell), qPrintable(readout + " / " + cell));

    // At the end nothing happens.
    QTest::keyClick(&view, Qt::Key_PageDown);
    QCOMPARE(stepped.size(), 1);
}

void TestFrameView::frameThatCannotBeDeveloped()
{
    TFrameView view({});
    view.showFrame(apptest::writeSample(m_files, QStringLiteral("L_no_raw.DNG")));
    QTRY_VERIFY_WITH_TIMEOUT(!view.error().isEmpty(), 30000);
    QVERIFY(!view.showsFullSize());
}

QTEST_MAIN(TestFrameView)
#include "tst_frameview.moc"
