#ifndef TM9FILE_H
#define TM9FILE_H

// TM9File reads one raw file (a Leica M9 / M Monochrom DNG) and answers
// questions about it. It never writes the file.
//
// processFile() maps the file, walks its TIFF directories once and keeps every
// recognised value in the structs of tm9values.h; the decoders below turn those
// values into display text. Offsets and counts come from the file and are not
// trusted: reads past the end give zeros, and the limits in limits.h end
// every walk of a hostile file quickly.
//
// The methods are defined by subsystem:
//   rawfile/  loading, directory walkers, entry readers, pictures, GPS, preflight
//             (the pictures themselves, QPixmaps, in rawfile/images.cpp: the
//             library tolvik_pictures, which needs Qt Gui; all else needs Qt Core)
//   exif/     EXIF decoders, composite values, Leica maker note, tag names
//   sony/     Sony maker note: walker, enciphered blocks, decoders

#include "rawfile/tbytereader.h"
#include "rawfile/tm9values.h"

#include <QByteArray>
#include <QDateTime>
#include <QSet>
#include <QSize>
#include <QString>

#include <array>
#include <memory>

class QImage;
class QFile;
class QPixmap;
struct TSony2010Layout;

class TM9File {
public:
    TM9File();
    explicit TM9File(QString path);
    // A file whose bytes are already in memory, under the given name; it
    // reads as the file would.
    TM9File(QString path, QByteArray bytes);
    ~TM9File();
    TM9File(const TM9File &) = delete;
    TM9File &operator=(const TM9File &) = delete;

    // --- loading (rawfile/tm9file.cpp) ---
    bool processFile();
    bool isValidModel() const;
    int fileTyp() const { return m_fileTyp; }
    QString fileName() const;
    QString fileNameComplete() const { return m_path; }
    bool isBigEndian() const { return m_bigEndian; }
    bool isHeaderValid() const { return m_headerValid; }
    qint64 tiffBase() const { return m_tiffBase; }
    int ifdCount() const { return m_ifdCounter; }
    // What processFile found: whether the file was there to read, and the
    // size it had then.
    bool isFileFound() const { return m_fileFound; }
    // Why the file could not be read: the system's reason ("No such file or
    // directory", "Permission denied") or "not a regular file"; empty when
    // it was opened.
    QString openError() const { return m_openError; }
    qint64 fileSize() const { return m_fileSize; }
    // The file ends before data its directories point to (a copy broken
    // off): the values read are kept, the rest read as zeros.
    bool isIncomplete() const { return m_dataEnd > m_fileSize; }
    // The file still as processFile read it: not removed, not rewritten.
    // Pictures are made only from such a file.
    bool isFileUnchanged() const;
    // Whether the Sony maker note holds the tag.
    bool hasSonyTag(quint16 tag) const { return m_sonyTags.contains(tag); }
    // Whether the Leica maker note's sub-directories hold the tag.
    bool hasLeicaTag(quint16 tag) const { return m_leicaTags.contains(tag); }

    // --- directory walkers (rawfile/) ---
    void processIFD();
    void processGPSInfoIFD();
    void processPanasonicSubDirIFD();
    void processMakerNoteLeica(); // exif/leicamakernote.cpp

    // --- entry readers (rawfile/ifdwalker.cpp); positions are absolute ---
    QString readIFDStringEntry(qint64 position);
    void readIFDRationalEntry(qint64 position, unsigned int *numerator, unsigned int *denominator);
    void readIFDRationalSEntry(qint64 position, int *numerator, int *denominator);
    void readIFDRationalArrayEntry(qint64 position, unsigned int *numerators,
                                   unsigned int *denominators, int n);

    // --- preflight (rawfile/preflight.cpp) ---
    bool processFilePreflight();
    void processIFDPreflight();

    // --- embedded pictures ---
    // Where they lie and how large they are (rawfile/picturesizes.cpp, Qt Core):
    // processFile and the preflight pass only note these, so a reader that
    // never shows a picture (tolvik-info, worker threads) never pays for one.
    bool hasFullSizeImage() const;
    bool hasThumbnailImage() const;
    bool hasPreviewImage() const;
    QSize previewSize() const;   // empty when there is no preview; builds nothing
    QSize thumbnailSize() const; // from the JPEG header the preflight pass read
    // The pictures (rawfile/images.cpp, library tolvik_pictures, Qt Gui), made
    // on first use on the GUI thread; making one reopens the file.
    QPixmap *extractPreviewPic(unsigned int position, unsigned int length);
    QPixmap *extractJPEGImage(unsigned int position, unsigned int length);
    void extractFullSizeImage(QPixmap *target);
    QPixmap *previewImage();
    QPixmap *thumbnailImage();
    QPixmap *previewImageScaled(int width, int height);
    // The preview made anew as an image, on any thread (one thread per
    // object); null when there is none. Not kept.
    QImage previewPicture();

