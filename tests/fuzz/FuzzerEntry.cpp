#include "tests/fuzz/FuzzTarget.h"

#include <cstdint>

const std::size_t wagemill::fuzz::maxArrayValues = 1 << 12;

// libFuzzer's name for it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    wagemill::fuzz::tryInput(std::as_bytes(std::span(data, size)));
    return 0;
}
