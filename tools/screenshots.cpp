// Photographs the real window with a file open: folded, and unfolded with the
// mouse over the preview so that the readout shows values; then the
// panel in exact values, the preferences dialog and the About box, writes the
// file's report as a PDF, and photographs the card window on a folder of
// made-up frames. Used by scripts/screenshots; settings go to a temporary
// directory.
//   tolvik-screenshots FILE.dng OUTDIR

#include "card/marks.h"
#include "cardmodel.h"
#include "cardwindow.h"
#include "documents/tcontactsheet.h"
#include "documents/treport.h"
#include "mainwindow.h"
#include "sensorcheckwindow.h"
#include "rawfile/tm9file.h"
#include "tbarchart.h"
#include "tests/support/rawgen.h"
#include "tests/support/samplem9.h"
#include "tframeview.h"
#include "tstatisticspane.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QGraphicsView>
#include <QHeaderView>
#include <QMessageBox>
#include <QMouseEvent>
#include <QProgressBar>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <cstdio>

namespace {

bool save(QWidget &window, const QString &path)
{
    QTest::qWait(50);
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    std::printf("%s\n", qPrintable(path));
    return true;
}

// Photographs the next modal dialog that action opens, then closes it.
bool saveDialog(QWidget &window, const char *action, const QString &path)
{
    bool saved = false;
    QTimer::singleShot(300, &window, [&] {
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            saved = save(*dialog, path);
            dialog->reject();
        }
    });
    window.findChild<QAction *>(QLatin1String(action))->trigger();
    return saved;
}

// A card of a day out: frames of three lenses and a stray file of another camera.
bool writeCard(const QString &dir)
{
    struct Frame {
        const char *time;
        quint32 lens; // lens id * 4 + frame code
        quint32 focal, fTenths, exposure, iso;
        bool monochrom;
    };
    const Frame frames[] = {
        {"09:12:40", 30 * 4 + 1, 35, 80, 500, 160, false},
        {"09:13:02", 30 * 4 + 1, 35, 80, 1000, 160, false},
        {"10:41:17", 32 * 4 + 3, 50, 14, 4000, 160, false},
        {"10:41:55", 32 * 4 + 3, 50, 20, 2000, 160, false},
        {"12:05:09", 7 * 4 + 2, 90, 28, 250, 200, false},
        {"14:30:00", 32 * 4 + 3, 50, 56, 125, 160, true},
        {"14:32:05", 32 * 4 + 3, 50, 56, 250, 160, true},
        {"17:48:21", 30 * 4 + 1, 35, 20, 60, 640, false},
        {"19:36:55", 30 * 4 + 1, 35, 14, 15, 1250, false},
        {"20:02:33", 7 * 4 + 2, 90, 20, 8, 2500, false},
    };
    int number = 2600;
    for (const Frame &f : frames) {
        fixture::SampleM9 o;
        o.dateTime = QByteArray("2012:06:17 ") + f.time;
        o.lensType = f.lens;
        o.focalLength = {f.focal, 1};
        o.fNumber = {f.fTenths, 10};
        o.exposureTime = {1, f.exposure};
        o.iso = quint16(f.iso);
        o.temperature = 20 + number % 7;
        // A quarter of the sensor's side, each frame another part of the photograph.
        fixture::RawOptions raw;
        raw.width = 1318;
        raw.height = 880;
        raw.scene = fixture::RawScene::Photo;
        raw.frame = number % 7;
        raw.monochrom = f.monochrom;
        raw.sample = o;
        // A hot pixel and a speck of dust on the sensor, in every frame; the
        // dust where the frames (six parts of the photograph in eight) are
        // calm enough to show it: in the middle every one is busy.
        raw.defects = {{fixture::PixelDefect::Hot, QPoint(401, 300), 4000}};
        raw.spots = {{QPointF(300, 200), 22, -0.25, 0}};
        // Some frames exposed to the right and beyond, some held back.
        raw.exposureStops = (number % 4 - 1) * 0.8;
        const QString path = dir + QStringLiteral("/L100%1.DNG").arg(number++);
        if (!fixture::writeRawDng(path, raw))
            return false;
        // A cull begun: stars, a reject and labels in the frames' sidecars.
        const TMark marks[] = {{3, true, {}},       {-1, true, {}}, {5, true, "Red"},
                               {0, false, "Green"}, {2, true, {}},  {4, true, "Blue"}};
        const TMark &mark = marks[number % std::size(marks)];
        if (writeMarks(path, mark, TSidecarNaming::BaseName).outcome == TMarkOutcome::Failed)
            return false;
    }
    fixture::SampleM9 other;
    other.model = "DMC-GX7";
    return fixture::writeFile(dir + QStringLiteral("/P1030412.DNG"), fixture::sampleM9Dng(other));
}

