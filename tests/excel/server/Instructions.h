#pragma once

#include <algorithm>
#include <map>
#include <sstream>
#include <string>

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
///   busy=7 busyfor=30   the seventh call, a name asked for counted too, is rejected for so many milliseconds;
///                       0: each
///   hold=200            the clipboard stays open for so many milliseconds after a picture was copied
///   late                the picture is drawn when it is fetched
///   silent              failures have no description
class Instructions {
public:
    explicit Instructions(const std::string& words)
    {
        std::istringstream stream(words);
        for (std::string word; stream >> word;) {
            const std::size_t equals = std::min(word.find('='), word.size());
            m_words.emplace(word.substr(0, equals), word.substr(std::min(equals + 1, word.size())));
        }
    }

    bool has(const std::string& name, const std::string& value = "") const
    {
        const auto found = m_words.find(name);
        return found != m_words.end() && found->second == value;
    }
    int number(const std::string& name, int fallback) const { return std::stoi(text(name, std::to_string(fallback))); }
    std::string text(const std::string& name, const std::string& fallback) const
    {
        const auto found = m_words.find(name);
        return found == m_words.end() ? fallback : found->second;
    }

private:
    std::map<std::string, std::string> m_words;
};

} // namespace wagemill::test
