#pragma once

#include <limits>
#include <set>
#include <string>
#include <string_view>

namespace wagemill::test {

/// How a served application is to behave, as words in the environment variable WAGEMILL_TEST_SERVER:
///   fail=7 die=7        the seventh call fails, ends the process
///   slow=20             every call takes so many milliseconds longer
///   start=3000          the process takes so many milliseconds to start
///   version=11.0        what Version answers
///   region=0407         the locale identifier by which typed text is read; a call with another is refused
///   refuse=Copy         that member fails, with a description
///   unknown=Copy        that member is not there
///   ask=Copy            that member shows a question first, and waits for the answer
///   nothing=Open        that member does its work and gives nothing
///   busy=7 busyfor=30   the seventh call, a name asked for counted too, is rejected for so many milliseconds; 0:
///   each hold=200            the clipboard stays open for so many milliseconds after a picture was copied late the
///   picture is drawn when it is fetched silent              failures have no description
struct Instructions {
    static constexpr int never = std::numeric_limits<int>::max();

    int failingCall = never;
    int deadlyCall = never;
    int busyCall = never;
    int busyTime = 0; ///< this and the others in milliseconds
    int delay = 0;
    int startTime = 0;
    int holdTime = 0;
    std::string version = "16.0";
    std::string region = "0409";
    std::set<std::string> refused;
    std::set<std::string> unknown;
    std::set<std::string> asking;
    std::set<std::string> nothing;
    bool drawsLate = false;
    bool describesFailures = true;

    /// Throws std::invalid_argument for any other word.
    static Instructions parse(std::string_view words);
};

} // namespace wagemill::test
