#pragma once

#include <cstdlib>
#include <string_view>

namespace wagemill::test {

/// Whether the tests of faults try everything (WAGEMILL_LONG=1, "./test.sh --long") rather than a part of it.
inline bool isLongForm()
{
    const char* const value = std::getenv("WAGEMILL_LONG");
    return value != nullptr && std::string_view(value) == "1";
}

/// How many of something a test tries.
template <class Number>
Number shortOrLong(Number fewer, Number all)
{
    return isLongForm() ? all : fewer;
}

} // namespace wagemill::test
