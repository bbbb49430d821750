// The card window: sort keys per column, the filter and lens selector, a
// rejected file's row, CSV export against tolvik-info, and the window on a
// folder driving the main window's panel, with a bar of its statistics
// narrowing the table.

#include "apptest.h"
#include "cardmodel.h"
#include "cardwindow.h"
#include "documents/tcontactsheet.h"
#include "mainwindow.h"
#include "tbarchart.h"
#include "tstatisticspane.h"

#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QProgressBar>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QUrl>

class TestCard : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void sortKeys_data();
    void sortKeys();
    void filter_data();
    void filter();
    void rejectedRow();
    void windowOnFolder();

private:
    QStringList shownNames() const; // file names of m_filter's rows, top to bottom

    QTemporaryDir m_settings;
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
    std::vector<TCardRow> rows;
    for (const auto &[name, bytes] : files) {
        QVERIFY(fixture::writeFile(m_card.filePath(name), bytes));
        rows.push_back(TCardRow::read(m_card.filePath(name)));
    }
    m_model.append(std::move(rows));
    m_filter.setSourceModel(&m_model);
}

QStringList TestCard::shownNames() const
{
    QStringList names;
    for (int row = 0; row < m_filter.rowCount(); ++row)
        names.append(m_filter.index(row, TCardModel::FileName).data().toString().chopped(4));
    return names;
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
    QTest::addColumn<QString>("lens");
    QTest::addColumn<bool>("rejected");
    QTest::addColumn<QString>("shown");

    QTest::newRow("everything") << ""
                                << "" << true << "A B C D X";
    QTest::newRow("a text of one column") << "35 mm"
                                          << "" << true << "A";
    QTest::newRow("any letter case, the reason too") << "nikon"
                                                     << "" << true << "X";
    QTest::newRow("a date's day") << "2012-06-17"
                                  << "" << true << "B C";
    QTest::newRow("one lens") << ""
                              << "Summicron-M 90mm f/2 (II)" << true << "C";
    QTest::newRow("lens and text together") << "1/125"
                                            << "Summicron-M 90mm f/2 (II)" << true << "";
    QTest::newRow("without the files not accepted") << ""
                                                    << "" << false << "A B C D";
}

void TestCard::filter()
{
    QFETCH(QString, text);
    QFETCH(QString, lens);
    QFETCH(bool, rejected);
    QFETCH(QString, shown);
    m_filter.sort(TCardModel::FileName);
    m_filter.setText(text);
    m_filter.setColumnValue(TCardModel::Lens, lens);
    m_filter.setShowRejected(rejected);
    QCOMPARE(shownNames().join(QLatin1Char(' ')), shown);
    m_filter.setText({});
    m_filter.setColumnValue(TCardModel::Lens, {});
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
    QVERIFY(!m_model.index(x, TCardModel::Picture).data(Qt::DecorationRole).isValid());
    QCOMPARE(m_model.index(x, TCardModel::FileName).data(Qt::ForegroundRole).value<QColor>(),
             QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text));
    // Its lens does not count.
    int files = 0;
    for (const auto &[lens, count] : m_model.lensCounts())
        files += count;
    QCOMPARE(files, 4);
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
    auto *shownFilter = card->findChild<QLabel *>(QStringLiteral("lblCategoryFilter"));
    QVERIFY(shownFilter->isVisibleTo(card));
    QCOMPARE(shownFilter->text(), QStringLiteral("ISO: <b>200</b>"));
    QTRY_COMPARE(isoChart->counts().size(), 1);
    QCOMPARE(card->contactSheet().headerText(),
             QFileInfo(m_card.path()).fileName() +
                 QStringLiteral(" \u00b7 1 frame \u00b7 2012-06-17"));
    card->findChild<QToolButton *>(QStringLiteral("btnClearCategory"))->click();
    QCOMPARE(view->model()->rowCount(), 5);
    QVERIFY(!shownFilter->isVisibleTo(card));

    // The sort column and the folder outlive the window.
    card->close();
    TCardWindow again;
    QCOMPARE(again.findChild<QTableView *>()->horizontalHeader()->sortIndicatorSection(),
             int(TCardModel::FileName));
    QCOMPARE(TCardWindow::lastFolder(), QFileInfo(m_card.path()).absoluteFilePath());
}

QTEST_MAIN(TestCard)
#include "tst_card.moc"