    // --- stored values, one struct per directory ---
    const TExifValues &exif() const { return m_exif; }
    const TGpsValues &gps() const { return m_gps; }
    const TLeicaValues &leica() const { return m_leica; }
    const TSonyValues &sony() const { return m_sony; }
    quint32 panasonicSubDirPosition(int index) const;

    // --- tag names (exif/tagnames.cpp, rawfile/gps.cpp, exif/leicadecoders.cpp) ---
    static QString exifTagName(int tag);
    static QString gpsTagName(int tag);
    static QString leicaTagName(int tag);

    // --- GPS (rawfile/gps.cpp) ---
    QString gps_0x0002_LatitudeAsString() const;
    QString gps_0x0004_LongitudeAsString() const;
    QString gps_0x0007_TimeStampAsString() const;
    double gps_0x0002_LatitudeAsKML() const;
    double gps_0x0004_LongitudeAsKML() const;
    static double grad2dezimalgrad(double degrees, double minutes, double seconds);

    // --- standard EXIF decoders (exif/exifdecoders.cpp) ---
    QString exif_0xFE_SubfileTypeAsString() const;
    QString exif_0x103_CompressionAsString() const;
    QString exif_0x106_PhotometricInterpretationAsString() const;
    QString exif_0x112_OrientationAsString() const;
    QString exif_0x11A_XResolutionAsString() const;
    QString exif_0x11B_YResolutionAsString() const;
    QString exif_0x11C_PlanarConfigurationAsString() const;
    QString exif_0x128_ResolutionUnitAsString() const;
    QString exif_0x7000_SonyRawFileTypeAsString() const;
    QString exif_0x7010_SonyToneCurveAsString() const;
    QString exif_0x7034_ChromaticAberrationCorrectionAsString() const;
    QString exif_0x7036_DistortionCorrectionAsString() const;
    QString exif_0x74c7_SonyCropTopLeftAsString() const;
    QString exif_0x74c8_SonyCropSizeAsString() const;
    QString exif_0x828D_CFARepeatPatternDimAsString() const;
    QString exif_0x828E_CFAPattern2AsString() const;
    QString exif_0x829A_ExposureTimeAsString() const;
    QString exif_0x829A_ExposureTimeAsString2() const;
    QString exif_0x829D_FNumberAsString() const;
    QString exif_0x8822_ExpProgAsString() const;
    QString exif_0x8827_ISOAsString() const;
    QString exif_0x8830_SensitivityTypeAsString() const;
    QString exif_0x9102_CompressedBitsPerPixelAsString() const;
    QString exif_0x9201_ShutterSpeedValueAsString() const;
    QString exif_0x9203_BrightnessValueAsString() const;
    double exif_0x9203_BrightnessValueAsReal() const;
    QString exif_0x9204_ExpCompensationAsString() const;
    double exif_0x9204_ExpCompensationAsReal() const;
    QString exif_0x9205_MaxApertureValueAsString() const;
    double exif_0x9205_MaxApertureValueAsReal() const;
    QString exif_0x9207_MeteringModeAsString() const;
    QString exif_0x9208_LightSourceAsString() const;
    QString exif_0x9209_FlashAsString() const;
    QString exif_0x920A_FocalLengthAsString() const;
    double exif_0x920A_FocalLengthAsReal() const;
    QString exif_0xA001_ColorSpaceAsString() const;
    QString exif_0xA300_FileSourceAsString() const;
    QString exif_0xA301_SceneTypeAsString() const;
    QString exif_0xA401_CustomRenderedAsString() const;
    QString exif_0xA402_ExposureModeAsString() const;
    QString exif_0xA403_WhiteBalanceAsString() const;
    QString exif_0xA404_DigitalZoomRatioAsString() const;
    double exif_0xA404_DigitalZoomRatioAsReal() const;
    QString exif_0xA406_SceneCaptureTypeAsString() const;
    QString exif_0xA408_ContrastAsString() const;
    QString exif_0xA409_SaturationAsString() const;
    QString exif_0xA40A_SharpnessAsString() const;
    QString exif_0xA432_LensInfoAsString() const;
    QString exif_0xA500_GammaAsString() const;
    double exif_0xA500_GammaAsReal() const;
    QString exif_0xC619_BlackLevelRepeatDimAsString() const;
    QString exif_0XC61A_BlackLevelAsString() const;
    QString exif_0xC61D_WhiteLevelAsString() const;
    QString exif_0xC61F_DefaultCropOriginAsString() const;
    QString exif_0xC620_DefaultCropSizeAsString() const;
    QString exif_0xC632_AntiAliasStrengthAsString() const;
    double exif_0xC632_AntiAliasStrengthAsReal() const;

