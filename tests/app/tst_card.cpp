// The card window: each column's text against the panel's, sort keys per
// column, the filter with its values and conditions, a rejected file's row,
// loading that is cancelled while a file does not answer, CSV export against
// tolvik-info, and the window on a folder driving the main window's panel,
// with bars of its statistics narrowing the table.

#include "apptest.h"
#include "card/marks.h"
#include "cardloader.h"
#include "cardmodel.h"
#include "cardwindow.h"
#include "documents/tcontactsheet.h"
#include "mainwindow.h"
#include "marker.h"
#include "settingskeys.h"
#include "tbarchart.h"
#include "tests/support/rawgen.h"
#include "tstatisticspane.h"
#include "workpool.h"

#include <QAccessible>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPrintPreviewDialog>
#include <QProcess>
#include <QProgressBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>
#include <QTest>
#include <QThreadPool>
#include <QToolButton>
#include <QUrl>

#include <sys/stat.h>

using TConditions = QList<TCardFilter::TCondition>;
Q_DECLARE_METATYPE(TConditions)

class TestCard : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void columnTextIsPanelText_data();
    void columnTextIsPanelText();
    void sortKeys_data();
    void sortKeys();
    void filter_data();
    void filter();
    void rejectedRow();
    void fifoIsNotRead();
    void searchEndsWhenCancelled();
    void stopWhileAFileHangs();
    void emptyFolderFinishes();
    void windowOnFolder();
    void culling();

private:
    QStringList shownNames() const; // file names of m_filter's rows, top to bottom

    QTemporaryDir m_settings;
    std::unique_ptr<MainWindow> m_panel; // shows the file whose columns are compared
    QTemporaryDir m_card;
    TCardModel m_model;
    TCardFilter m_filter;
};

void TestCard::initTestCase()
{
    QVERIFY(m_settings.isValid());
    apptest::prepareApplication(m_settings.path());
    // Four accepted files with a value in every column, D with none where
    // the file can lack one, and X of another camera.
    const auto sample = [](auto set) {
        fixture::SampleM9 options;
        set(options);
        return fixture::sampleM9Dng(options);
    };
    const QList<std::pair<QString, QByteArray>> files = {
        {"A.DNG", sample([](fixture::SampleM9 &o) {
             o.exposureTime = {1, 8}, o.iso = 1250, o.dateTime = "2012:06:18 09:00:00";
             o.focalLength = {35, 1}, o.fNumber = {20, 10}, o.lensType = 30 * 4, o.temperature = 30;
         })},
        {"B.DNG", sample([](fixture::SampleM9 &o) {
             o.exposureTime = {1, 125};
         })},
        {"C.DNG", sample([](fixture::SampleM9 &o) {
             o.exposureTime = {2, 1}, o.iso = 200, o.dateTime = "2012:06:17 08:00:00";
             o.focalLength = {90, 1}, o.fNumber = {40, 10}, o.lensType = 7 * 4, o.temperature = -3;
         })},
        {"D.DNG", sample([](fixture::SampleM9 &o) {
             o.exposureTime = {0, 0}, o.iso = 0, o.dateTime = "    :  :     :  :  ";
             o.focalLength = {0, 0}, o.fNumber = {0, 0};
         })},
        {"X.DNG", sample([](fixture::SampleM9 &o) { o.model = "NIKON D850"; })},
    };
    std::vector<std::pair<int, TCardEntry>> entries;
    for (const auto &[name, bytes] : files) {
        QVERIFY(fixture::writeFile(m_card.filePath(name), bytes));
        entries.emplace_back(int(entries.size()), readCardEntry(m_card.filePath(name)));
    }
    // Out of order, as the threads deliver them.
    std::swap(entries[0], entries[3]);
    m_model.append(std::move(entries));
    m_filter.setSourceModel(&m_model);
}

QStringList TestCard::shownNames() const
{
    QStringList names;
    for (int row = 0; row < m_filter.rowCount(); ++row)
        names.append(m_filter.index(row, TCardModel::FileName).data().toString().chopped(4));
    return names;
}

