#ifndef TM9VALUES_H
#define TM9VALUES_H

// The tag values TM9File keeps, one plain struct per directory. Numbers start
// at 0; texts start at "n.a." or empty as noted. Every struct is filled by its
// walker only and read by the decoders.

#include <QList>
#include <QString>

#include <array>
#include <cstdint>

struct TRational {
    quint32 num = 0;
    quint32 den = 0;
};

struct TSRational {
    qint32 num = 0;
    qint32 den = 0;
};

// Holds what the CFAPattern entry brings in a camera file (2 x 2 or 6 x 6 for
// X-Trans); longer patterns are counted but only this many bytes are kept.
inline constexpr int kCfaPatternCapacity = 64;

// Values the ArrayLn reader keeps of one entry; the decoders use the first two.
inline constexpr int kLongArrayCapacity = 4;

// IFD0, the later IFDs of the main chain and the Exif IFD they point to.
struct TExifValues {
    // IFD0 and its siblings
    quint32 newSubfileType = 0;        // 0x00FE
    quint32 imageWidth = 0;            // 0x0100
    quint32 imageLength = 0;           // 0x0101
    quint16 bitsPerSample = 0;         // 0x0102
    quint16 compression = 0;           // 0x0103
    quint16 photometric = 0;           // 0x0106
    QString imageDescription = "n.a."; // 0x010E
    QString make = "n.a.";             // 0x010F
    QString model = "n.a.";            // 0x0110
    quint32 stripOffsets = 0;          // 0x0111, last one read
    quint16 orientation = 0;           // 0x0112
    quint16 samplesPerPixel = 0;       // 0x0115
    quint32 rowsPerStrip = 0;          // 0x0116
    quint32 stripByteCounts = 0;       // 0x0117, last one read
    TRational xResolution;             // 0x011A
    TRational yResolution;             // 0x011B
    quint16 planarConfiguration = 0;   // 0x011C
    quint16 resolutionUnit = 0;        // 0x0128
    QString software = "n.a.";         // 0x0131
    QString dateTime = "n.a.";         // 0x0132
    QString artist = "n.a.";           // 0x013B
    quint32 jpegOffsetIfd0 = 0;        // 0x0201 in IFD0
    quint32 jpegLengthIfd0 = 0;        // 0x0202 in IFD0
    quint32 thumbnailOffset = 0;       // 0x0201 in a later IFD (IFD1 thumbnail)
    quint32 thumbnailLength = 0;       // 0x0202 in a later IFD

    // Sony raw-file tags of IFD0
    quint16 sonyRawFileType = 0;                               // 0x7000
    std::array<quint16, 4> sonyToneCurve{};                    // 0x7010
    quint16 sonyChromaticAberrationCorrection = 0;             // 0x7034
    quint16 sonyDistortionCorrection = 0;                      // 0x7036
    std::array<quint32, kLongArrayCapacity> sonyCropTopLeft{}; // 0x74C7
    std::array<quint32, kLongArrayCapacity> sonyCropSize{};    // 0x74C8

    // CFA description of a raw IFD
    std::array<quint16, 2> cfaRepeatPatternDim{}; // 0x828D, both halves of the field
    quint32 cfaPatternCount = 0;                  // 0x828E count as stored
    std::array<quint8, kCfaPatternCapacity> cfaPattern{};

