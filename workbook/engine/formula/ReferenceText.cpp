#include "workbook/engine/formula/ReferenceText.h"

#include "app/base/Utf8.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/CellAddress.h"
#include "workbook/engine/formula/TextCase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill::engine {

namespace {

bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

constexpr std::size_t maxNameUnits = 255;

/// Where the letters of the world lie, by and large: between them are signs (Unicode, "Code Charts").
constexpr auto letterRanges = std::to_array<std::pair<char32_t, char32_t>>(
    {{0xC0, 0xD6}, {0xD8, 0xF6}, {0xF8, 0x24F}, {0x370, 0x1FFF}, {0x3041, 0x3096}, {0x30A1, 0xD7A3}});

/// "R1C1", "R", "C3": a cell, row or column in the other notation.
bool isRowColumn(std::string_view text)
{
    for (const char letter : {'R', 'C'})
        if (!text.empty() && (text.front() & 0x5F) == letter)
            text = text.substr(std::min(text.find_first_not_of("0123456789", 1), text.size()));
    return text.empty();
}

struct Corner {
    std::optional<int> row;
    std::optional<int> column;
    bool rowAbsolute = false;
    bool columnAbsolute = false;
    std::size_t length = 0;

    bool hasShapeOf(const Corner& other) const
    {
        return row.has_value() == other.row.has_value() && column.has_value() == other.column.has_value();
    }
};

void readColumn(std::string_view text, Corner& corner)
{
    const std::size_t dollar = text.starts_with('$') ? 1 : 0;
    std::size_t at = dollar;
    int column = 0;
    for (; at < text.size() && isLetter(text[at]) && at - dollar < 3; ++at)
        column = column * 26 + ((text[at] & 0x5F) - 'A' + 1);
    if (at == dollar)
        return;
    corner.column = column - 1;
    corner.columnAbsolute = dollar == 1;
    corner.length = at;
}

void readRow(std::string_view text, Corner& corner)
{
    const std::size_t dollar = text.starts_with('$') ? 1 : 0;
    std::size_t at = dollar;
    int row = 0;
    for (; at < text.size() && isDigit(text[at]) && at - dollar < 6; ++at)
        row = row * 10 + (text[at] - '0');
    if (at == dollar)
        return;
    corner.row = row - 1;
    corner.rowAbsolute = dollar == 1;
    corner.length += at;
}

std::optional<Corner> readCorner(std::string_view text)
{
    Corner corner;
    readColumn(text, corner);
    readRow(text.substr(corner.length), corner);
    if (corner.length == 0 || !isInsideSheet({corner.row.value_or(0), corner.column.value_or(0)}))
        return std::nullopt;
    const std::string_view rest = text.substr(corner.length);
    if (!rest.empty() && (isNameByte(rest[0]) || rest[0] == '(' || rest[0] == '!'))
        return std::nullopt; // the beginning of a longer word: a name, a function or a sheet
    return corner;
}

WrittenReference areaBetween(const Corner& first, const Corner& last)
{
    const auto part = [](const Corner& corner, int row, int column) {
        return ReferencePart{corner.row.value_or(row), corner.column.value_or(column),
                             corner.row && !corner.rowAbsolute, corner.column && !corner.columnAbsolute};
    };
    ReferencePart from = part(first, 0, 0);
    ReferencePart to = part(last, maxRows - 1, maxColumns - 1);
    orderCorners(from, to);
    return {from, to, first.length + 1 + last.length};
}

WrittenSheets sheetsOf(std::string_view written, std::size_t length)
{
    const std::size_t colon = written.find(':');
    if (colon == std::string_view::npos)
        return {std::string(written), std::nullopt, length};
    return {std::string(written.substr(0, colon)), std::string(written.substr(colon + 1)), length};
}

std::optional<WrittenSheets> readQuotedSheets(std::string_view text)
{
    std::string name;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] != '\'') {
            name += text[at];
        } else if (text.substr(at + 1).starts_with('\'')) {
            name += text[at++];
        } else if (text.substr(at + 1).starts_with('!')) {
            return sheetsOf(name, at + 2);
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

bool isNameByte(char byte)
{
    return isLetter(byte) || isDigit(byte) || byte == '_' || byte == '.' || byte == '\\' || byte == '?' ||
           static_cast<unsigned char>(byte) >= 0x80;
}

bool canBeName(std::string_view text)
{
    constexpr std::string_view ownPrefix = "_xl"; // names functions that the application came to know later
    if (text.empty() || utf16Length(text) > maxNameUnits || readReference(text) || isRowColumn(text) ||
        compareIgnoringCase(text.substr(0, ownPrefix.size()), ownPrefix) == 0 ||
        std::ranges::any_of(builtInNames, [text](auto name) { return compareIgnoringCase(text, name) == 0; }))
        return false;
    const char32_t first = toUtf32(text.substr(0, 4)).front();
    const auto isIn = [first](const auto& range) { return first >= range.first && first <= range.second; };
    return isLetter(text.front()) || first == '_' || first == '\\' || std::ranges::any_of(letterRanges, isIn);
}

std::string quoted(std::string_view text, char quote)
{
    std::string result(1, quote);
    for (const char byte : text)
        result.append(byte == quote ? 2 : 1, byte);
    return result + quote;
}

std::string sheetPrefix(std::string_view sheets)
{
    const auto isPlain = [](char byte) { return isNameByte(byte) || byte == ':'; };
    const bool startsWithDigit = !sheets.empty() && isDigit(sheets.front());
    if (std::ranges::all_of(sheets, isPlain) && !startsWithDigit && !readReference(sheets))
        return std::string(sheets) + "!";
    return quoted(sheets, '\'') + "!";
}

std::optional<std::size_t> findName(const Book& book, std::string_view name, std::size_t sheet)
{
    std::optional<std::size_t> index;
    for (std::size_t i = 0; i < book.names.size(); ++i) {
        const DefinedName& candidate = book.names[i];
        if (compareIgnoringCase(candidate.name, name) != 0 || (candidate.sheet && *candidate.sheet != sheet))
            continue;
        if (!index || candidate.sheet)
            index = i;
    }
    return index;
}

std::optional<WrittenSheets> readSheets(std::string_view text)
{
    if (text.starts_with('\''))
        return readQuotedSheets(text);
    const auto end = std::find_if(text.begin(), text.end(), [](char byte) { return !isNameByte(byte) && byte != ':'; });
    if (end == text.begin() || end == text.end() || *end != '!')
        return std::nullopt;
    const auto length = static_cast<std::size_t>(end - text.begin());
    return sheetsOf(text.substr(0, length), length + 1);
}

std::optional<WrittenReference> readReference(std::string_view text)
{
    const auto first = readCorner(text);
    if (!first)
        return std::nullopt;
    const std::string_view rest = text.substr(first->length);
    if (rest.starts_with(':'))
        if (const auto last = readCorner(rest.substr(1)); last && last->hasShapeOf(*first))
            return areaBetween(*first, *last);
    if (!first->row || !first->column)
        return std::nullopt;
    return WrittenReference{
        {*first->row, *first->column, !first->rowAbsolute, !first->columnAbsolute}, std::nullopt, first->length};
}

} // namespace wagemill::engine
