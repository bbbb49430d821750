#include "cli/queries.h"

#include "rawfile/tm9file.h"

#include <QSize>
#include <QStringList>

#include <type_traits>

namespace {

// Sizes, not pictures: the queries run on worker threads.
QVariant pictureSize(const QSize &size)
{
    if (!size.isValid())
        return QVariant();
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QString stored(const TRational &r)
{
    return QStringLiteral("%1/%2").arg(r.num).arg(r.den);
}

QString stored(const TSRational &r)
{
    return QStringLiteral("%1/%2").arg(r.num).arg(r.den);
}

template <typename T> QVariant stored(const T &value)
{
    if constexpr (std::is_same_v<T, QString> || std::is_floating_point_v<T>) {
        return value;
    } else if constexpr (std::is_integral_v<T>) {
        return QVariant::fromValue(qint64(value));
    } else {
        QStringList parts; // arrays and lists: the values separated by blanks
        for (const auto &element : value)
            parts.append(QVariant(stored(element)).toString());
        return parts.join(QLatin1Char(' '));
    }
}

} // namespace

#define FIELD(directory, member)                                                                   \
    TQuery                                                                                         \
    {                                                                                              \
#directory "." #member,                                                                    \
            [](const TM9File &f) { return QVariant(stored(f.directory().member)); }                \
    }

const QList<TQuery> &storedValues()
{
    static const QList<TQuery> fields = {
        FIELD(exif, newSubfileType),
        FIELD(exif, imageWidth),
        FIELD(exif, imageLength),
        FIELD(exif, bitsPerSample),
        FIELD(exif, compression),
        FIELD(exif, photometric),
        FIELD(exif, imageDescription),
        FIELD(exif, make),
        FIELD(exif, model),
        FIELD(exif, stripOffsets),
        FIELD(exif, orientation),
        FIELD(exif, samplesPerPixel),
        FIELD(exif, rowsPerStrip),
        FIELD(exif, stripByteCounts),
        FIELD(exif, xResolution),
        FIELD(exif, yResolution),
        FIELD(exif, planarConfiguration),
        FIELD(exif, resolutionUnit),
        FIELD(exif, software),
        FIELD(exif, dateTime),
        FIELD(exif, artist),
        FIELD(exif, jpegOffsetIfd0),
        FIELD(exif, jpegLengthIfd0),
        FIELD(exif, thumbnailOffset),
        FIELD(exif, thumbnailLength),
        FIELD(exif, sonyRawFileType),
        FIELD(exif, sonyToneCurve),
        FIELD(exif, sonyChromaticAberrationCorrection),
        FIELD(exif, sonyDistortionCorrection),
        FIELD(exif, sonyCropTopLeft),
        FIELD(exif, sonyCropSize),
        FIELD(exif, cfaRepeatPatternDim),
        FIELD(exif, cfaPatternCount),
        FIELD(exif, exposureTime),
        FIELD(exif, fNumber),
        FIELD(exif, exposureProgram),
        FIELD(exif, iso),
        FIELD(exif, sensitivityType),
        FIELD(exif, recommendedExposureIndex),
        FIELD(exif, exifVersion),
        FIELD(exif, dateTimeOriginal),
        FIELD(exif, dateTimeDigitized),
        FIELD(exif, offsetTime),
        FIELD(exif, offsetTimeOriginal),
        FIELD(exif, offsetTimeDigitized),
        FIELD(exif, componentsConfiguration),
        FIELD(exif, compressedBitsPerPixel),
        FIELD(exif, shutterSpeedValue),
        FIELD(exif, brightnessValue),
        FIELD(exif, exposureBiasValue),
        FIELD(exif, maxApertureValue),
        FIELD(exif, meteringMode),
        FIELD(exif, lightSource),
        FIELD(exif, flash),
        FIELD(exif, focalLength),
        FIELD(exif, makerNotePosition),
        FIELD(exif, userComment),
        FIELD(exif, flashpixVersion),
        FIELD(exif, colorSpace),
        FIELD(exif, pixelXDimension),
        FIELD(exif, pixelYDimension),
        FIELD(exif, interopOffset),
        FIELD(exif, fileSource),
        FIELD(exif, sceneType),
        FIELD(exif, customRendered),
        FIELD(exif, exposureMode),
        FIELD(exif, whiteBalance),
        FIELD(exif, digitalZoomRatio),
        FIELD(exif, focalLengthIn35mm),
        FIELD(exif, sceneCaptureType),
        FIELD(exif, contrast),
        FIELD(exif, saturation),
        FIELD(exif, sharpness),
        FIELD(exif, imageUniqueID),
        FIELD(exif, lensInfo),
        FIELD(exif, lensModel),
        FIELD(exif, gamma),
        FIELD(exif, dngVersion),
        FIELD(exif, dngBackwardVersion),
        FIELD(exif, uniqueCameraModel),
        FIELD(exif, blackLevelRepeatDim),
        FIELD(exif, blackLevel),
        FIELD(exif, whiteLevel),
        FIELD(exif, defaultCropOrigin),
        FIELD(exif, defaultCropSize),
        FIELD(exif, bayerGreenSplit),
        FIELD(exif, antiAliasStrength),
        FIELD(gps, versionId),
        FIELD(gps, latitudeRef),
        FIELD(gps, latitude),
        FIELD(gps, longitudeRef),
        FIELD(gps, longitude),
        FIELD(gps, timeStamp),
        FIELD(gps, status),
        FIELD(gps, measureMode),
        FIELD(gps, mapDatum),
        FIELD(gps, dateStamp),
        FIELD(gps, differential),
        FIELD(leica, contrast),
        FIELD(leica, sharpening),
        FIELD(leica, saturation),
        FIELD(leica, whiteBalance),
        FIELD(leica, jpegQuality),
        FIELD(leica, serialNumber),
        FIELD(leica, firmwareVersion),
        FIELD(leica, baseISO),
        FIELD(leica, sensorWidth),
        FIELD(leica, sensorHeight),
        FIELD(leica, sensorBitDepth),
        FIELD(leica, cameraTemperature),
        FIELD(leica, lensType),
        FIELD(leica, approximateFNumber),
        FIELD(leica, measuredLV),
        FIELD(leica, externalSensorBrightness),
        FIELD(sony, focusPosition),
        FIELD(sony, apertureText),
    };
    return fields;
}

#define QUERY(method)                                                                              \
    TQuery                                                                                         \
    {                                                                                              \
#method, [](const TM9File &f) { return QVariant::fromValue(f.method()); }                  \
    }

const QList<TQuery> &allQueries()
{
    static const QList<TQuery> queries = {
        QUERY(fileTyp),
        QUERY(fileName),
        QUERY(fileNameComplete),
        QUERY(isValidModel),
        QUERY(isBigEndian),
        QUERY(isHeaderValid),
        QUERY(tiffBase),
        QUERY(ifdCount),
        QUERY(hasPreviewImage),
        QUERY(hasThumbnailImage),
        QUERY(hasFullSizeImage),
        {"previewImage", [](const TM9File &f) { return pictureSize(f.previewSize()); }},
        {"thumbnailImage", [](const TM9File &f) { return pictureSize(f.thumbnailSize()); }},
        QUERY(exif_0xFE_SubfileTypeAsString),
        QUERY(exif_0x103_CompressionAsString),
        QUERY(exif_0x106_PhotometricInterpretationAsString),
        QUERY(exif_0x112_OrientationAsString),
        QUERY(exif_0x11A_XResolutionAsString),
        QUERY(exif_0x11B_YResolutionAsString),
        QUERY(exif_0x11C_PlanarConfigurationAsString),
        QUERY(exif_0x128_ResolutionUnitAsString),
        QUERY(exif_0x7000_SonyRawFileTypeAsString),
        QUERY(exif_0x7010_SonyToneCurveAsString),
        QUERY(exif_0x7034_ChromaticAberrationCorrectionAsString),
        QUERY(exif_0x7036_DistortionCorrectionAsString),
        QUERY(exif_0x74c7_SonyCropTopLeftAsString),
        QUERY(exif_0x74c8_SonyCropSizeAsString),
        QUERY(exif_0x828D_CFARepeatPatternDimAsString),
        QUERY(exif_0x828E_CFAPattern2AsString),
        QUERY(exif_0x829A_ExposureTimeAsString),
        QUERY(exif_0x829A_ExposureTimeAsString2),
        QUERY(exif_0x829D_FNumberAsString),
        QUERY(exif_0x8822_ExpProgAsString),
        QUERY(exif_0x8827_ISOAsString),
        QUERY(exif_0x8830_SensitivityTypeAsString),
        QUERY(exif_0x9102_CompressedBitsPerPixelAsString),
        QUERY(exif_0x9201_ShutterSpeedValueAsString),
        QUERY(exif_0x9203_BrightnessValueAsString),
        QUERY(exif_0x9203_BrightnessValueAsReal),
        QUERY(exif_0x9204_ExpCompensationAsString),
        QUERY(exif_0x9204_ExpCompensationAsReal),
        QUERY(exif_0x9205_MaxApertureValueAsString),
        QUERY(exif_0x9205_MaxApertureValueAsReal),
        QUERY(exif_0x9207_MeteringModeAsString),
        QUERY(exif_0x9208_LightSourceAsString),
        QUERY(exif_0x9209_FlashAsString),
        QUERY(exif_0x920A_FocalLengthAsString),
        QUERY(exif_0x920A_FocalLengthAsReal),
        QUERY(exif_0xA001_ColorSpaceAsString),
        QUERY(exif_0xA300_FileSourceAsString),
        QUERY(exif_0xA301_SceneTypeAsString),
        QUERY(exif_0xA401_CustomRenderedAsString),
        QUERY(exif_0xA402_ExposureModeAsString),
        QUERY(exif_0xA403_WhiteBalanceAsString),
        QUERY(exif_0xA404_DigitalZoomRatioAsString),
        QUERY(exif_0xA404_DigitalZoomRatioAsReal),
        QUERY(exif_0xA406_SceneCaptureTypeAsString),
        QUERY(exif_0xA408_ContrastAsString),
        QUERY(exif_0xA409_SaturationAsString),
        QUERY(exif_0xA40A_SharpnessAsString),
        QUERY(exif_0xA432_LensInfoAsString),
        QUERY(exif_0xA500_GammaAsString),
        QUERY(exif_0xA500_GammaAsReal),
        QUERY(exif_0xC619_BlackLevelRepeatDimAsString),
        QUERY(exif_0XC61A_BlackLevelAsString),
        QUERY(exif_0xC61D_WhiteLevelAsString),
        QUERY(exif_0xC61F_DefaultCropOriginAsString),
        QUERY(exif_0xC620_DefaultCropSizeAsString),
        QUERY(exif_0xC632_AntiAliasStrengthAsString),
        QUERY(exif_0xC632_AntiAliasStrengthAsReal),
        QUERY(composite_FocusDistance),
        QUERY(composite_ScaleFactor35),
        QUERY(composite_CircleOfConfusion),
        QUERY(composite_HyperfocalDistance),
        QUERY(composite_LightValue),
        QUERY(leicaFrameSelectorAsString),
        QUERY(leicaLensTypeAsString),
        QUERY(leicaImageUniqueIDAsString),
        QUERY(gps_0x0002_LatitudeAsString),
        QUERY(gps_0x0004_LongitudeAsString),
        QUERY(gps_0x0007_TimeStampAsString),
        QUERY(gps_0x0002_LatitudeAsKML),
        QUERY(gps_0x0004_LongitudeAsKML),
    };
    return queries;
}
