#ifndef RAW_COLOUR_H
#define RAW_COLOUR_H

// From the camera's values to linear sRGB, as the DNG specification maps raw
// values: white balance by the camera neutral, the colour matrices of the two
// calibration illuminants interpolated by the white's colour temperature, the
// forward matrices when the file has them, XYZ D50 to sRGB by Bradford.

#include "raw/rawimage.h"

#include <array>

namespace raw {

using TVec3 = std::array<double, 3>;
using TMat3 = std::array<double, 9>; // row order

TMat3 multiply(const TMat3 &a, const TMat3 &b);
TVec3 multiply(const TMat3 &a, const TVec3 &v);
// False (and `inverse` untouched) when the matrix is singular.
bool invert(const TMat3 &m, TMat3 *inverse);
TMat3 diagonal(const TVec3 &v);

// XYZ with Y = 1 of a chromaticity, and the chromaticity of XYZ.
TVec3 xyToXyz(double x, double y);
std::array<double, 2> xyzToXy(const TVec3 &xyz);
// Correlated colour temperature of a chromaticity (McCamy's cubic; within a
// few kelvin of the Planckian locus from 2,000 to 12,500 K, which is all the
// interpolation below needs).
double correlatedTemperature(double x, double y);
// The temperature of an EXIF LightSource code (CalibrationIlluminant), 0 when
// it has none (unknown, other).
double illuminantTemperature(int lightSource);
// Linear Bradford adaptation from one white to another.
TMat3 bradford(const TVec3 &fromWhite, const TVec3 &toWhite);
// XYZ relative to D50 to linear sRGB (D65 primaries, Bradford D50 -> D65).
TMat3 xyzD50ToLinearSrgb();

// What developing applies to a normalized raw value v (black 0, white 1) of
// colour c: w = v * balance[c] (in [0, 1]: the balance is the inverse camera
// neutral over its largest value), then linear sRGB = toSrgb * (w_r, w_g,
// w_b), 2^BaselineExposure included. A neutral of the scene gives w_r = w_g =
// w_b and comes out grey. Where the sensor clipped a channel, the colour is
// what the clipped values give: highlights are not reconstructed.
struct TColourTransform {
    TVec3 balance{1, 1, 1};
    TMat3 toSrgb{1, 0, 0, 0, 1, 0, 0, 0, 1};
    double exposure = 1; // 2^BaselineExposure (for the monochrome grey)
    // The white of the shot and where the matrices were interpolated.
    std::array<double, 2> whiteXy{};
    double temperature = 0;
    double weight1 = 1;        // of ColorMatrix1 (and ForwardMatrix1, CameraCalibration1)
    bool fromMatrices = false; // false: the fallback below
};

// The transform of a raw picture's tags. Without a ColorMatrix the white
// balanced camera values are taken as linear sRGB: not the camera's colours,
// but a neutral grey (the camera neutral) still comes out grey.
TColourTransform colourTransform(const TRawInfo &info);

} // namespace raw

#endif // RAW_COLOUR_H
