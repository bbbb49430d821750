// The decoders of standard, Leica and composite values, what the walker stores
// for them and the panel's texts: each row writes a small file, reads it as
// the viewer does and compares one text. Then a cross-check with exiftool.

#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"
#include "tests/support/samplem9.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace fixture;
using F = TM9File;
using Read = std::function<QString(const TM9File &)>;
Q_DECLARE_METATYPE(Read)

namespace {

QByteArray inIfd0(const std::function<void(Ifd &)> &add, Order order = Order::Big)
{
    return m9File([=](Ifd &ifd0, Ifd &) { add(ifd0); }, order);
}

QByteArray inExif(const std::function<void(Ifd &)> &add, Order order = Order::Big)
{
    return m9File([=](Ifd &, Ifd &exif) { add(exif); }, order);
}

QByteArray exifRational(quint16 tag, quint32 num, quint32 den)
{
    return inExif([=](Ifd &d) { d.rational(tag, num, den); });
}

QByteArray exifSRational(quint16 tag, qint32 num, qint32 den)
{
    return inExif([=](Ifd &d) { d.srational(tag, num, den); });
}

QByteArray exifShort(quint16 tag, quint16 value)
{
    return inExif([=](Ifd &d) { d.shortValue(tag, value); });
}

QByteArray lensInfo(const Fractions &values)
{
    return inExif([=](Ifd &d) { d.rationals(0xA432, values); });
}

QByteArray sample(const std::function<void(SampleM9 &)> &change)
{
    SampleM9 options;
    change(options);
    return sampleM9Dng(options);
}

template <typename... T> QString joined(const T &...texts)
{
    return QStringList{texts...}.join(QStringLiteral(" | "));
}

Read text(QString (F::*decoder)() const)
{
    return [=](const F &f) { return (f.*decoder)(); };
}

Read real(std::initializer_list<double (F::*)() const> decoders)
{
    const QList<double (F::*)() const> list(decoders);
    return [=](const F &f) {
        QStringList values;
        for (auto decoder : list)
            values.append(QString::number((f.*decoder)(), 'g', 6));
        return values.join(' ');
    };
}

// The panel's rows, or the value of one of them.
Read panel(const QString &label = {}, TValueStyle style = TValueStyle::Specified)
{
    return [=](const F &f) {
        QStringList lines;
        for (const auto &[rowLabel, value] : panelRows(panelTexts(f, style))) {
            if (label.isEmpty() || rowLabel == label)
                lines.append(label.isEmpty() ? rowLabel + ' ' + value : value);
        }
        return lines.join('\n');
    };
}

void row(const char *name, const QByteArray &file, const Read &read, const char *expected)
{
    QTest::newRow(name) << file << read << QString::fromUtf8(expected);
}

} // namespace

class TstExifDecoders : public QObject {
    Q_OBJECT

private slots:
    void decode_data();
    void decode();
    void exiftoolAgrees();
    void exactTexts_data();
    void exactTexts();

private:
    TempFiles m_files;
};

