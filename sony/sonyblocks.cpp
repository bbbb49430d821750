// Sony's binary data blocks: the byte substitution the camera enciphers them
// with, the camera-model groups that choose a layout, and the routines that
// take single fields out of a block at fixed positions.
//
// Integers inside a block are little-endian whatever the file's byte order.
// A field is read only when it lies wholly inside the block; otherwise the
// stored value keeps its default.

#include "rawfile/tcodetable.h"
#include "rawfile/tm9file.h"
#include "sony/sonylimits.h"

#include <array>
#include <cmath>
#include <initializer_list>
#include <optional>

// Positions of the fields of block 0x2010, per layout.
struct TSony2010Layout {
    int dynamicRangeOptimizer;
    int releaseMode3;
    int releaseMode2; // signed byte
    int selfTimer;
    int flashMode;
    int stopsAboveBaseISO;
    int brightnessValue;
    int dynamicRangeOptimizer2;
    int hdrSetting;
    int exposureCompensation;
    int pictureProfile; // and the byte behind it
    int pictureEffect2; // signed byte
    int quality2;
    int meteringMode;
    int exposureProgram; // signed byte
    int wbRGBLevels;     // three 16-bit values
    int focalLengths;    // three 16-bit values
    int sonyISO;
    int lensFormat;
    int lensMount;
    int lensType2;
    int distortionCorrParams; // two bytes
};