void TestCard::columnTextIsPanelText_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("label"); // the panel's label of the same value
    const std::pair<int, const char *> columns[] = {
        {TCardModel::FileName, "lblFileName"},
        {TCardModel::DateTime, "lblDateTime"},
        {TCardModel::Lens, "lblLens"},
        {TCardModel::FocalLength, "lblFocalLength"},
        {TCardModel::Aperture, "lblApprAperture"},
        {TCardModel::ExposureTime, "lblExpTime"},
        {TCardModel::Iso, "lblISO"},
        {TCardModel::ExpCorrection, "lblExpCorrection"},
        {TCardModel::Metering, "lblMetering"},
        {TCardModel::ExpProgram, "lblExpProgram"},
        {TCardModel::FrameSelector, "lblFrameSelector"},
        {TCardModel::MeasuredLV, "lblMeasuredLV"},
        {TCardModel::SensorTemperature, "lblSensorTemperature"},
        {TCardModel::ImageId, "lblShutterID"},
        {TCardModel::Camera, "lblCamera"},
        {TCardModel::Serial, "lblSerial"},
    };
    for (const auto &[column, label] : columns) {
        QTest::newRow(qPrintable(m_model.headerData(column, Qt::Horizontal).toString()))
            << column << QString::fromLatin1(label);
    }
}

// Every column shows what the panel shows with exact values, for a file
// with a value in each.
void TestCard::columnTextIsPanelText()
{
    QFETCH(int, column);
    QFETCH(QString, label);
    if (!m_panel) {
        m_panel = std::make_unique<MainWindow>();
        m_panel->findChild<QAction *>(QStringLiteral("actionExact_Values"))->setChecked(true);
    }
    MainWindow *window = m_panel.get();
    const QString path = m_card.filePath(QStringLiteral("A.DNG"));
    window->openFile(path);
    const QString shown = m_model.text(m_model.rowOfPath(path), column);
    QVERIFY(!shown.isEmpty());
    QCOMPARE(shown, apptest::labelText(window, label));
}

void TestCard::sortKeys_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QString>("shown"); // files without a value last either way, in file order

    const auto up = Qt::AscendingOrder;
    QTest::newRow("file name: as found") << int(TCardModel::FileName) << up << "A B C D X";
    QTest::newRow("date as a date") << int(TCardModel::DateTime) << up << "C B A D X";
    QTest::newRow("exposure time by length: 1/125 before 1/8 before 2")
        << int(TCardModel::ExposureTime) << up << "B A C D X";
    QTest::newRow("ISO as a number: 160 before 1250") << int(TCardModel::Iso) << up << "B C A D X";
    QTest::newRow("ISO descending, unknown still last")
        << int(TCardModel::Iso) << Qt::DescendingOrder << "A C B D X";
    QTest::newRow("focal length") << int(TCardModel::FocalLength) << up << "A B C D X";
    QTest::newRow("aperture estimate") << int(TCardModel::Aperture) << up << "A C B D X";
    QTest::newRow("temperature below zero, ties in file order")
        << int(TCardModel::SensorTemperature) << up << "C B D A X";
    QTest::newRow("lens by name") << int(TCardModel::Lens) << up << "A C B D X";
    QTest::newRow("reason: only the rejected file has one")
        << int(TCardModel::Error) << up << "X A B C D";
}

void TestCard::sortKeys()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    QFETCH(QString, shown);
    m_filter.sort(column, order);
    QCOMPARE(shownNames().join(QLatin1Char(' ')), shown);
}

void TestCard::filter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TConditions>("conditions");
    QTest::addColumn<bool>("rejected");
    QTest::addColumn<QString>("shown");

    const TConditions none;
    QTest::newRow("everything") << "" << none << true << "A B C D X";
    QTest::newRow("any letter case, the reason too") << "nikon" << none << true << "X";
    QTest::newRow("a date's day") << "2012-06-17" << none << true << "B C";
    QTest::newRow("a focal length: 35 mm, not 135") << "35 mm" << none << true << "A";
    QTest::newRow("a plain number: the focal length 50 or a 50mm lens, not ISO 1250")
        << "50" << none << true << "B D";
    QTest::newRow("f/4: the aperture 4.0, and no lens named f/4.x") << "f/4" << none << true << "C";
    QTest::newRow("f/2: the aperture, and the lens whose name says f/2")
        << "f/2" << none << true << "A C";
    QTest::newRow("an exposure time: 1/125, not 1/1250") << "1/125" << none << true << "B";
    QTest::newRow("ISO 200") << "ISO 200" << none << true << "C";
    QTest::newRow("one lens") << "" << TConditions{{TCategory::Lens, "Summicron-M 90mm f/2 (II)"}}
                              << true << "C";
    QTest::newRow("lens and text together")
        << "1/125" << TConditions{{TCategory::Lens, "Summicron-M 90mm f/2 (II)"}} << true << "";
    QTest::newRow("two bars: both hold")
        << "" << TConditions{{TCategory::FocalLength, "50 mm"}, {TCategory::Iso, "160"}} << true
        << "B";
    QTest::newRow("without the files not accepted") << "" << none << false << "A B C D";
}