void TstExifDecoders::decode_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Read>("read");
    QTest::addColumn<QString>("expected");
    const Order little = Order::Little;

    // What the walker stores, before any decoder.
    const Read width = [](const F &f) { return QString::number(f.exif().imageWidth); };
    const auto shortWidth = [](Ifd &d) { d.shortValue(0x0100, 320); };
    row("SHORT width, little-endian", inIfd0(shortWidth, little), width, "320");
    row("SHORT width, big-endian, read as LONG", inIfd0(shortWidth), width, "20971520");
    const Read artist = [](const F &f) { return f.exif().artist; };
    row("short text in the field is read at the offset its bytes form",
        inIfd0([](Ifd &d) { d.ascii(0x013B, "ab"); }), artist, "");
    row("text out of line", inIfd0([](Ifd &d) { d.ascii(0x013B, "Anna Berg"); }), artist,
        "Anna Berg");
    // Two files of many values: what is stored, and the texts of arrays.
    const Read stored = [](const F &f) {
        const TExifValues &v = f.exif();
        return joined(v.dngVersion, v.exifVersion, QString::number(v.fileSource),
                      QString::number(v.defaultCropSize.value(2)),
                      QString::number(v.componentsConfiguration[2]), v.userComment,
                      f.exif_0xC620_DefaultCropSizeAsString(),
                      f.exif_0x828D_CFARepeatPatternDimAsString(),
                      f.exif_0xC61D_WhiteLevelAsString());
    };
    row("versions, FileSource's whole field, every crop value, four bytes, UserComment's code",
        m9File([](Ifd &ifd0, Ifd &exif) {
            ifd0.bytes(0xC612, Byte, QByteArray("\1\4\0\0", 4)).longs(0xC620, {5200, 3456, 7});
            ifd0.shorts(0x828D, {2, 3}).longValue(0xC61D, 4095);
            exif.bytes(0x9000, Undefined, "0230").bytes(0xA300, Undefined, "\3");
            exif.bytes(0x9101, Undefined, QByteArray("\1\2\3\0", 4));
            exif.bytes(0x9286, Undefined, QByteArray("ASCII\0\0\0Hello", 13));
        }),
        stored, "1.4.0.0 | 0230 | 50331648 | 7 | 3 | Hello | 5200 3456 | 2 3 | 4095 ");
    const Read littleEndian = [](const F &f) {
        return joined(f.exif_0XC61A_BlackLevelAsString(), f.exif_0x828E_CFAPattern2AsString(),
                      f.exif_0x7010_SonyToneCurveAsString(),
                      f.exif_0x9204_ExpCompensationAsString());
    };
    row("black level, CFA pattern from the field, SHORTs, signed, little-endian",
        m9File(
            [](Ifd &ifd0, Ifd &exif) {
                ifd0.longValue(0xC61A, 512).bytes(0x828E, Byte, QByteArray("\0\1\1\2", 4));
                ifd0.shorts(0x7010, {0, 4096, 8192, 16383});
                exif.srational(0x9204, -2, 3);
            },
            little),
        littleEndian, "512 | 0 1 1 2  | 0 4096 8192 16383 | -0.7");

    // Every decoder of a value the file does not hold.
    const Read missing = [](const F &f) {
        return joined(f.exif_0x829A_ExposureTimeAsString(), f.exif_0x9203_BrightnessValueAsString(),
                      f.exif_0x9102_CompressedBitsPerPixelAsString(), f.exif_0xA500_GammaAsString(),
                      f.exif_0XC61A_BlackLevelAsString(), f.exif_0xC620_DefaultCropSizeAsString(),
                      f.exif_0x828E_CFAPattern2AsString(), f.exif_0xA432_LensInfoAsString(),
                      f.leicaImageUniqueIDAsString());
    };
    row("nothing stored", m9File([](Ifd &, Ifd &) {}), missing,
        "n.A. | n.a | n.a | 0.0 |  | 0 0 |  | 0mm/f0 | 0");

    // Code tables: a quirk or the fallback of each kind.
    const Read metering = text(&F::exif_0x9207_MeteringModeAsString);
    row("SubfileType 0 keeps its trailing blank", inIfd0([](Ifd &d) { d.longValue(0x00FE, 0); }),
        text(&F::exif_0xFE_SubfileTypeAsString), "Full-resolution Image ");
    row("Compression 11 unknown", inIfd0([](Ifd &d) { d.shortValue(0x0103, 11); }),
        text(&F::exif_0x103_CompressionAsString), "unbekannt");
    row("ExpProgram 10 unknown", exifShort(0x8822, 10), text(&F::exif_0x8822_ExpProgAsString),
        "n.a.");
    row("MeteringMode 6", exifShort(0x9207, 6), metering, "Partiell");
    row("MeteringMode 0 unknown", exifShort(0x9207, 0), metering, "n.a");
    row("Flash 0x11 not split into bits", exifShort(0x9209, 0x11),
        text(&F::exif_0x9209_FlashAsString), "unbekannt");

    // ExposureTime: both texts.
    const Read times = [](const F &f) {
        return f.exif_0x829A_ExposureTimeAsString() + " | " + f.exif_0x829A_ExposureTimeAsString2();
    };
    row("exposure 1/125", exifRational(0x829A, 1, 125), times, "1/125 | 125");
    row("exposure 2/250 equals 1/125", exifRational(0x829A, 2, 250), times, "1/125 | 125");
    row("exposure 1/15 is no nominal time", exifRational(0x829A, 1, 15), times, "n.a | n.a");
    row("exposure 3/10 with a comma", exifRational(0x829A, 3, 10), times, "0,3 | 0,3");
    row("exposure 13/10: whole seconds first", exifRational(0x829A, 13, 10), times, "1 | 1,3");
    row("exposure 7/1: whole, not nominal", exifRational(0x829A, 7, 1), times, "7 | n.a");
    row("exposure 0/125", exifRational(0x829A, 0, 125), times, "n.A. | n.A.");
    row("exposure 1/0", exifRational(0x829A, 1, 0), times, "n.A. | n.A.");

    // Number texts and reals.
    const Read fNumber = text(&F::exif_0x829D_FNumberAsString);
    const Read compensation = text(&F::exif_0x9204_ExpCompensationAsString);
    const Read shutter = text(&F::exif_0x9201_ShutterSpeedValueAsString);
    const Read focal = text(&F::exif_0x920A_FocalLengthAsString);
    const Read brightness = real({&F::exif_0x9203_BrightnessValueAsReal});
    row("FNumber 28/10", exifRational(0x829D, 28, 10), fNumber, "2.8");
    row("FNumber 0/0", exifRational(0x829D, 0, 0), fNumber, "0.0");
    row("ExpCompensation 1/0", exifSRational(0x9204, 1, 0), compensation, "0.0");
    row("MaxAperture text always empty", exifRational(0x9205, 1, 1),
        text(&F::exif_0x9205_MaxApertureValueAsString), "");
    row("ShutterSpeed fraction dropped", exifRational(0x9201, 7965784, 1000000), shutter, "7");
    row("ShutterSpeed 0/1", exifRational(0x9201, 0, 1), shutter, "n.a");
    row("FocalLength text truncated", exifRational(0x920A, 245, 10), focal, "24");
    row("FocalLength 50/0", exifRational(0x920A, 50, 0), focal, "0");
    row("Gamma 22/10", exifRational(0xA500, 22, 10), text(&F::exif_0xA500_GammaAsString), "2.2");
    row("Brightness 25/10 in whole steps", exifSRational(0x9203, 25, 10), brightness, "2");
    row("Brightness -25/10 toward zero", exifSRational(0x9203, -25, 10), brightness, "-2");
    row("Brightness smallest / -1", exifSRational(0x9203, INT32_MIN, -1), brightness,
        "2.14748e+09");

    // Arrays.
    // One value, pointing at the file's first bytes: "MM", 42.
    row("DefaultCropSize one value", inIfd0([](Ifd &d) { d.raw(0xC620, Long, 1, 0); }),
        text(&F::exif_0xC620_DefaultCropSizeAsString), "1296891946 0");
    const Read lens = text(&F::exif_0xA432_LensInfoAsString);
    row("LensInfo zoom", lensInfo({{24, 1}, {70, 1}, {28, 10}, {28, 10}}), lens,
        "24mm/f2.8 - 70mm/2.8");
    row("LensInfo prime", lensInfo({{50, 1}, {50, 1}, {14, 10}, {14, 10}}), lens, "50mm/f1.4");
    row("LensInfo prime by truncation", lensInfo({{500, 10}, {505, 10}, {2, 1}, {2, 1}}), lens,
        "50mm/f2");
    row("LensInfo unknown apertures", lensInfo({{18, 1}, {55, 1}, {0, 0}, {56, 10}}), lens,
        "18mm/f0 - 55mm/5.6");

    // Leica lens and frame selector, by id * 4 + frame code.
    const Read lensFrame = [](const F &f) {
        return f.leicaLensTypeAsString() + " | " + f.leicaFrameSelectorAsString();
    };
    const auto lensRow = [&](const char *name, quint32 code, const char *expected) {
        row(name, sample([=](SampleM9 &o) { o.lensType = code; }), lensFrame, expected);
    };
    lensRow("uncoded", 0, "uncoded lens | n.a");
    lensRow("code 1: id 0, frame 28/90", 1, "Elmarit-M 21mm f/2.8 | 28/90");
    lensRow("id 6, frame 0", 6 * 4 + 0, "Summilux-M 35mm f/1.4 | n.a");
    lensRow("id 6, framed", 6 * 4 + 2, "Summicron-M 35mm f/2 (IV) | 24/35");
    lensRow("Tri-Elmar at 21", 16 * 4 + 3, "'Tri-Elmar-M 16-18-21mm f/4 ASPH. (at 21mm) | 50/75");
    lensRow("Noctilux framed", 31 * 4 + 3, " Noctilux-M 50mm f/1 | 50/75");
    lensRow("id 2 gap", 2 * 4 + 1, "Unknown | 28/90");
    lensRow("id 257 kept as 1", 1028, "Elmarit-M 21mm f/2.8 | n.a");

    const auto idRow = [&](const char *name, const char *id, const char *expected) {
        row(name, sample([=](SampleM9 &o) { o.imageUniqueId = id; }),
            text(&F::leicaImageUniqueIDAsString), expected);
    };
    idRow("image ID: the camera's 32 digits", "00000000000000000000000000002a3f", "10815");
    idRow("image ID beyond 32 bits signed", "80000000", "0");
    idRow("image ID not hexadecimal", "00fg", "0");

    // Composite values.
    const auto exposure = [](Fractions fAndTime, int iso) {
        return inExif([=](Ifd &d) {
            d.rational(0x829D, fAndTime[0].first, fAndTime[0].second);
            d.rational(0x829A, fAndTime[1].first, fAndTime[1].second).shortValue(0x8827, iso);
        });
    };
    const Read lv = real({&F::composite_LightValue});
    row("LV: ISO 199 counts as 100", exposure({{8, 1}, {1, 125}}, 199), lv, "12.9658");
    row("LV: ISO 50 counts as 0", exposure({{8, 1}, {1, 125}}, 50), lv, "inf");
    row("LV: FNumber 0/1", exposure({{0, 1}, {1, 125}}, 100), lv, "0");
    row("LV: time 1/0, ISO 50", exposure({{8, 1}, {1, 0}}, 50), lv, "0");

    // Scale factor, circle of confusion, focus distance (at focus position 0:
    // (1/32 + 1) x focal35 / 1000) and hyperfocal distance, which divides by 0
    // without an aperture text.
    const auto lensFile = [](quint32 num, quint32 den, int focal35) {
        return inExif([=](Ifd &d) {
            d.rational(0x920A, num, den);
            if (focal35 >= 0)
                d.shortValue(0xA405, quint16(focal35));
        });
    };
    const Read geometry = real({&F::composite_ScaleFactor35, &F::composite_CircleOfConfusion,
                                &F::composite_FocusDistance, &F::composite_HyperfocalDistance});
    row("35mm as 52mm", lensFile(35, 1, 52), geometry, "0.673077 0.0446406 0.053625 inf");
    row("FocalLength35 missing", lensFile(35, 1, -1), geometry, "inf 0 0 inf");
    row("FocalLength 0/1", lensFile(0, 1, 50), geometry, "0 inf 0.0515625 nan");
    row("no lens data", lensFile(0, 0, 0), geometry, "nan nan 0 nan");
    // The panel, as the window, the report and the CLI show it.
    row("panel of the sample", sampleM9Dng(), panel(),
        "Camera: M9 Digital Camera\nSerial: 3912204\nFW: 1.196\nFileName: L1002622.DNG\n"
        "Date/Time: 2012:06:17 14:32:05\nISO: 160\nExp.Time: 1/250 sec\n"
        "Appr. Aperture: 5.0\nMetering: Center-weighted average\n"
        "Exp.Program Av [Aperture-priority]\nExp.Correction -0.7\nFrame Selector: 50/75\n"
        "Focal Length: 50mm\nLens: Summilux-M 50mm f/1.4 ASPH.\nMeasuredLV: 12.35\n"
        "ExternalSensorBrightness: 9.88\nSensorTemperature: 24C\nImageID: 10815");
    const auto exposed = [](quint32 num, quint32 den) {
        return sample([=](SampleM9 &o) { o.exposureTime = {num, den}; });
    };
    row("panel exposure 0/1", exposed(0, 1), panel("Exp.Time:"), "n.a");
    row("panel exposure 1/15 is no nominal time", exposed(1, 15), panel("Exp.Time:"), "n.a sec");
    row("panel temperature below zero", sample([](SampleM9 &o) { o.temperature = -3; }),
        panel("SensorTemperature:"), "-3C");
    row("exact panel of the sample", sampleM9Dng(), panel({}, TValueStyle::Exact),
        "Camera: M9 Digital Camera\nSerial: 3912204\nFW: 1.196\nFileName: L1002622.DNG\n"
        "Date/Time: 2012-06-17 14:32:05\nISO: 160\nExp.Time: 1/250\n"
        "Appr. Aperture: \u2248 f/5.6\nMetering: Center-weighted average\n"
        "Exp.Program Av [Aperture-priority]\nExp.Correction -0.7 EV\nFrame Selector: 50/75\n"
        "Focal Length: 50 mm\nLens: Summilux-M 50mm f/1.4 ASPH.\nMeasuredLV: 12.35\n"
        "ExternalSensorBrightness: 9.88\nSensorTemperature: 24 \u00b0C\nImageID: 10815");
    row("exact panel without ISO", sample([](SampleM9 &o) { o.iso = 0; }),
        panel("ISO:", TValueStyle::Exact), "n.a");
    auto software = sampleIfd0({});
    software->ascii(0x0131, "9.9.9");
    row("panel firmware of the maker note, not Software", tiff(Order::Big, software), panel("FW:"),
        "1.196");
}

