// Opening files into the panel: which label shows what, rejected files,
// dropping files on the window and the fold button.

#include "apptest.h"
#include "mainwindow.h"

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFrame>
#include <QGraphicsView>
#include <QMimeData>
#include <QTest>
#include <QToolButton>
#include <QUrl>

class TestPanel : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void fillsEveryLabel();
    void valueRules_data();
    void valueRules();
    void rejectedFileLeavesPanel_data();
    void rejectedFileLeavesPanel();
    void drops_data();
    void drops();
    void foldButton();

private:
    QMap<QString, QString> shownTexts(const QWidget &window) const;

    QTemporaryDir m_settings;
    QTemporaryDir m_files;
};

void TestPanel::initTestCase()
{
    QVERIFY(m_settings.isValid());
    QVERIFY(m_files.isValid());
    apptest::prepareApplication(m_settings.path());
}

QMap<QString, QString> TestPanel::shownTexts(const QWidget &window) const
{
    QMap<QString, QString> texts;
    for (const QString &name : apptest::valueLabels())
        texts.insert(name, apptest::labelText(&window, name));
    return texts;
}

void TestPanel::fillsEveryLabel()
{
    const QString path = apptest::writeSample(m_files, QStringLiteral("L1002622.DNG"));
    MainWindow window;
    window.openFile(path);

    // What the window itself composes, as the photographer reads it.
    QMap<QString, QString> expected = {
        {"lblFileName", "L1002622.DNG"},
        {"lblDateTime", "2012:06:17 14:32:05"},
        {"lblExpTime", "1/250 sec"},
        {"lblCamera", "M9 Digital Camera"},
        {"lblISO", "160"},
        {"lblSerial", "3912204"},
        {"lblFirmware", "1.196"},
        {"lblApprAperture", "5.0"}, // 56/10, truncated to whole stops
        {"lblFocalLength", "50mm"},
        {"lblMeasuredLV", "12.35"},
        {"lblSensorBrightness", "9.88"},
        {"lblSensorTemperature", "24C"},
    };
    // The decoders' texts, placed in the right labels.
    TM9File file(path);
    QVERIFY(file.processFile());
    const TPanelTexts decoded = panelTexts(file);
    expected.insert("lblMetering", decoded.metering);
    expected.insert("lblExpProgram", decoded.expProgram);
    expected.insert("lblExpCorrection", decoded.expCorrection);
    expected.insert("lblFrameSelector", decoded.frameSelector);
    expected.insert("lblLens", decoded.lens);
    expected.insert("lblShutterID", decoded.imageId);

    const QMap<QString, QString> shown = shownTexts(window);
    QCOMPARE(shown.keys(), expected.keys());
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        QVERIFY2(!shown[it.key()].isEmpty() && shown[it.key()] != "---", qPrintable(it.key()));
        QCOMPARE(shown[it.key()], it.value());
    }
}

void TestPanel::valueRules_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<quint32>("expNum");
    QTest::addColumn<quint32>("expDen");
    QTest::addColumn<int>("temperature");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("expected");

    const QByteArray m9 = "M9 Digital Camera";
    QTest::newRow("exposure 0/1") << m9 << 0u << 1u << 24 << "lblExpTime"
                                  << "n.a";
    QTest::newRow("exposure 1/0") << m9 << 1u << 0u << 24 << "lblExpTime"
                                  << "n.a";
    QTest::newRow("temperature below zero") << m9 << 1u << 250u << -3 << "lblSensorTemperature"
                                            << "-3C";
    QTest::newRow("M Monochrom") << QByteArray("M Monochrom") << 1u << 250u << 24 << "lblCamera"
                                 << "M Monochrom";
}

void TestPanel::valueRules()
{
    QFETCH(QByteArray, model);
    QFETCH(quint32, expNum);
    QFETCH(quint32, expDen);
    QFETCH(int, temperature);
    QFETCH(QString, label);
    QFETCH(QString, expected);

    fixture::SampleM9 options;
    options.model = model;
    options.exposureTime = {expNum, expDen};
    options.temperature = temperature;
    MainWindow window;
    window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000002.DNG"), options));
    QCOMPARE(apptest::labelText(&window, label), expected);
}

void TestPanel::rejectedFileLeavesPanel_data()
{
    QTest::addColumn<bool>("goodFirst");
    QTest::addColumn<QString>("kind");

    QTest::newRow("other camera after a good file") << true << "M8";
    QTest::newRow("model in other letter case after a good file") << true << "case";
    QTest::newRow("not a TIFF after a good file") << true << "text";
    QTest::newRow("missing file after a good file") << true << "missing";
    QTest::newRow("other camera first") << false << "M8";
}

