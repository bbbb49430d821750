// Writes the sample M9 DNG that scripts/run opens and the screenshots show.
//   tolvik-sample OUT.dng [--thumbnail] [--gps]

#include "tests/support/samplem9.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    fixture::SampleM9 options;
    QString out;
    for (const QString &a : app.arguments().mid(1)) {
        if (a == "--thumbnail")
            options.withThumbnail = true;
        else if (a == "--gps")
            options.withGps = true;
        else
            out = a;
    }
    if (out.isEmpty()) {
        std::fprintf(stderr, "usage: tolvik-sample OUT.dng [--thumbnail] [--gps]\n");
        return 2;
    }
    return fixture::writeFile(out, fixture::sampleM9Dng(options)) ? 0 : 1;
}