namespace {

constexpr TSony2010Layout k2010g = {80,  524, 528, 536, 540, 547, 549, 552,  556,  561,  582,
                                    587, 600, 604, 605, 612, 812, 836, 6333, 6334, 6335, 6340};
constexpr TSony2010Layout k2010h = {80,  524, 528, 536, 540, 547, 549, 552,  556,  561,  582,
                                    587, 600, 604, 605, 612, 812, 838, 6381, 6382, 6383, 6388};
constexpr TSony2010Layout k2010i = {78,  516, 520, 528, 529, 536, 538, 539,  543,  548,  567,
                                    572, 583, 587, 588, 594, 778, 800, 6129, 6130, 6131, 6136};

enum class Field {
    U8,
    S8,
    U16,
    U16SignedLow, // low byte taken as signed, the sum modulo 65536
    U24,
    U32,
};

int fieldWidth(Field kind)
{
    switch (kind) {
    case Field::U8:
    case Field::S8: return 1;
    case Field::U16:
    case Field::U16SignedLow: return 2;
    case Field::U24: return 3;
    case Field::U32: return 4;
    }
    return 4;
}

// The field at position, or nothing when it does not lie wholly inside the block.
std::optional<qint64> field(const QByteArray &block, int position, Field kind)
{
    const int width = fieldWidth(kind);
    if (position < 0 || position > block.size() - width)
        return std::nullopt;
    const auto byte = [&](int i) { return quint32(quint8(block[position + i])); };
    switch (kind) {
    case Field::U8: return byte(0);
    case Field::S8: return qint8(byte(0));
    case Field::U16: return byte(0) | byte(1) << 8;
    case Field::U16SignedLow: return quint16(qint8(byte(0)) + 256 * int(byte(1)));
    case Field::U24: return byte(0) | byte(1) << 8 | byte(2) << 16;
    case Field::U32: return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
    }
    return std::nullopt;
}

template <typename T> void store(const QByteArray &block, int position, Field kind, T &out)
{
    if (const auto value = field(block, position, kind))
        out = T(*value);
}

// Consecutive fields of one kind, from position on.
template <typename T, std::size_t N>
void storeAll(const QByteArray &block, int position, Field kind, std::array<T, N> &out)
{
    for (std::size_t i = 0; i < N; ++i)
        store(block, position + int(i) * fieldWidth(kind), kind, out[i]);
}

// The field turned into text by a decoder of codes.
template <typename Code>
void storeText(const QByteArray &block, int position, Field kind, QString &out,
               QString (*decode)(Code))
{
    if (const auto value = field(block, position, kind))
        out = decode(Code(*value));
}

// Bytes taken one by one as characters, up to the first zero.
void storeChars(const QByteArray &block, int first, int last, QString &out)
{
    if (first >= block.size())
        return;
    out.clear();
    for (int i = first; i <= last && i < block.size() && block[i] != '\0'; ++i)
        out.append(QChar(quint8(block[i])));
}

bool isOneOf(const QString &model, std::initializer_list<const char *> models)
{
    for (const char *name : models) {
        if (model == QLatin1String(name))
            return true;
    }
    return false;
}

// The deciphering table: the camera replaces each byte b below 249 by b^3 mod
// 249, a one-to-one map since 249 = 3 * 83 and 3 divides neither 2 nor 82.
const std::array<quint8, 256> &decipherTable()
{
    static const std::array<quint8, 256> table = [] {
        std::array<quint8, 256> t{};
        for (int c = 0; c < 256; ++c)
            t[c] = quint8(c);
        for (int b = 0; b < 249; ++b)
            t[b * b * b % 249] = quint8(b);
        return t;
    }();
    return table;
}

// 0x9400 SequenceLength
constexpr TCodeText kSequenceLength[] = {
    {0, "Continuous"},
    {1, "1 shot"},
    {2, "2 shots"},
    {3, "3 shots"},
    {4, "4 shots"},
    {5, "5 shots"},
    {6, "6 shots"},
    {7, "7 shots"},
    {8, "8 shots"},
    {9, "9 shots"},
    {10, "10 shots"},
    {12, "12 shots"},
    {100, "Continuous - iSweep Panorama"},
    {200, "Continuous - Sweep Panorama"},
};

// 0x9400 SequenceLength (files)
constexpr TCodeText kSequenceFileLength[] = {
    {0, "Continuous"}, {1, "1 file"},  {2, "2 files"},   {3, "3 files"},
    {5, "5 files"},    {9, "9 files"}, {10, "10 files"},
};

// 0x9400 CameraOrientation
constexpr TCodeText kCameraOrientation[] = {
    {1, "Horizontal (normal) "},
    {3, "Rotate 180 "},
    {6, "Rotate 90 CW "},
    {8, "Rotate 270 CW"},
};

// 0x9400 Quality2
constexpr TCodeText kQuality9400[] = {
    {0, "JPEG"},
    {1, "RAW"},
    {2, "RAW + JPEG"},
    {3, "JPEG + MPO"},
};

// 0x9402 FocusMode
constexpr TCodeText kFocusMode9402[] = {
    {0, "Manual"}, {2, "AF-S"}, {3, "AF-C"}, {4, "AF-A"}, {6, "DMF"},
};

// 0x9402 AFAreaMode, selected by the stored byte plus one (255 is manual)
constexpr TCodeText kAFAreaMode9402[] = {
    {0, "Manual"},
    {1, "Multi"},
    {2, "Center"},
    {3, "Spot"},
    {4, "Flexible Spot"},
    {11, "Selective (for Miniature effect)"},
    {12, "Zone"},
    {13, "Expanded Flexible Spot"},
    {15, "Tracking"},
    {16, "Face Tracking"},
    {21, "Animal Eye Tracking"},
};

// 0x9404 IntelligentAuto
constexpr TCodeText kOffOn[] = {{0, "Off"}, {1, "On"}};

// 0x940C LensMount2
constexpr TCodeText kLensMount2[] = {
    {0, "Unknown"},
    {1, "A-mount (1)"},
    {4, "E-mount"},
    {5, "A-mount (5)"},
};

// 0x9401: where the ISO settings lie, by the block's version byte
struct TVersionPosition {
    int version;
    int position;
};
constexpr TVersionPosition kIsoPosition9401[] = {
    {68, 1588},  {73, 1590},  {74, 1590},  {78, 1612},  {90, 1619},  {93, 1656},
    {94, 1656},  {100, 1720}, {103, 1720}, {124, 1758}, {125, 1758}, {144, 1437},
    {146, 1437}, {148, 1176}, {152, 1186}, {154, 1186},
};
constexpr int kIsoPosition9401Other = 1767;

} // namespace

void TM9File::decipher(unsigned char *data, int length)
{
    const std::array<quint8, 256> &table = decipherTable();
    for (int i = 0; i < length; ++i)
        data[i] = table[data[i]];
}

bool TM9File::isInSony2010g_Group(const QString &model)
{
    return isOneOf(model, {"ILCE-7M2"});
}

bool TM9File::isInSony9050a_Group(const QString &model)
{
    return isInSony2010g_Group(model);
}

bool TM9File::isInSony2010h_Group(const QString &model)
{
    return isOneOf(model, {"ILCE-7SM2", "ILCE-7RM2"});
}

bool TM9File::isInSony2010i_Group(const QString &model)
{
    return isOneOf(model, {"ILCE-7M3", "ILCE-7RM3", "ILCE-7RM4", "ILCE-9", "ILCE-9M2"});
}

