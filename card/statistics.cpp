#include "card/statistics.h"

#include "rawfile/tm9file.h"

#include <QMap>

#include <algorithm>
#include <cmath>

namespace {

struct TCategoryName {
    TCategory category;
    const char *name;
};
constexpr TCategoryName kCategoryNames[] = {
    {TCategory::Lens, "Lens"},
    {TCategory::FocalLength, "Focal length"},
    {TCategory::Aperture, "Aperture (camera's estimate)"},
    {TCategory::Iso, "ISO"},
    {TCategory::ExposureTime, "Exposure time"},
    {TCategory::Program, "Exposure program"},
    {TCategory::Day, "Day"},
    {TCategory::Rating, "Rating"},
    {TCategory::Label, "Colour label"},
    {TCategory::Headroom, "Headroom"},
};

// The frame's headroom: the channel's that clips first.
std::optional<double> headroomOf(const TFrame &frame)
{
    if (!frame.figures || !frame.figures->ok())
        return std::nullopt;
    return raw::frameExposure(*frame.figures).headroomEv;
}

// Where a label stands among the colours; other texts after them.
double labelKey(const QString &label)
{
    double key = 0;
    for (const TColourLabelText &colour : kColourLabels) {
        if (label == QLatin1String(colour.text))
            return colour.code == TColourLabel::None ? std::size(kColourLabels) : key;
        ++key;
    }
    return std::nan("");
}

// The value's place in the category's order: a number, a day, or NaN for the
// categories ordered by name.
double orderKey(const TFrame &frame, TCategory category)
{
    const TPanelNumbers &n = frame.numbers;
    switch (category) {
    case TCategory::FocalLength: return n.focalLength;
    case TCategory::Aperture: return n.aperture;
    case TCategory::Iso: return n.iso;
    case TCategory::ExposureTime: return n.exposureTime;
    case TCategory::Day:
        return n.taken.isValid() ? double(n.taken.date().toJulianDay()) : std::nan("");
    case TCategory::Rating: return frame.mark.hasRating ? frame.mark.rating : 0;
    case TCategory::Label: return labelKey(frame.mark.label);
    case TCategory::Headroom: {
        const std::optional<double> ev = headroomOf(frame);
        return ev ? std::min(std::floor(*ev / kHeadroomStepEv) * kHeadroomStepEv, kHeadroomTopEv)
                  : std::nan("");
    }
    case TCategory::Lens:
    case TCategory::Program: break;
    }
    return std::nan("");
}

} // namespace

QString categoryName(TCategory category)
{
    for (const TCategoryName &row : kCategoryNames) {
        if (row.category == category)
            return QString::fromLatin1(row.name);
    }
    return QString();
}

TFrame frameOf(const TM9File &file, bool accepted)
{
    TFrame frame;
    frame.accepted = accepted;
    frame.texts = panelTexts(file, TValueStyle::Exact);
    frame.numbers = panelNumbers(file);
    return frame;
}

QString categoryText(const TFrame &frame, TCategory category)
{
    const TPanelTexts &t = frame.texts;
    switch (category) {
    case TCategory::Lens: return t.lens;
    case TCategory::FocalLength: return t.focalLength;
    case TCategory::Aperture: return t.apprAperture;
    case TCategory::Iso: return t.iso;
    case TCategory::ExposureTime: return t.expTime;
    case TCategory::Program: return t.expProgram;
    case TCategory::Day:
        return frame.numbers.taken.isValid() ? frame.numbers.taken.date().toString(Qt::ISODate)
                                             : notAvailableText();
    case TCategory::Rating: {
        const QString stars = markTexts(frame.mark, true).rating;
        return stars.isEmpty() ? QStringLiteral("unrated") : stars;
    }
    case TCategory::Label:
        return frame.mark.label.isEmpty() ? QStringLiteral("none") : frame.mark.label;
    case TCategory::Headroom: {
        const double step = orderKey(frame, category);
        if (std::isnan(step))
            return notAvailableText();
        if (step >= kHeadroomTopEv)
            return QStringLiteral("\u2265 %1 EV").arg(step, 0, 'f', 1);
        return QStringLiteral("%1\u2013%2 EV")
            .arg(step, 0, 'f', 1)
            .arg(step + kHeadroomStepEv, 0, 'f', 1);
    }
    }
    return notAvailableText();
}

