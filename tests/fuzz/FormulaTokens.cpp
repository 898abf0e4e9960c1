// Input: a byte (odd: an array formula), two bytes that say how many bytes of tokens follow, tokens, the data after
// them.

#include "workbook/engine/xls/FormulaTokens.h"
#include "app/base/Bytes.h"
#include "tests/fuzz/FuzzBook.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "workbook/engine/formula/Recalculation.h"

#include <algorithm>
#include <memory>

namespace wagemill::fuzz {

namespace {

using namespace engine;

constexpr CellAddress formulaPlace{1, 3};
constexpr CellRect arrayPlace{1, 3, 3, 5};

/// Puts the formula where it is tried, alone or as that of an array.
void place(Book& book, const std::shared_ptr<const Formula>& formula, bool isArray)
{
    Sheet& sheet = *book.sheets.front();
    const auto area = isArray ? std::make_shared<const ArrayArea>(ArrayArea{arrayPlace}) : nullptr;
    for (int row = arrayPlace.firstRow; row <= arrayPlace.lastRow; ++row)
        for (int column = arrayPlace.firstColumn; column <= arrayPlace.lastColumn; ++column) {
            Cell& cell = sheet.at({row, column});
            const bool isTried = isArray || CellAddress{row, column} == formulaPlace;
            cell.value = Empty();
            cell.formula = isTried ? formula : nullptr;
            cell.array = area;
        }
}

using Written = std::pair<std::vector<std::byte>, std::vector<std::byte>>; ///< tokens and what follows them

/// Nothing where the formula takes more bytes than a file has room for.
std::optional<Written> written(const Formula& formula)
{
    try {
        ByteWriter tokens;
        ByteWriter trailing;
        xls::writeFormula(formula, tokens, trailing);
        return Written{tokens.take(), trailing.take()};
    } catch (const std::length_error&) {
        return std::nullopt;
    }
}

} // namespace

void tryInput(Input input)
{
    static Book book = preparedBook();
    static const CalculationSettings settings{{}, 46112.75, maxArrayValues};
    const bool isArray = takeByte(input) % 2 == 1;
    const std::size_t low = takeByte(input);
    const std::size_t named = low + std::size_t{256} * takeByte(input);
    const std::size_t size = std::min(named, input.size());
    const xls::FormulaContext context{formulaPlace, book.names.size(), book.externSheets.size()};
    Formula formula;
    try {
        formula = xls::readFormula(input.first(size), input.subspan(size), context);
    } catch (const DamagedFile&) {
        return;
    }
    place(book, std::make_shared<const Formula>(formula), isArray);
    recalculate(book, settings);
    test::requireFiniteNumbers(book);
    written(shiftedFormula(formula, 12, -1));
    if (const auto once = written(formula)) {
        const auto& [tokens, trailing] = *once;
        const Formula again = xls::readFormula(tokens, trailing, context);
        require(written(again) == once, "a formula that we wrote is read and written as the same bytes");
    }
}

} // namespace wagemill::fuzz
