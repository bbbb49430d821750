// libFuzzer target: fuzz::reader (tests/fuzz/fuzztargets.h).

#include "tests/fuzz/fuzztargets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::reader(data, size);
    return 0;
}
