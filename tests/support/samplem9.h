#ifndef SAMPLEM9_H
#define SAMPLEM9_H

// A Leica M9 DNG as the camera lays it out: IFD0 with the 320 x 240 RGB
// preview, a raw SubIFD, the Exif IFD with the Leica maker note and its four
// sub-directories, and optionally an IFD1 JPEG thumbnail and a GPS IFD. The
// values are those of a summer afternoon with a Summilux 50.

#include "tests/support/tiffbuilder.h"

#include <QImage>

#include <functional>

namespace fixture {

struct SampleM9 {
    Order order = Order::Big;
    QByteArray model = "M9 Digital Camera";
    qint64 rawDataBytes = 4096; // the raw strip of the SubIFD (the camera's is ~18 MB)
    bool withThumbnail = false; // IFD1 with a 160 x 120 JPEG
    bool withGps = false;
    QImage preview;                // 320 x 240 scene when null
    quint32 lensType = 32 * 4 + 3; // Summilux-M 50mm f/1.4 ASPH., frame 50/75
    qint32 temperature = 24;
    bool withTemperature = true; // the maker note's entry 0x3402
    std::pair<quint32, quint32> exposureTime{1, 250};
    std::pair<quint32, quint32> fNumber{56, 10}; // the camera's estimate
    std::pair<quint32, quint32> focalLength{50, 1};
    QByteArray dateTime = "2012:06:17 14:32:05";
    quint16 iso = 160;
    quint16 orientation = 1;
    QByteArray imageUniqueId = "00000000000000000000000000002a3f";
    IfdPtr rawIfd; // the raw SubIFD; a 5216 x 3472 one of rawDataBytes when null
};

QImage sampleScene(); // the 320 x 240 preview
IfdPtr sampleIfd0(const SampleM9 &options);
QByteArray sampleM9Dng(const SampleM9 &options = {});
QByteArray leicaNote(const SampleM9 &options); // the Exif maker note, offsets from its start
IfdPtr gpsIfd();

// A small M9 file without maker note: Make and Model in IFD0, an Exif IFD,
// and the entries build adds to each.
using Build = std::function<void(Ifd &ifd0, Ifd &exif)>;
QByteArray m9File(const Build &build, Order order = Order::Big);

} // namespace fixture

#endif // SAMPLEM9_H
