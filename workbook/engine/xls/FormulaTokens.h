#pragma once

#include "app/base/Bytes.h"
#include "workbook/engine/Sheet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace wagemill::engine::xls {

/// What the tokens of a formula are read against.
struct FormulaContext {
    CellAddress origin;                 ///< the cell from which offsets (PtgRefN, PtgAreaN) count
    std::size_t names = 0x10000;        ///< how many there are: a token with a larger number is #NAME?
    std::size_t externSheets = 0x10000; ///< a reference with a larger number is #REF!
};

/// Reads tokens ([MS-XLS] 2.5.198) and the data after them (rgce, rgcb). A formula with a token that we do not know
/// becomes one OpaqueToken that holds it all; a sub-expression mark (PtgMem...) one of its own.
/// Throws DamagedFile when the tokens end early or are not an expression.
Formula readFormula(std::span<const std::byte> tokens, std::span<const std::byte> trailing,
                    const FormulaContext& context);

/// Writes both parts, a mark before functions that change with every calculation included.
/// Throws std::length_error when the tokens take more than 1800 bytes or a text more than 255 characters.
void writeFormula(const Formula& formula, ByteWriter& tokens, ByteWriter& trailing);

/// The cell whose shared formula, array formula or data table the tokens only point at (PtgExp, PtgTbl); nothing for
/// any other formula.
std::optional<CellAddress> sharedBase(std::span<const std::byte> tokens);

/// Writes the tokens of a cell in an array formula or data table, which point at its first cell.
void writeSharedBase(const ArrayArea& array, ByteWriter& tokens);

} // namespace wagemill::engine::xls
