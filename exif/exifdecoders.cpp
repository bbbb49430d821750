// Display texts and numbers of the standard TIFF, Exif and DNG values. Every
// decoder reads only the stored value of its own tag; a tag the file did not
// hold reads as 0 and gives the text its table has for that.

#include "rawfile/tcodetable.h"
#include "rawfile/tm9file.h"

#include <QStringList>

#include <algorithm>

namespace {

// Numerator / denominator, truncated; "0" for a zero denominator.
QString integerQuotient(const TRational &r)
{
    return QString::number(r.den != 0 ? r.num / r.den : 0u);
}

// Numerator / denominator; 0.0 when either part is 0.
double realQuotient(const TRational &r)
{
    return r.num != 0 && r.den != 0 ? double(r.num) / double(r.den) : 0.0;
}

double realQuotient(const TSRational &r)
{
    return r.num != 0 && r.den != 0 ? double(r.num) / double(r.den) : 0.0;
}

template <typename T> QString twoValues(T first, T second)
{
    return QString::number(first) + QLatin1Char(' ') + QString::number(second);
}

// The first two values of an array entry; values the entry did not have are 0.
QString firstTwo(const QList<quint32> &values)
{
    return twoValues(values.value(0), values.value(1));
}

// Each value followed by one blank.
template <typename It> QString eachWithBlank(It first, It last)
{
    QString text;
    for (It it = first; it != last; ++it)
        text += QString::number(*it) + QLatin1Char(' ');
    return text;
}

} // namespace

// --- TIFF image description ---------------------------------------------------

// 0x00FE NewSubfileType
constexpr TCodeText kSubfileType[] = {
    {0, "Full-resolution Image "},
    {1, "Reduced-resolution image"},
    {2, "Single page of multi-page image"},
    {3, "Single page of multi-page reduced-resolution image"},
    {4, "Transparency mase"},
    {5, "Transparency mask of reduced-resolution imagee"},
    {6, "Transparency mask of multi-page image"},
    {7, "Transparency mask of reduced-resolution multi-page image"},
};

QString TM9File::exif_0xFE_SubfileTypeAsString() const
{
    return lookup(kSubfileType, m_exif.newSubfileType, "n.a");
}

// 0x0103 Compression
constexpr TCodeText kCompression[] = {
    {1, "Uncompressed"},
    {2, "CCITT 1D"},
    {3, "T4/Group 3 Fax"},
    {4, "T6/Group 4 Fax"},
    {5, "LZW"},
    {6, "JPEG (old-style)"},
    {7, "JPEG"},
    {8, "Adobe Deflate"},
    {9, "JBIG B&W"},
    {10, "JBIG Color"},
    {99, "JPEG"},
    {262, "Kodak 262"},
    {32766, "Next"},
    {32767, "Sony ARW Compressed"},
    {32769, "Packed RAW"},
    {32770, "Samsung SRW Compressed"},
    {32771, "CCIRLEW"},
    {32772, "Samsung SRW Compressed 2"},
    {32773, "PackBits"},
    {32809, "Thunderscan"},
    {32867, "Kodak KDC Compressed"},
    {32895, "IT8CTPAD"},
    {32896, "IT8LW"},
    {32897, "IT8MP"},
    {32898, "IT8BL"},
    {32908, "PixarFilm"},
    {32909, "PixarLog"},
    {32946, "Deflate"},
    {32947, "DCS"},
    {34661, "JBIG"},
    {34676, "SGILog"},
    {34677, "SGILog24"},
    {34712, "JPEG 2000"},
    {34713, "Nikon NEF Compressed"},
    {34715, "JBIG2 TIFF FX"},
    {34718, "Microsoft Document Imaging (MDI) Binary Level Codec"},
    {34719, "Microsoft Document Imaging (MDI) Progressive Transform Codec"},
    {34720, "Microsoft Document Imaging (MDI) Vector"},
    {34892, "Lossy JPEG"},
    {65000, "Kodak DCR Compressed"},
    {65535, "Pentax PEF Compressed"},
};

QString TM9File::exif_0x103_CompressionAsString() const
{
    return lookup(kCompression, m_exif.compression, "unbekannt");
}