    // Exif IFD
    TRational exposureTime;                          // 0x829A
    TRational fNumber;                               // 0x829D
    quint16 exposureProgram = 0;                     // 0x8822
    quint16 iso = 0;                                 // 0x8827
    quint16 sensitivityType = 0;                     // 0x8830
    quint32 recommendedExposureIndex = 0;            // 0x8832
    QString exifVersion;                             // 0x9000
    QString dateTimeOriginal = "n.a.";               // 0x9003
    QString dateTimeDigitized = "n.a.";              // 0x9004
    QString offsetTime;                              // 0x9010
    QString offsetTimeOriginal;                      // 0x9011
    QString offsetTimeDigitized;                     // 0x9012
    std::array<quint8, 4> componentsConfiguration{}; // 0x9101
    TRational compressedBitsPerPixel;                // 0x9102
    TRational shutterSpeedValue;                     // 0x9201
    TSRational brightnessValue;                      // 0x9203
    TSRational exposureBiasValue;                    // 0x9204
    TRational maxApertureValue;                      // 0x9205
    quint16 meteringMode = 0;                        // 0x9207
    quint16 lightSource = 0;                         // 0x9208
    quint16 flash = 0;                               // 0x9209
    TRational focalLength;                           // 0x920A
    quint32 makerNotePosition = 0;                   // 0x927C offset plus the TIFF base
    QString userComment;                             // 0x9286
    QString flashpixVersion;                         // 0xA000
    quint16 colorSpace = 0;                          // 0xA001
    quint32 pixelXDimension = 0;                     // 0xA002
    quint32 pixelYDimension = 0;                     // 0xA003
    quint32 interopOffset = 0;                       // 0xA005
    quint32 fileSource = 0;                          // 0xA300
    quint32 sceneType = 0;                           // 0xA301
    quint16 customRendered = 0;                      // 0xA401
    quint16 exposureMode = 0;                        // 0xA402
    quint16 whiteBalance = 0;                        // 0xA403
    TRational digitalZoomRatio;                      // 0xA404
    quint16 focalLengthIn35mm = 0;                   // 0xA405
    quint16 sceneCaptureType = 0;                    // 0xA406
    quint16 contrast = 0;                            // 0xA408
    quint16 saturation = 0;                          // 0xA409
    quint16 sharpness = 0;                           // 0xA40A
    QString imageUniqueID;                           // 0xA420
    std::array<TRational, 4> lensInfo{};             // 0xA432
    QString lensModel = "n.a.";                      // 0xA434
    TRational gamma;                                 // 0xA500

    // DNG
    QString dngVersion;                           // 0xC612
    QString dngBackwardVersion;                   // 0xC613
    QString uniqueCameraModel = "n.a.";           // 0xC614
    std::array<quint16, 2> blackLevelRepeatDim{}; // 0xC619, both halves of the field
    QList<TRational> blackLevel;                  // 0xC61A: one value read, kept as v/1
    QList<quint32> whiteLevel;                    // 0xC61D: one value read
    QList<quint32> defaultCropOrigin;             // 0xC61F: the first values of the entry
    QList<quint32> defaultCropSize;               // 0xC620
    quint32 bayerGreenSplit = 0;                  // 0xC62D
    TRational antiAliasStrength;                  // 0xC632
};

// The GPS IFD.
struct TGpsValues {
    QString versionId;                    // 0x0000, e.g. "2200"
    QString latitudeRef;                  // 0x0001
    std::array<TRational, 3> latitude{};  // 0x0002 degrees, minutes, seconds
    QString longitudeRef;                 // 0x0003
    std::array<TRational, 3> longitude{}; // 0x0004
    std::array<TRational, 3> timeStamp{}; // 0x0007 hours, minutes, seconds
    QString status;                       // 0x0009
    QString measureMode;                  // 0x000A
    QString mapDatum = "n.a.";            // 0x0012
    QString dateStamp;                    // 0x001D
    quint16 differential = 0;             // 0x001E
};

// The sub-directories of the Leica maker note (M9, M Monochrom).
struct TLeicaValues {
    quint32 contrast = 0;                  // 0x300A
    quint32 sharpening = 0;                // 0x300B
    quint32 saturation = 0;                // 0x300D
    quint32 whiteBalance = 0;              // 0x3033
    quint32 jpegQuality = 0;               // 0x3034
    QString serialNumber = "n.a.";         // 0x3103
    QString firmwareVersion = "n.a.";      // 0x3109
    quint32 baseISO = 0;                   // 0x312A
    quint32 sensorWidth = 0;               // 0x312B
    quint32 sensorHeight = 0;              // 0x312C
    quint32 sensorBitDepth = 0;            // 0x312D
    qint32 cameraTemperature = 0;          // 0x3402, degrees Celsius
    quint32 lensType = 0;                  // 0x3405: lens id << 2 | frame code
    TRational approximateFNumber;          // 0x3406
    double measuredLV = 0.0;               // 0x3407 / 100000
    double externalSensorBrightness = 0.0; // 0x3408 / 100000
};

// The 44-byte record of Sony maker-note tag 0x1003 (sweep panoramas).
struct structSonyPanoramaTag {
    quint32 header = 0;
    quint32 fullWidth = 0;
    quint32 fullHeight = 0;
    quint32 direction = 0; // 0 left or up, 1 right or down
    quint32 cropLeft = 0;
    quint32 cropTop = 0;
    quint32 cropRight = 0;
    quint32 cropBottom = 0;
    quint32 frameWidth = 0;
    quint32 frameHeight = 0;
    quint32 sourceWidth = 0;
};

