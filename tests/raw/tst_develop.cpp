// Developing raw pictures: colours of flat patches mosaiced through known
// matrices, black levels, clipping, the grey Monochrom, crop, orientation
// and positions, RCD against bilinear interpolation, cancelling, the TIFF.

#include "raw/colour.h"
#include "raw/decode.h"
#include "raw/demosaic.h"
#include "raw/develop.h"
#include "raw/tiffwriter.h"
#include "tests/support/rawgen.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <cmath>
#include <functional>

using namespace raw;

namespace {

using Scene = std::function<TVec3(int x, int y)>; // linear sRGB of the scene

constexpr double kBlack = 256, kWhite = 16383;

TMatrix3 matrix(const TMat3 &m)
{
    return {m, true};
}

// An M9-like frame of these tags: 14-bit levels, black 256 unless the tags
// have one, the whole image active unless they name an area.
TRawImage frame(int width, int height, TRawInfo tags = {})
{
    TRawImage raw;
    raw.info = tags;
    TRawInfo &i = raw.info;
    i.width = width, i.height = height, i.whiteLevel = uint32_t(kWhite);
    if (i.activeRight == 0)
        i.activeRight = width, i.activeBottom = height;
    if (i.blackLevel == std::array<double, 4>{})
        i.blackLevel = {kBlack, kBlack, kBlack, kBlack};
    raw.pixels.resize(std::size_t(width) * std::size_t(height));
    return raw;
}

// Mosaics the scene, lit by the white xy: sRGB -> XYZ D50 -> adapted to the
// white -> the camera by AB * CC * CM, scaled so that the camera neutral's
// largest value is white; the sensor saturates at white. A Monochrom sees
// the luminance.
void mosaic(TRawImage &raw, const Scene &scene, const TMat3 &xyzToCamera, std::array<double, 2> xy)
{
    TMat3 srgbToD50;
    invert(xyzD50ToLinearSrgb(), &srgbToD50);
    const TVec3 white = xyToXyz(xy[0], xy[1]);
    const TMat3 toCamera =
        multiply(xyzToCamera, multiply(bradford(xyToXyz(0.3457, 0.3585), white), srgbToD50));
    const TVec3 neutral = multiply(xyzToCamera, white);
    const double scale = 1 / std::max({neutral[0], neutral[1], neutral[2]});
    TRawInfo &i = raw.info;
    for (int y = 0; y < i.height; ++y)
        for (int x = 0; x < i.width; ++x) {
            const TVec3 cam = multiply(toCamera, scene(x, y));
            const double v = i.layout == TLayout::Linear ? multiply(srgbToD50, scene(x, y))[1]
                                                         : cam[i.colourAt(x, y)] * scale;
            raw.pixels[std::size_t(y) * std::size_t(i.width) + std::size_t(x)] =
                uint16_t(std::lround(
                    std::clamp(i.blackAt(x, y) + v * (kWhite - i.blackAt(x, y)), 0.0, kWhite)));
        }
    i.asShotNeutral = {neutral[0] * scale, neutral[1] * scale, neutral[2] * scale};
}

double encode(double v)
{
    v = std::clamp(v, 0.0, 1.0);
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

// Four flat patches: grey, red, green, blue.
const TVec3 kPatches[4] = {
    {0.18, 0.18, 0.18}, {0.40, 0.10, 0.05}, {0.10, 0.35, 0.10}, {0.05, 0.10, 0.40}};
TVec3 patches(int x, int y)
{
    return kPatches[(y / 32) * 2 + x / 32];
}

double psnr(const std::vector<double> &errors)
{
    double sum = 0;
    for (double e : errors)
        sum += e * e;
    return 10 * std::log10(1 / (sum / double(errors.size())));
}

const TMat3 kCmA{0.90, -0.25, -0.05, -0.40, 1.30, 0.10, -0.10, 0.25, 0.55};   // StdA
const TMat3 kCmD65{0.80, -0.20, -0.10, -0.30, 1.20, 0.10, -0.05, 0.20, 0.65}; // D65

} // namespace

class TestDevelop : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void colourScience();
    void colour_data();
    void colour();
    void black_data();
    void black();
    void monochrome();
    void geometry_data();
    void geometry();
    void rcdBeatsBilinear_data();
    void rcdBeatsBilinear();
    void againstTruth_data();
    void againstTruth();
    void refusesAndCancels();
    void tiff();
};

