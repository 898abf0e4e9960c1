#include "resources/DescriptionLines.h"

#include "app/base/Files.h"

#include <charconv>
#include <optional>

namespace wagemill {

namespace {

constexpr std::string_view blanks = " \t";

template <class Number>
std::optional<Number> parsed(const std::string& text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Reads the quoted word that begins at `at` and leaves `at` behind it; nothing when its end is missing.
std::optional<std::string> quotedWord(std::string_view line, std::size_t& at)
{
    std::string word;
    for (++at; at < line.size() && line[at] != '"'; ++at) {
        if (line[at] != '\\') {
            word += line[at];
            continue;
        }
        if (++at == line.size())
            return std::nullopt;
        word += line[at] == 'n' ? '\n' : line[at];
    }
    return at++ < line.size() ? std::optional(word) : std::nullopt;
}

void readWords(DescriptionLine& statement, std::string_view line)
{
    for (std::size_t at = line.find_first_not_of(blanks); at != std::string_view::npos;
         at = line.find_first_not_of(blanks, at)) {
        statement.rest.emplace_back(line.substr(at));
        statement.quoted.push_back(line[at] == '"');
        if (line[at] == '"') {
            const auto word = quotedWord(line, at);
            if (!word)
                statement.fail("the closing quote is missing");
            statement.words.push_back(*word);
        } else {
            const std::size_t end = std::min(line.find_first_of(blanks, at), line.size());
            statement.words.emplace_back(line.substr(at, end - at));
            at = end;
        }
    }
}

} // namespace

void DescriptionLine::fail(std::string_view problem) const
{
    throw DescriptionError(place + ": " + std::string(problem));
}

void DescriptionLine::needWords(std::size_t least, std::size_t most) const
{
    if (words.size() < least)
        fail("\"" + keyword + "\" needs more words behind it");
    if (words.size() > most)
        fail("there is more behind \"" + keyword + "\" than it takes");
}

int DescriptionLine::wholeNumber(std::size_t word) const
{
    const auto number = parsed<int>(words.at(word));
    if (!number)
        fail("\"" + words[word] + "\" is no whole number");
    return *number;
}

double DescriptionLine::decimal(std::size_t word) const
{
    const auto number = parsed<double>(words.at(word));
    if (!number)
        fail("\"" + words[word] + "\" is no number");
    return *number;
}

std::vector<DescriptionLine> readDescription(std::string_view text, std::string_view file)
{
    std::vector<DescriptionLine> statements;
    for (std::size_t begin = 0, number = 1; begin < text.size(); ++number) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string_view line = text.substr(begin, end - begin);
        begin = end + 1;
        const std::size_t first = line.find_first_not_of(blanks);
        if (first == std::string_view::npos || line[first] == '#')
            continue;
        DescriptionLine statement;
        statement.place = std::string(file) + ", line " + std::to_string(number);
        const std::size_t behindKeyword = std::min(line.find_first_of(blanks, first), line.size());
        statement.keyword = line.substr(first, behindKeyword - first);
        readWords(statement, line.substr(behindKeyword));
        statements.push_back(std::move(statement));
    }
    return statements;
}

std::vector<DescriptionLine> readDescription(const std::filesystem::path& file)
{
    const std::vector<std::byte> bytes = readBytesFromFile(file);
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size()); // bytes read as characters
    return readDescription(text, file.filename().string());
}

} // namespace wagemill