void TestPanel::rejectedFileLeavesPanel()
{
    QFETCH(bool, goodFirst);
    QFETCH(QString, kind);

    QString bad;
    fixture::SampleM9 options;
    if (kind == "M8") {
        options.model = "M8 Digital Camera";
        bad = apptest::writeSample(m_files, QStringLiteral("L_M8.DNG"), options);
    } else if (kind == "case") {
        options.model = "M9 digital camera";
        bad = apptest::writeSample(m_files, QStringLiteral("L_case.DNG"), options);
    } else if (kind == "text") {
        bad = apptest::writeBytes(m_files, QStringLiteral("notes.DNG"), "just some text\n");
    } else {
        bad = m_files.filePath(QStringLiteral("gone.DNG"));
    }

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *fold = window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"));
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    if (goodFirst) {
        options = {};
        options.temperature = 31;
        window.openFile(apptest::writeSample(m_files, QStringLiteral("L_good.DNG"), options));
        QCOMPARE(apptest::labelText(&window, "lblSensorTemperature"), QStringLiteral("31C"));
    }
    const QMap<QString, QString> before = shownTexts(window);
    const QGraphicsScene *sceneBefore = view->scene();
    const QPixmap distributionBefore =
        window.findChild<QLabel *>(QStringLiteral("lblRGBPic"))->pixmap();

    auto box = apptest::answerNextBox(QMessageBox::Ok);
    window.openFile(bad);
    QVERIFY(box->seen);
    QCOMPARE(box->text, QStringLiteral("Fehler bei der Verarbeitung. Keine native DNG-Datei!"));
    QCOMPARE(box->icon, QMessageBox::Warning);
    QCOMPARE(box->title, QString());
    QCOMPARE(box->parent, &window);

    QCOMPARE(shownTexts(window), before);
    QCOMPARE(view->scene(), sceneBefore);
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("lblRGBPic"))->pixmap().toImage(),
             distributionBefore.toImage());
    QCOMPARE(fold->isEnabled(), goodFirst);
}

void TestPanel::drops_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("shown");

    QTest::newRow("a.DNG first, then JPEGs")
        << QStringList{"a.DNG", "b.jpg", "c.JPG"} << true << "a.DNG";
    QTest::newRow("lower-case suffix") << QStringList{"d.dng"} << true << "d.dng";
    QTest::newRow("mixed-case suffix") << QStringList{"e.Dng", "a.DNG"} << true << "e.Dng";
    QTest::newRow("JPEG first, then a.DNG") << QStringList{"b.jpg", "a.DNG"} << false << "---";
    QTest::newRow("DNG only in the middle of the name")
        << QStringList{"f.DNG.jpg"} << false << "---";
    QTest::newRow("no URLs at all") << QStringList{} << false << "---";
}

void TestPanel::drops()
{
    QFETCH(QStringList, files);
    QFETCH(bool, accepted);
    QFETCH(QString, shown);

    QList<QUrl> urls;
    for (const QString &name : files) {
        const QString path =
            name.endsWith("jpg", Qt::CaseInsensitive)
                ? apptest::writeBytes(m_files, name, fixture::jpegPicture(16, 16, 0x808080))
                : apptest::writeSample(m_files, name);
        QVERIFY(!path.isEmpty());
        urls << QUrl::fromLocalFile(path);
    }
    QMimeData mime;
    mime.setUrls(urls);
    mime.setText(QStringLiteral("a.DNG"));

    MainWindow window;
    QDragEnterEvent enter(QPoint(20, 200), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    QCOMPARE(enter.isAccepted(), accepted);

    // The drop handler tests the first URL again on its own.
    QDropEvent drop(QPointF(20, 200), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    QCOMPARE(apptest::labelText(&window, "lblFileName"), shown);
    QCOMPARE(window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"))->isEnabled(),
             accepted);
}

void TestPanel::foldButton()
{
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *fold = window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"));
    auto *panel = window.findChild<QFrame *>(QStringLiteral("frame_4"));
    QVERIFY(!fold->isEnabled());
    window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000003.DNG")));
    QVERIFY(fold->isEnabled());

    const auto iconImage = [&] {
        return fold->icon().pixmap(QSize(16, 16)).toImage().convertToFormat(QImage::Format_ARGB32);
    };
    const auto resource = [](const char *name) {
        return QImage(QLatin1String(":/images/") + QLatin1String(name))
            .convertToFormat(QImage::Format_ARGB32);
    };
    const auto panelInside = [&] {
        const QRect inWindow(panel->mapTo(&window, QPoint(0, 0)), panel->size());
        return window.rect().contains(inWindow.topLeft()) &&
               window.rect().contains(inWindow.topRight());
    };
    QCOMPARE(iconImage(), resource("btn_Aufklappen.tiff"));
    QVERIFY(!panelInside());

    QTest::mouseClick(fold, Qt::LeftButton);
    QCOMPARE(window.size(), QSize(650, 475));
    QCOMPARE(iconImage(), resource("btn_Zuklappen.tiff"));
    QVERIFY(panelInside());

    QTest::mouseClick(fold, Qt::LeftButton);
    QCOMPARE(window.size(), QSize(344, 475));
    QCOMPARE(iconImage(), resource("btn_Aufklappen.tiff"));
    QVERIFY(!panelInside());

    // Opening another file does not fold or unfold the window.
    QTest::mouseClick(fold, Qt::LeftButton);
    window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000004.DNG")));
    QCOMPARE(window.size(), QSize(650, 475));
}

QTEST_MAIN(TestPanel)
#include "tst_panel.moc"
