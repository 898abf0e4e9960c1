#pragma once

#include "workbook/engine/text/FormatCode.h"

#include <string>
#include <utility>

namespace wagemill::engine {

/// What an unused placeholder shows.
inline std::string padding(const FormatToken& placeholder)
{
    return placeholder.text == "0" ? "0" : placeholder.text == "?" ? " " : "";
}

/// The digits of a whole number, handed out to their placeholders from left to right; the first one takes all that have
/// no placeholder of their own.
class PlaceholderDigits {
public:
    PlaceholderDigits(std::string digits, int placeholders) : m_digits(std::move(digits)), m_left(placeholders) {}

    std::size_t size() const { return m_digits.size(); }

    /// The text of the next placeholder. `separate` is told the digits that follow each digit shown.
    template <typename Separate>
    std::string next(const FormatToken& placeholder, Separate&& separate)
    {
        const auto position = static_cast<std::size_t>(--m_left); // digits that belong to later placeholders
        if (m_digits.size() <= position) {
            const std::string pad = padding(placeholder);
            return pad == "0" ? pad + separate(position) : pad;
        }
        std::string text;
        for (; m_taken + position < m_digits.size(); ++m_taken)
            text += m_digits[m_taken] + separate(m_digits.size() - m_taken - 1);
        return text;
    }
    std::string next(const FormatToken& placeholder)
    {
        return next(placeholder, [](std::size_t) { return std::string(); });
    }

private:
    std::string m_digits;
    int m_left;
    std::size_t m_taken = 0;
};

} // namespace wagemill::engine
