#include "card/filerows.h"

#include "card/queries.h"
#include "exif/paneltexts.h"
#include "rawfile/tm9file.h"

#include <QSize>

#include <algorithm>
#include <cmath>

namespace {

QString sizeText(const QSize &size)
{
    return size.isValid() ? QStringLiteral("%1x%2").arg(size.width()).arg(size.height())
                          : QString();
}

// A number JSON can carry, or null for a value the file does not hold.
QVariant number(double value)
{
    return std::isnan(value) ? QVariant() : QVariant(value);
}

// The exact values under keys that stay the same from release to release.
QList<TRow> numberRows(const TM9File &file)
{
    const TPanelNumbers n = panelNumbers(file);
    return {
        {QStringLiteral("date_time"),
         n.taken.isValid() ? QVariant(n.taken.toString(Qt::ISODate)) : QVariant()},
        {QStringLiteral("iso"), number(n.iso)},
        {QStringLiteral("exposure_time_s"), number(n.exposureTime)},
        {QStringLiteral("aperture_estimate"), number(n.aperture)},
        {QStringLiteral("focal_length_mm"), number(n.focalLength)},
        {QStringLiteral("exposure_correction_ev"), number(n.expCorrection)},
        {QStringLiteral("measured_lv"), number(n.measuredLV)},
        {QStringLiteral("sensor_brightness_lv"), number(n.sensorBrightness)},
        {QStringLiteral("sensor_temperature_c"), number(n.sensorTemperature)},
    };
}

// Every query and stored value, by name.
QList<TRow> queryRows(const TM9File &file)
{
    QList<TRow> rows;
    for (const TQuery &query : allQueries())
        rows.append({QString::fromLatin1(query.name), query.value(file)});
    for (const TQuery &field : storedValues())
        rows.append({QString::fromLatin1(field.name), field.value(file)});
    return rows;
}

} // namespace

QList<TRow> fileRows(const TM9File &file, const TRowOptions &options, bool accepted,
                     const TMark &mark)
{
    QList<TRow> rows{
        {options.preflight ? QStringLiteral("processFilePreflight") : QStringLiteral("processFile"),
         accepted}};
    if (options.preflight) {
        const QString thumbnail = sizeText(file.thumbnailSize());
        rows += {
            {QStringLiteral("Model:"), file.exif().model},
            {QStringLiteral("Thumbnail:"),
             thumbnail.isEmpty() ? QStringLiteral("none") : thumbnail},
            {QStringLiteral("F-Number:"), file.exif_0x829D_FNumberAsString()},
            {QStringLiteral("Focal Length:"), focalLengthText(file)},
        };
    } else {
        const TValueStyle style = options.exact ? TValueStyle::Exact : TValueStyle::Specified;
        for (const auto &[caption, text] : panelRows(panelTexts(file, style)))
            rows.append({caption, text});
    }
    if (options.exposureSeconds)
        insertExposureSeconds(rows, panelNumbers(file).exposureTime);
    if (options.numbers)
        rows += numberRows(file);
    if (options.all)
        rows += queryRows(file);
    return rows + markRows(mark, options.marksAsText);
}

QList<TRow> markRows(const TMark &mark, bool asText)
{
    if (asText) {
        const TMarkTexts texts = markTexts(mark, true);
        QList<TRow> rows;
        if (!texts.rating.isEmpty())
            rows.append({QStringLiteral("Rating:"), texts.rating});
        if (!texts.label.isEmpty())
            rows.append({QStringLiteral("Label:"), texts.label});
        return rows;
    }
    return {{QStringLiteral("rating"), mark.hasRating ? QVariant(mark.rating) : QVariant()},
            {QStringLiteral("label"), mark.label.isEmpty() ? QVariant() : QVariant(mark.label)}};
}

void insertExposureSeconds(QList<TRow> &rows, double seconds)
{
    // Beside its text, so that a spreadsheet never takes "1/4" for a date.
    const qsizetype at =
        std::find_if(rows.cbegin(), rows.cend(),
                     [](const TRow &row) { return row.first == QLatin1String("Exp.Time:"); }) -
        rows.cbegin();
    rows.insert(std::min(at + 1, rows.size()),
                {QStringLiteral("exposure_time_s"), number(seconds)});
}

QList<TRow> passFacts(const TM9File &file)
{
    return QList<TRow>{{QStringLiteral("processFile"), false}} + queryRows(file);
}

QString fileFinding(const TM9File &file)
{
    if (!file.isFileFound())
        return file.openError();
    if (!file.isHeaderValid())
        return QStringLiteral("not a TIFF file");
    const QString model = file.exif().model.trimmed();
    if (!model.isEmpty() && model != TExifValues().model && !file.isValidModel())
        return QStringLiteral("Model: %1").arg(model);
    if (file.isIncomplete())
        return QStringLiteral("file ends at byte %1").arg(file.fileSize());
    return file.isValidModel() ? QString() : QStringLiteral("no camera model");
}

QString fileError(const TM9File &file, bool accepted)
{
    // A file that cannot be read is not called a wrong one: its reason alone.
    if (!file.isFileFound())
        return file.openError();
    return accepted ? fileFinding(file) : rejectionText(file);
}

QString rejectionText(const TM9File &file)
{
    QString text = QStringLiteral("Fehler bei der Verarbeitung. Keine native DNG-Datei!");
    const QString finding = fileFinding(file);
    if (!finding.isEmpty())
        text += QStringLiteral(" (%1)").arg(finding);
    return text;
}