// Block 0x2010: the same fields in the layouts g, h and i, at other positions.
struct TSony2010Values {
    quint8 dynamicRangeOptimizer = 0;
    quint8 releaseMode3 = 0;
    QString releaseMode2;
    quint8 selfTimer = 0;
    quint8 flashMode = 0;
    quint8 stopsAboveBaseISO = 0; // high byte
    quint8 brightnessValue = 0;   // high byte
    quint8 dynamicRangeOptimizer2 = 0;
    quint8 hdrSetting = 0;
    quint8 exposureCompensation = 0; // high byte
    std::array<quint8, 2> pictureProfile{};
    QString pictureEffect2;
    quint8 quality2 = 0;
    quint8 meteringMode = 0;
    QString exposureProgram;
    std::array<quint16, 3> wbRGBLevels{};
    std::array<quint16, 3> focalLengths{}; // focal length, minimum, maximum
    quint16 sonyISO = 0;
    quint8 lensFormat = 0;
    quint8 lensMount = 0;
    QString lensType2;
    std::array<quint8, 2> distortionCorrParams{}; // present, number
};

// Block 0x9050 in layout a (ILCE-7M2) or b (all others).
struct TSony9050Values {
    quint8 shutter = 0;
    quint8 flashStatus = 0;
    quint32 shutterCount = 0;                   // a: 32 bits at 50; b: 24 bits at 58
    quint16 sonyExposureTime = 0;               // a: 58; b: 70
    quint8 sonyFNumberHigh = 0;                 // a: 61
    quint8 byte63 = 0;                          // b
    QString exposureTimeText;                   // b: the denominator of 1/t
    QString releaseMode;                        // a: 63; b: 75
    QString releaseMode2;                       // a: 103; b: 115
    quint32 shutterCount2 = 0;                  // a: 76
    std::array<quint8, 6> dateTime2{};          // a: 81 to 86
    std::array<quint8, 3> shutterCount2Bytes{}; // b: 82 to 84
    QString pictureEffect2;                     // b: 529
    quint8 lensMount = 0;
    quint8 lensFormat = 0;
    QString lensType2;
    quint8 distortionCorrParamsPresent = 0;
};

// Values of the Sony maker note (ARW files): the directory's tags, then what
// the block routines take out of the (deciphered) data blocks. Texts of the
// blocks stay empty and their numbers 0 when the block is missing, not chosen
// for the model, or too short for the field.
struct TSonyValues {
    // The maker-note directory
    qint32 quality = 0;                            // 0x0102
    TSRational flashExposureComp;                  // 0x0104
    quint32 teleconverter = 0;                     // 0x0105
    quint32 whiteBalanceFineTune = 0;              // 0x0112
    quint32 whiteBalance = 0;                      // 0x0115
    structSonyPanoramaTag panorama;                // 0x1003
    quint32 rating = 0;                            // 0x2002
    quint32 contrast = 0;                          // 0x2004
    quint32 saturation = 0;                        // 0x2005
    quint32 sharpness = 0;                         // 0x2006
    quint32 brightness = 0;                        // 0x2007
    quint32 longExposureNoiseReduction = 0;        // 0x2008
    quint16 highISONoiseReduction = 0;             // 0x2009
    quint32 hdr = 0;                               // 0x200A
    quint32 multiFrameNoiseReduction = 0;          // 0x200B
    quint16 pictureEffect = 0;                     // 0x200E
    qint32 softSkinEffect = 0;                     // 0x200F
    quint32 vignettingCorrection = 0;              // 0x2011
    quint32 lateralChromaticAberration = 0;        // 0x2012
    quint32 distortionCorrectionSetting = 0;       // 0x2013
    quint16 autoPortraitFramed = 0;                // 0x2016
    quint32 flashAction = 0;                       // 0x2017
    quint32 electronicFrontCurtainShutter = 0;     // 0x201A
    quint8 focusMode = 0;                          // 0x201B
    quint8 afAreaModeSetting = 0;                  // 0x201C
    std::array<quint16, 2> flexibleSpotPosition{}; // 0x201D
    quint8 afPointSelected = 0;                    // 0x201E
    quint8 afTracking = 0;                         // 0x2021
    QList<quint8> focalPlaneAFPointsUsed;          // 0x2022
    quint32 multiFrameNREffect = 0;                // 0x2023
    std::array<qint32, 2> wbShiftABGMPrecise{};    // 0x2026
    std::array<quint16, 4> focusLocation{};        // 0x2027
    quint32 variableLowPassFilter = 0;             // 0x2028
    quint16 rawFileType = 0;                       // 0x2029
    quint8 prioritySetInAWB = 0;                   // 0x202B
    QString serialNumber = "n.a.";                 // 0x2031
    std::array<quint8, 4> fileFormat{};            // 0xB000
    quint16 sonyModelID = 0;                       // 0xB001
    QString creativeStyle = "n.a.";                // 0xB020
    quint32 colorTemperature = 0;                  // 0xB021
    quint32 colorCompensationFilter = 0;           // 0xB022
    quint32 sceneMode = 0;                         // 0xB023
    quint32 zoneMatching = 0;                      // 0xB024
    quint32 dynamicRangeOptimizer = 0;             // 0xB025
    quint32 imageStabilization = 0;                // 0xB026
    qint32 colorMode = 0;                          // 0xB029
    QList<quint8> lensSpec;                        // 0xB02A
    QList<quint32> fullImageSize;                  // 0xB02B
    QList<quint32> previewImageSize;               // 0xB02C
    quint16 exposureMode = 0;                      // 0xB041
    quint16 jpegQuality = 0;                       // 0xB047
    qint16 flashLevel = 0;                         // 0xB048
    quint16 releaseMode = 0;                       // 0xB049
    quint16 sequenceNumber = 0;                    // 0xB04A
    quint16 antiBlur = 0;                          // 0xB04B
    quint16 dynamicRangeOptimizer2 = 0;            // 0xB04F
    quint16 highISONoiseReduction2 = 0;            // 0xB050
    quint16 intelligentAuto = 0;                   // 0xB052
    quint16 whiteBalance2 = 0;                     // 0xB054

