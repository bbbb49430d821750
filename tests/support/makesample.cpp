// Writes the sample M9 DNG that scripts/run opens and the screenshots show,
// and the files scripts/bench and scripts/fuzz start from.
//   tolvik-sample OUT.dng [--thumbnail] [--gps] [--little-endian] [--raw-bytes N]

#include "tests/support/samplem9.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    fixture::SampleM9 options;
    QString out;
    const QStringList args = app.arguments().mid(1);
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == "--thumbnail")
            options.withThumbnail = true;
        else if (a == "--gps")
            options.withGps = true;
        else if (a == "--little-endian")
            options.order = fixture::Order::Little;
        else if (a == "--raw-bytes" && i + 1 < args.size())
            options.rawDataBytes = args[++i].toLongLong();
        else
            out = a;
    }
    if (out.isEmpty()) {
        std::fprintf(stderr, "usage: tolvik-sample OUT.dng [--thumbnail] [--gps] [--little-endian] "
                             "[--raw-bytes N]\n");
        return 2;
    }
    return fixture::writeFile(out, fixture::sampleM9Dng(options)) ? 0 : 1;
}
