#ifndef SENSORCHECK_H
#define SENSORCHECK_H

// The sensor check of a card: pixels that are hot, stuck or dead, and spots
// on the sensor's cover glass (dust, and the bright spots that corrosion of
// the glass leaves), found from what shows at the same place in many frames.
// Qt Core only.
//
// Coordinates are those of the stored raw image (column x, row y, origin top
// left, before crop and orientation).
//
// Defects: each frame's pixel against the largest and the smallest of its
// eight nearest neighbours of the same colour (two pixels away on the colour
// filter array, one on a Monochrom). Per pixel the check counts the frames in
// which it stood well above the largest, and keeps whether it was at the white
// level, and at the black level, in every frame. Stuck: at white in every
// frame and above its neighbours in one at least. Hot: above its neighbours
// in more than half of the frames, without being stuck. Dead: at black in
// every frame while all its neighbours were clearly not in one at least. The
// two pixels at the active area's edge have no full set of neighbours and are
// not examined.
//
// Spots: each frame's active area in blocks of 4 x 4 pixels (two of each
// filter colour), black subtracted, as logarithms; each block's difference
// from the frame's own smoothing (a 41-block box) is what the frame says about
// the glass there. Frames are averaged block by block, weighted by how flat
// the scene is around the block (scene detail is what hides a spot; what the
// glass itself spreads there is not detail, or a strong spot would let the
// busiest frames outweigh the flat ones on it) and by the frame's weight (the
// caller's: small apertures show spots sharpest), so that the scene averages
// away and what stays is the glass. Blocks with a clipped, black or
// outstanding pixel are left out of a frame; a frame's say is capped for the
// search (an edge in one frame must not outweigh the others), much less for
// measuring the spots found (dust may darken by 90 %). Blobs of radius 8 to
// 40 pixels are found in the average as a centre brighter or darker than a
// ring around it, at several sizes, measured against how much that response
// varies around them; each is then fitted with the soft disc a spot on the
// glass casts (a raised cosine) and a halo's ring, which gives its centre,
// radius and contrast, and kept when it is round, strong enough and not the
// echo of a stronger spot nearby.
//
// Frames are fed one at a time (memory: 4 bytes a pixel, plus the block
// planes); addFrame may be called from several threads at once.

#include "raw/rawimage.h"

#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace raw {

struct TSensorDefect {
    enum Kind { Hot, Stuck, Dead };
    int x = 0, y = 0;
    Kind kind = Hot;
    int frames = 0; // the frames in which it stood out
};

struct TSensorSpot {
    double x = 0, y = 0;        // the centre
    double radius = 0;          // where the spot's shadow ends
    bool bright = false;        // lighter than its surroundings; dust is darker
    double contrastPercent = 0; // the change at the centre, negative for dust
    int frames = 0;             // the frames with usable light at the centre
};

struct TSensorCheckResult {
    int frames = 0; // frames examined
    int skippedOtherCamera = 0;
    int skippedCutShort = 0; // unreadable or ending before their raw data
    int skippedOtherSize = 0;
    bool cancelled = false;
    int width = 0, height = 0; // the stored raw image the map shows
    int activeLeft = 0, activeTop = 0, activeRight = 0, activeBottom = 0;
    std::vector<TSensorDefect> defects; // in row order
    std::vector<TSensorSpot> spots;     // strongest first
};

const char *defectKindName(TSensorDefect::Kind kind); // "hot", "stuck", "dead"

class TSensorCheck {
public:
    enum Verdict { Used, OtherCamera, OtherSize, CutShort };

    // Frames must match the reference's camera model and raw geometry.
    explicit TSensorCheck(const TRawInfo &reference);
    ~TSensorCheck();
    TSensorCheck(const TSensorCheck &) = delete;
    TSensorCheck &operator=(const TSensorCheck &) = delete;

    // Whether the camera is one the check knows (M9, M Monochrom).
    static bool acceptedModel(const QString &model);

    // Adds one decoded frame (weight > 0: how much it counts for spots), or
    // counts it skipped. Safe to call from several threads.
    Verdict addFrame(const TRawImage &image, double weight = 1);
    void countSkipped(Verdict verdict);

    TSensorCheckResult result() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

struct TSensorCheckOptions {
    int jobs = 1; // frames decoded at a time
    // A frame's weight for spots (e.g. from its aperture); 1 when unset.
    std::function<double(const QString &path)> weightOf;
    // Called on the calling thread after each file: files done, all files,
    // and the file's problem (empty when it was used).
    std::function<void(int done, int total, const QString &path, const QString &problem)> progress;
    const std::atomic<bool> *cancel = nullptr;
};

// Decodes the files (jobs at a time) and checks them: the reference is the
// first file whose directories name an accepted camera.
TSensorCheckResult checkSensor(const QStringList &files, const TSensorCheckOptions &options);

} // namespace raw

#endif // SENSORCHECK_H
