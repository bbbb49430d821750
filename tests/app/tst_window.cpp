// The window as a whole: how it starts, quitting with the settings written
// only on a confirmed quit, the context menu, dropping and opening files into
// the panel.

#include "apptest.h"
#include "mainwindow.h"

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDir>
#include <QGraphicsView>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QToolButton>
#include <QUrl>

class TestWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void startsFoldedWhateverTheStoredGeometry();
    void quitting_data();
    void quitting();
    void contextMenuOfExternalPrograms_data();
    void contextMenuOfExternalPrograms();
    void rejectedFileLeavesPanel_data();
    void rejectedFileLeavesPanel();
    void fileCutShortIsNoted();
    void drops_data();
    void drops();

private:
    QTemporaryDir m_settings;
    QTemporaryDir m_files;
};

void TestWindow::initTestCase()
{
    QVERIFY(m_settings.isValid());
    QVERIFY(m_files.isValid());
    apptest::prepareApplication(m_settings.path());
}

void TestWindow::init()
{
    QSettings().clear();
}

void TestWindow::startsFoldedWhateverTheStoredGeometry()
{
    {
        QWidget wide;
        wide.setGeometry(120, 80, 900, 700);
        QSettings().setValue(QStringLiteral("MainWindow/geometry"), wide.saveGeometry());
    }
    MainWindow window;
    QCOMPARE(window.maximumSize(), QSize(344, 475));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.size(), QSize(344, 475));
    // The stored geometry was read: its position survives (give or take the
    // frame), its size does not.
    QVERIFY2((window.pos() - QPoint(120, 80)).manhattanLength() <= 8,
             qPrintable(QStringLiteral("at %1,%2").arg(window.x()).arg(window.y())));

    QVERIFY(!window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"))->isEnabled());
    QCOMPARE(window.windowTitle(), QStringLiteral("Tolvik V.0.6.2"));
    const auto buttons = Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint;
    QCOMPARE(window.windowFlags() & (buttons | Qt::WindowCloseButtonHint),
             Qt::WindowCloseButtonHint);
    QVERIFY(window.acceptDrops());
    for (const char *readout : {"lblR", "lblG", "lblB"})
        QCOMPARE(apptest::labelText(&window, readout), QStringLiteral("-"));
    const QStringList shown = apptest::shownTexts(&window);
    QCOMPARE(shown.mid(0, 3), QStringList({"", "", ""})); // the header: camera, serial, firmware
    QCOMPARE(shown.mid(3), QStringList(15, "---"));
}

void TestWindow::quitting_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("storedDirectory");
    QTest::addColumn<QString>("writtenDirectory"); // empty: Cancel, nothing may be written

    QTest::newRow("close button, Cancel") << "close" << QString() << QString();
    QTest::newRow("close button, OK, nothing opened") << "close" << QString() << "/Volumes";
    QTest::newRow("Exit, OK, after opening a file") << "exit" << QString() << "<files>";
    QTest::newRow("Ctrl+Q, OK, stored relative directory")
        << "ctrl+q"
        << "photos/2012" << QDir::current().absoluteFilePath("photos/2012");
}

