#pragma once

#include <cstdint>
#include <optional>

namespace wagemill::engine::xls {

/// A number in four bytes ([MS-XLS] 2.5.217 RkNumber): 30 bits of an integer or the upper 30 bits of a double, either
/// of them a hundredth where bit 0 is set.
double numberOfRk(std::uint32_t rk);

/// The four bytes, where they give back exactly this number.
std::optional<std::uint32_t> rkOfNumber(double number);

} // namespace wagemill::engine::xls
