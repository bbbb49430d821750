#include "exif/paneltexts.h"

#include "rawfile/tm9file.h"

#include <QLocale>
#include <QStringList>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// Exposure times up to this long read as fractions ("1/4"); longer ones in
// seconds ("0.5"), as the camera's display and most raw converters show them.
constexpr double kLongestFraction = 0.25;

double quotientOrNaN(double num, double den)
{
    return den != 0 ? num / den : kMissing;
}

// At most one decimal, none for whole numbers: "0.5", "2", "62.5".
QString shortDecimal(double value)
{
    return QLocale::c().toString(std::round(value * 10.0) / 10.0, 'f',
                                 std::fmod(std::round(value * 10.0), 10.0) == 0 ? 0 : 1);
}

} // namespace

QString approximateApertureText(const TLeicaValues &leica)
{
    // Whole f-stops only: 28/10 shows 2.0. A zero denominator shows 0.0.
    const TRational &f = leica.approximateFNumber;
    const quint32 quotient = f.den != 0 ? f.num / f.den : 0;
    return QStringLiteral("%1").arg(double(quotient), 0, 'f', 1);
}

QString twoDecimals(double value)
{
    return QStringLiteral("%1").arg(value, 0, 'f', 2);
}

QString temperatureText(const TLeicaValues &leica)
{
    return QString::number(leica.cameraTemperature) + QLatin1Char('C');
}

QString focalLengthText(const TM9File &file)
{
    return file.exif_0x920A_FocalLengthAsString() + QStringLiteral("mm");
}

QString notAvailableText()
{
    return QStringLiteral("n.a");
}

QString exactExposureTime(const TRational &time)
{
    if (time.num == 0 || time.den == 0)
        return notAvailableText();
    const quint32 divisor = std::gcd(time.num, time.den);
    const quint32 num = time.num / divisor;
    const quint32 den = time.den / divisor;
    const double seconds = double(num) / double(den);
    if (seconds > kLongestFraction)
        return shortDecimal(seconds);
    if (num == 1)
        return QStringLiteral("1/%1").arg(den);
    return QStringLiteral("1/") + shortDecimal(1.0 / seconds);
}

QString exactAperture(const TRational &fNumber)
{
    if (fNumber.num == 0 || fNumber.den == 0)
        return notAvailableText();
    return QStringLiteral("≈ f/%1").arg(double(fNumber.num) / double(fNumber.den), 0, 'f', 1);
}

QString signedOneDecimal(double value)
{
    const double tenths = std::round(value * 10.0);
    if (tenths == 0)
        return QStringLiteral("0.0");
    return (tenths > 0 ? QStringLiteral("+") : QString()) + QString::number(tenths / 10.0, 'f', 1);
}

QString exactCorrection(const TSRational &bias)
{
    if (bias.den == 0)
        return notAvailableText();
    return signedOneDecimal(double(bias.num) / double(bias.den)) + QStringLiteral(" EV");
}

QString exactFocalLength(const TRational &length)
{
    if (length.num == 0 || length.den == 0)
        return notAvailableText();
    return shortDecimal(double(length.num) / double(length.den)) + QStringLiteral(" mm");
}

QString exactTemperature(qint32 celsius)
{
    return QString::number(celsius) + QStringLiteral(" °C");
}