bool TM9File::isInSony9050b_Group(const QString &model)
{
    return isOneOf(model,
                   {"ILCE-7SM2", "ILCE-7M3", "ILCE-7RM3", "ILCE-7RM4", "ILCE-9", "ILCE-9M2"});
}

bool TM9File::isInSony2022_Group(const QString &model)
{
    return isOneOf(model, {"ILCE-7M2", "ILCE-7SM2", "ILCE-7RM2"});
}

bool TM9File::isInSony202A_Group(const QString &model)
{
    return isInSony2010i_Group(model);
}

void TM9File::verarbeiteSony2010Tags(const QByteArray &b, const TSony2010Layout &at)
{
    TSony2010Values &v = m_sony.block2010;
    store(b, at.dynamicRangeOptimizer, Field::U8, v.dynamicRangeOptimizer);
    store(b, at.releaseMode3, Field::U8, v.releaseMode3);
    storeText(b, at.releaseMode2, Field::S8, v.releaseMode2, &mnSony_ReleaseMode2);
    store(b, at.selfTimer, Field::U8, v.selfTimer);
    store(b, at.flashMode, Field::U8, v.flashMode);
    store(b, at.stopsAboveBaseISO, Field::U8, v.stopsAboveBaseISO);
    store(b, at.brightnessValue, Field::U8, v.brightnessValue);
    store(b, at.dynamicRangeOptimizer2, Field::U8, v.dynamicRangeOptimizer2);
    store(b, at.hdrSetting, Field::U8, v.hdrSetting);
    store(b, at.exposureCompensation, Field::U8, v.exposureCompensation);
    storeAll(b, at.pictureProfile, Field::U8, v.pictureProfile);
    storeText(b, at.pictureEffect2, Field::S8, v.pictureEffect2, &mnSony_PictureEffect2);
    store(b, at.quality2, Field::U8, v.quality2);
    store(b, at.meteringMode, Field::U8, v.meteringMode);
    storeText(b, at.exposureProgram, Field::S8, v.exposureProgram, &mnSony_ExposureProgram3);
    storeAll(b, at.wbRGBLevels, Field::U16, v.wbRGBLevels);
    storeAll(b, at.focalLengths, Field::U16, v.focalLengths);
    store(b, at.sonyISO, Field::U16, v.sonyISO);
    store(b, at.lensFormat, Field::U8, v.lensFormat);
    store(b, at.lensMount, Field::U8, v.lensMount);
    storeText(b, at.lensType2, Field::U16, v.lensType2, &mnSony_LensType2);
    storeAll(b, at.distortionCorrParams, Field::U8, v.distortionCorrParams);
}

void TM9File::verarbeiteSony2010gTags(const QByteArray &block)
{
    verarbeiteSony2010Tags(block, k2010g);
}

void TM9File::verarbeiteSony2010hTags(const QByteArray &block)
{
    verarbeiteSony2010Tags(block, k2010h);
}

void TM9File::verarbeiteSony2010iTags(const QByteArray &block)
{
    verarbeiteSony2010Tags(block, k2010i);
}

void TM9File::verarbeiteSony9050aTags(const QByteArray &b)
{
    TSony9050Values &v = m_sony.block9050;
    store(b, 34, Field::U8, v.shutter);
    store(b, 49, Field::U8, v.flashStatus);
    store(b, 50, Field::U32, v.shutterCount);
    store(b, 58, Field::U16, v.sonyExposureTime);
    store(b, 61, Field::U8, v.sonyFNumberHigh);
    storeText(b, 63, Field::U8, v.releaseMode, &mnSony_ReleaseMode2);
    store(b, 76, Field::U32, v.shutterCount2);
    storeAll(b, 81, Field::U8, v.dateTime2);
    storeText(b, 103, Field::U8, v.releaseMode2, &mnSony_ReleaseMode2);
    store(b, 261, Field::U8, v.lensMount);
    store(b, 262, Field::U8, v.lensFormat);
    storeText(b, 263, Field::U16, v.lensType2, &mnSony_LensType2);
    store(b, 267, Field::U8, v.distortionCorrParamsPresent);
}

