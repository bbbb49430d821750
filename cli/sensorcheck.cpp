#include "cli/sensorcheck.h"

#include "exif/paneltexts.h"
#include "raw/sensorcheck.h"
#include "raw/sensorlist.h"
#include "rawfile/tm9file.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace {

// A progress line appears only for runs long enough to be watched.
constexpr int kProgressFromFiles = 20;

double apertureWeight(const QString &path)
{
    TM9File file(path);
    if (!file.processFile())
        return 1;
    return raw::apertureWeight(panelNumbers(file).aperture);
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
            {QStringLiteral("kind"),
             raw::markKindName(s.bright ? raw::TSensorMark::Bright : raw::TSensorMark::Dust)},
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
    QString out = raw::checkedText(r) + QLatin1Char('\n');
    for (const QString &line : {raw::skippedText(r), raw::mapText(r)}) {
        if (!line.isEmpty())
            out += line + QLatin1Char('\n');
    }
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
                   .arg(raw::markKindName(s.bright ? raw::TSensorMark::Bright
                                                   : raw::TSensorMark::Dust),
                        -6)
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