    // Block 0x202A (focal-plane AF points)
    quint8 focalPlaneAFPointCount = 0;
    std::array<quint16, 2> focalPlaneAFPointArea{};
    std::array<quint16, 2> focalPlaneAFPointLocation1{};

    TSony2010Values block2010;
    TSony9050Values block9050;
    QString apertureText; // from block 0x9050, e.g. "5.6"

    // Block 0x9400
    QString releaseMode9400;
    quint32 shotNumberSincePowerUp = 0;
    quint32 sequenceImageNumber = 0;
    QString sequenceLength;
    quint32 sequenceFileNumber = 0;
    QString sequenceFileLength;
    QString cameraOrientation;
    QString quality9400;
    quint8 modelReleaseYear = 0;

    // Block 0x9401
    QString isoSetting;
    QString isoAutoMin;
    QString isoAutoMax;

    // Block 0x9402
    qint8 ambientTemperature = 0;
    QString focusMode9402;
    QString afAreaMode;
    quint8 focusPosition = 0; // byte 45

    // Block 0x9403
    qint8 cameraTemperature = 0;

    // Block 0x9404
    QString exposureProgram9404;
    QString intelligentAuto9404;
    quint16 lensZoomPosition9404 = 0; // ILCE-7M2
    quint8 focusPosition2 = 0;        // ILCE-7M2

    // Block 0x9405 (16-bit values built with a signed low byte)
    quint16 stopsAboveBaseISO = 0;
    quint16 sonyExposureTime2 = 0;
    std::array<quint16, 2> exposureTime9405{};
    quint16 sonyFNumber = 0;
    quint16 sonyMaxApertureValue = 0;
    quint32 sequenceImageNumber9405 = 0;
    QString releaseMode9405;
    QString pictureEffect9405;
    QString exposureProgram9405;
    quint16 imageWidthMax = 0;
    quint16 imageHeightMax = 0;
    quint8 highISONoiseReduction9405 = 0;
    quint8 longExposureNoiseReduction9405 = 0;
    quint8 creativeStyle9405 = 0;
    quint8 sharpness9405 = 0;
    quint8 distortionCorrParamsPresent9405 = 0;
    quint8 lensFormat9405 = 0;
    quint8 lensMount9405 = 0;
    QString lensType9405;
    quint16 lensZoomPosition = 0;

    // Block 0x9406
    double batteryTemperature = 0.0; // degrees Fahrenheit
    quint8 batteryLevelGrip1 = 0;
    quint8 batteryLevel = 0;
    quint8 batteryLevelGrip2 = 0;

    // Block 0x940C
    QString lensMount2;
    QString lensType3;
    QString cameraEMountVersion;
    QString lensEMountVersion;
    QString lensFirmwareVersion;

    // Block 0x3000 (ShotInfo)
    QString shotDateTime;
    quint16 shotImageHeight = 0;
    quint16 shotImageWidth = 0;
    quint16 facesDetected = 0;
    quint8 faceInfoLength = 0;
    QString metaVersion;
};

#endif // TM9VALUES_H
