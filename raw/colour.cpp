#include "raw/colour.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace raw {

TMat3 multiply(const TMat3 &a, const TMat3 &b)
{
    TMat3 r{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                r[i * 3 + j] += a[i * 3 + k] * b[k * 3 + j];
    return r;
}

TVec3 multiply(const TMat3 &a, const TVec3 &v)
{
    return {a[0] * v[0] + a[1] * v[1] + a[2] * v[2], a[3] * v[0] + a[4] * v[1] + a[5] * v[2],
            a[6] * v[0] + a[7] * v[1] + a[8] * v[2]};
}

bool invert(const TMat3 &m, TMat3 *inverse)
{
    const double c0 = m[4] * m[8] - m[5] * m[7];
    const double c1 = m[5] * m[6] - m[3] * m[8];
    const double c2 = m[3] * m[7] - m[4] * m[6];
    const double det = m[0] * c0 + m[1] * c1 + m[2] * c2;
    double scale = 0;
    for (double v : m)
        scale = std::max(scale, std::abs(v));
    if (!std::isfinite(det) || std::abs(det) <= 1e-12 * scale * scale * scale)
        return false;
    const double f = 1 / det;
    *inverse = {c0 * f, (m[2] * m[7] - m[1] * m[8]) * f, (m[1] * m[5] - m[2] * m[4]) * f,
                c1 * f, (m[0] * m[8] - m[2] * m[6]) * f, (m[2] * m[3] - m[0] * m[5]) * f,
                c2 * f, (m[1] * m[6] - m[0] * m[7]) * f, (m[0] * m[4] - m[1] * m[3]) * f};
    return true;
}

TMat3 diagonal(const TVec3 &v)
{
    return {v[0], 0, 0, 0, v[1], 0, 0, 0, v[2]};
}

TVec3 xyToXyz(double x, double y)
{
    y = std::max(y, 1e-6);
    return {x / y, 1, (1 - x - y) / y};
}

std::array<double, 2> xyzToXy(const TVec3 &xyz)
{
    const double sum = xyz[0] + xyz[1] + xyz[2];
    if (!(std::abs(sum) > 1e-12))
        return {0.3457, 0.3585};
    return {xyz[0] / sum, xyz[1] / sum};
}

double correlatedTemperature(double x, double y)
{
    const double n = (x - 0.3320) / (y - 0.1858);
    const double t = ((-449 * n + 3525) * n - 6823.3) * n + 5520.33;
    return std::clamp(std::isfinite(t) ? t : 5000.0, 1000.0, 50000.0);
}

double illuminantTemperature(int lightSource)
{
    switch (lightSource) {
    case 1: return 5500;  // daylight
    case 2: return 4230;  // fluorescent (F2)
    case 3: return 2850;  // tungsten
    case 4: return 5500;  // flash
    case 9: return 5500;  // fine weather
    case 10: return 6500; // cloudy
    case 11: return 7500; // shade
    case 12: return 6430; // daylight fluorescent
    case 13: return 5000; // day white fluorescent
    case 14: return 4150; // cool white fluorescent
    case 15: return 3450; // white fluorescent
    case 16: return 2940; // warm white fluorescent
    case 17: return 2856; // standard light A
    case 18: return 4874; // standard light B
    case 19: return 6774; // standard light C
    case 20: return 5503; // D55
    case 21: return 6504; // D65
    case 22: return 7504; // D75
    case 23: return 5003; // D50
    case 24: return 3200; // ISO studio tungsten
    default: return 0;
    }
}

TMat3 bradford(const TVec3 &fromWhite, const TVec3 &toWhite)
{
    static const TMat3 cone{0.8951, 0.2664, -0.1614, -0.7502, 1.7135,
                            0.0367, 0.0389, -0.0685, 1.0296};
    TMat3 coneInverse;
    invert(cone, &coneInverse);
    const TVec3 from = multiply(cone, fromWhite), to = multiply(cone, toWhite);
    TVec3 gain;
    for (int i = 0; i < 3; ++i)
        gain[i] = std::abs(from[i]) > 1e-12 ? to[i] / from[i] : 1;
    return multiply(coneInverse, multiply(diagonal(gain), cone));
}

namespace {

const TVec3 kD50 = xyToXyz(0.3457, 0.3585);
const TVec3 kD65 = xyToXyz(0.3127, 0.3290);

} // namespace

TMat3 xyzD50ToLinearSrgb()
{
    // sRGB's primaries and white give linear sRGB -> XYZ (D65).
    const double primaries[3][2] = {{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};
    TMat3 p;
    for (int c = 0; c < 3; ++c) {
        const TVec3 xyz = xyToXyz(primaries[c][0], primaries[c][1]);
        for (int r = 0; r < 3; ++r)
            p[r * 3 + c] = xyz[r];
    }
    TMat3 pInverse;
    invert(p, &pInverse);
    const TVec3 s = multiply(pInverse, kD65);
    const TMat3 toXyz = multiply(p, diagonal(s));
    TMat3 fromXyz;
    invert(toXyz, &fromXyz);
    return multiply(fromXyz, bradford(kD50, kD65));
}

namespace {

TMat3 identity()
{
    return {1, 0, 0, 0, 1, 0, 0, 0, 1};
}

// Matrix 1 and 2 mixed by the weight of matrix 1; the one present when the
// other is not; `fallback` when neither is.
TMat3 mix(const TMatrix3 &m1, const TMatrix3 &m2, double w1, const TMat3 &fallback)
{
    if (m1.present && m2.present) {
        TMat3 r;
        for (int i = 0; i < 9; ++i)
            r[std::size_t(i)] = w1 * m1.m[std::size_t(i)] + (1 - w1) * m2.m[std::size_t(i)];
        return r;
    }
    if (m1.present)
        return m1.m;
    if (m2.present)
        return m2.m;
    return fallback;
}

bool finiteMatrix(const TMatrix3 &m)
{
    return std::all_of(m.m.begin(), m.m.end(), [](double v) { return std::isfinite(v); });
}

// The weight of matrix 1 at a temperature: linear in the inverse temperature
// between the two calibration illuminants, constant beyond them.
double weightAt(const TRawInfo &info, double temperature)
{
    const double t1 = illuminantTemperature(info.calibrationIlluminant1);
    const double t2 = illuminantTemperature(info.calibrationIlluminant2);
    if (!info.colorMatrix2.present || t1 <= 0 || t2 <= 0 || t1 == t2)
        return 1;
    if (!info.colorMatrix1.present)
        return 0;
    const double w = (1 / temperature - 1 / t2) / (1 / t1 - 1 / t2);
    return std::clamp(w, 0.0, 1.0);
}

struct TCameraMatrices {
    TMat3 xyzToCamera; // AB * CC * CM
    TMat3 calibration; // AB * CC
};

TCameraMatrices cameraMatrices(const TRawInfo &info, double w1)
{
    const TMat3 cm = mix(info.colorMatrix1, info.colorMatrix2, w1, identity());
    const TMat3 cc = mix(info.cameraCalibration1, info.cameraCalibration2, w1, identity());
    TVec3 ab = info.analogBalance;
    for (double &v : ab)
        if (!(v > 0) || !std::isfinite(v))
            v = 1;
    const TMat3 abcc = multiply(diagonal(ab), cc);
    return {multiply(abcc, cm), abcc};
}

TVec3 validNeutral(TVec3 n)
{
    for (double &v : n)
        if (!(v > 1e-6) || !std::isfinite(v))
            return {1, 1, 1};
    const double m = std::max({n[0], n[1], n[2]});
    return {n[0] / m, n[1] / m, n[2] / m};
}

// Completes the transform from the camera neutral and the camera -> linear
// sRGB matrix (none: the fallback, camera values / neutral = linear sRGB).
// The balance scales the channels by the inverse neutral over its largest
// value, so that a balanced value stays within [0, 1] and nothing is clipped
// that the sensor did not clip; the matrix undoes it.
TColourTransform balanced(TColourTransform t, const TVec3 &neutral,
                          std::optional<TMat3> cameraToSrgb)
{
    const double least = std::min({neutral[0], neutral[1], neutral[2]});
    for (std::size_t c = 0; c < 3; ++c)
        t.balance[c] = least / neutral[c];
    const TMat3 m =
        cameraToSrgb ? *cameraToSrgb : diagonal({1 / neutral[0], 1 / neutral[1], 1 / neutral[2]});
    t.toSrgb = multiply(m, diagonal({1 / t.balance[0], 1 / t.balance[1], 1 / t.balance[2]}));
    for (double &v : t.toSrgb)
        v *= t.exposure;
    return t;
}

} // namespace

TColourTransform colourTransform(const TRawInfo &info)
{
    TColourTransform t;
    t.exposure = std::isfinite(info.baselineExposure)
                     ? std::exp2(std::clamp(info.baselineExposure, -10.0, 10.0))
                     : 1;
    const bool haveMatrix = (info.colorMatrix1.present && finiteMatrix(info.colorMatrix1)) ||
                            (info.colorMatrix2.present && finiteMatrix(info.colorMatrix2));
    TRawInfo usable = info;
    for (TMatrix3 *m :
         {&usable.colorMatrix1, &usable.colorMatrix2, &usable.forwardMatrix1,
          &usable.forwardMatrix2, &usable.cameraCalibration1, &usable.cameraCalibration2})
        if (!finiteMatrix(*m))
            m->present = false;

    if (!haveMatrix) {
        t.whiteXy = {0.3457, 0.3585};
        return balanced(t, validNeutral(info.asShotNeutral), {});
    }

    // The white of the shot: AsShotWhiteXY as written, or the chromaticity
    // whose camera values are AsShotNeutral under the matrices interpolated
    // for that chromaticity's own temperature (found by iterating from D50).
    std::array<double, 2> xy{0.3457, 0.3585};
    const bool byNeutral = info.hasAsShotNeutral;
    if (byNeutral) {
        const TVec3 neutral = validNeutral(info.asShotNeutral);
        for (int i = 0; i < 50; ++i) {
            const double w1 = weightAt(usable, correlatedTemperature(xy[0], xy[1]));
            TMat3 cameraToXyz;
            if (!invert(cameraMatrices(usable, w1).xyzToCamera, &cameraToXyz))
                break;
            const std::array<double, 2> next = xyzToXy(multiply(cameraToXyz, neutral));
            if (!(next[0] > 0 && next[1] > 0 && next[0] + next[1] < 1))
                break;
            const bool done = std::abs(next[0] - xy[0]) + std::abs(next[1] - xy[1]) < 1e-9;
            xy = next;
            if (done)
                break;
        }
    } else if (info.hasAsShotWhiteXY && info.asShotWhiteXY[0] > 0 && info.asShotWhiteXY[1] > 0 &&
               info.asShotWhiteXY[0] + info.asShotWhiteXY[1] < 1) {
        xy = info.asShotWhiteXY;
    }
    t.whiteXy = xy;
    t.temperature = correlatedTemperature(xy[0], xy[1]);
    t.weight1 = weightAt(usable, t.temperature);
    const TCameraMatrices m = cameraMatrices(usable, t.weight1);
    const TVec3 white = xyToXyz(xy[0], xy[1]);

    // The camera neutral, largest component 1: a camera value equal to it is
    // the white of the shot at full exposure, Y = 1.
    const TVec3 cameraWhite = multiply(m.xyzToCamera, white);
    const TVec3 neutral = byNeutral ? validNeutral(info.asShotNeutral) : validNeutral(cameraWhite);

    TMat3 cameraToD50;
    bool ok = false;
    if (usable.forwardMatrix1.present || usable.forwardMatrix2.present) {
        const TMat3 fm = mix(usable.forwardMatrix1, usable.forwardMatrix2, t.weight1, identity());
        TMat3 calibrationInverse;
        if (invert(m.calibration, &calibrationInverse)) {
            const TVec3 reference = multiply(calibrationInverse, neutral);
            if (reference[0] > 0 && reference[1] > 0 && reference[2] > 0) {
                cameraToD50 = multiply(
                    fm, multiply(diagonal({1 / reference[0], 1 / reference[1], 1 / reference[2]}),
                                 calibrationInverse));
                ok = true;
            }
        }
    }
    if (!ok) {
        TMat3 cameraToXyz;
        const bool invertible = invert(m.xyzToCamera, &cameraToXyz);
        const double whiteY = invertible ? multiply(cameraToXyz, neutral)[1] : 0;
        if (!(whiteY > 0)) {
            return balanced(t, neutral, {});
        }
        cameraToD50 = multiply(bradford(white, kD50), cameraToXyz);
        for (double &v : cameraToD50)
            v /= whiteY;
    }
    t.fromMatrices = true;
    return balanced(t, neutral, multiply(xyzD50ToLinearSrgb(), cameraToD50));
}

} // namespace raw
