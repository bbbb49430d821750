// A libFuzzer program: TOLVIK_FUZZ_TARGET names the fuzz:: function it calls.

#include "tests/fuzz/fuzztargets.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::reportPaintedOneIn = 64;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::TOLVIK_FUZZ_TARGET(data, size);
    return 0;
}