void TestDevelop::colourScience()
{
    // XYZ D50 -> linear sRGB as the sRGB standard's matrices with Bradford give it.
    const TMat3 m = xyzD50ToLinearSrgb();
    const TMat3 known{3.1338561, -1.6168667, -0.4906146, -0.9787684, 1.9161415,
                      0.0334540, 0.0719453,  -0.2289914, 1.4052427};
    for (int i = 0; i < 9; ++i)
        QVERIFY2(std::abs(m[std::size_t(i)] - known[std::size_t(i)]) < 2e-3,
                 qPrintable(QString::number(i)));
    QVERIFY(std::abs(correlatedTemperature(0.3127, 0.3290) - 6504) < 10);
    QVERIFY(std::abs(correlatedTemperature(0.4476, 0.4074) - 2856) < 10);
}

void TestDevelop::colour_data()
{
    QTest::addColumn<TRawInfo>("tags");
    QTest::addColumn<double>("cmWeight"); // of kCmA in the camera's true matrix
    QTest::addColumn<double>("whiteX");
    QTest::addColumn<double>("whiteY");
    QTest::addColumn<double>("gain"); // expected sRGB = gain * scene

    TRawInfo one;
    one.colorMatrix1 = matrix(kCmD65), one.calibrationIlluminant1 = 21;
    QTest::newRow("one matrix, D65") << one << 0.0 << 0.3127 << 0.3290 << 1.0;
    TRawInfo turned = one; // the filter's phase differs at the crop's origin
    turned.activeLeft = 1, turned.activeTop = 3, turned.activeRight = turned.activeBottom = 63;
    turned.orientation = 6;
    QTest::newRow("odd crop origin, turned") << turned << 0.0 << 0.3127 << 0.3290 << 1.0;
    TRawInfo two = one;
    two.colorMatrix1 = matrix(kCmA), two.calibrationIlluminant1 = 17;
    two.colorMatrix2 = matrix(kCmD65), two.calibrationIlluminant2 = 21;
    const double w4000 = (1 / 4008.0 - 1 / 6504.0) / (1 / 2856.0 - 1 / 6504.0);
    QTest::newRow("interpolated, 4000 K") << two << w4000 << 0.3805 << 0.3768 << 1.0;
    QTest::newRow("StdA") << two << 1.0 << 0.4476 << 0.4074 << 1.0;
    TRawInfo xy = two;
    xy.hasAsShotNeutral = false, xy.hasAsShotWhiteXY = true, xy.asShotWhiteXY = {0.3805, 0.3768};
    QTest::newRow("AsShotWhiteXY") << xy << w4000 << 0.3805 << 0.3768 << 1.0;
    TRawInfo calibrated = one;
    calibrated.cameraCalibration1 = matrix({1.1, 0, 0, 0, 1, 0, 0, 0, 0.9});
    calibrated.analogBalance = {0.9, 1, 1.2};
    QTest::newRow("AnalogBalance, CameraCalibration") << calibrated << 0.0 << 0.36 << 0.37 << 1.0;
    TRawInfo forward = two;
    // The forward matrix that maps white balanced camera values to XYZ D50
    // as the colour matrix does at D65: its rows sum to D50.
    TMat3 adapt = bradford(xyToXyz(0.3127, 0.3290), xyToXyz(0.3457, 0.3585)), cmInverse;
    invert(kCmD65, &cmInverse);
    const TVec3 n = multiply(kCmD65, xyToXyz(0.3127, 0.3290));
    forward.forwardMatrix1 = forward.forwardMatrix2 =
        matrix(multiply(multiply(adapt, cmInverse), diagonal(n)));
    forward.colorMatrix1 = matrix(kCmD65); // its white balance is what the forward matrix uses
    QTest::newRow("ForwardMatrix") << forward << 0.0 << 0.3127 << 0.3290 << 1.0;
    TRawInfo exposed = one;
    exposed.baselineExposure = 1;
    QTest::newRow("BaselineExposure +1") << exposed << 0.0 << 0.3127 << 0.3290 << 2.0;
    QTest::newRow("clipped to sRGB") << exposed << 0.0 << 0.3127 << 0.3290 << 8.0;
    QTest::newRow("no matrix: grey stays grey") << TRawInfo() << -1.0 << 0.3457 << 0.3585 << 1.0;
}