void TM9File::verarbeiteSony9050bTags(const QByteArray &b)
{
    TSony9050Values &v = m_sony.block9050;
    storeText(b, 529, Field::U8, v.pictureEffect2, &mnSony_PictureEffect2);
    store(b, 40, Field::U8, v.shutter);
    store(b, 57, Field::U8, v.flashStatus);
    store(b, 58, Field::U24, v.shutterCount);
    store(b, 63, Field::U8, v.byte63);
    if (const auto time = field(b, 70, Field::U16)) {
        v.sonyExposureTime = quint16(*time);
        if (*time != 0) {
            // t = 2^(16 - v/256) s, shown as the denominator of 1/t
            const double perSecond = std::exp2(double(*time) / 256.0 - 16.0);
            v.exposureTimeText = QString::number(std::trunc(perSecond), 'f', 0);
        }
    }
    if (const auto aperture = field(b, 72, Field::U16)) {
        const double fNumber = std::exp2((double(*aperture) / 256.0 - 16.0) / 2.0);
        m_sony.apertureText = QStringLiteral("%1").arg(fNumber, 0, 'f', 1);
    }
    storeText(b, 75, Field::U8, v.releaseMode, &mnSony_ReleaseMode2);
    storeAll(b, 82, Field::U8, v.shutterCount2Bytes);
    storeText(b, 115, Field::U8, v.releaseMode2, &mnSony_ReleaseMode2);
    store(b, 261, Field::U8, v.lensMount);
    store(b, 262, Field::U8, v.lensFormat);
    storeText(b, 263, Field::U16, v.lensType2, &mnSony_LensType2);
    store(b, 267, Field::U8, v.distortionCorrParamsPresent);
}

void TM9File::verarbeiteSony9400cTags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    storeText(b, 9, Field::U8, v.releaseMode9400, &mnSony_ReleaseMode2);
    // These models count only in the first byte; the three behind it are not part of it.
    const bool counterInOneByte =
        isOneOf(m_exif.model, {"ILCE-7M3", "ILCE-7RM3", "ILCE-9", "ILCE-9M2"});
    if (field(b, 10, Field::U32))
        store(b, 10, counterInOneByte ? Field::U8 : Field::U32, v.shotNumberSincePowerUp);
    store(b, 18, Field::U32, v.sequenceImageNumber);
    if (const auto length = field(b, 22, Field::U8))
        v.sequenceLength = lookup(kSequenceLength, *length, "unbekannt");
    store(b, 26, Field::U32, v.sequenceFileNumber);
    if (const auto length = field(b, 30, Field::U8))
        v.sequenceFileLength = lookup(kSequenceFileLength, *length, "unbekannt");
    if (const auto orientation = field(b, 41, Field::U8))
        v.cameraOrientation = lookup(kCameraOrientation, *orientation, "unbekannt");
    if (const auto quality = field(b, 42, Field::U8))
        v.quality9400 = lookup(kQuality9400, *quality, "unbekannt");
    store(b, 83, Field::U8, v.modelReleaseYear);
}

void TM9File::verarbeiteSony9401Tags(const QByteArray &b)
{
    const auto version = field(b, 0, Field::U8);
    if (!version)
        return;
    int position = kIsoPosition9401Other;
    for (const TVersionPosition &row : kIsoPosition9401) {
        if (row.version == *version)
            position = row.position;
    }
    storeText(b, position, Field::U8, m_sony.isoSetting, &isoSetting2010);
    storeText(b, position + 2, Field::U8, m_sony.isoAutoMin, &isoSetting2010);
    storeText(b, position + 4, Field::U8, m_sony.isoAutoMax, &isoSetting2010);
}

void TM9File::verarbeiteSony9402Tags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    store(b, 4, Field::S8, v.ambientTemperature);
    if (const auto mode = field(b, 22, Field::U8))
        v.focusMode9402 = lookup(kFocusMode9402, *mode & 0x7F, "unbekannt");
    if (const auto area = field(b, 23, Field::U8))
        v.afAreaMode = lookup(kAFAreaMode9402, (*area + 1) % 256, "unbekannt");
    store(b, 45, Field::U8, v.focusPosition);
}

void TM9File::verarbeiteSony9403Tags(const QByteArray &b)
{
    store(b, 5, Field::S8, m_sony.cameraTemperature);
}

void TM9File::verarbeiteSony9404Tags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    const bool sevenM2 = m_exif.model == QLatin1String("ILCE-7M2");
    storeText(b, sevenM2 ? 12 : 11, Field::S8, v.exposureProgram9404, &mnSony_ExposureProgram3);
    if (const auto flag = field(b, sevenM2 ? 14 : 13, Field::U8))
        v.intelligentAuto9404 = lookup(kOffOn, *flag, "unbekannt");
    if (sevenM2) {
        store(b, 30, Field::U16, v.lensZoomPosition9404);
        store(b, 32, Field::U8, v.focusPosition2);
    }
}

