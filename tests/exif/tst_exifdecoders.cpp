// The standard TIFF, Exif and DNG decoders, fed from files.

#include "tests/exif/loadfixture.h"

#include <QtTest>

using namespace exiftest;
using fixture::Ifd;

namespace {

Build nothing()
{
    return [](Ifd &, Ifd &) {};
}

Build ifd0(std::function<void(Ifd &)> add)
{
    return [add](Ifd &ifd0, Ifd &) { add(ifd0); };
}

Build exif(std::function<void(Ifd &)> add)
{
    return [add](Ifd &, Ifd &exif) { add(exif); };
}

Build exifShort(quint16 tag, quint16 value)
{
    return exif([=](Ifd &d) { d.shortValue(tag, value); });
}

Build exifRational(quint16 tag, quint32 num, quint32 den)
{
    return exif([=](Ifd &d) { d.rational(tag, num, den); });
}

Build exifSRational(quint16 tag, qint32 num, qint32 den)
{
    return exif([=](Ifd &d) { d.srational(tag, num, den); });
}

Build ifd0Shorts(quint16 tag, const QList<quint16> &values)
{
    return ifd0([=](Ifd &d) { d.shorts(tag, values); });
}

Build ifd0Longs(quint16 tag, const QList<quint32> &values)
{
    return ifd0([=](Ifd &d) { d.longs(tag, values); });
}

Build lensInfo(const QList<std::pair<quint32, quint32>> &values)
{
    return exif([=](Ifd &d) { d.rationals(0xA432, values); });
}

} // namespace

class TstExifDecoders : public QObject {
    Q_OBJECT

private:
    fixture::TempFiles m_files;

    std::unique_ptr<TM9File> loadFromData()
    {
        QFETCH(Build, build);
        auto file = load(m_files, m9File(build));
        if (!file)
            qFatal("cannot write the fixture file");
        return file;
    }

    void textColumns()
    {
        QTest::addColumn<Build>("build");
        QTest::addColumn<TextDecoder>("decoder");
        QTest::addColumn<QString>("expected");
    }

    void runText()
    {
        QFETCH(TextDecoder, decoder);
        QFETCH(QString, expected);
        const auto file = loadFromData();
        QCOMPARE((file.get()->*decoder)(), expected);
    }

private slots:
    void codeTables_data();
    void codeTables() { runText(); }
    void exposureTime_data();
    void exposureTime();
    void numberTexts_data();
    void numberTexts() { runText(); }
    void realValues_data();
    void realValues();
    void arrayTexts_data();
    void arrayTexts() { runText(); }
};

