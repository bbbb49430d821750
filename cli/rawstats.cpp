#include "cli/rawstats.h"

#include "card/filerows.h"
#include "card/inorder.h"
#include "raw/rawstats.h"
#include "rawfile/tm9file.h"

#include <QLocale>

#include <cmath>
#include <cstdio>

namespace {

// The CSV has columns for every channel a file may have: an M9 file fills
// R, G and B, a Monochrom file L.
constexpr const char *kChannels[] = {"R", "G", "B", "L"};
constexpr const char *kFigures[] = {"clipped", "clipped_percent", "p999", "headroom_ev"};

// A number, or null where there is none.
QVariant number(double value)
{
    return std::isfinite(value) ? QVariant(value) : QVariant();
}

QVariant headroom(const raw::TChannelFigures &c)
{
    return c.headroomEv ? number(*c.headroomEv) : QVariant();
}

// The figures a channel's JSON object and CSV columns hold, in kFigures'
// order first.
QList<TRow> channelRows(const raw::TChannelFigures &c)
{
    return {{QStringLiteral("clipped"), c.clipped},
            {QStringLiteral("clipped_percent"), c.clippedPercent},
            {QStringLiteral("p999"), number(c.p999)},
            {QStringLiteral("headroom_ev"), headroom(c)},
            {QStringLiteral("black"), number(c.black)},
            {QStringLiteral("pixels"), c.pixels}};
}

// A JSON object without the line's end.
QByteArray jsonObject(const QList<TRow> &members)
{
    return jsonLine(members).chopped(1);
}

QString csvNumber(const QVariant &value)
{
    if (value.isNull())
        return QString();
    if (value.typeId() == QMetaType::Double)
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    return value.toString();
}

// Why a file is not figured: not accepted as an M9 / Monochrom DNG, or its
// raw data cannot be decoded.
raw::TRawFigures figuresOf(const QString &path)
{
    TM9File file(path);
    if (!file.processFile()) {
        raw::TRawFigures refused;
        refused.error = fileError(file, false);
        return refused;
    }
    return raw::rawFiguresOfFile(path);
}

} // namespace

QByteArray rawStatsCsvHeader()
{
    QStringList names{QStringLiteral("file"), QStringLiteral("black"), QStringLiteral("white")};
    for (const char *channel : kChannels) {
        for (const char *figure : kFigures)
            names.append(
                QStringLiteral("%1_%2").arg(QLatin1String(channel), QLatin1String(figure)));
    }
    names.append(QStringLiteral("error"));
    return csvLine(names);
}

QByteArray rawStatsRecord(TFormat format, const QString &path, const raw::TRawFigures &figures)
{
    const bool ok = figures.ok();
    switch (format) {
    case TFormat::Text: {
        if (!ok)
            return QByteArray();
        QString line = path;
        for (const raw::TChannelFigures &c : figures.channels) {
            line += QStringLiteral("  %1 %2 %3")
                        .arg(c.name, raw::clippedText(c.clippedPercent, c.clipped),
                             raw::headroomText(c.headroomEv));
        }
        return (line + QLatin1Char('\n')).toUtf8();
    }
    case TFormat::Json: {
        if (!ok)
            return jsonLine(
                {{QStringLiteral("file"), path}, {QStringLiteral("error"), figures.error}});
        QByteArray out = jsonObject({{QStringLiteral("file"), path},
                                     {QStringLiteral("black"), number(figures.black)},
                                     {QStringLiteral("white"), figures.white}});
        out.chop(1);
        out += ",\"channels\":{";
        for (qsizetype i = 0; i < figures.channels.size(); ++i) {
            const raw::TChannelFigures &c = figures.channels[i];
            out += (i > 0 ? ",\"" : "\"") + c.name.toUtf8() + "\":" + jsonObject(channelRows(c));
        }
        return out + "}}\n";
    }
    case TFormat::Csv: {
        QStringList fields{path};
        if (ok) {
            fields << csvNumber(number(figures.black)) << QString::number(figures.white);
        } else {
            fields << QString() << QString();
        }
        for (const char *channel : kChannels) {
            const raw::TChannelFigures *found = nullptr;
            for (const raw::TChannelFigures &c : figures.channels)
                found = c.name == QLatin1String(channel) ? &c : found;
            const QList<TRow> rows = found ? channelRows(*found) : QList<TRow>();
            for (std::size_t i = 0; i < std::size(kFigures); ++i)
                fields.append(found ? csvNumber(rows[qsizetype(i)].second) : QString());
        }
        fields.append(figures.error);
        return csvLine(fields);
    }
    }
    return QByteArray();
}

int runRawStats(const QStringList &files, TFormat format, int jobs)
{
    int status = 0;
    if (format == TFormat::Csv)
        std::fputs(rawStatsCsvHeader().constData(), stdout);
    runInOrder<raw::TRawFigures>(
        int(files.size()), jobs, [&](int i) { return figuresOf(files[i]); },
        [&](int i, raw::TRawFigures &&figures) {
            if (!figures.ok()) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(files[i]), qPrintable(figures.error));
                status = 1;
            }
            const QByteArray out = rawStatsRecord(format, files[i], figures);
            std::fwrite(out.constData(), 1, std::size_t(out.size()), stdout);
        });
    return status;
}
