#pragma once

#include "workbook/engine/xls/RecordFields.h"

#include <cstddef>
#include <cstdint>

namespace wagemill::engine::xls {

// What says in SUPBOOK that a book is this one, or the functions of an add-in ([MS-XLS] 2.4.271).
inline constexpr std::uint16_t ownBookMark = 0x0401;
inline constexpr std::uint16_t addInMark = 0x3A01;

/// How LBL begins ([MS-XLS] 2.4.150).
struct NameHead {
    bool isBuiltIn = false; ///< a name of the application is one character, its number in builtInNames
    std::size_t length = 0; ///< of the name
    std::size_t formulaSize = 0;
    int sheet = 0; ///< the one that knows it, counting from 1; 0: the whole workbook
};
void nameFields(auto form, auto& head)
{
    form.bits16(Bits{5, 1, head.isBuiltIn});
    form.zeros(1);
    form.u8(head.length);
    form.u16(head.formulaSize);
    form.zeros(2);
    form.u16(head.sheet);
    form.zeros(4);
}

void externSheetFields(auto form, auto& entry)
{
    form.u16(entry.supportingBook);
    form.u16(entry.first);
    form.u16(entry.last);
}

} // namespace wagemill::engine::xls