void TestDevelop::colour()
{
    QFETCH(TRawInfo, tags);
    QFETCH(double, cmWeight);
    QFETCH(double, whiteX);
    QFETCH(double, whiteY);
    QFETCH(double, gain);
    TRawImage raw = frame(64, 64, tags);
    TMat3 cm = kCmD65;
    for (int i = 0; i < 9; ++i)
        cm[std::size_t(i)] = cmWeight < 0 ? (i % 4 == 0)
                                          : cmWeight * kCmA[std::size_t(i)] +
                                                (1 - cmWeight) * kCmD65[std::size_t(i)];
    const TVec3 ab = tags.analogBalance;
    const TMat3 cc =
        tags.cameraCalibration1.present ? tags.cameraCalibration1.m : diagonal({1, 1, 1});
    const bool exposedScene = gain > 2;
    mosaic(raw,
           [&](int x, int y) {
               return exposedScene ? TVec3{0.7, 0.7, 0.7} : patches(x, y);
           },
           multiply(diagonal(ab), multiply(cc, cm)), {whiteX, whiteY});
    raw.info.hasAsShotNeutral = !tags.hasAsShotWhiteXY;
    for (TSize size : {TSize::Full, TSize::Half}) {
        for (int bits : {8, 16}) {
            const TPicture picture = develop(raw, {size, bits, 0, nullptr});
            QVERIFY(!picture.isNull());
            const int top = bits == 8 ? 255 : 65535;
            for (int p = 0; p < (exposedScene ? 1 : 4); ++p) {
                const QPoint at =
                    developedPositionOf(raw.info, size, {16 + p % 2 * 32, 16 + p / 2 * 32});
                const std::array<int, 3> got = picture.rgb(at.x(), at.y());
                for (int c = 0; c < 3; ++c) {
                    const double scene =
                        cmWeight < 0 ? kPatches[0][std::size_t(c)] : kPatches[p][std::size_t(c)];
                    const double expected = exposedScene ? top : encode(gain * scene) * top;
                    if (cmWeight < 0 && p > 0)
                        continue; // without matrices only the grey is known
                    QVERIFY2(std::abs(got[std::size_t(c)] - expected) <= 2.5 * top / 255,
                             qPrintable(QStringLiteral("patch %1 channel %2").arg(p).arg(c)));
                }
            }
        }
    }
}

void TestDevelop::black_data()
{
    QTest::addColumn<TRawInfo>("tags");
    TRawInfo pattern;
    pattern.blackRepeatRows = pattern.blackRepeatColumns = 2;
    pattern.blackLevel = {200, 260, 300, 240};
    QTest::newRow("2 x 2 pattern") << pattern;
    TRawInfo deltas = pattern;
    for (int i = 0; i < 420; ++i) {
        deltas.blackDeltaH.push_back(float(i % 7) * 50);
        deltas.blackDeltaV.push_back(float(i % 5) * 100);
    }
    QTest::newRow("pattern and deltas") << deltas;
}

void TestDevelop::black()
{
    // A scene of coloured waves, larger than a tile, the black of each position
    // added: the picture shows the waves, seamless.
    QFETCH(TRawInfo, tags);
    TRawImage raw = frame(420, 410, tags);
    raw.info.colorMatrix1 = matrix(kCmD65), raw.info.calibrationIlluminant1 = 21;
    const auto wave = [](int x, int y) {
        const double v = 0.1 * std::sin(x / 9.0) * std::cos(y / 7.0);
        return TVec3{0.2 + v, 0.15 - v / 2, 0.1 + v / 3};
    };
    mosaic(raw, wave, kCmD65, {0.3127, 0.3290});
    raw.info.hasAsShotNeutral = true;
    const TPicture picture = develop(raw, {TSize::Full, 8, 2, nullptr});
    // At the edges, where the scene is mirrored, the waves' slope tells.
    for (int y = 0; y < 410; ++y)
        for (int x = 0; x < 420; ++x)
            for (int c = 0; c < 3; ++c)
                QVERIFY2(std::abs(picture.rgb(x, y)[std::size_t(c)] -
                                  encode(wave(x, y)[std::size_t(c)]) * 255) <=
                             (x < 2 || y < 2 || x > 417 || y > 407 ? 8 : 2.5),
                         qPrintable(QStringLiteral("%1, %2: %3").arg(x).arg(y).arg(c)));
}

