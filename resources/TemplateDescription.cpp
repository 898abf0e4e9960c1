#include "resources/TemplateDescription.h"

#include "resources/CellLook.h"
#include "resources/DescriptionLines.h"
#include "resources/SheetDescription.h"
#include "workbook/engine/formula/Recalculation.h"

#include <charconv>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

/// A day "2026-01-31" in the units of the document properties.
std::uint64_t fileTime(const DescriptionLine& line)
{
    using namespace std::chrono;
    line.needWords(1, 1);
    const std::string& text = line.words[0];
    int fields[3] = {};
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (int& field : fields) {
        const auto [behind, error] = std::from_chars(at, end, field);
        if (error != std::errc{})
            line.fail("\"" + text + "\" is no day such as 2026-01-31");
        at = behind < end ? behind + 1 : behind;
    }
    const year_month_day day{year{fields[0]}, month{static_cast<unsigned>(fields[1])},
                             std::chrono::day{static_cast<unsigned>(fields[2])}};
    constexpr sys_days firstDay = year{1601} / January / 1;
    constexpr std::uint64_t ticksPerDay = 864'000'000'000;
    if (!day.ok() || sys_days{day} < firstDay)
        line.fail("\"" + text + "\" is no day such as 2026-01-31");
    return static_cast<std::uint64_t>((sys_days{day} - firstDay).count()) * ticksPerDay;
}

class WorkbookReader {
public:
    explicit WorkbookReader(std::filesystem::path folder) : m_folder(std::move(folder)), m_looks(m_book.styles) {}

    void read(const DescriptionLine& line);
    engine::Book finish();

private:
    void addSheet(const DescriptionLine& line);
    void property(const DescriptionLine& line, std::string engine::DocumentProperties::*member);

    std::filesystem::path m_folder;
    engine::Book m_book;
    Looks m_looks;
    std::vector<std::vector<DescriptionLine>> m_sheets;
};

void WorkbookReader::property(const DescriptionLine& line, std::string engine::DocumentProperties::*member)
{
    line.needWords(1, 1);
    m_book.properties.*member = line.words[0];
}

void WorkbookReader::addSheet(const DescriptionLine& line)
{
    line.needWords(2, 2);
    try {
        m_book.addSheet(line.words[0]);
    } catch (const engine::EngineError& error) {
        line.fail(error.what());
    }
    m_sheets.push_back(readDescription(m_folder / line.words[1]));
}

void WorkbookReader::read(const DescriptionLine& line)
{
    using engine::DocumentProperties;
    const std::map<std::string, std::function<void()>> statements = {
        {"title", [&] { property(line, &DocumentProperties::title); }},
        {"author", [&] { property(line, &DocumentProperties::author); }},
        {"application", [&] { property(line, &DocumentProperties::application); }},
        {"dated", [&] { m_book.properties.created = m_book.properties.saved = fileTime(line); }},
        {"color", [&] { m_looks.defineColor(line); }},
        {"number-format", [&] { m_looks.defineNumberFormat(line); }},
        {"style", [&] { m_looks.defineStyle(line); }},
        {"sheet", [&] { addSheet(line); }},
    };
    const auto statement = statements.find(line.keyword);
    if (statement == statements.end())
        line.fail("\"" + line.keyword + "\" is no statement");
    statement->second();
}

/// Sheets are filled when all of them are there, so that their formulas may refer to each other.
engine::Book WorkbookReader::finish()
{
    for (std::size_t sheet = 0; sheet < m_sheets.size(); ++sheet)
        describeSheet(m_book, sheet, m_looks, m_sheets[sheet]);
    m_book.properties.lastAuthor = m_book.properties.author;
    m_book.isTemplate = true;
    engine::recalculate(m_book, engine::CalculationSettings{});
    return std::move(m_book);
}

} // namespace

engine::Book describedWorkbook(const std::filesystem::path& folder)
{
    WorkbookReader reader(folder);
    for (const DescriptionLine& line : readDescription(folder / "workbook.txt"))
        reader.read(line);
    return reader.finish();
}

} // namespace wagemill