// 0x0106 PhotometricInterpretation
constexpr TCodeText kPhotometric[] = {
    {0, "WhiteIsZero"},
    {1, "BlackIsZero"},
    {2, "RGB"},
    {3, "RGB Palette"},
    {4, "Transparency Mask"},
    {5, "CMYK"},
    {6, "YCbCr"},
    {8, "CIELab"},
    {9, "ICCLab"},
    {10, "ITULab"},
    {32803, "Color Filter Array "},
    {32844, "Pixar LogL"},
    {32845, "Pixar LogLuv"},
    {34892, "Linear Raw"},
};

QString TM9File::exif_0x106_PhotometricInterpretationAsString() const
{
    return lookup(kPhotometric, m_exif.photometric, "unbekannt");
}

// 0x0112 Orientation
constexpr TCodeText kOrientation[] = {
    {1, "Horizontal (normal)"},
    {2, "Mirror horizontal"},
    {3, "Rotate 180"},
    {4, "Mirror vertical"},
    {5, "Mirror horizontal and rotate 270 CW"},
    {6, "Rotate 90 CW"},
    {7, "Mirror horizontal and rotate 90 CW"},
    {8, "Rotate 270 CW"},
};

QString TM9File::exif_0x112_OrientationAsString() const
{
    return lookup(kOrientation, m_exif.orientation, "unbekannt");
}

QString TM9File::exif_0x11A_XResolutionAsString() const
{
    return integerQuotient(m_exif.xResolution);
}

QString TM9File::exif_0x11B_YResolutionAsString() const
{
    return integerQuotient(m_exif.yResolution);
}

// 0x011C PlanarConfiguration
constexpr TCodeText kPlanarConfiguration[] = {{1, "Chunky"}, {2, "Planar"}};

QString TM9File::exif_0x11C_PlanarConfigurationAsString() const
{
    return lookup(kPlanarConfiguration, m_exif.planarConfiguration, "unbekannt");
}

// 0x0128 ResolutionUnit
constexpr TCodeText kResolutionUnit[] = {{1, "None"}, {2, "inches"}, {3, "cm"}};

QString TM9File::exif_0x128_ResolutionUnitAsString() const
{
    return lookup(kResolutionUnit, m_exif.resolutionUnit, "unbekannt");
}

// --- Sony raw-file tags of IFD0 -------------------------------------------------

// 0x7000 SonyRawFileType
constexpr TCodeText kSonyRawFileType[] = {
    {0, "Sony Uncompressed RAW"},
    {1, "Sony RAW 1"},
    {2, "Sony Compressed RAW"},
    {3, "Sony RAW 3"},
};

QString TM9File::exif_0x7000_SonyRawFileTypeAsString() const
{
    return lookup(kSonyRawFileType, m_exif.sonyRawFileType, "unbekannt");
}

QString TM9File::exif_0x7010_SonyToneCurveAsString() const
{
    QStringList values;
    for (quint16 v : m_exif.sonyToneCurve)
        values.append(QString::number(v));
    return values.join(QLatin1Char(' '));
}

// 0x7034 ChromaticAberrationCorrection
constexpr TCodeText kChromaticAberrationCorrection[] = {
    {0, "Off"},
    {1, "Auto"},
    {255, "No correction params available"},
};

QString TM9File::exif_0x7034_ChromaticAberrationCorrectionAsString() const
{
    return lookup(kChromaticAberrationCorrection, m_exif.sonyChromaticAberrationCorrection,
                  "unbekannt");
}

// 0x7036 DistortionCorrection
constexpr TCodeText kDistortionCorrection[] = {
    {0, "Off"},
    {1, "Auto"},
    {17, "Auto fixed by lens"},
    {255, "No correction params available"},
};

QString TM9File::exif_0x7036_DistortionCorrectionAsString() const
{
    return lookup(kDistortionCorrection, m_exif.sonyDistortionCorrection, "unbekannt");
}

QString TM9File::exif_0x74c7_SonyCropTopLeftAsString() const
{
    return twoValues(m_exif.sonyCropTopLeft[0], m_exif.sonyCropTopLeft[1]);
}

QString TM9File::exif_0x74c8_SonyCropSizeAsString() const
{
    return twoValues(m_exif.sonyCropSize[0], m_exif.sonyCropSize[1]);
}

// --- CFA description -------------------------------------------------------------

QString TM9File::exif_0x828D_CFARepeatPatternDimAsString() const
{
    return twoValues(m_exif.cfaRepeatPatternDim[0], m_exif.cfaRepeatPatternDim[1]);
}

