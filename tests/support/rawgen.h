#ifndef RAWGEN_H
#define RAWGEN_H

// Test pictures as M9 / M Monochrom DNGs: a known scene (a photograph, drawn
// resolution charts, or both) turned into the raw values a camera would have
// recorded, so that a correct development gives the scene back up to the
// demosaicing error. IFD0 is the sample file's (fixture::sampleIfd0: preview,
// Exif, Leica maker note), with the camera profile; the raw image is in a
// SubIFD.
//
// The raw values are the exact inverse of the DNG pipeline (chapter "Mapping
// Camera Color Space to CIE XYZ Space" of the DNG specification):
//   n = (raw - black(x, y)) / (white - black(x, y))        per channel, 0..1
//   XYZ(D50) = CameraToPCS * n * 2^BaselineExposure
//   sRGB = encode(clip(XYZtoLinearSRGB * Bradford(D50 -> D65) * XYZ(D50)))
// CameraToPCS = inverse(ColorMatrix(white) * Bradford(D50 -> white)), scaled
// so that the camera neutral with its largest component 1 maps to D50 with
// Y = 1. ColorMatrix(white) interpolates ColorMatrix1 (StdA, 2856 K) and
// ColorMatrix2 (D65, 6504 K) by inverse correlated colour temperature of the
// white that AsShotNeutral gives (found by iteration, temperature by
// Robertson's method); CameraCalibration and AnalogBalance are identity.
// truth() is that pipeline run on the three quantized camera values of each
// pixel: the picture a perfect demosaic develops.
//
// Geometry as an M9's, scaled to any size: stored 5270 x 3516, ActiveArea
// top 20, left 26, bottom 3496, right 5242 (5216 x 3476), DefaultCropOrigin
// 2, 2 and DefaultCropSize 5212 x 3472; the margins are the same for smaller
// sizes. CFA RGGB at the stored origin.

#include "tests/support/samplem9.h"
#include "tests/support/tiffbuilder.h"

#include <QImage>
#include <QPoint>
#include <QRect>

#include <array>

namespace fixture {

enum class RawStorage {
    Uncompressed16,      // 16-bit samples holding 14-bit values, one strip
    Linearized8,         // 8-bit codes + a 256-entry LinearizationTable (the M9's compressed mode)
    Packed12,            // 12 bits packed MSB first, white 4095
    Packed14,            // 14 bits packed MSB first
    LosslessJpeg,        // 256 x 256 tiles, 2 components, predictor 1, as DNG converters write
    TiledUncompressed16, // 256 x 256 tiles of 16-bit samples
};
inline constexpr RawStorage kRawStorages[] = {
    RawStorage::Uncompressed16, RawStorage::Linearized8,  RawStorage::Packed12,
    RawStorage::Packed14,       RawStorage::LosslessJpeg, RawStorage::TiledUncompressed16};
const char *storageName(RawStorage storage);

enum class RawScene { Photo, Charts, PhotoWithCharts };

// A sensor fault: Hot reads value (on the 14-bit scale) above what the light
// gives, as its dark current adds, clipped at white; Dead reads black, Stuck
// white.
struct PixelDefect {
    enum Kind { Hot, Dead, Stuck } kind = Hot;
    QPoint at; // stored coordinates
    quint16 value = 4000;
};

// A round spot on the sensor (dust: contrast < 0 darkens, up to -1 black;
// a bright spot: contrast > 0), soft-edged, centre in stored coordinates.
// halo > 0 adds a light ring outside the radius (to 1.6 radii), as corrosion
// of the cover glass shows, peaking at that contrast.
struct Spot {
    QPointF at;
    double radius = 10;
    double contrast = -0.3;
    double halo = 0;
};

struct RawOptions {
    RawStorage storage = RawStorage::Uncompressed16;
    bool monochrom = false; // "M Monochrom": LinearRaw, one sample
    int width = 5270, height = 3516;
    int rowsPerStrip = 0;       // 0: one strip
    int tileSize = 256;         // of the tiled storages, a multiple of 16
    int jpegPredictor = 1;      // LosslessJpeg: 1 to 7
    int jpegComponents = 2;     // LosslessJpeg: 1, 2 or 4 interleaved in a tile row
    int jpegPointTransform = 0; // LosslessJpeg: the low bits dropped (0 to 8)
    Order order = Order::Little;

