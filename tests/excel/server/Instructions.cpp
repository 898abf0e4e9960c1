#include "tests/excel/server/Instructions.h"

#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

namespace wagemill::test {

namespace {

using Setter = std::function<void(Instructions&, const std::string&)>;

Setter addTo(std::set<std::string> Instructions::*members)
{
    return [members](Instructions& to, const std::string& member) { (to.*members).insert(member); };
}

const std::map<std::string, Setter>& setters()
{
    static const std::map<std::string, Setter> all = {
        {"fail", [](Instructions& to, const std::string& call) { to.failingCall = std::stoi(call); }},
        {"die", [](Instructions& to, const std::string& call) { to.deadlyCall = std::stoi(call); }},
        {"slow",
         [](Instructions& to, const std::string& time) { to.delay = std::chrono::milliseconds(std::stoi(time)); }},
        {"version", [](Instructions& to, const std::string& version) { to.version = version; }},
        {"refuse", addTo(&Instructions::refused)},
        {"unknown", addTo(&Instructions::unknown)},
        {"busy", addTo(&Instructions::busy)},
        {"nothing", addTo(&Instructions::nothing)},
        {"silent", [](Instructions& to, const std::string&) { to.describesFailures = false; }},
    };
    return all;
}

} // namespace

Instructions Instructions::parse(std::string_view words)
{
    Instructions instructions;
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) {
        const std::size_t equals = word.find('=');
        const auto setter = setters().find(word.substr(0, equals));
        if (setter == setters().end())
            throw std::invalid_argument("The instruction \"" + word + "\" is not known.");
        setter->second(instructions, equals == std::string::npos ? "" : word.substr(equals + 1));
    }
    return instructions;
}

} // namespace wagemill::test