void TstExifDecoders::codeTables_data()
{
    textColumns();
    const auto row = [](const char *name, Build build, TextDecoder decoder, const char *text) {
        QTest::newRow(name) << build << decoder << QString::fromLatin1(text);
    };
    using F = TM9File;
    row("SubfileType 0 keeps its trailing blank", ifd0Longs(0x00FE, {0}),
        &F::exif_0xFE_SubfileTypeAsString, "Full-resolution Image ");
    row("SubfileType 8 unknown", ifd0Longs(0x00FE, {8}), &F::exif_0xFE_SubfileTypeAsString, "n.a");
    row("Compression 65535", ifd0Shorts(0x0103, {65535}), &F::exif_0x103_CompressionAsString,
        "Pentax PEF Compressed");
    row("Compression 11 unknown", ifd0Shorts(0x0103, {11}), &F::exif_0x103_CompressionAsString,
        "unbekannt");
    row("Photometric CFA", ifd0Shorts(0x0106, {32803}),
        &F::exif_0x106_PhotometricInterpretationAsString, "Color Filter Array ");
    row("Photometric 7 has no text", ifd0Shorts(0x0106, {7}),
        &F::exif_0x106_PhotometricInterpretationAsString, "unbekannt");
    row("Orientation missing", nothing(), &F::exif_0x112_OrientationAsString, "unbekannt");
    row("ExpProgram 3", exifShort(0x8822, 3), &F::exif_0x8822_ExpProgAsString,
        "Av [Aperture-priority]");
    row("ExpProgram 10 unknown", exifShort(0x8822, 10), &F::exif_0x8822_ExpProgAsString, "n.a.");
    row("SensitivityType 7", exifShort(0x8830, 7), &F::exif_0x8830_SensitivityTypeAsString,
        "Standard Output Sensitivity, Recommended Exposure Index and ISO Speed");
    row("MeteringMode 0", exifShort(0x9207, 0), &F::exif_0x9207_MeteringModeAsString, "n.a");
    row("MeteringMode 6", exifShort(0x9207, 6), &F::exif_0x9207_MeteringModeAsString, "Partiell");
    row("MeteringMode 255", exifShort(0x9207, 255), &F::exif_0x9207_MeteringModeAsString, "Other");
    row("LightSource 5 unknown", exifShort(0x9208, 5), &F::exif_0x9208_LightSourceAsString,
        "unbekannt");
    row("Flash 0x10", exifShort(0x9209, 0x10), &F::exif_0x9209_FlashAsString, "Off, Did not fire");
    row("Flash 0x11 not split into bits", exifShort(0x9209, 0x11), &F::exif_0x9209_FlashAsString,
        "unbekannt");
    row("Flash 95", exifShort(0x9209, 95), &F::exif_0x9209_FlashAsString,
        "Auto, Fired, Red-eye reduction, Return detected");
    row("FileSource 3", exif([](Ifd &d) { d.longValue(0xA300, 3); }),
        &F::exif_0xA300_FileSourceAsString, "Digital Camera");
    row("SceneType 1", exif([](Ifd &d) { d.longValue(0xA301, 1); }),
        &F::exif_0xA301_SceneTypeAsString, "Directly photographed");
    row("Sharpness 3 unknown", exifShort(0xA40A, 3), &F::exif_0xA40A_SharpnessAsString,
        "unbekannt");
}

void TstExifDecoders::exposureTime_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("expected2");
    const auto row = [](const char *name, quint32 num, quint32 den, const char *text,
                        const char *text2) {
        QTest::newRow(name) << exifRational(0x829A, num, den) << QString::fromLatin1(text)
                            << QString::fromLatin1(text2);
    };
    row("1/125", 1, 125, "1/125", "125");
    row("2/250 equals 1/125", 2, 250, "1/125", "125");
    row("1/16000 first row", 1, 16000, "1/16000", "16000");
    row("1/6 last fraction", 1, 6, "1/6", "6");
    row("1/15 not nominal", 1, 15, "n.a", "n.a");
    row("1/3 not nominal", 1, 3, "n.a", "n.a");
    row("8/1001 close to 1/125", 8, 1001, "n.a", "n.a");
    row("3/10", 3, 10, "0,3", "0,3");
    row("1/1", 1, 1, "1", "1,0");
    row("13/10 whole seconds first", 13, 10, "1", "1,3");
    row("4/1", 4, 1, "4", "4,0");
    row("25/10", 25, 10, "2", "2,5");
    row("7/1", 7, 1, "7", "n.a");
    row("30/1", 30, 1, "30", "30,0");
    row("60/1", 60, 1, "60", "n.a");
    row("zero numerator", 0, 125, "n.A.", "n.A.");
    row("zero denominator", 1, 0, "n.A.", "n.A.");
    QTest::newRow("missing") << nothing() << QStringLiteral("n.A.") << QStringLiteral("n.A.");
}

void TstExifDecoders::exposureTime()
{
    QFETCH(QString, expected);
    QFETCH(QString, expected2);
    const auto file = loadFromData();
    QCOMPARE(file->exif_0x829A_ExposureTimeAsString(), expected);
    QCOMPARE(file->exif_0x829A_ExposureTimeAsString2(), expected2);
}

