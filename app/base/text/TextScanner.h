#pragma once

#include "app/base/text/LetterCase.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace wagemill {

constexpr bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}
constexpr bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

/// Reads a UTF-8 text from left to right.
class TextScanner {
public:
    explicit TextScanner(std::string_view text) : m_text(text), m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }
    std::size_t position() const { return m_text.size() - m_rest.size(); }
    std::string_view rest() const { return m_rest; }
    /// The byte so many places on; 0 after the end.
    char peek(std::size_t offset = 0) const { return offset < m_rest.size() ? m_rest[offset] : '\0'; }
    /// Never with an empty text.
    bool startsWith(std::string_view text) const { return !text.empty() && m_rest.starts_with(text); }

    /// Takes the text, where it comes next.
    bool skip(std::string_view text)
    {
        const bool found = startsWith(text);
        m_rest.remove_prefix(found ? text.size() : 0);
        return found;
    }
    bool skip(char byte)
    {
        const bool found = m_rest.starts_with(byte);
        m_rest.remove_prefix(found ? 1 : 0);
        return found;
    }
    bool skipIgnoringCase(std::string_view text)
    {
        return !take(startsWithIgnoringCase(m_rest, text) ? text.size() : 0).empty();
    }
    void skipBlanks(std::string_view blanks = " ") { take(m_rest.find_first_not_of(blanks)); }

    /// Takes so many bytes, or those that are left.
    std::string_view take(std::size_t size)
    {
        const std::string_view taken = m_rest.substr(0, size);
        m_rest.remove_prefix(taken.size());
        return taken;
    }
    template <class Predicate>
    std::string_view takeWhile(Predicate predicate)
    {
        return take(static_cast<std::size_t>(std::ranges::find_if_not(m_rest, predicate) - m_rest.begin()));
    }
    std::string_view takeDigits() { return takeWhile(isDigit); }
    std::size_t digitsAhead() const { return TextScanner(m_rest).takeDigits().size(); }
    /// A character with all its bytes.
    std::string_view takeCharacter()
    {
        std::size_t size = 1;
        while ((static_cast<unsigned char>(peek(size)) & 0xC0U) == 0x80)
            ++size;
        return take(size);
    }
    /// A whole number of at most `maxDigits` digits, at most 9; nothing is taken where it is longer or missing.
    std::optional<int> takeNumber(std::size_t maxDigits)
    {
        const std::size_t digits = digitsAhead();
        if (digits == 0 || digits > maxDigits)
            return std::nullopt;
        int number = 0;
        std::from_chars(m_rest.data(), m_rest.data() + digits, number);
        take(digits);
        return number;
    }

private:
    std::string_view m_text;
    std::string_view m_rest;
};

} // namespace wagemill