void TstExifDecoders::decode()
{
    QFETCH(QByteArray, file);
    QFETCH(Read, read);
    TM9File loaded(m_files.write("L1002622.DNG", file));
    loaded.processFile();
    QTEST(read(loaded), "expected");
}

// The camera's values as it set them: every speed of the M9's dial and the
// ones its automatic picks between them, apertures, corrections, dates.
void TstExifDecoders::exactTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto time = [](const char *name, quint32 num, quint32 den, const char *expected) {
        QTest::newRow(name) << exactExposureTime({num, den}) << QString::fromUtf8(expected);
    };
    time("1/4000", 1, 4000, "1/4000");
    time("1/250", 1, 250, "1/250");
    time("1/15 reduced from 10/150", 10, 150, "1/15");
    time("1/12", 1, 12, "1/12");
    time("1/4 still a fraction", 1, 4, "1/4");
    time("1/3 in seconds", 1, 3, "0.3");
    time("1/2 in seconds", 1, 2, "0.5");
    time("13/10", 13, 10, "1.3");
    time("2", 2, 1, "2");
    time("32", 32, 1, "32");
    time("240 over 1", 240, 1, "240");
    time("2/125 not unit", 2, 125, "1/62.5");
    time("0/1 not stored", 0, 1, "n.a");
    time("1/0 broken", 1, 0, "n.a");

    const auto aperture = [](const char *name, quint32 num, quint32 den, const char *expected) {
        QTest::newRow(name) << exactAperture({num, den}) << QString::fromUtf8(expected);
    };
    aperture("f/5.6", 56, 10, "\u2248 f/5.6");
    aperture("f/2.8", 28, 10, "\u2248 f/2.8");
    aperture("f/1.4 in hundredths", 140, 100, "\u2248 f/1.4");
    aperture("f/16", 16, 1, "\u2248 f/16.0");
    aperture("aperture 0/0", 0, 0, "n.a");

    const auto bias = [](const char *name, qint32 num, qint32 den, const char *expected) {
        QTest::newRow(name) << exactCorrection({num, den}) << QString::fromUtf8(expected);
    };
    bias("-2/3", -2, 3, "-0.7 EV");
    bias("+1", 1, 1, "+1.0 EV");
    bias("+1/3", 1, 3, "+0.3 EV");
    bias("-2/3 with the sign below", 2, -3, "-0.7 EV");
    bias("0/1", 0, 1, "0.0 EV");
    bias("-1/30 rounds to zero", -1, 30, "0.0 EV");
    bias("1/0 broken", 1, 0, "n.a");

    QTest::newRow("focal length 50/1") << exactFocalLength({50, 1}) << "50 mm";
    QTest::newRow("focal length 245/10") << exactFocalLength({245, 10}) << "24.5 mm";
    QTest::newRow("focal length 0/1") << exactFocalLength({0, 1}) << "n.a";
    QTest::newRow("temperature -3") << exactTemperature(-3) << QString::fromUtf8("-3 \u00b0C");
    QTest::newRow("date") << isoDateTime("2012:05:05 19:36:55") << "2012-05-05 19:36:55";
    QTest::newRow("date unset stays") << isoDateTime("    :  :     ") << "    :  :     ";
    QTest::newRow("date missing stays") << isoDateTime("n.a.") << "n.a.";
}

