#include "cli/sensorcheck.h"

#include "exif/paneltexts.h"
#include "raw/sensorcheck.h"
#include "rawfile/tm9file.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace {

// Frames at the apertures that show the glass sharpest count this much more
// for spots than frames at wider ones.
constexpr double kSmallApertureWeight = 2;
constexpr double kSmallApertureFrom = 5.6, kSmallApertureTo = 22;
// A progress line appears only for runs long enough to be watched.
constexpr int kProgressFromFiles = 20;

double apertureWeight(const QString &path)
{
    TM9File file(path);
    if (!file.processFile())
        return 1;
    const double f = panelNumbers(file).aperture;
    return f >= kSmallApertureFrom - 0.05 && f <= kSmallApertureTo + 0.05 ? kSmallApertureWeight
                                                                          : 1;
}

double oneDecimal(double v)
{
    return std::round(v * 10) / 10;
}

QByteArray jsonOf(const raw::TSensorCheckResult &r)
{
    QJsonArray defects, spots;
    for (const raw::TSensorDefect &d : r.defects)
        defects.append(
            QJsonObject{{QStringLiteral("x"), d.x},
                        {QStringLiteral("y"), d.y},
                        {QStringLiteral("kind"), QLatin1String(raw::defectKindName(d.kind))},
                        {QStringLiteral("frames"), d.frames}});
    for (const raw::TSensorSpot &s : r.spots)
        spots.append(QJsonObject{
            {QStringLiteral("x"), oneDecimal(s.x)},
            {QStringLiteral("y"), oneDecimal(s.y)},
            {QStringLiteral("radius"), oneDecimal(s.radius)},
            {QStringLiteral("kind"), s.bright ? QStringLiteral("bright") : QStringLiteral("dust")},
            {QStringLiteral("contrast_percent"), oneDecimal(s.contrastPercent)},
            {QStringLiteral("frames"), s.frames}});
    const QJsonObject object{{QStringLiteral("frames"), r.frames},
                             {QStringLiteral("width"), r.width},
                             {QStringLiteral("height"), r.height},
                             {QStringLiteral("skipped"),
                              QJsonObject{{QStringLiteral("other_camera"), r.skippedOtherCamera},
                                          {QStringLiteral("cut_short"), r.skippedCutShort},
                                          {QStringLiteral("other_size"), r.skippedOtherSize}}},
                             {QStringLiteral("defects"), defects},
                             {QStringLiteral("spots"), spots}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray textOf(const raw::TSensorCheckResult &r)
{
    QString out = QStringLiteral("Frames checked: %1\n").arg(r.frames);
    if (r.skippedOtherCamera + r.skippedCutShort + r.skippedOtherSize)
        out += QStringLiteral("Frames skipped: %1 of another camera, %2 cut short, %3 of "
                              "another raw size\n")
                   .arg(r.skippedOtherCamera)
                   .arg(r.skippedCutShort)
                   .arg(r.skippedOtherSize);
    if (r.width)
        out += QStringLiteral("Sensor map: %1 x %2 pixels (raw image; active area x %3-%4, "
                              "y %5-%6)\n")
                   .arg(r.width)
                   .arg(r.height)
                   .arg(r.activeLeft)
                   .arg(r.activeRight - 1)
                   .arg(r.activeTop)
                   .arg(r.activeBottom - 1);
    out += QStringLiteral("\nPixel defects: %1\n").arg(r.defects.size());
    for (const raw::TSensorDefect &d : r.defects)
        out += QStringLiteral("  x %1  y %2  %3  in %4 of %5 frames\n")
                   .arg(d.x, 5)
                   .arg(d.y, 5)
                   .arg(QLatin1String(raw::defectKindName(d.kind)), -5)
                   .arg(d.frames)
                   .arg(r.frames);
    out += QStringLiteral("\nSpots: %1\n").arg(r.spots.size());
    for (const raw::TSensorSpot &s : r.spots)
        out += QStringLiteral("  x %1  y %2  radius %3  %4  %5 %  in %6 frames\n")
                   .arg(qRound(s.x), 5)
                   .arg(qRound(s.y), 5)
                   .arg(qRound(s.radius), 3)
                   .arg(s.bright ? QStringLiteral("bright") : QStringLiteral("dust  "))
                   .arg(QString::number(s.contrastPercent, 'f', 1), 6)
                   .arg(s.frames);
    return out.toUtf8();
}

} // namespace

int runSensorCheck(const QStringList &files, TFormat format, int jobs)
{
    const bool showProgress = files.size() >= kProgressFromFiles && isatty(STDERR_FILENO);
    int status = 0;
    raw::TSensorCheckOptions options;
    options.jobs = jobs;
    options.weightOf = apertureWeight;
    options.progress = [&](int done, int total, const QString &path, const QString &problem) {
        if (!problem.isEmpty()) {
            if (showProgress)
                std::fputs("\r\033[K", stderr);
            std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(problem));
            status = 1;
        }
        if (showProgress)
            std::fprintf(stderr, "\r%d/%d files", done, total);
    };
    const raw::TSensorCheckResult result = raw::checkSensor(files, options);
    if (showProgress)
        std::fputs("\r\033[K", stderr);
    const QByteArray out = format == TFormat::Json ? jsonOf(result) : textOf(result);
    std::fwrite(out.constData(), 1, std::size_t(out.size()), stdout);
    return status;
}
