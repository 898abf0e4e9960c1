#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wagemill::fuzz {

using Input = std::span<const std::byte>;

/// Tries one input on the part of the program that this target is about. Every other file here defines one, linked with
/// libFuzzer's driver or with the replay of kept inputs. What must not happen crashes, hangs or throws.
void tryInput(Input input);

/// That the arrays of formulas may have: as many as the program allows when kept inputs are tried again and timed, few
/// when there are millions of inputs to try.
extern const std::size_t maxArrayValues;

/// A rule that holds whatever the input is.
inline void require(bool holds, const std::string& rule)
{
    if (!holds)
        throw std::logic_error(rule);
}

/// Takes the first byte off the input; 0 when there is none.
inline unsigned takeByte(Input& input)
{
    if (input.empty())
        return 0;
    const auto first = std::to_integer<unsigned>(input.front());
    input = input.subspan(1);
    return first;
}

inline std::string_view asText(Input input)
{
    return {reinterpret_cast<const char*>(input.data()), input.size()};
}

} // namespace wagemill::fuzz
