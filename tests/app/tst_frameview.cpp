// The frame view: the developed frame fitted, 100 % at the mouse, stepping
// with zoom and position kept, the readout's raw values, a frame that cannot
// be developed; the overlays of the clipped and near-black pixels and the
// exposure figures' texts.

#include "apptest.h"
#include "card/dngfiles.h"
#include "card/marks.h"
#include "marker.h"
#include "raw/decode.h"
#include "raw/picture.h"
#include "settingskeys.h"
#include "tests/support/rawgen.h"
#include "tframeview.h"
#include "trawhistogrampanel.h"

#include <QtTest>

#include <cmath>

namespace {

// The picture's pixel the readout names at a point of the view; (-1, -1) off
// the picture.
QPoint pixelAt(const TFrameView &view, QPoint point)
{
    const QStringList place =
        view.readoutAt(point).section(QLatin1Char(' '), 0, 1).split(QStringLiteral(", "));
    return place.size() == 2 ? QPoint(place[0].toInt(), place[1].toInt()) : QPoint(-1, -1);
}

} // namespace

class TestFrameView : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void zoomStepAndReadout();
    void frameThatCannotBeDeveloped();
    void exposureOverlays_data();
    void exposureOverlays();
    void marking();

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
    const QPoint stored = raw::rawPositionOf(raw::readInfo(view.path()).image.info,
                                             raw::TSize::Full, pixelAt(view, mouse));
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

void TestFrameView::exposureOverlays_data()
{
    QTest::addColumn<bool>("monochrom");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<bool>("clipped"); // a block at white and O, else at black and U
    QTest::addColumn<QSize>("stored");
    QTest::addColumn<QSize>("window");
    QTest::newRow("clipped, camera held upright, enlarged")
        << false << 6 << true << QSize(200, 150) << QSize(500, 420);
    QTest::newRow("near black, upside down, made smaller")
        << false << 3 << false << QSize(640, 440) << QSize(300, 240);
    QTest::newRow("Monochrom clipped, turned, enlarged")
        << true << 8 << true << QSize(200, 150) << QSize(500, 420);
    QTest::newRow("Monochrom near black, turned, half size")
        << true << 8 << false << QSize(640, 440) << QSize(300, 240);
}

