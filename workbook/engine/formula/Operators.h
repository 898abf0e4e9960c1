#pragma once

#include "workbook/engine/Formula.h"
#include "workbook/engine/formula/Coercion.h"
#include "workbook/engine/formula/Operand.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace wagemill::engine {

struct BinaryOperator {
    std::string_view sign;
    Operator op;
    int precedence;
};

/// As they are written; a longer sign is before one that it begins with.
inline constexpr auto binaryOperators = std::to_array<BinaryOperator>({
    {"<=", Operator::LessOrEqual, 1},
    {">=", Operator::GreaterOrEqual, 1},
    {"<>", Operator::NotEqual, 1},
    {"<", Operator::Less, 1},
    {">", Operator::Greater, 1},
    {"=", Operator::Equal, 1},
    {"&", Operator::Concatenate, 2},
    {"+", Operator::Add, 3},
    {"-", Operator::Subtract, 3},
    {"*", Operator::Multiply, 4},
    {"/", Operator::Divide, 4},
    {"^", Operator::Power, 5},
});

inline bool isComparison(Operator op)
{
    return op >= Operator::Less && op <= Operator::NotEqual;
}

/// Whether two values meet the comparison. order  as compareValues() answers it
bool holds(Operator comparison, int order);

/// Longest text a cell or formula may hold, in UTF-16 units.
inline constexpr std::size_t maxTextLength = 32767;

/// The text as a value, #VALUE! when it is longer than a cell can hold.
CellValue textValue(std::string text);

/// The answer of a binary operator on two values: arithmetic, "&" or comparison, for which numbers that agree in 15
/// digits are equal. An error is the answer, the left one before the right one.
CellValue calculated(Operator op, const CellValue& left, const CellValue& right, const CoercionRules& rules);
/// The same for a sign or the percent sign.
CellValue calculated(Operator op, const CellValue& operand, const CoercionRules& rules);
/// Whether a sum or difference is 0 in 15 digits, though perhaps not in its last bits: 0.1 - (0.5 - 0.4).
bool isNothingButRounding(Operator op, const CellValue& left, const CellValue& right);

/// base to the power of exponent; 0 to the power of 0 is #NUM!.
CellValue power(double base, double exponent);

enum class Rounding : std::uint8_t { HalfAwayFromZero, AwayFromZero, TowardZero };

/// Rounds to `decimals` digits after the point (their fraction does not count), negative ones before it, by the
/// number's first 15 decimal digits, as cells show it: 1.005 to 2 digits is 1.01.
double roundedNumber(double number, double decimals, Rounding rounding);

using AreasOrError = std::variant<std::vector<Area>, ErrorCode>;

/// Range, union or intersection of references, none of them empty: the areas, never none, or the error.
AreasOrError joinedAreas(Operator op, std::span<const Area> left, std::span<const Area> right);

} // namespace wagemill::engine
