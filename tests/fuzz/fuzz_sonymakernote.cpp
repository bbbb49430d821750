// libFuzzer target: fuzz::sonyMakerNote (tests/fuzz/fuzztargets.h).

#include "tests/fuzz/fuzztargets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::sonyMakerNote(data, size);
    return 0;
}
