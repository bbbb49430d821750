#include "cli/sonymakernote.h"

#include "rawfile/tm9file.h"

#include <cstdio>
#include <optional>

namespace {

// "1234" or "0x4D2"; nothing for other texts (a leading 0 is not octal here).
std::optional<qint64> parseOffset(const QString &text)
{
    bool ok = false;
    const bool hex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const qint64 value = hex ? text.mid(2).toLongLong(&ok, 16) : text.toLongLong(&ok, 10);
    return ok && value >= 0 ? std::optional<qint64>(value) : std::nullopt;
}

} // namespace

const QList<TQuery> &sonyQueries()
{
    static const QList<TQuery> queries = {
        QUERY(mnSony_0x0102_QualityAsString),
        QUERY(mnSony_0x0104_FlashExposureCompNumAsString),
        QUERY(mnSony_0x0104_FlashExposureCompNumAsReal),
        QUERY(mnSony_0x0105_TeleconverterAsString),
        QUERY(mnSony_0x0115_WhiteBalanceAsString),
        QUERY(mnSony_0x2008_LongExposureNoiseReductionAsString),
        QUERY(mnSony_0x2009_HighISONoiseReductionAsString),
        QUERY(mnSony_0x200A_HDRAsString),
        QUERY(mnSony_0x200B_MultiFrameNoiseReductionAsString),
        QUERY(mnSony_0x200E_PictureEffectAsString),
        QUERY(mnSony_0x200F_SoftSkinEffectAsString),
        QUERY(mnSony_0x2011_VignettingCorrectionAsString),
        QUERY(mnSony_0x2012_LateralChromaticAberationAsString),
        QUERY(mnSony_0x2013_DistortionCorrectionSettingAsString),
        QUERY(mnSony_0x2016_AutoPortraitFramedAsString),
        QUERY(mnSony_0x2017_FlashActionAsString),
        QUERY(mnSony_0x201A_ElectronicFrontCurtainShutterAsString),
        QUERY(mnSony_0x201B_FocusModeAsString),
        QUERY(mnSony_0x201C_AFAreaModeSettingAsString),
        QUERY(mnSony_0x201D_FlexibleSpotPositionAsString),
        QUERY(mnSony_0x201E_AFZoneSelectedAsString),
        QUERY(mnSony_0x2021_AFTrackingAsString),
        QUERY(mnSony_0x2022_FocalPlaneAFPointsUsedAsString),
        QUERY(mnSony_0x2023_MultiFrameNREffectAsString),
        QUERY(mnSony_0x2027_FocusLocationAsString),
        QUERY(mnSony_0x2028_VariableLowPassFilterAsString),
        QUERY(mnSony_0x2029_RawFileTypeAsString),
        QUERY(mnSony_0x202B_PrioritySetInAWBAsString),
        QUERY(mnSony_0xB000_FileFormatAsString),
        QUERY(mnSony_0xB001_SonyModelIDAsString),
        QUERY(mnSony_0xB023_SceneModeAsString),
        QUERY(mnSony_0xB024_ZoneMatchingAsString),
        QUERY(mnSony_0xB025_DynamicRangeOptimizerAsString),
        QUERY(mnSony_0xB026_ImageStabilizationAsString),
        QUERY(mnSony_0xB029_ColorModeAsString),
        QUERY(mnSony_0xB02A_LensSpecAsString),
        QUERY(mnSony_0xB02B_FullImageSizeAsString),
        QUERY(mnSony_0xB02C_PreviewImageSizeAsString),
        QUERY(mnSony_0xB041_ExposureModeAsString),
        QUERY(mnSony_0xB047_JPEGQualityAsString),
        QUERY(mnSony_0xB048_FlashLevelAsString),
        QUERY(mnSony_0xB049_ReleaseModeAsString),
        QUERY(mnSony_0xB04A_SequenceNumberAsString),
        QUERY(mnSony_0xB04B_AntiBlurAsString),
        QUERY(mnSony_0xB04F_DynamicRangeOptimizerAsString),
        QUERY(mnSony_0xB050_HighISONoiseReduction2AsString),
        QUERY(mnSony_0xB052_IntelligentAutoAsString),
        QUERY(mnSony_0xB054_WhiteBalanceAsString),
        QUERY(mnSony_0x09406_BatteryTemperatureCelsius),
        QUERY(composite_FocusDistance),
        QUERY(composite_HyperfocalDistance),
    };
    return queries;
}

namespace {

// The computed values, shown only when the file holds what they are computed
// from: the focus position of block 0x9402, the aperture of block 0x9050 and
// the focal lengths of the Exif directory.
struct TComputed {
    const char *name;
    bool (*inputsHeld)(const TM9File &);
};
constexpr TComputed kComputed[] = {
    {"composite_FocusDistance",
     [](const TM9File &file) {
         return file.hasSonyTag(0x9402) && file.exif().focalLengthIn35mm != 0;
     }},
    {"composite_HyperfocalDistance",
     [](const TM9File &file) {
         const TRational &focalLength = file.exif().focalLength;
         return file.hasSonyTag(0x9050) && !file.sony().apertureText.isEmpty() &&
                focalLength.num != 0 && focalLength.den != 0 && file.exif().focalLengthIn35mm != 0;
     }},
};

// A decoder named after its tag ("mnSony_0xB001_...") shows a value only
// when the maker note holds the tag.
bool heldBy(const TM9File &file, const char *name)
{
    for (const TComputed &computed : kComputed) {
        if (qstrcmp(name, computed.name) == 0)
            return computed.inputsHeld(file);
    }
    const QByteArray text(name);
    if (!text.startsWith("mnSony_0x"))
        return true;
    bool number = false;
    const uint tag = text.mid(9, text.indexOf('_', 9) - 9).toUInt(&number, 16);
    return !number || file.hasSonyTag(quint16(tag));
}

} // namespace

int runSonyMakerNote(const TSonyMakerNoteOptions &options, TFormat format)
{
    const std::optional<qint64> offset = parseOffset(options.offset);
    if (!offset) {
        std::fprintf(stderr, "tolvik-info: --sony-makernote needs an offset, not %s\n",
                     qPrintable(options.offset));
        return 2;
    }
    TM9File file(options.path);
    if (!file.processSonyMakerNoteAt(*offset)) {
        std::fprintf(stderr, "%s: offset %lld lies outside the file or the file cannot be read\n",
                     qPrintable(options.path), static_cast<long long>(*offset));
        return 1;
    }
    QList<TRow> rows{{QStringLiteral("processSonyMakerNoteAt"), true},
                     {QStringLiteral("Model:"), file.exif().model}};
    for (const TQuery &query : sonyQueries()) {
        if (heldBy(file, query.name))
            rows.append({QString::fromLatin1(query.name), query.value(file)});
    }
    if (options.all) {
        for (const TQuery &field : storedValues()) {
            if (qstrncmp(field.name, "sony.", 5) == 0)
                rows.append({QString::fromLatin1(field.name), field.value(file)});
        }
    }
    if (format == TFormat::Csv)
        std::fputs(csvHeader(rows).constData(), stdout);
    const QByteArray out = record(format, options.path, rows, true, QString());
    std::fwrite(out.constData(), 1, size_t(out.size()), stdout);
    return 0;
}
