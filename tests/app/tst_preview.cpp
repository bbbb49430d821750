// The preview in the right-hand panel: the pixel readout under the mouse and
// the RGB distribution drawn from the preview's counts.

#include "apptest.h"
#include "mainwindow.h"

#include "rawfile/tm9file.h"

#include <QGraphicsView>
#include <QMouseEvent>
#include <QTest>
#include <QToolButton>

class TestPreview : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void readoutFollowsTheMouse();
    void distribution_data();
    void distribution();
    void countsAddUpOverFiles();
    void fileWithoutPreview();

private:
    static QImage distributionPicture(const MainWindow &window);
    static void hover(QGraphicsView *view, QPointF scenePoint);

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
    return window.findChild<QLabel *>(QStringLiteral("lblRGBPic"))
        ->pixmap()
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

// A mouse move over the view's viewport at the given picture position.
void TestPreview::hover(QGraphicsView *view, QPointF scenePoint)
{
    const QPoint at = view->mapFromScene(scenePoint);
    QMouseEvent move(QEvent::MouseMove, at, view->viewport()->mapToGlobal(at), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &move);
}

void TestPreview::readoutFollowsTheMouse()
{
    QImage preview(320, 240, QImage::Format_RGB32);
    preview.fill(QColor(128, 128, 128));
    preview.setPixel(0, 0, qRgb(255, 0, 0));
    preview.setPixel(160, 120, qRgb(10, 20, 30));
    fixture::SampleM9 options;
    options.preview = preview;

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.openFile(apptest::writeSample(m_files, QStringLiteral("red_corner.DNG"), options));
    QTest::mouseClick(window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose")),
                      Qt::LeftButton);

    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    // The view takes the preview's size, even where its frame is smaller.
    QCOMPARE(view->size(), QSize(320, 240));
    QVERIFY(view->parentWidget()->width() < 320);

    const auto readout = [&] {
        return QStringList{apptest::labelText(&window, "lblR"), apptest::labelText(&window, "lblG"),
                           apptest::labelText(&window, "lblB")};
    };
    QCOMPARE(readout(), QStringList({"-", "-", "-"}));
    hover(view, QPointF(0.5, 0.5));
    QCOMPARE(readout(), QStringList({"255", "0", "0"}));
    hover(view, QPointF(160.5, 120.5));
    QCOMPARE(readout(), QStringList({"10", "20", "30"}));
    hover(view, QPointF(40.5, 200.5));
    QCOMPARE(readout(), QStringList({"128", "128", "128"}));

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view->viewport(), &leave);
    QCOMPARE(readout(), QStringList({"-", "-", "-"}));
}

void TestPreview::distribution_data()
{
    QTest::addColumn<QImage>("preview");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QList<int>>("fullColumns"); // columns drawn from bottom to top
    QTest::addColumn<QList<QColor>>("colours");  // their colour
    QTest::addColumn<QList<int>>("emptyColumns");

    QImage one(100, 100, QImage::Format_RGB32);
    one.fill(QColor(10, 20, 30));
    QTest::newRow("one colour") << one << 10000 << QList<int>{10, 20, 30}
                                << QList<QColor>{Qt::red, Qt::green, Qt::blue}
                                << QList<int>{0, 9, 11, 19, 21, 29, 31, 254};

    // Red 200 everywhere; green and blue each spread over six values.
    QImage spike(6, 100, QImage::Format_RGB32);
    for (int x = 0; x < spike.width(); ++x)
        for (int y = 0; y < spike.height(); ++y)
            spike.setPixel(x, y, qRgb(200, 100 + x, 150 + x));
    QTest::newRow("red spike six times the rest")
        << spike << 100 << QList<int>{200, 100, 105, 150, 155}
        << QList<QColor>{Qt::red, Qt::green, Qt::green, Qt::blue, Qt::blue}
        << QList<int>{0, 99, 106, 149, 156, 199, 201};

    // Exactly five times the next count is not yet a spike.
    const QImage five = spike.copy(0, 0, 5, 100);
    QTest::newRow("red count five times the rest")
        << five << 500 << QList<int>{200} << QList<QColor>{Qt::red} << QList<int>{0};
}

void TestPreview::distribution()
{
    QFETCH(QImage, preview);
    QFETCH(int, maximum);
    QFETCH(QList<int>, fullColumns);
    QFETCH(QList<QColor>, colours);
    QFETCH(QList<int>, emptyColumns);

    fixture::SampleM9 options;
    options.preview = preview;
    MainWindow window;
    window.openFile(apptest::writeSample(m_files, QStringLiteral("distribution.DNG"), options));
    QCOMPARE(window.rgb.maxCount, maximum);

    const QImage picture = distributionPicture(window);
    QCOMPARE(picture.size(), QSize(255, 100));
    for (int i = 0; i < fullColumns.size(); ++i) {
        for (int y : {0, 50, 99}) {
            QCOMPARE(QColor(picture.pixel(fullColumns[i], y)), colours[i]);
            QCOMPARE(qAlpha(picture.pixel(fullColumns[i], y)), 255);
        }
    }
    for (int x : emptyColumns) {
        for (int y = 0; y < picture.height(); ++y)
            QVERIFY2(qAlpha(picture.pixel(x, y)) == 0, qPrintable(QString::number(x)));
    }
}

void TestPreview::countsAddUpOverFiles()
{
    const QString path = apptest::writeSample(m_files, QStringLiteral("L1002622.DNG"));
    MainWindow window;
    window.openFile(path);
    const QList<qint32> red = window.rgb.redCounts;
    const QList<qint32> green = window.rgb.greenCounts;
    const QList<qint32> blue = window.rgb.blueCounts;
    const QImage picture = distributionPicture(window);
    QCOMPARE(red.size(), 256);
    qint64 pixels = 0;
    for (qint32 count : red)
        pixels += count;
    QCOMPARE(pixels, qint64(320 * 240));

    window.openFile(path);
    for (int i = 0; i < 256; ++i) {
        QCOMPARE(window.rgb.redCounts[i], 2 * red[i]);
        QCOMPARE(window.rgb.greenCounts[i], 2 * green[i]);
        QCOMPARE(window.rgb.blueCounts[i], 2 * blue[i]);
    }
    // Twice the counts against twice the maximum: the same curves.
    QCOMPARE(distributionPicture(window), picture);
}

void TestPreview::fileWithoutPreview()
{
    // The last ImageWidth read is 0, so the reader builds no preview.
    fixture::IfdPtr ifd0 = fixture::sampleIfd0({});
    ifd0->raw(0x0100, fixture::Long, 1, 0);
    const QString bare = apptest::writeBytes(m_files, QStringLiteral("bare.DNG"),
                                             fixture::tiff(fixture::Order::Big, ifd0));
    {
        TM9File file(bare);
        QVERIFY(file.processFile());
        QVERIFY(!file.hasPreviewImage());
    }

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.openFile(bare);
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("bare.DNG"));
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    QCOMPARE(view->size(), QSize(0, 0));
    QCOMPARE(window.rgb.maxCount, 0);
    QImage empty(255, 100, QImage::Format_ARGB32);
    empty.fill(Qt::transparent);
    QCOMPARE(distributionPicture(window), empty);

    // A file without preview after one with keeps the distribution drawn.
    window.openFile(apptest::writeSample(m_files, QStringLiteral("L1002622.DNG")));
    const QImage drawn = distributionPicture(window);
    QVERIFY(drawn != empty);
    window.openFile(bare);
    QCOMPARE(distributionPicture(window), drawn);
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
