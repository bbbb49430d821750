// Values that no single tag holds, derived from stored Exif values and from
// what the Sony maker-note blocks leave behind. Zero inputs run on through the
// floating-point arithmetic: the results may be infinite or not a number, and
// are returned as they come.

#include "rawfile/tm9file.h"

#include <cmath>

namespace {

// The diagonal of the 35 mm frame, millimetres.
constexpr double kFullFrameDiagonal = 43.267;

} // namespace

double TM9File::composite_FocusDistance() const
{
    // The focus position counts in whole steps of 16; the 35 mm equivalent
    // focal length scales the distance.
    const int exponent = (m_sony.focusPosition >> 4) - 5;
    return (std::ldexp(1.0, exponent) + 1.0) * m_exif.focalLengthIn35mm / 1000.0;
}

double TM9File::composite_ScaleFactor35() const
{
    // Focal length over its 35 mm equivalent: the reciprocal of the crop factor.
    return exif_0x920A_FocalLengthAsReal() / double(m_exif.focalLengthIn35mm);
}

double TM9File::composite_CircleOfConfusion() const
{
    return kFullFrameDiagonal / (composite_ScaleFactor35() * 1440.0);
}

double TM9File::composite_HyperfocalDistance() const
{
    const double f = exif_0x920A_FocalLengthAsReal();
    const double aperture = m_sony.apertureText.toDouble(); // 0.0 when it is no number
    return f * f / (aperture * composite_CircleOfConfusion() * 1000.0);
}

double TM9File::composite_LightValue() const
{
    const TRational &fNumber = m_exif.fNumber;
    const TRational &time = m_exif.exposureTime;
    if (fNumber.num == 0 || fNumber.den == 0 || time.num == 0 || time.den == 0)
        return 0.0;
    const double aperture = double(fNumber.num) / double(fNumber.den);
    const double seconds = double(time.num) / double(time.den);
    // Whole hundreds of ISO only: ISO 160 counts as 100, ISO 50 as 0.
    const double speed = double(m_exif.iso / 100);
    return 2.0 * std::log2(aperture) - std::log2(seconds) - std::log2(speed);
}
