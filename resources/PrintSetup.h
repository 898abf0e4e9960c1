#pragma once

#include "workbook/engine/Book.h"

#include <string>
#include <vector>

namespace wagemill {

/// How a sheet is printed. Margins are inches. The paper is the printer's own: the region decides.
struct PrintSetup {
    bool landscape = false;
    bool fitWidth = false; ///< as many pages as needed, each as wide as the sheet
    int scalePercent = 100;
    double left = 0.75;
    double right = 0.75;
    double top = 1;
    double bottom = 1;
    bool centerOnPage = false;
    std::string header; ///< with the codes of the file format: &L &C &R, &P page, &N pages, &A sheet, &D date
    std::string footer;
    std::vector<int> pageBreaks; ///< rows that begin a page, counting from 0, ascending
};

/// The setup as the records of a sheet, in the order of the format ([MS-XLS] 2.1.7.20.5).
std::vector<engine::CarriedRecord> printRecords(const PrintSetup& setup);

/// Makes every page of the sheet begin with its rows `first` to `last`, counting from 0.
void repeatRows(engine::Book& book, std::size_t sheet, int first, int last);

} // namespace wagemill
