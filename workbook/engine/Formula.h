#pragma once

#include "workbook/engine/CellAddress.h"
#include "workbook/engine/CellValue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace wagemill::engine {

/// What a formula's operand is to be read as ([MS-XLS] 2.5.198.2 PtgDataType).
enum class OperandClass : std::uint8_t { Reference = 1, Value = 2, Array = 3 };

/// Operators under their token numbers ([MS-XLS] 2.5.198.25): binary, then unary, then the brackets kept as typed.
enum class Operator : std::uint8_t {
    Add = 0x03,
    Subtract = 0x04,
    Multiply = 0x05,
    Divide = 0x06,
    Power = 0x07,
    Concatenate = 0x08,
    Less = 0x09,
    LessOrEqual = 0x0A,
    Equal = 0x0B,
    GreaterOrEqual = 0x0C,
    Greater = 0x0D,
    NotEqual = 0x0E,
    Intersection = 0x0F,
    Union = 0x10,
    Range = 0x11,
    UnaryPlus = 0x12,
    Negate = 0x13,
    Percent = 0x14,
    Brackets = 0x15,
};

struct NumberToken {
    double number = 0;
    bool operator==(const NumberToken&) const = default;
};
struct TextToken {
    std::string text; ///< UTF-8, at most 255 UTF-16 units
    bool operator==(const TextToken&) const = default;
};
struct LogicalToken {
    bool value = false;
    bool operator==(const LogicalToken&) const = default;
};
struct ErrorToken {
    ErrorCode error = ErrorCode::Value;
    bool operator==(const ErrorToken&) const = default;
};
struct MissingArgumentToken {
    bool operator==(const MissingArgumentToken&) const = default;
};

/// A cell or, where `last` is set, an area. `bad` is a reference that no longer exists (#REF!); its kind stays.
struct ReferenceToken {
    OperandClass operandClass = OperandClass::Value;
    std::optional<std::uint16_t> externSheet; ///< index into Book::externSheets; none means the formula's own sheet
    ReferencePart first;
    std::optional<ReferencePart> last;
    bool bad = false;

    CellRect cells() const { return cellsBetween(first, last.value_or(first)); }
    bool operator==(const ReferenceToken&) const = default;
};

/// A defined name, by its place in Book::names counting from 1; with `externSheet` a name of another workbook or add-in
/// (Book::externNames, by the supporting book of that entry).
struct NameToken {
    OperandClass operandClass = OperandClass::Value;
    std::optional<std::uint16_t> externSheet;
    std::uint16_t index = 0;
    bool operator==(const NameToken&) const = default;
};

struct OperatorToken {
    Operator op = Operator::Add;
    bool operator==(const OperatorToken&) const = default;
};

/// A function under its number in the file ([MS-XLS] 2.5.198.17 Ftab). Function 255 calls the name that is its first
/// argument.
struct FunctionToken {
    OperandClass operandClass = OperandClass::Value;
    std::uint16_t function = 0;
    std::uint8_t arguments = 0;
    bool variable = false; ///< stored with its argument count (PtgFuncVar) rather than without (PtgFunc)
    bool operator==(const FunctionToken&) const = default;
};

/// A jump or remark inside the token list ([MS-XLS] 2.5.198.4 PtgAttr...). Targets are indices into Formula::tokens of
/// the token to go on with, which comes later.
struct AttributeToken {
    enum class Kind : std::uint8_t { If, Choose, Goto, Sum, Remark };
    Kind kind = Kind::Remark;
    std::uint8_t flags = 0;           ///< of a remark, as in the file
    std::uint16_t data = 0;           ///< of a remark, as in the file
    std::vector<std::size_t> targets; ///< If, Goto: one; Choose: one for each choice and one for the end; else none
    bool operator==(const AttributeToken&) const = default;
};

/// A constant array, row by row.
struct ArrayToken {
    OperandClass operandClass = OperandClass::Array;
    int rows = 0;
    int columns = 0;
    std::vector<CellValue> values;
    bool operator==(const ArrayToken&) const = default;
};

/// Tokens that we keep without understanding them: the bytes as in the file. A formula that holds one keeps its stored
/// value, unless it is the mark of a sub-expression, whose tokens follow.
struct OpaqueToken {
    std::vector<std::byte> bytes;
    std::vector<std::byte> trailingBytes; ///< what belongs to it after the token list
    bool isMark = false;
    bool operator==(const OpaqueToken&) const = default;
};

using Token = std::variant<NumberToken, TextToken, LogicalToken, ErrorToken, MissingArgumentToken, ReferenceToken,
                           NameToken, OperatorToken, FunctionToken, AttributeToken, ArrayToken, OpaqueToken>;

/// A formula as tokens in reverse Polish order, never as text: copying shifts tokens, saving writes tokens.
struct Formula {
    std::vector<Token> tokens;

    bool operator==(const Formula&) const = default;
};

/// The formula moved by so many rows and columns: relative parts move, absolute ones stay; a part that leaves the sheet
/// makes its reference bad.
Formula shiftedFormula(const Formula& formula, int rows, int columns);

/// Sets the operand class of every token of a cell's formula (OpenOffice.org documentation of the Excel file
/// format, 3.2): the formula and the operands of operators are values, an argument is what its parameter asks for.
/// tokens  complete and balanced, as the parser leaves them
void assignOperandClasses(std::vector<Token>& tokens);

/// The tokens of an array formula, in which every value is wanted as an array, whatever classes the program that wrote
/// them gave. IF and CHOOSE judge each element, so they compute all their arguments and leap over none.
std::vector<Token> asArrayFormula(std::vector<Token> tokens);

} // namespace wagemill::engine
