#pragma once

#include "workbook/engine/CellValue.h"

#include <cstdint>

namespace wagemill::engine::xls {

/// The error of a code in the file; a code that means none is #N/A.
inline ErrorCode errorOfCode(std::uint8_t code)
{
    switch (static_cast<ErrorCode>(code)) {
    case ErrorCode::Null:
    case ErrorCode::DivisionByZero:
    case ErrorCode::Value:
    case ErrorCode::Reference:
    case ErrorCode::Name:
    case ErrorCode::Number:
    case ErrorCode::NotAvailable:
        return static_cast<ErrorCode>(code);
    }
    return ErrorCode::NotAvailable;
}

} // namespace wagemill::engine::xls
