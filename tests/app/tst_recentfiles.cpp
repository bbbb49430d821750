// File > Open Recent: the list's order, its limit of ten, entries that no
// longer exist, Clear; and which openings the window adds to it.

#include "apptest.h"
#include "mainwindow.h"
#include "recentfiles.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QTest>

class TestRecentFiles : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void list_data();
    void list();
    void menu();

private:
    QTemporaryDir m_settings;
    QTemporaryDir m_files;
};

void TestRecentFiles::initTestCase()
{
    QVERIFY(m_settings.isValid() && m_files.isValid());
    apptest::prepareApplication(m_settings.path());
    for (const QString &name :
         QStringLiteral("a b c 1 2 3 4 5 6 7 8 9 10 11 12").split(QLatin1Char(' ')))
        QVERIFY(!apptest::writeBytes(m_files, name, "x").isEmpty());
    QVERIFY(QDir(m_files.path()).mkdir(QStringLiteral("card")));
}

void TestRecentFiles::list_data()
{
    QTest::addColumn<QString>("added");   // names in the files' folder; "-": Clear
    QTest::addColumn<QString>("stored");  // newest first
    QTest::addColumn<QString>("offered"); // what the menu lists
    QTest::newRow("newest first") << "a b c"
                                  << "c b a"
                                  << "c b a";
    QTest::newRow("opened again: moves up, once") << "a b a"
                                                  << "a b"
                                                  << "a b";
    QTest::newRow("files and folders") << "a card"
                                       << "card a"
                                       << "card a";
    QTest::newRow("ten at most") << "1 2 3 4 5 6 7 8 9 10 11 12"
                                 << "12 11 10 9 8 7 6 5 4 3"
                                 << "12 11 10 9 8 7 6 5 4 3";
    QTest::newRow("gone: kept, not offered") << "a gone b"
                                             << "b gone a"
                                             << "b a";
    QTest::newRow("Clear") << "a b - c"
                           << "c"
                           << "c";
}

void TestRecentFiles::list()
{
    QFETCH(QString, added);
    QSettings().clear();
    QDir::setCurrent(m_files.path()); // relative names are stored absolute
    TRecentFiles recent;
    for (const QString &name : added.split(QLatin1Char(' '))) {
        if (name == QLatin1String("-"))
            recent.clear();
        else
            recent.add(name);
    }
    const auto names = [this](const QStringList &paths) {
        QStringList list;
        for (const QString &path : paths)
            list.append(QDir(m_files.path()).relativeFilePath(path));
        return list.join(QLatin1Char(' '));
    };
    QTEST(names(recent.entries()), "stored");
    QTEST(names(TRecentFiles().existing()), "offered"); // kept in the settings
}

// Files opened by the user are added, a rejected one and those passed by
// stepping through the folder are not; an entry opens its file; Clear empties
// the menu.
void TestRecentFiles::menu()
{
    QSettings().clear();
    QTemporaryDir folder;
    const QString first = apptest::writeSample(folder, QStringLiteral("L1.DNG"));
    const QString second = apptest::writeSample(folder, QStringLiteral("L2.DNG"));
    const QString rejected =
        apptest::writeBytes(folder, QStringLiteral("L0.DNG"), "not a raw file");
    MainWindow window;
    auto *recent = window.findChild<QMenu *>(QStringLiteral("menuOpenRecent"));
    QVERIFY(recent);
    const auto offered = [recent] {
        emit recent->aboutToShow();
        QStringList texts;
        for (const QAction *action : recent->actions()) {
            if (!action->isSeparator() && action->objectName().isEmpty())
                texts.append(QFileInfo(action->text()).fileName());
        }
        return texts;
    };
    window.openFile(first);
    auto box = apptest::answerNextBox(QMessageBox::Ok);
    window.openFile(rejected);
    QVERIFY(box->seen);
    window.openFile(first);
    window.stepFile(+1);
    QCOMPARE(apptest::labelText(&window, QStringLiteral("lblFileName")), QStringLiteral("L2.DNG"));
    QCOMPARE(offered(), QStringList{QStringLiteral("L1.DNG")});
    QCOMPARE(QSettings().value(QStringLiteral("OtherSettings/lastDirectory")).toString(),
             QFileInfo(folder.path()).absoluteFilePath());

    window.openFile(second);
    QCOMPARE(offered(), QStringList({"L2.DNG", "L1.DNG"}));
    recent->actions().at(1)->trigger();
    QCOMPARE(apptest::labelText(&window, QStringLiteral("lblFileName")), QStringLiteral("L1.DNG"));
    QCOMPARE(offered(), QStringList({"L1.DNG", "L2.DNG"}));
    window.findChild<QAction *>(QStringLiteral("actionClearRecent"))->trigger();
    QCOMPARE(offered(), QStringList());
    QVERIFY(!window.findChild<QAction *>(QStringLiteral("actionClearRecent"))->isEnabled());
}

QTEST_MAIN(TestRecentFiles)
#include "tst_recentfiles.moc"
