// The Sony maker note read from fixture files: deciphering, the layout chosen
// by camera model, the fields of the blocks and the edges of the decoders.

#include "rawfile/tm9file.h"
#include "tests/support/sonybuilder.h"

#include <QtTest>

#include <functional>
#include <memory>

using namespace fixture;

using TextDecoder = QString (TM9File::*)() const;
using CodeDecoder = std::function<QString(int)>;
Q_DECLARE_METATYPE(fixture::IfdPtr)
Q_DECLARE_METATYPE(TextDecoder)
Q_DECLARE_METATYPE(CodeDecoder)

namespace {

using Bytes = QList<std::pair<int, quint8>>;

// A maker note holding the given blocks, each enciphered.
IfdPtr note(const QList<std::pair<quint16, QByteArray>> &blocks)
{
    auto n = Ifd::make();
    for (const auto &[tag, plain] : blocks)
        n->bytes(tag, Undefined, sonyEncipher(plain));
    return n;
}

// The bytes of a little-endian 16-bit value at position.
Bytes le16(int position, quint16 value)
{
    return {{position, quint8(value & 0xFF)}, {position + 1, quint8(value >> 8)}};
}

} // namespace

class TstSony : public QObject {
    Q_OBJECT

    TempFiles m_files;

    std::unique_ptr<TM9File> load(const QByteArray &model, const IfdPtr &makerNote)
    {
        static int serial = 0;
        const SonyFile sony = sonyArw(model, makerNote);
        auto file = std::make_unique<TM9File>(
            m_files.write(QStringLiteral("DSC%1.ARW").arg(++serial), sony.data));
        file->processSonyMakerNoteAt(sony.makerNoteOffset);
        return file;
    }

private slots:
    void decipher_data();
    void decipher();
    void modelDispatch_data();
    void modelDispatch();
    void iso9401_data();
    void iso9401();
    void focus9402_data();
    void focus9402();
    void lensType_data();
    void lensType();
    void shortBlocks_data();
    void shortBlocks();
    void storedDecoders_data();
    void storedDecoders();
    void codeDecoders_data();
    void codeDecoders();
};

void TstSony::decipher_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("cube roots") << QByteArray("\x02\x03") << QByteArray("\x32\xB1");
    const QByteArray fixed("\x00\x01\x52\x53\x54\xA5\xA6\xA7\xF8\xF9\xFF", 11);
    QTest::newRow("fixed points, 249 and up unchanged") << fixed << fixed;
    QByteArray all(256, '\0');
    for (int i = 0; i < 256; ++i)
        all[i] = char(i);
    QTest::newRow("inverse of the camera's rule") << sonyEncipher(all) << all;
}

void TstSony::decipher()
{
    QFETCH(QByteArray, input);
    TM9File::decipher(reinterpret_cast<unsigned char *>(input.data()), int(input.size()));
    QTEST(input, "expected");
}

void TstSony::modelDispatch_data()
{
    QTest::addColumn<QByteArray>("model");
    // 0x2010 lens, 0x9050 release mode, time, aperture, shot counter (one byte or four)
    QTest::addColumn<QStringList>("read");
    const QString b = QStringLiteral("Continuous - White Balance Bracketing");
    QTest::newRow("7M2: 2010g, 9050a")
        << QByteArray("ILCE-7M2")
        << QStringList{"Sony E 16mm F2.8", "Continuous - Exposure Bracketing", "", "", "261"};
    QTest::newRow("7RM2: 2010h, 9050b")
        << QByteArray("ILCE-7RM2")
        << QStringList{"Sony E 18-55mm F3.5-5.6 OSS", b, "256", "5.6", "261"};
    QTest::newRow("9: 2010i, 9050b, counter in one byte")
        << QByteArray("ILCE-9")
        << QStringList{"Sony E 55-210mm F4.5-6.3 OSS", b, "256", "5.6", "5"};
    QTest::newRow("6000: no 2010, 9050b")
        << QByteArray("ILCE-6000") << QStringList{"", b, "256", "5.6", "261"};
}

void TstSony::modelDispatch()
{
    QFETCH(QByteArray, model);
    // A distinct lens at each 0x2010 layout's position; 9050a and 9050b
    // differ in where the release mode lies.
    const QByteArray block2010 =
        sonyBlock(6400, le16(6335, 0x8010) + le16(6383, 0x8011) + le16(6131, 0x8012));
    const QByteArray block9050 =
        sonyBlock(300, Bytes{{63, 2}, {75, 3}} + le16(70, 6144) + le16(72, 0x14F8));
    const QByteArray block9400 = sonyBlock(90, {{10, 5}, {11, 1}});
    const auto file =
        load(model, note({{0x2010, block2010}, {0x9050, block9050}, {0x9400, block9400}}));
    const TSonyValues &v = file->sony();
    QTEST((QStringList{v.block2010.lensType2, v.block9050.releaseMode, v.block9050.exposureTimeText,
                       v.apertureText, QString::number(v.shotNumberSincePowerUp)}),
          "read");
}