void TestDevelop::monochrome()
{
    TRawImage raw = frame(64, 48);
    raw.info.layout = TLayout::Linear;
    mosaic(raw,
           [](int x, int) {
               return TVec3{x / 63.0, x / 63.0, x / 63.0};
           },
           diagonal({1, 1, 1}), {0.3457, 0.3585});
    raw.info.asShotNeutral = {0.5, 1, 0.7}; // not for a grey picture
    for (TSize size : {TSize::Full, TSize::Half}) {
        const TPicture picture = develop(raw, {size, 16, 0, nullptr});
        const int s = size == TSize::Full ? 1 : 2;
        for (int x = 0; x < picture.width; ++x) {
            const std::array<int, 3> v = picture.rgb(x, 5);
            QVERIFY(v[0] == v[1] && v[1] == v[2]);
            QVERIFY(std::abs(v[0] - encode((x * s + (s - 1) * 0.5) / 63.0) * 65535) < 80);
        }
    }
}

void TestDevelop::geometry_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<bool>("cropped");
    QTest::addColumn<QPoint>(
        "corner"); // of the crop, shown top left: 0 or 1 for left/top, right/bottom
    const QPoint corners[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}, {0, 1}, {1, 1}, {1, 0}};
    for (int o = 1; o <= 8; ++o) {
        QTest::addRow("orientation %d", o) << o << false << corners[o - 1];
        QTest::addRow("orientation %d, active area and crop", o) << o << true << corners[o - 1];
    }
}

void TestDevelop::geometry()
{
    // Each stored pixel its own grey: the developed pixel must show the
    // stored one its position names, at full and at half size.
    QFETCH(int, orientation);
    QFETCH(bool, cropped);
    QFETCH(QPoint, corner);
    TRawImage raw = frame(90, 70);
    TRawInfo &i = raw.info;
    i.layout = TLayout::Linear;
    i.orientation = orientation;
    if (cropped) {
        i.activeLeft = 4, i.activeTop = 2, i.activeRight = 86, i.activeBottom = 66;
        i.cropX = 3, i.cropY = 5, i.cropWidth = 71, i.cropHeight = 52;
    }
    const auto grey = [](int x, int y) { return kBlack + double((x * 7 + y * 131) % 16000); };
    for (int y = 0; y < i.height; ++y)
        for (int x = 0; x < i.width; ++x)
            raw.pixels[std::size_t(y * i.width + x)] = uint16_t(grey(x, y));
    for (TSize size : {TSize::Full, TSize::Half}) {
        const TPicture picture = develop(raw, {size, 16, 0, nullptr});
        const int s = size == TSize::Full ? 1 : 2;
        const int w = (cropped ? 71 : 90) / s, h = (cropped ? 52 : 70) / s;
        QCOMPARE(picture.width, orientation >= 5 ? h : w);
        QCOMPARE(picture.height, orientation >= 5 ? w : h);
        for (QPoint p : {QPoint(0, 0), QPoint(picture.width - 1, 0), QPoint(3, picture.height - 2),
                         QPoint(picture.width / 2, 7)}) {
            const QPoint r = rawPositionOf(i, size, p);
            QCOMPARE(developedPositionOf(i, size, r), p);
            QCOMPARE(developedPositionOf(i, size, r + QPoint(s - 1, s - 1)), p);
            double linear = 0;
            for (int k = 0; k < s * s; ++k)
                linear +=
                    (grey(r.x() + k % s, r.y() + k / s) - kBlack) / (kWhite - kBlack) / (s * s);
            QVERIFY(std::abs(picture.rgb(p.x(), p.y())[0] - encode(linear) * 65535) < 40);
        }
        const QPoint first(cropped ? 7 : 0, cropped ? 7 : 0);
        QCOMPARE(rawPositionOf(i, size, {0, 0}),
                 first + QPoint(corner.x() * (w - 1) * s, corner.y() * (h - 1) * s));
        if (cropped) // the crop's first stored pixel
            QCOMPARE(rawPositionOf(i, size, developedPositionOf(i, size, {7, 7})), QPoint(7, 7));
    }
}

void TestDevelop::rcdBeatsBilinear_data()
{
    QTest::addColumn<int>("chart");
    QTest::addColumn<double>("margin"); // dB
    QTest::newRow("zone plate") << 0 << 8.0;
    QTest::newRow("slanted edges") << 1 << 2.0;
}