// The card window on the folder, once every row and picture is in, with a
// row chosen; then with the table narrowed by the bars of one lens and one
// ISO, and the contact sheet of the card as a PDF.
bool saveCard(const QString &folder, const QString &dir)
{
    MainWindow window;
    window.show();
    window.openFolder(folder);
    auto *card = window.findChild<TCardWindow *>();
    auto *view = card->findChild<QTableView *>();
    card->resize(1320, 700);
    if (!QTest::qWaitFor([&] { return card->findChild<QProgressBar *>()->isHidden(); }))
        return false;
    QTest::qWait(300); // the pictures
    const auto figured = [view] {
        for (int row = 0; row < view->model()->rowCount(); ++row) {
            if (view->model()->index(row, TCardModel::Headroom).data().toString().isEmpty() &&
                view->model()->index(row, TCardModel::Error).data().toString().isEmpty())
                return false;
        }
        return true;
    };
    if (!QTest::qWaitFor(figured))
        return false;
    view->setCurrentIndex(view->model()->index(4, 1));
    if (!save(*card, dir + QStringLiteral("card.png")))
        return false;

    card->findChild<QAction *>(QStringLiteral("actionSheet_Raw_Figures"))->setChecked(true);
    const QString pdf = dir + QStringLiteral("contact-sheet.pdf");
    if (!writeContactSheetPdf(card->contactSheet(), pdf).isEmpty())
        return false;
    std::printf("%s\n", qPrintable(pdf));

    // Two bars of two charts: the Summilux frames at ISO 160.
    const auto clickBar = [card](TCategory category, const QString &value) {
        TBarChart *chart = card->findChild<TStatisticsPane *>()->chart(category);
        const QRect area = chart->rect();
        for (int y = area.top(); y < area.bottom(); ++y) {
            const int index = chart->barAt(QPoint(area.width() - 10, y));
            if (index >= 0 && chart->counts()[index].value.startsWith(value)) {
                QTest::mouseClick(chart, Qt::LeftButton, {}, QPoint(area.width() - 10, y));
                break;
            }
        }
        QTest::qWait(300);
    };
    clickBar(TCategory::Lens, QStringLiteral("Summilux"));
    clickBar(TCategory::Iso, QStringLiteral("160"));
    if (!save(*card, dir + QStringLiteral("card-lens.png")))
        return false;

    // The cull's and the exposure's side: the rating, label and raw figures'
    // columns beside each other, and the charts at their end.
    card->findChild<QToolButton *>(QStringLiteral("btnClearCategory"))->click();
    QHeaderView *header = view->horizontalHeader();
    for (const int column : {TCardModel::Clipped, TCardModel::Headroom})
        header->moveSection(header->visualIndex(column),
                            header->visualIndex(TCardModel::Label) + 1);
    card->findChild<TStatisticsPane *>()->findChild<QScrollArea *>()->verticalScrollBar()->setValue(
        1 << 20);
    QTest::qWait(300);
    if (!save(*card, dir + QStringLiteral("card-exposure.png")))
        return false;

    // The sensor check of the card, done.
    card->findChild<QAction *>(QStringLiteral("actionCheck_Sensor"))->trigger();
    auto *check = card->findChild<TSensorCheckWindow *>();
    if (!check || !QTest::qWaitFor([check] { return !check->isRunning(); }, 60000))
        return false;
    check->resize(1000, 600);
    QTest::qWait(200);
    if (!save(*check, dir + QStringLiteral("sensor-check.png")))
        return false;

    // The charts in a dark theme's colours.
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::WindowText, QColor(0xe0, 0xe0, 0xe0));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
    dark.setColor(QPalette::Text, QColor(0xe0, 0xe0, 0xe0));
    dark.setColor(QPalette::Highlight, QColor(0x3d, 0xae, 0xe9));
    dark.setColor(QPalette::Link, QColor(0xf6, 0x74, 0x00));
    dark.setColor(QPalette::HighlightedText, Qt::black);
    card->setPalette(dark);
    QTest::qWait(100);
    return save(*card, dir + QStringLiteral("card-dark.png"));
}

} // namespace