void TestWindow::quitting()
{
    QFETCH(QString, how);
    QFETCH(QString, storedDirectory);
    QFETCH(QString, writtenDirectory);

    const QStringList programs = {QStringLiteral("/Applications/Capture One.app")};
    if (!storedDirectory.isEmpty()) {
        QSettings settings;
        settings.setValue(QStringLiteral("OtherSettings/lastDirectory"), storedDirectory);
        settings.setValue(QStringLiteral("OtherSettings/programmListe"), programs);
    }
    const QStringList keysBefore = QSettings().allKeys();

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    if (writtenDirectory == "<files>")
        window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000001.DNG")));

    auto box =
        apptest::answerNextBox(writtenDirectory.isEmpty() ? QMessageBox::Cancel : QMessageBox::Ok);
    if (how == "close") {
        window.close();
    } else if (how == "exit") {
        window.findChild<QAction *>(QStringLiteral("actionExit"))->trigger();
    } else {
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    }

    QVERIFY(box->seen);
    QCOMPARE(box->text, QStringLiteral("Möchten Sie das Programm tatsächlich beenden?"));
    QCOMPARE(box->icon, QMessageBox::Question);
    QCOMPARE(box->title, QString());
    QCOMPARE(box->parent, nullptr);
    QCOMPARE(box->defaultButton, QMessageBox::Cancel);

    QSettings settings;
    if (writtenDirectory.isEmpty()) {
        QVERIFY(window.isVisible());
        QCOMPARE(settings.allKeys(), keysBefore);
        return;
    }
    QVERIFY(!window.isVisible());
    if (writtenDirectory == "<files>")
        writtenDirectory = QFileInfo(m_files.path()).absoluteFilePath();
    QCOMPARE(settings.value(QStringLiteral("OtherSettings/lastDirectory")).toString(),
             writtenDirectory);
    QVERIFY(settings.contains(QStringLiteral("OtherSettings/programmListe")));
    QCOMPARE(settings.value(QStringLiteral("OtherSettings/programmListe")).toStringList(),
             storedDirectory.isEmpty() ? QStringList() : programs);
    QVERIFY(!settings.value(QStringLiteral("MainWindow/geometry")).toByteArray().isEmpty());
    QVERIFY(settings.contains(QStringLiteral("MainWindow/windowState")));
}

void TestWindow::contextMenuOfExternalPrograms_data()
{
    QTest::addColumn<QStringList>("programs");
    QTest::newRow("no programs: no menu") << QStringList{};
    QTest::newRow("programs in list order")
        << QStringList{"/Applications/A.app", "/Applications/B & C.app"};
}

void TestWindow::contextMenuOfExternalPrograms()
{
    QFETCH(QStringList, programs);
    QSettings().setValue(QStringLiteral("OtherSettings/programmListe"), programs);
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    // The menu is modal: note what it offers and close it without a choice.
    QStringList offered;
    QTimer::singleShot(100, &window, [&] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            for (const QAction *action : menu->actions())
                offered.append(action->text());
            menu->close();
        }
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(20, 20),
                            window.mapToGlobal(QPoint(20, 20)));
    QApplication::sendEvent(&window, &event);
    QVERIFY(event.isAccepted());
    QTest::qWait(200);
    QCOMPARE(offered, programs);

    QCOMPARE(MainWindow::externalProgramCommand("/Applications/B.app", "/x/y.dng"),
             QStringLiteral("open -a \"/Applications/B.app\" \"/x/y.dng\" "));
    QCOMPARE(MainWindow::externalProgramCommand("A.app", "y.dng"),
             "open -a \"A.app\" \"" + QDir::current().filePath("y.dng") + "\" ");
}

void TestWindow::rejectedFileLeavesPanel_data()
{
    QTest::addColumn<bool>("goodFirst");
    QTest::addColumn<QString>("bad");     // a model, or a file that is not there
    QTest::addColumn<QString>("text");    // the box's, after the folder's path
    QTest::addColumn<QString>("details"); // the file and what was found
    const QString rejected = QStringLiteral("Fehler bei der Verarbeitung. Keine native DNG-Datei!");
    QTest::newRow("other camera after a good file")
        << true << "M8 Digital Camera" << rejected << "L_M8.DNG: Model: M8 Digital Camera";
    // Not there is not the same as not a DNG.
    QTest::newRow("missing file after a good file") << true << ""
                                                    << "gone.DNG: No such file or directory"
                                                    << "";
    QTest::newRow("other camera first")
        << false << "M8 Digital Camera" << rejected << "L_M8.DNG: Model: M8 Digital Camera";
}