void TestDevelop::rcdBeatsBilinear()
{
    QFETCH(int, chart);
    QFETCH(double, margin);
    const int n = 160;
    const auto scene = [chart](int x, int y) {
        const double dx = x - 80, dy = y - 80;
        if (chart == 0) { // grey rings, finer outwards
            const double v = 0.5 + 0.4 * std::cos(dx * dx / 150 + dy * dy / 150);
            return TVec3{v, v, v};
        }
        const bool inside = dy * 0.2 + dx < 0 || (dx * 0.15 - dy > 20);
        return inside ? TVec3{0.8, 0.7, 0.2} : TVec3{0.1, 0.3, 0.6};
    };
    std::vector<float> cfa(std::size_t(n * n)), planes[2];
    TCfaTile tile{cfa.data(), n, n, {Red, Green, Green, Blue}};
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            cfa[std::size_t(y * n + x)] =
                float(scene(x, y)[tile.pattern[std::size_t((y & 1) * 2 + (x & 1))]]);
    TRcdScratch scratch;
    double results[2];
    for (int method = 0; method < 2; ++method) {
        planes[method].assign(std::size_t(3 * n * n), 0);
        float *rgb[3] = {planes[method].data(), planes[method].data() + n * n,
                         planes[method].data() + 2 * n * n};
        if (method == 0)
            demosaicRcd(tile, rgb, scratch);
        else
            demosaicBilinear(tile, rgb);
        std::vector<double> errors;
        for (int y = kRcdBorder; y < n - kRcdBorder; ++y)
            for (int x = kRcdBorder; x < n - kRcdBorder; ++x)
                for (int c = 0; c < 3; ++c)
                    errors.push_back(rgb[c][y * n + x] - scene(x, y)[std::size_t(c)]);
        results[method] = psnr(errors);
    }
    qInfo("PSNR: RCD %.1f dB, bilinear %.1f dB", results[0], results[1]);
    QVERIFY(results[0] > results[1] + margin);
}

// dcraw's picture of a file, sRGB-encoded values in [0, 1] row by row, and
// its width: the active area, as shot (-w), linear 16-bit PPM (-4) encoded
// here, its BaselineExposure given as brightness (dcraw does not read it).
std::pair<int, std::vector<double>> dcrawPicture(const QString &path, bool half, double exposure)
{
    QProcess dcraw;
    QStringList arguments{QStringLiteral("-c"), QStringLiteral("-w"), QStringLiteral("-4"),
                          QStringLiteral("-b"), QString::number(std::exp2(exposure))};
    arguments << (half ? QStringList{QStringLiteral("-h")}
                       : QStringList{QStringLiteral("-q"), QStringLiteral("3")})
              << path;
    dcraw.start(QStringLiteral("dcraw"), arguments);
    const QByteArray ppm = dcraw.waitForFinished(120000) ? dcraw.readAllStandardOutput() : "";
    const QList<QByteArray> head = ppm.left(64).split('\n');
    if (head.size() < 4 || head[0] != "P6")
        return {};
    const int w = head[1].split(' ').value(0).toInt(), h = head[1].split(' ').value(1).toInt();
    const qsizetype start = head[0].size() + head[1].size() + head[2].size() + 3;
    std::vector<double> values(std::size_t(std::max(0, w * h * 3)));
    if (ppm.size() - start != qsizetype(values.size()) * 2)
        return {};
    const auto *p = reinterpret_cast<const uchar *>(ppm.constData() + start);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = encode((p[2 * i] * 256 + p[2 * i + 1]) / 65535.0);
    return {w, values};
}

void TestDevelop::againstTruth_data()
{
    QTest::addColumn<bool>("half");
    QTest::newRow("full size (RCD) against dcraw -q 3 (AHD)") << false;
    QTest::newRow("half size against dcraw -h") << true;
}

