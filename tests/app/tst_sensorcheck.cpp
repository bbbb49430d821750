// The sensor check's window and printed map: the document's text read back
// from its PDF, and the window on a generated card with a hot pixel and a dust
// spot: stopped at once, then run to the end, its list copied, and a mark
// shown in the frame view at 100 %.

#include "apptest.h"
#include "cardwindow.h"
#include "documents/sensormap.h"
#include "mainwindow.h"
#include "raw/decode.h"
#include "raw/picture.h"
#include "sensorcheckwindow.h"
#include "tests/support/rawgen.h"
#include "tframeview.h"
#include "tsensormapview.h"
#include "workpool.h"

#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QPainter>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QThreadPool>

namespace {

constexpr QPoint kHot(701, 480);
constexpr QPointF kDust(400, 300);

raw::TSensorCheckResult knownResult(int hotPixels)
{
    raw::TSensorCheckResult r;
    r.frames = 3;
    r.skippedOtherCamera = 1;
    r.width = 1400;
    r.height = 1000;
    r.activeLeft = 26, r.activeTop = 20, r.activeRight = 1372, r.activeBottom = 980;
    for (int i = 0; i < hotPixels; ++i)
        r.defects.push_back({100 + i, 200, raw::TSensorDefect::Hot, 3});
    r.defects.push_back({300, 400, raw::TSensorDefect::Dead, 3});
    r.spots.push_back({kDust.x(), kDust.y(), 20.4, false, -12.34, 3});
    return r;
}

QString pdfText(const QString &pdf)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"),
                  {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).simplified();
}

} // namespace

class TestSensorCheck : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void map_data();
    void map();
    void document_data();
    void document();
    void window();

private:
    QTemporaryDir m_settings;
    QTemporaryDir m_card;
};

void TestSensorCheck::initTestCase()
{
    QVERIFY(m_settings.isValid() && m_card.isValid());
    apptest::prepareApplication(m_settings.path());
    // Five frames (spots need as many), each another part of the photograph;
    // the third at f/8.
    fixture::RawOptions o;
    o.width = 1400;
    o.height = 1000;
    o.scene = fixture::RawScene::Photo;
    o.framePart = 0.4;
    o.defects = {{fixture::PixelDefect::Hot, kHot, 4000}};
    o.spots = {{kDust, 20, -0.3}};
    for (int f = 1; f <= 5; ++f) {
        o.frame = f;
        o.sample.fNumber = {f == 3 ? 80u : 28u, 10};
        QVERIFY(fixture::writeRawDng(m_card.filePath(QStringLiteral("L100000%1.DNG").arg(f)), o));
    }
}

void TestSensorCheck::map_data()
{
    QTest::addColumn<raw::TSensorMark::Kind>("kind");
    for (const raw::TSensorMark::Kind kind : raw::kSensorMarkKinds)
        QTest::newRow(qPrintable(raw::markKindName(kind))) << kind;
}