    // --- composite values (exif/composite.cpp) ---
    double composite_FocusDistance() const;
    double composite_ScaleFactor35() const;
    double composite_CircleOfConfusion() const;
    double composite_HyperfocalDistance() const;
    double composite_LightValue() const;

    // --- Leica decoders (exif/leicadecoders.cpp) ---
    QString leicaFrameSelectorAsString() const;
    QString leicaLensTypeAsString() const;
    QString leicaImageUniqueIDAsString() const;

    // --- Sony maker note (sony/) ---
    // Walks the maker-note directory from the stream's position (its entry
    // count). IFD0 must have been read: blocks 0x2010 and 0x9050 need the model.
    void processMakerNoteSony(); // sony/sonymakernote.cpp
    // Reads IFD0 of the file for the model, then walks the Sony maker-note
    // directory at the absolute offset. False when the file cannot be read or
    // the offset lies outside it. No model is required.
    bool processSonyMakerNoteAt(qint64 offset);
    static QString sonyTagName(int tag);

    // Enciphered blocks (sony/sonyblocks.cpp)
    static void decipher(unsigned char *data, int length);
    static bool isInSony2010g_Group(const QString &model);
    static bool isInSony9050a_Group(const QString &model);
    static bool isInSony2010h_Group(const QString &model);
    static bool isInSony2010i_Group(const QString &model);
    static bool isInSony9050b_Group(const QString &model);
    static bool isInSony2022_Group(const QString &model);
    static bool isInSony202A_Group(const QString &model);
    void verarbeiteSony2010gTags(const QByteArray &block);
    void verarbeiteSony2010hTags(const QByteArray &block);
    void verarbeiteSony2010iTags(const QByteArray &block);
    void verarbeiteSony9050aTags(const QByteArray &block);
    void verarbeiteSony9050bTags(const QByteArray &block);
    void verarbeiteSony9400cTags(const QByteArray &block);
    void verarbeiteSony9401Tags(const QByteArray &block);
    void verarbeiteSony9402Tags(const QByteArray &block);
    void verarbeiteSony9403Tags(const QByteArray &block);
    void verarbeiteSony9404Tags(const QByteArray &block);
    void verarbeiteSony9405bTags(const QByteArray &block);
    void verarbeiteSony9406Tags(const QByteArray &block);
    void verarbeiteSony940cTags(const QByteArray &block);
    void verarbeiteSonyShotInfoTags(const QByteArray &block);
    void verarbeiteSony202ATags(long long offset, int length);
    void readFocalPlaneAFPointsUsed(long long offset, int length);
    void readSonyPanoramaTag(long long offset, structSonyPanoramaTag *record);

    // Decoders of the stored values (sony/sonydecoders.cpp)
    QString mnSony_0x0102_QualityAsString() const;
    QString mnSony_0x0104_FlashExposureCompNumAsString() const;
    double mnSony_0x0104_FlashExposureCompNumAsReal() const;
    QString mnSony_0x0105_TeleconverterAsString() const;
    QString mnSony_0x0115_WhiteBalanceAsString() const;
    QString mnSony_0x2008_LongExposureNoiseReductionAsString() const;
    QString mnSony_0x2009_HighISONoiseReductionAsString() const;
    QString mnSony_0x200A_HDRAsString() const;
    QString mnSony_0x200B_MultiFrameNoiseReductionAsString() const;
    QString mnSony_0x200E_PictureEffectAsString() const;
    QString mnSony_0x200F_SoftSkinEffectAsString() const;
    QString mnSony_0x2011_VignettingCorrectionAsString() const;
    QString mnSony_0x2012_LateralChromaticAberationAsString() const;
    QString mnSony_0x2013_DistortionCorrectionSettingAsString() const;
    QString mnSony_0x2016_AutoPortraitFramedAsString() const;
    QString mnSony_0x2017_FlashActionAsString() const;
    QString mnSony_0x201A_ElectronicFrontCurtainShutterAsString() const;
    QString mnSony_0x201B_FocusModeAsString() const;
    QString mnSony_0x201C_AFAreaModeSettingAsString() const;
    QString mnSony_0x201D_FlexibleSpotPositionAsString() const;
    QString mnSony_0x201E_AFZoneSelectedAsString() const;
    QString mnSony_0x2021_AFTrackingAsString() const;
    QString mnSony_0x2022_FocalPlaneAFPointsUsedAsString() const;
    QString mnSony_0x2023_MultiFrameNREffectAsString() const;
    QString mnSony_0x2027_FocusLocationAsString() const;
    QString mnSony_0x2028_VariableLowPassFilterAsString() const;
    QString mnSony_0x2029_RawFileTypeAsString() const;
    QString mnSony_0x202B_PrioritySetInAWBAsString() const;
    QString mnSony_0xB000_FileFormatAsString() const;
    QString mnSony_0xB001_SonyModelIDAsString() const;
    QString mnSony_0xB023_SceneModeAsString() const;
    QString mnSony_0xB024_ZoneMatchingAsString() const;
    QString mnSony_0xB025_DynamicRangeOptimizerAsString() const;
    QString mnSony_0xB026_ImageStabilizationAsString() const;
    QString mnSony_0xB029_ColorModeAsString() const;
    QString mnSony_0xB02A_LensSpecAsString() const;
    QString mnSony_0xB02B_FullImageSizeAsString() const;
    QString mnSony_0xB02C_PreviewImageSizeAsString() const;
    QString mnSony_0xB041_ExposureModeAsString() const;
    QString mnSony_0xB047_JPEGQualityAsString() const;
    QString mnSony_0xB048_FlashLevelAsString() const;
    QString mnSony_0xB049_ReleaseModeAsString() const;
    QString mnSony_0xB04A_SequenceNumberAsString() const;
    QString mnSony_0xB04B_AntiBlurAsString() const;
    QString mnSony_0xB04F_DynamicRangeOptimizerAsString() const;
    QString mnSony_0xB050_HighISONoiseReduction2AsString() const;
    QString mnSony_0xB052_IntelligentAutoAsString() const;
    QString mnSony_0xB054_WhiteBalanceAsString() const;
    double mnSony_0x09406_BatteryTemperatureCelsius() const;
    // Codes found in the blocks
    static QString mnSony_ReleaseMode2(unsigned short code);
    static QString mnSony_PictureEffect2(unsigned short code);
    static QString mnSony_ExposureProgram3(unsigned short code);
    static QString mnSony_LensType2(unsigned short code);
    static QString mnSony_DynamicRangeOptimizer(unsigned short code);
    static QString isoSetting2010(int code);
    static double fahrenheit2Celsius(int f);

private:
    QImage previewRgb(unsigned int position, unsigned int length);
    friend class TM9FileTestAccess;