void TestCard::filter()
{
    QFETCH(QString, text);
    QFETCH(TConditions, conditions);
    QFETCH(bool, rejected);
    QFETCH(QString, shown);
    m_filter.sort(TCardModel::FileName);
    m_filter.setText(text);
    for (const auto &condition : conditions)
        m_filter.setCondition(condition.category, condition.value);
    m_filter.setShowRejected(rejected);
    QCOMPARE(shownNames().join(QLatin1Char(' ')), shown);
    // Each bar counts the rows its click shows; a second click lifts it.
    for (const TCount &count : countPer(TCategory::Iso, m_model.frames())) {
        if (!conditions.isEmpty() || !text.isEmpty())
            break;
        m_filter.toggleCondition(TCategory::Iso, count.value);
        QCOMPARE(m_filter.rowCount(), count.frames);
        m_filter.toggleCondition(TCategory::Iso, count.value);
        QCOMPARE(m_filter.condition(TCategory::Iso), QString());
    }
    m_filter.setText({});
    m_filter.clearConditions();
    m_filter.setShowRejected(true);
}

void TestCard::rejectedRow()
{
    const int x = m_model.rowOfPath(m_card.filePath(QStringLiteral("X.DNG")));
    QCOMPARE(m_model.text(x, TCardModel::FileName), QStringLiteral("X.DNG"));
    QCOMPARE(m_model.text(x, TCardModel::Error),
             QStringLiteral("Fehler bei der Verarbeitung. Keine native DNG-Datei! (Model: NIKON "
                            "D850)"));
    for (const int column : {TCardModel::Camera, TCardModel::Lens, TCardModel::Iso})
        QCOMPARE(m_model.text(x, column), QString());
    // Its tool tip tells the reason in full, whatever the column's width.
    QCOMPARE(m_model.index(x, TCardModel::FileName).data(Qt::ToolTipRole).toString(),
             m_model.text(x, TCardModel::Error));
}

// A FIFO named like a DNG is neither found in a folder nor opened when named:
// opening it would wait for a writer for ever.
void TestCard::fifoIsNotRead()
{
    QTemporaryDir dir;
    const QString fifo = dir.filePath(QStringLiteral("L1000001.DNG"));
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QVERIFY(dngFilesUnder(dir.path()).isEmpty());
    const TCardEntry entry = readCardEntry(fifo);
    QVERIFY(!entry.accepted());
    QCOMPARE(entry.frame.texts.fileName, QStringLiteral("L1000001.DNG"));
    QCOMPARE(entry.error, QStringLiteral("not a regular file"));
}

// The folder search asks before each folder whether to go on, and ends
// with what it found when told to stop.
void TestCard::searchEndsWhenCancelled()
{
    QTemporaryDir dir;
    for (const char *name : {"a/L1.DNG", "b/L2.DNG", "c/L3.DNG"}) {
        QVERIFY(QDir(dir.path()).mkpath(QFileInfo(dir.filePath(name)).path()));
        QVERIFY(fixture::writeFile(dir.filePath(name), "x"));
    }
    int asked = 0;
    const QStringList found = dngFilesUnder(dir.path(), [&] { return ++asked > 2; });
    QCOMPARE(found, QStringList{dir.filePath(QStringLiteral("a/L1.DNG"))});
    QCOMPARE(dngFilesUnder(dir.path()).size(), 3);
}