    RawScene scene = RawScene::PhotoWithCharts;
    int frame = 0;           // another part of the photograph per frame
    quint16 orientation = 1; // IFD0's: 6 and 8 for a camera held upright
    SampleM9 sample;         // IFD0's shooting data (its model, preview and raw set here)
    double framePart = 0.8;  // the share of the photograph's side a frame other than 0 shows

    // Black on a 14-bit scale (the 12-bit storage takes a quarter), as one
    // value or a 2 x 2 pattern (BlackLevelRepeatDim 2 2), plus small
    // BlackLevelDeltaH/V when blackDeltas.
    std::array<double, 4> black{60, 60, 60, 60};
    bool blackPattern = false;
    bool blackDeltas = false;
    double baselineExposure = 0.5;
    // The scene's light: exposureStops > 0 brightens it so the brightest
    // parts clip; channelGain scales camera channels (a coloured light), so
    // that chosen channels clip first. The truth shows both.
    double exposureStops = 0;
    std::array<double, 3> channelGain{1, 1, 1};

    // IFD0 with Make, Model and the camera profile only (no preview, Exif or
    // maker note): files of a few KB, for fuzzing.
    bool bareIfd0 = false;

    QList<PixelDefect> defects; // not in the truth
    QList<Spot> spots;          // not in the truth
};

class RawGenerator {
public:
    explicit RawGenerator(const RawOptions &options);

    QByteArray dng() const;
    // The developed picture, cropped to the DefaultCrop: RGB888, or RGBX64
    // when sixteenBit.
    QImage truth(bool sixteenBit = false) const;
    // The truth at half size: each 2 x 2 block of the crop averaged in linear
    // light, then encoded (RGBX64).
    QImage truthHalf() const;

    QImage scene() const { return m_scene; }      // over the active area, RGB888
    QRect activeArea() const { return m_active; } // stored coordinates
    QRect crop() const { return m_crop; }         // relative to the active area
    quint32 whiteLevel() const { return m_white; }
    const std::array<double, 9> &colorMatrix1() const { return m_cm1; }
    const std::array<double, 9> &colorMatrix2() const { return m_cm2; }
    const std::array<double, 3> &asShotNeutral() const { return m_neutral; }
    double blackAt(int x, int y) const; // stored coordinates, as the file states it

private:
    struct Pixel {
        std::array<quint16, 3> raw; // the three channels a camera would have recorded
    };
    Pixel pixel(int ax, int ay) const; // active-area coordinates
    std::array<double, 3> developLinear(const Pixel &p, int x, int y) const;
    quint16 quantize(double linear) const;
    QByteArray encodeRaw(const std::vector<quint16> &values) const;

    RawOptions m_o;
    QRect m_active, m_crop;
    QImage m_scene; // the active area, RGB888
    quint32 m_white = 16383;
    int m_bits = 16;
    std::vector<quint16> m_table; // the LinearizationTable of Linearized8
    std::vector<quint8> m_code;   // linear value -> nearest table code
    std::array<double, 4> m_black{};
    std::vector<float> m_deltaH, m_deltaV;
    std::array<double, 9> m_cm1{}, m_cm2{};
    std::array<double, 3> m_neutral{};
    std::array<double, 9> m_srgbToCamera{}, m_cameraToSrgb{};
    std::array<double, 256> m_linear{};
};

// The photograph the scenes use (a Debian package's, see scripts/lib.sh); a
// drawn stand-in when it is not installed.
QImage rawPhoto();
// The resolution charts: Siemens star, zone plate, line pairs, colour patches.
void drawCharts(QImage &image, const QRect &area);

// Writes the file through a temporary file renamed when complete.
bool writeRawDng(const QString &path, const RawOptions &options);

} // namespace fixture

#endif // RAWGEN_H