// The overlay marks a pixel where the sensor clipped (or recorded next to
// nothing) in a pixel of the cell the readout names there, the Monochrom's
// pixel itself, and nowhere else; made smaller, a screen pixel is marked
// when any pixel under it is.
void TestFrameView::exposureOverlays()
{
    QFETCH(bool, monochrom);
    QFETCH(int, orientation);
    QFETCH(bool, clipped);
    QFETCH(QSize, stored);
    QFETCH(QSize, window);
    fixture::RawOptions options;
    options.monochrom = monochrom;
    options.orientation = quint16(orientation);
    options.width = stored.width();
    options.height = stored.height();
    options.scene = fixture::RawScene::Photo; // clipped nowhere
    const QRect block(stored.width() / 3 | 1, stored.height() / 3 | 1, 13, 11);
    for (int y = block.top(); y <= block.bottom(); ++y) {
        for (int x = block.left(); x <= block.right(); ++x)
            options.defects.append(
                {clipped ? fixture::PixelDefect::Stuck : fixture::PixelDefect::Dead, {x, y}});
    }
    const QString path =
        m_files.filePath(QStringLiteral("L100%1.DNG").arg(QTest::currentDataTag()));
    QVERIFY(fixture::writeRawDng(path, options));
    const raw::TRawImage image = raw::decodeFile(path).image;
    const raw::TRawInfo &info = image.info;

    TFrameView view({});
    view.resize(window);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.showFrame(path);
    QTRY_VERIFY_WITH_TIMEOUT(view.showsFullSize(), 30000);
    QTest::keyClick(&view, clipped ? Qt::Key_O : Qt::Key_U);

    const QSize size = view.frameSize();
    QList<bool> expected(size.width() * size.height());
    for (int v = 0; v < size.height(); ++v) {
        for (int u = 0; u < size.width(); ++u) {
            const QPoint at = raw::rawPositionOf(info, raw::TSize::Full, {u, v});
            const QRect cell =
                monochrom ? QRect(at, QSize(1, 1)) : QRect(at.x() & ~1, at.y() & ~1, 2, 2);
            bool any = false;
            for (int y = cell.top(); y <= cell.bottom(); ++y) {
                for (int x = cell.left(); x <= cell.right(); ++x)
                    any = any ||
                          (clipped ? image.at(x, y) >= info.whiteLevel
                                   : image.at(x, y) <= std::max(info.blackAt(x, y) * M_SQRT2, 1.0));
            }
            expected[v * size.width() + u] = any;
        }
    }
    // Each screen pixel against the pixels from the readout's there to the
    // next one's: painted when all are marked, not when none is. Every marked
    // pixel lies under a painted one or next to it (a half-size mark covers
    // two), but at the picture's edge, where a screen pixel over it may lie
    // beside the picture for the readout.
    QList<QPoint> pixels;
    for (int j = 0; j < view.height(); ++j) {
        for (int i = 0; i < view.width(); ++i)
            pixels.append(pixelAt(view, {i, j}));
    }
    const QImage shot = view.grab().toImage();
    const QColor mark = clipped ? QColor(255, 0, 255) : QColor(0, 180, 255);
    const QRect frame(QPoint(0, 0), size);
    QList<bool> shown(expected.size());
    int marked = 0, unmarked = 0;
    for (int j = 0; j + 1 < view.height(); ++j) {
        for (int i = 0; i + 1 < view.width(); ++i) {
            const QPoint from = pixels[j * view.width() + i];
            const QPoint to = pixels[(j + 1) * view.width() + i + 1];
            if (from.x() < 0 || to.x() < 0)
                continue;
            const QColor c = shot.pixelColor(i, j);
            const bool painted = qAbs(c.red() - mark.red()) < 40 &&
                                 qAbs(c.green() - mark.green()) < 40 &&
                                 qAbs(c.blue() - mark.blue()) < 40;
            const QRect under(from, to);
            const QRect beside = under.adjusted(-1, -1, 1, 1).intersected(frame);
            int hits = 0;
            for (int v = beside.top(); v <= beside.bottom(); ++v) {
                for (int u = beside.left(); u <= beside.right(); ++u) {
                    hits += under.contains(u, v) && expected[v * size.width() + u] ? 1 : 0;
                    shown[v * size.width() + u] = shown[v * size.width() + u] || painted;
                }
            }
            if (hits == 0 || hits == under.width() * under.height()) {
                QVERIFY2(painted == (hits > 0),
                         qPrintable(QStringLiteral("at %1, %2: %3").arg(i).arg(j).arg(c.name())));
                ++(hits > 0 ? marked : unmarked);
            }
        }
    }
    QVERIFY(marked > 0 && unmarked > 0);
    const int edge = int(std::ceil(2 / view.zoom())) + 1;
    for (int v = edge; v + edge < size.height(); ++v) {
        for (int u = edge; u + edge < size.width(); ++u)
            QVERIFY2(!expected[v * size.width() + u] || shown[v * size.width() + u],
                     qPrintable(QStringLiteral("%1, %2 not shown").arg(u).arg(v)));
    }

    // The texts give the frame's figures; only the block clipped.
    const raw::TRawFigures figures = raw::rawFigures(image);
    const QStringList lines = view.histogramPanel()->lines();
    QCOMPARE(lines.size(), figures.channels.size());
    qint64 clippedPixels = 0;
    for (qsizetype c = 0; c < lines.size(); ++c) {
        const raw::TChannelFigures &f = figures.channels[c];
        QVERIFY2(
            lines[c].startsWith(QStringLiteral("%1 %2% clipped")
                                    .arg(f.name, QString::number(f.clippedPercent, 'f', 2))) &&
                lines[c].endsWith(QString::number(*f.headroomEv, 'f', 2) + QStringLiteral(" EV")),
            qPrintable(lines[c]));
        clippedPixels += f.clipped;
    }
    QCOMPARE(clippedPixels, clipped ? block.width() * block.height() : 0);
}

// The culling keys mark the frame shown, its marks show over it, Ctrl+Z
// takes them back, and with the preference the next frame follows.
void TestFrameView::marking()
{
    const auto next = [this](const QString &, int direction) {
        return direction > 0 ? m_files.filePath(QStringLiteral("L1000002.DNG")) : QString();
    };
    TFrameView view(next);
    view.resize(400, 300);
    view.show();
    const QString first = m_files.filePath(QStringLiteral("L1000001.DNG"));
    view.showFrame(first);
    QTRY_VERIFY_WITH_TIMEOUT(view.showsFullSize(), 30000);
    QCOMPARE(view.markShown(), QString());
    for (const Qt::Key key : {Qt::Key_4, Qt::Key_7}) {
        QTest::keyClick(&view, key);
        QTRY_VERIFY(!marker()->isBusy());
    }
    QCOMPARE(view.markShown(), QStringLiteral("\u2605\u2605\u2605\u2605\u2606 Yellow"));
    QCOMPARE(readMarks(first, TSidecarNaming::BaseName).mark, (TMark{4, true, "Yellow"}));
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    QTRY_COMPARE(view.markShown(), QStringLiteral("\u2605\u2605\u2605\u2605\u2606"));

    QSettings().setValue(settingskeys::kStepAfterMarking, true);
    QTest::keyClick(&view, Qt::Key_X);
    QTRY_VERIFY(!marker()->isBusy());
    QCOMPARE(view.path(), m_files.filePath(QStringLiteral("L1000002.DNG")));
    QCOMPARE(readMarks(first, TSidecarNaming::BaseName).mark.rating, -1);
    QSettings().remove(settingskeys::kStepAfterMarking);
}

QTEST_MAIN(TestFrameView)
#include "tst_frameview.moc"
