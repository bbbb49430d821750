// tolvik-thumbnailer: the file manager's picture of a Leica M9 / M Monochrom
// DNG, its embedded preview turned upright, as a PNG.
//   tolvik-thumbnailer [-s SIZE] INPUT OUTPUT
// The desktop's thumbnail factory runs it in a sandbox that shows it only the
// input file and a writable /tmp, without a display. A file it does not accept gets no output and
// exit status 1, so that the file manager falls back to its own icon.

#include "card/safewrite.h"
#include "raw/decode.h"
#include "raw/develop.h"
#include "raw/frameimage.h"
#include "rawfile/tm9file.h"
#include "rawfile/upright.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QUrl>

#include <algorithm>
#include <cstdio>

namespace {

// What the thumbnail factories ask when they do not say (the "large" size).
constexpr int kDefaultSize = 256;
// Qt's PNG quality (100 - compression effort): Qt's default compresses
// hardest, which took 37 ms for a 256 x 192 thumbnail; 80 takes 3 ms for a
// file a sixth larger (80 KB).
constexpr int kPngQuality = 80;

void describe(QCommandLineParser &parser, const QCommandLineOption &size)
{
    parser.setApplicationDescription(QStringLiteral(
        "Writes the embedded preview of a Leica M9 or M Monochrom DNG file, turned upright by its "
        "orientation and no larger than SIZE pixels on either side, as a PNG: the thumbnail the "
        "file manager shows (/usr/share/thumbnailers/tolvik.thumbnailer). A SIZE larger than the "
        "preview gets the frame itself, developed from the raw picture at half size.\n"
        "A file that is not an M9 or M Monochrom DNG, or has no preview, gets no OUTPUT; "
        "nor does an OUTPUT that is the INPUT or an existing file other than a PNG. The PNG "
        "replaces OUTPUT only when it is complete.\n"
        "\n"
        "Exit status: 0 the PNG was written, 1 the file was not accepted or OUTPUT could not be "
        "written, 2 usage error."));
    parser.addOption(size);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("INPUT"),
                                 QStringLiteral("The DNG file (a path or a file: URI)."));
    parser.addPositionalArgument(QStringLiteral("OUTPUT"), QStringLiteral("The PNG to write."));
}

int usageError(const QString &problem)
{
    std::fprintf(stderr, "tolvik-thumbnailer: %s\nTry 'tolvik-thumbnailer --help'.\n",
                 qPrintable(problem));
    return 2;
}

// The factory keeps stderr for a failed thumbnail: only the program's own
// lines go there, not Qt's notes about the sandbox (such as a runtime folder
// it cannot see).
void keepOwnMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

// The raw picture developed at half size (one pixel per 2 x 2 cell); null
// when it cannot be.
QImage halfSizeFrame(const QString &path)
{
    const raw::TDecodeResult decoded = raw::decodeFile(path);
    if (!decoded.ok())
        return {};
    raw::TDevelopOptions options;
    options.size = raw::TSize::Half;
    return raw::frameImage(raw::develop(decoded.image, options));
}

QString localPath(const QString &argument)
{
    return argument.startsWith(QLatin1String("file:")) ? QUrl(argument).toLocalFile() : argument;
}

} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(keepOwnMessages);
    // Pictures as images only, no pixmap and no text: no platform, so no
    // display and no fonts are needed.
    QCoreApplication app(argc, argv);
    // Nor any plugin: the preview is built from the file's RGB strip and the
    // PNG written by Qt's own handler. Without this, writing the PNG loads
    // every image-format plugin (and libtiff, libwebp, ...) to ask whether
    // one would write PNG: a third of the time.
    QCoreApplication::setLibraryPaths({});
    QCoreApplication::setApplicationVersion(QStringLiteral(TOLVIK_VERSION));

    const QCommandLineOption sizeOption(
        {QStringLiteral("s"), QStringLiteral("size")},
        QStringLiteral("The longest side of the thumbnail at most (default %1).").arg(kDefaultSize),
        QStringLiteral("SIZE"), QString::number(kDefaultSize));
    QCommandLineParser parser;
    describe(parser, sizeOption);
    if (!parser.parse(QCoreApplication::arguments()))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    bool numeric = false;
    const int size = parser.value(sizeOption).toInt(&numeric);
    if (!numeric || size < 1)
        return usageError(QStringLiteral("-s needs a size in pixels, 1 or more"));
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 2)
        return usageError(QStringLiteral("give one INPUT and one OUTPUT"));

    const QString input = localPath(paths[0]);
    const QString output = localPath(paths[1]);
    if (const QString refusal = outputRefusal(output, TOutputKind::Png, {input});
        !refusal.isEmpty()) {
        std::fprintf(stderr, "tolvik-thumbnailer: %s\n", qPrintable(refusal));
        return 1;
    }
    TM9File file(input);
    if (!file.processFile()) {
        // A file that cannot be read is not called a wrong one.
        std::fprintf(stderr, "%s: %s\n", qPrintable(input),
                     file.isFileFound() ? "not a Leica M9 or M Monochrom DNG"
                                        : qPrintable(file.openError()));
        return 1;
    }
    QImage picture = turnedByOrientation(file.previewPicture(), file.exif().orientation);
    // Larger than the embedded preview: the frame itself, developed at half
    // size (already upright).
    if (size > std::max(picture.width(), picture.height())) {
        if (QImage developed = halfSizeFrame(input); !developed.isNull())
            picture = std::move(developed);
    }
    if (picture.isNull()) {
        std::fprintf(stderr, "%s: no preview picture\n", qPrintable(input));
        return 1;
    }
    if (picture.width() > size || picture.height() > size)
        picture = picture.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);

    const QString failure = writeAtomically(output, [&picture](QIODevice &device) {
        QImageWriter writer(&device, "png");
        writer.setQuality(kPngQuality);
        return writer.write(picture);
    });
    if (!failure.isEmpty()) {
        std::fprintf(stderr, "tolvik-thumbnailer: %s\n", qPrintable(failure));
        return 1;
    }
    return 0;
}
