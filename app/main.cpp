// Tolvik: shows the shooting data of a Leica M9 / M Monochrom DNG file.
//   tolvik [FILE.dng | FOLDER]

#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QIcon>
#include <QStringList>
#include <QTimer>

#include <cstring>

namespace {

// The options and the file, for --help and for the manual page made from it.
void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Shows the shooting data of a Leica M9 or M Monochrom DNG file in a narrow "
                       "window: camera, serial number, firmware, date and time, ISO, exposure, "
                       "approximate aperture, metering, focal length, lens, light values and "
                       "sensor temperature, with the embedded preview and its RGB distribution.\n"
                       "Tolvik only reads raw files; it never writes them. tolvik-info(1) prints "
                       "the same data on the command line."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("FILE|FOLDER"),
        QStringLiteral("The DNG file to open at start, or a folder (a card) to list in the card "
                       "window (optional)."),
        QStringLiteral("[FILE|FOLDER]"));
}

// Whether the arguments ask for the help or the version text, which are
// answered without a display.
bool asksForText(int argc, char *argv[])
{
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        for (const char *option : {"-h", "--help", "-?", "--help-all", "-v", "--version"}) {
            if (std::strcmp(argv[i], option) == 0)
                return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));
    QCommandLineParser parser;
    describe(parser);
    if (asksForText(argc, argv)) {
        QCoreApplication app(argc, argv);
        parser.process(app); // prints the text and ends the program
    }

    QApplication app(argc, argv);
    // These name the settings store; nothing may touch the settings before.
    QCoreApplication::setOrganizationName(QStringLiteral("Brekko"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brekko.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Tolvik"));
    // An unknown option ends the program with a message, before any window.
    parser.process(app);
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
    const QStringList paths = parser.positionalArguments();
    if (!paths.isEmpty()) {
        const QString path = paths.first();
        QTimer::singleShot(0, &window, [&window, path] {
            QFileInfo(path).isDir() ? window.openFolder(path) : window.openFile(path);
        });
    }
    return app.exec();
}
