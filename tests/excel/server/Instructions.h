#pragma once

#include <chrono>
#include <filesystem>
#include <limits>
#include <set>
#include <string>
#include <string_view>

namespace wagemill::test {

/// How a served application is to behave, as words in the environment variable WAGEMILL_TEST_SERVER:
///   fail=7 die=7        the seventh call fails, ends the process
///   slow=20             every call takes so many milliseconds longer
///   version=11.0        what Version answers
///   refuse=Copy         that member fails, with a description
///   unknown=Copy        that member is not there
///   busy=Copy           that member is turned away, as by an application that shows a dialog
///   nothing=Open        that member does its work and gives nothing
///   silent              failures have no description
struct Instructions {
    static constexpr int never = std::numeric_limits<int>::max();

    int failingCall = never;
    int deadlyCall = never;
    std::chrono::milliseconds delay{0};
    std::string version = "16.0";
    std::set<std::string> refused;
    std::set<std::string> unknown;
    std::set<std::string> busy;
    std::set<std::string> nothing;
    bool describesFailures = true;

    /// Throws std::invalid_argument for a word that is none of those above.
    static Instructions parse(std::string_view words);
};

} // namespace wagemill::test
