// tolvik-rawgen: writes a test picture as an M9 / M Monochrom DNG (and its
// developed truth as PNG), for benchmarks and by hand.
//   tolvik-rawgen [--storage NAME] [--monochrom] [--size WxH] [--scene photo|charts|both]
//                 [--frame N] [--exposure STOPS] [--gain R,G,B] [--truth PNG] OUT.dng

#include "tests/support/rawgen.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QImageWriter>
#include <QSaveFile>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes a test picture as an M9 DNG."));
    parser.addHelpOption();
    const QCommandLineOption storage(
        QStringLiteral("storage"),
        QStringLiteral("uncompressed16 (default), linearized8, packed12, "
                       "packed14, losslessjpeg, tiled16"),
        QStringLiteral("name"), QStringLiteral("uncompressed16"));
    const QCommandLineOption monochrom(QStringLiteral("monochrom"),
                                       QStringLiteral("an M Monochrom file"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("stored size (5270x3516)"),
                                  QStringLiteral("WxH"), QStringLiteral("5270x3516"));
    const QCommandLineOption scene(QStringLiteral("scene"),
                                   QStringLiteral("photo, charts or both (default)"),
                                   QStringLiteral("scene"), QStringLiteral("both"));
    const QCommandLineOption frame(QStringLiteral("frame"),
                                   QStringLiteral("part of the photograph"), QStringLiteral("n"),
                                   QStringLiteral("0"));
    const QCommandLineOption truth(QStringLiteral("truth"),
                                   QStringLiteral("also write the developed truth"),
                                   QStringLiteral("png"));
    const QCommandLineOption exposure(QStringLiteral("exposure"),
                                      QStringLiteral("stops brighter (the brightest parts clip)"),
                                      QStringLiteral("stops"), QStringLiteral("0"));
    const QCommandLineOption gain(QStringLiteral("gain"),
                                  QStringLiteral("camera channel gains (4,1,1 clips red first)"),
                                  QStringLiteral("r,g,b"), QStringLiteral("1,1,1"));
    parser.addOptions({storage, monochrom, size, scene, frame, exposure, gain, truth});
    parser.addPositionalArgument(QStringLiteral("out"), QStringLiteral("the DNG to write"));
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    fixture::RawOptions options;
    bool known = false;
    for (fixture::RawStorage s : fixture::kRawStorages) {
        if (parser.value(storage) == QLatin1String(fixture::storageName(s))) {
            options.storage = s;
            known = true;
        }
    }
    const QStringList wh = parser.value(size).split(QLatin1Char('x'));
    const QStringList gains = parser.value(gain).split(QLatin1Char(','));
    if (!known || wh.size() != 2 || gains.size() != 3) {
        std::fprintf(stderr, "tolvik-rawgen: unknown storage, size or gains\n");
        return 2;
    }
    options.width = std::max(64, wh[0].toInt());
    options.height = std::max(48, wh[1].toInt());
    options.monochrom = parser.isSet(monochrom);
    options.frame = parser.value(frame).toInt();
    options.exposureStops = parser.value(exposure).toDouble();
    for (int c = 0; c < 3; ++c)
        options.channelGain[std::size_t(c)] = gains[c].toDouble();
    const QString sceneName = parser.value(scene);
    options.scene = sceneName == QLatin1String("photo")    ? fixture::RawScene::Photo
                    : sceneName == QLatin1String("charts") ? fixture::RawScene::Charts
                                                           : fixture::RawScene::PhotoWithCharts;
    const fixture::RawGenerator generator(options);
    QSaveFile out(parser.positionalArguments().constFirst());
    const QByteArray bytes = generator.dng();
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit()) {
        std::fprintf(stderr, "tolvik-rawgen: cannot write %s\n", qPrintable(out.fileName()));
        return 1;
    }
    if (parser.isSet(truth)) {
        QSaveFile png(parser.value(truth));
        if (!png.open(QIODevice::WriteOnly) || !generator.truth().save(&png, "PNG") ||
            !png.commit()) {
            std::fprintf(stderr, "tolvik-rawgen: cannot write %s\n", qPrintable(png.fileName()));
            return 1;
        }
    }
    return 0;
}