void TstExifDecoders::numberTexts_data()
{
    textColumns();
    const auto row = [](const char *name, Build build, TextDecoder decoder, const char *text) {
        QTest::newRow(name) << build << decoder << QString::fromLatin1(text);
    };
    using F = TM9File;
    row("FNumber 28/10", exifRational(0x829D, 28, 10), &F::exif_0x829D_FNumberAsString, "2.8");
    row("FNumber 8/1", exifRational(0x829D, 8, 1), &F::exif_0x829D_FNumberAsString, "8");
    row("FNumber 0/0", exifRational(0x829D, 0, 0), &F::exif_0x829D_FNumberAsString, "0.0");
    row("FNumber 3 digits", exifRational(0x829D, 1234, 100), &F::exif_0x829D_FNumberAsString,
        "12.3");
    row("ISO missing", nothing(), &F::exif_0x8827_ISOAsString, "0");
    row("ExpCompensation -2/3", exifSRational(0x9204, -2, 3),
        &F::exif_0x9204_ExpCompensationAsString, "-0.7");
    row("ExpCompensation 0/1", exifSRational(0x9204, 0, 1), &F::exif_0x9204_ExpCompensationAsString,
        "0.0");
    row("ExpCompensation 1/0", exifSRational(0x9204, 1, 0), &F::exif_0x9204_ExpCompensationAsString,
        "0.0");
    row("MaxAperture always empty", exifRational(0x9205, 1, 1),
        &F::exif_0x9205_MaxApertureValueAsString, "");
    row("ShutterSpeed fraction dropped", exifRational(0x9201, 7965784, 1000000),
        &F::exif_0x9201_ShutterSpeedValueAsString, "7");
    row("ShutterSpeed 0/1", exifRational(0x9201, 0, 1), &F::exif_0x9201_ShutterSpeedValueAsString,
        "n.a");
    row("Brightness 8 digits", exifSRational(0x9203, 1, 3), &F::exif_0x9203_BrightnessValueAsString,
        "0.33333333");
    row("Brightness missing", nothing(), &F::exif_0x9203_BrightnessValueAsString, "n.a");
    row("CompressedBitsPerPixel 7/2", exifRational(0x9102, 7, 2),
        &F::exif_0x9102_CompressedBitsPerPixelAsString, "3");
    row("CompressedBitsPerPixel 0/1", exifRational(0x9102, 0, 1),
        &F::exif_0x9102_CompressedBitsPerPixelAsString, "n.a");
    row("FocalLength 245/10 truncated", exifRational(0x920A, 245, 10),
        &F::exif_0x920A_FocalLengthAsString, "24");
    row("FocalLength 50/0", exifRational(0x920A, 50, 0), &F::exif_0x920A_FocalLengthAsString, "0");
    row("YResolution 300/0", ifd0([](Ifd &d) { d.rational(0x011B, 300, 0); }),
        &F::exif_0x11B_YResolutionAsString, "0");
    row("DigitalZoomRatio 0/0", exifRational(0xA404, 0, 0),
        &F::exif_0xA404_DigitalZoomRatioAsString, "0");
    row("AntiAliasStrength 3/2", ifd0([](Ifd &d) { d.rational(0xC632, 3, 2); }),
        &F::exif_0xC632_AntiAliasStrengthAsString, "1");
    row("Gamma 22/10", exifRational(0xA500, 22, 10), &F::exif_0xA500_GammaAsString, "2.2");
    row("Gamma missing", nothing(), &F::exif_0xA500_GammaAsString, "0.0");
}

void TstExifDecoders::realValues_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<RealDecoder>("decoder");
    QTest::addColumn<double>("expected");
    using F = TM9File;
    QTest::newRow("Brightness 25/10 whole steps")
        << exifSRational(0x9203, 25, 10) << RealDecoder(&F::exif_0x9203_BrightnessValueAsReal)
        << 2.0;
    QTest::newRow("Brightness -25/10 toward zero")
        << exifSRational(0x9203, -25, 10) << RealDecoder(&F::exif_0x9203_BrightnessValueAsReal)
        << -2.0;
    QTest::newRow("Brightness smallest / -1")
        << exifSRational(0x9203, INT32_MIN, -1)
        << RealDecoder(&F::exif_0x9203_BrightnessValueAsReal) << 2147483648.0;
    QTest::newRow("MaxAperture APEX 97/100")
        << exifRational(0x9205, 97, 100) << RealDecoder(&F::exif_0x9205_MaxApertureValueAsReal)
        << 0.97;
    QTest::newRow("FocalLength 245/10")
        << exifRational(0x920A, 245, 10) << RealDecoder(&F::exif_0x920A_FocalLengthAsReal) << 24.5;
    QTest::newRow("FocalLength 0/0")
        << exifRational(0x920A, 0, 0) << RealDecoder(&F::exif_0x920A_FocalLengthAsReal) << 0.0;
    QTest::newRow("Gamma 5/0") << exifRational(0xA500, 5, 0)
                               << RealDecoder(&F::exif_0xA500_GammaAsReal) << 0.0;
}