// The frame view on made-up full-size frames: fitted, at 100 % over the
// charts, a frame of a camera held upright, and a frame a stop too bright
// with its raw histogram and the overlays of the clipped and near-black
// pixels.
bool saveFrameViews(const QString &dir)
{
    QTemporaryDir frames;
    fixture::RawOptions options;
    const QString landscape = frames.filePath(QStringLiteral("L1000101.DNG"));
    options.orientation = 8;
    options.frame = 1;
    options.scene = fixture::RawScene::Photo;
    const QString portrait = frames.filePath(QStringLiteral("L1000102.DNG"));
    if (!fixture::writeRawDng(portrait, options))
        return false;
    options.orientation = 1;
    options.frame = 3;
    options.exposureStops = 1;
    const QString bright = frames.filePath(QStringLiteral("L1000103.DNG"));
    if (!fixture::writeRawDng(bright, options))
        return false;
    options = {};
    if (!fixture::writeRawDng(landscape, options))
        return false;
    // Marked during a cull: its stars and label show in the corner.
    if (writeMarks(landscape, {4, true, QStringLiteral("Green")}, TSidecarNaming::BaseName)
            .outcome == TMarkOutcome::Failed)
        return false;
    const QStringList order{landscape, portrait, bright};
    TFrameView view([&](const QString &path, int direction) {
        return order.value(order.indexOf(path) + direction);
    });
    view.resize(1100, 760);
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        return false;
    view.showFrame(landscape);
    if (!QTest::qWaitFor([&] { return view.showsFullSize(); }, 60000))
        return false;
    const QPoint star(760, 470); // the Siemens star
    QTest::mouseMove(&view, star);
    if (!save(view, dir + QStringLiteral("frame-fitted.png")))
        return false;
    QTest::keyClick(&view, Qt::Key_Z);
    if (!save(view, dir + QStringLiteral("frame-100.png")))
        return false;
    QTest::keyClick(&view, Qt::Key_Z);
    QTest::keyClick(&view, Qt::Key_PageDown);
    if (!QTest::qWaitFor([&] { return view.showsFullSize(); }, 60000))
        return false;
    if (!save(view, dir + QStringLiteral("frame-portrait.png")))
        return false;
    QTest::keyClick(&view, Qt::Key_PageDown);
    if (!QTest::qWaitFor([&] { return view.showsFullSize(); }, 60000))
        return false;
    QTest::keyClick(&view, Qt::Key_O);
    QTest::keyClick(&view, Qt::Key_U);
    if (!save(view, dir + QStringLiteral("frame-exposure.png")))
        return false;
    QTest::keyClick(&view, Qt::Key_L);
    QTest::mouseMove(&view, QPoint(190, 560)); // a highlight that clipped
    QTest::keyClick(&view, Qt::Key_Z);
    if (!save(view, dir + QStringLiteral("frame-exposure-ev.png")))
        return false;
    QTest::keyClick(&view, Qt::Key_L); // the axis is kept in the settings
    return true;
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));
    QApplication::setOrganizationName(QStringLiteral("Brekko"));
    QApplication::setApplicationName(QStringLiteral("Tolvik"));
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: tolvik-screenshots FILE.dng OUTDIR\n");
        return 2;
    }
    QTemporaryDir settingsDir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());

    MainWindow window;
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return 1;
    window.openFile(args[1]);
    const QString dir = args[2] + QLatin1Char('/');
    if (!save(window, dir + QStringLiteral("folded.png")))
        return 1;

    window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"))->click();
    QTest::qWait(50);
    // Over the red roof of the sample's hut.
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    const QPoint at = view->mapFromScene(QPointF(70.5, 173.5));
    QMouseEvent move(QEvent::MouseMove, at, view->viewport()->mapToGlobal(at), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &move);
    if (!save(window, dir + QStringLiteral("unfolded.png")))
        return 1;
    QAction *exact = window.findChild<QAction *>(QStringLiteral("actionExact_Values"));
    exact->setChecked(true);
    if (!save(window, dir + QStringLiteral("exact.png")))
        return 1;
    exact->setChecked(false);

    QSettings().setValue(
        QStringLiteral("OtherSettings/programmListe"),
        QStringList{QStringLiteral("/usr/bin/darktable"), QStringLiteral("/usr/bin/gimp")});
    MainWindow withPrograms;
    withPrograms.show();
    if (!saveDialog(withPrograms, "actionPreferences", dir + QStringLiteral("preferences.png")) ||
        !saveDialog(withPrograms, "actionAbout_Tolvik", dir + QStringLiteral("about.png")))
        return 1;

    TM9File file(args[1]);
    const QString pdf = dir + QStringLiteral("report.pdf");
    if (!file.processFile() || !writeReportPdf(file, pdf).isEmpty())
        return 1;
    std::printf("%s\n", qPrintable(pdf));

    QTemporaryDir card;
    if (!writeCard(card.path()) || !saveCard(card.path(), dir) || !saveFrameViews(dir))
        return 1;
    return 0;
}
