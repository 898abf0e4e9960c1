#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine::xls {

using Bytes = std::vector<std::byte>;

/// Bytes written as hexadecimal digits, "1E 02 00"; blanks do not count.
inline Bytes fromHex(std::string_view text)
{
    std::string digits;
    for (const char letter : text)
        if (letter != ' ')
            digits.push_back(letter);
    Bytes bytes;
    for (std::size_t index = 0; index + 1 < digits.size(); index += 2)
        bytes.push_back(static_cast<std::byte>(std::stoi(digits.substr(index, 2), nullptr, 16)));
    return bytes;
}

inline std::string toHex(std::span<const std::byte> bytes)
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::byte byte : bytes) {
        text += digits[std::to_integer<std::size_t>(byte >> 4)];
        text += digits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return text;
}

} // namespace wagemill::engine::xls
