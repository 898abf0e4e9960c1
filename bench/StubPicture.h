#pragma once

#include "workbook/engine/picture/SheetPicture.h"

namespace wagemill::bench {

/// The picture that the preview shows of a filled book.
inline drawing::Drawing stubPicture(const engine::Book& book)
{
    const engine::Sheet& stubs = *book.sheets[book.activeSheet];
    return engine::sheetPicture(book, stubs, stubs.usedRange().value(), {});
}

} // namespace wagemill::bench