void TestDevelop::againstTruth()
{
    // A photograph and charts as an M9 would record them: the picture must be
    // at least as close to the truth as dcraw's.
    QFETCH(bool, half);
    fixture::RawOptions options;
    options.width = 1318, options.height = 880;
    const fixture::RawGenerator generator(options);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("frame.dng"));
    QVERIFY(fixture::writeRawDng(path, options));
    const TDecodeResult decoded = decodeFile(path);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const TPicture picture =
        develop(decoded.image, {half ? TSize::Half : TSize::Full, 16, 0, nullptr});
    const QImage truth = half ? generator.truthHalf() : generator.truth(true);
    QCOMPARE(QSize(picture.width, picture.height), truth.size());
    // The edges are left out: each demosaic has its own.
    const QRect inner = truth.rect().adjusted(4, 4, -4, -4);
    const auto psnr = [&](const auto &value) {
        std::vector<double> errors;
        for (int y = inner.top(); y <= inner.bottom(); ++y)
            for (int x = inner.left(); x <= inner.right(); ++x) {
                const QRgba64 t = truth.pixelColor(x, y).rgba64();
                const std::array<double, 3> v = value(x, y);
                for (int c = 0; c < 3; ++c)
                    errors.push_back((v[std::size_t(c)] - (c == 0   ? t.red()
                                                           : c == 1 ? t.green()
                                                                    : t.blue())) /
                                     65535.0);
            }
        return ::psnr(errors);
    };
    const double ours = psnr([&](int x, int y) {
        const std::array<int, 3> v = picture.rgb(x, y);
        return std::array<double, 3>{double(v[0]), double(v[1]), double(v[2])};
    });
    if (QStandardPaths::findExecutable(QStringLiteral("dcraw")).isEmpty())
        QSKIP(qPrintable(QStringLiteral("dcraw is not installed (ours: %1 dB)").arg(ours)));
    const auto reference = dcrawPicture(path, half, decoded.image.info.baselineExposure);
    const int width = reference.first;
    QVERIFY(!reference.second.empty());
    const QPoint offset = generator.crop().topLeft() / (half ? 2 : 1);
    const double theirs = psnr([&](int x, int y) {
        const double *v =
            &reference.second[std::size_t(((y + offset.y()) * width + x + offset.x()) * 3)];
        return std::array<double, 3>{v[0] * 65535, v[1] * 65535, v[2] * 65535};
    });
    qInfo("PSNR against the truth: %.2f dB, dcraw %.2f dB", ours, theirs);
    QVERIFY(ours >= theirs);
}

void TestDevelop::refusesAndCancels()
{
    TRawImage raw = frame(600, 400);
    raw.info.colorMatrix1 = matrix(kCmD65);
    QVERIFY(!develop(raw, {TSize::Full, 8, 0, nullptr}).isNull());
    // From the only thread of a pool, as the window's workers call it.
    QThreadPool pool;
    pool.setMaxThreadCount(1);
    bool developed = false;
    pool.start([&] { developed = !develop(raw, {TSize::Full, 8, 0, nullptr}).isNull(); });
    QVERIFY(pool.waitForDone(60000) && developed);
    std::atomic<bool> cancel{true};
    QVERIFY(develop(raw, {TSize::Full, 8, 0, &cancel}).isNull());
    QVERIFY(develop(raw, {TSize::Half, 16, 1, &cancel}).isNull());
    QVERIFY(develop(raw, {TSize::Full, 12, 0, nullptr}).isNull());
    TRawImage broken = raw;
    broken.pixels.pop_back(); // fewer pixels than the size says
    QVERIFY(develop(broken, {}).isNull());
    broken = raw;
    broken.info.cfa = {Red, Green, Blue, Green}; // not 2 x 2 Bayer
    QVERIFY(develop(broken, {}).isNull());
    broken = raw;
    broken.info.whiteLevel = 100; // below black
    QVERIFY(develop(broken, {}).isNull());
}

void TestDevelop::tiff()
{
    TRawImage raw = frame(301, 200);
    mosaic(raw,
           [](int x, int) {
               return TVec3{x / 300.0, 0.2, 0.1};
           },
           diagonal({1, 1, 1}), {0.3457, 0.3585});
    QTemporaryDir dir;
    for (int bits : {8, 16}) {
        const TPicture picture = develop(raw, {TSize::Full, bits, 0, nullptr});
        const QString path = dir.filePath(QStringLiteral("out%1.tif").arg(bits));
        QString error;
        QVERIFY2(writeTiff(picture, path, &error), qPrintable(error));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const QByteArray pixels(reinterpret_cast<const char *>(picture.data.data()),
                                qsizetype(picture.data.size()));
        QVERIFY(bytes.endsWith(pixels));
        QProcess exiftool;
        exiftool.start(QStringLiteral("exiftool"),
                       {QStringLiteral("-s3"), QStringLiteral("-ImageSize"),
                        QStringLiteral("-BitsPerSample"), QStringLiteral("-Warning"), path});
        if (exiftool.waitForFinished(30000))
            QCOMPARE(exiftool.readAllStandardOutput(),
                     QStringLiteral("301x200\n%1 %1 %1\n").arg(bits).toLatin1());
    }
    QString error;
    QVERIFY(!writeTiff(develop(raw, {}), dir.filePath(QStringLiteral("missing/out.tif")), &error));
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(TestDevelop)
#include "tst_develop.moc"
