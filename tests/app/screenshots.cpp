// Photographs the real window with a file open: folded, and unfolded with the
// mouse over the preview so that the readout shows values. Used by
// scripts/screenshots; settings go to a temporary directory.
//   tolvik-screenshots FILE.dng OUTDIR

#include "mainwindow.h"

#include <QApplication>
#include <QGraphicsView>
#include <QMouseEvent>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <cstdio>

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
    const auto save = [&](const char *name) {
        QTest::qWait(50);
        const QString path = args[2] + QLatin1Char('/') + QLatin1String(name);
        const bool saved = window.grab().save(path);
        std::fprintf(saved ? stdout : stderr, saved ? "%s\n" : "cannot write %s\n",
                     qPrintable(path));
        return saved;
    };
    if (!save("folded.png"))
        return 1;

    window.findChild<QToolButton *>(QStringLiteral("tbtnOpenClose"))->click();
    QTest::qWait(50);
    // Over the red roof of the sample's hut.
    auto *view = window.findChild<QGraphicsView *>(QStringLiteral("graphicsView"));
    const QPoint at = view->mapFromScene(QPointF(70.5, 173.5));
    QMouseEvent move(QEvent::MouseMove, at, view->viewport()->mapToGlobal(at), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &move);
    return save("unfolded.png") ? 0 : 1;
}