QString TM9File::exif_0x828E_CFAPattern2AsString() const
{
    // A pattern longer than the kept bytes shows the kept ones.
    const quint32 kept = std::min<quint32>(m_exif.cfaPatternCount, kCfaPatternCapacity);
    return eachWithBlank(m_exif.cfaPattern.begin(), m_exif.cfaPattern.begin() + kept);
}

// --- Exposure -------------------------------------------------------------------------

namespace {

// 0x829A ExposureTime: the nominal shutter speeds. A time shows its text only
// when numerator / denominator is exactly the double of the nominal value;
// 1/15 s or 1/3 s, which no M9 speed dial has, fall through.
struct TNominalTime {
    double seconds;
    const char *text; // the denominator of a fraction, or the decimal-comma text
    bool fraction;    // 1/N, shown with "1/" by the first variant
};

constexpr TNominalTime kNominalTimes[] = {
    {1.0 / 16000, "16000", true}, {1.0 / 12800, "12800", true}, {1.0 / 12000, "12000", true},
    {1.0 / 10000, "10000", true}, {1.0 / 8000, "8000", true},   {1.0 / 6400, "6400", true},
    {1.0 / 6000, "6000", true},   {1.0 / 5000, "5000", true},   {1.0 / 4000, "4000", true},
    {1.0 / 3200, "3200", true},   {1.0 / 3000, "3000", true},   {1.0 / 2500, "2500", true},
    {1.0 / 2000, "2000", true},   {1.0 / 1600, "1600", true},   {1.0 / 1500, "1500", true},
    {1.0 / 1250, "1250", true},   {1.0 / 1000, "1000", true},   {1.0 / 800, "800", true},
    {1.0 / 750, "750", true},     {1.0 / 640, "640", true},     {1.0 / 500, "500", true},
    {1.0 / 400, "400", true},     {1.0 / 350, "350", true},     {1.0 / 320, "320", true},
    {1.0 / 250, "250", true},     {1.0 / 200, "200", true},     {1.0 / 180, "180", true},
    {1.0 / 160, "160", true},     {1.0 / 125, "125", true},     {1.0 / 100, "100", true},
    {1.0 / 90, "90", true},       {1.0 / 80, "80", true},       {1.0 / 60, "60", true},
    {1.0 / 50, "50", true},       {1.0 / 45, "45", true},       {1.0 / 40, "40", true},
    {1.0 / 30, "30", true},       {1.0 / 25, "25", true},       {1.0 / 20, "20", true},
    {1.0 / 10, "10", true},       {1.0 / 8, "8", true},         {1.0 / 6, "6", true},
    {0.3, "0,3", false},          {0.4, "0,4", false},          {0.5, "0,5", false},
    {0.6, "0,6", false},          {0.7, "0,7", false},          {0.8, "0,8", false},
    {1.0, "1,0", false},          {1.3, "1,3", false},          {1.6, "1,6", false},
    {2.0, "2,0", false},          {2.5, "2,5", false},          {3.2, "3,2", false},
    {4.0, "4,0", false},          {5.0, "5,0", false},          {6.0, "6,0", false},
    {8.0, "8,0", false},          {10.0, "10,0", false},        {13.0, "13,0", false},
    {15.0, "15,0", false},        {20.0, "20,0", false},        {25.0, "25,0", false},
    {30.0, "30,0", false},
};

const TNominalTime *nominalTime(const TRational &time)
{
    const double seconds = double(time.num) / double(time.den);
    for (const TNominalTime &row : kNominalTimes) {
        if (row.seconds == seconds)
            return &row;
    }
    return nullptr;
}

} // namespace

QString TM9File::exif_0x829A_ExposureTimeAsString() const
{
    const TRational &t = m_exif.exposureTime;
    if (t.num == 0 || t.den == 0)
        return QStringLiteral("n.A.");
    // Whole seconds count before the table: 13/10 s shows "1", never "1,3".
    if (double(t.num) / double(t.den) >= 1.0)
        return QString::number(t.num / t.den);
    if (const TNominalTime *row = nominalTime(t))
        return (row->fraction ? QStringLiteral("1/") : QString()) + QLatin1String(row->text);
    return QStringLiteral("n.a");
}

QString TM9File::exif_0x829A_ExposureTimeAsString2() const
{
    const TRational &t = m_exif.exposureTime;
    if (t.num == 0 || t.den == 0)
        return QStringLiteral("n.A.");
    if (const TNominalTime *row = nominalTime(t))
        return QLatin1String(row->text);
    return QStringLiteral("n.a");
}

