#ifndef RAW_DEMOSAIC_H
#define RAW_DEMOSAIC_H

// Demosaicing of one tile of a 2 x 2 colour filter array (R, G, G, B with
// the greens on a diagonal), in floats.

#include <array>
#include <cstdint>
#include <vector>

// On x86-64 a function marked so is compiled twice, for the baseline and for
// AVX2 with FMA; the loader picks the one the processor runs.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && defined(__linux__)
#define TOLVIK_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define TOLVIK_VECTOR_CLONES
#endif

namespace raw {

// A tile of w x h samples, row by row, with the filter colour of sample
// (x, y) being pattern[(y & 1) * 2 + (x & 1)] (raw::TColour).
struct TCfaTile {
    const float *samples = nullptr;
    int width = 0, height = 0;
    std::array<uint8_t, 4> pattern{};
};

// Whether a pattern is the filter array these functions interpolate.
bool isBayer(const std::array<uint8_t, 4> &pattern);

// Ratio Corrected Demosaicing (Luis Sanz Rodríguez, 2017): directional
// discrimination from the energy of a colour-difference high-pass filter in
// the four directions, green from neighbours corrected by the ratio of a
// low-pass filter, red and blue from colour differences along the more
// homogeneous diagonal, then the cardinal directions. Samples are expected in
// [0, 1]; the results are clipped to it. Only the samples at least
// kRcdBorder from the tile's edges are computed; the caller gives the tile
// that much more on every side.
inline constexpr int kRcdBorder = 10;

// The planes one thread reuses from tile to tile.
struct TRcdScratch {
    std::vector<float> a, b, vh, pq, row, row2;
};

// rgb[0..2]: planes of w x h floats that receive red, green and blue.
void demosaicRcd(const TCfaTile &tile, float *const rgb[3], TRcdScratch &scratch);

// Bilinear interpolation, every sample at least 1 from the edges: the
// yardstick the tests hold RCD against.
inline constexpr int kBilinearBorder = 1;
void demosaicBilinear(const TCfaTile &tile, float *const rgb[3]);

} // namespace raw

#endif // RAW_DEMOSAIC_H
