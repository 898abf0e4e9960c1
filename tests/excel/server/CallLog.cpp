#include "tests/excel/server/CallLog.h"

#include <algorithm>

namespace wagemill::test {

CallLog::CallLog(const std::filesystem::path& file)
{
    if (!file.empty())
        m_file.open(file, std::ios::app | std::ios::binary);
}

void CallLog::add(std::string line)
{
    std::ranges::replace_if(
        line, [](char letter) { return letter == '\r' || letter == '\n'; }, ' ');
    m_file << line << std::endl; // at once: the process may be told to die
}

} // namespace wagemill::test
