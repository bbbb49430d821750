#include "tools/sensorcard.h"

#include <QRandomGenerator>

#include <cmath>

namespace fixture {

namespace {

// The spots' contrasts: from the faintest the check must find to the
// strongest dust (a particle's shadow at f/16) and corrosion spot.
constexpr double kLeastContrast = 0.04, kDustContrast = 0.6, kBrightContrast = 0.4;

bool clear(const SensorCard &card, QPointF at, double reach)
{
    for (const Spot &s : card.spots) {
        if (std::hypot(s.at.x() - at.x(), s.at.y() - at.y()) < 2.2 * (s.radius + reach))
            return false;
    }
    for (const PixelDefect &d : card.defects) {
        if (std::hypot(d.at.x() - at.x(), d.at.y() - at.y()) < reach + 6)
            return false;
    }
    return true;
}

} // namespace

SensorCard makeSensorCard(int width, int height, int frames, const SensorCardCounts &counts,
                          quint32 seed)
{
    SensorCard card;
    card.width = width;
    card.height = height;
    card.frames = frames;
    QRandomGenerator random(seed);
    const RawGenerator geometry([&] {
        RawOptions o;
        o.width = width;
        o.height = height;
        return o;
    }());
    const QRect active = geometry.activeArea();
    const double largest =
        std::max(8.0, std::min({40.0, active.width() / 10.0, active.height() / 10.0}));
    const auto place = [&](double reach) {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            const QPointF at(active.left() + reach + 4 +
                                 random.bounded(std::max(1.0, active.width() - 2 * reach - 8)),
                             active.top() + reach + 4 +
                                 random.bounded(std::max(1.0, active.height() - 2 * reach - 8)));
            if (clear(card, at, reach))
                return at;
        }
        return QPointF(-1000, -1000); // no room: left out
    };
    for (int i = 0; i < counts.dust + counts.bright; ++i) {
        Spot spot;
        spot.radius = 8 + random.bounded(largest - 8);
        // Evenly spread in ratio over the spots of a kind, so that every card
        // has faint and strong ones.
        const bool dust = i < counts.dust;
        const double stratum = (dust ? i : i - counts.dust) + random.generateDouble();
        const double contrast =
            kLeastContrast * std::pow((dust ? kDustContrast : kBrightContrast) / kLeastContrast,
                                      stratum / (dust ? counts.dust : counts.bright));
        spot.contrast = dust ? -contrast : contrast;
        spot.halo = !dust && i % 2 ? contrast / 3 : 0;
        spot.at = place(spot.radius * (spot.halo > 0 ? 1.6 : 1));
        if (spot.at.x() >= 0)
            card.spots.append(spot);
    }
    const auto defect = [&](PixelDefect::Kind kind) {
        const QPointF at = place(3);
        if (at.x() < 0)
            return;
        PixelDefect d;
        d.kind = kind;
        d.at = at.toPoint();
        d.value = quint16(2500 + random.bounded(5000));
        QList<int> resting;
        if (kind == PixelDefect::Hot) {
            for (int f = 0; f < frames; ++f) {
                if (random.bounded(100) < 12)
                    resting.append(f);
            }
        }
        card.defects.append(d);
        card.restingFrames.append(resting);
    };
    for (int i = 0; i < counts.hot; ++i)
        defect(PixelDefect::Hot);
    for (int i = 0; i < counts.stuck; ++i)
        defect(PixelDefect::Stuck);
    for (int i = 0; i < counts.dead; ++i)
        defect(PixelDefect::Dead);
    return card;
}

RawOptions sensorCardFrame(const SensorCard &card, int frame)
{
    RawOptions o;
    o.width = card.width;
    o.height = card.height;
    o.scene = RawScene::Photo;
    o.frame = frame;
    o.spots = card.spots;
    for (qsizetype i = 0; i < card.defects.size(); ++i) {
        if (!card.restingFrames[i].contains(frame))
            o.defects.append(card.defects[i]);
    }
    return o;
}

} // namespace fixture
