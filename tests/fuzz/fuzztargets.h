#ifndef FUZZTARGETS_H
#define FUZZTARGETS_H

// The ways into the reader, each taking one fuzz input as libFuzzer hands it
// over. The fuzz_* programs call one each; tst_boundedtime times all of them
// on the seed corpus and the reproducers.

#include <cstddef>
#include <cstdint>

namespace fuzz {

using Target = void (*)(const uint8_t *data, size_t size);

// The input as a file: processFile, every decoder and stored value, the
// panel texts, the scaled preview, and processFilePreflight.
void reader(const uint8_t *data, size_t size);

// The first four bytes (little-endian) are the offset of
// `tolvik-info --sony-makernote OFFSET FILE`; the rest is the file.
void sonyMakerNote(const uint8_t *data, size_t size);

// The first byte picks a block routine, the rest is its enciphered block:
// decipher, the model groups, the routine and every Sony decoder.
void sonyBlocks(const uint8_t *data, size_t size);

// The input as a file whose report is written to a PDF, without a window.
void report(const uint8_t *data, size_t size);

// The targets by name, as the fuzz programs and the corpus directories are named.
struct NamedTarget {
    const char *name;
    Target run;
};
inline constexpr NamedTarget kTargets[] = {
    {"reader", reader},
    {"sonymakernote", sonyMakerNote},
    {"sonyblocks", sonyBlocks},
    {"report", report},
};

} // namespace fuzz

#endif // FUZZTARGETS_H
