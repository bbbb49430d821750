#ifndef DECODE_H
#define DECODE_H

// Decoding the raw image of a DNG (Leica M9, M Monochrom, and what DNG
// converters write for them): the directories, the stored values and their
// linearization, into a TRawImage. Qt Core only.
//
// Read: strips or tiles; uncompressed 8 to 16 bits a sample (8 bits with a
// LinearizationTable is the M9's "compressed" mode; 12 and 14 bits packed
// MSB first, rows padded to a byte) and lossless JPEG (Compression 7);
// a 2 x 2 colour filter array or LinearRaw with one sample. Everything the
// file states is checked against its size and raw/rawlimits.h before any
// pixel memory is allocated; a file that cannot be read gives an error text.

#include "raw/rawimage.h"

#include <QByteArrayView>
#include <QString>

#include <atomic>

namespace raw {

struct TDecodeResult {
    TRawImage image;
    QString error; // empty when decoded
    bool ok() const { return error.isEmpty(); }
};

// Receives the decoded values instead of a picture: begin() once with the
// directories' values, before any row (returning false ends the decode there,
// with info filled and no pixel read), then row() for each run of n
// linearized values from column x of row y (stored coordinates), in the
// file's order of strips or tiles.
class TRowSink {
public:
    virtual ~TRowSink() = default;
    virtual bool begin(const TRawInfo &info) = 0;
    virtual void row(int x, int y, int n, const uint16_t *values) = 0;
};

// The raw image of the file. `cancel`, when set, is looked at between strips
// and tiles; a cancelled decode gives the error "cancelled".
TDecodeResult decodeFile(const QString &path, const std::atomic<bool> *cancel = nullptr);
// The same from bytes in memory (tests, fuzzing).
TDecodeResult decodeBytes(QByteArrayView bytes, const std::atomic<bool> *cancel = nullptr);
// The values of the file handed to sink row by row, never kept whole: figures
// gathered while reading. The result's image has info and no pixels.
TDecodeResult decodeFileRows(const QString &path, TRowSink &sink,
                             const std::atomic<bool> *cancel = nullptr);
// The directories only: info filled and checked, no pixel read (pixels empty).
TDecodeResult readInfo(const QString &path);

} // namespace raw

#endif // DECODE_H
