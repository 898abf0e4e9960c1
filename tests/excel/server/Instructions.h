#pragma once

#include "app/base/PlatformFiles.h"

#include <sstream>
#include <string>

namespace wagemill::test {

/// How the served application is to behave: words in the environment variable WAGEMILL_TEST_SERVER.
///   region=de-DE        the locale by which typed text is read; a call with another is refused
///   version=11.0        what Version answers
///   nothing=Open        that member does its work and gives nothing
///   ask=Copy            that member shows a question first, and waits for the answer
///   die=7               the seventh call ends the process
///   busy=7 busyfor=30   the seventh call, a name asked for counted too, is rejected for so many milliseconds;
///                       each: every call is
inline std::string instruction(const std::string& name, const std::string& fallback = "")
{
    std::istringstream words(platform::environmentPath("WAGEMILL_TEST_SERVER").string());
    for (std::string word; words >> word;)
        if (word.starts_with(name + "="))
            return word.substr(name.size() + 1);
    return fallback;
}

} // namespace wagemill::test
