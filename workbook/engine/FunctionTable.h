#pragma once

#include <cstdint>
#include <string_view>

namespace wagemill::engine {

/// What the file format fixes of a worksheet function ([MS-XLS] 2.5.198.17 Ftab).
struct FunctionInfo {
    std::uint16_t id = 0;
    std::string_view name; ///< English, upper case
    std::uint8_t minArguments = 0;
    std::uint8_t maxArguments = 0; ///< equal to minArguments: stored without a count (PtgFunc)
    char resultClass = 'V';        ///< 'R', 'V' or 'A'
    /// Class of each parameter, 'R', 'V' or 'A'; the last letter is for all that follow.
    std::string_view parameterClasses;
    bool isVolatile = false;
};

/// Functions that are more to us than their line in the table.
inline constexpr std::uint16_t ifFunction = 1;
inline constexpr std::uint16_t sumFunction = 4;
inline constexpr std::uint16_t chooseFunction = 100;
inline constexpr std::uint16_t addInFunction = 255; ///< calls the name that is its first argument
inline constexpr std::uint16_t subtotalFunction = 344;

/// The function of that number or name (without regard to case), null when the format knows none.
const FunctionInfo* findFunction(std::uint16_t id);
const FunctionInfo* findFunction(std::string_view name);

} // namespace wagemill::engine
