// The Sony maker-note directory of ARW files: a TIFF-style directory of
// Sony's own tags whose values are stored, or whose out-of-line data blocks
// are read, deciphered where the camera enciphered them, and handed to the
// block routines of sonyblocks.cpp.

#include "rawfile/limits.h"
#include "rawfile/tcodetable.h"
#include "rawfile/tiffentry.h"
#include "rawfile/tm9file.h"
#include "sony/sonylimits.h"

#include <algorithm>

namespace {

// Sony maker-note tags
constexpr TCodeText kSonyTagNames[] = {
    {0x0010, "CameraInfo (-> Sony CameraInfoTags)"},
    {0x0020, "FocusInfo  (-> Sony FocusInfoTags)"},
    {0x0102, "Quality"},
    {0x0104, "FlashExposureComp"},
    {0x0105, "Teleconverter"},
    {0x0112, "WhiteBalanceFineTune"},
    {0x0114, "CameraSettings (-> Sony CameraSettingsTags)"},
    {0x0115, "WhiteBalance"},
    {0x0116, "ExtraInfo (-> Sony ExtraInfoTags)"},
    {0x0E00, "PrintIM"},
    {0x1000, "MultiBurstMode"},
    {0x1001, "MultiBurstImageWidth"},
    {0x1002, "MultiBurstImageHeight"},
    {0x1003, "Panorama"},
    {0x2001, "PreviewImage"},
    {0x2002, "Rating"},
    {0x2004, "Contrast"},
    {0x2005, "Saturation"},
    {0x2006, "Sharpness"},
    {0x2007, "Brightness"},
    {0x2008, "LongExposureNoiseReduction"},
    {0x2009, "HighISONoiseReduction"},
    {0x200A, "HDR"},
    {0x200B, "MultiFrameNoiseReduction"},
    {0x200E, "PictureEffect"},
    {0x200F, "SoftSkinEffect"},
    {0x2010, "-> Sony Tag2010a-Tag2010H Tags)"},
    {0x2011, "VignettingCorrection"},
    {0x2012, "LateralChromaticAberration"},
    {0x2013, "DistortionCorrectionSetting"},
    {0x2014, "WBShiftAB_GM"},
    {0x2016, "AutoPortraitFramed"},
    {0x2017, "FlashAction"},
    {0x201B, "FocusMode"},
    {0x201C, "AFAreaModeSetting"},
    {0x201D, "FlexibleSpotPosition"},
    {0x201E, "AFPointSelected"},
    {0x2020, "-> Sony AFInfo2 Tags"},
    {0x2022, "FocalPlaneAFPointsUsed"},
    {0x2026, "WBSHift_AB_GM_Precise"},
    {0x2027, "FocusLocation"},
    {0x2028, "VariableLowPassFilter"},
    {0x2029, "RawFileType"},
    {0x202B, "PrioritySetInAWB"},
    {0x2031, "SerialNumber"},
    {0x3000, "-> Sony ShotInfo Tags"},
    {0x900B, "-> Sony Tag900b Tags"},
    {0x9050, "-> Sony Tag9050 Tags"},
    {0x9400, "-> Sony Tag9400c Tags"},
    {0x9402, "-> Sony Tag9402 Tags"},
    {0x9403, "-> Sony Tag9403 Tags"},
    {0x9404, "-> Sony Tag9404b Tags"},
    {0x9405, "-> Sony Tag9405b Tags"},
    {0x9406, "-> Sony Tag9406 Tags"},
    {0x940A, "-> Sony Tag940a Tags"},
    {0x940C, "-> Sony Tag940c Tags"},
    {0x940E, "-> Sony AFInfo Tags"},
    {0xB000, "FileFormat"},
    {0xB001, "SonyModelID"},
    {0xB020, "CreativeStyle"},
    {0xB021, "ColorTemperature"},
    {0xB022, "ColorCompensationFilter"},
    {0xB023, "SceneMode"},
    {0xB024, "ZoneMatching"},
    {0xB025, "DynamicRangeOptimizer"},
    {0xB026, "ImageStabilization"},
    {0xB027, "LensType (-> Sony LensType Values)"},
    {0xB028, "MinoltaMakerNote (-> Minolta Values)"},
    {0xB029, "ColorMode"},
    {0xB02A, "LensSpec"},
    {0xB02B, "FullImageSize"},
    {0xB02C, "PreviewImageSize"},
    {0xB040, "Macro"},
    {0xB041, "ExposureMode"},
    {0xB042, "FocusMode"},
    {0xB043, "AFAreaMode"},
    {0xB044, "AFIlluminator"},
    {0xB047, "JPEGQuality"},
    {0xB048, "FlashLevel"},
    {0xB049, "ReleaseMode"},
    {0xB04A, "SequenceNumber"},
    {0xB04B, "Anti-Blur"},
    {0xB04E, "FocusMode"},
    {0xB04F, "DynamicRangeOptimizer"},
    {0xB050, "HighISONoiseReduction2"},
    {0xB052, "IntelligentAuto"},
    {0xB054, "WhiteBalance"},
};

} // namespace

