#ifndef FUZZTARGETS_H
#define FUZZTARGETS_H

// The ways into the reader, one per fuzz_* program (README, Robustness, says
// what each drives); tst_boundedtime replays every seed and reproducer
// through them. All but `reader` read the bytes from memory. Leading bytes:
// exifgps bit 0 big-endian, bit 1 GPS; leica bit 0 big-endian; pictures the
// preview's width and height; sonymakernote the offset (4, little-endian);
// sonyblocks the routine.

#include <cstddef>
#include <cstdint>

namespace fuzz {

using Target = void (*)(const uint8_t *data, size_t size);

void reader(const uint8_t *data, size_t size);
void ifd(const uint8_t *data, size_t size);
void exifGps(const uint8_t *data, size_t size);
void leica(const uint8_t *data, size_t size);
void pictures(const uint8_t *data, size_t size);
void sonyMakerNote(const uint8_t *data, size_t size);
void sonyBlocks(const uint8_t *data, size_t size);
void report(const uint8_t *data, size_t size);
void rawDecode(const uint8_t *data, size_t size);  // the raw decoder on the bytes
void rawDevelop(const uint8_t *data, size_t size); // ... and the development of what it decodes
void xmpPacket(const uint8_t *data, size_t size);  // IFD0's XMP packet and its marks
// A painted report page costs half a second under the sanitizers, nearly all
// in Qt: the fuzz program paints about one input in this many (by a hash of
// the input); the tests paint every one.
inline int reportPaintedOneIn = 1;

struct NamedTarget {
    const char *name;
    Target run;
};
inline constexpr NamedTarget kTargets[] = {
    {"reader", reader},         {"ifd", ifd},
    {"exifgps", exifGps},       {"leica", leica},
    {"pictures", pictures},     {"sonymakernote", sonyMakerNote},
    {"sonyblocks", sonyBlocks}, {"report", report},
    {"rawdecode", rawDecode},   {"rawdevelop", rawDevelop},
    {"xmppacket", xmpPacket},
};

} // namespace fuzz

#endif // FUZZTARGETS_H
