#include "workbook/engine/CellValue.h"

#include <algorithm>
#include <cmath>

namespace wagemill::engine {

std::string errorText(ErrorCode error)
{
    const auto found = std::ranges::find(errorNames, error, &ErrorName::error);
    return found == errorNames.end() ? errorText(ErrorCode::Value) : std::string(found->text);
}

CellValue numberValue(double number)
{
    if (!std::isfinite(number))
        return ErrorCode::Number;
    return number == 0.0 ? 0.0 : number;
}

} // namespace wagemill::engine
