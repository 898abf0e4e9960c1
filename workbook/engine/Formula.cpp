#include "workbook/engine/Formula.h"

#include "app/base/text/Unicode.h"

#include <algorithm>

namespace wagemill::engine {

namespace {

/// Moves the relative parts; answers whether the corner is still inside the sheet.
bool shiftPart(ReferencePart& part, int rows, int columns)
{
    if (part.rowRelative)
        part.row += rows;
    if (part.columnRelative)
        part.column += columns;
    return isInsideSheet({part.row, part.column});
}

/// A reference that leaves the sheet becomes bad; whole rows and columns keep their full extent.
void shiftReference(ReferenceToken& token, int rows, int columns)
{
    if (token.bad)
        return;
    const bool wholeColumns = token.last && token.first.row == 0 && token.last->row == maxRows - 1;
    const bool wholeRows = token.last && token.first.column == 0 && token.last->column == maxColumns - 1;
    const int rowShift = wholeColumns ? 0 : rows;
    const int columnShift = wholeRows ? 0 : columns;
    bool inside = shiftPart(token.first, rowShift, columnShift);
    if (token.last)
        inside = shiftPart(*token.last, rowShift, columnShift) && inside;
    if (!inside) {
        token.bad = true;
        token.first = {};
        if (token.last)
            token.last = ReferencePart{};
    }
}

/// Characters of a text are one byte each where all are Latin-1, as the first bytes in UTF-8 show.
std::size_t characterBytes(const std::string& text)
{
    const bool isWide = std::ranges::any_of(text, [](char byte) { return static_cast<unsigned char>(byte) > 0xC3; });
    return utf16Length(text) * (isWide ? 2 : 1);
}

/// Bytes of a token in the file.
struct TokenSize {
    std::size_t operator()(const NumberToken& token) const
    {
        const bool isSmallInteger = token.number >= 0 && token.number <= 0xFFFF &&
                                    token.number == static_cast<double>(static_cast<std::uint16_t>(token.number));
        return isSmallInteger ? 3 : 9;
    }
    std::size_t operator()(const TextToken& token) const { return 3 + characterBytes(token.text); }
    std::size_t operator()(const LogicalToken& /*token*/) const { return 2; }
    std::size_t operator()(const ErrorToken& /*token*/) const { return 2; }
    std::size_t operator()(const auto& /*operatorOrMissingArgument*/) const { return 1; }
    std::size_t operator()(const ReferenceToken& token) const
    {
        return (token.last ? 9U : 5U) + (token.externSheet ? 2U : 0U);
    }
    std::size_t operator()(const NameToken& token) const { return token.externSheet ? 7 : 5; }
    std::size_t operator()(const FunctionToken& token) const { return token.variable ? 4 : 3; }
    std::size_t operator()(const AttributeToken& token) const
    {
        return 4 + (token.kind == AttributeToken::Kind::Choose ? 2 * token.targets.size() : 0);
    }
    std::size_t operator()(const ArrayToken& /*token*/) const { return 8; }
    std::size_t operator()(const OpaqueToken& token) const { return token.bytes.size(); }
};

/// Bytes that come after the tokens.
std::size_t trailingSize(const Token& token)
{
    if (const auto* const opaque = std::get_if<OpaqueToken>(&token))
        return opaque->trailingBytes.size();
    const auto* const array = std::get_if<ArrayToken>(&token);
    if (array == nullptr)
        return 0;
    std::size_t size = 3;
    for (const CellValue& value : array->values) {
        const auto* const text = std::get_if<std::string>(&value);
        size += text == nullptr ? 9 : 4 + characterBytes(*text);
    }
    return size;
}

} // namespace

Formula shiftedFormula(const Formula& formula, int rows, int columns)
{
    Formula shifted = formula;
    for (Token& token : shifted.tokens)
        if (auto* reference = std::get_if<ReferenceToken>(&token))
            shiftReference(*reference, rows, columns);
    return shifted;
}

StoredSize storedSize(const Formula& formula)
{
    StoredSize size;
    for (const Token& token : formula.tokens) {
        size.tokens += std::visit(TokenSize{}, token);
        size.trailing += trailingSize(token);
    }
    return size;
}

} // namespace wagemill::engine