void TM9File::verarbeiteSony9405bTags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    store(b, 10, Field::U16SignedLow, v.stopsAboveBaseISO);
    store(b, 14, Field::U16SignedLow, v.sonyExposureTime2);
    storeAll(b, 16, Field::U16SignedLow, v.exposureTime9405);
    store(b, 20, Field::U16SignedLow, v.sonyFNumber);
    store(b, 22, Field::U16SignedLow, v.sonyMaxApertureValue);
    store(b, 36, Field::U32, v.sequenceImageNumber9405);
    storeText(b, 52, Field::U8, v.releaseMode9405, &mnSony_ReleaseMode2);
    storeText(b, 46, Field::U8, v.pictureEffect9405, &mnSony_PictureEffect2);
    storeText(b, 48, Field::U8, v.exposureProgram9405, &mnSony_ExposureProgram3);
    store(b, 62, Field::U16SignedLow, v.imageWidthMax);
    store(b, 64, Field::U16SignedLow, v.imageHeightMax);
    store(b, 66, Field::U8, v.highISONoiseReduction9405);
    store(b, 68, Field::U8, v.longExposureNoiseReduction9405);
    store(b, 74, Field::U8, v.creativeStyle9405);
    store(b, 82, Field::U8, v.sharpness9405);
    store(b, 90, Field::U8, v.distortionCorrParamsPresent9405);
    store(b, 93, Field::U8, v.lensFormat9405);
    store(b, 94, Field::U8, v.lensMount9405);
    storeText(b, 96, Field::U16SignedLow, v.lensType9405, &mnSony_LensType2);
    store(b, 834, Field::U16, v.lensZoomPosition);
}

void TM9File::verarbeiteSony9406Tags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    store(b, 5, Field::U8, v.batteryTemperature);
    store(b, 6, Field::U8, v.batteryLevelGrip1);
    store(b, 7, Field::U8, v.batteryLevel);
    store(b, 8, Field::U8, v.batteryLevelGrip2);
}

void TM9File::verarbeiteSony940cTags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    if (const auto mount = field(b, 8, Field::U8))
        v.lensMount2 = lookup(kLensMount2, *mount, "unbekannt");
    storeText(b, 9, Field::U16SignedLow, v.lensType3, &mnSony_LensType2);
    // Versions: the high byte, ".", the low byte, both in hexadecimal.
    const auto version = [&b](int low, QString &out) {
        const auto minor = field(b, low, Field::U8);
        const auto major = field(b, low + 1, Field::U8);
        if (minor && major)
            out = QString::number(*major, 16) + QLatin1Char('.') + QString::number(*minor, 16);
    };
    version(11, v.cameraEMountVersion);
    version(13, v.lensEMountVersion);
    version(20, v.lensFirmwareVersion);
}

void TM9File::verarbeiteSonyShotInfoTags(const QByteArray &b)
{
    TSonyValues &v = m_sony;
    storeChars(b, 10, 24, v.shotDateTime);
    store(b, 26, Field::U16, v.shotImageHeight);
    store(b, 28, Field::U16, v.shotImageWidth);
    store(b, 48, Field::U16, v.facesDetected);
    store(b, 50, Field::U8, v.faceInfoLength);
    storeChars(b, 52, 66, v.metaVersion);
}

void TM9File::verarbeiteSony202ATags(long long offset, int length)
{
    const QByteArray b = readSonyBlock(offset, quint64(qMax(length, 0)));
    store(b, 1, Field::U8, m_sony.focalPlaneAFPointCount);
    storeAll(b, 2, Field::U16, m_sony.focalPlaneAFPointArea);
    storeAll(b, 6, Field::U16, m_sony.focalPlaneAFPointLocation1);
}

void TM9File::readFocalPlaneAFPointsUsed(long long offset, int length)
{
    const QByteArray b = readSonyBlock(
        offset, std::min<quint64>(quint64(qMax(length, 0)), limits::kMaxSonyArrayValues));
    m_sony.focalPlaneAFPointsUsed.clear();
    for (const char point : b)
        m_sony.focalPlaneAFPointsUsed.append(quint8(point));
}

void TM9File::readSonyPanoramaTag(long long offset, structSonyPanoramaTag *record)
{
    const QByteArray b = readSonyBlock(offset, sizeof(structSonyPanoramaTag));
    std::array<quint32, 11> values{};
    storeAll(b, 0, Field::U32, values);
    *record = {values[0], values[1], values[2], values[3], values[4], values[5],
               values[6], values[7], values[8], values[9], values[10]};
}