void TstExifDecoders::realValues()
{
    QFETCH(RealDecoder, decoder);
    QFETCH(double, expected);
    const auto file = loadFromData();
    QCOMPARE((file.get()->*decoder)(), expected);
}

void TstExifDecoders::arrayTexts_data()
{
    textColumns();
    const auto row = [](const char *name, Build build, TextDecoder decoder, const char *text) {
        QTest::newRow(name) << build << decoder << QString::fromLatin1(text);
    };
    using F = TM9File;
    row("BlackLevel 512", ifd0Longs(0xC61A, {512}), &F::exif_0XC61A_BlackLevelAsString, "512");
    row("BlackLevel 0", ifd0Longs(0xC61A, {0}), &F::exif_0XC61A_BlackLevelAsString, "0");
    row("BlackLevel missing", nothing(), &F::exif_0XC61A_BlackLevelAsString, "");
    row("WhiteLevel 4095", ifd0Longs(0xC61D, {4095}), &F::exif_0xC61D_WhiteLevelAsString, "4095 ");
    row("WhiteLevel missing", nothing(), &F::exif_0xC61D_WhiteLevelAsString, "");
    row("DefaultCropOrigin 8 8", ifd0Longs(0xC61F, {8, 8}),
        &F::exif_0xC61F_DefaultCropOriginAsString, "8 8");
    row("DefaultCropSize first two of three", ifd0Longs(0xC620, {5200, 3456, 1}),
        &F::exif_0xC620_DefaultCropSizeAsString, "5200 3456");
    // One value, pointing at the file's first bytes: "MM", 42.
    row("DefaultCropSize one value", ifd0([](Ifd &d) { d.raw(0xC620, fixture::Long, 1, 0); }),
        &F::exif_0xC620_DefaultCropSizeAsString, "1296891946 0");
    row("DefaultCropSize missing", nothing(), &F::exif_0xC620_DefaultCropSizeAsString, "0 0");
    row("CFARepeatPatternDim 2 2", ifd0Shorts(0x828D, {2, 2}),
        &F::exif_0x828D_CFARepeatPatternDimAsString, "2 2");
    row("CFAPattern 2x2",
        ifd0([](Ifd &d) { d.bytes(0x828E, fixture::Byte, QByteArray("\x00\x01\x01\x02", 4)); }),
        &F::exif_0x828E_CFAPattern2AsString, "0 1 1 2 ");
    row("CFAPattern missing", nothing(), &F::exif_0x828E_CFAPattern2AsString, "");
    row("SonyToneCurve", ifd0Shorts(0x7010, {0, 4096, 8192, 16383}),
        &F::exif_0x7010_SonyToneCurveAsString, "0 4096 8192 16383");
    row("SonyCropTopLeft", ifd0Longs(0x74C7, {16, 8}), &F::exif_0x74c7_SonyCropTopLeftAsString,
        "16 8");
    row("LensInfo zoom", lensInfo({{24, 1}, {70, 1}, {28, 10}, {28, 10}}),
        &F::exif_0xA432_LensInfoAsString, "24mm/f2.8 - 70mm/2.8");
    row("LensInfo prime", lensInfo({{50, 1}, {50, 1}, {14, 10}, {14, 10}}),
        &F::exif_0xA432_LensInfoAsString, "50mm/f1.4");
    row("LensInfo prime by truncation", lensInfo({{500, 10}, {505, 10}, {2, 1}, {2, 1}}),
        &F::exif_0xA432_LensInfoAsString, "50mm/f2");
    row("LensInfo unknown apertures", lensInfo({{18, 1}, {55, 1}, {0, 0}, {56, 10}}),
        &F::exif_0xA432_LensInfoAsString, "18mm/f0 - 55mm/5.6");
    row("LensInfo missing", nothing(), &F::exif_0xA432_LensInfoAsString, "0mm/f0");
}

QTEST_MAIN(TstExifDecoders)
#include "tst_exifdecoders.moc"