void TestWindow::rejectedFileLeavesPanel()
{
    QFETCH(bool, goodFirst);
    QFETCH(QString, bad);
    fixture::SampleM9 options;
    options.model = bad.toLatin1();
    const QString badPath =
        bad.isEmpty() ? m_files.filePath(QStringLiteral("gone.DNG"))
                      : apptest::writeSample(m_files, QStringLiteral("L_M8.DNG"), options);

    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    if (goodFirst) {
        // Each label shows its panel row; the rows themselves are checked
        // with the panel texts.
        options = {};
        options.model = "M Monochrom";
        options.temperature = -3;
        const QString good = apptest::writeSample(m_files, QStringLiteral("L_good.DNG"), options);
        window.openFile(good);
        TM9File file(good);
        QVERIFY(file.processFile());
        QStringList rows;
        for (const auto &row : panelRows(panelTexts(file)))
            rows.append(row.second);
        QCOMPARE(apptest::shownTexts(&window), rows);
    }
    const QStringList before = apptest::shownTexts(&window);
    const QGraphicsScene *sceneBefore = view->scene();
    const auto distribution = [&] {
        return window.findChild<QLabel *>(QStringLiteral("lblRGBPic"))->pixmap().toImage();
    };
    const QImage distributionBefore = distribution();

    auto box = apptest::answerNextBox(QMessageBox::Ok);
    window.openFile(badPath);
    QVERIFY(box->seen);
    QFETCH(QString, text);
    QVERIFY2(box->text.endsWith(text), qPrintable(box->text));
    QTEST(box->detailedText, "details");
    QCOMPARE(box->icon, QMessageBox::Warning);
    QCOMPARE(box->title, QString());
    QCOMPARE(box->parent, &window);

    QCOMPARE(apptest::shownTexts(&window), before);
    QCOMPARE(view->scene(), sceneBefore);
    QCOMPARE(distribution(), distributionBefore);
    QCOMPARE(window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"))->isEnabled(),
             goodFirst);
}

void TestWindow::drops_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("shown"); // "---": the drop is refused

    QTest::newRow("a.DNG first, then JPEGs") << QStringList{"a.DNG", "b.jpg", "c.JPG"} << "a.DNG";
    QTest::newRow("mixed-case suffix") << QStringList{"e.Dng", "a.DNG"} << "e.Dng";
    QTest::newRow("JPEG first, then a.DNG") << QStringList{"b.jpg", "a.DNG"} << "---";
    QTest::newRow("DNG only in the middle of the name") << QStringList{"f.DNG.jpg"} << "---";
    QTest::newRow("no URLs at all") << QStringList{} << "---";
}

void TestWindow::drops()
{
    QFETCH(QStringList, files);
    QFETCH(QString, shown);
    const bool accepted = shown != "---";

    QList<QUrl> urls;
    for (const QString &name : files) {
        const bool jpeg = name.endsWith("jpg", Qt::CaseInsensitive);
        urls << QUrl::fromLocalFile(
            jpeg ? apptest::writeBytes(m_files, name, fixture::jpegPicture(16, 16, 0x808080))
                 : apptest::writeSample(m_files, name));
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

// A file cut short shows what it holds, and says that it is incomplete; the
// next whole file clears the note.
void TestWindow::fileCutShortIsNoted()
{
    const QByteArray whole = fixture::sampleM9Dng();
    MainWindow window;
    window.openFile(apptest::writeBytes(m_files, QStringLiteral("cut.DNG"), whole.left(9000)));
    const auto *notice = window.findChild<QLabel *>(QStringLiteral("lblNotice"));
    QVERIFY(notice->isVisibleTo(&window) && notice->text().contains(QLatin1String("byte 9000")));
    QCOMPARE(apptest::labelText(&window, QStringLiteral("lblCamera")),
             QStringLiteral("M9 Digital Camera"));
    window.openFile(apptest::writeBytes(m_files, QStringLiteral("whole.DNG"), whole));
    QVERIFY(!notice->isVisibleTo(&window));
}

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
