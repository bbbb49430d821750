// The window as a whole: how it starts, its menus and pictures, and quitting
// with the settings written only on a confirmed quit.

#include "apptest.h"
#include "mainwindow.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDir>
#include <QImageReader>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>

class TestWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void startsFoldedWhateverTheStoredGeometry();
    void menusAndPlaceholder();
    void compiledInImages_data();
    void compiledInImages();
    void quitting_data();
    void quitting();
    void contextMenuOfExternalPrograms_data();
    void contextMenuOfExternalPrograms();
    void externalProgramCommand();

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
        QSettings settings;
        settings.setValue(QStringLiteral("MainWindow/geometry"), wide.saveGeometry());
    }
    MainWindow window;
    QCOMPARE(window.size(), QSize(344, 475));
    QCOMPARE(window.minimumSize(), QSize(344, 475));
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
    QCOMPARE(QApplication::organizationDomain(), QStringLiteral("brekko.example"));
    QVERIFY(!(window.windowFlags() & Qt::WindowMinimizeButtonHint));
    QVERIFY(!(window.windowFlags() & Qt::WindowMaximizeButtonHint));
    QVERIFY(window.windowFlags() & Qt::WindowCloseButtonHint);
    QVERIFY(window.acceptDrops());
    for (const char *readout : {"lblR", "lblG", "lblB"})
        QCOMPARE(apptest::labelText(&window, readout), QStringLiteral("-"));
    for (const QString &name : apptest::valueLabels()) {
        const bool header = name == "lblCamera" || name == "lblSerial" || name == "lblFirmware";
        QCOMPARE(apptest::labelText(&window, name), header ? QString() : QStringLiteral("---"));
    }
}

void TestWindow::menusAndPlaceholder()
{
    // The placeholder action exists but is offered nowhere.
    MainWindow window;
    auto *placeholder = window.findChild<QAction *>(QStringLiteral("action"));
    QVERIFY(placeholder);
    QCOMPARE(placeholder->text(), QStringLiteral("---"));
    for (QObject *user : placeholder->associatedObjects())
        QVERIFY2(!qobject_cast<QMenu *>(user) && !qobject_cast<QMenuBar *>(user),
                 "the placeholder action is in a menu");
}

void TestWindow::compiledInImages_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("logo") << QStringLiteral(":/images/leicalogo.bmp");
    QTest::newRow("unfold arrow") << QStringLiteral(":/images/btn_Aufklappen.tiff");
    QTest::newRow("fold arrow") << QStringLiteral(":/images/btn_Zuklappen.tiff");
}

void TestWindow::compiledInImages()
{
    QFETCH(QString, path);
    QImageReader reader(path);
    const QImage image = reader.read();
    QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
}

void TestWindow::quitting_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("openFirst");
    QTest::addColumn<QString>("storedDirectory");
    QTest::addColumn<QString>("writtenDirectory"); // empty: nothing may be written

    const int ok = QMessageBox::Ok;
    const int cancel = QMessageBox::Cancel;
    QTest::newRow("close button, Cancel") << "close" << cancel << false << ""
                                          << "";
    QTest::newRow("Exit after opening, Cancel") << "exit" << cancel << true << ""
                                                << "";
    QTest::newRow("Ctrl+Q, Cancel") << "ctrl+q" << cancel << false << ""
                                    << "";
    QTest::newRow("close button, OK, nothing opened") << "close" << ok << false << ""
                                                      << "/Volumes";
    QTest::newRow("Exit, OK, after opening") << "exit" << ok << true << ""
                                             << "<files>";
    QTest::newRow("Ctrl+Q, OK, stored relative directory")
        << "ctrl+q" << ok << false << "photos/2012"
        << QDir::current().absoluteFilePath("photos/2012");
}

void TestWindow::quitting()
{
    QFETCH(QString, how);
    QFETCH(int, answer);
    QFETCH(bool, openFirst);
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
    if (openFirst)
        window.openFile(apptest::writeSample(m_files, QStringLiteral("L1000001.DNG")));

    auto box = apptest::answerNextBox(QMessageBox::StandardButton(answer));
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
    QTest::addColumn<QStringList>("offered");
    QTest::newRow("no programs: no menu") << QStringList{} << QStringList{};
    QTest::newRow("programs in list order")
        << QStringList{"/Applications/A.app", "/Applications/B & C.app"}
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
    bool shown = false;
    QTimer::singleShot(100, &window, [&] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            shown = true;
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
    QCOMPARE(shown, !programs.isEmpty());
    QTEST(offered, "offered");
}

void TestWindow::externalProgramCommand()
{
    QCOMPARE(MainWindow::externalProgramCommand(QStringLiteral("/Applications/B.app"),
                                                QStringLiteral("/x/y.dng")),
             QStringLiteral("open -a \"/Applications/B.app\" \"/x/y.dng\" "));
    QCOMPARE(MainWindow::externalProgramCommand(QStringLiteral("A.app"), QStringLiteral("y.dng")),
             QStringLiteral("open -a \"A.app\" \"") + QDir::current().filePath("y.dng") +
                 QStringLiteral("\" "));
#ifndef Q_OS_MACOS
    // Without "open -a" the program itself gets the file.
    const auto [program, arguments] =
        MainWindow::externalProgramLaunch(QStringLiteral("/usr/bin/gimp"), QStringLiteral("y.dng"));
    QCOMPARE(program, QStringLiteral("/usr/bin/gimp"));
    QCOMPARE(arguments, QStringList{QDir::current().filePath("y.dng")});
#endif
}

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