void TstExifDecoders::exactTexts()
{
    QFETCH(QString, text);
    QTEST(text, "expected");
}

// What exiftool reads from a camera-like file, for the values both name the
// same way: little-endian, with other values than the sample's.
void TstExifDecoders::exiftoolAgrees()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("exiftool"));
    if (program.isEmpty())
        QSKIP("exiftool is not installed");
    SampleM9 options;
    options.order = Order::Little;
    options.iso = 400;
    options.lensType = 28 * 4 + 1;
    options.temperature = -7;
    const QString path = m_files.write("L1002622.DNG", sampleM9Dng(options));
    TM9File loaded(path);
    QVERIFY(loaded.processFile());

    // A tag name with # asks for the number instead of the print text.
    QProcess exiftool;
    exiftool.start(program, {"-j", "-ExposureTime", "-LensType", "-SerialNumber", "-ISO#",
                             "-CameraTemperature#", "-LightValue#", path});
    QVERIFY(exiftool.waitForFinished(60000) && exiftool.exitCode() == 0);
    const QJsonObject tags =
        QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
    QCOMPARE(loaded.exif_0x8827_ISOAsString(), QString::number(tags["ISO"].toInt()));
    QCOMPARE(loaded.exif_0x829A_ExposureTimeAsString(), tags["ExposureTime"].toString());
    QCOMPARE(loaded.leicaLensTypeAsString(), tags["LensType"].toString());
    QCOMPARE(loaded.leica().serialNumber, tags["SerialNumber"].toVariant().toString());
    QCOMPARE(loaded.leica().cameraTemperature, tags["CameraTemperature"].toInt());
    // ISO in whole hundreds, where the light value's truncation changes nothing.
    QVERIFY(qAbs(loaded.composite_LightValue() - tags["LightValue"].toDouble()) < 1e-6);
}

QTEST_MAIN(TstExifDecoders)
#include "tst_exifdecoders.moc"
