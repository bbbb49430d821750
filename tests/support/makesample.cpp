// Writes the sample M9 DNG that scripts/run opens and the screenshots show.
//   tolvik-sample OUT.dng [--raw-bytes N] [--little-endian] [--thumbnail] [--gps]

#include "tests/support/samplem9.h"

#include <QCoreApplication>
#include <QStringList>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    fixture::SampleM9 options;
    QString out;
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == "--raw-bytes" && i + 1 < args.size())
            options.rawDataBytes = args[++i].toLongLong();
        else if (a == "--little-endian")
            options.order = fixture::Order::Little;
        else if (a == "--thumbnail")
            options.withThumbnail = true;
        else if (a == "--gps")
            options.withGps = true;
        else
            out = a;
    }
    if (out.isEmpty()) {
        std::fprintf(stderr, "usage: tolvik-sample OUT.dng [--raw-bytes N] [--little-endian] "
                             "[--thumbnail] [--gps]\n");
        return 2;
    }
    if (!fixture::writeFile(out, fixture::sampleM9Dng(options))) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(out));
        return 1;
    }
    return 0;
}