// Stopping while a file does not answer returns at once, and the thread
// reading it ends on its own once it sees the stop.
void TestCard::stopWhileAFileHangs()
{
    TCardModel model;
    TCardLoader loader(&model);
    std::atomic<int> hanging{0};
    loader.setReader([&](const QString &path, const TCancelled &cancelled) {
        if (!path.endsWith(QStringLiteral("C.DNG")))
            return readCardEntry(path);
        ++hanging;
        while (!cancelled())
            QThread::msleep(1);
        --hanging;
        return TCardEntry();
    });
    QSignalSpy finished(&loader, &TCardLoader::finished);
    loader.start(m_card.path());
    QTRY_COMPARE(hanging.load(), 1);
    QElapsedTimer clock;
    clock.start();
    loader.stop();
    QVERIFY2(clock.elapsed() < 100, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toBool(), false);
    QTRY_COMPARE(hanging.load(), 0);
    QTRY_COMPARE(workPool()->activeThreadCount(), 0);
}

// A folder without a DNG ends its loading too, with no row.
void TestCard::emptyFolderFinishes()
{
    QTemporaryDir empty;
    TCardModel model;
    TCardLoader loader(&model);
    QSignalSpy finished(&loader, &TCardLoader::finished);
    loader.start(empty.path());
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toBool(), true);
    QVERIFY(!loader.isLoading());
    QCOMPARE(model.rowCount(), 0);
}

