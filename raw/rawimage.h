#ifndef RAWIMAGE_H
#define RAWIMAGE_H

// The raw picture of a Leica M9 / M Monochrom DNG as the sensor recorded it,
// and what the file's directories say about developing it. Qt Core only.
//
// Coordinates are those of the stored raw image: column x, row y, origin top
// left, before crop and orientation. Values are linearized: a
// LinearizationTable, where the file has one, is applied while decoding, so
// every consumer (development, raw statistics, sensor check) sees the values
// the black and white levels refer to.

#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace raw {

// A 2 x 2 colour filter array (M9) or one sample per pixel (Monochrom,
// PhotometricInterpretation LinearRaw).
enum class TLayout { Cfa, Linear };

// Colours of the filter array's cells.
enum TColour : uint8_t { Red = 0, Green = 1, Blue = 2 };

// A 3 x 3 matrix in row order, as the DNG tags store them.
struct TMatrix3 {
    std::array<double, 9> m{};
    bool present = false;
};

struct TRawInfo {
    QString model;       // IFD0 Model, trimmed
    int orientation = 1; // IFD0 Orientation (1..8)
    int width = 0;       // the stored raw image
    int height = 0;
    int bitsPerSample = 0; // as stored: 8, 12, 14 or 16
    int compression = 1;   // 1 uncompressed, 7 lossless JPEG
    TLayout layout = TLayout::Cfa;
    // The colour of each cell of the 2 x 2 pattern, index (y % 2) * 2 + x % 2,
    // in stored coordinates.
    std::array<uint8_t, 4> cfa{Red, Green, Green, Blue};

    // ActiveArea: top, left, bottom, right (the whole image when absent).
    int activeTop = 0, activeLeft = 0, activeBottom = 0, activeRight = 0;
    // DefaultCropOrigin and DefaultCropSize, relative to the active area.
    double cropX = 0, cropY = 0, cropWidth = 0, cropHeight = 0;

    // BlackLevel with its repeat pattern (BlackLevelRepeatDim rows x columns,
    // at most 2 x 2 here; a single value fills all four), relative to the
    // active area's origin; index (row % rows) * columns + column % columns.
    int blackRepeatRows = 1, blackRepeatColumns = 1;
    std::array<double, 4> blackLevel{};
    std::vector<float> blackDeltaH;      // per column of the active area, or empty
    std::vector<float> blackDeltaV;      // per row of the active area, or empty
    uint32_t whiteLevel = 0;             // WhiteLevel (or 2^bits - 1, or the table's last entry)
    std::vector<uint16_t> linearization; // the LinearizationTable (already applied)

    // Colour (absent tags: present == false, or the defaults below).
    std::array<double, 3> asShotNeutral{1, 1, 1};
    bool hasAsShotNeutral = false;
    std::array<double, 2> asShotWhiteXY{};
    bool hasAsShotWhiteXY = false;
    int calibrationIlluminant1 = 0, calibrationIlluminant2 = 0;
    TMatrix3 colorMatrix1, colorMatrix2;
    TMatrix3 forwardMatrix1, forwardMatrix2;
    TMatrix3 cameraCalibration1, cameraCalibration2;
    std::array<double, 3> analogBalance{1, 1, 1};
    double baselineExposure = 0;

    // The black level at a stored position (pattern and deltas), for x, y
    // inside the active area.
    double blackAt(int x, int y) const;
    // The filter colour at a stored position.
    uint8_t colourAt(int x, int y) const { return cfa[std::size_t((y & 1) * 2 + (x & 1))]; }
};

struct TRawImage {
    TRawInfo info;
    std::vector<uint16_t> pixels; // info.width * info.height, row by row, linearized

    uint16_t at(int x, int y) const
    {
        return pixels[std::size_t(y) * std::size_t(info.width) + std::size_t(x)];
    }
};

} // namespace raw

#endif // RAWIMAGE_H