// A mark is painted in its kind's colour where the map places it (a defect's
// square over it, a spot's ring at its radius) and is found there alone.
void TestSensorCheck::map()
{
    QFETCH(raw::TSensorMark::Kind, kind);
    raw::TSensorCheckResult r = knownResult(0);
    r.defects.clear();
    r.spots.clear();
    const bool spot = kind == raw::TSensorMark::Dust || kind == raw::TSensorMark::Bright;
    if (spot)
        r.spots.push_back({700, 500, 40, kind == raw::TSensorMark::Bright, 5, 3});
    else
        r.defects.push_back({700, 500, raw::TSensorDefect::Kind(kind), 3});
    const TSensorMap map(r);
    QImage image(700, 500, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    const QRectF field = map.field(image.rect());
    constexpr double mm = 4;
    map.paint(painter, field, mm);
    painter.end();
    const QPointF at = map.place(field, 700, 500);
    const QColor painted = image.pixelColor((at + QPointF(spot ? 20 : 0, 0)).toPoint());
    const QColor expected = markColour(kind);
    QVERIFY2(std::abs(painted.red() - expected.red()) +
                     std::abs(painted.green() - expected.green()) +
                     std::abs(painted.blue() - expected.blue()) <
                 60,
             qPrintable(painted.name()));
    QCOMPARE(map.markAt(field, at, mm), 0);
    QCOMPARE(map.markAt(field, at + QPointF(40, 0), mm), -1);
}

void TestSensorCheck::document_data()
{
    QTest::addColumn<int>("hotPixels");
    QTest::addColumn<QStringList>("texts"); // in this order
    QTest::addColumn<int>("pages");
    const QStringList intro{
        "Sensor check · card", "Folder: /media/card", "Frames checked: 3",
        "Frames skipped: 1 of another camera, 0 cut short, 0 of another raw size",
        "Sensor map: 1400 x 1000 pixels (raw image; active area x 26-1371, y 20-979)"};
    const QStringList list{"kind x y radius contrast % frames", "hot 100 200 3", "dead 300 400 3",
                           "dust 400 300 20 -12.3 3"};
    const QStringList legend{"Hot pixel: 1", "Stuck pixel: 0", "Dead pixel: 1", "Dust spot: 1",
                             "Bright spot: 0"};
    QTest::newRow("one of each") << 1 << intro + legend + list << 1;
    // The list goes on over the pages, under its header again.
    const QStringList pages{"Hot pixel: 150", "hot 100 200 3",  "Seite 1 / 4", list.first(),
                            "hot 249 200 3",  "dead 300 400 3", list.last(),   "Seite 4 / 4"};
    QTest::newRow("a long list") << 150 << pages << 4;
}

void TestSensorCheck::document()
{
    QFETCH(int, hotPixels);
    QFETCH(QStringList, texts);
    QFETCH(int, pages);
    const QString pdf = m_settings.filePath(QStringLiteral("sensor.pdf"));
    const TSensorMapDocument document(QStringLiteral("/media/card"), knownResult(hotPixels));
    QCOMPARE(writeSensorMapPdf(document, pdf), QString());
    const QString text = pdfText(pdf);
    qsizetype at = 0;
    for (const QString &expected : texts) {
        const qsizetype found = text.indexOf(expected, at);
        QVERIFY2(found >= 0, qPrintable(expected + QStringLiteral(" after ") + text.mid(at, 200)));
        at = found + expected.size();
    }
    QCOMPARE(text.count(QStringLiteral("Seite ")), pages);
}

void TestSensorCheck::window()
{
    MainWindow main;
    main.openFolder(m_card.path());
    auto *card = main.findChild<TCardWindow *>();
    QAction *check = card->findChild<QAction *>(QStringLiteral("actionCheck_Sensor"));
    QTRY_VERIFY(check->isEnabled());

    // Stop returns at once, and leaves no thread working.
    check->trigger();
    auto *window = card->findChild<TSensorCheckWindow *>();
    QVERIFY(window->isRunning());
    window->findChild<QPushButton *>(QStringLiteral("btnStop"))->click();
    QVERIFY(!window->isRunning());
    QVERIFY(apptest::labelText(window, QStringLiteral("lblSummary")).startsWith("Stopped after"));
    QTRY_COMPARE(workPool()->activeThreadCount(), 0);
    QCOMPARE(window->result().frames, 0);

    // Asked for again, it runs to the end.
    check->trigger();
    QVERIFY(window->isRunning());
    QTRY_VERIFY_WITH_TIMEOUT(!window->isRunning(), 60000);
    QCOMPARE(apptest::labelText(window, QStringLiteral("lblSummary")), "Frames checked: 5");
    auto *list = window->findChild<QTableView *>();
    QCOMPARE(list->model()->rowCount(), 2);
    window->findChild<QPushButton *>(QStringLiteral("btnCopy"))->click();
    const QStringList lines = QGuiApplication::clipboard()->text().split(QLatin1Char('\n'));
    QCOMPARE(lines.mid(0, 2),
             QStringList({"kind\tx\ty\tradius\tcontrast %\tframes", "hot\t701\t480\t\t\t5"}));
    const QStringList dust = lines.value(2).split(QLatin1Char('\t'));
    QVERIFY2(dust.value(0) == "dust" && std::abs(dust.value(1).toInt() - kDust.x()) <= 3 &&
                 std::abs(dust.value(2).toInt() - kDust.y()) <= 3,
             qPrintable(lines.value(2)));
    QCOMPARE(window->frameFor(raw::sensorMarks(window->result()).back()),
             m_card.filePath(QStringLiteral("L1000003.DNG"))); // f/8

    // A click on the hot pixel: the card's first frame at 100 %, the pixel
    // at the view's centre.
    auto *map = window->findChild<TSensorMapView *>();
    QTest::mouseClick(map, Qt::LeftButton, {}, map->markPosition(0));
    TFrameView *view = nullptr;
    for (TFrameView *v : main.findChildren<TFrameView *>())
        view = v->objectName() == QLatin1String("framePane") ? view : v;
    QVERIFY(view && view->isVisible());
    QCOMPARE(view->path(), m_card.filePath(QStringLiteral("L1000001.DNG")));
    QTRY_VERIFY_WITH_TIMEOUT(view->showsFullSize(), 30000);
    QCOMPARE(view->zoom(), 1.0);
    const QStringList place =
        view->readoutAt(view->rect().center()).section(QLatin1Char(' '), 0, 1).split(", ");
    const QPoint under =
        raw::rawPositionOf(raw::readInfo(view->path()).image.info, raw::TSize::Full,
                           QPoint(place.value(0).toInt(), place.value(1).toInt()));
    QVERIFY2((under - kHot).manhattanLength() <= 2,
             qPrintable(QStringLiteral("%1, %2").arg(under.x()).arg(under.y())));
}

QTEST_MAIN(TestSensorCheck)
#include "tst_sensorcheck.moc"
