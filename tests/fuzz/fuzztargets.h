#ifndef FUZZTARGETS_H
#define FUZZTARGETS_H

// The ways into the reader, each taking one fuzz input as libFuzzer hands it
// over. Each fuzz_* program calls one; tst_boundedtime replays every seed and
// reproducer through them. All but `reader` read the bytes from memory and
// drive one part of the walk, so that an input costs little beyond our code.

#include <cstddef>
#include <cstdint>

namespace fuzz {

using Target = void (*)(const uint8_t *data, size_t size);

// The input as a file on disk, as the window and tolvik-info read it:
// processFile, every decoder and stored value, the panel texts, a small
// preview, and processFilePreflight.
void reader(const uint8_t *data, size_t size);
// The input as a TIFF or JPEG file: the IFD chain, the entry readers and
// the directories below it, both passes, every decoder.
void ifd(const uint8_t *data, size_t size);
// First byte: bit 0 big-endian, bit 1 GPS instead of Exif; the rest is a
// TIFF whose first directory is walked as an Exif (or GPS) directory, outside
// any chain, with an M9's model (so a maker note is followed).
void exifGps(const uint8_t *data, size_t size);
// First byte: bit 0 big-endian; the rest is a Leica maker note at offset 0
// with the Panasonic sub-directories it points to; the Leica and panel texts.
void leica(const uint8_t *data, size_t size);
// Bytes 0-1: the preview's width and height (1 to 64 pixels); the rest is
// IFD0's strip, also taken as JPEG thumbnail and as a JPEG file.
void pictures(const uint8_t *data, size_t size);
// The first four bytes (little-endian) are the offset of
// `tolvik-info --sony-makernote OFFSET FILE`; the rest is the file.
void sonyMakerNote(const uint8_t *data, size_t size);
// The first byte picks a block routine, the rest is its enciphered block:
// decipher, the model groups, the routine and every Sony decoder.
void sonyBlocks(const uint8_t *data, size_t size);
// The input as a file: the report's rows, upright preview and RGB
// distribution, laid out and painted into a PDF in memory, without a window.
void report(const uint8_t *data, size_t size);
// Laying out and painting the page costs half a second under the sanitizers
// whatever the input, nearly all of it in Qt: the fuzz program paints only
// the inputs whose last byte is a multiple of this; the tests paint every one.
inline int reportPaintedOneIn = 1;

// The targets by name, as the fuzz programs and the corpus directories are named.
struct NamedTarget {
    const char *name;
    Target run;
};
inline constexpr NamedTarget kTargets[] = {
    {"reader", reader},         {"ifd", ifd},           {"exifgps", exifGps},
    {"leica", leica},           {"pictures", pictures}, {"sonymakernote", sonyMakerNote},
    {"sonyblocks", sonyBlocks}, {"report", report},
};

} // namespace fuzz

#endif // FUZZTARGETS_H
