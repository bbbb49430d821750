#ifndef SENSORCARD_H
#define SENSORCARD_H

// A card of test pictures from one sensor with known faults: hot, stuck and
// dead pixels and spots on the cover glass (dust, and bright ones with and
// without a halo), each frame another part of the photograph. A hot pixel
// rests in a few frames (as a hot pixel that needs warmth does). For the
// sensor check's tests and benchmark.

#include "tests/support/rawgen.h"

#include <QList>

namespace fixture {

struct SensorCardCounts {
    int hot = 0, stuck = 0, dead = 0, dust = 0, bright = 0;
};

struct SensorCard {
    int width = 5270, height = 3516;
    int frames = 0;
    QList<PixelDefect> defects;
    QList<Spot> spots;
    QList<QList<int>> restingFrames; // per defect: the frames a hot pixel does not show in
};

// Faults placed at random (from the seed) inside the active area, apart from
// each other; spots of radius 8 to 40 pixels (at most a tenth of the smaller
// side) and contrast 4 to 60 % (dust) or 4 to 40 % (bright), evenly spread in
// ratio over the spots of a kind.
SensorCard makeSensorCard(int width, int height, int frames, const SensorCardCounts &counts,
                          quint32 seed);

// The generator's options of one frame of the card.
RawOptions sensorCardFrame(const SensorCard &card, int frame);

} // namespace fixture

#endif // SENSORCARD_H
