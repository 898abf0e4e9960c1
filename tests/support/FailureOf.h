#pragma once

#include <exception>
#include <string>

namespace wagemill::test {

/// The message that the work fails with; "no failure" when it does not.
template <typename Work>
std::string failureOf(Work&& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace wagemill::test
