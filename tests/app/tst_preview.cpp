// The preview in the right-hand panel: the fold button that shows it, the
// pixel readout under the mouse and the RGB distribution drawn from the
// preview's counts.

#include "apptest.h"
#include "mainwindow.h"

#include <QFrame>
#include <QGraphicsView>
#include <QMouseEvent>
#include <QTest>
#include <QToolButton>

#include <numeric>

class TestPreview : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void foldAndReadout();
    void distribution_data();
    void distribution();
    void distributionOverFiles();

private:
    static QImage distributionPicture(const MainWindow &window);
    QString write(const QImage &preview);

    QTemporaryDir m_settings;
    QTemporaryDir m_files;
};

void TestPreview::initTestCase()
{
    QVERIFY(m_settings.isValid());
    QVERIFY(m_files.isValid());
    apptest::prepareApplication(m_settings.path());
}

QImage TestPreview::distributionPicture(const MainWindow &window)
{
    const QPixmap pixmap = window.findChild<QLabel *>(QStringLiteral("lblRGBPic"))->pixmap();
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

QString TestPreview::write(const QImage &preview)
{
    fixture::SampleM9 options;
    options.preview = preview;
    return apptest::writeSample(m_files, QStringLiteral("preview.DNG"), options);
}

void TestPreview::foldAndReadout()
{
    QImage preview(320, 240, QImage::Format_RGB32);
    preview.fill(QColor(128, 128, 128));
    preview.setPixel(0, 0, qRgb(255, 0, 0));
    preview.setPixel(160, 120, qRgb(10, 20, 30));
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *fold = window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"));
    auto *panel = window.findChild<QFrame *>(QStringLiteral("frame_4"));
    window.openFile(write(preview));

    // The arrow on the button and whether the preview panel lies inside the
    // window. The resource goes through the same icon and conversions as the
    // button's, so that both round alike on any processor.
    const auto state = [&](const char *icon) {
        const QRect inWindow(panel->mapTo(&window, QPoint(0, 0)), panel->size());
        const auto image = [](const QIcon &i) { return i.pixmap(QSize(16, 16)).toImage(); };
        return std::pair(image(fold->icon()) ==
                             image(QIcon(QPixmap(QStringLiteral(":/images/") + icon))),
                         window.rect().contains(inWindow.topRight()));
    };
    QCOMPARE(state("btn_Aufklappen.tiff"), std::pair(true, false));
    QTest::mouseClick(fold, Qt::LeftButton);
    QCOMPARE(window.size(), QSize(650, 475));
    QCOMPARE(state("btn_Zuklappen.tiff"), std::pair(true, true));

    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    // The view takes the preview's size, even where its frame is smaller.
    QCOMPARE(view->size(), QSize(320, 240));
    QVERIFY(view->parentWidget()->width() < 320);
    const auto readoutAt = [&](QPointF scenePoint) {
        const QPoint at = view->mapFromScene(scenePoint);
        QMouseEvent move(QEvent::MouseMove, at, view->viewport()->mapToGlobal(at), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(view->viewport(), &move);
        return QStringList{apptest::labelText(&window, "lblR"), apptest::labelText(&window, "lblG"),
                           apptest::labelText(&window, "lblB")};
    };
    QCOMPARE(readoutAt(QPointF(0.5, 0.5)), QStringList({"255", "0", "0"}));
    QCOMPARE(readoutAt(QPointF(160.5, 120.5)), QStringList({"10", "20", "30"}));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view->viewport(), &leave);
    QCOMPARE(apptest::labelText(&window, "lblG"), QStringLiteral("-"));

    // Opening another file does not fold the window; the button does.
    window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000004.DNG")));
    QCOMPARE(window.size(), QSize(650, 475));
    QTest::mouseClick(fold, Qt::LeftButton);
    QCOMPARE(window.size(), QSize(344, 475));
    QCOMPARE(state("btn_Aufklappen.tiff"), std::pair(true, false));
}

void TestPreview::distribution_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QList<int>>("fullColumns"); // drawn from bottom to top
    QTest::addColumn<QList<int>>("emptyColumns");

    // Red 200 everywhere; green and blue each spread over one value per column.
    QTest::newRow("red spike six times the rest") << 6 << 100 << QList<int>{200, 100, 105, 150, 155}
                                                  << QList<int>{0, 99, 106, 149, 156, 199, 201};
    // Exactly five times the next count is not yet a spike.
    QTest::newRow("red count five times the rest") << 5 << 500 << QList<int>{200} << QList<int>{0};
}

void TestPreview::distribution()
{
    QFETCH(int, width);
    QFETCH(QList<int>, fullColumns);
    QFETCH(QList<int>, emptyColumns);
    QImage preview(width, 100, QImage::Format_RGB32);
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < 100; ++y)
            preview.setPixel(x, y, qRgb(200, 100 + x, 150 + x));
    MainWindow window;
    window.openFile(write(preview));
    QTEST(window.rgb.maxCount, "maximum");

    const QImage picture = distributionPicture(window);
    QCOMPARE(picture.size(), QSize(255, 100));
    for (int x : fullColumns) {
        const QColor colour = x == 200 ? Qt::red : x < 150 ? Qt::green : Qt::blue;
        for (int y : {0, 50, 99}) {
            // Painted: the colour within the rounding of the drawing code.
            const QColor seen = picture.pixelColor(x, y);
            QVERIFY2(std::abs(seen.red() - colour.red()) + std::abs(seen.green() - colour.green()) +
                                 std::abs(seen.blue() - colour.blue()) <=
                             3 &&
                         seen.alpha() >= 254,
                     qPrintable(QStringLiteral("%1 at %2,%3").arg(seen.name()).arg(x).arg(y)));
        }
    }
    for (int x : emptyColumns) {
        for (int y = 0; y < picture.height(); ++y)
            QVERIFY2(qAlpha(picture.pixel(x, y)) <= 1, qPrintable(QString::number(x)));
    }
}

// The counts add up over the files opened: the same file twice draws the same
// curves, and a file without preview draws nothing and leaves them as they were.
void TestPreview::distributionOverFiles()
{
    // The last ImageWidth read is 0, so the reader builds no preview.
    fixture::IfdPtr ifd0 = fixture::sampleIfd0({});
    ifd0->raw(0x0100, fixture::Long, 1, 0);
    const QString bare = apptest::writeBytes(m_files, QStringLiteral("bare.DNG"),
                                             fixture::tiff(fixture::Order::Big, ifd0));
    const QString sample = apptest::writeSample(m_files, QStringLiteral("L1002622.DNG"));
    MainWindow window;
    window.openFile(bare);
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("bare.DNG"));
    QCOMPARE(window.rgb.maxCount, 0);
    QImage empty(255, 100, QImage::Format_ARGB32);
    empty.fill(Qt::transparent);
    QCOMPARE(distributionPicture(window), empty);

    window.openFile(sample);
    const QList<qint32> red = window.rgb.redCounts;
    const QImage drawn = distributionPicture(window);
    QVERIFY(drawn != empty);
    QCOMPARE(std::accumulate(red.begin(), red.end(), 0), 320 * 240);
    window.openFile(bare);
    QCOMPARE(distributionPicture(window), drawn);
    window.openFile(sample);
    for (int i = 0; i < 256; ++i)
        QCOMPARE(window.rgb.redCounts[i], 2 * red[i]);
    QCOMPARE(distributionPicture(window), drawn);
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
