#ifndef RAW_DEVELOP_H
#define RAW_DEVELOP_H

// Developing a raw picture into an sRGB picture: black and white levels,
// white balance and colour matrices of the DNG file, the sRGB transfer curve,
// the default crop and the orientation. Nothing else: no tone curve, no
// brightening, no sharpening, so an underexposed frame stays underexposed.
// Qt Core only.

#include "raw/picture.h"
#include "raw/rawimage.h"

#include <atomic>

namespace raw {

struct TDevelopOptions {
    TSize size = TSize::Full;
    int bits = 8;    // per sample, 8 or 16
    int threads = 0; // 0: as many as the machine has cores
    // Checked between tiles; once true, develop() returns a null picture.
    const std::atomic<bool> *cancel = nullptr;
};

// The upright, cropped sRGB picture of a raw picture; a null picture when the
// raw picture is inconsistent (sizes, levels, a filter array that is not
// 2 x 2 red, green, blue), the options are, memory runs out or it was
// cancelled. The calling thread works on tiles itself, beside threads - 1
// threads of its own, so it may be called from a thread pool's thread.
// The M Monochrom's pictures (TLayout::Linear) come out grey.
TPicture develop(const TRawImage &raw, const TDevelopOptions &options);

} // namespace raw

#endif // RAW_DEVELOP_H