void TstSony::iso9401_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("position");
    QTest::newRow("0x94") << 0x94 << 1176;
    QTest::newRow("74") << 74 << 1590;
    QTest::newRow("154") << 154 << 1186;
    QTest::newRow("unknown version") << 1 << 1767;
}

void TstSony::iso9401()
{
    QFETCH(int, version);
    QFETCH(int, position);
    const QByteArray block = sonyBlock(
        1800, {{0, quint8(version)}, {position, 17}, {position + 2, 11}, {position + 4, 29}});
    const auto file = load("ILCE-9", note({{0x9401, block}}));
    QCOMPARE(file->sony().isoSetting, QStringLiteral("400"));
    QCOMPARE(file->sony().isoAutoMin, QStringLiteral("100"));
    QCOMPARE(file->sony().isoAutoMax, QStringLiteral("6400"));
}

void TstSony::focus9402_data()
{
    QTest::addColumn<int>("byte22");
    QTest::addColumn<int>("byte23");
    QTest::addColumn<QStringList>("read"); // focus mode, AF area
    QTest::newRow("255 is manual") << 2 << 0xFF << QStringList{"AF-S", "Manual"};
    QTest::newRow("0 is multi") << 3 << 0 << QStringList{"AF-C", "Multi"};
    QTest::newRow("highest, top bit of focus ignored")
        << 0x86 << 20 << QStringList{"DMF", "Animal Eye Tracking"};
    QTest::newRow("unknown codes") << 5 << 4 << QStringList{"unbekannt", "unbekannt"};
}

void TstSony::focus9402()
{
    QFETCH(int, byte22);
    QFETCH(int, byte23);
    const QByteArray block = sonyBlock(50, {{22, quint8(byte22)}, {23, quint8(byte23)}});
    const auto file = load("ILCE-9", note({{0x9402, block}}));
    QTEST((QStringList{file->sony().focusMode9402, file->sony().afAreaMode}), "read");
}

void TstSony::lensType_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("low");
    QTest::addColumn<int>("high");
    QTest::addColumn<QString>("lens");
    // Signed low byte: B8 01 is 184, EA 00 is -22; read unsigned, EA 00 is 234.
    QTest::newRow("940C B8 01") << 0x940C << 9 << 0xB8 << 1
                                << "Metabones Canon EF Speed Booster Ultra";
    QTest::newRow("940C EA 00") << 0x940C << 9 << 0xEA << 0 << "unbekannt";
    QTest::newRow("9405 B8 01") << 0x9405 << 96 << 0xB8 << 1
                                << "Metabones Canon EF Speed Booster Ultra";
    QTest::newRow("9050 EA 00 unsigned")
        << 0x9050 << 263 << 0xEA << 0 << "Metabones Canon EF Smart Adapter Mark IV";
}

void TstSony::lensType()
{
    QFETCH(int, tag);
    QFETCH(int, position);
    QFETCH(int, low);
    QFETCH(int, high);
    const QByteArray block =
        sonyBlock(300, {{position, quint8(low)}, {position + 1, quint8(high)}});
    const auto file = load("ILCE-9", note({{quint16(tag), block}}));
    const TSonyValues &v = file->sony();
    QTEST(tag == 0x940C   ? v.lensType3
          : tag == 0x9405 ? v.lensType9405
                          : v.block9050.lensType2,
          "lens");
}

void TstSony::shortBlocks_data()
{
    QTest::addColumn<IfdPtr>("makerNote");
    // temperature, focus position, exposure time, aperture, lens firmware
    QTest::addColumn<QStringList>("read");
    const QByteArray block9402 = sonyBlock(46, {{4, 7}, {45, 0x50}});
    QTest::newRow("9402 whole") << note({{0x9402, block9402}})
                                << QStringList{"7", "80", "", "", ""};
    QTest::newRow("9402 ends before 45")
        << note({{0x9402, block9402.left(45)}}) << QStringList{"7", "0", "", "", ""};
    QTest::newRow("9402 empty") << note({{0x9402, {}}}) << QStringList{"0", "0", "", "", ""};
    const QByteArray block9050 = sonyBlock(73, le16(70, 6144) + Bytes{{72, 0xF8}});
    QTest::newRow("9050b ends inside the aperture")
        << note({{0x9050, block9050}}) << QStringList{"0", "0", "256", "", ""};
    const QByteArray block940c = sonyBlock(22, {{20, 0x12}, {21, 0x3}});
    QTest::newRow("940C whole") << note({{0x940C, block940c}})
                                << QStringList{"0", "0", "", "", "3.12"};
    QTest::newRow("940C ends inside the firmware")
        << note({{0x940C, block940c.left(21)}}) << QStringList{"0", "0", "", "", ""};
    // An entry of unknown type takes the byte length of the entry before it:
    // 5 SHORTs, 10 bytes of the 46.
    auto unknownType = Ifd::make();
    unknownType->shorts(0x0020, {1, 2, 3, 4, 5}).bytes(0x9402, Type(8), sonyEncipher(block9402));
    QTest::newRow("unknown type keeps the length")
        << unknownType << QStringList{"7", "0", "", "", ""};
}

