#ifndef STATISTICS_H
#define STATISTICS_H

// What a card holds: its frames counted per lens, focal length, aperture,
// ISO, exposure time, program and day, on the exact values, for
// tolvik-info --stats and the card window's charts. Qt Core only.

#include "card/marks.h"
#include "card/records.h"
#include "exif/paneltexts.h"
#include "raw/rawstats.h"

#include <optional>

class TM9File;

enum class TCategory {
    Lens,
    FocalLength,
    Aperture,
    Iso,
    ExposureTime,
    Program,
    Day,
    // What the photographer and the raw data add: the window's charts only.
    Rating,
    Label,
    Headroom
};
// What the file's own values tell, as tolvik-info --stats counts them.
inline constexpr TCategory kCategories[] = {
    TCategory::Lens,         TCategory::FocalLength, TCategory::Aperture, TCategory::Iso,
    TCategory::ExposureTime, TCategory::Program,     TCategory::Day,
};
// The card window's charts: the file's values, then the marks and the raw
// figures.
inline constexpr TCategory kWindowCategories[] = {
    TCategory::Lens,         TCategory::FocalLength, TCategory::Aperture, TCategory::Iso,
    TCategory::ExposureTime, TCategory::Program,     TCategory::Day,      TCategory::Rating,
    TCategory::Label,        TCategory::Headroom,
};

// Headroom is counted in steps this wide (EV), up to the last, open one.
inline constexpr double kHeadroomStepEv = 0.5;
inline constexpr double kHeadroomTopEv = 3.0;

QString categoryName(TCategory category); // "Lens", "Focal length", ...

// One file of the card as the statistics see it.
struct TFrame {
    bool accepted = false;
    TPanelTexts texts; // exact
    TPanelNumbers numbers;
    // Its culling marks, from its sidecar or the DNG's own XMP.
    TMark mark;
    // Its raw exposure figures, once counted: they take a pass over the raw
    // data, so the card window counts them after the rest.
    std::optional<raw::TRawFigures> figures;
};
TFrame frameOf(const TM9File &file, bool accepted);

// The frame's value in a category: the text counted, shown and filtered on.
// A rating reads "★★★☆☆", "rejected" or "unrated"; a label its text or
// "none"; the headroom its step ("0.5–1.0 EV", "≥ 3.0 EV"), "n.a" before the
// figures are counted.
QString categoryText(const TFrame &frame, TCategory category);

struct TCount {
    QString value;
    int frames = 0;
};

// The accepted frames per value of the category, in the values' natural
// order (by number, date or name); frames without a value last, as "n.a".
QList<TCount> countPer(TCategory category, const QList<TFrame> &frames);

struct TTemperatureRange {
    int frames = 0; // accepted frames that hold a temperature
    double lowest = 0;
    double highest = 0;
};
TTemperatureRange temperatureRange(const QList<TFrame> &frames);
QString temperatureRangeText(const TTemperatureRange &range); // "12 °C – 31 °C"

// Every category's counts and the temperature range as tolvik-info --stats
// prints them: aligned text, or rows "category,value,frames" as CSV or JSON.
QByteArray statisticsRecord(TFormat format, const QList<TFrame> &frames);

#endif // STATISTICS_H