QString TM9File::exif_0x829D_FNumberAsString() const
{
    const TRational &f = m_exif.fNumber;
    if (f.num == 0 || f.den == 0)
        return QStringLiteral("0.0");
    return QStringLiteral("%1").arg(double(f.num) / double(f.den), 0, 'g', 3);
}

// 0x8822 ExposureProgram
constexpr TCodeText kExposureProgram[] = {
    {0, "not defined"},
    {1, "Manual"},
    {2, "Program AE"},
    {3, "Av [Aperture-priority]"},
    {4, "Tv [Shutter speed priority]"},
    {5, "Creative (Slow Speed)"},
    {6, "Action (High Speed)"},
    {7, "Portrait"},
    {8, "Landscape"},
    {9, "Bulb"},
};

QString TM9File::exif_0x8822_ExpProgAsString() const
{
    return lookup(kExposureProgram, m_exif.exposureProgram, "n.a.");
}

QString TM9File::exif_0x8827_ISOAsString() const
{
    return QString::number(m_exif.iso);
}

// 0x8830 SensitivityType
constexpr TCodeText kSensitivityType[] = {
    {0, "Unknown"},
    {1, "Standard Output Sensitivity"},
    {2, "Recommended Exposure Index"},
    {3, "ISO Speed"},
    {4, "Standard Output Sensitivity and Recommended Exposure Index"},
    {5, "Standard Output Sensitivity and ISO Speed"},
    {6, "Recommended Exposure Index and ISO Speed"},
    {7, "Standard Output Sensitivity, Recommended Exposure Index and ISO Speed"},
};

QString TM9File::exif_0x8830_SensitivityTypeAsString() const
{
    return lookup(kSensitivityType, m_exif.sensitivityType, "unbekannt");
}

QString TM9File::exif_0x9102_CompressedBitsPerPixelAsString() const
{
    const TRational &r = m_exif.compressedBitsPerPixel;
    if (r.num == 0 || r.den == 0)
        return QStringLiteral("n.a");
    return integerQuotient(r);
}

QString TM9File::exif_0x9201_ShutterSpeedValueAsString() const
{
    const TRational &r = m_exif.shutterSpeedValue;
    if (r.num == 0 || r.den == 0)
        return QStringLiteral("n.a");
    // The APEX value in whole steps; its fraction is not shown.
    return QStringLiteral("%1").arg(double(r.num / r.den), 0, 'g', 4);
}

QString TM9File::exif_0x9203_BrightnessValueAsString() const
{
    const TSRational &r = m_exif.brightnessValue;
    if (r.num == 0 || r.den == 0)
        return QStringLiteral("n.a");
    return QStringLiteral("%1").arg(double(r.num) / double(r.den), 0, 'g', 8);
}

double TM9File::exif_0x9203_BrightnessValueAsReal() const
{
    // Whole steps, truncated toward zero (25/10 gives 2.0). Computed in 64 bits:
    // the smallest numerator divided by -1 does not fit 32 bits.
    const TSRational &r = m_exif.brightnessValue;
    if (r.num == 0 || r.den == 0)
        return 0.0;
    return double(qint64(r.num) / qint64(r.den));
}

QString TM9File::exif_0x9204_ExpCompensationAsString() const
{
    return QStringLiteral("%1").arg(exif_0x9204_ExpCompensationAsReal(), 0, 'f', 1);
}

double TM9File::exif_0x9204_ExpCompensationAsReal() const
{
    return realQuotient(m_exif.exposureBiasValue);
}

QString TM9File::exif_0x9205_MaxApertureValueAsString() const
{
    // The panel leaves this row empty; the APEX value is given by the AsReal form.
    return QString();
}

double TM9File::exif_0x9205_MaxApertureValueAsReal() const
{
    return realQuotient(m_exif.maxApertureValue);
}

// 0x9207 MeteringMode
constexpr TCodeText kMeteringMode[] = {
    {1, "Average"}, {2, "Center-weighted average"},
    {3, "Spot"},    {4, "Multi-Spot"},
    {5, "Matrix"},  {6, "Partiell"},
    {255, "Other"},
};

QString TM9File::exif_0x9207_MeteringModeAsString() const
{
    return lookup(kMeteringMode, m_exif.meteringMode, "n.a");
}