namespace {

QDateTime exifDateTime(const QString &text)
{
    return QDateTime::fromString(text, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
}

} // namespace

QString isoDateTime(const QString &exifDateTime)
{
    const QDateTime taken = ::exifDateTime(exifDateTime);
    // A date the camera did not set (blanks, zeros) stays as it is stored.
    return taken.isValid() ? taken.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : exifDateTime;
}

TPanelNumbers panelNumbers(const TM9File &file)
{
    const TExifValues &exif = file.exif();
    const TLeicaValues &leica = file.leica();
    TPanelNumbers n;
    n.iso = exif.iso != 0 ? double(exif.iso) : kMissing;
    n.exposureTime = exif.exposureTime.num != 0
                         ? quotientOrNaN(exif.exposureTime.num, exif.exposureTime.den)
                         : kMissing;
    n.aperture = leica.approximateFNumber.num != 0
                     ? quotientOrNaN(leica.approximateFNumber.num, leica.approximateFNumber.den)
                     : kMissing;
    n.focalLength = exif.focalLength.num != 0
                        ? quotientOrNaN(exif.focalLength.num, exif.focalLength.den)
                        : kMissing;
    n.expCorrection = quotientOrNaN(exif.exposureBiasValue.num, exif.exposureBiasValue.den);
    // The maker note stores 0 for these as for a missing entry: only the
    // entry tells them apart.
    const auto held = [&file](quint16 tag, double value) {
        return file.hasLeicaTag(tag) ? value : kMissing;
    };
    n.measuredLV = held(0x3407, leica.measuredLV);
    n.sensorBrightness = held(0x3408, leica.externalSensorBrightness);
    n.sensorTemperature = held(0x3402, leica.cameraTemperature);
    n.taken = exifDateTime(exif.dateTimeOriginal);
    return n;
}

TPanelTexts panelTexts(const TM9File &file, TValueStyle style)
{
    const TExifValues &exif = file.exif();
    const TLeicaValues &leica = file.leica();
    TPanelTexts t;
    t.fileName = file.fileName();
    t.dateTime = exif.dateTimeOriginal;
    t.expTime = exif.exposureTime.num == 0 || exif.exposureTime.den == 0
                    ? QStringLiteral("n.a")
                    : file.exif_0x829A_ExposureTimeAsString() + QStringLiteral(" sec");
    t.camera = exif.model;
    t.iso = QString::number(exif.iso);
    t.serial = leica.serialNumber;
    t.firmware = leica.firmwareVersion;
    t.apprAperture = approximateApertureText(leica);
    t.metering = file.exif_0x9207_MeteringModeAsString();
    t.expProgram = file.exif_0x8822_ExpProgAsString();
    t.expCorrection = file.exif_0x9204_ExpCompensationAsString();
    t.focalLength = focalLengthText(file);
    t.frameSelector = file.leicaFrameSelectorAsString();
    t.lens = file.leicaLensTypeAsString();
    t.imageId = file.leicaImageUniqueIDAsString();
    t.measuredLV = twoDecimals(leica.measuredLV);
    t.sensorBrightness = twoDecimals(leica.externalSensorBrightness);
    t.sensorTemperature = temperatureText(leica);
    if (style == TValueStyle::Exact) {
        t.dateTime = isoDateTime(exif.dateTimeOriginal);
        t.iso = exif.iso != 0 ? t.iso : notAvailableText();
        t.expTime = exactExposureTime(exif.exposureTime);
        t.apprAperture = exactAperture(leica.approximateFNumber);
        t.expCorrection = exactCorrection(exif.exposureBiasValue);
        t.focalLength = exactFocalLength(exif.focalLength);
        const TPanelNumbers n = panelNumbers(file);
        t.sensorTemperature = std::isnan(n.sensorTemperature)
                                  ? notAvailableText()
                                  : exactTemperature(leica.cameraTemperature);
        t.measuredLV = std::isnan(n.measuredLV) ? notAvailableText() : t.measuredLV;
        t.sensorBrightness =
            std::isnan(n.sensorBrightness) ? notAvailableText() : t.sensorBrightness;
    }
    return t;
}

QString frameSummary(const TPanelTexts &exact)
{
    return QStringList{exact.lens, exact.apprAperture, exact.expTime,
                       QStringLiteral("ISO ") + exact.iso, exact.expCorrection}
        .join(QStringLiteral(" \u00b7 "));
}

QList<std::pair<QString, QString>> panelRows(const TPanelTexts &t)
{
    return {
        {QStringLiteral("Camera:"), t.camera},
        {QStringLiteral("Serial:"), t.serial},
        {QStringLiteral("FW:"), t.firmware},
        {QStringLiteral("FileName:"), t.fileName},
        {QStringLiteral("Date/Time:"), t.dateTime},
        {QStringLiteral("ISO:"), t.iso},
        {QStringLiteral("Exp.Time:"), t.expTime},
        {QStringLiteral("Appr. Aperture:"), t.apprAperture},
        {QStringLiteral("Metering:"), t.metering},
        {QStringLiteral("Exp.Program"), t.expProgram},
        {QStringLiteral("Exp.Correction"), t.expCorrection},
        {QStringLiteral("Frame Selector:"), t.frameSelector},
        {QStringLiteral("Focal Length:"), t.focalLength},
        {QStringLiteral("Lens:"), t.lens},
        {QStringLiteral("MeasuredLV:"), t.measuredLV},
        {QStringLiteral("ExternalSensorBrightness:"), t.sensorBrightness},
        {QStringLiteral("SensorTemperature:"), t.sensorTemperature},
        {QStringLiteral("ImageID:"), t.imageId},
    };
}

QString panelRowsTabbed(const TPanelTexts &texts)
{
    QString text;
    for (const auto &[caption, value] : panelRows(texts))
        text += caption + QLatin1Char('\t') + value + QLatin1Char('\n');
    return text;
}
