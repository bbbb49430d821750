// tolvik-develop: decodes a DNG, develops it and writes a TIFF, and prints the
// time of each step, for benchmarks and by hand. Qt Core only, so that its
// peak memory is the decoder's and the development's.
//   tolvik-develop [--half] [--bits 8|16] [--threads N] IN.dng OUT.tif

#include "raw/decode.h"
#include "raw/develop.h"
#include "raw/tiffwriter.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char *argv[])
{
    raw::TDevelopOptions options;
    int i = 1;
    for (; i < argc && argv[i][0] == '-'; ++i) {
        if (std::strcmp(argv[i], "--half") == 0)
            options.size = raw::TSize::Half;
        else if (std::strcmp(argv[i], "--bits") == 0 && i + 1 < argc)
            options.bits = std::atoi(argv[++i]);
        else if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc)
            options.threads = std::atoi(argv[++i]);
        else
            break;
    }
    if (argc - i != 2) {
        std::fprintf(stderr,
                     "usage: tolvik-develop [--half] [--bits 8|16] [--threads N] IN.dng OUT.tif\n");
        return 2;
    }
    QElapsedTimer timer;
    timer.start();
    const raw::TDecodeResult decoded = raw::decodeFile(QString::fromLocal8Bit(argv[i]));
    if (!decoded.ok()) {
        std::fprintf(stderr, "%s: %s\n", argv[i], qPrintable(decoded.error));
        return 1;
    }
    const qint64 decodedAt = timer.nsecsElapsed();
    const raw::TPicture picture = raw::develop(decoded.image, options);
    if (picture.isNull()) {
        std::fprintf(stderr, "%s: cannot be developed\n", argv[i]);
        return 1;
    }
    const qint64 developedAt = timer.nsecsElapsed();
    QString error;
    if (!raw::writeTiff(picture, QString::fromLocal8Bit(argv[i + 1]), &error)) {
        std::fprintf(stderr, "%s: %s\n", argv[i + 1], qPrintable(error));
        return 1;
    }
    std::printf("%d x %d, %d bits: decode %.1f ms, develop %.1f ms, write %.1f ms\n", picture.width,
                picture.height, picture.bits, double(decodedAt) / 1e6,
                double(developedAt - decodedAt) / 1e6,
                double(timer.nsecsElapsed() - developedAt) / 1e6);
    return 0;
}
