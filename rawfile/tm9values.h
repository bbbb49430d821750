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

// Values of Sony maker-note blocks that the composite values read.
struct TSonyValues {
    quint8 focusPosition = 0; // byte 45 of block 0x9402
    QString apertureText;     // from block 0x9050, e.g. "5.6"
};

#endif // TM9VALUES_H
