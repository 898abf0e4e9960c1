#pragma once

#include <cstdint>

namespace wagemill::engine::xls::ptg {

// Token numbers, [MS-XLS] 2.5.198.25; those from 0x20 on are of the reference class, 0x20 more is the value class and
// 0x40 more the array class.
inline constexpr std::uint8_t partOfShared = 0x01;
inline constexpr std::uint8_t partOfTable = 0x02;
inline constexpr std::uint8_t firstOperator = 0x03;
inline constexpr std::uint8_t firstUnaryOperator = 0x12;
inline constexpr std::uint8_t lastOperator = 0x15;
inline constexpr std::uint8_t missingArgument = 0x16;
inline constexpr std::uint8_t text = 0x17;
inline constexpr std::uint8_t attribute = 0x19;
inline constexpr std::uint8_t error = 0x1C;
inline constexpr std::uint8_t logical = 0x1D;
inline constexpr std::uint8_t integer = 0x1E;
inline constexpr std::uint8_t number = 0x1F;
inline constexpr std::uint8_t array = 0x20;
inline constexpr std::uint8_t function = 0x21;
inline constexpr std::uint8_t functionWithCount = 0x22;
inline constexpr std::uint8_t name = 0x23;
inline constexpr std::uint8_t cell = 0x24;
inline constexpr std::uint8_t area = 0x25;
inline constexpr std::uint8_t memoryArea = 0x26;
inline constexpr std::uint8_t memoryError = 0x27;
inline constexpr std::uint8_t memoryNone = 0x28;
inline constexpr std::uint8_t memoryFunction = 0x29;
inline constexpr std::uint8_t badCell = 0x2A;
inline constexpr std::uint8_t badArea = 0x2B;
inline constexpr std::uint8_t cellOffset = 0x2C;
inline constexpr std::uint8_t areaOffset = 0x2D;
inline constexpr std::uint8_t externName = 0x39;
inline constexpr std::uint8_t sheetCell = 0x3A;
inline constexpr std::uint8_t sheetArea = 0x3B;
inline constexpr std::uint8_t badSheetCell = 0x3C;
inline constexpr std::uint8_t badSheetArea = 0x3D;

// Kinds of attribute tokens, bits of their second byte.
inline constexpr std::uint8_t attributeVolatile = 0x01;
inline constexpr std::uint8_t attributeIf = 0x02;
inline constexpr std::uint8_t attributeChoose = 0x04;
inline constexpr std::uint8_t attributeGoto = 0x08;
inline constexpr std::uint8_t attributeSum = 0x10;
inline constexpr std::uint8_t attributeAssign = 0x20;
inline constexpr std::uint8_t attributeSpace = 0x40;

// Bits of a column that mark relative parts.
inline constexpr std::uint16_t columnRelative = 0x4000;
inline constexpr std::uint16_t rowRelative = 0x8000;

// Kinds of values in a constant array, [MS-XLS] 2.5.198.44.
inline constexpr std::uint8_t arrayEmpty = 0;
inline constexpr std::uint8_t arrayNumber = 1;
inline constexpr std::uint8_t arrayText = 2;
inline constexpr std::uint8_t arrayLogical = 4;
inline constexpr std::uint8_t arrayError = 16;

} // namespace wagemill::engine::xls::ptg