QList<TCount> countPer(TCategory category, const QList<TFrame> &frames)
{
    struct TGroup {
        double key;
        int frames = 0;
    };
    QMap<QString, TGroup> groups;
    for (const TFrame &frame : frames) {
        if (!frame.accepted)
            continue;
        const QString text = categoryText(frame, category);
        const double key = orderKey(frame, category);
        auto group = groups.find(text);
        if (group == groups.end())
            group = groups.insert(text, {key});
        group->key = std::fmin(group->key, key); // texts that round alike: the smallest
        ++group->frames;
    }
    QList<std::pair<QString, TGroup>> sorted;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group)
        sorted.append({group.key(), group.value()});
    // By number where the category has one (names otherwise, as the map
    // keeps them); what has no value last.
    const auto missing = [](const std::pair<QString, TGroup> &g) {
        return g.first == notAvailableText();
    };
    std::stable_sort(sorted.begin(), sorted.end(), [&](const auto &a, const auto &b) {
        if (missing(a) != missing(b))
            return missing(b);
        if (std::isnan(a.second.key) || std::isnan(b.second.key))
            return !std::isnan(a.second.key) && std::isnan(b.second.key);
        return a.second.key < b.second.key;
    });
    QList<TCount> counts;
    for (const auto &[text, group] : sorted)
        counts.append({text, group.frames});
    return counts;
}

TTemperatureRange temperatureRange(const QList<TFrame> &frames)
{
    TTemperatureRange range;
    for (const TFrame &frame : frames) {
        const double t = frame.numbers.sensorTemperature;
        if (!frame.accepted || std::isnan(t))
            continue;
        range.lowest = range.frames == 0 ? t : std::min(range.lowest, t);
        range.highest = range.frames == 0 ? t : std::max(range.highest, t);
        ++range.frames;
    }
    return range;
}

QString temperatureRangeText(const TTemperatureRange &range)
{
    if (range.frames == 0)
        return notAvailableText();
    return exactTemperature(qint32(range.lowest)) + QStringLiteral(" \u2013 ") +
           exactTemperature(qint32(range.highest));
}

QByteArray statisticsRecord(TFormat format, const QList<TFrame> &frames)
{
    const QString temperatureCategory = QStringLiteral("Sensor temperature");
    const TTemperatureRange range = temperatureRange(frames);
    const QString rangeText = temperatureRangeText(range);
    QByteArray out;
    switch (format) {
    case TFormat::Text: {
        QString text;
        for (const TCategory category : kCategories) {
            text += categoryName(category) + QLatin1Char('\n');
            for (const TCount &count : countPer(category, frames))
                text += QStringLiteral("  %1 %2\n").arg(count.value, -36).arg(count.frames, 5);
        }
        text += temperatureCategory + QLatin1Char('\n') +
                QStringLiteral("  %1 %2\n").arg(rangeText, -36).arg(range.frames, 5);
        return text.toUtf8();
    }
    case TFormat::Csv:
        out = csvLine(
            {QStringLiteral("category"), QStringLiteral("value"), QStringLiteral("frames")});
        for (const TCategory category : kCategories) {
            for (const TCount &count : countPer(category, frames))
                out +=
                    csvLine({categoryName(category), count.value, QString::number(count.frames)});
        }
        return out + csvLine({temperatureCategory, rangeText, QString::number(range.frames)});
    case TFormat::Json: {
        const auto member = [](const char *key, const QVariant &value) {
            return TRow{QString::fromLatin1(key), value};
        };
        for (const TCategory category : kCategories) {
            for (const TCount &count : countPer(category, frames))
                out += jsonLine({member("category", categoryName(category)),
                                 member("value", count.value), member("frames", count.frames)});
        }
        QList<TRow> temperature{member("category", temperatureCategory), member("value", rangeText),
                                member("frames", range.frames)};
        if (range.frames > 0)
            temperature += {member("lowest", range.lowest), member("highest", range.highest)};
        return out + jsonLine(temperature);
    }
    }
    return out;
}