QString TM9File::sonyTagName(int tag)
{
    return QStringLiteral("[Sony] ") + lookup(kSonyTagNames, tag, "--- unbekannt ---");
}

QByteArray TM9File::readSonyBlock(qint64 position, quint64 length)
{
    const qint64 back = m_reader.pos();
    m_reader.seek(position);
    QByteArray block = m_reader.readBytes(qint64(std::min(length, limits::kMaxSonyBlockLength)));
    m_reader.seek(back);
    return block;
}

void TM9File::processMakerNoteSony()
{
    TByteReader &r = m_reader;
    TSonyValues &v = m_sony;
    TEntryLength entryLength;

    // The reading rules of the dispatch table: each entry consumes its 12 bytes.
    const auto U8 = [&r] {
        const quint8 value = r.readU8();
        r.readU8();
        r.readU16();
        return value;
    };
    const auto U16 = [&r] {
        const quint16 value = r.readU16();
        r.readU16();
        return value;
    };
    const auto U32 = [&r] { return r.readU32(); };
    const auto offset = [&] { return qint64(r.readU32()) + m_tiffBase; };
    const auto text = [&] { return readIFDStringEntry(offset()); };
    // count values of one width at the offset, the first kMaxSonyArrayValues of them.
    const auto valuesAt = [&](quint32 count, auto &out, auto read) {
        const qint64 back = r.pos() + 4;
        r.seek(offset());
        out.clear();
        for (quint32 i = 0; i < std::min(count, limits::kMaxSonyArrayValues); ++i)
            out.append(read());
        r.seek(back);
    };
    // A fixed number of values at the offset.
    const auto arrayAt = [&](auto &out, auto read) {
        const qint64 back = r.pos() + 4;
        r.seek(offset());
        for (auto &value : out)
            value = read();
        r.seek(back);
    };

    const quint32 entryCount = r.entriesInData(r.readU16());
    for (quint32 i = 0; i < entryCount; ++i) {
        const TEntryHead entry = readEntryHead(r, entryLength, &sonyTagName, QLatin1Char('0'));
        m_sonyTags.insert(entry.tag);
        const quint64 length = entryLength.current();
        // The block at the offset, deciphered where the camera enciphered it.
        const auto block = [&](bool enciphered) {
            QByteArray data = readSonyBlock(offset(), length);
            if (enciphered)
                decipher(reinterpret_cast<unsigned char *>(data.data()), int(data.size()));
            return data;
        };
        const int clippedLength = int(std::min<quint64>(length, limits::kMaxSonyBlockLength));
        const QString &model = m_exif.model;

        switch (entry.tag) {
        case 0x0102: v.quality = qint32(U32()); break;
        case 0x0104:
            readIFDRationalSEntry(offset(), &v.flashExposureComp.num, &v.flashExposureComp.den);
            break;
        case 0x0105: v.teleconverter = U32(); break;
        case 0x0112: v.whiteBalanceFineTune = U32(); break;
        case 0x0115: v.whiteBalance = U32(); break;
        case 0x1003: readSonyPanoramaTag(offset(), &v.panorama); break;
        case 0x2002: v.rating = U32(); break;
        case 0x2004: v.contrast = U32(); break;
        case 0x2005: v.saturation = U32(); break;
        case 0x2006: v.sharpness = U32(); break;
        case 0x2007: v.brightness = U32(); break;
        case 0x2008: v.longExposureNoiseReduction = U32(); break;
        case 0x2009: v.highISONoiseReduction = U16(); break;
        case 0x200A: v.hdr = U32(); break;
        case 0x200B: v.multiFrameNoiseReduction = U32(); break;
        case 0x200E: v.pictureEffect = U16(); break;
        case 0x200F: v.softSkinEffect = qint32(U32()); break;
        case 0x2010: {
            const QByteArray data = block(true);
            if (model == QLatin1String("ILCE-7M2"))
                verarbeiteSony2010gTags(data);
            else if (model == QLatin1String("ILCE-7SM2") || model == QLatin1String("ILCE-7RM2"))
                verarbeiteSony2010hTags(data);
            else if (isInSony2010i_Group(model))
                verarbeiteSony2010iTags(data);
            break;
        }
        case 0x2011: v.vignettingCorrection = U32(); break;
        case 0x2012: v.lateralChromaticAberration = U32(); break;
        case 0x2013: v.distortionCorrectionSetting = U32(); break;
        case 0x2016: v.autoPortraitFramed = U16(); break;
        case 0x2017: v.flashAction = U32(); break;
        case 0x201A: v.electronicFrontCurtainShutter = U32(); break;
        case 0x201B: v.focusMode = U8(); break;
        case 0x201C: v.afAreaModeSetting = U8(); break;
        case 0x201D:
            v.flexibleSpotPosition[0] = r.readU16();
            v.flexibleSpotPosition[1] = r.readU16();
            break;
        case 0x201E: v.afPointSelected = U8(); break;
        case 0x2021: v.afTracking = U8(); break;
        case 0x2022: readFocalPlaneAFPointsUsed(offset(), clippedLength); break;
        case 0x2023: v.multiFrameNREffect = U32(); break;
        case 0x2026: arrayAt(v.wbShiftABGMPrecise, [&r] { return r.readS32(); }); break;
        case 0x2027: arrayAt(v.focusLocation, [&r] { return r.readU16(); }); break;
        case 0x2028: v.variableLowPassFilter = U32(); break;
        case 0x2029: v.rawFileType = U16(); break;
        case 0x202A: verarbeiteSony202ATags(offset(), clippedLength); break;
        case 0x202B: v.prioritySetInAWB = U8(); break;
        case 0x2031: v.serialNumber = text(); break;
        case 0x3000: verarbeiteSonyShotInfoTags(block(false)); break;
        case 0x9050:
            if (model == QLatin1String("ILCE-7M2"))
                verarbeiteSony9050aTags(block(true));
            else
                verarbeiteSony9050bTags(block(true));
            break;
        case 0x9400: verarbeiteSony9400cTags(block(true)); break;
        case 0x9401: verarbeiteSony9401Tags(block(true)); break;
        case 0x9402: verarbeiteSony9402Tags(block(true)); break;
        case 0x9404: verarbeiteSony9404Tags(block(true)); break;
        case 0x9405: verarbeiteSony9405bTags(block(true)); break;
        case 0x9403: // deciphered, but nothing in it is evaluated
        case 0x9406: block(true); break;
        case 0x940C: verarbeiteSony940cTags(block(true)); break;
        case 0xB000:
            for (quint8 &byte : v.fileFormat)
                byte = r.readU8();
            break;
        case 0xB001: v.sonyModelID = U16(); break;
        case 0xB020: v.creativeStyle = text(); break;
        case 0xB021: v.colorTemperature = U32(); break;
        case 0xB022: v.colorCompensationFilter = U32(); break;
        case 0xB023: v.sceneMode = U32(); break;
        case 0xB024: v.zoneMatching = U32(); break;
        case 0xB025: v.dynamicRangeOptimizer = U32(); break;
        case 0xB026: v.imageStabilization = U32(); break;
        case 0xB029: v.colorMode = qint32(U32()); break;
        case 0xB02A: valuesAt(entry.count, v.lensSpec, [&r] { return r.readU8(); }); break;
        case 0xB02B: valuesAt(entry.count, v.fullImageSize, [&r] { return r.readU32(); }); break;
        case 0xB02C: valuesAt(entry.count, v.previewImageSize, [&r] { return r.readU32(); }); break;
        case 0xB041: v.exposureMode = U16(); break;
        case 0xB047: v.jpegQuality = U16(); break;
        case 0xB048: v.flashLevel = qint16(U16()); break;
        case 0xB049: v.releaseMode = U16(); break;
        case 0xB04A: v.sequenceNumber = U16(); break;
        case 0xB04B: v.antiBlur = U16(); break;
        case 0xB04F: v.dynamicRangeOptimizer2 = U16(); break;
        case 0xB050: v.highISONoiseReduction2 = U16(); break;
        case 0xB052: v.intelligentAuto = U16(); break;
        case 0xB054: v.whiteBalance2 = U16(); break;
        default: r.skip(4); break;
        }
    }
}

bool TM9File::processSonyMakerNoteAt(qint64 offset)
{
    openData();
    recogniseContainer();
    bool inside = !m_reader.view(offset, 1).isEmpty();
    if (m_fileTyp == 1) {
        // IFD0 alone, for the model; the chain behind it is not walked.
        m_firstIfdOffset = m_reader.readU32();
        const qint64 ifd0 = qint64(m_firstIfdOffset) + m_tiffBase;
        walkNestedIfd(ifd0, &TM9File::processIFD);
    }
    if (inside)
        walkNestedIfd(offset, &TM9File::processMakerNoteSony);
    closeData();
    return inside;
}
