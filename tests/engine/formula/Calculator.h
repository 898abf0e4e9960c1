#pragma once

#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/Recalculation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace wagemill::engine {

/// A workbook with two sheets to type into, "Pay" in front of "Rates 1".
class Calculator {
public:
    Calculator()
    {
        book.addSheet("Pay");
        book.addSheet("Rates 1");
        settings.now = 46112.75; // 31 March 2026, 6 p.m.
    }

    Calculator& type(std::string_view address, std::string_view text, std::size_t sheet = 0)
    {
        enterText(book, sheet, parseAddress(address)->first(), text, settings.formats, {2026, 3, 31});
        return *this;
    }

    const CellValue& at(std::string_view address) const
    {
        return book.sheets.front()->value(parseAddress(address)->first());
    }

    void compute() { recalculate(book, settings); }

    /// The value of a formula typed into Z9, where no other cell is.
    CellValue value(std::string_view formula)
    {
        type("Z9", formula).compute();
        return at("Z9");
    }

    Book book;
    CalculationSettings settings;
};

} // namespace wagemill::engine
