#include "workbook/engine/formula/ReferenceText.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill::engine {

namespace {

constexpr std::size_t maxNameUnits = 255;

/// With what a name may begin: "\", "_", and where the letters of the world are, by and large: between them are signs
/// (Unicode, "Code Charts").
constexpr auto letterRanges = std::to_array<std::pair<char32_t, char32_t>>({{'A', 'Z'},
                                                                            {'\\', '\\'},
                                                                            {'_', '_'},
                                                                            {'a', 'z'},
                                                                            {0xC0, 0xD6},
                                                                            {0xD8, 0xF6},
                                                                            {0xF8, 0x24F},
                                                                            {0x370, 0x1FFF},
                                                                            {0x3041, 0x3096},
                                                                            {0x30A1, 0xD7A3}});

/// "R1C1", "R", "C3": a cell, row or column in the other notation.
bool isRowColumn(std::string_view text)
{
    for (const char letter : {'R', 'C'})
        if (!text.empty() && (text.front() & 0x5F) == letter)
            text = text.substr(std::min(text.find_first_not_of("0123456789", 1), text.size()));
    return text.empty();
}

WrittenSheets sheetsOf(std::string_view written, std::size_t length)
{
    const std::size_t colon = written.find(':');
    if (colon == std::string_view::npos)
        return {std::string(written), std::nullopt, length};
    return {std::string(written.substr(0, colon)), std::string(written.substr(colon + 1)), length};
}

} // namespace

bool canBeName(std::string_view text)
{
    constexpr std::string_view ownPrefix = "_xl"; // names functions that the application came to know later
    if (text.empty() || utf16Length(text) > maxNameUnits || readReference(text) || isRowColumn(text) ||
        startsWithIgnoringCase(text, ownPrefix) ||
        std::ranges::any_of(builtInNames, [text](auto name) { return sameIgnoringCase(text, name); }))
        return false;
    const char32_t first = toUtf32(text.substr(0, 4)).front();
    return std::ranges::any_of(letterRanges,
                               [first](auto range) { return first >= range.first && first <= range.second; });
}

std::optional<std::size_t> findName(const Book& book, std::string_view name, std::size_t sheet)
{
    std::optional<std::size_t> index;
    for (std::size_t i = 0; i < book.names.size(); ++i) {
        const DefinedName& candidate = book.names[i];
        if (!sameIgnoringCase(candidate.name, name) || (candidate.sheet && *candidate.sheet != sheet))
            continue;
        if (!index || candidate.sheet)
            index = i;
    }
    return index;
}

std::optional<QuotedText> readQuoted(std::string_view text)
{
    const char quote = text.front();
    std::string content;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] == quote && (++at == text.size() || text[at] != quote))
            return QuotedText{std::move(content), at};
        content += text[at];
    }
    return std::nullopt;
}

std::optional<WrittenSheets> readSheets(std::string_view text)
{
    if (text.starts_with('\'')) {
        const auto quoted = readQuoted(text);
        return quoted && text.substr(quoted->length).starts_with('!')
                   ? std::optional(sheetsOf(quoted->content, quoted->length + 1))
                   : std::nullopt;
    }
    const auto end = std::ranges::find_if_not(text, [](char byte) { return isNameByte(byte) || byte == ':'; });
    if (end == text.begin() || end == text.end() || *end != '!')
        return std::nullopt;
    const auto length = static_cast<std::size_t>(end - text.begin());
    return sheetsOf(text.substr(0, length), length + 1);
}

} // namespace wagemill::engine
