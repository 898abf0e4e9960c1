#include "tests/excel/server/Instructions.h"

#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

namespace wagemill::test {

namespace {

using Setter = std::function<void(Instructions&, const std::string&)>;

Setter to(int Instructions::*number)
{
    return [number](Instructions& all, const std::string& value) { all.*number = std::stoi(value); };
}

Setter to(std::string Instructions::*text)
{
    return [text](Instructions& all, const std::string& value) { all.*text = value; };
}

Setter to(std::set<std::string> Instructions::*members)
{
    return [members](Instructions& all, const std::string& value) { (all.*members).insert(value); };
}

Setter to(bool Instructions::*flag, bool value)
{
    return [flag, value](Instructions& all, const std::string&) { all.*flag = value; };
}

const std::map<std::string, Setter>& setters()
{
    static const std::map<std::string, Setter> all = {
        {"fail", to(&Instructions::failingCall)},
        {"die", to(&Instructions::deadlyCall)},
        {"slow", to(&Instructions::delay)},
        {"start", to(&Instructions::startTime)},
        {"version", to(&Instructions::version)},
        {"region", to(&Instructions::region)},
        {"refuse", to(&Instructions::refused)},
        {"unknown", to(&Instructions::unknown)},
        {"ask", to(&Instructions::asking)},
        {"nothing", to(&Instructions::nothing)},
        {"busy", to(&Instructions::busyCall)},
        {"busyfor", to(&Instructions::busyTime)},
        {"hold", to(&Instructions::holdTime)},
        {"late", to(&Instructions::drawsLate, true)},
        {"silent", to(&Instructions::describesFailures, false)},
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
