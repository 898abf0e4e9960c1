#include "workbook/engine/CellValue.h"

#include <cmath>

namespace wagemill::engine {

const char* errorText(ErrorCode error)
{
    switch (error) {
    case ErrorCode::Null:
        return "#NULL!";
    case ErrorCode::DivisionByZero:
        return "#DIV/0!";
    case ErrorCode::Value:
        return "#VALUE!";
    case ErrorCode::Reference:
        return "#REF!";
    case ErrorCode::Name:
        return "#NAME?";
    case ErrorCode::Number:
        return "#NUM!";
    case ErrorCode::NotAvailable:
        return "#N/A";
    }
    return "#VALUE!"; // a code that no format defines, read from a damaged file
}

CellValue numberValue(double number)
{
    if (!std::isfinite(number))
        return ErrorCode::Number;
    return number == 0.0 ? 0.0 : number;
}

} // namespace wagemill::engine