// 0x9208 LightSource
constexpr TCodeText kLightSource[] = {
    {0, "Unknown"},
    {1, "Daylight"},
    {2, "Fluorescent"},
    {3, "Tungsten (Incandescent)"},
    {4, "Flash"},
    {9, "Fine Weather"},
    {10, "Cloudy"},
    {11, "Shade"},
    {12, "Daylight Fluorescent"},
    {13, "Day White Fluorescent"},
    {14, "Cool White Fluorescent"},
    {15, "White Fluorescent"},
    {16, "Warm White Fluorescent"},
    {17, "Standard Light A"},
    {18, "Standard Light B"},
    {19, "Standard Light C"},
    {20, "D55"},
    {21, "D65"},
    {22, "D75"},
    {23, "D50"},
    {24, "ISO Studio Tungsten"},
    {255, "Other"},
};

QString TM9File::exif_0x9208_LightSourceAsString() const
{
    return lookup(kLightSource, m_exif.lightSource, "unbekannt");
}

// 0x9209 Flash, matched as a whole value, not bit by bit
constexpr TCodeText kFlash[] = {
    {0, "No Flash"},
    {1, "Fired"},
    {5, "Fired, Return not detected"},
    {7, "Fired, Return detected"},
    {8, "On, Did not fire"},
    {9, "On, Fired"},
    {13, "On, Return not detected"},
    {15, "On, Return detected"},
    {16, "Off, Did not fire"},
    {20, "Off, Did not fire, Return not detected"},
    {24, "Auto, Did not fire"},
    {25, "Auto, Fired"},
    {29, "Auto, Fired, Return not detected"},
    {31, "Auto, Fired, Return detected"},
    {32, "No flash function"},
    {48, "Off, No flash function"},
    {65, "Fired, Red-eye reduction"},
    {69, "Fired, Red-eye reduction, Return not detected"},
    {71, "Fired, Red-eye reduction, Return detected"},
    {73, "On, Red-eye reduction"},
    {77, "On, Red-eye reduction, Return not detected"},
    {79, "On, Red-eye reduction, Return detected"},
    {80, "Off, Red-eye reduction"},
    {88, "Auto, Did not fire, Red-eye reduction"},
    {89, "Auto, Fired, Red-eye reduction"},
    {93, "Auto, Fired, Red-eye reduction, Return not detected"},
    {95, "Auto, Fired, Red-eye reduction, Return detected"},
};

QString TM9File::exif_0x9209_FlashAsString() const
{
    return lookup(kFlash, m_exif.flash, "unbekannt");
}

QString TM9File::exif_0x920A_FocalLengthAsString() const
{
    return integerQuotient(m_exif.focalLength);
}

double TM9File::exif_0x920A_FocalLengthAsReal() const
{
    return realQuotient(m_exif.focalLength);
}

// --- Exif IFD, image and scene -----------------------------------------------------

// 0xA001 ColorSpace
constexpr TCodeText kColorSpace[] = {
    {1, "sRGB"},
    {2, "Adobe RGB"},
    {0xFFFD, "Wide Gamut RGB"},
    {0xFFFE, "ICC Profile"},
    {0xFFFF, "Uncalibrated"},
};

QString TM9File::exif_0xA001_ColorSpaceAsString() const
{
    return lookup(kColorSpace, m_exif.colorSpace, "unbekannt");
}

// 0xA300 FileSource
constexpr TCodeText kFileSource[] = {
    {1, "Film Scanner"},
    {2, "Reflection Print Scanner"},
    {3, "Digital Camera"},
};

QString TM9File::exif_0xA300_FileSourceAsString() const
{
    return lookup(kFileSource, m_exif.fileSource, "unbekannt");
}

// 0xA301 SceneType
constexpr TCodeText kSceneType[] = {{1, "Directly photographed"}};

QString TM9File::exif_0xA301_SceneTypeAsString() const
{
    return lookup(kSceneType, m_exif.sceneType, "unbekannt");
}

// 0xA401 CustomRendered
constexpr TCodeText kCustomRendered[] = {{0, "Normal"}, {1, "Custom"}};

QString TM9File::exif_0xA401_CustomRenderedAsString() const
{
    return lookup(kCustomRendered, m_exif.customRendered, "unbekannt");
}

// 0xA402 ExposureMode
constexpr TCodeText kExposureMode[] = {{0, "Auto"}, {1, "Manual"}, {2, "Auto bracket"}};

