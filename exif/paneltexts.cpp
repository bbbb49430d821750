#include "exif/paneltexts.h"

#include "rawfile/tm9file.h"

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

TPanelTexts panelTexts(const TM9File &file)
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
    return t;
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
