#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace wagemill::engine {

/// Error values under their codes in the file ([MS-XLS] 2.5.10 BErr).
enum class ErrorCode : std::uint8_t {
    Null = 0x00,
    DivisionByZero = 0x07,
    Value = 0x0F,
    Reference = 0x17,
    Name = 0x1D,
    Number = 0x24,
    NotAvailable = 0x2A,
};

struct ErrorName {
    ErrorCode error;
    std::string_view text;
};

/// In the order in which ERROR.TYPE counts them.
inline constexpr auto errorNames = std::to_array<ErrorName>({
    {ErrorCode::Null, "#NULL!"},
    {ErrorCode::DivisionByZero, "#DIV/0!"},
    {ErrorCode::Value, "#VALUE!"},
    {ErrorCode::Reference, "#REF!"},
    {ErrorCode::Name, "#NAME?"},
    {ErrorCode::Number, "#NUM!"},
    {ErrorCode::NotAvailable, "#N/A"},
});

/// "#N/A" and its like; a code that no format defines, from a damaged file, reads "#VALUE!".
inline std::string errorText(ErrorCode error)
{
    const auto* const found = std::ranges::find(errorNames, error, &ErrorName::error);
    return std::string(found == errorNames.end() ? "#VALUE!" : found->text);
}

struct Empty {
    Empty() = default;
    // Not trivial on purpose: where each alternative is trivial or a text, the variant of GCC 12 destroys a text that
    // was never made, because memory ran out while it was copied. NOLINTBEGIN(modernize-use-equals-default)
    constexpr Empty(const Empty& /*other*/) noexcept {}
    constexpr Empty& operator=(const Empty& /*other*/) noexcept { return *this; }
    // NOLINTEND(modernize-use-equals-default)
    bool operator==(const Empty&) const = default;
};

/// What a cell holds or a formula answers: nothing, a number (never NaN or infinite), a UTF-8 text, a logical, an
/// error.
using CellValue = std::variant<Empty, double, std::string, bool, ErrorCode>;

inline bool isEmpty(const CellValue& value)
{
    return std::holds_alternative<Empty>(value);
}

/// The number as a cell value; NaN and infinity are the error #NUM!, -0.0 is 0.
inline CellValue numberValue(double number)
{
    if (!std::isfinite(number))
        return ErrorCode::Number;
    return number == 0.0 ? 0.0 : number;
}

} // namespace wagemill::engine