QString TM9File::exif_0xA402_ExposureModeAsString() const
{
    return lookup(kExposureMode, m_exif.exposureMode, "unbekannt");
}

// 0xA403 WhiteBalance
constexpr TCodeText kWhiteBalance[] = {{0, "Auto"}, {1, "Manual"}};

QString TM9File::exif_0xA403_WhiteBalanceAsString() const
{
    return lookup(kWhiteBalance, m_exif.whiteBalance, "unbekannt");
}

QString TM9File::exif_0xA404_DigitalZoomRatioAsString() const
{
    return integerQuotient(m_exif.digitalZoomRatio);
}

double TM9File::exif_0xA404_DigitalZoomRatioAsReal() const
{
    return realQuotient(m_exif.digitalZoomRatio);
}

// 0xA406 SceneCaptureType
constexpr TCodeText kSceneCaptureType[] = {
    {0, "Standard"},
    {1, "Landscape"},
    {2, "Portrait"},
    {3, "Night"},
};

QString TM9File::exif_0xA406_SceneCaptureTypeAsString() const
{
    return lookup(kSceneCaptureType, m_exif.sceneCaptureType, "unbekannt");
}

// 0xA408 Contrast and 0xA409 Saturation
constexpr TCodeText kLowHigh[] = {{0, "Normal"}, {1, "Low"}, {2, "High"}};

QString TM9File::exif_0xA408_ContrastAsString() const
{
    return lookup(kLowHigh, m_exif.contrast, "unbekannt");
}

QString TM9File::exif_0xA409_SaturationAsString() const
{
    return lookup(kLowHigh, m_exif.saturation, "unbekannt");
}

// 0xA40A Sharpness
constexpr TCodeText kSharpness[] = {{0, "Normal"}, {1, "Soft"}, {2, "Hard"}};

QString TM9File::exif_0xA40A_SharpnessAsString() const
{
    return lookup(kSharpness, m_exif.sharpness, "unbekannt");
}

QString TM9File::exif_0xA432_LensInfoAsString() const
{
    // Shortest and longest focal length, then the f-number at each.
    const auto aperture = [](const TRational &r) {
        return r.num == 0 || r.den == 0 ? QStringLiteral("0")
                                        : QString::number(double(r.num) / double(r.den), 'g', 6);
    };
    const auto &info = m_exif.lensInfo;
    const QString shortest = integerQuotient(info[0]);
    const QString longest = integerQuotient(info[1]);
    const QString prime = shortest + QStringLiteral("mm/f") + aperture(info[2]);
    if (shortest == longest)
        return prime;
    return prime + QStringLiteral(" - ") + longest + QStringLiteral("mm/") + aperture(info[3]);
}

QString TM9File::exif_0xA500_GammaAsString() const
{
    const TRational &g = m_exif.gamma;
    const double gamma = g.num != 0 ? double(g.num) / double(g.den) : 0.0;
    return QStringLiteral("%1").arg(gamma, 0, 'f', 1);
}

double TM9File::exif_0xA500_GammaAsReal() const
{
    return realQuotient(m_exif.gamma);
}

// --- DNG -------------------------------------------------------------------------------

QString TM9File::exif_0xC619_BlackLevelRepeatDimAsString() const
{
    return twoValues(m_exif.blackLevelRepeatDim[0], m_exif.blackLevelRepeatDim[1]);
}

QString TM9File::exif_0XC61A_BlackLevelAsString() const
{
    // The numerators run together without a separator: four levels of 128
    // show "128128128128".
    QString text;
    for (const TRational &level : m_exif.blackLevel) {
        text += level.num == 0 || level.den == 0 ? QStringLiteral("0") : QString::number(level.num);
    }
    return text;
}

QString TM9File::exif_0xC61D_WhiteLevelAsString() const
{
    return eachWithBlank(m_exif.whiteLevel.begin(), m_exif.whiteLevel.end());
}

QString TM9File::exif_0xC61F_DefaultCropOriginAsString() const
{
    return firstTwo(m_exif.defaultCropOrigin);
}

QString TM9File::exif_0xC620_DefaultCropSizeAsString() const
{
    return firstTwo(m_exif.defaultCropSize);
}

QString TM9File::exif_0xC632_AntiAliasStrengthAsString() const
{
    return integerQuotient(m_exif.antiAliasStrength);
}

double TM9File::exif_0xC632_AntiAliasStrengthAsReal() const
{
    return realQuotient(m_exif.antiAliasStrength);
}
