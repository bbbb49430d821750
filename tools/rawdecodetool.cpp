// tolvik-rawdecode: decodes raw images and prints their size, the time the
// decode took and a checksum of the values, for benchmarks and by hand.
// Qt Core only, so that its peak memory is the decoder's.
//   tolvik-rawdecode [--info] FILE...

#include "raw/decode.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdio>
#include <cstring>

int main(int argc, char *argv[])
{
    const bool infoOnly = argc > 1 && std::strcmp(argv[1], "--info") == 0;
    if (argc < 2 + int(infoOnly)) {
        std::fprintf(stderr, "usage: tolvik-rawdecode [--info] FILE...\n");
        return 2;
    }
    int status = 0;
    for (int i = 1 + int(infoOnly); i < argc; ++i) {
        const QString path = QString::fromLocal8Bit(argv[i]);
        QElapsedTimer timer;
        timer.start();
        const raw::TDecodeResult result = infoOnly ? raw::readInfo(path) : raw::decodeFile(path);
        const double ms = double(timer.nsecsElapsed()) / 1e6;
        if (!result.ok()) {
            std::fprintf(stderr, "%s: %s\n", argv[i], qPrintable(result.error));
            status = 1;
            continue;
        }
        quint64 sum = 0;
        for (quint16 v : result.image.pixels)
            sum += v;
        const raw::TRawInfo &info = result.image.info;
        std::printf("%s: %d x %d, %d bits, compression %d, %.1f ms, sum %llu\n", argv[i],
                    info.width, info.height, info.bitsPerSample, info.compression, ms,
                    static_cast<unsigned long long>(sum));
    }
    return status;
}