void TestCard::windowOnFolder()
{
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    // A folder dropped on the window opens the card window.
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(m_card.path())});
    QDragEnterEvent enter(QPoint(20, 200), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(20, 200), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    auto *card = window.findChild<TCardWindow *>();
    QVERIFY(card && card->isVisible());
    // The card window tells Open Recent of every folder it opens.
    QCOMPARE(QSettings().value(settingskeys::kRecentFiles).toStringList().value(0),
             QFileInfo(m_card.path()).absoluteFilePath());
    QTRY_VERIFY(card->findChild<QProgressBar *>()->isHidden());
    auto *view = card->findChild<QTableView *>();
    QCOMPARE(view->model()->rowCount(), 5);
    QCOMPARE(view->horizontalHeader()->sortIndicatorSection(), int(TCardModel::DateTime));
    QCOMPARE(card->findChild<QLabel *>(QStringLiteral("lblShown"))->text(),
             QStringLiteral("5 of 5 files shown"));
    auto *lenses = card->findChild<QComboBox *>();
    QCOMPARE(lenses->count(), 4);
    QCOMPARE(lenses->itemText(0), QStringLiteral("All lenses (4)"));
    QCOMPARE(lenses->itemText(3), QStringLiteral("Summilux-M 50mm f/1.4 ASPH. (2)"));
    // The shown pictures are made on the workers.
    QTRY_VERIFY(view->model()
                    ->index(0, TCardModel::Picture)
                    .data(Qt::DecorationRole)
                    .value<QPixmap>()
                    .height() == TCardModel::kPictureHeight);

    // A rejected row leaves the main window as it is and says why.
    view->setCurrentIndex(view->model()->index(4, TCardModel::FileName));
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("---"));
    QVERIFY(card->statusBar()->currentMessage().startsWith(
        QStringLiteral("X.DNG: Fehler bei der Verarbeitung.")));

    // Selecting drives the panel; Page Down there follows the shown order
    // (by date: C B A D X).
    view->setFocus();
    view->setCurrentIndex(view->model()->index(0, TCardModel::FileName));
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("C.DNG"));
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("B.DNG"));
    QApplication::setActiveWindow(&window); // as a click on it would
    QTest::keyClick(window.findChild<QWidget *>(QStringLiteral("tbtnOpenClose")), Qt::Key_PageDown);
    QCOMPARE(apptest::labelText(&window, "lblFileName"), QStringLiteral("A.DNG"));

    // The export equals tolvik-info's for the same folder in the same order.
    view->sortByColumn(TCardModel::FileName, Qt::AscendingOrder);
    const QString csv = m_settings.filePath(QStringLiteral("card.csv"));
    QCOMPARE(card->exportCsv(csv), QString());
    // Never over a file of the card, nor a file that is no table.
    const QString raw = card->folder() + QStringLiteral("/A.DNG");
    QVERIFY(card->exportCsv(raw).contains(QStringLiteral("is one of the files being read")));
    QVERIFY(card->exportCsv(raw + QStringLiteral("/x.csv")).contains(raw));
    QFile exported(csv);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QProcess info;
    info.start(QStringLiteral(TOLVIK_INFO), {"--csv", "--exact", card->folder()});
    QVERIFY(info.waitForFinished());
    QCOMPARE(exported.readAll(), info.readAllStandardOutput());

    // A bar narrows the table to its frames, the charts follow, and Clear
    // brings every row back; the contact sheet takes the rows shown.
    auto *isoChart = card->findChild<TStatisticsPane *>()->chart(TCategory::Iso);
    QTRY_COMPARE(isoChart->counts().size(), 4); // 160, 200, 1250, n.a
    QCOMPARE(isoChart->counts()[1].value, QStringLiteral("200"));
    const QPoint bar = [&] {
        for (int y = 0; y < isoChart->height(); ++y) {
            if (isoChart->barAt(QPoint(isoChart->width() / 2, y)) == 1)
                return QPoint(isoChart->width() / 2, y);
        }
        return QPoint();
    }();
    QTest::mouseClick(isoChart, Qt::LeftButton, {}, bar);
    QCOMPARE(view->model()->rowCount(), 1);
    QCOMPARE(view->model()->index(0, TCardModel::FileName).data().toString(),
             QStringLiteral("C.DNG"));
    QWidget *conditionBar = card->findChild<QWidget *>(QStringLiteral("conditionBar"));
    QVERIFY(conditionBar->isVisibleTo(card));
    const auto conditionButtons = [&] {
        return conditionBar->findChildren<QToolButton *>(QString(), Qt::FindDirectChildrenOnly);
    };
    QCOMPARE(conditionButtons().size(), 1);
    QCOMPARE(conditionButtons().first()->text(), QStringLiteral("ISO: 200 \u2715"));
    QTRY_COMPARE(isoChart->counts().size(), 1);
    QCOMPARE(card->contactSheet().headerText(),
             QFileInfo(m_card.path()).fileName() +
                 QStringLiteral(" \u00b7 1 frame \u00b7 2012-06-17"));
    // Its preview opens once the pictures are made on the workers.
    bool previewed = false;
    apptest::whenModal<QPrintPreviewDialog>([&](QPrintPreviewDialog *dialog) {
        previewed = true;
        dialog->reject();
    });
    card->findChild<QAction *>(QStringLiteral("actionPrint_Contact_Sheet"))->trigger();
    QVERIFY(previewed);
    // From the keyboard: the lens chart's first bar joins the condition, and
    // Space again lifts it.
    TBarChart *lensChart = card->findChild<TStatisticsPane *>()->chart(TCategory::Lens);
    QTest::keyClick(lensChart, Qt::Key_Down);
    QTest::keyClick(lensChart, Qt::Key_Space);
    QCOMPARE(conditionButtons().size(), 2);
    QCOMPARE(lensChart->accessibleDescription(),
             QStringLiteral("Lens Summicron-M 90mm f/2 (II): 1 frame, shown alone"));
    QCOMPARE(lenses->currentData().toString(), QStringLiteral("Summicron-M 90mm f/2 (II)"));
    QTest::keyClick(lensChart, Qt::Key_Space);
    QCOMPARE(conditionButtons().size(), 1);
    // A condition's button lifts it.
    conditionButtons().first()->click();
    QCOMPARE(view->model()->rowCount(), 5);
    QVERIFY(!conditionBar->isVisibleTo(card));
    // Accessibility tools see each bar's value and count, and can press it.
    QTRY_COMPARE(isoChart->counts().size(), 4);
    QAccessibleInterface *chart = QAccessible::queryAccessibleInterface(isoChart);
    QCOMPARE(chart->text(QAccessible::Name), QStringLiteral("ISO"));
    QCOMPARE(chart->childCount(), 4);
    QAccessibleInterface *iso200 = chart->child(1);
    QCOMPARE(iso200->text(QAccessible::Name), QStringLiteral("200"));
    QCOMPARE(iso200->text(QAccessible::Value), QStringLiteral("1 frame"));
    QCOMPARE(chart->indexOfChild(iso200), 1);
    iso200->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(view->model()->rowCount(), 1);
    QVERIFY(iso200->state().selected);
    iso200->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(view->model()->rowCount(), 5);

    // The sort column and the folder outlive the window.
    card->close();
    TCardWindow again;
    QCOMPARE(again.findChild<QTableView *>()->horizontalHeader()->sortIndicatorSection(),
             int(TCardModel::FileName));
    QCOMPARE(lastFolder(), QFileInfo(m_card.path()).absoluteFilePath());
}