    void openFile();
    void recogniseContainer();
    void openData();
    void closeData();
    // Runs read with the file's bytes at hand, reopening the file when
    // processFile has already closed it.
    template <typename Read> auto withData(Read read);
    template <std::size_t N> void readRationalArray(qint64 position, std::array<TRational, N> &out)
    {
        std::array<unsigned int, N> nums{}, dens{};
        readIFDRationalArrayEntry(position, nums.data(), dens.data(), int(N));
        for (std::size_t i = 0; i < N; ++i)
            out[i] = {nums[i], dens[i]};
    }
    QSize checkedPreviewSize() const; // IFD0's picture size, empty for one no preview can be
    void walkChain(void (TM9File::*walker)());
    void walkNestedIfd(qint64 position, void (TM9File::*walker)());
    void walkPanasonicSubDirs();             // those the Leica maker note pointed to
    void noteSubIfdDataEnd(qint64 position); // the raw strip's end, nothing kept
    QByteArray readSonyBlock(qint64 position, quint64 length);
    void verarbeiteSony2010Tags(const QByteArray &block, const TSony2010Layout &layout);

    // File access
    QString m_path;
    std::unique_ptr<QFile> m_file;
    QByteArray m_bytes;    // the file in memory, when there is no QFile
    qint64 m_fileSize = 0; // when it was opened
    QDateTime m_modified;  // when it was opened
    bool m_fileFound = false;
    qint64 m_dataEnd = 0; // one past the farthest byte the directories point to
    TByteReader m_reader;

    // Container state
    int m_fileTyp = 0;
    bool m_bigEndian = false;
    bool m_headerValid = false;
    qint64 m_tiffBase = 0;
    quint32 m_firstIfdOffset = 0;
    quint32 m_nextIfdOffset = 0;
    int m_ifdCounter = 0;
    std::array<quint32, 4>
        m_panasonicSubDir{};       // from maker-note tags 0x3000, 0x3100, 0x3400, 0x3900
    QSet<qint64> m_ifdsInProgress; // nested directories being walked
    int m_ifdDepth = 0;
    int m_directoriesWalked = 0; // in this pass

    // Pictures
    bool m_previewFound = false; // an accepted TIFF file: IFD0's strip is the preview
    QSize m_thumbnailSize;       // set by the preflight pass
    // The pictures made so far; rawfile/images.cpp makes them and hands in
    // their deleter, so that the reader itself does without Qt Gui.
    struct TPictures;
    std::unique_ptr<TPictures, void (*)(TPictures *)> m_pictures{nullptr, nullptr};

    // Tag values
    TExifValues m_exif;
    TGpsValues m_gps;
    TLeicaValues m_leica;
    TSonyValues m_sony;
    QSet<quint16> m_sonyTags;
    QSet<quint16> m_leicaTags;
    QString m_openError;
};

#endif // TM9FILE_H