void TstSony::shortBlocks()
{
    QFETCH(IfdPtr, makerNote);
    const auto file = load("ILCE-9", makerNote);
    const TSonyValues &v = file->sony();
    QTEST((QStringList{QString::number(v.ambientTemperature), QString::number(v.focusPosition),
                       v.block9050.exposureTimeText, v.apertureText, v.lensFirmwareVersion}),
          "read");
}

void TstSony::storedDecoders_data()
{
    QTest::addColumn<IfdPtr>("makerNote");
    QTest::addColumn<TextDecoder>("decoder");
    QTest::addColumn<QString>("expected");
    // One value, in the field as the little-endian file holds it.
    const auto entry = [](quint16 tag, Type type, qint64 value) {
        auto n = Ifd::make();
        n->raw(tag, type, 1, quint32(value));
        return n;
    };
    const TextDecoder flash = &TM9File::mnSony_0xB048_FlashLevelAsString;
    QTest::newRow("flash level lowest") << entry(0xB048, Short, -9) << flash << "-9/3";
    QTest::newRow("flash level gap -8") << entry(0xB048, Short, -8) << flash << "unbekannt";
    QTest::newRow("flash level after the gap") << entry(0xB048, Short, -6) << flash << "-6/3";
    QTest::newRow("flash level past the top") << entry(0xB048, Short, 7) << flash << "unbekannt";
    QTest::newRow("flash level n/a") << entry(0xB048, Short, 128) << flash << "n/a";
    QTest::newRow("quality -1") << entry(0x0102, SLong, -1)
                                << &TM9File::mnSony_0x0102_QualityAsString << "n/a";
    QTest::newRow("color mode 105") << entry(0xB029, SLong, 105)
                                    << &TM9File::mnSony_0xB029_ColorModeAsString << "Autumn Leaves";
    QTest::newRow("stabilization all bits")
        << entry(0xB026, SLong, -1) << &TM9File::mnSony_0xB026_ImageStabilizationAsString
        << "= n/a";
    QTest::newRow("model unknown")
        << entry(0xB001, Short, 380) << &TM9File::mnSony_0xB001_SonyModelIDAsString << "unbekannt";
    QTest::newRow("raw file type other")
        << entry(0x2029, Short, 2) << &TM9File::mnSony_0x2029_RawFileTypeAsString << "n/a";
    QTest::newRow("8-bit focus mode")
        << entry(0x201B, Byte, 7) << &TM9File::mnSony_0x201B_FocusModeAsString << "AF-D";
    QTest::newRow("HDR good") << entry(0x200A, SLong, 0x10011)
                              << &TM9File::mnSony_0x200A_HDRAsString << "1.5 EV, HDR image (good)";
}

void TstSony::storedDecoders()
{
    QFETCH(IfdPtr, makerNote);
    QFETCH(TextDecoder, decoder);
    const auto file = load("ILCE-9", makerNote);
    QTEST(((*file).*decoder)(), "expected");
}

void TstSony::codeDecoders_data()
{
    QTest::addColumn<CodeDecoder>("decoder");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");
    const CodeDecoder iso = &TM9File::isoSetting2010;
    QTest::newRow("iso gap 36") << iso << 36 << "unbekannt";
    QTest::newRow("iso past the last") << iso << 48 << "unbekannt";
    QTest::newRow("release 146 leading blank")
        << CodeDecoder([](int c) { return TM9File::mnSony_ReleaseMode2(c); }) << 146
        << " Single Frame - Movie Capture";
    const CodeDecoder lens = [](int c) { return TM9File::mnSony_LensType2(c); };
    QTest::newRow("lens 0") << lens << 0 << "Unknown E-mount lens or other lens";
    QTest::newRow("lens last E") << lens << 33084 << "Sony FE 600mm F4 GM OSS + 2X Teleconverter";
    QTest::newRow("lens past the E range") << lens << 33085 << "unbekannt";
    QTest::newRow("battery 100F truncated")
        << CodeDecoder([](int f) { return QString::number(TM9File::fahrenheit2Celsius(f)); }) << 100
        << "37.77";
    QTest::newRow("unnamed tag 0x201A")
        << CodeDecoder(&TM9File::sonyTagName) << 0x201A << "[Sony] --- unbekannt ---";
}

void TstSony::codeDecoders()
{
    QFETCH(CodeDecoder, decoder);
    QFETCH(int, code);
    QTEST(decoder(code), "expected");
}

QTEST_MAIN(TstSony)
#include "tst_sony.moc"
