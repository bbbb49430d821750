// Tolvik: shows the shooting data of a Leica M9 / M Monochrom DNG file.
//   tolvik [FILE.dng | FOLDER]

#include "mainwindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QStringList>
#include <QTimer>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));
    // Lets a Wayland desktop match the window to the installed entry and icon.
    QApplication::setDesktopFileName(QStringLiteral("tolvik"));
    QIcon icon;
    for (const int size : {48, 128, 256})
        icon.addFile(QStringLiteral(":/images/tolvik-%1.png").arg(size));
    QApplication::setWindowIcon(icon);

    MainWindow window;
    window.show();

    // A file given on the command line (or dropped on the program's icon)
    // opens once the event loop runs, so that a warning can be answered; a
    // folder opens in the card window.
    const QStringList args = QApplication::arguments().mid(1);
    if (!args.isEmpty()) {
        const QString path = args.first();
        QTimer::singleShot(0, &window, [&window, path] {
            QFileInfo(path).isDir() ? window.openFolder(path) : window.openFile(path);
        });
    }
    return app.exec();
}