// Marking from the keyboard: the selected rows get the marks in their
// sidecars, the columns, filters and charts follow, Ctrl+Z takes them back
// in order, and a folder that refuses the sidecars says so once and changes
// nothing. The raw figures fill their columns once the rows are in.
void TestCard::culling()
{
    QTemporaryDir dir;
    fixture::RawOptions raw;
    raw.width = 96, raw.height = 64;
    for (const char *name : {"A.DNG", "B.DNG", "C.DNG", "D.DNG"}) {
        raw.channelGain =
            name[0] == 'A' ? std::array<double, 3>{8, 1, 1} : std::array<double, 3>{0.5, 0.5, 0.5};
        QVERIFY(fixture::writeRawDng(dir.filePath(QLatin1String(name)), raw));
    }
    QFile a(dir.filePath(QStringLiteral("A.DNG")));
    QVERIFY(a.open(QIODevice::ReadOnly));
    const QByteArray aBytes = a.readAll();

    TCardWindow card;
    card.show();
    card.openFolder(dir.path());
    auto *view = card.findChild<QTableView *>();
    QTRY_VERIFY(card.findChild<QProgressBar *>()->isHidden());
    view->sortByColumn(TCardModel::FileName, Qt::AscendingOrder);
    const auto cell = [&](int row, int column) {
        return view->model()->index(row, column).data().toString();
    };
    // A's red clips: its clipped share and no headroom; the others have some.
    QTRY_VERIFY(!cell(3, TCardModel::Headroom).isEmpty());
    QVERIFY(cell(0, TCardModel::Clipped) != QStringLiteral("0.00%"));
    QCOMPARE(cell(0, TCardModel::Headroom), QStringLiteral("0.00 EV"));
    QCOMPARE(cell(1, TCardModel::Clipped), QStringLiteral("0.00%"));

    const auto select = [&](int first, int last) {
        view->setCurrentIndex(view->model()->index(first, TCardModel::FileName));
        view->selectionModel()->select(
            QItemSelection(view->model()->index(first, 0), view->model()->index(last, 0)),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    };
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers = {}) {
        QApplication::setActiveWindow(&card);
        QTest::keyClick(view, Qt::Key(key), modifiers);
        QTRY_VERIFY(!marker()->isBusy());
    };
    const auto marks = [&] {
        QStringList shown;
        for (int row = 0; row < 4; ++row)
            shown.append(cell(row, TCardModel::Rating) + QLatin1Char('/') +
                         cell(row, TCardModel::Label));
        return shown.join(QLatin1Char(' '));
    };
    select(0, 1);
    press(Qt::Key_3);
    press(Qt::Key_6);
    QCOMPARE(marks(), QStringLiteral("\u2605\u2605\u2605\u2606\u2606/Red "
                                     "\u2605\u2605\u2605\u2606\u2606/Red / /"));
    QCOMPARE(readMarks(dir.filePath(QStringLiteral("B.DNG")), TSidecarNaming::BaseName).mark,
             (TMark{3, true, QStringLiteral("Red")}));
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("A.xmp"))));
    select(1, 1);
    press(Qt::Key_6); // B only: its label comes off
    select(2, 2);
    press(Qt::Key_X);
    select(3, 3);
    press(Qt::Key_9);
    QCOMPARE(marks(), QStringLiteral("\u2605\u2605\u2605\u2606\u2606/Red "
                                     "\u2605\u2605\u2605\u2606\u2606/ rejected/ /Blue"));

    // The filters and the rating chart.
    auto *ratings = card.findChild<QComboBox *>(QStringLiteral("cbRating"));
    auto *labels = card.findChild<QComboBox *>(QStringLiteral("cbLabel"));
    const auto shown = [&] {
        QStringList names;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            names.append(cell(row, TCardModel::FileName).left(1));
        return names.join(QString());
    };
    const std::pair<const char *, const char *> choices[] = {
        {"\u2605\u2605\u2605 and more", "AB"}, {"Rejected", "C"}, {"Unrated", "D"}};
    for (const auto &[choice, names] : choices) {
        ratings->setCurrentIndex(ratings->findText(QString::fromUtf8(choice)));
        QCOMPARE(shown(), QLatin1String(names));
    }
    // The contact sheet: the frames shown, or on request every frame.
    ratings->setCurrentIndex(3);
    QCOMPARE(card.contactSheet().frames().size(), 2);
    auto *shownOnly = card.findChild<QAction *>(QStringLiteral("actionSheet_Shown_Only"));
    shownOnly->setChecked(false);
    QCOMPARE(card.contactSheet().frames().size(), 4);
    shownOnly->setChecked(true);
    ratings->setCurrentIndex(0);
    labels->setCurrentIndex(labels->findData(QStringLiteral("none")));
    QCOMPARE(shown(), QStringLiteral("BC"));
    labels->setCurrentIndex(0);
    auto *chart = card.findChild<TStatisticsPane *>()->chart(TCategory::Rating);
    QTRY_COMPARE(chart->counts().size(), 3);
    QCOMPARE(chart->counts()[0].value, QStringLiteral("rejected"));
    QCOMPARE(chart->counts()[2].frames, 2);

    // Undo: D's label, then C's reject.
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(marks(), QStringLiteral("\u2605\u2605\u2605\u2606\u2606/Red "
                                     "\u2605\u2605\u2605\u2606\u2606/ / /"));

    // Stepping on after marking one frame.
    card.findChild<QAction *>(QStringLiteral("actionStep_After_Marking"))->setChecked(true);
    select(2, 2);
    press(Qt::Key_1);
    QCOMPARE(view->currentIndex().row(), 3);
    card.findChild<QAction *>(QStringLiteral("actionStep_After_Marking"))->setChecked(false);

    // The rejected frame moved aside with its sidecar after the question, and
    // back with Ctrl+Z.
    select(2, 2);
    press(Qt::Key_X);
    const auto answer = apptest::answerNextBox(QMessageBox::Yes);
    card.findChild<QAction *>(QStringLiteral("actionMove_Rejected"))->trigger();
    QVERIFY(answer->text.startsWith(QStringLiteral("Move 1 rejected frame(s)")));
    QTRY_COMPARE(shown(), QStringLiteral("ABD"));
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("_rejected/C.DNG"))));
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("_rejected/C.xmp"))));
    press(Qt::Key_Z, Qt::ControlModifier);
    QTRY_COMPARE(shown(), QStringLiteral("ABCD"));
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("C.xmp"))));
    QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("_rejected"))));

    // Sidecars that do not parse: one message for both frames, naming them,
    // and the sidecars left as they were.
    for (const char *name : {"C.xmp", "D.xmp"})
        QVERIFY(fixture::writeFile(dir.filePath(QLatin1String(name)), "not XMP"));
    QSignalSpy problems(marker(), &TMarker::problem);
    select(2, 3);
    press(Qt::Key_5);
    QCOMPARE(problems.size(), 1);
    QVERIFY(problems[0][0].toString().contains(
        QStringLiteral("These frames kept their old marks: C.DNG, D.DNG")));
    QFile c(dir.filePath(QStringLiteral("C.xmp")));
    QVERIFY(c.open(QIODevice::ReadOnly));
    QCOMPARE(c.readAll(), QByteArray("not XMP"));
    for (QWidget *box : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMessageBox *>(box))
            box->close();
    }
    // The main window marks the file it shows.
    MainWindow window;
    window.show();
    window.openFile(a.fileName());
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_4);
    QTRY_VERIFY(!marker()->isBusy());
    QCOMPARE(readMarks(a.fileName(), TSidecarNaming::BaseName).mark.rating, 4);

    QVERIFY(a.seek(0));
    QCOMPARE(a.readAll(), aBytes);
}

QTEST_MAIN(TestCard)
#include "tst_card.moc"
