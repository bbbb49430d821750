// Photographs the real window with a file open: folded, and unfolded with the
// mouse over the preview so that the readout shows values; then the
// panel in exact values, the preferences dialog and the About box, and writes the file's report as
// a PDF. Used by scripts/screenshots; settings go to a temporary directory.
//   tolvik-screenshots FILE.dng OUTDIR

#include "documents/treport.h"
#include "mainwindow.h"
#include "rawfile/tm9file.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QGraphicsView>
#include <QMessageBox>
#include <QMouseEvent>
#include <QSettings>
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

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));
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
    if (!file.processFile() || !writeReportPdf(file, pdf))
        return 1;
    std::printf("%s\n", qPrintable(pdf));
    return 0;
}
