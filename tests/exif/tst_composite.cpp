// Derived values: light value, 35 mm scale, circle of confusion, hyperfocal
// and focus distance, from the Exif values of a file.

#include "tests/exif/loadfixture.h"

#include <QtTest>

#include <cmath>
#include <limits>

using namespace exiftest;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Equal within tolerance; infinities by sign, NaN only to NaN.
bool near(double actual, double expected, double tolerance = 5e-5)
{
    if (std::isnan(expected) || std::isinf(expected))
        return std::isnan(expected) ? std::isnan(actual) : actual == expected;
    return std::abs(actual - expected) <= tolerance;
}

Build exposure(std::pair<quint32, quint32> fNumber, std::pair<quint32, quint32> time, int iso)
{
    return [=](fixture::Ifd &, fixture::Ifd &exif) {
        exif.rational(0x829A, time.first, time.second);
        exif.rational(0x829D, fNumber.first, fNumber.second);
        if (iso >= 0)
            exif.shortValue(0x8827, quint16(iso));
    };
}

Build lens(std::pair<quint32, quint32> focal, int focal35)
{
    return [=](fixture::Ifd &, fixture::Ifd &exif) {
        exif.rational(0x920A, focal.first, focal.second);
        if (focal35 >= 0)
            exif.shortValue(0xA405, quint16(focal35));
    };
}

} // namespace

class TstComposite : public QObject {
    Q_OBJECT

private:
    fixture::TempFiles m_files;

private slots:
    void lightValue_data();
    void lightValue();
    void lensGeometry_data();
    void lensGeometry();
};

void TstComposite::lightValue_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<double>("expected");
    QTest::newRow("f/8 1/125 ISO 100") << exposure({8, 1}, {1, 125}, 100) << 12.9658;
    QTest::newRow("ISO 199 counts as 100") << exposure({8, 1}, {1, 125}, 199) << 12.9658;
    QTest::newRow("ISO 200") << exposure({8, 1}, {1, 125}, 200) << 11.9658;
    QTest::newRow("f/5.6 1/250 ISO 160") << exposure({56, 10}, {1, 250}, 160) << 12.9366;
    QTest::newRow("ISO 50 counts as 0") << exposure({8, 1}, {1, 125}, 50) << kInf;
    QTest::newRow("ISO missing") << exposure({8, 1}, {1, 125}, -1) << kInf;
    QTest::newRow("FNumber 0/1") << exposure({0, 1}, {1, 125}, 100) << 0.0;
    QTest::newRow("FNumber 8/0") << exposure({8, 0}, {1, 125}, 100) << 0.0;
    QTest::newRow("time 0/125") << exposure({8, 1}, {0, 125}, 100) << 0.0;
    QTest::newRow("time 1/0, ISO 50") << exposure({8, 1}, {1, 0}, 50) << 0.0;
}

void TstComposite::lightValue()
{
    QFETCH(Build, build);
    QFETCH(double, expected);
    const auto file = load(m_files, m9File(build));
    QVERIFY(file);
    const double lv = file->composite_LightValue();
    QVERIFY2(near(lv, expected), qPrintable(QString::number(lv, 'g', 10)));
}

void TstComposite::lensGeometry_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("circle");
    QTest::addColumn<double>("focus"); // at focus position 0: (1/32 + 1) x focal35 / 1000
    QTest::addColumn<double>("hyperfocal");
    // Without an aperture text the hyperfocal distance divides by 0.
    QTest::newRow("35mm as 52mm") << lens({35, 1}, 52) << 0.673077 << 0.044640 << 0.053625 << kInf;
    QTest::newRow("50mm on full frame")
        << lens({50, 1}, 50) << 1.0 << 0.030047 << 0.0515625 << kInf;
    QTest::newRow("FocalLength35 missing") << lens({35, 1}, -1) << kInf << 0.0 << 0.0 << kInf;
    QTest::newRow("FocalLength 0/1") << lens({0, 1}, 50) << 0.0 << kInf << 0.0515625 << kNaN;
    QTest::newRow("nothing") << lens({0, 0}, 0) << kNaN << kNaN << 0.0 << kNaN;
}

void TstComposite::lensGeometry()
{
    QFETCH(Build, build);
    QFETCH(double, scale);
    QFETCH(double, circle);
    QFETCH(double, focus);
    QFETCH(double, hyperfocal);
    const auto file = load(m_files, m9File(build));
    QVERIFY(file);
    QVERIFY(near(file->composite_ScaleFactor35(), scale, 5e-6));
    QVERIFY(near(file->composite_CircleOfConfusion(), circle, 5e-6));
    QVERIFY(near(file->composite_FocusDistance(), focus, 1e-9));
    QVERIFY(near(file->composite_HyperfocalDistance(), hyperfocal));
}

QTEST_MAIN(TstComposite)
#include "tst_composite.moc"
