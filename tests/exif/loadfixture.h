#ifndef LOADFIXTURE_H
#define LOADFIXTURE_H

// Fixture files for the decoder tests: written into a temporary directory and
// read as the viewer reads a file the user opens.

#include "rawfile/tm9file.h"
#include "tests/support/tiffbuilder.h"

#include <functional>
#include <memory>

namespace exiftest {

// Adds entries to IFD0 and to the Exif IFD of a file.
using Build = std::function<void(fixture::Ifd &ifd0, fixture::Ifd &exif)>;

// An M9 file without a maker note: Make and Model, the given entries, and the
// Exif IFD with its entries.
inline QByteArray m9File(const Build &build, fixture::Order order = fixture::Order::Big)
{
    auto ifd0 = fixture::Ifd::make();
    auto exif = fixture::Ifd::make();
    ifd0->ascii(0x010F, "Leica Camera AG").ascii(0x0110, "M9 Digital Camera");
    build(*ifd0, *exif);
    ifd0->child(0x8769, exif);
    return fixture::tiff(order, ifd0);
}

// Writes the file and reads it; null when it cannot be written.
inline std::unique_ptr<TM9File> load(fixture::TempFiles &files, const QByteArray &data)
{
    static int serial = 0;
    const QString path =
        files.write(QStringLiteral("L%1.DNG").arg(++serial, 7, 10, QLatin1Char('0')), data);
    if (path.isEmpty())
        return nullptr;
    auto file = std::make_unique<TM9File>(path);
    file->processFile();
    return file;
}

} // namespace exiftest

#endif // LOADFIXTURE_H
